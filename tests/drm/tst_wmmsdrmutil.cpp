// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/fake_drmclient.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <type_traits>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/// How many of the names that are asked for next another process takes first.
static int s_namesToTake = 0;

/// Stands in front of the one of the C library.
extern "C" Q_DECL_EXPORT int open(const char *path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (s_namesToTake > 0 && (flags & O_CREAT)) {
        --s_namesToTake;
        const long fd = syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_EXCL, 0600);
        if (write(int(fd), "mine", 4) != 4) {
            qFatal("open");
        }
        close(int(fd));
    }
    return int(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

namespace {

const QString kDrmMessage = "application/vnd.oma.drm.message";
const QString kDcf = "application/vnd.oma.drm.dcf";

/// A name that nobody else uses in /tmp.
QString freshName(const QString &extension = ".dm")
{
    static int count = 0;
    return QString("wmsg-test-%1-%2%3").arg(getpid()).arg(count++).arg(extension);
}

/// A name that no file can have.
QString nameThatIsTooLong()
{
    return QString(300, 'n') + ".dm";
}

WMMSMultipart drmPart(const QString &name, const QByteArray &bytes = "locked")
{
    return partOf(kDrmMessage, bytes, name);
}

WMMSMsg messageOf(const QList<WMMSMultipart> &parts)
{
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart(parts);
    return message;
}

/// What lies in /tmp of this test.
QStringList leftFiles()
{
    const QDir tmp("/tmp");
    return tmp.entryList({QString("wmsg-test-%1-*").arg(getpid())},
                         QDir::Files | QDir::Hidden | QDir::System);
}

const QString kStartIsDrm = "MMS_IsDRMFile(QString filename) FileName is %1\n";
const QString kBefore = "Before if filename.isNull()||!filename.isEmpty\n";

QStringList isDrmLines(const QString &path, int answer)
{
    return {kStartIsDrm.arg(path), kBefore, "Before calling DRM_IsDRMFile\n",
            QString("Return value of  DRM_IsDRMFile %1\n").arg(answer),
            "After calling DRM_IsDRMFile\n"};
}

} // namespace

class TestWMMSDrmUtil : public QObject {
    Q_OBJECT

private slots:
    void init() { QCOMPARE(leftFiles(), QStringList()); }
    void cleanup() { QCOMPARE(leftFiles(), QStringList()); }

    void isValueClass();
    void saveToTmpFile();
    void saveToTmpFileKeepsTheName();
    void tmpFileIsPrivate();
    void tmpNamesAreNotTaken();
    void namesTakenInBetween();
    void tmpNames_data();
    void tmpNames();
    void unwritableTmpFile_data();
    void unwritableTmpFile();
    void noRoomForTheTmpFile();
    void getDataMimeType_data();
    void getDataMimeType();
    void dataMimeTypeLooksAtAPrivateCopy();
    void isDrmFile_data();
    void isDrmFile();
    void canForward();
    void canForwardOfAPlainFile();
    void hasRightsIssuerURL();
    void pathsAre8Bit();
    void getDrmTypeMediaName();
    void suggestedNameOfOtherParts();
    void suggestedNameOfDrmParts();
    void suggestedNameWithoutFolder();
    void sendRequestRights();
    void isRoMimeType_data();
    void isRoMimeType();
    void formatCheck_data();
    void formatCheck();
    void drmCheck_data();
    void drmCheck();
    void drmCheckStopsAtTheFirst();
    void forwardNothing();
    void forwardUnsavedPart();
    void forwardSavedPart();
    void forwardFirstNoCounts();
    void forwardTopLevelAlone();
    void forwardUnwritablePart();
    void forwardNameWithLineBreak();
    void messageAsksTheSame();
};

void TestWMMSDrmUtil::isValueClass()
{
    QVERIFY(std::is_empty_v<WMMSDrmUtil> && std::is_trivially_destructible_v<WMMSDrmUtil>);
}

void TestWMMSDrmUtil::saveToTmpFile()
{
    const QString name = freshName();
    WMMSMultipart part = drmPart("<" + name + ">", fromHex("00 FF 0A"));
    const QString path = WMMSDrmUtil::saveToTmpFile(&part);
    QCOMPARE(path, "/tmp/" + name);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(toHex(file.readAll()), "00 FF 0A");
    QVERIFY(file.remove());
    QVERIFY(WMMSDrmUtil::saveToTmpFile(nullptr).isEmpty());
    QVERIFY(!WMMSDrmUtil::saveToTmpFile(nullptr).isNull());
}

void TestWMMSDrmUtil::saveToTmpFileKeepsTheName()
{
    WMMSMultipart part = drmPart(freshName());
    QFile::remove(WMMSDrmUtil::saveToTmpFile(&part));
    QVERIFY(part.getLocalFileName().isNull());
    part.setLocalFileName("/somewhere/else");
    QFile::remove(WMMSDrmUtil::saveToTmpFile(&part));
    QCOMPARE(part.getLocalFileName(), "/somewhere/else");
    part.setContentID(nameThatIsTooLong());
    QCOMPARE(WMMSDrmUtil::saveToTmpFile(&part), "");
    QCOMPARE(part.getLocalFileName(), "/somewhere/else");
}

void TestWMMSDrmUtil::tmpFileIsPrivate()
{
    const mode_t before = ::umask(0);
    WMMSMultipart part = drmPart(freshName());
    const QByteArray path = QFile::encodeName(WMMSDrmUtil::saveToTmpFile(&part));
    ::umask(before);
    struct stat info = {};
    QCOMPARE(::lstat(path.constData(), &info), 0);
    QCOMPARE(info.st_mode, mode_t(S_IFREG | 0600));
    QCOMPARE(::unlink(path.constData()), 0);
}

/// A file of that name stays as it is, and so does a link that leads nowhere.
void TestWMMSDrmUtil::tmpNamesAreNotTaken()
{
    const QString name = freshName("");
    QFile taken("/tmp/" + name);
    QVERIFY(taken.open(QIODevice::WriteOnly) && taken.write("mine") == 4);
    taken.close();
    const QString nowhere = "/tmp/" + freshName(".nowhere");
    QVERIFY(QFile::link(nowhere, "/tmp/" + name + "0"));
    WMMSMultipart part = drmPart(name);
    QCOMPARE(WMMSDrmUtil::saveToTmpFile(&part), "/tmp/" + name + "1");
    QVERIFY(taken.open(QIODevice::ReadOnly));
    QCOMPARE(taken.readAll(), "mine");
    QVERIFY(!QFile::exists(nowhere));
    for (const char *end : {"", "0", "1"}) {
        QVERIFY(QFile::remove("/tmp/" + name + end));
    }
}

/// The file of another process that was faster is neither opened nor changed.
void TestWMMSDrmUtil::namesTakenInBetween()
{
    const QString name = freshName("");
    WMMSMultipart part = drmPart(name);
    s_namesToTake = 2;
    QCOMPARE(WMMSDrmUtil::saveToTmpFile(&part), "/tmp/" + name + "1");
    for (const char *end : {"", "0"}) {
        QFile taken("/tmp/" + name + end);
        QVERIFY(taken.open(QIODevice::ReadOnly));
        QCOMPARE(taken.readAll(), "mine");
    }
    // Somebody who is always faster does not keep it here for ever.
    s_namesToTake = 1000;
    QCOMPARE(WMMSDrmUtil::saveToTmpFile(&part), "");
    QCOMPARE(1000 - s_namesToTake, 100);
    s_namesToTake = 0;
    for (const QString &file : leftFiles()) {
        QVERIFY(QFile::remove("/tmp/" + file));
    }
}

void TestWMMSDrmUtil::tmpNames_data()
{
    QTest::addColumn<QString>("src");
    QTest::addColumn<QString>("expected");
    const QString base = freshName("");
    QTest::newRow("extension") << base + ".dm" << base + ".dm";
    QTest::newRow("no extension") << base << base;
    QTest::newRow("content id") << "cid:" + base << base;
    QTest::newRow("folders") << "../../etc/" + base << base;
    QTest::newRow("backslashes") << "..\\" + base << base;
    QTest::newRow("line feed") << base + "\nb" << base + "_b";
    QTest::newRow("line break") << base + "\r\nb" << base + "__b";
    QTest::newRow("blank") << base + " b" << base + " b";
}

void TestWMMSDrmUtil::tmpNames()
{
    QFETCH(QString, src);
    QFETCH(QString, expected);
    WMMSMultipart part = drmPart(src);
    const QString path = WMMSDrmUtil::saveToTmpFile(&part);
    QCOMPARE(path, "/tmp/" + expected);
    QVERIFY(QFile::remove(path));
}

void TestWMMSDrmUtil::unwritableTmpFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("too long") << nameThatIsTooLong();
    QTest::newRow("a zero character") << freshName("") + QChar(0) + "b";
}

void TestWMMSDrmUtil::unwritableTmpFile()
{
    QFETCH(QString, name);
    WMMSMultipart part = drmPart(name);
    QCOMPARE(WMMSDrmUtil::saveToTmpFile(&part), "");
    const FakeDrmClient client;
    QCOMPARE(WMMSDrmUtil::getDataMimeType(&part), "");
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, "/d"), "");
    QCOMPARE(client.calls, QStringList());
}

/// A file that could be created and not filled is removed again.
void TestWMMSDrmUtil::noRoomForTheTmpFile()
{
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    WMMSMultipart part = drmPart(freshName(), QByteArray(1000, 'x'));
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit little = {10, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &little), 0);
    const QString path = WMMSDrmUtil::saveToTmpFile(&part);
    const FakeDrmClient client;
    const QString type = WMMSDrmUtil::getDataMimeType(&part);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
    ::signal(SIGXFSZ, handler);
    QCOMPARE(path, "");
    QCOMPARE(type, "");
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSDrmUtil::getDataMimeType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("expected");
    QTest::newRow("picture") << "image/gif" << 0 << "image/gif";
    QTest::newRow("no type") << "" << 0 << "";
    for (const char *type : {"message", "rights+xml", "rights+wbxml", "content", "dcf", "ro+xml"}) {
        QTest::newRow(type) << QString("application/vnd.oma.drm.") + type << 0 << "audio/AMR";
    }
    QTest::newRow("the client fails") << kDcf << -1 << "";
    QTest::newRow("the client fails otherwise") << kDcf << 5 << "";
}

void TestWMMSDrmUtil::getDataMimeType()
{
    QFETCH(QString, type);
    QFETCH(int, status);
    FakeDrmClient client;
    client.status = status;
    client.contentType = "audio/AMR";
    WMMSMultipart part = partOf(type, "bytes", freshName());
    QTEST(WMMSDrmUtil::getDataMimeType(&part), "expected");
    QCOMPARE(client.calls.isEmpty(), !part.isDrmObj());
    QCOMPARE(WMMSDrmUtil::getDataMimeType(nullptr), "");
}

void TestWMMSDrmUtil::dataMimeTypeLooksAtAPrivateCopy()
{
    const FakeDrmClient client;
    const QString name = freshName();
    WMMSMultipart part = drmPart(name, "the bytes");
    part.setLocalFileName("/somewhere/else");
    QCOMPARE(WMMSDrmUtil::getDataMimeType(&part), "image/jpeg");
    QCOMPARE(client.calls, QStringList({"GetContentMetaDataInFile /tmp/" + name}));
    QCOMPARE(client.contents, QList<QByteArray>({"the bytes"}));
    QVERIFY(!(client.permissions.first() & ~QFile::Permissions(0x6600)));
}

void TestWMMSDrmUtil::isDrmFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QStringList>("log");
    QTest::newRow("yes") << "/a.dcf" << 1 << true << isDrmLines("/a.dcf", 1);
    QTest::newRow("another yes") << "/a.dcf" << -7 << true << isDrmLines("/a.dcf", 1);
    QTest::newRow("no") << "/a.dcf" << 0 << false << isDrmLines("/a.dcf", 0);
    QTest::newRow("null") << QString() << 1 << false << QStringList({kStartIsDrm.arg(""), kBefore});
    QTest::newRow("empty") << "" << 1 << false << QStringList({kStartIsDrm.arg(""), kBefore});
}

void TestWMMSDrmUtil::isDrmFile()
{
    QFETCH(QString, path);
    FakeDrmClient client;
    QFETCH(int, answer);
    client.isDrmFile = answer;
    const LogCapture log;
    QTEST(WMMSDrmUtil::MMS_IsDRMFile(path), "expected");
    QTEST(log.lines(), "log");
    QCOMPARE(client.calls, path.isEmpty() ? QStringList() : QStringList("IsDRMFile " + path));
}

void TestWMMSDrmUtil::canForward()
{
    FakeDrmClient client;
    for (const int answer : {0, 1, -1, 4}) {
        client.canForward = answer;
        const LogCapture log;
        QCOMPARE(WMMSDrmUtil::MMS_CanForward("/a.dcf"), answer != 0);
        QCOMPARE(log.lines(),
                 isDrmLines("/a.dcf", 1)
                     + QStringList(
                         {"\nbefore calling DRM_canforward \n",
                          QString("\nAfter calling DRM_canforward =%1\n").arg(answer ? 1 : 0)}));
    }
    client.calls.clear();
    const LogCapture log;
    QVERIFY(!WMMSDrmUtil::MMS_CanForward(QString()));
    QVERIFY(!WMMSDrmUtil::MMS_CanForward(""));
    QCOMPARE(client.calls, QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void TestWMMSDrmUtil::canForwardOfAPlainFile()
{
    FakeDrmClient client;
    client.isDrmFile = 0;
    client.canForward = 0;
    const LogCapture log;
    QVERIFY(WMMSDrmUtil::MMS_CanForward("/a.jpg"));
    QCOMPARE(client.calls, QStringList("IsDRMFile /a.jpg"));
    QCOMPARE(log.lines(), isDrmLines("/a.jpg", 0));
}

void TestWMMSDrmUtil::hasRightsIssuerURL()
{
    FakeDrmClient client;
    for (const int answer : {0, 1, 9}) {
        client.hasIssuer = answer;
        const LogCapture log;
        QCOMPARE(WMMSDrmUtil::hasRightsIssuerURL("/a.dcf"), answer != 0);
        QCOMPARE(
            log.lines(),
            QStringList(
                {"\nbefore calling has rights issuere url\n",
                 QString("\nAfter calling has rights issuere url = %1 \n").arg(answer ? 1 : 0)}));
    }
    client.calls.clear();
    for (const QString &path : {QString(), QString("")}) {
        const LogCapture log;
        QVERIFY(!WMMSDrmUtil::hasRightsIssuerURL(path));
        QCOMPARE(log.lines(), QStringList({"filename is Null \n"}));
    }
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSDrmUtil::pathsAre8Bit()
{
    const FakeDrmClient client;
    const QString path = QString::fromUtf8("/gr\xC3\xBC\xC3\x9F\xE2\x82\xAC.dcf");
    WMMSDrmUtil::MMS_CanForward(path);
    WMMSDrmUtil::hasRightsIssuerURL(path);
    WMMSDrmUtil::sendRequestRightsFromUI(path);
    QCOMPARE(client.calls,
             QStringList({"IsDRMFile " + path, "CanForward " + path, "HasRightsIssuerURL " + path,
                          "GetContentMetaDataInFile " + path}));
}

void TestWMMSDrmUtil::getDrmTypeMediaName()
{
    const LogCapture log;
    QCOMPARE(WMMSDrmUtil::getDrmTypeMediaName("/a/b.dm"), "/a/b.dm");
    QCOMPARE(WMMSDrmUtil::getDrmTypeMediaName(""), "");
    QVERIFY(WMMSDrmUtil::getDrmTypeMediaName(QString()).isNull());
    QCOMPARE(log.lines(), QStringList({" The full path name : /a/b.dm"}));
}

void TestWMMSDrmUtil::suggestedNameOfOtherParts()
{
    const FakeDrmClient client;
    const LogCapture log;
    WMMSMultipart part = partOf("image/gif", "GIF89a", "<a.gif>", "b.gif");
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, "/d"), "/d/a.gif");
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, "/d/"), "/d/a.gif");
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(nullptr, "/d"), "");
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSDrmUtil::suggestedNameOfDrmParts()
{
    const FakeDrmClient client;
    const QString name = freshName();
    WMMSMultipart part = drmPart("cid:dir/" + name);
    const LogCapture log;
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, "/d"), "/d/" + name);
    QCOMPARE(log.lines(),
             QStringList({" The full path name : /tmp/" + name, "suggestName : /tmp/" + name,
                          "suggestName=/d/" + name}));
    QCOMPARE(client.calls, QStringList());
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, "/d/"), "/d/" + name);
}

/// Without a folder the name is the path of a file that is gone.
void TestWMMSDrmUtil::suggestedNameWithoutFolder()
{
    const QString name = freshName();
    WMMSMultipart part = drmPart(name);
    const LogCapture log;
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, ""), "/tmp/" + name);
    QVERIFY(!QFile::exists("/tmp/" + name));
    QCOMPARE(log.lines(),
             QStringList({" The full path name : /tmp/" + name, "suggestName : /tmp/" + name,
                          "suggestName=/tmp/" + name}));
    QCOMPARE(WMMSDrmUtil::getSuggestLocalFileName(&part, QString()), "/tmp/" + name);
}

/// The text about failure is logged on success.
void TestWMMSDrmUtil::sendRequestRights()
{
    FakeDrmClient client;
    LogCapture log;
    QVERIFY(WMMSDrmUtil::sendRequestRightsFromUI("/a.dcf"));
    QCOMPARE(log.lines(),
             QStringList({" DRM_STATUS_SUCCESS != status\n", " URL Location : http://r.i/\n",
                          "After calling DRM_UI_LaunchAppIn : \n"}));
    log.clear();
    client.issuer = "";
    QVERIFY(WMMSDrmUtil::sendRequestRightsFromUI("/a.dcf"));
    QCOMPARE(log.lines().at(1), " URL Location : \n");
    log.clear();
    client.status = 3;
    QVERIFY(!WMMSDrmUtil::sendRequestRightsFromUI("/a.dcf"));
    QCOMPARE(log.lines(), QStringList({"returning from sendRequestRightsFromUI"}));
    log.clear();
    client.calls.clear();
    QVERIFY(!WMMSDrmUtil::sendRequestRightsFromUI(""));
    QVERIFY(!WMMSDrmUtil::sendRequestRightsFromUI(QString()));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSDrmUtil::isRoMimeType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("expected");
    const auto type = [](const char *name, bool expected) {
        QTest::newRow(name) << QString(name) << expected;
    };
    type("application/vnd.oma.drm.rights+xml", true);
    type("application/vnd.oma.drm.rights+wbxml", true);
    type("application/vnd.oma.drm.ro+xml", true);
    type("application/vnd.oma.drm.message", false);
    type("application/vnd.oma.drm.content", false);
    type("application/vnd.oma.drm.dcf", false);
    type("Application/vnd.oma.drm.ro+xml", false);
    type("application/vnd.oma.drm.ro+xml ", false);
    type("", false);
}

void TestWMMSDrmUtil::isRoMimeType()
{
    QFETCH(QString, type);
    QTEST(WMMSDrmUtil::isRoMimeType(type), "expected");
}

void TestWMMSDrmUtil::formatCheck_data()
{
    QTest::addColumn<QString>("files");
    QTest::addColumn<bool>("expected");
    QTest::newRow("one") << "a.jpg" << true;
    QTest::newRow("a DRM message") << "a.dm" << false;
    QTest::newRow("second") << "a.jpg\r\nb.dm" << false;
    QTest::newRow("first") << "b.dm\na.jpg" << false;
    QTest::newRow("carriage returns alone") << "a.jpg\rb.dm\rc.gif" << false;
    QTest::newRow("all kinds of line breaks") << "a\r\nb\rc\nd.dm" << false;
    QTest::newRow("empty lines") << "\n\r\n\r\ra.jpg\n\n" << true;
    QTest::newRow("the extension in capitals passes") << "a.DM" << true;
    QTest::newRow("one capital") << "a.dM" << true;
    QTest::newRow("longer") << "a.dmx" << true;
    QTest::newRow("no extension") << "dm" << true;
    QTest::newRow("white space behind it") << "a.dm " << false;
    QTest::newRow("content of version 1") << "a.dcf" << true;
    QTest::newRow("empty") << "" << true;
    QTest::newRow("null") << QString() << true;
}

void TestWMMSDrmUtil::formatCheck()
{
    QFETCH(QString, files);
    QTEST(WMMSDrmUtil::canBeSentFormatCheck(files), "expected");
}

void TestWMMSDrmUtil::drmCheck_data()
{
    QTest::addColumn<QString>("files");
    QTest::addColumn<bool>("expected");
    QTest::newRow("empty") << "" << true;
    QTest::newRow("null") << QString() << true;
    QTest::newRow("line breaks alone") << "\n\r\n\r" << true;
    QTest::newRow("one") << "/open" << true;
    QTest::newRow("locked") << "/locked" << false;
    QTest::newRow("second") << "/open\r\n/locked" << false;
    QTest::newRow("third") << "/open\r/open\n\n/locked\n" << false;
    QTest::newRow("all open") << "/open\r/open\n/open" << true;
}

void TestWMMSDrmUtil::drmCheck()
{
    QFETCH(QString, files);
    FakeDrmClient client;
    client.locked = QStringList{"/locked"};
    QTEST(WMMSDrmUtil::canBeSentDrmCheck(files), "expected");
}

void TestWMMSDrmUtil::drmCheckStopsAtTheFirst()
{
    FakeDrmClient client;
    client.locked = QStringList{"/b"};
    QVERIFY(!WMMSDrmUtil::canBeSentDrmCheck("/a\n/b\n/c"));
    QCOMPARE(client.calls,
             QStringList({"IsDRMFile /a", "CanForward /a", "IsDRMFile /b", "CanForward /b"}));
}

void TestWMMSDrmUtil::forwardNothing()
{
    const FakeDrmClient client;
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(static_cast<WMMSMsg *>(nullptr)));
    WMMSMsg message;
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QVERIFY(!message.getMultiParts().subParts()); // and gets no list by that
    message.getMultiParts().creatSubList();
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    message = messageOf({partOf("image/gif", "GIF89a", "a"), partOf("text/plain", "hi", "b")});
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSDrmUtil::forwardUnsavedPart()
{
    const QString name = freshName();
    for (const int answer : {0, 1}) {
        FakeDrmClient client;
        client.canForward = answer;
        WMMSMsg message = messageOf({drmPart(name, "the bytes")});
        const LogCapture log;
        QCOMPARE(WMMSDrmUtil::canBeForwardedDrmCheck(&message), answer == 1);
        QCOMPARE(client.calls, QStringList({"IsDRMFile /tmp/" + name, "CanForward /tmp/" + name}));
        QCOMPARE(client.contents, QList<QByteArray>({"the bytes", "the bytes"}));
        QVERIFY(!(client.permissions.first() & ~QFile::Permissions(0x6600)));
        QVERIFY(!QFile::exists("/tmp/" + name));
        // The line about where the part is has a level that is not printed.
        QCOMPARE(log.lines().first(), kStartIsDrm.arg("/tmp/" + name));
    }
}

void TestWMMSDrmUtil::forwardSavedPart()
{
    FakeDrmClient client;
    WMMSMultipart part = drmPart(freshName());
    part.setLocalFileName("/saved/a.dm");
    WMMSMsg message = messageOf({part});
    const LogCapture log;
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    client.canForward = 0;
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QCOMPARE(client.calls.first(), "IsDRMFile /saved/a.dm");
    QCOMPARE(client.calls.count("CanForward /saved/a.dm"), 2);
    QCOMPARE(log.lines().first(), kStartIsDrm.arg("/saved/a.dm"));
}

void TestWMMSDrmUtil::forwardFirstNoCounts()
{
    FakeDrmClient client;
    client.locked = QStringList{"/saved/b"};
    QList<WMMSMultipart> parts;
    for (const char *name : {"/saved/a", "/saved/b", "/saved/c"}) {
        parts.append(drmPart(freshName()));
        parts.last().setLocalFileName(name);
        parts.append(partOf("text/plain", "hi", "t"));
    }
    WMMSMsg message = messageOf(parts);
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QCOMPARE(client.calls,
             QStringList({"IsDRMFile /saved/a", "CanForward /saved/a", "IsDRMFile /saved/b",
                          "CanForward /saved/b"}));
}

void TestWMMSDrmUtil::forwardTopLevelAlone()
{
    FakeDrmClient client;
    client.canForward = 0;
    WMMSMsg message = messageOf({parentOf(kMixed, {drmPart(freshName())})});
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QCOMPARE(client.calls, QStringList());
}

/// A part that cannot be written out does not block forwarding.
void TestWMMSDrmUtil::forwardUnwritablePart()
{
    FakeDrmClient client;
    client.canForward = 0;
    WMMSMsg message = messageOf({drmPart(nameThatIsTooLong())});
    const LogCapture log;
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
    QCOMPARE(log.lines(), QStringList({"save drm file to tmp path failed"}));
    QCOMPARE(client.calls, QStringList());
    // The next part is asked about all the same.
    message = messageOf({drmPart(nameThatIsTooLong()), drmPart(freshName())});
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(&message));
}

/// The name of a part is one file, not a list of two.
void TestWMMSDrmUtil::forwardNameWithLineBreak()
{
    FakeDrmClient client;
    const QString name = freshName("");
    client.locked = QStringList{"/tmp/" + name + "_b"};
    WMMSMsg message = messageOf({drmPart(name + "\nb")});
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(&message));
}

void TestWMMSDrmUtil::messageAsksTheSame()
{
    FakeDrmClient client;
    WMMSMsg message = messageOf({drmPart(freshName())});
    QVERIFY(message.canBeForwardedDrmCheck());
    client.canForward = 0;
    QVERIFY(!message.canBeForwardedDrmCheck());
}

QTEST_GUILESS_MAIN(TestWMMSDrmUtil)
#include "tst_wmmsdrmutil.moc"
