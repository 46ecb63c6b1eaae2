// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/field_table.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/codec/wsp_stream.h"
#include "mms/model/pdu_write_order.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "mms/model/wmmsmultipart_body.h"
#include "util/mms_util_common.h"

#include <climits>
#include <cstring>

// pdu   := *field [content-type-field body]      a field 4 ends the header
// field := id value                              id: integer 1..24
// body  := multipart body, or the bytes of the one part

namespace {

constexpr quint32 kHighestField = 24;
constexpr qint64 kHeaderRoom = 10240;
constexpr qint64 kEmptyBodySize = 512; // what a root part without content takes, at most

void store(int *length, int value)
{
    if (length) {
        *length = value;
    }
}

} // namespace

quint32 WMMSMsg::construct(QArray<char> &pdu, bool decodeBody)
{
    return decode(pdu, decodeBody, Bytes::Copied);
}

quint32 WMMSMsg::decode(QArray<char> &pdu, bool decodeBody, Bytes bytes)
{
    WSP_Stream stream(pdu);
    bool bodyFollows = false;
    const quint32 result = decodeHeader(stream, bodyFollows);
    if (!bodyFollows) {
        return result;
    }
    m_headerLength = stream.pos;
    return decodeBody ? decodeBodyBehindHeader(pdu, bytes) : quint32(MMS_DECODE_OK);
}

// Kept: a PDU that ends before its content type is decoded. The header length stays as it was.
quint32 WMMSMsg::decodeHeader(WSP_Stream &stream, bool &bodyFollows)
{
    while (stream.hasMore()) {
        quint32 id;
        if (!stream.readInteger(id)) {
            logLine(4, "error to read fieldID");
            return MMS_DECODE_BAD_FIELD;
        }
        const quint32 result = decodeField(stream, id);
        if (result != MMS_DECODE_OK) {
            return result;
        }
        if (id == MMS_FIELD_CONTENT_TYPE) {
            logLine(4, "parse header end");
            bodyFollows = true;
            return MMS_DECODE_OK;
        }
    }
    logLine(4, "no more data,parse header end");
    return MMS_DECODE_OK;
}

// Kept: a field is marked as present before its value is read, so one that fails counts as present.
quint32 WMMSMsg::decodeField(WSP_Stream &stream, quint32 id)
{
    if (id > kHighestField) {
        logLine(4, "error fieldID: %d", id);
        return MMS_DECODE_UNKNOWN_FIELD;
    }
    m_mask->setMask(static_cast<quint8>(id));
    const auto *field = wmsg::codec::fieldRow(id);
    if (!field) {
        logLine(4, "decode fail,fielID: %d", id);
        return MMS_DECODE_NO_CODEC;
    }
    if (!field->read(stream, m_header.get())) {
        logLine(4, "error handler,fieldID: %d", id);
        return MMS_DECODE_BAD_FIELD;
    }
    if (wmsg::log::isPrinted(4)) {
        field->print(m_header.get());
    }
    return MMS_DECODE_OK;
}

quint32 WMMSMsg::decodeBodyBehindHeader(QArray<char> &pdu, Bytes bytes)
{
    using Reader = WMMSMultipart::BodyReader;
    const bool shares = bytes == Bytes::Shared;
    m_bodyLength = pdu.size() - m_headerLength;
    if (m_header->contentType.needDecode()) {
        Reader reader(pdu, shares ? Reader::Bytes::Shared : Reader::Bytes::Copied);
        if (!reader.read(m_body, m_headerLength)) {
            return MMS_DECODE_BAD_BODY;
        }
    } else {
        setSingleBody(
            shares ? QArray<char>::slice(pdu, m_headerLength, m_bodyLength)
                   : QArray<char>::fromBytes(pdu.constData() + m_headerLength, m_bodyLength));
    }
    m_body.setContentType(m_header->contentType);
    return MMS_DECODE_OK;
}

void WMMSMsg::setSingleBody(const QArray<char> &received)
{
    WMMSContentType &type = m_header->contentType;
    if (type.getMainType().toLower() != QLatin1String("text")) {
        m_body.setData(received);
        return;
    }
    const QString charset = type.getParam(QStringLiteral("charset")).toUpper();
    logLine(4, "charset =%s", charset);
    QArray<char> text;
    if (MMS_UTIL_Common::toUTF8(received, charset, text)) {
        m_body.setData(text);
        type.setParam(QStringLiteral("charset"), QStringLiteral("UTF-8"));
    } else {
        m_body.setData(received);
    }
}

quint32 WMMSMsg::packTo(QArray<char> &out, int *headerLength, int *bodyLength)
{
    if (!hasContent()) {
        return packHeaderAlone(out); // Kept: without a body the two lengths are not stored.
    }
    if (m_body.holds(out)) {
        QArray<char> own;
        const quint32 result = packTo(own, headerLength, bodyLength);
        out = own;
        return result;
    }
    const quint32 result = packWithBody(out);
    if (result == MMS_ENCODE_OK) {
        store(headerLength, m_headerLength);
        store(bodyLength, m_bodyLength);
    }
    return result;
}

quint32 WMMSMsg::packWithBody(QArray<char> &out)
{
    const qint64 room = m_body.getApproxSize() + kHeaderRoom;
    if (room > INT_MAX || !out.resize(static_cast<int>(room))) {
        return MMS_ENCODE_BAD_FIELD;
    }
    WSP_Stream stream(out);
    if (const quint32 result = encodeHeader(stream); result != MMS_ENCODE_OK) {
        return result;
    }
    if (m_header->contentType.isEmpty()) {
        return MMS_ENCODE_NO_CONTENT_TYPE;
    }
    if (const quint32 result = encodeBodyBehindHeader(out); result != MMS_ENCODE_OK) {
        return result;
    }
    m_bodyLength = out.size() - m_headerLength;
    logLine(4, "encode body len:%d", m_bodyLength);
    return MMS_ENCODE_OK;
}

// The room is that of any header; it lies on the stack, so that `out` is allocated once, in its
// size.
quint32 WMMSMsg::packHeaderAlone(QArray<char> &out)
{
    char bytes[kHeaderRoom + kEmptyBodySize];
    WSP_Stream stream(bytes, sizeof bytes);
    if (const quint32 result = encodeHeader(stream); result != MMS_ENCODE_OK) {
        return result;
    }
    if (!out.resize(m_headerLength)) {
        return MMS_ENCODE_BAD_FIELD;
    }
    memcpy(out.data(), bytes, static_cast<size_t>(m_headerLength));
    m_bodyLength = 0;
    return MMS_ENCODE_OK;
}

bool WMMSMsg::hasContent() const
{
    const auto *parts = m_body.subParts();
    return !m_body.getData().isEmpty() || (parts && !parts->isEmpty());
}

quint32 WMMSMsg::encodeHeader(WSP_Stream &stream)
{
    const auto row = static_cast<quint8>(m_header->msgType - MMS_PDU_SEND_REQ);
    if (row >= wmsg::model::kWriteOrder.size()) {
        logLine(4, "PDU type error! hdr->msgType:%d", m_header->msgType);
        return MMS_ENCODE_BAD_PDU_TYPE;
    }
    for (const quint8 always :
         {MMS_FIELD_FROM, MMS_FIELD_BCC, MMS_FIELD_CC, MMS_FIELD_TO, MMS_FIELD_CONTENT_TYPE}) {
        m_mask->setMask(always);
    }
    for (const int id : wmsg::model::kWriteOrder[row]) {
        if (id == wmsg::model::kEndOfRow) {
            break;
        }
        if (!m_mask->getMask(static_cast<quint8>(id))) {
            continue;
        }
        if (const quint32 result = encodeField(stream, id); result != MMS_ENCODE_OK) {
            return result;
        }
    }
    m_headerLength = stream.pos;
    logLine(4, "encode header len:%d", m_headerLength);
    m_body.setContentType(m_header->contentType);
    return MMS_ENCODE_OK;
}

// A codec may report success for a value that was cut; nothing leaves with bytes missing.
quint32 WMMSMsg::encodeField(WSP_Stream &stream, int id)
{
    const auto *field = wmsg::codec::fieldRow(static_cast<quint32>(id));
    if (!field) {
        return MMS_ENCODE_NO_CODEC;
    }
    if (!field->write(stream, m_header.get()) || stream.hasOverflowed()) {
        logLine(4, "field handler write fail!");
        return MMS_ENCODE_BAD_FIELD;
    }
    return MMS_ENCODE_OK;
}

// Kept: a body of a type that is not decoded is the data alone. Sub-parts are not written then.
quint32 WMMSMsg::encodeBodyBehindHeader(QArray<char> &out)
{
    if (m_header->contentType.needDecode()) {
        using Writer = WMMSMultipart::BodyWriter;
        const bool written =
            encodeParts(out, Writer::Approximate) || encodeParts(out, Writer::Largest);
        return written ? MMS_ENCODE_OK : MMS_ENCODE_BAD_FIELD;
    }
    const QArray<char> &bytes = m_body.getData();
    if (bytes.size() > INT_MAX - m_headerLength || !out.resize(m_headerLength + bytes.size())) {
        return MMS_ENCODE_BAD_FIELD;
    }
    if (!bytes.isEmpty()) {
        memcpy(out.data() + m_headerLength, bytes.constData(), static_cast<size_t>(bytes.size()));
    }
    return MMS_ENCODE_OK;
}

bool WMMSMsg::encodeParts(QArray<char> &out, int allowance)
{
    using Writer = WMMSMultipart::BodyWriter;
    Writer writer(m_body, static_cast<Writer::Allowance>(allowance));
    return writer.write(out, m_headerLength, m_headerLength + writer.room()) && writer.isWhole();
}

bool WMMSMsg::getMessageLength(int &headerLength, int &bodyLength)
{
    QArray<char> scratch;
    if (packTo(scratch, nullptr, nullptr) != MMS_ENCODE_OK) {
        return false;
    }
    headerLength = m_headerLength;
    bodyLength = m_bodyLength;
    return true;
}
