// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDirIterator>
#include <QtTest/QtTest>

/// Messages of real handsets, gateways and conformance cases. They are not part of the project: the
/// folder is named by the environment variable WMSG_CORPUS, or lies beside the checkout, and
/// without it there is nothing to test.
///
/// What is expected was worked out from the bytes by a reader of its own, and the types, sizes and
/// bytes of all parts were found the same by tshark. Texts and bytes are held as digests, to copy
/// nothing: 8 hex digits of SHA-256.

namespace {

const char *const kRelated = "application/vnd.wap.multipart.related";
const char *const kMixed = "application/vnd.wap.multipart.mixed";

struct ExpectedPart {
    const char *type;
    int size; ///< Of the data, as the library keeps them.
    const char *digest; ///< Of id, location and data.
};

struct ExpectedMessage {
    const char *file;
    int result;
    int pduType;
    const char *transactionId;
    int version;
    qint64 date; ///< Seconds since 1970 in UTC; 0 without a date.
    int headerLength; ///< 0 where no content type ends the header.
    const char *digest; ///< Of subject, sender, recipients, start and type.
    const char *contentType;
    QList<ExpectedPart> parts;
};

// Where what is read is not what stands in the file: the UTF-16 text of con-214 becomes UTF-8, the
// subject of con-211 loses its byte-order mark, a part without a location gets its id as one, and
// parameters with a name in text are dropped. The charsets of the texts in m.mms and openwave.mms
// are not looked at: their bytes stay as they are. images_are_cut_off_debug holds all the bytes
// that its lengths announce.
const ExpectedMessage kMessages[] = {
    // clang-format off
    {"27d0a048cd79555de05283a22372b0eb.mms", 100, 0x80, "3-31cb", 0x10, 1085321698, 106, "b3614173", kRelated, {{"image/vnd.wap.wbmp", 134, "5a2874b1"}, {"text/plain", 19, "27c1f0b3"}, {"application/smil", 379, "9d09021d"}}},
    {"BTMMS.MMS", 100, 0x84, "", 0x10, 1043114224, 61, "4fce280c", kRelated, {{"application/smil", 494, "41678bb3"}, {"image/gif", 10430, "304efe99"}, {"audio/amr", 9638, "e58a0661"}, {"text/plain", 25, "e3098252"}}},
    {"NOWMMS.MMS", 100, 0x84, "", 0x10, 1037755669, 97, "03f90be6", kRelated, {{"application/smil", 633, "3499ed59"}, {"image/gif", 4736, "684f73d3"}, {"text/plain", 17, "c940664c"}, {"audio/amr", 9638, "e58a0661"}, {"text/plain", 16, "3b05d586"}}},
    {"SEC-SGHS300M.mms", 100, 0x80, "31887", 0x10, 0, 52, "dcba67ad", kMixed, {{"text/plain", 2, "fc659a99"}}},
    {"SIMPLE.MMS", 100, 0x84, "", 0x10, 1040419616, 28, "1843b887", kRelated, {{"text/plain", 58, "10efa83a"}}},
    {"SonyEricssonT310-R201.mms", 100, 0x80, "1-8db", 0x10, 1079595034, 76, "628b0711", kRelated, {{"image/gif", 2940, "4d703c48"}, {"text/plain", 8, "855ff6fd"}, {"audio/midi", 5726, "251836b7"}, {"application/smil", 415, "2a7183a7"}}},
    {"TOMSLOT.MMS", 100, 0x84, "", 0x10, 1045367313, 84, "b0286acf", kRelated, {{"application/smil", 900, "e0dd6f79"}, {"image/jpeg", 3212, "f784ed35"}, {"image/jpeg", 3105, "50fb838b"}, {"image/jpeg", 2768, "8944143c"}, {"image/jpeg", 3006, "9a59d7e6"}, {"image/jpeg", 2971, "c42c58a9"}, {"text/plain", 21, "7a0b2a8a"}, {"audio/amr", 27222, "6d3dc5e5"}}},
    {"gallery2test.mms", 100, 0x80, "1118775337", 0x10, 0, 90, "8ef48a2c", kRelated, {{"application/smil", 418, "698064d6"}, {"text/plain", 3, "d261a925"}, {"image/jpeg", 18395, "1dfff22c"}}},
    {"iPhone.mms", 100, 0x80, "1262957356-3", 0x12, 0, 68, "16be5015", kRelated, {{"application/smil", 300, "ed556e2b"}, {"image/jpeg", 213580, "90cd1830"}}},
    {"images_are_cut_off_debug.mms", 100, 0x80, "2112410527", 0x10, 0, 87, "312eaa13", kRelated, {{"image/jpeg", 88253, "cb73d147"}, {"application/smil", 316, "522b5459"}}},
    {"m.mms", 100, 0x84, "0000000001", 0x10, 1028898482, 79, "3ece397b", kRelated, {{"text/plain", 5, "3a095933"}, {"application/smil", 1440, "7263bc28"}, {"text/plain", 6, "154620c7"}, {"text/plain", 17, "7c5d6f53"}, {"audio/amr", 25926, "b15a85cd"}, {"text/plain", 105, "95826d39"}, {"text/plain", 14, "16cc131c"}, {"text/plain", 13, "42327cfd"}, {"text/plain", 4, "b35f553a"}}},
    {"openwave.mms", 100, 0x80, "1067263672", 0x10, 0, 104, "bb3c3b3b", kRelated, {{"application/smil", 356, "45c50725"}, {"text/plain", 6, "a52c7b06"}}},
    {"projekt_exempel.mms", 100, 0x80, "4-fc60", 0x10, 1085325220, 82, "b90b1f99", kRelated, {{"text/plain", 18, "160e33ee"}, {"image/gif", 1891, "b1e4c5b2"}, {"application/smil", 381, "36a9e6aa"}}},
    {"ni-mms-1-3-con-271.mms", 100, 0x82, "OgQKKB", 0x10, 0, 0, "a5c9d0fb", nullptr, {}},
    {"ni-mms-1-3-con-272.mms", 100, 0x82, "OgQKKB", 0x10, 0, 0, "0a6a386a", nullptr, {}},
    {"rc-mms-1-3-con-210.mms", 100, 0x84, "00000000210", 0x13, 1306831350, 121, "cca26f1e", kRelated, {{"application/smil", 305, "89976bac"}, {"image/gif", 2213, "97975639"}}},
    {"rc-mms-1-3-con-211.mms", 100, 0x84, "00000000211", 0x13, 1307109691, 135, "3e4a5963", kRelated, {{"application/smil", 305, "2543c4b5"}, {"text/plain", 14, "9e50fbe5"}}},
    {"rc-mms-1-3-con-212.mms", 100, 0x84, "00000000212", 0x13, 1307094321, 94, "a75cf78d", kMixed, {{"text/plain", 59, "ddce60ec"}}},
    {"rc-mms-1-3-con-213.mms", 100, 0x84, "00000000213", 0x13, 1307094765, 94, "1738e025", kMixed, {{"text/plain", 113, "9377a420"}}},
    {"rc-mms-1-3-con-214.mms", 100, 0x84, "00000000214", 0x13, 1307104876, 94, "18338e78", kMixed, {{"text/plain", 110, "b7550b17"}}},
    {"rc-mms-1-3-con-216.mms", 100, 0x84, "00000000216", 0x13, 1307106489, 121, "58852a6e", kRelated, {{"application/smil", 302, "894600b7"}, {"image/jpeg", 10934, "86f16e7f"}}},
    {"rc-mms-1-3-con-220.mms", 100, 0x84, "00000000220", 0x13, 1307107647, 121, "581b47e6", kRelated, {{"application/smil", 305, "58d3a9ef"}, {"image/gif", 3944, "0b9dc42c"}}},
    {"rc-mms-1-3-con-224.mms", 100, 0x84, "00000000224", 0x13, 1307108280, 121, "81829b06", kRelated, {{"application/smil", 314, "3a1f25c9"}, {"image/gif", 3731, "824e8d6e"}}},
    {"rc-mms-1-3-con-228.mms", 100, 0x84, "00000000228", 0x13, 1307108802, 121, "a3c4ebb2", kRelated, {{"application/smil", 305, "c4fba5ea"}, {"image/vnd.wap.wbmp", 2405, "5803c383"}}},
    {"rc-mms-1-3-con-271.mms", 100, 0x84, "00000000271", 0x13, 1307093010, 147, "e80078eb", kRelated, {{"application/smil", 305, "22e6f1e2"}, {"text/plain", 14, "0d6b5677"}}},
    // A header with a name in text stands behind To. Its first letter is read as the length of a long
    // integer, and the field id that the next letters make is above 24.
    {"rc-mms-1-3-con-281.mms", 104, 0x84, "00000000281", 0x13, 1307111822, 0, "0cdbbdb3", nullptr, {}},
    // The message class is a text. Its first letter is taken as the class; the second is read as the
    // length of a field id, which is above 24.
    {"rc-mms-1-3-con-282.mms", 104, 0x84, "00000000282", 0x13, 1307111107, 0, "6f750a10", nullptr, {}},
    {"sr-mms-mixed.mms", 100, 0x80, "000000000001", 0x10, 0, 47, "5b52527b", kMixed, {{"text/plain", 15, "3d6dc665"}}},
    {"sr-mms-related-multi-to.mms", 100, 0x80, "000000000002", 0x10, 0, 98, "2811dc89", kRelated, {{"application/smil", 305, "3b4dce5e"}, {"text/plain", 15, "3d6dc665"}}},
    // clang-format on
};

QString folder()
{
    const QString chosen = qEnvironmentVariable("WMSG_CORPUS");
    return chosen.isEmpty() ? WMSG_TEST_DATA "/../../../shared/corpus" : chosen;
}

/// The path of the file of that name, in the folder or below it; empty when there is none.
QString find(const QString &name)
{
    QDirIterator files(folder(), {name}, QDir::Files, QDirIterator::Subdirectories);
    return files.hasNext() ? files.next() : QString();
}

QString digest(const QString &text, const QByteArray &data = QByteArray())
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8() + data, QCryptographicHash::Sha256).toHex().left(8));
}

QString describe(WMMSMsg &message)
{
    QStringList recipients;
    for (const WMFMEntry &entry : message.getTo()) {
        recipients.append(entry.getEntryVal());
    }
    const WMMSContentType type = message.getContentType();
    return QStringList({message.getSubject(), message.getFrom().getEntryVal(), recipients.join(','),
                        type.getParamStart(), type.getParamType()})
        .join('\n');
}

QList<WMMSMultipart> partsOf(const WMMSMsg &message)
{
    const auto *parts = message.getMultiParts().subParts();
    return parts ? *parts : QList<WMMSMultipart>();
}

} // namespace

class TestCorpus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void decodes_data();
    void decodes();

private:
    static void compareHeader(WMMSMsg &message, const ExpectedMessage &expected);
    static void compareParts(const WMMSMsg &message, const ExpectedMessage &expected);
    static void compareEncoded(WMMSMsg &message);
};

void TestCorpus::initTestCase()
{
    appLogModuleStream = appLogDiscardStream();
    if (!QFileInfo(folder()).isDir()) {
        QSKIP("there is no folder of real messages: set WMSG_CORPUS");
    }
}

void TestCorpus::decodes_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < int(std::size(kMessages)); ++row) {
        QTest::newRow(kMessages[row].file) << row;
    }
}

void TestCorpus::decodes()
{
    QFETCH(int, row);
    const ExpectedMessage &expected = kMessages[row];
    QFile file(find(expected.file));
    QVERIFY2(file.open(QIODevice::ReadOnly), expected.file);
    QArray<char> pdu{QByteArrayView(file.readAll())};
    WMMSMsg message;
    QCOMPARE(int(message.construct(pdu, true)), expected.result);
    compareHeader(message, expected);
    compareParts(message, expected);
    if (expected.result == MMS_DECODE_OK) {
        compareEncoded(message);
    }
}

void TestCorpus::compareHeader(WMMSMsg &message, const ExpectedMessage &expected)
{
    QCOMPARE(int(message.getPDUType()), expected.pduType);
    QCOMPARE(message.getTransactionID(), expected.transactionId);
    QCOMPARE(int(message.getVersion()), expected.version);
    QCOMPARE(message.fieldIsPresent(MMS_FIELD_DATE), expected.date != 0);
    if (expected.date != 0) {
        QCOMPARE(message.getDate().toSecsSinceEpoch(), expected.date);
    }
    QCOMPARE(message.headerLength(), expected.headerLength);
    QVERIFY2(digest(describe(message)) == expected.digest, qPrintable(describe(message)));
    QCOMPARE(message.getContentType().getMimeType(), QString(expected.contentType));
}

void TestCorpus::compareParts(const WMMSMsg &message, const ExpectedMessage &expected)
{
    const QList<WMMSMultipart> parts = partsOf(message);
    QCOMPARE(parts.size(), expected.parts.size());
    for (qsizetype n = 0; n < parts.size(); ++n) {
        const QString names = parts[n].getContentID() + '\n' + parts[n].getContentLocation() + '\n';
        QCOMPARE(parts[n].getContentType().getMimeType(), expected.parts[n].type);
        QCOMPARE(parts[n].getData().size(), expected.parts[n].size);
        QVERIFY2(digest(names, parts[n].getData().toByteArray()) == expected.parts[n].digest,
                 qPrintable(names));
    }
}

/// What was decoded is encoded, and decodes to the same header texts and parts.
void TestCorpus::compareEncoded(WMMSMsg &message)
{
    QArray<char> pdu;
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), quint32(MMS_ENCODE_OK));
    WMMSMsg again;
    QCOMPARE(again.construct(pdu, true), quint32(MMS_DECODE_OK));
    QCOMPARE(again.getPDUType(), message.getPDUType());
    QCOMPARE(again.getTransactionID(), message.getTransactionID());
    const QList<WMMSMultipart> before = partsOf(message);
    const QList<WMMSMultipart> after = partsOf(again);
    QCOMPARE(after.size(), before.size());
    for (qsizetype n = 0; n < after.size(); ++n) {
        QCOMPARE(after[n].getContentType().getMimeType(), before[n].getContentType().getMimeType());
        QCOMPARE(after[n].getContentID(), before[n].getContentID());
        QVERIFY(after[n].getData() == before[n].getData());
    }
}

QTEST_GUILESS_MAIN(TestCorpus)
#include "tst_corpus.moc"
