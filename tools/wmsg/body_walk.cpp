// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/body_walk.h"

#include "tools/wmsg/part_header_walk.h"
#include "tools/wmsg/text_view.h"

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kDeepestNesting = 16;

QString fieldOf(const QString &path)
{
    return path.isEmpty() ? u"body"_s : u"part "_s + path;
}

bool isMultipart(const WMMSContentType &type)
{
    const QString name = type.getMimeType();
    return name.startsWith("application/vnd.wap.multipart."_L1) || name.startsWith("multipart/"_L1);
}

} // namespace

std::optional<Finding> BodyWalk::walk(qint32 start, qint32 end, const QString &path,
                                      QList<WalkedPart> &parts, int depth)
{
    WSP_Stream body(m_data, end);
    body.pos = start;
    quint8 count;
    if (!body.readByte(count)) {
        return Finding{start, fieldOf(path), u"there is no number of parts"_s};
    }
    m_notes.mark(body.pos, fieldOf(path), [&] { return u"number of parts: %1"_s.arg(count); });
    for (int number = 1; number <= count; ++number) {
        WalkedPart part;
        const QString place =
            path.isEmpty() ? QString::number(number) : u"%1.%2"_s.arg(path).arg(number);
        part.field = u"part "_s + place;
        part.offset = body.pos;
        if (!body.hasMore()) {
            return Finding{body.pos, part.field,
                           u"the data end after %1 of %2 parts"_s.arg(number - 1).arg(count)};
        }
        if (auto problem = walkEntry(body, part, depth)) {
            return problem;
        }
        parts.append(std::move(part));
    }
    if (body.hasMore()) {
        m_notes.warn(body.pos, fieldOf(path),
                     counted(body.remaining(), "byte"_L1) + u" behind the last part"_s);
        m_notes.mark(
            end, fieldOf(path), [] { return u"behind the last part"_s; }, true);
    }
    return std::nullopt;
}

std::optional<Finding> BodyWalk::walkEntry(WSP_Stream &body, WalkedPart &part, int depth)
{
    WireReader in(m_notes, body, part.field);
    quint32 headersLength;
    quint32 dataLength;
    if (!in.uintvar(headersLength, u"the length of the headers"_s)) {
        return in.problem();
    }
    in.mark([&] { return u"length of the headers: %1"_s.arg(headersLength); });
    if (!in.uintvar(dataLength, u"the length of the data"_s)) {
        return in.problem();
    }
    in.mark([&] { return u"length of the data: %1"_s.arg(dataLength); });
    body.pos = in.pos();
    if (auto problem = walkHeaders(body, headersLength, part)) {
        return problem;
    }
    if (dataLength > quint32(body.remaining())) {
        return Finding{body.pos, part.field,
                       u"the data say %1 and %2 remain"_s.arg(counted(dataLength, "byte"_L1))
                           .arg(body.remaining())};
    }
    part.dataOffset = body.pos;
    part.dataLength = static_cast<qint32>(dataLength);
    body.pos += part.dataLength;
    walkData(part, depth);
    return std::nullopt;
}

std::optional<Finding> BodyWalk::walkHeaders(WSP_Stream &body, quint32 length, WalkedPart &part)
{
    if (length > quint32(body.remaining())) {
        return Finding{body.pos, part.field,
                       u"the headers say %1 and %2 remain"_s.arg(counted(length, "byte"_L1))
                           .arg(body.remaining())};
    }
    WSP_Stream headers(m_data, body.pos + static_cast<qint32>(length));
    headers.pos = body.pos;
    body.pos = headers.size;
    WireReader in(m_notes, headers, part.field);
    return PartHeaderWalk(m_notes, in, part).walk() ? std::nullopt : in.problem();
}

void BodyWalk::walkData(WalkedPart &part, int depth)
{
    if (part.contentType.needDecode()) {
        walkNested(part, depth);
    } else if (isMultipart(part.contentType)) {
        m_notes.warn(part.dataOffset, part.field,
                     quoted(part.contentType.getMimeType())
                         + u" is not opened; it stays one part"_s);
    } else if (part.dataLength == 0) {
        m_notes.warn(part.dataOffset, part.field, u"the part is empty"_s);
    }
    checkText(m_notes, part, {m_data + part.dataOffset, part.dataLength});
    m_notes.mark(
        part.dataOffset + part.dataLength, part.field,
        [&] { return u"data, "_s + printable(part.contentType.getMimeType()); }, true);
}

void BodyWalk::walkNested(WalkedPart &part, int depth)
{
    if (depth >= kDeepestNesting) {
        m_notes.warn(part.dataOffset, part.field,
                     u"nested deeper than %1 levels; it stays one part"_s.arg(kDeepestNesting));
        return;
    }
    const QString path = part.field.section(u' ', 1);
    const auto problem =
        walk(part.dataOffset, part.dataOffset + part.dataLength, path, part.parts, depth + 1);
    if (problem) {
        m_notes.warn(problem->offset, problem->field,
                     u"the nested body cannot be read: "_s + problem->message);
    }
}

void BodyWalk::checkText(WalkNotes &notes, const WalkedPart &part, QByteArrayView bytes)
{
    const WMMSContentType &type = part.contentType;
    if (type.getMainType().toLower() != "text"_L1) {
        return;
    }
    const QString charset = type.getParam(u"charset"_s);
    const bool isUtf16 = charset.startsWith("UTF-16"_L1) || charset == "UCS2"_L1;
    if (isUtf16 && charset != "UTF-16LE"_L1 && !bytes.startsWith("\xFF\xFE")) {
        notes.warn(
            part.dataOffset, part.field,
            u"the text is in %1; it is read with each two characters exchanged"_s.arg(charset));
    } else if (!isUtf16 && !QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8()) {
        notes.warn(part.dataOffset, part.field, u"the text is not valid UTF-8"_s);
    }
}

} // namespace wmsg::cli
