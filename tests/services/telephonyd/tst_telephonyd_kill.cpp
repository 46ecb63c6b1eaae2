// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The daemon is killed right before each step that somebody could see: before each change of a file
// or a folder, and before each piece that it sends. Then it is started again, and nothing may be
// lost, and nothing may have come twice.

#include "platform/telephony/telephony_records_p.h"
#include "tests/services/telephonyd/fake_modem.h"
#include "tests/support/kill_steps.h"
#include "tests/support/program.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QLocalSocket>

#include <map>
#include <set>

using namespace wmsg::telephony;

namespace {

constexpr int kPatience = 60000;
constexpr int kLeastSteps = 15;
constexpr int kStartSteps = 25; // more than the next start has

/// What outlives a daemon: a folder, and a client that keeps what has no result.
class Application : public QObject {
public:
    QTemporaryDir folder;
    QList<QByteArray> results;
    std::map<quint64, QByteArray> messages; // whatever came under an id

    Application()
    {
        connect(&m_socket, &QLocalSocket::readyRead, this, [this] { read(); });
    }
    QString path(const QString &name) const { return folder.filePath(name); }

    void connectToDaemon()
    {
        m_socket.abort();
        m_reader = FrameReader();
        m_socket.connectToServer(path("socket"));
        Hello hello;
        hello.clientId = QByteArray(kClientIdSize, 'a');
        hello.events = 2;
        write(hello);
        if (results.isEmpty()) {
            Send send;
            send.reference = 1;
            send.coding = Coding::Binary;
            send.destination = "+43664";
            send.body = "hello";
            write(send);
        }
    }
    void leave() { m_socket.abort(); }

    bool hasAll() const { return !results.isEmpty() && !messages.empty(); }
    QStringList filesOf(const QString &box) const { return filesIn(path("spool/" + box)); }
    /// Whether a message waits in the spool that has no result written down.
    bool isUnsent() const
    {
        const QStringList files = filesOf("out").filter(QRegularExpression("json$"));
        return !files.isEmpty() && !contentOf("out/" + files[0]).contains("status");
    }
    /// How many messages have come back, to here or to the spool.
    size_t cameBack() const
    {
        std::set<quint64> ids;
        for (const auto &[id, body] : messages) {
            ids.insert(id);
        }
        for (const QString &file : filesOf("in").filter(QRegularExpression("json$"))) {
            ids.insert(contentOf("in/" + file)["id"].toString().toULongLong(nullptr, 16));
        }
        return ids.size();
    }

private:
    template <typename Record> void write(const Record &record)
    {
        if (m_socket.isOpen()) { // or the daemon is dead already
            m_socket.write(toFrame(record));
        }
    }
    void read()
    {
        m_reader.append(m_socket.readAll());
        Frame frame;
        while (m_reader.next(frame)) {
            if (frame.type == RecordType::Result) {
                Result result;
                (void)fromPayload(frame.payload, result);
                if (results.isEmpty()) {
                    results.append(QByteArray::number(result.status));
                }
                ResultTaken taken;
                taken.reference = result.reference;
                write(taken);
            } else if (frame.type == RecordType::Message) {
                Message message;
                (void)fromPayload(frame.payload, message);
                messages[message.id] = message.body;
                MessageAnswer answer;
                answer.id = message.id;
                answer.isTaken = true;
                write(answer);
            }
        }
    }

    QJsonObject contentOf(const QString &file) const
    {
        QFile record(path("spool/" + file));
        return record.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(record.readAll()).object()
                                                : QJsonObject();
    }

    QLocalSocket m_socket;
    FrameReader m_reader;
};

} // namespace

class TestTelephonydKill : public QObject {
    Q_OBJECT

private slots:
    void whileItSendsAndDelivers() { killAtEveryStep(sendsAndDelivers, kLeastSteps, kStartSteps); }
    void whilePartsArrive() { killAtEveryStep(receivesParts, kLeastSteps, kStartSteps); }

private:
    static KilledExchange sendsAndDelivers;
    static KilledExchange receivesParts;
};

/// Sends a message that comes back, with a daemon that is killed; returns whether it was.
bool TestTelephonydKill::sendsAndDelivers(int killAt, int killAgainAt)
{
    Application application;
    bool wasKilled = false;
    size_t windows = 0;
    for (const int at : {killAt, killAgainAt, 0}) {
        const size_t cameBefore = application.cameBack();
        Program daemon;
        daemon.process().setProcessEnvironment(killedAt(at));
        daemon.process().setStandardErrorFile(application.path("log"), QIODevice::Append);
        daemon.start(
            WMSG_TELEPHONYD,
            {"--socket", application.path("socket"), "--spool", application.path("spool")});
        (void)daemon.line();
        application.connectToDaemon();
        const bool done = QTest::qWaitFor(
            [&] {
                return daemon.hasEnded()
                    || (application.hasAll() && application.filesOf("out").isEmpty()
                        && application.filesOf("in").isEmpty());
            },
            kPatience);
        QTest::qVerify(done, "done", "it gets nowhere", __FILE__, __LINE__);
        const int exitCode = daemon.stop();
        QCoreApplication::processEvents(); // what was said before it died
        application.leave();
        wasKilled = wasKilled || (at == killAt && daemon.wasKilled());
        // It came back, and its result is not written down: it is sent again.
        windows += application.isUnsent() && application.cameBack() > cameBefore ? 1 : 0;
        QTest::qVerify(at != 0 || exitCode == 0, "end", "it does not end well", __FILE__, __LINE__);
    }
    QTest::qVerify(application.results == QList<QByteArray>{"0"}, "results", "no result", __FILE__,
                   __LINE__);
    QTest::qVerify(application.messages.size() == 1 + windows, "messages",
                   qPrintable(QString("came %1 times, with %2 windows")
                                  .arg(application.messages.size())
                                  .arg(windows)),
                   __FILE__, __LINE__);
    for (const auto &[id, body] : application.messages) {
        QTest::qVerify(body == "hello", "body", body.constData(), __FILE__, __LINE__);
    }
    QTest::qVerify(application.filesOf("kept").isEmpty(), "kept", "kept aside", __FILE__, __LINE__);
    return wasKilled;
}

/// Receives a message in three parts and one in one, and is killed; returns whether it was.
bool TestTelephonydKill::receivesParts(int killAt, int killAgainAt)
{
    QTemporaryDir folder;
    const QDir modem(folder.filePath("modem"));
    (void)QDir().mkdir(modem.path());
    const auto store = [&modem](const QString &place, const QByteArray &bytes) {
        QFile file(modem.filePath(place));
        (void)file.open(QIODevice::WriteOnly);
        file.write(bytes);
    };
    store("1",
          QByteArray("6\x05\x00\x03\x07\x03\x02"
                     "b",
                     8));
    store("2", "0single");
    store("3",
          QByteArray("6\x05\x00\x03\x07\x03\x03"
                     "c",
                     8));
    store("4",
          QByteArray("6\x05\x00\x03\x07\x03\x01"
                     "a",
                     8));
    bool wasKilled = false;
    QMap<QByteArray, QByteArray> came; // id -> text
    for (const int at : {killAt, killAgainAt, 0, 0}) {
        Program feeder;
        feeder.process().setProcessEnvironment(killedAt(at));
        feeder.start(WMSG_INBOX_FEEDER, {folder.filePath("spool"), modem.path()});
        const int exitCode = feeder.end();
        wasKilled = wasKilled || (at == killAt && feeder.wasKilled());
        QTest::qVerify(at != 0 || exitCode == 0, "end", qPrintable(feeder.err()), __FILE__,
                       __LINE__);
        const auto lines = feeder.process().readAllStandardOutput().split('\n');
        for (const QByteArray &line : lines) {
            if (!line.isEmpty()) {
                came[line.left(16)] = line.mid(17);
            }
        }
    }
    QList<QByteArray> texts = came.values();
    std::sort(texts.begin(), texts.end());
    QTest::qVerify(texts == QList<QByteArray>{"abc", "single"}, "texts",
                   texts.join(", ").constData(), __FILE__, __LINE__);
    QTest::qVerify(modem.isEmpty(), "modem", "the modem still has some", __FILE__, __LINE__);
    QTest::qVerify(filesIn(folder.filePath("spool/kept")).isEmpty(), "kept", "kept aside", __FILE__,
                   __LINE__);
    return wasKilled;
}

QTEST_GUILESS_MAIN(TestTelephonydKill)
#include "tst_telephonyd_kill.moc"
