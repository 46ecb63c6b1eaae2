// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Forwards a message to somebody else, if the rights of what is in it allow that.
//
//     5-forward MAIL-FILE NUMBER

#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>
#include <mms/model/result_codes.h>
#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>

#include <cstdio>

namespace {

class Teller : public WMFMListener {
public:
    explicit Teller(WMMSSession &session) : WMFMListener(&session) { }

    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        constexpr int kTriedAgain = 256;
        if (id == request && status != kTriedAgain) {
            std::printf(status == WMFM::STATUS_OK ? "forwarded\n" : "not sent: status %d\n",
                        int(status));
            QCoreApplication::exit(status == WMFM::STATUS_OK ? 0 : 1);
        }
    }
    QString listenerName() const override { return "forward"; }

    int request = -1;
};

// The same content under a new header: nothing of what the first sender asked for goes along.
WMMSMsg forwarded(const WMMSMsg &original, const QString &number)
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, number));
    message.setSubject("Fwd: " + original.getSubject());
    message.setContentType(original.getContentType());
    message.setMultiParts(original.getMultiParts());
    return message;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    if (argc != 3) {
        std::fprintf(stderr, "usage: 5-forward MAIL-FILE NUMBER\n");
        return 2;
    }
    WMMSMsg original;
    if (original.construct(application.arguments().at(1), true) != MMS_DECODE_OK) {
        std::fprintf(stderr, "%s is no mail file\n", argv[1]);
        return 1;
    }
    if (!original.canBeForwardedDrmCheck()) {
        std::fprintf(stderr, "its rights forbid to forward it\n");
        return 1;
    }
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    Teller teller(session);
    session.setListener(&teller, status);
    // With a name of its own the session gets messages to that name alone, and takes none of
    // others.
    session.registerAppID("example.forward", status);

    WMMSMsg message = forwarded(original, application.arguments().at(2));
    teller.request = session.send(&message, status);
    if (teller.request < 0) {
        std::fprintf(stderr, "not sent: status %d\n", int(status));
        return 1;
    }
    return application.exec();
}
