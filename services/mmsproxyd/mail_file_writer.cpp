// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/mail_file_writer.h"

#include "services/common/durable_file.h"
#include "services/intake/intake.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/result_codes.h>
#include <mms/model/wmmsmsg.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QtEndian>

#include <array>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::proxy {

namespace {

using Prefix = std::array<char, 16>;

// mail-file := 0x12 0x10 mms-type 0x00 header-length body-length 0x00000000 pdu
Prefix prefixOf(quint8 mmsType, qint64 headerLength, qint64 bodyLength)
{
    Prefix prefix{};
    prefix[0] = 0x12;
    prefix[1] = static_cast<char>(prefix.size());
    prefix[2] = static_cast<char>(mmsType);
    qToLittleEndian(static_cast<quint32>(headerLength), &prefix[4]);
    qToLittleEndian(static_cast<quint32>(bodyLength), &prefix[8]);
    return prefix;
}

bool writePrefix(int file, const Prefix &prefix)
{
    return ::pwrite(file, prefix.data(), prefix.size(), 0) == static_cast<ssize_t>(prefix.size());
}

bool writePdu(int file, const intake::Pieces &pdu)
{
    const Prefix provisional = prefixOf(0, 0, 0);
    bool written = service::writeAll(file, QByteArrayView(provisional.data(), provisional.size()));
    for (const QByteArrayView piece : pdu.views()) {
        written = written && service::writeAll(file, piece);
    }
    return written;
}

Taken failed(const QString &problem)
{
    Taken taken;
    taken.kind = Taken::Kind::Failed;
    taken.reason = problem;
    return taken;
}

QString reasonOf(const intake::Result &read)
{
    const QString &text = read.facts.retrieveText;
    return read.verdict == intake::Verdict::NotRetrieved
        ? u"the MMSC has no message, retrieve status %1"_s.arg(read.facts.retrieveStatus)
            + (text.isEmpty() ? QString() : u": "_s + text.simplified().left(200))
        : read.problem.what;
}

/// What is known about a PDU before it becomes a mail file.
Taken judged(const intake::Result &read)
{
    Taken taken;
    taken.retrieveStatus = read.facts.retrieveStatus;
    taken.transactionId = read.facts.transactionId;
    taken.repairs = static_cast<int>(read.steps.size());
    if (!read.lost.isEmpty()) {
        taken.loss =
            u"%1 (at offset %2)"_s.arg(read.lost.first().what).arg(read.lost.first().offset);
    }
    if (read.verdict == intake::Verdict::Readable && read.facts.type == MMS_PDU_RETRIEVE_CONF) {
        taken.kind = Taken::Kind::Message;
        return taken;
    }
    taken.kind = read.verdict == intake::Verdict::NotRetrieved ? Taken::Kind::NoMessage
                                                               : Taken::Kind::Unreadable;
    taken.reason = reasonOf(read);
    if (taken.kind == Taken::Kind::Unreadable && taken.reason.isEmpty()) {
        taken.reason = u"a message of type %1 is no answer to a retrieval"_s.arg(read.facts.type);
    } else if (taken.kind == Taken::Kind::Unreadable) {
        taken.offset = read.problem.offset;
    }
    return taken;
}

/// What a session is going to read.
Taken readBack(const QString &mailFile, WMMSMsg &message)
{
    Taken taken;
    message.clear();
    const quint32 result = message.construct(mailFile, true);
    if (result != MMS_DECODE_OK) {
        taken.reason = u"the message does not decode: result %1"_s.arg(result);
        return taken;
    }
    taken.kind = Taken::Kind::Message;
    taken.transactionId = message.getTransactionID();
    taken.applicationId = message.getAppID();
    return taken;
}

/// Reads what a session is going to read, and completes what depends on it.
void check(int file, qint64 size, Taken &taken)
{
    WMMSMsg message;
    const Taken read = readBack(u"/proc/self/fd/%1"_s.arg(file), message);
    if (read.kind != Taken::Kind::Message) {
        taken.kind = read.kind;
        taken.reason = read.reason;
        return;
    }
    taken.applicationId = read.applicationId;
    const bool hasBody = message.headerLength() > 0;
    const qint64 headerLength = hasBody ? message.headerLength() : size;
    const int mmsType = message.getMMSTypeByContentType(message.getContentType(), true);
    if (!writePrefix(file,
                     prefixOf(static_cast<quint8>(mmsType), headerLength, size - headerLength))) {
        taken = failed(service::systemError());
    }
}

/// Reads a PDU and writes it, readable, behind the room for a prefix. The PDU is in memory no
/// longer when this returns. A message that was cut off is written if it has more than `had` bytes.
Taken convert(const QString &pduFile, qint64 limit, qint64 had, const service::NewFile &mail,
              qint64 &written)
{
    QFile fetched(pduFile);
    if (!fetched.open(QIODevice::ReadOnly)) {
        return failed(pduFile + u": "_s + fetched.errorString());
    }
    const qint64 size = fetched.size();
    if (size == 0 || size > limit) {
        Taken taken;
        taken.reason =
            size == 0 ? u"there is nothing"_s : u"it has more than %1 bytes"_s.arg(limit);
        return taken;
    }
    const uchar *bytes = fetched.map(0, size);
    if (!bytes) {
        return failed(pduFile + u": "_s + fetched.errorString());
    }
    const intake::Result read = intake::takeIn(QByteArrayView(bytes, size));
    Taken taken = judged(read);
    written = read.pdu.size();
    if (taken.kind == Taken::Kind::Message && !taken.loss.isNull() && written <= had) {
        taken.kind = Taken::Kind::NoBetter;
        taken.reason = taken.loss;
    }
    const bool isMessage = taken.kind == Taken::Kind::Message;
    return isMessage && !writePdu(mail.descriptor(), read.pdu) ? failed(mail.problem()) : taken;
}

} // namespace

Taken MailFileWriter::take(const QString &pduFile, const QString &mailFile) const
{
    return take(pduFile, mailFile, 0);
}

Taken MailFileWriter::takeBetter(const QString &pduFile, const QString &mailFile) const
{
    constexpr qint64 kPrefix = sizeof(Prefix);
    return take(pduFile, mailFile, QFileInfo(mailFile).size() - kPrefix);
}

Taken MailFileWriter::reread(const QString &mailFile)
{
    WMMSMsg message;
    return readBack(mailFile, message);
}

Taken MailFileWriter::take(const QString &pduFile, const QString &mailFile, qint64 had) const
{
    service::NewFile mail(mailFile);
    if (!mail.isOpen()) {
        return failed(mail.problem());
    }
    qint64 written = 0;
    Taken taken = convert(pduFile, m_limit, had, mail, written);
    if (taken.kind == Taken::Kind::Message) {
        check(mail.descriptor(), written, taken);
    }
    const QString problem = taken.kind == Taken::Kind::Message ? mail.commit() : QString();
    return problem.isEmpty() ? taken : failed(problem);
}

} // namespace wmsg::proxy
