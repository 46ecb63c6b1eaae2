// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/compose.h"

#include "tools/wmsg/draft.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <mms/codec/mms_hdr_s.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

using Strings = std::vector<std::string>;

constexpr qint64 kHighestLimit = 1 << 30;

struct ComposeOptions {
    Strings to;
    Strings cc;
    Strings bcc;
    std::string from;
    std::string subject;
    Strings texts;
    Strings textFiles;
    Strings files;
    std::string pdu = "send-req";
    std::string output;
    bool noSmil = false;
    std::string date;
    std::string expiry;
    std::optional<bool> deliveryReport;
    std::optional<bool> readReport;
    std::string priority = "normal";
    std::string messageClass = "personal";
    std::string appId;
    std::string transactionId;
    std::string messageId;
    qint64 sizeLimit = kDefaultSizeLimit;
    LogOptions log;
};

QList<QByteArray> bytesOf(const Strings &strings)
{
    QList<QByteArray> list;
    for (const std::string &string : strings) {
        list.append(QByteArray::fromStdString(string));
    }
    return list;
}

quint8 codeOf(int fieldId, const std::string &key)
{
    return codeOfKey(fieldId, QString::fromStdString(key)).value_or(0);
}

DraftRequest requestOf(const ComposeOptions &options)
{
    DraftRequest request;
    request.to = bytesOf(options.to);
    request.cc = bytesOf(options.cc);
    request.bcc = bytesOf(options.bcc);
    request.from = QByteArray::fromStdString(options.from);
    request.subject = QByteArray::fromStdString(options.subject);
    request.texts = bytesOf(options.texts);
    request.textFiles = bytesOf(options.textFiles);
    request.files = bytesOf(options.files);
    request.pduType = codeOf(MMS_FIELD_MSG_TYPE, options.pdu);
    request.hasPresentation = !options.noSmil;
    request.date = QByteArray::fromStdString(options.date);
    request.expiry = QByteArray::fromStdString(options.expiry);
    request.deliveryReport = options.deliveryReport;
    request.readReport = options.readReport;
    request.priority = codeOf(MMS_FIELD_PRIORITY, options.priority);
    request.messageClass = codeOf(MMS_FIELD_MSG_CLASS, options.messageClass);
    request.appId = QByteArray::fromStdString(options.appId);
    request.transactionId = QByteArray::fromStdString(options.transactionId);
    request.messageId = QByteArray::fromStdString(options.messageId);
    request.sizeLimit = options.sizeLimit;
    return request;
}

// What options ask for together and no message can be.
QString usageProblem(const ComposeOptions &options)
{
    if (options.texts.empty() && options.textFiles.empty() && options.files.empty()) {
        return u"compose: there is nothing to send; give --text, --text-file or --attach"_s;
    }
    const bool isSent = options.pdu == "send-req";
    if (isSent && options.to.empty() && options.cc.empty() && options.bcc.empty()) {
        return u"compose: a send request needs a recipient; give --to, --cc or --bcc"_s;
    }
    if (!options.expiry.empty() && options.pdu == "retrieve-conf") {
        return u"compose: --expiry has no place in a retrieve confirmation"_s;
    }
    if (!options.messageId.empty() && isSent) {
        return u"compose: --message-id has no place in a send request"_s;
    }
    return {};
}

int runCompose(const ComposeOptions &options)
{
    const QString usage = usageProblem(options);
    if (!usage.isEmpty()) {
        complain(usage + u" (see wmsg compose --help)"_s);
        return ExitUsage;
    }
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    const DraftRequest request = requestOf(options);
    Draft draft(request);
    QByteArray bytes;
    QString problem = draft.make();
    if (problem.isEmpty()) {
        problem = draft.encode(bytes);
    }
    const auto output = QByteArray::fromStdString(options.output);
    if (problem.isEmpty()) {
        problem = writeOutput(output, bytes);
        problem = problem.isEmpty() ? problem : QString::fromUtf8(output) + u": "_s + problem;
    }
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitBadInput;
    }
    if (output != "-") {
        const auto *parts = draft.message().getMultiParts().subParts();
        say(u"wrote %1: %2, %3, %4\n"_s.arg(
            printable(shownName(output)),
            QLatin1String(codeWords(MMS_FIELD_MSG_TYPE, request.pduType)->words),
            counted(parts->size(), "part"_L1), sizeInWords(bytes.size())));
    }
    return finishOutput() ? ExitFine : ExitBadInput;
}

// An option that takes one value each time it is given, whatever characters it has.
void addValues(CLI::App &command, const std::string &name, Strings &values, const std::string &type,
               const std::string &help)
{
    command.add_option(name, values, help)->type_name(type)->allow_extra_args(false)->take_all();
}

void addContent(CLI::App &command, ComposeOptions &options)
{
    const auto address = [&](const char *name, Strings &values, const char *help) {
        command.add_option(name, values, help)->type_name("ADDRESS");
    };
    address("--to", options.to, "Recipients: phone numbers or e-mail addresses");
    address("--cc", options.cc, "Recipients of a copy");
    address("--bcc", options.bcc, "Recipients of a copy that the others do not see");
    command
        .add_option("--from", options.from, "Sender; without it the network inserts the address")
        ->type_name("ADDRESS");
    command.add_option("--subject", options.subject, "Subject")->type_name("TEXT");
    addValues(command, "--text", options.texts, "TEXT", "A text; may be given again");
    addValues(command, "--text-file", options.textFiles, "FILE",
              "A text from a file in UTF-8, - is standard input; may be given again");
    command.add_option("--attach", options.files, "Pictures, sounds, films and other files")
        ->type_name("FILE");
    command.add_flag("--no-smil", options.noSmil,
                     "Write no presentation; the parts then have no order in time");
}

// Two flags, of which one may be given; without either the message says nothing.
void addReport(CLI::App &command, const std::string &name, const std::string &what,
               std::optional<bool> &wanted)
{
    auto *yes = command.add_flag_callback(
        "--" + name, [&wanted] { wanted = true; }, "Ask for " + what);
    command
        .add_flag_callback(
            "--no-" + name, [&wanted] { wanted = false; }, "Say that no " + what + " are wanted")
        ->excludes(yes);
}

void addHeader(CLI::App &command, ComposeOptions &options)
{
    command
        .add_option("--date", options.date,
                    "Date: 2024-05-01T12:00:00, with Z or +02:00 behind it, or seconds since "
                    "1970; now unless given")
        ->type_name("DATE");
    command.add_option("--expiry", options.expiry, "How long it may wait: 90, 15m, 12h, 3d, 1w")
        ->type_name("DURATION");
    addReport(command, "delivery-report", "delivery reports", options.deliveryReport);
    addReport(command, "read-report", "read reports", options.readReport);
    command.add_option("--priority", options.priority, "low, normal or high")
        ->check(CLI::IsMember({"low", "normal", "high"}))
        ->type_name("PRIORITY")
        ->capture_default_str();
    command
        .add_option("--class", options.messageClass,
                    "personal, advertisement, informational or auto")
        ->check(CLI::IsMember({"personal", "advertisement", "informational", "auto"}))
        ->type_name("CLASS")
        ->capture_default_str();
    command.add_option("--app-id", options.appId, "The application that the message is for")
        ->type_name("ID");
    command.add_option("--transaction-id", options.transactionId, "Made up unless given")
        ->type_name("ID");
    command.add_option("--message-id", options.messageId, "Not in a send request")->type_name("ID");
}

void addOutput(CLI::App &command, ComposeOptions &options)
{
    command
        .add_option("--pdu", options.pdu,
                    "What to write: send-req, retrieve-conf, or stored, a mail file")
        ->check(CLI::IsMember({"send-req", "retrieve-conf", "stored"}))
        ->type_name("KIND")
        ->capture_default_str();
    command.add_option("-o,--output", options.output, "Where to write it; - is standard output")
        ->required()
        ->type_name("FILE");
    command.add_option("--max-size", options.sizeLimit, "Refuse more bytes of texts and files")
        ->check(CLI::Range(qint64(1), kHighestLimit))
        ->type_name("BYTES")
        ->capture_default_str();
    options.log.addTo(command);
}

} // namespace

void addCompose(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<ComposeOptions>();
    CLI::App *command = program.add_subcommand("compose", "Write a new message");
    addContent(*command, *options);
    addHeader(*command, *options);
    addOutput(*command, *options);
    command->callback([options, &exitCode] { exitCode = runCompose(*options); });
}

} // namespace wmsg::cli
