// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/option_checks.h"

#include "services/common/local_address.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

constexpr mode_t kOwner = 0600;
constexpr mode_t kAll = 0666;

} // namespace

std::string checkSocketPath(const std::string &path)
{
    return LocalAddress(QString::fromStdString(path)).isPossible()
        ? ""
        : "the path of a socket must be absolute and have at most 107 bytes";
}

std::string checkSocketMode(const std::string &mode)
{
    const auto number = plainNumber(mode, 8);
    const bool isMode = number && (*number & kOwner) == kOwner && (*number & ~kAll) == 0;
    return isMode ? "" : "a mode is octal, from 600 to 666, and lets the owner in: " + mode;
}

std::string checkFolder(const std::string &path)
{
    return path.empty() ? "this is no folder" : "";
}

mode_t socketModeOf(const std::string &mode)
{
    return plainNumber(mode, 8).value_or(kOwner);
}

std::optional<uint> plainNumber(const std::string &text, int base)
{
    bool isNumber = false;
    const uint number = QByteArray::fromStdString(text).toUInt(&isNumber, base);
    const bool isPlain =
        std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= '0' && c <= '9'; });
    return isNumber && isPlain ? std::optional(number) : std::nullopt;
}

QString optionError(const char *what)
{
    QString text = QString::fromUtf8(what);
    const auto unknown = u"INI was not able to parse "_s;
    if (text.startsWith(unknown)) {
        const QString name = text.mid(unknown.size());
        text = name.endsWith(u".++"_s)
            ? u"the configuration file has a section, and none is known: "_s + name.chopped(3)
            : u"the configuration file names an option that does not exist: "_s + name;
    }
    text.replace(u'\n', u' ');
    return text.simplified();
}

QString defaultSpoolOf(QLatin1String daemon)
{
    const QString state = qEnvironmentVariable("XDG_STATE_HOME");
    const QString folder = state.startsWith(u'/') ? state : QDir::homePath() + u"/.local/state"_s;
    return QDir::cleanPath(folder + u"/wmsg/"_s + daemon);
}

} // namespace wmsg::service
