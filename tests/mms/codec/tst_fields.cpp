// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmentry.h"
#include "mms/codec/fields.h"
#include "mms/model/wmmsmsg.h"
#include "tests/mms/codec/wire.h"
#include "tests/support/log_capture.h"
#include "tests/support/time_zone.h"

#include <QtTest/QtTest>

#include <climits>
#include <memory>

using Set = void (*)(MMS_HDR_S &);

/// A value of one field: its bytes behind the id byte, and what sets it in the header. Of the bytes
/// cut short, those of `accepted` bytes and more are read all the same: texts end with the stream.
struct ValueRow {
    int id;
    const char *name;
    QByteArray wire;
    Set set;
    Way way;
    int accepted;
};
static constexpr int kNone = INT_MAX;

/// A write that is out of the ordinary: its result and its bytes with the id.
struct WriteRow {
    int id;
    const char *name;
    Set set;
    quint32 result;
    QByteArray wire;
};

/// A read that fails, and where it stops.
struct FailingRow {
    int id;
    const char *name;
    const char *wire;
    int stopsAt;
};

struct PrintRow {
    int id;
    const char *name;
    Set set;
    QStringList lines;
};

/// A content type on the wire with what a message that had nothing gets from it.
struct TypeRow {
    const char *name;
    QByteArray wire;
    const char *mimeType;
    QMap<QString, QString> params;
};

static QDateTime utc(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

static void setType(MMS_HDR_S &h, int media)
{
    h.contentType.setWellKnownMedia(quint8(media));
}

static const QByteArray kOfX1024 = QByteArray(" 78").repeated(1021);

// clang-format off
static const ValueRow kValues[] = {
    {1, "number", "2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", [](MMS_HDR_S &h) { h.bcc = {WMFMEntry(1, "+1")}; }, Both, 1},
    {1, "e-mail", "61 40 62 00",        [](MMS_HDR_S &h) { h.bcc = {WMFMEntry(0, "a@b")}; }, Both, 1},
    {1, "with a name", "41 20 3C 61 40 62 3E 00", [](MMS_HDR_S &h) { h.bcc = {WMFMEntry(0, "a@b", "A ")}; }, Read, 1},
    {2, "number", "2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", [](MMS_HDR_S &h) { h.cc = {WMFMEntry(1, "+1")}; }, Both, 1},
    {2, "e-mail", "61 40 62 00",        [](MMS_HDR_S &h) { h.cc = {WMFMEntry(0, "a@b")}; }, Both, 1},
    {2, "nothing is a null number", "00", [](MMS_HDR_S &h) { h.cc = {WMFMEntry(1, QString())}; }, Read, kNone},
    {23, "number", "2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", [](MMS_HDR_S &h) { h.to = {WMFMEntry(1, "+1")}; }, Both, 1},
    {23, "not ASCII", "06 EA 7F C3 A9 40 00",
     [](MMS_HDR_S &h) { h.to = {WMFMEntry(0, QStringLiteral("\u00E9@"))}; }, Both, kNone},
    {23, "bare number", "31 32 33 34 35 00", [](MMS_HDR_S &h) { h.to = {WMFMEntry(1, "12345")}; }, Read, 1},

    {3, "address", "68 74 74 70 3A 2F 2F 61 00", [](MMS_HDR_S &h) { h.contentLocation = "http://a"; }, Both, 1},
    {3, "null from the wire", "00",       [](MMS_HDR_S &) {}, Read, kNone},
    {11, "ASCII", "3C 69 64 3E 00",       [](MMS_HDR_S &h) { h.msgID = "<id>"; }, Both, 1},
    {11, "not ASCII", "7F C3 A9 00",      [](MMS_HDR_S &h) { h.msgID = QStringLiteral("\u00E9"); }, Both, 1},
    {11, "empty from the wire", "7F 00",  [](MMS_HDR_S &h) { h.msgID = ""; }, Read, 1},
    {24, "ASCII", "54 2D 31 00",          [](MMS_HDR_S &h) { h.transactionId = "T-1"; }, Both, 1},
    {24, "null from the wire", "00",      [](MMS_HDR_S &) {}, Read, kNone},

    {19, "ASCII", "04 EA 4F 4B 00",       [](MMS_HDR_S &h) { h.responseText = "OK"; }, Both, kNone},
    {19, "not ASCII", "05 EA 7F C3 A9 00", [](MMS_HDR_S &h) { h.responseText = QStringLiteral("\u00E9"); }, Both, kNone},
    {19, "plain", "4F 4B 00",             [](MMS_HDR_S &h) { h.responseText = "OK"; }, Read, 1},
    {19, "null from the wire", "00",      [](MMS_HDR_S &) {}, Read, kNone},
    {19, "empty from the wire", "02 EA 00", [](MMS_HDR_S &h) { h.responseText = ""; }, Read, kNone},
    {22, "ASCII", "05 EA 61 62 63 00",    [](MMS_HDR_S &h) { h.subject = "abc"; }, Both, 0},
    {22, "not ASCII", "08 EA 7F E2 82 AC 20 21 00", [](MMS_HDR_S &h) { h.subject = QStringLiteral("\u20AC !"); }, Read, 0},
    {22, "plain", "61 62 63 00",          [](MMS_HDR_S &h) { h.subject = "abc"; }, Read, 0},
    {22, "another charset", "05 84 61 62 63 00", [](MMS_HDR_S &h) { h.subject = "abc"; }, Read, 0},

    {4, "media alone", "B3",              [](MMS_HDR_S &h) { setType(h, 0x33); }, Both, kNone},
    {4, "media 0x43", "C3",               [](MMS_HDR_S &h) { setType(h, 0x43); }, Both, kNone},
    {4, "lowest media alone", "81",       [](MMS_HDR_S &h) { setType(h, 0x01); }, Both, kNone},
    {4, "highest media alone", "FF",      [](MMS_HDR_S &h) { setType(h, 0x7F); }, Both, kNone},
    {4, "start", "06 B3 8A 3C 61 3E 00",  [](MMS_HDR_S &h) { setType(h, 0x33); h.contentType.setParamStart("<a>"); }, Both, 6},
    {4, "type", "05 B3 89 61 62 00",      [](MMS_HDR_S &h) { setType(h, 0x33); h.contentType.setParamType("ab"); }, Both, 5},
    {4, "application id", "12 B3 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 78 00",
     [](MMS_HDR_S &h) { setType(h, 0x33); h.contentType.setParam("Application-ID", "x"); }, Both, 18},
    {4, "reply application id",
     "1B B3 52 65 70 6C 79 2D 54 6F 2D 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 78 00",
     [](MMS_HDR_S &h) { setType(h, 0x33); h.contentType.setParam("Reply-To-Application-ID", "x"); }, Both, 27},
    {4, "start, type and application ids in this order",
     "1F 34 B3 8A 3C 61 3E 00 89 62 00 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 78 00"
     " 52 65 70 6C 79 2D 54 6F 2D 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 79 00",
     [](MMS_HDR_S &h) {
         setType(h, 0x33);
         h.contentType.setParam("Application-ID", "x");
         h.contentType.setParam("Reply-To-Application-ID", "y");
         h.contentType.setParamType("b");
         h.contentType.setParamStart("<a>");
     }, Both, 53},

    {5, "a date", "04 65 D3 A1 80",       [](MMS_HDR_S &h) { h.msgDate = utc(1708368256); }, Both, kNone},
    {5, "the first second", "80",         [](MMS_HDR_S &h) { h.msgDate = utc(0); }, Both, kNone},
    {5, "127 seconds", "FF",              [](MMS_HDR_S &h) { h.msgDate = utc(127); }, Both, kNone},
    {5, "the last 31 bit second", "04 7F FF FF FF", [](MMS_HDR_S &h) { h.msgDate = utc(INT_MAX); }, Both, kNone},
    {5, "the first of 32 bits", "04 80 00 00 00", [](MMS_HDR_S &h) { h.msgDate = utc(2147483648); }, Read, kNone},
    {5, "the last 32 bit second", "04 FF FF FF FF", [](MMS_HDR_S &h) { h.msgDate = utc(UINT_MAX); }, Read, kNone},
    {7, "absolute", "06 80 04 65 D3 A1 80", [](MMS_HDR_S &h) { h.deliveryTime = utc(1708368256); }, Both, kNone},
    {7, "absolute, one byte", "02 80 81", [](MMS_HDR_S &h) { h.deliveryTime = utc(1); }, Both, kNone},
    {7, "absolute, the first of 32 bits", "06 80 04 80 00 00 00", [](MMS_HDR_S &h) { h.deliveryTime = utc(2147483648); }, Both, kNone},
    {7, "absolute, the last of 32 bits", "06 80 04 FF FF FF FF", [](MMS_HDR_S &h) { h.deliveryTime = utc(UINT_MAX); }, Both, kNone},
    {7, "absolute, 128", "03 80 01 80",   [](MMS_HDR_S &h) { h.deliveryTime = utc(128); }, Both, kNone},
    {7, "the last 31 bit second", "06 80 04 7F FF FF FF", [](MMS_HDR_S &h) { h.deliveryTime = utc(INT_MAX); }, Both, kNone},
    {7, "absolute 0", "02 80 80",         [](MMS_HDR_S &h) { h.deliveryTime = utc(0); }, Read, kNone},
    {7, "the value-length is read and not used", "45 80 81", [](MMS_HDR_S &h) { h.deliveryTime = utc(1); }, Read, kNone},
    {7, "length 0", "00 80 81",           [](MMS_HDR_S &h) { h.deliveryTime = utc(1); }, Read, kNone},
    {8, "an hour", "04 81 02 0E 10",      [](MMS_HDR_S &h) { h.expiry = 3600; }, Both, kNone},
    {8, "0", "02 81 80",                  [](MMS_HDR_S &h) { h.expiry = 0; }, Both, kNone},
    {8, "127", "02 81 FF",                [](MMS_HDR_S &h) { h.expiry = 127; }, Both, kNone},
    {8, "highest", "06 81 04 7F FF FF FF", [](MMS_HDR_S &h) { h.expiry = INT_MAX; }, Both, kNone},
    {8, "32 bits are negative", "06 81 04 80 00 00 00", [](MMS_HDR_S &h) { h.expiry = INT_MIN; }, Read, kNone},
    {8, "all bits are none", "06 81 04 FF FF FF FF", [](MMS_HDR_S &) {}, Read, kNone},
    {8, "the value-length is not used", "1F 8F FF FF FF 7F 81 81", [](MMS_HDR_S &h) { h.expiry = 1; }, Read, kNone},

    {9, "number", "10 80 2B 31 32 33 2F 54 59 50 45 3D 50 4C 4D 4E 00",
     [](MMS_HDR_S &h) { h.from = WMFMEntry(1, "+123"); }, Read, 3},
    {9, "number, its length", "0F 80 2B 31 32 2F 54 59 50 45 3D 50 4C 4D 4E 00",
     [](MMS_HDR_S &h) { h.from = WMFMEntry(1, "+12"); }, Both, 3},
    {9, "e-mail", "05 80 61 40 62 00",    [](MMS_HDR_S &h) { h.from = WMFMEntry(0, "a@b"); }, Both, 3},
    {9, "e-mail, not ASCII", "08 80 06 EA 7F C3 A9 40 00",
     [](MMS_HDR_S &h) { h.from = WMFMEntry(0, QStringLiteral("\u00E9@")); }, Both, kNone},
    {9, "insert-address", "01 81",        [](MMS_HDR_S &) {}, Both, kNone},
    {9, "with a name", "09 80 41 20 3C 61 40 62 3E 00", [](MMS_HDR_S &h) { h.from = WMFMEntry(0, "a@b", "A "); }, Read, 3},
    {9, "the value-length is not used", "FF 80 61 40 62 00", [](MMS_HDR_S &h) { h.from = WMFMEntry(0, "a@b"); }, Read, 3},

    {6, "yes", "80",                      [](MMS_HDR_S &h) { h.deliveryReport = true; }, Both, kNone},
    {6, "no", "81",                       [](MMS_HDR_S &h) { h.deliveryReport = false; }, Both, kNone},
    {16, "yes", "80",                     [](MMS_HDR_S &h) { h.readReport = true; }, Both, kNone},
    {16, "no", "81",                      [](MMS_HDR_S &h) { h.readReport = false; }, Both, kNone},
    {17, "yes", "80",                     [](MMS_HDR_S &h) { h.reportAllowed = true; }, Both, kNone},
    {17, "no", "81",                      [](MMS_HDR_S &h) { h.reportAllowed = false; }, Both, kNone},
    {20, "on the wire shown is 129", "81",            [](MMS_HDR_S &h) { h.senderVisibility = true; }, Both, kNone},
    {20, "shown is 129 and hidden 128", "80",           [](MMS_HDR_S &h) { h.senderVisibility = false; }, Both, kNone},

    {10, "personal", "80",                [](MMS_HDR_S &h) { h.msgClass = 128; }, Both, kNone},
    {10, "unchecked", "00",               [](MMS_HDR_S &h) { h.msgClass = 0; }, Both, kNone},
    {12, "send request", "80",            [](MMS_HDR_S &h) { h.msgType = 128; }, Both, kNone},
    {12, "unchecked", "FF",               [](MMS_HDR_S &h) { h.msgType = 255; }, Both, kNone},
    {15, "high", "82",                    [](MMS_HDR_S &h) { h.priority = 130; }, Both, kNone},
    {15, "unchecked", "7F",               [](MMS_HDR_S &h) { h.priority = 127; }, Both, kNone},
    {18, "accepted", "80",                [](MMS_HDR_S &h) { h.responseStatus = 128; }, Both, kNone},
    {18, "unchecked", "01",               [](MMS_HDR_S &h) { h.responseStatus = 1; }, Both, kNone},
    {21, "retrieved", "81",               [](MMS_HDR_S &h) { h.msgStatus = 129; }, Both, kNone},
    {21, "unchecked", "C0",               [](MMS_HDR_S &h) { h.msgStatus = 192; }, Both, kNone},

    {13, "1.0", "90",                     [](MMS_HDR_S &h) { h.version = 0x10; }, Both, kNone},
    {13, "7.15", "FF",                    [](MMS_HDR_S &h) { h.version = 0x7F; }, Both, kNone},
    {13, "8.0 is a long integer", "01 80", [](MMS_HDR_S &h) { h.version = 0x80; }, Both, kNone},
    {13, "the low 8 bits", "02 01 12",    [](MMS_HDR_S &h) { h.version = 0x12; }, Read, kNone},
    {14, "0", "80",                       [](MMS_HDR_S &h) { h.msgSize = 0; }, Both, kNone},
    {14, "300000", "03 04 93 E0",         [](MMS_HDR_S &h) { h.msgSize = 300000; }, Both, kNone},
    {14, "highest", "04 7F FF FF FF",     [](MMS_HDR_S &h) { h.msgSize = INT_MAX; }, Both, kNone},
    {14, "32 bits are negative", "04 FF FF FF FF", [](MMS_HDR_S &h) { h.msgSize = -1; }, Read, kNone},
};

static const TypeRow kTypes[] = {
    {"128 is a length here, not a media number",
     "80 83 89" + QByteArray(" 78").repeated(125) + " 00", "text/plain", {{"type", QString(125, 'x')}}},
    {"length 1", "01 B3", "application/vnd.wap.multipart.related", {}},
    {"length 0", "00 B3", "application/vnd.wap.multipart.related", {}},
    {"length-quote", "1F 01 B3", "application/vnd.wap.multipart.related", {}},
    {"a media of two bytes counts as one byte", "02 01 33 41 00 42 00",
     "application/vnd.wap.multipart.related", {{"A", "B"}}},
    {"media above 127", "01 01 83", "video/3gpp", {}},
    {"media outside the table", "01 01 A4", "", {}},
    {"highest media", "01 01 FF", "", {}},
    {"the low 8 bits of the media", "01 02 01 33", "application/vnd.wap.multipart.related", {}},
    {"start in quotes", "07 B3 8A 22 3C 61 3E 00", "application/vnd.wap.multipart.related", {{"start", "<a>"}}},
    {"the quote at the end stays", "08 B3 8A 22 3C 61 3E 22 00",
     "application/vnd.wap.multipart.related", {{"start", "<a>\""}}},
    {"a quote alone", "04 B3 8A 22 00", "application/vnd.wap.multipart.related", {}},
    {"an empty type is none", "03 B3 89 00", "application/vnd.wap.multipart.related", {}},
    {"charset 106 is none", "03 83 81 EA", "text/plain", {}},
    {"charset 3 is none", "03 83 81 83", "text/plain", {}},
    {"charset 999", "05 83 81 02 03 E7", "text/plain", {}},
    {"charset 1000", "05 83 81 02 03 E8", "text/plain", {{"charset", "UCS2"}}},
    {"charset 1001", "05 83 81 02 03 E9", "text/plain", {}},
    {"charset 1012", "05 83 81 02 03 F4", "text/plain", {}},
    {"charset 1013", "05 83 81 02 03 F5", "text/plain", {{"charset", "UTF-16BE"}}},
    {"charset 1014", "05 83 81 02 03 F6", "text/plain", {{"charset", "UTF-16LE"}}},
    {"charset 1015", "05 83 81 02 03 F7", "text/plain", {{"charset", "UTF-16"}}},
    {"charset 1016", "05 83 81 02 03 F8", "text/plain", {}},
    {"behind a long charset", "08 83 81 02 03 F7 89 61 00", "text/plain", {{"charset", "UTF-16"}, {"type", "a"}}},
    {"the value of another parameter is not skipped", "06 83 85 66 00 67 00", "text/plain", {{"f", "g"}}},
    {"another parameter without a value", "02 83 85", "text/plain", {}},
    {"the value of another parameter is a parameter", "06 83 88 89 61 62 00", "text/plain", {{"type", "ab"}}},
    {"named", "0A 83 6E 61 6D 65 00 61 2E 62 00", "text/plain", {{"name", "a.b"}}},
    {"named, two", "0A 83 61 62 00 31 32 00 63 00 64 00", "text/plain", {{"ab", "12"}, {"c", "d"}}},
    {"named, case kept", "05 83 4E 00 56 00", "text/plain", {{"N", "V"}}},
    {"named, the last of two", "09 83 61 00 31 00 61 00 32 00", "text/plain", {{"a", "2"}}},
    {"named, no name", "04 83 00 78 00", "text/plain", {{"", "x"}}},
    {"named, no value", "04 83 61 00 00", "text/plain", {}},
    {"named, quoted", "07 83 7F C3 A9 00 31 00 62 00 32 00", "text/plain",
     {{QStringLiteral("\u00E9"), "1"}, {"b", "2"}}},
    {"a text takes its number of characters from what remains", "05 83 89 C3 A9 00 41 00 42 00",
     "text/plain", {{"type", QStringLiteral("\u00E9")}, {"A", "B"}}},
    {"a text may reach behind the length", "03 83 89 61 62 63 00", "text/plain", {{"type", "abc"}}},
};

static const WriteRow kWrites[] = {
    {1, "no entry",               [](MMS_HDR_S &) {}, 1, ""},
    {1, "two entries",            [](MMS_HDR_S &h) { h.bcc = {WMFMEntry(0, "a@b"), WMFMEntry(1, "1")}; }, 1,
     "81 61 40 62 00 81 31 2F 54 59 50 45 3D 50 4C 4D 4E 00"},
    {2, "no entry",               [](MMS_HDR_S &) {}, 1, ""},
    {2, "two entries",            [](MMS_HDR_S &h) { h.cc = {WMFMEntry(0, "a"), WMFMEntry(0, "b")}; }, 1, "82 61 00 82 62 00"},
    {23, "no entry",              [](MMS_HDR_S &) {}, 1, ""},
    {23, "two entries",           [](MMS_HDR_S &h) { h.to = {WMFMEntry(0, "a"), WMFMEntry(0, "b")}; }, 1, "97 61 00 97 62 00"},
    {3, "null",                   [](MMS_HDR_S &) {}, 1, ""},
    {3, "empty",                  [](MMS_HDR_S &h) { h.contentLocation = ""; }, 1, ""},
    {11, "null",                  [](MMS_HDR_S &) {}, 1, ""},
    {11, "empty",                 [](MMS_HDR_S &h) { h.msgID = ""; }, 1, ""},
    {19, "null",                  [](MMS_HDR_S &) {}, 1, ""},
    {19, "empty",                 [](MMS_HDR_S &h) { h.responseText = ""; }, 1, ""},
    {22, "null",                  [](MMS_HDR_S &) {}, 1, ""},
    {22, "empty",                 [](MMS_HDR_S &h) { h.subject = ""; }, 1, ""},
    {24, "null",                  [](MMS_HDR_S &) {}, 1, ""},
    {24, "empty",                 [](MMS_HDR_S &h) { h.transactionId = ""; }, 1, ""},

    {4, "empty",                  [](MMS_HDR_S &) {}, 1, ""},
    {4, "no sub type",            [](MMS_HDR_S &h) { h.contentType.setMainType("text"); }, 1, ""},
    {4, "no number: the id stays",[](MMS_HDR_S &h) { h.contentType.setMimeType("x/y"); }, 0, "84"},
    {4, "no number, parameters",  [](MMS_HDR_S &h) { h.contentType.setMimeType("x/y"); h.contentType.setParamType("a"); }, 0, "84"},
    {4, "the lowest media",       [](MMS_HDR_S &h) { setType(h, 0); }, 1, "84 80"},
    {4, "media 128",              [](MMS_HDR_S &h) { setType(h, 0x80); }, 1, "84 01 80"},
    {4, "the highest media",      [](MMS_HDR_S &h) { setType(h, 0xA3); }, 1, "84 01 A3"},
    {4, "media above 127, parameters", [](MMS_HDR_S &h) { setType(h, 0x83); h.contentType.setParamType("a"); }, 1, "84 04 83 89 61 00"},
    {4, "charset and name are dropped",
     [](MMS_HDR_S &h) { setType(h, 3); h.contentType.setParam("charset", "UTF-16"); h.contentType.setParam("name", "a"); },
     1, "84 01 83"},
    {4, "not ASCII",
     [](MMS_HDR_S &h) { setType(h, 3); h.contentType.setParamStart(QStringLiteral("\u00E9")); }, 1, "84 06 83 8A 7F C3 A9 00"},
    {4, "another case is another name", [](MMS_HDR_S &h) { setType(h, 3); h.contentType.setParam("application-id", "a"); }, 1, "84 01 83"},
    {4, "1024 bytes of value",    [](MMS_HDR_S &h) { setType(h, 3); h.contentType.setParamType(QString(1021, 'x')); },
     1, "84 1F 88 00 83 89" + kOfX1024 + " 00"},

    {5, "no date is 0",           [](MMS_HDR_S &) {}, 1, "85 80"},
    {5, "invalid",                [](MMS_HDR_S &h) { h.msgDate = QDateTime(QDate(), QTime(1, 0)); }, 0, ""},
    {5, "before 1970",            [](MMS_HDR_S &h) { h.msgDate = utc(-1); }, 0, ""},
    {5, "32 bits",                [](MMS_HDR_S &h) { h.msgDate = utc(2147483648); }, 0, ""},
    {5, "33 bits do not wrap",    [](MMS_HDR_S &h) { h.msgDate = utc(4294967297); }, 0, ""},
    {7, "no date",                [](MMS_HDR_S &) {}, 1, ""},
    {7, "the first second is none", [](MMS_HDR_S &h) { h.deliveryTime = utc(0); }, 1, ""},
    {7, "invalid",                [](MMS_HDR_S &h) { h.deliveryTime = QDateTime(QDate(), QTime(1, 0)); }, 0, ""},
    {7, "before 1970",            [](MMS_HDR_S &h) { h.deliveryTime = utc(-1); }, 0, ""},
    {7, "beyond 32 bits",         [](MMS_HDR_S &h) { h.deliveryTime = utc(4294967296); }, 0, ""},
    {7, "33 bits do not wrap",    [](MMS_HDR_S &h) { h.deliveryTime = utc(4294967297); }, 0, ""},
    {8, "none",                   [](MMS_HDR_S &h) { h.expiry = -1; }, 1, ""},
    {8, "negative keeps 7 bits",  [](MMS_HDR_S &h) { h.expiry = -2; }, 1, "88 02 81 FE"},
    {8, "lowest",                 [](MMS_HDR_S &h) { h.expiry = INT_MIN; }, 1, "88 02 81 80"},
    {9, "no type",                [](MMS_HDR_S &h) { h.from = WMFMEntry(127, "a@b"); }, 1, "89 01 81"},
    {9, "no address",             [](MMS_HDR_S &h) { h.from = WMFMEntry(1, "", "Ann"); }, 1, "89 01 81"},
    {9, "the name is not written",[](MMS_HDR_S &h) { h.from = WMFMEntry(0, "a@b", "Ann"); }, 1, "89 05 80 61 40 62 00"},
    {9, "length 31",              [](MMS_HDR_S &h) { h.from = WMFMEntry(0, QString(29, 'x')); }, 1,
     "89 1F 1F 80" + QByteArray(" 78").repeated(29) + " 00"},
    {9, "1024 bytes of value",    [](MMS_HDR_S &h) { h.from = WMFMEntry(0, QString(1022, 'x')); }, 1,
     "89 1F 88 00 80" + kOfX1024 + " 78 00"},
    {14, "negative",              [](MMS_HDR_S &h) { h.msgSize = -1; }, 0, ""},
};

static const FailingRow kFailures[] = {
    {1, "nothing", "", 0},                {1, "past the end", "05 EA 61", 2},
    {2, "nothing", "", 0},                {2, "no charset", "05", 1},
    {23, "nothing", "", 0},               {23, "4 GB claimed", "1F 8F FF FF FF 7F EA 61 00", 7},
    {3, "nothing", "", 0},                {11, "nothing", "", 0},
    {24, "nothing", "", 0},               {19, "nothing", "", 0},
    {19, "length smaller than the charset", "02 02 03 E8 61", 4},
    {5, "nothing", "", 0},                {5, "cut", "04 01 02", 3},
    {6, "nothing", "", 0},                {6, "127", "7F", 1},          {6, "130", "82", 1},
    {16, "nothing", "", 0},               {16, "0", "00", 1},
    {17, "nothing", "", 0},               {17, "255", "FF", 1},
    {20, "nothing", "", 0},               {20, "130", "82", 1},
    {10, "nothing", "", 0},               {12, "nothing", "", 0},
    {15, "nothing", "", 0},               {18, "nothing", "", 0},
    {21, "nothing", "", 0},
    {13, "nothing", "", 0},               {13, "cut", "02 01", 2},
    {14, "nothing", "", 0},               {14, "127 bytes claimed", "7F 01 02", 3},
    {7, "nothing", "", 0},                {7, "no token", "05", 1},
    {7, "no value", "05 80", 2},          {7, "value cut", "05 81 04 01", 4},
    {7, "length cut", "1F 81", 2},        {7, "another token", "02 82 81", 3},
    {7, "token 127", "02 7F 81", 3},
    {8, "nothing", "", 0},                {8, "no token", "05", 1},
    {8, "no value", "05 81", 2},          {8, "value cut", "05 80 04 01", 4},
    {8, "length cut", "1F", 1},           {8, "another token", "02 82 81", 3},
    {9, "nothing", "", 0},                {9, "no token", "05", 1},
    {9, "no address", "05 80", 2},        {9, "address cut", "05 80 05 EA 61", 4},
    {9, "another token", "05 82 41 00", 2}, {9, "length cut", "1F 81", 2},
    {4, "nothing", "", 0},                {4, "no media", "01", 1},
    {4, "length cut", "1F 81", 2},        {4, "media cut", "05 02 33", 3},
    {4, "a media type as text", "69 6D 61 67 65 2F 67 69 66 00", 10},
};

/// Content types that fail behind their media: what was read by then stays.
static const FailingRow kFailingTypes[] = {
    {4, "no parameter", "05 B3", 2},
    {4, "128 alone", "80 B3", 2},
    {4, "Type without text", "05 B3 89", 3},
    {4, "Start without text", "05 B3 8A", 3},
    {4, "Start of a quote", "05 B3 8A 22", 4},
    {4, "no charset", "05 B3 81", 3},
    {4, "charset cut", "05 B3 81 02 03", 5},
    {4, "name without value", "05 B3 41 00", 4},
    {4, "name alone", "05 B3 41", 3},
    {4, "one byte short", "06 B3 89 61 62 00", 6},
    {4, "another parameter at the end", "09 B3 85 66 00", 5},
    {4, "4 GB claimed", "1F 8F FF FF FF 7F B3 85 85 85", 10},
    {4, "4 GB claimed, parameters", "1F 8F FF FF FF 7F B3 41 00 42 00", 11},
};

static const PrintRow kPrints[] = {
    {1, "no entry",  [](MMS_HDR_S &) {}, {}},
    {1, "two",       [](MMS_HDR_S &h) { h.bcc = {WMFMEntry(1, "1"), WMFMEntry(0, "a@b", "A")}; }, {"bcc: ", "\t1 ", "\ta@b A"}},
    {1, "invalid",   [](MMS_HDR_S &h) { h.bcc = {WMFMEntry()}; }, {"bcc: "}},
    {2, "no entry",  [](MMS_HDR_S &) {}, {}},
    {2, "one",       [](MMS_HDR_S &h) { h.cc = {WMFMEntry(1, "1")}; }, {"cc: ", "\t1 "}},
    {3, "text",      [](MMS_HDR_S &h) { h.contentLocation = "http://a"; }, {"contentLocation: http://a"}},
    {3, "null",      [](MMS_HDR_S &) {}, {"contentLocation: "}},
    {4, "type",      [](MMS_HDR_S &h) { setType(h, 3); }, {"contentType: text/plain "}},
    {4, "parameters",[](MMS_HDR_S &h) { setType(h, 3); h.contentType.setParam("b", "2"); h.contentType.setParam("a", "1"); },
     {"contentType: text/plain ;a=1;b=2;"}},
    {4, "empty",     [](MMS_HDR_S &) {}, {"contentType:  "}},
    {5, "date",      [](MMS_HDR_S &h) { h.msgDate = utc(1709251199); }, {"msgDate: Thu Feb 29 23:59:59 2024"}},
    {5, "null",      [](MMS_HDR_S &) {}, {"msgDate: "}},
    {6, "yes",       [](MMS_HDR_S &h) { h.deliveryReport = true; }, {"deliveryReport: 1"}},
    {6, "no",        [](MMS_HDR_S &) {}, {"deliveryReport: 0"}},
    {7, "the log text lacks its first letter", [](MMS_HDR_S &h) { h.deliveryTime = utc(1); }, {"eliveryTime: Thu Jan 1 00:00:01 1970"}},
    {7, "null",      [](MMS_HDR_S &) {}, {"eliveryTime: "}},
    {8, "seconds",   [](MMS_HDR_S &h) { h.expiry = 3600; }, {"expiry: 3600"}},
    {8, "none",      [](MMS_HDR_S &) {}, {"expiry: -1"}},
    {9, "address",   [](MMS_HDR_S &h) { h.from = WMFMEntry(0, "a@b", "Ann"); }, {"from: ", "\ta@b Ann"}},
    {9, "invalid",   [](MMS_HDR_S &h) { h.from = WMFMEntry(1, ""); }, {}},
    {10, "name",     [](MMS_HDR_S &h) { h.msgClass = 129; }, {"msgClass: ADVERTISEMENT"}},
    {11, "text",     [](MMS_HDR_S &h) { h.msgID = "<id>"; }, {"msgID: <id>"}},
    {12, "name",     [](MMS_HDR_S &h) { h.msgType = 132; }, {"PDUType: RETRIEVE_CONF"}},
    {12, "stored",   [](MMS_HDR_S &h) { h.msgType = 135; }, {"PDUType: unknown"}},
    {13, "1.2",      [](MMS_HDR_S &h) { h.version = 0x12; }, {"version: 1.2"}},
    {13, "15.15",    [](MMS_HDR_S &h) { h.version = 0xFF; }, {"version: 15.15"}},
    {13, "0.0",      [](MMS_HDR_S &) {}, {"version: 0.0"}},
    {14, "size",     [](MMS_HDR_S &h) { h.msgSize = 300000; }, {"msgSize: 300000"}},
    {14, "negative", [](MMS_HDR_S &h) { h.msgSize = INT_MIN; }, {"msgSize: -2147483648"}},
    {15, "a priority is never printed", [](MMS_HDR_S &h) { h.priority = 129; }, {}},
    {16, "yes",      [](MMS_HDR_S &h) { h.readReport = true; }, {"readReport: 1"}},
    {17, "yes",      [](MMS_HDR_S &h) { h.reportAllowed = true; }, {"reportAllowed: 1"}},
    {18, "name",     [](MMS_HDR_S &h) { h.responseStatus = 224; }, {"responseStatus: RR_PERM_FAIL"}},
    {18, "unknown",  [](MMS_HDR_S &h) { h.responseStatus = 137; }, {"responseStatus: unknown"}},
    {19, "text",     [](MMS_HDR_S &h) { h.responseText = "OK"; }, {"responseText: OK"}},
    {20, "shown",    [](MMS_HDR_S &h) { h.senderVisibility = true; }, {"senderVisibility: 1"}},
    {20, "hidden",   [](MMS_HDR_S &) {}, {"senderVisibility: 0"}},
    {21, "name",     [](MMS_HDR_S &h) { h.msgStatus = 131; }, {"msgStatus: DEFERRED"}},
    {22, "Latin-1",  [](MMS_HDR_S &h) { h.subject = QStringLiteral("\u00E9 \u20AC %s"); }, {QStringLiteral("subject: \u00E9 ? %s")}},
    {22, "null",     [](MMS_HDR_S &) {}, {"subject: "}},
    {23, "one",      [](MMS_HDR_S &h) { h.to = {WMFMEntry(1, "+1")}; }, {"to: ", "\t+1 "}},
    {23, "no entry", [](MMS_HDR_S &) {}, {}},
    {24, "text",     [](MMS_HDR_S &h) { h.transactionId = "T1"; }, {"transactionId: T1"}},
};

/// The fields whose write tells of a buffer that is too small. Of the others only the stream does.
static const QSet<int> kTellOfNoRoom{1, 2, 3, 7, 11, 19, 22, 24};
// clang-format on

static QString shown(const QDateTime &date)
{
    return date.isNull() ? QStringLiteral("null")
        : date.isValid() ? QString::number(date.toSecsSinceEpoch())
                         : QStringLiteral("invalid");
}

static QString shown(const WMFMEntry &entry, bool withNullName)
{
    const QString name = entry.getContactName();
    return QString::number(entry.getEntryType()) + ' ' + shown(entry.getEntryVal()) + ' '
        + (withNullName || !name.isEmpty() ? shown(name) : QStringLiteral("no name"));
}

static QString shown(const QValueList<WMFMEntry> &entries)
{
    QStringList texts;
    for (const WMFMEntry &entry : entries) {
        texts.append(shown(entry, false));
    }
    return texts.join(", ");
}

static QString shown(const WMMSContentType &type)
{
    QStringList texts{type.getMimeType()};
    for (auto param = type.params().cbegin(); param != type.params().cend(); ++param) {
        texts.append(shown(param.key()) + '=' + shown(param.value()));
    }
    return texts.join(' ');
}

/// Every member of a header, so that a codec that touches another member than its own is seen.
static QString shown(const MMS_HDR_S &h)
{
    return QStringList{"bcc " + shown(h.bcc),
                       "cc " + shown(h.cc),
                       "contentLocation " + shown(h.contentLocation),
                       "contentType " + shown(h.contentType),
                       "msgDate " + shown(h.msgDate),
                       "deliveryReport " + QString::number(h.deliveryReport),
                       "deliveryTime " + shown(h.deliveryTime),
                       "expiry " + QString::number(h.expiry),
                       "from " + shown(h.from, false),
                       "msgClass " + QString::number(h.msgClass),
                       "msgID " + shown(h.msgID),
                       "msgType " + QString::number(h.msgType),
                       "version " + QString::number(h.version),
                       "msgSize " + QString::number(h.msgSize),
                       "priority " + QString::number(h.priority),
                       "readReport " + QString::number(h.readReport),
                       "reportAllowed " + QString::number(h.reportAllowed),
                       "responseStatus " + QString::number(h.responseStatus),
                       "responseText " + shown(h.responseText),
                       "senderVisibility " + QString::number(h.senderVisibility),
                       "msgStatus " + QString::number(h.msgStatus),
                       "subject " + shown(h.subject),
                       "to " + shown(h.to),
                       "transactionId " + shown(h.transactionId)}
        .join('\n');
}

static std::unique_ptr<MsgFieldBase> codecOf(int id)
{
    return std::unique_ptr<MsgFieldBase>(WMMSMsg::selectField(quint8(id)));
}

static QString shownAfter(Set set)
{
    MMS_HDR_S header;
    set(header);
    return shown(header);
}

static QByteArray withId(int id, const QByteArray &wire)
{
    return toHex(QByteArray(1, char(id | 0x80)) + fromHex(wire));
}

class TestFields : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_zone = std::make_unique<TimeZone>("UTC");
        appLogModuleStream = appLogDiscardStream();
    }
    void selectField();
    void everyFieldIsTested_data();
    void everyFieldIsTested();
    void reads_data() { rows(kValues); }
    void reads();
    void readsPrefixes_data() { rows(kValues); }
    void readsPrefixes();
    void writes_data() { rows(kValues); }
    void writes();
    void writesOutOfTheOrdinary_data() { rows(kWrites); }
    void writesOutOfTheOrdinary();
    void readFails_data() { rows(kFailures); }
    void readFails();
    void prints_data() { rows(kPrints); }
    void prints();
    void printsNothingToTheDiscardStream();
    void printsLocalTime();

    void contentType_data();
    void contentType();
    void contentTypeFails_data() { rows(kFailingTypes); }
    void contentTypeFails();
    void contentTypeLogsNamedParameters();
    void contentTypeAddsParameters();
    void contentTypeOverflowsItsScratch();
    void addressesAreAppended();
    void failingAddressesAppendNothing();
    void subjectReadsAlways_data();
    void subjectReadsAlways();
    void toWritesAlways();
    void fromKeepsItsTypeWhenInserted();
    void fromKeepsTheNameOfANumber();
    void fromOverflowsItsScratch();
    void deliveryTimeFromNow_data();
    void deliveryTimeFromNow();
    void expiryAtATime_data();
    void expiryAtATime();
    void expiryIsWrittenFromNow();
    void localDates();

private:
    template <typename Row, size_t N> static void rows(const Row (&table)[N])
    {
        QTest::addColumn<int>("row");
        for (size_t i = 0; i < N; ++i) {
            QTest::addRow("%d: %s", table[i].id, table[i].name) << int(i);
        }
    }

    std::unique_ptr<TimeZone> m_zone;
};

template <class Codec> static bool isCodec(int id)
{
    const auto codec = codecOf(id);
    return dynamic_cast<Codec *>(codec.get()) && Codec::kId == id;
}

void TestFields::selectField()
{
    QVERIFY(isCodec<Field_Bcc>(1));
    QVERIFY(isCodec<Field_Cc>(2));
    QVERIFY(isCodec<Field_ContentLocation>(3));
    QVERIFY(isCodec<Field_ContentType>(4));
    QVERIFY(isCodec<Field_MsgDate>(5));
    QVERIFY(isCodec<Field_DeliveryReport>(6));
    QVERIFY(isCodec<Field_DeliveryTime>(7));
    QVERIFY(isCodec<Field_Expiry>(8));
    QVERIFY(isCodec<Field_From>(9));
    QVERIFY(isCodec<Field_MsgClass>(10));
    QVERIFY(isCodec<Field_MsgID>(11));
    QVERIFY(isCodec<Field_MsgType>(12));
    QVERIFY(isCodec<Field_Version>(13));
    QVERIFY(isCodec<Field_MsgSize>(14));
    QVERIFY(isCodec<Field_Priority>(15));
    QVERIFY(isCodec<Field_ReadReport>(16));
    QVERIFY(isCodec<Field_ReportAllowed>(17));
    QVERIFY(isCodec<Field_ResponseStatus>(18));
    QVERIFY(isCodec<Field_ResponseText>(19));
    QVERIFY(isCodec<Field_SenderVisibility>(20));
    QVERIFY(isCodec<Field_MsgStatus>(21));
    QVERIFY(isCodec<Field_Subject>(22));
    QVERIFY(isCodec<Field_To>(23));
    QVERIFY(isCodec<Field_TID>(24));
    QVERIFY(!codecOf(0));
    for (int id = 25; id <= 255; ++id) {
        QVERIFY(!codecOf(id));
    }
}

void TestFields::everyFieldIsTested_data()
{
    QTest::addColumn<int>("id");
    for (int id = 1; id <= 24; ++id) {
        QTest::addRow("%d", id) << id;
    }
}

/// A field without test data fails here.
void TestFields::everyFieldIsTested()
{
    QFETCH(int, id);
    const auto has = [id](const auto &row) {
        return row.id == id;
    };
    QVERIFY(std::any_of(std::begin(kValues), std::end(kValues),
                        [&](const ValueRow &row) { return has(row) && row.way == Both; }));
    QVERIFY(std::any_of(std::begin(kPrints), std::end(kPrints), has));
    QVERIFY(id == 22 || std::any_of(std::begin(kFailures), std::end(kFailures), has));
}

void TestFields::reads()
{
    QFETCH(int, row);
    const ValueRow &value = kValues[row];
    if (value.way == Write) {
        return;
    }
    InWire in(fromHex(value.wire) + "next");
    MMS_HDR_S header;
    QCOMPARE(codecOf(value.id)->read(in.stream, &header), 1U);
    QCOMPARE(shown(header), shownAfter(value.set));
    QCOMPARE(in.stream.pos, int(fromHex(value.wire).size()));
}

void TestFields::readsPrefixes()
{
    QFETCH(int, row);
    const ValueRow &value = kValues[row];
    const QByteArray bytes = fromHex(value.wire);
    for (int size = 0; size < bytes.size(); ++size) {
        InWire in(bytes.left(size));
        MMS_HDR_S header;
        QCOMPARE(codecOf(value.id)->read(in.stream, &header), size >= value.accepted ? 1U : 0U);
        QVERIFY(in.stream.pos <= size);
    }
}

/// Writes with room, with exactly as much as needed, and with every amount less than that.
static void compareWrites(int id, Set set, quint32 result, const QByteArray &wire)
{
    const auto codec = codecOf(id);
    const int size = int(fromHex(wire).size());
    MMS_HDR_S header;
    set(header);
    for (int room : {size + 5, size}) {
        OutWire out(room);
        QCOMPARE(codec->write(out.stream, &header), result);
        QCOMPARE(out.written(), toHex(fromHex(wire)));
        QVERIFY(out.isCleanBehind());
        QVERIFY(!out.stream.hasOverflowed());
    }
    for (int room = 0; room < size; ++room) {
        OutWire out(room);
        QCOMPARE(codec->write(out.stream, &header),
                 result == 0 || kTellOfNoRoom.contains(id) ? 0U : 1U);
        QVERIFY(out.stream.hasOverflowed());
        QVERIFY(out.stream.pos <= room);
    }
    QCOMPARE(shown(header), shownAfter(set));
}

void TestFields::writes()
{
    QFETCH(int, row);
    const ValueRow &value = kValues[row];
    if (value.way != Read) {
        compareWrites(value.id, value.set, 1, withId(value.id, value.wire));
    }
}

void TestFields::writesOutOfTheOrdinary()
{
    QFETCH(int, row);
    const WriteRow &write = kWrites[row];
    compareWrites(write.id, write.set, write.result, write.wire);
}

void TestFields::readFails()
{
    QFETCH(int, row);
    const FailingRow &failure = kFailures[row];
    for (const bool flag : {false, true}) {
        InWire in(fromHex(failure.wire));
        MMS_HDR_S header;
        header.deliveryReport = header.readReport = header.reportAllowed = flag;
        header.senderVisibility = flag;
        const QString before = shown(header);
        QCOMPARE(codecOf(failure.id)->read(in.stream, &header), 0U);
        QCOMPARE(shown(header), before);
        QCOMPARE(in.stream.pos, failure.stopsAt);
    }
}

void TestFields::prints()
{
    QFETCH(int, row);
    MMS_HDR_S header;
    kPrints[row].set(header);
    LogCapture log;
    codecOf(kPrints[row].id)->printField(&header);
    QCOMPARE(log.lines(), kPrints[row].lines);
}

void TestFields::printsNothingToTheDiscardStream()
{
    QVERIFY(appLogModuleStream == appLogDiscardStream());
    for (const PrintRow &row : kPrints) {
        MMS_HDR_S header;
        row.set(header);
        codecOf(row.id)->printField(&header);
        QCOMPARE(shown(header), shownAfter(row.set));
    }
}

void TestFields::printsLocalTime()
{
    const TimeZone zone("XST-3");
    MMS_HDR_S header;
    header.msgDate = header.deliveryTime = utc(1709251199);
    LogCapture log;
    codecOf(5)->printField(&header);
    codecOf(7)->printField(&header);
    QCOMPARE(
        log.lines(),
        (QStringList{"msgDate: Fri Mar 1 02:59:59 2024", "eliveryTime: Fri Mar 1 02:59:59 2024"}));
}

void TestFields::contentType_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kTypes); ++i) {
        QTest::newRow(kTypes[i].name) << int(i);
    }
}

void TestFields::contentType()
{
    QFETCH(int, row);
    const TypeRow &type = kTypes[row];
    InWire in(fromHex(type.wire) + "next");
    MMS_HDR_S header;
    QCOMPARE(Field_ContentType().read(in.stream, &header), 1U);
    QCOMPARE(header.contentType.getMimeType(), type.mimeType);
    QCOMPARE(header.contentType.params(), type.params);
    QCOMPARE(in.stream.pos, int(fromHex(type.wire).size()));
    for (int size = 0; size < fromHex(type.wire).size(); ++size) {
        InWire cut(fromHex(type.wire).left(size));
        Field_ContentType().read(cut.stream, &header);
        QVERIFY(cut.stream.pos <= size);
    }
}

void TestFields::contentTypeFails()
{
    QFETCH(int, row);
    InWire in(fromHex(kFailingTypes[row].wire));
    MMS_HDR_S header;
    QCOMPARE(Field_ContentType().read(in.stream, &header), 0U);
    QCOMPARE(in.stream.pos, kFailingTypes[row].stopsAt);
    QCOMPARE(header.contentType.getMimeType(), "application/vnd.wap.multipart.related");
}

void TestFields::contentTypeLogsNamedParameters()
{
    LogCapture log;
    MMS_HDR_S header;
    InWire in(
        fromHex("18 83 41 42 00 31 32 00 89 61 00 81 02 03 F7 8A 62 00 7F C3 A9 00 E2 82 AC 00 "
                "63 00 00"));
    QCOMPARE(Field_ContentType().read(in.stream, &header), 1U);
    QCOMPARE(log.lines(),
             (QStringList{"get param:AB value:12", QStringLiteral("get param:\u00E9 value:?"),
                          "get param:c value:"}));
}

void TestFields::contentTypeAddsParameters()
{
    MMS_HDR_S header;
    header.contentType.setMimeType("a/b");
    header.contentType.setParam("charset", "UTF-16");
    header.contentType.setParam("type", "old");
    InWire alone(fromHex("83"));
    QCOMPARE(Field_ContentType().read(alone.stream, &header), 1U);
    QCOMPARE(shown(header.contentType), "text/plain \"charset\"=\"UTF-16\" \"type\"=\"old\"");
    InWire withType(fromHex("04 B3 89 61 00"));
    QCOMPARE(Field_ContentType().read(withType.stream, &header), 1U);
    QCOMPARE(header.contentType.params(),
             (QMap<QString, QString>{{"charset", "UTF-16"}, {"type", "a"}}));
    InWire unknown(fromHex("01 01 A4"));
    QCOMPARE(Field_ContentType().read(unknown.stream, &header), 1U);
    QVERIFY(header.contentType.isEmpty());
    QCOMPARE(header.contentType.getParamCount(), 2);
}

/// A value of more than 1024 bytes is cut, which only the stream tells.
void TestFields::contentTypeOverflowsItsScratch()
{
    for (const int size : {1022, 5000}) {
        MMS_HDR_S header;
        setType(header, 3);
        header.contentType.setParamType(QString(size, 'x'));
        OutWire out(8192);
        QCOMPARE(Field_ContentType().write(out.stream, &header), 1U);
        QVERIFY(out.stream.hasOverflowed());
        QVERIFY(out.stream.pos <= 1 + 3 + 1024);
    }
}

/// Each field on the wire adds one entry, behind those that are there.
void TestFields::addressesAreAppended()
{
    MMS_HDR_S header;
    header.to = header.cc = header.bcc = {WMFMEntry(0, "first@x")};
    for (const int id : {1, 2, 23}) {
        InWire in("a@b" + QByteArray(1, 0) + "1/TYPE=PLMN" + QByteArray(1, 0) + "c@d");
        const auto codec = codecOf(id);
        for (int n = 0; n < 3; ++n) {
            QCOMPARE(codec->read(in.stream, &header), 1U);
        }
        QCOMPARE(codec->read(in.stream, &header), 0U);
    }
    const QString expected = shown(QValueList<WMFMEntry>{
        WMFMEntry(0, "first@x"), WMFMEntry(0, "a@b"), WMFMEntry(1, "1"), WMFMEntry(0, "c@d")});
    QCOMPARE(shown(header.to), expected);
    QCOMPARE(shown(header.cc), expected);
    QCOMPARE(shown(header.bcc), expected);
}

void TestFields::failingAddressesAppendNothing()
{
    for (const int id : {1, 2, 23}) {
        MMS_HDR_S header;
        header.to = header.cc = header.bcc = {WMFMEntry(0, "first@x")};
        const QString before = shown(header);
        InWire in(fromHex("05 EA 61"));
        QCOMPARE(codecOf(id)->read(in.stream, &header), 0U);
        QCOMPARE(shown(header), before);
    }
}

void TestFields::subjectReadsAlways_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<int>("stopsAt");
    QTest::newRow("a subject that cannot be read counts as read") << QByteArray("05 EA 61") << 2;
    QTest::newRow("nothing") << QByteArray("") << 0;
    QTest::newRow("no charset") << QByteArray("05") << 1;
    QTest::newRow("4 GB claimed") << QByteArray("1F 8F FF FF FF 7F EA 61 00") << 7;
}

void TestFields::subjectReadsAlways()
{
    QFETCH(QByteArray, wire);
    InWire in(fromHex(wire));
    MMS_HDR_S header;
    header.subject = "before";
    QCOMPARE(Field_Subject().read(in.stream, &header), 1U);
    QCOMPARE(header.subject, "before");
    QTEST(in.stream.pos, "stopsAt");
}

/// A To that cannot be written counts as written.
void TestFields::toWritesAlways()
{
    MMS_HDR_S header;
    header.to = {WMFMEntry(0, "a@b"), WMFMEntry(0, "c@d")};
    OutWire out(7);
    QCOMPARE(Field_To().write(out.stream, &header), 1U);
    QCOMPARE(out.written(), QByteArray("97 61 40 62 00 97"));
    QVERIFY(out.stream.hasOverflowed());
}

void TestFields::fromKeepsItsTypeWhenInserted()
{
    MMS_HDR_S header;
    header.from = WMFMEntry(1, "+1", "Ann");
    InWire in(fromHex("01 81"));
    QCOMPARE(Field_From().read(in.stream, &header), 1U);
    QCOMPARE(shown(header.from, true), "1 null null");
}

void TestFields::fromKeepsTheNameOfANumber()
{
    MMS_HDR_S header;
    header.from = WMFMEntry(0, "a@b", "Ann");
    InWire number(fromHex("0E 80") + "1/TYPE=PLMN");
    QCOMPARE(Field_From().read(number.stream, &header), 1U);
    QCOMPARE(shown(header.from, true), "1 \"1\" \"Ann\"");
    InWire bare(fromHex("03 80 31 00"));
    QCOMPARE(Field_From().read(bare.stream, &header), 1U);
    QCOMPARE(shown(header.from, true), "1 \"1\" \"\"");
}

void TestFields::fromOverflowsItsScratch()
{
    for (const int size : {1023, 5000}) {
        MMS_HDR_S header;
        header.from = WMFMEntry(0, QString(size, 'x'));
        OutWire out(8192);
        QCOMPARE(Field_From().write(out.stream, &header), 1U);
        QVERIFY(out.stream.hasOverflowed());
        QVERIFY(out.stream.pos <= 1 + 3 + 1024);
    }
}

static qint64 now()
{
    return QDateTime::currentSecsSinceEpoch();
}

/// 129 behind a length, then the seconds.
static QByteArray timeValue(quint8 token, quint32 seconds)
{
    OutWire out(8);
    out.stream.writeByte(6);
    out.stream.writeByte(token);
    out.stream.writeLongInteger(seconds);
    return out.array.toByteArray().left(out.stream.pos);
}

void TestFields::deliveryTimeFromNow_data()
{
    QTest::addColumn<quint32>("seconds");
    QTest::newRow("now") << 0U;
    QTest::newRow("in a day") << 86400U;
    QTest::newRow("in 68 years") << quint32(INT_MAX);
    QTest::newRow("in 136 years") << UINT_MAX;
}

void TestFields::deliveryTimeFromNow()
{
    QFETCH(quint32, seconds);
    InWire in(timeValue(129, seconds));
    MMS_HDR_S header;
    const qint64 earliest = now() + seconds;
    QCOMPARE(Field_DeliveryTime().read(in.stream, &header), 1U);
    const qint64 read = header.deliveryTime.toSecsSinceEpoch();
    QVERIFY2(read >= earliest && read <= now() + seconds, qPrintable(shown(header.deliveryTime)));
}

void TestFields::expiryAtATime_data()
{
    QTest::addColumn<qint64>("fromNow");
    QTest::newRow("in an hour") << qint64(3600);
    QTest::newRow("an hour ago") << qint64(-3600);
    QTest::newRow("at the start of 1970") << -now();
    QTest::newRow("at the last 32 bit second") << UINT_MAX - now();
}

/// A time becomes the seconds from now to it.
void TestFields::expiryAtATime()
{
    QFETCH(qint64, fromNow);
    const qint64 time = qBound<qint64>(0, now() + fromNow, UINT_MAX);
    InWire in(timeValue(128, quint32(time)));
    MMS_HDR_S header;
    const qint64 latest = time - now();
    QCOMPARE(Field_Expiry().read(in.stream, &header), 1U);
    // What does not fit 32 bits keeps its low ones.
    const qint64 late = qint32(quint32(latest)) - qint64(header.expiry);
    QVERIFY2(late >= 0 && late <= 30, qPrintable(QString::number(header.expiry)));
}

/// An expiry is written as seconds from now, also when a time was read.
void TestFields::expiryIsWrittenFromNow()
{
    MMS_HDR_S header;
    InWire in(timeValue(128, quint32(now() + 7200)));
    QCOMPARE(Field_Expiry().read(in.stream, &header), 1U);
    QVERIFY(header.expiry > 7000);
    OutWire out(16);
    QCOMPARE(Field_Expiry().write(out.stream, &header), 1U);
    QVERIFY2(out.written().startsWith("88 04 81 02 1"), out.written().constData());
}

/// A local time is written by the rules of its time zone.
void TestFields::localDates()
{
    for (const auto &[zone, wire] :
         {std::pair("XST-3", "04 65 E0 F4 90"), std::pair("WST+8", "04 65 E1 8F 40")}) {
        const TimeZone changed(zone);
        MMS_HDR_S header;
        header.msgDate = header.deliveryTime = QDateTime(QDate(2024, 3, 1), QTime(0, 18, 8));
        OutWire date(16);
        QCOMPARE(Field_MsgDate().write(date.stream, &header), 1U);
        QCOMPARE(date.written(), withId(5, wire));
        OutWire delivery(16);
        QCOMPARE(Field_DeliveryTime().write(delivery.stream, &header), 1U);
        QCOMPARE(delivery.written(), withId(7, QByteArray("06 80 ") + wire));
    }
}

QTEST_GUILESS_MAIN(TestFields)
#include "tst_fields.moc"
