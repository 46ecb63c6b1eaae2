// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor_words.h"

#include <array>
#include <cstring>

#include <pwd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

QString userInWords(uid_t user)
{
    passwd entry = {};
    passwd *found = nullptr;
    std::array<char, 4096> room = {};
    if (::getpwuid_r(user, &entry, room.data(), room.size(), &found) != 0 || found == nullptr) {
        return u"user %1"_s.arg(user);
    }
    return u"%1 (user %2)"_s.arg(QString::fromLocal8Bit(entry.pw_name), QString::number(user));
}

QString modeInWords(mode_t mode)
{
    constexpr mode_t kRights = 07777;
    return QString::number(mode & kRights, 8);
}

QString errorInWords(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QString configOf(const QString &daemon)
{
    return u"~/.config/wmsg/%1.ini"_s.arg(daemon.section(u'-', 1));
}

QString startCommand(const QString &daemon)
{
    return u"systemctl --user start %1 (which needs %2), or run %1 by hand"_s.arg(daemon,
                                                                                  configOf(daemon));
}

QString restartCommand(const QString &daemon)
{
    return u"systemctl --user restart "_s + daemon;
}

} // namespace wmsg::cli
