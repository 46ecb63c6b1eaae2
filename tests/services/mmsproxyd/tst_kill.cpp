// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The daemon is killed right before each step that somebody could see: before each change of a file
// or a folder, and before each piece that it sends. Then it is started again, and nothing may be
// lost, and nothing may have come twice.

#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "services/common/push_client.h"
#include "tests/services/mmsproxyd/mmsc_script.h"
#include "tests/support/kill_steps.h"
#include "tests/support/program.h"
#include "tests/support/proxy_records.h"

#include <QtCore/QTemporaryDir>
#include <QtNetwork/QLocalSocket>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <memory>

using namespace std::chrono_literals;
using wmsg::service::PushOutcome;
using wmsg::service::PushRequest;

namespace {

constexpr int kPatience = 60000;
constexpr int kLeastSteps = 20;
constexpr int kStartSteps = 40; // more than the next start has

/// An MMSC that accepts everything and remembers it.
class PatientMmsc : public QObject {
public:
    PatientMmsc()
    {
        if (!m_server.listen(QHostAddress::LocalHost)) {
            qFatal("the MMSC cannot listen");
        }
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *client = m_server.nextPendingConnection()) {
                connect(client, &QTcpSocket::readyRead, this, [this, client] { read(client); });
                connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
            }
        });
    }

    QString url(const QString &path = "/") const
    {
        return QString("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }

    QList<QByteArray> sends; // send requests
    QList<QByteArray> answers; // notify-responses and acknowledges
    int fetched = 0;
    bool isCutting = false; ///< What it gives lacks its last bytes.

private:
    void read(QTcpSocket *client)
    {
        const QByteArray all = client->peek(1000000);
        const qsizetype head = all.indexOf("\r\n\r\n") + 4;
        const qsizetype mark = all.indexOf("Content-Length: ");
        const qsizetype size = mark < 0 ? 0 : all.mid(mark + 16, 10).split('\r').first().toInt();
        if (head < 4 || all.size() < head + size) {
            return;
        }
        client->read(head + size);
        const QByteArray answer = answerTo(all.startsWith("GET "), all.mid(head, size));
        client->write("HTTP/1.1 200 OK\r\nContent-Type: application/vnd.wap.mms-message\r\n"
                      "Content-Length: "
                      + QByteArray::number(answer.size()) + "\r\n\r\n" + answer);
    }
    QByteArray answerTo(bool isGet, const QByteArray &body)
    {
        if (isGet) {
            ++fetched;
            const QByteArray message = retrieveConfirmation("hello");
            return isCutting ? message.chopped(2) : message;
        }
        if (body.startsWith("\x8C\x80\x98")) {
            sends.append(body);
            return sendConfirmation(QString::fromLatin1(body.constData() + 3), 128);
        }
        answers.append(body);
        return QByteArray();
    }

    QTcpServer m_server;
};

/// A folder with sockets and a spool, and an MMSC: all that outlives a daemon.
struct World {
    QTemporaryDir folder;
    PatientMmsc mmsc;

    QString path(const QString &name) const { return folder.filePath(name); }
    QStringList filesIn(const QString &name) const
    {
        return QDir(path("spool/" + name))
            .entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
};

/// One life of the daemon.
class Life : public Program {
public:
    Life(const World &world, int killAt, const QString &retrieval = "immediate")
    {
        process().setProcessEnvironment(killedAt(killAt));
        process().setStandardErrorFile(world.path("log"), QIODevice::Append);
        start(WMSG_MMSPROXYD,
              {"--proxy-socket", world.path("proxy"), "--settings-socket", world.path("settings"),
               "--push-socket", world.path("push"), "--spool", world.path("spool"), "--mmsc",
               world.mmsc.url(), "--retry", "0.1,0.1,0.1,0.1", "--telephony", "no", "--retrieval",
               retrieval});
        m_isReady = !line().isEmpty() && !hasEnded();
    }

    [[nodiscard]] bool isReady() const { return m_isReady; }

private:
    bool m_isReady = false;
};

/// A session that does what applications do: it takes what it is given, and removes the file when
/// it has the message.
class Application : public QObject {
public:
    explicit Application(const World &world)
    {
        connect(&m_socket, &QLocalSocket::readyRead, this, [this] { read(); });
        m_socket.connectToServer(world.path("proxy"));
    }

    void sendMessage(const QString &path)
    {
        const int size = int(path.size() * 2);
        write(record::words({1, size, 7, size, 0}) + record::units(path));
    }
    /// Asks for each message that it is told of.
    void askForAnnounced(const QString &uri) { m_wanted = uri; }
    /// Asks for something that ends at once; `asked` tells when.
    void ask() { write(record::words({6, 0, 9, 12345})); }

    QList<int> ended; // the statuses of the send
    QList<QByteArray> texts; // of the messages that came
    QStringList problems;
    int asked = 0;
    int reports = 0; // that a message was delivered

private:
    void write(const QByteArray &bytes)
    {
        if (m_socket.isOpen()) { // or the daemon is dead already
            m_socket.write(bytes);
        }
    }
    void read()
    {
        m_received += m_socket.readAll();
        static const QMap<int, int> kWords = {{1, 4}, {2, 3}, {3, 1}, {4, 3},
                                              {5, 2}, {6, 2}, {7, 5}};
        while (m_received.size() >= 8) {
            const int type = number(m_received, 0);
            const int extra = number(m_received, 1);
            const qsizetype size = 8 + kWords.value(type) * 4 + extra;
            if (m_received.size() < size) {
                return;
            }
            const QByteArray event = m_received.left(size);
            take(type, number(event, 2), number(event, 5), event.last(extra));
            m_received.remove(0, size);
        }
    }
    void take(int type, int request, int status, const QByteArray &extra)
    {
        if (type == 1 && request == 7) {
            ended.append(status);
        } else if (type == 1) {
            ++asked;
        } else if (type == 3) {
            receive(QString(reinterpret_cast<const QChar *>(extra.constData()), extra.size() / 2));
        } else if (type == 6 && !m_wanted.isEmpty()) {
            const int size = int(m_wanted.size() * 2);
            write(record::words({4, size, 8, size, 0}) + record::units(m_wanted));
        } else if (type == 7) {
            ++reports;
        }
    }
    void receive(const QString &path)
    {
        WMMSMsg message;
        if (message.construct(path, true) != MMS_DECODE_OK) {
            problems.append("what was delivered cannot be read");
            return;
        }
        auto &parts = message.getMultiParts().getSubMmsMultipartList();
        texts.append(parts.isEmpty() ? QByteArray() : parts.first().getData().view().toByteArray());
        if (!QFile::remove(path)) {
            problems.append("what was delivered cannot be removed");
        }
    }
    /// The nth number; 0 where there are not so many, as in some events.
    static int number(const QByteArray &bytes, int n)
    {
        const QByteArray found = bytes.mid(4 * n, 4);
        return found.size() == 4 ? qFromUnaligned<qint32>(found.constData()) : 0;
    }

    QLocalSocket m_socket;
    QByteArray m_received;
    QString m_wanted;
};

/// A push to the daemon, unless it was taken in an earlier life; notes when it is.
class Push {
public:
    Push(const World &world, const QByteArray &pdu, bool &isTaken)
    {
        if (!isTaken) {
            m_request = std::make_unique<PushRequest>(world.path("push"), pdu, 60s);
            QObject::connect(m_request.get(), &PushRequest::finished, m_request.get(),
                             [&isTaken](const PushOutcome &outcome) {
                                 isTaken = outcome.kind == PushOutcome::Taken;
                             });
        }
    }

private:
    std::unique_ptr<PushRequest> m_request;
};

} // namespace

class TestKill : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void whileItSends();
    void whileItRetrieves();
    void whileItRetrievesWhatIsCutOff();
    void whileItRetrievesWhatIsAskedFor();
    void whileItTellsAReport();

private:
    static KilledExchange sends;
    static KilledExchange retrieves;
    static KilledExchange retrievesWhatIsCutOff;
    static KilledExchange retrievesWhatIsAskedFor;
    static KilledExchange reports;
    static bool retrieve(World &world, int killAt, int killAgainAt, const QByteArray &text);
};

/// Sends a message with a daemon that is killed; returns whether it was.
bool TestKill::sends(int killAt, int killAgainAt)
{
    World world;
    const QString source = world.path("message");
    writeMailFile(source);
    bool wasKilled = false;
    bool wasTold = false;
    {
        Life life(world, killAt);
        Application application(world);
        application.sendMessage(source);
        const bool done = QTest::qWaitFor(
            [&] { return life.hasEnded() || !application.ended.isEmpty(); }, kPatience);
        QTest::qVerify(done, "done", "the message gets nowhere", __FILE__, __LINE__);
        life.stop();
        QCoreApplication::processEvents(); // what was said before it died
        wasKilled = life.wasKilled();
        wasTold = !application.ended.isEmpty();
        QTest::qVerify(!wasTold || application.ended == QList<int>{0}, "ended", "it has failed",
                       __FILE__, __LINE__);
    }
    Life(world, killAgainAt).stop();
    {
        Life life(world, 0);
        QTest::qVerify(life.isReady(), "ready", "it does not start again", __FILE__, __LINE__);
        const bool done =
            QTest::qWaitFor([&] { return world.filesIn("out").isEmpty(); }, kPatience);
        QTest::qVerify(done, "done", "the spool does not become empty", __FILE__, __LINE__);
        QTest::qVerify(life.stop() == 0, "stop", "it does not end well", __FILE__, __LINE__);
    }
    const bool isTaken = !QFile::exists(source);
    const auto &sent = world.mmsc.sends;
    QTest::qVerify(isTaken == !sent.isEmpty(), "sent", "lost, or sent and not taken", __FILE__,
                   __LINE__);
    QTest::qVerify(isTaken || !wasTold, "told", "told and not taken", __FILE__, __LINE__);
    QTest::qVerify(sent.count(sent.value(0)) == sent.size(), "same", "sent under two transactions",
                   __FILE__, __LINE__);
    QTest::qVerify(world.filesIn("kept").isEmpty(), "kept", "kept aside", __FILE__, __LINE__);
    return wasKilled;
}

void TestKill::whileItSends()
{
    killAtEveryStep(sends, kLeastSteps, kStartSteps);
}

/// Retrieves a message with a daemon that is killed; returns whether it was.
bool TestKill::retrieves(int killAt, int killAgainAt)
{
    World world;
    return retrieve(world, killAt, killAgainAt, "hello");
}

/// The same with a message that is cut off each time: it is fetched again once, and an attempt that
/// was killed may be made again.
bool TestKill::retrievesWhatIsCutOff(int killAt, int killAgainAt)
{
    World world;
    world.mmsc.isCutting = true;
    const bool wasKilled = retrieve(world, killAt, killAgainAt, "hel");
    constexpr int kFetches = 2;
    constexpr int kKills = 2;
    const int fetched = world.mmsc.fetched;
    QTest::qVerify(fetched >= kFetches && fetched <= kFetches + kKills, "fetched",
                   QByteArray("fetched " + QByteArray::number(fetched) + " times").constData(),
                   __FILE__, __LINE__);
    return wasKilled;
}

bool TestKill::retrieve(World &world, int killAt, int killAgainAt, const QByteArray &text)
{
    const QByteArray notice = notificationOf("T1", world.mmsc.url("/message"));
    bool wasKilled = false;
    bool isPushed = false;
    QList<QByteArray> texts;
    QStringList problems;
    for (const int at : {killAt, killAgainAt, 0}) {
        Life life(world, at);
        Application application(world);
        application.ask();
        const Push push(world, notice, isPushed);
        const auto isDone = [&] {
            return isPushed && texts.size() + application.texts.size() > 0
                && !world.mmsc.answers.isEmpty() && world.filesIn("handed").isEmpty();
        };
        const bool done = QTest::qWaitFor([&] { return life.hasEnded() || isDone(); }, kPatience);
        QTest::qVerify(done, "done", "the message gets nowhere", __FILE__, __LINE__);
        if (at == 0 && done) {
            // The same once more is answered, and no message.
            const auto answers = world.mmsc.answers.size();
            const int fetched = world.mmsc.fetched;
            const auto again = std::make_unique<PushRequest>(world.path("push"), notice, 60s);
            const bool answered =
                QTest::qWaitFor([&] { return world.mmsc.answers.size() > answers; }, kPatience);
            QTest::qVerify(answered, "answered", "a repetition is not answered", __FILE__,
                           __LINE__);
            application.ask();
            (void)QTest::qWaitFor([&] { return application.asked == 2; }, kPatience);
            QTest::qVerify(world.mmsc.fetched == fetched, "fetched", "fetched again", __FILE__,
                           __LINE__);
        }
        const int exitCode = life.stop();
        QTest::qVerify(at != 0 || exitCode == 0, "stop", "it does not end well", __FILE__,
                       __LINE__);
        QCoreApplication::processEvents(); // what was said before it died
        wasKilled = wasKilled || (at == killAt && life.wasKilled());
        texts += application.texts;
        problems += application.problems;
    }
    QTest::qVerify(problems.isEmpty(), "problems", qPrintable(problems.join(", ")), __FILE__,
                   __LINE__);
    QTest::qVerify(texts == QList<QByteArray>{text}, "texts",
                   QByteArray("came " + QByteArray::number(texts.size()) + " times").constData(),
                   __FILE__, __LINE__);
    for (const QByteArray &answer : std::as_const(world.mmsc.answers)) {
        QTest::qVerify(answer.startsWith("\x8C\x83\x98T1") && answer.contains("\x95\x81"), "answer",
                       toHex(answer).constData(), __FILE__, __LINE__);
    }
    QTest::qVerify(world.filesIn("kept").isEmpty(), "kept", "kept aside", __FILE__, __LINE__);
    return wasKilled;
}

void TestKill::whileItRetrieves()
{
    killAtEveryStep(retrieves, kLeastSteps, kStartSteps);
}

void TestKill::whileItRetrievesWhatIsCutOff()
{
    killAtEveryStep(retrievesWhatIsCutOff, kLeastSteps, kStartSteps);
}

/// Retrieves what a session asks for when it is told of it. Each life of the daemon tells of it
/// anew, unless it was asked for before.
bool TestKill::retrievesWhatIsAskedFor(int killAt, int killAgainAt)
{
    World world;
    const QString uri = world.mmsc.url("/message");
    bool wasKilled = false;
    bool isPushed = false;
    QList<QByteArray> texts;
    for (const int at : {killAt, killAgainAt, 0}) {
        Life life(world, at, "deferred");
        Application application(world);
        application.askForAnnounced(uri);
        application.ask();
        const Push push(world, notificationOf("T1", uri), isPushed);
        const auto isDone = [&] {
            return isPushed && texts.size() + application.texts.size() > 0
                && world.filesIn("handed").isEmpty();
        };
        const bool done = QTest::qWaitFor([&] { return life.hasEnded() || isDone(); }, kPatience);
        QTest::qVerify(done, "done", "the message gets nowhere", __FILE__, __LINE__);
        const int exitCode = life.stop();
        QTest::qVerify(at != 0 || exitCode == 0, "stop", "it does not end well", __FILE__,
                       __LINE__);
        QCoreApplication::processEvents(); // what was said before it died
        wasKilled = wasKilled || (at == killAt && life.wasKilled());
        texts += application.texts;
        QTest::qVerify(application.problems.isEmpty(), "problems",
                       qPrintable(application.problems.join(", ")), __FILE__, __LINE__);
    }
    QTest::qVerify(texts == QList<QByteArray>{"hello"}, "texts",
                   QByteArray("came " + QByteArray::number(texts.size()) + " times").constData(),
                   __FILE__, __LINE__);
    QTest::qVerify(world.filesIn("kept").isEmpty(), "kept", "kept aside", __FILE__, __LINE__);
    return wasKilled;
}

void TestKill::whileItRetrievesWhatIsAskedFor()
{
    killAtEveryStep(retrievesWhatIsAskedFor, kLeastSteps, kStartSteps);
}

/// Tells a session of a delivery report. Nobody confirms one, so a daemon that is killed may tell
/// it again; it is never lost once the pusher has heard that it is taken.
bool TestKill::reports(int killAt, int killAgainAt)
{
    World world;
    bool wasKilled = false;
    bool isPushed = false;
    int told = 0;
    int lives = 0;
    for (const int at : {killAt, killAgainAt, 0}) {
        Life life(world, at);
        Application application(world);
        application.ask();
        const Push push(world, deliveryReport("M1"), isPushed);
        const auto isDone = [&] {
            return isPushed && told + application.reports > 0;
        };
        const bool done = QTest::qWaitFor([&] { return life.hasEnded() || isDone(); }, kPatience);
        QTest::qVerify(done, "done", "the report is lost", __FILE__, __LINE__);
        const int exitCode = life.stop();
        QTest::qVerify(at != 0 || exitCode == 0, "stop", "it does not end well", __FILE__,
                       __LINE__);
        QCoreApplication::processEvents(); // what was said before it died
        wasKilled = wasKilled || (at == killAt && life.wasKilled());
        told += application.reports;
        ++lives;
    }
    QTest::qVerify(told >= 1 && told <= lives, "told",
                   QByteArray("told " + QByteArray::number(told) + " times").constData(), __FILE__,
                   __LINE__);
    QTest::qVerify(world.filesIn("kept").isEmpty(), "kept", "kept aside", __FILE__, __LINE__);
    return wasKilled;
}

void TestKill::whileItTellsAReport()
{
    constexpr int kLeastOfAReport = 8;
    killAtEveryStep(reports, kLeastOfAReport, kStartSteps);
}

QTEST_GUILESS_MAIN(TestKill)
#include "tst_kill.moc"
