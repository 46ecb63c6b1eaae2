// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/simulator.h"
#include "tests/sim/mmsc/http_call.h"
#include "tests/sim/mmsc/messages.h"
#include "tests/sim/mmsc/phone.h"

#include <memory>

using namespace wmsg::sim;

namespace {

// The simulator with two phones: Ann has +431, and Bob all other numbers.
class Desk {
public:
    explicit Desk(Options options = {}, bool bobIsThere = true) : bob(bobIsThere)
    {
        options.subscribers = {"+431=" + ann.path().toStdString(),
                               "ann@x.org=" + ann.path().toStdString()};
        options.defaultPush = bob.path().toStdString();
        options.pushRetry = 0.01;
        options.pduLog = folder.filePath("pdus").toStdString();
        simulator = std::make_unique<Simulator>(options);
        QCOMPARE(simulator->readFaults(), QString());
        QCOMPARE(simulator->start(), QString());
        port = quint16(simulator->url().section(':', 2).chopped(1).toInt());
    }

    /// Posts, and returns the body of the answer.
    QByteArray post(const QByteArray &pdu, const QByteArray &headers = {}) const
    {
        HttpCall call(port);
        call.post(pdu, headers).wait();
        return call.status() == 200 ? call.body() : QByteArray();
    }
    /// Fetches what a notification tells of.
    QByteArray fetch(const QByteArray &notification) const
    {
        const QString location = decoded(notification).header().contentLocation;
        if (!location.startsWith(simulator->url())) {
            return {};
        }
        HttpCall call(port);
        call.get('/' + location.mid(simulator->url().size()).toLatin1()).wait();
        return call.status() == 200 && call.isWhole() ? call.body() : QByteArray();
    }
    QStringList logged() const
    {
        return QDir(folder.filePath("pdus")).entryList(QDir::Files, QDir::Name);
    }

    Phone ann;
    Phone bob;
    QTemporaryDir folder;
    std::unique_ptr<Simulator> simulator;
    quint16 port = 0;
};

Options withFault(const char *line)
{
    Options options;
    options.faults = {line};
    return options;
}

} // namespace

class TestSimulator : public QObject {
    Q_OBJECT

private slots:
    void fromOneToTheOther();
    void routes_data();
    void routes();
    void aPhoneThatComesLater();
    void aPhoneThatRefuses();
    void notificationsLostAndDoubled();
    void repeatedUntilAnswered();
    void anAnswerThatIsLost();
    void aRetrievalThatIsCut();
    void largeMessage();
    void manyMessages();
    void theLogGoesOn();
    void badFolder();
    void badFaults();
};

void TestSimulator::fromOneToTheOther()
{
    const Desk desk;
    const QByteArray request = sendRequest(kInsertFrom + to("+432/TYPE=PLMN") + kWantReport);
    const QByteArray conf = desk.post(request, "x-msisdn: +431\r\n");
    QCOMPARE(int(decoded(conf).header().responseStatus), 128);
    QTRY_COMPARE(desk.bob.pushed.size(), 1);
    const QByteArray message = desk.fetch(desk.bob.pushed[0]);
    QCOMPARE(toHex(message.sliced(decoded(message).contentStart())), toHex(content()));
    QCOMPARE(decoded(message).header().from.getEntryVal(), QString("+431"));
    HttpCall answer(desk.port);
    answer.post(notifyResponse(decoded(desk.bob.pushed[0]).header().transactionId, 129)).wait();
    QCOMPARE(answer.status(), 200);
    QCOMPARE(answer.body(), QByteArray());
    QTRY_COMPARE(desk.ann.pushed.size(), 1);
    QCOMPARE(decoded(desk.ann.pushed[0]).header().msgID, decoded(conf).header().msgID);
    const QStringList names = {"0001-in-send-req.pdu",          "0002-out-send-conf.pdu",
                               "0003-out-notification-ind.pdu", "0004-out-retrieve-conf.pdu",
                               "0005-in-notifyresp-ind.pdu",    "0006-out-delivery-ind.pdu"};
    QTRY_COMPARE(desk.logged(), names);
    QFile log(desk.folder.filePath("pdus/0004-out-retrieve-conf.pdu"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(toHex(log.readAll()), toHex(message));
}

void TestSimulator::routes_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("isAnn");

    QTest::newRow("as given") << QByteArray("+431") << true;
    QTest::newRow("with the type") << QByteArray("+431/TYPE=PLMN") << true;
    QTest::newRow("with zeros") << QByteArray("00431/TYPE=PLMN") << true;
    QTest::newRow("with blanks") << QByteArray("+43 1/TYPE=PLMN") << true;
    QTest::newRow("mail") << QByteArray("ann@x.org") << true;
    QTest::newRow("mail in capitals") << QByteArray("Ann@X.org") << true;
    QTest::newRow("mail with a name") << QByteArray("Ann <ann@x.org>") << true;
    QTest::newRow("longer number") << QByteArray("+4312/TYPE=PLMN") << false;
    QTest::newRow("other mail") << QByteArray("bob@x.org") << false;
}

void TestSimulator::routes()
{
    QFETCH(QByteArray, address);
    QFETCH(bool, isAnn);
    const Desk desk;
    desk.post(sendRequest(to(address)));
    QTRY_COMPARE(desk.ann.pushed.size() + desk.bob.pushed.size(), 1);
    QCOMPARE(desk.ann.pushed.size() == 1, isAnn);
}

void TestSimulator::aPhoneThatComesLater()
{
    Desk desk({}, false);
    desk.post(sendRequest(to("+432")));
    QTest::qWait(30);
    desk.bob.switchOn();
    QTRY_COMPARE(desk.bob.pushed.size(), 1);
    QVERIFY(!desk.fetch(desk.bob.pushed[0]).isEmpty());
}

void TestSimulator::aPhoneThatRefuses()
{
    Options options;
    options.notifyAgain = 0.01;
    Desk desk(options);
    desk.bob.refusal = "not now";
    desk.post(sendRequest(to("+432")));
    QTRY_VERIFY(desk.bob.pushed.size() >= 2);
}

void TestSimulator::notificationsLostAndDoubled()
{
    Options options;
    options.faults = {"notify 1 lost", "notify 2 doubled"};
    options.notifyAgain = 0.05;
    Desk desk(options);
    desk.post(sendRequest(to("+432")));
    QTRY_VERIFY(desk.bob.pushed.size() >= 2);
    QCOMPARE(decoded(desk.bob.pushed[0]).header().transactionId,
             decoded(desk.bob.pushed[1]).header().transactionId);
}

void TestSimulator::repeatedUntilAnswered()
{
    Options options;
    options.notifyAgain = 0.01;
    Desk desk(options);
    desk.post(sendRequest(to("+432")));
    QTRY_VERIFY(desk.bob.pushed.size() >= 3);
    desk.post(notifyResponse(decoded(desk.bob.pushed[0]).header().transactionId, 131));
    QTest::qWait(20); // what is under way arrives
    const auto count = desk.bob.pushed.size();
    QTest::qWait(50);
    QCOMPARE(desk.bob.pushed.size(), count);
}

void TestSimulator::anAnswerThatIsLost()
{
    const Desk desk(withFault("send 1 cut-after=0"));
    const QByteArray request = sendRequest(to("+432"));
    QCOMPARE(desk.post(request), QByteArray());
    QTRY_COMPARE(desk.bob.pushed.size(), 1); // it was accepted all the same
    const QByteArray conf = desk.post(request);
    QCOMPARE(decoded(conf).header().msgID, decoded(desk.fetch(desk.bob.pushed[0])).header().msgID);
    QTest::qWait(20);
    QCOMPARE(desk.bob.pushed.size(), 1);
}

void TestSimulator::aRetrievalThatIsCut()
{
    const Desk desk(withFault("retrieve 1 cut-after=100"));
    desk.post(sendRequest(to("+432")));
    QTRY_COMPARE(desk.bob.pushed.size(), 1);
    QCOMPARE(desk.fetch(desk.bob.pushed[0]), QByteArray());
    QVERIFY(!desk.fetch(desk.bob.pushed[0]).isEmpty());
}

void TestSimulator::largeMessage()
{
    const Desk desk;
    const QByteArray body(10 << 20, 'x');
    desk.post(sendRequest(to("+432")) + body);
    QTRY_COMPARE(desk.bob.pushed.size(), 1);
    const QByteArray message = desk.fetch(desk.bob.pushed[0]);
    QVERIFY(message.endsWith(body));
    QCOMPARE(decoded(desk.bob.pushed[0]).header().msgSize, qint32(message.size()));
}

void TestSimulator::manyMessages()
{
    const Desk desk;
    for (int n = 0; n < 100; ++n) {
        desk.post(sendRequest(to("+432"), QByteArray::number(n)));
    }
    QTRY_COMPARE(desk.bob.pushed.size(), 100);
    QSet<QString> transactions;
    for (const QByteArray &pdu : desk.bob.pushed) {
        transactions.insert(decoded(pdu).header().transactionId);
    }
    QCOMPARE(transactions.size(), 100);
}

void TestSimulator::theLogGoesOn()
{
    const QTemporaryDir folder;
    for (int run = 0; run < 2; ++run) {
        PduLog log;
        QCOMPARE(log.open(folder.path()), QString());
        log.in("\x8C\x83");
        log.out("garbage");
    }
    const QStringList names = {"0001-in-notifyresp-ind.pdu", "0002-out-unknown.pdu",
                               "0003-in-notifyresp-ind.pdu", "0004-out-unknown.pdu"};
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files, QDir::Name), names);
}

void TestSimulator::badFolder()
{
    Options options;
    options.pduLog = "/dev/null/here";
    Simulator simulator(options);
    QCOMPARE(simulator.start(), QString("/dev/null/here: the folder cannot be made"));
}

void TestSimulator::badFaults()
{
    Simulator line(withFault("send x garbage"));
    QCOMPARE(line.readFaults(),
             QString("--fault:1: \"x\" is not which one: N, N-M, N- or *, counted from 1"));
    Options options;
    options.faultFile = "/nowhere/plan";
    Simulator file(options);
    QCOMPARE(file.readFaults(), QString("/nowhere/plan: No such file or directory"));
}

QTEST_GUILESS_MAIN(TestSimulator)
#include "tst_simulator.moc"
