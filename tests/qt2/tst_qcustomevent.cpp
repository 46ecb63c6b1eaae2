// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "qt2/qcustomevent.h"

#include <QtTest/QtTest>

#include <memory>

/// Handles its own events and leaves the rest to QObject.
class Receiver : public QObject {
public:
    bool event(QEvent *event) override
    {
        if (event->type() < QEvent::User) {
            return QObject::event(event);
        }
        auto *custom = static_cast<QCustomEvent *>(event);
        m_types.append(int(custom->type()));
        m_data.append(custom->data());
        return true;
    }

    QList<int> m_types;
    QList<void *> m_data;
};

class TestQCustomEvent : public QObject {
    Q_OBJECT

private slots:
    void carriesTypeAndData();
    void doesNotOwnItsData();
    void clones();
    void arrivesInOrder();
    void arrivesBesideQtsOwnEvents();
};

void TestQCustomEvent::carriesTypeAndData()
{
    int data = 5;
    QCustomEvent event(1004, &data);
    QCOMPARE(int(event.type()), 1004);
    QCOMPARE(event.data(), &data);
    event.setData(nullptr);
    QVERIFY(!event.data());
    QVERIFY(!QCustomEvent(65535).data());
    QCOMPARE(int(QCustomEvent(65535).type()), 65535);
}

void TestQCustomEvent::doesNotOwnItsData()
{
    auto data = std::make_shared<int>(5);
    {
        const QCustomEvent event(1004, &data);
    }
    QCOMPARE(*data, 5);
    QCOMPARE(data.use_count(), 1L);
}

void TestQCustomEvent::clones()
{
    int data = 5;
    const QCustomEvent event(1010, &data);
    const std::unique_ptr<QEvent> clone(event.clone());
    QCOMPARE(int(clone->type()), 1010);
    QCOMPARE(static_cast<QCustomEvent *>(clone.get())->data(), &data);
    QVERIFY(dynamic_cast<QCustomEvent *>(clone.get()));
}

void TestQCustomEvent::arrivesInOrder()
{
    Receiver receiver;
    int data[3] = {};
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::postEvent(&receiver, new QCustomEvent(1010 - i, &data[i]));
    }
    QVERIFY(receiver.m_types.isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(receiver.m_types, (QList<int>{1010, 1009, 1008}));
    QCOMPARE(receiver.m_data, (QList<void *>{&data[0], &data[1], &data[2]}));
}

void TestQCustomEvent::arrivesBesideQtsOwnEvents()
{
    auto *receiver = new Receiver;
    QPointer<Receiver> alive(receiver);
    bool wasCalled = false;
    QMetaObject::invokeMethod(
        receiver, [&wasCalled] { wasCalled = true; }, Qt::QueuedConnection);
    QCoreApplication::postEvent(receiver, new QCustomEvent(1004));
    QCoreApplication::processEvents();
    QVERIFY(wasCalled);
    QCOMPARE(receiver->m_types, QList<int>{1004});
    receiver->deleteLater();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!alive);
}

QTEST_GUILESS_MAIN(TestQCustomEvent)
#include "tst_qcustomevent.moc"
