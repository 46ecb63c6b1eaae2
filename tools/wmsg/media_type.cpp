// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/media_type.h"

#include <mms/codec/wmmscontenttype.h>
#include <platform/mimetype/am_mimetype.h>
#include <util/mms_util_common.h>

#include <QtCore/QMimeDatabase>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kWellKnownTypes = 164;
constexpr int kSniffedBytes = 65536;

bool isMedia(const QString &type)
{
    return type.startsWith("image/"_L1) || type.startsWith("audio/"_L1)
        || type.startsWith("video/"_L1);
}

// The well-known spelling of a name; an empty text when there is none.
QString wellKnownName(const QString &name)
{
    for (int id = 1; id < kWellKnownTypes; ++id) {
        QString known = WMMSContentType::getMimeType(static_cast<unsigned char>(id));
        if (known.compare(name, Qt::CaseInsensitive) == 0) {
            return known;
        }
    }
    return {};
}

// Phones know a type by one of the names that the database has for it.
QString phoneName(const QMimeType &type)
{
    const QStringList names = QStringList(type.name()) + type.aliases();
    for (const QString &name : names) {
        QString known = wellKnownName(name);
        if (!known.isEmpty()) {
            return known;
        }
    }
    return type.name().toLower();
}

// The first well-known type whose files have that extension.
QString typeOfExtension(const QString &extension)
{
    if (extension.isEmpty()) {
        return {};
    }
    for (int id = 1; id < kWellKnownTypes; ++id) {
        QString known = WMMSContentType::getMimeType(static_cast<unsigned char>(id));
        if (AM_MimeType::instance()->getExtListByMimeId(known).contains(extension,
                                                                        Qt::CaseInsensitive)) {
            return known;
        }
    }
    return {};
}

} // namespace

QString mediaTypeOf(const QString &fileName, const QArray<char> &bytes)
{
    const QMimeDatabase database;
    const QByteArray start(bytes.constData(), std::min(bytes.size(), kSniffedBytes));
    const QMimeType byContent = database.mimeTypeForData(start);
    const QMimeType named = database.mimeTypeForFileNameAndData(fileName, start);
    const bool isMislabelled = isMedia(byContent.name()) && named != byContent
        && !named.inherits(byContent.name()) && !byContent.inherits(named.name())
        && named.name().section(u'/', 0, 0) == byContent.name().section(u'/', 0, 0);
    if (isMislabelled || (isMedia(byContent.name()) && !isMedia(named.name()))) {
        return phoneName(byContent);
    }
    const bool isGuess = named.isDefault() || named == byContent;
    const QString registered =
        isGuess ? typeOfExtension(MMS_UTIL_Common::getExtName(fileName)) : QString();
    const bool byExtension = !registered.isEmpty() && !isMedia(byContent.name());
    return byExtension ? registered : phoneName(named);
}

} // namespace wmsg::cli
