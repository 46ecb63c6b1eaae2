// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/program.h"

#include <sys/stat.h>
#include <unistd.h>

/// Where `wmsg decode --html` writes its page, and where it does not.
class TestHtmlFile : public QObject {
    Q_OBJECT

private slots:
    void writes();
    void besideOtherViews();
    void standardInput();
    void ofAFailure();
    void ofTheFirstMessage();
    void ofNoMessage();
    void refuses_data();
    void refuses();
    void force();
    void neverTheMessage();
    void usage_data();
    void usage();
    void diskFull();
};

void TestHtmlFile::writes()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    const Run run = desk.run({"decode", "retrieve-confirmation", "--html", "page.html"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err, QString());
    const QByteArray page = desk.read("page.html");
    QVERIFY(page.startsWith("<!DOCTYPE html>\n") && page.endsWith("</html>\n"));
    QVERIFY(page.contains("Look!</p>"));
    QVERIFY(run.out.contains("\n  3 parts\n"));
    QVERIFY(run.out.contains("\nwrote page.html, "));
    QVERIFY(run.out.endsWith(QString(" (%1 bytes)\n").arg(page.size())));
    const QStringList files = desk.folder().entryList(QDir::Files | QDir::Hidden, QDir::Name);
    QCOMPARE(files, (QStringList{"page.html", "retrieve-confirmation"}));
}

void TestHtmlFile::besideOtherViews()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    const Run json = desk.run({"decode", "--json", "retrieve-confirmation", "--html", "a.html"});
    QCOMPARE(json.exitCode, 0);
    QCOMPARE(json.json()["result"].toInt(), 100);
    QVERIFY(json.err.startsWith("wrote a.html, "));
    const Run all = desk.run(
        {"decode", "--hex", "--extract", "parts", "retrieve-confirmation", "--html", "b.html"});
    QCOMPARE(all.exitCode, 0);
    QCOMPARE(desk.read("b.html"), desk.read("a.html"));
    QCOMPARE(desk.read("parts/t.txt"), "Look!");
}

void TestHtmlFile::standardInput()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    const Run run =
        desk.run({"decode", "-", "--html", "page.html"}, desk.read("retrieve-confirmation"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(desk.read("page.html").contains("Look!</p>"));
}

void TestHtmlFile::ofAFailure()
{
    const Desk desk;
    desk.bring("pdu/cut-in-picture");
    const Run run = desk.run({"decode", "--strict", "cut-in-picture", "--html", "page.html"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(desk.read("page.html").contains("class=\"card bad\"><bdi>cut-in-picture: result 111 "));
}

// One file in hex may hold several messages. None takes the place of another, also by force.
void TestHtmlFile::ofTheFirstMessage()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    desk.bring("pdu/notification");
    desk.write("m",
               desk.read("retrieve-confirmation").toHex() + "\n\n"
                   + desk.read("notification").toHex() + "\n# end\n");
    const Run run = desk.run({"decode", "m", "--force", "--html", "page.html"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(),
             "wmsg: m line 3: is not on the page, which shows one message: m line 1");
    QVERIFY(desk.read("page.html").contains("Look!</p>"));
}

void TestHtmlFile::ofNoMessage()
{
    const Desk desk;
    desk.write("m", "012A05812143F500000161\n"); // a short message
    const Run run = desk.run({"decode", "m", "--html", "page.html"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: m: has no multimedia message to show on a page");
    QVERIFY(run.out.contains("  Text               \"a\"\n"));
    QVERIFY(!desk.folder().exists("page.html"));
}

void TestHtmlFile::refuses_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("a file that exists") << "taken.html"
                                        << "exists already (see --force)";
    QTest::newRow("a link") << "link.html"
                            << "is a link, and nothing is written through it";
    QTest::newRow("a folder") << "folder"
                              << "exists and is no regular file";
    QTest::newRow("a pipe") << "pipe"
                            << "exists and is no regular file";
    QTest::newRow("a device") << "/dev/null"
                              << "exists and is no regular file";
    QTest::newRow("no folder") << "no/page.html"
                               << "cannot be made: No such file or directory";
    QTest::newRow("below a file") << "taken.html/x"
                                  << "cannot be written: Not a directory";
}

void TestHtmlFile::refuses()
{
    QFETCH(QString, target);
    QFETCH(QString, complaint);
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    desk.write("taken.html", "mine");
    QVERIFY(desk.folder().mkdir("folder"));
    QVERIFY(QFile::link("taken.html", desk.path("link.html")));
    QCOMPARE(::mkfifo(qPrintable(desk.path("pipe")), 0600), 0);
    const QStringList before = desk.folder().entryList(QDir::AllEntries | QDir::System, QDir::Name);
    const Run run = desk.run({"decode", "retrieve-confirmation", "--html", target});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: " + target + ": " + complaint);
    QCOMPARE(desk.read("taken.html"), "mine");
    QCOMPARE(desk.folder().entryList(QDir::AllEntries | QDir::System, QDir::Name), before);
}

void TestHtmlFile::force()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    desk.write("taken.html", "mine");
    QVERIFY(QFile::link("taken.html", desk.path("link.html")));
    const QStringList arguments{"decode", "--force", "retrieve-confirmation", "--html"};
    QCOMPARE(desk.run(arguments + QStringList{"taken.html"}).exitCode, 0);
    QVERIFY(desk.read("taken.html").contains("Look!</p>"));
    desk.write("taken.html", "mine");
    QCOMPARE(desk.run(arguments + QStringList{"link.html"}).exitCode, 1);
    QCOMPARE(desk.read("taken.html"), "mine");
}

void TestHtmlFile::neverTheMessage()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    const QByteArray message = desk.read("retrieve-confirmation");
    QCOMPARE(::link(qPrintable(desk.path("retrieve-confirmation")), qPrintable(desk.path("other"))),
             0);
    for (const char *target : {"retrieve-confirmation", "./retrieve-confirmation", "other"}) {
        const Run run = desk.run({"decode", "--force", "retrieve-confirmation", "--html", target});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errorLine(), QString("wmsg: %1: is the message itself").arg(target));
        QCOMPARE(desk.read(target).toHex(), message.toHex());
    }
    const Run run = desk.shell("\"$0\" decode --force - --html other < retrieve-confirmation");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: other: is the message itself");
    QCOMPARE(desk.read("other").toHex(), message.toHex());
}

void TestHtmlFile::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("two messages") << QStringList{"a", "b", "--html", "page.html"}
                                  << "--html takes one message (see wmsg --help)";
    QTest::newRow("no file") << QStringList{"a", "--html"}
                             << "--html: 1 required FILE missing (see wmsg --help)";
    QTest::newRow("force alone") << QStringList{"a", "--force"}
                                 << "--force requires --extract or --html (see wmsg --help)";
}

void TestHtmlFile::usage()
{
    QFETCH(QStringList, arguments);
    const Desk desk;
    const Run run = desk.run(QStringList{"decode"} + arguments);
    QCOMPARE(run.exitCode, 2);
    QTEST(run.errorLine().remove("wmsg: "), "complaint");
    QVERIFY(!desk.folder().exists("page.html"));
}

// A page that did not fit leaves nothing behind.
void TestHtmlFile::diskFull()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    const Run run = desk.shell("ulimit -f 1; trap '' XFSZ; "
                               "\"$0\" decode retrieve-confirmation --html page.html > /dev/null");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: page.html: cannot be written: File too large");
    QCOMPARE(desk.folder().entryList(QDir::Files | QDir::Hidden),
             QStringList{"retrieve-confirmation"});
}

QTEST_GUILESS_MAIN(TestHtmlFile)
#include "tst_html_file.moc"
