// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/pdu_walk.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/header_field_walk.h"
#include "tools/wmsg/presentation_check.h"
#include "tools/wmsg/text_view.h"

#include <mms/codec/msgfieldbase.h>
#include <mms/model/result_codes.h>
#include <mms/model/wmmsmsg.h>

#include <QtCore/QtEndian>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qint32 kPrefixSize = 16;
constexpr quint32 kHighestField = 24;
constexpr qint32 kHeaderLengthAt = 4;
constexpr qint32 kBodyLengthAt = 8;
constexpr qint32 kReservedAt = 12;

QString prefixField()
{
    return u"mail file prefix"_s;
}

quint32 wordAt(const QArray<char> &file, qint32 offset)
{
    return qFromLittleEndian<quint32>(file.constData() + offset);
}

bool isAddressList(int id)
{
    return id == MMS_FIELD_TO || id == MMS_FIELD_CC || id == MMS_FIELD_BCC;
}

} // namespace

FileKind kindOf(QByteArrayView file)
{
    return file.startsWith("\x12\x10") ? FileKind::MailFile : FileKind::Pdu;
}

quint32 PduWalk::fail(quint32 result, const Finding &why)
{
    m_failure = why;
    return result;
}

quint32 PduWalk::walk(QArray<char> &file, FileKind kind, qint32 pduOffset)
{
    m_kind = kind;
    m_size = file.size();
    m_pduOffset = kind == FileKind::Pdu ? pduOffset : 0;
    quint32 result = MMS_DECODE_OK;
    if (kind == FileKind::MailFile) {
        result = walkPrefix(file);
    }
    m_headerEnd = m_pduOffset;
    if (result == MMS_DECODE_OK) {
        WSP_Stream pdu(file);
        pdu.pos = m_pduOffset;
        bool bodyFollows = false;
        result = walkHeader(pdu, bodyFollows);
        if (bodyFollows) {
            result = walkBody(pdu);
        }
        if (kind == FileKind::MailFile && result == MMS_DECODE_OK) {
            checkPrefix(file);
        }
    }
    m_notes.mark(
        m_size, u"rest"_s, [] { return u"not read"_s; }, true);
    return result;
}

quint32 PduWalk::walkPrefix(QArray<char> &file)
{
    if (m_size < kPrefixSize) {
        return fail(MMS_DECODE_NO_FILE,
                    {m_size, prefixField(), u"it ends after %1"_s.arg(counted(m_size, "byte"_L1))});
    }
    const QString field = prefixField();
    const char *bytes = file.constData();
    if (bytes[0] == 0 || bytes[1] == 0) {
        return fail(MMS_DECODE_OLD_FILE, {bytes[0] == 0 ? 0 : 1, field, u"there is no prefix"_s});
    }
    m_mmsType = static_cast<quint8>(bytes[2]);
    m_pduOffset = kPrefixSize;
    m_notes.mark(1, field, [] { return u"layout mark"_s; });
    m_notes.mark(2, field, [&] { return u"length of the prefix: %1"_s.arg(quint8(bytes[1])); });
    m_notes.mark(3, field, [&] {
        return u"kind of message: %1 (%2)"_s.arg(mmsTypeInWords(m_mmsType)).arg(m_mmsType);
    });
    m_notes.mark(kHeaderLengthAt, field, [] { return u"always 0"_s; });
    m_notes.mark(kBodyLengthAt, field,
                 [&] { return u"header length: %1"_s.arg(wordAt(file, kHeaderLengthAt)); });
    m_notes.mark(kReservedAt, field,
                 [&] { return u"body length: %1"_s.arg(wordAt(file, kBodyLengthAt)); });
    m_notes.mark(kPrefixSize, field, [] { return u"reserved"_s; });
    return MMS_DECODE_OK;
}

void PduWalk::checkPrefix(QArray<char> &file)
{
    const auto check = [&](qint32 offset, const QString &what, qint64 real) {
        if (wordAt(file, offset) != real) {
            m_notes.warn(offset, prefixField(),
                         u"it says %1 bytes of %2 and there are %3"_s.arg(wordAt(file, offset))
                             .arg(what)
                             .arg(real));
        }
    };
    check(kHeaderLengthAt, u"header"_s, headerLength());
    check(kBodyLengthAt, u"body"_s, bodyLength());
    if (file[3] != 0 || wordAt(file, kReservedAt) != 0) {
        m_notes.warn(file[3] != 0 ? 3 : kReservedAt, prefixField(), u"a reserved byte is not 0"_s);
    }
}

quint32 PduWalk::walkHeader(WSP_Stream &pdu, bool &bodyFollows)
{
    while (pdu.hasMore()) {
        const qint32 start = pdu.pos;
        quint32 id;
        if (!pdu.readInteger(id)) {
            return fail(MMS_DECODE_BAD_FIELD,
                        {start, u"id"_s, u"the data end inside a field id"_s});
        }
        const quint32 result = walkField(pdu, start, id);
        if (result != MMS_DECODE_OK) {
            return result;
        }
        m_headerEnd = pdu.pos;
        if (id == MMS_FIELD_CONTENT_TYPE) {
            bodyFollows = true;
            break;
        }
    }
    if (m_kind == FileKind::Pdu && !m_mask.getMask(MMS_FIELD_MSG_TYPE)) {
        m_notes.warn(m_pduOffset, fieldName(MMS_FIELD_MSG_TYPE), u"the field is missing"_s);
    }
    return MMS_DECODE_OK;
}

quint32 PduWalk::walkField(WSP_Stream &pdu, qint32 start, quint32 id)
{
    if (id == 0 || id > kHighestField) {
        return fail(id == 0 ? MMS_DECODE_NO_CODEC : MMS_DECODE_UNKNOWN_FIELD,
                    {start, QString::number(id), u"only the ids 1 to 24 are known"_s});
    }
    const auto field = static_cast<quint8>(id);
    noteOrder(start, field);
    m_mask.setMask(field);
    m_notes.mark(pdu.pos, fieldName(field), [] { return u"field id"_s; });
    return walkValue(pdu, field);
}

void PduWalk::noteOrder(qint32 start, int id)
{
    const bool isFirst = start == m_pduOffset;
    if (m_kind == FileKind::Pdu && isFirst && id != MMS_FIELD_MSG_TYPE) {
        m_notes.warn(start, fieldName(id), u"the first field is not the message type"_s);
    }
    if (++m_timesSeen[size_t(id)] == 2 && !isAddressList(id)) {
        m_notes.warn(start, fieldName(id), u"the field comes again; the last value counts"_s);
    }
}

// The codec decides; the walk over the value explains.
quint32 PduWalk::walkValue(WSP_Stream &pdu, int id)
{
    const QString name = fieldName(id);
    const qint32 start = pdu.pos;
    WireReader in(m_notes, pdu, name);
    const std::unique_ptr<MsgFieldBase> codec(WMMSMsg::selectField(static_cast<quint8>(id)));
    const bool isRead = codec->read(pdu, &m_header) != 0;
    forgetAddresses();
    const bool isWhole = HeaderFieldWalk(in, id, pdu.pos).walk();
    if (!isRead) {
        m_failedField = id;
        const Finding unexplained{pdu.pos, name, u"the data end inside the value"_s};
        return fail(MMS_DECODE_BAD_FIELD, in.problem().value_or(unexplained));
    }
    if (!isWhole) {
        m_notes.warn(in.problem()->offset, name,
                     u"the value cannot be read, and reading goes on: "_s + in.problem()->message);
        m_notes.mark(pdu.pos, name, [] { return u"cannot be read"_s; });
    }
    m_notes.mark(std::max(start, pdu.pos), name, [] { return u"value"_s; });
    return MMS_DECODE_OK;
}

// Nothing here asks for them, and a file can name millions.
void PduWalk::forgetAddresses()
{
    m_header.to.clear();
    m_header.cc.clear();
    m_header.bcc.clear();
}

quint32 PduWalk::walkBody(WSP_Stream &pdu)
{
    if (!m_header.contentType.needDecode()) {
        walkSinglePart(pdu);
        return MMS_DECODE_OK;
    }
    qint32 start = pdu.pos;
    if (!pdu.hasMore()) {
        // A stream never stands behind its last byte when it is asked to skip there.
        start = pdu.size - 1;
        m_notes.warn(start, u"body"_s,
                     u"there is no body; the last byte of the header is read as the number of "
                     "parts"_s);
    }
    const auto problem = BodyWalk(m_notes, pdu.data).walk(start, pdu.size, QString(), m_parts);
    if (problem) {
        return fail(MMS_DECODE_BAD_BODY, *problem);
    }
    checkPresentation(pdu);
    return MMS_DECODE_OK;
}

void PduWalk::walkSinglePart(const WSP_Stream &pdu)
{
    WalkedPart part;
    part.field = u"body"_s;
    part.offset = part.dataOffset = pdu.pos;
    part.dataLength = pdu.remaining();
    part.contentType = m_header.contentType;
    if (part.contentType.isEmpty()) {
        m_notes.warn(pdu.pos, part.field, u"the body has no media type"_s);
    }
    BodyWalk::checkText(m_notes, part, {pdu.data + pdu.pos, pdu.remaining()});
    m_notes.mark(
        pdu.size, part.field,
        [&] { return u"data, "_s + printable(part.contentType.getMimeType()); }, true);
}

void PduWalk::checkPresentation(const WSP_Stream &pdu)
{
    const QByteArrayView file(pdu.data, pdu.size);
    cli::checkPresentation(m_notes, m_header.contentType, m_parts, file);
}

} // namespace wmsg::cli
