// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/message_properties.h"

#include "fuzz/fuzz_support.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>

#include <algorithm>
#include <ctime>

namespace wmsg::fuzz {

namespace {

constexpr unsigned char kEmail = 0;
constexpr int kRoomForHeaders = 400; // characters that surely fit all limits of a part's headers

bool contains(const QString &text, const char *anyOf)
{
    return std::any_of(text.cbegin(), text.cend(),
                       [anyOf](QChar c) { return QByteArrayView(anyOf).contains(c.toLatin1()); });
}

bool isAscii(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x80; });
}

/// A text comes back unless a NUL inside ends it early, or it begins with what the wire takes for
/// something else: a length (below 32), the quote (127) or a byte-order mark.
bool isPlain(const QString &text)
{
    if (text.isEmpty()) {
        return true;
    }
    const char16_t first = text.front().unicode();
    return first >= 32 && first != 127 && first != 0xFEFF && !text.contains(QChar());
}

/// An address comes back unless its value alone, without the name, reads as something else.
bool entrySurvives(const WMFMEntry &entry)
{
    const QString value = entry.getEntryVal();
    return isPlain(value)
        && (entry.getEntryType() != kEmail
            || (value.contains(QLatin1Char('@')) && !value.contains(QLatin1Char('<'))));
}

bool entriesSurvive(const QValueList<WMFMEntry> &entries)
{
    return std::all_of(entries.cbegin(), entries.cend(), entrySurvives);
}

/// The header's content type comes back when its number fits the seven bits of the wire and is not
/// 0, all its parameters are written, and their characters take a byte each: the reader counts
/// characters. A DRM message loses the boundary that kept it from being decoded.
bool typeSurvives(const WMMSContentType &type)
{
    if (type.isEmpty()) {
        return true;
    }
    for (auto param = type.params().cbegin(); param != type.params().cend(); ++param) {
        const bool isWritten = param.key() == QLatin1String("start")
            || param.key() == QLatin1String("type")
            || param.key() == QLatin1String("Application-ID")
            || param.key() == QLatin1String("Reply-To-Application-ID");
        if (!isWritten || !isPlain(param.value()) || !isAscii(param.value())
            || param.value().startsWith(QLatin1Char('"'))) {
            return false;
        }
    }
    return type.wellKnownId() > 0 && type.wellKnownId() < 128;
}

/// A text or presentation loses a NUL at its end each time that it is read.
bool endsWithDroppedNul(const WMMSMultipart &part)
{
    const QArray<char> &data = part.getData();
    const QString type = part.getContentType().getMimeType();
    return !data.isEmpty() && data.at(data.size() - 1) == 0
        && (type == QLatin1String("text/plain") || type == QLatin1String("application/smil"));
}

/// A location loses its quotes and brackets, an id one quote at its start; a part without a
/// location gets its id as one.
bool partSurvives(const WMMSMultipart &part)
{
    const QString location = part.getContentLocation();
    const QString id = part.getContentID();
    const QString boundary = part.getContentType().getParam(QStringLiteral("boundary"));
    const QString type = part.getContentType().getMimeType();
    return isPlain(type) && isPlain(location) && isPlain(id) && isPlain(boundary)
        && !contains(location, "\"<>") && !id.startsWith(QLatin1Char('"'))
        && (id.isEmpty() || !location.isEmpty()) && !endsWithDroppedNul(part)
        && type.size() + 2 * location.size() + id.size() + boundary.size() < kRoomForHeaders
        && survivesWire(part);
}

void describe(QDataStream &stream, const WMMSMultipart &part, bool withNestedData)
{
    const auto *parts = part.subParts();
    const bool isLeaf = !parts || parts->isEmpty();
    stream << part.getContentType().toString() << part.getContentLocation() << part.getContentID()
           << (isLeaf || withNestedData ? part.getData().toByteArray() : QByteArray())
           << qint64(isLeaf ? 0 : parts->size());
    if (!isLeaf) {
        for (const WMMSMultipart &below : *parts) {
            describe(stream, below, withNestedData);
        }
    }
}

void describe(QDataStream &stream, const QValueList<WMFMEntry> &entries)
{
    stream << entries.size();
    for (const WMFMEntry &entry : entries) {
        stream << entry.getEntryType() << entry.getEntryVal() << entry.getContactName();
    }
}

bool hasBody(const WMMSMultipart &root)
{
    return !root.getData().isEmpty() || (root.subParts() && !root.subParts()->isEmpty());
}

bool carriesContentType(unsigned char pduType)
{
    return pduType == MMS_PDU_SEND_REQ || pduType == MMS_PDU_RETRIEVE_CONF
        || pduType == MMS_PDU_STORED;
}

/// Encodes into memory that held `filler`, so that a byte that was never written shows.
quint32 encode(WMMSMsg &message, char filler, QArray<char> &out)
{
    constexpr int kUsedMemory = 12288; // what a small message takes
    out.fill(filler, kUsedMemory);
    return message.packTo(out, nullptr, nullptr);
}

/// Whatever an address or another text holds, it never becomes a field of its own. A body behind a
/// header without a content type does: such a PDU does not say where it begins.
void checkRecipients(const WMMSMsg &encoded, QArray<char> &pdu, unsigned char pduType)
{
    if (!carriesContentType(pduType) && encoded.bodyLength() > 0) {
        return;
    }
    const MMS_HDR_S &written = encoded.header();
    WMMSMsg again;
    again.clear();
    again.construct(pdu, false);
    const MMS_HDR_S &read = again.header();
    const bool hasTo = carriesContentType(pduType) || pduType == MMS_PDU_DELIVERY_IND;
    require(read.to.size() == (hasTo ? written.to.size() : 0), "as many To as were written");
    if (carriesContentType(pduType)) {
        require(read.cc.size() == written.cc.size() && read.bcc.size() == written.bcc.size(),
                "as many Cc and Bcc as were written");
    }
}

/// A message decoded from what was encoded must be encoded to the same bytes.
void checkDecoding(QArray<char> &pdu, unsigned char pduType, bool decodeBody)
{
    WMMSMsg again;
    require(again.construct(pdu, decodeBody) == MMS_DECODE_OK, "what is encoded can be decoded");
    if (!decodeBody) {
        return;
    }
    again.setPDUType(pduType);
    QArray<char> second;
    require(again.packTo(second, nullptr, nullptr) == MMS_ENCODE_OK,
            "what was encoded can be encoded again");
    require(second == pdu, "what was encoded is encoded to the same bytes again");
}

} // namespace

QByteArray everythingOf(const WMMSMultipart &part, bool withNestedData)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    describe(stream, part, withNestedData);
    return bytes;
}

QByteArray everythingOf(const WMMSMsg &message)
{
    const MMS_HDR_S &header = message.header();
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (quint8 id = MMS_FIELD_BCC; id <= MMS_FIELD_TRANSACTION_ID; ++id) {
        stream << message.fieldIsPresent(id);
    }
    for (const auto &entries : {header.bcc, header.cc, header.to, {header.from}}) {
        describe(stream, entries);
    }
    stream << header.contentLocation << header.contentType.toString() << header.msgDate
           << header.deliveryReport << header.msgClass << header.msgID << header.msgType
           << header.version << header.msgSize << header.priority << header.readReport
           << header.reportAllowed << header.responseStatus << header.responseText
           << header.senderVisibility << header.msgStatus << header.subject << header.transactionId
           << message.headerLength() << message.bodyLength() << message.getMMSType();
    return bytes + everythingOf(message.getMultiParts(), true);
}

qint64 dataBytesOf(const WMMSMultipart &part)
{
    qint64 bytes = part.getData().size();
    if (part.subParts()) {
        for (const WMMSMultipart &below : *part.subParts()) {
            bytes += dataBytesOf(below);
        }
    }
    return bytes;
}

bool survivesWire(const WMMSMultipart &root)
{
    const auto *parts = root.subParts();
    return !parts || std::all_of(parts->cbegin(), parts->cend(), partSurvives);
}

// The types without a content type do not say where a body begins.
bool survivesWire(const WMMSMsg &message)
{
    const MMS_HDR_S &header = message.header();
    return entriesSurvive(header.to) && entriesSurvive(header.cc) && entriesSurvive(header.bcc)
        && (!header.from.isValid() || entrySurvives(header.from)) && isPlain(header.contentLocation)
        && isPlain(header.msgID) && isPlain(header.transactionId) && isPlain(header.subject)
        && isPlain(header.responseText) && typeSurvives(header.contentType)
        && survivesWire(message.getMultiParts()) && !endsWithDroppedNul(message.getMultiParts())
        && (carriesContentType(header.msgType) || !hasBody(message.getMultiParts()));
}

void checkEncoding(const WMMSMsg &message, unsigned char pduType)
{
    const QByteArray before = everythingOf(message.getMultiParts(), true);
    WMMSMsg encoded(message);
    encoded.setPDUType(pduType);
    const bool survives = survivesWire(encoded);
    QArray<char> pdu;
    const quint32 result = encode(encoded, '\x55', pdu);
    require(result == MMS_ENCODE_OK || result == MMS_ENCODE_NO_CONTENT_TYPE
                || result == MMS_ENCODE_BAD_FIELD,
            "encoding ends with 200, 202 or 209");
    require(everythingOf(message.getMultiParts(), true) == before,
            "encoding changes no copy of the message");
    if (result != MMS_ENCODE_OK) {
        return;
    }
    require(pdu.size() == encoded.headerLength() + encoded.bodyLength(),
            "a PDU is as long as its header and its body");
    QArray<char> second;
    require(encode(encoded, '\xAA', second) == result && second == pdu,
            "encoding twice gives the same bytes");
    checkRecipients(encoded, pdu, pduType);
    if (survives) {
        // A multipart body without a part is no byte at all, not even a count.
        const bool decodeBody = encoded.bodyLength() > 0 || !encoded.getContentType().needDecode()
            || !carriesContentType(pduType);
        checkDecoding(pdu, pduType, decodeBody);
    }
}

void useOneTimeZone()
{
    static const bool isSet = [] {
        setenv("TZ", "UTC", 1);
        tzset();
        return true;
    }();
    Q_UNUSED(isSet);
}

} // namespace wmsg::fuzz
