// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/config.h"

#include "platform/telephony/telephony_socket_p.h"
#include "services/common/option_checks.h"
#include "services/common/program_options.h"

#include <QtCore/QDir>

#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::telephonyd {

namespace {

using service::addText;
using service::check;

constexpr const char *kAbout =
    "Moves short messages between the applications of a phone and its modem.";
constexpr int kLongestDelay = 3600 * 1000; // in milliseconds
constexpr int kLongestTime = 7 * 24 * 3600; // in seconds
constexpr uint kHighestCause = 65535;
constexpr uint kMostFailures = 1000000;

/// The options as they are typed.
struct Typed {
    std::string socket, socketMode = "600", spool, backend = "loopback";
    std::string device, connection, failure, logFile;
    int delay = 0;
    int absence = 0;
    int giveUp = 0;
    int partLifetime = 0;
};

/// CAUSE or CAUSE:COUNT.
std::string checkFailure(const std::string &text)
{
    const size_t colon = text.find(':');
    const auto cause = service::plainNumber(text.substr(0, colon), 10);
    const auto count = colon == std::string::npos
        ? std::optional<uint>(1)
        : service::plainNumber(text.substr(colon + 1), 10);
    const bool isFine = cause && *cause >= 1 && *cause <= kHighestCause && count && *count >= 1
        && *count <= kMostFailures;
    return isFine ? "" : "a failure is a cause from 1 to 65535, and perhaps :COUNT: " + text;
}

void addNumber(CLI::App &app, const char *name, int &value, const char *type, const char *about,
               int lowest, int highest)
{
    app.add_option(name, value, about)
        ->type_name(type)
        ->check(CLI::Range(lowest, highest).description(""))
        ->capture_default_str();
}

void addGeneral(CLI::App &app, Typed &typed)
{
    addText(app, "--socket", typed.socket, "PATH", "Where applications connect")
        ->check(check(service::checkSocketPath))
        ->capture_default_str();
    addText(app, "--socket-mode", typed.socketMode, "MODE",
            "The permissions of the socket; peers of other users are refused all the same")
        ->check(check(service::checkSocketMode))
        ->capture_default_str();
    addText(app, "--spool", typed.spool, "FOLDER",
            "Where messages are kept as long as they are not delivered")
        ->check(check(service::checkFolder))
        ->capture_default_str();
    addNumber(app, "--give-up", typed.giveUp, "SECONDS",
              "How long a message waits for a modem that takes it", 1, kLongestTime);
    addNumber(app, "--part-lifetime", typed.partLifetime, "SECONDS",
              "How long parts of a message wait for the others", 1, kLongestTime);
}

void addModem(CLI::App &app, Typed &typed)
{
    addText(app, "--backend", typed.backend, "NAME",
            "The modem: gammu is a real one, loopback brings every message back")
        ->check(CLI::IsMember(std::vector<std::string>{"loopback", "gammu"}).description(""))
        ->capture_default_str();
    addText(app, "--device", typed.device, "PATH", "gammu: the port of the modem");
    addText(app, "--connection", typed.connection, "NAME", "gammu: how to talk to it")
        ->capture_default_str();
    addNumber(app, "--loopback-delay", typed.delay, "MS",
              "loopback: how long a message is under way", 0, kLongestDelay);
    addNumber(app, "--loopback-absent", typed.absence, "MS",
              "loopback: how long there is no modem at first", 0, kLongestDelay);
    addText(app, "--loopback-fail", typed.failure, "CAUSE[:COUNT]",
            "loopback: refuse the first message, or as many, for this cause")
        ->check(check(checkFailure));
}

void addLog(CLI::App &app, Typed &typed, Config &config)
{
    addText(app, "--log", typed.logFile, "FILE", "Append the log to FILE");
    app.add_flag("-v,--verbose", config.isVerbose, "Log more");
}

Typed defaultsOf(const Config &config)
{
    Typed typed;
    typed.socket = telephony::socketPath().toStdString();
    typed.spool = service::defaultSpoolOf("telephonyd"_L1).toStdString();
    typed.connection = config.gammu.connection.toStdString();
    typed.giveUp = static_cast<int>(
        std::chrono::duration_cast<std::chrono::seconds>(config.daemon.giveUp).count());
    typed.partLifetime = static_cast<int>(
        std::chrono::duration_cast<std::chrono::seconds>(config.daemon.partLifetime).count());
    return typed;
}

void apply(const Typed &typed, Config &config)
{
    config.daemon.socket = QString::fromStdString(typed.socket);
    config.daemon.socketMode = service::socketModeOf(typed.socketMode);
    config.daemon.spool = QDir(QString::fromStdString(typed.spool)).absolutePath();
    config.daemon.giveUp = std::chrono::seconds(typed.giveUp);
    config.daemon.partLifetime = std::chrono::seconds(typed.partLifetime);
    config.backend = typed.backend == "gammu" ? Backend::Gammu : Backend::Loopback;
    config.gammu.device = QString::fromStdString(typed.device);
    config.gammu.connection = QString::fromStdString(typed.connection);
    config.loopback.delay = std::chrono::milliseconds(typed.delay);
    config.loopback.absence = std::chrono::milliseconds(typed.absence);
    if (!typed.failure.empty()) {
        const size_t colon = typed.failure.find(':');
        config.loopback.failure = std::stoi(typed.failure.substr(0, colon));
        config.loopback.failures =
            colon == std::string::npos ? 1 : std::stoi(typed.failure.substr(colon + 1));
    }
    config.logFile = QString::fromStdString(typed.logFile);
}

/// What is wrong with options that are fine one by one.
void checkTogether(const Typed &typed)
{
    if (typed.backend == "gammu" && typed.device.empty()) {
        throw CLI::ValidationError("--backend gammu", "it wants a --device");
    }
}

} // namespace

ConfigReading readConfig(int argc, const char *const *argv)
{
    Config config;
    Typed typed = defaultsOf(config);
    CLI::App app(kAbout, "wmsg-telephonyd");
    service::addCommonOptions(app, "Read options from FILE");
    app.footer(service::kDaemonFooter);
    addGeneral(app, typed);
    addModem(app, typed);
    addLog(app, typed, config);
    auto reading = service::readOptions(app, argc, argv, [&typed, &config] {
        checkTogether(typed);
        apply(typed, config);
    });
    return {std::move(reading), std::move(config)};
}

} // namespace wmsg::telephonyd
