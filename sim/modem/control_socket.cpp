// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/control_socket.h"

#include "sim/modem/control_lines.h"

#include <algorithm>
#include <cctype>
#include <optional>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr int kHighestCause = 65535;
constexpr int kMostFailures = 1000000;
constexpr int kLongestDelay = 600000;

/// What is wrong with a command; an empty text when nothing is.
using Handler = QString (*)(Modem &modem, const QByteArrayList &arguments);

std::optional<int> numberIn(const QByteArray &text, int lowest, int highest)
{
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    return isNumber && value >= lowest && value <= highest ? std::optional(value) : std::nullopt;
}

QString deliver(Modem &modem, const QByteArrayList &arguments, bool isRaw)
{
    const QByteArray text = arguments.value(0);
    const bool isHex = text.size() % 2 == 0
        && std::all_of(text.cbegin(), text.cend(),
                       [](char byte) { return std::isxdigit(static_cast<quint8>(byte)) != 0; });
    return isHex ? modem.network().deliver(QByteArray::fromHex(text), isRaw)
                 : u"the message is not in hexadecimal digits"_s;
}

QString failNext(Modem &modem, const QByteArrayList &arguments)
{
    const auto cause = numberIn(arguments.value(0), 1, kHighestCause);
    const auto count = numberIn(arguments.value(1, "1"), 0, kMostFailures);
    if (!cause || !count) {
        return u"fail-next takes a cause from 1 to 65535, and a count"_s;
    }
    modem.network().failNext(*cause, *count);
    return {};
}

QString slow(Modem &modem, const QByteArrayList &arguments)
{
    const auto delay = numberIn(arguments.value(0), 0, kLongestDelay);
    if (!delay) {
        return u"slow takes milliseconds, 600000 at most"_s;
    }
    modem.setDelay(*delay);
    return {};
}

struct Row {
    const char *name;
    int mostArguments;
    Handler handler;
};

// clang-format off
constexpr Row kRows[] = {
    {"deliver", 1, [](Modem &modem, const QByteArrayList &arguments) {
        return deliver(modem, arguments, false); }},
    {"deliver-raw", 1, [](Modem &modem, const QByteArrayList &arguments) {
        return deliver(modem, arguments, true); }},
    {"fail-next", 2, failNext},
    {"lose-next-answer", 0, [](Modem &modem, const QByteArrayList &) {
        modem.network().loseNextAnswer(); return QString(); }},
    {"slow", 1, slow},
    {"vanish", 0, [](Modem &modem, const QByteArrayList &) {
        modem.vanish(); return QString(); }},
    {"hang", 0, [](Modem &modem, const QByteArrayList &) {
        modem.hang(); return QString(); }},
    {"return", 0, [](Modem &modem, const QByteArrayList &) {
        return modem.comeBack(); }},
};
// clang-format on

} // namespace

ControlSocket::ControlSocket(Modem &modem) : m_modem(modem)
{
    connect(&m_listener, &service::LocalListener::connected, this, &ControlSocket::take);
}

void ControlSocket::take(qintptr descriptor)
{
    auto *peer = new QLocalSocket(this);
    connect(peer, &QLocalSocket::readyRead, this, [this, peer] { read(peer); });
    connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
    peer->setReadBufferSize(kLongestControlLine + 1);
    peer->setSocketDescriptor(descriptor);
}

void ControlSocket::read(QLocalSocket *peer)
{
    while (peer->canReadLine()) {
        QByteArray line = peer->readLine();
        line.chop(1);
        peer->write(obey(line) + '\n');
    }
    if (peer->bytesAvailable() > kLongestControlLine) {
        peer->write("error the line is too long\n");
        peer->disconnectFromServer();
    }
}

QByteArray ControlSocket::obey(const QByteArray &command)
{
    QByteArrayList words = command.simplified().split(' ');
    const QByteArray name = words.takeFirst();
    if (name == "status" && words.isEmpty()) {
        return "ok " + m_modem.status().toUtf8();
    }
    for (const Row &row : kRows) {
        if (name == row.name) {
            const QString problem = words.size() <= row.mostArguments ? row.handler(m_modem, words)
                                                                      : u"too many words"_s;
            return problem.isEmpty() ? "ok" : "error " + problem.toUtf8();
        }
    }
    return "error there is no such command";
}

} // namespace wmsg::sim
