// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

/// What the library asks the system for while a file is saved, and what the system is made to
/// answer: the functions below stand in front of those of the C library.
namespace system_calls {

QStringList asked;
int writeError = 0; // the next writes fail with it
int writesBefore = 0; // so many writes succeed first
bool shortWrites = false; // a write takes one byte
bool interruptedOnce = false; // the next write is interrupted
int syncError = 0;

void reset()
{
    asked.clear();
    writeError = writesBefore = syncError = 0;
    shortWrites = interruptedOnce = false;
}

template <typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace system_calls

extern "C" {

Q_DECL_EXPORT ssize_t writev(int fd, const iovec *ranges, int count)
{
    using namespace system_calls;
    asked += "write";
    if (interruptedOnce) {
        interruptedOnce = false;
        errno = EINTR;
        return -1;
    }
    if (writeError != 0 && writesBefore-- <= 0) {
        errno = writeError;
        return -1;
    }
    if (shortWrites || writeError != 0) {
        const iovec *first = ranges;
        while (first->iov_len == 0) {
            ++first;
        }
        iovec one = {first->iov_base, 1};
        return next<decltype(&writev)>("writev")(fd, &one, 1);
    }
    return next<decltype(&writev)>("writev")(fd, ranges, count);
}

Q_DECL_EXPORT int fsync(int fd)
{
    using namespace system_calls;
    asked += "sync";
    if (syncError != 0) {
        errno = syncError;
        return -1;
    }
    return next<decltype(&fsync)>("fsync")(fd);
}

Q_DECL_EXPORT int rename(const char *from, const char *to) noexcept
{
    using namespace system_calls;
    asked += "rename";
    return next<decltype(&rename)>("rename")(from, to);
}
}

namespace {

const char *const kPicture =
    "89 01 81 8A 80 8F 01 94 81 84 9D  61 62 63"; // the stored form of pictureMessage()
const char *const kPrefix = "12 10 06 00  0B 00 00 00  03 00 00 00  00 00 00 00";

WMMSMsg pictureMessage()
{
    WMMSMsg message;
    message.setContentType(typeOf("image/gif"));
    message.getMultiParts().setData(bytesOf("abc"));
    message.setMMSType(6);
    return message;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? toHex(file.readAll()) : QByteArray("no file");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

bool exists(const QString &path)
{
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink();
}

/// Makes the process an ordinary user for its life, when it is run by the administrator, whom
/// permissions do not stop.
class OrdinaryUser {
public:
    OrdinaryUser() : m_isRoot(geteuid() == 0)
    {
        if (m_isRoot && seteuid(65534) != 0) {
            qFatal("seteuid");
        }
    }
    ~OrdinaryUser()
    {
        if (m_isRoot && seteuid(0) != 0) {
            qFatal("seteuid");
        }
    }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

private:
    bool m_isRoot;
};

} // namespace

class TestMailFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void saves();
    void savesTheMessageType();
    void savesWithoutABody();
    void theLengths();
    void theDeliveryReportStandsTwice();
    void keepsThePduType_data();
    void keepsThePduType();
    void replacesAnExistingFile();
    void replacesAnOlderTemporaryFile();
    void syncsBeforeItRenames();
    void goesOnBehindShortWrites();
    void aFailedEncodingLeavesTheStoredForm();
    void aDirectoryThatIsNotThere();
    void aDirectoryThatIsNotWritable();
    void theTemporaryFileIsNoRegularFile_data();
    void theTemporaryFileIsNoRegularFile();
    void aNameWithAZero();
    void theDiskIsFull_data();
    void theDiskIsFull();
    void aFileSizeLimit();
    void anotherWriteError();
    void theSyncFails_data();
    void theSyncFails();
    void theTargetIsADirectory();
    void theTargetIsALink();
    void namesOutsideAscii();

    void reads();
    void readsTheHeaderAlone();
    void decodeFailuresPassThrough_data();
    void decodeFailuresPassThrough();
    void anyNonZeroPrefixIsRead();
    void refusesTheOldLayout_data();
    void refusesTheOldLayout();
    void everyShortFile();
    void everyTruncation();
    void notAFile_data();
    void notAFile();
    void followsALink();
    void addsToAUsedMessage();

    void readsWhatItSaved();
    void partsOfAFileBehave();
    void partsOfAFileOutliveTheMessage();
    void theSinglePartOfAFile();
    void savesOverTheFileItWasReadFrom();

private:
    QString path(const char *name) const { return m_dir->filePath(name); }
    QString written(const char *name, const QByteArray &hex) const
    {
        writeFile(path(name), fromHex(hex));
        return path(name);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestMailFile::initTestCase()
{
    appLogModuleStream = appLogDiscardStream();
    umask(022);
}

void TestMailFile::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    system_calls::reset();
}

void TestMailFile::cleanup()
{
    system_calls::reset();
}

void TestMailFile::saves()
{
    WMMSMsg message = pictureMessage();
    LogCapture log;
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("m")), toHex(fromHex(QByteArray(kPrefix) + kPicture)));
    QVERIFY(!exists(path("m.tmp")));
    QCOMPARE(log.lines(), QStringList({"encode header len:11", "encode body len:3"}));
}

void TestMailFile::savesTheMessageType()
{
    for (const int type : {0, 1, 13, 127, 128, 255}) {
        WMMSMsg message = pictureMessage();
        message.setMMSType(static_cast<unsigned char>(type));
        QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
        QCOMPARE(fromHex(contentOf(path("m")))[2], char(type));
        WMMSMsg back;
        back.setMMSType(77);
        QCOMPARE(back.construct(path("m"), true), 100U);
        QCOMPARE(int(back.getMMSType()), type);
    }
}

void TestMailFile::savesWithoutABody()
{
    WMMSMsg message;
    int headerLength = -7;
    int bodyLength = -7;
    QCOMPARE(message.saveAs(path("m"), &headerLength, &bodyLength), 300U);
    QCOMPARE(contentOf(path("m")),
             toHex(fromHex("12 10 FF 00 09 00 00 00 00 00 00 00 00 00 00 00 "
                           "89 01 81 8A 80 8F 01 94 81")));
    QCOMPARE(headerLength, 9);
    QCOMPARE(bodyLength, 0);
}

void TestMailFile::theLengths()
{
    WMMSMsg message = pictureMessage();
    message.getMultiParts().setData(bytesOf(QByteArray(0x123456, 'x')));
    message.setSubject(QString(300, 's'));
    int headerLength = -7;
    int bodyLength = -7;
    QCOMPARE(message.saveAs(path("m"), &headerLength, &bodyLength), 300U);
    QCOMPARE(bodyLength, 0x123456);
    QCOMPARE(headerLength, message.headerLength());
    QVERIFY(headerLength > 300);
    const QByteArray bytes = fromHex(contentOf(path("m")));
    QCOMPARE(bytes.size(), 16 + headerLength + bodyLength);
    QCOMPARE(toHex(bytes.left(16)),
             "12 10 06 00 " + toHex(QByteArray(1, char(headerLength & 0xFF))) + " 01 00 00 "
                 + "56 34 12 00 00 00 00 00");
    QCOMPARE(message.saveAs(path("m"), &headerLength, nullptr), 300U);
    QCOMPARE(message.saveAs(path("m"), nullptr, &bodyLength), 300U);
}

void TestMailFile::theDeliveryReportStandsTwice()
{
    WMMSMsg message;
    message.setDeliveryReportNecessity(true);
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("m")),
             toHex(fromHex("12 10 FF 00 0D 00 00 00 00 00 00 00 00 00 00 00 "
                           "89 01 81 8A 80 8F 01 94 81 86 80 86 80")));
}

void TestMailFile::keepsThePduType_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {0x80, 0x82, 0x84, 0x87, 0x88, 0}) {
        QTest::addRow("%x", type) << type;
    }
}

void TestMailFile::keepsThePduType()
{
    QFETCH(int, type);
    WMMSMsg message = pictureMessage();
    message.setPDUType(static_cast<unsigned char>(type));
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(int(message.getPDUType()), type);
    QCOMPARE(contentOf(path("m")), toHex(fromHex(QByteArray(kPrefix) + kPicture)));
}

void TestMailFile::replacesAnExistingFile()
{
    writeFile(path("m"), QByteArray(1000, 'o'));
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("m")), toHex(fromHex(QByteArray(kPrefix) + kPicture)));
}

void TestMailFile::replacesAnOlderTemporaryFile()
{
    writeFile(path("m.tmp"), QByteArray(1000, 'o'));
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("m")), toHex(fromHex(QByteArray(kPrefix) + kPicture)));
    QVERIFY(!exists(path("m.tmp")));
}

void TestMailFile::syncsBeforeItRenames()
{
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(system_calls::asked, QStringList({"write", "sync", "rename"}));
}

void TestMailFile::goesOnBehindShortWrites()
{
    WMMSMsg message = pictureMessage();
    system_calls::shortWrites = true;
    system_calls::interruptedOnce = true;
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("m")), toHex(fromHex(QByteArray(kPrefix) + kPicture)));
    QCOMPARE(system_calls::asked.count("write"), 1 + 16 + 14);
}

// after a failed encoding the message stays in the stored form
void TestMailFile::aFailedEncodingLeavesTheStoredForm()
{
    writeFile(path("m"), "former");
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x80);
    message.setMsgSize(-1);
    int headerLength = -7;
    int bodyLength = -8;
    LogCapture log;
    QCOMPARE(message.saveAs(path("m"), &headerLength, &bodyLength), 209U);
    QCOMPARE(log.lines(), QStringList({"field handler write fail!", "encode fail,ret:209"}));
    QCOMPARE(int(message.getPDUType()), 0x87);
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QCOMPARE(contentOf(path("m.tmp")), QByteArray(""));
    QCOMPARE(headerLength, -7);
    QCOMPARE(bodyLength, -8);
    QCOMPARE(system_calls::asked, QStringList());

    WMMSMsg untyped;
    untyped.getMultiParts().setData(bytesOf("abc"));
    log.clear();
    QCOMPARE(untyped.saveAs(path("m"), nullptr, nullptr), 202U);
    QCOMPARE(log.lines(), QStringList({"encode header len:9", "encode fail,ret:202"}));
    QCOMPARE(contentOf(path("m")), toHex("former"));
}

void TestMailFile::aDirectoryThatIsNotThere()
{
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x80);
    LogCapture log;
    QCOMPARE(message.saveAs(path("no/such/m"), nullptr, nullptr), 301U);
    writeFile(path("file"), "x");
    QCOMPARE(message.saveAs(path("file/m"), nullptr, nullptr), 301U);
    QCOMPARE(message.saveAs(m_dir->path() + "/" + QString(300, 'n'), nullptr, nullptr), 301U);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(int(message.getPDUType()), 0x80);
}

void TestMailFile::aDirectoryThatIsNotWritable()
{
    QVERIFY(QDir(m_dir->path()).mkdir("locked"));
    writeFile(path("locked/m"), "former");
    QCOMPARE(chmod(m_dir->path().toLocal8Bit().constData(), 0755), 0);
    QCOMPARE(chmod(path("locked").toLocal8Bit().constData(), 0555), 0);
    WMMSMsg message = pictureMessage();
    {
        const OrdinaryUser user;
        QCOMPARE(message.saveAs(path("locked/m"), nullptr, nullptr), 301U);
        QCOMPARE(contentOf(path("locked/m")), toHex("former"));
        QVERIFY(!exists(path("locked/m.tmp")));
    }
    QCOMPARE(chmod(path("locked").toLocal8Bit().constData(), 0755), 0);
}

void TestMailFile::theTemporaryFileIsNoRegularFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"link to a file", "link to nothing", "directory", "pipe"}) {
        QTest::newRow(kind) << kind;
    }
}

void TestMailFile::theTemporaryFileIsNoRegularFile()
{
    QFETCH(QString, kind);
    writeFile(path("victim"), "precious");
    writeFile(path("m"), "former");
    if (kind == "link to a file") {
        QVERIFY(QFile::link(path("victim"), path("m.tmp")));
    } else if (kind == "link to nothing") {
        QVERIFY(QFile::link(path("nothing"), path("m.tmp")));
    } else if (kind == "directory") {
        QVERIFY(QDir(m_dir->path()).mkdir("m.tmp"));
    } else {
        QCOMPARE(mkfifo(path("m.tmp").toLocal8Bit().constData(), 0600), 0);
    }
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 301U);
    QCOMPARE(contentOf(path("victim")), toHex("precious"));
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QVERIFY(!exists(path("nothing")));
    QVERIFY(exists(path("m.tmp")));
}

void TestMailFile::aNameWithAZero()
{
    writeFile(path("m"), "former");
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m") + QChar(0) + "x", nullptr, nullptr), 301U);
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QCOMPARE(message.saveAs(path("n"), nullptr, nullptr), 300U);
    QCOMPARE(message.construct(path("n") + QChar(0) + "x", true), 102U);
    QCOMPARE(message.construct(QString(), true), 102U);
}

void TestMailFile::theDiskIsFull_data()
{
    QTest::addColumn<int>("writesBefore");
    QTest::newRow("at once") << 0;
    QTest::newRow("inside the prefix") << 5;
    QTest::newRow("inside the message") << 20;
}

void TestMailFile::theDiskIsFull()
{
    QFETCH(int, writesBefore);
    writeFile(path("m"), "former");
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x84);
    int headerLength = -7;
    int bodyLength = -8;
    system_calls::writeError = ENOSPC;
    system_calls::writesBefore = writesBefore;
    QCOMPARE(message.saveAs(path("m"), &headerLength, &bodyLength), 302U);
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QCOMPARE(QFileInfo(path("m.tmp")).size(), writesBefore);
    QCOMPARE(int(message.getPDUType()), 0x84);
    QCOMPARE(headerLength, -7);
    QCOMPARE(bodyLength, -8);
    QVERIFY(!system_calls::asked.contains("rename"));
}

void TestMailFile::aFileSizeLimit()
{
    writeFile(path("m"), "former");
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x84);
    rlimit former;
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {20, former.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const quint32 result = message.saveAs(path("m"), nullptr, nullptr);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &former), 0);
    std::signal(SIGXFSZ, formerHandler);
    QCOMPARE(result, 301U);
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QCOMPARE(QFileInfo(path("m.tmp")).size(), 20);
    QCOMPARE(int(message.getPDUType()), 0x84);
}

void TestMailFile::anotherWriteError()
{
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x84);
    system_calls::writeError = EIO;
    errno = ENOSPC; // of an earlier call
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 301U);
    QVERIFY(!exists(path("m")));
    QVERIFY(exists(path("m.tmp")));
    QCOMPARE(int(message.getPDUType()), 0x84);
}

void TestMailFile::theSyncFails_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<quint32>("result");
    QTest::newRow("no space") << ENOSPC << 302U;
    QTest::newRow("input/output error") << EIO << 301U;
}

void TestMailFile::theSyncFails()
{
    QFETCH(int, error);
    writeFile(path("m"), "former");
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x84);
    system_calls::syncError = error;
    QTEST(message.saveAs(path("m"), nullptr, nullptr), "result");
    QCOMPARE(contentOf(path("m")), toHex("former"));
    QVERIFY(exists(path("m.tmp")));
    QCOMPARE(int(message.getPDUType()), 0x84);
    QCOMPARE(system_calls::asked, QStringList({"write", "sync"}));
}

void TestMailFile::theTargetIsADirectory()
{
    QVERIFY(QDir(m_dir->path()).mkpath("m/below"));
    WMMSMsg message = pictureMessage();
    message.setPDUType(0x84);
    int headerLength = -7;
    int bodyLength = -8;
    QCOMPARE(message.saveAs(path("m"), &headerLength, &bodyLength), 301U);
    QVERIFY(QFileInfo(path("m/below")).isDir());
    QVERIFY(exists(path("m.tmp")));
    QCOMPARE(headerLength, -7);
    QCOMPARE(bodyLength, -8);
    QCOMPARE(int(message.getPDUType()), 0x84);
}

void TestMailFile::theTargetIsALink()
{
    writeFile(path("victim"), "precious");
    QVERIFY(QFile::link(path("victim"), path("m")));
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    QVERIFY(!QFileInfo(path("m")).isSymLink());
    QCOMPARE(contentOf(path("victim")), toHex("precious"));
}

void TestMailFile::namesOutsideAscii()
{
    const QString name = m_dir->path() + "/" + QString::fromUtf8("\xC3\xA4 \xE6\x97\xA5");
    WMMSMsg message = pictureMessage();
    QCOMPARE(message.saveAs(name, nullptr, nullptr), 300U);
    QVERIFY(QFileInfo::exists(name));
    WMMSMsg back;
    QCOMPARE(back.construct(name, true), 100U);
}

void TestMailFile::reads()
{
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.construct(written("m", QByteArray(kPrefix) + kPicture), true), 100U);
    QCOMPARE(int(message.getMMSType()), 6);
    QCOMPARE(message.headerLength(), 11);
    QCOMPARE(message.bodyLength(), 3);
    QCOMPARE(shown(message.getMultiParts()), QByteArray("image/gif id=- at=- [61 62 63]"));
    QCOMPARE(log.lines(),
             QStringList({"msgClass: PERSONAL", "senderVisibility: 1", "contentType: image/gif ",
                          "parse header end"}));
}

void TestMailFile::readsTheHeaderAlone()
{
    WMMSMsg message;
    QCOMPARE(message.construct(written("m", QByteArray(kPrefix) + kPicture), false), 100U);
    QCOMPARE(message.headerLength(), 11);
    QCOMPARE(message.bodyLength(), 0);
    QVERIFY(message.getMultiParts().isEmpty());
}

void TestMailFile::decodeFailuresPassThrough_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<quint32>("result");
    QTest::newRow("no bytes") << QByteArray("") << 100U;
    QTest::newRow("id 25") << QByteArray("99") << 104U;
    QTest::newRow("id 0") << QByteArray("80") << 110U;
    QTest::newRow("body") << QByteArray("84 A3 01 05") << 111U;
    QTest::newRow("value") << QByteArray("84") << 113U;
}

void TestMailFile::decodeFailuresPassThrough()
{
    QFETCH(QByteArray, pdu);
    WMMSMsg message;
    QTEST(message.construct(written("m", QByteArray(kPrefix) + ' ' + pdu), true), "result");
    QCOMPARE(int(message.getMMSType()), 6);
}

void TestMailFile::anyNonZeroPrefixIsRead()
{
    // The lengths are those of the bytes, whatever the prefix says.
    WMMSMsg message;
    const QByteArray prefix = "01 FF 05 FF  FF FF FF FF  00 00 00 00  FF FF FF FF ";
    QCOMPARE(message.construct(written("m", prefix + kPicture), true), 100U);
    QCOMPARE(int(message.getMMSType()), 5);
    QCOMPARE(message.headerLength(), 11);
    QCOMPARE(message.bodyLength(), 3);
}

void TestMailFile::refusesTheOldLayout_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("first byte 0") << QByteArray("00 10");
    QTest::newRow("second byte 0") << QByteArray("12 00");
    QTest::newRow("both") << QByteArray("00 00");
}

void TestMailFile::refusesTheOldLayout()
{
    QFETCH(QByteArray, start);
    WMMSMsg message;
    message.setMMSType(77);
    LogCapture log;
    QCOMPARE(
        message.construct(
            written("m", start + " 06 00 0B 00 00 00 03 00 00 00 00 00 00 00 " + kPicture), true),
        112U);
    QCOMPARE(log.lines(), QStringList("this mailFile is old version"));
    QCOMPARE(int(message.getMMSType()), 77);
    QVERIFY(message.getMultiParts().isEmpty());
}

void TestMailFile::everyShortFile()
{
    const QByteArray prefix = fromHex(kPrefix);
    for (int size = 0; size < 16; ++size) {
        writeFile(path("m"), prefix.left(size));
        WMMSMsg message;
        message.setMMSType(77);
        LogCapture log;
        QCOMPARE(message.construct(path("m"), true), 102U);
        QCOMPARE(log.lines(), QStringList("fail to open file"));
        QCOMPARE(int(message.getMMSType()), 77);
        writeFile(path("m"), QByteArray(size, '\0'));
        QCOMPARE(message.construct(path("m"), true), 102U);
    }
    writeFile(path("m"), prefix);
    WMMSMsg message;
    QCOMPARE(message.construct(path("m"), true), 100U);
    QCOMPARE(int(message.getMMSType()), 6);
}

void TestMailFile::everyTruncation()
{
    const QByteArray whole = fromHex(QByteArray(kPrefix) + "96 03 EA 73 00 8F 82 84 A3"
                                     + "02  01 01 9D 61  04 02 03 83 81 EA 62 63");
    // Behind a field and inside its subject, which counts as read, there is nothing to complain of.
    const QList<int> readable = {16, 17, 18, 19, 21, 23, int(whole.size())};
    for (int size = 16; size <= whole.size(); ++size) {
        writeFile(path("m"), whole.left(size));
        WMMSMsg message;
        QCOMPARE(qMakePair(size, message.construct(path("m"), true)),
                 qMakePair(size,
                           readable.contains(size) ? 100U
                               : size < 25         ? 113U
                                                   : 111U));
    }
}

void TestMailFile::notAFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"nothing", "directory", "pipe", "link to nothing", "device",
                             "file in a file", "no name"}) {
        QTest::newRow(kind) << kind;
    }
}

void TestMailFile::notAFile()
{
    QFETCH(QString, kind);
    QString name = path("m");
    if (kind == "directory") {
        QVERIFY(QDir(m_dir->path()).mkdir("m"));
    } else if (kind == "pipe") {
        QCOMPARE(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
    } else if (kind == "link to nothing") {
        QVERIFY(QFile::link(path("nothing"), name));
    } else if (kind == "device") {
        name = "/dev/zero";
    } else if (kind == "file in a file") {
        writeFile(name, "x");
        name += "/m";
    } else if (kind == "no name") {
        name = "";
    }
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.construct(name, true), 102U);
    QCOMPARE(log.lines(), QStringList("fail to open file"));
}

void TestMailFile::followsALink()
{
    written("m", QByteArray(kPrefix) + kPicture);
    QVERIFY(QFile::link(path("m"), path("l")));
    WMMSMsg message;
    QCOMPARE(message.construct(path("l"), true), 100U);
    QCOMPARE(message.bodyLength(), 3);
}

void TestMailFile::addsToAUsedMessage()
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, "1"));
    message.setMsgID("kept");
    const QString file = written("m", QByteArray(kPrefix) + "97 32 00 84 A3 01 01 01 9D 61");
    QCOMPARE(message.construct(file, true), 100U);
    QCOMPARE(message.construct(file, true), 100U);
    QCOMPARE(message.getTo().size(), 3);
    QCOMPARE(message.getMsgID(), QString("kept"));
    QCOMPARE(message.getMultiParts().subParts()->size(), 2);
}

void TestMailFile::readsWhatItSaved()
{
    WMMSMsg message;
    message.setFrom(WMFMEntry(0, "a@b"));
    message.setTo({WMFMEntry(1, "1"), WMFMEntry(0, "b@c")});
    message.setSubject(QString::fromUtf8("\xC3\xA4"));
    message.setDate(QDateTime::fromSecsSinceEpoch(1000000000));
    message.setContentType(typeOf(kRelated, {{"start", "<s>"}, {"type", "application/smil"}}));
    message.setAppID("app");
    WMMSMultipart nested = parentOf(kMixed, {partOf("image/png", "inner", "<n>", "n.png")});
    message.getMultiParts().setSubMmsMultipart(
        {partOf("application/smil", "<smil/>", "<s>", "s.smil"),
         partOf("text/plain", "text", "<t>", "t.txt"), nested});
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);

    WMMSMsg back;
    QCOMPARE(back.construct(path("m"), true), 100U);
    QCOMPARE(back.getFrom().getEntryVal(), QString("a@b"));
    QCOMPARE(back.getTo().size(), 2);
    QCOMPARE(back.getSubject(), message.getSubject());
    QCOMPARE(back.getDate(), message.getDate());
    QCOMPARE(back.getAppID(), QString("app"));
    QCOMPARE(back.getContentType().params(), message.getContentType().params());
    QCOMPARE(back.headerLength(), message.headerLength());
    QCOMPARE(back.bodyLength(), message.bodyLength());
    QCOMPARE(back.getMultiParts().subParts()->size(), 3);
    QCOMPARE(hexOf(back.getMultiParts().subParts()->at(1).getData()), toHex("text"));
    QCOMPARE(shown(back.getMultiParts().subParts()->at(2).subParts()->first()),
             "image/png id=<n> at=n.png [" + toHex("inner") + "]");
    QCOMPARE(back.saveAs(path("n"), nullptr, nullptr), 300U);
    QCOMPARE(contentOf(path("n")), contentOf(path("m")));
}

void TestMailFile::partsOfAFileBehave()
{
    const QString file =
        written("m",
                QByteArray(kPrefix) + "84 A3 04  01 03 9D 61 62 63  01 03 A0 64 65 66"
                    + "01 04 83 74 78 74 00  01 05 A3 01 01 01 9D 67");
    WMMSMsg message;
    QCOMPARE(message.construct(file, true), 100U);
    auto &parts = message.getMultiParts().getSubMmsMultipartList();
    const WMMSMsg copy(message);

    // What is written into a part is seen by its copies, and by no other part.
    parts[0].getData().fill('x');
    QCOMPARE(hexOf(copy.getMultiParts().subParts()->at(0).getData()), toHex("xxx"));
    QCOMPARE(hexOf(parts[1].getData()), toHex("def"));
    QCOMPARE(hexOf(parts[2].getData()), toHex("txt"));

    // A part that grows does so on its own.
    QVERIFY(parts[0].getData().fill('y', 100));
    QCOMPARE(hexOf(parts[1].getData()), toHex("def"));
    QVERIFY(parts[1].getData().resize(2));
    QVERIFY(parts[1].getData().resize(4));
    parts[1].getData()[3] = 'z';
    QCOMPARE(hexOf(parts[2].getData()), toHex("txt"));

    // A nested part and the raw bytes of the part around it are apart.
    parts[3].getData().fill('q');
    QCOMPARE(hexOf(parts[3].subParts()->first().getData()), toHex("g"));
    QCOMPARE(contentOf(file).right(5), QByteArray("9D 67"));
}

void TestMailFile::partsOfAFileOutliveTheMessage()
{
    WMMSMultipart part;
    QArray<char> bytes;
    {
        WMMSMsg message;
        QCOMPARE(
            message.construct(
                written("m", QByteArray(kPrefix) + "84 A3 02 01 03 9D 61 62 63 01 01 A0 64"), true),
            100U);
        part = message.getMultiParts().subParts()->at(0);
        bytes = message.getMultiParts().subParts()->at(1).getData();
    }
    QCOMPARE(hexOf(part.getData()), toHex("abc"));
    QCOMPARE(hexOf(bytes), toHex("d"));
    part.getData()[0] = 'x';
    part = WMMSMultipart();
    QCOMPARE(hexOf(bytes), toHex("d"));
    QVERIFY(bytes.fill('e', 1000));
    QCOMPARE(bytes.size(), 1000);
}

void TestMailFile::theSinglePartOfAFile()
{
    WMMSMsg message;
    QCOMPARE(message.construct(written("m", QByteArray(kPrefix) + kPicture), true), 100U);
    WMMSMsg copy(message);
    message.getMultiParts().getData()[0] = 'x';
    QCOMPARE(hexOf(copy.getMultiParts().getData()), toHex("xbc"));
    QVERIFY(message.getMultiParts().getData().resize(10));
    WMMSMsg again;
    QCOMPARE(again.construct(path("m"), true), 100U);
    QCOMPARE(hexOf(again.getMultiParts().getData()), toHex("abc"));
    // Encoding into the bytes that were read works on a copy of them.
    QCOMPARE(again.packTo(again.getMultiParts().getData(), nullptr, nullptr), 200U);
    QCOMPARE(hexOf(again.getMultiParts().getData()), toHex(fromHex(kPicture)));
}

void TestMailFile::savesOverTheFileItWasReadFrom()
{
    WMMSMsg message;
    QCOMPARE(message.construct(written("m", QByteArray(kPrefix) + kPicture), true), 100U);
    message.setSubject("new");
    QCOMPARE(message.saveAs(path("m"), nullptr, nullptr), 300U);
    WMMSMsg back;
    QCOMPARE(back.construct(path("m"), true), 100U);
    QCOMPARE(back.getSubject(), QString("new"));
    QCOMPARE(hexOf(back.getMultiParts().getData()), toHex("abc"));
}

QTEST_GUILESS_MAIN(TestMailFile)

#include "tst_mail_file.moc"
