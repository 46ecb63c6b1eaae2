// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/drm_containers.h"
#include "tests/tools/wmsg/program.h"

#include <sys/stat.h>

using namespace drm;

namespace {

const QByteArray kLocked = message({bodyPart("image/jpeg", kJpeg)});
const QByteArray kCombined =
    message({bodyPart("application/vnd.oma.drm.rights+xml", rights1("cid:1@x")),
             bodyPart("audio/amr", "#!AMR")});
const QByteArray kContent1 = content1(
    "audio/amr", "cid:1@x",
    "Rights-Issuer: http://r.i/\r\nContent-Name: Song\r\nEncryption-Method: AES128CBC;x\r\n");

QByteArray jsonOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson();
}

QByteArray jsonOf(const char *text)
{
    return QJsonDocument::fromJson(text).toJson();
}

} // namespace

class TestDrm : public QObject {
    Q_OBJECT

private slots:
    void check_data();
    void check();
    void checkManyFiles();
    void info_data();
    void info();
    void checkAsJson();
    void infoAsJson();
    void hostileTexts();
    void badFiles_data();
    void badFiles();
    void badNames();
    void goesOnBehindABadFile();
    void log();
    void wrongUsage_data();
    void wrongUsage();
    void leavesNothing();
};

void TestDrm::check_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const auto file = [](const char *name, const QByteArray &bytes, const char *expected) {
        QTest::newRow(name) << bytes << QString(name) << QString(expected);
    };
    file("a.dm", kLocked, "forward-lock; may be sent: no; may be forwarded: no");
    file("a.bin", kLocked, "forward-lock; may be sent: no; may be forwarded: no");
    file("b.dm", kCombined, "combined delivery; may be sent: no; may be forwarded: no");
    file("c.dcf", kContent1, "DRM content, version 1; may be sent: yes; may be forwarded: yes");
    file("d.odf", content2("image/gif", "u", ""),
         "DRM content, version 2; may be sent: yes; may be forwarded: yes");
    file("e.dr", rights1("u"), "rights object; may be sent: no; may be forwarded: no");
    file("e.drc", binaryRights("u"), "rights object; may be sent: no; may be forwarded: no");
    file("e.ro", rights2("u", "v"), "rights object; may be sent: no; may be forwarded: no");
    file("f.jpg", kJpeg, "not protected; may be sent: yes; may be forwarded: yes");
    file("f.dm", kJpeg, "not protected; may be sent: no; may be forwarded: yes");
    file("f.DM", kJpeg, "not protected; may be sent: yes; may be forwarded: yes");
    file("g", "", "not protected; may be sent: yes; may be forwarded: yes");
}

void TestDrm::check()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    const Desk desk;
    desk.write(name, bytes);
    const Run run = desk.run({"drm", "check", name});
    QCOMPARE(run.out, name + ": " + expected + '\n');
    QCOMPARE(run.err, "");
    QCOMPARE(run.exitCode, 0);
}

void TestDrm::checkManyFiles()
{
    const Desk desk;
    desk.write("a.dm", kLocked);
    desk.write("b.jpg", kJpeg);
    const Run run = desk.run({"drm", "check", "a.dm", "b.jpg", "a.dm"});
    QCOMPARE(run.out.count('\n'), 3);
    QCOMPARE(run.out.section('\n', 1, 1),
             "b.jpg: not protected; may be sent: yes; may be forwarded: yes");
    QCOMPARE(run.exitCode, 0);
}

void TestDrm::info_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a.dm") << kLocked << R"(a.dm: forward-lock
  Content type      image/jpeg
  May be sent       no: files with the extension dm are never attached
  May be forwarded  no: what is forward-locked stays on the device
)";
    QTest::newRow("a.bin") << kCombined << R"(a.bin: combined delivery
  Content type      audio/amr
  Identifier        cid:1@x
  May be sent       no: what came together with its rights stays on the device
  May be forwarded  no: what came together with its rights stays on the device
)";
    QTest::newRow("song.dcf") << kContent1 << R"(song.dcf: DRM content, version 1
  Content type      audio/amr
  Content name      Song
  Identifier        cid:1@x
  Encryption        AES128CBC
  Rights issuer     http://r.i/
  May be sent       yes: its rights are delivered separately
  May be forwarded  yes: its rights are delivered separately
)";
    QTest::newRow("a.ro") << rights2("cid:1@x", "http://r.i/") << R"(a.ro: rights object
  Identifier        cid:1@x
  Rights issuer     http://r.i/
  May be sent       no: rights stay on the device that they were given to
  May be forwarded  no: rights stay on the device that they were given to
)";
    QTest::newRow("a.jpg") << kJpeg << R"(a.jpg: not protected
  May be sent       yes: it is not protected
  May be forwarded  yes: it is not protected
)";
}

void TestDrm::info()
{
    QFETCH(QByteArray, bytes);
    const Desk desk;
    desk.write(QTest::currentDataTag(), bytes);
    const Run run = desk.run({"drm", "info", QTest::currentDataTag()});
    QTEST(run.out, "expected");
    QCOMPARE(run.exitCode, 0);
}

void TestDrm::checkAsJson()
{
    const Desk desk;
    desk.write("a.dm", kLocked);
    desk.write("b.jpg", kJpeg);
    const Run run = desk.run({"drm", "check", "--json", "a.dm", "b.jpg"});
    QCOMPARE(run.out.count('\n'), 2);
    const QByteArray second = run.out.section('\n', 1, 1).toUtf8();
    QCOMPARE(jsonOf(QJsonDocument::fromJson(second).object()),
             jsonOf(R"({"file": "b.jpg", "kind": "plain",
"maySend": true, "maySendReason": "it is not protected",
"mayForward": true, "mayForwardReason": "it is not protected"})"));
}

void TestDrm::infoAsJson()
{
    const Desk desk;
    desk.write("a.dcf", kContent1);
    QCOMPARE(jsonOf(desk.run({"drm", "info", "--json", "a.dcf"}).json()),
             jsonOf(R"({"file": "a.dcf", "kind": "content-v1",
"contentType": "audio/amr", "contentName": "Song", "contentUri": "cid:1@x", "encryption": "AES128CBC",
"rightsIssuer": "http://r.i/",
"maySend": true, "maySendReason": "its rights are delivered separately",
"mayForward": true, "mayForwardReason": "its rights are delivered separately"})"));
    desk.write("b.dm", kLocked);
    const QJsonObject locked = desk.run({"drm", "info", "--json", "b.dm"}).json();
    QCOMPARE(locked["kind"].toString(), "forward-lock");
    QCOMPARE(locked["maySendReason"].toString(), "files with the extension dm are never attached");
    QVERIFY(!locked.contains("rightsIssuer"));
    desk.write("c", content2("a/b", "", ""));
    QCOMPARE(desk.run({"drm", "info", "--json", "c"}).json()["kind"].toString(), "content-v2");
    desk.write("d", kCombined);
    QCOMPARE(desk.run({"drm", "info", "--json", "d"}).json()["kind"].toString(),
             "combined-delivery");
    desk.write("e", rights1("u"));
    QCOMPARE(desk.run({"drm", "info", "--json", "e"}).json()["kind"].toString(), "rights");
}

/// Marks that turn the direction of writing come out escaped, also those of a file name.
void TestDrm::hostileTexts()
{
    const Desk desk;
    const QString turned = QString::fromUtf8("a\xE2\x80\xAE.dcf");
    desk.write(turned, content1("a/b", "u", "Content-Name: \xE2\x80\xAE gnp\r\n"));
    const Run run = desk.run({"drm", "info", turned});
    QVERIFY2(run.out.startsWith("a\\u{202E}.dcf: DRM content, version 1\n"), qPrintable(run.out));
    QVERIFY2(run.out.contains("  Content name      \\u{202E} gnp\n"), qPrintable(run.out));
}

void TestDrm::badFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("absent") << "nowhere"
                            << "wmsg: nowhere: cannot be opened: No such file or directory";
    QTest::newRow("folder") << "folder"
                            << "wmsg: folder: is a directory";
    QTest::newRow("pipe") << "pipe"
                          << "wmsg: pipe: is a pipe; read it as standard input: -";
    QTest::newRow("device") << "/dev/zero"
                            << "wmsg: /dev/zero: is a device";
    QTest::newRow("locked up") << "closed"
                               << "wmsg: closed: cannot be opened: Permission denied";
}

void TestDrm::badFiles()
{
    QFETCH(QString, name);
    const Desk desk;
    QVERIFY(desk.folder().mkdir("folder"));
    QCOMPARE(::mkfifo(qPrintable(desk.path("pipe")), 0600), 0);
    desk.write("closed", kLocked);
    QVERIFY(QFile::setPermissions(desk.path("closed"), {}));
    for (const char *command : {"check", "info"}) {
        const Run run = desk.run({"drm", command, name});
        QTEST(run.errorLine(), "expected");
        QCOMPARE(run.out, "");
        QCOMPARE(run.exitCode, 1);
    }
}

/// The checks take names as text, and lists of names with line breaks.
void TestDrm::badNames()
{
    const Desk desk;
    const Run lines = desk.run({"drm", "check", "a\nb.dm"});
    QCOMPARE(lines.errorLine(), "wmsg: a\\nb.dm: has a name with a line break");
    QCOMPARE(lines.exitCode, 1);
    const Run bytes = desk.shell("\"$0\" drm check \"$(printf 'a\\377')\"");
    QVERIFY2(bytes.errorLine().endsWith(": has a name that is no text"), qPrintable(bytes.err));
    QCOMPARE(bytes.exitCode, 1);
}

void TestDrm::goesOnBehindABadFile()
{
    const Desk desk;
    desk.write("a.jpg", kJpeg);
    const Run run = desk.run({"drm", "check", "nowhere", "a.jpg"});
    QCOMPARE(run.out, "a.jpg: not protected; may be sent: yes; may be forwarded: yes\n");
    QCOMPARE(run.exitCode, 1);
}

void TestDrm::log()
{
    const Desk desk;
    desk.write("a.jpg", kJpeg);
    const Run run = desk.run({"drm", "check", "-v", "a.jpg"});
    QVERIFY2(run.err.startsWith("MMS_IsDRMFile(QString filename) FileName is a.jpg\n"),
             qPrintable(run.err));
    QCOMPARE(run.exitCode, 0);
}

void TestDrm::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("no file to check") << QStringList{"check"};
    QTest::newRow("no file to tell of") << QStringList{"info"};
    QTest::newRow("two files to tell of") << QStringList{"info", "a", "b"};
    QTest::newRow("unknown") << QStringList{"unlock", "a"};
    QTest::newRow("unknown option") << QStringList{"check", "--force", "a"};
}

void TestDrm::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Run run = Desk().run(QStringList{"drm"} + arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
    QCOMPARE(run.out, "");
}

void TestDrm::leavesNothing()
{
    const Desk desk;
    desk.write("a.dm", kLocked);
    desk.run({"drm", "check", "a.dm"});
    desk.run({"drm", "info", "a.dm"});
    QCOMPARE(desk.folder().entryList(QDir::Files), QStringList({"a.dm"}));
}

QTEST_GUILESS_MAIN(TestDrm)
#include "tst_drm.moc"
