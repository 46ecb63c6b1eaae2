// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/compose.h"

#include "tools/wmsg/draft.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/message_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <mms/codec/mms_hdr_s.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct ComposeOptions {
    MessageOptions message;
    std::string pdu = "send-req";
    std::string output;
    std::string transactionId;
    std::string messageId;
    LogOptions log;
};

DraftRequest requestOf(const ComposeOptions &options)
{
    const auto type = codeOfKey(MMS_FIELD_MSG_TYPE, QString::fromStdString(options.pdu));
    DraftRequest request = options.message.request(type.value_or(0));
    request.transactionId = QByteArray::fromStdString(options.transactionId);
    request.messageId = QByteArray::fromStdString(options.messageId);
    return request;
}

// What options ask for together and no message can be.
QString usageProblem(const ComposeOptions &options)
{
    if (!options.message.hasContent()) {
        return u"compose: there is nothing to send; give --text, --text-file or --attach"_s;
    }
    const bool isSent = options.pdu == "send-req";
    if (isSent && !options.message.hasRecipient()) {
        return u"compose: a send request needs a recipient; give --to, --cc or --bcc"_s;
    }
    if (options.message.hasExpiry() && options.pdu == "retrieve-conf") {
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
    command.add_option("--transaction-id", options.transactionId, "Made up unless given")
        ->type_name("ID");
    command.add_option("--message-id", options.messageId, "Not in a send request")->type_name("ID");
    options.log.addTo(command);
}

} // namespace

void addCompose(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<ComposeOptions>();
    CLI::App *command = program.add_subcommand("compose", "Write a new message");
    options->message.addTo(*command);
    addOutput(*command, *options);
    command->callback([options, &exitCode] { exitCode = runCompose(*options); });
}

} // namespace wmsg::cli
