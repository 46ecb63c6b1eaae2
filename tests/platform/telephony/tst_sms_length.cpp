// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/sms_length.h"

#include <QtTest/QtTest>

namespace {

const QString kEmoji = QString::fromUcs4(U"\U0001F600");

struct TextRow {
    const char *name;
    QString text;
    SmsAlphabet alphabet;
    int used;
};
// clang-format off
const TextRow kTexts[] = {
    {"nothing",                     "",                                  SmsAlphabet::Gsm7, 0},
    {"a letter",                    "a",                                 SmsAlphabet::Gsm7, 1},
    {"the at sign is septet 0",     "@",                                 SmsAlphabet::Gsm7, 1},
    {"line ends",                   "\r\n",                              SmsAlphabet::Gsm7, 2},
    {"accents of the alphabet",     u"èéùìòÇØøÅåÆæßÉÄÖÑÜäöñüà§¿¡£¥¤"_qs,  SmsAlphabet::Gsm7, 29},
    {"Greek capitals",              u"ΔΦΓΛΩΠΨΣΘΞ"_qs,                    SmsAlphabet::Gsm7, 10},
    {"each of the extension table", u"\f^{}\\[~]|€"_qs,                  SmsAlphabet::Gsm7, 20},
    {"escape is no character",      "\x1b",                              SmsAlphabet::Ucs2, 1},
    {"a small c with cedilla",      u"ç"_qs,                             SmsAlphabet::Ucs2, 1},
    {"a back quote",                "`",                                 SmsAlphabet::Ucs2, 1},
    {"a tabulator",                 "\t",                                SmsAlphabet::Ucs2, 1},
    {"NUL",                         QString(QChar()),                    SmsAlphabet::Ucs2, 1},
    {"one foreign character",       u"abcж"_qs,                          SmsAlphabet::Ucs2, 4},
    {"a surrogate pair is two",     kEmoji,                              SmsAlphabet::Ucs2, 2},
    {"half a surrogate pair",       kEmoji.left(1),                      SmsAlphabet::Ucs2, 1},
};

struct LimitRow {
    const char *name;
    QString text;
    bool hasPorts;
    bool fits;
};
const LimitRow kLimits[] = {
    {"159 septets",                             QString(159, 'a'),               false, true},
    {"160 septets",                             QString(160, 'a'),               false, true},
    {"161 septets",                             QString(161, 'a'),               false, false},
    {"80 of the extension table",               QString(80, QChar(0x20AC)),      false, true},
    {"159 and one of the extension table",      QString(159, 'a') + "{",         false, false},
    {"158 and one of the extension table",      QString(158, 'a') + "{",         false, true},
    {"69 units",                                QString(69, QChar(0x416)),       false, true},
    {"70 units",                                QString(70, QChar(0x416)),       false, true},
    {"71 units",                                QString(71, QChar(0x416)),       false, false},
    {"an emoji up to unit 70",                  QString(68, 'a') + kEmoji,       false, true},
    {"an emoji across unit 70",                 QString(69, 'a') + kEmoji,       false, false},
    {"151 septets to a port",                   QString(151, 'a'),               true,  true},
    {"152 septets to a port",                   QString(152, 'a'),               true,  true},
    {"153 septets to a port",                   QString(153, 'a'),               true,  false},
    {"65 units to a port",                      QString(65, QChar(0x416)),       true,  true},
    {"66 units to a port",                      QString(66, QChar(0x416)),       true,  true},
    {"67 units to a port",                      QString(67, QChar(0x416)),       true,  false},
    {"an emoji up to unit 66, to a port",       QString(64, 'a') + kEmoji,       true,  true},
    {"an emoji across unit 66, to a port",      QString(65, 'a') + kEmoji,       true,  false},
};
// clang-format on

} // namespace

class TestSmsLength : public QObject {
    Q_OBJECT

private slots:
    void alphabet();
    void texts_data();
    void texts();
    void textsThatFit_data();
    void textsThatFit();
    void dataThatFits_data();
    void dataThatFits();
};

void TestSmsLength::alphabet()
{
    // No character stands twice.
    int one = 0;
    int two = 0;
    for (int code = 0; code <= 0xFFFF; ++code) {
        one += gsmSeptets(char16_t(code)) == 1;
        two += gsmSeptets(char16_t(code)) == 2;
    }
    QCOMPARE(one, 127);
    QCOMPARE(two, 10);
    for (int septet : {0x20, 0x30, 0x41, 0x5A, 0x61, 0x7A}) {
        QCOMPARE(int(kGsmAlphabet[septet]), septet); // as in ASCII
    }
    QCOMPARE(int(kGsmAlphabet[0x24]), 0xA4);
    QCOMPARE(int(kGsmAlphabet[0x40]), 0xA1);
    QCOMPARE(int(kGsmAlphabet[0x5F]), 0xA7);
    QCOMPARE(int(kGsmAlphabet[0x60]), 0xBF);
    QCOMPARE(int(kGsmAlphabet[0x7F]), 0xE0);
}

void TestSmsLength::texts_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kTexts); ++i) {
        QTest::newRow(kTexts[i].name) << int(i);
    }
}

void TestSmsLength::texts()
{
    QFETCH(int, row);
    const TextRow &expected = kTexts[row];
    const SmsLength length = smsLengthOf(expected.text, false);
    QCOMPARE(int(length.alphabet), int(expected.alphabet));
    QCOMPARE(int(length.used), expected.used);
    QCOMPARE(length.limit, expected.alphabet == SmsAlphabet::Gsm7 ? 160 : 70);
}

void TestSmsLength::textsThatFit_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kLimits); ++i) {
        QTest::newRow(kLimits[i].name) << int(i);
    }
}

void TestSmsLength::textsThatFit()
{
    QFETCH(int, row);
    QCOMPARE(smsLengthOf(kLimits[row].text, kLimits[row].hasPorts).fits(), kLimits[row].fits);
}

void TestSmsLength::dataThatFits_data()
{
    QTest::addColumn<qint64>("octets");
    QTest::addColumn<bool>("hasPorts");
    QTest::addColumn<bool>("fits");
    for (qint64 octets : {0, 139, 140, 141}) {
        QTest::addRow("%lld bytes", octets) << octets << false << (octets <= 140);
    }
    for (qint64 octets : {0, 132, 133, 134}) {
        QTest::addRow("%lld bytes to a port", octets) << octets << true << (octets <= 133);
    }
    QTest::newRow("more than an int") << (qint64(1) << 32) << false << false;
}

void TestSmsLength::dataThatFits()
{
    QFETCH(qint64, octets);
    QFETCH(bool, hasPorts);
    QFETCH(bool, fits);
    const SmsLength length = smsLengthOfData(octets, hasPorts);
    QCOMPARE(length.fits(), fits);
    QCOMPARE(length.used, octets);
    QCOMPARE(length.limit, hasPorts ? 133 : 140);
    QCOMPARE(int(length.alphabet), int(SmsAlphabet::Octets));
}

QTEST_GUILESS_MAIN(TestSmsLength)
#include "tst_sms_length.moc"
