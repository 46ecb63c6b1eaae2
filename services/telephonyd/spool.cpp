// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/spool.h"

#include "services/common/durable_file.h"
#include "services/common/record_file.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>
#include <QtCore/QStringList>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kSpool, "wmsg.spool", QtInfoMsg)

constexpr RecordFormat kFormat{1, Spool::kLongestRecord}; // in files: readers refuse what is above
constexpr QLatin1String kRecord(".json");
constexpr QLatin1String kReason(".txt");
constexpr int kIdDigits = 20;
constexpr int kShortestLife = 24; // its inverse, of a lifetime

QLatin1String nameOf(Spool::Box box)
{
    return box == Spool::Box::Out ? "out"_L1 : "in"_L1;
}

QString nameOf(RecordId id)
{
    return QString::number(id).rightJustified(kIdDigits, u'0');
}

/// The record that a file belongs to; 0 for a file that is none of ours.
RecordId idOf(const QString &fileName)
{
    bool isNumber = false;
    const RecordId id = QStringView(fileName).left(kIdDigits).toULongLong(&isNumber);
    const bool isOurs = isNumber && fileName.size() > kIdDigits && fileName[kIdDigits] == u'.'
        && fileName[0].isDigit() && id <= std::numeric_limits<qint64>::max() / 2;
    return isOurs ? id : 0;
}

/// The same for a file of kept/, whose name begins with that of its box.
RecordId keptIdOf(const QString &fileName)
{
    return idOf(fileName.section(u'-', 1));
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

void logProblem(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kSpool, "%ls", qUtf16Printable(problem));
    }
}

} // namespace

Spool::Spool(QString folder) : m_folder(std::move(folder)) { }

QString Spool::open()
{
    for (const QString &folder : {m_folder, folderOf(Box::Out), folderOf(Box::In), keptFolder()}) {
        QString problem = usePrivateFolder(folder);
        problem = problem.isEmpty() && folder == m_folder ? lockFolder(folder, m_lock) : problem;
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    for (const QString &folder : {folderOf(Box::Out), folderOf(Box::In), keptFolder()}) {
        countFrom(folder);
    }
    return QString();
}

std::vector<Spool::Stored> Spool::restore(Box box)
{
    std::vector<Stored> restored;
    for (const QString &name : filesIn(folderOf(box))) {
        const RecordId id = idOf(name);
        if (id == 0 || name != nameOf(id) + kRecord) {
            continue;
        }
        QString reason;
        const auto record = readRecord(path(box, id), kFormat, reason);
        if (record) {
            restored.push_back({id, *record});
        } else {
            setAside(box, id, reason);
        }
    }
    return restored;
}

RecordId Spool::nextId()
{
    // A number from the time is above those of records that have left no trace.
    const auto fromTime = static_cast<RecordId>(currentTime()) * 1000;
    m_lastId = std::max(m_lastId + 1, fromTime);
    return m_lastId;
}

QString Spool::write(Box box, RecordId id, const QJsonObject &record) const
{
    return writeRecord(path(box, id), record, kFormat);
}

QString Spool::remove(Box box, RecordId id) const
{
    return removeDurably(path(box, id));
}

void Spool::setAside(Box box, RecordId id, const QString &reason)
{
    forgetOldestKept();
    const QString stem = keptFolder() + u'/' + nameOf(box) + u'-' + nameOf(id);
    qCWarning(kSpool, "record %llu is kept aside: %ls", id, qUtf16Printable(reason));
    // On a full disk the file can be moved, and the reason stands in the log alone.
    logProblem(writeDurably(stem + kReason, reason.toUtf8() + '\n'));
    logProblem(renameDurably(path(box, id), stem + kRecord));
}

QString Spool::path(Box box, RecordId id) const
{
    return folderOf(box) + u'/' + nameOf(id) + kRecord;
}

QString Spool::folderOf(Box box) const
{
    return m_folder + u'/' + nameOf(box);
}

QString Spool::keptFolder() const
{
    return m_folder + u"/kept"_s;
}

void Spool::countFrom(const QString &folder)
{
    for (const QString &name : filesIn(folder)) {
        const RecordId id = std::max(idOf(name), keptIdOf(name));
        m_lastId = std::max(m_lastId, id);
        if (id != 0 && isTemporaryName(name)) {
            logProblem(removeDurably(folder + u'/' + name));
        }
    }
}

void Spool::forgetOldestKept() const
{
    const QStringList names = filesIn(keptFolder());
    std::set<RecordId> ids;
    for (const QString &name : names) {
        ids.insert(keptIdOf(name));
    }
    ids.erase(0);
    while (ids.size() >= kMostKept) {
        const RecordId oldest = *ids.begin();
        ids.erase(ids.begin());
        qCWarning(kSpool, "record %llu was kept aside, and makes room for others", oldest);
        for (const QString &name : names) {
            if (keptIdOf(name) == oldest) {
                logProblem(removeDurably(keptFolder() + u'/' + name));
            }
        }
    }
}

qint64 currentTime()
{
    return std::max<qint64>(QDateTime::currentMSecsSinceEpoch(), 0);
}

std::chrono::milliseconds timeLeft(qint64 since, std::chrono::milliseconds lifetime)
{
    const std::chrono::milliseconds elapsed(currentTime() - since);
    return std::clamp(lifetime - elapsed, lifetime / kShortestLife, lifetime);
}

} // namespace wmsg::telephonyd
