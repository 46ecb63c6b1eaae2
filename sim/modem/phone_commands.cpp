// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/phone_commands.h"

#include <utility>

namespace wmsg::sim {

namespace {

constexpr int kOperationNotAllowed = 3;
constexpr int kOperationNotSupported = 4;
constexpr int kSimPinRequired = 11;
constexpr int kWrongPassword = 16;

constexpr char kMaker[] = "wmsg";
constexpr char kModel[] = "Simulated modem";
constexpr char kRevision[] = WMSG_VERSION;
// A test network, and an equipment of the range that is kept for tests.
constexpr char kSerial[] = "001010123456789";
constexpr char kSubscriber[] = "001010000000001";
constexpr char kFirstCharset[] = "IRA";

/// A command whose answer never changes.
struct Fixed {
    const char *name;
    AtCommand::Form form;
    const char *line; ///< empty: none
};

// clang-format off
constexpr Fixed kFixed[] = {
    {"+CGMI", AtCommand::Do, kMaker},       {"+CGMI", AtCommand::Test, ""},
    {"+GMI", AtCommand::Do, kMaker},        {"+GMI", AtCommand::Test, ""},
    {"+CGMM", AtCommand::Do, kModel},       {"+CGMM", AtCommand::Test, ""},
    {"+GMM", AtCommand::Do, kModel},        {"+GMM", AtCommand::Test, ""},
    {"+CGMR", AtCommand::Do, kRevision},    {"+CGMR", AtCommand::Test, ""},
    {"+GMR", AtCommand::Do, kRevision},     {"+GMR", AtCommand::Test, ""},
    {"+CGSN", AtCommand::Do, kSerial},      {"+CGSN", AtCommand::Test, ""},
    {"+GSN", AtCommand::Do, kSerial},       {"+GSN", AtCommand::Test, ""},
    {"+CIMI", AtCommand::Do, kSubscriber},  {"+CIMI", AtCommand::Test, ""},
    {"+GCAP", AtCommand::Do, "+GCAP: +CGSM"},
    {"+WS46", AtCommand::Read, "+WS46: 12"},    {"+WS46", AtCommand::Test, "+WS46: (12)"},
    {"+CFUN", AtCommand::Read, "+CFUN: 1"},     {"+CFUN", AtCommand::Test, "+CFUN: (1),(0)"},
    {"+CPAS", AtCommand::Do, "+CPAS: 0"},       {"+CPAS", AtCommand::Test, "+CPAS: (0)"},
    {"+CSQ", AtCommand::Do, "+CSQ: 24,99"},     {"+CSQ", AtCommand::Test, "+CSQ: (0-31,99),(99)"},
    {"+CREG", AtCommand::Read, "+CREG: 0,1"},   {"+CREG", AtCommand::Test, "+CREG: (0)"},
    {"+CGREG", AtCommand::Read, "+CGREG: 0,1"}, {"+CGREG", AtCommand::Test, "+CGREG: (0)"},
    {"+COPS", AtCommand::Read, "+COPS: 0,2,\"00101\""},
    {"+COPS", AtCommand::Test, "+COPS: (2,\"wmsg\",\"wmsg\",\"00101\")"},
    {"+CLCK", AtCommand::Test, "+CLCK: (\"SC\")"},
    {"+CPBS", AtCommand::Test, "+CPBS: (\"SM\")"},
};

/// Settings that are what they can only be.
constexpr struct { const char *name; int value; } kAccepted[] = {
    {"+CFUN", 1}, {"+CREG", 0}, {"+CGREG", 0},
};

/// Basic commands that this modem has nothing to do for.
constexpr const char *kIgnored[] = {"V", "Q", "X", "&C", "&D", "&K", "&S", "M", "L", "H"};
// clang-format on

} // namespace

PhoneCommands::PhoneCommands(Settings settings) : m_settings(std::move(settings))
{
    restart();
}

void PhoneCommands::restart()
{
    m_isEchoOn = true;
    m_errorCodes = 0;
    m_isLocked = !m_settings.pin.isEmpty();
    m_charset = kFirstCharset;
}

AtAnswer PhoneCommands::obey(const AtCommand &command)
{
    if (!command.name.startsWith('+')) {
        return basic(command);
    }
    if (command.name == "+CPIN") {
        return pin(command);
    }
    if (command.name == "+CMEE") {
        return errors(command);
    }
    if (command.name == "+CSCS") {
        return charset(command);
    }
    if (m_isLocked && (command.name == "+CIMI" || command.name == "+CNUM")) {
        return AtAnswer::cme(kSimPinRequired);
    }
    if (command.name == "+CNUM" && command.form == AtCommand::Do) {
        return m_settings.number.isEmpty()
            ? AtAnswer()
            : AtAnswer::line("+CNUM: ,\"" + m_settings.number + "\","
                             + (m_settings.number.startsWith('+') ? "145" : "129"));
    }
    if (command.name == "+CLCK" && command.form == AtCommand::Set
        && command.arguments.value(0) == "SC" && command.number(1, -1) == 2) {
        return AtAnswer::line(m_settings.pin.isEmpty() ? "+CLCK: 0" : "+CLCK: 1");
    }
    for (const Fixed &row : kFixed) {
        if (command.name == row.name && command.form == row.form) {
            return *row.line == '\0' ? AtAnswer() : AtAnswer::line(row.line);
        }
    }
    for (const auto &row : kAccepted) {
        if (command.name == row.name && command.form == AtCommand::Set) {
            return command.number(0, -1) == row.value ? AtAnswer()
                                                      : AtAnswer::cme(kOperationNotSupported);
        }
    }
    if (command.name == "+COPS" && command.form == AtCommand::Set) {
        return AtAnswer();
    }
    return AtAnswer::error();
}

AtAnswer PhoneCommands::basic(const AtCommand &command)
{
    if (command.name == "E") {
        const auto value = command.number(0, 0);
        m_isEchoOn = value == 1;
        return value.value_or(2) <= 1 ? AtAnswer() : AtAnswer::error();
    }
    if (command.name == "Z" || command.name == "&F") {
        m_isEchoOn = true;
        m_errorCodes = 0;
        return AtAnswer();
    }
    if (command.name == "I") {
        return {AtAnswer::Ok, 0, {kMaker, kModel, kRevision}};
    }
    if (command.name == "V" && command.number(0, 1) != 1) {
        return AtAnswer::error(); // answers in digits
    }
    if (command.name.startsWith('S')) {
        return command.form == AtCommand::Read ? AtAnswer::line("000") : AtAnswer();
    }
    for (const char *name : kIgnored) {
        if (command.name == name) {
            return AtAnswer();
        }
    }
    return AtAnswer::error();
}

AtAnswer PhoneCommands::pin(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer();
    case AtCommand::Read:
        return AtAnswer::line(m_isLocked ? "+CPIN: SIM PIN" : "+CPIN: READY");
    case AtCommand::Set:
        if (!m_isLocked) {
            return AtAnswer::cme(kOperationNotAllowed);
        }
        m_isLocked = command.arguments.value(0) != m_settings.pin;
        return m_isLocked ? AtAnswer::cme(kWrongPassword) : AtAnswer();
    case AtCommand::Do:
        break;
    }
    return AtAnswer::error();
}

AtAnswer PhoneCommands::errors(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer::line("+CMEE: (0,1)");
    }
    if (command.form == AtCommand::Read) {
        return AtAnswer::line("+CMEE: " + QByteArray::number(m_errorCodes));
    }
    const int wanted = command.number(0, 0).value_or(2);
    if (wanted > 1) {
        return AtAnswer::cme(kOperationNotSupported);
    }
    m_errorCodes = wanted;
    return AtAnswer();
}

AtAnswer PhoneCommands::charset(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer::line(R"(+CSCS: ("IRA","GSM"))");
    }
    if (command.form == AtCommand::Read) {
        return AtAnswer::line("+CSCS: \"" + m_charset + "\"");
    }
    const QByteArray wanted = command.arguments.value(0);
    if (wanted != "IRA" && wanted != "GSM") {
        return AtAnswer::cme(kOperationNotSupported);
    }
    m_charset = wanted;
    return AtAnswer();
}

} // namespace wmsg::sim
