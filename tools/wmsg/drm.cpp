// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/drm.h"

#include "tools/wmsg/drm_file.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"

#include <CLI/CLI.hpp>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <memory>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct DrmOptions {
    std::vector<std::string> files;
    bool json = false;
    LogOptions log;
};

using View = QString (*)(const DrmFile &file);

/// The checks take names as text, and lists of files with line breaks between them.
QString problemOfName(const QByteArray &path)
{
    if (QFile::encodeName(QFile::decodeName(path)) != path) {
        return u"has a name that is no text"_s;
    }
    return path.contains('\n') || path.contains('\r') ? u"has a name with a line break"_s
                                                      : QString();
}

bool tellOf(const std::string &name, const DrmOptions &options, View view)
{
    const QByteArray path = QByteArray::fromStdString(name);
    QString problem = problemOfName(path);
    if (problem.isEmpty()) {
        problem = problemOfFile(path);
    }
    if (!problem.isEmpty()) {
        complain(QString::fromUtf8(path) + u": "_s + problem);
        return false;
    }
    const DrmFile file = drmFileAt(QFile::decodeName(path));
    if (options.json) {
        const QByteArray json = QJsonDocument(drmJson(file)).toJson(QJsonDocument::Compact);
        say(QString::fromUtf8(json) + u'\n');
    } else {
        say(view(file));
    }
    return true;
}

int runDrm(const DrmOptions &options, View view)
{
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    bool isFine = true;
    for (const std::string &name : options.files) {
        isFine = tellOf(name, options, view) && isFine;
    }
    return finishOutput() && isFine ? ExitFine : ExitBadInput;
}

/// Adds one of the two; they differ in how many files they take and in what they tell of each.
void addCommand(CLI::App &drm, const char *name, const char *words, int mostFiles, View view,
                int &exitCode)
{
    auto options = std::make_shared<DrmOptions>();
    CLI::App *command = drm.add_subcommand(name, words);
    command->add_option("FILE", options->files, "File on this device, told by its content")
        ->required()
        ->expected(1, mostFiles)
        ->type_name("");
    command->add_flag("--json", options->json, "Print JSON, one object and line for each file");
    options->log.addTo(*command);
    command->callback([options, view, &exitCode] { exitCode = runDrm(*options, view); });
}

} // namespace

void addDrm(CLI::App &program, int &exitCode)
{
    constexpr int kAny = CLI::detail::expected_max_vector_size;
    CLI::App *drm = program.add_subcommand("drm", "Tell what protected files are and may");
    drm->require_subcommand(1);
    addCommand(*drm, "check", "Tell whether files may be sent and forwarded", kAny, &drmLine,
               exitCode);
    addCommand(*drm, "info", "Tell all that is known of a file, and why", 1, &drmView, exitCode);
}

} // namespace wmsg::cli
