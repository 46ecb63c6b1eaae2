// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/record_boxes.h"

#include "services/common/durable_file.h"
#include "services/common/time_of_day.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QStringList>

#include <algorithm>
#include <limits>
#include <set>
#include <sys/stat.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

Q_LOGGING_CATEGORY(kSpool, "wmsg.spool", QtInfoMsg)

constexpr QLatin1String kRecord("json");
constexpr QLatin1String kReason("txt");
constexpr int kIdDigits = 20;

QLatin1String nameOf(RecordBoxes::Box box)
{
    return box == RecordBoxes::Box::Out ? "out"_L1 : "in"_L1;
}

QString nameOf(RecordId id, QLatin1String ending)
{
    return QString::number(id).rightJustified(kIdDigits, u'0') + u'.' + ending;
}

/// The record that a file of a box belongs to; 0 for a file that is none of ours.
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

bool isFile(const QString &path)
{
    struct stat state = {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
}

void logProblem(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kSpool, "%ls", qUtf16Printable(problem));
    }
}

} // namespace

RecordBoxes::RecordBoxes(QString folder, Layout layout)
    : m_folder(std::move(folder)), m_layout(std::move(layout))
{
}

QString RecordBoxes::open()
{
    const QStringList folders{folderOf(Box::Out), folderOf(Box::In), keptFolder()};
    for (const QString &folder : QStringList{m_folder} + folders) {
        QString problem = usePrivateFolder(folder);
        problem = problem.isEmpty() && folder == m_folder ? lockFolder(folder, m_lock) : problem;
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    for (const QString &folder : folders) {
        countFrom(folder);
    }
    removeUnfinishedIn(keptFolder());
    return QString();
}

std::vector<RecordBoxes::Stored> RecordBoxes::restore(Box box)
{
    std::vector<Stored> restored;
    for (const QString &name : filesIn(folderOf(box))) {
        const RecordId id = idOf(name);
        if (id == 0 || name != nameOf(id, kRecord)) {
            continue;
        }
        QString reason;
        const auto record = readRecord(recordPath(box, id), m_layout.format, reason);
        if (record) {
            restored.push_back({id, *record});
        } else {
            setAside(box, id, reason);
        }
    }
    return restored;
}

RecordId RecordBoxes::nextId()
{
    // A number from the time is above those of records that have left no trace.
    const auto fromTime = static_cast<RecordId>(currentTime()) * 1000;
    m_lastId = std::max(m_lastId + 1, fromTime);
    return m_lastId;
}

QString RecordBoxes::write(Box box, RecordId id, const QJsonObject &record) const
{
    return writeRecord(recordPath(box, id), record, m_layout.format);
}

QString RecordBoxes::remove(Box box, RecordId id) const
{
    const QString problem = removeDurably(recordPath(box, id));
    return problem.isEmpty() ? removeFiles(box, id) : problem;
}

QString RecordBoxes::removeFiles(Box box, RecordId id) const
{
    for (size_t kind = 0; kind < m_layout.files.size(); ++kind) {
        QString problem =
            hasFile(box, id, kind) ? removeDurably(filePath(box, id, kind)) : QString();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return QString();
}

QString RecordBoxes::keep(Box box, RecordId id, const QString &reason)
{
    forgetOldestKept();
    const QString stem = keptFolder() + u'/' + nameOf(box) + u'-';
    const QByteArray text = reason.toUtf8() + '\n';
    qCWarning(kSpool, "%s %llu is kept aside: %ls", m_layout.noun, id, qUtf16Printable(reason));
    // On a full disk the files can be moved, and the reason stands in the log alone.
    logProblem(writeDurably(stem + nameOf(id, kReason), text));
    for (size_t kind = 0; kind < m_layout.files.size(); ++kind) {
        QString problem = hasFile(box, id, kind)
            ? renameDurably(filePath(box, id, kind),
                            stem + nameOf(id, m_layout.files[kind].whenKept))
            : QString();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return QString();
}

void RecordBoxes::setAside(Box box, RecordId id, const QString &reason)
{
    const QString problem = keep(box, id, reason);
    const QString kept = keptFolder() + u'/' + nameOf(box) + u'-' + nameOf(id, kRecord);
    logProblem(problem.isEmpty() ? renameDurably(recordPath(box, id), kept) : problem);
}

QString RecordBoxes::keptFolder() const
{
    return m_folder + u"/kept"_s;
}

QString RecordBoxes::filePath(Box box, RecordId id, size_t kind) const
{
    return folderOf(box) + u'/' + nameOf(id, m_layout.files[kind].inBox);
}

bool RecordBoxes::hasFile(Box box, RecordId id, size_t kind) const
{
    return isFile(filePath(box, id, kind));
}

QString RecordBoxes::folderOf(Box box) const
{
    return m_folder + u'/' + nameOf(box);
}

QString RecordBoxes::recordPath(Box box, RecordId id) const
{
    return folderOf(box) + u'/' + nameOf(id, kRecord);
}

void RecordBoxes::countFrom(const QString &folder)
{
    for (const QString &name : filesIn(folder)) {
        m_lastId = std::max({m_lastId, idOf(name), keptIdOf(name)});
    }
}

void RecordBoxes::removeUnfinished(Box box) const
{
    removeUnfinishedIn(folderOf(box));
}

void RecordBoxes::removeUnfinishedIn(const QString &folder) const
{
    for (const QString &name : filesIn(folder)) {
        const bool isOurs = idOf(name) != 0 || keptIdOf(name) != 0;
        if (isOurs && isTemporaryName(name)) {
            logProblem(removeDurably(folder + u'/' + name));
        }
    }
}

void RecordBoxes::removeStrays(Box box) const
{
    for (const QString &name : filesIn(folderOf(box))) {
        const RecordId id = idOf(name);
        const bool isUnfinished = isTemporaryName(name) || name.endsWith(".tmp"_L1);
        // A record that could not even be set aside keeps its files.
        const bool hasRecord = id != 0 && QFile::exists(recordPath(box, id));
        if (id != 0 && (isUnfinished || !hasRecord)) {
            qCInfo(kSpool, "%ls is what an unfinished step left, and removed",
                   qUtf16Printable(name));
            logProblem(removeDurably(folderOf(box) + u'/' + name));
        }
    }
}

void RecordBoxes::forgetOldestKept() const
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
        qCWarning(kSpool, "%s %llu was kept aside, and makes room for others", m_layout.noun,
                  oldest);
        for (const QString &name : names) {
            if (keptIdOf(name) == oldest) {
                logProblem(removeDurably(keptFolder() + u'/' + name));
            }
        }
    }
}

} // namespace wmsg::service
