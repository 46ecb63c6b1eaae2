// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/wire_reader.h"

#include "services/intake/wire_bytes.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

using intake::kLengthQuote;

constexpr quint32 kUtf8 = 106;
constexpr qsizetype kShownText = 160;

QString theDataEnd(const QString &what)
{
    return u"the data end inside %1"_s.arg(what);
}

} // namespace

QString quoted(const QString &text)
{
    return text.isNull() ? u"nothing"_s : u'"' + shortened(text, kShownText) + u'"';
}

WireReader::WireReader(WalkNotes &notes, const WSP_Stream &stream, QString field)
    : m_notes(notes), m_stream(stream), m_field(std::move(field))
{
}

int WireReader::peek() const
{
    return hasMore() ? static_cast<quint8>(m_stream.data[m_stream.pos]) : -1;
}

QByteArrayView WireReader::bytes(qint32 from, qint32 to) const
{
    return {m_stream.data + from, to - from};
}

WSP_Stream WireReader::piece(qint32 from, qint32 to) const
{
    WSP_Stream stream(m_stream.data, to);
    stream.pos = from;
    return stream;
}

bool WireReader::fail(qint64 offset, const QString &message)
{
    if (!m_problem) {
        m_problem = Finding{offset, m_field, message};
    }
    return false;
}

bool WireReader::byte(quint8 &out, const QString &what)
{
    return m_stream.readByte(out) || fail(pos(), theDataEnd(what));
}

bool WireReader::integer(quint32 &out, const QString &what)
{
    const qint32 start = pos();
    const int first = peek();
    if (!m_stream.readInteger(out)) {
        return fail(start, theDataEnd(what));
    }
    if (first == 0) {
        warn(start, u"%1 is a long integer without bytes; it reads as 0"_s.arg(what));
    } else if (first > 4 && first < 0x80) {
        warn(start,
             u"%1 is a long integer of %2 bytes; the low 32 bits count"_s.arg(what).arg(first));
    }
    return true;
}

bool WireReader::uintvar(quint32 &out, const QString &what)
{
    const qint32 start = pos();
    if (!m_stream.readUintvar(out)) {
        return fail(start, theDataEnd(what));
    }
    if (pos() - start > 5) {
        warn(start,
             u"%1 is a number of %2 bytes; the low 32 bits count"_s.arg(what).arg(pos() - start));
    }
    return true;
}

bool WireReader::valueLength(quint32 &out)
{
    const qint32 start = pos();
    if (!m_stream.readValueLength(out)) {
        return fail(start, theDataEnd(u"the length of the value"_s));
    }
    mark([&] { return u"length of the value: %1"_s.arg(out); });
    return true;
}

bool WireReader::text(QString &out, const QString &what)
{
    const qint32 start = pos();
    if (!m_stream.readTextString(out)) {
        return fail(start, theDataEnd(what));
    }
    if (m_stream.data[pos() - 1] != 0) {
        warn(start, u"%1 has no end mark and runs to the end of the data"_s.arg(what));
    }
    checkText(start, kUtf8);
    mark([&] { return what + u": "_s + quoted(out); });
    return true;
}

bool WireReader::encodedText(QString &out, const QString &what)
{
    const int first = peek();
    if (first == 0 || (first >= 32 && first <= 127)) {
        return text(out, what);
    }
    quint32 length = 0;
    return textLength(length) && countedText(length, out, what);
}

bool WireReader::textLength(quint32 &out)
{
    const qint32 start = pos();
    quint8 first;
    if (!byte(first, u"the length of the text"_s)) {
        return false;
    }
    out = first;
    if (first == kLengthQuote && !m_stream.readUintvar(out)) {
        return fail(start, theDataEnd(u"the length of the text"_s));
    }
    if (first >= 0x80) {
        warn(start, u"a byte of %1 is taken as the length of the text"_s.arg(first));
    }
    mark([&] { return u"length of the text: %1"_s.arg(out); });
    return true;
}

bool WireReader::countedText(quint32 length, QString &out, const QString &what)
{
    const qint32 start = pos();
    quint32 charset;
    if (!integer(charset, u"the charset"_s)) {
        return false;
    }
    mark([&] {
        const char *name = charsetName(charset);
        return u"charset: %1 (%2)"_s.arg(QLatin1String(name ? name : "unknown")).arg(charset);
    });
    const qint64 used = pos() - start;
    if (length < used) {
        return fail(start,
                    u"the length of the text, %1, is less than its charset takes"_s.arg(length));
    }
    if (length - used > m_stream.remaining()) {
        return fail(
            pos(),
            u"the text says %1 bytes and %2 remain"_s.arg(length - used).arg(m_stream.remaining()));
    }
    const qint32 from = pos();
    moveTo(from + static_cast<qint32>(length - used));
    QByteArrayView content = bytes(from, pos());
    content = content.startsWith('\x7F') ? content.sliced(1) : content;
    while (content.endsWith('\0')) {
        content.chop(1);
    }
    out = QString::fromUtf8(content);
    checkText(from, charset);
    mark([&] { return what + u": "_s + quoted(out); });
    return true;
}

// Every text is read as UTF-8; ASCII is the same in most character sets.
void WireReader::checkText(qint32 from, quint32 charset)
{
    const QByteArrayView content = bytes(from, pos());
    const bool isAscii = std::all_of(content.begin(), content.end(),
                                     [](char c) { return static_cast<quint8>(c) < 0x80; });
    if (!isAscii && charset != kUtf8) {
        const char *name = charsetName(charset);
        warn(from,
             u"the text is in charset %1 and is read as UTF-8"_s.arg(
                 name ? QString::fromLatin1(name) : QString::number(charset)));
    } else if (!isAscii && !QUtf8StringView(content.data(), content.size()).isValidUtf8()) {
        warn(from, u"the text is not valid UTF-8"_s);
    }
}

} // namespace wmsg::cli
