// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"

#include "core/log.h"
#include "tests/support/log_capture.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryFile>
#include <QtTest/QtTest>

class TestAppLog : public QObject {
    Q_OBJECT

private slots:
    void streamIsNullAtFirst() { QVERIFY(!appLogModuleStream); }

    void discardStreamIsOne()
    {
        QVERIFY(appLogDiscardStream());
        QCOMPARE(appLogDiscardStream(), appLogDiscardStream());
    }

    void discardStreamSwallowsWhatIsWrittenToIt()
    {
        QCOMPARE(fprintf(appLogDiscardStream(), "%s", "lost"), 4);
        QCOMPARE(fflush(appLogDiscardStream()), 0);
        QVERIFY(!ferror(appLogDiscardStream()));
    }

    void linesGoToTheStream()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        FILE *stream = fopen(QFile::encodeName(file.fileName()).constData(), "w");
        QVERIFY(stream);
        appLogModuleStream = stream;
        logLine(4, "a %s %d", QStringLiteral("b"), 7);
        appLogModuleStream = nullptr;
        fclose(stream);
        QCOMPARE(file.readAll(), QByteArray("a b 7"));
    }

    void discardStreamPrintsNothing()
    {
        LogCapture log;
        appLogModuleStream = appLogDiscardStream();
        QVERIFY(!wmsg::log::isPrinted(4));
        logLine(4, "unseen");
        QCOMPARE(log.text(), QString());
    }

    void captureSeesCallsOneByOne()
    {
        LogCapture log;
        logLine(4, "first");
        logLine(0, "second %d\n", 2);
        logLine(8, "too high");
        QCOMPARE(log.lines(), QStringList({"first", "second 2\n"}));
        QCOMPARE(log.text(), QString("firstsecond 2\n"));
        log.clear();
        QCOMPARE(log.text(), QString());
    }

    void captureGivesThePointerBack()
    {
        {
            const LogCapture outer;
            FILE *const before = appLogModuleStream;
            {
                const LogCapture inner;
                QVERIFY(appLogModuleStream != before);
            }
            QCOMPARE(appLogModuleStream, before);
        }
        QVERIFY(!appLogModuleStream);
    }
};

QTEST_GUILESS_MAIN(TestAppLog)
#include "tst_applog.moc"
