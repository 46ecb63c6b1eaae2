// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include "tests/support/hex.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

namespace {

QArray<char> bytesOf(const QByteArray &bytes)
{
    return QArray<char>(bytes);
}

struct PathRow {
    const char *path;
    const char *name; // stripPath
    const char *directory; // getPath
    const char *extension; // getExtName
    const char *base; // getNoExtName
};

// clang-format off
const PathRow kPaths[] = {
    // path              name        directory        extension  base
    {"",                 "",         "",              "",        ""},
    {"a",                "a",        "a",             "",        "a"},
    {"archive",          "archive",  "archive",       "",        "archive"},
    {"/",                "",         "",              "",        "/"},
    {"\\",               "",         "",              "",        "\\"},
    {"/a",               "a",        "",              "",        "/a"},
    {"a/",               "",         "a",             "",        "a/"},
    {"//",               "",         "/",             "",        "//"},
    {"/a/b.gif",         "b.gif",    "/a",            "gif",     "/a/b"},
    {"dir\\x\\y.gif",    "y.gif",    "dir\\x",        "gif",     "dir\\x\\y"},
    {"a/b\\c",           "c",        "a/b",           "",        "a/b\\c"},
    {"a\\b/c",           "c",        "a\\b",          "",        "a\\b/c"},
    {" /a/b ",           "b",        "/a",            "",        " /a/b "},
    {"/a/ b",            " b",       "/a",            "",        "/a/ b"},
    {"\t/a/b.c\n",       "b.c",      "/a",            "c",       "\t/a/b"},
    {"a.b.c",            "a.b.c",    "a.b.c",         "c",       "a.b"},
    {"a. jpg ",          "a. jpg",   "a. jpg",        "jpg",     "a"},
    {"a.",               "a.",       "a.",            "",        "a"},
    {".bashrc",          ".bashrc",  ".bashrc",       "bashrc",  ""},
    {"..",               "..",       "..",            "",        "."},
    {"a.b/c",            "c",        "a.b",           "b/c",     "a"},
    {"a.JPG",            "a.JPG",    "a.JPG",         "JPG",     "a"},
};

struct TextRow {
    const char *from;
    const char *to;
};

const TextRow kCids[] = {
    {"",           ""},
    {"a1",         "a1"},
    {"<a1>",       "a1"},
    {"<cid:a1>",   "a1"},
    {"CID:x",      "x"},
    {"cId:Q",      "Q"},
    {"<",          ""},
    {">",          ""},
    {"<>",         ""},
    {"<<a>>",      "<a>"},
    {"a>",         "a"},
    {"<a",         "a"},
    {"cid:",       ""},
    {"cid:cid:a",  "cid:a"},
    {"cid:<a>",    "<a"},
    {"acid:b",     "acid:b"},
    {"ci:d",       "ci:d"},
    {"cid",        "cid"},
    {" <a> ",      " <a> "},
    {"<cid:\u65e5>", "\u65e5"},
};

struct JoinRow {
    const char *name;
    const char *dir;
    const char *path;
};

const JoinRow kJoins[] = {
    {"a",         "/d",   "/d/a"},
    {"a",         "/d/",  "/d/a"},
    {"/a",        "/d",   "/d/a"},
    {"/a",        "/d/",  "/d/a"},
    {"a",         "d//",  "d//a"},
    {"/a",        "d//",  "d//a"},
    {"//a",       "/d/",  "/d//a"},
    {"//a",       "",     "//a"},
    {"a",         "",     "/a"},
    {"/a",        "",     "/a"},
    {"a",         "/",    "/a"},
    {"",          "",     "/"},
    {"",          "d",    "d/"},
    {"",          "/d/",  "/d/"},
    {" a ",       "/d",   "/d/a"},
    {"a",         " d ",  " d /a"},      // the directory is taken as it stands
    {"<cid:a>",   "/d",   "/d/a"},
    {" <cid:/x> ", "d/",  "d/x"},
    {"< a >",     "d",    "d/ a "},      // white space goes before the brackets do
    {"a/b",       "d",    "d/a/b"},
};

struct TimeRow {
    const char *name;
    const char *text;
    const char *time; // empty: invalid
};

const TimeRow kTimes[] = {
    {"standard",              "Thu May  5 03:40:13 1999",          "1999-05-05T03:40:13"},
    {"day of one character",  "Thu May 5 03:40:13 1999",           "1999-05-05T03:40:13"},
    {"day with a zero",       "Sun Sep 09 01:46:40 2001",          "2001-09-09T01:46:40"},
    {"January",               "Mon Jan 11 00:00:00 1990",          "1990-01-11T00:00:00"},
    {"February",              "Mon Feb 12 01:04:05 1991",          "1991-02-12T01:04:05"},
    {"March",                 "Mon Mar 13 02:08:10 1992",          "1992-03-13T02:08:10"},
    {"April",                 "Mon Apr 14 23:59:59 1993",          "1993-04-14T23:59:59"},
    {"June",                  "Mon Jun 16 05:20:25 1995",          "1995-06-16T05:20:25"},
    {"July",                  "Mon Jul 17 06:24:30 1996",          "1996-07-17T06:24:30"},
    {"August",                "Mon Aug 18 07:28:35 1997",          "1997-08-18T07:28:35"},
    {"October",               "Mon Oct 20 09:36:45 1999",          "1999-10-20T09:36:45"},
    {"November",              "Mon Nov 21 10:40:50 2000",          "2000-11-21T10:40:50"},
    {"December",              "Mon Dec 22 11:44:55 2001",          "2001-12-22T11:44:55"},
    {"leap day",              "Thu Feb 29 03:40:13 2024",          "2024-02-29T03:40:13"},
    {"no time is midnight",   "Thu May  5 1999",                   "1999-05-05T00:00:00"},
    {"time of no form",       "Thu May  5 3:40:13 1999",           "1999-05-05T00:00:00"},
    {"first time wins",       "0000May020 11:22:33 44:55:66 1999", "1999-05-20T11:22:33"},
    {"time before the date",  "1:02May 05 x 03:04:05x1999",        "1999-05-05T03:04:05"},
    {"time inside digits",    "Thu May  5 103:40:139 1999",        "1999-05-05T03:40:13"},
    {"weekday is not read",   "xxxxMay  5 03:40:13 1999",          "1999-05-05T03:40:13"},
    {"month in other case",   "Thu MAY  5 03:40:13 1999",          ""},
    {"unknown month",         "Thu Mai  5 03:40:13 1999",          ""},
    {"month cut off",         "Thu Ma",                            ""},
    {"nothing but a month",   "Thu May",                           ""},
    {"day 0",                 "Thu May 00 03:40:13 1999",          ""},
    {"day 31 of June",        "Thu Jun 31 03:40:13 1999",          ""},
    {"no leap day",           "Thu Feb 29 03:40:13 2023",          ""},
    {"day of letters",        "Thu May xx 03:40:13 1999",          ""},
    {"negative day",          "Thu May -5 03:40:13 1999",          ""},
    {"year of letters",       "Thu May  5 03:40:13 MCMX",          ""},
    {"negative year",         "Thu May  5 03:40:13 -999",          ""},
    {"impossible hour",       "Thu May  5 24:00:00 1999",          ""},
    {"impossible minute",     "Thu May  5 03:60:13 1999",          ""},
    {"impossible second",     "Thu May  5 03:40:60 1999",          ""},
    {"weekday alone",         "Thu",                               ""},
    {"weekday and a blank",   "Thu ",                              ""},
    {"empty",                 "",                                  ""},
};

struct Utf8Row {
    const char *name;
    const char *charset;
    const char *wide;
    const char *utf8;
};

const Utf8Row kWideTexts[] = {
    // name                                charset     wide                          UTF-8
    {"as they come",                       "UTF-16LE", "61 00 62 00",                "61 62"},
    {"charset in lower case",              "utf-16le", "61 00 62 00",                "61 62"},
    {"adjacent units change places and the bytes inside a unit do not",
                                           "UTF-16BE", "61 00 62 00",                "62 61"},
    {"UCS2 is exchanged",                  "UCS2",     "61 00 62 00",                "62 61"},
    {"UTF-16 is exchanged",                "UTF-16",   "61 00 62 00",                "62 61"},
    {"big-endian text is not understood",  "UTF-16BE", "00 61 00 62",                "E6 88 80 E6 84 80"},
    {"four units",                         "UCS2",     "61 00 62 00 63 00 64 00",    "62 61 64 63"},
    {"mark FE FF",                         "UTF-16",   "FE FF 00 61 00 62",          "E6 88 80 E6 84 80"},
    {"mark FE FF, UTF-16LE",               "UTF-16LE", "FE FF 61 00 62 00",          "61 62"},
    {"mark FF FE",                         "UTF-16",   "FF FE 61 00 62 00",          "61 62"},
    {"mark FF FE, UTF-16BE",               "UTF-16BE", "FF FE 61 00 62 00",          "61 62"},
    {"second mark is text",                "UTF-16",   "FF FE FF FE 61 00",          "EF BB BF 61"},
    {"second mark is exchanged",           "UCS2",     "FE FF FE FF 00 61",          "E6 84 80 EF BF BE"},
    {"mark alone",                         "UTF-16",   "FF FE",                      ""},
    {"other mark alone",                   "UTF-16",   "FE FF",                      ""},
    {"half a mark",                        "UTF-16BE", "FE",                         ""},
    {"odd last byte",                      "UTF-16LE", "61 00 62 00 63",             "61 62"},
    {"odd last byte behind a mark",        "UTF-16",   "FF FE 61 00 62",             "61"},
    {"odd last byte, exchanged",           "UTF-16BE", "61 00 62 00 63",             "62 61"},
    {"an odd last unit becomes 0",         "UTF-16BE", "61 00 62 00 63 00",          "62 61"},
    {"a lone unit becomes 0",              "UTF-16BE", "61 00",                      ""},
    {"a lone unit as it comes",            "UTF-16LE", "61 00",                      "61"},
    {"NUL ends it",                        "UTF-16LE", "61 00 00 00 62 00",          "61"},
    {"NUL at the start",                   "UTF-16LE", "00 00 61 00",                ""},
    {"NUL, exchanged",                     "UTF-16BE", "00 00 61 00",                "61"},
    {"NUL at the end",                     "UTF-16LE", "61 00 00 00",                "61"},
    {"two bytes in UTF-8",                 "UTF-16LE", "E9 00 E8 00",                "C3 A9 C3 A8"},
    {"three bytes in UTF-8",               "UTF-16LE", "E5 65 2C 67",                "E6 97 A5 E6 9C AC"},
    {"surrogate pair",                     "UTF-16LE", "3D D8 00 DE",                "F0 9F 98 80"},
    {"surrogate pair torn by the exchange", "UCS2",    "3D D8 00 DE",                "3F 3F"},
    {"surrogate pair put right by it",     "UCS2",     "00 DE 3D D8",                "F0 9F 98 80"},
    {"lone high surrogate",                "UTF-16LE", "61 00 3D D8 62 00",          "61 3F 62"},
    {"lone low surrogate",                 "UTF-16LE", "61 00 00 DE 62 00",          "61 3F 62"},
    {"high surrogate at the end",          "UTF-16LE", "61 00 3D D8",                "61 3F"},
    {"no characters FFFE and FFFF",        "UTF-16LE", "61 00 FE FF FF FF",          "61 EF BF BE EF BF BF"},
    {"empty",                              "UTF-16",   "",                           ""},
};
// clang-format on

} // namespace

class TestUtilText : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("TZ", "UTC0");
        tzset();
    }

    void paths_data()
    {
        QTest::addColumn<int>("row");
        for (size_t i = 0; i < std::size(kPaths); ++i) {
            QTest::addRow("\"%s\"", kPaths[i].path) << int(i);
        }
    }

    void paths()
    {
        QFETCH(int, row);
        const PathRow &path = kPaths[row];
        QCOMPARE(MMS_UTIL_Common::stripPath(path.path), QString(path.name));
        QCOMPARE(MMS_UTIL_Common::getPath(path.path), QString(path.directory));
        QCOMPARE(MMS_UTIL_Common::getExtName(path.path), QString(path.extension));
        QCOMPARE(MMS_UTIL_Common::getNoExtName(path.path), QString(path.base));
    }

    void pathsOfNullAreEmpty()
    {
        QVERIFY(MMS_UTIL_Common::stripPath(QString()).isEmpty());
        QVERIFY(MMS_UTIL_Common::getPath(QString()).isEmpty());
        QVERIFY(MMS_UTIL_Common::getExtName(QString()).isEmpty());
        QVERIFY(MMS_UTIL_Common::getNoExtName(QString()).isEmpty());
        QVERIFY(MMS_UTIL_Common::parseCid(QString()).isEmpty());
        QCOMPARE(MMS_UTIL_Common::mkAbsoluteFileName(QString(), QString()), QString("/"));
    }

    void missingExtensionIsEmptyAndNotNull()
    {
        QVERIFY(!MMS_UTIL_Common::getExtName("archive").isNull());
    }

    void contentIds_data()
    {
        QTest::addColumn<QString>("id");
        for (const TextRow &row : kCids) {
            QTest::addRow("\"%s\"", row.from) << QString::fromUtf8(row.to);
        }
    }

    void contentIds()
    {
        QFETCH(QString, id);
        const QByteArray tag = QTest::currentDataTag();
        const QString from = QString::fromUtf8(tag.mid(1, tag.size() - 2));
        QCOMPARE(MMS_UTIL_Common::parseCid(from), id);
    }

    void contentIdsAreCompared_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<bool>("equal");
        QTest::newRow("marks and case") << "<A1>"
                                        << "cid:a1" << true;
        QTest::newRow("same") << "a"
                              << "a" << true;
        QTest::newRow("case") << "a"
                              << "A" << true;
        QTest::newRow("white space around") << " <a>\n"
                                            << "\ta" << true;
        QTest::newRow("white space inside") << "a\tb"
                                            << "A\tB" << true;
        QTest::newRow("white space inside the brackets") << "< a>"
                                                         << "a" << false;
        QTest::newRow("not ASCII")
            << QString::fromUtf8("\u00c4") << QString::fromUtf8("\u00e4") << true;
        QTest::newRow("other") << "a"
                               << "b" << false;
        QTest::newRow("longer") << "a"
                                << "aa" << false;
        QTest::newRow("empty and something") << ""
                                             << "a" << false;
        QTest::newRow("something and empty") << "a"
                                             << "" << false;
        QTest::newRow("empty and empty") << ""
                                         << "" << false;
        QTest::newRow("marks alone") << "<cid:>"
                                     << "<cid:>" << false;
        QTest::newRow("blanks") << " "
                                << " " << false;
        QTest::newRow("null and null") << QString() << QString() << false;
    }

    void contentIdsAreCompared()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(bool, equal);
        QCOMPARE(MMS_UTIL_Common::isCidEqual(a, b), equal);
    }

    void joins_data()
    {
        QTest::addColumn<int>("row");
        for (size_t i = 0; i < std::size(kJoins); ++i) {
            QTest::addRow("\"%s\" in \"%s\"", kJoins[i].name, kJoins[i].dir) << int(i);
        }
    }

    void joins()
    {
        QFETCH(int, row);
        const JoinRow &join = kJoins[row];
        QCOMPARE(MMS_UTIL_Common::mkAbsoluteFileName(join.name, join.dir), QString(join.path));
    }

    void times_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("time");
        for (const TimeRow &row : kTimes) {
            QTest::newRow(row.name) << QString(row.text) << QString(row.time);
        }
        QTest::newRow("null") << QString() << "";
    }

    void times()
    {
        QFETCH(QString, text);
        QFETCH(QString, time);
        const QDateTime read = MMS_UTIL_Common::stringToTime(text);
        QCOMPARE(read.isValid(), !time.isEmpty());
        if (read.isValid()) {
            QCOMPARE(read.toString("yyyy-MM-ddTHH:mm:ss"), time);
            QCOMPARE(read.timeSpec(), Qt::LocalTime);
        }
    }

    void everyPrefixOfATimeIsRead()
    {
        const QString whole = "Thu May  5 03:40:13 1999";
        const QList<int> accepted = {11, 23}; // the last four characters are "  5 " and " 199"
        for (int size = 0; size < whole.size(); ++size) {
            const QDateTime time = MMS_UTIL_Common::stringToTime(whole.left(size));
            QVERIFY2(time.isValid() == accepted.contains(size), qPrintable(whole.left(size)));
        }
    }

    void addresses()
    {
        const LogCapture log;
        QCOMPARE(QByteArray(MMS_UTIL_Common::ipByteToStr(0)), QByteArray("0.0.0.0"));
        QCOMPARE(QByteArray(MMS_UTIL_Common::ipByteToStr(1)), QByteArray("1.0.0.0"));
        QCOMPARE(QByteArray(MMS_UTIL_Common::ipByteToStr(0x0100007F)), QByteArray("127.0.0.1"));
        QCOMPARE(QByteArray(MMS_UTIL_Common::ipByteToStr(0x80000000)), QByteArray("0.0.0.128"));
        QCOMPARE(QByteArray(MMS_UTIL_Common::ipByteToStr(0xFFFFFFFF)),
                 QByteArray("255.255.255.255"));
        QCOMPARE(log.lines().size(), 5);
        QCOMPARE(log.lines().at(2),
                 QString("MMS_UTIL_Common::ipByteToStr, the ip address=127.0.0.1\n"));
    }

    void mediaNumbers()
    {
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("image", "gif")), 29);
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("*", "*")), 0);
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("video", "3gp2")), 163);
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("IMAGE", "GIF")), 65535);
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("", "")), 65535);
        QCOMPARE(int(MMS_UTIL_Common::mimeTypeGetValue("image/gif", "")), 65535);
    }

    void utf8IsRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ASCII") << fromHex("61 62") << "ab";
        QTest::newRow("two and three bytes")
            << fromHex("C3 A9 E6 97 A5") << QString::fromUtf8("\u00e9\u65e5");
        QTest::newRow("four bytes") << fromHex("F0 9F 98 80") << QString::fromUtf8("\U0001F600");
        QTest::newRow("NUL inside") << fromHex("61 00 62") << QString::fromLatin1("a\0b", 3);
        QTest::newRow("cut character") << fromHex("61 E6 97") << QString::fromUtf8("a\uFFFD\uFFFD");
        QTest::newRow("no UTF-8") << fromHex("FF 61") << QString::fromUtf8("\uFFFDa");
        QTest::newRow("byte-order mark") << fromHex("EF BB BF 61") << "a";
        QTest::newRow("empty") << QByteArray("") << "";
        QTest::newRow("null") << QByteArray() << "";
    }

    void utf8IsRead()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QArray<char> array = bytesOf(bytes);
        QCOMPARE(MMS_UTIL_Common::fromUtf8(array), text);
        QVERIFY(!MMS_UTIL_Common::fromUtf8(array).isNull());
    }

    void wideTexts_data()
    {
        QTest::addColumn<QString>("charset");
        QTest::addColumn<QByteArray>("wide");
        QTest::addColumn<QByteArray>("utf8");
        for (const Utf8Row &row : kWideTexts) {
            QTest::newRow(row.name)
                << QString(row.charset) << fromHex(row.wide) << toHex(fromHex(row.utf8));
        }
    }

    void wideTexts()
    {
        QFETCH(QString, charset);
        QFETCH(QByteArray, wide);
        QFETCH(QByteArray, utf8);
        const LogCapture log;
        const QArray<char> source = bytesOf(wide);
        QArray<char> out;
        QVERIFY(MMS_UTIL_Common::toUTF8(source, charset, out));
        QCOMPARE(toHex(out.view()), utf8);
        QCOMPARE(toHex(source.view()), toHex(wide));

        // Longer before, and shared: the size is set, and all holders see it.
        QArray<char> used = bytesOf(QByteArray(1000, 'x'));
        const QArray<char> holder = used;
        QVERIFY(MMS_UTIL_Common::toUTF8(source, charset, used));
        QCOMPARE(toHex(holder.view()), utf8);

        QArray<char> both = bytesOf(wide);
        QVERIFY(MMS_UTIL_Common::toUTF8(both, charset, both));
        QCOMPARE(toHex(both.view()), utf8);
    }

    void otherCharsetsAreRefused()
    {
        const LogCapture log;
        const QArray<char> source = bytesOf(fromHex("61 00 62 00"));
        for (const QString &charset : {QString("UTF-8"), QString("UCS-2"), QString("UTF-16 "),
                                       QString("ISO-8859-1"), QString(""), QString()}) {
            QArray<char> out = bytesOf("before");
            QVERIFY(!MMS_UTIL_Common::toUTF8(source, charset, out));
            QCOMPARE(out.toByteArray(), QByteArray("before"));
        }
        QCOMPARE(log.lines(), QStringList());
    }

    void conversionIsLogged()
    {
        LogCapture log;
        QArray<char> out;
        QVERIFY(MMS_UTIL_Common::toUTF8(bytesOf(fromHex("61 00 62 00")), "UTF-16LE", out));
        QCOMPARE(log.lines(), QStringList({"unicode to string: ab"}));
        log.clear();
        QVERIFY(MMS_UTIL_Common::toUTF8(bytesOf(fromHex("61 00 62 00")), "UCS2", out));
        QCOMPARE(log.lines(), QStringList({"Little endian UTF-16", "unicode to string: ba"}));
        log.clear();
        QVERIFY(MMS_UTIL_Common::toUTF8(bytesOf(fromHex("FF FE E5 65")), "UCS2", out));
        QCOMPARE(log.lines(), QStringList({"unicode to string: ?"}));
    }

    void longTextsAreConverted()
    {
        const int pairs = 5000000;
        QArray<char> wide;
        QVERIFY(wide.resize(4 * pairs));
        for (int i = 0; i < wide.size(); i += 4) {
            memcpy(wide.data() + i, "b\0a\0", 4);
        }
        QArray<char> out;
        appLogModuleStream = appLogDiscardStream();
        QVERIFY(MMS_UTIL_Common::toUTF8(wide, "UTF-16BE", out));
        appLogModuleStream = nullptr;
        QCOMPARE(out.size(), 2 * pairs);
        QCOMPARE(out.toByteArray(), QByteArray("ab").repeated(pairs));
    }
};

QTEST_GUILESS_MAIN(TestUtilText)
#include "tst_mms_util_common_text.moc"
