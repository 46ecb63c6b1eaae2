// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>

#include <optional>

// line     := { basic } { ( extended | basic ) ";" }      behind "AT", in letters of either case
// basic    := letter [ number ] | "&" letter [ number ] | "S" number ( "=" number | "?" )
// extended := "+" name [ "?" | "=?" | "=" argument { "," argument } ]

namespace wmsg::sim {

/// One command of a line.
struct AtCommand {
    enum Form {
        Do, ///< AT+X
        Read, ///< AT+X?
        Test, ///< AT+X=?
        Set, ///< AT+X=1
    };

    QByteArray name; ///< in capital letters, such as "+CMGS", "E" or "&F"
    Form form = Do;
    QByteArrayList arguments; ///< of Set, and the number of a basic command; without quotes

    /// number returns an argument, or `other` when it is missing or empty; nothing when it is no
    /// number.
    [[nodiscard]] std::optional<int> number(qsizetype argument, int other) const;
};

/// readAtLine reads what stands behind "AT", which may be nothing. It returns nothing when that is
/// no list of commands.
[[nodiscard]] std::optional<QList<AtCommand>> readAtLine(QByteArrayView text);

} // namespace wmsg::sim
