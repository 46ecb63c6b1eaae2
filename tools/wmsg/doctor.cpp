// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor.h"

#include "services/common/option_checks.h"
#include "tools/wmsg/doctor_run.h"
#include "tools/wmsg/doctor_view.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"

#include <CLI/CLI.hpp>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kLongestTimeout = 3600;

struct DoctorOptions {
    std::string spool = service::defaultSpoolOf("mmsproxyd"_L1).toStdString();
    std::string telephonySpool = service::defaultSpoolOf("telephonyd"_L1).toStdString();
    std::string mmsc;
    int timeout = 5;
    bool isOffline = false;
    bool isJson = false;
    LogOptions log;
};

std::string urlProblem(const std::string &url)
{
    const QString problem = problemOfUrl(QString::fromStdString(url));
    return problem.isEmpty() ? std::string() : "\"" + url + "\" " + problem.toStdString();
}

QString folderOf(const std::string &option)
{
    return QDir::cleanPath(QFile::decodeName(QByteArray::fromStdString(option)));
}

int runDoctor(const DoctorOptions &options)
{
    LogRoute log;
    if (!options.log.apply(log)) {
        return ExitBadInput;
    }
    int argumentCount = 1;
    char name[] = "wmsg";
    char *arguments[] = {name, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    const QList<Diagnosis> findings =
        examine({folderOf(options.spool), folderOf(options.telephonySpool),
                 QString::fromStdString(options.mmsc), std::chrono::seconds(options.timeout),
                 options.isOffline});
    say(options.isJson
            ? QString::fromUtf8(QJsonDocument(doctorJson(findings)).toJson(QJsonDocument::Compact))
                + u'\n'
            : doctorView(findings));
    return finishOutput() && countOf(findings, Verdict::Problem) == 0 ? ExitFine : ExitBadInput;
}

} // namespace

void addDoctor(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<DoctorOptions>();
    CLI::App *command = program.add_subcommand(
        "doctor", "Look at this system, and say what is wrong and what helps");
    command->add_option("--spool", options->spool, "The spool of wmsg-mmsproxyd")
        ->type_name("FOLDER");
    command
        ->add_option("--telephony-spool", options->telephonySpool, "The spool of wmsg-telephonyd")
        ->type_name("FOLDER");
    command
        ->add_option("--mmsc", options->mmsc, "The MMSC to ask, in place of that of the settings")
        ->check(urlProblem)
        ->type_name("URL");
    command
        ->add_option("--timeout", options->timeout,
                     "How long the MMSC and the settings server may take for each answer")
        ->check(CLI::Range(1, kLongestTimeout))
        ->type_name("SECONDS")
        ->capture_default_str();
    command->add_flag("--offline", options->isOffline, "Do not touch the network");
    command->add_flag("--json", options->isJson, "Print JSON: one object");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runDoctor(*options); });
}

} // namespace wmsg::cli
