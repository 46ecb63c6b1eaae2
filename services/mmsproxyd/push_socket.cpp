// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/push_socket.h"

#include "services/common/push_records.h"

#include <QtCore/QLoggingCategory>
#include <QtNetwork/QLocalSocket>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kPush, "wmsg.push", QtInfoMsg)

constexpr qint64 kLongestRecord = service::kLongestPush + 4;

/// How many bytes of answers may wait before no more pushes are read.
constexpr qint64 kMostUnread = qint64(16) * 1024;

} // namespace

/// One pusher. It lives until its connection ends.
class PushSocket::Pusher : public QObject {
public:
    Pusher(PushSocket &owner, qintptr descriptor) : m_owner(owner)
    {
        connect(&m_socket, &QLocalSocket::readyRead, this, &Pusher::read);
        connect(&m_socket, &QLocalSocket::bytesWritten, this, &Pusher::read);
        // This signal may come while an answer is written.
        connect(
            &m_socket, &QLocalSocket::disconnected, this, [this] { m_owner.remove(this); },
            Qt::QueuedConnection);
        m_socket.setSocketDescriptor(descriptor);
        m_socket.setReadBufferSize(kLongestRecord);
    }
    ~Pusher() override { m_socket.disconnect(this); }
    Q_DISABLE_COPY_MOVE(Pusher)

private:
    void read()
    {
        while (!m_isOver && m_socket.bytesToWrite() < kMostUnread && (takePush() || readMore())) { }
    }

    /// False when no whole push has been read.
    bool takePush()
    {
        const service::ReceivedPush push = service::readPush(m_stream);
        switch (push.kind) {
        case service::ReceivedPush::Whole:
            m_stream.remove(0, push.size);
            answer(m_owner.m_taker(push.pdu));
            return true;
        case service::ReceivedPush::CutOff:
            return false;
        case service::ReceivedPush::Impossible:
            break;
        }
        qCWarning(kPush, "a pusher is ended: it announced a PDU of an impossible length");
        m_isOver = true;
        answer(u"a PDU has 1 to %1 bytes"_s.arg(service::kLongestPush));
        m_socket.disconnectFromServer();
        return false;
    }

    /// What was read is the beginning of a push at most, so there is room for more.
    bool readMore()
    {
        const QByteArray more =
            m_isOver ? QByteArray() : m_socket.read(kLongestRecord - m_stream.size());
        m_stream += more;
        return !more.isEmpty();
    }

    void answer(const QString &reason) { m_socket.write(service::pushAnswer(reason)); }

    PushSocket &m_owner;
    QLocalSocket m_socket;
    QByteArray m_stream;
    bool m_isOver = false;
};

PushSocket::PushSocket(Taker taker, QObject *parent) : QObject(parent), m_taker(std::move(taker))
{
    connect(&m_listener, &service::LocalListener::connected, this, &PushSocket::take);
}

PushSocket::~PushSocket() = default;

QString PushSocket::listen(const QString &path, mode_t mode)
{
    return m_listener.listen(path, mode);
}

void PushSocket::take(qintptr descriptor)
{
    if (m_pushers.size() >= kMostPushers) {
        const service::Descriptor closed(static_cast<int>(descriptor));
        qCWarning(kPush, "a pusher is refused: there are %zu", m_pushers.size());
        return;
    }
    m_pushers.push_back(std::make_unique<Pusher>(*this, descriptor));
}

void PushSocket::remove(const Pusher *pusher)
{
    const auto found = std::find_if(m_pushers.begin(), m_pushers.end(),
                                    [pusher](const auto &one) { return one.get() == pusher; });
    if (found != m_pushers.end()) {
        found->release()->deleteLater(); // it is the one that is calling
        m_pushers.erase(found);
    }
}

} // namespace wmsg::proxy
