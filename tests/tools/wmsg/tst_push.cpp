// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/sim/mmsc/phone.h"
#include "tests/support/hex.h"

#include <QtCore/QProcess>
#include <QtTest/QtTest>

namespace {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the program while the event loop serves the daemon's side.
Outcome push(const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(WMSG_PROGRAM, QStringList{"push"} + arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended =
        QTest::qWaitFor([&process] { return process.state() == QProcess::NotRunning; }, 60000);
    Outcome outcome;
    outcome.exitCode =
        ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    outcome.out = process.readAllStandardOutput();
    outcome.err = process.readAllStandardError();
    return outcome;
}

class Folder {
public:
    QString write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(m_folder.filePath(name));
        [&] {
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        }();
        return file.fileName();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

class TestPush : public QObject {
    Q_OBJECT

private slots:
    void severalFiles();
    void standardInput();
    void refused();
    void nobodyThere();
    void noAnswer();
    void badFiles();
    void wrongUsage_data();
    void wrongUsage();
};

void TestPush::severalFiles()
{
    const Phone phone;
    const Folder folder;
    const QString a = folder.write("a", fromHex("8C 82"));
    const QString b = folder.write("b", fromHex("8C 86"));
    const Outcome outcome = push({"--socket", phone.path(), a, b});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, a + ": taken\n" + b + ": taken\n");
    QCOMPARE(outcome.err, QString());
    QCOMPARE(phone.pushed, (QList<QByteArray>{fromHex("8C 82"), fromHex("8C 86")}));
}

void TestPush::standardInput()
{
    const Phone phone;
    const Outcome outcome = push({"--socket", phone.path(), "-"}, fromHex("8C 82 00"));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QString("standard input: taken\n"));
    QCOMPARE(phone.pushed, QList<QByteArray>{fromHex("8C 82 00")});
}

void TestPush::refused()
{
    Phone phone;
    phone.refusal = "this is no notification\x1B[2J";
    const Folder folder;
    const QString a = folder.write("a", "x");
    const Outcome outcome = push({"--socket", phone.path(), a, a});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.out, QString());
    const QString line = "wmsg: " + a + ": refused: this is no notification\\x1B[2J\n";
    QCOMPARE(outcome.err, line + line); // it goes on with the next
}

void TestPush::nobodyThere()
{
    const Phone phone(false);
    const Folder folder;
    const QString a = folder.write("a", "x");
    const Outcome outcome = push({"--socket", phone.path(), a, a});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.err,
             "wmsg: " + phone.path()
                 + ": No such file or directory (is wmsg-mmsproxyd running?)\n");
}

void TestPush::noAnswer()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("push");
    QLocalServer silent;
    QVERIFY(silent.listen(path));
    const Outcome outcome = push({"--socket", path, "--timeout", "1", "-"}, "x");
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.err,
             "wmsg: " + path
                 + ": the daemon gave no answer in time (is wmsg-mmsproxyd running?)\n");
}

void TestPush::badFiles()
{
    const Phone phone;
    const Folder folder;
    const QString good = folder.write("good", "x");
    const QString empty = folder.write("empty", QByteArray());
    const QString large = folder.write("large", QByteArray(65537, 'x'));
    const QString none = good + ".none";
    const Outcome outcome = push({"--socket", phone.path(), none, empty, large, good});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.out, good + ": taken\n");
    const QStringList lines = outcome.err.split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], "wmsg: " + none + ": cannot be opened: No such file or directory");
    QCOMPARE(lines[1], "wmsg: " + empty + ": refused: it is empty");
    QCOMPARE(lines[2], "wmsg: " + large + ": refused: it has 65537 bytes, and 65536 is the limit");
    QCOMPARE(phone.pushed, QList<QByteArray>{"x"});
}

void TestPush::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("no file") << QStringList{};
    QTest::newRow("timeout") << QStringList{"--timeout", "0", "x"};
    QTest::newRow("unknown") << QStringList{"--what", "x"};
}

void TestPush::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = push(arguments);
    QCOMPARE(outcome.exitCode, 2);
    QVERIFY(outcome.err.startsWith("wmsg: ") && outcome.err.count('\n') == 1);
}

QTEST_GUILESS_MAIN(TestPush)
#include "tst_push.moc"
