// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/short_message_path.h"
#include "sim/mmsc/simulator.h"
#include "tests/sim/mmsc/http_call.h"
#include "tests/sim/mmsc/messages.h"
#include "tests/sim/mmsc/modem_peer.h"

#include <platform/applog/applog.h>

using namespace wmsg::sim;

using Outcome = NotificationPath::Outcome;

namespace {

/// What pushes came to, in their order.
class Outcomes : public QObject {
public:
    NotificationPath::Done done()
    {
        return [this](Outcome outcome, const QString &reason) {
            all.append(outcome);
            reasons.append(reason);
        };
    }

    QList<Outcome> all;
    QStringList reasons;
};

} // namespace

class TestShortMessagePath : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void delivers()
    {
        ModemPeer modem;
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        path.push("short", &outcomes, outcomes.done());
        QVERIFY(outcomes.all.isEmpty());
        QTRY_COMPARE(outcomes.all, QList<Outcome>{Outcome::Taken});
        QCOMPARE(toHex(modem.joined()), toHex(fromHex("01 06 03 BE AF 84") + "short"));
        QVERIFY(!modem.delivered.first().concatenation());
    }

    void deliversInParts()
    {
        ModemPeer modem;
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        const QByteArray first(200, 'a');
        const QByteArray second(300, 'b');
        path.push(first, &outcomes, outcomes.done());
        path.push(second, &outcomes, outcomes.done());
        QTRY_COMPARE(outcomes.all, (QList<Outcome>{Outcome::Taken, Outcome::Taken}));
        QVERIFY(modem.joined()
                == fromHex("01 06 03 BE AF 84") + first + fromHex("02 06 03 BE AF 84") + second);
        QCOMPARE(modem.delivered.size(), 2 + 3);
        // A phone can tell the two apart.
        QVERIFY(modem.delivered.first().concatenation()->reference
                != modem.delivered.last().concatenation()->reference);
    }

    void aModemThatRefuses()
    {
        ModemPeer modem;
        modem.refusal = "no such message";
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        path.push(QByteArray(500, 'a'), &outcomes, outcomes.done());
        QTRY_COMPARE(outcomes.all, QList<Outcome>{Outcome::Refused});
        QCOMPARE(outcomes.reasons, QStringList{"no such message"});
    }

    void aModemThatIsNotThere()
    {
        ModemPeer modem(false);
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        path.push("one", &outcomes, outcomes.done());
        QTRY_COMPARE(outcomes.all, QList<Outcome>{Outcome::NotReached});
        QVERIFY(!outcomes.reasons.first().isEmpty());
        modem.switchOn();
        path.push("two", &outcomes, outcomes.done());
        QTRY_COMPARE(outcomes.all, (QList<Outcome>{Outcome::NotReached, Outcome::Taken}));
    }

    void whatIsTooLongIsRefused()
    {
        ModemPeer modem;
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        path.push(QByteArray(255 * 128, 'a'), &outcomes, outcomes.done());
        path.push("short", &outcomes, outcomes.done());
        QTRY_COMPARE(outcomes.all, (QList<Outcome>{Outcome::Refused, Outcome::Taken}));
        QCOMPARE(modem.delivered.size(), 1);
    }

    void receiversThatGo()
    {
        ModemPeer modem;
        ShortMessagePath path(modem.path());
        Outcomes outcomes;
        auto gone = std::make_unique<Outcomes>();
        path.push("under way", gone.get(), gone->done());
        path.push("waits", gone.get(), gone->done());
        path.push("stays", &outcomes, outcomes.done());
        gone.reset();
        QTRY_COMPARE(outcomes.all, QList<Outcome>{Outcome::Taken});
        QVERIFY(modem.joined().contains("stays"));
        QVERIFY(!modem.joined().contains("waits"));
    }

    void theSimulatorPushesThatWay_data()
    {
        QTest::addColumn<bool>("isDefault");
        QTest::newRow("to a subscriber") << false;
        QTest::newRow("to all others") << true;
    }
    void theSimulatorPushesThatWay()
    {
        QFETCH(bool, isDefault);
        ModemPeer modem;
        const std::string way = "sms:" + modem.path().toStdString();
        Options options;
        if (isDefault) {
            options.defaultPush = way;
        } else {
            options.subscribers = {"+431=" + way};
        }
        Simulator simulator(options);
        QCOMPARE(simulator.start(), QString());
        HttpCall call(quint16(simulator.url().section(':', 2).chopped(1).toInt()));
        call.post(sendRequest(kInsertFrom + to("+431"))).wait();
        QCOMPARE(call.status(), 200);
        QTRY_VERIFY(!modem.delivered.isEmpty());
        QCOMPARE(toHex(modem.joined().left(8)), toHex(fromHex("01 06 03 BE AF 84 8C 82")));
    }
};

QTEST_GUILESS_MAIN(TestShortMessagePath)
#include "tst_short_message_path.moc"
