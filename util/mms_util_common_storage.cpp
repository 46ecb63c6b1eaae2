// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cstdlib>

namespace {

QString rootDir()
{
    return QFile::decodeName(qgetenv("UVO_EXTRA_SYS_DATA_PATH"));
}

/// shellWord returns `path` as one word of a shell command that names exactly this file: in single
/// quotes, where nothing has a meaning but the quote itself, and never looking like an option.
QByteArray shellWord(const QString &path)
{
    QByteArray word = QFile::encodeName(path);
    word.replace('\'', "'\\''");
    return (word.startsWith('-') ? "'./" : "'") + word + '\'';
}

bool ensureDir(const QString &path)
{
    if (QDir(path).exists()) {
        return true;
    }
    if (!QDir().mkdir(path)) {
        return false;
    }
    const QByteArray command = "chmod 777 " + shellWord(path) + " -R";
    // A directory that stays closed to others is still one: the answer of the command is not looked
    // at.
    [[maybe_unused]] const int ignored = std::system(command.constData());
    return true;
}

} // namespace

bool MMS_UTIL_Common::checkDir()
{
    return ensureDir(rootDir()) && ensureDir(getWorkDir()) && ensureDir(getMailFileDir())
        && ensureDir(getTemplateDir()) && ensureDir(getTmpDir())
        && ensureDir(getMostRecentContactsDir());
}

QString MMS_UTIL_Common::getWorkDir()
{
    const QString root = rootDir();
    const bool endsWithSlash = root.endsWith(QLatin1Char('/'));
    return root + (endsWithSlash ? QLatin1String("mms/") : QLatin1String("/mms/"));
}

QString MMS_UTIL_Common::getMailFileDir()
{
    return getWorkDir() + QLatin1String("mailfile/");
}

QString MMS_UTIL_Common::getTemplateDir()
{
    return getWorkDir() + QLatin1String("mmstemplate/");
}

QString MMS_UTIL_Common::getTmpDir()
{
    return getWorkDir() + QLatin1String("tmp/");
}

QString MMS_UTIL_Common::getMostRecentContactsDir()
{
    return getWorkDir() + QLatin1String("recentcontacts/");
}

QString MMS_UTIL_Common::getMostRecentContactsFile()
{
    return getMostRecentContactsDir() + QLatin1String("postcard.txt");
}

QString MMS_UTIL_Common::getQuickSendContactDir()
{
    return getWorkDir();
}

QString MMS_UTIL_Common::getQuickSendContactFile()
{
    return getQuickSendContactDir() + QLatin1String("qscontact.txt");
}

QString MMS_UTIL_Common::getPreloadTemplateDir()
{
    return QStringLiteral("/usr/data_resource/quickpage/");
}

QString MMS_UTIL_Common::getMmsPreviewTmpDir()
{
    return QStringLiteral("/tmp/mmspreview/");
}

QString MMS_UTIL_Common::msgDBIDToMailFileName(unsigned int id)
{
    return getMailFileDir() + QString::number(id) + QLatin1String(".mms");
}
