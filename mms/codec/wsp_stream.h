// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "qt2/qarray.h"
#include "wmsg_export.h"

#include <QtCore/QString>

/// A cursor over a byte buffer, with the primitives of WSP and MMS encapsulation: uintvar,
/// value-length, integers, text strings and encoded strings.
///
/// The stream does not own its buffer and never grows it: size it first, and keep it alive and
/// unresized for as long as the stream is used. Reads and writes happen at `pos`, which stays
/// within 0 and `size`. Every operation returns 1 on success and 0 on failure. A failure leaves
/// `pos` where the failing step stopped and the output parameter as it was. Byte order is
/// big-endian.
class WMSG_EXPORT WSP_Stream {
public:
    char *data; ///< The first byte of the caller's buffer.
    qint32 pos; ///< Where the next byte is read or written.
    qint32 size; ///< The number of usable bytes.

    /// A stream at the start of `bytes`, as large as `bytes` is now.
    explicit WSP_Stream(QArray<char> &bytes) : WSP_Stream(bytes.data(), bytes.size()) { }
    /// A stream at the start of `count` bytes of the caller's.
    WSP_Stream(char *bytes, qint32 count) : data(bytes), pos(0), size(count) { }

    /// 1 while bytes remain, else 0.
    quint32 hasMore() const { return pos < size ? 1 : 0; }
    /// Moves `count` bytes back, to the start at most; always 1. A negative count moves nothing.
    quint32 back(qint32 count);
    /// Moves `count` bytes on; always 1. A target at or beyond the end becomes the last byte, one
    /// short of the end, so that the next byte read is the last one; an empty stream stays at 0. A
    /// negative count moves nothing.
    quint32 skip(qint32 count);
    /// How many bytes remain.
    qint32 remaining() const { return size - pos; }

    /// Reads one byte; fails at the end.
    quint32 readByte(quint8 &out)
    {
        if (pos >= size) {
            return 0;
        }
        out = static_cast<quint8>(data[pos++]);
        return 1;
    }
    /// Writes one byte; fails when the stream is full.
    quint32 writeByte(quint8 value)
    {
        if (pos >= size) {
            m_overflowed = true;
            return 0;
        }
        data[pos++] = static_cast<char>(value);
        return 1;
    }
    /// Copies `count` bytes out. Fails, without moving, when fewer remain or `count` is negative.
    quint32 readBytes(char *out, qint32 count);
    /// Copies `count` bytes in. Fails, without writing, when they do not fit or `count` is
    /// negative.
    quint32 writeBytes(const char *bytes, qint32 count);
    /// Fills the whole array, as large as it is, from the stream. Fails as readBytes() does.
    quint32 readArray(QArray<char> &out) { return readBytes(out.data(), out.size()); }
    /// Writes the whole array. Fails as writeBytes() does.
    quint32 writeArray(const QArray<char> &bytes)
    {
        return writeBytes(bytes.constData(), bytes.size());
    }

    /// Reads a Short-integer, or a Long-integer of up to 127 bytes, of which the low 32 bits are
    /// kept. A length of 0 reads as 0.
    quint32 readInteger(quint32 &out);
    /// Writes 127 and less (negative values too: their low seven bits) as a Short-integer, more as
    /// a Long-integer.
    quint32 writeInteger(qint32 value);
    /// Writes a Long-integer: a length byte, then the value without its leading zero bytes.
    quint32 writeLongInteger(quint32 value);

    /// Reads a uintvar of any number of bytes, of which the low 32 bits are kept.
    quint32 readUintvar(quint32 &out);
    /// Writes a uintvar of one to five bytes; a negative value takes five.
    quint32 writeUintvar(qint32 value);

    /// readValueLength sets `out` to the next value-length and moves past it: one byte, or a
    /// uintvar after a byte of 31.
    quint32 readValueLength(quint32 &out);
    /// Writes up to 30 as one byte, more as 31 and a uintvar.
    quint32 writeValueLength(qint32 length);

    /// Reads a Text-string and decodes it as UTF-8. A lone 0 gives the null string; a leading Quote
    /// is dropped, and so is a byte order mark; a text that the end of the stream cuts is accepted.
    quint32 readTextString(QString &out);
    /// Writes the text in UTF-8 with its terminator, a Quote in front when it begins with a byte of
    /// 128 or more. A null string is the terminator alone; half of a surrogate pair becomes "?".
    quint32 writeTextString(const QString &text) { return writeTextString(text, {}); }
    /// As above, for `text` with `suffix` behind it.
    quint32 writeTextString(const QString &text, QLatin1String suffix);

    /// Reads an Encoded-string-value: a length, a charset and text. A plain Text-string is read
    /// too. The text is decoded as UTF-8 whatever the charset says; a leading Quote and trailing
    /// zero bytes are dropped. It fails when the length reaches past the end or is smaller than the
    /// charset.
    quint32 readEncodedString(QString &out);
    /// Writes an Encoded-string-value with charset UTF-8 (106). A null string is written as an
    /// empty one.
    quint32 writeEncodedString(const QString &text);

    /// Tells whether any write was refused since the stream was made, also where a codec reported
    /// success.
    [[nodiscard]] bool hasOverflowed() const { return m_overflowed; }
    /// Notes that a value meant for this stream was cut in a stream of its own.
    void noteOverflow() { m_overflowed = true; }

private:
    class Utf8Text;

    WMSG_NO_EXPORT quint32 readCountedText(quint32 length, QString &out);
    WMSG_NO_EXPORT quint32 writeText(const Utf8Text &text, QLatin1String suffix);
    WMSG_NO_EXPORT quint32 writeUtf8(const Utf8Text &text);

    bool m_overflowed = false;
};
