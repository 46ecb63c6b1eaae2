// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/address_text.h"
#include "tools/wmsg/media_type.h"
#include "tools/wmsg/time_text.h"

#include <QtTest/QtTest>

using namespace wmsg::cli;

/// What people write on the command line: addresses, dates, durations, and files of all kinds.
class TestArguments : public QObject {
    Q_OBJECT

private slots:
    void addresses_data();
    void addresses();
    void wrongAddresses_data();
    void wrongAddresses();
    void dates_data();
    void dates();
    void durations_data();
    void durations();
    void mediaTypes_data();
    void mediaTypes();
};

void TestArguments::addresses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::newRow("number") << "+436641234567" << 1 << "+436641234567";
    QTest::newRow("short number") << "12" << 1 << "12";
    QTest::newRow("as people write it") << " +43 (1) 234-5.6 " << 1 << "+43123456";
    QTest::newRow("service code") << "*111#" << 1 << "*111#";
    QTest::newRow("with its type") << "+431/TYPE=PLMN" << 1 << "+431";
    QTest::newRow("20 digits") << QString(20, '1') << 1 << QString(20, '1');
    QTest::newRow("e-mail") << "ann.lee+x@mail.example.org" << 0 << "ann.lee+x@mail.example.org";
    QTest::newRow("e-mail of the world")
        << QString::fromUtf8("jörg@exämple.org") << 0 << QString::fromUtf8("jörg@exämple.org");
    QTest::newRow("one label") << "root@localhost" << 0 << "root@localhost";
}

void TestArguments::addresses()
{
    QFETCH(QString, text);
    WMFMEntry entry;
    QCOMPARE(parseAddress(text, entry), QString());
    QTEST(int(entry.getEntryType()), "type");
    QTEST(entry.getEntryVal(), "value");
}

void TestArguments::wrongAddresses_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"",
                             "  ",
                             "ann",
                             "+",
                             "+-()",
                             "1+2",
                             "12a",
                             "a@",
                             "@b.c",
                             "a@@b.c",
                             "a@b@c",
                             "a b@c.d",
                             "Ann <a@b.c>",
                             "a@b..c",
                             ".a@b.c",
                             "a@-b.c",
                             "a,b@c.d",
                             "a/TYPE=PLMN@b.c",
                             "a@b.c\n",
                             "123456789012345678901"}) {
        if (QString(text) != "a@b.c\n") { // white space around an address is dropped
            QTest::newRow(*text ? text : "empty") << text;
        }
    }
    QTest::newRow("NUL") << QString("1") + QChar(0);
    QTest::newRow("digits of another script") << QString::fromUtf8("١٢٣");
    QTest::newRow("long e-mail") << QString(65, 'a') + "@b.c";
}

void TestArguments::wrongAddresses()
{
    QFETCH(QString, text);
    WMFMEntry entry;
    QVERIFY(!parseAddress(text, entry).isEmpty());
    QVERIFY(!entry.isValid());
}

void TestArguments::dates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("seconds");
    const qint64 none = -1;
    QTest::newRow("UTC") << "2024-05-01T12:00:00Z" << qint64(1714564800);
    QTest::newRow("zone") << "2024-05-01T12:00:00+02:00" << qint64(1714557600);
    QTest::newRow("seconds") << "1714564800" << qint64(1714564800);
    QTest::newRow("first") << "0" << qint64(0);
    QTest::newRow("last") << "2147483647" << qint64(2147483647);
    QTest::newRow("too late") << "2147483648" << none;
    QTest::newRow("too early") << "1969-12-31T23:59:59Z" << none;
    QTest::newRow("no such day") << "2024-02-30T12:00:00Z" << none;
    QTest::newRow("words") << "tomorrow" << none;
    QTest::newRow("something behind") << "2024-05-01T12:00:00Zx" << none;
}

void TestArguments::dates()
{
    QFETCH(QString, text);
    const auto date = parseDate(text);
    QTEST(date ? date->toSecsSinceEpoch() : qint64(-1), "seconds");
}

void TestArguments::durations_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("seconds");
    QTest::newRow("bare") << "90" << 90;
    QTest::newRow("seconds") << "90s" << 90;
    QTest::newRow("minutes") << "15m" << 900;
    QTest::newRow("hours") << "12h" << 43200;
    QTest::newRow("days") << "3d" << 259200;
    QTest::newRow("weeks") << "1w" << 604800;
    QTest::newRow("longest") << "2147483647" << 2147483647;
    QTest::newRow("too long") << "2147483648" << -1;
    QTest::newRow("too many weeks") << "4000w" << -1;
    QTest::newRow("none") << "0" << -1;
    QTest::newRow("negative") << "-5" << -1;
    QTest::newRow("empty") << "" << -1;
    QTest::newRow("unit alone") << "d" << -1;
    QTest::newRow("unknown unit") << "3y" << -1;
}

void TestArguments::durations()
{
    QFETCH(QString, text);
    QTEST(parseDuration(text).value_or(-1), "seconds");
}

void TestArguments::mediaTypes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("type");
    const QByteArray png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    const QByteArray jpeg("\xFF\xD8\xFF\xE0\0\x10JFIF\0", 11);
    const auto row = [](const char *name, const QByteArray &bytes, const char *type) {
        QTest::newRow(name) << name << bytes << type;
    };
    row("a.png", png, "image/png");
    row("a.JPG", jpeg, "image/jpeg");
    row("no-extension", jpeg, "image/jpeg");
    row("named-otherwise.jpg", png, "image/png");
    row("named-a-document.doc", png, "image/png");
    row("a.gif", "GIF89a", "image/gif");
    row("a.txt", "Hello\n", "text/plain");
    row("a.amr", "#!AMR\n", "audio/amr");
    row("a.mid", QByteArray("MThd\0\0\0\6", 8), "audio/midi");
    row("a.3gp",
        QByteArray("\0\0\0\x18"
                   "ftyp3gp4\0\0\0\0",
                   16),
        "video/3gpp");
    row("a.mp4",
        QByteArray("\0\0\0\x18"
                   "ftypmp42\0\0\0\0",
                   16),
        "video/mp4");
    row("a.vcf", "BEGIN:VCARD\n", "text/x-vCard");
    row("a.smil", "<smil/>", "application/smil");
    row("a.dm", "--b\r\n", "application/vnd.oma.drm.message");
    row("a.qcp", "QLCM", "audio/qcelp");
    row("a.unknown", QByteArray("\0\1\2\3", 4), "application/octet-stream");
}

void TestArguments::mediaTypes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QTEST(mediaTypeOf(name, QArray<char>(bytes)), "type");
}

QTEST_GUILESS_MAIN(TestArguments)
#include "tst_arguments.moc"
