// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/intake.h"

#include "services/intake/body_intake.h"
#include "services/intake/header_intake.h"
#include "services/intake/push_envelope.h"

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
        body.contentType = writtenHeaderType(header.contentType);
        body.isUnchanged = false;
    }
    return true;
}

/// A body that is one value stays one if the codec can name its type.
void takeInSingleBody(QByteArrayView bytes, const Header &header, Body &body, Journal &journal)
{
    MediaType type = header.contentType;
    auto content = takeInContent(bytes, type, Transfer::None, journal);
    const bool isSame = !content.has_value();
    if (isSame) {
        body.content.keep(bytes);
    } else {
        body.content.add(std::move(*content));
    }
    if (type.isPlainInHeader && isSame) {
        return;
    }
    body.isUnchanged = false;
    if (type.isEmpty()) {
        type.media = QByteArrayLiteral("application/octet-stream");
    }
    if (type.number > 0 && type.isSameNumber()) {
        body.contentType = writtenHeaderType(type);
        return;
    }
    journal.step(header.contentTypeField.data(), u"the content became the one part of a body"_s);
    body.contentType = mixedType(type);
    body.content = multipartOfOne(type, std::move(body.content));
}

Body bodyOf(QByteArrayView bytes, const Header &header, Journal &journal)
{
    Body body;
    if (header.contentType.isMultipart()) {
        takeInMultipartBody(bytes, header, body, journal);
    } else {
        takeInSingleBody(bytes, header, body, journal);
    }
    return body;
}

void takeInPdu(QByteArrayView pdu, Header &header, Result &result, Journal &journal)
{
    result.pdu = std::move(header.fields);
    result.isUnchanged = header.isUnchanged;
    const bool isEmpty = header.contentType.isEmpty() && header.end == pdu.size();
    if (!header.hasContentType || isEmpty) {
        result.isUnchanged = result.isUnchanged && !header.hasContentType;
        return;
    }
    Body body = bodyOf(pdu.sliced(header.end), header, journal);
    result.isUnchanged = result.isUnchanged && body.isUnchanged;
    if (body.contentType.isEmpty()) {
        result.pdu.keep(header.contentTypeField);
    } else {
        result.pdu.add(static_cast<char>(kContentType) + body.contentType);
    }
    result.pdu.add(std::move(body.content));
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

} // namespace

Result takeIn(QByteArrayView bytes, Origin origin)
{
    Result result;
    Journal journal(bytes, result);
    if (bytes.size() > std::numeric_limits<qint32>::max() / 2) {
        journal.problem(bytes.data(), u"it is too large for a message"_s);
        return result;
    }
    QByteArrayView pdu;
    Header header;
    const bool isRead =
        unwrapped(bytes, pdu, journal) && takeInHeader(pdu, origin, header, journal);
    result.facts = header.facts;
    if (!isRead) {
        return result;
    }
    result.verdict = verdictOf(header.facts, origin);
    if (result.verdict == Verdict::Readable) {
        takeInPdu(pdu, header, result, journal);
        result.isUnchanged = result.isUnchanged && pdu.size() == bytes.size();
    }
    return result;
}

} // namespace wmsg::intake
