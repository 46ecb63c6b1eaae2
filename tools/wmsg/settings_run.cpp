// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/settings_run.h"

#include "tools/wmsg/text_view.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

void SettingsRun::begin()
{
    WMMSSession::MMS_Setting_Info info;
    if (!session()->getSetting(info)) {
        complain(
            u"no settings server listens at /tmp/extra-mmserver (is wmsg-mmsproxyd running?)"_s);
        finish(ExitBadInput);
        return;
    }
    if (info.moSize == 0 && info.svrURI.isEmpty()) {
        complain(u"the settings server at /tmp/extra-mmserver has told nothing"_s);
        finish(ExitBadInput);
        return;
    }
    show(info);
    finish(finishOutput() ? ExitFine : ExitBadInput);
}

void SettingsRun::show(const WMMSSession::MMS_Setting_Info &info) const
{
    if (m_isJson) {
        const QJsonObject object{{u"largestMessage"_s, info.moSize}, {u"server"_s, info.svrURI}};
        say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
        return;
    }
    const QString server = info.svrURI.isEmpty() ? u"(none)"_s : printable(info.svrURI);
    say(u"largest message  %1\nserver           %2\n"_s.arg(sizeInWords(info.moSize), server));
}

} // namespace wmsg::cli
