// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a message as a network might send it: a PDU, a push, or a push behind the user data
// header of a short message.

#include "fuzz/fuzz_support.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "services/intake/intake.h"
#include "services/intake/part_header.h"
#include "services/intake/wire_values.h"
#include "tests/services/intake/same_result.h"

#include <QtCore/QByteArray>

using namespace wmsg::fuzz;
using namespace wmsg::intake;

namespace {

void checkRemarks(const QList<Remark> &remarks, size_t size)
{
    for (const Remark &remark : remarks) {
        require(remark.offset >= 0 && remark.offset <= static_cast<qsizetype>(size)
                    && !remark.what.isEmpty(),
                "a remark says what and where in the input");
    }
}

QByteArray bare(QByteArray text)
{
    return text.replace('"', "").replace('<', "").replace('>', "").trimmed();
}

/// What the codec reads of the headers of parts is what they say.
void checkParts(const QByteArray &body, const WMMSMsg &message)
{
    const auto *parts = message.getMultiParts().subParts();
    if (!parts || parts->isEmpty()) {
        return;
    }
    WSP_Stream stream = streamOver(body);
    quint8 count = 0;
    require(stream.readByte(count) == 1 && count == parts->size(), "all parts are read");
    for (const WMMSMultipart &part : *parts) {
        quint32 headerLength = 0;
        quint32 dataLength = 0;
        stream.readUintvar(headerLength);
        stream.readUintvar(dataLength);
        const qint32 data = stream.pos + static_cast<qint32>(headerLength);
        const PartHeader header = readPartHeader(bytesBetween(stream, stream.pos, data));
        stream.pos = data + static_cast<qint32>(dataLength);
        require(part.getContentType().getMimeType().toUtf8() == header.type.media,
                "a part has the type that it says");
        require(bare(part.getContentID().toUtf8()) == bare(header.id), "a part has its id");
        require(header.location.isEmpty()
                    || bare(part.getContentLocation().toUtf8()) == bare(header.location),
                "a part has its location");
    }
}

void checkReadable(const Result &result, const QByteArray &input, Origin origin)
{
    const QByteArray pdu = result.pdu.joined();
    require(pdu.size() == result.pdu.size(), "a message is as long as it says");
    require(!result.isUnchanged || pdu == input, "what is not changed is what was given");
    QArray<char> bytes = bytesOf(reinterpret_cast<const uint8_t *>(pdu.constData()),
                                 static_cast<size_t>(pdu.size()));
    WMMSMsg message;
    require(message.construct(bytes, true) == MMS_DECODE_OK, "the codec reads what intake returns");
    if (message.headerLength() > 0 && message.getContentType().needDecode()) {
        checkParts(pdu.sliced(message.headerLength()), message);
    }
    const Result again = takeIn(pdu, origin);
    require(again.verdict == Verdict::Readable, "what intake returned is readable");
    require(again.isUnchanged && again.pdu.joined() == pdu,
            "a message that was made readable is not touched again");
}

void check(const uint8_t *data, size_t size, Origin origin)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const Result result = takeIn(input, origin);
    const char *difference = differenceOf(result, takeInAnyForm(input, origin));
    require(difference == nullptr, difference);
    checkRemarks(result.steps, size);
    checkRemarks(result.lost, size);
    if (result.verdict == Verdict::Readable) {
        checkReadable(result, input, origin);
    } else if (result.verdict == Verdict::Unreadable) {
        checkRemarks({result.problem}, size);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const LogChoice log(0);
    check(data, size, Origin::Network);
    check(data, size, Origin::File);
    return 0;
}
