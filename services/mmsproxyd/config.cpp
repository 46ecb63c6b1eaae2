// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/config.h"

#include "services/common/option_checks.h"
#include "services/common/program_options.h"
#include "services/mmsproxyd/config_checks.h"

#include <QtCore/QDir>
#include <QtCore/QSet>

#include <algorithm>
#include <string>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::proxy {

namespace {

using service::addText;
using service::check;

constexpr const char *kAbout =
    "Moves multimedia messages between the applications of a phone and its MMSC.";
constexpr qint64 kSmallestLimit = 1024;
constexpr qint64 kLargestLimit = qint64(100) * 1024 * 1024;
constexpr size_t kMostPauses = 100;

/// The options as they are typed.
struct Typed {
    std::string proxySocket, settingsSocket, pushSocket, socketMode, spool;
    std::string mmsc, httpProxy, interfaceName, authorities, userAgent, profileUrl, settingsUri,
        logFile;
    std::string retrieval = "immediate";
    std::string telephony = "yes";
    std::vector<std::string> pauses{"10", "60", "300", "900", "3600"};
    int connectTimeout = 0;
    int stallTimeout = 0;
};

void addSockets(CLI::App &app, Typed &typed)
{
    const auto path = check(service::checkSocketPath);
    addText(app, "--proxy-socket", typed.proxySocket, "PATH", "Where sessions connect")
        ->check(path)
        ->capture_default_str();
    addText(app, "--settings-socket", typed.settingsSocket, "PATH",
            "Where applications ask for the settings")
        ->check(path)
        ->capture_default_str();
    addText(app, "--push-socket", typed.pushSocket, "PATH", "Where notifications are pushed")
        ->check(path)
        ->capture_default_str();
    addText(app, "--socket-mode", typed.socketMode, "MODE",
            "The permissions of the sockets; peers of other users are refused all the same")
        ->check(check(service::checkSocketMode))
        ->capture_default_str();
    addText(app, "--spool", typed.spool, "FOLDER",
            "Where messages are kept as long as they are not delivered")
        ->check(check(service::checkFolder))
        ->capture_default_str();
}

void addNetwork(CLI::App &app, Typed &typed)
{
    const auto url = check(checkHttpUrl);
    const auto seconds = CLI::Range(1, 3600).description("");
    addText(app, "--mmsc", typed.mmsc, "URL", "The MMSC; without one nothing is sent")->check(url);
    addText(app, "--http-proxy", typed.httpProxy, "URL", "The HTTP proxy of the network")
        ->check(url);
    addText(app, "--interface", typed.interfaceName, "NAME",
            "What to bind to: an interface (if!wwan0), or an address (host!10.1.2.3)")
        ->check(check(checkInterface));
    addText(
        app, "--ca-file", typed.authorities, "FILE",
        "The certificates of the authorities to believe about https, in PEM, instead of those of "
        "the system")
        ->check(check(checkCertificates));
    addText(app, "--user-agent", typed.userAgent, "TEXT", "What the daemon calls itself")
        ->check(check(checkPlainText))
        ->capture_default_str();
    addText(app, "--profile-url", typed.profileUrl, "URL",
            "Where the profile of this phone lies; sent as x-wap-profile")
        ->check(url);
    app.add_option("--connect-timeout", typed.connectTimeout,
                   "How long a connection may take to come about")
        ->type_name("SECONDS")
        ->check(seconds)
        ->capture_default_str();
    app.add_option("--stall-timeout", typed.stallTimeout, "How long a transfer may stand still")
        ->type_name("SECONDS")
        ->check(seconds)
        ->capture_default_str();
}

void addMessages(CLI::App &app, Typed &typed, Config &config)
{
    const auto limits = CLI::Range(kSmallestLimit, kLargestLimit).description("");
    const auto size = [&app, &limits](const char *name, qint64 &value, const char *about) {
        app.add_option(name, value, about)
            ->type_name("SIZE")
            ->transform(CLI::AsSizeValue(false).description(""))
            ->check(limits)
            ->capture_default_str();
    };
    size("--max-size", config.maxSize, "The largest message that is sent, in bytes, K or M");
    size("--max-incoming", config.maxIncoming, "The largest message that is retrieved");
    app.add_option("--retry", typed.pauses,
                   "The pauses before further attempts, or none: after the last one it has failed")
        ->type_name("SECONDS,...")
        ->delimiter(',')
        ->expected(1, kMostPauses)
        ->check(check(checkPause))
        ->capture_default_str();
    addText(app, "--retrieval", typed.retrieval, "MODE",
            "What becomes of announced messages: immediate, deferred or never")
        ->check(CLI::IsMember(std::vector<std::string>{"immediate", "deferred", "never"})
                    .description(""))
        ->capture_default_str();
    addText(app, "--telephony", typed.telephony, "yes|no",
            "Whether notifications are taken from short messages, as phones get them")
        ->check(CLI::IsMember(std::vector<std::string>{"yes", "no"}).description(""))
        ->capture_default_str();
    addText(app, "--settings-uri", typed.settingsUri, "URI",
            "What applications are told as the MMSC, if it is not --mmsc")
        ->check(check(checkSettingsUri));
}

void addLog(CLI::App &app, Typed &typed, Config &config)
{
    auto *log =
        addText(app, "--log", typed.logFile, "FILE", "Append the log of the library to FILE");
    app.add_flag("-v,--verbose", config.isVerbose, "Write the log of the library to standard error")
        ->excludes(log);
}

Typed defaultsOf(const Config &config)
{
    Typed typed;
    typed.proxySocket = config.proxySocket.toStdString();
    typed.settingsSocket = config.settingsSocket.toStdString();
    typed.pushSocket = config.pushSocket.toStdString();
    typed.socketMode = "600";
    typed.spool = service::defaultSpoolOf("mmsproxyd"_L1).toStdString();
    typed.userAgent = "wmsg/" WMSG_VERSION;
    typed.connectTimeout = static_cast<int>(config.connectTimeout.count());
    typed.stallTimeout = static_cast<int>(config.stallTimeout.count());
    return typed;
}

RetrievalMode modeOf(const std::string &name)
{
    return name == "never"   ? RetrievalMode::Never
        : name == "deferred" ? RetrievalMode::Deferred
                             : RetrievalMode::Immediate;
}

void apply(const Typed &typed, Config &config)
{
    config.proxySocket = QString::fromStdString(typed.proxySocket);
    config.settingsSocket = QString::fromStdString(typed.settingsSocket);
    config.pushSocket = QString::fromStdString(typed.pushSocket);
    config.socketMode = service::socketModeOf(typed.socketMode);
    config.spool = QDir(QString::fromStdString(typed.spool)).absolutePath();
    config.mmsc = QString::fromStdString(typed.mmsc);
    config.httpProxy = QString::fromStdString(typed.httpProxy);
    config.interfaceName = QString::fromStdString(typed.interfaceName);
    const QString authorities = QString::fromStdString(typed.authorities);
    config.authorities = authorities.isEmpty() ? authorities : QDir().absoluteFilePath(authorities);
    config.userAgent = QString::fromStdString(typed.userAgent);
    config.profileUrl = QString::fromStdString(typed.profileUrl);
    config.connectTimeout = std::chrono::seconds(typed.connectTimeout);
    config.stallTimeout = std::chrono::seconds(typed.stallTimeout);
    config.retryPauses = pausesOf(typed.pauses);
    config.retrieval = modeOf(typed.retrieval);
    config.takesShortMessages = typed.telephony == "yes";
    config.settingsUri = QString::fromStdString(typed.settingsUri);
    config.logFile = QString::fromStdString(typed.logFile);
}

/// What is wrong with options that are fine one by one.
void checkTogether(const Typed &typed)
{
    const QSet<QString> sockets = {QString::fromStdString(typed.proxySocket),
                                   QString::fromStdString(typed.settingsSocket),
                                   QString::fromStdString(typed.pushSocket)};
    if (sockets.size() < 3) {
        throw CLI::ValidationError("the three sockets must have three paths");
    }
    const auto none = std::count(typed.pauses.begin(), typed.pauses.end(), "none");
    if (none > 0 && typed.pauses.size() > 1) {
        throw CLI::ValidationError("--retry", "none stands alone");
    }
}

} // namespace

ConfigReading readConfig(int argc, const char *const *argv)
{
    Config config;
    Typed typed = defaultsOf(config);
    CLI::App app(kAbout, "wmsg-mmsproxyd");
    service::addCommonOptions(app, "Read options from FILE");
    app.footer(service::kDaemonFooter);
    addSockets(app, typed);
    addNetwork(app, typed);
    addMessages(app, typed, config);
    addLog(app, typed, config);
    auto reading = service::readOptions(app, argc, argv, [&typed, &config] {
        checkTogether(typed);
        apply(typed, config);
    });
    return {std::move(reading), std::move(config)};
}

} // namespace wmsg::proxy
