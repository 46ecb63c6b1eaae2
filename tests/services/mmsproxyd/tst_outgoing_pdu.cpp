// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/outgoing_pdu.h"

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/mms/session/message_with.h"
#include "tests/services/mmsproxyd/transfer_spy.h"
#include "tests/witness/witness.h"

#include <QtCore/QTemporaryDir>

#include <csignal>

#include <sys/resource.h>

using wmsg::proxy::acknowledge;
using wmsg::proxy::MessageStatus;
using wmsg::proxy::notifyResponse;
using wmsg::proxy::OutgoingPdu;
using wmsg::proxy::readSendConfirmation;
using wmsg::proxy::SendConfirmation;
using wmsg::proxy::writeSendRequest;
using Result = OutgoingPdu::Result;

Q_DECLARE_METATYPE(OutgoingPdu::Result)

namespace {

constexpr int kPrefixSize = 16;
const QDateTime kTaken = QDateTime::fromSecsSinceEpoch(0x65432100, Qt::UTC);

WMFMEntry number(const QString &value)
{
    return WMFMEntry(1, value);
}

} // namespace

class TestOutgoingPdu : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void freshMessage();
    void sameArgumentsGiveSameBytes();
    void priorities_data();
    void priorities();
    void classes_data();
    void classes();
    void dates_data();
    void dates();
    void expiries_data();
    void expiries();
    void deliveryTimes();
    void flags_data();
    void flags();
    void senderIsInserted();
    void recipients();
    void withoutRecipient();
    void withoutContent();
    void multipartWithoutParts();
    void onePartText();
    void utf16TextBecomesUtf8();
    void bodyIsCopied();
    void applicationsAreNamed();
    void headerTooLarge();
    void unreadable_data();
    void unreadable();
    void missingFile();
    void missingFolder();
    void diskIsFull();
    void othersReadIt();

    void notifyResponses();
    void acknowledges();
    void confirmations_data();
    void confirmations();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString saved(WMMSMsg &message) const
    {
        const quint32 result = message.saveAs(path("mail"), nullptr, nullptr);
        return result == MMS_SAVE_OK ? path("mail") : QString();
    }
    /// The send request that a message becomes.
    QByteArray requestOf(WMMSMsg message)
    {
        const OutgoingPdu pdu = writeSendRequest(saved(message), path("pdu"), "T1", kTaken);
        const QByteArray bytes = contentOf(path("pdu"));
        return pdu.result == Result::Written && pdu.size == bytes.size() ? bytes : QByteArray();
    }
    /// The fields of the send request that a message becomes, as they are decoded.
    WMMSMsg decodedRequestOf(const WMMSMsg &message)
    {
        QArray<char> pdu = bytesOf(requestOf(message));
        WMMSMsg decoded;
        decoded.clear();
        if (pdu.isEmpty() || decoded.construct(pdu, true) != MMS_DECODE_OK) {
            QTest::qFail("there is no send request", __FILE__, __LINE__);
        }
        return decoded;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestOutgoingPdu::freshMessage()
{
    QCOMPARE(toHex(requestOf(messageWith("Hi"))),
             toHex(fromHex("8C 80                  # a send request\n"
                           "98 54 31 00            # transaction T1\n"
                           "8D 92                  # version 1.2\n"
                           "85 04 65 43 21 00      # the date at which it was taken\n"
                           "89 01 81               # the network inserts the sender\n"
                           "97 2B 31 35 35 35 30 31 30 30 2F 54 59 50 45 3D 50 4C 4D 4E 00\n"
                           "96 04 EA 48 69 00      # subject\n"
                           "8A 80                  # personal\n"
                           "8F 81                  # normal\n"
                           "94 81                  # the sender is shown\n"
                           "84 A3                  # mixed multipart\n"
                           "01 16 02  09 83 81 EA 85 74 65 78 74 00  8E 74 65 78 74 00  C0 74 65 "
                           "78 74 00  48 69")));
}

void TestOutgoingPdu::sameArgumentsGiveSameBytes()
{
    const QByteArray once = requestOf(messageWith("Hi"));
    QVERIFY(!once.isEmpty());
    QCOMPARE(requestOf(messageWith("Hi")), once);
}

void TestOutgoingPdu::priorities_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("sent");
    QTest::newRow("0") << 0 << 128;
    QTest::newRow("1, as a fresh message has it") << 1 << 129;
    QTest::newRow("2") << 2 << 130;
    QTest::newRow("3 is none") << 3 << -1;
    QTest::newRow("127 is none") << 127 << -1;
    QTest::newRow("128") << 128 << 128;
    QTest::newRow("130") << 130 << 130;
    QTest::newRow("131 is none") << 131 << -1;
    QTest::newRow("255 is none") << 255 << -1;
}

void TestOutgoingPdu::priorities()
{
    QFETCH(int, given);
    QFETCH(int, sent);
    WMMSMsg message = messageWith("Hi");
    message.setPriority(static_cast<unsigned char>(given));
    const WMMSMsg request = decodedRequestOf(message);
    QCOMPARE(request.fieldIsPresent(MMS_FIELD_PRIORITY), sent >= 0);
    QCOMPARE(int(request.getPriority()), qMax(sent, 0));
}

void TestOutgoingPdu::classes_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<bool>("isSent");
    QTest::newRow("0") << 0 << false;
    QTest::newRow("127") << 127 << false;
    QTest::newRow("128") << 128 << true;
    QTest::newRow("131") << 131 << true;
    QTest::newRow("132") << 132 << false;
    QTest::newRow("255") << 255 << false;
}

void TestOutgoingPdu::classes()
{
    QFETCH(int, given);
    QFETCH(bool, isSent);
    WMMSMsg message = messageWith("Hi");
    message.setMsgClass(static_cast<unsigned char>(given));
    const WMMSMsg request = decodedRequestOf(message);
    QCOMPARE(request.fieldIsPresent(MMS_FIELD_MSG_CLASS), isSent);
    QCOMPARE(int(request.getMsgClass()), isSent ? given : 0);
}

void TestOutgoingPdu::dates_data()
{
    QTest::addColumn<QDateTime>("given");
    QTest::addColumn<QDateTime>("sent");
    const auto at = [](qint64 second) {
        return QDateTime::fromSecsSinceEpoch(second, Qt::UTC);
    };
    QTest::newRow("null") << QDateTime() << kTaken;
    QTest::newRow("the start of 1970") << at(0) << kTaken;
    QTest::newRow("early") << at(1) << at(1);
    QTest::newRow("late") << at(0x7FFFFFFF) << at(0x7FFFFFFF);
}

void TestOutgoingPdu::dates()
{
    QFETCH(QDateTime, given);
    WMMSMsg message = messageWith("Hi");
    message.setDate(given);
    QTEST(decodedRequestOf(message).getDate().toUTC(), "sent");
}

void TestOutgoingPdu::expiries_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<bool>("isSent");
    QTest::newRow("none") << -1 << false;
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << true;
    QTest::newRow("a week") << 604800 << true;
    QTest::newRow("the largest") << 0x7FFFFFFF << true;
}

void TestOutgoingPdu::expiries()
{
    QFETCH(int, given);
    QFETCH(bool, isSent);
    WMMSMsg message = messageWith("Hi");
    message.setExpiryTime(static_cast<unsigned int>(given));
    const WMMSMsg request = decodedRequestOf(message);
    QCOMPARE(request.fieldIsPresent(MMS_FIELD_EXPIRY), isSent);
    if (isSent) {
        QCOMPARE(int(request.getExpiryTime()), given);
    }
}

void TestOutgoingPdu::deliveryTimes()
{
    WMMSMsg message = messageWith("Hi");
    message.setDeliveryTime(QDateTime());
    QVERIFY(!decodedRequestOf(message).fieldIsPresent(MMS_FIELD_DELIVERY_TIME));
    message.setDeliveryTime(kTaken.addSecs(3600));
    QCOMPARE(decodedRequestOf(message).getDeliveryTime().toUTC(), kTaken.addSecs(3600));
}

void TestOutgoingPdu::flags_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("yes") << true;
    QTest::newRow("no") << false;
}

void TestOutgoingPdu::flags()
{
    QFETCH(bool, value);
    WMMSMsg message = messageWith("Hi");
    WMMSMsg request = decodedRequestOf(message);
    QVERIFY(!request.fieldIsPresent(MMS_FIELD_DELIVERY_REPORT));
    QVERIFY(!request.fieldIsPresent(MMS_FIELD_READ_REPORT));
    QVERIFY(request.getSenderVisibility());
    message.setDeliveryReportNecessity(value);
    message.setReadReportNecessity(value);
    message.setSenderVisibility(value);
    request = decodedRequestOf(message);
    QVERIFY(request.fieldIsPresent(MMS_FIELD_DELIVERY_REPORT));
    QVERIFY(request.fieldIsPresent(MMS_FIELD_READ_REPORT));
    QCOMPARE(request.getDeliveryReportNecessity(), value);
    QCOMPARE(request.getReadReportNecessity(), value);
    QCOMPARE(request.getSenderVisibility(), value);
    QCOMPARE(requestOf(message).count(fromHex(value ? "86 80" : "86 81")), 1);
}

void TestOutgoingPdu::senderIsInserted()
{
    WMMSMsg message = messageWith("Hi");
    message.setFrom(number("+15550199"));
    const QByteArray request = requestOf(message);
    QVERIFY(request.contains(fromHex("89 01 81 97")));
    QVERIFY(!request.contains("15550199"));
}

void TestOutgoingPdu::recipients()
{
    WMMSMsg message = messageWith("Hi");
    message.setTo(
        QList<WMFMEntry>{number(""), number("+1"), number("  "), WMFMEntry(0, "a@b.example")});
    message.setCc(QList<WMFMEntry>{number("+2"), WMFMEntry()});
    message.setBcc(number("+3"));
    WMMSMsg request = decodedRequestOf(message);
    QCOMPARE(request.getTo().size(), 2);
    QCOMPARE(request.getTo().at(0).getEntryVal(), "+1");
    QCOMPARE(request.getTo().at(1).getEntryVal(), "a@b.example");
    QCOMPARE(request.getCc().size(), 1);
    QCOMPARE(request.getCc().at(0).getEntryVal(), "+2");
    QCOMPARE(request.getBcc().at(0).getEntryVal(), "+3");

    message.setTo(QList<WMFMEntry>());
    message.setCc(QList<WMFMEntry>());
    request = decodedRequestOf(message);
    QVERIFY(request.getTo().isEmpty());
    QCOMPARE(request.getBcc().size(), 1);
}

void TestOutgoingPdu::withoutRecipient()
{
    WMMSMsg message = messageWith("Hi");
    for (const auto &nobody : {QList<WMFMEntry>(), QList<WMFMEntry>{number(""), number(" ")}}) {
        message.setTo(nobody);
        const OutgoingPdu pdu = writeSendRequest(saved(message), path("pdu"), "T1", kTaken);
        QCOMPARE(pdu.result, Result::Refused);
        QCOMPARE(pdu.text, "the message has no recipient");
        QVERIFY(!QFile::exists(path("pdu")));
    }
}

void TestOutgoingPdu::withoutContent()
{
    WMMSMsg message;
    message.setTo(number("+1"));
    message.setSubject("nothing else");
    QVERIFY(requestOf(message).endsWith(fromHex("84 A3 00")));
}

void TestOutgoingPdu::multipartWithoutParts()
{
    WMMSMsg message;
    message.setTo(number("+1"));
    message.setContentType(typeOf(kMixed));
    QVERIFY(requestOf(message).endsWith(fromHex("84 A3 00")));
}

void TestOutgoingPdu::onePartText()
{
    WMMSMsg message;
    message.setTo(number("+1"));
    message.setContentType(typeOf("text/plain"));
    message.getMultiParts().setData(bytesOf("Hi there"));
    QVERIFY(requestOf(message).endsWith(fromHex("84 83") + "Hi there"));
}

void TestOutgoingPdu::utf16TextBecomesUtf8()
{
    const QByteArray header = fromHex("97 2B 31 00  84 05 83 81 02 03 F6"); // charset 1014
    const QByteArray mail =
        fromHex("12 10 FF 00 00000000 00000000 00000000") + header + fromHex("E9 00 48 00 69 00");
    const OutgoingPdu pdu =
        writeSendRequest(fileWith(path("mail"), mail), path("pdu"), "T1", kTaken);
    QCOMPARE(pdu.result, Result::Written);
    const QByteArray request = contentOf(path("pdu"));
    QCOMPARE(toHex(request.last(7)), toHex(fromHex("84 01 83 C3 A9 48 69")));
}

void TestOutgoingPdu::bodyIsCopied()
{
    WMMSMsg message;
    message.setTo(number("+1"));
    WMMSContentType type = typeOf(kRelated);
    type.setParamStart("<smil>");
    type.setParamType("application/smil");
    message.setContentType(type);
    auto &parts = message.getMultiParts().getSubMmsMultipartList();
    parts.append(partOf("application/smil", "<smil/>", "smil"));
    parts.append(partOf("image/jpeg", manyBytes(300000), "cat", "cat.jpg"));
    const QByteArray request = requestOf(message);
    const QByteArray mail = contentOf(path("mail"));
    const qsizetype bodySize = qFromLittleEndian<quint32>(mail.constData() + 8);
    QVERIFY(bodySize > 300000);
    QVERIFY(request.last(bodySize) == mail.last(bodySize));
    WMMSMsg decoded = decodedRequestOf(message);
    QCOMPARE(decoded.getMultiParts().getSubMmsMultipartList().size(), 2);
    QCOMPARE(decoded.getContentType().getParamStart(), "<smil>");
    QCOMPARE(decoded.getContentType().getParamType(), "application/smil");
}

void TestOutgoingPdu::applicationsAreNamed()
{
    WMMSMsg message = messageWith("Hi");
    message.setAppID("chess");
    message.setReplyAppID("chess-answers");
    const WMMSMsg request = decodedRequestOf(message);
    QCOMPARE(request.getAppID(), "chess");
    QCOMPARE(request.getReplyAppID(), "chess-answers");
}

void TestOutgoingPdu::headerTooLarge()
{
    // What fits as a stored message, whose header is written with its body, fits here no more.
    WMMSMsg message = messageWith("Hi");
    QByteArray addresses;
    for (int i = 0; i < 1200; ++i) {
        addresses += fromHex("97 2B 31 35 35 35 30 31 30 30 00");
    }
    const QByteArray mail =
        fromHex("12 10 FF 00 00000000 00000000 00000000") + addresses + fromHex("84 A3 00");
    const OutgoingPdu pdu =
        writeSendRequest(fileWith(path("mail"), mail), path("pdu"), "T1", kTaken);
    QCOMPARE(pdu.result, Result::Refused);
    QCOMPARE(pdu.text, "the header is too large");
    QVERIFY(!QFile::exists(path("pdu")));
}

void TestOutgoingPdu::unreadable_data()
{
    QTest::addColumn<QByteArray>("mail");
    const QByteArray prefix = fromHex("12 10 FF 00 00000000 00000000 00000000");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("short") << QByteArray(prefix.first(15));
    QTest::newRow("old layout") << QByteArray(100, '\0');
    QTest::newRow("unknown field") << QByteArray(prefix + fromHex("97 2B 31 00  B0 80"));
    QTest::newRow("cut body") << QByteArray(
        prefix + fromHex("97 2B 31 00  84 A3 01 0C 20 03 83 81 EA 48"));
}

void TestOutgoingPdu::unreadable()
{
    QFETCH(QByteArray, mail);
    const OutgoingPdu pdu =
        writeSendRequest(fileWith(path("mail"), mail), path("pdu"), "T1", kTaken);
    QCOMPARE(pdu.result, Result::Refused);
    QVERIFY2(pdu.text.startsWith("the mail file does not decode: result 1"), qPrintable(pdu.text));
    QVERIFY(!QFile::exists(path("pdu")));
}

void TestOutgoingPdu::missingFile()
{
    const OutgoingPdu pdu = writeSendRequest(path("missing"), path("pdu"), "T1", kTaken);
    QCOMPARE(pdu.result, Result::Failed);
    QCOMPARE(pdu.text, path("missing") + ": No such file or directory");
}

void TestOutgoingPdu::missingFolder()
{
    WMMSMsg message = messageWith("Hi");
    const OutgoingPdu pdu = writeSendRequest(saved(message), path("no/pdu"), "T1", kTaken);
    QCOMPARE(pdu.result, Result::Failed);
    QCOMPARE(pdu.text, path("no/pdu") + ": No such file or directory");
}

void TestOutgoingPdu::diskIsFull()
{
    WMMSMsg message = messageWith("Hi");
    message.getMultiParts().getSubMmsMultipartList().append(
        partOf("image/jpeg", manyBytes(100000)));
    const QString mail = saved(message);
    fileWith(path("pdu"), "as it was");
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {50000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const OutgoingPdu pdu = writeSendRequest(mail, path("pdu"), "T1", kTaken);
    ::setrlimit(RLIMIT_FSIZE, &before);
    QCOMPARE(pdu.result, Result::Failed);
    QCOMPARE(pdu.text, path("pdu") + ": File too large");
    QCOMPARE(contentOf(path("pdu")), "as it was");
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), (QStringList{"mail", "pdu"}));
}

void TestOutgoingPdu::othersReadIt()
{
    if (!Witness::isPresent()) {
        QSKIP("there is no tshark");
    }
    WMMSMsg message = messageWith(QString::fromUtf8("Gr\u00fc\u00dfe"));
    message.setCc(WMFMEntry(0, "ann@example.org"));
    message.setExpiryTime(3600);
    message.setDeliveryReportNecessity(true);
    message.getMultiParts().getSubMmsMultipartList().append(
        partOf("image/jpeg", manyBytes(5000), "cat", "cat.jpg"));
    const QByteArray request = requestOf(message);
    Witness witness;
    QCOMPARE(witness.complaintsAbout(request, Direction::Request), 0);
    const Testimony testimony = witness.read(request, Direction::Request);
    const auto fields = testimony.fields();
    QCOMPARE(fields.value("message_type"), QStringList{"0x80"});
    QCOMPARE(fields.value("transaction_id"), QStringList{"T1"});
    QCOMPARE(fields.value("to"), QStringList{"+15550100/TYPE=PLMN"});
    QCOMPARE(fields.value("cc"), QStringList{"ann@example.org"});
    QCOMPARE(fields.value("from"), QStringList{"<insert address>"});
    QCOMPARE(fields.value("priority"), QStringList{"0x81"});
    QCOMPARE(testimony.parts().size(), 2);
    QVERIFY(testimony.parts().at(1).data == manyBytes(5000));
    for (const QByteArray &answer :
         {notifyResponse("T1", MessageStatus::Retrieved), acknowledge("T1")}) {
        QCOMPARE(witness.complaintsAbout(answer, Direction::Request), 0);
    }
}

void TestOutgoingPdu::notifyResponses()
{
    QCOMPARE(toHex(notifyResponse("T1", MessageStatus::Retrieved)),
             "8C 83 98 54 31 00 8D 92 95 81 91 80");
    QCOMPARE(toHex(notifyResponse("T2", MessageStatus::Unrecognised, false)),
             "8C 83 98 54 32 00 8D 92 95 84 91 81");
}

void TestOutgoingPdu::acknowledges()
{
    QCOMPARE(toHex(acknowledge("T1")), "8C 85 98 54 31 00 8D 92 91 80");
    QCOMPARE(toHex(acknowledge("T1", false)), "8C 85 98 54 31 00 8D 92 91 81");
}

void TestOutgoingPdu::confirmations_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("messageId");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isTransient");
    const auto row = [](const char *name, const char *hex, int status, const char *messageId,
                        const char *text, bool isTransient) {
        QTest::newRow(name) << fromHex(hex) << status << QString(messageId) << QString(text)
                            << isTransient;
    };
    const char *none = "the answer is no send confirmation";
    row("accepted", "8C 81 98 54 31 00 8D 92 92 80 8B 6D 31 00", 128, "m1", "", false);
    row("refused", "8C 81 98 54 31 00 8D 90 92 82 93 04 EA 6E 6F 00", 130, "", "no", false);
    row("unresolved address", "8C 81 98 54 31 00 8D 90 92 84", 132, "", "", false);
    row("network problem", "8C 81 98 54 31 00 8D 90 92 86", 134, "", "", true);
    row("just not transient", "8C 81 98 54 31 00 8D 90 92 BF", 191, "", "", false);
    row("first transient", "8C 81 98 54 31 00 8D 90 92 C0", 192, "", "", true);
    row("last transient", "8C 81 98 54 31 00 8D 90 92 DF", 223, "", "", true);
    row("permanent", "8C 81 98 54 31 00 8D 90 92 E0", 224, "", "", false);
    row("last known", "8C 81 98 54 31 00 8D 90 92 EA", 234, "", "", false);
    row("of a future", "8C 81 98 54 31 00 8D 90 92 FF", 224, "", "", false);
    row("without transaction", "8C 81 8D 90 92 80", 128, "", "", false);
    row("another transaction", "8C 81 98 54 32 00 8D 90 92 80", 0, "",
        "the answer confirms another transaction", false);
    row("without status", "8C 81 98 54 31 00 8D 90", 0, "", "the answer has no response status",
        false);
    row("status below 128", "8C 81 98 54 31 00 8D 90 92 7F", 0, "",
        "the answer has no response status", false);
    row("nothing", "", 0, "", none, false);
    row("a page", "3C 68 74 6D 6C 3E", 0, "", none, false);
    row("a notification", "8C 82 98 54 31 00 8D 90 8A 80 8E 01 01 88 03 81 01 0A 83 68 00", 0, "",
        none, false);
    row("cut", "8C 81 98 54 31 00 8D", 0, "", none, false);
    row("fields that nobody knows", "8C 81 98 54 31 00 8D 92 92 80 8B 6D 31 00 B1 81", 128, "m1",
        "", false);
}

void TestOutgoingPdu::confirmations()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, status);
    const SendConfirmation confirmation = readSendConfirmation(answer, "T1");
    QCOMPARE(int(confirmation.responseStatus), status);
    QTEST(confirmation.messageId, "messageId");
    QTEST(confirmation.text, "text");
    QTEST(confirmation.isTransient(), "isTransient");
    QCOMPARE(confirmation.isValid(), status != 0);
    QCOMPARE(confirmation.isAccepted(), status == 128);
}

QTEST_GUILESS_MAIN(TestOutgoingPdu)
#include "tst_outgoing_pdu.moc"
