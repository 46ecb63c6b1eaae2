// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QtEndian>

namespace wmsg::util {

/// unitsOf returns the `count` little-endian 16-bit units at `bytes` as text.
inline QString unitsOf(const char *bytes, qsizetype count)
{
    QString text(count, Qt::Uninitialized);
    if (count > 0) {
        qFromLittleEndian<char16_t>(bytes, count, text.data());
    }
    return text;
}

/// exchangedUnitsOf returns the units at `bytes` as text, each two neighbours exchanged. An odd
/// last unit has no neighbour, and 0 stands in its place.
// Kept: adjacent units change places and the bytes inside a unit do not.
inline QString exchangedUnitsOf(const char *bytes, qsizetype count)
{
    QString text(count, Qt::Uninitialized);
    QChar *unit = text.data();
    for (qsizetype i = 0; i + 1 < count; i += 2) {
        unit[i] = QChar(qFromLittleEndian<char16_t>(bytes + 2 * i + 2));
        unit[i + 1] = QChar(qFromLittleEndian<char16_t>(bytes + 2 * i));
    }
    if (count % 2 != 0) {
        unit[count - 1] = QChar();
    }
    return text;
}

} // namespace wmsg::util
