// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/tpdu.h"
#include "sim/mmsc/wap_push.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg;
using namespace wmsg::sim;

namespace {

const QDateTime kTime(QDate(2024, 5, 1), QTime(12, 0), Qt::OffsetFromUTC, 7200);

/// The messages as a phone reads them.
QList<smspdu::Tpdu> readAll(const QByteArrayList &messages)
{
    QList<smspdu::Tpdu> all;
    for (const QByteArray &message : messages) {
        const auto centre = smspdu::readServiceCentre(message);
        if (!centre) {
            qFatal("there is no service centre");
        }
        const auto read =
            smspdu::readTpdu(QByteArrayView(message).sliced(centre->size), smspdu::Origin::Network);
        if (!read.isRead()) {
            qFatal("%s", qPrintable(read.problem));
        }
        all.append(read.tpdu);
    }
    return all;
}

} // namespace

class TestWapPush : public QObject {
    Q_OBJECT

private slots:
    void push()
    {
        QCOMPARE(toHex(wapPush(fromHex("8C 82"), 0x2A)), toHex(fromHex("2A 06 03 BE AF 84 8C 82")));
    }

    void everyByteOfAMessage()
    {
        const QByteArrayList messages = pushMessages("hi", 7, kTime);
        QCOMPARE(messages.size(), 1);
        QCOMPARE(toHex(messages.first()),
                 toHex(fromHex("05 91 51 55 10 99" // the service centre
                               "44" // deliver, no more messages, a header
                               "08 91 51 55 10 99"
                               "00 04" // octets
                               "42 50 10 21 00 00 80"
                               "09 06 05 04 0B 84 23 F0 68 69")));
    }

    void asManyAsItTakes_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("count");
        QTest::newRow("nothing") << 0 << 1;
        QTest::newRow("the most that fits one") << 133 << 1;
        QTest::newRow("a byte more") << 134 << 2;
        QTest::newRow("the most that fits two") << 256 << 2;
        QTest::newRow("a byte more than that") << 257 << 3;
        QTest::newRow("the most that there is") << 255 * 128 << 255;
        QTest::newRow("too much") << 255 * 128 + 1 << 0;
    }
    void asManyAsItTakes()
    {
        QFETCH(int, size);
        QFETCH(int, count);
        QByteArray push(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i) {
            push[i] = char(i * 7 + i / 128);
        }
        const auto parts = readAll(pushMessages(push, 7, kTime));
        QCOMPARE(parts.size(), count);
        QByteArray joined;
        for (int i = 0; i < count; ++i) {
            const smspdu::Tpdu &part = parts[i];
            QVERIFY(part.fits());
            QCOMPARE(part.address.toString(), QString(kPushSender));
            QCOMPARE(part.timeStamp, kTime);
            QCOMPARE(part.alphabet(), smspdu::Alphabet::Octets);
            QVERIFY(part.ports());
            QCOMPARE(part.ports()->destination, quint16(2948));
            QCOMPARE(part.ports()->source, quint16(9200));
            QCOMPARE(part.hasMore, i + 1 < count);
            QCOMPARE(bool(part.concatenation()), count > 1);
            if (count > 1) {
                QCOMPARE(part.concatenation()->reference, quint16(7));
                QCOMPARE(int(part.concatenation()->total), count);
                QCOMPARE(int(part.concatenation()->part), i + 1);
            }
            joined += part.userData;
        }
        QVERIFY(joined == (count > 0 ? push : QByteArray()));
    }
};

QTEST_GUILESS_MAIN(TestWapPush)
#include "tst_wap_push.moc"
