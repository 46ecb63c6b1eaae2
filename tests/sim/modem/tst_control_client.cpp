// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/control_client.h"

#include <QtCore/QTemporaryDir>
#include <QtNetwork/QLocalServer>
#include <QtTest/QtTest>

using namespace std::chrono_literals;
using namespace wmsg::sim;

namespace {

/// A simulator that gives the answers it was told, one for each line it hears, and hangs up when it
/// has none left.
class ScriptedSimulator : public QLocalServer {
public:
    ScriptedSimulator(const QString &path, const QByteArrayList &answers) : m_answers(answers)
    {
        listen(path) ? void() : qFatal("ScriptedSimulator: cannot listen");
        connect(this, &QLocalServer::newConnection, this, [this] {
            m_client = nextPendingConnection();
            connect(m_client, &QLocalSocket::readyRead, this, &ScriptedSimulator::serve);
        });
    }
    const QByteArrayList &heard() const { return m_heard; }

private:
    void serve()
    {
        while (m_client->canReadLine()) {
            m_heard.append(m_client->readLine());
            if (m_answers.isEmpty()) {
                m_client->disconnectFromServer();
                return;
            }
            m_client->write(m_answers.takeFirst());
        }
    }

    QByteArrayList m_answers;
    QByteArrayList m_heard;
    QLocalSocket *m_client = nullptr;
};

ControlOutcome outcomeOf(ControlRequest &request)
{
    QSignalSpy spy(&request, &ControlRequest::finished);
    return spy.wait(30000) ? spy[0][0].value<ControlOutcome>() : ControlOutcome();
}

} // namespace

class TestControlClient : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("control");
    }

    void commands_data()
    {
        QTest::addColumn<QByteArrayList>("answers");
        QTest::addColumn<int>("heard");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("text");

        const QString noSimulator = "what answers is no simulator";
        QTest::newRow("all obeyed")
            << QByteArrayList{"ok\n", "ok two\n"} << 2 << int(ControlOutcome::Done) << "two";
        QTest::newRow("nothing to say")
            << QByteArrayList{"ok\n", "ok\n"} << 2 << int(ControlOutcome::Done) << "";
        QTest::newRow("the first refused") << QByteArrayList{"error no such thing\n", "ok\n"} << 1
                                           << int(ControlOutcome::Refused) << "no such thing";
        QTest::newRow("the second refused") << QByteArrayList{"ok\n", "error full\n"} << 2
                                            << int(ControlOutcome::Refused) << "full";
        QTest::newRow("half an answer")
            << QByteArrayList{"ok\n", "o"} << 2 << int(ControlOutcome::NotReached)
            << "the simulator gave no answer in time";
        QTest::newRow("no second answer")
            << QByteArrayList{"ok\n"} << 2 << int(ControlOutcome::NotReached)
            << "the simulator hung up";
        QTest::newRow("foreign words")
            << QByteArrayList{"okay\n"} << 1 << int(ControlOutcome::NotReached) << noSimulator;
        QTest::newRow("no line") << QByteArrayList{QByteArray(5000, 'x')} << 1
                                 << int(ControlOutcome::NotReached) << noSimulator;
    }
    void commands()
    {
        QFETCH(QByteArrayList, answers);
        QFETCH(int, heard);
        const ScriptedSimulator simulator(m_path, answers);
        // Long where the answers are whole, so that a slow machine does not end it.
        const bool isHalf = !answers.last().endsWith('\n') && answers.last().size() < 100;
        ControlRequest request(m_path, {"first 1", "second 2"}, isHalf ? 1s : 60s);
        const ControlOutcome outcome = outcomeOf(request);
        QTEST(int(outcome.kind), "kind");
        QTEST(outcome.text, "text");
        QCOMPARE(simulator.heard(), (QByteArrayList{"first 1\n", "second 2\n"}.first(heard)));
    }

    void nobodyListens()
    {
        ControlRequest request(m_path, {"status"}, 60s);
        QCOMPARE(int(outcomeOf(request).kind), int(ControlOutcome::NotReached));
    }

    void noCommands()
    {
        const ScriptedSimulator simulator(m_path, {});
        ControlRequest request(m_path, {}, 60s);
        QCOMPARE(int(outcomeOf(request).kind), int(ControlOutcome::Done));
    }

    void delivers()
    {
        QCOMPARE(deliverCommand(QByteArray("\x00\x04\xAB", 3)), QByteArray("deliver 0004ab"));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestControlClient)
#include "tst_control_client.moc"
