// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// An application of its own process, which does what its standard input says, a line at a time, and
// tells on its standard output what it hears:
//
//     register ID             request 0     the number of the request
//     send NUMBER FILE        request 1     the file is a message that was composed before
//     abort N                               likewise pause and resume; their numbers are not told
//                             status 1 0    a request and its status
//                             progress 1 200 1000
//                             message SUBJECT SHA-256...    of its parts, in order
//                             closed        by the daemon
//
// It ends with its standard input.

#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>
#include <mms/model/result_codes.h>
#include <platform/applog/applog.h>
#include <qt2/qwssocket.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>

#include <cstdio>
#include <functional>
#include <memory>

#include <unistd.h>

namespace {

void tell(const QString &line)
{
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

class Application : public WMFMListener {
public:
    explicit Application(WMMSSession &session) : WMFMListener(&session), m_session(session) { }

    void obey(const QStringList &words)
    {
        const QString what = words.value(0);
        const int number = words.value(1).toInt();
        WMFM::STATUS_T status = WMFM::STATUS_FAIL;
        if (what == "register") {
            const int request = m_session.registerAppID(words.value(1), status);
            tellRequest(request, status);
        } else if (what == "deregister") {
            const int request = m_session.deRegisterAppID(words.value(1), status);
            tellRequest(request, status);
        } else if (what == "send") {
            send(words.value(1), words.value(2));
        } else if (what == "abort") {
            m_session.mmsAbort(number, status);
        } else if (what == "pause") {
            m_session.mmsPause(number, status);
        } else if (what == "resume") {
            m_session.mmsResume(number, status);
        } else {
            tell("what is \"" + what + "\"?");
        }
    }

    void msgIncome(WMFMMsg *msg) override
    {
        const std::unique_ptr<WMFMMsg> owner(msg);
        auto &message = dynamic_cast<WMMSMsg &>(*msg);
        QString line = "message " + message.getSubject();
        if (const auto *parts = message.getMultiParts().subParts()) {
            for (const WMMSMultipart &part : *parts) {
                line += ' ' + hashOf(part.getData().toByteArray());
            }
        }
        tell(line);
    }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        tell(QString("status %1 %2").arg(id).arg(int(status)));
    }
    void progress(int id, int done, int total) override
    {
        tell(QString("progress %1 %2 %3").arg(id).arg(done).arg(total));
    }
    QString listenerName() const override { return "e2e"; }

private:
    static QString hashOf(const QByteArray &bytes)
    {
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    }
    void tellRequest(int number, int status)
    {
        tell(status == 0 ? QString("request %1").arg(number) : QString("refused %1").arg(status));
    }
    void send(const QString &number, const QString &file)
    {
        WMMSMsg message;
        if (message.construct(file, true) != MMS_DECODE_OK) {
            tell("unreadable " + file);
            return;
        }
        message.setTo(WMFMEntry(1, number));
        WMFM::STATUS_T status = WMFM::STATUS_FAIL;
        const int request = m_session.send(&message, status);
        tellRequest(request, status);
    }

    WMMSSession &m_session;
};

/// Takes in what standard input has, and gives its whole lines.
class Input {
public:
    bool read(const std::function<void(const QString &)> &line)
    {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) {
            return false;
        }
        m_bytes.append(bytes, count);
        for (qsizetype end; (end = m_bytes.indexOf('\n')) >= 0;) {
            const QString whole = QString::fromUtf8(m_bytes.first(end));
            m_bytes.remove(0, end + 1);
            line(whole);
        }
        return true;
    }

private:
    QByteArray m_bytes;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    const std::unique_ptr<WMFMSession> opened(WMFMSession::open(WMFM::MSG_TYPE_MMS, status));
    auto *session = dynamic_cast<WMMSSession *>(opened.get());
    if (!session || status != WMFM::STATUS_OK) {
        return 1;
    }
    Application listener(*session);
    session->setListener(&listener, status);
    QObject::connect(session, &WMMSSession::connectionClosed, session, [] { tell("closed"); });
    QObject::connect(session->findChild<QWSSocket *>(), &QWSSocket::connectionClosed, session,
                     [] { tell("closed"); });
    Input input;
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, session, [&] {
        if (!input.read([&](const QString &line) { listener.obey(line.split(' ')); })) {
            QCoreApplication::quit();
        }
    });
    tell("ready");
    const int result = QCoreApplication::exec();
    session->setListener(nullptr, status);
    return result;
}
