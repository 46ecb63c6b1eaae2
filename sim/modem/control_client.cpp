// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/control_client.h"

#include "sim/modem/control_lines.h"

using namespace Qt::StringLiterals;

namespace wmsg::sim {

ControlRequest::ControlRequest(const QString &path, const QByteArrayList &commands,
                               std::chrono::milliseconds timeout, QObject *parent)
    : QObject(parent), m_commands(commands)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this,
            [this] { end(ControlOutcome::NotReached, u"the simulator gave no answer in time"_s); });
    connect(&m_socket, &QLocalSocket::connected, this, &ControlRequest::writeNext,
            Qt::QueuedConnection);
    connect(&m_socket, &QLocalSocket::readyRead, this, &ControlRequest::read);
    // Failures are told from inside connectToServer().
    connect(&m_socket, &QLocalSocket::errorOccurred, this, &ControlRequest::fail,
            Qt::QueuedConnection);
    m_timer.start(timeout);
    m_socket.connectToServer(path);
}

void ControlRequest::writeNext()
{
    if (m_commands.isEmpty()) {
        end(ControlOutcome::Done, QString());
        return;
    }
    m_socket.write(m_commands.takeFirst() + '\n');
}

void ControlRequest::read()
{
    m_received += m_socket.isOpen() ? m_socket.readAll() : QByteArray();
    const qsizetype length = m_received.indexOf('\n');
    if (length >= 0) {
        const QByteArray answer = m_received.first(length);
        m_received.remove(0, length + 1);
        take(answer);
    } else if (m_received.size() > kLongestControlLine) {
        end(ControlOutcome::NotReached, u"what answers is no simulator"_s);
    }
}

void ControlRequest::take(const QByteArray &answer)
{
    const QString text = QString::fromUtf8(answer);
    if (text.startsWith(u"error "_s)) {
        end(ControlOutcome::Refused, text.sliced(6));
    } else if (text != u"ok"_s && !text.startsWith(u"ok "_s)) {
        end(ControlOutcome::NotReached, u"what answers is no simulator"_s);
    } else if (m_commands.isEmpty()) {
        end(ControlOutcome::Done, text.mid(3));
    } else {
        writeNext();
    }
}

void ControlRequest::fail()
{
    read();
    end(ControlOutcome::NotReached,
        m_socket.error() == QLocalSocket::PeerClosedError ? u"the simulator hung up"_s
                                                          : m_socket.errorString());
}

void ControlRequest::end(ControlOutcome::Kind kind, const QString &text)
{
    if (m_hasEnded) {
        return;
    }
    m_hasEnded = true;
    m_timer.stop();
    m_socket.disconnect(this);
    m_socket.abort();
    Q_EMIT finished({kind, text});
}

QByteArray deliverCommand(const QByteArray &serviceCentreAndTpdu)
{
    return "deliver " + serviceCentreAndTpdu.toHex();
}

} // namespace wmsg::sim
