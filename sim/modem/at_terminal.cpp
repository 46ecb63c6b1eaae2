// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/at_terminal.h"

#include <utility>

namespace wmsg::sim {

namespace {

constexpr char kReturn = '\r';
constexpr char kBackspace = '\b';
constexpr char kEnd = '\x1A';
constexpr char kEscape = '\x1B';

constexpr qsizetype kLongestLine = 1024;
constexpr qsizetype kMostWaiting = 16384;
constexpr qsizetype kMostUntold = 1000;

} // namespace

AtTerminal::AtTerminal(Obey obey, QObject *parent) : QObject(parent), m_obey(std::move(obey)) { }

void AtTerminal::reset()
{
    m_state = State::Line;
    m_isEcho = true;
    m_areErrorCodesOn = false;
    m_line.clear();
    m_isTooLong = false;
    m_waiting.clear();
    m_commands.clear();
    m_untold.clear();
}

void AtTerminal::receive(QByteArrayView bytes)
{
    for (const char byte : bytes) {
        take(byte);
    }
}

void AtTerminal::take(char byte)
{
    switch (m_state) {
    case State::Line:
        takeOfLine(byte);
        break;
    case State::Text:
        takeOfText(byte);
        break;
    case State::Busy:
        if (m_waiting.size() < kMostWaiting) {
            m_waiting += byte;
        }
        break;
    }
}

void AtTerminal::takeOfLine(char byte)
{
    if (byte == kEscape || byte == kEnd || byte == '\n' || byte == '\0') {
        return; // an escape that came too late, and its like
    }
    if (m_isEcho) {
        Q_EMIT send(QByteArray(1, byte));
    }
    if (byte == kReturn) {
        runLine();
    } else if (byte == kBackspace) {
        m_line.chop(1);
    } else if (m_line.size() < kLongestLine) {
        m_line += byte;
    } else {
        m_isTooLong = true;
    }
}

void AtTerminal::takeOfText(char byte)
{
    if (byte == kEscape) {
        m_line.clear();
        m_isTooLong = false;
        finish({});
    } else if (byte == kEnd) {
        m_state = State::Busy;
        Q_EMIT entered(std::exchange(m_line, QByteArray()), !std::exchange(m_isTooLong, false));
    } else if (m_line.size() < kLongestLine) {
        if (m_isEcho) {
            Q_EMIT send(QByteArray(1, byte));
        }
        m_line += byte;
    } else {
        m_isTooLong = true;
    }
}

void AtTerminal::runLine()
{
    const QByteArray line = std::exchange(m_line, QByteArray()).trimmed();
    const bool isTooLong = std::exchange(m_isTooLong, false);
    if (line.left(2).toUpper() != "AT") {
        return; // a modem hears nothing before the two letters
    }
    const auto commands = readAtLine(QByteArrayView(line).sliced(2));
    if (isTooLong || !commands) {
        write(AtAnswer::error());
        return;
    }
    m_commands = *commands;
    runCommands();
}

void AtTerminal::runCommands()
{
    while (!m_commands.isEmpty()) {
        const AtAnswer answer = m_obey(m_commands.takeFirst());
        if (answer.result == AtAnswer::Prompt) {
            m_state = State::Text;
            m_commands.clear();
            Q_EMIT send("\r\n> ");
            return;
        }
        if (answer.result == AtAnswer::Later) {
            m_state = State::Busy;
            return;
        }
        if (answer.result != AtAnswer::Ok) {
            m_commands.clear();
            write(answer);
            return;
        }
        writeLines(answer.lines);
    }
    write({});
}

void AtTerminal::finish(const AtAnswer &answer)
{
    m_state = State::Line;
    if (answer.result == AtAnswer::Ok) {
        writeLines(answer.lines);
        runCommands();
    } else {
        m_commands.clear();
        write(answer);
    }
    goOn();
}

void AtTerminal::goOn()
{
    const QByteArray waiting = std::exchange(m_waiting, QByteArray());
    receive(waiting);
    if (m_state == State::Line && !m_untold.isEmpty()) {
        writeLines(std::exchange(m_untold, QByteArrayList()));
    }
}

void AtTerminal::write(const AtAnswer &answer)
{
    QByteArray text = "ERROR";
    if (answer.result == AtAnswer::Ok) {
        text = "OK";
    } else if (answer.result == AtAnswer::CmsError) {
        text = "+CMS ERROR: " + QByteArray::number(answer.code);
    } else if (answer.result == AtAnswer::CmeError && m_areErrorCodesOn) {
        text = "+CME ERROR: " + QByteArray::number(answer.code);
    }
    writeLines({text});
}

void AtTerminal::writeLines(const QByteArrayList &lines)
{
    for (const QByteArray &line : lines) {
        Q_EMIT send("\r\n" + line + "\r\n");
    }
}

void AtTerminal::tell(const QByteArrayList &lines)
{
    if (m_state == State::Line) {
        writeLines(lines);
    } else if (m_untold.size() < kMostUntold) {
        m_untold += lines;
    }
}

} // namespace wmsg::sim
