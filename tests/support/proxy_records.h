// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// The events of the proxy daemon as bytes, for tests that play its part.

namespace record {

inline QByteArray words(std::initializer_list<qint32> values)
{
    QByteArray bytes;
    for (const qint32 value : values) {
        bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    return bytes;
}

inline QByteArray units(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

inline QByteArray requestCompleted(int request, int status)
{
    return words({1, 0, request, 0, 0, status});
}

inline QByteArray registrationCompleted(int request, int result)
{
    return words({2, 0, request, 0, result});
}

inline QByteArray retrievalCompleted(const QString &path)
{
    const int length = int(path.size()) * 2;
    return words({3, length, length}) + units(path);
}

inline QByteArray progress(int request, int done, int total)
{
    return words({4, 0, request, done, total});
}

inline QByteArray requestStatus(int request, int status)
{
    return words({5, 0, request, status});
}

} // namespace record
