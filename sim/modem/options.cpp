// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/options.h"

#include "services/common/program_options.h"

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr int kMostPlaces = 255;

void addOptions(CLI::App &program, ModemOptions &options)
{
    program.add_option("--pty", options.pty, "The link by which programs open the modem")
        ->type_name("LINK")
        ->required();
    program.add_option("--control", options.control, "Where to listen for commands")
        ->type_name("SOCKET");
    program.add_flag("--loopback", options.isLoopback,
                     "What is sent comes back, from the number that it was sent to");
    program
        .add_option("--pdu-log", options.pduLog,
                    "Keep every short message that comes or goes in a file of this folder")
        ->type_name("FOLDER");
    program.add_option("--number", options.number, "The number of the subscriber; may be empty")
        ->type_name("NUMBER")
        ->capture_default_str();
    program
        .add_option("--service-center", options.serviceCentre,
                    "The service centre that the card knows; may be empty")
        ->type_name("NUMBER")
        ->capture_default_str();
    program.add_option("--storage", options.storage, "Places for messages in each memory")
        ->check(CLI::Range(0, kMostPlaces))
        ->type_name("N")
        ->capture_default_str();
    program.add_option("--pin", options.pin, "What the card wants to be told before it is used")
        ->type_name("PIN");
    program.add_flag("-v,--verbose", options.isVerbose,
                     "Write what goes over the line to standard error");
}

bool isNumber(const std::string &text)
{
    const auto address = smspdu::Address::fromString(QString::fromStdString(text));
    return text.empty() || (!address.isAlphanumeric() && !address.value.isEmpty());
}

/// What is wrong with options that the parser takes; an empty text when nothing is.
QString problemOf(const ModemOptions &options)
{
    if (options.pty.empty() || options.pty.front() != '/') {
        return u"--pty: the path is not absolute"_s;
    }
    if (!isNumber(options.number)) {
        return u"--number: this is no telephone number"_s;
    }
    if (!isNumber(options.serviceCentre)) {
        return u"--service-center: this is no telephone number"_s;
    }
    return QString();
}

} // namespace

Modem::Settings ModemOptions::settings() const
{
    Modem::Settings settings;
    settings.link = QString::fromStdString(pty);
    settings.phone.number = QByteArray::fromStdString(number);
    settings.phone.pin = QByteArray::fromStdString(pin);
    settings.messages.places = storage;
    settings.messages.serviceCentre = QByteArray::fromStdString(serviceCentre);
    settings.isLoopback = isLoopback;
    return settings;
}

service::OptionsReading readModemOptions(int argc, char **argv, ModemOptions &options)
{
    CLI::App program("An AT modem on a pseudo terminal, for desks and tests.", "wmsg-sim-modem");
    service::addCommonOptions(program, "Read options from FILE: option=value in lines");
    addOptions(program, options);
    return service::readOptions(program, argc, argv, [&options] {
        const QString problem = problemOf(options);
        if (!problem.isEmpty()) {
            throw CLI::ValidationError(problem.toStdString());
        }
    });
}

} // namespace wmsg::sim
