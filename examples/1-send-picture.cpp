// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Sends a picture with a text, shows how far it is, and takes it back when Ctrl-C is typed.
//
//     1-send-picture NUMBER PICTURE TEXT

#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>
#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMimeDatabase>
#include <QtCore/QTimer>

#include <csignal>
#include <cstdio>

namespace {

volatile std::sig_atomic_t wantsToCancel = 0;

WMMSMultipart part(const QString &type, const QString &name, const QByteArray &bytes)
{
    WMMSContentType contentType;
    contentType.setMimeType(type);
    WMMSMultipart part;
    part.setContentType(contentType);
    part.setContentID("<" + name + ">");
    part.setContentLocation(name);
    part.setData(QArray<char>(QByteArrayView(bytes)));
    return part;
}

WMMSMsg compose(const QString &number, QFile &picture, const QString &text)
{
    const QString name = QFileInfo(picture).fileName();
    const QString type = QMimeDatabase().mimeTypeForFile(picture.fileName()).name();
    WMMSContentType mixed;
    mixed.setMimeType("application/vnd.wap.multipart.mixed");
    WMMSMsg message;
    message.setTo(WMFMEntry(1, number));
    message.setSubject(name);
    message.setContentType(mixed);
    message.getMultiParts().setSubMmsMultipart(
        {part("text/plain", "text.txt", text.toUtf8()), part(type, name, picture.readAll())});
    return message;
}

// Tells what becomes of the one request, and ends the program with it.
class Teller : public WMFMListener {
public:
    explicit Teller(WMMSSession &session) : WMFMListener(&session) { }

    void progress(int, int done, int total) override { std::printf("%d of %d\n", done, total); }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        constexpr int kTriedAgain = 256;
        if (id != request) {
            return;
        }
        if (status == kTriedAgain) {
            std::printf("the network is not there; it will be tried again\n");
            return;
        }
        std::printf(status == WMFM::STATUS_OK ? "sent\n" : "not sent: status %d\n", int(status));
        QCoreApplication::exit(status == WMFM::STATUS_OK ? 0 : 1);
    }
    QString listenerName() const override { return "send-picture"; }

    int request = -1;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // what is told is seen at once, in a pipe too
    QFile picture(application.arguments().value(2));
    if (argc != 4 || !picture.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "usage: 1-send-picture NUMBER PICTURE TEXT\n");
        return 2;
    }
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    Teller teller(session);
    session.setListener(&teller, status);
    // With a name of its own the session gets messages to that name alone, and takes none of
    // others.
    session.registerAppID("example.send-picture", status);

    WMMSMsg message =
        compose(application.arguments().at(1), picture, application.arguments().at(3));
    teller.request = session.send(&message, status);
    if (teller.request < 0) {
        std::fprintf(stderr, "not sent: status %d\n", int(status));
        return 1;
    }
    std::signal(SIGINT, [](int) { wantsToCancel = 1; });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (wantsToCancel) {
            timer.stop();
            session.mmsAbort(teller.request, status); // its end is told as that of any request
        }
    });
    timer.start(100);
    return application.exec();
}
