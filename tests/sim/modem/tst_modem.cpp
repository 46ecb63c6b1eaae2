// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/modem.h"
#include "tests/sim/modem/modem_line.h"
#include "tests/support/hex.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace wmsg::sim;

namespace {

// To 12345: "hi" in the 7-bit alphabet, through the service centre of the card, and through +4366.
const QByteArray kSubmit = "00010005812143F50000"
                           "02"
                           "E834";
const QByteArray kSubmitThrough = "0391346601"
                                  "0005812143F50000"
                                  "02"
                                  "E834";
// From 12345, at 2026-11-21 22:00:00 UTC: "hi"; of class 2, kept on the card; and of class 3.
const QByteArray kDeliver = "000405812143F50000"
                            "62111222000000"
                            "02"
                            "E834";
const QByteArray kDeliverToCard = "000405812143F50012"
                                  "62111222000000"
                                  "02"
                                  "E834";
const QByteArray kDeliverClass3 = "000405812143F50013"
                                  "62111222000000"
                                  "02"
                                  "E834";

QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}

/// A modem that runs, and somebody who has it open.
class World {
public:
    explicit World(const Modem::Settings &settings = {}) : modem(withLink(settings), log)
    {
        modem.start().isEmpty() ? void() : qFatal("World: no modem");
        line = std::make_unique<ModemLine>(link());
        line->ask("ATE0");
    }
    QString link() const { return m_folder.filePath("modem"); }
    QString folder() const { return m_folder.path(); }
    QByteArray ask(const QByteArray &command) { return line->ask(command); }
    /// Sends a message and returns the answer.
    QByteArray send(const QByteArray &command, const QByteArray &text)
    {
        const QByteArray prompt = ask(command);
        if (prompt != "> ") {
            return prompt;
        }
        return ask(text + '\x1A'); // what ends the line behind it is not heard
    }
    QByteArray sendMessage() { return send("AT+CMGS=12", kSubmit); }

private:
    Modem::Settings withLink(Modem::Settings settings) const
    {
        settings.link = link();
        return settings;
    }

    QTemporaryDir m_folder;

public:
    PduFiles log;
    Modem modem;
    std::unique_ptr<ModemLine> line;
};

Modem::Settings settings(const QByteArray &serviceCentre = "+4366", int places = 20,
                         bool isLoopback = false, const QByteArray &pin = {})
{
    Modem::Settings all;
    all.phone.number = "+15550123";
    all.phone.pin = pin;
    all.messages.serviceCentre = serviceCentre;
    all.messages.places = places;
    all.isLoopback = isLoopback;
    return all;
}

struct DialogueRow {
    const char *name;
    QList<std::pair<const char *, const char *>> talk; // commands and answers
};

// clang-format off
const DialogueRow kDialogues[] = {
    {"attention", {{"AT", "OK"}, {"at", "OK"}, {"ATZ", "OK"}}},
    {"unknown", {{"AT+XYZ", "ERROR"}, {"ATY", "ERROR"}, {"AT+", "ERROR"}}},
    {"the first that fails ends a line", {
        {"AT+CMEE=1;+CFUN=7;+CMEE=0", "+CME ERROR: 4"}, {"AT+CMEE?", "+CMEE: 1/OK"}}},
    {"several answers", {{"AT+CMEE?;+CMGF?", "+CMEE: 0/+CMGF: 0/OK"}}},
    {"who it is", {
        {"AT+CGMI", "wmsg/OK"}, {"AT+CGMM", "Simulated modem/OK"}, {"AT+CGSN", "001010123456789/OK"},
        {"AT+CIMI", "001010000000001/OK"}, {"AT+CNUM", "+CNUM: ,\"+15550123\",145/OK"}}},
    {"errors have codes when they are wanted", {
        {"AT+CPIN=\"1\"", "ERROR"}, {"AT+CMEE=1", "OK"}, {"AT+CPIN=\"1\"", "+CME ERROR: 3"},
        {"AT+CMEE=3", "+CME ERROR: 4"}, {"ATZ", "OK"}}},
    {"character sets", {
        {"AT+CSCS=?", "+CSCS: (\"IRA\",\"GSM\")/OK"}, {"AT+CSCS=\"GSM\"", "OK"},
        {"AT+CSCS?", "+CSCS: \"GSM\"/OK"}, {"AT+CSCS=\"UCS2\"", "ERROR"}}},
    {"only PDU mode", {
        {"AT+CMGF=?", "+CMGF: (0)/OK"}, {"AT+CMGF=1", "+CMS ERROR: 303"}, {"AT+CMGF=0", "OK"}}},
    {"service", {
        {"AT+CSMS?", "+CSMS: 0,1,1,0/OK"}, {"AT+CSMS=0", "+CSMS: 1,1,0/OK"},
        {"AT+CSMS=1", "+CMS ERROR: 303"}}},
    {"service centre", {
        {"AT+CSCA?", "+CSCA: \"+4366\",145/OK"}, {"AT+CSCA=\"4367\",145", "OK"},
        {"AT+CSCA?", "+CSCA: \"+4367\",145/OK"}, {"AT+CSCA=\"123\"", "OK"},
        {"AT+CSCA?", "+CSCA: \"123\",129/OK"}, {"AT+CSCA=\"here\"", "+CMS ERROR: 305"},
        {"AT+CSCA=\"\"", "+CMS ERROR: 305"}}},
    {"memories", {
        {"AT+CPMS?", "+CPMS: \"SM\",0,20,\"SM\",0,20,\"SM\",0,20/OK"},
        {"AT+CPMS=\"ME\"", "+CPMS: 0,20,0,20,0,20/OK"},
        {"AT+CPMS?", "+CPMS: \"ME\",0,20,\"SM\",0,20,\"SM\",0,20/OK"},
        {"AT+CPMS=\"MT\"", "+CMS ERROR: 302"}}},
    {"indications", {
        {"AT+CNMI=2,,,1", "OK"}, {"AT+CNMI=2,1", "OK"}, {"AT+CNMI?", "+CNMI: 2,1,0,1,0/OK"},
        {"AT+CNMI=3", "+CMS ERROR: 303"}, {"AT+CNMI=2,4", "+CMS ERROR: 303"},
        {"AT+CNMI=2,1,1", "+CMS ERROR: 303"}, {"AT+CNMI?", "+CNMI: 2,1,0,1,0/OK"}}},
    {"lengths that no message has", {
        {"AT+CMGS", "+CMS ERROR: 304"}, {"AT+CMGS=0", "+CMS ERROR: 304"},
        {"AT+CMGS=165", "+CMS ERROR: 304"}, {"AT+CMGS=x", "+CMS ERROR: 304"}}},
    {"places without a message", {
        {"AT+CMGR=1", "+CMS ERROR: 321"}, {"AT+CMGR=0", "+CMS ERROR: 321"},
        {"AT+CMGD=1", "OK"}, {"AT+CMGD=0", "+CMS ERROR: 321"}, {"AT+CMGD=21", "+CMS ERROR: 321"},
        {"AT+CMSS=1", "+CMS ERROR: 321"}, {"AT+CMGL=4", "OK"}, {"AT+CMGL=5", "+CMS ERROR: 305"}}},
};

struct SubmitRow {
    const char *name;
    int length;
    const char *pdu;
    const char *answer;
};

const SubmitRow kSubmits[] = {
    {"sent",                         12, "00010005812143F5000002E834",           "+CMGS: 0/OK"},
    {"sent, small digits",           12, "00010005812143f5000002e834",           "+CMGS: 0/OK"},
    {"through a service centre",     12, "039134660100" "05812143F5000002E834",  "+CMGS: 0/OK"},
    {"with a validity",              13, "00110005812143F50000FF02E834",         "+CMGS: 0/OK"},
    {"with ports",                   18, "00410005812143F50004" "08" "06050423282329" "FF",
                                                                                 "+CMGS: 0/OK"},
    {"length too short",             11, "00010005812143F5000002E834",           "+CMS ERROR: 304"},
    {"length too long",              13, "00010005812143F5000002E834",           "+CMS ERROR: 304"},
    {"half an octet",                12, "00010005812143F5000002E83",            "+CMS ERROR: 304"},
    {"no digits",                    12, "00010005812143F5000002E8xx",           "+CMS ERROR: 304"},
    {"nothing",                       1, "",                                     "+CMS ERROR: 304"},
    {"service centre cut off",        2, "0391",                                 "+CMS ERROR: 304"},
    {"a message for a phone",        18, "000405812143F500006211122200000002E834",
                                                                                 "+CMS ERROR: 304"},
    {"user data shorter than told",  12, "00010005812143F5000003E834",           "+CMS ERROR: 304"},
    {"user data longer than told",   12, "00010005812143F5000001E834",           "+CMS ERROR: 304"},
    {"no recipient",                  9, "000100008100" "0002E834",              "+CMS ERROR: 304"},
    {"header longer than user data", 12, "00410005812143F50004" "02" "0605",     "+CMS ERROR: 304"},
};
// clang-format on

} // namespace

class TestModem : public QObject {
    Q_OBJECT

private slots:
    void echo()
    {
        World world(settings());
        world.ask("ATE1");
        world.line->write("AT+CMXX\b\bEE?\r");
        QCOMPARE(world.line->readTo("OK\r\n"),
                 QByteArray("AT+CMXX\b\bEE?\r\r\n+CMEE: 0\r\n\r\nOK\r\n"));
        QCOMPARE(world.ask("ATE0"), QByteArray("ATE0\r/OK"));
        QCOMPARE(world.ask("AT"), QByteArray("OK"));
    }

    void dialogues_data()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < int(std::size(kDialogues)); ++row) {
            QTest::newRow(kDialogues[row].name) << row;
        }
    }
    void dialogues()
    {
        QFETCH(int, row);
        World world(settings());
        for (const auto &[command, answer] : kDialogues[row].talk) {
            // Switched on again, the modem echoes.
            const QByteArray said = world.ask(command).replace(QByteArray(command) + "\r/", "");
            QCOMPARE(said, QByteArray(answer));
        }
    }

    void linesWithoutAttentionAreNotHeard()
    {
        World world(settings());
        world.line->write("hello\r\n\x1B\x1A"
                          "AT+CMEE?\r");
        QCOMPARE(ModemLine::shown(world.line->readTo("OK\r\n")), QByteArray("+CMEE: 0/OK"));
    }

    void endlessLines()
    {
        World world(settings());
        for (int i = 0; i < 20; ++i) {
            world.line->write("AT+" + QByteArray(100, 'X'));
            QTest::qWait(0);
        }
        QCOMPARE(world.ask(""), QByteArray("ERROR"));
        QCOMPARE(world.ask("AT"), QByteArray("OK"));
    }

    void submits_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<QByteArray>("pdu");
        QTest::addColumn<QByteArray>("answer");
        for (const SubmitRow &row : kSubmits) {
            QTest::newRow(row.name) << row.length << QByteArray(row.pdu) << QByteArray(row.answer);
        }
    }
    void submits()
    {
        QFETCH(int, length);
        QFETCH(QByteArray, pdu);
        World world(settings());
        QTEST(world.send("AT+CMGS=" + QByteArray::number(length), pdu), "answer");
        QCOMPARE(world.ask("AT"), QByteArray("OK"));
    }

    void submitsAreKept()
    {
        World world(settings());
        QCOMPARE(world.log.open(world.folder() + "/log"), QString());
        QCOMPARE(world.sendMessage(), QByteArray("+CMGS: 0/OK"));
        QCOMPARE(world.send("AT+CMGS=12", kSubmitThrough), QByteArray("+CMGS: 1/OK"));
        // The service centre of the card stands in front where none was told; the modem counts.
        QCOMPARE(logged(world, "0001-submit.pdu"),
                 QByteArray("03913466"
                            "01000581"
                            "2143F5000002E834"));
        QCOMPARE(logged(world, "0002-submit.pdu"),
                 QByteArray("03913466"
                            "01010581"
                            "2143F5000002E834"));
    }

    void escape()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CMGS=12"), QByteArray("> "));
        world.line->write("0001\x1B");
        QCOMPARE(ModemLine::shown(world.line->readTo("OK\r\n")), QByteArray("OK"));
        QCOMPARE(world.modem.network().accepted(), 0);
    }
    void nothingIsLeftOfATextThatIsGivenUp()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CMGS=12"), QByteArray("> "));
        world.line->write(QByteArray(1100, '0'));
        world.line->write("\x1B");
        QVERIFY(world.line->readTo("\r\nOK\r\n").endsWith("\r\nOK\r\n"));
        QCOMPARE(world.ask("AT"), QByteArray("OK"));
    }

    void noServiceCentre()
    {
        World world(settings(""));
        QCOMPARE(world.sendMessage(), QByteArray("+CMS ERROR: 330"));
        QCOMPARE(world.send("AT+CMGS=12", kSubmitThrough), QByteArray("+CMGS: 0/OK"));
    }

    void networkRefuses()
    {
        World world(settings());
        world.modem.network().failNext(38, 2);
        QCOMPARE(world.sendMessage(), QByteArray("+CMS ERROR: 38"));
        QCOMPARE(world.sendMessage(), QByteArray("+CMS ERROR: 38"));
        QCOMPARE(world.sendMessage(), QByteArray("+CMGS: 0/OK"));
    }

    void messagesComeIntoTheMemory()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CNMI=2,1"), QByteArray("OK"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(ModemLine::shown(world.line->readTo("\r\n")), QByteArray("+CMTI: \"SM\",1"));
        QCOMPARE(world.ask("AT+CMGL"), "+CMGL: 1,0,,18/" + kDeliver + "/OK");
        QCOMPARE(world.ask("AT+CMGL"), QByteArray("OK")); // nothing unread
        QCOMPARE(world.ask("AT+CMGR=1"), "+CMGR: 1,,18/" + kDeliver + "/OK");
        QCOMPARE(world.ask("AT+CMGD=1"), QByteArray("OK"));
        QCOMPARE(world.ask("AT+CMGR=1"), QByteArray("+CMS ERROR: 321"));
    }

    void memoriesAreTwo()
    {
        World world(settings());
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.ask("AT+CPMS=\"SM\",\"SM\",\"ME\""), QByteArray("+CPMS: 1,20,1,20,0,20/OK"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.ask("AT+CPMS?"),
                 QByteArray("+CPMS: \"SM\",1,20,\"SM\",1,20,\"ME\",2,20/OK"));
        QCOMPARE(world.ask("AT+CMGD=?"), QByteArray("+CMGD: (1),(0-4)/OK"));
    }

    void messagesAreHandedOver()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CNMI=2,2"), QByteArray("OK"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(ModemLine::shown(world.line->readTo(kDeliver + "\r\n")), "+CMT: ,18/" + kDeliver);
        QCOMPARE(world.modem.network().deliver(bytes(kDeliverToCard)), QString());
        QCOMPARE(ModemLine::shown(world.line->readTo("1\r\n")), QByteArray("+CMTI: \"SM\",1"));
        QCOMPARE(world.ask("AT+CNMI=2,3"), QByteArray("OK"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliverClass3)), QString());
        QCOMPARE(ModemLine::shown(world.line->readTo("34\r\n")), "+CMT: ,18/" + kDeliverClass3);
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(ModemLine::shown(world.line->readTo("2\r\n")), QByteArray("+CMTI: \"SM\",2"));
    }

    void indicationsAreHeldBack()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CNMI=0,1"), QByteArray("OK"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.ask("AT"), QByteArray("OK"));
        world.line->write("AT+CNMI=1\r");
        QCOMPARE(ModemLine::shown(world.line->readTo("OK\r\n")), QByteArray("+CMTI: \"SM\",1/OK"));
    }

    void nobodyIsInterruptedAtAPrompt()
    {
        World world(settings());
        QCOMPARE(world.ask("AT+CNMI=2,1;+CMGS=12"), QByteArray("> "));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        world.line->write(kSubmit + '\x1A');
        QCOMPARE(ModemLine::shown(world.line->readTo("\",1\r\n")),
                 QByteArray("+CMGS: 0/OK/+CMTI: \"SM\",1"));
    }

    void fullMemory()
    {
        World world(settings("+4366", 2));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        }
        QCOMPARE(world.modem.network().waiting(), 1);
        QCOMPARE(world.send("AT+CMGW=12", kSubmit), QByteArray("+CMS ERROR: 322"));
        QCOMPARE(world.ask("AT+CMGD=1"), QByteArray("OK"));
        QTRY_COMPARE(world.modem.network().waiting(), 0);
        QCOMPARE(world.ask("AT+CPMS?").left(16), QByteArray("+CPMS: \"SM\",2,2,"));
        QCOMPARE(world.ask("AT+CMGD=1,4"), QByteArray("OK"));
        QCOMPARE(world.ask("AT+CMGL=4"), QByteArray("OK"));
    }

    void messagesAreStoredAndSentFromThere()
    {
        World world(settings());
        QCOMPARE(world.send("AT+CMGW=12", kSubmit), QByteArray("+CMGW: 1/OK"));
        QCOMPARE(world.send("AT+CMGW=12,3", kSubmit), QByteArray("+CMGW: 2/OK"));
        QCOMPARE(world.ask("AT+CMGL=2"), "+CMGL: 1,2,,12/" + kSubmit + "/OK");
        QCOMPARE(world.ask("AT+CMSS=1"), QByteArray("+CMSS: 0/OK"));
        QCOMPARE(world.ask("AT+CMGD=1,2"), QByteArray("OK")); // those read, and those sent
        QCOMPARE(world.ask("AT+CMGD=?"), QByteArray("+CMGD: (1),(0-4)/OK"));
    }

    void loopback()
    {
        World world(settings("+4366", 20, true));
        QCOMPARE(world.send("AT+CMGS=18",
                            "00410005812143F50004"
                            "08"
                            "06050423282329"
                            "FF"),
                 QByteArray("+CMGS: 0/OK"));
        const QByteArray answer = world.ask("AT+CMGR=1");
        QVERIFY2(answer.contains("/0391346644"
                                 "05812143F50004"),
                 answer);
        QVERIFY2(answer.endsWith("08"
                                 "06050423282329"
                                 "FF/OK"),
                 answer);
    }

    void pin()
    {
        World world(settings("+4366", 20, false, "0815"));
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.modem.network().waiting(), 1);
        QCOMPARE(world.ask("AT+CMEE=1;+CPIN?"), QByteArray("+CPIN: SIM PIN/OK"));
        QCOMPARE(world.ask("AT+CMGL=4"), QByteArray("+CMS ERROR: 311"));
        QCOMPARE(world.ask("AT+CIMI"), QByteArray("+CME ERROR: 11"));
        QCOMPARE(world.ask("AT+CPIN=\"1\""), QByteArray("+CME ERROR: 16"));
        QCOMPARE(world.ask("AT+CPIN=\"0815\""), QByteArray("OK"));
        QCOMPARE(world.ask("AT+CPIN?"), QByteArray("+CPIN: READY/OK"));
        QCOMPARE(world.ask("AT+CMGL=4"), "+CMGL: 1,0,,18/" + kDeliver + "/OK");
    }

    void staysWhenItIsClosed()
    {
        World world(settings());
        world.line->close();
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        world.line = std::make_unique<ModemLine>(world.link());
        QCOMPARE(world.ask("AT+CMGD=?"), QByteArray("+CMGD: (1),(0-4)/OK"));
    }

    void vanishesAndReturns()
    {
        World world(settings());
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        world.modem.vanish();
        QVERIFY(world.line->isHungUp());
        QVERIFY(!ModemLine(world.link()).isOpen());
        QCOMPARE(world.modem.network().deliver(bytes(kDeliver)), QString());
        QCOMPARE(world.modem.network().waiting(), 1);
        QCOMPARE(world.modem.comeBack(), QString());
        world.line = std::make_unique<ModemLine>(world.link());
        QCOMPARE(world.ask("ATE0"), QByteArray("ATE0\r/OK"));
        QCOMPARE(world.ask("AT+CMGD=?"), QByteArray("+CMGD: (1,2),(0-4)/OK"));
    }

    void vanishesBehindAMessage()
    {
        World world(settings());
        world.modem.network().loseNextAnswer();
        QCOMPARE(world.ask("AT+CMGS=12"), QByteArray("> "));
        world.line->write(kSubmit + '\x1A');
        QTRY_VERIFY(!QFileInfo(world.link()).isSymLink());
        QCOMPARE(world.modem.network().accepted(), 1);
        QVERIFY(world.line->isHungUp());
    }

    void hangs()
    {
        World world(settings());
        world.modem.hang();
        world.line->write("AT+CMEE=1\r");
        QTest::qWait(1);
        QCOMPARE(world.modem.comeBack(), QString());
        QCOMPARE(world.ask("ATE0"), QByteArray("ATE0\r/OK"));
        QCOMPARE(world.ask("AT+CMEE?"), QByteArray("+CMEE: 0/OK"));
    }

    void foreignFilesAreLeftAlone()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("modem"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        Modem::Settings all = settings();
        all.link = file.fileName();
        PduFiles log;
        Modem modem(all, log);
        QCOMPARE(modem.start(), file.fileName() + " is there and is no link");
    }

private:
    static QByteArray logged(const World &world, const QString &name)
    {
        QFile file(world.folder() + "/log/" + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll().toHex().toUpper() : QByteArray();
    }
};

QTEST_GUILESS_MAIN(TestModem)
#include "tst_modem.moc"
