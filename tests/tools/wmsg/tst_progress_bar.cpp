// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/progress_bar.h"

#include <QtTest/QtTest>

class TestProgressBar : public QObject {
    Q_OBJECT

private slots:
    void lines_data();
    void lines();
};

void TestProgressBar::lines_data()
{
    QTest::addColumn<qint64>("done");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, qint64 done, qint64 total, int width, const char *line) {
        QTest::newRow(name) << done << total << width << line;
    };
    row("begun", 0, 2048, 40, "[             ]   0%  0.0 KiB of 2.0 KiB");
    row("half", 1024, 2048, 40, "[======       ]  50%  1.0 KiB of 2.0 KiB");
    row("done", 2048, 2048, 40, "[=============] 100%  2.0 KiB of 2.0 KiB");
    row("more than all", 4096, 2048, 40, "[=============] 100%  2.0 KiB of 2.0 KiB");
    row("nothing to do", 0, 0, 40, "[             ]   0%  0.0 KiB of 0.0 KiB");
    row("negative", -5, -9, 40, "[             ]   0%  0.0 KiB of 0.0 KiB");
    row("no room for a bar", 1024, 2048, 28, " 50%  1.0 KiB of 2.0 KiB");
    row("little room", 1024, 2048, 10, " 50%  1.0 ");
    row("no room", 1024, 2048, -1, "");
    row("a wide terminal", 1024, 2048, 400,
        "[====================                    ]  50%  1.0 KiB of 2.0 KiB");
    row("large", 2147483647, 2147483647, 60,
        "[=====================] 100%  2097152.0 KiB of 2097152.0 KiB");
}

void TestProgressBar::lines()
{
    QFETCH(qint64, done);
    QFETCH(qint64, total);
    QFETCH(int, width);
    QFETCH(QString, line);
    QCOMPARE(wmsg::cli::progressLine(done, total, width), line);
}

QTEST_GUILESS_MAIN(TestProgressBar)
#include "tst_progress_bar.moc"
