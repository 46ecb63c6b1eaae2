// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include "tests/support/log_capture.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

constexpr char kRootVariable[] = "UVO_EXTRA_SYS_DATA_PATH";
constexpr int kCounts = 65536;

struct TypeRow {
    const char *name;
    unsigned short type;
    const char *dir;
    const char *extension;
};

// clang-format off
const TypeRow kTypes[] = {
    // name                                  type   directory    extension
    {"unknown",                              0,     "tmp/",      ".err"},
    {"text/plain",                           3,     "tmp/",      ".txt"},
    {"image/gif",                            29,    "tmp/",      ".gif"},
    {"image/jpeg",                           30,    "tmp/",      ".jpg"},
    {"image/png",                            32,    "tmp/",      ".png"},
    {"image/vnd.wap.wbmp",                   33,    "tmp/",      ".wbmp"},
    {"application/vnd.wap.mms-message",      62,    "mailfile/", ".mms"},
    {"image/bmp",                            83,    "tmp/",      ".bmp"},
    {"audio/imelody",                        92,    "tmp/",      ".imy"},
    {"audio/midi",                           95,    "tmp/",      ".mid"},
    {"audio/wav",                            100,   "tmp/",      ".wav"},
    {"video/mp4 gets the extension mpg",     112,   "tmp/",      ".mpg"},
    {"audio/mp3",                            121,   "tmp/",      ".mp3"},
    {"other types get the bare name",        7,     nullptr,     nullptr},
    {"image/tiff",                           31,    nullptr,     nullptr},
    {"above the table",                      164,   nullptr,     nullptr},
    {"type 286 is not type 30",              286,   nullptr,     nullptr},
    {"no media type at all",                 65535, nullptr,     nullptr},
};
// clang-format on

/// The number that the next generated name carries. It is read from a name, so this takes one.
int nextNumber()
{
    return (MMS_UTIL_Common::generateFileName(7).right(5).toInt() + 1) % kCounts;
}

QString digits(int number)
{
    return QString("%1").arg(number, 5, 10, QChar('0'));
}

void touch(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

} // namespace

class TestUtilNaming : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_box.reset(new QTemporaryDir);
        QVERIFY(m_box->isValid());
        qputenv(kRootVariable, QFile::encodeName(m_box->path()));
        QCoreApplication::setApplicationName("app");
    }

    void cleanup() { qunsetenv(kRootVariable); }

    // First of all tests, while both counters stand where the process began.
    void countersStartAtZeroAndAreTwo()
    {
        const QString tmp = MMS_UTIL_Common::getTmpDir();
        QCOMPARE(MMS_UTIL_Common::generateFileName(30), tmp + "app00000.jpg");
        QCOMPARE(MMS_UTIL_Common::generateFileNameAtTmp(3), QString("/tmp/t00000.txt"));
        QCOMPARE(MMS_UTIL_Common::generateFileName(30), tmp + "app00001.jpg");
        QCOMPARE(MMS_UTIL_Common::generateFileName(7), QString("app00002"));
        QCOMPARE(MMS_UTIL_Common::generateFileNameAtTmp(29), QString("00001"));
        QCOMPARE(MMS_UTIL_Common::generateFileNameAtTmp(0), QString("00002"));
    }

    void types_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("extension");
        for (const TypeRow &row : kTypes) {
            QTest::newRow(row.name) << int(row.type) << QString(row.dir) << QString(row.extension);
        }
    }

    void types()
    {
        QFETCH(int, type);
        QFETCH(QString, dir);
        QFETCH(QString, extension);
        const QString name = "app" + digits(nextNumber());
        const QString expected =
            dir.isNull() ? name : m_box->filePath("mms/") + dir + name + extension;
        QCOMPARE(MMS_UTIL_Common::generateFileName(static_cast<unsigned short>(type)), expected);
    }

    void everyOtherTypeIsBare()
    {
        QSet<int> known;
        for (const TypeRow &row : kTypes) {
            if (row.dir) {
                known.insert(row.type);
            }
        }
        for (int type = 0; type < 256; ++type) {
            const QString name =
                MMS_UTIL_Common::generateFileName(static_cast<unsigned short>(type));
            QVERIFY2(name.contains('/') == known.contains(type), qPrintable(name));
        }
    }

    void otherTypesAtTmpAreDigitsAlone()
    {
        for (const int type : {0, 2, 4, 30, 62, 259, 65535}) {
            const QString name =
                MMS_UTIL_Common::generateFileNameAtTmp(static_cast<unsigned short>(type));
            QCOMPARE(name.size(), 5);
            QVERIFY2(!name.contains('/'), qPrintable(name));
        }
    }

    void applicationNameLeads()
    {
        QCoreApplication::setApplicationName(QString::fromUtf8("p\u00f6st %1"));
        const QString number = digits(nextNumber());
        QCOMPARE(MMS_UTIL_Common::generateFileName(7), QString::fromUtf8("p\u00f6st %1") + number);
    }

    void directoriesAreCreated()
    {
        MMS_UTIL_Common::generateFileName(7);
        QVERIFY(QFileInfo(m_box->filePath("mms/mailfile")).isDir());
        m_box.reset(new QTemporaryDir);
        qputenv(kRootVariable, QFile::encodeName(m_box->path()));
        MMS_UTIL_Common::generateFileNameAtTmp(7);
        QVERIFY(QFileInfo(m_box->filePath("mms/mailfile")).isDir());
    }

    void namesComeWithoutDirectoriesToo()
    {
        touch(m_box->filePath("mms"));
        const QString number = digits(nextNumber());
        QCOMPARE(MMS_UTIL_Common::generateFileName(3),
                 m_box->filePath("mms/tmp/app" + number + ".txt"));
    }

    void nothingIsLogged()
    {
        const LogCapture log;
        MMS_UTIL_Common::generateFileName(30);
        MMS_UTIL_Common::generateFileNameAtTmp(30);
        QCOMPARE(log.lines(), QStringList());
    }

    void countersStartAgain()
    {
        qputenv(kRootVariable, "/dev/null"); // where checkDir gives up at once
        while (MMS_UTIL_Common::generateFileName(7) != "app65535") { }
        QCOMPARE(MMS_UTIL_Common::generateFileName(7), QString("app00000"));
        while (MMS_UTIL_Common::generateFileNameAtTmp(7) != "65535") { }
        QCOMPARE(MMS_UTIL_Common::generateFileNameAtTmp(3), QString("/tmp/t00000.txt"));
    }

    void tmpFileNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "a.jpg"
                               << "a.jpg";
        QTest::newRow("path") << "/x/y/a.jpg"
                              << "a.jpg";
        QTest::newRow("other path") << "C:\\x\\a.jpg"
                                    << "a.jpg";
        QTest::newRow("no extension") << "a"
                                      << "a";
        QTest::newRow("two extensions") << "a.tar.gz"
                                        << "a.tar.gz";
        QTest::newRow("dot at the end") << "a."
                                        << "a";
        QTest::newRow("extension alone") << ".jpg"
                                         << "tmp.jpg";
        QTest::newRow("blanks around") << "  a.jpg \n"
                                       << "a.jpg";
        QTest::newRow("blanks in the extension") << "a. jpg"
                                                 << "a.jpg";
        QTest::newRow("empty") << ""
                               << "tmp";
        QTest::newRow("null") << QString() << "tmp";
        QTest::newRow("directory alone") << "a/"
                                         << "tmp";
        QTest::newRow("one dot") << "."
                                 << "tmp";
        QTest::newRow("way up") << "../../etc/passwd"
                                << "passwd";
        QTest::newRow("two dots") << ".."
                                  << ".0"; // "." exists
        QTest::newRow("three dots") << "..."
                                    << "..0"; // ".." exists
        QTest::newRow("shell") << "$(touch x);'`\".jpg"
                               << "$(touch x);'`\".jpg";
        QTest::newRow("percent") << "%1%n.jpg"
                                 << "%1%n.jpg";
        QTest::newRow("not ASCII")
            << QString::fromUtf8("\u65e5.gif") << QString::fromUtf8("\u65e5.gif");
    }

    void tmpFileNames()
    {
        QFETCH(QString, name);
        QFETCH(QString, expected);
        const QString dir = m_box->path();
        QCOMPARE(MMS_UTIL_Common::getTmpFileName(name, dir), dir + '/' + expected);
        QCOMPARE(MMS_UTIL_Common::getTmpFileName(name, " " + dir + "/ "), dir + '/' + expected);
        QCOMPARE(QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    void tmpFileNameCountsUp()
    {
        const QString dir = m_box->path() + '/';
        for (const char *name : {"a.jpg", "a0.jpg", "a1.jpg", "a2.jpg"}) {
            QCOMPARE(MMS_UTIL_Common::getTmpFileName("a.jpg", dir), dir + name);
            touch(dir + name);
        }
        QVERIFY(QFile::remove(dir + "a0.jpg"));
        QCOMPARE(MMS_UTIL_Common::getTmpFileName("a.jpg", dir), dir + "a0.jpg");
    }

    void tmpFileNameWithoutExtensionCountsUp()
    {
        const QString dir = m_box->path() + '/';
        touch(dir + "tmp");
        QVERIFY(QDir(dir).mkdir("tmp0"));
        QCOMPARE(MMS_UTIL_Common::getTmpFileName("", dir), dir + "tmp1");
    }

    void linkThatLeadsNowhereExists()
    {
        const QString dir = m_box->path() + '/';
        QVERIFY(QFile::link("/nowhere/at/all", dir + "a.jpg"));
        QCOMPARE(MMS_UTIL_Common::getTmpFileName("a.jpg", dir), dir + "a0.jpg");
    }

    void emptyDirectoryIsTmp()
    {
        const QTemporaryDir place; // a name that nobody else has
        const QString name = QFileInfo(place.path()).fileName() + "-x";
        for (const QString &dir : {QString(), QString(""), QString(" \t")}) {
            QCOMPARE(MMS_UTIL_Common::getTmpFileName(name + ".jpg", dir), "/tmp/" + name + ".jpg");
        }
        const QString first = "/tmp/" + name + ".jpg";
        touch(first);
        QCOMPARE(MMS_UTIL_Common::getTmpFileName(name + ".jpg", ""), "/tmp/" + name + "0.jpg");
        QVERIFY(QFile::remove(first));
    }

    void missingDirectoryGivesAPath()
    {
        QCOMPARE(MMS_UTIL_Common::getTmpFileName("a.jpg", "/nowhere"), QString("/nowhere/a.jpg"));
    }

private:
    QScopedPointer<QTemporaryDir> m_box;
};

QTEST_GUILESS_MAIN(TestUtilNaming)
#include "tst_mms_util_common_naming.moc"
