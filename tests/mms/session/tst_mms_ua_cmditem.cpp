// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_cmd.h"
#include "mms/session/mms_ua_svcmd.h"
#include "tests/support/hex.h"
#include "tests/support/socket_pair.h"

#include <QtTest/QtTest>

#include <climits>
#include <memory>
#include <vector>

#include <sys/resource.h>

// A test of this file asks for more memory than there is.
#ifdef __SANITIZE_ADDRESS__
// The sanitizer looks the function up by name.
extern "C" Q_DECL_EXPORT const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=512";
}
#endif

/// What ReadCmd works on, with a fixed part of `size` bytes.
struct Reading {
    explicit Reading(int size) : bytes(size_t(size), char(0xEE)), data(bytes.data()), dataLen(size)
    {
    }
    ~Reading() { delete[] extra; }
    Q_DISABLE_COPY_MOVE(Reading)

    int step(QWSSocket *socket)
    {
        return ReadCmd(socket, data, dataLen, extra, extraLen, readState);
    }
    QByteArray fixedHex() const { return toHex(QByteArrayView(data, dataLen)); }

    std::vector<char> bytes;
    char *data;
    int dataLen;
    char *extra = nullptr;
    int extraLen = -1;
    int readState = 0;
};

class TestCmdItem : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void aNewRecord();

    void writesTheFieldsInOrder_data();
    void writesTheFieldsInOrder();
    void aNullSocketIsIgnored();
    void writingToADeadSocketIsIgnored();

    void readsAnySplit_data();
    void readsAnySplit();
    void readsNoFurtherThanTheRecord();
    void readsWithoutAFixedPart();
    void refusesImpossibleLengths_data();
    void refusesImpossibleLengths();
    void takesTheLongestLength();
    void aLengthOfMinusOneIsNone();
    void allocatesOnlyWhatHasArrived();
    void readingWithoutASocket();

    void setsTheVariablePart_data();
    void setsTheVariablePart();
    void aBufferIsNotFreedWhenSetToNothing();
    void pointsAtACallersBuffer();
    void copiesItsOwnBuffer();
    void zerosWithoutASource();
    void withoutMemoryThereIsNoVariablePart();
    void replacesWhatItRead();
};

void TestCmdItem::initTestCase()
{
#ifndef __SANITIZE_ADDRESS__
    const rlimit limit = {1U << 30, 1U << 30};
    QCOMPARE(setrlimit(RLIMIT_AS, &limit), 0);
#endif
}

void TestCmdItem::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestCmdItem::aNewRecord()
{
    const MMS_UA_SendCmd record;
    QCOMPARE(record.type(), 1);
    QCOMPARE(record.dataLen(), 12);
    QCOMPARE(record.extraLen(), -1);
    QVERIFY(!record.ownsExtra());
    QVERIFY(!record.extra());
    QCOMPARE(record.readState(), 0);
    QCOMPARE(toHex(record.fixedPart()), toHex(QByteArray(12, '\0')));
    // The fixed part lies inside the record.
    const auto *begin = reinterpret_cast<const char *>(&record);
    QVERIFY(record.fixedPart().data() >= begin);
    QVERIFY(record.fixedPart().data() + 12 <= begin + sizeof record);
    QVERIFY(!record.isRefused());
    QVERIFY(!record.isCutOff());
}

void TestCmdItem::writesTheFieldsInOrder_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("fixed"); // null: no data pointer
    QTest::addColumn<QByteArray>("extra");
    QTest::addColumn<int>("extraLen");
    QTest::addColumn<QByteArray>("wire");
    const QByteArray none;
    QTest::newRow("type and length alone")
        << 6 << none << none << 0 << QByteArray("06 00 00 00 00 00 00 00");
    QTest::newRow("a length of -1 goes out as 0")
        << 6 << none << none << -1 << QByteArray("06 00 00 00 00 00 00 00");
    QTest::newRow("a fixed part") << 6 << QByteArray("abcd") << none << 0
                                  << QByteArray("06 00 00 00 00 00 00 00 61 62 63 64");
    QTest::newRow("both parts") << 2 << QByteArray("abcd") << QByteArray("xy") << 2
                                << QByteArray("02 00 00 00 02 00 00 00 61 62 63 64 78 79");
    QTest::newRow("less than the buffer")
        << 2 << none << QByteArray("xyz") << 1 << QByteArray("02 00 00 00 01 00 00 00 78");
    QTest::newRow("a length without bytes")
        << 2 << none << none << 7 << QByteArray("02 00 00 00 07 00 00 00");
    QTest::newRow("-1 with bytes")
        << 2 << none << QByteArray("xy") << -1 << QByteArray("02 00 00 00 00 00 00 00");
    QTest::newRow("negative with bytes")
        << 2 << none << QByteArray("xy") << -2 << QByteArray("02 00 00 00 FE FF FF FF");
    QTest::newRow("a negative type")
        << -2 << none << none << 0 << QByteArray("FE FF FF FF 00 00 00 00");
}

void TestCmdItem::writesTheFieldsInOrder()
{
    QFETCH(int, type);
    QFETCH(QByteArray, fixed);
    QFETCH(QByteArray, extra);
    QFETCH(int, extraLen);
    SocketPair pair;
    const int dataLen = int(fixed.size());
    WriteCmd(pair.socket(), type, fixed.isNull() ? nullptr : fixed.data(), dataLen,
             extra.isNull() ? nullptr : extra.data(), extraLen);
    // Flushed: nothing waits for the event loop.
    QCOMPARE(pair.socket()->bytesToWrite(), 0);
    QTEST(toHex(pair.taken()), "wire");
}

void TestCmdItem::aNullSocketIsIgnored()
{
    char data[] = "abc";
    WriteCmd(nullptr, 1, data, 3, data, 3);
    MMS_UA_AbortCmd record;
    record.write(nullptr);
    QCOMPARE(record.extraLen(), -1);
}

void TestCmdItem::writingToADeadSocketIsIgnored()
{
    QWSSocket socket;
    MMS_UA_SendCmd record;
    record.setUri("/tmp/x");
    record.write(&socket);
    QCOMPARE(socket.bytesToWrite(), 0);
}

static const char kRecord[] = "02 00 00 00  01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00  78 79";

void TestCmdItem::readsAnySplit_data()
{
    QTest::addColumn<QList<int>>("pieces");
    const int size = int(fromHex(kRecord).size());
    for (int first = 0; first <= size; ++first) {
        QTest::addRow("after %d", first) << QList<int>{first, size - first};
    }
    QTest::newRow("byte by byte") << QList<int>(size, 1);
}

void TestCmdItem::readsAnySplit()
{
    QFETCH(QList<int>, pieces);
    const QByteArray record = fromHex(kRecord);
    SocketPair pair;
    Reading reading(16);
    int sent = 0;
    for (int piece : std::as_const(pieces)) {
        pair.feed(record.mid(sent, piece));
        sent += piece;
        const bool wasWhole = reading.extra;
        const int result = wasWhole ? 1 : reading.step(pair.socket());
        QCOMPARE(result, sent == record.size() ? 1 : 0);
        QCOMPARE(reading.extraLen, sent < 4 ? -1 : 2);
        QCOMPARE(reading.readState, sent < 20 ? 0 : sent < record.size() ? 16 : 18);
        QCOMPARE(reading.extra != nullptr, sent == record.size());
    }
    QCOMPARE(reading.fixedHex(), toHex(record.mid(4, 16)));
    QCOMPARE(QByteArray(reading.extra, 2), QByteArray("xy"));
}

void TestCmdItem::readsNoFurtherThanTheRecord()
{
    SocketPair pair;
    pair.feed(fromHex("02 00 00 00 61 62 78 79 AA BB"));
    Reading reading(2);
    QCOMPARE(reading.step(pair.socket()), 1);
    QCOMPARE(toHex(pair.unread()), QByteArray("AA BB"));
    QCOMPARE(reading.readState, 4);

    pair.feed(fromHex("00 00 00 00 61 62 78"));
    Reading bare(2);
    QCOMPARE(bare.step(pair.socket()), 1);
    QVERIFY(!bare.extra);
    QCOMPARE(toHex(pair.unread()), QByteArray("78"));
}

void TestCmdItem::readsWithoutAFixedPart()
{
    SocketPair pair;
    pair.feed(fromHex("01 00 00 00"));
    Reading reading(0);
    QCOMPARE(reading.step(pair.socket()), 0);
    QCOMPARE(reading.readState, 1);
    pair.feed("x");
    QCOMPARE(reading.step(pair.socket()), 1);
    QCOMPARE(reading.readState, 2);
}

void TestCmdItem::refusesImpossibleLengths_data()
{
    QTest::addColumn<int>("length");
    QTest::newRow("-2") << -2;
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("one above 1 MiB") << 1024 * 1024 + 1;
    QTest::newRow("highest") << INT_MAX;
    QTest::newRow("all but one") << INT_MAX - 1;
}

void TestCmdItem::refusesImpossibleLengths()
{
    QFETCH(int, length);
    const QByteArray word(reinterpret_cast<const char *>(&length), 4);
    SocketPair pair;
    pair.feed(word);
    MMS_UA_SvReqCompleteCmd record;
    QCOMPARE(record.read(pair.socket()), 0);
    QVERIFY(record.isRefused());
    pair.feed(QByteArray(100, 'x'));
    QCOMPARE(record.read(pair.socket()), 0); // and so it stays, whatever arrives
    QVERIFY(record.isRefused());
    QVERIFY(!record.extra());
    QCOMPARE(pair.unread().size(), 100);

    pair.feed(word + QByteArray(100, 'x'));
    Reading reading(16);
    QCOMPARE(reading.step(pair.socket()), 0);
    QCOMPARE(reading.extraLen, length);
    QVERIFY(!reading.extra);
}

void TestCmdItem::takesTheLongestLength()
{
    constexpr int length = MMS_UA_CmdItem::kLongestExtra;
    static_assert(length == 1024 * 1024);
    SocketPair pair;
    pair.feed(fromHex("00 00 10 00  05 00 00 00") + QByteArray(length - 1, 'x'));
    MMS_UA_SvRetrCompleteCmd record;
    QCOMPARE(record.read(pair.socket()), 0);
    QVERIFY(!record.isRefused());
    QVERIFY(!record.isCutOff());
    QVERIFY(!record.extra());
    pair.feed("yz");
    QCOMPARE(record.read(pair.socket()), 1);
    QCOMPARE(record.extraLen(), length);
    QCOMPARE(record.extra()[length - 1], 'y');
    QCOMPARE(record.getUri(), QString(2, QChar(0x7878)));
    QCOMPARE(pair.unread(), QByteArray("z"));
}

void TestCmdItem::aLengthOfMinusOneIsNone()
{
    SocketPair pair;
    pair.feed(fromHex("FF FF FF FF"));
    MMS_UA_SvStsRetCmd record;
    QCOMPARE(record.read(pair.socket()), 0);
    QVERIFY(!record.isRefused());
    pair.feed(fromHex("05 00 00 00 07 00 00 00"));
    QCOMPARE(record.read(pair.socket()), 1);
    QCOMPARE(record.extraLen(), 0);
    QCOMPARE(record.getRequestId(), 5);
    QCOMPARE(record.getStatus(), 7);
}

void TestCmdItem::allocatesOnlyWhatHasArrived()
{
    SocketPair pair;
    pair.feed(fromHex("00 00 10 00  05 00 00 00  78"));
    Reading reading(4);
    QCOMPARE(reading.step(pair.socket()), 0);
    QVERIFY(!reading.extra);
    QCOMPARE(reading.extraLen, 1024 * 1024);
    QCOMPARE(reading.readState, 4);
}

void TestCmdItem::readingWithoutASocket()
{
    Reading reading(4);
    QCOMPARE(reading.step(nullptr), 0);
    QCOMPARE(reading.extraLen, -1);
    QWSSocket dead;
    QCOMPARE(reading.step(&dead), 0);
    MMS_UA_SvStsRetCmd record;
    QCOMPARE(record.read(nullptr), 0);
    QVERIFY(record.isCutOff());
    QVERIFY(!record.isRefused());
}

struct Step {
    const char *bytes; // hex, null: a null pointer
    int len;
    bool copy;
};
struct StepsRow {
    const char *name;
    std::vector<Step> steps;
    int extraLen;
    const char *extra; // hex, null: a null pointer
    bool owns;
};

// clang-format off
static const StepsRow kSteps[] = {
    // name                            steps                                            length  bytes       owns
    {"nothing",                        {{nullptr, 0, true}},                            0,      nullptr,    false},
    {"nothing, not copied",            {{nullptr, 0, false}},                           0,      nullptr,    false},
    {"a copy",                         {{"61 62", 2, true}},                            2,      "61 62",    true},
    {"a part of it",                   {{"61 62", 1, true}},                            1,      "61",       true},
    {"not a copy",                     {{"61 62", 2, false}},                           2,      "61 62",    false},
    {"a negative length, fresh",       {{"61 62", -1, true}},                           -1,     nullptr,    false},
    {"a negative length, null",        {{nullptr, -1, true}},                           -1,     nullptr,    false},
    {"a negative length, then",        {{"61 62", 2, true}, {"63", -5, false}},         2,      "61 62",    true},
    {"a copy for a copy",              {{"61 62", 2, true}, {"63 64 65", 3, true}},     3,      "63 64 65", true},
    {"not a copy for a copy",          {{"61 62", 2, true}, {"63 64 65", 3, false}},    3,      "63 64 65", false},
    {"a copy for what is not",         {{"61 62", 2, false}, {"63", 1, true}},          1,      "63",       true},
    {"nothing after a copy",           {{"61 62", 2, true}, {nullptr, 0, true}},        0,      nullptr,    true},
    {"nothing, twice",                 {{"61", 1, true}, {nullptr, 0, true}, {nullptr, 0, false}}, 0, nullptr, true},
    {"a copy after nothing",           {{"61", 1, true}, {nullptr, 0, true}, {"62", 1, true}}, 1, "62",     true},
    {"a copy of no bytes",             {{"61", 0, true}},                               0,      "",         true},
    {"no bytes, not copied",           {{"61", 0, false}},                              0,      "",         false},
    {"null with a length, a copy",     {{nullptr, 3, true}},                            3,      "00 00 00", true},
};
// clang-format on

void TestCmdItem::setsTheVariablePart_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kSteps); ++i) {
        QTest::newRow(kSteps[i].name) << int(i);
    }
}

void TestCmdItem::setsTheVariablePart()
{
    QFETCH(int, row);
    const StepsRow &steps = kSteps[row];
    std::vector<QByteArray> given(steps.steps.size());
    MMS_UA_AbortCmd record;
    for (size_t i = 0; i < given.size(); ++i) {
        const Step &step = steps.steps[i];
        given[i] = step.bytes ? fromHex(step.bytes) : QByteArray();
        record.setData(step.bytes ? given[i].data() : nullptr, step.len, step.copy);
    }
    QCOMPARE(record.extraLen(), steps.extraLen);
    QCOMPARE(record.ownsExtra(), steps.owns);
    QCOMPARE(record.extra() == nullptr, steps.extra == nullptr);
    if (steps.extra) {
        QCOMPARE(toHex(QByteArrayView(record.extra(), record.extraLen())),
                 toHex(fromHex(steps.extra)));
        QCOMPARE(record.extra() == given.back().data(), !steps.owns);
    }
}

void TestCmdItem::aBufferIsNotFreedWhenSetToNothing()
{
    // a buffer is not freed when the variable part is set to nothing
    char bytes[] = {'a', 'b'};
    MMS_UA_AbortCmd record;
    record.setData(bytes, 2, true);
    const char *held = record.extra();
    record.setData(nullptr, 0, true);
    QVERIFY(!record.extra());
    QCOMPARE(QByteArray(held, 2), QByteArray("ab"));
}

void TestCmdItem::pointsAtACallersBuffer()
{
    char bytes[] = {'a', 'b'};
    {
        MMS_UA_AbortCmd record;
        record.setData(bytes, 2, false);
        QVERIFY(record.extra() == bytes);
        bytes[0] = 'c';
        SocketPair pair;
        record.write(pair.socket());
        QCOMPARE(toHex(pair.taken()),
                 QByteArray("06 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00 63 62"));
    }
    QCOMPARE(bytes[1], 'b');

    MMS_UA_AbortCmd record;
    record.setData(nullptr, 5, false);
    QCOMPARE(record.extraLen(), 5);
    QVERIFY(!record.extra());
}

void TestCmdItem::copiesItsOwnBuffer()
{
    char bytes[] = {'a', 'b', 'c'};
    MMS_UA_AbortCmd record;
    record.setData(bytes, 3, true);
    record.setData(const_cast<char *>(record.extra()) + 1, 2, true);
    QCOMPARE(QByteArray(record.extra(), 2), QByteArray("bc"));
    record.setData(const_cast<char *>(record.extra()), 2, false);
    QCOMPARE(QByteArray(record.extra(), 2), QByteArray("bc"));
    QVERIFY(!record.ownsExtra());
}

void TestCmdItem::zerosWithoutASource()
{
    MMS_UA_SendCmd record;
    record.setUri("ab");
    record.setData(nullptr, 4, true);
    QCOMPARE(record.getUri(), QString(2, QChar(0)));
}

void TestCmdItem::withoutMemoryThereIsNoVariablePart()
{
    MMS_UA_SendCmd record;
    record.setUri("ab");
    record.setData(nullptr, INT_MAX, true);
    QCOMPARE(record.extraLen(), 0);
    QVERIFY(!record.extra());
    QVERIFY(record.getUri().isEmpty());
}

void TestCmdItem::replacesWhatItRead()
{
    SocketPair pair;
    pair.feed(fromHex("04 00 00 00  04 00 00 00  61 00 62 00"));
    MMS_UA_SvRetrCompleteCmd record;
    QCOMPARE(record.read(pair.socket()), 1);
    QVERIFY(record.ownsExtra());
    QCOMPARE(record.getUri(), QString("ab"));
    record.setUri("xyz");
    QCOMPARE(record.getUri(), QString("xyz"));
    record.write(pair.socket());
    QCOMPARE(toHex(pair.taken()),
             QByteArray("03 00 00 00 06 00 00 00 06 00 00 00 78 00 79 00 7A 00"));
}

QTEST_GUILESS_MAIN(TestCmdItem)
#include "tst_mms_ua_cmditem.moc"
