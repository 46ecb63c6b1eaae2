// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/program.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QByteArray kPng =
    fromHex("89504E470D0A1A0A 0000000D49484452 00000001000000010802000000 907753DE");
const QByteArray kAmr = QByteArray("#!AMR\n") + fromHex("3C00112233");

QStringList composed(const QStringList &arguments)
{
    return QStringList{"compose"} + arguments;
}

} // namespace

class TestCompose : public QObject {
    Q_OBJECT

private slots:
    void sendRequest();
    void everyByteOfAMessage();
    void retrieveConfirmation();
    void mailFile();
    void pictureMessage();
    void withoutPresentation();
    void attachmentsAlone();
    void allKindsRoundTrip_data();
    void allKindsRoundTrip();
    void bytesComeBack();
    void reproducible();
    void texts();
    void reports();
    void dates();
    void badInput_data();
    void badInput();
    void notUtf8();
    void wrongUsage_data();
    void wrongUsage();
    void tooLong();
    void tooMany();
    void output();
    void outputKeepsWhatItCannotReplace();
};

void TestCompose::sendRequest()
{
    const Desk desk;
    const Run run = desk.run(composed({"--to",
                                       "+43 (1) 234",
                                       "a@b.org",
                                       "--cc",
                                       "12",
                                       "--bcc",
                                       "c@d.org",
                                       "--from",
                                       "+431",
                                       "--subject",
                                       QString::fromUtf8("Grüße"),
                                       "--text",
                                       "Hi",
                                       "--priority",
                                       "high",
                                       "--class",
                                       "informational",
                                       "--expiry",
                                       "3d",
                                       "--delivery-report",
                                       "--no-read-report",
                                       "--date",
                                       "2024-05-01T12:00:00Z",
                                       "--transaction-id",
                                       "T1",
                                       "--app-id",
                                       "my.app",
                                       "-o",
                                       "m"}));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.startsWith("wrote m: send request, 2 parts, "));
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    const QJsonDocument expected = QJsonDocument::fromJson(R"({
"type": "send-req", "typeCode": 128, "transactionId": "T1", "version": "1.2", "date": 1714564800,
"from": {"type": "PLMN", "value": "+431"},
"to": [{"type": "PLMN", "value": "+431234"}, {"type": "EMAIL", "value": "a@b.org"}],
"cc": [{"type": "PLMN", "value": "12"}], "bcc": [{"type": "EMAIL", "value": "c@d.org"}],
"subject": "Grüße", "messageClass": "informational", "expiry": 259200, "priority": "high",
"senderVisibility": true, "deliveryReport": true, "readReport": false,
"contentType": {"type": "application/vnd.wap.multipart.related",
  "params": {"Application-ID": "my.app", "start": "<smil>", "type": "application/smil"}}})");
    QCOMPARE(QJsonDocument(decoded["headers"].toObject()).toJson(), expected.toJson());
    QCOMPARE(decoded["warnings"].toArray(), QJsonArray());
}

void TestCompose::everyByteOfAMessage()
{
    const Desk desk;
    QCOMPARE(desk.run(composed({"--to", "12", "--text", "Hi", "--no-smil", "--date", "1714564800",
                                "--transaction-id", "T1", "-o", "m"}))
                 .exitCode,
             0);
    const QByteArray expected = fromHex(R"(
        8C 80                               # Message-Type: send request
        98 54 31 00                         # Transaction-Id: T1
        8D 92                               # MMS-Version: 1.2
        85 04 66 32 2E C0                   # Date
        89 01 81                            # From: the network inserts the address
        97 31 32 2F 54 59 50 45 3D 50 4C 4D 4E 00
        8A 80                               # Message-Class: personal
        8F 81                               # Priority: normal
        94 81                               # Sender-Visibility: show
        84 A3                               # Content-Type: mixed
        01                                  # one part
        25 02                               # 37 bytes of headers, 2 of data
        0D 83 81 EA 85 74 65 78 74 2E 74 78 74 00
        8E 74 65 78 74 2E 74 78 74 00       # Content-Location: text.txt
        C0 22 3C 74 65 78 74 2E 74 78 74 3E 00
        48 69)");
    QCOMPARE(toHex(desk.read("m")), toHex(expected));
}

void TestCompose::retrieveConfirmation()
{
    const Desk desk;
    QCOMPARE(desk.run(composed({"--pdu", "retrieve-conf", "--to", "12", "--from", "a@b.c", "--text",
                                "Hi", "--message-id", "m1@x", "-o", "m"}))
                 .exitCode,
             0);
    const QJsonObject headers = desk.run({"decode", "--json", "m"}).json()["headers"].toObject();
    QCOMPARE(headers["type"].toString(), "retrieve-conf");
    QCOMPARE(headers["messageId"].toString(), "m1@x");
    QVERIFY(!headers["transactionId"].toString().isEmpty());
    QVERIFY(headers["date"].toInt() > 1700000000);
    QCOMPARE(headers["priority"].toString(), "normal");
}

void TestCompose::mailFile()
{
    const Desk desk;
    QCOMPARE(desk.run(composed({"--pdu", "stored", "--text", "Hi", "-o", "m"})).exitCode, 0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(decoded["kind"].toString(), "mailfile");
    QCOMPARE(decoded["mmsType"].toInt(), 6);
    QCOMPARE(decoded["warnings"].toArray(), QJsonArray());
    QVERIFY(desk.read("m").startsWith(fromHex("12 10 06 00")));
    QCOMPARE(desk.folder().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"m"});
}

void TestCompose::pictureMessage()
{
    const Desk desk;
    desk.write(QString::fromUtf8("Müller & <Söhne>.png"), kPng);
    desk.write("a.amr", kAmr);
    QCOMPARE(desk.run(composed({"--to", "12", "--text", "A & <B>", "--attach",
                                QString::fromUtf8("Müller & <Söhne>.png"), "a.amr", "-o", "m"}))
                 .exitCode,
             0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    const QJsonArray parts = decoded["parts"].toArray();
    QCOMPARE(parts.size(), 4);
    QCOMPARE(parts[0]["contentId"].toString(), "<smil>");
    QCOMPARE(parts[0]["contentType"]["type"].toString(), "application/smil");
    QVERIFY(parts[0]["text"].toString().contains(
        "<par><img src=\"Muller____Sohne_.png\" region=\"Image\"/>"
        "<text src=\"text.txt\" region=\"Text\"/><audio src=\"a.amr\"/></par>"));
    QCOMPARE(parts[1]["text"].toString(), "A & <B>");
    QCOMPARE(parts[2]["contentType"]["type"].toString(), "image/png");
    QCOMPARE(parts[2]["contentId"].toString(), "<Muller____Sohne_.png>");
    QCOMPARE(parts[2]["contentLocation"].toString(), "Muller____Sohne_.png");
    QCOMPARE(parts[3]["contentType"]["type"].toString(), "audio/amr");
    QCOMPARE(decoded["warnings"].toArray(), QJsonArray());
}

void TestCompose::withoutPresentation()
{
    const Desk desk;
    desk.write("p.png", kPng);
    QCOMPARE(
        desk.run(composed({"--to", "12", "--no-smil", "--attach", "p.png", "-o", "m"})).exitCode,
        0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(decoded["headers"]["contentType"],
             QJsonValue(QJsonObject{{"type", "application/vnd.wap.multipart.mixed"},
                                    {"params", QJsonObject()}}));
    QCOMPARE(decoded["parts"].toArray().size(), 1);
}

void TestCompose::attachmentsAlone()
{
    const Desk desk;
    desk.write("a.vcf", "BEGIN:VCARD\nEND:VCARD\n");
    QCOMPARE(desk.run(composed({"--to", "12", "--attach", "a.vcf", "-o", "m"})).exitCode, 0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    // With nothing to show there is no presentation.
    QCOMPARE(decoded["headers"]["contentType"]["type"].toString(),
             "application/vnd.wap.multipart.mixed");
    QCOMPARE(decoded["parts"][0]["contentType"]["type"].toString(), "text/x-vCard");
}

void TestCompose::allKindsRoundTrip_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("smil");
    for (const char *kind : {"send-req", "retrieve-conf", "stored"}) {
        QTest::newRow(kind) << kind << true;
        QTest::newRow(qPrintable(QString("%1, no presentation").arg(kind))) << kind << false;
    }
}

void TestCompose::allKindsRoundTrip()
{
    QFETCH(QString, kind);
    QFETCH(bool, smil);
    const Desk desk;
    desk.write("p.png", kPng);
    QStringList arguments{"--pdu",  kind, "--to",     "12",    "--subject", "S",
                          "--text", "T",  "--attach", "p.png", "-o",        "-"};
    if (!smil) {
        arguments += "--no-smil";
    }
    const Run written =
        desk.shell("\"$0\" compose '" + arguments.join("' '") + "' | \"$0\" decode --json -");
    QCOMPARE(written.err, QString());
    const QJsonObject decoded = written.json();
    QCOMPARE(decoded["result"].toInt(), 100);
    QCOMPARE(decoded["kind"].toString(), kind == "stored" ? "mailfile" : "pdu");
    QCOMPARE(decoded["headers"]["subject"].toString(), "S");
    QCOMPARE(decoded["parts"].toArray().size(), smil ? 3 : 2);
    QCOMPARE(decoded["warnings"].toArray(), QJsonArray());
}

void TestCompose::bytesComeBack()
{
    const Desk desk;
    QByteArray bytes = kPng;
    for (int n = 0; n < 100000; ++n) {
        bytes += char(n * 7919 >> 3);
    }
    desk.write("p.png", bytes);
    desk.write("q.png", bytes + '\0');
    QCOMPARE(desk.run(composed({"--to", "12", "--attach", "p.png", "q.png", "p.png", "-o", "m"}))
                 .exitCode,
             0);
    QCOMPARE(desk.run({"decode", "--extract", "d", "m"}).exitCode, 0);
    QVERIFY(desk.read("d/p.png") == bytes);
    QVERIFY(desk.read("d/q.png") == bytes + '\0');
    QVERIFY(desk.read("d/p-2.png") == bytes);
}

void TestCompose::reproducible()
{
    const Desk desk;
    const QStringList same{"compose", "--to", "12", "--text", "T", "--date", "1714564800"};
    for (const char *name : {"a", "b"}) {
        QCOMPARE(desk.run(same + QStringList{"--transaction-id", "X", "-o", name}).exitCode, 0);
    }
    QCOMPARE(toHex(desk.read("a")), toHex(desk.read("b")));
    for (const char *name : {"c", "d"}) {
        QCOMPARE(desk.run(same + QStringList{"-o", name}).exitCode, 0);
    }
    const auto id = [&](const char *name) {
        return desk.run({"decode", "--json", name}).json()["headers"]["transactionId"].toString();
    };
    QVERIFY(!id("c").isEmpty());
    QVERIFY(id("c") != id("d"));
}

void TestCompose::texts()
{
    const Desk desk;
    desk.write("t.txt", QString::fromUtf8("Grüße\nzwei").toUtf8());
    const Run run =
        desk.run(composed({"--to", "12", "--text", "[a, b]", "--text", "", "--text", "--x",
                           "--text-file", "t.txt", "--text-file", "-", "-o", "m"}),
                 "from the pipe");
    QCOMPARE(run.err, QString());
    const QJsonArray parts = desk.run({"decode", "--json", "m"}).json()["parts"].toArray();
    QStringList texts;
    QStringList names;
    for (const QJsonValue &part : parts) {
        texts += part["text"].toString();
        names += part["contentLocation"].toString();
    }
    QCOMPARE(texts.mid(1),
             (QStringList{"[a, b]", "", "--x", QString::fromUtf8("Grüße\nzwei"), "from the pipe"}));
    QCOMPARE(names.mid(1),
             (QStringList{"text.txt", "text-2.txt", "text-3.txt", "t.txt", "part5.txt"}));
}

void TestCompose::reports()
{
    const Desk desk;
    const auto headers = [&](const QStringList &options) {
        desk.run(composed(QStringList{"--to", "12", "--text", "T", "-o", "m"} + options));
        return desk.run({"decode", "--json", "m"}).json()["headers"].toObject();
    };
    QVERIFY(!headers({}).contains("deliveryReport"));
    QVERIFY(!headers({}).contains("readReport"));
    QVERIFY(!headers({}).contains("expiry"));
    QCOMPARE(headers({"--delivery-report"})["deliveryReport"], QJsonValue(true));
    QCOMPARE(headers({"--no-delivery-report"})["deliveryReport"], QJsonValue(false));
    QCOMPARE(headers({"--read-report"})["readReport"], QJsonValue(true));
    for (const char *priority : {"low", "normal", "high"}) {
        QCOMPARE(headers({"--priority", priority})["priority"].toString(), priority);
    }
    for (const char *name : {"personal", "advertisement", "informational", "auto"}) {
        QCOMPARE(headers({"--class", name})["messageClass"].toString(), name);
    }
}

void TestCompose::dates()
{
    const Desk desk;
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    desk.run(composed({"--to", "12", "--text", "T", "-o", "m"}));
    const qint64 date = desk.run({"decode", "--json", "m"}).json()["headers"]["date"].toInteger();
    QVERIFY(date >= before && date <= QDateTime::currentSecsSinceEpoch());
    desk.run(composed({"--to", "12", "--text", "T", "-o", "m", "--date", "2147483647"}));
    QCOMPARE(desk.run({"decode", "--json", "m"}).json()["headers"]["date"].toInteger(), 2147483647);
}

void TestCompose::badInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const QStringList &arguments, const char *line) {
        QTest::newRow(name) << arguments << QString(line);
    };
    row("no address", {"--to", "12", "ann", "--text", "T"},
        "--to: \"ann\" is neither a phone number nor an e-mail address");
    row("no address in cc", {"--cc", "a@", "--text", "T"}, "--cc: \"a@\" is no e-mail address");
    row("empty address", {"--bcc", "", "--text", "T"}, "--bcc: \"\" is empty");
    row("no sender", {"--to", "12", "--from", "x", "--text", "T"},
        "--from: \"x\" is neither a phone number nor an e-mail address");
    row("hostile address", {"--to", "\x1B[2J", "--text", "T"},
        "--to: \"\\x1B[2J\" is neither a phone number nor an e-mail address");
    row("missing file", {"--to", "12", "--attach", "nowhere"},
        "nowhere: cannot be opened: No such file or directory");
    row("directory", {"--to", "12", "--attach", "."}, ".: is a directory");
    row("device", {"--to", "12", "--attach", "/dev/zero"}, "/dev/zero: is a device");
    row("empty file", {"--to", "12", "--attach", "empty"}, "empty: is empty");
    row("missing text", {"--to", "12", "--text-file", "nowhere"},
        "nowhere: cannot be opened: No such file or directory");
    row("text not UTF-8", {"--to", "12", "--text-file", "latin.txt"},
        "latin.txt: is a text (text/plain), and not in UTF-8");
    row("attached text not UTF-8", {"--to", "12", "--attach", "latin.txt"},
        "latin.txt: is a text (text/plain), and not in UTF-8");
    row("too large", {"--to", "12", "--attach", "ten", "--max-size", "9"},
        "ten: is larger than 9 bytes (see --max-size)");
    row("too large together",
        {"--to", "12", "--text", "abc", "--attach", "ten", "--max-size", "12"},
        "ten: is larger than 9 bytes (see --max-size)");
    row("no date", {"--to", "12", "--text", "T", "--date", "soon"},
        "--date: \"soon\" is no date from 1970 to 2038 (2024-05-01T12:00:00Z, or seconds)");
    row("no duration", {"--to", "12", "--text", "T", "--expiry", "-1"},
        "--expiry: \"-1\" is no duration (90, 15m, 12h, 3d, 1w)");
    row("line in the subject", {"--to", "12", "--text", "T", "--subject", "a\nb"},
        "--subject: has a control character");
    row("blank in an id", {"--to", "12", "--text", "T", "--transaction-id", "a b"},
        "--transaction-id: takes ASCII letters, digits and signs alone");
    row("long id", {"--to", "12", "--text", "T", "--app-id", QString(65, 'x')},
        "--app-id: is longer than 64 characters");
    row("no folder for the output", {"--to", "12", "--text", "T", "-o", "no/where"},
        "no/where: cannot be written: No such file or directory");
    row("output is a directory", {"--to", "12", "--text", "T", "-o", "."}, ".: is a directory");
}

void TestCompose::badInput()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    const Desk desk;
    desk.write("empty", "");
    desk.write("ten", "0123456789");
    desk.write("latin.txt",
               "Gr\xFC\xDF"
               "e");
    if (!arguments.contains("-o")) {
        arguments += QStringList{"-o", "m"};
    }
    const Run run = desk.run(composed(arguments));
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: " + line);
    QCOMPARE(run.out, QString());
    QVERIFY(!desk.folder().exists("m"));
}

void TestCompose::notUtf8()
{
    const Desk desk;
    for (const char *option : {"--text", "--subject", "--to", "--from"}) {
        const Run run = desk.shell(
            QString("\"$0\" compose --cc 12 --text T %1 \"$(printf 'a\\377')\" -o m").arg(option));
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errorLine(), QString("wmsg: %1: is not valid UTF-8").arg(option));
    }
}

void TestCompose::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing to send") << QStringList{"--to", "12", "-o", "m"};
    QTest::newRow("nobody to send to") << QStringList{"--text", "T", "-o", "m"};
    QTest::newRow("no output") << QStringList{"--to", "12", "--text", "T"};
    QTest::newRow("unknown kind") << QStringList{"--to", "12", "--text", "T",
                                                 "-o",   "m",  "--pdu",  "x"};
    QTest::newRow("unknown priority")
        << QStringList{"--to", "12", "--text", "T", "-o", "m", "--priority", "urgent"};
    QTest::newRow("unknown class")
        << QStringList{"--to", "12", "--text", "T", "-o", "m", "--class", "first"};
    QTest::newRow("unknown option")
        << QStringList{"--to", "12", "--text", "T", "-o", "m", "--colour"};
    QTest::newRow("stray argument") << QStringList{"--text", "T", "--to", "12", "-o", "m", "x"};
    QTest::newRow("both answers") << QStringList{"--to", "12", "--text",        "T",
                                                 "-o",   "m",  "--read-report", "--no-read-report"};
    QTest::newRow("expiry of a received message")
        << QStringList{"--pdu", "retrieve-conf", "--text", "T", "-o", "m", "--expiry", "1d"};
    QTest::newRow("message id of a new message")
        << QStringList{"--to", "12", "--text", "T", "-o", "m", "--message-id", "x"};
}

void TestCompose::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Desk desk;
    const Run run = desk.run(composed(arguments));
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
    QVERIFY(!desk.folder().exists("m"));
}

void TestCompose::tooLong()
{
    const Desk desk;
    const QStringList rest{"--text", "T", "-o", "m"};
    QCOMPARE(desk.run(composed(QStringList{"--to", "12", "--subject", QString(20000, 's')} + rest))
                 .errorLine(),
             "wmsg: Subject: is too long to be written");
    QStringList many{"--to"};
    for (int n = 0; n < 1000; ++n) {
        many += QString("+%1").arg(1000000 + n);
    }
    QCOMPARE(desk.run(composed(many + rest)).errorLine(), "wmsg: To: is too long to be written");
    QVERIFY(!desk.folder().exists("m"));
    QCOMPARE(desk.run(composed(QStringList{"--to", "12", "--subject", QString(8000, 's')} + rest))
                 .exitCode,
             0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(decoded["headers"]["subject"].toString(), QString(8000, 's'));
}

void TestCompose::tooMany()
{
    const Desk desk;
    QStringList texts;
    for (int n = 0; n < 254; ++n) {
        texts += QStringList{"--text", QString::number(n)};
    }
    QCOMPARE(desk.run(composed(QStringList{"--to", "12", "-o", "m"} + texts)).exitCode, 0);
    const QJsonObject decoded = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(decoded["parts"].toArray().size(), 255);
    QCOMPARE(decoded["parts"][254]["text"].toString(), "253");
    QCOMPARE(
        desk.run(composed(QStringList{"--to", "12", "-o", "m", "--text", "x"} + texts)).errorLine(),
        "wmsg: --text: is one too many; a message takes 254 texts and files");
}

void TestCompose::output()
{
    const Desk desk;
    const QStringList arguments =
        composed({"--to", "12", "--text", "T", "--transaction-id", "X", "--date", "1"});
    desk.write("old", "old");
    QCOMPARE(chmod(qPrintable(desk.path("old")), 0640), 0);
    QCOMPARE(symlink("old", qPrintable(desk.path("link"))), 0);
    QCOMPARE(desk.run(arguments + QStringList{"-o", "link"}).exitCode, 0);
    QVERIFY(QFileInfo(desk.path("link")).isSymLink());
    QVERIFY(desk.read("old").startsWith(fromHex("8C80")));
    struct stat state;
    QCOMPARE(stat(qPrintable(desk.path("old")), &state), 0);
    QCOMPARE(int(state.st_mode & 0777), 0640);
    QCOMPARE(desk.run(arguments + QStringList{"-o", "/dev/null"}).exitCode, 0);
    QCOMPARE(stat("/dev/null", &state), 0);
    QVERIFY(S_ISCHR(state.st_mode));
    const Run piped = desk.shell("\"$0\" " + arguments.join(' ') + " -o - > new");
    QCOMPARE(piped.out + piped.err, QString());
    QCOMPARE(toHex(desk.read("new")), toHex(desk.read("old")));
    QCOMPARE(desk.folder().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             (QStringList{"link", "new", "old"}));
}

void TestCompose::outputKeepsWhatItCannotReplace()
{
    const Desk desk;
    const Run full = desk.shell("\"$0\" compose --to 12 --text T -o - > /dev/full");
    QCOMPARE(full.exitCode, 1);
    QCOMPARE(full.errorLine(), "wmsg: -: cannot be written: No space left on device");
    desk.write("old", "old");
    const Run run = desk.shell("ulimit -f 0; trap '' XFSZ; \"$0\" compose --to 12 --text T -o old");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: old: cannot be written: File too large");
    QCOMPARE(desk.read("old"), "old");
    QCOMPARE(desk.folder().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"old"});
}

QTEST_GUILESS_MAIN(TestCompose)
#include "tst_compose.moc"
