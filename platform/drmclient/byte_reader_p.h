// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

namespace wmsg::drm {

/// A cursor over bytes that it does not own. Each operation returns true and moves past what it
/// took, or returns false at the end of the bytes; its result is then unchanged.
class ByteReader {
public:
    explicit ByteReader(QByteArrayView bytes) : m_rest(bytes) { }

    [[nodiscard]] QByteArrayView rest() const { return m_rest; }

    [[nodiscard]] bool readByte(quint8 &value)
    {
        QByteArrayView byte;
        if (!readBytes(1, byte)) {
            return false;
        }
        value = static_cast<quint8>(byte[0]);
        return true;
    }

    [[nodiscard]] bool readBytes(quint64 count, QByteArrayView &bytes)
    {
        if (count > static_cast<quint64>(m_rest.size())) {
            return false;
        }
        const auto size = static_cast<qsizetype>(count);
        bytes = m_rest.first(size);
        m_rest = m_rest.sliced(size);
        return true;
    }

    [[nodiscard]] bool skip(quint64 count)
    {
        QByteArrayView skipped;
        return readBytes(count, skipped);
    }

    /// readNumber takes `size` bytes, the most significant first; 8 at most.
    [[nodiscard]] bool readNumber(int size, quint64 &value)
    {
        QByteArrayView bytes;
        if (!readBytes(static_cast<quint64>(size), bytes)) {
            return false;
        }
        value = 0;
        for (const char byte : bytes) {
            value = value << 8 | static_cast<quint8>(byte);
        }
        return true;
    }

    /// readUintvar takes groups of seven bits, the most significant first; all but the last have
    /// their highest bit set. It returns false for more than five groups and for more than 32 bits.
    [[nodiscard]] bool readUintvar(quint32 &value)
    {
        constexpr int kMostGroups = 5;
        quint64 number = 0;
        for (int groups = 0; groups < kMostGroups; ++groups) {
            quint8 byte = 0;
            if (!readByte(byte)) {
                return false;
            }
            number = number << 7 | (byte & 0x7F);
            if (byte < 0x80) {
                value = static_cast<quint32>(number);
                return number <= 0xFFFFFFFF;
            }
        }
        return false;
    }

    /// readText takes what stands before the next NUL, and the NUL.
    [[nodiscard]] bool readText(QByteArrayView &text)
    {
        const qsizetype end = m_rest.indexOf('\0');
        return end >= 0 && readBytes(static_cast<quint64>(end), text) && skip(1);
    }

private:
    QByteArrayView m_rest;
};

} // namespace wmsg::drm
