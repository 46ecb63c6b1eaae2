// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a PDU.

#include "fuzz/fuzz_support.h"
#include "fuzz/message_properties.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"

using namespace wmsg::fuzz;

namespace {

/// The header alone must decode as it does with the body behind it.
void checkHeaderAlone(QArray<char> &pdu, const WMMSMsg &message, quint32 result)
{
    WMMSMsg headerAlone;
    const quint32 headerResult = headerAlone.construct(pdu, false);
    require(headerResult == (result == MMS_DECODE_BAD_BODY ? quint32(MMS_DECODE_OK) : result),
            "a header decodes alone as with its body");
    require(headerAlone.headerLength() == message.headerLength(),
            "a header is as long alone as with its body");
    require(!headerAlone.getMultiParts().subParts()
                && headerAlone.getMultiParts().getData().isEmpty(),
            "a header alone brings no body");
}

/// Expiry and delivery time may count from now and are not compared.
void checkNothingBehind(const uint8_t *data, size_t size, const WMMSMsg &message, quint32 result)
{
    QArray<char> pdu = bytesBefore('A', data, size);
    WMMSMsg again;
    require(again.construct(pdu, true) == result && everythingOf(again) == everythingOf(message),
            "what lies behind a PDU is not read");
}

/// Sixteen levels of nesting hold the innermost byte once each, and UTF-16 grows by half.
void checkProportion(const WMMSMsg &message, size_t size)
{
    constexpr qint64 kLevels = 17;
    require(dataBytesOf(message.getMultiParts()) <= 2 * kLevels * static_cast<qint64>(size),
            "a message takes memory in proportion to its PDU");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    useOneTimeZone();
    const LogChoice log(size);
    QArray<char> pdu = bytesOf(data, size);
    WMMSMsg message;
    const quint32 result = message.construct(pdu, true);
    require(pdu == bytesOf(data, size), "decoding does not write to the PDU");
    checkHeaderAlone(pdu, message, result);
    checkNothingBehind(data, size, message, result);
    checkProportion(message, size);
    if (log.prints()) {
        WMMSMsg(message).printMsg();
    }
    if (result == MMS_DECODE_OK) {
        for (int type = MMS_PDU_SEND_REQ; type <= MMS_PDU_STORED; ++type) {
            checkEncoding(message, static_cast<unsigned char>(type));
        }
    }
    return 0;
}
