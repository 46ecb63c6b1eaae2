// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a message as a network might send it: a PDU, a push, or a push behind the user data
// header of a short message.

#include "fuzz/fuzz_support.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "services/intake/intake.h"

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

void checkReadable(const Result &result, const QByteArray &input, Origin origin)
{
    const QByteArray pdu = result.pdu.joined();
    require(pdu.size() == result.pdu.size(), "a message is as long as it says");
    require(!result.isUnchanged || pdu == input, "what is not changed is what was given");
    QArray<char> bytes = bytesOf(reinterpret_cast<const uint8_t *>(pdu.constData()),
                                 static_cast<size_t>(pdu.size()));
    WMMSMsg message;
    require(message.construct(bytes, true) == MMS_DECODE_OK, "the codec reads what intake returns");
    const Result again = takeIn(pdu, origin);
    require(again.verdict == Verdict::Readable, "what intake returned is readable");
    require(again.isUnchanged && again.pdu.joined() == pdu,
            "a message that was made readable is not touched again");
}

void check(const uint8_t *data, size_t size, Origin origin)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const Result result = takeIn(input, origin);
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
