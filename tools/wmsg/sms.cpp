// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms.h"

#include "tools/wmsg/address_text.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/session_options.h"
#include "tools/wmsg/sms_receive_run.h"
#include "tools/wmsg/sms_send_run.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kMostMessages = 1000000;
constexpr unsigned char kPhoneNumber = 1;

struct SmsSendOptions {
    std::string to;
    std::string text;
    std::string dataFile;
    std::string port;
    std::string serviceCenter;
    bool noWait = false;
    CLI::Option *textOption = nullptr;
    SessionOptions session;
    LogOptions log;
};

struct SmsReceiveOptions {
    std::vector<int> ports;
    int count = 0;
    SessionOptions session;
    LogOptions log;
};

/// Makes `number` the phone number that `text` is, and returns why it is none.
QString readNumber(const char *option, const std::string &text, QString &number)
{
    const auto typed = QByteArray::fromStdString(text);
    WMFMEntry entry;
    if (!parseAddress(QString::fromUtf8(typed), entry).isEmpty()
        || entry.getEntryType() != kPhoneNumber) {
        return u"%1: \"%2\" is no phone number"_s.arg(QLatin1String(option),
                                                      QString::fromUtf8(typed));
    }
    number = entry.getEntryVal();
    return {};
}

std::optional<quint16> portOf(const QByteArray &text, int lowest)
{
    bool isNumber = false;
    const int port = text.toInt(&isNumber);
    return isNumber && port >= lowest && port <= UINT16_MAX && !text.startsWith('+')
        ? std::optional(static_cast<quint16>(port))
        : std::nullopt;
}

/// Sets the ports to those that `text` names; false: it names none. Answers come to the port that
/// was asked unless another one is named.
bool readPorts(const std::string &text, SmsSendRequest &request)
{
    const QByteArrayList typed = QByteArray::fromStdString(text).split(':');
    const auto destination = portOf(typed.first(), 1);
    const auto source = typed.size() > 1 ? portOf(typed[1], 0) : destination;
    if (typed.size() > 2 || !destination || !source) {
        return false;
    }
    request.destinationPort = *destination;
    request.sourcePort = *source;
    request.body.hasPorts = true;
    return true;
}

std::string portProblem(const std::string &text)
{
    SmsSendRequest ignored;
    return readPorts(text, ignored) ? std::string()
                                    : "\"" + text + "\" is no port from 1 to 65535, or two";
}

/// Reads what is to be sent, and returns what is wrong with it.
QString readBody(const SmsSendOptions &options, SmsBody &body)
{
    if (options.textOption->count() > 0) {
        const auto typed = QByteArray::fromStdString(options.text);
        body.text = QString::fromUtf8(typed);
        return typed.isValidUtf8() ? body.objection() : u"--text is not valid UTF-8"_s;
    }
    const auto path = QByteArray::fromStdString(options.dataFile);
    QArray<char> bytes;
    QString problem = readInput(path, kDefaultSizeLimit, bytes);
    if (problem.isEmpty() && bytes.size() == 0) {
        problem = u"is empty"_s;
    }
    body.data = bytes.view().toByteArray();
    problem = problem.isEmpty() ? body.objection() : problem;
    return problem.isEmpty() ? QString() : shownName(path) + u": "_s + problem;
}

QString readRequest(const SmsSendOptions &options, SmsSendRequest &request)
{
    QString problem = readNumber("--to", options.to, request.to);
    if (problem.isEmpty() && !options.serviceCenter.empty()) {
        problem = readNumber("--smsc", options.serviceCenter, request.serviceCenter);
    }
    if (!options.port.empty()) {
        readPorts(options.port, request);
    }
    return problem.isEmpty() ? readBody(options, request.body) : problem;
}

int runSend(const SmsSendOptions &options)
{
    if ((options.textOption->count() > 0) == !options.dataFile.empty()) {
        complain(u"sms send: give --text or --data (see wmsg sms send --help)"_s);
        return ExitUsage;
    }
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    SmsSendRequest request;
    request.waits = !options.noWait;
    request.isJson = options.session.json;
    const QString problem = readRequest(options, request);
    if (!problem.isEmpty()) {
        complain(u"not sent: "_s + problem);
        return ExitBadInput;
    }
    return SmsSendRun(request).run(options.session.timeLimit());
}

int runReceive(const SmsReceiveOptions &options)
{
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    SmsReceiveRequest request;
    for (const int port : options.ports) {
        request.ports.append(static_cast<quint16>(port));
    }
    request.count = options.count;
    request.isJson = options.session.json;
    return SmsReceiveRun(request).run(options.session.timeLimit());
}

void addSend(CLI::App &sms, int &exitCode)
{
    auto options = std::make_shared<SmsSendOptions>();
    CLI::App *command =
        sms.add_subcommand("send", "Send a short message, and tell what becomes of it");
    command->add_option("--to", options->to, "The number to send it to")
        ->required()
        ->type_name("NUMBER");
    options->textOption = command->add_option("--text", options->text, "A text")->type_name("TEXT");
    command->add_option("--data", options->dataFile, "The bytes of FILE; - is standard input")
        ->type_name("FILE");
    command
        ->add_option("--port", options->port,
                     "Send it to the application at this port, and say that it comes from the "
                     "second one, or from the same")
        ->check(portProblem)
        ->type_name("PORT[:FROM]");
    command
        ->add_option("--smsc", options->serviceCenter,
                     "Send it through this service centre instead of the default one")
        ->type_name("NUMBER");
    command->add_flag("--no-wait", options->noWait,
                      "End as soon as the telephony service has the message");
    options->session.addTo(*command, "the message stays with the telephony service",
                           "one object that tells the outcome");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runSend(*options); });
}

void addReceive(CLI::App &sms, int &exitCode)
{
    auto options = std::make_shared<SmsReceiveOptions>();
    CLI::App *command = sms.add_subcommand("receive", "Wait for short messages, and show them");
    command
        ->add_option("--port", options->ports,
                     "Receive the messages to this port instead of those to people; may be given "
                     "again")
        ->check(CLI::Range(1, int(UINT16_MAX)))
        ->allow_extra_args(false)
        ->take_all()
        ->type_name("PORT");
    command->add_option("--count", options->count, "End after so many messages")
        ->check(CLI::Range(1, kMostMessages))
        ->type_name("NUMBER");
    options->session.addTo(*command, "without --count that is no failure",
                           "one object and line for each message");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runReceive(*options); });
}

} // namespace

void addSms(CLI::App &program, int &exitCode)
{
    CLI::App *sms = program.add_subcommand("sms", "Send short messages, and wait for them");
    sms->require_subcommand(1);
    addSend(*sms, exitCode);
    addReceive(*sms, exitCode);
}

} // namespace wmsg::cli
