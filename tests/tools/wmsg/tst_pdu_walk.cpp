// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/pdu_walk.h"

#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/support/hex.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <memory>

using wmsg::cli::ByteRange;
using wmsg::cli::FileKind;
using wmsg::cli::Finding;
using wmsg::cli::PduWalk;
using wmsg::cli::WalkedPart;

namespace {

/// A walk over bytes, with its ranges.
struct Walked {
    explicit Walked(const QByteArray &bytes, FileKind kind = FileKind::Pdu)
        : file(bytes), walk([this](const ByteRange &range) { ranges.append(range); })
    {
        result = walk.walk(file, kind);
    }
    [[nodiscard]] QStringList lines() const
    {
        QStringList lines;
        for (const ByteRange &range : ranges) {
            lines += toHex(QByteArrayView(file.constData() + range.offset, range.length)) + " | "
                + range.field + ": " + range.meaning;
        }
        return lines;
    }
    [[nodiscard]] QString warnings() const
    {
        QStringList lines;
        for (const Finding &warning : walk.warnings()) {
            lines += QString("%1 %2: %3").arg(warning.offset).arg(warning.field, warning.message);
        }
        return lines.join('\n');
    }
    /// Empty when the ranges are the file, each byte once.
    [[nodiscard]] QString gap() const
    {
        qint32 covered = 0;
        for (const ByteRange &range : ranges) {
            if (range.offset != covered || range.length <= 0 || range.meaning.isEmpty()) {
                return QString("range at %1 of %2 bytes behind %3")
                    .arg(range.offset)
                    .arg(range.length)
                    .arg(covered);
            }
            covered += range.length;
        }
        return covered == file.size() ? QString() : QString("ends at %1").arg(covered);
    }

    QArray<char> file;
    QList<ByteRange> ranges;
    PduWalk walk;
    quint32 result;
};

quint32 libraryResult(const QByteArray &bytes, FileKind kind, WMMSMsg &message)
{
    if (kind == FileKind::Pdu) {
        QArray<char> pdu(bytes);
        return message.construct(pdu, true);
    }
    const QTemporaryDir folder;
    QFile file(folder.filePath("m.mms"));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        return 0;
    }
    file.close();
    return message.construct(file.fileName(), true);
}

/// Where the parts that the walk found differ from those that the library made; empty: nowhere.
QString difference(const QList<WalkedPart> &walked, const QValueList<WMMSMultipart> *parts,
                   const QArray<char> &file)
{
    const qsizetype count = parts ? parts->size() : 0;
    if (walked.size() != count) {
        return QString("%1 parts instead of %2").arg(walked.size()).arg(count);
    }
    for (qsizetype n = 0; n < count; ++n) {
        const WMMSMultipart &part = (*parts)[n];
        const WalkedPart &mine = walked[n];
        const bool isText = part.getContentType().getMainType().toLower() == "text";
        QByteArrayView bytes(file.constData() + mine.dataOffset, mine.dataLength);
        if (part.getContentType().isMimeType(QLatin1String("application/smil"))
            && bytes.endsWith('\0')) {
            bytes.chop(1);
        }
        if (mine.contentType.getMimeType() != part.getContentType().getMimeType()
            || mine.contentId != part.getContentID()
            || mine.contentLocation != part.getContentLocation()
            || (!isText && mine.contentType.params() != part.getContentType().params())
            || (!isText && bytes != part.getData().view())) {
            return mine.field + " differs";
        }
        const QString inside = difference(mine.parts, part.subParts(), file);
        if (!inside.isEmpty()) {
            return inside;
        }
    }
    return {};
}

/// What is wrong with the walk over `bytes`; empty: nothing.
QString problemWith(const QByteArray &bytes, FileKind kind)
{
    const Walked walked(bytes, kind);
    WMMSMsg message;
    const quint32 expected = libraryResult(bytes, kind, message);
    if (walked.result != expected) {
        return QString("result %1 instead of %2").arg(walked.result).arg(expected);
    }
    if (!walked.gap().isEmpty()) {
        return walked.gap();
    }
    const bool hasFailed = expected != MMS_DECODE_OK;
    if (hasFailed != walked.walk.failure().has_value()) {
        return "a failure without a place, or a place without a failure";
    }
    if (hasFailed && walked.walk.failure()->offset > bytes.size()) {
        return "the failure lies behind the file";
    }
    return difference(walked.walk.parts(), message.getMultiParts().subParts(), walked.file);
}

QByteArray readHex(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? fromHex(file.readAll()) : QByteArray();
}

FileKind kindOfFolder(const QString &folder)
{
    return folder == "mail" ? FileKind::MailFile : FileKind::Pdu;
}

} // namespace

class TestPduWalk : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void vectors_data();
    void vectors();
    void inputs_data();
    void inputs();
    void everyTruncation_data() { inputs_data(); }
    void everyTruncation();
    void everyByteChanged_data() { inputs_data(); }
    void everyByteChanged();
    void kinds();
    void places_data();
    void places();
    void warnings_data();
    void warnings();
    void warningsAreBounded();
    void ranges();
    void nestingHasALimit();
};

void TestPduWalk::vectors_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(WMSG_TEST_DATA "/vectors");
    for (const QString &name : folder.entryList({"pdu-*.jsonl", "mailfile.jsonl"})) {
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
    }
}

// Its verdict is the library's on every message of the vectors.
void TestPduWalk::vectors()
{
    QFETCH(QString, file);
    QFile lines(file);
    QVERIFY(lines.open(QIODevice::ReadOnly));
    int walked = 0;
    while (!lines.atEnd()) {
        const QJsonObject vector = QJsonDocument::fromJson(lines.readLine()).object();
        const QString operation = vector["op"].toString();
        const FileKind kind =
            operation.startsWith("mailfile.") ? FileKind::MailFile : FileKind::Pdu;
        for (const QJsonValue &hex :
             {vector["in"]["hex"], vector["out"]["hex"], vector["out"]["file"]}) {
            if (!hex.isString()) {
                continue;
            }
            const QByteArray bytes = QByteArray::fromHex(hex.toString().toLatin1());
            const QString problem = problemWith(bytes, kind);
            QVERIFY2(problem.isEmpty(), qPrintable(vector["id"].toString() + ": " + problem));
            ++walked;
        }
        const bool decodes = operation.endsWith(".construct")
            && vector["in"]["decodeBody"].toBool(true) && vector["in"]["hex"].isString();
        if (decodes) {
            const QByteArray bytes = QByteArray::fromHex(vector["in"]["hex"].toString().toLatin1());
            QCOMPARE(int(Walked(bytes, kind).result), vector["out"]["ret"].toInt());
        }
    }
    QVERIFY(walked > 50);
}

void TestPduWalk::inputs_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<FileKind>("kind");
    for (const QString &name : {QString("pdu"), QString("mail")}) {
        const QDir folder(WMSG_TEST_DATA "/" + name);
        for (const QString &file : folder.entryList({"*.hex"})) {
            QTest::newRow(qPrintable(name + '/' + file))
                << readHex(folder.filePath(file)) << kindOfFolder(name);
        }
    }
}

void TestPduWalk::inputs()
{
    QFETCH(QByteArray, bytes);
    QFETCH(FileKind, kind);
    QVERIFY(!bytes.isEmpty());
    QCOMPARE(problemWith(bytes, kind), QString());
}

void TestPduWalk::everyTruncation()
{
    QFETCH(QByteArray, bytes);
    QFETCH(FileKind, kind);
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        const QString problem = problemWith(bytes.left(size), kind);
        QVERIFY2(problem.isEmpty(), qPrintable(QString("%1 bytes: ").arg(size) + problem));
    }
}

void TestPduWalk::everyByteChanged()
{
    QFETCH(QByteArray, bytes);
    QFETCH(FileKind, kind);
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        for (const int value : {0x00, 0x01, 0x1F, 0x22, 0x7F, 0x80, 0x85, 0xC0, 0xFF}) {
            QByteArray changed = bytes;
            changed[at] = char(value);
            const QString problem = problemWith(changed, kind);
            QVERIFY2(problem.isEmpty(),
                     qPrintable(QString("%1 at %2: ").arg(value, 0, 16).arg(at) + problem));
        }
    }
}

void TestPduWalk::kinds()
{
    QCOMPARE(wmsg::cli::kindOf("\x12\x10"), FileKind::MailFile);
    QCOMPARE(wmsg::cli::kindOf("\x12\x11"), FileKind::Pdu);
    QCOMPARE(wmsg::cli::kindOf("\x12"), FileKind::Pdu);
    QCOMPARE(wmsg::cli::kindOf(""), FileKind::Pdu);
}

void TestPduWalk::places_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const char *hex, int result, int offset,
                        const char *field, const char *message) {
        QTest::newRow(name) << QByteArray(hex) << result << offset << field << message;
    };
    // clang-format off
    row("id is cut",             "8C81 0285",       113, 2, "id", "the data end inside a field id");
    row("id 0",                  "8C81 80",         110, 2, "0", "only the ids 1 to 24 are known");
    row("id 25",                 "8C81 99",         104, 2, "25", "only the ids 1 to 24 are known");
    row("byte is missing",       "8C",              113, 1, "Message-Type", "the data end inside the value");
    row("neither yes nor no",    "8682",            113, 1, "Delivery-Report", "130 is neither yes (128) nor no (129)");
    row("neither hide nor show", "9400",            113, 1, "Sender-Visibility", "0 is neither hide (128) nor show (129)");
    row("version is cut",        "8D02 12",         113, 1, "MMS-Version", "the data end inside the version");
    row("size is cut",           "8E04 010203",     113, 1, "Message-Size", "the data end inside the size");
    row("date is cut",           "8504 66",         113, 1, "Date", "the data end inside the date");
    row("text is missing",       "98",              113, 1, "Transaction-Id", "the data end inside text");
    row("address past the end",  "97 05 EA 41",     113, 3, "To", "the text says 4 bytes and 1 remain");
    row("text under charset",    "93 00",           100, 0, "", "");
    row("length under charset",  "93 01 02 0000 00", 113, 2, "Response-Text", "the length of the text, 1, is less than its charset takes");
    row("From of another kind",  "89 02 82 00",     113, 2, "From", "130 is neither an address (128) nor its absence (129)");
    row("From without address",  "89 02 80",        113, 3, "From", "the data end inside the length of the text");
    row("expiry of another kind", "88 03 82 01 05", 113, 2, "Expiry", "130 is neither a date (128) nor a duration (129)");
    row("expiry is cut",         "88 03 81 02 05",  113, 3, "Expiry", "the data end inside the time");
    row("media type is cut",     "84 03 02 01",     113, 2, "Content-Type", "the data end inside the media type");
    row("parameter is cut",      "84 06 B3 8A",     113, 4, "Content-Type", "the data end inside start");
    row("parameters end early",  "84 06 B3",        113, 3, "Content-Type", "the data end inside the value");
    row("count is missing",      "84 A3",           111, 2, "part 1", "the data end after 0 of 163 parts");
    row("second part is missing", "84 A3 02 01 00 83", 111, 6, "part 2", "the data end after 1 of 2 parts");
    row("headers past the end",  "84 A3 01 05 00 83", 111, 5, "part 1", "the headers say 5 bytes and 1 remain");
    row("data past the end",     "84 A3 01 01 05 83 41", 111, 6, "part 1", "the data say 5 bytes and 1 remain");
    row("no content type",       "84 A3 01 00 00",  111, 5, "part 1", "the data end inside the content type");
    row("type past the headers", "84 A3 01 02 00 05 83", 111, 6, "part 1", "the content type says 5 bytes and 1 remain");
    row("no media type",         "84 A3 01 02 00 01 05", 111, 6, "part 1", "a byte of 5 begins no media type");
    row("id without text",       "84 A3 01 02 00 83 C0", 111, 7, "part 1", "the data end inside the Content-ID");
    row("boundary without text", "84 A3 01 0B 00 0A A3 626F756E64617279 00", 111, 16, "part 1", "the data end inside boundary");
    // clang-format on
}

void TestPduWalk::places()
{
    QFETCH(QByteArray, hex);
    QFETCH(int, result);
    const QByteArray bytes = fromHex(hex);
    QCOMPARE(problemWith(bytes, FileKind::Pdu), QString());
    const Walked walked(bytes);
    QCOMPARE(int(walked.result), result);
    if (result != MMS_DECODE_OK) {
        QTEST(int(walked.walk.failure()->offset), "offset");
        QTEST(walked.walk.failure()->field, "field");
        QTEST(walked.walk.failure()->message, "message");
    }
}

void TestPduWalk::warnings_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("warnings");
    const auto row = [](const char *name, const char *hex, const char *warnings) {
        QTest::newRow(name) << QByteArray(hex) << warnings;
    };
    // clang-format off
    row("nothing odd",       "8C81 9854 00 8D90", "");
    row("type is not first", "8D90 8C81", "0 MMS-Version: the first field is not the message type");
    row("no type",           "8D90", "0 MMS-Version: the first field is not the message type\n0 Message-Type: the field is missing");
    row("field again",       "8C81 8D90 8D92", "4 MMS-Version: the field comes again; the last value counts");
    row("recipient again",   "8C81 97 31 00 97 32 00", "");
    row("unknown code",      "8C81 92C8", "3 Response-Status: 200 is no known code");
    row("subject unread",    "8C81 96 1E EA 8D90", "5 Subject: the value cannot be read, and reading goes on: the text says 29 bytes and 2 remain");
    row("Latin-1",           "8C81 96 05 84 66FC72 00", "5 Subject: the text is in charset ISO-8859-1 and is read as UTF-8");
    row("Latin-1 as ASCII",  "8C81 96 05 84 667572 00", "");
    row("not UTF-8",         "8C81 96 05 EA 66FC72 00", "5 Subject: the text is not valid UTF-8");
    row("no end mark",       "8C81 98 5431", "3 Transaction-Id: text has no end mark and runs to the end of the data");
    row("long integer",      "8C82 8E 05 0000007530", "3 Message-Size: the size is a long integer of 5 bytes; the low 32 bits count");
    row("wrong length",      "8C82 88 09 81 85", "4 Expiry: the value says 9 bytes and takes 2");
    row("unknown parameter", "8C84 84 03 83 86 81 EA", "5 Content-Type: parameter 0x86 is not known; its value is read as parameters\n4 Content-Type: the value says 3 bytes and takes 4");
    row("parts behind",      "8C84 84A3 01 01 02 83 6869 FFFF", "10 body: 2 bytes behind the last part");
    row("header stepped over", "8C84 84A3 01 03 01 83 AE81 68", "8 part 1: 2 bytes of headers are stepped over");
    row("parameter skipped", "8C84 84A3 01 06 01 05 83 783D79 00 68", "9 part 1: parameter \"x=y\" of the content type is skipped");
    row("known token skipped", "8C84 84A3 01 05 01 04 83 8678 00 68", "9 part 1: the text is not valid UTF-8\n9 part 1: parameter 0x86 of the content type is skipped");
    row("empty part",        "8C84 84A3 01 01 00 83", "8 part 1: the part is empty");
    row("text not UTF-8",    "8C84 84A3 01 01 02 83 FC68", "8 part 1: the text is not valid UTF-8");
    row("UTF-16, exchanged", "8C84 84A3 01 06 04 05 83 81 0203F7 0061 0062", "13 part 1: the text is in UTF-16; it is read with each two characters exchanged");
    row("UTF-16LE",          "8C84 84A3 01 06 04 05 83 81 0203F6 6100 6200", "");
    row("nested, broken",    "8C84 84A3 01 01 02 A3 0501", "10 part 1" ".1: the nested body cannot be read: the data end inside the length of the data");
    row("alternative",       "8C84 84A3 01 01 01 A6 00", "8 part 1: \"application/vnd.wap.multipart.alternative\" is not opened; it stays one part");
    row("no start",          "8C84 84 04 B3 8A 73 00 01 04 01 83 8E 61 00 68", "9 Content-Type: no part has the start \"s\"");
    // clang-format on
}

void TestPduWalk::warnings()
{
    QFETCH(QByteArray, hex);
    const QByteArray bytes = fromHex(hex);
    QCOMPARE(problemWith(bytes, FileKind::Pdu), QString());
    QTEST(Walked(bytes).warnings(), "warnings");
}

void TestPduWalk::warningsAreBounded()
{
    QByteArray bytes = fromHex("8C81");
    for (int n = 0; n < 1000; ++n) {
        bytes += fromHex("92C8");
    }
    const Walked walked(bytes);
    QCOMPARE(walked.walk.warnings().size(), wmsg::cli::WalkNotes::kMostWarnings);
    QCOMPARE(walked.walk.untoldWarnings(), 1001 - wmsg::cli::WalkNotes::kMostWarnings);
    QCOMPARE(walked.gap(), QString());
}

void TestPduWalk::ranges()
{
    const Walked walked(readHex(WMSG_TEST_DATA "/pdu/notification.hex"));
    const QStringList expected = {
        "8C | Message-Type: field id",
        "82 | Message-Type: notification (130)",
        "98 | Transaction-Id: field id",
        "4E 37 00 | Transaction-Id: text: \"N7\"",
        "8D | MMS-Version: field id",
        "92 | MMS-Version: 1.2",
        "89 | From: field id",
        "19 | From: length of the value: 25",
        "80 | From: an address follows",
        "2B 34 33 36 36 34 31 32 33 34 35 36 37 2F 54 59 50 45 3D 50 4C 4D 4E 00 | From: "
        "address: \"+436641234567/TYPE=PLMN\"",
        "96 | Subject: field id",
        "05 | Subject: length of the text: 5",
        "EA | Subject: charset: UTF-8 (106)",
        "48 69 21 00 | Subject: text: \"Hi!\"",
        "8A | Message-Class: field id",
        "80 | Message-Class: personal (128)",
        "8E | Message-Size: field id",
        "02 75 30 | Message-Size: 29.3 KiB (30000 bytes)",
        "88 | Expiry: field id",
        "05 | Expiry: length of the value: 5",
        "81 | Expiry: as a duration",
        "03 03 F4 80 | Expiry: 3 days (259200 s)",
        "83 | Content-Location: field id",
        "68 74 74 70 3A 2F 2F 6D 6D 73 63 2F 37 00 | Content-Location: text: \"http://mmsc/7\"",
    };
    QCOMPARE(walked.lines(), expected);
}

void TestPduWalk::nestingHasALimit()
{
    QByteArray body = fromHex("01 01 02 83 6869");
    for (int depth = 0; depth < 20; ++depth) {
        QVERIFY(body.size() < 128);
        body = fromHex("01 01") + char(body.size()) + fromHex("A3") + body;
    }
    const QByteArray pdu = fromHex("8C84 84A3") + body;
    QCOMPARE(problemWith(pdu, FileKind::Pdu), QString());
    QVERIFY(Walked(pdu).warnings().contains("nested deeper than 16 levels"));
}

QTEST_GUILESS_MAIN(TestPduWalk)
#include "tst_pdu_walk.moc"
