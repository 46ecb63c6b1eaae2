// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/engine_log_p.h"
#include "platform/engine/store_p.h"
#include "platform/engine/store_transaction_p.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

// Folders, and the check of all that is in them.

namespace wmsg::engine {

namespace {

unsigned short numberOf(const QVariant &value)
{
    return static_cast<unsigned short>(value.toUInt());
}

} // namespace

int Store::folders(QList<unsigned short> &numbers)
{
    QSqlQuery query(database());
    const int result =
        run(query, QStringLiteral("SELECT DISTINCT folder FROM message ORDER BY folder"));
    while (result == MMS_ENG_OK && query.next()) {
        numbers += numberOf(query.value(0));
    }
    return result;
}

int Store::list(unsigned short folder, QList<unsigned short> &ids)
{
    QSqlQuery query(database());
    const int result =
        run(query, QStringLiteral("SELECT id FROM message WHERE folder = ? ORDER BY id"), {folder});
    while (result == MMS_ENG_OK && query.next()) {
        ids += numberOf(query.value(0));
    }
    return result;
}

int Store::count(unsigned short folder, unsigned int &number)
{
    QSqlQuery query(database());
    const int result =
        run(query, QStringLiteral("SELECT count(*) FROM message WHERE folder = ?"), {folder});
    if (result == MMS_ENG_OK && query.next()) {
        number = query.value(0).toUInt();
    }
    return result;
}

int Store::find(unsigned short id, unsigned short &folder)
{
    QSqlQuery query(database());
    const int result = run(query, QStringLiteral("SELECT folder FROM message WHERE id = ?"), {id});
    if (result != MMS_ENG_OK) {
        return result;
    }
    if (!query.next()) {
        return refuseUnknown(id);
    }
    folder = numberOf(query.value(0));
    return MMS_ENG_OK;
}

int Store::remove(unsigned short id)
{
    Transaction transaction(*this);
    qint64 file = 0;
    int result = transaction.begin();
    if (result == MMS_ENG_OK) {
        result = fileOf(id, file);
    }
    if (result == MMS_ENG_OK) {
        result = run(QStringLiteral("DELETE FROM message WHERE id = ?"), {id});
    }
    if (result == MMS_ENG_OK) {
        result = transaction.commit();
    }
    if (result == MMS_ENG_OK && file != 0) {
        m_files.discard({file});
    }
    return result;
}

int Store::move(unsigned short id, unsigned short folder)
{
    return runOn(id, QStringLiteral("UPDATE message SET folder = ? WHERE id = ?"), {folder, id});
}

int Store::check(QStringList &problems)
{
    QSqlQuery query(database());
    int result = run(query, QStringLiteral("PRAGMA integrity_check"));
    while (result == MMS_ENG_OK && query.next()) {
        if (const QString line = query.value(0).toString(); line != QLatin1String("ok")) {
            problems += QStringLiteral("database: %1").arg(line);
        }
    }
    query.finish();
    if (result == MMS_ENG_OK) {
        result = checkParts(problems);
    }
    if (result == MMS_ENG_OK) {
        result = checkFiles(problems);
    }
    return result == MMS_ENG_OK ? sweep() : result;
}

int Store::checkParts(QStringList &problems)
{
    QSqlQuery query(database());
    const int result =
        run(query,
            QStringLiteral("SELECT p.message, p.position + 1 FROM part p LEFT JOIN message m "
                           "ON m.id = p.message WHERE m.id IS NULL OR p.start < 0 OR p.size < 0 "
                           "OR p.start + p.size > m.file_size OR p.position >= ? "
                           "ORDER BY p.message, p.position"),
            {MMS_ENG_MAX_PARTS});
    while (result == MMS_ENG_OK && query.next()) {
        problems += QStringLiteral("message %1: part %2 lies outside of its message")
                        .arg(query.value(0).toString(), query.value(1).toString());
    }
    return result;
}

// Nobody removes a file between its row and its hash.
int Store::checkFiles(QStringList &problems)
{
    if (!m_files.hold(this)) {
        return refuseErrno(errno, QStringLiteral("the store %1 cannot be locked").arg(m_path));
    }
    QSqlQuery query(database());
    const int result = run(query,
                           QStringLiteral("SELECT id, file, file_size, file_hash FROM message "
                                          "WHERE file IS NOT NULL ORDER BY id"));
    while (result == MMS_ENG_OK && query.next()) {
        const QString problem = problemOfFile(
            query.value(1).toLongLong(), query.value(2).toLongLong(), query.value(3).toByteArray());
        if (!problem.isEmpty()) {
            problems += QStringLiteral("message %1: %2").arg(query.value(0).toString(), problem);
        }
    }
    query.finish();
    m_files.release(this);
    return result;
}

QString Store::problemOfFile(qint64 number, qint64 size, const QByteArray &hash) const
{
    const QString path = QFile::decodeName(m_files.path(number));
    const qint64 found = m_files.size(number);
    if (found < 0) {
        return QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    if (found != size) {
        return QStringLiteral("%1 has %2 bytes instead of %3").arg(path).arg(found).arg(size);
    }
    return m_files.hash(number) == hash ? QString()
                                        : QStringLiteral("%1 has other bytes").arg(path);
}

} // namespace wmsg::engine
