// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/push.h"

#include "services/common/push_client.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <CLI/CLI.hpp>

#include <QtCore/QFile>

#include <memory>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct PushOptions {
    std::vector<std::string> files;
    std::string socket = "/tmp/wmsg-mmspush";
    int timeout = 10;
};

enum class Next { GoOn, End };

// Pushes one file. Complains, and clears `isFine`, when it is not taken.
Next pushFile(const PushOptions &options, const QByteArray &path, bool &isFine)
{
    QArray<char> bytes;
    const QString name = shownName(path);
    const QString unread = readInput(path, kDefaultSizeLimit, bytes);
    if (!unread.isEmpty()) {
        complain(name + u": "_s + unread);
        isFine = false;
        return Next::GoOn;
    }
    const QString socket = QFile::decodeName(QByteArray::fromStdString(options.socket));
    const service::PushOutcome outcome = service::push(
        socket, QByteArray(bytes.constData(), bytes.size()), std::chrono::seconds(options.timeout));
    switch (outcome.kind) {
    case service::PushOutcome::Taken:
        say(printable(name) + u": taken\n"_s);
        return Next::GoOn;
    case service::PushOutcome::Refused:
        complain(name + u": refused: "_s + outcome.reason);
        isFine = false;
        return Next::GoOn;
    case service::PushOutcome::NotReached:
        break;
    }
    complain(u"%1: %2 (is wmsg-mmsproxyd running?)"_s.arg(socket, outcome.reason));
    isFine = false;
    return Next::End;
}

int runPush(const PushOptions &options)
{
    bool isFine = true;
    for (const std::string &file : options.files) {
        if (pushFile(options, QByteArray::fromStdString(file), isFine) == Next::End) {
            break;
        }
    }
    return finishOutput() && isFine ? ExitFine : ExitBadInput;
}

} // namespace

void addPush(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<PushOptions>();
    CLI::App *command = program.add_subcommand(
        "push", "Hand notifications and delivery reports to the proxy daemon, as a network does");
    command->add_option("FILE", options->files, "PDU; - is standard input")
        ->required()
        ->type_name("");
    command->add_option("--socket", options->socket, "The push socket of the daemon")
        ->type_name("PATH")
        ->capture_default_str();
    command->add_option("--timeout", options->timeout, "How long the daemon may take for each")
        ->check(CLI::Range(1, 3600))
        ->type_name("SECONDS")
        ->capture_default_str();
    command->callback([options, &exitCode] { exitCode = runPush(*options); });
}

} // namespace wmsg::cli
