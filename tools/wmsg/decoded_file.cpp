// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/decoded_file.h"

#include "tools/wmsg/field_words.h"

#include <mms/model/result_codes.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

QByteArrayView viewOf(const QArray<char> &bytes, qint32 from)
{
    return QByteArrayView(bytes.constData(), bytes.size()).sliced(from);
}

quint32 constructFrom(WMMSMsg &message, const QByteArray &pdu)
{
    QArray<char> bytes(pdu);
    message.clear();
    return message.construct(bytes, true);
}

QString noticeOf(const intake::Result &result)
{
    if (result.verdict == intake::Verdict::ReadReport) {
        return u"this is a read report"_s;
    }
    constexpr int kRetrieveStatus = 0x19;
    QString notice =
        u"there is no message: "_s + codeInWords(kRetrieveStatus, result.facts.retrieveStatus);
    if (!result.facts.retrieveText.isEmpty()) {
        notice += u", "_s + quoted(result.facts.retrieveText);
    }
    return notice;
}

/// Shows what intake wrote in place of what the file has.
void showRepaired(DecodedFile &file, const QByteArray &pdu)
{
    file.result = constructFrom(file.message, pdu);
    file.walk = PduWalk();
}

void apply(const intake::Result &result, QByteArrayView given, const QByteArray &knownFields,
           DecodedFile &file)
{
    Explanation &intake = *file.intake;
    intake.steps = result.steps;
    intake.lost = result.lost;
    switch (result.verdict) {
    case intake::Verdict::Readable: {
        const QByteArray pdu = result.pdu.joined();
        intake.isChanged = pdu != given;
        if (intake.isChanged) {
            showRepaired(file, pdu);
        }
        break;
    }
    case intake::Verdict::ReadReport:
    case intake::Verdict::NotRetrieved:
        intake.notice = noticeOf(result);
        showRepaired(file, knownFields);
        break;
    case intake::Verdict::Unreadable:
        intake.problem = result.problem;
        break;
    }
}

void rememberCodec(DecodedFile &file)
{
    Explanation &intake = *file.intake;
    intake.codecResult = file.result;
    intake.codecFailure = file.walk.failure();
}

void explainPdu(DecodedFile &file, const WalkNotes::Sink &sink)
{
    const QByteArrayView bytes = viewOf(file.bytes, 0);
    MessageWalk walk(sink);
    walk.walk(bytes);
    const qint32 start = walk.pduOffset() < file.bytes.size() ? walk.pduOffset() : 0;
    decode(file, start);
    rememberCodec(file);
    file.intake->otherFields = walk.otherFields();
    file.intake->push = walk.push();
    file.intake->headerLength = walk.headerLength();
    file.intake->bodyLength = file.bytes.size() - walk.pduOffset() - walk.headerLength();
    apply(intake::takeIn(bytes, intake::Origin::File), bytes.sliced(start), walk.knownFields(),
          file);
}

/// Mail files are this system's own: only what the codec cannot read is given to intake.
void explainMailFile(DecodedFile &file, const WalkNotes::Sink &sink)
{
    file.walk = PduWalk(sink);
    decode(file);
    rememberCodec(file);
    file.intake->headerLength = file.walk.headerLength();
    file.intake->bodyLength = file.walk.bodyLength();
    const qint32 start = file.walk.pduOffset();
    if (file.result == MMS_DECODE_OK || start == 0) {
        return;
    }
    const QByteArrayView pdu = viewOf(file.bytes, start);
    intake::Result result = intake::takeIn(pdu, intake::Origin::File);
    for (QList<intake::Remark> *remarks : {&result.steps, &result.lost}) {
        for (intake::Remark &remark : *remarks) {
            remark.offset += start;
        }
    }
    result.problem.offset += start;
    const quint8 type = file.message.getMMSType();
    apply(result, pdu, QByteArray(), file);
    file.message.setMMSType(type);
}

} // namespace

void decode(DecodedFile &file, qint32 pduOffset)
{
    file.result = file.walk.walk(file.bytes, file.kind, pduOffset);
    const qint32 start = file.walk.pduOffset();
    // A new message counts some fields as present; here only those of the file do.
    file.message.clear();
    if (file.kind == FileKind::MailFile) {
        if (start == 0) {
            return; // the walk found no prefix
        }
        file.message.setMMSType(file.walk.mmsType());
    }
    QArray<char> pdu =
        start == 0 ? file.bytes : QArray<char>::slice(file.bytes, start, file.bytes.size() - start);
    file.result = file.message.construct(pdu, true);
}

void explain(DecodedFile &file, const WalkNotes::Sink &sink)
{
    file.intake.emplace();
    if (file.kind == FileKind::MailFile) {
        explainMailFile(file, sink);
    } else {
        explainPdu(file, sink);
    }
}

QString failureInWords(const DecodedFile &file)
{
    if (file.result == MMS_DECODE_OK && file.intake && file.intake->problem) {
        return u"%1: %2 at offset %3"_s.arg(file.name, file.intake->problem->what)
            .arg(file.intake->problem->offset);
    }
    QString line =
        u"%1: result %2 (%3"_s.arg(file.name).arg(file.result).arg(resultInWords(file.result));
    const auto &failure = file.walk.failure();
    line += failure ? u": %1) at offset %2, field %3"_s.arg(failure->message)
                          .arg(failure->offset)
                          .arg(failure->field)
                    : u")"_s;
    if (file.intake && file.intake->problem) {
        line += u"; kept aside: %1 at offset %2"_s.arg(file.intake->problem->what)
                    .arg(file.intake->problem->offset);
    }
    return line;
}

bool isMessage(const DecodedFile &file)
{
    const bool isUnknown =
        file.intake && file.intake->problem && !file.message.fieldIsPresent(MMS_FIELD_MSG_TYPE);
    return file.result == MMS_DECODE_OK && !isUnknown;
}

QValueList<WMMSMultipart> partsOf(const WMMSMsg &message)
{
    const WMMSMultipart &root = message.getMultiParts();
    if (const auto *parts = root.subParts()) {
        return *parts;
    }
    return root.getData().isEmpty() ? QValueList<WMMSMultipart>() : QValueList<WMMSMultipart>{root};
}

bool isText(const WMMSMultipart &part)
{
    const WMMSContentType &type = part.getContentType();
    return type.getMainType().toLower() == "text"_L1 || type.isMimeType("application/smil"_L1);
}

QString textOf(const WMMSMultipart &part)
{
    return QString::fromUtf8(part.getData().view());
}

} // namespace wmsg::cli
