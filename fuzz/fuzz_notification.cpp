// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what an MMSC pushes. It is read as its answer to a send request too.

#include "fuzz/fuzz_support.h"
#include "services/mmsproxyd/notification.h"
#include "services/mmsproxyd/outgoing_pdu.h"

#include <QtCore/QByteArray>

using namespace wmsg::fuzz;
using namespace wmsg::proxy;

namespace {

/// Far enough from the clock of the codec that no expiry depends on when this runs.
QDateTime now()
{
    return QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
}

bool holdsNothing(const Notification &read)
{
    return read.transactionId.isNull() && read.location.isNull() && read.messageId.isNull()
        && read.recipient.isNull() && !read.date.isValid() && !read.expires.isValid();
}

void checkPush(const QByteArray &input)
{
    const Notification read = readNotification(input, now());
    switch (read.kind) {
    case Notification::Kind::MessageWaits:
        require(!read.transactionId.isEmpty() && !read.location.isEmpty(),
                "a message that waits can be fetched and answered");
        require(read.messageClass >= 128, "a class is one");
        require(!read.expires.isValid() || read.expires.timeSpec() == Qt::UTC,
                "an expiry is in UTC");
        require(!notifyResponse(read.transactionId, MessageStatus::Deferred).isEmpty()
                    || read.transactionId.size() > 1000,
                "a notification can be answered");
        break;
    case Notification::Kind::DeliveryReport:
        require(!read.messageId.isEmpty(), "a report names its message");
        require(read.date.isValid() && read.date.timeSpec() == Qt::UTC, "a report has a date");
        break;
    case Notification::Kind::ReadReport:
        require(holdsNothing(read), "a read report tells nothing");
        break;
    case Notification::Kind::Unknown:
        require(!read.reason.isEmpty() && holdsNothing(read), "what is unknown has its reason");
        break;
    }
    require(read.reason.isEmpty() || read.kind == Notification::Kind::Unknown,
            "what is known needs no reason");
    require(input.size() <= kLargestPush || read.kind == Notification::Kind::Unknown,
            "what is too large is not read");
}

void checkConfirmation(const QByteArray &input)
{
    const SendConfirmation read = readSendConfirmation(input, QStringLiteral("t-1"));
    require(read.isValid() ? read.responseStatus >= 128 && read.responseStatus <= 234
                           : read.responseStatus == 0 && !read.text.isEmpty(),
            "a confirmation has a status, and everything else a reason");
    require(!read.isAccepted() || !read.isTransient(), "what is accepted is not sent again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const LogChoice log(size);
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkPush(input);
    checkConfirmation(input);
    return 0;
}
