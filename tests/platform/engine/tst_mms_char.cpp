// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/mms_char.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

#include <memory>

namespace {

using Wide = unsigned short;

/// Units with a zero behind them, in memory that ends there.
struct WideText {
    explicit WideText(const QString &text) : units(new Wide[size_t(text.size()) + 1]())
    {
        std::copy_n(text.utf16(), text.size(), units.get());
    }
    operator Wide *() const { return units.get(); }
    std::unique_ptr<Wide[]> units;
};

QString textOf(const Wide *units)
{
    return units ? QString::fromUtf16(reinterpret_cast<const char16_t *>(units)) : QString("NULL");
}

/// What a conversion into `room` units gives; memory behind them is not there.
QString widened(QByteArrayView bytes, unsigned int room, unsigned int length)
{
    const std::unique_ptr<Wide[]> target(new Wide[room]);
    const auto written = MMS_Char_convUTF8toUCS2String(bytes.data(), length, target.get(), room);
    return room == 0 ? QString("NO ROOM %1").arg(written) : textOf(target.get()).left(int(written));
}

QByteArray narrowed(const QString &text, unsigned int room, unsigned int length)
{
    const std::unique_ptr<char[]> target(new char[room]);
    const WideText source(text);
    const auto written = MMS_Char_convUCS2toUTF8String(source, length, target.get(), room);
    return QByteArray(target.get(), int(written));
}

} // namespace

class TestMmsChar : public QObject {
    Q_OBJECT

private slots:
    void bothWays_data();
    void bothWays();
    void bytesThatAreNoUtf8_data();
    void bytesThatAreNoUtf8();
    void loneSurrogates();
    void endsOfBuffers();
    void nothing();
    void search();
    void pieces_data();
    void pieces();
};

void TestMmsChar::bothWays_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("ascii") << "Hello";
    QTest::newRow("latin") << "Grüße";
    QTest::newRow("arabic") << "مرحبا بالعالم";
    QTest::newRow("chinese") << "你好，世界";
    QTest::newRow("emoji") << "🎉👩‍👩‍👧";
    QTest::newRow("borders") << QString::fromUcs4(
        U"\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFD\uFFFF"
        U"\U00010000\U0010FFFF");
}

void TestMmsChar::bothWays()
{
    QFETCH(QString, text);
    const QByteArray utf8 = text.toUtf8();
    const auto bytes = unsigned(utf8.size());
    const auto units = unsigned(text.size());
    QCOMPARE(widened(utf8, units + 1, bytes), text);
    QCOMPARE(toHex(narrowed(text, bytes, units)), toHex(utf8));
    // A zero ends the source, whatever length is told.
    QCOMPARE(widened(utf8, units + 1, bytes + 1000), text);
    QCOMPARE(toHex(narrowed(text, bytes, units + 1000)), toHex(utf8));
}

void TestMmsChar::bytesThatAreNoUtf8_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *hex, const QString &text) {
        QTest::newRow(name) << fromHex(hex) << text;
    };
    row("a Latin-1 letter", "63 61 66 E9", "café");
    row("a Latin-1 letter inside", "E9 74 E9", "été");
    row("a lone continuation", "80", QString(QChar(0x80)));
    row("cut at the end", "E4 BD", QString("ä") + QChar(0xBD));
    row("two bytes for an ascii letter", "C1 81", QString("Á") + QChar(0x81));
    row("three bytes for two", "E0 81 81", QString("à") + QChar(0x81) + QChar(0x81));
    row("a surrogate", "ED A0 80", QString("í") + QChar(0xA0) + QChar(0x80));
    row("above the highest", "F4 90 80 80", QString("ô") + QChar(0x90) + QChar(0x80) + QChar(0x80));
    row("bytes that never begin", "FE FF", "þÿ");
    row("good again behind bad", "FF C3 A9", "ÿé");
}

void TestMmsChar::bytesThatAreNoUtf8()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(widened(bytes, 20, unsigned(bytes.size())), text);
}

void TestMmsChar::loneSurrogates()
{
    QCOMPARE(narrowed(QString("a") + QChar(0xD83C), 10, 2), QByteArray("a?"));
    QCOMPARE(narrowed(QString(QChar(0xDF89)) + "b", 10, 2), QByteArray("?b"));
    QCOMPARE(narrowed(QString(QChar(0xD83C)) + QChar(0xD83C) + QChar(0xDF89), 10, 3),
             QByteArray("?🎉"));
    QCOMPARE(narrowed("🎉", 10, 1), QByteArray("?")); // the told length cuts the pair
}

void TestMmsChar::endsOfBuffers()
{
    QCOMPARE(widened("abc", 3, 3), QString("ab")); // the zero takes the last unit
    QCOMPARE(widened("abc", 1, 3), QString());
    QCOMPARE(widened("abc", 0, 3), QString("NO ROOM 0"));
    QCOMPARE(widened("abc", 10, 2), QString("ab"));
    QCOMPARE(widened("a🎉", 3, 5), QString("a")); // no half of a pair
    QCOMPARE(widened("a🎉", 4, 5), QString("a🎉"));
    QCOMPARE(narrowed("你好", 5, 2), QByteArray("你")); // no part of a character
    QCOMPARE(narrowed("你好", 6, 2), QByteArray("你好"));
    QCOMPARE(narrowed("abc", 0, 3), QByteArray());
    // A zero follows when there is room for one.
    char target[4] = {'x', 'x', 'x', 'x'};
    const WideText two("ab");
    QCOMPARE(MMS_Char_convUCS2toUTF8String(two, 2, target, 4), 2U);
    QCOMPARE(QByteArray(target, 4), QByteArray("ab\0x", 4));
}

void TestMmsChar::nothing()
{
    Wide units[2] = {7, 7};
    QCOMPARE(MMS_Char_convUTF8toUCS2String(nullptr, 5, units, 2), 0U);
    QCOMPARE(units[0], Wide(0));
    QCOMPARE(MMS_Char_convUTF8toUCS2String("a", 1, nullptr, 2), 0U);
    char bytes[2] = {'x', 'x'};
    QCOMPARE(MMS_Char_convUCS2toUTF8String(nullptr, 5, bytes, 2), 0U);
    QCOMPARE(bytes[0], char(0));
    QCOMPARE(MMS_Char_convUCS2toUTF8String(units, 1, nullptr, 2), 0U);
}

void TestMmsChar::search()
{
    const WideText text("ann@example@org");
    QCOMPARE(textOf(MMS_device_wchar_strchr(text, '@')), QString("@example@org"));
    QCOMPARE(textOf(MMS_device_wchar_strchr(text, 'x')), QString("xample@org"));
    QCOMPARE(textOf(MMS_device_wchar_strchr(text, '+')), QString("NULL"));
    QCOMPARE(MMS_device_wchar_strchr(text, 0), text + 15);
    QCOMPARE(textOf(MMS_device_wchar_strchr(nullptr, '@')), QString("NULL"));
}

void TestMmsChar::pieces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("one") << "a" << QStringList{"a"};
    QTest::newRow("two") << "a,bc" << QStringList{"a", "bc"};
    QTest::newRow("empty pieces") << ",,a,,b," << QStringList{"a", "b"};
    QTest::newRow("either separator") << "a;b,c" << QStringList{"a", "b", "c"};
    QTest::newRow("separators alone") << ",,;" << QStringList{};
    QTest::newRow("nothing") << "" << QStringList{};
}

void TestMmsChar::pieces()
{
    QFETCH(QString, text);
    const WideText source(text);
    const WideText separators(",;");
    QStringList found;
    Wide *rest = nullptr;
    for (Wide *piece = MMS_device_wchar_strtok(source, separators, &rest); piece;
         piece = MMS_device_wchar_strtok(nullptr, separators, &rest)) {
        found += textOf(piece);
    }
    QTEST(found, "found");
    QCOMPARE(MMS_device_wchar_strtok(nullptr, separators, &rest), nullptr);
}

QTEST_GUILESS_MAIN(TestMmsChar)
#include "tst_mms_char.moc"
