// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/inbox.h"
#include "tests/services/telephonyd/box_records.h"
#include "tests/services/telephonyd/fake_modem.h"
#include "tests/support/hex.h"

using namespace std::chrono_literals;
using namespace wmsg::telephonyd;
using wmsg::telephony::Message;

namespace {

/// One life of an inbox over a spool that outlives it.
struct Life {
    explicit Life(const QString &folder, std::chrono::milliseconds partLifetime = 24h)
        : spool(folder), inbox(spool, partLifetime)
    {
        problem = spool.open();
        QObject::connect(&inbox, &Inbox::safe, &inbox,
                         [this](const QByteArray &place) { safe.append(place); });
        QObject::connect(&inbox, &Inbox::added, &inbox, [this](quint64 id) {
            const Message *message = inbox.find(id);
            added.append(message ? textOf(message->body) : "nothing");
        });
        inbox.restore();
    }

    QStringList texts() const
    {
        QStringList all;
        for (const quint64 id : inbox.waiting()) {
            all.append(textOf(inbox.find(id)->body));
        }
        return all;
    }
    void takeAll()
    {
        for (const quint64 id : inbox.waiting()) {
            inbox.taken(id);
        }
    }

    Spool spool;
    Inbox inbox;
    QString problem;
    QList<QByteArray> safe;
    QStringList added;
};

} // namespace

class TestSmsInbox : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aMessageIsDurableBeforeTheModemMayForgetIt()
    {
        quint64 id = 0;
        {
            Life life(spool());
            QObject::connect(&life.inbox, &Inbox::safe, &life.inbox,
                             [this] { QCOMPARE(filesIn(box()).size(), 1); });
            life.inbox.arrived(smsOf("hello", "SM:1"));
            QCOMPARE(life.safe, QList<QByteArray>{"SM:1"});
            QCOMPARE(life.added, QStringList{"hello"});
            id = life.inbox.waiting().at(0);
        }
        Life life(spool());
        QCOMPARE(life.inbox.waiting(), std::vector<quint64>{id});
        const Message *message = life.inbox.find(id);
        QVERIFY(message);
        QCOMPARE(message->id, id);
        QCOMPARE(textOf(message->body), QString("hello"));
        QCOMPARE(message->sender, QByteArray("+43664"));
        QCOMPARE(message->serviceCenter, QByteArray("+4366"));
        QCOMPARE(message->time, qint64(1100000000));
        QVERIFY(!message->hasPorts);
        life.inbox.forgotten("SM:1");
        life.inbox.taken(id);
        QVERIFY(!life.inbox.find(id));
        QCOMPARE(filesIn(box()), QStringList());
    }

    void dataAndPortsAreKept()
    {
        QTest::ignoreMessage(QtInfoMsg, "a message to port 9000 is here");
        auto sms = smsOf(QString());
        sms.coding = wmsg::telephony::Coding::Binary;
        sms.header = QByteArray::fromHex("06050423282329");
        sms.body = QByteArray("\x00\xFF\x10", 3);
        {
            Life(spool()).inbox.arrived(sms);
        }
        Life life(spool());
        const Message *message = life.inbox.find(life.inbox.waiting().at(0));
        QCOMPARE(toHex(message->body), QByteArray("00 FF 10"));
        QVERIFY(message->coding == wmsg::telephony::Coding::Binary && message->hasPorts);
        QCOMPARE(message->destinationPort, quint16(9000));
        QCOMPARE(message->sourcePort, quint16(9001));
    }

    /// The modem did not get as far as forgetting: whatever has become of the message meanwhile.
    void whatTheModemTellsAgainIsNotTakenTwice_data()
    {
        QTest::addColumn<bool>("isTaken");
        QTest::addColumn<bool>("isAnotherLife");
        QTest::newRow("it waits") << false << false;
        QTest::newRow("it waits, after a new start") << false << true;
        QTest::newRow("somebody has it") << true << false;
        QTest::newRow("somebody has it, after a new start") << true << true;
    }
    void whatTheModemTellsAgainIsNotTakenTwice()
    {
        QFETCH(bool, isTaken);
        QFETCH(bool, isAnotherLife);
        auto life = std::make_unique<Life>(spool());
        life->inbox.arrived(smsOf("hello", "SM:1"));
        if (isTaken) {
            life->takeAll();
        }
        if (isAnotherLife) {
            life.reset();
            life = std::make_unique<Life>(spool());
        }
        life->safe.clear();
        life->added.clear();
        life->inbox.arrived(smsOf("hello", "SM:1"));
        QCOMPARE(life->safe, QList<QByteArray>{"SM:1"});
        QCOMPARE(life->added, QStringList());
        QCOMPARE(life->texts(), isTaken ? QStringList() : QStringList{"hello"});
        // When it is forgotten there is nothing to remember.
        life->inbox.forgotten("SM:1");
        life->takeAll();
        QCOMPARE(filesIn(box()), QStringList());
    }

    void theSameTextAgainIsAnotherMessage()
    {
        Life life(spool());
        life.inbox.arrived(smsOf("hello"));
        life.inbox.arrived(smsOf("hello"));
        life.inbox.arrived(smsOf("hello", "SM:1"));
        life.inbox.arrived(smsOf("hello", "SM:2"));
        life.inbox.forgotten("SM:2");
        life.inbox.arrived(smsOf("hello", "SM:2"));
        QCOMPARE(life.added.size(), 5);
    }

    void anotherMessageAtThePlaceSaysThatTheFirstIsGone()
    {
        Life life(spool());
        life.inbox.arrived(smsOf("one", "SM:1"));
        life.inbox.arrived(smsOf("two", "SM:1"));
        life.inbox.arrived(smsOf("one", "SM:1"));
        QCOMPARE(life.added, (QStringList{"one", "two", "one"}));
    }

    void partsBecomeAMessage()
    {
        Life life(spool());
        life.inbox.arrived(partOf(7, 3, 3, "c", "SM:3"));
        life.inbox.arrived(partOf(7, 3, 1, "a", "SM:1"));
        QCOMPARE(life.added, QStringList());
        QCOMPARE(life.safe, (QList<QByteArray>{"SM:3", "SM:1"}));
        life.inbox.arrived(partOf(7, 3, 2, "b", "SM:2"));
        QCOMPARE(life.added, QStringList{"abc"});
        QCOMPARE(filesIn(box()).size(), 1);
    }

    void partsWaitThroughANewStart()
    {
        {
            Life(spool()).inbox.arrived(partOf(7, 2, 2, "b", "SM:2"));
        }
        Life life(spool());
        QCOMPARE(life.texts(), QStringList());
        life.inbox.arrived(partOf(7, 2, 1, "a", "SM:1"));
        QCOMPARE(life.added, QStringList{"ab"});
    }

    void repeatedPartsAreKnown_data()
    {
        QTest::addColumn<int>("later");
        QTest::addColumn<bool>("isWhole");
        QTest::newRow("the same, before") << 0 << false;
        QTest::newRow("the same, after") << 0 << true;
        QTest::newRow("sent again, before") << 60 << false;
        QTest::newRow("sent again, after") << 60 << true;
    }
    void repeatedPartsAreKnown()
    {
        QFETCH(int, later);
        QFETCH(bool, isWhole);
        Life life(spool());
        life.inbox.arrived(partOf(7, 2, 1, "a", "SM:1"));
        auto again = partOf(7, 2, 1, "a", "SM:9");
        again.time += later;
        if (!isWhole) {
            life.inbox.arrived(again);
            QCOMPARE(life.safe, (QList<QByteArray>{"SM:1", "SM:9"}));
        }
        life.inbox.arrived(partOf(7, 2, 2, "b", "SM:2"));
        life.takeAll();
        life.inbox.arrived(again);
        life.inbox.arrived(partOf(7, 2, 2, "b", "SM:2"));
        QCOMPARE(life.added, QStringList{"ab"});
        QCOMPARE(life.texts(), QStringList());
    }

    /// Of messages without a time stamp nobody knows how old they are.
    void aPartWithoutATimeIsKnownForAWhile_data()
    {
        QTest::addColumn<qint64>("age");
        QTest::addColumn<bool>("isKnown");
        QTest::newRow("of now") << qint64(0) << true;
        QTest::newRow("of 50 minutes ago") << qint64(50 * 60) << true;
        QTest::newRow("of two hours ago") << qint64(2 * 3600) << false;
    }
    void aPartWithoutATimeIsKnownForAWhile()
    {
        QFETCH(qint64, age);
        QFETCH(bool, isKnown);
        {
            Life life(spool());
        }
        auto part = partOf(7, 2, 1, "a");
        part.time = 0;
        QJsonObject over = incomingRecord(part).toJson();
        over["version"] = 1;
        over["kind"] = "over";
        over["kept"] = currentTime() - age * 1000;
        QFile file(box() + "/00000000000000000001.json");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(over).toJson());
        file.close();
        Life life(spool());
        life.inbox.arrived(part);
        QCOMPARE(filesIn(box()).size(), isKnown ? 1 : 2);
    }

    /// Killed between the message and the removal of its parts.
    void partsThatAreInAMessageAreNoParts()
    {
        QByteArray part;
        {
            Life life(spool());
            life.inbox.arrived(partOf(7, 2, 1, "a"));
            QFile file(box() + '/' + filesIn(box()).at(0));
            QVERIFY(file.open(QIODevice::ReadOnly));
            part = file.readAll();
            life.inbox.arrived(partOf(7, 2, 2, "b"));
        }
        QFile file(box() + "/00000000000000000001.json");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(part);
        file.close();
        Life life(spool());
        QCOMPARE(life.texts(), QStringList{"ab"});
        QCOMPARE(filesIn(box()).size(), 1);
    }

    /// Killed before the message that the last part makes.
    void partsThatAreCompleteAreJoinedByTheNextStart()
    {
        {
            Life life(spool());
            life.inbox.arrived(partOf(7, 2, 2, "b"));
        }
        const QString name = filesIn(box()).at(0);
        {
            Life life(m_folder->filePath("other"));
            life.inbox.arrived(partOf(7, 2, 1, "a"));
        }
        const QString other = m_folder->filePath("other/in");
        QVERIFY(QFile::rename(other + '/' + filesIn(other).at(0),
                              box() + "/00000000000000000001.json"));
        Life life(spool());
        QCOMPARE(life.texts(), QStringList{"ab"});
        QVERIFY(!filesIn(box()).contains(name));
    }

    void partsWithoutTheOthersAreGivenUpAndReported()
    {
        Life life(spool(), 50ms);
        QTest::ignoreMessage(QtWarningMsg,
                             "2 of 3 parts of a message from +43664 are given up: "
                             "the others did not come");
        life.inbox.arrived(partOf(7, 3, 1, "a"));
        life.inbox.arrived(partOf(7, 3, 3, "c"));
        QTRY_COMPARE(filesIn(box()), QStringList());
        QCOMPARE(life.added, QStringList());
        QVERIFY(life.inbox.waiting().empty());
    }

    void aFloodOfPartsGivesUpTheOldest()
    {
        {
            Life life(spool());
        }
        for (size_t i = 0; i < Inbox::kMostParts; ++i) {
            auto part = partOf(int(i % 256), 2, 1, QString::number(i));
            part.sender = QByteArray::number(int(i));
            writePart(int(i) + 1, part);
        }
        Life many(spool());
        QCOMPARE(filesIn(box()).size(), qsizetype(Inbox::kMostParts));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("1 of 2 parts .* are given up"));
        many.inbox.arrived(partOf(9, 2, 1, "more"));
        QCOMPARE(filesIn(box()).size(), qsizetype(Inbox::kMostParts));
        many.inbox.arrived(partOf(9, 2, 2, "!"));
        QCOMPARE(many.added, QStringList{"more!"});
    }

    void whatCannotBeKeptStaysInTheModemAndIsTriedAgain()
    {
        Life life(spool());
        QVERIFY(QDir().rename(box(), box() + "-away")); // root may write to every folder
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot be kept"));
        life.inbox.arrived(smsOf("hello", "SM:1"));
        QCOMPARE(life.safe, QList<QByteArray>());
        QCOMPARE(life.added, QStringList());
        QVERIFY(QDir().rename(box() + "-away", box()));
        QTRY_COMPARE_WITH_TIMEOUT(life.added, QStringList{"hello"}, 30000);
        QCOMPARE(life.safe, QList<QByteArray>{"SM:1"});
    }

    void aMessageLongerThanTheRecordIsKeptAside()
    {
        {
            Life life(spool());
        }
        writePart(2, partOf(7, 2, 1, QString(20000, 'x')));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("record 2 is kept aside: all parts"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is kept aside: all parts of it"));
        Life life(spool());
        life.inbox.arrived(partOf(7, 2, 2, QString(20000, 'x')));
        QCOMPARE(life.added, QStringList());
        QCOMPARE(filesIn(box()), QStringList());
        QCOMPARE(filesIn(spool() + "/kept").size(), 4);
    }

    void oneOfAsManyPartsAsThereMayBeIsDelivered()
    {
        {
            Life life(spool());
        }
        QString whole;
        for (int number = 1; number <= 255; ++number) {
            const QString text(128, QChar('a' + number % 26));
            whole += text;
            writePart(number, partOf(7, 255, number, text));
        }
        Life life(spool());
        QCOMPARE(life.texts(), QStringList{whole});
        QCOMPARE(filesIn(box()).size(), 1);
    }

    void theExampleOfThePageIsWhatIsWritten()
    {
        QFile page(WMSG_TEST_DATA "/../../docs/formats/telephony-spool.md");
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray text = page.readAll();
        const qsizetype begin = text.indexOf("```json\n") + 8;
        const qsizetype length = text.indexOf("```", begin) - begin;
        QJsonObject example = QJsonDocument::fromJson(text.mid(begin, length)).object();
        QCOMPARE(example.take("version"), QJsonValue(1));
        QString reason;
        const auto read = IncomingRecord::fromJson(example, reason);
        QVERIFY2(read, qPrintable(reason));
        QCOMPARE(read->toJson(), example);

        auto sms = smsOf("hi", read->segments.first().place);
        sms.time = read->message.time;
        IncomingRecord written = incomingRecord(sms);
        written.kept = read->kept;
        written.message.id = read->message.id;
        QCOMPARE(written.toJson(), example);
    }

    void aRecordThatCannotBeUsedIsKeptAside_data()
    {
        const QByteArray good =
            "{\"version\":1,\"kind\":\"whole\",\"kept\":1,\"id\":\"00000000000000"
            "0a\",\"coding\":\"text\",\"body\":\"6800\",\"sender\":\"31\","
            "\"time\":0,\"segments\":[{\"digest\":\"aa\",\"time\":0}]}";
        addRecordRows(
            good,
            {{"another version", "\"version\":1", "\"version\":2"},
             {"no JSON", "}]}", "}]"},
             {"another kind", "whole", "most"},
             {"half a character", "6800", "680068"},
             {"no digits", "6800", "zz00"},
             {"a short id", "\"00000000000000", "\""},
             {"no id", "\"id\"", "\"ix\""},
             {"no segments", "[{\"digest\":\"aa\",\"time\":0}]", "[]"},
             {"no digest", "\"digest\":\"aa\",", ""},
             {"a time that is no number", "\"time\":0,\"seg", "\"time\":\"0\",\"seg"},
             {"a port that is none", "\"time\":0,\"seg", "\"port\":65536,\"time\":0,\"seg"},
             {"a part of nothing", "whole", "part"}});
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
        QCOMPARE(life.texts(), isGood ? QStringList{"h"} : QStringList());
        QCOMPARE(filesIn(spool() + "/kept").size(), isGood ? 0 : 2);
    }

    void theMemoryIsBounded()
    {
        {
            Life life(spool());
        }
        for (size_t i = 1; i <= Inbox::kMostRemembered + 5; ++i) {
            writeRecord(box(), int(i),
                        "{\"version\":1,\"kind\":\"over\",\"kept\":"
                            + QByteArray::number(currentTime())
                            + ",\"segments\":[{\"digest\":\"aa\",\"time\":0,\"place\":\"31\"}]}");
        }
        Life life(spool());
        QCOMPARE(filesIn(box()).size(), qsizetype(Inbox::kMostRemembered));
        QVERIFY(!QFile::exists(box() + "/00000000000000000005.json"));
    }

private:
    QString spool() const { return m_folder->filePath("spool"); }
    QString box() const { return spool() + "/in"; }

    void writePart(int id, const IncomingSms &sms) const
    {
        writeRecord(box(), id, incomingRecord(sms).toJson());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestSmsInbox)
#include "tst_sms_inbox.moc"
