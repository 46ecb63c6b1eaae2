// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/engine_log_p.h"
#include "platform/engine/store_p.h"
#include "platform/engine/store_transaction_p.h"

#include <QtCore/QAtomicInt>
#include <QtCore/QFile>
#include <QtSql/QSqlError>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The store as a whole: opening, its tables, and how statements are run.

namespace wmsg::engine {

namespace {

constexpr int kApplicationId = 0x776D7367; // "wmsg"
constexpr int kBusyMilliseconds = 10000;

// What a device has is brought up to date step by step: never change a step that was released.
const QList<QStringList> &migrations()
{
    static const QList<QStringList> steps = {
        // Version 1
        {
            QStringLiteral("CREATE TABLE store (one INTEGER PRIMARY KEY CHECK (one = 1), "
                           "last_id INTEGER NOT NULL, last_file INTEGER NOT NULL)"),
            QStringLiteral("INSERT INTO store VALUES (1, 0, 0)"),
            QStringLiteral(
                "CREATE TABLE message (id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 65534), "
                "folder INTEGER NOT NULL, sender TEXT, recipients TEXT, cc TEXT, bcc TEXT, "
                "subject TEXT, app_id TEXT, reply_app_id TEXT, aux_app_info TEXT, "
                "reserved INTEGER NOT NULL, priority INTEGER NOT NULL, class INTEGER NOT NULL, "
                "expiry INTEGER NOT NULL, date INTEGER NOT NULL, delivery_report INTEGER NOT NULL, "
                "read_report INTEGER NOT NULL, size INTEGER NOT NULL, "
                "delivery_time INTEGER NOT NULL, forwardable INTEGER NOT NULL, presentation BLOB, "
                "content_type BLOB, file INTEGER UNIQUE, file_size INTEGER NOT NULL, "
                "file_hash BLOB, result INTEGER NOT NULL DEFAULT 0, error_text BLOB, "
                "status INTEGER NOT NULL DEFAULT 0, status_text BLOB, "
                "status_reserved INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral(
                "CREATE TABLE part (message INTEGER NOT NULL REFERENCES message ON DELETE CASCADE, "
                "position INTEGER NOT NULL, mime_type BLOB, content_id BLOB, "
                "content_location BLOB, file_name BLOB, header_text BLOB, charset BLOB, "
                "start INTEGER NOT NULL, size INTEGER NOT NULL, "
                "PRIMARY KEY (message, position)) WITHOUT ROWID"),
        },
        // Version 2: folders are listed without reading all messages.
        {QStringLiteral("CREATE INDEX message_by_folder ON message (folder, id)")},
    };
    return steps;
}

QString newConnectionName()
{
    static QAtomicInt count;
    return QStringLiteral("wmsg-engine-%1").arg(count.fetchAndAddRelaxed(1));
}

/// The MMS_ENG_RESULT_E for a result code of SQLite.
int resultOfSqlite(int code)
{
    switch (code & 0xFF) {
    case 3: // not permitted
    case 8: // read-only
    case 14: // cannot be opened
        return MMS_ENG_READ_ONLY;
    case 5: // busy
    case 6: // locked
        return MMS_ENG_BUSY;
    case 11: // corrupt
    case 26: // not a database
        return MMS_ENG_CORRUPT;
    case 13:
        return MMS_ENG_FULL;
    default:
        return MMS_ENG_FAIL;
    }
}

/// Makes one folder; it is open to all users, as all folders of the storage tree are.
bool makeFolder(const QByteArray &path)
{
    if (::mkdir(path.constData(), 0777) == 0) {
        return ::chmod(path.constData(), 0777) == 0;
    }
    struct stat state;
    const bool isFolder =
        errno == EEXIST && ::stat(path.constData(), &state) == 0 && S_ISDIR(state.st_mode);
    errno = isFolder ? 0 : errno == EEXIST ? ENOTDIR : errno;
    return isFolder;
}

} // namespace

Store::Store(const QString &path) : m_path(path), m_connection(newConnectionName()) { }

Store::~Store()
{
    QSqlDatabase::removeDatabase(m_connection);
}

QSqlDatabase Store::database() const
{
    return QSqlDatabase::database(m_connection, false);
}

bool Store::isAt(const QString &path) const
{
    struct stat state;
    return path == m_path
        && ::stat(QFile::encodeName(m_path + QLatin1String("messages.db")).constData(), &state) == 0
        && state.st_dev == m_device && state.st_ino == m_inode;
}

int Store::open()
{
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE"))) {
        return refuse(MMS_ENG_NO_DRIVER,
                      QStringLiteral("Qt has no SQLite driver (QSQLITE) here; the package "
                                     "libqt6sql6-sqlite has it"));
    }
    if (const int result = makeFolders(); result != MMS_ENG_OK) {
        return result;
    }
    if (!isWritable()) {
        return refuseErrno(errno, QStringLiteral("the store %1 cannot be written").arg(m_path));
    }
    // One process at a time sets the store up.
    const FileLock lock(QFile::encodeName(m_path + QLatin1String("open.lock")));
    if (!lock.isLocked() || !m_files.open(QFile::encodeName(m_path))) {
        return refuseErrno(errno, QStringLiteral("the store %1 cannot be opened").arg(m_path));
    }
    int result = connect();
    if (result == MMS_ENG_OK) {
        result = setUp();
    }
    return result;
}

int Store::makeFolders() const
{
    const QByteArray path = QFile::encodeName(m_path);
    for (qsizetype at = path.indexOf('/', 1); at >= 0; at = path.indexOf('/', at + 1)) {
        if (!makeFolder(path.left(at))) {
            return refuseErrno(errno, QStringLiteral("the store %1 cannot be made").arg(m_path));
        }
    }
    return MMS_ENG_OK;
}

// Asked before SQLite is: opening a database that may only be read leaves files behind that may
// only be read as well, and spoil it for those who may write.
bool Store::isWritable() const
{
    const QByteArray path = QFile::encodeName(m_path);
    const auto mayWrite = [](const QByteArray &name) {
        return ::faccessat(AT_FDCWD, name.constData(), W_OK, AT_EACCESS) == 0;
    };
    return mayWrite(path) && (mayWrite(path + "messages.db") || errno == ENOENT);
}

int Store::connect()
{
    auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kBusyMilliseconds));
    const QString file = m_path + QLatin1String("messages.db");
    database.setDatabaseName(file);
    if (!database.open()) {
        return refuse(MMS_ENG_READ_ONLY,
                      QStringLiteral("the store %1 cannot be opened: %2")
                          .arg(m_path, database.lastError().databaseText()));
    }
    struct stat state;
    if (::stat(QFile::encodeName(file).constData(), &state) == 0) {
        m_device = state.st_dev;
        m_inode = state.st_ino;
    }
    return MMS_ENG_OK;
}

int Store::setUp()
{
    // The encoding is that of the records: no text is changed on its way.
    for (const QString &statement :
         {QStringLiteral("PRAGMA encoding = 'UTF-16le'"), QStringLiteral("PRAGMA foreign_keys = 1"),
          QStringLiteral("PRAGMA synchronous = FULL")}) {
        if (const int result = run(statement); result != MMS_ENG_OK) {
            return result;
        }
    }
    int result = MMS_ENG_OK;
    {
        QSqlQuery journal(database());
        result = run(journal, QStringLiteral("PRAGMA journal_mode = WAL"));
        if (result == MMS_ENG_OK
            && (!journal.next() || journal.value(0).toString() != QLatin1String("wal"))) {
            result = refuse(MMS_ENG_READ_ONLY,
                            QStringLiteral("the store %1 cannot keep a journal").arg(m_path));
        }
    }
    if (result == MMS_ENG_OK) {
        result = migrate();
    }
    return result == MMS_ENG_OK ? sweep() : result;
}

int Store::migrate()
{
    QSqlQuery query(database());
    const int result = run(query,
                           QStringLiteral("SELECT u.user_version, a.application_id, "
                                          "(SELECT count(*) FROM sqlite_master) "
                                          "FROM pragma_user_version u, pragma_application_id a"));
    if (result != MMS_ENG_OK || !query.next()) {
        return result == MMS_ENG_OK ? MMS_ENG_FAIL : result;
    }
    const int version = query.value(0).toInt();
    const int application = query.value(1).toInt();
    const bool isEmpty = query.value(2).toInt() == 0;
    query.finish();
    if (application != kApplicationId && !(isEmpty && application == 0)) {
        return refuse(MMS_ENG_CORRUPT,
                      QStringLiteral("%1messages.db is no message store").arg(m_path));
    }
    if (version > migrations().size()) {
        return refuse(MMS_ENG_NEWER,
                      QStringLiteral("the store %1 has version %2, and this engine knows %3")
                          .arg(m_path)
                          .arg(version)
                          .arg(migrations().size()));
    }
    return version == migrations().size() ? MMS_ENG_OK : migrateFrom(version);
}

int Store::migrateFrom(int version)
{
    Transaction transaction(*this);
    int result = transaction.begin();
    for (int step = version; result == MMS_ENG_OK && step < migrations().size(); ++step) {
        const QStringList &statements = migrations().at(step);
        for (auto statement = statements.begin();
             result == MMS_ENG_OK && statement != statements.end(); ++statement) {
            result = run(*statement);
        }
    }
    if (result == MMS_ENG_OK) {
        result = run(QStringLiteral("PRAGMA user_version = %1").arg(migrations().size()));
    }
    if (result == MMS_ENG_OK) {
        result = run(QStringLiteral("PRAGMA application_id = %1").arg(kApplicationId));
    }
    return result == MMS_ENG_OK ? transaction.commit() : result;
}

// Writers hold the database from before their file until behind their commit, so that a file
// without a row is left over as soon as nobody writes. Somebody who writes now is no reason to
// wait.
int Store::sweep()
{
    run(QStringLiteral("PRAGMA busy_timeout = 0"));
    m_mayBeBusy = true;
    Transaction transaction(*this);
    int result = transaction.begin();
    m_mayBeBusy = false;
    QSet<qint64> known;
    if (result == MMS_ENG_OK) {
        result = knownFiles(known);
    }
    if (result == MMS_ENG_OK) {
        m_files.sweep(known);
    }
    transaction.end();
    run(QStringLiteral("PRAGMA busy_timeout = %1").arg(kBusyMilliseconds));
    return result == MMS_ENG_BUSY ? MMS_ENG_OK : result;
}

int Store::knownFiles(QSet<qint64> &numbers)
{
    QSqlQuery query(database());
    const int result =
        run(query, QStringLiteral("SELECT file FROM message WHERE file IS NOT NULL"));
    while (result == MMS_ENG_OK && query.next()) {
        numbers.insert(query.value(0).toLongLong());
    }
    return result;
}

int Store::run(QSqlQuery &query, const QString &statement, const QVariantList &values)
{
    query.setForwardOnly(true);
    bool isDone = query.prepare(statement);
    if (isDone) {
        for (const QVariant &value : values) {
            query.addBindValue(value);
        }
        isDone = query.exec();
    }
    return isDone ? int(MMS_ENG_OK) : refuseSql(query.lastError());
}

int Store::run(const QString &statement, const QVariantList &values)
{
    QSqlQuery query(database());
    return run(query, statement, values);
}

int Store::runOn(unsigned short id, const QString &statement, const QVariantList &values)
{
    QSqlQuery query(database());
    const int result = run(query, statement, values);
    return result == MMS_ENG_OK && query.numRowsAffected() != 1 ? refuseUnknown(id) : result;
}

int Store::refuseSql(const QSqlError &error)
{
    const int result = resultOfSqlite(error.nativeErrorCode().toInt());
    if (result == MMS_ENG_BUSY && m_mayBeBusy) {
        return result;
    }
    const QString what = result == MMS_ENG_BUSY
        ? QStringLiteral("others held the store %1 for too long: %2")
        : QStringLiteral("the store %1: %2");
    return refuse(result, what.arg(m_path, error.databaseText()));
}

int Store::refuseUnknown(unsigned short id)
{
    return refuse(MMS_ENG_NO_MESSAGE, QStringLiteral("there is no message %1").arg(id));
}

int Store::Transaction::begin()
{
    const int result = m_store.run(QStringLiteral("BEGIN IMMEDIATE"));
    m_isOpen = result == MMS_ENG_OK;
    return result;
}

int Store::Transaction::commit()
{
    const int result = m_store.run(QStringLiteral("COMMIT"));
    if (result == MMS_ENG_OK) {
        m_isOpen = false;
    }
    return result;
}

void Store::Transaction::end()
{
    if (m_isOpen) {
        m_isOpen = false;
        QSqlQuery(m_store.database()).exec(QStringLiteral("ROLLBACK"));
    }
}

} // namespace wmsg::engine
