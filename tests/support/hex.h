// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

/// Bytes as the tests write them: pairs of hex digits, blanks and line breaks anywhere between two
/// bytes, and
/// "#" for a comment that runs to the end of its line.

/// hexDigit returns the value of one hex digit, or -1.
inline int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

/// fromHex returns the bytes that `text` spells, for example "8C 80  # message type". A text that
/// is not hex is a mistake in the test and ends it.
inline QByteArray fromHex(QByteArrayView text)
{
    QByteArray bytes;
    bytes.reserve(text.size() / 2);
    for (qsizetype i = 0; i < text.size();) {
        const char c = text[i];
        if (c == '#') {
            while (i < text.size() && text[i] != '\n') {
                ++i;
            }
        } else if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
            ++i;
        } else {
            const int high = hexDigit(c);
            const int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
            if (high < 0 || low < 0) {
                qFatal("fromHex: no byte at offset %lld of \"%s\"", qlonglong(i),
                       text.toByteArray().constData());
            }
            bytes.append(char(high * 16 + low));
            i += 2;
        }
    }
    return bytes;
}

/// toHex returns `bytes` in the form that fromHex reads: upper case, a blank between two bytes.
inline QByteArray toHex(QByteArrayView bytes)
{
    return bytes.toByteArray().toHex(' ').toUpper();
}
