// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/send.h"

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/draft.h"
#include "tools/wmsg/keep_options.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/message_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/send_run.h"
#include "tools/wmsg/session_options.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/result_codes.h>
#include <platform/engine/mms_eng_controller.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct SendOptions {
    MessageOptions message;
    std::string file;
    bool noWait = false;
    KeepOptions keep;
    SessionOptions session;
    LogOptions log;
};

// What options ask for together and no message can be.
QString usageProblem(const SendOptions &options)
{
    if (!options.file.empty()) {
        for (const CLI::Option *option : options.message.contentOptions()) {
            if (option->count() > 0) {
                return u"send: %1 has no place beside --file"_s.arg(
                    QString::fromStdString(option->get_name()));
            }
        }
        return {};
    }
    if (!options.message.hasContent()) {
        return u"send: there is nothing to send; give --text, --text-file, --attach or --file"_s;
    }
    return options.message.hasRecipient()
        ? QString()
        : u"send: a message needs a recipient; give --to, --cc or --bcc"_s;
}

QString compose(const SendOptions &options, WMMSMsg &message)
{
    const DraftRequest request = options.message.request(MMS_PDU_SEND_REQ);
    Draft draft(request);
    QString problem = draft.make();
    message = draft.message();
    return problem;
}

QString load(const SendOptions &options, WMMSMsg &message)
{
    const auto path = QByteArray::fromStdString(options.file);
    DecodedFile file;
    file.name = shownName(path);
    QString problem = readInput(path, options.message.sizeLimit(), file.bytes);
    if (!problem.isEmpty()) {
        return file.name + u": "_s + problem;
    }
    file.kind = kindOf(file.bytes);
    decode(file);
    if (file.result != MMS_DECODE_OK) {
        return failureInWords(file);
    }
    message = file.message;
    if (message.getTo().isEmpty() && message.getCc().isEmpty() && message.getBcc().isEmpty()) {
        return file.name + u": has no recipient"_s;
    }
    return message.getContentType().isEmpty() ? file.name + u": has no content"_s : QString();
}

int runSend(const SendOptions &options)
{
    const QString usage = usageProblem(options);
    if (!usage.isEmpty()) {
        complain(usage + u" (see wmsg send --help)"_s);
        return ExitUsage;
    }
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    WMMSMsg message;
    const QString problem =
        options.file.empty() ? compose(options, message) : load(options, message);
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitBadInput;
    }
    SendRun run(message, options.noWait ? SendRun::Wait::UntilTaken : SendRun::Wait::ForOutcome,
                options.session.json ? SendRun::Output::Json : SendRun::Output::Words);
    // What only the daemon has is not sent yet.
    const auto store = options.keep.storeFolder(options.noWait ? MMS_ENG_OUTBOX : MMS_ENG_SENT);
    return !store || run.keepIn(*store) ? run.run(options.session.timeLimit()) : ExitBadInput;
}

} // namespace

void addSend(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<SendOptions>();
    CLI::App *command =
        program.add_subcommand("send", "Send a message, and tell what becomes of it");
    options->message.addTo(*command);
    command
        ->add_option("--file", options->file,
                     "Send this mail file or PDU instead of a new message; - is standard input")
        ->type_name("FILE");
    command->add_flag("--no-wait", options->noWait,
                      "End as soon as the proxy daemon has taken the message");
    options->keep.addTo(*command, "Store the message in the message store when it is sent",
                        "sent, or outbox with --no-wait");
    options->session.addTo(*command, "the message stays with the proxy daemon",
                           "one object that tells the outcome");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runSend(*options); });
}

} // namespace wmsg::cli
