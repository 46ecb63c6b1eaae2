// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/delivery.h"
#include "services/mmsproxyd/retry_schedule.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

using namespace wmsg::proxy;

namespace {

/// After which what could not be handed out is tried again.
constexpr std::chrono::milliseconds kPause(500);

} // namespace

/// The inbox is filled by hand, and sessions are numbers.
class TestDelivery : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules("wmsg.*.info=false"); }
    void init();
    void cleanup();

    void goesToTheSessionsOfTheApplication();
    void goesToSessionsThatNeverRegistered();
    void aFreshSessionCountsAfterAMoment();
    void waitsUntilSomebodyComes();
    void isDeliveredWhenAFileIsRemoved();
    void isDeliveredWhenAFileIsMoved();
    void isDeliveredOnceToSeveral();
    void waitsAgainWhenAllHaveGone();
    void isDeliveredWhenTheFileWentWithTheSession();
    void registering_data();
    void registering();
    void registrationsHaveAnEnd();
    void registrationsEndWithTheSession();
    void whoHoldsTooManyGetsNoMore();
    void aFullDiskIsNoEnd();
    void whatFailsHoldsNothingUp();
    void reportsGoToAllAndWaitForOne();
    void announcementsAreToldToAllAndToNewOnes();
    void aNewStartDeliversNothingTwice();
    void anotherFileIsNoConfirmation();

private:
    void start();
    MessageId put(const QString &appId);
    QStringList pathsOf(SessionId session) const { return m_given.value(session); }
    bool isReady(MessageId id) const
    {
        const auto ready = m_inbox->ready();
        return std::find(ready.begin(), ready.end(), id) != ready.end();
    }
    /// Lets the loop do all that it has to do at once.
    void settle()
    {
        for (int i = 0; i < 200; ++i) {
            QCoreApplication::processEvents();
        }
    }

    std::unique_ptr<SpoolFolder> m_folder;
    std::unique_ptr<Spool> m_spool;
    std::unique_ptr<Inbox> m_inbox;
    std::unique_ptr<Delivery> m_delivery;
    QHash<SessionId, QStringList> m_given;
    QStringList m_told;
};

void TestDelivery::init()
{
    m_folder = std::make_unique<SpoolFolder>();
    start();
}

void TestDelivery::cleanup()
{
    m_delivery = nullptr;
    m_inbox = nullptr;
    m_spool = nullptr;
}

void TestDelivery::start()
{
    cleanup();
    m_given.clear();
    m_told.clear();
    m_spool = std::make_unique<Spool>(m_folder->path());
    QCOMPARE(m_spool->open(), QString());
    m_inbox = std::make_unique<Inbox>(*m_spool);
    m_inbox->restore();
    m_delivery = std::make_unique<Delivery>(*m_inbox, m_spool->handedFolder(), kPause);
    connect(m_delivery.get(), &Delivery::retrieved, this,
            [this](SessionId session, const QString &path) { m_given[session].append(path); });
    connect(m_delivery.get(), &Delivery::reported, this,
            [this](SessionId session, const Inbox::Report &report) {
                m_told.append(QString("%1: %2").arg(session).arg(report.messageId));
            });
    connect(m_delivery.get(), &Delivery::announced, this,
            [this](SessionId session, const QString &uri, const QString &transactionId) {
                m_told.append(QString("%1: %2 %3").arg(session).arg(uri, transactionId));
            });
    QCOMPARE(m_delivery->start(), QString());
}

MessageId TestDelivery::put(const QString &appId)
{
    const MessageId id = m_spool->nextId();
    IncomingRecord record;
    record.stage = IncomingRecord::Stage::Ready;
    record.transactionId = QString("T%1").arg(id);
    record.location = "http://a/" + record.transactionId;
    record.since = currentTime();
    record.appId = appId;
    SpoolFolder::write(m_spool->path(Spool::Box::In, id, Spool::Part::Mail),
                       "mail of " + appId.toUtf8());
    if (!m_inbox->save(id, record).isEmpty()) {
        qFatal("TestDelivery: cannot save");
    }
    m_delivery->look();
    return id;
}

void TestDelivery::goesToTheSessionsOfTheApplication()
{
    for (SessionId id : {1, 2, 3, 4}) {
        m_delivery->opened(id);
    }
    QCOMPARE(m_delivery->registerApp(1, "chess"), Delivery::Done);
    QCOMPARE(m_delivery->registerApp(2, "go"), Delivery::Done);
    QCOMPARE(m_delivery->registerApp(3, "go"), Delivery::Done);
    QCOMPARE(m_delivery->registerApp(3, "chess"), Delivery::Done);
    m_delivery->settle(4);
    put("chess");
    QTRY_COMPARE(pathsOf(1).size(), 1);
    QTRY_COMPARE(pathsOf(3).size(), 1);
    settle();
    QCOMPARE(pathsOf(2), QStringList());
    QCOMPARE(pathsOf(4), QStringList());
    QVERIFY(pathsOf(1) != pathsOf(3));
    QCOMPARE(SpoolFolder::read(pathsOf(1).first()), QByteArray("mail of chess"));
    QVERIFY(QFileInfo(pathsOf(1).first()).absolutePath() == m_spool->handedFolder());
}

void TestDelivery::goesToSessionsThatNeverRegistered()
{
    for (SessionId id : {1, 2, 3}) {
        m_delivery->opened(id);
    }
    QCOMPARE(m_delivery->registerApp(1, "chess"), Delivery::Done);
    QCOMPARE(m_delivery->registerApp(2, "chess"), Delivery::Done);
    QCOMPARE(m_delivery->deregisterApp(2, "chess"), Delivery::Done);
    m_delivery->settle(3);
    put(QString());
    QTRY_COMPARE(pathsOf(3).size(), 1);
    settle();
    QCOMPARE(pathsOf(1), QStringList());
    QCOMPARE(pathsOf(2), QStringList());
}

void TestDelivery::aFreshSessionCountsAfterAMoment()
{
    put(QString());
    m_delivery->opened(1);
    settle();
    QCOMPARE(pathsOf(1), QStringList());
    QTRY_COMPARE(pathsOf(1).size(), 1);
}

void TestDelivery::waitsUntilSomebodyComes()
{
    const MessageId id = put("chess");
    m_delivery->opened(1);
    m_delivery->settle(1);
    settle();
    QCOMPARE(pathsOf(1), QStringList());
    QVERIFY(isReady(id));
    QCOMPARE(m_delivery->registerApp(1, "chess"), Delivery::Done);
    QTRY_COMPARE(pathsOf(1).size(), 1);
}

void TestDelivery::isDeliveredWhenAFileIsRemoved()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    const MessageId id = put(QString());
    QTRY_COMPARE(pathsOf(1).size(), 1);
    QVERIFY(isReady(id));
    QVERIFY(QFile::remove(pathsOf(1).first()));
    QTRY_VERIFY(!isReady(id));
    settle();
    QCOMPARE(pathsOf(1).size(), 1);
    m_delivery->closed(1);
    m_delivery->opened(2);
    m_delivery->settle(2);
    settle();
    QCOMPARE(pathsOf(2), QStringList());
}

void TestDelivery::isDeliveredWhenAFileIsMoved()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    const MessageId id = put(QString());
    QTRY_COMPARE(pathsOf(1).size(), 1);
    QVERIFY(QFile::rename(pathsOf(1).first(), m_folder->outside("mine")));
    QTRY_VERIFY(!isReady(id));
    QCOMPARE(SpoolFolder::read(m_folder->outside("mine")), QByteArray("mail of "));
}

void TestDelivery::isDeliveredOnceToSeveral()
{
    for (SessionId id : {1, 2}) {
        m_delivery->opened(id);
        m_delivery->settle(id);
    }
    const MessageId id = put(QString());
    QTRY_COMPARE(pathsOf(1).size() + pathsOf(2).size(), 2);
    QVERIFY(QFile::remove(pathsOf(1).first()));
    QTRY_VERIFY(!isReady(id));
    QVERIFY2(QFile::exists(pathsOf(2).first()), "the file of the other is its own");
    m_delivery->opened(3);
    m_delivery->settle(3);
    settle();
    QCOMPARE(pathsOf(3), QStringList());
    m_delivery->closed(2);
    QVERIFY2(!QFile::exists(pathsOf(2).first()), "until it goes");
    settle();
    QCOMPARE(pathsOf(3), QStringList());
}

void TestDelivery::waitsAgainWhenAllHaveGone()
{
    for (SessionId id : {1, 2}) {
        m_delivery->opened(id);
        m_delivery->settle(id);
    }
    put(QString());
    QTRY_COMPARE(pathsOf(1).size() + pathsOf(2).size(), 2);
    m_delivery->closed(1);
    m_delivery->opened(3);
    m_delivery->settle(3);
    settle();
    QCOMPARE(pathsOf(3), QStringList());
    QVERIFY(!QFile::exists(pathsOf(1).first()));
    m_delivery->closed(2);
    QTRY_COMPARE(pathsOf(3).size(), 1);
    QVERIFY(pathsOf(3) != pathsOf(2));
    QCOMPARE(SpoolFolder::read(pathsOf(3).first()), QByteArray("mail of "));
}

void TestDelivery::isDeliveredWhenTheFileWentWithTheSession()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    const MessageId id = put(QString());
    QTRY_COMPARE(pathsOf(1).size(), 1);
    QVERIFY(QFile::remove(pathsOf(1).first()));
    m_delivery->closed(1); // before the loop has told of the file
    QVERIFY(!isReady(id));
    settle();
}

void TestDelivery::registering_data()
{
    QTest::addColumn<QString>("appId");
    QTest::addColumn<int>("result");
    QTest::newRow("a name") << "chess" << 0;
    QTest::newRow("the longest") << QString(256, 'x') << 0;
    QTest::newRow("empty") << "" << 15;
    QTest::newRow("a character too long") << QString(257, 'x') << 15;
}

void TestDelivery::registering()
{
    QFETCH(QString, appId);
    QFETCH(int, result);
    m_delivery->opened(1);
    m_delivery->opened(2);
    QCOMPARE(int(m_delivery->deregisterApp(1, appId)), 15); // nothing to end
    QCOMPARE(int(m_delivery->registerApp(1, appId)), result);
    QCOMPARE(int(m_delivery->registerApp(1, appId)), result); // once more is fine
    QCOMPARE(int(m_delivery->deregisterApp(2, appId)), 15); // of another session
    QCOMPARE(int(m_delivery->deregisterApp(1, appId)), result);
    QCOMPARE(int(m_delivery->deregisterApp(1, appId)), 15);
    QCOMPARE(int(m_delivery->registerApp(3, appId)), 15); // no such session
}

void TestDelivery::registrationsHaveAnEnd()
{
    m_delivery->opened(1);
    for (int i = 0; i < Delivery::kMostAppIds; ++i) {
        QCOMPARE(m_delivery->registerApp(1, QString("app %1").arg(i)), Delivery::Done);
    }
    QCOMPARE(m_delivery->registerApp(1, "one more"), Delivery::Invalid);
    QCOMPARE(m_delivery->registerApp(1, "app 0"), Delivery::Done); // is there already
    QCOMPARE(m_delivery->deregisterApp(1, "app 0"), Delivery::Done);
    QCOMPARE(m_delivery->registerApp(1, "one more"), Delivery::Done);
}

void TestDelivery::registrationsEndWithTheSession()
{
    m_delivery->opened(1);
    QCOMPARE(m_delivery->registerApp(1, "chess"), Delivery::Done);
    m_delivery->closed(1);
    const MessageId id = put("chess");
    settle();
    QVERIFY(isReady(id));
    QCOMPARE(m_given.size(), 0);
}

void TestDelivery::whoHoldsTooManyGetsNoMore()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    for (int i = 0; i < Delivery::kMostHeld + 3; ++i) {
        put(QString());
    }
    QTRY_COMPARE(pathsOf(1).size(), Delivery::kMostHeld);
    settle();
    QCOMPARE(pathsOf(1).size(), Delivery::kMostHeld);
    QVERIFY(QFile::remove(pathsOf(1).first()));
    QTRY_COMPARE(pathsOf(1).size(), Delivery::kMostHeld + 1);
    m_delivery->closed(1);
    m_delivery->opened(2);
    m_delivery->settle(2);
    QTRY_COMPARE(pathsOf(2).size(), Delivery::kMostHeld);
}

void TestDelivery::aFullDiskIsNoEnd()
{
    const MessageId id = put(QString());
    m_delivery->opened(1);
    {
        const FullDisk full;
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression("message \\d+ cannot be handed out: .*"));
        m_delivery->settle(1);
        settle();
        QCOMPARE(pathsOf(1), QStringList());
    }
    QVERIFY(isReady(id));
    QTRY_COMPARE(pathsOf(1).size(), 1); // a moment later
}

void TestDelivery::whatFailsHoldsNothingUp()
{
    const MessageId lost = put(QString());
    QVERIFY(QFile::remove(m_spool->path(Spool::Box::In, lost, Spool::Part::Mail)));
    const MessageId fine = put(QString());
    QLoggingCategory::setFilterRules("wmsg.*=false");
    m_delivery->opened(1);
    m_delivery->settle(1);
    QTRY_COMPARE(pathsOf(1).size(), 1);
    QVERIFY(QFile::remove(pathsOf(1).first()));
    QTRY_VERIFY(!isReady(fine));
    QVERIFY(isReady(lost));
    QLoggingCategory::setFilterRules("wmsg.*.info=false");
}

void TestDelivery::reportsGoToAllAndWaitForOne()
{
    const auto report = [this](const QString &messageId) {
        IncomingRecord record;
        record.kind = IncomingRecord::Kind::Report;
        record.stage = IncomingRecord::Stage::Ready;
        record.messageId = messageId;
        record.to = "+123";
        record.since = currentTime();
        record.date = record.since;
        QCOMPARE(m_inbox->save(m_spool->nextId(), record), QString());
        m_delivery->look();
    };
    report("M1");
    m_delivery->opened(1);
    settle();
    QCOMPARE(m_told, QStringList());
    m_delivery->settle(1);
    QTRY_COMPARE(m_told, QStringList{"1: M1"});
    m_delivery->opened(2);
    QCOMPARE(m_delivery->registerApp(2, "chess"), Delivery::Done);
    report("M2");
    QTRY_COMPARE(m_told, (QStringList{"1: M1", "1: M2", "2: M2"}));
    QVERIFY(m_inbox->reports().empty());
}

void TestDelivery::announcementsAreToldToAllAndToNewOnes()
{
    IncomingRecord record;
    record.stage = IncomingRecord::Stage::Deferred;
    record.transactionId = "T1";
    record.location = "http://a/1";
    record.since = currentTime();
    record.expires = record.since + 1000000;
    QCOMPARE(m_inbox->save(m_spool->nextId(), record), QString());
    m_delivery->opened(1);
    m_delivery->settle(1);
    QCOMPARE(m_told, QStringList{"1: http://a/1 T1"});
    m_delivery->opened(2);
    m_delivery->announce("http://a/2", "T2");
    QCOMPARE(m_told, (QStringList{"1: http://a/1 T1", "1: http://a/2 T2"}));
}

void TestDelivery::aNewStartDeliversNothingTwice()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    const MessageId first = put(QString());
    const MessageId second = put(QString());
    QTRY_COMPARE(pathsOf(1).size(), 2);
    const QStringList paths = pathsOf(1);
    cleanup();
    QVERIFY(QFile::remove(paths.first())); // while no daemon runs
    start();
    QVERIFY(!isReady(first));
    QVERIFY(isReady(second));
    QVERIFY2(!QFile::exists(paths.last()), "the old session can still take it");
    m_delivery->opened(1);
    m_delivery->settle(1);
    QTRY_COMPARE(pathsOf(1).size(), 1);
    settle();
    QCOMPARE(pathsOf(1).size(), 1);
}

void TestDelivery::anotherFileIsNoConfirmation()
{
    m_delivery->opened(1);
    m_delivery->settle(1);
    const MessageId id = put(QString());
    QTRY_COMPARE(pathsOf(1).size(), 1);
    const QString stray = m_spool->handedFolder() + "/stray";
    SpoolFolder::write(stray, "x");
    QVERIFY(QFile::remove(stray));
    settle();
    QVERIFY(isReady(id));
}

QTEST_GUILESS_MAIN(TestDelivery)
#include "tst_delivery.moc"
