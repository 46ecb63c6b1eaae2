// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/tpdu.h"
#include "tests/tools/wmsg/program.h"

#include <QtCore/QDirIterator>
#include <QtCore/QRegularExpression>
#include <QtCore/QStandardPaths>

using namespace wmsg::smspdu;

/// What `wmsg decode` tells about messages that are not in the form that the codec reads: those
/// that intake repairs or keeps aside, pushes, and short messages.

namespace {

const QByteArray kNotification =
    fromHex("8C 82 98 74 00 8D 90 8A 80 8E 01 05 88 03 81 01 3C 83 6C 00");
const QByteArray kPush = fromHex("2A 06 03 BE AF 84") + kNotification;
const Address kSender = Address::fromString("+491234567890");

// With a retrieve status, a class that is a text, and a text in ISO-8859-1.
const QByteArray kRepairable = fromHex("8C 84 98 74 00 8D 90 99 80 8A 61 75 74 6F 00 84 A3 01"
                                       " 04 04 03 83 81 84 47 72 FC 6E");

/// Octets to a port, in one or more short messages.
QList<QByteArray> shortMessages(const QByteArray &data, int total, quint16 port = 2948)
{
    QList<QByteArray> all;
    const qsizetype size = (data.size() + total - 1) / total;
    for (int part = 1; part <= total; ++part) {
        Tpdu tpdu = dataMessage(Kind::Deliver, kSender, data.mid((part - 1) * size, size));
        const QByteArray ports = portsElement({port, 9200, true});
        tpdu.udh = total == 1
            ? userDataHeader({ports})
            : userDataHeader(
                {ports, concatenationElement({7, quint8(total), quint8(part), false})});
        all += writeTpdu(tpdu);
    }
    return all;
}

QByteArray logOf(const QList<QByteArray> &messages)
{
    QByteArray log = "AT+CMGL=4\r\n";
    for (const QByteArray &message : messages) {
        log += "+CMGL: 1,1,," + QByteArray::number(message.size()) + "\r\n00" + message.toHex()
            + "\r\n";
    }
    return log + "\r\nOK\r\n";
}

QJsonObject stepAt(int offset, const QString &what)
{
    return {{"offset", offset}, {"what", what}};
}

} // namespace

class TestExplain : public QObject {
    Q_OBJECT

private slots:
    void repaired();
    void repairedJson();
    void lengthsLeftOut();
    void strict();
    void lost();
    void keptAside();
    void reports_data();
    void reports();
    void pushes_data();
    void pushes();
    void pushOfSomethingElse();
    void pushInShortMessages_data();
    void pushInShortMessages();
    void pushInSeveralFiles();
    void textMessage();
    void otherShortMessages();
    void incomplete();
    void brokenLine();
    void kinds();
    void bytes();
    void colours();
    void realMessages();
};

void TestExplain::repaired()
{
    const Desk desk;
    desk.write("m", kRepairable);
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains("\n     \"Grün\"\n"), qPrintable(run.out));
    QVERIFY(run.out.contains("\n  Message-Class      automatic (131)\n"));
    QVERIFY(run.out.contains("\n  Retrieve-Status    the message follows (128)\n"));
    QVERIFY(run.out.contains("repairs\n  offset 7: "));
    QVERIFY(
        run.out.contains("\n  the codec alone: result 104 (unknown header field: only the ids 1 "
                         "to 24 are known) at offset 7, field 25\n"));
}

void TestExplain::repairedJson()
{
    const Desk desk;
    desk.write("m", kRepairable);
    const QJsonObject object = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(object["result"].toInt(), 100);
    QCOMPARE(object["parts"][0]["text"].toString(), "Grün");
    QCOMPARE(object["headers"]["messageClass"].toString(), "auto");
    QCOMPARE(object["intake"]["changed"], QJsonValue(true));
    QCOMPARE(object["intake"]["lost"], QJsonValue(QJsonArray()));
    const QJsonArray steps = object["intake"]["steps"].toArray();
    QVERIFY(steps.contains(stepAt(9, "field 0x8A: the message class is a text")));
    QCOMPARE(object["codec"],
             QJsonValue(QJsonObject{{"result", 104},
                                    {"offset", 7},
                                    {"field", "25"},
                                    {"message", "only the ids 1 to 24 are known"}}));
    QCOMPARE(object["otherFields"],
             QJsonValue(QJsonArray{QJsonObject{{"offset", 7},
                                               {"id", 25},
                                               {"name", "Retrieve-Status"},
                                               {"value", "the message follows (128)"}}}));
    QCOMPARE(object["headerLength"].toInt(), 17);
    QCOMPARE(object["bodyLength"].toInt(), 11);
}

void TestExplain::lengthsLeftOut()
{
    const Desk desk;
    desk.write("m",
               fromHex("8C 84 98 52 00 8D 92 89 80 2B 31 32 00 87 81 02 0E 10 88 80 04 6B 00 00 00"
                       " 8A 80 84 A3 01 01 03 83 41 42 43"));
    const QJsonObject object = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(object["headers"]["from"]["value"].toString(), "+12");
    QVERIFY(object["headers"].toObject().contains("deliveryTime"));
    QVERIFY(
        !object.contains("otherFields")); // the address and the times are no fields of their own
    const QString bytes = desk.run({"decode", "--hex", "m"}).out;
    QVERIFY2(bytes.contains("80 2B 31 32 00") && bytes.contains("81 02 0E 10")
                 && bytes.contains("80 04 6B 00 00 00"),
             qPrintable(bytes));
}

void TestExplain::strict()
{
    const Desk desk;
    desk.write("m", kRepairable);
    desk.write("p", kPush);
    const Run run = desk.run({"decode", "--strict", "m"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(),
             "wmsg: m: result 104 (unknown header field: only the ids 1 to 24 are known) at offset "
             "7, field 25");
    QVERIFY(!run.out.contains("repair"));
    QCOMPARE(desk.run({"decode", "--strict", "p"}).exitCode, 1);
}

void TestExplain::lost()
{
    const Desk desk;
    desk.write("m", fromHex("8C 84 98 74 00 8D 90 84 A3 02 01 02 83 6F 6B 01 10 83 61 62"));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains("\n     \"ok\"\n"), qPrintable(run.out));
    QVERIFY(run.out.contains("\n     \"ab\"\n"));
    QVERIFY(run.out.contains("\n  lost\n  offset "));
    const QJsonObject object = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(object["intake"]["lost"].toArray().size(), 1);
    QCOMPARE(object["parts"].toArray().size(), 2);
}

void TestExplain::keptAside()
{
    const Desk desk;
    desk.write("m", fromHex("8C 82 98 74 00 8D 90 01 02 03"));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errorLine().startsWith("wmsg: m: result 1"), qPrintable(run.err));
    QVERIFY(run.errorLine().endsWith("; kept aside: what begins here is no header field, and the "
                                     "header is not whole at offset 7"));
    QCOMPARE(desk.run({"decode", "--json", "m"}).json()["intake"]["keptAside"]["offset"].toInt(),
             7);

    // The codec reads it, and nobody could fetch the message.
    desk.write("n", fromHex("8C 82 98 74 00 8D 90"));
    const Run read = desk.run({"decode", "n"});
    QCOMPARE(read.exitCode, 0);
    QVERIFY(read.out.contains("\n  kept aside by the daemon\n  offset 0: the notification has no "
                              "location\n"));
}

void TestExplain::reports_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");
    QTest::newRow("read report") << fromHex("8C 88 8D 92 8B 6D 00 9B 80 97 2B 31 00")
                                 << "\n  this is a read report\n";
    QTest::newRow("not retrieved")
        << fromHex("8C 84 98 74 00 8D 92 99 E2 9A 67 6F 6E 65 00")
        << "\n  there is no message: failed for good: message not found (226), \"gone\"\n";
}

// Also the fields behind those that the codec does not know are shown.
void TestExplain::reports()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    const Desk desk;
    desk.write("m", bytes);
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains(line), qPrintable(run.out));
    if (bytes[1] == '\x88') {
        QVERIFY(run.out.contains("\n  To                 +1 (phone number)\n"));
        QVERIFY(run.out.contains("\n  Read-Status        read (128)\n"));
    }
}

void TestExplain::pushes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("push") << kPush;
    QTest::newRow("push behind ports") << fromHex("06 05 04 0B 84 23 F0") + kPush;
    QTest::newRow("push in hex") << kPush.toHex() + '\n';
    QTest::newRow("push in pairs") << kPush.toHex(' ') + "  # with a remark\n";
}

void TestExplain::pushes()
{
    QFETCH(QByteArray, bytes);
    const Desk desk;
    desk.write("m", bytes);
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.startsWith("m: notification, "), qPrintable(run.out));
    QVERIFY(run.out.contains("\n  Content-Location   l\n"));
    QVERIFY(run.out.contains("\n  Push               transaction 42, "
                             "application/vnd.wap.mms-message, application MMS (4)\n"));
    const QJsonObject object = desk.run({"decode", "--json", "m"}).json();
    QCOMPARE(object["intake"]["changed"], QJsonValue(false));
    QCOMPARE(object["push"]["transaction"].toInt(), 42);
    QCOMPARE(object["codec"]["result"].toInt(), 100);
}

void TestExplain::pushOfSomethingElse()
{
    const Desk desk;
    desk.write("m", fromHex("01 06 01 AE 02 05 6A 00"));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 1);
    const QString reason = "this is a push of \"application/vnd.wap.sic\" at offset 3";
    QVERIFY2(run.errorLine().endsWith(reason), qPrintable(run.err));
}

void TestExplain::pushInShortMessages_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QList<QByteArray> one = shortMessages(kPush, 1);
    const QList<QByteArray> two = shortMessages(kPush, 2);
    QTest::newRow("binary") << one[0];
    QTest::newRow("behind the centre of the modem") << QByteArray(1, 0) + one[0];
    QTest::newRow("behind a centre") << fromHex("07 91 44 77 00 09 00 00") + one[0];
    QTest::newRow("in hex") << one[0].toHex();
    QTest::newRow("in a log") << logOf(one);
    QTest::newRow("two in a log") << logOf(two);
    QTest::newRow("two in another order") << logOf({two[1], two[0]});
    QTest::newRow("two, one of them twice") << logOf({two[0], two[0], two[1]});
}

void TestExplain::pushInShortMessages()
{
    QFETCH(QByteArray, bytes);
    const Desk desk;
    desk.write("m", bytes);
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains("\n  From               +491234567890\n"), qPrintable(run.out));
    QVERIFY(run.out.contains("\n  Ports              to 2948, from 9200\n"));
    QVERIFY(run.out.contains("\n  Content-Location   l\n"));
    const Run asJson = desk.run({"decode", "--json", "m"});
    QCOMPARE(asJson.out.count('\n'), 1);
    const QJsonObject object = asJson.json();
    QCOMPARE(object["headers"]["contentLocation"].toString(), "l");
    QCOMPARE(object["shortMessages"][0]["ports"]["to"].toInt(), 2948);
}

void TestExplain::pushInSeveralFiles()
{
    const Desk desk;
    const QList<QByteArray> three = shortMessages(kPush, 3);
    desk.write("a", three[2]);
    desk.write("b", three[0].toHex());
    desk.write("c", QByteArray(1, 0) + three[1]);
    const Run run = desk.run({"decode", "--json", "a", "b", "c"});
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.json()["headers"]["contentLocation"].toString(), "l");
    QStringList sources;
    for (const QJsonValue message : run.json()["shortMessages"].toArray()) {
        sources += message["source"].toString();
    }
    QCOMPARE(sources, (QStringList{"b line 1", "c", "a"}));
}

void TestExplain::textMessage()
{
    Tpdu tpdu = wmsg::smspdu::textMessage(Kind::Submit, kSender, "Price: 5 {EUR}");
    tpdu.validity = Validity::relative(86400);
    tpdu.hasReport = true;
    const Desk desk;
    desk.write("m", writtenServiceCentre(Address::fromString("+447700900000")) + writeTpdu(tpdu));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out,
             "m: sent short message, 36 bytes\n"
             "  Service centre     +447700900000\n"
             "  To                 +491234567890\n"
             "  Reference          0\n"
             "  Validity           1 day (86400 s)\n"
             "  Coding             7-bit alphabet (0x00)\n"
             "  Flags              report asked for\n"
             "  Text               \"Price: 5 {EUR}\"\n");
    const QJsonDocument expected = QJsonDocument::fromJson(R"({"file": "m", "kind": "sms",
"text": "Price: 5 {EUR}", "whole": true, "shortMessages": [{"source": "m", "type": "submit",
"to": "+491234567890", "serviceCentre": "+447700900000", "pid": 0, "dcs": 0, "alphabet": "gsm7",
"reference": 0, "validity": 86400}]})");
    QVERIFY(!expected.isNull());
    QCOMPARE(QJsonDocument(desk.run({"decode", "--json", "m"}).json()).toJson(), expected.toJson());
}

void TestExplain::otherShortMessages()
{
    const Desk desk;
    desk.write("data", shortMessages(fromHex("01 02 FF"), 1, 9000)[0]);
    desk.write(
        "report",
        fromHex("06 2A 0C 91 94 21 43 65 87 09 62 11 12 21 43 65 40 62 11 12 21 43 75 40 46"));
    QVERIFY(desk.run({"decode", "data"}).out.contains("\n  Data               01 02 FF\n"));
    QCOMPARE(desk.run({"decode", "--json", "data"}).json()["data"].toString(), "0102ff");
    const Run run = desk.run({"decode", "report"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.startsWith("report: status report, 25 bytes\n"), qPrintable(run.out));
    QVERIFY(run.out.contains("\n  Status             failed for good: its validity period ended "
                             "(0x46)\n"));
}

void TestExplain::incomplete()
{
    const Desk desk;
    const QList<QByteArray> three = shortMessages(kPush, 3);
    desk.write("m", logOf({three[2], three[0]}));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.errorLine(), "wmsg: m line 5: the message is not whole: there is no part 2 of 3");
    QVERIFY(
        run.out.startsWith("m line 5: received short message in 3 parts, of which 2 are there"));
    QCOMPARE(desk.run({"decode", "--json", "m"}).json()["whole"], QJsonValue(false));
    desk.write("n", logOf({three[1]}));
    const Run one = desk.run({"decode", "n"});
    QCOMPARE(one.errorLine(),
             "wmsg: n line 3: the message is not whole: there is no part 1, 3 of 3");
    QVERIFY(one.out.startsWith("n line 3: received short message in 3 parts, of which 1 is there"));
}

void TestExplain::brokenLine()
{
    const Desk desk;
    const QByteArray message = shortMessages(kPush, 1)[0];
    desk.write("m", logOf({message.chopped(1), message}));
    const Run run = desk.run({"decode", "m"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.startsWith("wmsg: m line 3: the short message ends inside its user data at "
                                "offset "),
             qPrintable(run.err));
    QVERIFY(run.out.contains("\n  Content-Location   l\n"));
}

void TestExplain::kinds()
{
    const Desk desk;
    desk.write("m", fromHex("8C 82 98 74 00"));
    QCOMPARE(desk.run({"decode", "--as", "sms", "m"}).errorLine(),
             "wmsg: m: the address has 130 digits, 20 are the most at offset 1");
    desk.write("n", shortMessages(kPush, 1)[0]);
    QCOMPARE(desk.run({"decode", "--as", "pdu", "n"}).exitCode, 1);
}

void TestExplain::bytes()
{
    const Desk desk;
    desk.write("m", shortMessages(kPush, 1)[0]);
    const QString out = desk.run({"decode", "--hex", "m"}).out;
    QVERIFY2(out.contains("user data header: to port 2948, from port 9200\n"), qPrintable(out));
    QVERIFY(out.contains("\nm, user data: 26 bytes\n"));
    QVERIFY(out.contains("push: X-Wap-Application-Id: MMS (4)\n"));
    QVERIFY(out.contains("Content-Location: text: \"l\"\n"));
    QVERIFY(!out.contains("not read"));
}

void TestExplain::colours()
{
    const Desk desk;
    desk.write("m", kRepairable);
    const auto out = [&](const QStringList &options) {
        return desk.run(QStringList{"decode", "--hex"} + options + QStringList{"m"}).out;
    };
    const QString plain = out({});
    QVERIFY(!plain.contains('\x1B'));
    QCOMPARE(out({"--color", "never"}), plain);
    const QString coloured = out({"--color=always"});
    QVERIFY(coloured.contains("\x1B[1;36m8C\x1B[0m"));
    QCOMPARE(QString(coloured).remove(QRegularExpression("\x1B\\[[0-9;]*m")), plain);
    QCOMPARE(desk.run({"decode", "--color", "red", "m"}).exitCode, 2);

    // On a terminal, unless the environment says no.
    const QString script = "script -qec \"'$0' decode --hex m\" /dev/null";
    if (QStandardPaths::findExecutable("script").isEmpty()) {
        return;
    }
    QVERIFY(desk.shell("TERM=xterm " + script).out.contains("\x1B[1;36m8C"));
    QVERIFY(!desk.shell("NO_COLOR=1 TERM=xterm " + script).out.contains('\x1B'));
    QVERIFY(!desk.shell("TERM=dumb " + script).out.contains('\x1B'));
}

// Of a folder that is not part of the project: all that is there is shown, and no byte is unnamed.
void TestExplain::realMessages()
{
    const QString chosen = qEnvironmentVariable("WMSG_CORPUS");
    const QString folder = chosen.isEmpty() ? WMSG_TEST_DATA "/../../../shared/corpus" : chosen;
    if (!QFileInfo(folder).isDir()) {
        QSKIP("there is no folder of real messages: set WMSG_CORPUS");
    }
    const Desk desk;
    QDirIterator files(folder, {"*.mms"}, QDir::Files, QDirIterator::Subdirectories);
    QStringList arguments{"decode", "--json"};
    while (files.hasNext()) {
        arguments += files.next();
        const Run bytes = desk.run({"decode", "--hex", arguments.last()});
        QCOMPARE(bytes.exitCode, 0);
        QVERIFY2(!bytes.out.contains("not read\n"), qPrintable(arguments.last()));
    }
    QVERIFY(arguments.size() > 2);
    const Run run = desk.run(arguments);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), arguments.size() - 2);
    for (const QString &line : lines) {
        const QJsonObject message = QJsonDocument::fromJson(line.toUtf8()).object();
        QVERIFY2(message["intake"]["lost"].toArray().isEmpty(), qPrintable(line.left(200)));
        QCOMPARE(message["headers"]["type"].toString() == "notification-ind",
                 message["parts"].toArray().isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestExplain)
#include "tst_explain.moc"
