// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"
#include "services/common/record_file.h"
#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/doctor_words.h"
#include "tools/wmsg/stored_message.h"
#include "tools/wmsg/text_view.h"

#include <platform/engine/mms_eng_controller.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMap>
#include <QtCore/QStorageInfo>

#include <algorithm>
#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The folders: message store, spools, and what waits in these or was set aside.

namespace wmsg::cli {

namespace {

constexpr mode_t kWritableByOthers = 0022;
constexpr qint64 kMebi = qint64(1024) * 1024;
constexpr qint64 kLittleSpace = 50 * kMebi;
constexpr qint64 kTooLittleSpace = 2 * kMebi;

/// What the records of all spools have in common.
constexpr service::RecordFormat kRecord{1, qint64(256) * 1024};
/// How many records of a box are read.
constexpr qsizetype kMostRecords = 10000;
/// What becomes of a multimedia message, in its record.
constexpr QLatin1String kStage("stage");

constexpr qint64 kLongestReason = 400;

bool mayWrite(const QString &path)
{
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), W_OK, AT_EACCESS) == 0;
}

/// What is to be said about the space of a folder that is fine otherwise.
Diagnosis withSpace(const QString &check, const QString &folder, const QString &what)
{
    const qint64 bytes = QStorageInfo(folder).bytesAvailable();
    const QString space = u"%1; %2 free"_s.arg(what, sizeInWords(std::max<qint64>(bytes, 0)));
    const QString remedy = u"make room: df -h "_s + folder;
    return bytes < kTooLittleSpace ? Diagnosis::problem(check, space, remedy)
        : bytes < kLittleSpace     ? Diagnosis::note(check, space, remedy)
                                   : Diagnosis::ok(check, space);
}

/// A store that is not there yet: whether it could be made.
Diagnosis storeToCome(const QString &check, const QString &path)
{
    QString above = QDir::cleanPath(path);
    while (!QFile::exists(above)) {
        above = QFileInfo(above).path();
    }
    const QString root = qEnvironmentVariableIsEmpty("UVO_EXTRA_SYS_DATA_PATH")
        ? u"; UVO_EXTRA_SYS_DATA_PATH is not set"_s
        : QString();
    if (!QFileInfo(above).isDir() || !mayWrite(above)) {
        return Diagnosis::problem(
            check, u"there is no store, and %1 cannot be made in %2%3"_s.arg(path, above, root),
            u"set UVO_EXTRA_SYS_DATA_PATH to a folder that is yours"_s);
    }
    return Diagnosis::note(
        check, u"there is no store yet; the first message makes one in %1%2"_s.arg(path, root));
}

/// The records of a box that can be read.
QList<QJsonObject> recordsIn(const QString &folder)
{
    QList<QJsonObject> records;
    const QStringList names = QDir(folder).entryList({u"*.json"_s}, QDir::Files, QDir::Name);
    for (const QString &name : names.first(std::min(names.size(), kMostRecords))) {
        QString reason;
        if (const auto record = service::readRecord(folder + u'/' + name, kRecord, reason)) {
            records.append(*record);
        }
    }
    return records;
}

/// Whether a record is only the memory of a message.
bool isDone(const QJsonObject &record)
{
    return record.value(kStage) == "over"_L1 || record.value("kind"_L1) == "over"_L1
        || record.contains("status"_L1);
}

/// Whom a multimedia message is for, in words.
QString receiverOf(const QJsonObject &record)
{
    const QString appId = record.value("appId"_L1).toString();
    return record.value(kStage) != "ready"_L1 ? u"still with the MMSC"_s
        : appId.isEmpty()                     ? u"for no application in particular"_s
                                              : u"for \"%1\""_s.arg(appId);
}

/// "3 arrived (1 for "chess", 2 still with the MMSC)"; records of short messages tell less.
QString arrivedInWords(const QList<QJsonObject> &records)
{
    QMap<QString, int> counts;
    for (const QJsonObject &record : records) {
        if (record.contains(kStage)) {
            ++counts[receiverOf(record)];
        }
    }
    QStringList words;
    for (auto one = counts.cbegin(); one != counts.cend(); ++one) {
        words += u"%1 %2"_s.arg(QString::number(one.value()), one.key());
    }
    const QString details = words.isEmpty() ? QString() : u" (%1)"_s.arg(words.join(u", "_s));
    return u"%1 arrived%2"_s.arg(QString::number(records.size()), details);
}

/// The first words of the text that says why a message was set aside, in a line.
QString reasonIn(const QString &path)
{
    const service::Descriptor file(::open(QFile::encodeName(path).constData(),
                                          O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    QByteArray bytes(kLongestReason, '\0');
    const ssize_t size = ::read(file.get(), bytes.data(), static_cast<size_t>(bytes.size()));
    bytes.truncate(std::max<ssize_t>(size, 0));
    return bytes.isEmpty() ? u"(its text cannot be read)"_s : QString::fromUtf8(bytes).simplified();
}

} // namespace

Diagnosis checkStore()
{
    const QString check = u"message store"_s;
    const QString path = MMS_ENG_Controller::StorePath();
    const QString database = path + u"messages.db"_s;
    if (!QFile::exists(database)) {
        return storeToCome(check, path);
    }
    for (const QString &name : {path, database}) {
        if (!mayWrite(name)) {
            return Diagnosis::problem(check, name + u" cannot be written: "_s + errorInWords(errno),
                                      u"see whose it is: ls -ld "_s + name);
        }
    }
    QStringList problems;
    const EngineWords words;
    if (MMS_ENG_Controller::Instance()->CheckStore(&problems) != MMS_ENG_OK) {
        return Diagnosis::problem(check, words.last(), u"wmsg store check"_s);
    }
    if (!problems.isEmpty()) {
        return Diagnosis::problem(
            check,
            u"%1 is damaged, %2: %3"_s.arg(path, counted(problems.size(), "problem"_L1),
                                           problems.constFirst()),
            u"wmsg store check tells all; wmsg store export saves what can be read"_s);
    }
    return withSpace(check, path, path + u" is whole"_s);
}

Diagnosis checkSpool(const SpoolPlace &place)
{
    struct stat state = {};
    if (::stat(QFile::encodeName(place.folder).constData(), &state) != 0) {
        return errno == ENOENT
            ? Diagnosis::note(
                place.check,
                u"%1 is not there: %2 has not run as this user, or has another spool"_s.arg(
                    place.folder, place.daemon),
                u"name the other one: wmsg doctor %1 FOLDER"_s.arg(place.option))
            : Diagnosis::problem(place.check, place.folder + u": "_s + errorInWords(errno),
                                 u"ls -ld "_s + place.folder);
    }
    if (!S_ISDIR(state.st_mode)) {
        return Diagnosis::problem(place.check, place.folder + u" is no folder"_s,
                                  u"move it away, and then: "_s + restartCommand(place.daemon));
    }
    if (state.st_uid != ::geteuid()) {
        return Diagnosis::problem(
            place.check,
            u"%1 belongs to %2: %3 does not start with it"_s.arg(
                place.folder, userInWords(state.st_uid), place.daemon),
            u"run wmsg and the daemon as that user, or give the daemon another --spool"_s);
    }
    if ((state.st_mode & kWritableByOthers) != 0) {
        return Diagnosis::problem(
            place.check,
            u"others may write to %1 (mode %2): %3 does not start with it"_s.arg(
                place.folder, modeInWords(state.st_mode), place.daemon),
            u"chmod 700 "_s + place.folder);
    }
    if (!mayWrite(place.folder)) {
        return Diagnosis::problem(
            place.check, u"%1 cannot be written: %2"_s.arg(place.folder, errorInWords(errno)),
            u"chmod 700 %1; is its file system mounted read-only?"_s.arg(place.folder));
    }
    return withSpace(place.check, place.folder, place.folder);
}

Diagnosis checkWaiting(const SpoolPlace &place)
{
    const QString check = place.check + u": waiting"_s;
    QList<QJsonObject> out = recordsIn(place.folder + u"/out"_s);
    QList<QJsonObject> in = recordsIn(place.folder + u"/in"_s);
    out.removeIf(isDone);
    in.removeIf(isDone);
    QStringList what;
    QStringList remedies;
    if (!out.isEmpty()) {
        what += u"%1 to be sent"_s.arg(out.size());
        remedies += u"why they are not sent yet: journalctl --user -u "_s + place.daemon;
    }
    if (!in.isEmpty()) {
        what += arrivedInWords(in);
        remedies += in.constFirst().contains(kStage)
            ? u"to take those that arrived: wmsg receive, with --app-id for an application"_s
            : u"to take those that arrived: wmsg sms receive, with --port for those to a port"_s;
    }
    return what.isEmpty() ? Diagnosis::ok(check, u"nothing"_s)
                          : Diagnosis::note(check, what.join(u", "_s), remedies.join(u"; "_s));
}

Diagnosis checkKept(const SpoolPlace &place)
{
    const QString check = place.check + u": set aside"_s;
    const QString folder = place.folder + u"/kept"_s;
    const QStringList names =
        QDir(folder).entryList({u"in-*.txt"_s, u"out-*.txt"_s}, QDir::Files, QDir::Time);
    if (names.isEmpty()) {
        return Diagnosis::ok(check, u"nothing"_s);
    }
    const QString newest = folder + u'/' + names.constFirst();
    return Diagnosis::note(
        check,
        u"%1 that could not be used, the latest because: %2"_s.arg(
            counted(names.size(), "message"_L1), reasonIn(newest)),
        u"look at the files beside %1 with wmsg decode; they may be removed"_s.arg(newest));
}

} // namespace wmsg::cli
