// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmlistener.h"
#include "core/wmfmmsg.h"
#include "core/wmfmsession.h"

#include <QtTest/QtTest>

#include <memory>

namespace {

/// A message that counts how many of its kind there are.
class CountedMessage : public WMFMMsg {
public:
    CountedMessage() { ++s_alive; }
    CountedMessage(const CountedMessage &other) : WMFMMsg(other) { ++s_alive; }
    ~CountedMessage() override { --s_alive; }
    WMFMEntry getFrom() override { return WMFMEntry(); }
    bool setTo(const WMFMEntry &) override { return true; }
    WMFM::MSG_TYPE_T getMsgType() const override { return WMFM::MSG_TYPE_SMS; }

    static int s_alive;
};
int CountedMessage::s_alive = 0;

class CountedSession : public WMFMSession {
public:
    CountedSession() { ++s_alive; }
    ~CountedSession() override { --s_alive; }
    int send(WMFMMsg *, WMFM::STATUS_T &status) override
    {
        status = WMFM::STATUS_OK;
        return 5;
    }
    WMFM::MSG_TYPE_T getMsgType() const override { return WMFM::MSG_TYPE_MMS; }

    static int s_alive;
};
int CountedSession::s_alive = 0;

/// A listener that overrides what it must and no more.
class PlainListener : public WMFMListener {
public:
    using WMFMListener::WMFMListener;
    ~PlainListener() override { ++s_deleted; }
    QString listenerName() const override { return "plain"; }

    static int s_deleted;
};
int PlainListener::s_deleted = 0;

/// A listener that keeps and notes all it hears.
class KeepingListener : public PlainListener {
public:
    using PlainListener::PlainListener;
    void msgIncome(WMFMMsg *msg) override { m_message.reset(msg); }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        m_heard.append(QString("status %1 %2").arg(id).arg(int(status)));
    }
    void progress(int id, int value1, int value2) override
    {
        m_heard.append(QString("progress %1 %2 %3").arg(id).arg(value1).arg(value2));
    }

    std::unique_ptr<WMFMMsg> m_message;
    QStringList m_heard;
};

} // namespace

static const WMFM::STATUS_T kUntouched = WMFM::STATUS_T(99);

class TestWMFMSession : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aNewSessionHasNoListener();
    void attachesOneListener();
    void attachingNullSucceeds();
    void nullDoesNotReplaceAListener();
    void theSessionNeverDeletesItsListener();
    void closeDeletes();
    void closeOfNullDoesNothing();
    void aListenerRemembersItsSessionAndNoMore();
    void theDefaultListenerFreesMessages();
    void theDefaultListenerIgnoresTheRest();
    void anOverrideKeepsItsMessage();
};

void TestWMFMSession::init()
{
    CountedMessage::s_alive = 0;
    CountedSession::s_alive = 0;
    PlainListener::s_deleted = 0;
}

void TestWMFMSession::aNewSessionHasNoListener()
{
    const CountedSession session;
    QVERIFY(!session.getListener());
}

void TestWMFMSession::attachesOneListener()
{
    CountedSession session;
    PlainListener first(&session);
    PlainListener second(&session);
    WMFM::STATUS_T status = kUntouched;
    QVERIFY(session.setListener(&first, status));
    QCOMPARE(int(status), 0);
    QCOMPARE(session.getListener(), &first);

    QVERIFY(!session.setListener(&second, status));
    QCOMPARE(int(status), 21);
    QCOMPARE(session.getListener(), &first);

    status = kUntouched;
    QVERIFY(!session.setListener(&first, status));
    QCOMPARE(int(status), 21);
    QCOMPARE(session.getListener(), &first);
}

void TestWMFMSession::attachingNullSucceeds()
{
    // attaching null succeeds
    CountedSession session;
    PlainListener listener(&session);
    WMFM::STATUS_T status = kUntouched;
    QVERIFY(session.setListener(nullptr, status));
    QCOMPARE(int(status), 0);
    QVERIFY(!session.getListener());
    QVERIFY(session.setListener(&listener, status));
    QCOMPARE(session.getListener(), &listener);
}

void TestWMFMSession::nullDoesNotReplaceAListener()
{
    CountedSession session;
    PlainListener listener(&session);
    WMFM::STATUS_T status = kUntouched;
    QVERIFY(session.setListener(&listener, status));
    QVERIFY(!session.setListener(nullptr, status));
    QCOMPARE(int(status), 21);
    QCOMPARE(session.getListener(), &listener);
}

void TestWMFMSession::theSessionNeverDeletesItsListener()
{
    auto *session = new CountedSession;
    PlainListener listener(session);
    WMFM::STATUS_T status = kUntouched;
    QVERIFY(session->setListener(&listener, status));
    WMFMSession::close(session);
    QCOMPARE(PlainListener::s_deleted, 0);
}

void TestWMFMSession::closeDeletes()
{
    WMFMSession *session = new CountedSession;
    QCOMPARE(CountedSession::s_alive, 1);
    WMFMSession::close(session);
    QCOMPARE(CountedSession::s_alive, 0);
}

void TestWMFMSession::closeOfNullDoesNothing()
{
    const CountedSession session;
    WMFMSession::close(nullptr);
    QCOMPARE(CountedSession::s_alive, 1);
}

void TestWMFMSession::aListenerRemembersItsSessionAndNoMore()
{
    CountedSession session;
    {
        const PlainListener listener(&session);
        QCOMPARE(listener.getSession(), &session);
        QVERIFY(!session.getListener());
    }
    QCOMPARE(CountedSession::s_alive, 1);
    QVERIFY(!PlainListener(nullptr).getSession());
}

void TestWMFMSession::theDefaultListenerFreesMessages()
{
    PlainListener listener(nullptr);
    for (int i = 0; i < 3; ++i) {
        auto *message = new CountedMessage;
        QCOMPARE(CountedMessage::s_alive, 1);
        listener.msgIncome(message);
        QCOMPARE(CountedMessage::s_alive, 0);
    }
    listener.msgIncome(nullptr);
    QCOMPARE(CountedMessage::s_alive, 0);
}

void TestWMFMSession::theDefaultListenerIgnoresTheRest()
{
    CountedSession session;
    PlainListener listener(&session);
    listener.statusChanged(1, WMFM::STATUS_FAIL);
    listener.progress(1, 2, 3);
    QCOMPARE(listener.getSession(), &session);
    QVERIFY(!session.getListener());
    QCOMPARE(listener.listenerName(), QString("plain"));
}

void TestWMFMSession::anOverrideKeepsItsMessage()
{
    KeepingListener listener(nullptr);
    WMFMListener *base = &listener;
    auto *message = new CountedMessage;
    base->msgIncome(message);
    base->statusChanged(7, WMFM::STATUS_T(42));
    base->progress(7, -1, 100);
    QCOMPARE(CountedMessage::s_alive, 1);
    QCOMPARE(listener.m_message.get(), message);
    QCOMPARE(listener.m_heard, (QStringList{"status 7 42", "progress 7 -1 100"}));
    listener.m_message.reset();
    QCOMPARE(CountedMessage::s_alive, 0);
}

QTEST_GUILESS_MAIN(TestWMFMSession)
#include "tst_wmfmsession.moc"
