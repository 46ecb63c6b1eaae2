// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/receive.h"

#include "services/common/option_checks.h"
#include "tools/wmsg/keep_options.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/receive_run.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/session_options.h"

#include <platform/engine/mms_eng_controller.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kMostMessages = 1000000;
constexpr qsizetype kLongestAppId = 256;

struct ReceiveOptions {
    std::vector<std::string> appIds;
    int count = 0;
    std::string saveDirectory;
    std::string partsDirectory;
    std::string spool = service::defaultSpoolOf("mmsproxyd"_L1).toStdString();
    KeepOptions keep;
    bool full = false;
    SessionOptions session;
    LogOptions log;
};

// Sets `ids` to the application ids, and returns what is wrong with them.
QString readAppIds(const ReceiveOptions &options, QStringList &ids)
{
    for (const std::string &text : options.appIds) {
        const auto bytes = QByteArray::fromStdString(text);
        const QString id = QString::fromUtf8(bytes);
        if (!bytes.isValidUtf8() || id.isEmpty() || id.size() > kLongestAppId) {
            return u"receive: --app-id takes 1 to %1 characters in UTF-8"_s.arg(kLongestAppId);
        }
        ids += id;
    }
    return {};
}

int runReceive(const ReceiveOptions &options)
{
    ReceiveRequest request;
    const QString usage = readAppIds(options, request.appIds);
    if (!usage.isEmpty()) {
        complain(usage + u" (see wmsg receive --help)"_s);
        return ExitUsage;
    }
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    request.count = options.count;
    request.saveDirectory = QByteArray::fromStdString(options.saveDirectory);
    request.partsDirectory = QByteArray::fromStdString(options.partsDirectory);
    request.store = options.keep.storeFolder(MMS_ENG_INBOX);
    request.spool = QString::fromStdString(options.spool);
    request.detail = options.full ? Detail::Full : Detail::Short;
    request.isJson = options.session.json;
    ReceiveRun run(request);
    return run.openFolders() ? run.run(options.session.timeLimit()) : ExitBadInput;
}

} // namespace

void addReceive(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<ReceiveOptions>();
    CLI::App *command = program.add_subcommand("receive", "Wait for messages, show and save them");
    command
        ->add_option("--app-id", options->appIds,
                     "Receive the messages to this application instead of those to none; may be "
                     "given again")
        ->type_name("ID")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("--count", options->count, "End after so many messages")
        ->check(CLI::Range(1, kMostMessages))
        ->type_name("NUMBER");
    command->add_option("--save", options->saveDirectory, "Save each message as a mail file in DIR")
        ->type_name("DIR");
    command
        ->add_option("--extract", options->partsDirectory,
                     "Save the parts of each message in a directory of its own in DIR")
        ->type_name("DIR");
    command
        ->add_option("--spool", options->spool,
                     "The spool of the daemon, to tell what it sets aside because nobody can read "
                     "it")
        ->type_name("FOLDER");
    options->keep.addTo(*command, "Store each message in the message store", "inbox");
    command->add_flag("--full", options->full, "Cut no texts and lists");
    options->session.addTo(*command, "without --count that is no failure",
                           "one object and line for each message");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runReceive(*options); });
}

} // namespace wmsg::cli
