// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"

#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>
#include <QtTest/QtTest>

#include <cerrno>
#include <dlfcn.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/// What is asked of the system below the store, and what it is made to answer: the functions below
/// stand in front of those of the C library.
namespace system_calls {

QStringList asked;
QString refusedCall; // with the name of the file, for example "write 1.part"
int refusal = 0;

QString fileName(int fd)
{
    char name[4096];
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(fd);
    const ssize_t length = readlink(link.constData(), name, sizeof name);
    const QString path = QString::fromLocal8Bit(name, int(qMax<ssize_t>(length, 0)));
    return path.contains("/mms/engine/") ? path.section("/mms/engine/", 1) : QString();
}

/// Notes a call; false when it is to be refused, with errno set.
bool allow(const char *call, int fd)
{
    const QString name = fileName(fd);
    if (name.isEmpty()) {
        return true;
    }
    const QString line = QLatin1String(call) + ' ' + name;
    if (asked.isEmpty() || asked.last() != line) {
        asked += line;
    }
    if (line == refusedCall) {
        errno = refusal;
        return false;
    }
    return true;
}

template <typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace system_calls

extern "C" {

Q_DECL_EXPORT ssize_t write(int fd, const void *bytes, size_t size)
{
    return system_calls::allow("write", fd)
        ? system_calls::next<decltype(&write)>("write")(fd, bytes, size)
        : -1;
}
Q_DECL_EXPORT ssize_t pwrite64(int fd, const void *bytes, size_t size, off64_t offset)
{
    return system_calls::allow("write", fd)
        ? system_calls::next<decltype(&pwrite64)>("pwrite64")(fd, bytes, size, offset)
        : -1;
}
Q_DECL_EXPORT int fsync(int fd)
{
    return system_calls::allow("sync", fd) ? system_calls::next<decltype(&fsync)>("fsync")(fd) : -1;
}
Q_DECL_EXPORT int fdatasync(int fd)
{
    return system_calls::allow("sync", fd)
        ? system_calls::next<decltype(&fdatasync)>("fdatasync")(fd)
        : -1;
}

} // extern "C"

namespace {

using Id = unsigned short;

/// Root may write everywhere; without this right it is a user like others.
class WithoutOverride {
public:
    WithoutOverride() { set(false); }
    ~WithoutOverride() { set(true); }
    WithoutOverride(const WithoutOverride &) = delete;
    WithoutOverride &operator=(const WithoutOverride &) = delete;

private:
    static void set(bool isAllowed)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[2] = {};
        if (syscall(SYS_capget, &header, data) != 0) {
            qFatal("capget");
        }
        const __u32 bit = 1U << CAP_DAC_OVERRIDE & data[0].permitted;
        data[0].effective = isAllowed ? data[0].effective | bit : data[0].effective & ~bit;
        if (syscall(SYS_capset, &header, data) != 0) {
            qFatal("capset");
        }
    }
};

/// What storing one message gives: the result, and the one line of the log.
QString stored(const StorageRoot &root, Id folder = 1)
{
    const HeaderRecord header;
    BodyRecord body("text/plain");
    body.add("text/plain", "text");
    Id id = 7;
    LogCapture log;
    const int result = root->CreateMMS(folder, &id, &header, &body);
    if (result == MMS_ENG_OK) {
        return QString("id %1").arg(id);
    }
    if (id != 7 || log.lines().size() != 1) {
        return "id or log: " + log.text();
    }
    return QString("%1 %2").arg(result).arg(log.text().trimmed());
}

void reopen(const StorageRoot &root)
{
    const StorageRoot elsewhere;
    QCOMPARE(stored(elsewhere), QString("id 1"));
    root.use();
}

void overwrite(const QString &path, qint64 offset, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(offset));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

class TestStoreRefusals : public QObject {
    Q_OBJECT

private slots:
    void orderOfWriting();
    void full_data();
    void full();
    void noFolder();
    void readOnlyFolder();
    void readOnlyDatabase();
    void noDatabase();
    void otherDatabase();
    void damagedDatabase();
    void busy();
};

// The bytes are safe before the row that names them.
void TestStoreRefusals::orderOfWriting()
{
    const StorageRoot root;
    QCOMPARE(stored(root), QString("id 1"));
    system_calls::asked.clear();
    QCOMPARE(stored(root), QString("id 2"));
    QCOMPARE(system_calls::asked,
             (QStringList{"write parts/2.part", "sync parts/2.part", "sync parts",
                          "write messages.db-wal", "sync messages.db-wal"}));
}

void TestStoreRefusals::full_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("refused");
    QTest::newRow("bytes of a part") << "write parts/2.part" << ENOSPC
                                     << "4 MMS engine: the store %1 cannot keep a body: No space "
                                        "left on device";
    QTest::newRow("quota") << "write parts/2.part" << EDQUOT
                           << "4 MMS engine: the store %1 cannot keep a body: Disk quota exceeded";
    QTest::newRow("late write error")
        << "sync parts/2.part" << EIO
        << "0 MMS engine: the store %1 cannot keep a body: Input/output error";
    QTest::newRow("name of a part") << "sync parts" << ENOSPC
                                    << "4 MMS engine: the store %1 cannot keep a body: No space "
                                       "left on device";
    QTest::newRow("database") << "write messages.db-wal" << ENOSPC
                              << "4 MMS engine: the store %1: database or disk is full";
    QTest::newRow("database, late")
        << "sync messages.db-wal" << EIO << "0 MMS engine: the store %1: disk I/O error";
}

void TestStoreRefusals::full()
{
    QFETCH(QString, call);
    QFETCH(int, error);
    QFETCH(QString, refused);
    const StorageRoot root;
    QCOMPARE(stored(root), QString("id 1"));
    system_calls::refusedCall = call;
    system_calls::refusal = error;
    QCOMPARE(stored(root), refused.arg(root.store()));
    system_calls::refusedCall.clear();
    if (call.contains("parts")) {
        QCOMPARE(root.partFiles(), QStringList{"1.part"}); // half a file takes no room
    }
    // Nothing has changed, and there is room again.
    QList<Id> ids;
    QCOMPARE(root->ListMMS(1, &ids), int(MMS_ENG_OK));
    QCOMPARE(ids, QList<Id>{1});
    QCOMPARE(stored(root), QString("id 2"));
    reopen(root);
    QStringList problems;
    QCOMPARE(root->CheckStore(&problems), int(MMS_ENG_OK));
    QCOMPARE(problems, QStringList());
    QCOMPARE(root.partFiles(), (QStringList{"1.part", "2.part"}));
}

void TestStoreRefusals::noFolder()
{
    const StorageRoot root;
    QFile file(root.path() + "/mms");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(stored(root),
             "5 MMS engine: the store " + root.store() + " cannot be made: Not a directory");
}

void TestStoreRefusals::readOnlyFolder()
{
    const StorageRoot root;
    const WithoutOverride user;
    QCOMPARE(chmod(root.path().toLocal8Bit().constData(), 0555), 0);
    QCOMPARE(stored(root),
             "5 MMS engine: the store " + root.store() + " cannot be made: Permission denied");
    QCOMPARE(chmod(root.path().toLocal8Bit().constData(), 0755), 0);
    QCOMPARE(stored(root), QString("id 1"));
    reopen(root);
    QCOMPARE(chmod(root.store().toLocal8Bit().constData(), 0555), 0);
    QCOMPARE(stored(root),
             "5 MMS engine: the store " + root.store() + " cannot be written: Permission denied");
    QCOMPARE(chmod(root.store().toLocal8Bit().constData(), 0755), 0);
    QCOMPARE(stored(root), QString("id 2"));
}

void TestStoreRefusals::readOnlyDatabase()
{
    const StorageRoot root;
    QCOMPARE(stored(root), QString("id 1"));
    reopen(root);
    const WithoutOverride user;
    const QByteArray path = (root.store() + "messages.db").toLocal8Bit();
    QCOMPARE(chmod(path.constData(), 0444), 0);
    QCOMPARE(stored(root),
             "5 MMS engine: the store " + root.store() + " cannot be written: Permission denied");
    QCOMPARE(chmod(path.constData(), 0644), 0);
    QCOMPARE(stored(root), QString("id 2"));
}

void TestStoreRefusals::noDatabase()
{
    const StorageRoot root;
    QVERIFY(QDir().mkpath(root.store()));
    QFile file(root.store() + "messages.db");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'x'));
    file.close();
    QCOMPARE(stored(root), "6 MMS engine: the store " + root.store() + ": file is not a database");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray(5000, 'x')); // it stays as it is
}

void TestStoreRefusals::otherDatabase()
{
    const StorageRoot root;
    QVERIFY(QDir().mkpath(root.store()));
    {
        auto other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(root.store() + "messages.db");
        QVERIFY(other.open());
        QVERIFY(QSqlQuery(other).exec("CREATE TABLE recipe (name TEXT)"));
    }
    QSqlDatabase::removeDatabase("other");
    QCOMPARE(stored(root), "6 MMS engine: " + root.store() + "messages.db is no message store");
}

void TestStoreRefusals::damagedDatabase()
{
    const StorageRoot root;
    for (int i = 1; i < 100; ++i) {
        QCOMPARE(stored(root), QString("id %1").arg(i));
    }
    reopen(root); // the journal is in the database then
    QVERIFY(!QFile::exists(root.store() + "messages.db-wal"));
    overwrite(root.store() + "messages.db", 4096, QByteArray(8 * 4096, '\xA5'));
    HeaderRecord header;
    LogCapture log;
    QCOMPARE(root->ReadMMSHdr(50, &header), int(MMS_ENG_CORRUPT));
    QCOMPARE(log.lines(),
             QStringList{"MMS engine: the store " + root.store()
                         + ": database disk image is malformed\n"});
}

// Writers wait ten seconds for another one; here the wait is cut short. Readers do not wait.
void TestStoreRefusals::busy()
{
    const StorageRoot root;
    QCOMPARE(stored(root), QString("id 1"));
    const QStringList engines = QSqlDatabase::connectionNames().filter("wmsg-engine-");
    QCOMPARE(engines.size(), 1); // of the store that is open
    {
        QSqlQuery wait(QSqlDatabase::database(engines.first()));
        QVERIFY(wait.exec("PRAGMA busy_timeout") && wait.next());
        QCOMPARE(wait.value(0).toInt(), 10000);
        QVERIFY(wait.exec("PRAGMA busy_timeout = 1"));
        auto other = QSqlDatabase::addDatabase("QSQLITE", "writer");
        other.setDatabaseName(root.store() + "messages.db");
        QVERIFY(other.open());
        QSqlQuery writer(other);
        QVERIFY(writer.exec("BEGIN IMMEDIATE"));
        const QString line =
            "MMS engine: others held the store " + root.store() + " for too long: ";
        QCOMPARE(stored(root), "8 " + line + "database is locked");
        const HeaderRecord header;
        BodyRecord body("text/plain");
        body.add("text/plain", "other");
        const MMS_MOMT_STATUS_T status = {1, nullptr, 0, nullptr, 0};
        LogCapture log;
        QCOMPARE(root->UpdateMMS(2, 1, &header, &body), int(MMS_ENG_BUSY));
        QCOMPARE(root->DeleteMMS(1), int(MMS_ENG_BUSY));
        QCOMPARE(root->MoveMMS(1, 2), int(MMS_ENG_BUSY));
        QCOMPARE(root->SetMMSMoMtStatus(1, &status), int(MMS_ENG_BUSY));
        QCOMPARE(log.lines(), QStringList(4, line + "database is locked\n"));
        log.clear();
        HeaderRecord readHeader;
        BodyRecord readBody;
        Id folder = 0;
        QCOMPARE(root->ReadMMSHdr(1, &readHeader), int(MMS_ENG_OK));
        QCOMPARE(root->ReadMMSBody(1, &readBody), int(MMS_ENG_OK));
        QCOMPARE(readBody.bytes(0), QByteArray("text"));
        QCOMPARE(root->FindMMS(1, &folder), int(MMS_ENG_OK));
        QCOMPARE(folder, Id(1));
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(writer.exec("ROLLBACK"));
    }
    QSqlDatabase::removeDatabase("writer");
    QCOMPARE(stored(root), QString("id 2"));
    QCOMPARE(root.partFiles(), (QStringList{"1.part", "2.part"}));
}

QTEST_GUILESS_MAIN(TestStoreRefusals)
#include "tst_store_refusals.moc"
