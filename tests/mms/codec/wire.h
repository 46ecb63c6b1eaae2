// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wsp_stream.h"
#include "qt2/qarray.h"
#include "tests/support/hex.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>

/// Which way a row of a table of bytes and values goes.
enum Way { Both, Read, Write };

/// InWire is a stream over given bytes, in memory of exactly their size, so that the address
/// sanitizer sees every step outside.
struct InWire {
    explicit InWire(const QByteArray &bytes)
        : array(QArray<char>::fromBytes(bytes.constData(), int(bytes.size()))), stream(array)
    {
    }

    QArray<char> array;
    WSP_Stream stream;
};

/// OutWire is a stream over a buffer of `size` bytes of AA.
struct OutWire {
    static constexpr char kUnwritten = '\xAA';

    explicit OutWire(int size) : array(size), stream(array) { array.fill(kUnwritten); }

    /// written returns what lies in front of the position, as hex.
    [[nodiscard]] QByteArray written() const { return toHex(array.view().first(stream.pos)); }

    /// isCleanBehind tells whether nothing was written at the position or behind it.
    [[nodiscard]] bool isCleanBehind() const
    {
        return std::all_of(array.begin() + stream.pos, array.end(),
                           [](char byte) { return byte == kUnwritten; });
    }

    QArray<char> array;
    WSP_Stream stream;
};

/// shown returns a text so that a null string and an empty one differ.
inline QString shown(const QString &text)
{
    return text.isNull() ? QStringLiteral("null") : '"' + text + '"';
}
