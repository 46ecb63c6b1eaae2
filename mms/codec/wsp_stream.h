// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "qt2/qarray.h"
#include "wmsg_export.h"

#include <QtCore/QString>

/// WSP_Stream is a cursor over a byte buffer, with the primitives of WSP and MMS encapsulation:
/// uintvar, value-length, integers, text strings and encoded strings. All bytes of a PDU are read
/// and written through it.
///
/// The stream does not own its buffer and never grows it: size it first, and keep it alive and
/// unresized for as long as the stream is used. Reads and writes happen at `pos`, which stays
/// within 0 and `size`. A stream is used by one thread at a time.
///
/// Every operation returns 1 on success and 0 on failure. A failure leaves `pos` where the failing
/// step stopped and the output parameter as it was. Byte order is big-endian.
class WMSG_EXPORT WSP_Stream {
public:
    char *data; ///< The first byte of the caller's buffer.
    qint32 pos; ///< Where the next byte is read or written.
    qint32 size; ///< The number of usable bytes.

    /// WSP_Stream(bytes) starts at the first byte of `bytes` and is as large as `bytes` is now.
    explicit WSP_Stream(QArray<char> &bytes) : WSP_Stream(bytes.data(), bytes.size()) { }
    /// WSP_Stream(bytes, count) starts at the first of `count` bytes of the caller's.
    WSP_Stream(char *bytes, qint32 count) : data(bytes), pos(0), size(count) { }

    /// hasMore returns 1 while bytes remain, else 0.
    quint32 hasMore() const { return pos < size ? 1 : 0; }
    /// remaining returns how many bytes remain.
    qint32 remaining() const { return size - pos; }
    /// back moves `count` bytes back, to the start at most, and returns 1. A negative count moves
    /// nothing.
    quint32 back(qint32 count);
    /// skip moves `count` bytes on and returns 1. A target at or beyond the end becomes the last
    /// byte, one short of the end, so that the next byte read is the last one; an empty stream
    /// stays at 0. A negative count moves nothing.
    quint32 skip(qint32 count);

    /// readByte sets `out` to the next byte. It fails at the end.
    quint32 readByte(quint8 &out)
    {
        if (pos >= size) {
            return 0;
        }
        out = static_cast<quint8>(data[pos++]);
        return 1;
    }
    /// writeByte writes one byte. It fails when the stream is full.
    quint32 writeByte(quint8 value)
    {
        if (pos >= size) {
            m_overflowed = true;
            return 0;
        }
        data[pos++] = static_cast<char>(value);
        return 1;
    }
    /// readBytes copies `count` bytes to `out`. It fails, without moving, when fewer remain or
    /// `count` is negative.
    quint32 readBytes(char *out, qint32 count);
    /// writeBytes copies `count` bytes into the stream. It fails, without writing, when they do not
    /// fit or `count` is negative.
    quint32 writeBytes(const char *bytes, qint32 count);
    /// readArray fills the whole array, as large as it is, from the stream. It fails as readBytes()
    /// does.
    quint32 readArray(QArray<char> &out) { return readBytes(out.data(), out.size()); }
    /// writeArray writes the whole array. It fails as writeBytes() does.
    quint32 writeArray(const QArray<char> &bytes)
    {
        return writeBytes(bytes.constData(), bytes.size());
    }

    /// readInteger sets `out` to the next Short-integer, or Long-integer of up to 127 bytes, of
    /// which the low 32 bits are kept. A length of 0 reads as 0. It fails when the stream ends
    /// first.
    quint32 readInteger(quint32 &out);
    /// writeInteger writes 127 and less (negative values too: their low seven bits) as a
    /// Short-integer, more as a Long-integer.
    quint32 writeInteger(qint32 value)
    {
        return value <= 127 ? writeByte(static_cast<quint8>((value & 0x7F) | 0x80))
                            : writeLongInteger(static_cast<quint32>(value));
    }
    /// writeLongInteger writes a Long-integer: a length byte, then the value without its leading
    /// zero bytes.
    quint32 writeLongInteger(quint32 value);

    /// readUintvar sets `out` to the next uintvar, of any number of bytes, of which the low 32 bits
    /// are kept. It fails when the stream ends first.
    quint32 readUintvar(quint32 &out);
    /// writeUintvar writes a uintvar of one to five bytes; a negative value takes five.
    quint32 writeUintvar(qint32 value);

    /// readValueLength sets `out` to the next value-length: one byte, or a uintvar after a byte of
    /// 31. The length may reach past the end; that is for the caller to see.
    quint32 readValueLength(quint32 &out);
    /// writeValueLength writes up to 30 as one byte, more as 31 and a uintvar. Of a negative length
    /// the low byte is written.
    quint32 writeValueLength(qint32 length);

    /// readTextString sets `out` to the next Text-string, decoded as UTF-8. A lone 0 gives the null
    /// string; a leading Quote is dropped, and so is a byte order mark; a text that the end of the
    /// stream cuts is accepted. It fails at the end.
    quint32 readTextString(QString &out);
    /// writeTextString writes the text up to its first NUL in UTF-8 with its terminator, a Quote in
    /// front when it begins with a byte of 128 or more. A null string is the terminator alone; half
    /// of a surrogate pair becomes "?".
    quint32 writeTextString(const QString &text) { return writeTextString(text, {}); }
    /// writeTextString(text, suffix) writes both as one text.
    quint32 writeTextString(const QString &text, QLatin1String suffix);

    /// readEncodedString sets `out` to the next Encoded-string-value: a length, a charset and text.
    /// A plain Text-string is read too. The text is decoded as UTF-8 whatever the charset says; a
    /// leading Quote and trailing zero bytes are dropped. It fails when the length reaches past the
    /// end or is smaller than the charset.
    quint32 readEncodedString(QString &out);
    /// writeEncodedString writes an Encoded-string-value with charset UTF-8 (106). A null string is
    /// written as an empty one.
    quint32 writeEncodedString(const QString &text);

    /// hasOverflowed tells whether any write was refused since the stream was made, also where a
    /// codec reported success.
    [[nodiscard]] bool hasOverflowed() const { return m_overflowed; }
    /// noteOverflow notes that a value meant for this stream was cut in a stream of its own.
    void noteOverflow() { m_overflowed = true; }

private:
    class Utf8Text;

    WMSG_NO_EXPORT quint32 readCountedText(quint32 length, QString &out);
    WMSG_NO_EXPORT quint32 writeText(const Utf8Text &text, QLatin1String suffix);
    WMSG_NO_EXPORT quint32 writeUtf8(const Utf8Text &text);

    bool m_overflowed = false;
};
