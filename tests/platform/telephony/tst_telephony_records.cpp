// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/telephony_records_p.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

#include <functional>

using namespace wmsg::telephony;

namespace {

/// What the test does with a record of any type.
struct Codec {
    std::function<QByteArray(quint16)> write;
    std::function<bool(QByteArrayView, QByteArray &)> rewrite; ///< reads, and writes what it read
};

template <typename Record> Codec codecOf(const Record &record)
{
    return {[record](quint16 number) { return toFrame(record, number); },
            [](QByteArrayView payload, QByteArray &again) {
                Record read;
                const bool isRead = fromPayload(payload, read);
                again = toFrame(read);
                return isRead;
            }};
}

Send portSend()
{
    Send record;
    record.reference = 7;
    record.coding = Coding::Binary;
    record.hasPorts = true;
    record.destinationPort = 2948;
    record.sourcePort = 9200;
    record.destination = "+4366";
    record.body = fromHex("01 02 03");
    return record;
}

Hello hello()
{
    Hello record;
    record.clientId = fromHex("00112233445566778899AABBCCDDEEFF");
    record.events = 2;
    record.name = "WSMS";
    return record;
}

Message message()
{
    Message record;
    record.id = 0x0102030405060708;
    record.serviceCenter = "+43";
    record.sender = "12";
    record.time = 1100000000;
    record.body = fromHex("4800 6900");
    return record;
}

struct Row {
    const char *name;
    Codec codec;
    const char *payload;
    int type;
};
// clang-format off
const Row kRows[] = {
    {"hello",               codecOf(hello()), "01000000 00112233445566778899AABBCCDDEEFF 02000000 04 57534D53", 1},
    {"send to a port",      codecOf(portSend()), "07000000 02 01 840B F023 00 05 2B34333636 0300 010203", 2},
    {"send, empty",         codecOf(Send()), "00000000 00 00 0000 0000 00 00 0000", 2},
    {"register a port",     codecOf(RegisterPort{2948, 1}), "840B 01", 3},
    {"deregister a port",   codecOf(DeregisterPort{2948}), "840B", 4},
    {"set service centre",  codecOf(SetServiceCenter{"+43"}), "03 2B3433", 5},
    {"message answer",      codecOf(MessageAnswer{0x0102030405060708, true}), "0807060504030201 01", 6},
    {"message refused",     codecOf(MessageAnswer{1, false}), "0100000000000000 00", 6},
    {"result taken",        codecOf(ResultTaken{-2}), "FEFFFFFF", 7},
    {"welcome",             codecOf(Welcome{1, 2, "+43"}), "01000000 02000000 03 2B3433", 129},
    {"refused",             codecOf(Refused{2}), "02000000", 130},
    {"done",                codecOf(Done{Answer::PortTaken}), "01000000", 131},
    {"result",              codecOf(Result{7, 255, -1}), "07000000 FF000000 FFFFFFFF", 132},
    {"message",             codecOf(message()), "0807060504030201 00 00 0000 0000 03 2B3433 02 3132 00AB904100000000 0400 48006900", 133},
    {"modem state",         codecOf(ModemState{3, ""}), "03000000 00", 134},
};

struct RefusedRow {
    const char *name;
    Codec codec;
    const char *payload;
};
const RefusedRow kRefused[] = {
    {"8-bit text to be sent",        codecOf(Send()),    "00000000 01 00 0000 0000 00 00 0000"},
    {"a coding that is none",        codecOf(Send()),    "00000000 04 00 0000 0000 00 00 0000"},
    {"half a unit to be sent",       codecOf(Send()),    "00000000 00 00 0000 0000 00 00 0100 61"},
    {"half a unit of 7-bit text",    codecOf(Send()),    "00000000 03 00 0000 0000 00 00 0100 61"},
    {"ports of 2",                   codecOf(Send()),    "00000000 00 02 0000 0000 00 00 0000"},
    {"NUL in a number",              codecOf(Send()),    "00000000 00 00 0000 0000 01 00 00 0000"},
    {"a number past the end",        codecOf(Send()),    "00000000 00 00 0000 0000 00 FF 31 0000"},
    {"a body past the end",          codecOf(Send()),    "00000000 02 00 0000 0000 00 00 FFFC 61"},
    {"an incoming 7-bit text",       codecOf(Message()), "0000000000000000 03 00 0000 0000 00 00 0000000000000000 0000"},
    {"half a unit arrives",          codecOf(Message()), "0000000000000000 00 00 0000 0000 00 00 0000000000000000 0100 61"},
    {"an answer of 2",               codecOf(MessageAnswer()), "0000000000000000 02"},
    {"done with an unknown answer",  codecOf(Done()),    "05000000"},
    {"done, highest",                codecOf(Done()),    "FFFFFFFF"},
};
// clang-format on

QByteArray head(quint32 length, quint16 type = 7, quint16 number = 0)
{
    QByteArray bytes(8, '\0');
    qToLittleEndian(length, bytes.data());
    qToLittleEndian(type, bytes.data() + 4);
    qToLittleEndian(number, bytes.data() + 6);
    return bytes;
}

QStringList framesOf(FrameReader &reader)
{
    QStringList frames;
    Frame frame;
    while (reader.next(frame)) {
        frames.append(QString("%1 %2 %3")
                          .arg(int(frame.type))
                          .arg(frame.number)
                          .arg(QString(toHex(frame.payload))));
    }
    return frames;
}

} // namespace

class TestTelephonyRecords : public QObject {
    Q_OBJECT

private slots:
    void bothDirections_data() { addRows(); }
    void bothDirections();
    void everyTruncationFails_data() { addRows(); }
    void everyTruncationFails();
    void bytesBehindFail_data() { addRows(); }
    void bytesBehindFail();
    void refused_data();
    void refused();
    void otherVersions();
    void whatIsTooLongIsCut();

    void framesInAnySplit();
    void manyFramesInOnePiece();
    void lengths_data();
    void lengths();
    void aBrokenReaderStaysBroken();

    void examplesOfThePage();

private:
    static void addRows();
};

void TestTelephonyRecords::addRows()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kRows); ++i) {
        QTest::newRow(kRows[i].name) << int(i);
    }
}

void TestTelephonyRecords::bothDirections()
{
    QFETCH(int, row);
    const QByteArray payload = fromHex(kRows[row].payload);
    const QByteArray frame = head(quint32(payload.size()), quint16(kRows[row].type), 258) + payload;
    QCOMPARE(toHex(kRows[row].codec.write(258)), toHex(frame));
    QByteArray again;
    QVERIFY(kRows[row].codec.rewrite(payload, again));
    QCOMPARE(toHex(again.mid(8)), toHex(payload));
    QCOMPARE(toHex(again.left(8)), toHex(kRows[row].codec.write(0).left(8)));
}

void TestTelephonyRecords::everyTruncationFails()
{
    QFETCH(int, row);
    const QByteArray payload = fromHex(kRows[row].payload);
    for (qsizetype size = 0; size < payload.size(); ++size) {
        QByteArray again;
        QVERIFY2(!kRows[row].codec.rewrite(payload.left(size), again),
                 qPrintable(QString::number(size)));
    }
}

void TestTelephonyRecords::bytesBehindFail()
{
    QFETCH(int, row);
    QByteArray again;
    const bool isRead = kRows[row].codec.rewrite(fromHex(kRows[row].payload) + '\0', again);
    // A refusal may say more in versions to come.
    QCOMPARE(isRead, kRows[row].type == int(RecordType::Refused));
}

void TestTelephonyRecords::refused_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kRefused); ++i) {
        QTest::newRow(kRefused[i].name) << int(i);
    }
}

void TestTelephonyRecords::refused()
{
    QFETCH(int, row);
    QByteArray again;
    QVERIFY(!kRefused[row].codec.rewrite(fromHex(kRefused[row].payload), again));
}

void TestTelephonyRecords::otherVersions()
{
    // Of another version no more than the version is read.
    Hello hello;
    QVERIFY(fromPayload(fromHex("02000000"), hello));
    QCOMPARE(hello.version, 2U);
    QVERIFY(fromPayload(fromHex("00000000 FFFF"), hello));
    QCOMPARE(hello.version, 0U);
    QVERIFY(!fromPayload(fromHex("020000"), hello));
    QVERIFY(!fromPayload(fromHex("01000000"), hello));
    Welcome welcome;
    QVERIFY(fromPayload(fromHex("02000000 00"), welcome));
    QCOMPARE(welcome.version, 2U);
}

void TestTelephonyRecords::whatIsTooLongIsCut()
{
    Send record;
    record.coding = Coding::Binary;
    record.serviceCenter = QByteArray(300, '1');
    record.destination = QByteArray("12\0003", 4);
    record.body = QByteArray(70000, 'x');
    FrameReader reader;
    reader.append(toFrame(record));
    Frame frame;
    QVERIFY(reader.next(frame));
    Send read;
    QVERIFY(fromPayload(frame.payload, read));
    QCOMPARE(read.serviceCenter, QByteArray(255, '1'));
    QCOMPARE(read.destination, QByteArray("12"));
    QCOMPARE(read.body.size(), kLongestBody);
}

void TestTelephonyRecords::framesInAnySplit()
{
    const QByteArray bytes = toFrame(Result{1, 2, 3}) + toFrame(Done{Answer::Ok}, 4)
        + toFrame(message()) + head(0, 999, 65535);
    FrameReader whole;
    whole.append(bytes);
    const QStringList expected = framesOf(whole);
    QCOMPARE(expected.size(), 4);
    QCOMPARE(expected.at(1), QString("131 4 00 00 00 00"));
    QCOMPARE(expected.at(3), QString("999 65535 "));
    QVERIFY(whole.isEmpty());
    for (qsizetype cut = 0; cut <= bytes.size(); ++cut) {
        FrameReader two;
        two.append(bytes.left(cut));
        QStringList frames = framesOf(two);
        two.append(bytes.mid(cut));
        frames += framesOf(two);
        QCOMPARE(frames, expected);
        QVERIFY(two.isEmpty() && !two.isBroken());
    }
    FrameReader byByte;
    QStringList frames;
    for (char byte : bytes) {
        byByte.append({&byte, 1});
        frames += framesOf(byByte);
    }
    QCOMPARE(frames, expected);
}

void TestTelephonyRecords::manyFramesInOnePiece()
{
    QByteArray bytes;
    for (int i = 0; i < 1000; ++i) {
        bytes += toFrame(Result{i, 0, 0});
    }
    FrameReader reader;
    // A reader that always has the beginning of the next frame does not grow.
    for (qsizetype at = 0; at < bytes.size(); at += 7) {
        reader.append(QByteArrayView(bytes).sliced(at, qMin<qsizetype>(7, bytes.size() - at)));
    }
    QCOMPARE(framesOf(reader).size(), 1000);
}

void TestTelephonyRecords::lengths_data()
{
    QTest::addColumn<quint32>("length");
    QTest::addColumn<bool>("isBroken");
    QTest::newRow("none") << 0U << false;
    QTest::newRow("longest") << kLongestPayload << false;
    QTest::newRow("one more") << kLongestPayload + 1 << true;
    QTest::newRow("negative, were it signed") << 0x80000000U << true;
    QTest::newRow("highest") << 0xFFFFFFFFU << true;
}

void TestTelephonyRecords::lengths()
{
    QFETCH(quint32, length);
    QFETCH(bool, isBroken);
    FrameReader reader;
    Frame frame;
    // The length alone decides, before the rest of the head is there.
    reader.append(head(length).left(3));
    QVERIFY(!reader.next(frame) && !reader.isBroken());
    reader.append(head(length).mid(3, 1));
    QVERIFY(!reader.next(frame));
    QCOMPARE(reader.isBroken(), isBroken);
    if (!isBroken) {
        reader.append(head(length).mid(4));
        reader.append(QByteArray(length, 'x'));
        QVERIFY(reader.next(frame));
        QCOMPARE(quint32(frame.payload.size()), length);
    }
}

void TestTelephonyRecords::aBrokenReaderStaysBroken()
{
    FrameReader reader;
    Frame frame;
    reader.append(toFrame(Result{1, 2, 3}) + head(0xFFFFFFFF) + toFrame(Result{1, 2, 3}));
    QVERIFY(reader.next(frame));
    QVERIFY(!reader.next(frame));
    QVERIFY(reader.isBroken());
    reader.append(toFrame(Result{1, 2, 3}));
    QVERIFY(!reader.next(frame));
    QVERIFY(reader.isBroken());
}

void TestTelephonyRecords::examplesOfThePage()
{
    QFile page(WMSG_TEST_DATA "/../../docs/formats/telephony-records.md");
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = page.readAll();
    const QRegularExpression hexLine("^    ((?:[0-9A-F]{2} {1,2})*[0-9A-F]{2})(?:   .*)?$",
                                     QRegularExpression::MultilineOption);
    FrameReader reader;
    for (const QRegularExpressionMatch &line : hexLine.globalMatch(text)) {
        reader.append(fromHex(line.captured(1).toLatin1()));
    }
    QList<int> types;
    Send send;
    Message message;
    Frame frame;
    while (reader.next(frame)) {
        types.append(int(frame.type));
        QVERIFY(frame.type != RecordType::Send || fromPayload(frame.payload, send));
        QVERIFY(frame.type != RecordType::Message || fromPayload(frame.payload, message));
    }
    QVERIFY(reader.isEmpty());
    QCOMPARE(types, (QList<int>{1, 129, 3, 2, 131, 132, 7, 133, 6}));
    QCOMPARE(send.destination, QByteArray("+43664"));
    QCOMPARE(toHex(send.body), QByteArray("48 00 69 00"));
    QCOMPARE(message.id, quint64(42));
    QCOMPARE(int(message.destinationPort), 9000);
    QCOMPARE(int(message.sourcePort), 9001);
    QCOMPARE(message.time, qint64(1100000000));
    QCOMPARE(toHex(message.body), QByteArray("FF 00"));
}

QTEST_GUILESS_MAIN(TestTelephonyRecords)
#include "tst_telephony_records.moc"
