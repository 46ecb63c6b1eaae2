// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmmsg.h"
#include "core/wmfmsession.h"
#include "mms/model/wmmsmsg.h"
#include "mms/session/wmmssession.h"
#include "platform/applog/applog.h"
#include "sms/wsmsmsg.h"
#include "sms/wsmssession.h"

#include <QtTest/QtTest>

#include <memory>

class TestFactories : public QObject {
    Q_OBJECT

private slots:
    void multimediaMessage();
    void noMessageOfAnUnknownType_data();
    void noMessageOfAnUnknownType();
    void shortMessage();
    void noSessionOfAnUnknownType_data();
    void noSessionOfAnUnknownType();
    void multimediaSession();
    void shortMessageSession();
};

static void addUnknownTypes()
{
    QTest::addColumn<int>("type");
    for (int type : {2, 7, 127, 255, 256, 257, 65536, -1, INT_MAX, INT_MIN}) {
        QTest::addRow("%d", type) << type;
    }
}

void TestFactories::multimediaMessage()
{
    const std::unique_ptr<WMFMMsg> message(WMFMMsg::factory(WMFM::MSG_TYPE_MMS));
    QVERIFY(message);
    QCOMPARE(int(message->getMsgType()), 0);
    auto *multimedia = dynamic_cast<WMMSMsg *>(message.get());
    QVERIFY(multimedia);
    QVERIFY(multimedia->getTo().isEmpty());
    QVERIFY(!message->getFrom().isValid());
    QVERIFY(message->setTo(WMFMEntry(1, "5")));
    QCOMPARE(multimedia->getTo().size(), 1);

    const std::unique_ptr<WMFMMsg> another(WMFMMsg::factory(WMFM::MSG_TYPE_MMS));
    QVERIFY(another != message);
    QVERIFY(static_cast<WMMSMsg *>(another.get())->getTo().isEmpty());
}

void TestFactories::noMessageOfAnUnknownType_data()
{
    addUnknownTypes();
}

void TestFactories::noMessageOfAnUnknownType()
{
    QFETCH(int, type);
    QVERIFY(!WMFMMsg::factory(WMFM::MSG_TYPE_T(type)));
}

void TestFactories::shortMessage()
{
    const std::unique_ptr<WMFMMsg> message(WMFMMsg::factory(WMFM::MSG_TYPE_SMS));
    QVERIFY(dynamic_cast<WSMSMsg *>(message.get()));
    QCOMPARE(int(message->getMsgType()), 1);
    QVERIFY(!message->getFrom().isValid());
    QVERIFY(message->setTo(WMFMEntry(1, "5")));
}

void TestFactories::noSessionOfAnUnknownType_data()
{
    addUnknownTypes();
}

void TestFactories::noSessionOfAnUnknownType()
{
    QFETCH(int, type);
    for (int before : {0, 99}) {
        WMFM::STATUS_T status = WMFM::STATUS_T(before);
        QVERIFY(!WMFMSession::open(WMFM::MSG_TYPE_T(type), status));
        QCOMPARE(int(status), 15);
    }
}

void TestFactories::multimediaSession()
{
    // Whether the daemon runs is seen later.
    for (int before : {0, 99, 127}) {
        WMFM::STATUS_T status = WMFM::STATUS_T(before);
        WMFMSession *session = WMFMSession::open(WMFM::MSG_TYPE_MMS, status);
        QVERIFY(session);
        QCOMPARE(int(status), 0);
        QCOMPARE(int(session->getMsgType()), 0);
        QVERIFY(!session->getListener());
        QVERIFY(dynamic_cast<WMMSSession *>(session));
        WMFMSession::close(session);
    }
}

void TestFactories::shortMessageSession()
{
    // There is one also without the daemon; the status tells it.
    appLogModuleStream = appLogDiscardStream();
    const QTemporaryDir folder;
    qputenv("WMSG_TELEPHONY_SOCKET", folder.filePath("nobody").toLocal8Bit());
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    WMFMSession *session = WMFMSession::open(WMFM::MSG_TYPE_SMS, status);
    QVERIFY(dynamic_cast<WSMSSession *>(session));
    QCOMPARE(int(status), 127);
    QCOMPARE(int(session->getMsgType()), 1);
    QVERIFY(!session->getListener());
    WMFMSession::close(session);
}

QTEST_GUILESS_MAIN(TestFactories)
#include "tst_factories.moc"
