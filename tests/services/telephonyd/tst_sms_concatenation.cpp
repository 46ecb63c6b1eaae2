// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/concatenation.h"
#include "tests/services/telephonyd/fake_modem.h"

#include <random>

using namespace std::chrono_literals;
using namespace wmsg::telephonyd;

class TestSmsConcatenation : public QObject {
    Q_OBJECT

private slots:
    void anyOrderMakesAMessage_data()
    {
        QTest::addColumn<QList<int>>("order");
        QList<int> order = {1, 2, 3, 4};
        do {
            QByteArray name;
            for (const int number : order) {
                name += QByteArray::number(number) + ' ';
            }
            QTest::newRow(name) << order;
        } while (std::next_permutation(order.begin(), order.end()));
    }
    void anyOrderMakesAMessage()
    {
        QFETCH(QList<int>, order);
        Concatenation parts(24h);
        for (const int number : order) {
            QVERIFY(parts.complete().empty());
            add(parts, RecordId(100 + number), partOf(7, 4, number, "x"));
        }
        QCOMPARE(parts.complete(), (std::vector<Concatenation::Records>{{101, 102, 103, 104}}));
        parts.remove(103);
        QVERIFY(parts.complete().empty());
        QCOMPARE(parts.count(), size_t(0));
    }

    void whatDiffersDoesNotBelongTogether_data()
    {
        QTest::addColumn<IncomingSms>("other");
        auto other = partOf(7, 2, 2, "x");
        other.sender = "+43665";
        QTest::newRow("sender") << other;
        QTest::newRow("reference") << partOf(8, 2, 2, "x");
        QTest::newRow("total") << partOf(7, 3, 2, "x");
        other = partOf(7, 2, 2, "x");
        other.coding = wmsg::telephony::Coding::Binary;
        QTest::newRow("kind of body") << other;
        other.coding = wmsg::telephony::Coding::Ucs2;
        other.header = QByteArray::fromHex("0608040007") + QByteArray::fromHex("0202");
        QTest::newRow("width of the reference") << other;
        other.header = QByteArray::fromHex("0B0003070202") + QByteArray::fromHex("05040B8423F0");
        QTest::newRow("ports") << other;
        other = partOf(7, 2, 2, "x");
        other.time += 24 * 3600 + 1;
        QTest::newRow("a day later") << other;
        other.time = std::numeric_limits<qint64>::min();
        QTest::newRow("an impossible time") << other;
    }
    void whatDiffersDoesNotBelongTogether()
    {
        QFETCH(IncomingSms, other);
        Concatenation parts(24h);
        add(parts, 1, partOf(7, 2, 1, "x"));
        add(parts, 2, other);
        QVERIFY(parts.complete().empty());
        QCOMPARE(parts.count(), size_t(2));
        add(parts, 3, partOf(7, 2, 2, "x"));
        QCOMPARE(parts.complete(), (std::vector<Concatenation::Records>{{1, 3}}));
    }

    void portsAndWideReferencesAreRead()
    {
        Concatenation parts(24h);
        for (int number = 1; number <= 2; ++number) {
            auto sms = smsOf("x");
            sms.header = QByteArray::fromHex("0C0804123402") + char(number)
                + QByteArray::fromHex("05040B8423F0");
            const IncomingRecord record = incomingRecord(sms);
            QVERIFY(record.isPart() && record.isWide && record.message.hasPorts);
            QCOMPARE(record.reference, quint16(0x1234));
            QCOMPARE(record.message.destinationPort, quint16(2948));
            QCOMPARE(record.message.sourcePort, quint16(9200));
            parts.add(RecordId(number), record, QDeadlineTimer(1h));
        }
        QCOMPARE(parts.complete().size(), size_t(1));
    }

    void aReferenceThatIsUsedAgainBeginsAnother()
    {
        Concatenation parts(24h);
        add(parts, 1, at(partOf(7, 3, 1, "a"), 0));
        add(parts, 2, at(partOf(7, 3, 1, "b"), 600));
        // Each goes to what is nearest in time.
        add(parts, 3, at(partOf(7, 3, 2, "b"), 601));
        add(parts, 4, at(partOf(7, 3, 2, "a"), 2));
        add(parts, 5, at(partOf(7, 3, 3, "a"), 3));
        QCOMPARE(parts.complete(), (std::vector<Concatenation::Records>{{1, 4, 5}}));
        add(parts, 6, at(partOf(7, 3, 3, "b"), 602));
        QCOMPARE(parts.complete().size(), size_t(2));
    }

    void whatIsNotWholeInTimeIsGivenUp()
    {
        Concatenation parts(24h);
        QVERIFY(parts.nextExpiry().isForever());
        parts.add(1, incomingRecord(partOf(7, 3, 1, "x")), QDeadlineTimer(1h));
        parts.add(2, incomingRecord(partOf(8, 3, 3, "x")), QDeadlineTimer(0));
        QVERIFY(!parts.nextExpiry().isForever());
        const auto givenUp = parts.takeExpired();
        QVERIFY(givenUp);
        QCOMPARE(givenUp->records, (Concatenation::Records{2}));
        QCOMPARE(givenUp->sender, QByteArray("+43664"));
        QCOMPARE(givenUp->total, 3);
        QVERIFY(!parts.takeExpired());
        // Another part gives its set more time.
        parts.add(3, incomingRecord(partOf(7, 3, 2, "x")), QDeadlineTimer(0));
        QCOMPARE(parts.takeExpired()->records, (Concatenation::Records{1, 3}));
        QVERIFY(!parts.takeOldest());
    }

    void aWholeSetIsNotGivenUp()
    {
        Concatenation parts(24h);
        parts.add(1, incomingRecord(partOf(7, 2, 1, "x")), QDeadlineTimer(0));
        parts.add(2, incomingRecord(partOf(7, 2, 2, "x")), QDeadlineTimer(0));
        QVERIFY(!parts.takeExpired());
        QVERIFY(!parts.takeOldest());
        QVERIFY(parts.nextExpiry().isForever());
    }

    void manyMessagesAtOnceInAnyOrder()
    {
        std::mt19937 random(1);
        std::vector<std::pair<RecordId, IncomingRecord>> all;
        for (int message = 0; message < 40; ++message) {
            const int total = 2 + message % 9;
            for (int number = 1; number <= total; ++number) {
                all.emplace_back(RecordId(message * 100 + number),
                                 incomingRecord(partOf(message, total, number, "x")));
            }
        }
        std::shuffle(all.begin(), all.end(), random);
        Concatenation parts(24h);
        for (const auto &[id, record] : all) {
            parts.add(id, record, QDeadlineTimer(1h));
        }
        QCOMPARE(parts.complete().size(), size_t(40));
        for (const auto &records : parts.complete()) {
            for (size_t i = 0; i < records.size(); ++i) {
                QCOMPARE(records[i], records[0] + i);
            }
        }
    }

private:
    static IncomingSms at(IncomingSms sms, int seconds)
    {
        sms.time += seconds;
        return sms;
    }
    static void add(Concatenation &parts, RecordId id, const IncomingSms &sms)
    {
        parts.add(id, incomingRecord(sms), QDeadlineTimer(1h));
    }
};

QTEST_GUILESS_MAIN(TestSmsConcatenation)
#include "tst_sms_concatenation.moc"
