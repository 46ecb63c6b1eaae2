// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/local_address.h"
#include "tests/support/other_user.h"
#include "tests/support/telephony_peer.h"
#include "tests/tools/wmsg/program.h"
#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/doctor_view.h"

#include <platform/engine/mms_eng_controller.h>

#include <QtCore/QDirIterator>
#include <QtNetwork/QTcpServer>

#include <atomic>
#include <optional>
#include <vector>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/stat.h>

using namespace wmsg::cli;
using namespace std::chrono_literals;

namespace {

constexpr uid_t kNobody = 65534;

const QByteArray kSettings = fromHex("0004B000 00000012") + [] {
    QByteArray text;
    for (const char c : QByteArray("http://m/")) {
        text += '\0';
        text += c;
    }
    return text;
}();

const char *nameOf(Verdict verdict)
{
    return verdict == Verdict::Ok ? "ok" : verdict == Verdict::Note ? "note" : "problem";
}

/// A finding in a line: "problem: what".
QString line(const Diagnosis &finding)
{
    return QString(nameOf(finding.verdict)) + ": " + finding.what;
}

/// A socket at a path, on which somebody listens; nobody takes the callers.
class Listener {
public:
    explicit Listener(const QString &path, int backlog = 50) : m_path(path)
    {
        const wmsg::service::LocalAddress address(path);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ::unlink(address.path());
        if (::bind(m_socket, address.get(), address.size()) != 0
            || ::chmod(address.path(), 0600) != 0 || ::listen(m_socket, backlog) != 0) {
            qFatal("Listener: cannot listen on %s", address.path());
        }
    }
    ~Listener()
    {
        stop();
        QFile::remove(m_path);
    }
    Q_DISABLE_COPY_MOVE(Listener)

    /// Listens no longer; the file stays.
    void stop()
    {
        if (m_socket >= 0) {
            ::close(std::exchange(m_socket, -1));
        }
    }
    int descriptor() const { return m_socket; }

private:
    QString m_path;
    int m_socket = -1;
};

/// As many callers as a listener takes, none of whom it has let in.
class Callers {
public:
    explicit Callers(const QString &path)
    {
        const wmsg::service::LocalAddress address(path);
        int result = 0;
        while (result == 0) {
            m_callers.push_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            result = ::connect(m_callers.back(), address.get(), address.size());
        }
    }
    ~Callers()
    {
        for (const int caller : m_callers) {
            ::close(caller);
        }
    }
    Q_DISABLE_COPY_MOVE(Callers)

private:
    std::vector<int> m_callers;
};

/// A server that says the same to all its callers, and hangs up.
class Teller {
public:
    Teller(const QString &path, const QByteArray &bytes)
        : m_listener(path), m_bytes(bytes), m_thread([this] { run(); })
    {
    }
    ~Teller()
    {
        m_isOver = true;
        m_thread.join();
    }

private:
    void run()
    {
        while (!m_isOver) {
            pollfd ready = {m_listener.descriptor(), POLLIN, 0};
            if (::poll(&ready, 1, 20) == 1) {
                const int client = ::accept4(ready.fd, nullptr, nullptr, SOCK_CLOEXEC);
                (void)::send(client, m_bytes.constData(), size_t(m_bytes.size()), MSG_NOSIGNAL);
                ::close(client);
            }
        }
    }

    Listener m_listener;
    QByteArray m_bytes;
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

/// All names below a folder, with sizes and times of change.
QStringList contentOf(const QString &folder)
{
    QStringList names;
    QDirIterator files(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo file(files.next());
        names += QString("%1 %2 %3")
                     .arg(file.filePath())
                     .arg(file.size())
                     .arg(file.lastModified().toMSecsSinceEpoch());
    }
    names.sort();
    return names;
}

} // namespace

/// Each check of `wmsg doctor` in each of its verdicts, and what the program makes of them.
class TestDoctor : public QObject {
    Q_OBJECT

private slots:
    void socketMissing();
    void socketThatIsNone();
    void socketListens();
    void socketLeftBehind();
    void socketHangs();
    void socketOpenToOthers();
    void socketBehindLink();
    void socketOfOtherUser();
    void socketPath();
    void settings_data();
    void settings();
    void settingsLate();
    void settingsNobody();
    void urls_data();
    void urls();
    void mmscReached();
    void mmscRefuses();
    void mmscSwallows();
    void mmscUnknown();
    void modem_data();
    void modem();
    void modemRefused();
    void storeToCome();
    void storeWhole();
    void storeDamaged();
    void spool();
    void spoolOfOtherUser();
    void waiting();
    void kept();
    void clock();
    void clockGoneBack();
    void zones_data();
    void zones();
    void view();
    void json();
    void usage_data();
    void usage();
    void sickSystem();
    void healthySystem();
    void foldersThatCannotBeWritten();

private:
    /// Of a socket in the folder of the test.
    static Diagnosis socketAt(const QString &path, bool isNeeded = true)
    {
        return checkSocket({"proxy socket", path, "wmsg-mmsproxyd", "nothing goes", isNeeded});
    }
    SpoolPlace spoolAt(const QString &name) const
    {
        return {"spool", m_folder->filePath(name), "wmsg-mmsproxyd", "--spool"};
    }
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    std::optional<QTemporaryDir> m_folder;

private slots:
    void init() { m_folder.emplace(); }
    void cleanup()
    {
        m_folder.reset();
        qunsetenv("UVO_EXTRA_SYS_DATA_PATH");
    }
};

void TestDoctor::socketMissing()
{
    const Diagnosis needed = socketAt(path("s"));
    QCOMPARE(line(needed),
             "problem: " + path("s")
                 + " is not there: wmsg-mmsproxyd does not run, or has another socket; nothing "
                   "goes");
    QCOMPARE(needed.remedy,
             QString("systemctl --user start wmsg-mmsproxyd (which needs "
                     "~/.config/wmsg/mmsproxyd.ini), or run wmsg-mmsproxyd by hand"));
    QCOMPARE(nameOf(socketAt(path("s"), false).verdict), "note");
}

void TestDoctor::socketThatIsNone()
{
    write("s", "");
    QCOMPARE(line(socketAt(path("s"))),
             "problem: " + path("s") + " is no socket, and keeps wmsg-mmsproxyd from making one");
}

void TestDoctor::socketListens()
{
    const Listener listener(path("s"));
    QCOMPARE(line(socketAt(path("s"))),
             QString("ok: %1: process %2 listens").arg(path("s")).arg(::getpid()));
}

void TestDoctor::socketLeftBehind()
{
    Listener listener(path("s"));
    listener.stop();
    QCOMPARE(line(socketAt(path("s"))),
             "problem: nobody listens at " + path("s")
                 + ": the file is left of a wmsg-mmsproxyd that was ended hard");
}

void TestDoctor::socketHangs()
{
    const Listener listener(path("s"), 0);
    const Callers callers(path("s"));
    QCOMPARE(line(socketAt(path("s"))),
             "problem: " + path("s") + " has more callers than it takes: wmsg-mmsproxyd hangs");
}

void TestDoctor::socketOpenToOthers()
{
    const Listener listener(path("s"));
    QCOMPARE(::chmod(qPrintable(path("s")), 0666), 0);
    const Diagnosis finding = socketAt(path("s"));
    QCOMPARE(line(finding),
             "note: " + path("s")
                 + " is open to other users (mode 666); wmsg-mmsproxyd turns them away all the "
                   "same");
    QCOMPARE(finding.remedy, QString("start it with --socket-mode 600"));
}

void TestDoctor::socketBehindLink()
{
    const Listener listener(path("s"));
    QVERIFY(QFile::link(path("s"), path("link")));
    QVERIFY(QFile::link(path("nothing"), path("loose")));
    QCOMPARE(line(socketAt(path("link"))),
             "note: " + path("link") + " is a link, and somebody listens where it leads");
    QCOMPARE(line(socketAt(path("loose"))),
             "problem: " + path("loose") + " is a link that leads nowhere");
    if (OtherUser::isPossible()) {
        QCOMPARE(::lchown(qPrintable(path("link")), kNobody, kNobody), 0);
        const QString what = line(socketAt(path("link")));
        QVERIFY2(what.startsWith("problem: " + path("link") + " is a link that ")
                     && what.contains("user 65534"),
                 qPrintable(what));
    }
}

void TestDoctor::socketOfOtherUser()
{
    if (!OtherUser::isPossible()) {
        QSKIP("only root can make a file of another user");
    }
    const Listener listener(path("s"));
    QCOMPARE(::chown(qPrintable(path("s")), kNobody, kNobody), 0);
    const QString what = line(socketAt(path("s")));
    QVERIFY2(what.startsWith("problem: " + path("s") + " belongs to ")
                 && what.contains("daemons let in programs of their own user alone"),
             qPrintable(what));

    // The file is this user's, the process behind it is not.
    const Listener open(path("t"));
    const pid_t process = ::fork();
    if (process == 0) {
        // The one who calls listen() last is the peer that callers see.
        const bool isOther =
            ::setresuid(kNobody, kNobody, kNobody) == 0 && ::listen(open.descriptor(), 50) == 0;
        ::_exit(isOther ? 0 : 1);
    }
    int state = 0;
    QCOMPARE(::waitpid(process, &state, 0), process);
    QCOMPARE(state, 0);
    const QString behind = line(socketAt(path("t")));
    QVERIFY2(behind.startsWith("problem: " + path("t") + " is held by process ")
                 && behind.contains("user 65534"),
             qPrintable(behind));
}

void TestDoctor::socketPath()
{
    QVERIFY(line(socketAt("relative")).startsWith("problem: relative is no path for a socket"));
    QVERIFY(line(socketAt('/' + QString(108, 'x'))).contains("at most 107 bytes"));
    write("file", "");
    QVERIFY(line(socketAt(path("file/s"))).contains(" is not there: "));
}

void TestDoctor::settings_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QString>("server");
    QTest::newRow("sensible") << kSettings
                              << "ok: messages of up to 300.0 KiB (307200 bytes) are sent to "
                                 "http://m/"
                              << "http://m/";
    QTest::newRow("small") << fromHex("00001000") + kSettings.mid(4)
                           << "note: messages of up to 4.0 KiB (4096 bytes) are sent to http://m/; "
                              "few pictures are that small"
                           << "http://m/";
    QTest::newRow("nothing fits") << fromHex("00000000") + kSettings.mid(4)
                                  << "problem: the largest message that may be sent has 0 bytes"
                                  << "http://m/";
    QTest::newRow("negative") << fromHex("FFFFFFFF") + kSettings.mid(4)
                              << "problem: the largest message that may be sent has -1 bytes"
                              << "http://m/";
    QTest::newRow("empty text") << fromHex("0004B000 00000000")
                                << "problem: no MMSC is set: nothing can be sent"
                                << "";
    QTest::newRow("null text") << fromHex("0004B000 FFFFFFFF")
                               << "problem: no MMSC is set: nothing can be sent"
                               << "";
    QTest::newRow("no URL") << fromHex("0004B000 00000004 00680069")
                            << "problem: the MMSC \"hi\" does not begin with http:// or https://"
                            << "";
    const QString senseless = "problem: %1 answers with %2 that make no sense";
    QTest::newRow("cut") << kSettings.chopped(1) << senseless.arg("%1", "25 bytes") << "";
    QTest::newRow("nothing") << QByteArray() << senseless.arg("%1", "0 bytes") << "";
    QTest::newRow("more behind it") << kSettings + '!' << senseless.arg("%1", "27 bytes") << "";
    QTest::newRow("half a character")
        << fromHex("0004B000 00000003 006800") << senseless.arg("%1", "11 bytes") << "";
    QTest::newRow("length past the end")
        << fromHex("0004B000 7FFFFFFE 0068") << senseless.arg("%1", "10 bytes") << "";
}

void TestDoctor::settings()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, found);
    const Teller teller(path("s"), answer);
    QString server;
    const Diagnosis finding = checkSettings(path("s"), 60s, server);
    QCOMPARE(line(finding), found.contains("%1") ? found.arg(path("s")) : found);
    QTEST(server, "server");
    QCOMPARE(finding.remedy.isEmpty(), finding.verdict == Verdict::Ok);
}

void TestDoctor::settingsLate()
{
    const Listener listener(path("s"));
    QString server;
    QCOMPARE(line(checkSettings(path("s"), 50ms, server)),
             "problem: " + path("s") + " has not told them within 50 ms: wmsg-mmsproxyd hangs");
}

void TestDoctor::settingsNobody()
{
    QString server;
    QCOMPARE(line(checkSettings(path("s"), 1s, server)),
             "problem: nobody can be asked for them at " + path("s"));
}

void TestDoctor::urls_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("problem");
    QTest::newRow("http") << "http://mmsc.example/mms"
                          << "";
    QTest::newRow("https with a port") << "https://mmsc.example:8443/"
                                       << "";
    QTest::newRow("address") << "http://[::1]:8080/"
                             << "";
    QTest::newRow("empty") << ""
                           << "is no URL";
    QTest::newRow("name alone") << "mmsc.example"
                                << "does not begin with http:// or https://";
    QTest::newRow("other scheme") << "ftp://mmsc.example/"
                                  << "does not begin with http:// or https://";
    QTest::newRow("no host") << "http:///mms"
                             << "names no host";
    QTest::newRow("blank") << "http://a b/"
                           << "is no URL";
}

void TestDoctor::urls()
{
    QFETCH(QString, url);
    QTEST(problemOfUrl(url), "problem");
}

void TestDoctor::mmscReached()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString place = QString("127.0.0.1:%1/mms").arg(server.serverPort());
    const QString words =
        QString("ok: 127.0.0.1 at port %1 takes connections").arg(server.serverPort());
    QCOMPARE(line(checkMmsc("http://" + place, 60s)), words);
    QCOMPARE(line(checkMmsc("https://" + place, 60s)),
             words + "; its certificate was not looked at");
}

void TestDoctor::mmscRefuses()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const quint16 port = server.serverPort();
    server.close();
    QCOMPARE(line(checkMmsc(QString("http://127.0.0.1:%1/").arg(port), 60s)),
             QString("problem: 127.0.0.1 at port %1 refuses connections").arg(port));
}

// A host that answers nothing, as one does behind a bearer that is not up.
void TestDoctor::mmscSwallows()
{
    const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *where = reinterpret_cast<sockaddr *>(&address);
    QCOMPARE(::bind(server, where, size), 0);
    QCOMPARE(::listen(server, 0), 0);
    QCOMPARE(::getsockname(server, where, &size), 0);
    std::vector<int> callers;
    for (int n = 0; n < 8; ++n) {
        callers.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        (void)::connect(callers.back(), where, size);
    }
    const QString place = QString("127.0.0.1 at port %1").arg(ntohs(address.sin_port));
    const Diagnosis finding =
        checkMmsc(QString("http://127.0.0.1:%1/").arg(ntohs(address.sin_port)), 100ms);
    QCOMPARE(line(finding), "problem: " + place + " cannot be reached: Connection timed out");
    QVERIFY(finding.remedy.contains("bearer"));
    for (const int caller : callers) {
        ::close(caller);
    }
    ::close(server);
}

void TestDoctor::mmscUnknown()
{
    const Diagnosis finding = checkMmsc("http://mmsc.invalid/", 60s);
    QVERIFY2(line(finding).startsWith("problem: the name mmsc.invalid has no address here: "),
             qPrintable(line(finding)));
    QVERIFY(finding.remedy.contains("getent hosts mmsc.invalid"));
}

void TestDoctor::modem_data()
{
    QTest::addColumn<uint>("state");
    QTest::addColumn<QByteArray>("serviceCenter");
    QTest::addColumn<QString>("found");
    QTest::newRow("ready") << uint(TAPI_MODEM_READY) << QByteArray("+4366")
                           << "ok: ready; short messages go through +4366";
    QTest::newRow("ready, no service centre")
        << uint(TAPI_MODEM_READY) << QByteArray()
        << "note: the modem is ready, and knows no service centre: short messages cannot be sent";
    QTest::newRow("starting") << uint(TAPI_MODEM_STARTING) << QByteArray()
                              << "note: found, and not ready yet";
    QTest::newRow("blocked")
        << uint(TAPI_MODEM_BLOCKED) << QByteArray()
        << "problem: there, and of no use as it is: the SIM is missing or wants its PIN, above all";
    QTest::newRow("absent") << uint(TAPI_MODEM_ABSENT) << QByteArray()
                            << "problem: wmsg-telephonyd has no modem: it is not plugged in, or "
                               "another program has it";
}

void TestDoctor::modem()
{
    QFETCH(uint, state);
    QFETCH(QByteArray, serviceCenter);
    TelephonyPeer daemon;
    wmsg::telephony::Welcome welcome;
    welcome.modem = state;
    welcome.serviceCenter = serviceCenter;
    daemon.answer(wmsg::telephony::RecordType::Hello, toFrame(welcome));
    QFETCH(QString, found);
    QCOMPARE(line(checkModem()), found);
    // It said who it is, asked for nothing, and went.
    const QStringList heard = daemon.heard();
    QCOMPARE(heard.size(), 1);
    QVERIFY(heard[0].startsWith("1: "));
    QTRY_COMPARE(daemon.gone(), 1);
}

void TestDoctor::modemRefused()
{
    TelephonyPeer daemon;
    daemon.answer(wmsg::telephony::RecordType::Hello, toFrame(wmsg::telephony::Refused{77}));
    daemon.hangUp(true);
    QCOMPARE(line(checkModem()),
             "problem: wmsg-telephonyd lets nobody in: it hangs, or is of another version than "
             "wmsg");
}

void TestDoctor::storeToCome()
{
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(path("root")));
    QCOMPARE(line(checkStore()),
             "note: there is no store yet; the first message makes one in " + path("root")
                 + "/mms/engine/");
    QVERIFY(!QFile::exists(path("root")));
    write("root", "");
    QCOMPARE(line(checkStore()),
             "problem: there is no store, and " + path("root") + "/mms/engine/ cannot be made in "
                 + path("root"));
}

void TestDoctor::storeWhole()
{
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(m_folder->path()));
    QStringList problems;
    QCOMPARE(MMS_ENG_Controller::Instance()->CheckStore(&problems), int(MMS_ENG_OK));
    const QString what = line(checkStore());
    QVERIFY2(what.startsWith("ok: " + path("mms/engine/") + " is whole; ")
                 && what.endsWith(" free"),
             qPrintable(what));
}

void TestDoctor::storeDamaged()
{
    const Desk desk;
    desk.bring("pdu/retrieve-confirmation");
    QCOMPARE(desk.run({"store", "add", "--root", "root", "retrieve-confirmation"}).exitCode, 0);
    const QString store = desk.path("root/mms/engine/");
    QVERIFY(QFile::resize(store + "parts/1.part", 3));
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(desk.path("root")));
    QCOMPARE(line(checkStore()),
             "problem: " + store + " is damaged, 1 problem: message 1: " + store
                 + "parts/1.part has 3 bytes instead of 122");

    write("mms/engine/messages.db", QByteArray(4096, '!'));
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(m_folder->path()));
    QCOMPARE(nameOf(checkStore().verdict), "problem");
}

void TestDoctor::spool()
{
    QCOMPARE(line(checkSpool(spoolAt("none"))),
             "note: " + path("none")
                 + " is not there: wmsg-mmsproxyd has not run as this user, or has another spool");
    write("file", "");
    QCOMPARE(line(checkSpool(spoolAt("file"))), "problem: " + path("file") + " is no folder");
    QVERIFY(line(checkSpool(spoolAt("file/below"))).startsWith("problem: "));
    QVERIFY(QDir().mkdir(path("spool")));
    QCOMPARE(::chmod(qPrintable(path("spool")), 0700), 0);
    const QString fine = line(checkSpool(spoolAt("spool")));
    QVERIFY2(fine.startsWith("ok: " + path("spool") + "; ") && fine.endsWith(" free"),
             qPrintable(fine));
    QCOMPARE(::chmod(qPrintable(path("spool")), 0770), 0);
    const Diagnosis open = checkSpool(spoolAt("spool"));
    QCOMPARE(line(open),
             "problem: others may write to " + path("spool")
                 + " (mode 770): wmsg-mmsproxyd does not start with it");
    QCOMPARE(open.remedy, "chmod 700 " + path("spool"));
}

void TestDoctor::spoolOfOtherUser()
{
    if (!OtherUser::isPossible()) {
        QSKIP("only root can make a folder of another user");
    }
    QVERIFY(QDir().mkdir(path("spool")));
    QCOMPARE(::chown(qPrintable(path("spool")), kNobody, kNobody), 0);
    const QString what = line(checkSpool(spoolAt("spool")));
    QVERIFY2(what.startsWith("problem: " + path("spool") + " belongs to ")
                 && what.contains("user 65534"),
             qPrintable(what));
}

void TestDoctor::waiting()
{
    QCOMPARE(line(checkWaiting(spoolAt("spool"))), "ok: nothing");
    write("spool/in/1.json", R"({"version":1,"kind":"message","stage":"over"})");
    write("spool/in/2.json", "no record");
    QCOMPARE(line(checkWaiting(spoolAt("spool"))), "ok: nothing");
    write("spool/in/3.json", R"({"version":1,"stage":"ready","appId":"chess"})");
    write("spool/in/4.json", R"({"version":1,"stage":"ready"})");
    write("spool/in/5.json", R"({"version":1,"stage":"announced"})");
    write("spool/in/6.json", R"({"version":1,"stage":"deferred"})");
    write("spool/out/7.json", R"({"version":1,"transactionId":"T"})");
    const Diagnosis finding = checkWaiting(spoolAt("spool"));
    QCOMPARE(finding.check, QString("spool: waiting"));
    QCOMPARE(line(finding),
             QString("note: 1 to be sent, 4 arrived (1 for \"chess\", 1 for no application in "
                     "particular, 2 still with the MMSC)"));
    QVERIFY(finding.remedy.contains("wmsg receive"));

    // Those of the telephony daemon: a result that nobody has taken yet is not waited for.
    write("sms/out/1.json", R"({"version":1,"reference":1,"status":0,"networkReference":7})");
    write("sms/in/2.json", R"({"version":1,"kind":"over"})");
    write("sms/in/3.json", R"({"version":1,"kind":"whole"})");
    const Diagnosis sms = checkWaiting(spoolAt("sms"));
    QCOMPARE(line(sms), QString("note: 1 arrived"));
    QVERIFY(sms.remedy.contains("wmsg sms receive"));
}

void TestDoctor::kept()
{
    QCOMPARE(line(checkKept(spoolAt("spool"))), "ok: nothing");
    write("spool/kept/in-1.txt", "the first reason\n");
    write("spool/kept/in-1.pdu", "\x8C");
    QCOMPARE(line(checkKept(spoolAt("spool"))),
             "note: 1 message that could not be used, the latest because: the first reason");
    write("spool/kept/out-2.txt", "cut\noff \x1B[2J");
    QFile newest(path("spool/kept/out-2.txt"));
    QVERIFY(newest.open(QIODevice::ReadWrite));
    QVERIFY(newest.setFileTime(QDateTime::currentDateTime().addSecs(60),
                               QFileDevice::FileModificationTime));
    newest.close();
    const Diagnosis two = checkKept(spoolAt("spool"));
    QVERIFY(two.remedy.contains(path("spool/kept/out-2.txt")));
    const QString shown = doctorView({two});
    QVERIFY2(shown.contains("2 messages that could not be used, the latest because: cut off "
                            "\\x1B[2J\n"),
             qPrintable(shown));
    // A link in place of the text is not followed.
    write("secret", "secret");
    QVERIFY(QFile::remove(path("spool/kept/out-2.txt")));
    QVERIFY(QFile::remove(path("spool/kept/in-1.txt")));
    QVERIFY(QFile::link(path("secret"), path("spool/kept/in-1.txt")));
    QVERIFY(line(checkKept(spoolAt("spool"))).endsWith("(its text cannot be read)"));
}

void TestDoctor::clock()
{
    const QDateTime good(QDate(2030, 5, 1), QTime(12, 0), Qt::UTC);
    QCOMPARE(nameOf(checkClock(good, {}).verdict), "ok");
    QCOMPARE(nameOf(checkClock(QDateTime::fromSecsSinceEpoch(0), {}).verdict), "problem");
    QCOMPARE(nameOf(checkClock(good.addYears(-5), {}).verdict), "problem");
    QCOMPARE(nameOf(checkClock(good.addYears(90), {}).verdict), "problem");
    QVERIFY(checkClock(good.addYears(-5), {}).remedy.contains("timedatectl"));
}

void TestDoctor::clockGoneBack()
{
    write("spool/in/1.json", "{}");
    const QDateTime written = QFileInfo(path("spool/in/1.json")).lastModified();
    const QStringList folders{path("none"), path("spool")};
    QCOMPARE(nameOf(checkClock(written, folders).verdict), "ok");
    QCOMPARE(nameOf(checkClock(written.addSecs(-60), folders).verdict), "ok");
    const QString back = line(checkClock(written.addDays(-1), folders));
    QVERIFY2(back.startsWith("problem: ") && back.contains(path("spool/in/1.json"))
                 && back.endsWith(": it has gone back"),
             qPrintable(back));
}

void TestDoctor::zones_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("hasLocal");
    QTest::addColumn<QString>("found");
    QTest::newRow("of the system") << QByteArray() << true << "ok: that of the system";
    QTest::newRow("none") << QByteArray() << false << "note: none is set: times are shown in UTC";
    QTest::newRow("city") << QByteArray("Area/City") << false << "ok: Area/City, as TZ says";
    QTest::newRow("colon") << QByteArray(":Area/City") << false << "ok: Area/City, as TZ says";
    QTest::newRow("posix") << QByteArray("CET-1CEST") << false << "ok: CET-1CEST, as TZ says";
    QTest::newRow("utc") << QByteArray("UTC") << false << "ok: UTC, as TZ says";
    QTest::newRow("unknown") << QByteArray("Area/Nowhere") << true
                             << "note: TZ is \"Area/Nowhere\", which no zone here is called: times "
                                "are shown in UTC";
}

void TestDoctor::zones()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, hasLocal);
    write("zones/Area/City", "TZif");
    QTEST(line(checkTimeZone(name, {path("zones"), path(hasLocal ? "zones/Area/City" : "none")})),
          "found");
}

void TestDoctor::view()
{
    QCOMPARE(doctorView({Diagnosis::ok("clock", "noon")}),
             QString("ok       clock                       noon\nall is fine\n"));
    QCOMPARE(
        doctorView({Diagnosis::problem("spool", "a\nb", "rm c"), Diagnosis::note("modem", "d")}),
        QString("problem  spool                       a\\nb\n"
                "         -> rm c\n"
                "note     modem                       d\n"
                "1 problem, 1 note\n"));
    QVERIFY(doctorView({Diagnosis::note("modem", "d")}).endsWith("\nno problem, 1 note\n"));
}

void TestDoctor::json()
{
    QCOMPARE(
        doctorJson({Diagnosis::ok("clock", "noon"), Diagnosis::problem("spool", "a\nb", "rm c")}),
        (QJsonObject{
            {"checks",
             QJsonArray{QJsonObject{{"check", "clock"}, {"verdict", "ok"}, {"what", "noon"}},
                        QJsonObject{{"check", "spool"},
                                    {"verdict", "problem"},
                                    {"what", "a\nb"},
                                    {"remedy", "rm c"}}}},
            {"problems", 1},
            {"notes", 0}}));
}

void TestDoctor::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("argument") << QStringList{"me"};
    QTest::newRow("no URL") << QStringList{"--mmsc", "mmsc.example"};
    QTest::newRow("no time") << QStringList{"--timeout", "0"};
    QTest::newRow("unknown option") << QStringList{"--cure"};
}

void TestDoctor::usage()
{
    QFETCH(QStringList, arguments);
    const Run run = Desk().run(QStringList{"doctor"} + arguments);
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.out, QString());
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
}

// Nothing runs, and nothing was ever set up.
void TestDoctor::sickSystem()
{
    const Desk desk;
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(desk.path("root")));
    qputenv("WMSG_TELEPHONY_SOCKET", QFile::encodeName(desk.path("telephony")));
    const QStringList arguments{"doctor", "--spool", "spool", "--telephony-spool", "sms"};
    const Run run = desk.run(arguments);
    const Run json = desk.run(arguments + QStringList{"--json", "--offline"});
    qunsetenv("WMSG_TELEPHONY_SOCKET");
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.out.contains("problem  proxy socket                /tmp/mmsproxy is not there: "),
             qPrintable(run.out));
    QVERIFY(run.out.contains("note     MMSC                        not asked: none is known\n"));
    QVERIFY(run.out.endsWith("3 problems, 7 notes\n"));
    QCOMPARE(json.exitCode, 1);
    QCOMPARE(json.json()["problems"].toInt(), 3);
    QCOMPARE(json.json()["checks"].toArray()[4].toObject(),
             (QJsonObject{{"check", "MMSC"},
                          {"verdict", "note"},
                          {"what", "not asked, as --offline wants it"}}));
    QCOMPARE(contentOf(desk.path("")), QStringList());
}

// All daemons are played, and the program leaves everything as it is.
void TestDoctor::healthySystem()
{
    const Desk desk;
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(desk.path("root")));
    QCOMPARE(desk.run({"store", "check"}).exitCode, 0);
    QVERIFY(desk.folder().mkpath("spool/in"));
    QVERIFY(desk.folder().mkpath("sms/in"));
    desk.write("spool/in/1.json", R"({"version":1,"stage":"over"})");
    const QStringList before = contentOf(desk.path("spool"));
    QTcpServer mmsc;
    QVERIFY(mmsc.listen(QHostAddress::LocalHost));
    const Listener proxy("/tmp/mmsproxy");
    const Listener push("/tmp/wmsg-mmspush");
    const Teller server("/tmp/extra-mmserver", kSettings);
    TelephonyPeer telephony;
    const Run run =
        desk.run({"doctor", "--spool", "spool", "--telephony-spool", "sms", "--mmsc",
                  QString("http://127.0.0.1:%1/").arg(mmsc.serverPort()), "--timeout", "60"});
    QCOMPARE(run.err, QString());
    QVERIFY2(run.out.endsWith("\nall is fine\n"), qPrintable(run.out));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(contentOf(desk.path("spool")), before);
    // Who listens at the proxy socket hears nothing: no application was registered.
    const int caller = ::accept4(proxy.descriptor(), nullptr, nullptr, SOCK_CLOEXEC);
    char byte = 0;
    QCOMPARE(int(::recv(caller, &byte, 1, 0)), 0);
    ::close(caller);
}

// The program is run without the right of root to write everywhere.
void TestDoctor::foldersThatCannotBeWritten()
{
    const Desk desk;
    QVERIFY(desk.folder().mkdir("spool"));
    QVERIFY(desk.folder().mkdir("root"));
    qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(desk.path("root")));
    QCOMPARE(desk.run({"store", "check"}).exitCode, 0);
    QCOMPARE(::chmod(qPrintable(desk.path("spool")), 0500), 0);
    QCOMPARE(::chmod(qPrintable(desk.path("root/mms/engine")), 0555), 0);
    const Run run = desk.run({"doctor", "--offline", "--spool", "spool"});
    QCOMPARE(::chmod(qPrintable(desk.path("spool")), 0700), 0);
    QCOMPARE(::chmod(qPrintable(desk.path("root/mms/engine")), 0777), 0);
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.out.contains("problem  spool                       spool cannot be written: "
                              "Permission denied\n"),
             qPrintable(run.out));
    QVERIFY2(run.out.contains("/mms/engine/ cannot be written: Permission denied\n"),
             qPrintable(run.out));
}

QTEST_GUILESS_MAIN(TestDoctor)
#include "tst_doctor.moc"
