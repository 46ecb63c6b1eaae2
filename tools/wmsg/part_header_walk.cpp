// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/part_header_walk.h"

#include "services/intake/wire_bytes.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"

#include <mms/model/wmmsmultipart.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

using intake::kContentId;
using intake::kLengthQuote;
using intake::kLocation;
using intake::kParamCharset;
using intake::kParamName;
using intake::kParamStart;
using intake::kParamType;
using intake::kTextQuote;

constexpr quint8 kQuotedString = 0x22;

QString withoutQuotesAndBrackets(QString location)
{
    return location.remove(u'"').remove(u'<').remove(u'>');
}

// What a received charset number becomes; only the UTF-16 family is kept.
bool isUtf16Charset(quint32 mibEnum)
{
    return mibEnum == 1000 || (mibEnum >= 1013 && mibEnum <= 1015);
}

} // namespace

bool PartHeaderWalk::walk()
{
    if (!contentType() || !headers()) {
        return false;
    }
    settle();
    return true;
}

// The part's own rules say what becomes of the name, the location and the id.
void PartHeaderWalk::settle()
{
    WMMSMultipart part;
    part.setContentID(m_id);
    part.setContentLocation(withoutQuotesAndBrackets(m_location));
    part.setContentType(m_part.contentType);
    m_part.contentId = part.getContentID();
    m_part.contentLocation = part.getContentLocation();
}

// Takes over the problem of a reader of a piece of the headers; always false.
bool PartHeaderWalk::take(const WireReader &in)
{
    const auto &problem = in.problem();
    return problem ? m_in.fail(problem->offset, problem->message)
                   : m_in.fail(in.pos(), u"the content type cannot be read"_s);
}

bool PartHeaderWalk::contentType()
{
    quint8 first;
    if (!m_in.byte(first, u"the content type"_s)) {
        return false;
    }
    if (first > kLengthQuote) {
        return media(m_in, first);
    }
    m_in.moveTo(m_in.pos() - 1);
    quint32 length;
    if (!m_in.valueLength(length)) {
        return false;
    }
    const qint32 start = m_in.pos();
    if (length > quint32(m_in.size() - start)) {
        return m_in.fail(start,
                         u"the content type says %1 and %2 remain"_s.arg(counted(length, "byte"_L1))
                             .arg(m_in.size() - start));
    }
    const qint32 end = start + static_cast<qint32>(length);
    WireReader in(m_notes, m_in.piece(start, end), m_in.field());
    m_in.moveTo(end);
    if (!in.byte(first, u"the media type"_s)) {
        return take(in);
    }
    if (first <= kLengthQuote) {
        return m_in.fail(start, u"a byte of %1 begins no media type"_s.arg(first));
    }
    return (media(in, first) && parameters(in)) || take(in);
}

bool PartHeaderWalk::media(WireReader &in, quint8 first)
{
    if (first & 0x80) {
        m_part.contentType.setWellKnownMedia(first & 0x7F);
        in.mark([&] {
            return u"content type: %1 (%2)"_s.arg(m_part.contentType.getMimeType())
                .arg(first & 0x7F);
        });
        return true;
    }
    const qint32 start = in.pos() - 1;
    in.moveTo(start);
    QString text;
    if (!in.text(text, u"content type"_s)) {
        return false;
    }
    m_part.contentType.setMimeType(text);
    if (!text.contains(u'/')) {
        in.warn(start, u"%1 is no media type"_s.arg(quoted(text)));
    }
    return true;
}

bool PartHeaderWalk::parameters(WireReader &in)
{
    while (in.hasMore()) {
        if (!parameter(in)) {
            return false;
        }
    }
    return true;
}

bool PartHeaderWalk::parameter(WireReader &in)
{
    const int token = in.peek();
    if (token != kParamCharset && token != kParamName && token != kParamType
        && token != kParamStart) {
        return namedParameter(in);
    }
    in.moveTo(in.pos() + 1);
    if (token == kParamCharset) {
        quint32 charset;
        if (!in.integer(charset, u"the charset"_s)) {
            return false;
        }
        const char *name = charsetName(charset);
        in.mark([&] {
            return u"charset: %1 (%2)"_s.arg(QLatin1String(name ? name : "unknown")).arg(charset);
        });
        if (isUtf16Charset(charset)) {
            m_part.contentType.setParam(u"charset"_s, QLatin1String(name));
        }
        return true;
    }
    QString text;
    if (token == kParamName) {
        return in.text(m_location, u"name"_s);
    }
    // Type and start change places when a part is read.
    if (!in.text(text, token == kParamType ? u"type parameter"_s : u"start parameter"_s)) {
        return false;
    }
    if (token == kParamType) {
        m_part.contentType.setParamStart(text);
    } else {
        m_part.contentType.setParamType(text);
    }
    return true;
}

// Only a boundary is kept. The value of any other parameter is taken for the next name.
bool PartHeaderWalk::namedParameter(WireReader &in)
{
    const qint32 start = in.pos();
    qint32 end = start;
    while (end < in.size() && in.bytes(end, end + 1).front() != 0) {
        ++end;
    }
    const QByteArrayView name = in.bytes(start, end);
    const auto found = name.indexOf(QByteArrayView("boundary"));
    if (found >= 0) {
        const bool isQuoted = found > 0 && name.front() == kTextQuote;
        return boundary(in, start + (isQuoted ? 1 : 0), start + static_cast<qint32>(found));
    }
    const int token = in.peek();
    QString text;
    if (!in.text(text, u"skipped parameter"_s)) {
        return false;
    }
    in.warn(start,
            token >= 0x80 ? u"parameter 0x%1 of the content type is skipped"_s.arg(token, 2, 16)
                          : u"parameter %1 of the content type is skipped"_s.arg(quoted(text)));
    return true;
}

// What a sender ran into the name in front of "boundary" is read as parameters of its own.
bool PartHeaderWalk::boundary(WireReader &in, qint32 nameStart, qint32 boundaryStart)
{
    bool inFrontRead = true;
    if (boundaryStart > nameStart) {
        in.moveTo(nameStart);
        in.mark([] { return u"quote"_s; });
        WireReader inFront(m_notes, in.piece(nameStart, boundaryStart), in.field());
        inFrontRead = parameters(inFront) || in.fail(nameStart, inFront.problem()->message);
    }
    in.moveTo(boundaryStart);
    QString text;
    if (!in.text(text, u"parameter"_s) || !in.text(text, u"boundary"_s)) {
        return false;
    }
    m_part.contentType.setParam(u"boundary"_s, text);
    return inFrontRead;
}

bool PartHeaderWalk::headers()
{
    qint32 skipped = m_in.pos();
    while (m_in.hasMore()) {
        const int header = m_in.peek();
        if (header != kLocation && header != kContentId) {
            m_in.moveTo(m_in.pos() + 1);
            continue;
        }
        stepOver(skipped, m_in.pos());
        m_in.moveTo(m_in.pos() + 1);
        const bool read =
            header == kLocation ? m_in.text(m_location, u"Content-Location"_s) : contentId();
        if (!read) {
            return false;
        }
        skipped = m_in.pos();
    }
    stepOver(skipped, m_in.pos());
    return true;
}

bool PartHeaderWalk::contentId()
{
    quint8 first;
    if (!m_in.byte(first, u"the Content-ID"_s)) {
        return false;
    }
    if (first != kQuotedString) {
        m_in.moveTo(m_in.pos() - 1);
    }
    return m_in.text(m_id, u"Content-ID"_s);
}

void PartHeaderWalk::stepOver(qint32 from, qint32 to)
{
    if (to > from) {
        m_notes.mark(to, m_in.field(), [] { return u"other headers, stepped over"_s; });
        m_in.warn(from, counted(to - from, "byte"_L1) + u" of headers are stepped over"_s);
    }
}

} // namespace wmsg::cli
