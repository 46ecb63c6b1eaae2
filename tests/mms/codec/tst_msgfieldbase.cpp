// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmentry.h"
#include "mms/codec/msgfieldbase.h"
#include "tests/mms/codec/wire.h"
#include "tests/support/log_capture.h"
#include "tests/support/time_zone.h"

#include <QtTest/QtTest>

#include <climits>
#include <functional>

struct IntRow {
    const char *name;
    qint32 value;
    quint32 result;
    const char *wire;
};

/// A local date and time in a time zone, and its seconds. A null `date` is QDate(), a null `time`
/// QTime().
struct DateRow {
    const char *name;
    const char *zone;
    const char *date;
    const char *time;
    qint64 seconds;
};

struct AddressRow {
    const char *name;
    QByteArray wire;
    int type;
    QString value;
    QString contactName;
    Way way;
};

static const char kUtc[] = "UTC";
static const char kEast[] = "XST-3";
static const char kWest[] = "WST+8";
static const char kSummer[] = "CET-1CEST,M3.5.0,M10.5.0/3";

// clang-format off
static const IntRow kIntFields[] = {
    {"lowest",                    0,           1, "8E 80"},
    {"short, highest",            127,         1, "8E FF"},
    {"long, lowest",              128,         1, "8E 01 80"},
    {"two bytes",                 3600,        1, "8E 02 0E 10"},
    {"31 bits",                   INT_MAX,     1, "8E 04 7F FF FF FF"},
    {"negative writes nothing",   -1,          0, ""},
    {"lowest, writes nothing",    INT_MIN,     0, ""},
};

static const DateRow kDates[] = {
    {"the first second",          kUtc,    "1970-01-01", "00:00:00", 0},
    {"one second",                kUtc,    "1970-01-01", "00:00:01", 1},
    {"short, highest",            kUtc,    "1970-01-01", "00:02:07", 127},
    {"long, lowest",              kUtc,    "1970-01-01", "00:02:08", 128},
    {"first second, east",        kEast,   "1970-01-01", "03:00:00", 0},
    {"first second, west",        kWest,   "1969-12-31", "16:00:00", 0},
    {"a leap day",                kUtc,    "2024-02-29", "23:59:59", 1709251199},
    {"a leap day, east",          kEast,   "2024-02-29", "23:59:59", 1709240399},
    {"a leap day, west",          kWest,   "2024-02-29", "23:59:59", 1709279999},
    {"2000 is a leap year",       kUtc,    "2000-02-29", "12:00:00", 951825600},
    {"winter",                    kSummer, "2024-01-15", "12:00:00", 1705316400},
    {"summer",                    kSummer, "2024-07-15", "12:00:00", 1721037600},
    {"the last 31 bit second",    kUtc,    "2038-01-19", "03:14:07", 2147483647},
    {"the last 31 bit second, east", kEast, "2038-01-19", "06:14:07", 2147483647},
};

static const DateRow kFailingDates[] = {
    {"before 1970",               kUtc,    "1969-12-31", "23:59:58", -2},
    {"the second before 1970",    kUtc,    "1969-12-31", "23:59:59", -1},
    {"before 1970 in the east",   kEast,   "1970-01-01", "02:59:59", -1},
    {"long before 1970",          kUtc,    "1901-01-01", "00:00:00", -2177452800},
    {"32 bits",                   kUtc,    "2038-01-19", "03:14:08", 2147483648},
    {"32 bits in the west",       kWest,   "2038-01-19", "03:14:07", 2147512447},
    {"the last 32 bit second",    kUtc,    "2106-02-07", "06:28:15", 4294967295},
    {"33 bits do not wrap",       kUtc,    "2106-02-07", "06:28:16", 4294967296},
    {"far ahead",                 kUtc,    "9999-12-31", "23:59:59", 253402300799},
    {"a time without a date",     kUtc,    nullptr,      "12:30:00", -1},
    {"an invalid date",           kUtc,    "2001-02-31", "12:30:00", -1},
    {"midnight without a date",   kUtc,    nullptr,      "00:00:00", -1},
};

static const AddressRow kAddresses[] = {
    {"a number",         "2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, "+1", QString(),           Both},
    {"an e-mail address","61 40 62 00",                            0, "a@b", "",          Both},
    {"e-mail, not ASCII","06 EA 7F C3 A9 40 00",                   0, QStringLiteral("\u00E9@"), "", Both},
    {"e-mail, not ASCII later", "06 EA 61 40 C3 A9 00",            0, QStringLiteral("a@\u00E9"), "", Both},
    {"a number, not ASCII", "7F C3 A9 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, QStringLiteral("\u00E9"), QString(), Both},
    {"a number with a name in it", "61 40 62 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, "a@b", QString(), Both},
    {"an empty number",  "2F 54 59 50 45 3D 50 4C 4D 4E 00",       1, "", QString(),             Both},
    {"null number",      "2F 54 59 50 45 3D 50 4C 4D 4E 00",       1, QString(), "",      Write},
    {"a number that begins like a length", "0E EA 01 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, "\x01" "1", QString(), Both},
    {"an e-mail address that begins like a length", "05 EA 1F 40 62 00", 0, "\x1F@b", "",  Both},
    {"a number ends at its first NUL", "31 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, QString("1") + QChar() + "2", "", Write},
    {"half a surrogate pair", "3F 40 62 00",     0, QString(QChar(0xD83D)) + "@b", "",    Write},
    {"the contact name is never written", "61 40 62 00",           0, "a@b", "Ann",       Write},
    {"a type that is not set", "31 32 33 00",                      127, "123", "",        Write},
    {"nothing",          "00",                                     0, "", "",             Write},
    {"a bare number",    "31 32 33 34 35 00",                      1, "12345", "",        Read},
    {"a bare word",      "61 62 00",                               1, "ab", "",           Read},
    {"an empty text is a null number", "00",                       1, QString(), "",      Read},
    {"an encoded number","0D EA 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, "1", QString(),         Read},
    {"an empty encoded text", "02 EA 00",                          1, "", "",             Read},
    {"the case of the suffix counts", "31 2F 74 79 70 65 3D 70 6C 6D 6E 00", 1, "1/type=plmn", "", Read},
    {"the suffix ends the value", "31 2F 54 59 50 45 3D 50 4C 4D 4E 78 00", 1, "1", QString(),   Read},
    {"the first of two suffixes",
     "31 2F 54 59 50 45 3D 50 4C 4D 4E 2F 54 59 50 45 3D 50 4C 4D 4E 00", 1, "1", QString(),     Read},
    {"another type",     "31 2F 54 59 50 45 3D 49 50 76 34 00",    1, "1/TYPE=IPv4", "",  Read},
    {"a name in front",  "41 6E 6E 20 3C 61 40 62 3E 00",          0, "a@b", "Ann ",      Read},
    {"brackets alone",   "3C 61 40 62 3E 00",                      0, "a@b", "",          Read},
    {"no closing bracket","41 3C 61 40 62 00",                     0, "a@b", "A",         Read},
    {"text behind the bracket", "3C 61 40 62 3E 20 78 00",         0, "a@b", "",          Read},
    {"the first brackets", "3C 61 40 62 3E 3C 63 3E 00",           0, "a@b", "",          Read},
    {"two opening brackets", "3C 3C 61 40 62 3E 00",               0, "<a@b", "",         Read},
    {"the brackets the other way round", "41 3E 3C 61 40 62 00",   0, "", "A>",           Read},
    {"both, round the wrong way", "3E 3C 61 40 62 3E 00",          0, "", ">",            Read},
    {"at sign outside the brackets", "61 40 62 20 3C 31 3E 00",    0, "1", "a@b ",        Read},
    {"empty brackets",   "61 40 3C 3E 00",                         0, "", "a@",           Read},
    {"an opening bracket at the end", "61 40 3C 00",               0, "", "a@",           Read},
    {"a closing bracket alone", "61 40 62 3E 00",                  0, "a@b>", "",         Read},
    {"brackets without an at sign", "41 3C 31 3E 00",              1, "A<1>", "",         Read},
};
// clang-format on

static QDateTime dateTimeOf(const DateRow &row)
{
    return QDateTime(row.date ? QDate::fromString(row.date, Qt::ISODate) : QDate(),
                     row.time ? QTime::fromString(row.time, Qt::ISODate) : QTime());
}

class TestMsgFieldBase : public QObject {
    Q_OBJECT

private slots:
    void theBaseDoesNothing();
    void getBool();
    void setBool_data();
    void setBool();
    void setByteField_data();
    void setByteField();
    void setIntField_data();
    void setIntField();
    void setStrField_data();
    void setStrField();
    void dates_data();
    void dates();
    void datesAtTheTimeZoneChange();
    void failingDates_data();
    void failingDates();
    void noDate();
    void datesInOtherTimeZones();
    void getDateReads_data();
    void getDateReads();
    void address_data();
    void address();
    void addressIntoAUsedEntry();
    void failingAddress_data();
    void failingAddress();
    void addressList();
    void addressListStopsAtTheFirstFailure();
    void printEntry();
    void lengthPrefixed_data();
    void lengthPrefixed();
    void lengthPrefixedWithoutRoom();
};

/// Calls `write` with a buffer of every size up to one more than what it should write.
static void compareWrites(const std::function<quint32(WSP_Stream &)> &write, const QByteArray &wire,
                          quint32 result, quint32 resultWithoutRoom)
{
    const int size = int(fromHex(wire).size());
    for (int room = size + 1; room >= 0; --room) {
        OutWire out(room);
        QCOMPARE(write(out.stream), room < size ? resultWithoutRoom : result);
        QCOMPARE(out.stream.hasOverflowed(), room < size);
        QVERIFY(out.isCleanBehind());
        if (room >= size) {
            QCOMPARE(out.written(), toHex(fromHex(wire)));
        }
    }
}

void TestMsgFieldBase::theBaseDoesNothing()
{
    MsgFieldBase base;
    MMS_HDR_S header;
    InWire in("abc");
    QCOMPARE(base.read(in.stream, &header), 0U);
    QCOMPARE(base.write(in.stream, &header), 0U);
    QCOMPARE(in.stream.pos, 0);
    LogCapture log;
    base.printField(&header);
    QCOMPARE(log.lines(), QStringList());
}

void TestMsgFieldBase::getBool()
{
    for (int byte = 0; byte <= 255; ++byte) {
        for (const bool before : {false, true}) {
            InWire in(QByteArray(1, char(byte)));
            bool value = before;
            QCOMPARE(MsgFieldBase::getBool(in.stream, value), byte == 128 || byte == 129 ? 1U : 0U);
            QCOMPARE(value, byte == 128 ? true : byte == 129 ? false : before);
            QCOMPARE(in.stream.pos, 1);
        }
    }
    InWire in("");
    bool value = true;
    QCOMPARE(MsgFieldBase::getBool(in.stream, value), 0U);
    QVERIFY(value);
}

void TestMsgFieldBase::setBool_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("yes") << 6 << true << QByteArray("86 80");
    QTest::newRow("no") << 6 << false << QByteArray("86 81");
    QTest::newRow("another id") << 17 << true << QByteArray("91 80");
}

void TestMsgFieldBase::setBool()
{
    QFETCH(int, id);
    QFETCH(bool, value);
    QFETCH(QByteArray, wire);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::setBool(id, s, value); }, wire, 1, 1);
}

void TestMsgFieldBase::setByteField_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("0") << 0 << QByteArray("8A 00");
    QTest::newRow("127") << 127 << QByteArray("8A 7F");
    QTest::newRow("128") << 128 << QByteArray("8A 80");
    QTest::newRow("255") << 255 << QByteArray("8A FF");
}

void TestMsgFieldBase::setByteField()
{
    QFETCH(int, value);
    QFETCH(QByteArray, wire);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::setByteField(10, s, quint8(value)); },
                  wire, 1, 1);
}

void TestMsgFieldBase::setIntField_data()
{
    QTest::addColumn<qint32>("value");
    QTest::addColumn<quint32>("result");
    QTest::addColumn<QByteArray>("wire");
    for (const IntRow &row : kIntFields) {
        QTest::newRow(row.name) << row.value << row.result << QByteArray(row.wire);
    }
}

void TestMsgFieldBase::setIntField()
{
    QFETCH(qint32, value);
    QFETCH(quint32, result);
    QFETCH(QByteArray, wire);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::setIntField(14, s, value); }, wire,
                  result, 1);
}

void TestMsgFieldBase::setStrField_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("null writes nothing") << QString() << QByteArray() << QByteArray();
    QTest::newRow("empty writes nothing") << "" << QByteArray() << QByteArray();
    QTest::newRow("ASCII") << "ab" << QByteArray("8B 61 62 00") << QByteArray("8B 04 EA 61 62 00");
    QTest::newRow("not ASCII") << QStringLiteral("\u00E9") << QByteArray("8B 7F C3 A9 00")
                               << QByteArray("8B 05 EA 7F C3 A9 00");
}

void TestMsgFieldBase::setStrField()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, plain);
    QFETCH(QByteArray, encoded);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::setStrField(11, s, text); }, plain, 1,
                  0);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::setEncoStrField(11, s, text); },
                  encoded, 1, 0);
}

template <size_t N> static void addDates(const DateRow (&rows)[N])
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < N; ++i) {
        QTest::newRow(rows[i].name) << int(i);
    }
}

void TestMsgFieldBase::dates_data()
{
    addDates(kDates);
}

/// A local date goes to its seconds, to bytes, and back to the same local date.
void TestMsgFieldBase::dates()
{
    QFETCH(int, row);
    const TimeZone zone(kDates[row].zone);
    const QDateTime date = dateTimeOf(kDates[row]);
    QCOMPARE(MsgFieldBase::secsToUTC(date), kDates[row].seconds);

    OutWire out(16);
    QCOMPARE(MsgFieldBase::setDate(5, out.stream, date), 1U);
    OutWire expected(16);
    MsgFieldBase::setIntField(5, expected.stream, qint32(kDates[row].seconds));
    QCOMPARE(out.written(), expected.written());

    InWire in(out.array.toByteArray().mid(1));
    QDateTime read;
    QCOMPARE(MsgFieldBase::getDate(in.stream, read), 1U);
    QCOMPARE(in.stream.pos, out.stream.pos - 1);
    QCOMPARE(read.toSecsSinceEpoch(), kDates[row].seconds);
    QCOMPARE(read.toLocalTime().date(), date.date());
    QCOMPARE(read.toLocalTime().time(), date.time());
}

/// Half past two does not exist on the day that summer time begins, and twice when it ends.
void TestMsgFieldBase::datesAtTheTimeZoneChange()
{
    const TimeZone zone(kSummer);
    const qint64 missing = MsgFieldBase::secsToUTC(QDateTime(QDate(2024, 3, 31), QTime(2, 30)));
    QVERIFY2(missing == 1711848600 || missing == 1711845000, qPrintable(QString::number(missing)));
    const qint64 twice = MsgFieldBase::secsToUTC(QDateTime(QDate(2024, 10, 27), QTime(2, 30)));
    QVERIFY2(twice == 1729989000 || twice == 1729992600, qPrintable(QString::number(twice)));
}

void TestMsgFieldBase::failingDates_data()
{
    addDates(kFailingDates);
}

void TestMsgFieldBase::failingDates()
{
    QFETCH(int, row);
    const TimeZone zone(kFailingDates[row].zone);
    const QDateTime date = dateTimeOf(kFailingDates[row]);
    QCOMPARE(MsgFieldBase::secsToUTC(date), kFailingDates[row].seconds);
    OutWire out(16);
    QCOMPARE(MsgFieldBase::setDate(5, out.stream, date), 0U);
    QCOMPARE(out.written(), QByteArray());
}

void TestMsgFieldBase::noDate()
{
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime()), 0);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(QDate(), QTime())), 0);
    OutWire out(4);
    QCOMPARE(MsgFieldBase::setDate(5, out.stream, QDateTime()), 1U);
    QCOMPARE(out.written(), QByteArray("85 80"));
    OutWire full(1);
    QCOMPARE(MsgFieldBase::setDate(5, full.stream, QDateTime()), 1U);
    QVERIFY(full.stream.hasOverflowed());
}

/// A date-time of another time zone keeps its moment.
void TestMsgFieldBase::datesInOtherTimeZones()
{
    const TimeZone zone(kEast);
    const QDate day(2024, 2, 29);
    const QTime noon(12, 0);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(day, noon)), 1709197200);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(day, noon, Qt::UTC)), 1709208000);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(day, noon, Qt::OffsetFromUTC, 3600)), 1709204400);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(QDate(), noon, Qt::UTC)), -1);
    QCOMPARE(MsgFieldBase::secsToUTC(QDateTime(QDate(), QTime(), Qt::UTC)), 0);
}

void TestMsgFieldBase::getDateReads_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("0") << QByteArray("80") << qint64(0);
    QTest::newRow("0, long form") << QByteArray("01 00") << qint64(0);
    QTest::newRow("no bytes") << QByteArray("00") << qint64(0);
    QTest::newRow("four bytes") << QByteArray("04 65 D3 A1 80") << qint64(1708368256);
    QTest::newRow("the sign bit") << QByteArray("04 80 00 00 00") << qint64(2147483648);
    QTest::newRow("all bits") << QByteArray("04 FF FF FF FF") << qint64(4294967295);
    QTest::newRow("low 32 bits") << QByteArray("05 01 00 00 00 05") << qint64(5);
    QTest::newRow("nothing") << QByteArray("") << qint64(-1);
    QTest::newRow("cut") << QByteArray("04 65 D3 A1") << qint64(-1);
}

void TestMsgFieldBase::getDateReads()
{
    QFETCH(QByteArray, wire);
    QFETCH(qint64, seconds);
    InWire in(fromHex(wire));
    const QDateTime before(QDate(2001, 2, 3), QTime(4, 5));
    QDateTime date = before;
    QCOMPARE(MsgFieldBase::getDate(in.stream, date), seconds < 0 ? 0U : 1U);
    QCOMPARE(in.stream.pos, int(fromHex(wire).size()));
    QCOMPARE(date, seconds < 0 ? before : QDateTime::fromSecsSinceEpoch(seconds));
}

void TestMsgFieldBase::address_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kAddresses); ++i) {
        QTest::newRow(kAddresses[i].name) << int(i);
    }
}

void TestMsgFieldBase::address()
{
    QFETCH(int, row);
    const AddressRow &address = kAddresses[row];
    if (address.way != Read) {
        const WMFMEntry entry(quint8(address.type), address.value, address.contactName);
        compareWrites([&](WSP_Stream &s) { return MsgFieldBase::writeAddress(s, entry); },
                      address.wire, 1, 0);
    }
    if (address.way != Write) {
        InWire in(fromHex(address.wire) + "next");
        WMFMEntry entry;
        QCOMPARE(MsgFieldBase::readAddress(in.stream, entry), 1U);
        QCOMPARE(int(entry.getEntryType()), address.type);
        QCOMPARE(shown(entry.getEntryVal()), shown(address.value));
        QCOMPARE(shown(entry.getContactName()), shown(address.contactName));
        QCOMPARE(in.stream.pos, int(fromHex(address.wire).size()));
    }
}

/// A number with its suffix leaves the contact name alone; every other address sets it.
void TestMsgFieldBase::addressIntoAUsedEntry()
{
    WMFMEntry number(0, "old@x", "Old");
    InWire withSuffix("+1/TYPE=PLMN");
    QCOMPARE(MsgFieldBase::readAddress(withSuffix.stream, number), 1U);
    QCOMPARE(int(number.getEntryType()), 1);
    QCOMPARE(number.getEntryVal(), "+1");
    QCOMPARE(number.getContactName(), "Old");

    for (const char *text : {"12345", "a@b", "<a@b>"}) {
        WMFMEntry entry(0, "old@x", "Old");
        InWire in(text);
        QCOMPARE(MsgFieldBase::readAddress(in.stream, entry), 1U);
        QCOMPARE(shown(entry.getContactName()), "\"\"");
    }
}

void TestMsgFieldBase::failingAddress_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("no charset") << QByteArray("05");
    QTest::newRow("past the end") << QByteArray("05 EA 61 40");
    QTest::newRow("4 GB claimed") << QByteArray("1F 8F FF FF FF 7F EA 61 00");
    QTest::newRow("length smaller than the charset") << QByteArray("01 02 03 E8 61 00");
}

void TestMsgFieldBase::failingAddress()
{
    QFETCH(QByteArray, wire);
    InWire in(fromHex(wire));
    WMFMEntry entry(0, "old@x", "Old");
    QCOMPARE(MsgFieldBase::readAddress(in.stream, entry), 0U);
    QCOMPARE(int(entry.getEntryType()), 0);
    QCOMPARE(entry.getEntryVal(), "old@x");
    QCOMPARE(entry.getContactName(), "Old");
}

void TestMsgFieldBase::addressList()
{
    QValueList<WMFMEntry> entries;
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::writeAddressList(23, s, entries); }, "",
                  1, 1);
    entries.append(WMFMEntry(1, "1"));
    entries.append(WMFMEntry(0, "a@b", "Ann"));
    entries.append(WMFMEntry());
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::writeAddressList(23, s, entries); },
                  "97 31 2F 54 59 50 45 3D 50 4C 4D 4E 00  97 61 40 62 00  97 00", 1, 0);
}

void TestMsgFieldBase::addressListStopsAtTheFirstFailure()
{
    // The second of the addresses does not fit, the third would.
    const QValueList<WMFMEntry> entries{WMFMEntry(0, "a@b"), WMFMEntry(0, QString(50, 'x')),
                                        WMFMEntry(0, "c@d")};
    OutWire out(20);
    QCOMPARE(MsgFieldBase::writeAddressList(2, out.stream, entries), 0U);
    QCOMPARE(out.written(), QByteArray("82 61 40 62 00 82"));
}

void TestMsgFieldBase::printEntry()
{
    const WMFMEntry ann(0, "ann@x", "Ann");
    const WMFMEntry number(1, "+1");
    const WMFMEntry latin(1, QStringLiteral("\u00E9\u20AC"), QStringLiteral("\u00DF"));
    LogCapture log;
    MsgFieldBase::printEntry(ann);
    MsgFieldBase::printEntry(number);
    MsgFieldBase::printEntry(latin);
    QCOMPARE(log.lines(),
             (QStringList{"\tann@x Ann", "\t+1 ", QStringLiteral("\t\u00E9? \u00DF")}));
    log.clear();
    MsgFieldBase::printEntry(WMFMEntry());
    MsgFieldBase::printEntry(WMFMEntry(0, "", "Ann"));
    MsgFieldBase::printEntry(WMFMEntry(127, "ann@x", "Ann"));
    QCOMPARE(log.lines(), QStringList());
    MsgFieldBase::printEntryList({number, WMFMEntry(), ann});
    QCOMPARE(log.lines(), (QStringList{"\t+1 ", "\tann@x Ann"}));
    log.clear();
    MsgFieldBase::printEntryList({});
    QCOMPARE(log.lines(), QStringList());
}

void TestMsgFieldBase::lengthPrefixed_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("length");
    QTest::newRow("nothing") << 0 << QByteArray("00");
    QTest::newRow("one byte") << 1 << QByteArray("01");
    QTest::newRow("30 bytes") << 30 << QByteArray("1E");
    QTest::newRow("31 bytes") << 31 << QByteArray("1F 1F");
    QTest::newRow("the whole scratch") << 1024 << QByteArray("1F 88 00");
}

void TestMsgFieldBase::lengthPrefixed()
{
    QFETCH(int, size);
    QFETCH(QByteArray, length);
    const QByteArray bytes(size, 'x');
    OutWire value(1024);
    value.stream.writeBytes(bytes.constData(), size);
    const QByteArray wire = length + ' ' + toHex(bytes);
    compareWrites([&](WSP_Stream &s) { return MsgFieldBase::writeLengthPrefixed(s, value.stream); },
                  wire, 1, 0);
}

/// A value that was cut marks the stream that it goes to.
void TestMsgFieldBase::lengthPrefixedWithoutRoom()
{
    OutWire value(1);
    value.stream.writeByte(1);
    value.stream.writeByte(2);
    OutWire out(8);
    QCOMPARE(MsgFieldBase::writeLengthPrefixed(out.stream, value.stream), 1U);
    QVERIFY(out.stream.hasOverflowed());
    QCOMPARE(out.written(), QByteArray("01 01"));
    QCOMPARE(MsgFieldBase::kScratchSize, 1024);
}

QTEST_GUILESS_MAIN(TestMsgFieldBase)
#include "tst_msgfieldbase.moc"
