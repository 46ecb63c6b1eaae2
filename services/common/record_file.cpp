// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/record_file.h"

#include "services/common/durable_file.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

constexpr QLatin1String kVersion("version");

/// What a folder must be for messages to be private and whole in it.
QString problemOfFolder(const QString &path)
{
    struct stat state = {};
    if (::stat(QFile::encodeName(path).constData(), &state) != 0) {
        return path + u": "_s + systemError();
    }
    if (state.st_uid != ::geteuid()) {
        return path + u": belongs to another user"_s;
    }
    return (state.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? path + u": others may write to it"_s
                                                      : QString();
}

/// The bytes of a record; nothing, with the reason, when it is no file that may be one.
std::optional<QByteArray> readBytes(const QString &path, qint64 longest, QString &reason)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(),
                                 O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat state = {};
    if (!file.isOpen() || ::fstat(file.get(), &state) != 0) {
        reason = u"the record cannot be opened: "_s + systemError();
        return std::nullopt;
    }
    if (!S_ISREG(state.st_mode) || state.st_size > longest) {
        reason = u"the record is no file, or too long"_s;
        return std::nullopt;
    }
    QByteArray bytes(state.st_size, Qt::Uninitialized);
    if (::pread(file.get(), bytes.data(), static_cast<size_t>(bytes.size()), 0) != bytes.size()) {
        reason = u"the record cannot be read: "_s + systemError();
        return std::nullopt;
    }
    return bytes;
}

std::optional<QJsonObject> parse(const QByteArray &bytes, int version, QString &reason)
{
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (!document.isObject()) {
        reason = u"the record is no JSON object: %1 at offset %2"_s.arg(error.errorString())
                     .arg(error.offset);
        return std::nullopt;
    }
    const QJsonObject record = document.object();
    if (record.value(kVersion).toInteger() != version) {
        reason = u"the record has version %1, and only %2 is known"_s
                     .arg(record.value(kVersion).toInteger())
                     .arg(version);
        return std::nullopt;
    }
    return record;
}

} // namespace

QString usePrivateFolder(const QString &path)
{
    const QString problem = makeFolderDurably(path);
    return problem.isEmpty() ? problemOfFolder(path) : problem;
}

QString lockFolder(const QString &folder, Descriptor &lock)
{
    const QString path = folder + u"/lock"_s;
    lock = Descriptor(::open(QFile::encodeName(path).constData(),
                             O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (lock.isOpen() && ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0) {
        return QString();
    }
    const bool isTaken = lock.isOpen() && errno == EWOULDBLOCK;
    return isTaken ? folder + u": another daemon uses it"_s : path + u": "_s + systemError();
}

std::optional<QJsonObject> readRecord(const QString &path, const RecordFormat &format,
                                      QString &reason)
{
    const auto bytes = readBytes(path, format.longest, reason);
    return bytes ? parse(*bytes, format.version, reason) : std::nullopt;
}

QString writeRecord(const QString &path, QJsonObject record, const RecordFormat &format)
{
    record.insert(kVersion, format.version);
    const QByteArray bytes = QJsonDocument(record).toJson();
    return bytes.size() <= format.longest ? writeDurably(path, bytes)
                                          : path + u": the record is too long"_s;
}

} // namespace wmsg::service
