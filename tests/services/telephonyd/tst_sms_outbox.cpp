// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/outbox.h"
#include "tests/services/telephonyd/box_records.h"
#include "tests/services/telephonyd/fake_modem.h"
#include "tests/support/hex.h"

#include <platform/telephony/tapi_sms.h>

using namespace std::chrono_literals;
using namespace wmsg::telephonyd;
using wmsg::telephony::Coding;
using wmsg::telephony::Result;
using wmsg::telephony::Send;

namespace {

Send textTo(const QByteArray &destination, int reference, const QString &text = "hello")
{
    Send send;
    send.reference = reference;
    send.coding = Coding::Gsm7;
    send.destination = destination;
    send.body = units(text);
    return send;
}

/// One life of an outbox over a spool that outlives it.
struct Life {
    explicit Life(const QString &folder, std::chrono::milliseconds giveUp = 24h,
                  std::chrono::milliseconds absence = 24h)
        : spool(folder), outbox(spool, modem, giveUp, absence)
    {
        problem = spool.open();
        QObject::connect(&outbox, &Outbox::finished, &outbox,
                         [this](const QByteArray &client, const Result &result) {
                             told.append(client + ' ' + line(result));
                         });
        outbox.restore();
    }
    static QByteArray line(const Result &result)
    {
        return QByteArray::number(result.reference) + ' '
            + QByteArray::number(result.networkReference) + ' ' + QByteArray::number(result.status);
    }

    Spool spool;
    FakeModem modem;
    Outbox outbox;
    QString problem;
    QList<QByteArray> told;
};

} // namespace

class TestSmsOutbox : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void whatFitsIsSentAndNothingElse_data()
    {
        QTest::addColumn<Coding>("coding");
        QTest::addColumn<QString>("text"); // or data, a byte for each character
        QTest::addColumn<bool>("hasPorts");
        QTest::addColumn<bool>("fits");
        const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
        const QString euro = QString::fromUtf8("\xE2\x82\xAC");
        const auto a = [](int count) {
            return QString(count, 'a');
        };
        QTest::newRow("nothing") << Coding::Gsm7 << a(0) << false << true;
        QTest::newRow("159 septets") << Coding::Gsm7 << a(159) << false << true;
        QTest::newRow("160 septets") << Coding::Gsm7 << a(160) << false << true;
        QTest::newRow("161 septets") << Coding::Gsm7 << a(161) << false << false;
        QTest::newRow("160 with one of two") << Coding::Gsm7 << a(158) + euro << false << true;
        QTest::newRow("161 with one of two") << Coding::Gsm7 << a(159) + euro << false << false;
        QTest::newRow("152 septets, ports") << Coding::Gsm7 << a(152) << true << true;
        QTest::newRow("153 septets, ports") << Coding::Gsm7 << a(153) << true << false;
        QTest::newRow("not in the alphabet") << Coding::Gsm7 << QString("`") << false << false;
        QTest::newRow("69 units") << Coding::Ucs2 << a(69) << false << true;
        QTest::newRow("70 units") << Coding::Ucs2 << a(70) << false << true;
        QTest::newRow("71 units") << Coding::Ucs2 << a(71) << false << false;
        QTest::newRow("an emoji up to the 70th") << Coding::Ucs2 << a(68) + emoji << false << true;
        QTest::newRow("an emoji over the 70th") << Coding::Ucs2 << a(69) + emoji << false << false;
        QTest::newRow("66 units, ports") << Coding::Ucs2 << a(66) << true << true;
        QTest::newRow("67 units, ports") << Coding::Ucs2 << a(67) << true << false;
        QTest::newRow("140 octets") << Coding::Binary << a(140) << false << true;
        QTest::newRow("141 octets") << Coding::Binary << a(141) << false << false;
        QTest::newRow("132 octets, ports") << Coding::Binary << a(132) << true << true;
        QTest::newRow("133 octets, ports") << Coding::Binary << a(133) << true << true;
        QTest::newRow("134 octets, ports") << Coding::Binary << a(134) << true << false;
    }
    void whatFitsIsSentAndNothingElse()
    {
        QFETCH(Coding, coding);
        QFETCH(QString, text);
        QFETCH(bool, hasPorts);
        QFETCH(bool, fits);
        Life life(spool());
        life.modem.ready();
        life.outbox.setReady(true);
        Send send = textTo("+43664", 1, text);
        send.coding = coding;
        if (coding == Coding::Binary) {
            send.body = text.toLatin1();
        }
        send.hasPorts = hasPorts;
        send.destinationPort = hasPorts ? 9000 : 0;
        send.sourcePort = hasPorts ? 9001 : 0;
        if (!fits) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("a message is refused: "));
        }
        life.outbox.take("a", send);
        QCOMPARE(life.modem.sends.size(), fits ? 1 : 0);
        if (fits) {
            const OutgoingSms &sms = life.modem.sends.at(0);
            QVERIFY(sms.coding == coding);
            QCOMPARE(toHex(sms.body), toHex(send.body));
            QCOMPARE(toHex(sms.header), hasPorts ? QByteArray("06 05 04 23 28 23 29") : "");
        } else {
            QCOMPARE(life.told, QList<QByteArray>{"a 1 0 65536"});
            QCOMPARE(filesIn(box()), QStringList());
        }
    }

    void numbersAreNumbers_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<bool>("isNumber");
        QTest::newRow("local") << QByteArray("0664") << true;
        QTest::newRow("international") << QByteArray("+43664") << true;
        QTest::newRow("one digit") << QByteArray("1") << true;
        QTest::newRow("star and hash") << QByteArray("*100#") << true;
        QTest::newRow("20 digits") << QByteArray("+12345678901234567890") << true;
        QTest::newRow("21 digits") << QByteArray("123456789012345678901") << false;
        QTest::newRow("nothing") << QByteArray() << false;
        QTest::newRow("a plus") << QByteArray("+") << false;
        QTest::newRow("two pluses") << QByteArray("++1") << false;
        QTest::newRow("a plus inside") << QByteArray("1+1") << false;
        QTest::newRow("letters") << QByteArray("Shop") << false;
        QTest::newRow("blanks") << QByteArray("06 64") << false;
        QTest::newRow("what the library made of others") << QByteArray("?1") << false;
    }
    void numbersAreNumbers()
    {
        QFETCH(QByteArray, number);
        QFETCH(bool, isNumber);
        QCOMPARE(wmsg::telephonyd::isNumber(number), isNumber);
        QCOMPARE(problemOf(textTo(number, 1)).isEmpty(), isNumber);
        Send send = textTo("1", 1);
        send.serviceCenter = number;
        QCOMPARE(problemOf(send).isEmpty(), isNumber || number.isEmpty());
    }

    void aMessageIsDurableBeforeTheModemGetsIt()
    {
        {
            Life life(spool());
            life.outbox.take("a", textTo("+43664", 1));
            QCOMPARE(life.modem.sends.size(), 0);
            QCOMPARE(filesIn(box()).size(), 1);
        }
        Life life(spool());
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), 1);
        QCOMPARE(life.modem.sends.at(0).destination, QByteArray("+43664"));
        QCOMPARE(textOf(life.modem.sends.at(0).body), QString("hello"));
        life.modem.isSent(17);
        QCOMPARE(life.told, QList<QByteArray>{"a 1 17 0"});
    }

    void aResultIsKeptUntilItIsConfirmed()
    {
        {
            Life life(spool());
            life.outbox.setReady(true);
            life.outbox.take("a", textTo("+43664", 1));
            life.modem.isSent(17);
        }
        Life life(spool());
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), 0);
        QCOMPARE(life.outbox.results("a").size(), 1);
        QCOMPARE(life.outbox.results("b").size(), 0);
        // The client repeats it: it is not sent again.
        life.outbox.take("a", textTo("+43664", 1));
        QCOMPARE(life.modem.sends.size(), 0);
        QCOMPARE(life.told, QList<QByteArray>{"a 1 17 0"});
        life.outbox.resultTaken("b", 1);
        QCOMPARE(filesIn(box()).size(), 1);
        life.outbox.resultTaken("a", 1);
        QCOMPARE(filesIn(box()), QStringList());
    }

    void resultsOfWhoIsGoneForLongAreForgotten()
    {
        {
            Life life(spool(), 24h, 20ms);
            life.outbox.setReady(true);
            for (const char *client : {"here", "gone"}) {
                life.outbox.clientCame(client);
                life.outbox.take(client, textTo("1", 1));
                life.modem.isSent(1);
            }
            life.outbox.take("gone", textTo("1", 2));
            life.outbox.clientWent("gone");
            QTRY_COMPARE(filesIn(box()).size(), 2); // what is not sent yet is no result
            QCOMPARE(life.outbox.results("here").size(), 1);
            QCOMPARE(life.outbox.results("gone").size(), 0);
            life.outbox.clientWent("here");
            life.outbox.clientCame("here");
            life.modem.isSent(2);
            QTRY_COMPARE(filesIn(box()).size(), 1);
            QCOMPARE(life.outbox.results("here").size(), 1);
        }
        // After a new start nobody is there.
        Life life(spool(), 24h, 20ms);
        QTRY_COMPARE(filesIn(box()).size(), 0);
    }

    void aRepetitionOfWhatIsUnderWayIsNotSentTwice()
    {
        Life life(spool());
        life.outbox.setReady(true);
        life.outbox.take("a", textTo("+43664", 1));
        life.outbox.take("a", textTo("+43664", 1));
        life.outbox.take("b", textTo("+43665", 1));
        life.modem.isSent(1);
        QCOMPARE(life.modem.sends.size(), 2);
        QCOMPARE(life.modem.sends.at(1).destination, QByteArray("+43665"));
        life.modem.isSent(2);
        QCOMPARE(life.told, (QList<QByteArray>{"a 1 1 0", "b 1 2 0"}));
        // A confirmation of what has no result yet is none.
        life.outbox.take("a", textTo("+43664", 2));
        life.outbox.resultTaken("a", 2);
        life.modem.isSent(3);
        QCOMPARE(life.told.last(), QByteArray("a 2 3 0"));
    }

    void messagesGoInTheirOrderAndOneAtATime()
    {
        Life life(spool());
        for (int i = 1; i <= 5; ++i) {
            life.outbox.take("a", textTo(QByteArray::number(i), i));
        }
        life.outbox.setReady(true);
        for (int i = 1; i <= 5; ++i) {
            QCOMPARE(life.modem.sends.size(), i);
            QCOMPARE(life.modem.sends.last().destination, QByteArray::number(i));
            life.modem.isSent(i);
        }
        QCOMPARE(life.told.size(), 5);
    }

    void aRefusalIsAResult_data()
    {
        QTest::addColumn<int>("cause");
        QTest::addColumn<int>("status");
        QTest::newRow("of the network") << 38 << 38;
        QTest::newRow("of the modem") << 500 << 500;
        QTest::newRow("the highest") << 65535 << 65535;
        QTest::newRow("none") << 0 << 1;
        QTest::newRow("an impossible one") << 70000 << 65535;
        QTest::newRow("a negative one") << -1 << 1;
    }
    void aRefusalIsAResult()
    {
        QFETCH(int, cause);
        QFETCH(int, status);
        Life life(spool());
        life.outbox.setReady(true);
        life.outbox.take("a", textTo("+43664", 1));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is refused"));
        life.modem.answer(SendOutcome::Refused, 0, cause);
        QCOMPARE(life.told, QList<QByteArray>{"a 1 0 " + QByteArray::number(status)});
        QCOMPARE(life.modem.sends.size(), 1);
    }

    void whatTheModemDidNotTakeWaits()
    {
        Life life(spool());
        life.outbox.setReady(true);
        life.outbox.take("a", textTo("+43664", 1));
        life.modem.answer(SendOutcome::NotNow);
        life.outbox.setReady(false);
        QCOMPARE(life.told, QList<QByteArray>());
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), 2);
        // And a modem that is ready is asked again after a pause.
        life.modem.answer(SendOutcome::NotNow);
        QCOMPARE(life.modem.sends.size(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(life.modem.sends.size(), 3, 30000);
        life.modem.isSent(4);
        QCOMPARE(life.told, QList<QByteArray>{"a 1 4 0"});
    }

    void whatIsNotTakenForTooLongIsGivenUp()
    {
        Life life(spool(), 50ms);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is given up"));
        life.outbox.take("a", textTo("+43664", 1));
        QTRY_COMPARE(life.told, QList<QByteArray>{"a 1 0 65537"});
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), 0);
        QCOMPARE(life.outbox.results("a").size(), 1);
    }

    void whatTheModemHasIsNotGivenUp()
    {
        Life life(spool(), 20ms);
        life.outbox.setReady(true);
        life.outbox.take("a", textTo("+43664", 1));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is given up"));
        life.outbox.take("a", textTo("+43664", 2)); // it waits behind
        QTRY_COMPARE(life.told, QList<QByteArray>{"a 2 0 65537"});
        life.modem.isSent(9);
        QCOMPARE(life.told.last(), QByteArray("a 1 9 0"));
    }

    void aClockThatWasSetGivesNothingUpAtOnce()
    {
        {
            Life life(spool());
            life.outbox.take("a", textTo("+43664", 1));
        }
        // Taken long ago, by the clock of now.
        const QString path = box() + '/' + filesIn(box()).at(0);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
        file.close();
        record["taken"] = 1;
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(record).toJson());
        file.close();
        Life life(spool());
        QCoreApplication::processEvents();
        QCOMPARE(life.told, QList<QByteArray>());
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), 1);
    }

    void whatCannotBeWrittenDownIsGivenUpAtOnce()
    {
        Life life(spool());
        QVERIFY(QDir().rename(box(), box() + "-away"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("a message cannot be taken: "));
        life.outbox.take("a", textTo("+43664", 1));
        QCOMPARE(life.told, QList<QByteArray>{"a 1 0 65537"});
    }

    void oneClientDoesNotTakeAllTheRoom()
    {
        {
            Life life(spool());
        }
        for (size_t i = 1; i <= Outbox::kMostOfOne; ++i) {
            OutgoingRecord record;
            record.client = "a";
            record.send = textTo("1", int(i));
            writeRecord(box(), int(i), record.toJson());
        }
        Life life(spool());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("too many messages"));
        life.outbox.take("a", textTo("1", 100000));
        QCOMPARE(life.told, QList<QByteArray>{"a 100000 0 65537"});
        life.outbox.take("b", textTo("1", 1));
        QCOMPARE(life.told.size(), 1);
        QCOMPARE(filesIn(box()).size(), qsizetype(Outbox::kMostOfOne) + 1);
    }

    void stoppingWaitsForWhatTheModemHas()
    {
        Life life(spool());
        QSignalSpy idle(&life.outbox, &Outbox::idle);
        life.outbox.setReady(true);
        life.outbox.take("a", textTo("1", 1));
        life.outbox.take("a", textTo("2", 2));
        life.outbox.stop();
        QVERIFY(life.outbox.isSending());
        QCOMPARE(idle.count(), 0);
        life.modem.isSent(1);
        QCOMPARE(idle.count(), 1);
        QCOMPARE(life.modem.sends.size(), 1);
        QCOMPARE(life.told, QList<QByteArray>{"a 1 1 0"});
    }

    void aRecordThatCannotBeUsedIsKeptAside_data()
    {
        const QByteArray good = "{\"version\":1,\"client\":\"61\",\"taken\":1,\"reference\":3,"
                                "\"coding\":\"data\",\"destination\":\"31\",\"body\":\"00\"}";
        addRecordRows(good,
                      {{"no client", "\"client\"", "\"klient\""},
                       {"no reference", "\"reference\"", "\"ref\""},
                       {"another coding", "data", "date"},
                       {"no number", "\"31\"", "\"41\""},
                       {"too long", "\"00\"", '"' + QByteArray(282, '0') + '"'},
                       {"no digits", "\"00\"", "\"0x\""},
                       {"a status that is none", "\"body\"", "\"status\":-1,\"body\""}});
    }
    void aRecordThatCannotBeUsedIsKeptAside()
    {
        QFETCH(QByteArray, json);
        QFETCH(bool, isGood);
        {
            Life life(spool());
        }
        writeRowRecord(box(), json, isGood);
        Life life(spool());
        life.outbox.setReady(true);
        QCOMPARE(life.modem.sends.size(), isGood ? 1 : 0);
        QCOMPARE(filesIn(spool() + "/kept").size(), isGood ? 0 : 2);
    }

private:
    QString spool() const { return m_folder->filePath("spool"); }
    QString box() const { return spool() + "/out"; }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestSmsOutbox)
#include "tst_sms_outbox.moc"
