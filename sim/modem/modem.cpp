// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/modem.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

Network::Settings networkSettings(const Modem::Settings &settings)
{
    return {settings.isLoopback, QString::fromLatin1(settings.messages.serviceCentre)};
}

} // namespace

Modem::Modem(Settings settings, PduFiles &log)
    : m_settings(std::move(settings)), m_network(networkSettings(m_settings), log),
      m_phone(m_settings.phone), m_messages(m_settings.messages, m_network),
      m_terminal([this](const AtCommand &command) { return obey(command); })
{
    m_messages.setLocked(m_phone.isLocked());
    connect(&m_line, &Pty::received, this, [this](const QByteArray &bytes) {
        if (!m_isHanging) {
            m_terminal.receive(bytes);
        }
    });
    connect(&m_terminal, &AtTerminal::send, this, [this](const QByteArray &bytes) {
        if (!m_isHanging) {
            m_line.write(bytes);
        }
    });
    connect(&m_terminal, &AtTerminal::entered, &m_messages, &MessageCommands::enter);
    connect(&m_messages, &MessageCommands::answered, &m_terminal, &AtTerminal::finish);
    connect(&m_messages, &MessageCommands::arrived, &m_terminal, &AtTerminal::tell);
    connect(&m_messages, &MessageCommands::answerLost, this, &Modem::vanish);
}

AtAnswer Modem::obey(const AtCommand &command)
{
    if (MessageCommands::knows(command.name)) {
        return m_messages.obey(command);
    }
    AtAnswer answer = m_phone.obey(command);
    m_terminal.setEcho(m_phone.isEchoOn());
    m_terminal.setErrorCodes(m_phone.errorCodes() != 0);
    if (m_messages.isLocked() != m_phone.isLocked()) {
        m_messages.setLocked(m_phone.isLocked());
        m_messages.fetch();
    }
    return answer;
}

void Modem::restart()
{
    m_phone.restart();
    m_messages.restart();
    m_messages.setLocked(m_phone.isLocked());
    m_terminal.reset();
}

void Modem::vanish()
{
    m_messages.setReachable(false);
    m_line.close();
    restart();
}

QString Modem::comeBack()
{
    m_isHanging = false;
    restart();
    QString problem = m_line.isOpen() ? QString() : m_line.open(m_settings.link);
    m_messages.setReachable(problem.isEmpty());
    m_messages.fetch();
    return problem;
}

void Modem::setDelay(int milliseconds)
{
    m_delay = milliseconds;
    m_messages.setDelay(milliseconds);
}

QString Modem::status() const
{
    const QString state = !m_line.isOpen() ? u"gone"_s : m_isHanging ? u"hanging"_s : u"there"_s;
    return u"modem=%1 SM=%2/%4 ME=%3/%4 sent=%5 delivered=%6 waiting=%7 delay=%8"_s.arg(state)
        .arg(m_messages.used(0))
        .arg(m_messages.used(1))
        .arg(m_messages.places())
        .arg(m_network.accepted())
        .arg(m_network.delivered())
        .arg(m_network.waiting())
        .arg(m_delay);
}

} // namespace wmsg::sim
