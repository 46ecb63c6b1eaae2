// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/program_options.h"

#include "services/common/option_checks.h"

namespace wmsg::service {

const char *const kDaemonFooter =
    "Every option but --config, --help and --version can stand in the file, as NAME = VALUE\n"
    "without the dashes; values with blanks or commas want quotes.\n"
    "Exit codes: 0 stopped by a signal; 1 it cannot run, with a line on standard error that says\n"
    "why; 2 an option or a line of the file is wrong.";

CLI::Validator check(std::string (*function)(const std::string &))
{
    return CLI::Validator([function](std::string &text) { return function(text); }, "");
}

CLI::Option *addText(CLI::App &app, const char *name, std::string &value, const char *type,
                     const char *about)
{
    return app.add_option(name, value, about)->type_name(type);
}

void addCommonOptions(CLI::App &app, const char *aboutFile)
{
    app.set_version_flag("--version", app.get_name() + " " WMSG_VERSION,
                         "Print the version and end");
    app.set_config("--config", "", aboutFile)->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::error);
}

OptionsReading readOptions(CLI::App &app, int argc, const char *const *argv,
                           const std::function<void()> &take)
{
    try {
        app.parse(argc, argv);
        take();
        return {OptionsReading::Run, {}};
    } catch (const CLI::CallForHelp &) {
        return {OptionsReading::Print, QString::fromStdString(app.help())};
    } catch (const CLI::CallForVersion &wish) {
        return {OptionsReading::Print, QString::fromUtf8(wish.what()) + u'\n'};
    } catch (const CLI::Error &error) {
        const QString help = QStringLiteral(" (see %1 --help)");
        return {OptionsReading::Refuse,
                optionError(error.what()) + help.arg(QString::fromStdString(app.get_name()))};
    }
}

} // namespace wmsg::service
