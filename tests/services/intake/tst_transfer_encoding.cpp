// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/transfer_encoding.h"

#include <QtTest/QtTest>

using namespace wmsg::intake;

class TestTransferEncoding : public QObject {
    Q_OBJECT

private slots:
    void base64_data();
    void base64();
    void noBase64_data();
    void noBase64();
    void quotedPrintable_data();
    void quotedPrintable();
    void encodedWords_data();
    void encodedWords();
};

void TestTransferEncoding::base64_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const char *text, const char *bytes) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(bytes);
    };
    row("whole", "YWJj", "abc");
    row("padded", "YWI=", "ab");
    row("two pads", "YQ==", "a");
    row("padding missing", "YWI", "ab");
    row("line breaks", "YW\r\nJj\n", "abc");
    row("blanks", " Y W\tJj ", "abc");
    row("a dangling character", "YWJjZ", "abc");
    row("nothing", "", "");
}

void TestTransferEncoding::base64()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    QVERIFY(fromBase64(text).has_value());
    QCOMPARE(*fromBase64(text), bytes);
}

void TestTransferEncoding::noBase64_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("a picture") << QByteArray("\x89PNG\r\n\x1A\n");
    QTest::newRow("text behind the padding") << QByteArray("YQ==YQ==");
    QTest::newRow("another alphabet") << QByteArray("YW-_");
}

void TestTransferEncoding::noBase64()
{
    QFETCH(QByteArray, text);
    QVERIFY(!fromBase64(text).has_value());
}

void TestTransferEncoding::quotedPrintable_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const char *text, const char *bytes) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(bytes);
    };
    row("plain", "abc", "abc");
    row("a code", "=C3=BC", "ü");
    row("a code in small letters", "=c3=bc", "ü");
    row("a soft line break", "a=\r\nb", "ab");
    row("a soft line break of LF alone", "a=\nb", "ab");
    row("no code", "a=b=", "a=b=");
    row("a cut code", "a=C", "a=C");
}

void TestTransferEncoding::quotedPrintable()
{
    QFETCH(QByteArray, text);
    QTEST(fromQuotedPrintable(text), "bytes");
}

void TestTransferEncoding::encodedWords_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("utf8");
    const auto row = [](const char *name, const char *text, const char *utf8) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(utf8);
    };
    row("none", "a = b", "a = b");
    row("B", "=?utf-8?B?w7w=?=", "ü");
    row("Q", "=?iso-8859-1?Q?Gr=FC=DFe?=", "Grüße");
    row("small letters", "=?UTF-8?q?=c3=bc?=", "ü");
    row("underscore", "=?utf-8?Q?a_b?=", "a b");
    row("a language", "=?utf-8*de?Q?=C3=BC?=", "ü");
    row("between texts", "a =?utf-8?Q?b?= c", "a b c");
    row("blanks between two words go", "=?utf-8?Q?a?= \r\n =?utf-8?Q?b?=", "ab");
    row("blanks at the end stay", "=?utf-8?Q?a?= ", "a ");
    row("no end", "=?utf-8?Q?a", "=?utf-8?Q?a");
    row("another encoding", "=?utf-8?X?a?=", "=?utf-8?X?a?=");
    row("broken base64", "=?utf-8?B?!!!?=", "=?utf-8?B?!!!?=");
    row("a word inside a word", "=?utf-8?Q?=3D=3Futf-8=3FQ=3Fa=3F=3D?=", "a");
}

void TestTransferEncoding::encodedWords()
{
    QFETCH(QByteArray, text);
    QTEST(withEncodedWords(text), "utf8");
    QCOMPARE(withEncodedWords(withEncodedWords(text)), withEncodedWords(text));
}

QTEST_GUILESS_MAIN(TestTransferEncoding)
#include "tst_transfer_encoding.moc"
