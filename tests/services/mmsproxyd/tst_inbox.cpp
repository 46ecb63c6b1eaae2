// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/retry_schedule.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

using namespace wmsg::proxy;
using Stage = IncomingRecord::Stage;

class TestInbox : public QObject {
    Q_OBJECT

private slots:
    void handsOutAFile();
    void deliveredWhenTheFileIsGone();
    void takenBackItWaitsAgain();
    void takenBackTooLate();
    void severalAddressees();
    void onlyWhatIsReadyIsHandedOut();
    void namesCannotBeGuessed();

    void killedAfterTheFile();
    void killedAfterTheName();
    void killedAndConfirmedMeanwhile();
    void killedWhileTakingBack();
    void killedAfterTheDelivery();
    void filesOfNobodyGo();
    void lostMailFileIsFetchedAgain();

    void fullDiskHandsNothingOut();
    void fullDiskWhileTakingBack();
    void fullDiskAtTheDelivery();

    void oldMemoryGoes_data();
    void oldMemoryGoes();
    void memoryIsBounded();
    void waitingIsBounded();
    void recordsReadBack();
};

namespace {

/// One life of an inbox.
struct Life {
    explicit Life(const SpoolFolder &folder) : spool(folder.path()), inbox(spool)
    {
        const QString problem = spool.open();
        if (!problem.isEmpty()) {
            qFatal("%s", qPrintable(problem));
        }
        inbox.restore();
    }

    /// A message that is here.
    MessageId add(const QByteArray &mail = "mail")
    {
        const MessageId id = spool.nextId();
        SpoolFolder::write(spool.path(Spool::Box::In, id, Spool::Part::Mail), mail);
        IncomingRecord record;
        record.stage = Stage::Ready;
        record.transactionId = "t";
        record.location = "http://a/b";
        record.since = currentTime();
        const QString problem = inbox.save(id, record);
        if (!problem.isEmpty()) {
            qFatal("%s", qPrintable(problem));
        }
        return id;
    }
    QString handOut(MessageId id)
    {
        QString path;
        const QString problem = inbox.handOut(id, path);
        return problem.isEmpty() ? path : problem;
    }

    Spool spool;
    Inbox inbox;
};

using Ids = std::vector<MessageId>;

/// Writes the record of a message beside the daemon.
void writeRecord(const SpoolFolder &folder, int number, const IncomingRecord &record)
{
    QJsonObject json = record.toJson();
    json.insert("version", 1);
    SpoolFolder::write(
        folder.path("in/" + QString::number(number).rightJustified(20, '0') + ".json"),
        QJsonDocument(json).toJson(QJsonDocument::Compact));
}

} // namespace

void TestInbox::handsOutAFile()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add("the message");
    const QString path = life.handOut(id);
    QCOMPARE(QFileInfo(path).path(), life.spool.handedFolder());
    QCOMPARE(SpoolFolder::read(path), "the message");
    QCOMPARE(life.inbox.find(id)->handed, QStringList{QFileInfo(path).fileName()});
    QVERIFY(life.inbox.ready() == Ids{id}); // as long as nobody confirms
}

void TestInbox::deliveredWhenTheFileIsGone()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    QVERIFY(QFile::remove(life.handOut(id)));
    life.inbox.delivered(id);
    QVERIFY(life.inbox.ready().empty());
    QCOMPARE(life.inbox.find(id)->stage, Stage::Over);
    QCOMPARE(folder.names("in").size(), 1); // the record alone
    life.inbox.delivered(id); // once more is nothing
    life.inbox.delivered(12345);
}

void TestInbox::takenBackItWaitsAgain()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    const QString first = life.handOut(id);
    QVERIFY(life.inbox.takeBack(id, first));
    QCOMPARE(folder.names("handed"), QStringList());
    QCOMPARE(folder.names("returned"), QStringList());
    QVERIFY(life.inbox.find(id)->handed.isEmpty());
    QVERIFY(life.inbox.ready() == Ids{id});
    const QString second = life.handOut(id);
    QVERIFY(second != first);
    QCOMPARE(SpoolFolder::read(second), "mail");
}

void TestInbox::takenBackTooLate()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    const QString path = life.handOut(id);
    QVERIFY(QFile::remove(path));
    QVERIFY(!life.inbox.takeBack(id, path));
    QVERIFY(life.inbox.ready() == Ids{id}); // until that is told
}

void TestInbox::severalAddressees()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    const QString first = life.handOut(id);
    const QString second = life.handOut(id);
    const QString third = life.handOut(id);
    QVERIFY(QFile::remove(second));
    life.inbox.delivered(id);
    QCOMPARE(SpoolFolder::read(first), "mail"); // still theirs
    QCOMPARE(SpoolFolder::read(third), "mail");
    QVERIFY(life.inbox.takeBack(id, first));
    QVERIFY(QFile::remove(third));
    QVERIFY(!life.inbox.takeBack(id, third));
    QCOMPARE(folder.names("handed"), QStringList());
    QCOMPARE(folder.names("returned"), QStringList());
}

void TestInbox::onlyWhatIsReadyIsHandedOut()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    life.inbox.delivered(id);
    QString path = "before";
    QVERIFY(!life.inbox.handOut(id, path).isEmpty());
    QVERIFY(!life.inbox.handOut(12345, path).isEmpty());
    QCOMPARE(path, "before");
    QCOMPARE(folder.names("handed"), QStringList());
}

void TestInbox::namesCannotBeGuessed()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    QSet<QString> names;
    for (int n = 0; n < 20; ++n) {
        const QString name = QFileInfo(life.handOut(id)).baseName();
        QCOMPARE(name.size(), 32);
        names.insert(name.left(8));
    }
    QCOMPARE(names.size(), 20);
}

void TestInbox::killedAfterTheFile()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        Life life(folder);
        id = life.add();
        SpoolFolder::write(life.spool.handedFolder() + "/unwritten", "mail");
    }
    Life life(folder);
    QVERIFY(life.inbox.ready() == Ids{id});
    QCOMPARE(folder.names("handed"), QStringList());
}

void TestInbox::killedAfterTheName()
{
    const SpoolFolder folder;
    MessageId id = 0;
    QString path;
    {
        Life life(folder);
        id = life.add();
        path = life.handOut(id);
    }
    for (int start = 0; start < 2; ++start) {
        Life life(folder);
        QVERIFY(life.inbox.ready() == Ids{id});
        QVERIFY(!QFile::exists(path)); // its session cannot take it any more
        QVERIFY(life.inbox.find(id)->handed.isEmpty());
        QCOMPARE(SpoolFolder::read(life.handOut(id)), "mail");
    }
}

void TestInbox::killedAndConfirmedMeanwhile()
{
    const SpoolFolder folder;
    {
        Life life(folder);
        const MessageId id = life.add();
        const QString path = life.handOut(id);
        (void)life.handOut(id);
        QVERIFY(QFile::remove(path));
    }
    const Life life(folder);
    QVERIFY(life.inbox.ready().empty());
    QCOMPARE(life.inbox.all().begin()->second.stage, Stage::Over);
    QCOMPARE(folder.names("in").size(), 1);
    QCOMPARE(folder.names("handed"), QStringList());
    QCOMPARE(folder.names("returned"), QStringList());
}

void TestInbox::killedWhileTakingBack()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        Life life(folder);
        id = life.add();
        const QString path = life.handOut(id);
        QVERIFY(
            QFile::rename(path, life.spool.returnedFolder() + '/' + QFileInfo(path).fileName()));
    }
    const Life life(folder);
    QVERIFY(life.inbox.ready() == Ids{id}); // nobody confirmed it
    QCOMPARE(folder.names("returned"), QStringList());
}

void TestInbox::killedAfterTheDelivery()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        Life life(folder);
        id = life.add();
        QVERIFY(QFile::remove(life.handOut(id)));
        life.inbox.delivered(id);
        // The files of the message had not gone yet.
        SpoolFolder::write(life.spool.path(Spool::Box::In, id, Spool::Part::Mail), "mail");
    }
    const Life life(folder);
    QVERIFY(life.inbox.ready().empty());
    QVERIFY(!life.spool.has(Spool::Box::In, id, Spool::Part::Mail));
}

void TestInbox::filesOfNobodyGo()
{
    const SpoolFolder folder;
    {
        const Life life(folder);
        SpoolFolder::write(life.spool.handedFolder() + "/a", "of nobody");
        SpoolFolder::write(life.spool.handedFolder() + "/.b", "of nobody");
        SpoolFolder::write(life.spool.returnedFolder() + "/c", "of nobody");
    }
    const Life life(folder);
    QCOMPARE(folder.names("handed"), QStringList());
    QCOMPARE(folder.names("returned"), QStringList());
}

void TestInbox::lostMailFileIsFetchedAgain()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        Life life(folder);
        id = life.add();
        QVERIFY(QFile::remove(life.spool.path(Spool::Box::In, id, Spool::Part::Mail)));
    }
    const Life life(folder);
    QVERIFY(life.inbox.ready().empty());
    QCOMPARE(life.inbox.find(id)->stage, Stage::Announced);
}

void TestInbox::fullDiskHandsNothingOut()
{
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    {
        const FullDisk full;
        QString path;
        QVERIFY(life.inbox.handOut(id, path).endsWith("File too large"));
        QVERIFY(path.isNull());
    }
    QCOMPARE(folder.names("handed"), QStringList());
    QVERIFY(life.inbox.find(id)->handed.isEmpty());
    QCOMPARE(SpoolFolder::read(life.handOut(id)), "mail");
}

void TestInbox::fullDiskWhileTakingBack()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        Life life(folder);
        id = life.add();
        const QString path = life.handOut(id);
        const FullDisk full;
        QVERIFY(life.inbox.takeBack(id, path));
        QVERIFY(!QFile::exists(path));
        QVERIFY(life.inbox.ready() == Ids{id});
    }
    {
        const FullDisk full; // still
        const Life life(folder);
        QVERIFY(life.inbox.ready() == Ids{id});
    }
    Life life(folder);
    QVERIFY(life.inbox.ready() == Ids{id}); // and not taken for delivered
    QCOMPARE(folder.names("returned"), QStringList());
    QCOMPARE(SpoolFolder::read(life.handOut(id)), "mail");
}

void TestInbox::fullDiskAtTheDelivery()
{
    const SpoolFolder folder;
    {
        Life life(folder);
        const MessageId id = life.add();
        const QString path = life.handOut(id);
        const QString other = life.handOut(id);
        QVERIFY(QFile::remove(path));
        const FullDisk full;
        life.inbox.delivered(id);
        QVERIFY(life.inbox.ready().empty());
        QVERIFY(life.inbox.takeBack(id, other));
    }
    const Life life(folder);
    QVERIFY(life.inbox.ready().empty());
    QCOMPARE(life.inbox.all().begin()->second.stage, Stage::Over);
}

void TestInbox::oldMemoryGoes_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<int>("sinceDays"); // ago
    QTest::addColumn<int>("expiresDays"); // from now; 0: never heard of
    QTest::addColumn<bool>("stays");

    const int over = int(Stage::Over);
    const int deferred = int(Stage::Deferred);
    QTest::newRow("over, young") << over << 6 << 0 << true;
    QTest::newRow("over, old") << over << 8 << 0 << false;
    QTest::newRow("over, old and not expired") << over << 30 << 2 << true;
    QTest::newRow("over, expired a while ago") << over << 30 << -6 << true;
    QTest::newRow("over, expired long ago") << over << 30 << -8 << false;
    QTest::newRow("ready, old") << int(Stage::Ready) << 400 << -300 << true;
    QTest::newRow("announced, old") << int(Stage::Announced) << 400 << -300 << true;
    QTest::newRow("deferred, old") << deferred << 400 << 0 << true;
    QTest::newRow("deferred, expired long ago") << deferred << 30 << -8 << false;
    QTest::newRow("over, of the future") << over << -400 << 0 << true;
}

void TestInbox::oldMemoryGoes()
{
    QFETCH(int, stage);
    QFETCH(int, sinceDays);
    QFETCH(int, expiresDays);
    QFETCH(bool, stays);

    constexpr qint64 kDay = 24 * 3600 * 1000LL;
    const SpoolFolder folder;
    Life life(folder);
    const MessageId id = life.add();
    IncomingRecord record = *life.inbox.find(id);
    record.stage = static_cast<Stage>(stage);
    record.since = currentTime() - sinceDays * kDay;
    record.expires = expiresDays == 0 ? 0 : currentTime() + expiresDays * kDay;
    QCOMPARE(life.inbox.save(id, record), QString());
    life.inbox.forgetOld(currentTime());
    QCOMPARE(life.inbox.find(id) != nullptr, stays);
    QCOMPARE(folder.files("in", ".json").size(), stays ? 1 : 0);
}

void TestInbox::memoryIsBounded()
{
    const SpoolFolder folder;
    {
        const Life life(folder);
    }
    IncomingRecord record;
    record.stage = Stage::Over;
    record.since = currentTime();
    const int count = Inbox::kMostRemembered + 3;
    for (int n = 1; n <= count; ++n) {
        writeRecord(folder, n, record);
    }
    const Life life(folder);
    QCOMPARE(int(life.inbox.all().size()), Inbox::kMostRemembered);
    QCOMPARE(life.inbox.all().begin()->first, MessageId(4)); // the oldest went
    QCOMPARE(folder.names("in").size(), Inbox::kMostRemembered);
}

void TestInbox::waitingIsBounded()
{
    const SpoolFolder folder;
    {
        const Life life(folder);
    }
    IncomingRecord record;
    record.stage = Stage::Over;
    record.since = currentTime();
    writeRecord(folder, 1, record);
    record.stage = Stage::Deferred;
    record.location = "http://a/b";
    for (int n = 2; n <= Inbox::kMostWaiting; ++n) {
        writeRecord(folder, n, record);
    }
    Life life(folder);
    QVERIFY(!life.inbox.isFull());
    (void)life.add();
    QVERIFY(life.inbox.isFull());
}

void TestInbox::recordsReadBack()
{
    IncomingRecord record;
    record.kind = IncomingRecord::Kind::Report;
    record.stage = Stage::Asked;
    record.transactionId = "";
    record.location = QString::fromUtf8("http://a/\xC3\xBC?\"x\"\\\n");
    record.expires = 1;
    record.since = 2;
    record.response = 255;
    record.attempts = 3;
    record.nextTry = 4;
    record.answers = {{Answer::Kind::Acknowledge, "a", 0},
                      {Answer::Kind::NotifyResponse, "b", 129}};
    record.answerAttempts = 5;
    record.nextAnswer = 6;
    record.appId = "app";
    record.handed = {"one", "two"};
    record.messageId = "m";
    record.to = "+49";
    record.date = 7;
    const QByteArray written = QJsonDocument(record.toJson()).toJson();
    QString reason;
    const auto read = IncomingRecord::fromJson(QJsonDocument::fromJson(written).object(), reason);
    QVERIFY2(read, qPrintable(reason));
    QCOMPARE(QJsonDocument(read->toJson()).toJson(), written);
    QVERIFY(read->answers == record.answers);
    QVERIFY(!read->transactionId.isNull()); // and a null one stays null
    record.transactionId = QString();
    QVERIFY(IncomingRecord::fromJson(record.toJson(), reason)->transactionId.isNull());
}

QTEST_GUILESS_MAIN(TestInbox)
#include "tst_inbox.moc"
