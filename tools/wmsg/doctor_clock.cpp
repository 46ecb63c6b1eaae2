// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

using namespace Qt::StringLiterals;

// The clock: messages expire by it, and certificates are good or bad by it.

namespace wmsg::cli {

namespace {

/// This program was not there before.
constexpr int kEarliestYear = 2026;
constexpr int kLatestYear = 2099;
/// What two clocks may differ by.
constexpr qint64 kSlackSeconds = 300;

/// The file of a folder, and of those right below it, that was changed last.
QFileInfo newestIn(const QString &folder)
{
    QFileInfo newest;
    QStringList folders{folder};
    for (const QString &name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        folders += folder + u'/' + name;
    }
    for (const QString &one : std::as_const(folders)) {
        const QFileInfoList files = QDir(one).entryInfoList(QDir::Files, QDir::Time);
        if (!files.isEmpty()
            && (!newest.exists() || files.constFirst().lastModified() > newest.lastModified())) {
            newest = files.constFirst();
        }
    }
    return newest;
}

/// Whether a value of TZ describes a zone itself, as "CET-1CEST" does.
bool isPosixZone(const QString &name)
{
    static const QRegularExpression kForm(
        u"^(<[A-Za-z0-9+-]{3,}>|[A-Za-z]{3,})[+-]?\\d{1,3}(:\\d{1,2}){0,2}([A-Za-z<].*)?$"_s);
    return name == "UTC"_L1 || name == "GMT"_L1 || kForm.match(name).hasMatch();
}

} // namespace

Diagnosis checkClock(const QDateTime &now, const QStringList &folders)
{
    const QString check = u"clock"_s;
    const QString remedy = u"set it: timedatectl set-ntp true, or date -s"_s;
    const int year = now.toUTC().date().year();
    if (year < kEarliestYear || year > kLatestYear) {
        return Diagnosis::problem(
            check,
            u"it says %1, which cannot be: messages expire at once or never"_s.arg(
                dateInWords(now)),
            remedy);
    }
    for (const QString &folder : folders) {
        const QFileInfo newest = newestIn(folder);
        if (newest.exists() && newest.lastModified() > now.addSecs(kSlackSeconds)) {
            return Diagnosis::problem(
                check,
                u"it says %1, and %2 was written at %3: it has gone back"_s.arg(
                    dateInWords(now), newest.filePath(), dateInWords(newest.lastModified())),
                remedy);
        }
    }
    return Diagnosis::ok(check, dateInWords(now));
}

Diagnosis checkTimeZone(const QByteArray &name, const ZonePlaces &places)
{
    const QString check = u"time zone"_s;
    if (name.isEmpty()) {
        return QFileInfo::exists(places.local)
            ? Diagnosis::ok(check, u"that of the system"_s)
            : Diagnosis::note(check, u"none is set: times are shown in UTC"_s,
                              u"timedatectl set-timezone AREA/CITY"_s);
    }
    const QString zone = QString::fromLocal8Bit(name.startsWith(':') ? name.mid(1) : name);
    const QString file = zone.startsWith(u'/') ? zone : places.zones + u'/' + zone;
    if (isPosixZone(zone) || QFileInfo(file).isFile()) {
        return Diagnosis::ok(check, u"%1, as TZ says"_s.arg(zone));
    }
    return Diagnosis::note(
        check, u"TZ is \"%1\", which no zone here is called: times are shown in UTC"_s.arg(zone),
        u"timedatectl list-timezones; the package tzdata has them"_s);
}

} // namespace wmsg::cli
