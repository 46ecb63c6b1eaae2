// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include "core/log.h"
#include "platform/application/wapplication.h"

#include <QtCore/QFileInfo>

namespace {

constexpr unsigned short kTextPlain = 3;
constexpr unsigned short kMmsMessage = 62;

struct ExtensionRow {
    unsigned short type;
    const char *extension;
};

// clang-format off
constexpr ExtensionRow kExtensions[] = {
    {0,           ".err"},
    {kTextPlain,  ".txt"},
    {29,          ".gif"},   // image/gif
    {30,          ".jpg"},   // image/jpeg
    {32,          ".png"},   // image/png
    {33,          ".wbmp"},  // image/vnd.wap.wbmp
    {kMmsMessage, ".mms"},
    {83,          ".bmp"},   // image/bmp
    {92,          ".imy"},   // audio/imelody
    {95,          ".mid"},   // audio/midi
    {100,         ".wav"},   // audio/wav
    // Kept: video/mp4 gets the extension mpg.
    {112,         ".mpg"},
    {121,         ".mp3"},   // audio/mp3
};
// clang-format on

const char *extensionOf(unsigned short type)
{
    for (const ExtensionRow &row : kExtensions) {
        if (row.type == type) {
            return row.extension;
        }
    }
    return nullptr;
}

/// takeNumber returns `counter` in five digits and moves it on.
QString takeNumber(quint16 &counter)
{
    return QStringLiteral("%1").arg(counter++, 5, 10, QLatin1Char('0'));
}

/// exists also sees a link that leads nowhere: writing to its name would write elsewhere.
bool exists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

quint16 s_fileNameCounter = 0;
quint16 s_tmpFileNameCounter = 0;

} // namespace

QString MMS_UTIL_Common::generateFileName(unsigned short type)
{
    QString name = WApplication::getAppName() + takeNumber(s_fileNameCounter);
    // Kept: other types get the bare name, in no directory.
    if (const char *extension = extensionOf(type)) {
        name = (type == kMmsMessage ? getMailFileDir() : getTmpDir()) + name
            + QLatin1String(extension);
    }
    logLine(8, "MMS_UTIL_Common::generateFileName, fileName generated=%s\n", name);
    checkDir();
    return name;
}

QString MMS_UTIL_Common::generateFileNameAtTmp(unsigned short type)
{
    checkDir();
    QString number = takeNumber(s_tmpFileNameCounter);
    if (type == kTextPlain) {
        return QLatin1String("/tmp/t") + number + QLatin1String(".txt");
    }
    return number;
}

QString MMS_UTIL_Common::getTmpFileName(const QString &name, const QString &dir)
{
    QString path = dir.trimmed();
    if (path.isEmpty()) {
        path = QStringLiteral("/tmp/");
    } else if (!path.endsWith(QLatin1Char('/'))) {
        path += QLatin1Char('/');
    }
    const QString fileName = stripPath(name);
    const QString base = getNoExtName(fileName);
    path += base.isEmpty() ? QStringLiteral("tmp") : base;
    QString extension = getExtName(fileName);
    if (!extension.isEmpty()) {
        extension.prepend(QLatin1Char('.'));
    }
    QString candidate = path + extension;
    for (quint64 n = 0; exists(candidate); ++n) {
        candidate = path + QString::number(n) + extension;
    }
    return candidate;
}
