// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/spool.h"

#include "services/common/durable_file.h"
#include "services/common/record_file.h"
#include "services/mmsproxyd/retry_schedule.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <array>
#include <set>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kSpool, "wmsg.spool", QtInfoMsg)

constexpr RecordFormat kFormat{1, Spool::kLongestRecord}; // in files: readers refuse what is above
constexpr QLatin1String kRecord("json");
constexpr QLatin1String kReason("txt");
constexpr int kIdDigits = 20;

struct PartName {
    Spool::Part part;
    QLatin1String inBox;
    QLatin1String whenKept;
};
constexpr std::array<PartName, 4> kParts{{
    {Spool::Part::Mail, QLatin1String("mail"), QLatin1String("mail")},
    {Spool::Part::Pdu, QLatin1String("pdu"), QLatin1String("pdu")},
    {Spool::Part::Notice, QLatin1String("note"), QLatin1String("note")},
    {Spool::Part::Fetched, QLatin1String("part"), QLatin1String("pdu")},
}};

QLatin1String nameOf(Spool::Box box)
{
    return box == Spool::Box::Out ? "out"_L1 : "in"_L1;
}

QString nameOf(MessageId id, QLatin1String suffix)
{
    return QString::number(id).rightJustified(kIdDigits, u'0') + u'.' + suffix;
}

/// The message that a file of a box belongs to; 0 for a file that is none of ours.
MessageId idOf(const QString &fileName)
{
    bool isNumber = false;
    const MessageId id = QStringView(fileName).left(kIdDigits).toULongLong(&isNumber);
    const bool isOurs = isNumber && fileName.size() > kIdDigits && fileName[kIdDigits] == u'.'
        && fileName[0].isDigit() && id <= std::numeric_limits<qint64>::max() / 2;
    return isOurs ? id : 0;
}

/// The same for a file of kept/, whose name begins with that of its box.
MessageId keptIdOf(const QString &fileName)
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

Spool::Spool(QString folder) : m_folder(std::move(folder)) { }

QString Spool::open()
{
    for (const QString &folder : {m_folder, folderOf(Box::Out), folderOf(Box::In), handedFolder(),
                                  returnedFolder(), keptFolder()}) {
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
        const MessageId id = idOf(name);
        if (id == 0 || name != nameOf(id, kRecord)) {
            continue;
        }
        QString reason;
        const auto record = readRecord(recordPath(box, id), kFormat, reason);
        if (record) {
            restored.push_back({id, *record});
        } else {
            setAside(box, id, reason);
        }
    }
    removeStrays(box);
    return restored;
}

MessageId Spool::nextId()
{
    // A number from the time is above those of messages that have left no trace.
    const auto fromTime = static_cast<MessageId>(currentTime()) * 1000;
    m_lastId = std::max(m_lastId + 1, fromTime);
    return m_lastId;
}

QString Spool::write(Box box, MessageId id, const QJsonObject &record) const
{
    return writeRecord(recordPath(box, id), record, kFormat);
}

QString Spool::remove(Box box, MessageId id) const
{
    const QString problem = removeDurably(recordPath(box, id));
    return problem.isEmpty() ? removeFiles(box, id) : problem;
}

QString Spool::removeFiles(Box box, MessageId id) const
{
    for (const PartName &name : kParts) {
        QString problem =
            has(box, id, name.part) ? removeDurably(path(box, id, name.part)) : QString();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return QString();
}

QString Spool::keep(Box box, MessageId id, const QString &reason)
{
    forgetOldestKept();
    const QString stem = keptFolder() + u'/' + nameOf(box) + u'-';
    const QByteArray text = reason.toUtf8() + '\n';
    qCWarning(kSpool, "message %llu is kept aside: %ls", id, qUtf16Printable(reason));
    // On a full disk the files can be moved, and the reason stands in the log alone.
    logProblem(writeDurably(stem + nameOf(id, kReason), text));
    for (const PartName &name : kParts) {
        QString problem = has(box, id, name.part)
            ? renameDurably(path(box, id, name.part), stem + nameOf(id, name.whenKept))
            : QString();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return QString();
}

void Spool::setAside(Box box, MessageId id, const QString &reason)
{
    const QString problem = keep(box, id, reason);
    const QString kept = keptFolder() + u'/' + nameOf(box) + u'-' + nameOf(id, kRecord);
    logProblem(problem.isEmpty() ? renameDurably(recordPath(box, id), kept) : problem);
}

QString Spool::path(Box box, MessageId id, Part part) const
{
    const auto *name = std::find_if(kParts.begin(), kParts.end(),
                                    [part](const PartName &one) { return one.part == part; });
    return folderOf(box) + u'/' + nameOf(id, name->inBox);
}

bool Spool::has(Box box, MessageId id, Part part) const
{
    return isFile(path(box, id, part));
}

QString Spool::handedFolder() const
{
    return m_folder + u"/handed"_s;
}

QString Spool::returnedFolder() const
{
    return m_folder + u"/returned"_s;
}

QString Spool::keptFolder() const
{
    return m_folder + u"/kept"_s;
}

QString Spool::folderOf(Box box) const
{
    return m_folder + u'/' + nameOf(box);
}

QString Spool::recordPath(Box box, MessageId id) const
{
    return folderOf(box) + u'/' + nameOf(id, kRecord);
}

void Spool::countFrom(const QString &folder)
{
    for (const QString &name : filesIn(folder)) {
        m_lastId = std::max({m_lastId, idOf(name), keptIdOf(name)});
        if (folder == keptFolder() && isTemporaryName(name)) {
            logProblem(removeDurably(folder + u'/' + name));
        }
    }
}

void Spool::removeStrays(Box box) const
{
    for (const QString &name : filesIn(folderOf(box))) {
        const MessageId id = idOf(name);
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

void Spool::forgetOldestKept() const
{
    const QStringList names = filesIn(keptFolder());
    std::set<MessageId> ids;
    for (const QString &name : names) {
        ids.insert(keptIdOf(name));
    }
    ids.erase(0);
    while (ids.size() >= kMostKept) {
        const MessageId oldest = *ids.begin();
        ids.erase(ids.begin());
        qCWarning(kSpool, "message %llu was kept aside, and makes room for others", oldest);
        for (const QString &name : names) {
            if (keptIdOf(name) == oldest) {
                logProblem(removeDurably(keptFolder() + u'/' + name));
            }
        }
    }
}

} // namespace wmsg::proxy
