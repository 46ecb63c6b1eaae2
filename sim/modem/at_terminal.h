// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/modem/at_line.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QObject>

#include <functional>

namespace wmsg::sim {

/// AtAnswer is what a command of a line is answered.
struct AtAnswer {
    enum Result {
        Ok,
        Error,
        CmeError, ///< of the equipment, with a code; ERROR alone where codes are not wanted
        CmsError, ///< of the messages, with a code
        Prompt, ///< asks for a text: entered() tells it, finish() ends the command
        Later, ///< finish() ends the command
    };

    Result result = Ok;
    int code = 0;
    QByteArrayList lines = {}; ///< in front of the result

    static AtAnswer line(const QByteArray &text) { return {Ok, 0, {text}}; }
    static AtAnswer error() { return {Error}; }
    static AtAnswer cme(int code) { return {CmeError, code}; }
    static AtAnswer cms(int code) { return {CmsError, code}; }
};

/// AtTerminal is the side of a modem that a line of characters ends at: it cuts what comes into
/// lines, with echo, backspace and escape, has their commands obeyed, and writes the answers. While
/// a command has no answer, what comes is kept for later, and so is what nobody asked for.
class AtTerminal : public QObject {
    Q_OBJECT

public:
    using Obey = std::function<AtAnswer(const AtCommand &command)>;

    explicit AtTerminal(Obey obey, QObject *parent = nullptr);

    /// receive takes what the other side writes.
    void receive(QByteArrayView bytes);
    /// finish ends a command that was answered with Prompt or Later.
    void finish(const AtAnswer &answer);
    /// tell writes lines that nobody asked for.
    void tell(const QByteArrayList &lines);
    /// reset forgets everything, echo switched on.
    void reset();

    void setEcho(bool isOn) { m_isEcho = isOn; }
    /// setErrorCodes decides about the codes of errors of the equipment.
    void setErrorCodes(bool areOn) { m_areErrorCodesOn = areOn; }

Q_SIGNALS:
    /// send tells what goes to the other side.
    void send(const QByteArray &bytes);
    /// entered tells the text that followed a prompt. `isWhole` is false when it was too long.
    void entered(const QByteArray &text, bool isWhole);

private:
    enum class State { Line, Text, Busy };

    void take(char byte);
    void takeOfLine(char byte);
    void takeOfText(char byte);
    void runLine();
    void runCommands();
    void write(const AtAnswer &answer);
    void writeLines(const QByteArrayList &lines);
    void goOn();

    Obey m_obey;
    State m_state = State::Line;
    bool m_isEcho = true;
    bool m_areErrorCodesOn = false;
    QByteArray m_line;
    bool m_isTooLong = false;
    QByteArray m_waiting; // came while a command was busy
    QList<AtCommand> m_commands; // of the line, to be obeyed yet
    QByteArrayList m_untold;
};

} // namespace wmsg::sim
