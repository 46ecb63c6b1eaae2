// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what a program writes to the line of the simulated modem.

#include "fuzz/fuzz_application.h"
#include "fuzz/fuzz_support.h"
#include "sim/modem/at_line.h"
#include "sim/modem/at_terminal.h"
#include "sim/modem/message_commands.h"
#include "sim/modem/network.h"
#include "sim/modem/phone_commands.h"

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>

#include <algorithm>

using namespace wmsg::fuzz;
using namespace wmsg::sim;

namespace {

/// All of the modem but its terminal device.
class Line {
public:
    Line()
    {
        QObject::connect(&m_terminal, &AtTerminal::send,
                         [this](const QByteArray &bytes) { m_said += bytes; });
        QObject::connect(&m_terminal, &AtTerminal::entered, &m_messages, &MessageCommands::enter);
        QObject::connect(&m_messages, &MessageCommands::answered, &m_terminal, &AtTerminal::finish);
        QObject::connect(&m_messages, &MessageCommands::arrived, &m_terminal, &AtTerminal::tell);
    }

    void write(QByteArrayView bytes)
    {
        m_terminal.receive(bytes);
        QCoreApplication::processEvents();
    }
    [[nodiscard]] const QByteArray &said() const { return m_said; }

private:
    AtAnswer obey(const AtCommand &command)
    {
        if (MessageCommands::knows(command.name)) {
            return m_messages.obey(command);
        }
        const AtAnswer answer = m_phone.obey(command);
        m_terminal.setEcho(m_phone.isEchoOn());
        m_terminal.setErrorCodes(m_phone.errorCodes() != 0);
        m_messages.setLocked(m_phone.isLocked());
        return answer;
    }

    PduFiles m_log;
    Network m_network{{}, m_log};
    PhoneCommands m_phone{{}};
    MessageCommands m_messages{{3, "+15550199"}, m_network};
    AtTerminal m_terminal{[this](const AtCommand &command) {
        return obey(command);
    }};
    QByteArray m_said;
};

QByteArray writtenCommand(const AtCommand &command)
{
    const bool isExtended = command.name.startsWith('+');
    const bool isRegister = command.name.startsWith('S');
    QByteArrayList arguments = command.arguments;
    if (isExtended) {
        for (QByteArray &argument : arguments) {
            argument = '"' + argument + '"';
        }
    }
    switch (command.form) {
    case AtCommand::Do:
        return command.name + arguments.join();
    case AtCommand::Read:
        return command.name + '?';
    case AtCommand::Test:
        return command.name + "=?";
    case AtCommand::Set:
        break;
    }
    require(isExtended || isRegister, "what is set is a value or a register");
    return command.name + '=' + arguments.join(',');
}

bool isSame(const AtCommand &a, const AtCommand &b)
{
    return a.name == b.name && a.form == b.form && a.arguments == b.arguments;
}

/// What was read of a line says the same when it is written anew.
void checkLine(QByteArrayView line)
{
    const auto commands = readAtLine(line);
    if (!commands) {
        return;
    }
    QByteArray written;
    for (const AtCommand &command : *commands) {
        require(!command.name.isEmpty() && command.name == command.name.toUpper(),
                "a command has a name in capital letters");
        require(command.number(0, 0).value_or(0) >= 0, "a number is none below zero");
        written += writtenCommand(command) + (command.name.startsWith('+') ? ";" : " ");
    }
    const auto again = readAtLine(written);
    require(
        again
            && std::equal(again->begin(), again->end(), commands->begin(), commands->end(), isSame),
        "commands that are written are read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    needApplication();
    const QByteArrayView input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkLine(input);
    Line whole;
    whole.write(input);
    Line split;
    for (const char byte : input) {
        split.write(QByteArrayView(&byte, 1));
    }
    require(split.said() == whole.said(), "it does not matter how bytes arrive");
    whole.write("\x1B\r\x1B"); // ends a text, a line, and the text that this line asks for
    whole.write("AT\r");
    require(whole.said().endsWith("\r\nOK\r\n"), "the modem goes on to listen");
    return 0;
}
