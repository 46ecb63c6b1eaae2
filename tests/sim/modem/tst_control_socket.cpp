// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/control_client.h"
#include "sim/modem/control_socket.h"
#include "tests/support/local_peer.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace std::chrono_literals;
using namespace wmsg::sim;

namespace {

const QByteArray kDeliver = "000405812143F500006211122200000002E834";
/// A user data header that is longer than the user data.
const QByteArray kBroken = "004405812143F500046211122200000003FFAABB";

struct CommandRow {
    const char *name;
    QByteArray command;
    const char *answer;
};

const CommandRow kCommands[] = {
    {"a message", "deliver " + kDeliver, "ok"},
    {"small digits, many blanks", "  deliver   " + kDeliver.toLower() + " ", "ok"},
    {"no digits", "deliver 00x0", "error the message is not in hexadecimal digits"},
    {"half an octet", "deliver 000", "error the message is not in hexadecimal digits"},
    {"no message", "deliver", "error it does not begin with a service centre"},
    {"service centre cut off", "deliver 0591", "error it does not begin with a service centre"},
    {"too long", "deliver 00" + QByteArray(400, '0'), "error it is too long"},
    {"raw", "deliver-raw " + kBroken, "ok"},
    {"failures", "fail-next 38 2", "ok"},
    {"a failure", "fail-next 38", "ok"},
    {"no cause", "fail-next 0", "error fail-next takes a cause from 1 to 65535, and a count"},
    {"a lost answer", "lose-next-answer", "ok"},
    {"slow", "slow 100", "ok"},
    {"too slow", "slow 600001", "error slow takes milliseconds, 600000 at most"},
    {"hanging", "hang", "ok"},
    {"gone", "vanish", "ok"},
    {"back", "return", "ok"},
    {"too many words", "vanish now", "error too many words"},
    {"unknown", "explode", "error there is no such command"},
    {"nothing", "", "error there is no such command"},
};

} // namespace

class TestControlSocket : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        Modem::Settings settings;
        settings.link = m_folder->filePath("modem");
        m_modem = std::make_unique<Modem>(settings, m_log);
        m_control = std::make_unique<ControlSocket>(*m_modem);
        QCOMPARE(m_modem->start(), QString());
        QCOMPARE(m_control->listen(path()), QString());
    }

    void commands_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("answer");
        for (const CommandRow &row : kCommands) {
            QTest::newRow(row.name) << row.command << QByteArray(row.answer);
        }
    }
    void commands()
    {
        QFETCH(QByteArray, command);
        QTEST(m_control->obey(command), "answer");
    }

    void brokenMessagesAreRefused()
    {
        QVERIFY(m_control->obey("deliver " + kBroken).startsWith("error at "));
        QCOMPARE(m_control->obey("deliver 00010005812143F5000002E834").left(6),
                 QByteArray("error "));
    }

    void status()
    {
        m_control->obey("deliver " + kDeliver);
        QCOMPARE(m_control->obey("status"),
                 QByteArray("ok modem=there SM=1/20 ME=0/20 sent=0 delivered=1 waiting=0 delay=0"));
        m_control->obey("vanish");
        m_control->obey("deliver " + kDeliver);
        m_control->obey("slow 5");
        QCOMPARE(m_control->obey("status"),
                 QByteArray("ok modem=gone SM=1/20 ME=0/20 sent=0 delivered=1 waiting=1 delay=5"));
        m_control->obey("return");
        m_control->obey("hang");
        QCOMPARE(
            m_control->obey("status"),
            QByteArray("ok modem=hanging SM=2/20 ME=0/20 sent=0 delivered=2 waiting=0 delay=5"));
    }

    void overTheSocket()
    {
        ControlRequest request(
            path(), {deliverCommand(QByteArray::fromHex(kDeliver)), "slow 1", "status"}, 60s);
        QSignalSpy spy(&request, &ControlRequest::finished);
        QVERIFY(spy.wait(30000));
        const auto outcome = spy[0][0].value<ControlOutcome>();
        QCOMPARE(int(outcome.kind), int(ControlOutcome::Done));
        QVERIFY2(outcome.text.endsWith("delay=1"), qPrintable(outcome.text));
    }

    void endlessLines()
    {
        LocalPeer peer(path());
        peer.sendBytes(QByteArray(100000, 'x'));
        QCOMPARE(peer.takeAll(), QByteArray("error the line is too long\n"));
    }

    void tooManyMessages()
    {
        m_control->obey("vanish");
        for (int i = 0; i < 1000; ++i) {
            QCOMPARE(m_control->obey("deliver " + kDeliver), QByteArray("ok"));
        }
        QCOMPARE(m_control->obey("deliver " + kDeliver),
                 QByteArray("error too many messages wait for the phone"));
    }

private:
    QString path() const { return m_folder->filePath("control"); }

    std::unique_ptr<QTemporaryDir> m_folder;
    PduFiles m_log;
    std::unique_ptr<Modem> m_modem;
    std::unique_ptr<ControlSocket> m_control;
};

QTEST_GUILESS_MAIN(TestControlSocket)
#include "tst_control_socket.moc"
