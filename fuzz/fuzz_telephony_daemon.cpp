// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what a client sends to the telephony daemon, behind a greeting where it has none.

#include "fuzz/fuzz_application.h"
#include "fuzz/fuzz_support.h"
#include "services/common/local_address.h"
#include "services/telephonyd/loopback_modem.h"
#include "services/telephonyd/telephony_daemon.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

using namespace wmsg::fuzz;
using namespace wmsg::telephony;
using namespace wmsg::telephonyd;

namespace {

/// A client's end, which goes on while the daemon works.
class Client {
public:
    explicit Client(const QString &path)
    {
        const wmsg::service::LocalAddress address(path);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        require(::connect(m_socket, address.get(), address.size()) == 0, "the daemon listens");
    }
    ~Client() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Client)

    /// Sends all, unless the daemon hangs up.
    void send(const QByteArray &bytes)
    {
        qsizetype sent = 0;
        while (sent < bytes.size() && !m_isOver) {
            const ssize_t count =
                ::send(m_socket, bytes.constData() + sent, static_cast<size_t>(bytes.size() - sent),
                       MSG_DONTWAIT | MSG_NOSIGNAL);
            m_isOver = m_isOver || (count < 0 && errno != EAGAIN);
            sent += std::max<ssize_t>(count, 0);
            QCoreApplication::processEvents();
            receive();
        }
    }
    void finish()
    {
        ::shutdown(m_socket, SHUT_WR);
        while (!m_isOver) {
            QCoreApplication::processEvents();
            receive();
        }
    }
    /// Asks what is answered at once, and waits for the answer.
    void ask(quint16 number)
    {
        send(toFrame(DeregisterPort(), number));
        while (m_lastAnswer != number) {
            require(!m_isOver, "others keep their connection");
            QCoreApplication::processEvents();
            receive();
        }
    }

private:
    void receive()
    {
        char bytes[16384];
        const ssize_t count = ::recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT);
        m_isOver = m_isOver || count == 0 || (count < 0 && errno != EAGAIN);
        m_reader.append({bytes, std::max<ssize_t>(count, 0)});
        Frame frame;
        while (m_reader.next(frame)) {
            Done done;
            if (frame.type == RecordType::Done) {
                require(fromPayload(frame.payload, done), "the daemon makes sense");
                m_lastAnswer = frame.number;
            }
        }
        require(!m_reader.isBroken(), "the daemon writes frames");
    }

    int m_socket = -1;
    bool m_isOver = false;
    quint16 m_lastAnswer = 0;
    FrameReader m_reader;
};

QByteArray greeting(char letter)
{
    Hello hello;
    hello.clientId = QByteArray(kClientIdSize, letter);
    hello.events = TAPI_EVENTS_SMS;
    return toFrame(hello);
}

std::unique_ptr<TelephonyDaemon> newDaemon(const QTemporaryDir &folder)
{
    DaemonSettings settings;
    settings.socket = folder.filePath(QStringLiteral("socket"));
    settings.spool = folder.filePath(QStringLiteral("spool"));
    auto daemon = std::make_unique<TelephonyDaemon>(
        settings, std::make_unique<LoopbackModem>(LoopbackSettings()));
    require(daemon->start().isEmpty(), "the daemon starts");
    return daemon;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    needApplication();
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (input.contains(QByteArray(kClientIdSize, 'w'))) {
        return 0; // it would take the place of the witness, as it may
    }
    const QTemporaryDir folder(QStringLiteral("/dev/shm/fuzz-XXXXXX")); // syncing costs nothing
    auto daemon = newDaemon(folder);
    Client witness(folder.filePath(QStringLiteral("socket")));
    witness.send(greeting('w'));
    witness.ask(1);
    {
        Client client(folder.filePath(QStringLiteral("socket")));
        const bool greets = size > 4 && data[4] == 1;
        client.send(greets ? input : greeting('c') + input);
        client.finish();
    }
    witness.ask(2);
    daemon.reset();
    daemon = newDaemon(folder);
    const QDir kept(folder.filePath(QStringLiteral("spool/kept")));
    require(kept.isEmpty(), "what the daemon wrote, the next one reads");
    return 0;
}
