// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_walk.h"

#include "platform/applog/applog.h"
#include "tests/support/hex.h"
#include "tools/wmsg/short_message.h"
#include "tools/wmsg/short_message_view.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

using namespace wmsg::cli;

namespace {

/// A walk over bytes, with its ranges.
struct Walked {
    explicit Walked(const QByteArray &given)
        : bytes(given), walk([this](const ByteRange &range) { ranges.append(range); })
    {
        walk.walk(bytes);
    }
    [[nodiscard]] QStringList lines() const { return linesOf(ranges, bytes); }
    static QStringList linesOf(const QList<ByteRange> &ranges, const QByteArray &bytes)
    {
        QStringList lines;
        for (const ByteRange &range : ranges) {
            lines += toHex(bytes.mid(range.offset, range.length)) + " | " + range.field + ": "
                + range.meaning;
        }
        return lines;
    }
    /// Empty when the ranges are the file, each byte once.
    static QString gap(const QList<ByteRange> &ranges, qsizetype size)
    {
        qint32 covered = 0;
        for (const ByteRange &range : ranges) {
            if (range.offset != covered || range.length <= 0 || range.meaning.isEmpty()) {
                return QString("range at %1 behind %2").arg(range.offset).arg(covered);
            }
            covered += range.length;
        }
        return covered == size ? QString() : QString("ends at %1").arg(covered);
    }

    QByteArray bytes;
    QList<ByteRange> ranges;
    MessageWalk walk;
};

struct FieldRow {
    const char *name;
    const char *bytes;
    const char *says; // name and value
};
// clang-format off
const FieldRow kFields[] = {
    {"retrieve status",       "99 80",                "Retrieve-Status=the message follows (128)"},
    {"a failed retrieval",    "99 E2",                "Retrieve-Status=failed for good: message not found (226)"},
    {"an unknown status",     "99 FF",                "Retrieve-Status=127"},
    {"retrieve text",         "9A 04 EA 6E 6F 00",    "Retrieve-Text=\"no\""},
    {"plain retrieve text",   "9A 6E 6F 00",          "Retrieve-Text=\"no\""},
    {"read status",           "9B 81",                "Read-Status=deleted without being read (129)"},
    {"reply charging",        "9C 82",                "Reply-Charging=a paid reply is accepted (130)"},
    {"its deadline",          "9D 04 81 02 0E 10",    "Reply-Charging-Deadline=1 hour (3600 s)"},
    {"a deadline of no kind", "9D 03 85 01 10",       "Reply-Charging-Deadline=03 85 01 10"},
    {"its id",                "9E 61 00",             "Reply-Charging-ID=\"a\""},
    {"its size",              "9F 02 02 00",          "Reply-Charging-Size=512 bytes"},
    {"previous sender",       "A0 04 81 61 62 00",    "Previously-Sent-By=1: \"ab\""},
    {"previous date",         "A1 03 81 01 00",       "Previously-Sent-Date=1: 1970-01-01 00:00:00 +0000 (UTC)"},
    {"store",                 "A2 80",                "Store=yes"},
    {"state",                 "A3 83",                "MM-State=retrieved (131)"},
    {"flags",                 "A4 03 80 61 00",       "MM-Flags=add \"a\""},
    {"store status",          "A5 E4",                "Store-Status=failed for good: the mailbox is full (228)"},
    {"count of messages",     "AD 85",                "Message-Count=5"},
    {"distribution",          "B1 81",                "Distribution-Indicator=no"},
    {"retrieval mode",        "B4 80",                "Recommended-Retrieval-Mode=by hand (128)"},
    {"application",           "B7 61 00",             "Applic-ID=\"a\""},
    {"content class",         "BA 82",                "Content-Class=pictures (130)"},
    {"adaptation",            "BC 80",                "Adaptation-Allowed=yes"},
    {"cancel id",             "BE 61 00",             "Cancel-ID=\"a\""},
    {"the last one",          "BF 81",                "Cancel-Status=the request is malformed (129)"},
    {"beyond the last",       "C0 80",                "field 64=0"},
    {"a longer one",          "C5 03 01 02 03",       "field 69=66051"},
    {"bytes",                 "C5 05 01 02 03 04 05", "field 69=05 01 02 03 04 05"},
    {"a text field",          "58 2D 41 00 62 00",    "X-A=\"b\""},
    {"a text with a length",  "58 00 02 81 82",       "X=33154"},
    {"a name of a blank",     "20 00 62 00",          " =\"b\""},
};
// clang-format on

const QByteArray kNotification = fromHex("8C 82 98 74 00 8D 90 83 6C 00");

} // namespace

class TestMessageWalk : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void otherFields_data();
    void otherFields();
    void otherFieldsAreBounded();
    void knownFields();
    void push();
    void pushBehindPorts();
    void pushOfSomethingElse();
    void parts();
    void everyByte_data();
    void everyByte();
    void shortMessages();
};

void TestMessageWalk::initTestCase()
{
    appLogModuleStream = appLogDiscardStream();
    qputenv("TZ", "UTC");
}

void TestMessageWalk::otherFields_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kFields); ++i) {
        QTest::newRow(kFields[i].name) << int(i);
    }
}

void TestMessageWalk::otherFields()
{
    QFETCH(int, row);
    const QByteArray field = fromHex(kFields[row].bytes);
    const Walked walked(fromHex("8C 82 98 74 00") + field + fromHex("8D 90 83 6C 00"));
    const QList<OtherField> &fields = walked.walk.otherFields();
    QCOMPARE(fields.size(), 1);
    QCOMPARE(fields[0].name + '=' + fields[0].value, QString(kFields[row].says));
    QCOMPARE(fields[0].offset, 5);
    QCOMPARE(fields[0].id, (field[0] & 0x80) != 0 ? field[0] & 0x7F : 0);
    QCOMPARE(toHex(walked.walk.knownFields()), toHex(kNotification));
    QCOMPARE(walked.walk.headerLength(), int(walked.bytes.size()));
}

void TestMessageWalk::otherFieldsAreBounded()
{
    const Walked walked(fromHex("8C 82") + QByteArray(2000, '\x99'));
    QCOMPARE(walked.walk.otherFields().size(), MessageWalk::kMostFields);
}

void TestMessageWalk::knownFields()
{
    // The class is a text, and the priority reaches past the end.
    const Walked walked(fromHex("8C 82 8A 61 75 74 6F 00 98 74 00 8F"));
    QCOMPARE(toHex(walked.walk.knownFields()), "8C 82 98 74 00");
    QCOMPARE(
        walked.lines(),
        (QStringList{"8C | Message-Type: field id", "82 | Message-Type: notification (130)",
                     "8A | Message-Class: field id", "61 75 74 6F 00 | Message-Class: \"auto\"",
                     "98 | Transaction-Id: field id", "74 00 | Transaction-Id: text: \"t\"",
                     "8F | rest: not read"}));
}

void TestMessageWalk::push()
{
    const Walked walked(fromHex("2A 06 03 BE AF 84") + kNotification);
    QCOMPARE(walked.walk.pduOffset(), 6);
    QCOMPARE(walked.walk.headerLength(), 10);
    QVERIFY(walked.walk.push());
    QCOMPARE(walked.walk.push()->transaction, 42);
    QCOMPARE(walked.walk.push()->media, "application/vnd.wap.mms-message");
    QCOMPARE(walked.walk.push()->application, "MMS (4)");
    QCOMPARE(walked.lines().first(6),
             (QStringList{"2A | push: transaction: 42", "06 | push: type: push (6)",
                          "03 | push: length of the headers: 3",
                          "BE | push: content type: application/vnd.wap.mms-message (62)",
                          "AF 84 | push: X-Wap-Application-Id: MMS (4)",
                          "8C | Message-Type: field id"}));
}

void TestMessageWalk::pushBehindPorts()
{
    const Walked walked(fromHex("06 05 04 0B 84 23 F0 01 07 01 BE") + kNotification);
    QCOMPARE(walked.walk.pduOffset(), 11);
    QCOMPARE(
        walked.lines().first(8),
        (QStringList{"06 | user data header: length: 6", "05 | user data header: ports of 16 bits",
                     "04 | user data header: length: 4",
                     "0B 84 23 F0 | user data header: to port 2948, from port 9200",
                     "01 | push: transaction: 1", "07 | push: type: confirmed push (7)",
                     "01 | push: length of the headers: 1",
                     "BE | push: content type: application/vnd.wap.mms-message (62)"}));
}

void TestMessageWalk::pushOfSomethingElse()
{
    const Walked walked(fromHex("01 06 01 AE 02 05 6A 00"));
    QCOMPARE(walked.walk.pduOffset(), 8);
    QCOMPARE(walked.walk.push()->media, "application/vnd.wap.sic");
    QCOMPARE(walked.lines().last(), "02 05 6A 00 | push: content");
}

void TestMessageWalk::parts()
{
    const Walked walked(fromHex("8C84 84 A3 03"
                                " 0F 01 83 8E 61 00 C0 22 3C 62 3E 00 AE 01 81 78 00 62"
                                " 05 04 A3 58 00 31 00 01 01 00 83"
                                " 01 09 9E FF"));
    const QStringList expected{
        "03 | body: number of parts: 3",
        "0F | part 1: length of the headers: 15",
        "01 | part 1: length of the data: 1",
        "83 | part 1: content type: text/plain (3)",
        "8E 61 00 | part 1: Content-Location: \"a\"",
        "C0 22 3C 62 3E 00 | part 1: Content-ID: \"<b>\"",
        "AE 01 81 | part 1: Content-Disposition: attachment",
        "78 00 | part 1: cannot be read",
        "62 | part 1: data, text/plain",
    };
    QCOMPARE(walked.lines().mid(4, expected.size()), expected);
    QCOMPARE(walked.lines().last(), "FF | part 3: data, image/jpeg, cut off: 8 bytes missing");
}

void TestMessageWalk::everyByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QDir folder(WMSG_TEST_DATA "/pdu");
    for (const QString &name : folder.entryList({"*.hex"})) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QTest::newRow(qPrintable(name)) << fromHex(file.readAll());
    }
    QTest::newRow("push") << fromHex("06 05 04 0B 84 23 F0 01 06 03 BE AF 84") + kNotification;
    QTest::newRow("push of something else") << fromHex("01 06 01 AE 02 05 6A 00");
    QTest::newRow("zeros") << QByteArray(50, '\0');
}

// Also of each message that is cut off, or has one byte more or less.
void TestMessageWalk::everyByte()
{
    QFETCH(QByteArray, bytes);
    for (qsizetype size = 0; size <= bytes.size(); ++size) {
        const Walked cut(bytes.left(size));
        QCOMPARE(Walked::gap(cut.ranges, size), QString());
        QByteArray changed = bytes;
        if (size < bytes.size()) {
            changed[size] = char(changed[size] ^ 0x81);
        }
        const Walked walked(changed);
        QCOMPARE(Walked::gap(walked.ranges, changed.size()), QString());
    }
}

void TestMessageWalk::shortMessages()
{
    const QByteArray bytes = fromHex("03 81 21 F3 44 05 81 21 43 F5 00 04 62 11 12 21 43 65 40 0B"
                                     " 08 04 02 F0 F1 70 02 01 02 AA BB");
    const ShortMessageResult read = readShortMessage(bytes);
    QCOMPARE(read.problem, QString());
    QList<ByteRange> ranges;
    walkShortMessage(*read.message, [&ranges](const ByteRange &range) { ranges.append(range); });
    QCOMPARE(Walked::gap(ranges, bytes.size()), QString());
    QCOMPARE(Walked::linesOf(ranges, bytes),
             (QStringList{
                 "03 | service centre: length: 3",
                 "81 | service centre: type: unknown, telephone numbers (0x81)",
                 "21 F3 | service centre: 123",
                 "44 | short message: received short message, user data header",
                 "05 | short message: sender: 5 digits",
                 "81 | short message: type of the address: unknown, telephone numbers (0x81)",
                 "21 43 F5 | short message: address: 12345",
                 "00 | short message: protocol identifier: short message (0x00)",
                 "04 | short message: data coding scheme: octets (0x04)",
                 "62 11 12 21 43 65 40 | short message: time stamp: 2026-11-21 12:34:56 UTC+01:00",
                 "0B | short message: user data length: 11 octets",
                 "08 | user data header: length: 8",
                 "04 | user data header: ports of 8 bits",
                 "02 | user data header: length: 2",
                 "F0 F1 | user data header: to port 240, from port 241",
                 "70 | user data header: element 0x70",
                 "02 | user data header: length: 2",
                 "01 02 | user data header: value",
                 "AA BB | short message: user data",
             }));
}

QTEST_GUILESS_MAIN(TestMessageWalk)
#include "tst_message_walk.moc"
