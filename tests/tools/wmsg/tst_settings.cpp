// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/proxy_peer.h"
#include "tests/tools/wmsg/program.h"

namespace {

const QByteArray kAnswer = fromHex("0004B000 00000004 00680069");

} // namespace

/// The program against a scripted settings server. No proxy daemon runs, and none is needed.
class TestSettings : public QObject {
    Q_OBJECT

private slots:
    void words();
    void json();
    void harmless();
    void noServer();
    void noAnswer();
    void wrongUsage();
};

void TestSettings::words()
{
    SettingsPeer server({kAnswer});
    const Run run = Desk().run({"settings"});
    QCOMPARE(run.out, "largest message  300.0 KiB (307200 bytes)\nserver           hi\n");
    QCOMPARE(run.err, "");
    QCOMPARE(run.exitCode, 0);
}

void TestSettings::json()
{
    SettingsPeer server({kAnswer});
    const Run run = Desk().run({"settings", "--json"});
    QCOMPARE(run.out, "{\"largestMessage\":307200,\"server\":\"hi\"}\n");
    QCOMPARE(run.exitCode, 0);
}

void TestSettings::harmless()
{
    SettingsPeer server({fromHex("00000001 00000004 0068001B")});
    QCOMPARE(Desk().run({"settings"}).out, "largest message  1 byte\nserver           h\\x1B\n");
}

void TestSettings::noServer()
{
    const Run run = Desk().run({"settings"});
    QCOMPARE(
        run.errorLine(),
        "wmsg: no settings server listens at /tmp/extra-mmserver (is wmsg-mmsproxyd running?)");
    QCOMPARE(run.out, "");
    QCOMPARE(run.exitCode, 1);
}

void TestSettings::noAnswer()
{
    SettingsPeer server({});
    const Run run = Desk().run({"settings"});
    QCOMPARE(run.errorLine(), "wmsg: the settings server at /tmp/extra-mmserver has told nothing");
    QCOMPARE(run.exitCode, 1);
}

void TestSettings::wrongUsage()
{
    QCOMPARE(Desk().run({"settings", "all"}).exitCode, 2);
}

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
