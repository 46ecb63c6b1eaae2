// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/outgoing_pdu.h"

#include "services/common/durable_file.h"
#include "services/intake/intake.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/result_codes.h>
#include <mms/model/wmmsmsg.h>

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::proxy {

namespace {

constexpr qint64 kPrefixSize = 16;
constexpr quint8 kVersion = 0x12;
constexpr quint8 kFirstCode = 128;
constexpr quint8 kLastPriority = 130;
constexpr quint8 kLastClass = 131;
constexpr quint8 kLastResponseStatus = 234;
constexpr quint8 kPermanentFailure = 224;
constexpr qint64 kLatestSecond = std::numeric_limits<qint32>::max();
constexpr char kNoParts = 0; // a multipart body without entries

OutgoingPdu refused(const QString &text)
{
    return {OutgoingPdu::Result::Refused, text, 0};
}

OutgoingPdu failed(const QString &text)
{
    return {OutgoingPdu::Result::Failed, text, 0};
}

/// A message, the file it lies in, and where its body is.
struct Stored {
    service::Descriptor file;
    qint64 size = 0;
    WMMSMsg message;

    [[nodiscard]] qint64 bodyOffset() const { return kPrefixSize + message.headerLength(); }
    [[nodiscard]] bool hasBody() const { return message.headerLength() > 0 && bodyOffset() < size; }
};

/// Without a body a multipart does not decode, and is one without parts all the same.
bool isDecoded(quint32 result, const Stored &stored)
{
    return result == MMS_DECODE_OK || (result == MMS_DECODE_BAD_BODY && !stored.hasBody());
}

OutgoingPdu read(const QString &mailFile, Stored &stored)
{
    struct stat state = {};
    stored.file = service::Descriptor(
        ::open(QFile::encodeName(mailFile).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!stored.file.isOpen() || ::fstat(stored.file.get(), &state) != 0) {
        return failed(mailFile + u": "_s + service::systemError());
    }
    stored.size = state.st_size;
    stored.message.clear();
    const quint32 result =
        stored.message.construct(u"/proc/self/fd/%1"_s.arg(stored.file.get()), true);
    return isDecoded(result, stored)
        ? OutgoingPdu()
        : refused(u"the mail file does not decode: result %1"_s.arg(result));
}

QValueList<WMFMEntry> addressed(const QValueList<WMFMEntry> &entries)
{
    QValueList<WMFMEntry> valid;
    std::copy_if(entries.cbegin(), entries.cend(), std::back_inserter(valid),
                 [](const WMFMEntry &entry) {
                     return !entry.getEntryVal().trimmed().isEmpty() && entry.isValid();
                 });
    return valid;
}

/// False when there is no recipient.
bool copyRecipients(WMMSMsg &from, WMMSMsg &to)
{
    to.setTo(addressed(from.getTo()));
    to.setCc(addressed(from.getCc()));
    to.setBcc(addressed(from.getBcc()));
    return !to.getTo().isEmpty() || !to.getCc().isEmpty() || !to.getBcc().isEmpty();
}

bool isTime(const QDateTime &time, qint64 latest)
{
    return time.isValid() && time.toSecsSinceEpoch() > 0 && time.toSecsSinceEpoch() <= latest;
}

void copyTimes(const WMMSMsg &from, WMMSMsg &to, const QDateTime &taken)
{
    const bool isDated =
        from.fieldIsPresent(MMS_FIELD_DATE) && isTime(from.getDate(), kLatestSecond);
    to.setDate(isDated ? from.getDate() : taken);
    if (from.fieldIsPresent(MMS_FIELD_DELIVERY_TIME)
        && isTime(from.getDeliveryTime(), std::numeric_limits<quint32>::max())) {
        to.setDeliveryTime(from.getDeliveryTime());
    }
    if (from.fieldIsPresent(MMS_FIELD_EXPIRY) && from.header().expiry > 0) {
        to.setExpiryTime(from.getExpiryTime());
    }
}

/// A fresh message counts its priority from 0.
void copyCodes(const WMMSMsg &from, WMMSMsg &to)
{
    const quint8 priority = from.getPriority();
    const quint8 code = priority <= kLastPriority - kFirstCode ? priority + kFirstCode : priority;
    if (from.fieldIsPresent(MMS_FIELD_PRIORITY) && code >= kFirstCode && code <= kLastPriority) {
        to.setPriority(code);
    }
    const quint8 messageClass = from.getMsgClass();
    if (from.fieldIsPresent(MMS_FIELD_MSG_CLASS) && messageClass >= kFirstCode
        && messageClass <= kLastClass) {
        to.setMsgClass(messageClass);
    }
}

void copyFlags(const WMMSMsg &from, WMMSMsg &to)
{
    if (from.fieldIsPresent(MMS_FIELD_SENDER_VISIBILITY)) {
        to.setSenderVisibility(from.getSenderVisibility());
    }
    if (from.fieldIsPresent(MMS_FIELD_DELIVERY_REPORT)) {
        to.setDeliveryReportNecessity(from.getDeliveryReportNecessity());
    }
    if (from.fieldIsPresent(MMS_FIELD_READ_REPORT)) {
        to.setReadReportNecessity(from.getReadReportNecessity());
    }
}

WMMSContentType typeOf(const Stored &stored)
{
    WMMSContentType type = stored.message.getContentType();
    if (type.isEmpty()) {
        type.setMimeType(u"application/vnd.wap.multipart.mixed"_s);
    }
    return type;
}

QByteArray bytesOf(WMMSMsg &message)
{
    QArray<char> pdu;
    return message.packTo(pdu, nullptr, nullptr) == MMS_ENCODE_OK
        ? QByteArray(pdu.constData(), pdu.size())
        : QByteArray();
}

WMMSMsg newPdu(MMS_PDU_TYPE_E type, const QString &transactionId)
{
    WMMSMsg pdu;
    pdu.clear();
    pdu.setPDUType(type);
    pdu.setTransactionID(transactionId);
    pdu.setVersion(kVersion);
    return pdu;
}

/// Copies from a place of one file to the place where another stands.
bool copyFrom(int from, qint64 offset, int to)
{
    QByteArray buffer(65536, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::pread(from, buffer.data(), size_t(buffer.size()), offset);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return got == 0;
        }
        if (!service::writeAll(to, QByteArrayView(buffer).first(got))) {
            return false;
        }
        offset += got;
    }
}

/// The body of both forms is the same. A body of one value was decoded, and is written as it was:
/// the header does not tell the charset of a text.
bool writeBody(const Stored &stored, const WMMSContentType &type, int to)
{
    if (!type.needDecode()) {
        const QArray<char> &data = stored.message.getMultiParts().getData();
        return service::writeAll(to, QByteArrayView(data.constData(), data.size()));
    }
    return stored.hasBody() ? copyFrom(stored.file.get(), stored.bodyOffset(), to)
                            : service::writeAll(to, QByteArrayView(&kNoParts, 1));
}

OutgoingPdu write(const Stored &stored, const QByteArray &header, const QString &path)
{
    service::NewFile file(path);
    if (!file.isOpen() || !service::writeAll(file.descriptor(), header)
        || !writeBody(stored, typeOf(stored), file.descriptor())) {
        return failed(file.problem());
    }
    OutgoingPdu written;
    written.size = ::lseek(file.descriptor(), 0, SEEK_CUR);
    const QString problem = file.commit();
    return problem.isEmpty() ? written : failed(problem);
}

} // namespace

OutgoingPdu writeSendRequest(const QString &mailFile, const QString &pduFile,
                             const QString &transactionId, const QDateTime &taken)
{
    Stored stored;
    OutgoingPdu result = read(mailFile, stored);
    if (result.result != OutgoingPdu::Result::Written) {
        return result;
    }
    WMMSMsg request = newPdu(MMS_PDU_SEND_REQ, transactionId);
    if (!copyRecipients(stored.message, request)) {
        return refused(u"the message has no recipient"_s);
    }
    request.setSubject(stored.message.getSubject());
    copyTimes(stored.message, request, taken);
    copyCodes(stored.message, request);
    copyFlags(stored.message, request);
    request.setContentType(typeOf(stored));
    const QByteArray header = bytesOf(request);
    return header.isEmpty() ? refused(u"the header is too large"_s)
                            : write(stored, header, pduFile);
}

QByteArray notifyResponse(const QString &transactionId, MessageStatus status, bool reportAllowed)
{
    WMMSMsg pdu = newPdu(MMS_PDU_NOTIFYRESP_IND, transactionId);
    pdu.setMsgStatus(static_cast<unsigned char>(status));
    pdu.setReportAllowedity(reportAllowed);
    return bytesOf(pdu);
}

QByteArray acknowledge(const QString &transactionId, bool reportAllowed)
{
    WMMSMsg pdu = newPdu(MMS_PDU_ACKNOWLEDGE_IND, transactionId);
    pdu.setReportAllowedity(reportAllowed);
    return bytesOf(pdu);
}

SendConfirmation readSendConfirmation(const QByteArray &answer, const QString &transactionId)
{
    SendConfirmation confirmation;
    const intake::Result read = intake::takeIn(answer);
    QArray<char> pdu(QByteArrayView(read.pdu.joined()));
    WMMSMsg message;
    message.clear();
    if (read.verdict != intake::Verdict::Readable || read.facts.type != MMS_PDU_SEND_CONF
        || message.construct(pdu, false) != MMS_DECODE_OK) {
        confirmation.text = u"the answer is no send confirmation"_s;
    } else if (!message.getTransactionID().isEmpty()
               && message.getTransactionID() != transactionId) {
        confirmation.text = u"the answer confirms another transaction"_s;
    } else if (message.getResponseStatus() < kFirstCode) {
        confirmation.text = u"the answer has no response status"_s;
    } else {
        const quint8 status = message.getResponseStatus();
        confirmation.responseStatus = status <= kLastResponseStatus ? status : kPermanentFailure;
        confirmation.messageId = message.getMsgID();
        confirmation.text = message.getResponseText();
    }
    return confirmation;
}

} // namespace wmsg::proxy
