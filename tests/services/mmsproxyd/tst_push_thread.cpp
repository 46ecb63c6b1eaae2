// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/push_thread.h"
#include "tests/support/telephony_peer.h"

#include <QtTest/QtTest>

using namespace wmsg::proxy;
using namespace wmsg::telephony;

namespace {

QByteArray pushMessage(quint64 id, const QByteArray &body)
{
    Message message;
    message.id = id;
    message.coding = Coding::Binary;
    message.hasPorts = true;
    message.destinationPort = 2948;
    message.sourcePort = 9200;
    message.body = body;
    return toFrame(message);
}

const QString kRegistered = "3: 84 0B 01";
const QString kTaken = "6: 01 00 00 00 00 00 00 00 01";
const QString kNotTaken = "6: 01 00 00 00 00 00 00 00 00";

} // namespace

/// With the telephony library, and a daemon at its other end.
class TestPushThread : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules("wmsg.telephony.info=false"); }

    void takesInItsOwnersThread()
    {
        TelephonyPeer service;
        QByteArrayList taken;
        bool isOurThread = false;
        PushThread thread([&](const QByteArray &body) {
            isOurThread = QThread::currentThread() == this->thread();
            taken.append(body);
            return true;
        });
        thread.start();
        QTRY_VERIFY(service.heard().contains(kRegistered));
        service.send(pushMessage(1, "push"));
        QTRY_VERIFY(service.heard().contains(kTaken));
        QCOMPARE(taken, QByteArrayList{"push"});
        QVERIFY(isOurThread);
    }

    void tellsWhatIsNotTaken()
    {
        TelephonyPeer service;
        PushThread thread([](const QByteArray &) { return false; });
        thread.start();
        QTRY_VERIFY(service.heard().contains(kRegistered));
        service.send(pushMessage(1, "push"));
        QTRY_VERIFY(service.heard().contains(kNotTaken));
        QTRY_COMPARE(service.clients(), 2); // asks to be offered it again
    }

    void aServiceThatDoesNotAnswerHoldsNobodyUp()
    {
        TelephonyPeer service;
        service.answer(RecordType::Hello, QByteArray());
        PushThread thread([](const QByteArray &) { return true; });
        thread.start();
        // The thread waits in there, and the loop of the test runs meanwhile.
        QTRY_VERIFY(!service.heard().isEmpty());
        service.drop(); // so that the thread need not be waited for
    }

    void endsWhileAMessageIsUnderWay()
    {
        TelephonyPeer service;
        {
            PushThread thread([](const QByteArray &) { return true; });
            thread.start();
            QTRY_VERIFY(service.heard().contains(kRegistered));
            service.send(pushMessage(1, "push"));
            // The body is with the thread, and its owner never gets to taking it.
            while (service.unread() > 0) {
                QThread::yieldCurrentThread();
            }
        }
        QVERIFY(!service.heard().contains(kTaken));
    }

    void endsBeforeItBegan()
    {
        TelephonyPeer service;
        for (int i = 0; i < 20; ++i) {
            PushThread thread([](const QByteArray &) { return true; });
            thread.start();
        }
        const PushThread never([](const QByteArray &) { return true; });
    }
};

QTEST_GUILESS_MAIN(TestPushThread)
#include "tst_push_thread.moc"
