// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <sys/stat.h>

namespace {

constexpr char kRootVariable[] = "UVO_EXTRA_SYS_DATA_PATH";

void setRoot(const QString &root)
{
    qputenv(kRootVariable, QFile::encodeName(root));
}

/// The permission bits of a file in octal, for example "777".
QString modeOf(const QString &path)
{
    struct stat info = {};
    if (stat(QFile::encodeName(path).constData(), &info) != 0) {
        return "missing";
    }
    return QString::number(info.st_mode & 07777, 8);
}

const char *const kBelowRoot[] = {"mms", "mms/mailfile", "mms/mmstemplate", "mms/tmp",
                                  "mms/recentcontacts"};

} // namespace

class TestUtilStorage : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_box.reset(new QTemporaryDir);
        QVERIFY(m_box->isValid());
        m_mask = umask(022);
        m_path = qgetenv("PATH");
        m_current = QDir::currentPath();
    }

    void cleanup()
    {
        QDir::setCurrent(m_current);
        umask(m_mask);
        qputenv("PATH", m_path);
        qunsetenv(kRootVariable);
    }

    void workDir_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QString>("work");
        QTest::newRow("plain") << "/data"
                               << "/data/mms/";
        QTest::newRow("with a slash") << "/data/"
                                      << "/data/mms/";
        QTest::newRow("with two slashes") << "/data//"
                                          << "/data//mms/";
        QTest::newRow("the root of all") << "/"
                                         << "/mms/";
        QTest::newRow("empty") << ""
                               << "/mms/";
        QTest::newRow("relative") << "data"
                                  << "data/mms/";
        QTest::newRow("blanks") << "/d d "
                                << "/d d /mms/";
        QTest::newRow("percent signs") << "/%1%L1"
                                       << "/%1%L1/mms/";
        QTest::newRow("not ASCII")
            << QString::fromUtf8("/d\u00e4t\u65e5") << QString::fromUtf8("/d\u00e4t\u65e5/mms/");
        QTest::newRow("unset") << QString() << "/mms/";
    }

    void workDir()
    {
        QFETCH(QString, root);
        QFETCH(QString, work);
        if (root.isNull()) {
            qunsetenv(kRootVariable);
        } else {
            setRoot(root);
        }
        QCOMPARE(MMS_UTIL_Common::getWorkDir(), work);
        QCOMPARE(MMS_UTIL_Common::getMailFileDir(), work + "mailfile/");
        QCOMPARE(MMS_UTIL_Common::getTemplateDir(), work + "mmstemplate/");
        QCOMPARE(MMS_UTIL_Common::getTmpDir(), work + "tmp/");
        QCOMPARE(MMS_UTIL_Common::getMostRecentContactsDir(), work + "recentcontacts/");
        QCOMPARE(MMS_UTIL_Common::getMostRecentContactsFile(),
                 work + "recentcontacts/postcard.txt");
        QCOMPARE(MMS_UTIL_Common::getQuickSendContactDir(), work);
        QCOMPARE(MMS_UTIL_Common::getQuickSendContactFile(), work + "qscontact.txt");
        QCOMPARE(MMS_UTIL_Common::getPreloadTemplateDir(),
                 QString("/usr/data_resource/quickpage/"));
        QCOMPARE(MMS_UTIL_Common::getMmsPreviewTmpDir(), QString("/tmp/mmspreview/"));
        QCOMPARE(MMS_UTIL_Common::msgDBIDToMailFileName(42), work + "mailfile/42.mms");
    }

    void rootIsReadAtEachCall()
    {
        setRoot("/first");
        QCOMPARE(MMS_UTIL_Common::getWorkDir(), QString("/first/mms/"));
        setRoot("/second");
        QCOMPARE(MMS_UTIL_Common::getWorkDir(), QString("/second/mms/"));
    }

    void mailFileNames()
    {
        setRoot("/data");
        const QString dir = "/data/mms/mailfile/";
        QCOMPARE(MMS_UTIL_Common::msgDBIDToMailFileName(0), dir + "0.mms");
        QCOMPARE(MMS_UTIL_Common::msgDBIDToMailFileName(65535), dir + "65535.mms");
        QCOMPARE(MMS_UTIL_Common::msgDBIDToMailFileName(4294967295U), dir + "4294967295.mms");
    }

    void checkDirCreatesAll_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "data";
        QTest::newRow("slash at the end") << "data/";
        QTest::newRow("blanks") << " d  d ";
        QTest::newRow("quotes") << "it's \"here\"";
        QTest::newRow("expansion") << "$HOME ${x} `touch hurt` $(touch hurt)";
        QTest::newRow("command") << "x; touch hurt; '; touch hurt; ' & touch hurt |";
        QTest::newRow("redirection") << "a > hurt < hurt";
        QTest::newRow("patterns") << "*?[a]{b,c}~!#\\";
        QTest::newRow("line feed") << "a\ntouch hurt\n";
        QTest::newRow("option") << "-R";
        QTest::newRow("percent") << "%s%1";
        QTest::newRow("not ASCII") << QString::fromUtf8("d\u00e4t\u65e5");
    }

    void checkDirCreatesAll()
    {
        QFETCH(QString, name);
        QVERIFY(QDir::setCurrent(m_box->path()));
        umask(077);
        const QString root = m_box->filePath(name);
        setRoot(root);
        QVERIFY(MMS_UTIL_Common::checkDir());
        QCOMPARE(modeOf(root), QString("777"));
        for (const char *dir : kBelowRoot) {
            QCOMPARE(modeOf(root + '/' + dir), QString("777"));
        }
        QCOMPARE(QDir(m_box->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
        QVERIFY(MMS_UTIL_Common::checkDir());
    }

    void relativeRootThatLooksLikeAnOption()
    {
        QVERIFY(QDir::setCurrent(m_box->path()));
        umask(077);
        setRoot("-v");
        QVERIFY(MMS_UTIL_Common::checkDir());
        QCOMPARE(modeOf(m_box->filePath("-v/mms/tmp")), QString("777"));
    }

    void commandIsChmod()
    {
        const QString script = m_box->filePath("chmod");
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nfor word in \"$@\"; do printf '(%s)' \"$word\"; done >> \"$0.log\"\n"
                   "echo >> \"$0.log\"\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", QFile::encodeName(m_box->path()) + ':' + m_path);
        const QString root = m_box->filePath("a 'b'");
        setRoot(root);
        QVERIFY(MMS_UTIL_Common::checkDir());
        QFile log(script + ".log");
        QVERIFY(log.open(QIODevice::ReadOnly));
        QString expected;
        for (const char *dir : {"", "/mms/", "/mms/mailfile/", "/mms/mmstemplate/", "/mms/tmp/",
                                "/mms/recentcontacts/"}) {
            expected += "(777)(" + root + dir + ")(-R)\n";
        }
        QCOMPARE(QString::fromUtf8(log.readAll()), expected);
    }

    void chmodThatFailsIsIgnored()
    {
        qputenv("PATH", "/nowhere");
        setRoot(m_box->filePath("data"));
        QVERIFY(MMS_UTIL_Common::checkDir());
        QCOMPARE(modeOf(m_box->filePath("data/mms/tmp")), QString("755"));
    }

    void existingDirectoriesKeepTheirMode()
    {
        const QString root = m_box->filePath("data");
        QVERIFY(QDir().mkpath(root + "/mms/tmp"));
        for (const char *dir : {"", "/mms", "/mms/tmp"}) {
            QCOMPARE(chmod(QFile::encodeName(root + dir).constData(), 0700), 0);
        }
        setRoot(root);
        QVERIFY(MMS_UTIL_Common::checkDir());
        QCOMPARE(modeOf(root), QString("700"));
        QCOMPARE(modeOf(root + "/mms"), QString("700"));
        QCOMPARE(modeOf(root + "/mms/tmp"), QString("700"));
        QCOMPARE(modeOf(root + "/mms/mailfile"), QString("777"));
    }

    void fileInTheWayEndsIt_data()
    {
        QTest::addColumn<int>("created");
        QTest::newRow("mms") << 0;
        QTest::newRow("mms/mailfile") << 1;
        QTest::newRow("mms/mmstemplate") << 2;
        QTest::newRow("mms/tmp") << 3;
        QTest::newRow("mms/recentcontacts") << 4;
    }

    void fileInTheWayEndsIt()
    {
        QFETCH(int, created);
        const QString file = m_box->filePath(QTest::currentDataTag());
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QFile blocker(file);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        setRoot(m_box->path());
        QVERIFY(!MMS_UTIL_Common::checkDir());
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(QFileInfo(m_box->filePath(kBelowRoot[i])).isDir(), i < created);
        }
    }

    void oneLevelIsCreated()
    {
        setRoot(m_box->filePath("a/b"));
        QVERIFY(!MMS_UTIL_Common::checkDir());
        QVERIFY(!QFileInfo::exists(m_box->filePath("a")));
    }

    void rootThatIsAFileFails()
    {
        QFile file(m_box->filePath("data"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        setRoot(file.fileName());
        QVERIFY(!MMS_UTIL_Common::checkDir());
    }

private:
    QScopedPointer<QTemporaryDir> m_box;
    QByteArray m_path;
    QString m_current;
    mode_t m_mask = 0;
};

QTEST_GUILESS_MAIN(TestUtilStorage)
#include "tst_mms_util_common_storage.moc"
