// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/program.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *kRetrieved = "pdu/retrieve-confirmation";

/// The bytes that an annotated hex view shows, and how many it folds.
struct HexView {
    explicit HexView(const QString &out)
    {
        for (const QString &line : out.split('\n')) {
            const QString offset = line.section("  ", 0, 0);
            bool isOffset = false;
            const qint64 at = offset.toLongLong(&isOffset, 16);
            if (!isOffset || offset.size() != 8) {
                continue;
            }
            isWhole = isWhole && at == bytes.size() + folded;
            const QString rest = line.mid(10);
            if (rest.startsWith("... ")) {
                folded += rest.section(' ', 1, 1).toLongLong();
            } else {
                bytes += QByteArray::fromHex(rest.left(47).toLatin1());
            }
        }
    }
    QByteArray bytes;
    qint64 folded = 0;
    bool isWhole = true;
};

} // namespace

class TestDecode : public QObject {
    Q_OBJECT

private slots:
    void people();
    void storedForPeople();
    void json();
    void jsonOfAMailFile();
    void jsonOfAFailure();
    void severalFiles();
    void standardInput();
    void failures_data();
    void failures();
    void foreignFiles();
    void notRegular();
    void hugeFile();
    void hexCoversEveryByte_data();
    void hexCoversEveryByte();
    void hexFolds();
    void nothingSteersTheTerminal();
    void longTextsAreCut();
    void longNamesAreCut();
    void extract();
    void extractRefuses();
    void extractForce();
    void extractHostileNames();
    void extractNested();
    void kinds();
    void log();
    void outputFails();
};

void TestDecode::people()
{
    const Desk desk;
    desk.bring(kRetrieved);
    const Run run = desk.run({"decode", "retrieve-confirmation"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err, QString());
    const QString expected =
        R"(retrieve-confirmation: retrieve confirmation, 302 bytes, header 115, body 187
  Message-Type       retrieve confirmation (132)
  Transaction-Id     R1
  MMS-Version        1.2
  Date               2024-05-01 11:31:12 +0000 (UTC)
  From               ann@example.org (e-mail address)
  To                 +431 (phone number)
                     Ann <a@b.c> (e-mail address)
  Subject            Sunset
  Message-ID         m1@mmsc
  Message-Class      personal (128)
  Priority           normal (129)
  Delivery-Report    no
  Read-Report        no
  Content-Type       application/vnd.wap.multipart.related
                     start = <s>
                     type = application/smil

  3 parts
  1  application/smil  s          74 bytes
     "<smil><body><par><img src="p.gif"/><text src="t.txt"/></par></body></smil>"
  2  image/gif         p.gif <p>  43 bytes
  3  text/plain        t.txt <t>  5 bytes
     "Look!"
)";
    QCOMPARE(run.out, expected);
}

void TestDecode::storedForPeople()
{
    const Desk desk;
    desk.bring("mail/letter");
    const Run run = desk.run({"decode", "letter"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.startsWith("letter: mail file (letter), 63 bytes, header 27, body 20\n"));
    QVERIFY(run.out.contains("\n  From               (the network inserts the address)\n"));
    QVERIFY(run.out.contains("\n  Sender-Visibility  shown\n"));
    QVERIFY(run.out.contains("\n     \"Hello\"\n"));
}

void TestDecode::json()
{
    const Desk desk;
    desk.bring(kRetrieved);
    const Run run = desk.run({"decode", "--json", "retrieve-confirmation"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out.count('\n'), 1);
    const QJsonDocument expected = QJsonDocument::fromJson(R"({
"file": "retrieve-confirmation", "kind": "pdu", "result": 100,
"headers": {"type": "retrieve-conf", "typeCode": 132, "transactionId": "R1", "version": "1.2",
  "messageId": "m1@mmsc", "date": 1714563072, "subject": "Sunset",
  "from": {"type": "EMAIL", "value": "ann@example.org"},
  "to": [{"type": "PLMN", "value": "+431"}, {"type": "EMAIL", "value": "a@b.c", "name": "Ann "}],
  "messageClass": "personal", "priority": "normal", "deliveryReport": false, "readReport": false,
  "contentType": {"type": "application/vnd.wap.multipart.related",
                  "params": {"start": "<s>", "type": "application/smil"}}},
"present": [4, 5, 6, 9, 10, 11, 12, 13, 15, 16, 22, 23, 24],
"headerLength": 115, "bodyLength": 187,
"parts": [
  {"contentType": {"type": "application/smil", "params": {}}, "contentId": "<s>",
   "contentLocation": "s", "size": 74,
   "sha256": "11edf2fcfeea7d767c17d49e8bb12a1f7eff088a0b0d5d0445c915f500b558e0",
   "text": "<smil><body><par><img src=\"p.gif\"/><text src=\"t.txt\"/></par></body></smil>"},
  {"contentType": {"type": "image/gif", "params": {}}, "contentId": "<p>",
   "contentLocation": "p.gif", "size": 43,
   "sha256": "693d949d8c3fdc7fd4ace7c340b5f177a9f0c5be7bafee8bc93a7d88b7523d75"},
  {"contentType": {"type": "text/plain", "params": {}}, "contentId": "<t>",
   "contentLocation": "t.txt", "size": 5,
   "sha256": "2b2e6386fdfb83273eea1b2d4b3294eac61e9967d949d9f5ecedbd25c3cf2234",
   "text": "Look!"}],
"warnings": [],
"intake": {"changed": false, "steps": [], "lost": []}, "codec": {"result": 100}})");
    QVERIFY(!expected.isNull());
    QCOMPARE(QJsonDocument(run.json()).toJson(), expected.toJson());
}

void TestDecode::jsonOfAMailFile()
{
    const Desk desk;
    desk.bring("mail/wrong-lengths");
    const QJsonObject object = desk.run({"decode", "--json", "wrong-lengths"}).json();
    QCOMPARE(object["kind"].toString(), "mailfile");
    QCOMPARE(object["mmsType"].toInt(), 3);
    QCOMPARE(object["headers"]["from"], QJsonValue(QJsonObject()));
    QCOMPARE(object["headers"]["senderVisibility"], QJsonValue(true));
    QVERIFY(!object["headers"].toObject().contains("type"));
    const QJsonArray warnings = object["warnings"].toArray();
    QCOMPARE(warnings.size(), 2);
    QCOMPARE(warnings[0]["offset"].toInt(), 4);
    QCOMPARE(warnings[0]["field"].toString(), "mail file prefix");
    QCOMPARE(warnings[0]["message"].toString(), "it says 28 bytes of header and there are 27");
    QCOMPARE(warnings[1]["message"].toString(), "it says 29 bytes of body and there are 20");
}

void TestDecode::jsonOfAFailure()
{
    const Desk desk;
    desk.bring("pdu/cut-in-address");
    const Run run = desk.run({"decode", "--strict", "--json", "cut-in-address"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(!run.json().contains("intake") && !run.json().contains("codec"));
    QCOMPARE(run.json()["result"].toInt(), 113);
    QCOMPARE(run.json()["headers"],
             QJsonValue(QJsonObject{{"type", "notification-ind"}, {"typeCode", 130}}));
    QCOMPARE(run.json()["present"].toArray(), (QJsonArray{9, 12}));
    QCOMPARE(run.errorLine(),
             "wmsg: cut-in-address: result 113 (a header field cannot be read: the data end "
             "inside the length of the value) at offset 3, field From");
}

void TestDecode::severalFiles()
{
    const Desk desk;
    desk.bring("pdu/notification");
    desk.bring("pdu/unknown-field");
    const Run run = desk.run({"decode", "--strict", "--json", "notification", "nowhere",
                              "unknown-field", "notification"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.out.count('\n'), 3);
    QCOMPARE(run.err.count('\n'), 2);
    QVERIFY(run.err.contains("wmsg: nowhere: cannot be opened: No such file or directory\n"));
    QVERIFY(run.err.contains("wmsg: unknown-field: result 104 (unknown header field: only the ids "
                             "1 to 24 are known) at offset 4, field 25\n"));
}

void TestDecode::standardInput()
{
    const Desk desk;
    desk.bring("pdu/notification");
    const Run run = desk.run({"decode", "-"}, desk.read("notification"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.startsWith("standard input: notification, 70 bytes"));
    QCOMPARE(desk.run({"decode", "-"}).errorLine(), "wmsg: standard input: is empty");
    QCOMPARE(desk.run({"decode", "--max-size", "69", "-"}, desk.read("notification")).errorLine(),
             "wmsg: standard input: is larger than 69 bytes (see --max-size)");
    QCOMPARE(desk.run({"decode", "--max-size", "70", "-"}, desk.read("notification")).exitCode, 0);
}

void TestDecode::failures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *file, const char *line) {
        QTest::newRow(file) << file << line;
    };
    row("pdu/unknown-field",
        "result 104 (unknown header field: only the ids 1 to 24 are known) at offset 4, field 25");
    row("pdu/field-id-zero",
        "result 110 (0 is no header field: only the ids 1 to 24 are known) at offset 2, field 0");
    row("pdu/cut-in-picture",
        "result 111 (the multipart body cannot be read: the data say 16 bytes and 3 remain) at "
        "offset 8, field part 1");
    row("pdu/body-without-bytes",
        "result 111 (the multipart body cannot be read: the data end after 0 of 179 parts) at "
        "offset 4, field part 1");
    row("pdu/four-hostile-bytes",
        "result 113 (a header field cannot be read: the data end inside the value) at offset 4, "
        "field Content-Type");
    row("pdu/spelled-media-type",
        "result 113 (a header field cannot be read: the data end inside the media type) at offset "
        "5, field Content-Type");
    row("mail/cut-in-header",
        "result 113 (a header field cannot be read: the data end inside the length of the value) "
        "at offset 17, field From");
    row("mail/short-prefix",
        "result 102 (the file is shorter than the prefix of a mail file: it ends after 8 bytes) at "
        "offset 8, field mail file prefix");
}

void TestDecode::failures()
{
    QFETCH(QString, file);
    QFETCH(QString, line);
    const Desk desk;
    desk.bring(file);
    const QString name = QFileInfo(file).fileName();
    for (const QStringList &options :
         {QStringList{}, QStringList{"--json"}, QStringList{"--hex"}}) {
        const Run run = desk.run(QStringList{"decode", "--strict"} + options + QStringList{name});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errorLine(), "wmsg: " + name + ": " + line);
    }
}

void TestDecode::foreignFiles()
{
    const Desk desk;
    desk.write("page.html", "<!DOCTYPE html><html><body>Hello</body></html>\n");
    desk.write("photo.jpg", fromHex("FFD8FFE000104A46494600010100000100010000FFDB"));
    desk.write("archive.zip", fromHex("504B030414000000080000000000"));
    desk.write("program", fromHex("7F454C460201010000000000000000000200"));
    desk.write("zeros", QByteArray(1000, '\0'));
    const Run text = desk.run({"decode", "page.html"});
    QCOMPARE(text.exitCode, 1);
    QCOMPARE(text.errorLine(), "wmsg: page.html: is a text that spells no message in hex");
    QCOMPARE(text.out, QString());
    for (const char *name : {"photo.jpg", "archive.zip", "program", "zeros"}) {
        const Run run = desk.run({"decode", name});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errorLine().startsWith(QString("wmsg: %1: result 1").arg(name)),
                 qPrintable(run.err));
    }
}

void TestDecode::notRegular()
{
    const Desk desk;
    desk.write("empty", "");
    desk.write("secret", "x");
    QVERIFY(desk.folder().mkdir("folder"));
    QCOMPARE(mkfifo(qPrintable(desk.path("pipe")), 0600), 0);
    QCOMPARE(symlink("nowhere", qPrintable(desk.path("broken"))), 0);
    const auto line = [&](const char *name) {
        return desk.run({"decode", name}).errorLine();
    };
    QCOMPARE(line("empty"), "wmsg: empty: is empty");
    QCOMPARE(line("folder"), "wmsg: folder: is a directory");
    QCOMPARE(line("pipe"), "wmsg: pipe: is a pipe; read it as standard input: -");
    QCOMPARE(line("/dev/zero"), "wmsg: /dev/zero: is a device");
    QCOMPARE(line("broken"), "wmsg: broken: cannot be opened: No such file or directory");
    QCOMPARE(desk.run({"decode", "folder"}).exitCode, 1);
    QCOMPARE(chmod(qPrintable(desk.path("secret")), 0), 0);
    QCOMPARE(line("secret"), "wmsg: secret: cannot be opened: Permission denied");
    // A name that is no text does no harm to the line.
    QVERIFY(desk.shell("\"$0\" decode \"$(printf 'a\\033[2J\\377')\"")
                .errorLine()
                .startsWith("wmsg: a\\x1B[2J"));
}

void TestDecode::hugeFile()
{
    const Desk desk;
    QFile file(desk.path("huge"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(qint64(5) << 30));
    QCOMPARE(desk.run({"decode", "huge"}).errorLine(),
             "wmsg: huge: is larger than 67108864 bytes (see --max-size)");
    QCOMPARE(desk.run({"decode", "--max-size", "2147418111", "huge"}).errorLine(),
             "wmsg: huge: is larger than 2147418111 bytes (see --max-size)");
    QCOMPARE(desk.run({"decode", "--max-size", "2147483648", "huge"}).exitCode, 2);
}

void TestDecode::hexCoversEveryByte_data()
{
    QTest::addColumn<QString>("file");
    for (const char *folder : {"pdu", "mail"}) {
        for (const QString &name :
             QDir(QString(WMSG_TEST_DATA "/") + folder).entryList({"*.hex"})) {
            QTest::newRow(qPrintable(name)) << QString("%1/%2").arg(folder, name.chopped(4));
        }
    }
}

void TestDecode::hexCoversEveryByte()
{
    QFETCH(QString, file);
    const Desk desk;
    desk.bring(file);
    const QString name = QFileInfo(file).fileName();
    for (const char *option : {"--strict", "--full"}) {
        const HexView view(desk.run({"decode", "--hex", "--full", option, name}).out);
        QVERIFY(view.isWhole);
        QCOMPARE(toHex(view.bytes), toHex(desk.read(name)));
        QCOMPARE(view.folded, 0);
    }
}

void TestDecode::hexFolds()
{
    const Desk desk;
    desk.write("m", fromHex("8C84 84A3 01 01 8768 9D") + QByteArray(1000, 'x'));
    const Run run = desk.run({"decode", "--hex", "m"});
    QCOMPARE(run.exitCode, 0);
    const HexView view(run.out);
    QVERIFY(view.isWhole);
    QCOMPARE(view.folded, 1000 - 32);
    QCOMPARE(view.bytes.size() + view.folded, desk.read("m").size());
    QVERIFY(run.out.contains("00000009  78 78 78 78 78 78 78 78 78 78 78 78 78 78 78 78  part 1: "
                             "data, image/gif, 1000 bytes\n"));
    QVERIFY(run.out.contains("00000029  ... 968 more bytes, up to 000003F0\n"));
}

void TestDecode::nothingSteersTheTerminal()
{
    const Desk desk;
    desk.bring("pdu/terminal-escapes");
    for (const QStringList &options : {QStringList{}, QStringList{"--hex"}, QStringList{"-v"}}) {
        const Run run = desk.run(QStringList{"decode"} + options + QStringList{"terminal-escapes"});
        for (const QChar c : run.out + run.err) {
            QVERIFY2(c == '\n'
                         || (c.unicode() >= 0x20 && (c.unicode() < 0x7F || c.unicode() > 0x9F)),
                     qPrintable(QString::number(c.unicode(), 16)));
            QVERIFY(c.unicode() != 0x202E);
        }
    }
    const Run run = desk.run({"decode", "terminal-escapes"});
    QVERIFY(run.out.contains("\n  Transaction-Id     \\x1B]0;owned\\x07\n"));
    QVERIFY(run.out.contains("\n  Subject            \\x1B[2J\\u{202E}gpj.\\r\\n\n"));
}

void TestDecode::longTextsAreCut()
{
    const Desk desk;
    desk.write("m", fromHex("8C84 84A3 01 01 8768 83") + QByteArray(1000, 'x'));
    const QString shown = desk.run({"decode", "m"}).out;
    QVERIFY(shown.contains('"' + QString(160, 'x') + QString::fromUtf8("… (+840 characters)\"")));
    QVERIFY(desk.run({"decode", "--full", "m"}).out.contains('"' + QString(1000, 'x') + '"'));
    desk.write("n", fromHex("8C80") + fromHex("97 31 00").repeated(1005));
    QCOMPARE(desk.run({"decode", "n"}).out.count("1 (phone number)\n"), 1000);
    QVERIFY(desk.run({"decode", "n"}).out.endsWith("\n                     and 5 more\n"));
    QCOMPARE(desk.run({"decode", "--full", "n"}).out.count("1 (phone number)\n"), 1005);
}

void TestDecode::longNamesAreCut()
{
    const Desk desk;
    const QByteArray subject(300, 's');
    const QByteArray name(60, 'n');
    // Two parts, of which the first has a name.
    desk.write("m",
               fromHex("8C84 96") + subject + fromHex("00 97") + QByteArray(300, '1')
                   + fromHex("00 84A3 02 3F 01 9E 8E") + name + fromHex("00 78 01 01 9E 78"));
    const QString shown = desk.run({"decode", "m"}).out;
    QVERIFY(
        shown.contains("  Subject            " + QString(200, 's') + u"… (+100 characters)\n"_qs));
    QVERIFY(
        shown.contains("  To                 " + QString(200, '1') + u"… (+100 characters) ("_qs));
    QVERIFY2(shown.contains("\n  1  image/jpeg  " + QString(47, 'n') + u"…  1 byte\n"_qs),
             qPrintable(shown));
    const QString full = desk.run({"decode", "--full", "m"}).out;
    QVERIFY(full.contains("  Subject            " + QString(300, 's') + '\n'));
    QVERIFY(full.contains("  To                 " + QString(300, '1') + " (phone number)\n"));
    QVERIFY2(full.contains("\n  1  image/jpeg  " + QString(60, 'n') + "  1 byte\n"),
             qPrintable(full));
    QVERIFY(full.contains("\n  2  image/jpeg  " + QString(48, ' ') + "  1 byte\n"));
}

void TestDecode::extract()
{
    const Desk desk;
    desk.bring(kRetrieved);
    const Run run = desk.run({"decode", "--extract", "parts", "retrieve-confirmation"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.endsWith("wrote parts/s.smil, 74 bytes\nwrote parts/p.gif, 43 bytes\n"
                             "wrote parts/t.txt, 5 bytes\n"));
    QCOMPARE(
        QDir(desk.path("parts")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        (QStringList{"p.gif", "s.smil", "t.txt"}));
    QCOMPARE(desk.read("parts/t.txt"), "Look!");
    QVERIFY(desk.read("parts/p.gif").startsWith("GIF89a"));
    // Beside JSON, what was written is told on standard error.
    const Run json = desk.run({"decode", "--json", "--extract", "more", "retrieve-confirmation"});
    QCOMPARE(json.out.count('\n'), 1);
    QVERIFY(json.err.startsWith("wrote more/s.smil, 74 bytes\n"));
}

void TestDecode::extractRefuses()
{
    const Desk desk;
    desk.bring(kRetrieved);
    desk.write("outside", "keep");
    QVERIFY(desk.folder().mkdir("parts"));
    QCOMPARE(symlink("../outside", qPrintable(desk.path("parts/p.gif"))), 0);
    QVERIFY(QDir(desk.path("parts")).mkdir("s.smil"));
    desk.write("parts/t.txt", "mine");
    for (const bool force : {false, true}) {
        QStringList arguments{"decode", "--extract", "parts", "retrieve-confirmation"};
        if (force) {
            arguments.insert(1, "--force");
        }
        const Run run = desk.run(arguments);
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(desk.read("outside"), "keep");
        QVERIFY(
            run.err.contains("wmsg: parts/p.gif: is a link, and nothing is written through it\n"));
        QVERIFY(run.err.contains("wmsg: parts/s.smil: exists and is no regular file\n"));
        QCOMPARE(run.err.contains("wmsg: parts/t.txt: exists already (see --force)\n"), !force);
        QCOMPARE(desk.read("parts/t.txt"), force ? "Look!" : "mine");
    }
    QCOMPARE(desk.run({"decode", "--extract", "outside", "retrieve-confirmation"}).errorLine(),
             "wmsg: outside: cannot be opened: Not a directory");
    QCOMPARE(desk.run({"decode", "--extract", "no/where", "retrieve-confirmation"}).errorLine(),
             "wmsg: no/where: cannot be made: No such file or directory");
}

void TestDecode::extractForce()
{
    const Desk desk;
    desk.bring(kRetrieved);
    const QStringList arguments{"decode", "--extract", "parts", "--force", "retrieve-confirmation"};
    QCOMPARE(desk.run(arguments).exitCode, 0);
    desk.write("parts/t.txt", "something longer than before");
    QCOMPARE(desk.run(arguments).exitCode, 0);
    QCOMPARE(desk.read("parts/t.txt"), "Look!");
    QCOMPARE(desk.run({"decode", "--force", "retrieve-confirmation"}).exitCode, 2);
}

void TestDecode::extractHostileNames()
{
    const Desk desk;
    desk.bring("pdu/hostile-names");
    QCOMPARE(desk.run({"decode", "--extract", "deep", "hostile-names"}).exitCode, 0);
    const QDir folder(desk.path("deep"));
    QCOMPARE(folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
             (QStringList{"A-2.txt", "a.txt", "part2.txt", "passwd.txt", "rf.txt"}));
    QCOMPARE(desk.folder().entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{"deep", "hostile-names"}));
}

void TestDecode::extractNested()
{
    const Desk desk;
    desk.bring("pdu/nested");
    desk.bring("pdu/single-text");
    QCOMPARE(desk.run({"decode", "--extract", "p", "nested"}).exitCode, 0);
    QCOMPARE(desk.read("p/part1.txt"), "ok");
    QCOMPARE(desk.run({"decode", "--extract", "q", "single-text"}).exitCode, 0);
    QCOMPARE(desk.read("q/part1.txt"), "hi");
}

void TestDecode::kinds()
{
    const Desk desk;
    desk.bring("mail/old-layout");
    desk.bring("mail/prefix-alone");
    QCOMPARE(desk.run({"decode", "--as", "mailfile", "old-layout"}).errorLine(),
             "wmsg: old-layout: result 112 (a mail file of the old layout: there is no prefix) at "
             "offset 1, field mail file prefix");
    QCOMPARE(desk.run({"decode", "prefix-alone"}).exitCode, 0);
    QCOMPARE(desk.run({"decode", "--as", "pdu", "prefix-alone"}).exitCode, 1);
    QCOMPARE(desk.run({"decode", "--as", "letter", "prefix-alone"}).exitCode, 2);
}

void TestDecode::log()
{
    const Desk desk;
    desk.bring("pdu/notification");
    const Run quiet = desk.run({"decode", "notification"});
    QCOMPARE(quiet.err, QString());
    const Run verbose = desk.run({"decode", "-v", "notification"});
    QCOMPARE(verbose.out, quiet.out);
    QVERIFY(verbose.err.contains("\nmsgSize: 30000\n"));
    const Run logged = desk.run({"decode", "--log", "log", "notification"});
    QCOMPARE(logged.out, quiet.out);
    QCOMPARE(logged.err, QString());
    QCOMPARE(desk.read("log"), verbose.err.toUtf8());
    desk.run({"decode", "--log", "log", "notification"});
    QCOMPARE(desk.read("log"), (verbose.err + verbose.err).toUtf8());
    QCOMPARE(desk.run({"decode", "--log", "no/where", "notification"}).errorLine(),
             "wmsg: no/where: the log cannot be opened: No such file or directory");
    QCOMPARE(desk.run({"decode", "-v", "--log", "log", "notification"}).exitCode, 2);
}

void TestDecode::outputFails()
{
    const Desk desk;
    desk.bring("pdu/notification");
    const Run run = desk.shell("\"$0\" decode notification >/dev/full");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: standard output: cannot be written: No space left on device");
}

QTEST_GUILESS_MAIN(TestDecode)
#include "tst_decode.moc"
