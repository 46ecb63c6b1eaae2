// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"

#include <QtTest/QtTest>

#include <functional>

#include <fcntl.h>
#include <unistd.h>

/// Runs `work` with the module stream on a stream in memory and returns what was written to it.
static QByteArray logged(const std::function<void()> &work)
{
    char *memory = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&memory, &size);
    FILE *former = std::exchange(appLogModuleStream, stream);
    work();
    appLogModuleStream = former;
    fclose(stream);
    const QByteArray result(memory, qsizetype(size));
    free(memory);
    return result;
}

/// Runs `work` and returns what it wrote to standard output.
static QByteArray printed(const std::function<void()> &work)
{
    QTemporaryFile file;
    file.open();
    fflush(stdout);
    const int former = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    work();
    fflush(stdout);
    dup2(former, STDOUT_FILENO);
    close(former);
    file.seek(0);
    return file.readAll();
}

class TestLog : public QObject {
    Q_OBJECT

private slots:
    void levels_data();
    void levels();
    void text_data();
    void text();
    void plainArguments();
    void addsNoLineEnd();
    void aNullPointerIsStandardOutput();
    void aSetPointerIsNotStandardOutput();
    void discardsWithoutFormatting();
    void droppedLevelsAreNotFormatted();
    void followsThePointer();
};

void TestLog::levels_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("isPrinted");
    QTest::newRow("lowest int") << INT_MIN << false;
    QTest::newRow("-1") << -1 << false;
    for (int level = 0; level <= 7; ++level) {
        QTest::addRow("%d", level) << level << true;
    }
    QTest::newRow("8") << 8 << false;
    QTest::newRow("9") << 9 << false;
    QTest::newRow("highest int") << INT_MAX << false;
}

void TestLog::levels()
{
    QFETCH(int, level);
    QFETCH(bool, isPrinted);
    QCOMPARE(logged([level] { logLine(level, "line\n"); }), QByteArray(isPrinted ? "line\n" : ""));
    QCOMPARE(logged([level] { logLine(level, "%d", 5); }), QByteArray(isPrinted ? "5" : ""));
}

void TestLog::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("null prints nothing") << QString() << QByteArray("[]");
    QTest::newRow("empty") << QString("") << QByteArray("[]");
    QTest::newRow("plain") << QString("abc") << QByteArray("[abc]");
    QTest::newRow("percent signs") << QString("%s %n") << QByteArray("[%s %n]");
    QTest::newRow("Latin-1") << QStringLiteral("caf\u00e9 \u00ff") << QByteArray("[caf\xe9 \xff]");
    QTest::newRow("outside Latin-1") << QStringLiteral("\u20ac1 \u4e2d") << QByteArray("[?1 ?]");
    QTest::newRow("first outside") << QStringLiteral("\u0100") << QByteArray("[?]");
}

void TestLog::text()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(logged([text] { logLine(4, "[%s]", text); }).toHex(), expected.toHex());
}

void TestLog::plainArguments()
{
    const char *none = nullptr;
    char name[] = "name";
    QCOMPARE(logged([&] { logLine(4, "[%s]", none); }), QByteArray("[]"));
    QCOMPARE(logged([&] { logLine(4, "[%s]", QByteArray()); }), QByteArray("[]"));
    QCOMPARE(logged([&] { logLine(4, "[%s]", QByteArray("8-bit")); }), QByteArray("[8-bit]"));
    QCOMPARE(logged([&] { logLine(4, "%s %s", "literal", name); }), QByteArray("literal name"));
    QCOMPARE(logged([&] {
                 logLine(3, "%s %d %u %lld %c %s", QString("a"), -1, quint8(255), qint64(1) << 40,
                         'c', QString("b"));
             }),
             QByteArray("a -1 255 1099511627776 c b"));
}

void TestLog::addsNoLineEnd()
{
    QCOMPARE(logged([] {
                 logLine(4, "one");
                 logLine(4, "two\n");
                 logLine(4, "%s", QString("three"));
             }),
             QByteArray("onetwo\nthree"));
}

void TestLog::aNullPointerIsStandardOutput()
{
    appLogModuleStream = nullptr;
    QCOMPARE(printed([] {
                 logLine(4, "to %s\n", QString("standard output"));
                 logLine(8, "dropped\n");
             }),
             QByteArray("to standard output\n"));
}

void TestLog::aSetPointerIsNotStandardOutput()
{
    const QByteArray output =
        printed([] { QCOMPARE(logged([] { logLine(4, "elsewhere"); }), QByteArray("elsewhere")); });
    QCOMPARE(output, QByteArray());
}

void TestLog::discardsWithoutFormatting()
{
    appLogModuleStream = appLogDiscardStream();
    int written = -1;
    const QByteArray output = printed([&written] {
        logLine(4, "line %s\n", QString("text"));
        // A formatted line would count the characters before the %n.
        wmsg::log::print(4, "abc%n", &written);
    });
    appLogModuleStream = nullptr;
    QCOMPARE(output, QByteArray());
    QCOMPARE(written, -1);
    QVERIFY(wmsg::log::isPrinted(4));
    QCOMPARE(logged([&written] { wmsg::log::print(4, "abc%n", &written); }), QByteArray("abc"));
    QCOMPARE(written, 3);
}

void TestLog::droppedLevelsAreNotFormatted()
{
    int written = -1;
    logged([&written] { logLine(8, "abc%n", &written); });
    QCOMPARE(written, -1);
}

void TestLog::followsThePointer()
{
    QCOMPARE(logged([] {
                 logLine(4, "1");
                 QCOMPARE(logged([] { logLine(4, "2"); }), QByteArray("2"));
                 FILE *former = std::exchange(appLogModuleStream, appLogDiscardStream());
                 logLine(4, "3");
                 appLogModuleStream = former;
                 logLine(4, "4");
             }),
             QByteArray("14"));
}

QTEST_GUILESS_MAIN(TestLog)
#include "tst_log.moc"
