// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/program.h"

#include <QtTest/QtTest>

#include <sys/stat.h>

namespace {

/// A desk with a storage tree of its own in the folder "root".
class StoreDesk : public Desk {
public:
    StoreDesk() { QVERIFY(folder().mkdir("root")); }

    /// Runs a subcommand of `wmsg store`.
    Run store(const QString &command, const QStringList &arguments = {},
              const QByteArray &input = {}) const
    {
        return run(QStringList{"store", command, "--root", "root"} + arguments, input);
    }
    /// Stores the picture message of the tests and a letter.
    void fill() const
    {
        bring("pdu/retrieve-confirmation");
        bring("mail/letter");
        QCOMPARE(store("add", {"retrieve-confirmation"}).exitCode, 0);
        QCOMPARE(store("add", {"--folder", "drafts", "letter"}).exitCode, 0);
    }
};

} // namespace

class TestStore : public QObject {
    Q_OBJECT

private slots:
    void add();
    void addRefuses();
    void addTooManyParts();
    void list();
    void listNothing();
    void listJson();
    void show();
    void showAsDecodeDoes();
    void showJson();
    void exportAndAddAgain();
    void exportToOutput();
    void exportRefuses();
    void removeAndMove();
    void unknownMessages();
    void usage_data();
    void usage();
    void check();
    void environment();
    void refusals();
    void log();
};

void TestStore::add()
{
    const StoreDesk desk;
    desk.bring("pdu/retrieve-confirmation");
    desk.bring("mail/letter");
    const Run run = desk.store("add", {"retrieve-confirmation", "letter"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out,
             QString("stored retrieve-confirmation as message 1 in inbox\n"
                     "stored letter as message 2 in inbox\n"));
    const Run json =
        desk.store("add", {"--json", "--folder", "77", "-"}, desk.read("retrieve-confirmation"));
    QCOMPARE(json.exitCode, 0);
    QCOMPARE(json.json(), (QJsonObject{{"id", 3}, {"folder", "77"}, {"file", "standard input"}}));
}

void TestStore::addRefuses()
{
    const StoreDesk desk;
    desk.bring("pdu/cut-in-picture");
    desk.bring("pdu/notification");
    desk.write("empty", "");
    const auto refusal = [&desk](const QStringList &arguments) {
        const Run run = desk.store("add", arguments);
        return QString("%1 %2").arg(run.exitCode).arg(run.errorLine());
    };
    QCOMPARE(refusal({"empty"}), "1 wmsg: empty: is empty");
    QCOMPARE(refusal({"nowhere"}), "1 wmsg: nowhere: cannot be opened: No such file or directory");
    QCOMPARE(refusal({"--max-size", "9", "notification"}),
             "1 wmsg: notification: is larger than 9 bytes (see --max-size)");
    QVERIFY(refusal({"cut-in-picture"}).startsWith("1 wmsg: cut-in-picture: result 111 ("));
    // What can be stored is.
    const Run run = desk.store("add", {"nowhere", "notification"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.out, QString("stored notification as message 1 in inbox\n"));
}

void TestStore::addTooManyParts()
{
    const StoreDesk desk;
    // A mixed multipart of so many parts, each an empty picture.
    const auto message = [](int parts) {
        QByteArray pdu = fromHex("8C 84 8D 92 84 A3");
        pdu += char(parts);
        for (int i = 0; i < parts; ++i) {
            pdu += fromHex("01 00 9D");
        }
        return pdu;
    };
    desk.write("forty", message(40));
    desk.write("forty-one", message(41));
    QCOMPARE(desk.store("add", {"forty"}).exitCode, 0);
    QCOMPARE(desk.store("add", {"forty-one"}).errorLine(),
             QString("wmsg: forty-one: has 41 parts, and the store keeps 40"));
    const QJsonObject object = desk.store("show", {"--json", "1"}).json();
    QCOMPARE(object["parts"].toArray().size(), 40);
}

void TestStore::list()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.store("list");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err, QString());
    const QStringList lines = run.out.split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0], "    1  inbox      2024-05-01 11:31  ann@example.org           Sunset");
    QVERIFY2(lines[1].startsWith("    2  drafts     "), qPrintable(lines[1]));
    QCOMPARE(desk.store("list", {"inbox"}).out, lines[0] + '\n');
    QCOMPARE(desk.store("list", {"4"}).out, lines[1] + '\n');
}

void TestStore::listNothing()
{
    const StoreDesk desk;
    QCOMPARE(desk.store("list").out, QString("no messages\n"));
    QCOMPARE(desk.store("list", {"sent"}).out, QString("no messages\n"));
    QCOMPARE(desk.store("list", {"--json"}).out, QString());
}

void TestStore::listJson()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.store("list", {"--json"});
    QCOMPARE(run.out.count('\n'), 2);
    const QJsonObject first =
        QJsonDocument::fromJson(run.out.section('\n', 0, 0).toUtf8()).object();
    QCOMPARE(first["id"].toInt(), 1);
    QCOMPARE(first["folder"].toString(), "inbox");
    QCOMPARE(first["headers"]["subject"].toString(), "Sunset");
    QCOMPARE(first["headers"]["date"].toInt(), 1714563072);
    QVERIFY(!first.contains("parts"));
}

void TestStore::show()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.store("show", {"1"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QString(R"(message 1 in inbox, presentation
  Date               2024-05-01 11:31:12 +0000 (UTC)
  From               ann@example.org (e-mail address)
  To                 +431 (phone number)
                     a@b.c (e-mail address)
  Subject            Sunset
  Message-Class      personal (128)
  Priority           normal (129)
  Content-Type       application/vnd.wap.multipart.related
                     start = <s>
                     type = application/smil

  3 parts
  1  application/smil  s          74 bytes
     "<smil><body><par><img src="p.gif"/><text src="t.txt"/></par></body></smil>"
  2  image/gif         p.gif <p>  43 bytes
  3  text/plain        t.txt <t>  5 bytes
     "Look!"
)"));
    const Run two = desk.store("show", {"1", "2"});
    QVERIFY(two.out.startsWith(run.out + "\nmessage 2 in drafts, "));
    QVERIFY(two.out.contains("\n     \"Hello\"\n"));
}

// Parts and header fields look as in a file with the same.
void TestStore::showAsDecodeDoes()
{
    const StoreDesk desk;
    desk.fill();
    const QString decoded = desk.run({"decode", "retrieve-confirmation"}).out;
    const QString shown = desk.store("show", {"1"}).out;
    const auto parts = [](const QString &view) {
        return view.mid(view.indexOf("\n\n"));
    };
    QCOMPARE(parts(shown), parts(decoded));
    const QStringList fields = decoded.left(decoded.indexOf("\n\n")).split('\n');
    int same = 0;
    for (const QString &line : shown.left(shown.indexOf("\n\n")).split('\n')) {
        same += fields.contains(line) ? 1 : 0;
    }
    QCOMPARE(same, 9); // all but the title and the name of the second recipient
}

void TestStore::showJson()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.store("show", {"--json", "1"});
    QCOMPARE(run.out.count('\n'), 1);
    const QJsonObject object = run.json();
    const QJsonObject decoded = desk.run({"decode", "--json", "retrieve-confirmation"}).json();
    QCOMPARE(object["id"].toInt(), 1);
    QCOMPARE(object["folder"].toString(), "inbox");
    QCOMPARE(object["parts"], decoded["parts"]);
    QCOMPARE(object["headers"]["from"], decoded["headers"]["from"]);
    QCOMPARE(object["headers"]["priority"], decoded["headers"]["priority"]);
}

void TestStore::exportAndAddAgain()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.store("export", {"1", "-o", "out.mms"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.startsWith("wrote out.mms: "));
    const QJsonObject exported = desk.run({"decode", "--json", "out.mms"}).json();
    QCOMPARE(exported["kind"].toString(), "mailfile");
    QCOMPARE(exported["mmsType"].toInt(), 6);
    QCOMPARE(exported["headers"]["subject"].toString(), "Sunset");
    QCOMPARE(desk.store("add", {"out.mms"}).out, QString("stored out.mms as message 3 in inbox\n"));
    const auto content = [&desk](const char *id) {
        const QString view = desk.store("show", {id}).out;
        return view.mid(view.indexOf('\n'));
    };
    QCOMPARE(content("3"), content("1"));
    // A message that is no presentation too.
    QCOMPARE(desk.store("export", {"2", "-o", "letter.mms"}).exitCode, 0);
    QCOMPARE(desk.run({"decode", "--json", "letter.mms"}).json()["mmsType"].toInt(), 3);
    QCOMPARE(desk.store("add", {"letter.mms"}).exitCode, 0);
    QCOMPARE(content("4"), content("2"));
}

void TestStore::exportToOutput()
{
    const StoreDesk desk;
    desk.fill();
    QCOMPARE(desk.store("export", {"1", "-o", "out.mms"}).exitCode, 0);
    const Run run =
        desk.shell("\"$0\" store export --root root 1 -o - > piped.mms && cmp out.mms piped.mms");
    QCOMPARE(run.out + run.err, QString());
    QCOMPARE(run.exitCode, 0);
}

void TestStore::exportRefuses()
{
    const StoreDesk desk;
    desk.fill();
    QCOMPARE(desk.store("export", {"1", "-o", "no/where"}).errorLine(),
             QString("wmsg: no/where: cannot be written: No such file or directory"));
    QCOMPARE(desk.store("export", {"9", "-o", "out.mms"}).errorLine(),
             QString("wmsg: message 9: there is no message 9"));
    QCOMPARE(desk.read("out.mms"), QByteArray("NO FILE"));
}

void TestStore::removeAndMove()
{
    const StoreDesk desk;
    desk.fill();
    QCOMPARE(desk.store("move", {"--to", "sent", "1", "2"}).out,
             QString("moved message 1 to sent\nmoved message 2 to sent\n"));
    QCOMPARE(desk.store("list", {"sent"}).out.count('\n'), 2);
    QCOMPARE(desk.store("move", {"--to", "9", "--json", "2"}).json(),
             (QJsonObject{{"id", 2}, {"folder", "9"}}));
    QCOMPARE(desk.store("remove", {"1"}).out, QString("removed message 1\n"));
    QCOMPARE(desk.store("remove", {"--json", "2"}).json(),
             (QJsonObject{{"id", 2}, {"removed", true}}));
    QCOMPARE(desk.store("list").out, QString("no messages\n"));
    QCOMPARE(QDir(desk.path("root/mms/engine/parts")).entryList(QDir::Files), QStringList());
}

void TestStore::unknownMessages()
{
    const StoreDesk desk;
    desk.fill();
    for (const QStringList &arguments :
         {QStringList{"show"}, QStringList{"remove"}, QStringList{"move", "--to", "sent"}}) {
        const Run run = desk.store(arguments.first(), arguments.mid(1) + QStringList{"9"});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errorLine(), QString("wmsg: message 9: there is no message 9"));
        QCOMPARE(run.out, QString());
    }
    // The others are done.
    const Run run = desk.store("show", {"9", "2"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.out.startsWith("message 2 in drafts"));
}

void TestStore::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const QStringList &arguments) {
        QTest::newRow(name) << arguments;
    };
    row("no subcommand", {"store"});
    row("unknown subcommand", {"store", "steal"});
    row("unknown folder", {"store", "list", "attic"});
    row("folder out of range", {"store", "list", "65535"});
    row("folder with a zero", {"store", "list", "01"});
    row("no id", {"store", "show"});
    row("id 0", {"store", "show", "0"});
    row("id 65535", {"store", "show", "65535"});
    row("an id that is no number", {"store", "remove", "x"});
    row("no folder to move to", {"store", "move", "1"});
    row("no output", {"store", "export", "1"});
    row("two to export", {"store", "export", "1", "2", "-o", "x"});
    row("no file", {"store", "add"});
}

void TestStore::usage()
{
    QFETCH(QStringList, arguments);
    const StoreDesk desk;
    const Run run = desk.run(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
}

void TestStore::check()
{
    const StoreDesk desk;
    desk.fill();
    const QString store = "root/mms/engine/";
    const Run whole = desk.store("check");
    QCOMPARE(whole.exitCode, 0);
    QCOMPARE(whole.out, store + ": all is whole\n");
    QCOMPARE(desk.store("check", {"--json"}).json(),
             (QJsonObject{{"store", store}, {"problems", QJsonArray()}}));
    QVERIFY(QFile::resize(desk.path(store + "parts/1.part"), 3));
    const Run run = desk.store("check");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(),
             "wmsg: " + store + ": message 1: " + store
                 + "parts/1.part has 3 bytes instead of 122");
    QCOMPARE(desk.store("check", {"--json"}).json()["problems"].toArray().size(), 1);
    QVERIFY(desk.store("show", {"1"}).errorLine().contains("is missing or not whole"));
}

void TestStore::environment()
{
    const StoreDesk desk;
    desk.fill();
    const Run run = desk.shell("UVO_EXTRA_SYS_DATA_PATH=root \"$0\" store list drafts");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, desk.store("list", {"drafts"}).out);
}

void TestStore::refusals()
{
    const StoreDesk desk;
    desk.bring("pdu/notification");
    desk.write("root/mms", "a file in its way");
    const QString refused = "the store root/mms/engine/ cannot be made: Not a directory";
    QCOMPARE(desk.store("list").errorLine(), "wmsg: store list: " + refused);
    QCOMPARE(desk.store("check").errorLine(), "wmsg: store check: " + refused);
    QCOMPARE(desk.store("add", {"notification"}).errorLine(), "wmsg: notification: " + refused);
    QCOMPARE(desk.store("show", {"1"}).errorLine(), "wmsg: message 1: " + refused);
    QVERIFY(QFile::remove(desk.path("root/mms")));
    QCOMPARE(chmod(desk.path("root").toLocal8Bit().constData(), 0555), 0);
    QCOMPARE(desk.store("add", {"notification"}).errorLine(),
             QString("wmsg: notification: the store root/mms/engine/ cannot be made: Permission "
                     "denied"));
    QCOMPARE(chmod(desk.path("root").toLocal8Bit().constData(), 0755), 0);
    QCOMPARE(desk.store("add", {"notification"}).exitCode, 0);
    desk.write("root/mms/engine/messages.db", QByteArray(5000, 'x'));
    QCOMPARE(desk.store("add", {"notification"}).errorLine(),
             QString("wmsg: notification: the store root/mms/engine/: file is not a database"));
}

void TestStore::log()
{
    const StoreDesk desk;
    desk.fill();
    QCOMPARE(desk.store("show", {"1"}).err, QString());
    const Run verbose = desk.store("show", {"-v", "1"});
    QVERIFY(verbose.err.contains("Filled the presentation content type\n"));
    desk.store("show", {"--log", "log", "9"});
    QCOMPARE(desk.read("log"), QByteArray("MMS engine: there is no message 9\n"));
}

QTEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
