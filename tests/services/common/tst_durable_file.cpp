// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/durable_file.h"

#include <QtTest/QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace wmsg::service;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be opened");
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

/// No file of this process grows beyond so many bytes, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t size)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small = {size, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_before = {};
};

} // namespace

class TestDurableFile : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void writes()
    {
        QCOMPARE(writeDurably(at("a"), "first"), QString());
        QCOMPARE(contentOf(at("a")), QByteArray("first"));
        QCOMPARE(writeDurably(at("a"), "second"), QString());
        QCOMPARE(contentOf(at("a")), QByteArray("second"));
        QCOMPARE(writeDurably(at("empty"), QByteArrayView()), QString());
        QCOMPARE(contentOf(at("empty")), QByteArray());
        QCOMPARE(namesIn(m_folder->path()), (QStringList{"a", "empty"}));
        struct stat state = {};
        QCOMPARE(::stat(QFile::encodeName(at("a")).constData(), &state), 0);
        QCOMPARE(state.st_mode & 07777, mode_t(0600));
    }

    void aMissingFolderIsTold()
    {
        const QString problem = writeDurably(at("gone/a"), "x");
        QCOMPARE(problem, at("gone/a") + ": No such file or directory");
    }

    void aFullDiskLeavesWhatWasThere()
    {
        QCOMPARE(writeDurably(at("a"), "before"), QString());
        {
            const FullDisk full(1000);
            QCOMPARE(writeDurably(at("a"), QByteArray(2000, 'x')), at("a") + ": File too large");
        }
        QCOMPARE(contentOf(at("a")), QByteArray("before"));
        QCOMPARE(namesIn(m_folder->path()), QStringList{"a"});
    }

    void copies_data()
    {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<qint64>("limit");
        QTest::addColumn<bool>("isFine");
        const qsizetype mega = 1 << 20;
        QTest::newRow("nothing") << qsizetype(0) << qint64(0) << true;
        QTest::newRow("a byte, none allowed") << qsizetype(1) << qint64(0) << false;
        QTest::newRow("as much as is allowed") << qsizetype(1000) << qint64(1000) << true;
        QTest::newRow("a byte more") << qsizetype(1001) << qint64(1000) << false;
        QTest::newRow("several steps") << 3 * mega + 7 << qint64(3 * mega + 7) << true;
        QTest::newRow("several steps and a byte") << 3 * mega + 8 << qint64(3 * mega + 7) << false;
    }
    void copies()
    {
        QFETCH(qsizetype, size);
        QFETCH(qint64, limit);
        QFETCH(bool, isFine);
        QByteArray bytes(size, 'x');
        for (qsizetype i = 0; i < size; ++i) {
            bytes[i] = char(i * 7 + i / 256);
        }
        put(at("from"), bytes);
        const Descriptor from(::open(QFile::encodeName(at("from")).constData(), O_RDONLY));
        char two[2];
        const ssize_t before = ::read(from.get(), two, sizeof two);
        const QString problem = copyDurably(from.get(), at("to"), limit);
        QCOMPARE(::lseek(from.get(), 0, SEEK_CUR), off_t(before));
        if (isFine) {
            QCOMPARE(problem, QString());
            QVERIFY(contentOf(at("to")) == bytes);
        } else {
            QCOMPARE(
                problem,
                QString("%1: what is copied is larger than %2 bytes").arg(at("to")).arg(limit));
            QCOMPARE(namesIn(m_folder->path()), QStringList{"from"});
        }
    }

    void copiesFilesWithoutASize()
    {
        const Descriptor from(::open("/proc/self/status", O_RDONLY));
        QCOMPARE(copyDurably(from.get(), at("status"), 1 << 20), QString());
        QVERIFY(contentOf(at("status")).startsWith("Name:\ttst_durable"));
        QVERIFY(copyDurably(from.get(), at("small"), 10).endsWith("larger than 10 bytes"));
    }

    void copyingToAFullDiskLeavesNothing()
    {
        put(at("from"), QByteArray(3000, 'x'));
        const Descriptor from(::open(QFile::encodeName(at("from")).constData(), O_RDONLY));
        {
            const FullDisk full(1000);
            QCOMPARE(copyDurably(from.get(), at("to"), 5000), at("to") + ": File too large");
        }
        QCOMPARE(namesIn(m_folder->path()), QStringList{"from"});
    }

    void links()
    {
        put(at("a"), "x");
        QCOMPARE(linkDurably(at("a"), at("b")), QString());
        QCOMPARE(contentOf(at("b")), QByteArray("x"));
        QCOMPARE(linkDurably(at("a"), at("b")), at("b") + ": File exists");
        QCOMPARE(linkDurably(at("gone"), at("c")), at("c") + ": No such file or directory");
    }

    void renames()
    {
        QCOMPARE(makeFolderDurably(at("folder")), QString());
        put(at("a"), "new");
        put(at("folder/b"), "old");
        QCOMPARE(renameDurably(at("a"), at("folder/b")), QString());
        QCOMPARE(contentOf(at("folder/b")), QByteArray("new"));
        QVERIFY(!QFile::exists(at("a")));
        QCOMPARE(renameDurably(at("a"), at("c")), at("c") + ": No such file or directory");
    }

    void removes()
    {
        put(at("a"), "x");
        QCOMPARE(removeDurably(at("a")), QString());
        QVERIFY(!QFile::exists(at("a")));
        QCOMPARE(removeDurably(at("a")), QString());
        QCOMPARE(removeDurably(m_folder->path()), m_folder->path() + ": Is a directory");
    }

    void makesFolders()
    {
        QCOMPARE(makeFolderDurably(at("a/b/c")), QString());
        QVERIFY(QFileInfo(at("a/b/c")).isDir());
        QCOMPARE(makeFolderDurably(at("a/b/c")), QString());
        struct stat state = {};
        QCOMPARE(::stat(QFile::encodeName(at("a/b")).constData(), &state), 0);
        QCOMPARE(state.st_mode & 07777, mode_t(0700));
        put(at("file"), "x");
        QCOMPARE(makeFolderDurably(at("file")), at("file") + ": File exists");
        QCOMPARE(makeFolderDurably(at("file/below")), at("file/below") + ": Not a directory");
    }

    void temporaryNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isTemporary");
        QTest::newRow("made so") << "12.json.new-aB3xYz" << true;
        QTest::newRow("nothing in front") << ".new-aB3xYz" << false;
        QTest::newRow("too short") << "12.json.new-aB3xY" << false;
        QTest::newRow("too long") << "12.json.new-aB3xYzz" << false;
        QTest::newRow("another name") << "12.json" << false;
    }
    void temporaryNames()
    {
        QFETCH(QString, name);
        QTEST(isTemporaryName(name), "isTemporary");
    }

    void whatIsUnderConstructionHasATemporaryName()
    {
        const NewFile file(at("a"));
        QVERIFY(file.isOpen());
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
        QVERIFY(isTemporaryName(namesIn(m_folder->path()).first()));
    }

    void whatIsNotCommittedGoes()
    {
        {
            const NewFile file(at("a"));
            QVERIFY(writeAll(file.descriptor(), "half"));
        }
        QCOMPARE(namesIn(m_folder->path()), QStringList());
    }

private:
    QString at(const QString &name) { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestDurableFile)
#include "tst_durable_file.moc"
