// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// What becomes a mail file; how messages are made readable is tested with services/intake.

#include "services/mmsproxyd/mail_file_writer.h"

#include "mms/model/mail_file.h"
#include "mms/model/mms_msgdb_type.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/services/mmsproxyd/transfer_spy.h"
#include "tests/support/parts.h"

#include <QtCore/QTemporaryDir>

#include <csignal>

#include <sys/resource.h>

using wmsg::proxy::MailFileWriter;
using wmsg::proxy::Taken;
using Kind = Taken::Kind;

Q_DECLARE_METATYPE(Taken::Kind)

namespace {

const char *const kHead = "8C 84  98 54 31 00  8D 90  8B 6D 31 00  85 04 65 43 21 00"
                          "89 06 80 2B 31 32 33 00  97 2B 34 00  8A 80";
const char *const kBody = "84 A3 01  04 02 03 83 81 EA 48 69";

} // namespace

class TestMailFileWriter : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void bytesStayAsTheyAre();
    void lengthsAndTypeAreTold();
    void applicationIsTold();
    void withoutTransaction();
    void withoutContent();
    void repairsAreCounted();
    void lossIsTold();
    void statuses_data();
    void statuses();
    void unreadable_data();
    void unreadable();
    void everyPrefix();
    void sizeLimit();
    void missingFile();
    void missingFolder();
    void diskIsFull();
    void earlierMailFileStays();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    Taken take(const QByteArray &pdu, qint64 limit = 1000000)
    {
        return MailFileWriter(limit).take(fileWith(path("pdu"), pdu), path("mail"));
    }
    Taken takeHex(const QByteArray &hex) { return take(fromHex(hex)); }
    QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMailFileWriter::bytesStayAsTheyAre()
{
    const QByteArray pdu = fromHex(kHead) + fromHex(kBody);
    const Taken taken = take(pdu);
    QCOMPARE(taken.kind, Kind::Message);
    QCOMPARE(taken.reason, QString());
    QCOMPARE(taken.transactionId, "T1");
    QCOMPARE(taken.offset, -1);
    QCOMPARE(taken.repairs, 0);
    QVERIFY(taken.loss.isNull());
    QVERIFY(taken.applicationId.isEmpty());
    QCOMPARE(toHex(contentOf(path("mail")).mid(16)), toHex(pdu));
    QCOMPARE(contentOf(path("pdu")), pdu);
    QCOMPARE(files(), (QStringList{"mail", "pdu"}));
    WMMSMsg message;
    message.clear();
    QCOMPARE(message.construct(path("mail"), true), quint32(MMS_DECODE_OK));
    QCOMPARE(message.getFrom().getEntryVal(), "+123");
}

void TestMailFileWriter::lengthsAndTypeAreTold()
{
    const QByteArray head = fromHex(kHead) + fromHex("84 A3");
    QCOMPARE(takeHex(QByteArray(kHead) + kBody).kind, Kind::Message);
    const auto prefix =
        wmsg::model::mailFilePrefix(MMS_MSGDB_MSG_TYPE_LETTER_MIXED, quint32(head.size()), 9);
    QCOMPARE(toHex(contentOf(path("mail")).first(16)),
             toHex(QByteArray(prefix.data(), qsizetype(prefix.size()))));
}

void TestMailFileWriter::applicationIsTold()
{
    WMMSMsg message;
    message.setPDUType(0x84);
    message.setPriority(129);
    message.setAppID("chess");
    message.setContentType(typeOf(kMixed, {{"Application-ID", "chess"}}));
    message.getMultiParts().getSubMmsMultipartList().append(partOf("text/plain", "e4"));
    QArray<char> pdu;
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), quint32(MMS_ENCODE_OK));
    const Taken taken = take(QByteArray(pdu.constData(), pdu.size()));
    QCOMPARE(taken.kind, Kind::Message);
    QCOMPARE(taken.applicationId, "chess");
}

void TestMailFileWriter::withoutTransaction()
{
    const Taken taken = takeHex(QByteArray("8C 84 8D 90 89 01 81") + kBody);
    QCOMPARE(taken.kind, Kind::Message);
    QVERIFY(taken.transactionId.isNull());
}

void TestMailFileWriter::withoutContent()
{
    const Taken taken = takeHex(kHead);
    QCOMPARE(taken.kind, Kind::Message);
    const QByteArray mail = contentOf(path("mail"));
    QCOMPARE(qFromLittleEndian<quint32>(mail.constData() + 4), quint32(mail.size() - 16));
    QCOMPARE(qFromLittleEndian<quint32>(mail.constData() + 8), 0U);
}

void TestMailFileWriter::repairsAreCounted()
{
    const Taken taken = takeHex(QByteArray(kHead) + "B1 81" + kBody);
    QCOMPARE(taken.kind, Kind::Message);
    QVERIFY(taken.repairs > 0);
    QCOMPARE(toHex(contentOf(path("mail")).mid(16)), toHex(fromHex(kHead) + fromHex(kBody)));
}

void TestMailFileWriter::lossIsTold()
{
    const Taken taken = takeHex(QByteArray(kHead) + "84 A3 02  04 02 03 83 81 EA 48 69");
    QCOMPARE(taken.kind, Kind::Message);
    QVERIFY2(taken.loss.contains("(at offset "), qPrintable(taken.loss));
    WMMSMsg message;
    message.clear();
    QCOMPARE(message.construct(path("mail"), true), quint32(MMS_DECODE_OK));
    QCOMPARE(message.getMultiParts().getSubMmsMultipartList().size(), 1);
}

void TestMailFileWriter::statuses_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<Taken::Kind>("kind");
    QTest::addColumn<bool>("mayPass");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const char *hex, Kind kind, bool mayPass,
                        const char *reason) {
        QTest::newRow(name) << QByteArray(hex) << kind << mayPass << QString(reason);
    };
    row("ok", "99 80", Kind::Message, false, "");
    row("transient", "99 C0", Kind::NoMessage, true,
        "the MMSC has no message, retrieve status 192");
    row("last transient", "99 DF", Kind::NoMessage, true,
        "the MMSC has no message, retrieve status 223");
    row("permanent", "99 E2", Kind::NoMessage, false,
        "the MMSC has no message, retrieve status 226");
    row("with text", "99 E2 9A 67 6F 6E 65 0A 78 00", Kind::NoMessage, false,
        "the MMSC has no message, retrieve status 226: gone x");
}

void TestMailFileWriter::statuses()
{
    QFETCH(QByteArray, status);
    for (const char *body : {kBody, ""}) {
        init();
        const Taken taken = takeHex(QByteArray(kHead) + status + body);
        QTEST(taken.kind, "kind");
        QTEST(taken.mayPass(), "mayPass");
        QTEST(taken.reason, "reason");
        QCOMPARE(int(taken.retrieveStatus), int(uchar(fromHex(status).at(1))));
        QCOMPARE(QFile::exists(path("mail")), taken.kind == Kind::Message);
    }
}

void TestMailFileWriter::unreadable_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<bool>("hasOffset");
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("a page") << QByteArray("<html><body>Log in</body></html>") << true;
    QTest::newRow("zeros") << QByteArray(1000, '\0') << true;
    QTest::newRow("a send request")
        << fromHex("8C 80 98 54 31 00 8D 90 89 01 81 97 2B 31 00 84 A3 00") << true;
    QTest::newRow("a send confirmation") << fromHex("8C 81 98 54 31 00 8D 90 92 80") << false;
    QTest::newRow("a notification")
        << fromHex("8C 82 98 54 31 00 8D 90 8A 80 8E 01 01 88 03 81 01 0A 83 68 3A 00") << false;
    QTest::newRow("a stored message")
        << fromHex("8C 87 98 54 31 00 8D 90 89 01 81 84 A3 00") << false;
}

void TestMailFileWriter::unreadable()
{
    QFETCH(QByteArray, pdu);
    const Taken taken = take(pdu);
    QCOMPARE(taken.kind, Kind::Unreadable);
    QVERIFY(!taken.mayPass());
    QVERIFY(!taken.reason.isEmpty());
    QTEST(taken.offset >= 0, "hasOffset");
    QCOMPARE(files(), QStringList{"pdu"});
}

/// Whatever is called a message is one for a session, and nothing else leaves a file.
void TestMailFileWriter::everyPrefix()
{
    const QByteArray pdu = fromHex(kHead) + fromHex(kBody);
    for (qsizetype size = 0; size < pdu.size(); ++size) {
        init();
        const Taken taken = take(pdu.first(size));
        QCOMPARE(QFile::exists(path("mail")), taken.kind == Kind::Message);
        WMMSMsg message;
        message.clear();
        QVERIFY(taken.kind != Kind::Message
                || message.construct(path("mail"), true) == MMS_DECODE_OK);
    }
}

void TestMailFileWriter::sizeLimit()
{
    const QByteArray pdu = fromHex(kHead) + fromHex(kBody);
    QCOMPARE(take(pdu, pdu.size()).kind, Kind::Message);
    const Taken taken = take(pdu, pdu.size() - 1);
    QCOMPARE(taken.kind, Kind::Unreadable);
    QCOMPARE(taken.reason, QString("it has more than %1 bytes").arg(pdu.size() - 1));
}

void TestMailFileWriter::missingFile()
{
    const Taken taken = MailFileWriter(1000).take(path("missing"), path("mail"));
    QCOMPARE(taken.kind, Kind::Failed);
    QVERIFY(taken.mayPass());
    QCOMPARE(taken.reason, path("missing") + ": No such file or directory");
}

void TestMailFileWriter::missingFolder()
{
    const Taken taken =
        MailFileWriter(1000).take(fileWith(path("pdu"), fromHex(kHead)), path("no/such/mail"));
    QCOMPARE(taken.kind, Kind::Failed);
    QCOMPARE(taken.reason, path("no/such/mail") + ": No such file or directory");
}

void TestMailFileWriter::diskIsFull()
{
    const QString pdu =
        fileWith(path("pdu"), fromHex(kHead) + fromHex("84 9E") + QByteArray(100000, 'x'));
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {50000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const Taken taken = MailFileWriter(1000000).take(pdu, path("mail"));
    ::setrlimit(RLIMIT_FSIZE, &before);
    QCOMPARE(taken.kind, Kind::Failed);
    QCOMPARE(taken.reason, path("mail") + ": File too large");
    QCOMPARE(files(), QStringList{"pdu"});
}

void TestMailFileWriter::earlierMailFileStays()
{
    fileWith(path("mail"), "as it was");
    QCOMPARE(take("no PDU").kind, Kind::Unreadable);
    QCOMPARE(contentOf(path("mail")), "as it was");
}

QTEST_GUILESS_MAIN(TestMailFileWriter)
#include "tst_mail_file_writer.moc"
