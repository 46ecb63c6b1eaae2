// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

/// Under which type the message database files a message. In mail files: never renumber.
enum MMS_MSGDB_TYPE_E : quint8 {
    MMS_MSGDB_MSG_TYPE_POSTCARD = 1, ///< A related multipart with a part of postcard contacts.
    MMS_MSGDB_MSG_TYPE_MEDIA = 2, ///< One image, audio or video item.
    MMS_MSGDB_MSG_TYPE_LETTER_MIXED = 3, ///< Plain text, or a multipart without a presentation.
    MMS_MSGDB_MSG_TYPE_XHTML = 4, ///< A related multipart whose root is XHTML.
    MMS_MSGDB_MSG_TYPE_ALTERNATIVE = 5, ///< An alternative multipart.
    MMS_MSGDB_MSG_TYPE_SMIL = 6, ///< A related multipart with a SMIL presentation.
    MMS_MSGDB_MSG_TYPE_UNKNOWN = 13, ///< Any other content type.
    MMS_MSGDB_MSG_TYPE_NONE = 255 ///< Not classified yet.
};
