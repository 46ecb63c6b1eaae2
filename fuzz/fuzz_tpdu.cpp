// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a short message as a modem hands it over, with or without its service centre. It is
// read as one from the network and as one from a phone.

#include "fuzz/fuzz_support.h"
#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu.h"

#include <QtCore/QByteArray>

using namespace wmsg::fuzz;
using namespace wmsg::smspdu;

namespace {

void checkMarks(const Tpdu &tpdu, qsizetype size)
{
    qsizetype end = 0;
    for (const Mark &mark : tpdu.marks) {
        require(mark.offset == end && mark.size > 0, "the marks follow each other");
        end += mark.size;
    }
    require(end == size, "the marks are the whole message");
}

void checkHeader(const QByteArray &udh)
{
    const auto elements = headerElements(udh);
    require(udh.isEmpty() || elements.has_value(), "a header that was read is one");
    qsizetype end = 1;
    for (const HeaderElement &element : elements.value_or(QList<HeaderElement>())) {
        require(element.offset == end, "the elements follow each other");
        end += 2 + element.data.size();
    }
    require(udh.isEmpty() || end == udh.size(), "the elements fill the header");
    const auto part = concatenationIn(udh);
    require(!part || (part->part >= 1 && part->part <= part->total), "a part is one of all");
}

bool isSame(const Tpdu &a, const Tpdu &b)
{
    return a.kind == b.kind && a.hasMore == b.hasMore && a.isLooped == b.isLooped
        && a.rejectsDuplicates == b.rejectsDuplicates && a.hasReport == b.hasReport
        && a.hasReplyPath == b.hasReplyPath && a.reference == b.reference
        && a.address.type == b.address.type && a.address.value == b.address.value
        && a.timeStamp == b.timeStamp && a.dischargeTime == b.dischargeTime && a.status == b.status
        && a.validity.octets == b.validity.octets && a.udh == b.udh && a.userData == b.userData;
}

void check(const QByteArray &input, Origin origin)
{
    const ReadResult read = readTpdu(input, origin);
    require(read.offset >= 0 && read.offset <= input.size(), "a problem lies in the message");
    if (!read.isRead()) {
        return;
    }
    const Tpdu &tpdu = read.tpdu;
    checkMarks(tpdu, input.size());
    checkHeader(tpdu.udh);
    require(tpdu.fits(), "what was read fits");
    require(tpdu.text().size() <= tpdu.userData.size(), "a text is no longer than its data");
    require(tpdu.validity.seconds() >= -1, "a period is one or none");
    const QByteArray written = writeTpdu(tpdu);
    // A name may have escapes at its end, which come back as nothing or as blanks.
    if (written.isNull()) {
        return;
    }
    const ReadResult again = readTpdu(written, origin);
    require(again.isRead(), "what is written is read");
    require(isSame(again.tpdu, tpdu) || tpdu.address.isAlphanumeric(),
            "what is written says the same");
}

void checkSeptets(const QByteArray &input)
{
    for (int fill = 0; fill < 7; ++fill) {
        const QByteArray septets = unpackSeptets(input, input.size() * 2, fill);
        const QByteArray packed = packSeptets(septets, fill);
        require(packed.size() <= qMax<qsizetype>(input.size(), 1),
                "septets take no more than they came from");
        require(unpackSeptets(packed, septets.size(), fill) == septets, "septets come back");
    }
    const QString text = textFromGsm7(input);
    const auto septets = gsm7FromText(text);
    require(septets && textFromGsm7(*septets) == text, "a text of the alphabet comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto centre = readServiceCentre(input);
    require(!centre || (centre->size >= 1 && centre->size <= input.size()),
            "a service centre lies in the bytes");
    for (const Origin origin : {Origin::Network, Origin::Phone}) {
        check(input, origin);
        if (centre) {
            check(input.mid(centre->size), origin);
        }
    }
    checkSeptets(input);
    return 0;
}
