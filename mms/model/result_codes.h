// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

/// What the operations of a whole message return. Decoding, encoding and saving have a success
/// value each; compare with that of the operation called. Applications keep these numbers: never
/// renumber.
enum MMS_RESULT_E : quint32 {
    MMS_DECODE_OK = 100, ///< Decoded; also when the data ended before a Content-Type field.
    /// The mail file could not be opened, is no regular file, or is shorter than its prefix.
    MMS_DECODE_NO_FILE = 102,
    MMS_DECODE_UNKNOWN_FIELD = 104, ///< A field id above 24.
    MMS_DECODE_NO_CODEC = 110, ///< Field id 0.
    MMS_DECODE_BAD_BODY = 111, ///< The multipart body could not be decoded.
    MMS_DECODE_OLD_FILE = 112, ///< The mail file has the old layout, without a prefix.
    MMS_DECODE_BAD_FIELD = 113, ///< A field id or a field's value could not be read.

    MMS_ENCODE_OK = 200,
    MMS_ENCODE_NO_CONTENT_TYPE = 202, ///< There is a body, and the header has no content type.
    MMS_ENCODE_BAD_PDU_TYPE = 203, ///< The PDU type is outside 0x80 to 0x87.
    MMS_ENCODE_NO_CODEC = 207, ///< The write order names a field without a codec.
    MMS_ENCODE_BAD_FIELD = 209, ///< A field or the body could not be written whole.

    MMS_SAVE_OK = 300,
    MMS_SAVE_FAIL = 301, ///< The temporary file could not be opened or written, or not renamed.
    MMS_SAVE_DISK_FULL = 302 ///< The file system is full.
};
