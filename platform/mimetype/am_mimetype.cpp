// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/mimetype/am_mimetype.h"

#include <QtCore/QFile>
#include <QtCore/QMimeDatabase>
#include <QtCore/QXmlStreamReader>

#include <utility>

namespace {

struct OtherName {
    const char *type;
    const char *extensions;
};

// Names that phones use for what the shared MIME database knows by another name. They are not in
// the file of phone types: Qt gives a file name to the first data directory that knows its pattern,
// so a pattern installed there would take every .jpg away from image/jpeg.
// clang-format off
constexpr OtherName kOtherNames[] = {
    {"application/wml+xml",           "wml"},
    {"application/vnd.wap.wml+xml",   "wml"},
    {"text/wml",                      "wml"},
    {"application/vnd.wap.xhtml+xml", "xhtml"},
    {"application/x-x509-user-cert",  "crt"},
    {"application/vnd.oma.drm.dcf",   "odf o4a o4v"},
    {"text/x-vCard",                  "vcf"},
    {"text/v-card",                   "vcf"},
    {"text/x-vCalendar",              "vcs"},
    {"image/jpg",                     "jpg jpeg jpe"},
    {"image/x-png",                   "png"},
    {"image/x-gif",                   "gif"},
    {"audio/amr",                     "amr"},
    {"audio/x-amr",                   "amr"},
    {"audio/amr-wb",                  "awb"},
    {"audio/imelody",                 "imy ime"},
    {"audio/x-imelody",               "imy ime"},
    {"text/x-imelody",                "imy ime"},
    {"audio/mid",                     "mid midi"},
    {"audio/x-mid",                   "mid midi"},
    {"audio/sp-midi",                 "mid midi"},
    {"audio/au",                      "au snd"},
    {"audio/x-au",                    "au snd"},
    {"audio/mpeg3",                   "mp3"},
    {"audio/x-mpeg3",                 "mp3"},
    {"audio/mpg",                     "mp3"},
    {"audio/asf",                     "asf"},
    {"audio/mp4a-latm",               "m4a"},
    {"video/x-mpeg4",                 "mp4"},
    {"video/x-mpeg4aac",              "mp4"},
    {"video/x-mpeg4amr",              "mp4"},
    {"video/3gp2",                    "3g2 3gp2 3gpp2"},
    {"video/asf",                     "asf"},
    {"video/pmd",                     "pmd"},
    {"application/x-pn-realmedia",    "rm"},
};
// clang-format on

using Table = QHash<QString, QStringList>;

/// addFile adds the media types of our shared-MIME-info file, which is part of this library, with
/// their aliases. Only "*.ext" patterns are understood; the file has no others.
void addFile(Table &table)
{
    QFile file(QStringLiteral(":/wmsg/mimetype/wmsg-phone-types.xml"));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QXmlStreamReader xml(&file);
    QStringList names;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("mime-type")) {
            names = {attributes.value(QLatin1String("type")).toString().toLower()};
        } else if (xml.name() == QLatin1String("alias")) {
            names.append(attributes.value(QLatin1String("type")).toString().toLower());
        } else if (xml.name() == QLatin1String("glob")) {
            const QString pattern = attributes.value(QLatin1String("pattern")).toString();
            for (const QString &name : std::as_const(names)) {
                table[name].append(pattern.mid(2));
            }
        }
    }
}

/// phoneTypes returns our own table: name in lower case -> extensions.
Table phoneTypes()
{
    Table table;
    for (const OtherName &row : kOtherNames) {
        table.insert(QString::fromLatin1(row.type).toLower(),
                     QString::fromLatin1(row.extensions).split(QLatin1Char(' ')));
    }
    addFile(table);
    return table;
}

/// The names and aliases of the shared MIME database, in lower case, with the name it spells them
/// by. It takes some milliseconds to make, so it is made when a name in another spelling is first
/// asked for.
const QHash<QString, QString> &systemNamesByLowerCase()
{
    static const QHash<QString, QString> *const names = [] {
        auto *table = new QHash<QString, QString>;
        const QList<QMimeType> types = QMimeDatabase().allMimeTypes();
        for (const QMimeType &type : types) {
            table->insert(type.name().toLower(), type.name());
        }
        for (const QMimeType &type : types) {
            const QStringList aliases = type.aliases();
            for (const QString &alias : aliases) {
                const QString key = alias.toLower();
                if (!table->contains(key)) {
                    table->insert(key, type.name());
                }
            }
        }
        return table;
    }();
    return *names;
}

/// systemExtensions asks the shared MIME database, which takes case seriously: first for the name
/// as it stands, then in lower case, then for any name or alias that differs in case alone.
QStringList systemExtensions(const QString &name)
{
    const QMimeDatabase database;
    QMimeType type = database.mimeTypeForName(name);
    if (!type.isValid()) {
        type = database.mimeTypeForName(name.toLower());
    }
    if (!type.isValid()) {
        type = database.mimeTypeForName(systemNamesByLowerCase().value(name.toLower()));
    }
    return type.suffixes();
}

} // namespace

AM_MimeType *AM_MimeType::instance()
{
    // Never deleted: objects that are destroyed while the process ends may still ask.
    static AM_MimeType *const registry = new AM_MimeType;
    return registry;
}

AM_MimeType::AM_MimeType() : m_phoneTypes(phoneTypes()) { }

QStringList AM_MimeType::getExtListByMimeId(const QString &mimeId) const
{
    const QString name = mimeId.section(QLatin1Char(';'), 0, 0).trimmed();
    const auto phoneType = m_phoneTypes.constFind(name.toLower());
    return phoneType != m_phoneTypes.cend() ? *phoneType : systemExtensions(name);
}
