// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/options.h"

#include "services/common/program_options.h"
#include "sim/mmsc/address.h"

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr qint64 kMostBytes = qint64(1) << 30;
constexpr double kLongestPause = 86400;
constexpr qint64 kLongestKeep = qint64(30) * 86400;

void addNetwork(CLI::App &program, Options &options)
{
    program.add_option("--port", options.port, "Where to listen on 127.0.0.1; 0: any free port")
        ->check(CLI::Range(0, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    program
        .add_option(
            "--subscriber", options.subscribers,
            "Somebody with a phone: the address, and the push socket of the daemon, or sms: "
            "and the control socket of the modem; may be given again")
        ->type_name("ADDRESS=[sms:]SOCKET")
        ->allow_extra_args(false)
        ->take_all();
    program
        .add_option("--default-push", options.defaultPush,
                    "The socket that all other addresses lead to; without it they are unknown")
        ->type_name("[sms:]SOCKET");
    program
        .add_option("--sender", options.sender,
                    "Who sends what names no sender itself, nor in a header x-msisdn")
        ->type_name("ADDRESS")
        ->capture_default_str();
}

void addTimes(CLI::App &program, Options &options)
{
    const auto pause = CLI::Range(0.01, kLongestPause);
    program
        .add_option("--notify-again", options.notifyAgain,
                    "Seconds until a notification is repeated that was not answered")
        ->check(pause)
        ->type_name("SECONDS")
        ->capture_default_str();
    program
        .add_option("--push-retry", options.pushRetry,
                    "Seconds until a phone is tried again that was not there")
        ->check(pause)
        ->type_name("SECONDS")
        ->capture_default_str();
    program
        .add_option("--keep", options.keep,
                    "Seconds that a message waits which says nothing itself")
        ->check(CLI::Range(qint64(1), kLongestKeep))
        ->type_name("SECONDS")
        ->capture_default_str();
}

void addLimits(CLI::App &program, Options &options)
{
    const auto bytes = CLI::Range(qint64(1), kMostBytes);
    program.add_option("--max-size", options.maxSize, "Refuse requests with more bytes")
        ->check(bytes)
        ->type_name("BYTES")
        ->capture_default_str();
    program
        .add_option("--max-stored", options.maxStored,
                    "Accept no message while more bytes would wait for their recipients")
        ->check(bytes)
        ->type_name("BYTES")
        ->capture_default_str();
}

void addFaults(CLI::App &program, Options &options)
{
    program
        .add_option("--fault", options.faults,
                    "A line of a fault plan, like \"send 1 http-status=503\"; may be given again")
        ->type_name("LINE")
        ->allow_extra_args(false)
        ->take_all();
    program.add_option("--faults", options.faultFile, "A file with a fault plan")
        ->type_name("FILE");
}

void addLogs(CLI::App &program, Options &options)
{
    program
        .add_option("--pdu-log", options.pduLog,
                    "Keep every PDU that comes or goes in a file of this folder")
        ->type_name("FOLDER");
    auto *log = program.add_option("--log", options.log, "Append the log of the library to FILE");
    log->type_name("FILE");
    program
        .add_flag("-v,--verbose", options.isVerbose,
                  "Write the log of the library, and details of HTTP, to standard error")
        ->excludes(log);
}

bool isWay(const QString &text)
{
    return text.startsWith(u'/') || text.startsWith(kShortMessages + u'/');
}

/// What is wrong with options that the parser takes; an empty text when nothing is.
QString problemOf(const Options &options)
{
    QString address;
    QString way;
    for (const std::string &subscriber : options.subscribers) {
        QString problem = readSubscriber(subscriber, address, way);
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    if (addressKey(QString::fromStdString(options.sender)).isEmpty()) {
        return u"--sender: this is no address"_s;
    }
    const bool isFine =
        options.defaultPush.empty() || isWay(QString::fromStdString(options.defaultPush));
    return isFine ? QString() : u"--default-push: the path is not absolute"_s;
}

} // namespace

service::OptionsReading readOptions(int argc, char **argv, Options &options)
{
    CLI::App program("An MMSC on the loopback interface, for desks and tests.", "wmsg-sim-mmsc");
    service::addCommonOptions(program, "Read options from FILE: option=value in lines");
    addNetwork(program, options);
    addTimes(program, options);
    addLimits(program, options);
    addFaults(program, options);
    addLogs(program, options);
    return service::readOptions(program, argc, argv, [&options] {
        const QString problem = problemOf(options);
        if (!problem.isEmpty()) {
            throw CLI::ValidationError(problem.toStdString());
        }
    });
}

QString readSubscriber(const std::string &text, QString &address, QString &way)
{
    const QString whole = QString::fromStdString(text);
    qsizetype equals = whole.indexOf(u'=');
    while (equals >= 0 && !isWay(whole.sliced(equals + 1))) {
        equals = whole.indexOf(u'=', equals + 1);
    }
    if (equals < 0) {
        return u"--subscriber %1: this is not ADDRESS=SOCKET with an absolute path"_s.arg(whole);
    }
    address = whole.first(equals);
    way = whole.sliced(equals + 1);
    return addressKey(address).isEmpty() ? u"--subscriber %1: there is no address"_s.arg(whole)
                                         : QString();
}

} // namespace wmsg::sim
