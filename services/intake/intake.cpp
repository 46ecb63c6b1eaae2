// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/intake.h"

#include "services/intake/body_intake.h"
#include "services/intake/header_intake.h"
#include "services/intake/plain_message.h"
#include "services/intake/push_envelope.h"
#include "services/intake/wire_values.h"

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::intake {

namespace {

constexpr quint8 kRetrieveConfirmation = 0x84;
constexpr quint8 kReadReport = 0x88;
constexpr quint8 kReadReportToNetwork = 0x87;
constexpr quint8 kFirstRetrieveError = 0xC0;
constexpr quint8 kContentType = 0x84;
constexpr qsizetype kLargest = std::numeric_limits<qint32>::max() / 2; // positions add up
constexpr int kHighestShort = 127; // of the numbers that are written in one byte

/// What the codec reads of a message: a content type field and a body, or neither.
struct Body {
    QByteArray contentType; ///< The value; empty when the field is as it was.
    Pieces content;
    bool isUnchanged = true;
};

QByteArray mixedType(const MediaType &type)
{
    MediaType mixed;
    mixed.media = QByteArrayLiteral("application/vnd.wap.multipart.mixed");
    mixed.application = type.application;
    mixed.replyApplication = type.replyApplication;
    mixed.applicationInfo = type.applicationInfo;
    return writtenHeaderType(mixed);
}

bool isPlainMultipart(const MediaType &type)
{
    return type.isPlainInHeader
        && (type.media == "application/vnd.wap.multipart.mixed"
            || type.media == "application/vnd.wap.multipart.related");
}

bool takeInMultipartBody(QByteArrayView bytes, const Header &header, Body &body, Journal &journal)
{
    auto content = takeInMultipart(bytes, body.isUnchanged, journal);
    if (!content) {
        // The codec wants a count.
        journal.lost(bytes.data(), u"the message has no body"_s);
        content.emplace().add(QByteArray(1, 0));
        body.isUnchanged = false;
    }
    body.content = std::move(*content);
    if (!isPlainMultipart(header.contentType)) {
        journal.step(header.contentTypeField.data(), u"the content type was written anew"_s);
        const MediaType &type = header.contentType;
        body.contentType = type.isMultipart() ? writtenHeaderType(type) : mixedType(type);
        // What follows no part at all could be taken for the body of another content type.
        if (body.isUnchanged && bytes.front() == 0) {
            body.content = Pieces();
            body.content.add(QByteArray(1, 0));
        }
        body.isUnchanged = false;
    }
    return true;
}

/// Whether the codec reads the bytes as parts, every one as it is meant.
bool isReadableMultipart(QByteArrayView bytes)
{
    Result unused;
    Journal journal(bytes, unused);
    bool isUnchanged = false;
    return isWholeMultipart(bytes) && takeInMultipart(bytes, isUnchanged, journal) && isUnchanged;
}

/// The codec takes a DRM message without a boundary for a multipart, as this system writes one.
bool isTakenForMultipart(QByteArrayView bytes, const MediaType &type)
{
    return type.media.toLower() == "application/vnd.oma.drm.message" && type.boundary.isEmpty()
        && !isReadableMultipart(bytes);
}

/// A body that is one value stays one if the codec can name its type.
void takeInSingleBody(QByteArrayView bytes, const Header &header, Body &body, Journal &journal)
{
    MediaType type = header.contentType;
    auto content = takeInContent(bytes, type, Transfer::None, journal);
    const bool isSame = !content.has_value();
    const bool mustBePart = isTakenForMultipart(bytes, type);
    if (isSame) {
        body.content.keep(bytes);
    } else {
        body.content.add(std::move(*content));
    }
    if (type.isPlainInHeader && isSame && !mustBePart) {
        return;
    }
    body.isUnchanged = false;
    if (type.isEmpty()) {
        type.media = QByteArrayLiteral("application/octet-stream");
    }
    if (!mustBePart && type.number > 0 && type.number <= kHighestShort && type.isSameNumber()) {
        body.contentType = writtenHeaderType(type);
        return;
    }
    journal.step(header.contentTypeField.data(), u"the content became the one part of a body"_s);
    body.contentType = mixedType(type);
    body.content = multipartOfOne(type, std::move(body.content));
}

/// Whether a body of a type that says nothing is a multipart all the same.
bool isUnnamedMultipart(QByteArrayView bytes, const MediaType &type)
{
    const bool saysNothing =
        type.isEmpty() || type.media == "*/*" || type.media.toLower() == "application/*";
    return saysNothing && !bytes.isEmpty() && bytes.front() != 0 && isWholeMultipart(bytes);
}

Body bodyOf(QByteArrayView bytes, const Header &header, Journal &journal)
{
    Body body;
    if (header.contentType.isMultipart() || isUnnamedMultipart(bytes, header.contentType)) {
        takeInMultipartBody(bytes, header, body, journal);
    } else {
        takeInSingleBody(bytes, header, body, journal);
    }
    return body;
}

/// Returns whether the content type and the body are as they were.
bool takeInBody(QByteArrayView pdu, const Header &header, Pieces &out, Journal &journal)
{
    const bool isEmpty = header.contentType.isEmpty() && header.end == pdu.size();
    if (!header.hasContentType || isEmpty) {
        return !header.hasContentType;
    }
    Body body = bodyOf(pdu.sliced(header.end), header, journal);
    if (body.contentType.isEmpty()) {
        out.keep(header.contentTypeField);
    } else {
        out.add(static_cast<char>(kContentType) + body.contentType);
    }
    out.add(std::move(body.content));
    return body.isUnchanged;
}

/// A body that does not begin where the length of the content type says may begin where its
/// parameters end.
void findBody(QByteArrayView pdu, Header &header, Journal &journal)
{
    if (!header.contentType.isMultipart() || beginsMultipart(pdu.sliced(header.end))) {
        return;
    }
    const qsizetype field = header.contentTypeField.data() - pdu.data();
    WSP_Stream stream = streamOver(pdu);
    stream.pos = static_cast<qint32>(field) + 1;
    MediaType type = readMediaTypeUpToBody(stream);
    if (!type.isMultipart() || !beginsMultipart(pdu.sliced(stream.pos))) {
        return;
    }
    journal.step(header.contentTypeField.data(), u"the length of the content type is wrong"_s);
    type.application = header.contentType.application;
    type.replyApplication = header.contentType.replyApplication;
    type.applicationInfo = header.contentType.applicationInfo;
    header.contentType = type;
    header.end = stream.pos;
}

/// Returns whether nothing had to be done.
bool takeInPdu(QByteArrayView pdu, Header &header, Pieces &out, Journal &journal)
{
    findBody(pdu, header, journal);
    out.keep(header.type);
    out.add(std::move(header.fields));
    const bool isUnchanged = takeInBody(pdu, header, out, journal) && header.isUnchanged;
    if (isUnchanged) {
        out = Pieces();
        out.keep(pdu);
    }
    return isUnchanged;
}

Verdict verdictOf(const Facts &facts, Origin origin)
{
    if (facts.type == kReadReport
        || (facts.type == kReadReportToNetwork && origin == Origin::Network)) {
        return Verdict::ReadReport;
    }
    return facts.type == kRetrieveConfirmation && facts.retrieveStatus >= kFirstRetrieveError
        ? Verdict::NotRetrieved
        : Verdict::Readable;
}

/// A PDU that begins with any of its fields may look like a push of something else.
bool looksLikeHeader(QByteArrayView bytes)
{
    constexpr quint8 kFirst = 0x81;
    constexpr quint8 kLast = 0x98;
    const auto first = static_cast<quint8>(bytes.isEmpty() ? 0 : bytes.front());
    return first >= kFirst && first <= kLast;
}

bool readHeader(QByteArrayView bytes, Origin origin, QByteArrayView &pdu, Header &header,
                Journal &journal)
{
    if (unwrapped(bytes, pdu, journal)) {
        return takeInHeader(pdu, origin, header, journal);
    }
    const Remark pushProblem = journal.problem();
    pdu = bytes;
    if (looksLikeHeader(bytes) && takeInHeader(bytes, origin, header, journal)) {
        journal.setProblem({});
        return true;
    }
    journal.setProblem(pushProblem);
    return false;
}

} // namespace

Result takeInAnyForm(QByteArrayView bytes, Origin origin)
{
    Result result;
    Journal journal(bytes, result);
    if (bytes.size() > kLargest) {
        journal.problem(bytes.data(), u"it is too large for a message"_s);
        return result;
    }
    QByteArrayView pdu;
    Header header;
    const bool isRead = readHeader(bytes, origin, pdu, header, journal);
    result.facts = header.facts;
    if (!isRead) {
        return result;
    }
    result.verdict = verdictOf(header.facts, origin);
    if (result.verdict == Verdict::Readable) {
        result.isUnchanged =
            takeInPdu(pdu, header, result.pdu, journal) && pdu.size() == bytes.size();
    }
    return result;
}

Result takeIn(QByteArrayView bytes, Origin origin)
{
    Result result;
    if (bytes.size() > kLargest || !takeInPlain(bytes, result)) {
        result = takeInAnyForm(bytes, origin);
    }
    return result;
}

} // namespace wmsg::intake
