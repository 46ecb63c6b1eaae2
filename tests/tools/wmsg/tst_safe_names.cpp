// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/safe_names.h"

#include <QtTest/QtTest>

using wmsg::cli::safeFileName;
using wmsg::cli::safePartName;
using wmsg::cli::UniqueNames;

class TestSafeNames : public QObject {
    Q_OBJECT

private slots:
    void fileNames_data();
    void fileNames();
    void longNames();
    void partNames_data();
    void partNames();
    void uniqueNames();
};

void TestSafeNames::fileNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("safe");
    const auto row = [](const char *title, const QString &name, const QString &safe) {
        QTest::newRow(title) << name << safe;
    };
    row("plain", "photo.jpg", "photo.jpg");
    row("letters of the world", QString::fromUtf8("Grüße 日本.png"),
        QString::fromUtf8("Grüße 日本.png"));
    row("beyond the first plane", QString::fromUtf8("😀.gif"), QString::fromUtf8("😀.gif"));
    row("directories", "../../etc/passwd", "passwd");
    row("directories of others", "C:\\windows\\x.exe", "x.exe");
    row("a directory alone", "a/b/", "part7");
    row("parent", "..", "part7");
    row("hidden", ".bashrc", "part7.bashrc");
    row("hidden with extension", ".profile.txt", "profile.txt");
    row("an option", "-rf.txt", "rf.txt");
    row("home", "~root.txt", "root.txt");
    row("empty", "", "part7");
    row("extension alone", ".jpg", "part7.jpg");
    row("blanks", "   .  ", "part7");
    row("ends in dots", "a.b...", "a.b");
    row("line break", "a\nb.txt", "a_b.txt");
    row("NUL", QString("a") + QChar(0) + "b.txt", "a_b.txt");
    row("terminal", "\x1B[2J.txt", "_[2J.txt");
    row("turned direction", QString("a") + QChar(0x202E) + "gpj.exe", "a_gpj.exe");
    row("half a character", QString("a") + QChar(0xD800) + ".txt", "a_.txt");
    row("shell", "$(id)`x`;a&b|c.txt", "_(id)_x__a_b_c.txt");
    row("wildcards and quotes", "a*b?\"c\"<d>.txt", "a_b__c__d_.txt");
    row("reserved", "CON.txt", "_CON.txt");
    row("reserved without extension", "nul", "_nul");
    row("reserved port", "com1.tar.gz", "_com1.tar.gz");
    row("not reserved", "console.txt", "console.txt");
    row("no extension", "README", "README");
}

void TestSafeNames::fileNames()
{
    QFETCH(QString, name);
    QTEST(safeFileName(name, "part7"), "safe");
}

void TestSafeNames::longNames()
{
    const QString kept = safeFileName(QString(300, 'a') + ".jpg", "p");
    QCOMPARE(kept, QString(100, 'a') + ".jpg");
    const QString twoBytes = safeFileName(QString(300, QChar(0xFC)) + ".jpg", "p");
    QCOMPARE(twoBytes, QString(50, QChar(0xFC)) + ".jpg");
    QVERIFY(safeFileName("a." + QString(300, 'b'), "p").toUtf8().size() <= 255);
    QVERIFY(safeFileName(QString(1 << 22, '.'), "p").toUtf8().size() <= 255);
}

void TestSafeNames::partNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("safe");
    QTest::newRow("plain") << "photo.jpg"
                           << "photo.jpg";
    QTest::newRow("marks dropped") << QString::fromUtf8("Zoë Müller.png") << "Zoe_Muller.png";
    QTest::newRow("other scripts") << QString::fromUtf8("日本.png") << "__.png";
    QTest::newRow("for a document") << "a&b<c>'\".png"
                                    << "a_b_c___.png";
    QTest::newRow("path") << "/home/x/a.png"
                          << "a.png";
    QTest::newRow("nothing left") << QString::fromUtf8("...") << "part7";
}

void TestSafeNames::partNames()
{
    QFETCH(QString, name);
    QTEST(safePartName(name, "part7"), "safe");
    QVERIFY(safePartName(QString(100, 'x') + ".jpeg", "part7").size() <= 40);
}

void TestSafeNames::uniqueNames()
{
    UniqueNames names;
    QCOMPARE(names.take("a.jpg"), "a.jpg");
    QCOMPARE(names.take("a.jpg"), "a-2.jpg");
    QCOMPARE(names.take("A.JPG"), "A-3.JPG");
    QCOMPARE(names.take("a-2.jpg"), "a-2-2.jpg");
    QCOMPARE(names.take("b"), "b");
    QCOMPARE(names.take("b"), "b-2");
}

QTEST_GUILESS_MAIN(TestSafeNames)
#include "tst_safe_names.moc"
