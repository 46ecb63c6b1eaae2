// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/inbox.h"

#include "services/common/durable_file.h"
#include "services/mmsproxyd/retry_schedule.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLoggingCategory>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kInbox, "wmsg.inbox", QtInfoMsg)

using Kind = IncomingRecord::Kind;
using Stage = IncomingRecord::Stage;

void logProblem(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kInbox, "%ls", qUtf16Printable(problem));
    }
}

bool exists(const QString &path)
{
    struct stat state = {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0;
}

QString freshName()
{
    std::array<quint32, 4> random{};
    QRandomGenerator::system()->fillRange(random.data(), random.size());
    const QByteArray bytes(reinterpret_cast<const char *>(random.data()), sizeof random);
    return QString::fromLatin1(bytes.toHex()) + u".mail"_s;
}

/// A second name where the file system has such, else a copy.
QString linkOrCopy(const QString &from, const QString &to)
{
    QString problem = linkDurably(from, to);
    if (problem.isEmpty() || !exists(from) || exists(to)) {
        return problem;
    }
    const Descriptor file(
        ::open(QFile::encodeName(from).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    return file.isOpen() ? copyDurably(file.get(), to, std::numeric_limits<qint64>::max() - 1)
                         : problem;
}

bool isSame(const IncomingRecord &one, const IncomingRecord &other)
{
    if (one.kind != other.kind) {
        return false;
    }
    return one.kind == Kind::Message
        ? one.transactionId == other.transactionId && one.location == other.location
        : one.messageId == other.messageId && one.to == other.to && one.date == other.date;
}

} // namespace

void Inbox::restore()
{
    for (const Spool::Stored &stored : m_spool.restore(Spool::Box::In)) {
        QString reason;
        const auto record = IncomingRecord::fromJson(stored.record, reason);
        if (record) {
            restoreRecord(stored.id, *record);
        } else {
            m_spool.setAside(Spool::Box::In, stored.id, reason);
        }
    }
    emptyFolders();
    forgetOld(currentTime());
}

void Inbox::restoreRecord(MessageId id, IncomingRecord record)
{
    m_records[id] = record;
    if (record.handed.isEmpty() && record.stage == Stage::Over) {
        logProblem(m_spool.removeFiles(Spool::Box::In, id)); // when that was cut off
    }
    if (!record.handed.isEmpty()) {
        restoreHanded(id, std::move(record));
    } else if (record.kind == Kind::Message && record.stage == Stage::Ready
               && !m_spool.has(Spool::Box::In, id, Spool::Part::Mail)) {
        qCWarning(kInbox, "message %llu has lost its file, and is fetched again", id);
        record.stage = Stage::Announced;
        update(id, std::move(record));
    }
}

void Inbox::restoreHanded(MessageId id, IncomingRecord record)
{
    bool isDelivered = false;
    for (const QString &name : std::as_const(record.handed)) {
        const QString returned = m_spool.returnedFolder() + u'/' + name;
        // In one step: its session may still be there and remove it.
        const bool isBack =
            ::rename(QFile::encodeName(m_spool.handedFolder() + u'/' + name).constData(),
                     QFile::encodeName(returned).constData())
            == 0;
        isDelivered = isDelivered || (!isBack && errno == ENOENT && !exists(returned));
    }
    if (isDelivered) {
        delivered(id);
        return;
    }
    record.handed.clear();
    logProblem(save(id, record)); // else the names stay, and so do the files in returned/
}

void Inbox::emptyFolders() const
{
    std::set<QString> needed;
    for (const auto &[id, record] : m_records) {
        needed.insert(record.handed.begin(), record.handed.end());
    }
    for (const QString &folder : {m_spool.handedFolder(), m_spool.returnedFolder()}) {
        const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
        for (const QString &name : names) {
            if (needed.count(name) == 0) {
                logProblem(removeDurably(folder + u'/' + name));
            }
        }
    }
}

std::vector<MessageId> Inbox::ready() const
{
    return withStage(Kind::Message, Stage::Ready);
}

std::vector<MessageId> Inbox::reports() const
{
    return withStage(Kind::Report, Stage::Ready);
}

std::vector<MessageId> Inbox::withStage(Kind kind, Stage stage) const
{
    std::vector<MessageId> found;
    for (const auto &[id, record] : m_records) {
        if (record.kind == kind && record.stage == stage) {
            found.push_back(id);
        }
    }
    return found;
}

QString Inbox::appId(MessageId id) const
{
    const IncomingRecord *record = find(id);
    return record ? record->appId : QString();
}

QString Inbox::handOut(MessageId id, QString &path)
{
    const IncomingRecord *found = find(id);
    if (!found || found->kind != Kind::Message || found->stage != Stage::Ready) {
        return u"message %1 is not there to be handed out"_s.arg(id);
    }
    IncomingRecord record = *found;
    record.handed.append(freshName());
    const QString file = m_spool.handedFolder() + u'/' + record.handed.last();
    QString problem = linkOrCopy(m_spool.path(Spool::Box::In, id, Spool::Part::Mail), file);
    // The name is written down when its file is there: a name without a file is a confirmation.
    problem = problem.isEmpty() ? save(id, record) : problem;
    if (!problem.isEmpty()) {
        logProblem(removeDurably(file));
        return problem;
    }
    path = file;
    return QString();
}

bool Inbox::takeBack(MessageId id, const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const QString returned = m_spool.returnedFolder() + u'/' + name;
    // In one step: either the session removes the file, or it is taken back.
    if (::rename(QFile::encodeName(m_spool.handedFolder() + u'/' + name).constData(),
                 QFile::encodeName(returned).constData())
        != 0) {
        const bool isGone = errno == ENOENT;
        logProblem(isGone ? QString() : path + u": "_s + systemError());
        return !isGone;
    }
    const IncomingRecord *found = find(id);
    if (found && found->handed.contains(name)) {
        IncomingRecord record = *found;
        record.handed.removeAll(name);
        const QString problem = save(id, record);
        if (!problem.isEmpty()) {
            // The name stays, and the file in returned/ says that nobody confirmed.
            logProblem(problem);
            return true;
        }
    }
    logProblem(removeDurably(returned));
    return true;
}

void Inbox::delivered(MessageId id)
{
    const IncomingRecord *found = find(id);
    if (!found || found->kind != Kind::Message || found->stage != Stage::Ready) {
        return;
    }
    qCInfo(kInbox, "message %llu is delivered", id);
    IncomingRecord record = *found;
    record.stage = Stage::Over;
    record.handed.clear();
    // Not written down for now, it is still known by the file that is gone.
    update(id, std::move(record));
}

Inbox::Report Inbox::report(MessageId id) const
{
    const IncomingRecord *record = find(id);
    return record
        ? Report{record->messageId, record->to, QDateTime::fromMSecsSinceEpoch(record->date)}
        : Report{};
}

void Inbox::reportTold(MessageId id)
{
    const IncomingRecord *found = find(id);
    if (found && found->kind == Kind::Report) {
        IncomingRecord record = *found;
        record.stage = Stage::Over;
        update(id, std::move(record));
    }
}

std::vector<Inbox::Announcement> Inbox::announced() const
{
    std::vector<Announcement> found;
    for (const MessageId id : withStage(Kind::Message, Stage::Deferred)) {
        const IncomingRecord *record = find(id);
        found.push_back({record->location, record->transactionId});
    }
    return found;
}

const IncomingRecord *Inbox::find(MessageId id) const
{
    const auto found = m_records.find(id);
    return found == m_records.end() ? nullptr : &found->second;
}

MessageId Inbox::known(const IncomingRecord &like) const
{
    const auto found = std::find_if(m_records.begin(), m_records.end(),
                                    [&like](const auto &one) { return isSame(one.second, like); });
    return found == m_records.end() ? 0 : found->first;
}

MessageId Inbox::fetchable(const QString &uri) const
{
    const auto found = std::find_if(m_records.begin(), m_records.end(), [&uri](const auto &one) {
        const IncomingRecord &record = one.second;
        return record.kind == Kind::Message && record.stage != Stage::Over
            && record.location == uri;
    });
    return found == m_records.end() ? 0 : found->first;
}

bool Inbox::isFull() const
{
    const auto waiting = std::count_if(m_records.begin(), m_records.end(), [](const auto &one) {
        return one.second.stage != Stage::Over;
    });
    return waiting >= kMostWaiting;
}

QString Inbox::save(MessageId id, const IncomingRecord &record)
{
    QString problem = m_spool.write(Spool::Box::In, id, record.toJson());
    if (problem.isEmpty()) {
        m_records[id] = record;
    }
    return problem;
}

void Inbox::update(MessageId id, IncomingRecord record)
{
    const QString problem = save(id, record);
    const bool isOver = record.stage == Stage::Over;
    m_records[id] = std::move(record);
    logProblem(problem);
    if (isOver && problem.isEmpty()) {
        logProblem(m_spool.removeFiles(Spool::Box::In, id));
    }
}

void Inbox::forget(MessageId id)
{
    logProblem(m_spool.remove(Spool::Box::In, id));
    m_records.erase(id);
}

void Inbox::forgetOld(qint64 now)
{
    std::vector<MessageId> old;
    std::vector<MessageId> remembered;
    for (const auto &[id, record] : m_records) {
        const bool wasMissed = record.stage == Stage::Deferred && record.expires != 0;
        const bool isOver = record.stage == Stage::Over || wasMissed;
        if (isOver && now - std::max(record.expires, record.since) > kMemory) {
            old.push_back(id);
        } else if (record.stage == Stage::Over) {
            remembered.push_back(id);
        }
    }
    const auto tooMany = std::max<std::ptrdiff_t>(
        static_cast<std::ptrdiff_t>(remembered.size()) - kMostRemembered, 0);
    old.insert(old.end(), remembered.begin(), remembered.begin() + tooMany);
    for (const MessageId id : old) {
        forget(id);
    }
}

} // namespace wmsg::proxy
