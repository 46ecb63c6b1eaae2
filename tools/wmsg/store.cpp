// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/store.h"

#include "tools/wmsg/files.h"
#include "tools/wmsg/keep_options.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/store_run.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr unsigned short kLowestId = 1;
constexpr unsigned short kHighestId = 65534;
constexpr qint64 kHighestLimit = 1 << 30;

struct StoreOptions {
    std::string root;
    bool json = false;
    bool full = false;
    std::string folder;
    std::vector<unsigned short> ids;
    std::vector<std::string> files;
    std::string output;
    qint64 sizeLimit = kDefaultSizeLimit;
    LogOptions log;

    [[nodiscard]] StoreRun::Ids idList() const { return {ids.begin(), ids.end()}; }
    /// What was checked to be one.
    [[nodiscard]] unsigned short folderNumber() const
    {
        return folderOf(QString::fromStdString(folder)).value_or(0);
    }
};

using Action = std::function<int(StoreRun &, const StoreOptions &)>;

int runStore(const StoreOptions &options, const Action &action)
{
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    if (!options.root.empty()) {
        qputenv("UVO_EXTRA_SYS_DATA_PATH", QByteArray::fromStdString(options.root));
    }
    StoreRun run(options.json, options.full);
    return action(run, options);
}

/// One of the subcommands, with the options that all of them have.
struct Command {
    Command(CLI::App &store, const char *name, const char *words, int &exitCode, Action action)
        : app(store.add_subcommand(name, words))
    {
        app->add_option("--root", options->root,
                        "The root of the storage tree; UVO_EXTRA_SYS_DATA_PATH unless given")
            ->type_name("DIR");
        app->add_flag("--json", options->json, "Print JSON, one object and line each");
        options->log.addTo(*app);
        app->callback([options = options, &exitCode, action = std::move(action)] {
            exitCode = runStore(*options, action);
        });
    }

    CLI::Option *addFolder(const std::string &name, const std::string &words) const
    {
        return app->add_option(name, options->folder, words)
            ->check(CLI::Validator(folderProblem, "", ""))
            ->type_name(name[0] == '-' ? "FOLDER" : "");
    }
    CLI::Option *addIds() const
    {
        return app->add_option("ID", options->ids, "Messages, by the numbers that list shows")
            ->required()
            ->check(CLI::Range(kLowestId, kHighestId))
            ->type_name("");
    }

    std::shared_ptr<StoreOptions> options = std::make_shared<StoreOptions>();
    CLI::App *app;
};

void addReading(CLI::App &store, int &exitCode)
{
    const Command list(store, "list", "List the messages of a folder, or of all", exitCode,
                       [](StoreRun &run, const StoreOptions &options) {
                           return options.folder.empty() ? run.list(std::nullopt)
                                                         : run.list(options.folderNumber());
                       });
    list.addFolder("FOLDER", "Only this folder");
    const Command show(
        store, "show", "Show messages as decode does", exitCode,
        [](StoreRun &run, const StoreOptions &options) { return run.show(options.idList()); });
    show.addIds();
    show.app->add_flag("--full", show.options->full, "Cut no texts and lists and fold no data");
    const Command exporting(store, "export", "Write a message as a mail file", exitCode,
                            [](StoreRun &run, const StoreOptions &options) {
                                return run.exportTo(options.ids.front(),
                                                    QByteArray::fromStdString(options.output));
                            });
    exporting.addIds()->expected(1);
    exporting.app
        ->add_option("-o,--output", exporting.options->output,
                     "Where to write it; - is standard output")
        ->required()
        ->type_name("FILE");
    const Command check(store, "check", "Look whether the store is whole", exitCode,
                        [](StoreRun &run, const StoreOptions &) { return run.check(); });
}

void addChanging(CLI::App &store, int &exitCode)
{
    const Command add(store, "add", "Put PDUs and mail files into the store", exitCode,
                      [](StoreRun &run, const StoreOptions &options) {
                          QList<QByteArray> files;
                          for (const std::string &file : options.files) {
                              files.append(QByteArray::fromStdString(file));
                          }
                          return run.add(files, options.folderNumber(), options.sizeLimit);
                      });
    add.app
        ->add_option("FILE", add.options->files,
                     "PDU or mail file, told apart by content; - is standard input")
        ->required()
        ->type_name("");
    add.options->folder = "inbox";
    add.addFolder("--folder", "Where to put them")->capture_default_str();
    add.app->add_option("--max-size", add.options->sizeLimit, "Refuse files with more bytes")
        ->check(CLI::Range(qint64(1), kHighestLimit))
        ->type_name("BYTES")
        ->capture_default_str();
    const Command remove(
        store, "remove", "Remove messages", exitCode,
        [](StoreRun &run, const StoreOptions &options) { return run.remove(options.idList()); });
    remove.addIds();
    const Command move(store, "move", "Put messages into another folder", exitCode,
                       [](StoreRun &run, const StoreOptions &options) {
                           return run.move(options.idList(), options.folderNumber());
                       });
    move.addIds();
    move.addFolder("--to", "Where to put them")->required();
}

} // namespace

void addStore(CLI::App &program, int &exitCode)
{
    CLI::App *store = program.add_subcommand("store", "Show and change the message store");
    store->require_subcommand(1);
    addReading(*store, exitCode);
    addChanging(*store, exitCode);
}

} // namespace wmsg::cli
