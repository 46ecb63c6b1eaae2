// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

/// What messages hold beside the 24 header fields that the library has codecs for: the header
/// fields of newer versions of the protocol, text fields, and the headers of parts and pushes.
namespace wmsg::cli {

/// A header field that the library does not read.
struct OtherField {
    qint32 offset = 0;
    int id = 0; ///< 25 to 127; 0 for a field whose name is a text.
    QString name; ///< As the protocol has it without its "X-Mms-" prefix.
    QString value; ///< In words; texts in quotes and escaped.
};

/// valueInWords returns what the value of header field `id` says, by the rules that the protocol
/// has for it, or else by those for any value.
[[nodiscard]] QString valueInWords(int id, QByteArrayView value);

/// anyValueInWords returns what a value says by its first byte alone: a number, a text or bytes.
[[nodiscard]] QString anyValueInWords(QByteArrayView value);

/// partHeaderName returns the name of a header of parts and pushes, by its number without the high
/// bit.
[[nodiscard]] QString partHeaderName(int number);

/// partHeaderInWords returns what such a header says.
[[nodiscard]] QString partHeaderInWords(int number, QByteArrayView value);

/// applicationInWords returns what the X-Wap-Application-Id of a push says.
[[nodiscard]] QString applicationInWords(QByteArrayView value);

} // namespace wmsg::cli
