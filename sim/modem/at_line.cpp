// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/at_line.h"

namespace wmsg::sim {

namespace {

bool isLetter(char byte)
{
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// Reads the commands of a line, one after the other.
class LineReader {
public:
    explicit LineReader(QByteArrayView text) : m_text(text) { }

    bool isAtEnd() const { return m_at == m_text.size(); }
    bool next(AtCommand &command) { return peek() == '+' ? extended(command) : basic(command); }
    void skip(char byte)
    {
        while (!isAtEnd() && m_text[m_at] == byte) {
            ++m_at;
        }
    }

private:
    char peek() const { return isAtEnd() ? '\0' : m_text[m_at]; }
    bool take(char byte)
    {
        const bool isThere = peek() == byte && !isAtEnd();
        m_at += isThere ? 1 : 0;
        return isThere;
    }
    QByteArray digits()
    {
        const qsizetype begin = m_at;
        while (isDigit(peek())) {
            ++m_at;
        }
        return m_text.sliced(begin, m_at - begin).toByteArray();
    }
    bool basic(AtCommand &command);
    bool registerOf(AtCommand &command);
    bool extended(AtCommand &command);
    bool arguments(AtCommand &command);

    QByteArrayView m_text;
    qsizetype m_at = 0;
};

bool LineReader::basic(AtCommand &command)
{
    if (take('&')) {
        command.name = "&";
    }
    if (!isLetter(peek())) {
        return false;
    }
    command.name += m_text.sliced(m_at++, 1).toByteArray().toUpper();
    const QByteArray number = digits();
    if (command.name == "S") {
        command.name += number;
        return registerOf(command);
    }
    if (!number.isEmpty()) {
        command.arguments.append(number);
    }
    return true;
}

bool LineReader::registerOf(AtCommand &command)
{
    if (take('?')) {
        command.form = AtCommand::Read;
        return true;
    }
    command.form = AtCommand::Set;
    const bool isSet = take('=');
    command.arguments.append(digits());
    return isSet;
}

bool LineReader::extended(AtCommand &command)
{
    const qsizetype begin = m_at++;
    while (isLetter(peek()) || isDigit(peek())) {
        ++m_at;
    }
    command.name = m_text.sliced(begin, m_at - begin).toByteArray().toUpper();
    if (take('?')) {
        command.form = AtCommand::Read;
    } else if (take('=')) {
        command.form = AtCommand::Set;
        if (take('?')) {
            command.form = AtCommand::Test;
        } else if (!arguments(command)) {
            return false;
        }
    }
    return command.name.size() > 1 && (isAtEnd() || peek() == ';');
}

bool LineReader::arguments(AtCommand &command)
{
    QByteArray argument;
    bool isQuoted = false;
    for (; !isAtEnd() && (isQuoted || peek() != ';'); ++m_at) {
        const char byte = m_text[m_at];
        if (byte == '"') {
            isQuoted = !isQuoted;
        } else if (byte == ',' && !isQuoted) {
            command.arguments.append(argument);
            argument.clear();
        } else if (byte != ' ' || isQuoted) {
            argument += byte;
        }
    }
    command.arguments.append(argument);
    return !isQuoted;
}

} // namespace

std::optional<int> AtCommand::number(qsizetype argument, int other) const
{
    const QByteArray text = arguments.value(argument);
    if (text.isEmpty()) {
        return other;
    }
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    return isNumber && value >= 0 ? std::optional(value) : std::nullopt;
}

std::optional<QList<AtCommand>> readAtLine(QByteArrayView text)
{
    LineReader reader(text);
    QList<AtCommand> commands;
    for (reader.skip(' '); !reader.isAtEnd(); reader.skip(' ')) {
        AtCommand command;
        if (!reader.next(command)) {
            return std::nullopt;
        }
        commands.append(command);
        reader.skip(';');
    }
    return commands;
}

} // namespace wmsg::sim
