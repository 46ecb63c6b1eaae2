// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/messages.h"
#include "core/wmfmlistener.h"
#include "mms/session/wmmssession.h"
#include "qt2/qcustomevent.h"

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QLocalSocket>

#include <array>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// A command and its event: a session registers an application and its listener hears the answer.
// Beside it the same bytes over a plain QLocalSocket, with the answer posted as an event. Both talk
// to the same thread.
//
// It listens on the path of the proxy socket: do not run it while a proxy daemon runs.

namespace {

constexpr const char *kPath = "/tmp/mmsproxy";
constexpr size_t kCommandSize = 18; // four words and one character
using Record = std::array<qint32, 5>;

/// Answers each register command with a registration-completed event. One client at a time.
class Answerer {
public:
    Answerer() : m_listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, kPath, sizeof address.sun_path);
        const auto *where = reinterpret_cast<const sockaddr *>(&address);
        if (::connect(m_listening, where, sizeof address) == 0) {
            qFatal("somebody else listens on %s", kPath);
        }
        ::unlink(kPath);
        if (::bind(m_listening, where, sizeof address) != 0 || ::listen(m_listening, 5) != 0) {
            qFatal("cannot listen on %s", kPath);
        }
        m_thread = std::thread([this] { serve(); });
    }
    ~Answerer()
    {
        ::shutdown(m_listening, SHUT_RDWR);
        m_thread.join();
        ::close(m_listening);
        ::unlink(kPath);
    }
    Q_DISABLE_COPY_MOVE(Answerer)

private:
    void serve() const
    {
        for (;;) {
            const int client = ::accept(m_listening, nullptr, nullptr);
            if (client < 0) {
                return;
            }
            answerAll(client);
            ::close(client);
        }
    }
    static void answerAll(int client)
    {
        constexpr qint32 kRegistrationCompleted = 2;
        Record command;
        while (::recv(client, command.data(), kCommandSize, MSG_WAITALL) == kCommandSize) {
            const Record answer = {kRegistrationCompleted, 0, command[2], 0, 0};
            if (::send(client, answer.data(), sizeof answer, MSG_NOSIGNAL) != sizeof answer) {
                return;
            }
        }
    }

    int m_listening;
    std::thread m_thread;
};

/// An application, and the thread that answers.
struct Desk {
    int count = 1;
    char name[6] = "bench";
    char *names[2] = {name, nullptr};
    QCoreApplication application{count, names};
    Answerer answerer;
};

class Listener final : public WMFMListener {
public:
    using WMFMListener::WMFMListener;
    QString listenerName() const override { return QStringLiteral("bench"); }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        lastId = id;
        lastStatus = status;
    }

    int lastId = -1;
    WMFM::STATUS_T lastStatus = WMFM::STATUS_FAIL;
};

void commandToEvent(benchmark::State &state)
{
    bench::discardLog();
    Desk desk;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    Listener listener(&session);
    session.setListener(&listener, status);
    const QString application = QStringLiteral("a");
    for (auto _ : state) {
        const int id = session.registerAppID(application, status);
        while (listener.lastId != id) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        if (listener.lastStatus != WMFM::STATUS_OK) {
            state.SkipWithError("refused");
            return;
        }
    }
}

/// What a program would write that has no session: reads whole records and posts each to itself.
class BareClient final : public QObject {
public:
    BareClient()
    {
        connect(&socket, &QLocalSocket::readyRead, this, [this] {
            Record answer;
            while (socket.bytesAvailable() >= qint64(sizeof answer)) {
                socket.read(reinterpret_cast<char *>(answer.data()), sizeof answer);
                QCoreApplication::postEvent(this, new QCustomEvent(kType, new Record(answer)));
            }
        });
        socket.connectToServer(QString::fromLatin1(kPath));
    }
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::Type(kType)) {
            return QObject::event(event);
        }
        const auto *answer = static_cast<Record *>(static_cast<QCustomEvent *>(event)->data());
        lastId = (*answer)[2];
        delete answer;
        return true;
    }
    void request(int id)
    {
        const Record command = {2, 2, id, 2, 'a'};
        socket.write(reinterpret_cast<const char *>(command.data()), kCommandSize);
        socket.flush();
    }

    static constexpr int kType = QEvent::User + 100;
    QLocalSocket socket;
    int lastId = -1;
};

void bareSocket(benchmark::State &state)
{
    Desk desk;
    BareClient client;
    int id = -1;
    for (auto _ : state) {
        client.request(++id);
        while (client.lastId != id) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
}

} // namespace

BENCHMARK(commandToEvent)->UseRealTime();
BENCHMARK(bareSocket)->UseRealTime();
