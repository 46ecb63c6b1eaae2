// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/config.h"

#include <QtTest/QtTest>

using namespace std::chrono_literals;
using namespace wmsg::proxy;

namespace {

ConfigReading read(const QStringList &arguments)
{
    QByteArrayList bytes{"wmsg-mmsproxyd"};
    for (const QString &argument : arguments) {
        bytes.append(argument.toUtf8());
    }
    std::vector<const char *> pointers;
    for (const QByteArray &one : bytes) {
        pointers.push_back(one.constData());
    }
    return readConfig(int(pointers.size()), pointers.data());
}

using Pauses = std::vector<std::chrono::milliseconds>;

} // namespace

class TestConfig : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qunsetenv("XDG_STATE_HOME");
        qputenv("HOME", "/home-of-a-test");
    }
    void defaults();
    void certificates();
    void options();
    void file();
    void shortMessagesAreTakenOrNot();
    void theCommandLineWins();
    void sizes_data();
    void sizes();
    void pauses_data();
    void pauses();
    void refusals_data();
    void refusals();
    void refusedLinesOfTheFile_data();
    void refusedLinesOfTheFile();
    void helpAndVersion();
    void theSpoolFollowsTheEnvironment();

private:
    QString fileWith(const QByteArray &text);

    QTemporaryDir m_folder;
};

QString TestConfig::fileWith(const QByteArray &text)
{
    QFile file(m_folder.filePath("config.ini"));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? file.fileName()
                                                                              : QString();
}

void TestConfig::defaults()
{
    const ConfigReading reading = read({});
    QCOMPARE(reading.kind, ConfigReading::Run);
    const Config &config = reading.config;
    QCOMPARE(config.proxySocket, QString("/tmp/mmsproxy"));
    QCOMPARE(config.settingsSocket, QString("/tmp/extra-mmserver"));
    QCOMPARE(config.pushSocket, QString("/tmp/wmsg-mmspush"));
    QCOMPARE(config.socketMode, mode_t(0600));
    QCOMPARE(config.spool, QString("/home-of-a-test/.local/state/wmsg/mmsproxyd"));
    QCOMPARE(config.mmsc, QString());
    QCOMPARE(config.maxSize, 300 * 1024);
    QCOMPARE(config.maxIncoming, 10 * 1024 * 1024);
    QVERIFY(QRegularExpression("^wmsg/\\d+\\.\\d+\\.\\d+$").match(config.userAgent).hasMatch());
    QCOMPARE(config.retryPauses, (Pauses{10s, 60s, 300s, 900s, 3600s}));
    QCOMPARE(config.connectTimeout, 30s);
    QCOMPARE(config.stallTimeout, 60s);
    QCOMPARE(config.retrieval, RetrievalMode::Immediate);
    QCOMPARE(config.settingsUri, QString());
    QCOMPARE(config.authorities, QString());
    QVERIFY(config.takesShortMessages);
    QVERIFY(!config.isVerbose);
}

void TestConfig::certificates()
{
    const QString path = fileWith("-----BEGIN CERTIFICATE-----\n");
    QCOMPARE(read({"--ca-file", path}).config.authorities, path);
    const QString relative = QDir().relativeFilePath(path);
    QCOMPARE(QDir::cleanPath(read({"--ca-file", relative}).config.authorities), path);
}

void TestConfig::options()
{
    const ConfigReading reading = read({
        "--proxy-socket",
        "/a/proxy",
        "--settings-socket",
        "/a/settings",
        "--push-socket",
        "/a/push",
        "--socket-mode",
        "0660",
        "--spool",
        "/a/spool/",
        "--mmsc",
        "http://mmsc.example/mms",
        "--http-proxy",
        "http://10.0.0.1:8",
        "--interface",
        "if!wwan0",
        "--user-agent",
        "Phone/1 (a b)",
        "--profile-url",
        "http://example.org/uap",
        "--connect-timeout",
        "5",
        "--stall-timeout",
        "6",
        "--max-size",
        "100000",
        "--max-incoming",
        "200000",
        "--retry",
        "1,2",
        "--retrieval",
        "deferred",
        "--settings-uri",
        "http://a/",
        "--log",
        "/a/log",
    });
    QCOMPARE(reading.text, QString());
    const Config &config = reading.config;
    QCOMPARE(config.proxySocket, QString("/a/proxy"));
    QCOMPARE(config.settingsSocket, QString("/a/settings"));
    QCOMPARE(config.pushSocket, QString("/a/push"));
    QCOMPARE(config.socketMode, mode_t(0660));
    QCOMPARE(config.spool, QString("/a/spool"));
    QCOMPARE(config.mmsc, QString("http://mmsc.example/mms"));
    QCOMPARE(config.httpProxy, QString("http://10.0.0.1:8"));
    QCOMPARE(config.interfaceName, QString("if!wwan0"));
    QCOMPARE(config.userAgent, QString("Phone/1 (a b)"));
    QCOMPARE(config.profileUrl, QString("http://example.org/uap"));
    QCOMPARE(config.connectTimeout, 5s);
    QCOMPARE(config.stallTimeout, 6s);
    QCOMPARE(config.maxSize, 100000);
    QCOMPARE(config.maxIncoming, 200000);
    QCOMPARE(config.retryPauses, (Pauses{1s, 2s}));
    QCOMPARE(config.retrieval, RetrievalMode::Deferred);
    QCOMPARE(config.settingsUri, QString("http://a/"));
    QCOMPARE(config.logFile, QString("/a/log"));
}

void TestConfig::file()
{
    const QString path = fileWith("# a comment\n"
                                  "; another\n"
                                  "mmsc = http://mmsc.example/mms\n"
                                  "user-agent = \"Phone/1 (a, b)\"\n"
                                  "\n"
                                  "max-size=500K\n"
                                  "retry = 1,2,3\n"
                                  "retrieval = never\n"
                                  "verbose = true\n");
    const ConfigReading reading = read({"--config", path});
    QCOMPARE(reading.text, QString());
    QCOMPARE(reading.config.mmsc, QString("http://mmsc.example/mms"));
    QCOMPARE(reading.config.userAgent, QString("Phone/1 (a, b)"));
    QCOMPARE(reading.config.maxSize, 500 * 1024);
    QCOMPARE(reading.config.retryPauses, (Pauses{1s, 2s, 3s}));
    QCOMPARE(reading.config.retrieval, RetrievalMode::Never);
    QVERIFY(reading.config.isVerbose);
}

void TestConfig::shortMessagesAreTakenOrNot()
{
    QVERIFY(read({"--telephony", "yes"}).config.takesShortMessages);
    QVERIFY(!read({"--telephony", "no"}).config.takesShortMessages);
    QVERIFY(!read({"--config", fileWith("telephony = no\n")}).config.takesShortMessages);
}

void TestConfig::theCommandLineWins()
{
    const QString path = fileWith("mmsc = http://a/\nretry = 1,2,3\nretrieval = never\n");
    const ConfigReading reading = read(
        {"--mmsc", "http://b/", "--config", path, "--retry", "none", "--retrieval", "immediate"});
    QCOMPARE(reading.text, QString());
    QCOMPARE(reading.config.mmsc, QString("http://b/"));
    QCOMPARE(reading.config.retryPauses, Pauses{});
    QCOMPARE(reading.config.retrieval, RetrievalMode::Immediate);
}

void TestConfig::sizes_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<qint64>("size");
    QTest::newRow("bytes") << "1024" << qint64(1024);
    QTest::newRow("kilobytes") << "600K" << qint64(600 * 1024);
    QTest::newRow("as it is written, too") << "600 KB" << qint64(600 * 1024);
    QTest::newRow("megabytes") << "100m" << qint64(100 * 1024 * 1024);
}

void TestConfig::sizes()
{
    QFETCH(QString, typed);
    const ConfigReading reading = read({"--max-size", typed});
    QCOMPARE(reading.text, QString());
    QTEST(reading.config.maxSize, "size");
}

void TestConfig::pauses_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<Pauses>("pauses");
    QTest::newRow("one") << QStringList{"7"} << Pauses{7s};
    QTest::newRow("some") << QStringList{"1,60,604800"} << Pauses{1s, 60s, 604800s};
    QTest::newRow("parts of a second")
        << QStringList{"0.1,0.25,1.5,2.125"} << Pauses{100ms, 250ms, 1500ms, 2125ms};
    QTest::newRow("none") << QStringList{"none"} << Pauses{};
}

void TestConfig::pauses()
{
    QFETCH(QStringList, typed);
    const ConfigReading reading = read(QStringList{"--retry"} + typed);
    QCOMPARE(reading.text, QString());
    QTEST(reading.config.retryPauses, "pauses");
}

void TestConfig::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("words");
    const auto row = [](const char *name, const QStringList &arguments, const char *words) {
        QTest::newRow(name) << arguments << words;
    };
    row("unknown option", {"--mmcs", "http://a/"}, "--mmcs");
    row("stray word", {"start"}, "start");
    row("no value", {"--mmsc"}, "--mmsc");
    row("twice", {"--mmsc", "http://a/", "--mmsc", "http://b/"}, "--mmsc");
    row("no URL", {"--mmsc", "not a url"}, "--mmsc: this is no URL: not a url");
    row("another scheme", {"--mmsc", "ftp://a/"}, "--mmsc: only http and https");
    row("no host", {"--mmsc", "http:///x"}, "--mmsc: ");
    row("a line end", {"--mmsc", "http://a/\r\nX: y"}, "--mmsc: this is no URL: http://a/ X: y");
    row("a relative socket", {"--proxy-socket", "here"}, "--proxy-socket: the path of a socket");
    row("a long socket", {"--push-socket", "/" + QString(107, 'x')}, "at most 107 bytes");
    row("the same socket twice", {"--push-socket", "/tmp/mmsproxy"}, "three sockets");
    row("a mode that is none", {"--socket-mode", "rw"}, "a mode is octal");
    row("a mode of 8", {"--socket-mode", "680"}, "a mode is octal");
    row("a mode with more", {"--socket-mode", "777"}, "a mode is octal");
    row("a mode against its owner", {"--socket-mode", "066"}, "lets the owner in");
    row("a negative mode", {"--socket-mode", "-600"}, "--socket-mode");
    row("no spool", {"--spool", ""}, "--spool");
    row("size 0", {"--max-size", "0"}, "--max-size");
    row("too large", {"--max-incoming", "101M"}, "--max-incoming");
    row("far too large", {"--max-size", "99999999999999999999"}, "--max-size");
    row("no size", {"--max-size", "big"}, "--max-size");
    row("a negative size", {"--max-size", "-5"}, "--max-size");
    row("a pause of 0", {"--retry", "1,0"}, "--retry: a pause is a number of seconds");
    row("a pause that is too short", {"--retry", "0.099"}, "--retry: a pause is");
    row("a long pause", {"--retry", "604801"}, "--retry: a pause is");
    row("a pause that is a bit too long", {"--retry", "604800.001"}, "--retry: a pause is");
    row("a pause with four digits", {"--retry", "0.1234"}, "--retry: a pause is");
    row("a pause of a point", {"--retry", "1."}, "--retry: a pause is");
    row("a negative pause", {"--retry=-1"}, "--retry: a pause is");
    row("a pause with an exponent", {"--retry", "1e2"}, "--retry: a pause is");
    row("no pause", {"--retry", "soon"}, "--retry: a pause is");
    row("none and some", {"--retry", "none,1"}, "--retry: none stands alone");
    row("time 0", {"--stall-timeout", "0"}, "--stall-timeout");
    row("no time", {"--connect-timeout", "x"}, "--connect-timeout");
    row("a mode of retrieval", {"--retrieval", "later"}, "--retrieval: later not in {");
    row("neither yes nor no", {"--telephony", "maybe"}, "--telephony: maybe not in {");
    row("61 characters", {"--settings-uri", QString(61, 'x')}, "room for 60 characters");
    row("a header", {"--user-agent", "a\r\nb"}, "--user-agent: at most 255 printable");
    row("no file of certificates", {"--ca-file", "/nowhere"}, "--ca-file: this is no file");
    row("a folder of certificates", {"--ca-file", "/tmp"}, "--ca-file: this is no file");
    row("no certificate", {"--ca-file", "/proc/self/status"}, "--ca-file: there is no certificate");
    row("an interface", {"--interface", "a b"}, "--interface: this is no name");
    row("two logs", {"--log", "/a", "-v"}, "--log");
    row("no such file", {"--config", "/nowhere/at/all"}, "/nowhere/at/all");
    row("a folder for a file", {"--config", "/tmp"}, "/tmp");
}

void TestConfig::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, words);
    const ConfigReading reading = read(arguments);
    QCOMPARE(reading.kind, ConfigReading::Refuse);
    QVERIFY2(reading.text.contains(words), qPrintable(reading.text));
    QVERIFY2(!reading.text.contains('\n') && !reading.text.contains('\r'),
             qPrintable(reading.text));
    QVERIFY(reading.text.endsWith(" (see wmsg-mmsproxyd --help)"));
}

void TestConfig::refusedLinesOfTheFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("words");
    QTest::newRow("unknown name") << QByteArray("mmcs = http://a/\n")
                                  << "an option that does not exist: mmcs";
    QTest::newRow("bad value") << QByteArray("mmsc = ftp://a/\n") << "only http and https";
    QTest::newRow("no value") << QByteArray("mmsc\n") << "mmsc";
    QTest::newRow("of a section") << QByteArray("[network]\nmmsc = http://a/\n")
                                  << "a section, and none is known: network";
    QTest::newRow("two values") << QByteArray("mmsc = http://a/ http://b/\n") << "mmsc";
    QTest::newRow("no text") << QByteArray("\0\1\2\xff\n", 5) << "";
}

void TestConfig::refusedLinesOfTheFile()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, words);
    const ConfigReading reading = read({"--config", fileWith(text)});
    QCOMPARE(reading.kind, ConfigReading::Refuse);
    QVERIFY2(reading.text.contains(words), qPrintable(reading.text));
    QVERIFY(!reading.text.contains('\n'));
}

void TestConfig::helpAndVersion()
{
    const ConfigReading help = read({"--help"});
    QCOMPARE(help.kind, ConfigReading::Print);
    for (const char *option : {"--proxy-socket", "--settings-socket", "--push-socket",
                               "--socket-mode",  "--spool",           "--mmsc",
                               "--http-proxy",   "--interface",       "--user-agent",
                               "--profile-url",  "--connect-timeout", "--stall-timeout",
                               "--max-size",     "--max-incoming",    "--retry",
                               "--retrieval",    "--settings-uri",    "--log",
                               "--verbose",      "--config",          "--version"}) {
        QVERIFY2(help.text.contains(option), option);
    }
    QVERIFY(help.text.contains("Exit codes"));
    const ConfigReading version = read({"--version"});
    QCOMPARE(version.kind, ConfigReading::Print);
    QVERIFY(version.text.startsWith("wmsg-mmsproxyd "));
}

void TestConfig::theSpoolFollowsTheEnvironment()
{
    qputenv("XDG_STATE_HOME", "/state");
    QCOMPARE(read({}).config.spool, QString("/state/wmsg/mmsproxyd"));
    qputenv("XDG_STATE_HOME", "relative");
    QCOMPARE(read({}).config.spool, QString("/home-of-a-test/.local/state/wmsg/mmsproxyd"));
    qunsetenv("XDG_STATE_HOME");
    QCOMPARE(read({"--spool", "here"}).config.spool, QDir::currentPath() + "/here");
}

QTEST_GUILESS_MAIN(TestConfig)
#include "tst_config.moc"
