// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/part_names.h"
#include "tools/wmsg/smil_reader.h"

#include <QtTest/QtTest>

using namespace wmsg::cli;

namespace {

QString words(const std::optional<qint64> &time)
{
    return time ? QString::number(*time) : QString("-");
}

QString words(const std::optional<SmilLength> &length)
{
    return length ? QString::number(length->number) + (length->isPercent ? "%" : "") : QString("-");
}

QString words(const std::optional<quint32> &colour)
{
    return colour ? QString::number(*colour, 16).rightJustified(6, '0') : QString("-");
}

/// "5000: img:a@Image text:b+1000-2000 | -: audio:c", a slide between two bars.
QString outline(const Smil &smil)
{
    QStringList slides;
    for (const SmilSlide &slide : smil.slides) {
        QString line = words(slide.duration) + ':';
        for (const SmilMedium &medium : slide.media) {
            line += ' ' + medium.element + ':' + medium.source;
            line += medium.region.isEmpty() ? QString() : '@' + medium.region;
            line += medium.begin || medium.end ? '+' + words(medium.begin) + '-' + words(medium.end)
                                               : QString();
        }
        slides += line;
    }
    return slides.join(" | ");
}

QByteArray repeated(const QByteArray &text, int times)
{
    return text.repeated(times);
}

} // namespace

class TestSmilReader : public QObject {
    Q_OBJECT

private slots:
    void times_data();
    void times();
    void lengths_data();
    void lengths();
    void colours_data();
    void colours();
    void slides_data();
    void slides();
    void layout();
    void encodings_data();
    void encodings();
    void broken();
    void hostile_data();
    void hostile();
    void everyPrefix();
    void names();
};

void TestSmilReader::times_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("time");
    QTest::newRow("seconds") << "5s"
                             << "5000";
    QTest::newRow("parts of a second") << "2.5s"
                                       << "2500";
    QTest::newRow("milliseconds") << "8000ms"
                                  << "8000";
    QTest::newRow("minutes") << "2min"
                             << "120000";
    QTest::newRow("hours") << "1h"
                           << "3600000";
    QTest::newRow("seconds without unit") << "7"
                                          << "7000";
    QTest::newRow("blanks and capitals") << " 5 S "
                                         << "5000";
    QTest::newRow("short clock") << "01:05"
                                 << "65000";
    QTest::newRow("clock") << "01:00:05.5"
                           << "3605500";
    QTest::newRow("a day at most") << "999999999h"
                                   << "86400000";
    QTest::newRow("nothing") << ""
                             << "-";
    QTest::newRow("unit alone") << "s"
                                << "-";
    QTest::newRow("indefinite") << "indefinite"
                                << "-";
    QTest::newRow("event") << "v.end+1s"
                           << "-";
    QTest::newRow("negative") << "-5s"
                              << "-";
    QTest::newRow("exponent") << "1e9s"
                              << "-";
    QTest::newRow("not a number") << "nans"
                                  << "-";
    QTest::newRow("infinite") << "inf"
                              << "-";
    QTest::newRow("long clock") << "1:1:1:1"
                                << "-";
    QTest::newRow("many digits") << QString(1000, '9') << "-";
}

void TestSmilReader::times()
{
    QFETCH(QString, text);
    QTEST(words(smilTime(text)), "time");
}

void TestSmilReader::lengths_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("length");
    QTest::newRow("pixels") << "120"
                            << "120";
    QTest::newRow("pixels with unit") << "120px"
                                      << "120";
    QTest::newRow("hundredths") << "33%"
                                << "33%";
    QTest::newRow("fraction") << "33.5%"
                              << "33.5%";
    QTest::newRow("negative") << "-4"
                              << "-4";
    QTest::newRow("huge") << "999999999999"
                          << "100000";
    QTest::newRow("nothing") << ""
                             << "-";
    QTest::newRow("sign alone") << "-"
                                << "-";
    QTest::newRow("two signs") << "--4"
                               << "-";
    QTest::newRow("auto") << "auto"
                          << "-";
    QTest::newRow("other unit") << "4em"
                                << "-";
    QTest::newRow("style") << "1;background:url(x)"
                           << "-";
    QTest::newRow("closing brace") << "1}*{color:red"
                                   << "-";
    QTest::newRow("hex") << "0x10"
                         << "-";
    QTest::newRow("not a number") << "nan"
                                  << "-";
}

void TestSmilReader::lengths()
{
    QFETCH(QString, text);
    QTEST(words(smilLength(text)), "length");
}

void TestSmilReader::colours_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("colour");
    QTest::newRow("six digits") << "#12aBcD"
                                << "12abcd";
    QTest::newRow("three digits") << "#1aF"
                                  << "11aaff";
    QTest::newRow("name") << "Red"
                          << "ff0000";
    QTest::newRow("numbers") << "rgb(255, 0,16)"
                             << "ff0010";
    QTest::newRow("nothing") << ""
                             << "-";
    QTest::newRow("mark alone") << "#"
                                << "-";
    QTest::newRow("four digits") << "#1234"
                                 << "-";
    QTest::newRow("no digits") << "#zzzzzz"
                               << "-";
    QTest::newRow("prefixed") << "#0x1"
                              << "-";
    QTest::newRow("signed") << "#+12345"
                            << "-";
    QTest::newRow("beyond the highest") << "rgb(256,0,0)"
                                        << "-";
    QTest::newRow("two numbers") << "rgb(1,2)"
                                 << "-";
    QTest::newRow("picture") << "url(http://x/)"
                             << "-";
    QTest::newRow("style") << "red;x:y"
                           << "-";
}

void TestSmilReader::colours()
{
    QFETCH(QString, text);
    QTEST(words(smilColour(text)), "colour");
}

void TestSmilReader::slides_data()
{
    QTest::addColumn<QByteArray>("smil");
    QTest::addColumn<QString>("outlined");
    QTest::newRow("one") << QByteArray("<smil><body><par dur='5s'><img src='a' region='Image'/>"
                                       "<text src='b'/></par></body></smil>")
                         << "5000: img:a@Image text:b";
    QTest::newRow("two with a sound")
        << QByteArray("<smil><body><par dur='5000ms'><img src='cid:a'/></par>"
                      "<par><audio src='c' begin='1s' end='3s'/></par></body></smil>")
        << "5000: img:cid:a | 3000: audio:c+1000-3000";
    QTest::newRow("duration of a medium")
        << QByteArray("<smil><body><par><img src='a' dur='2s' begin='1s'/></par></body></smil>")
        << "3000: img:a+1000--";
    QTest::newRow("inside a sequence")
        << QByteArray("<smil><body><seq><par><ref src='a'/></par><par><video src='b'/></par></seq>"
                      "</body></smil>")
        << "-: ref:a | -: video:b";
    QTest::newRow("slide in a slide")
        << QByteArray("<smil><body><par><par><img src='a'/></par><text src='b'/></par>"
                      "<par><img src='c'/></par></body></smil>")
        << "-: img:a text:b | -: img:c";
    QTest::newRow("media without slides")
        << QByteArray("<smil><body><img src='a' dur='1s'/><text src='b'/></body></smil>")
        << "1000: img:a | -: text:b";
    QTest::newRow("prefixes and capitals")
        << QByteArray("<s:SMIL xmlns:s='x'><s:Body><s:PAR DUR='1s'><s:Img SRC='a'/></s:PAR>"
                      "</s:Body></s:SMIL>")
        << "1000: img:a";
    QTest::newRow("document type")
        << QByteArray("<?xml version='1.0'?><!DOCTYPE smil PUBLIC '-//W3C//DTD SMIL 2.0//EN' "
                      "'http://www.w3.org/2001/SMIL20/SMIL20.dtd'><smil><body><par><img src='a'/>"
                      "</par></body></smil>")
        << "-: img:a";
    QTest::newRow("comments and data")
        << QByteArray("<smil><!-- x --><body><![CDATA[y]]><par><img src='a'/></par></body></smil>")
        << "-: img:a";
    QTest::newRow("zeros at the end")
        << QByteArray("<smil><body><par><img src='a'/></par></body></smil>\0\0", 54) << "-: img:a";
    QTest::newRow("empty slide") << QByteArray("<smil><body><par/></body></smil>") << "-:";
    QTest::newRow("predefined entities")
        << QByteArray("<smil><body><img src='a&amp;&#98;'/></body></smil>") << "-: img:a&b";
}

void TestSmilReader::slides()
{
    QFETCH(QByteArray, smil);
    const Smil read = readSmil(smil);
    QCOMPARE(read.problem, QString());
    QTEST(outline(read), "outlined");
}

void TestSmilReader::layout()
{
    const Smil smil = readSmil(R"(<smil><head><layout>
<root-layout width="160px" height="140" background-color="#FFF"/>
<region id="Image" left="5%" top="0" width="100%" height="66%" fit="slice" z-index="2"/>
<region regionName="Text" right="1" bottom="2" fit="huge" backgroundColor="teal" z-index="-1"/>
</layout></head><body><par><notamedium src="x"/></par></body></smil>)");
    QCOMPARE(smil.problem, QString());
    QCOMPARE(words(smil.width) + ' ' + words(smil.height) + ' ' + words(smil.background),
             "160 140 ffffff");
    QCOMPARE(smil.regions.size(), 2);
    const SmilRegion &image = smil.regions[0];
    QCOMPARE(image.id, "Image");
    QCOMPARE(words(image.left) + ' ' + words(image.top) + ' ' + words(image.width) + ' '
                 + words(image.height) + ' ' + words(image.right) + ' ' + words(image.background),
             "5% 0 100% 66% - -");
    QCOMPARE(image.fit, SmilFit::Slice);
    QCOMPARE(image.layer, 2);
    const SmilRegion &text = smil.regions[1];
    QCOMPARE(text.id, "Text");
    QCOMPARE(words(text.right) + ' ' + words(text.bottom) + ' ' + words(text.background),
             "1 2 008080");
    QCOMPARE(text.fit, SmilFit::Meet);
    QCOMPARE(text.layer, 0);
    QCOMPARE(smil.sources, QStringList{"x"});
    QCOMPARE(outline(smil), "-:");
}

void TestSmilReader::encodings_data()
{
    QTest::addColumn<QByteArray>("smil");
    const QString text = "<smil><body><img src='\u00E9.png'/></body></smil>";
    const auto utf16 = [&](QStringConverter::Encoding encoding) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        return QByteArray(encoder(text));
    };
    QTest::newRow("UTF-8") << text.toUtf8();
    QTest::newRow("UTF-8 with mark") << "\xEF\xBB\xBF" + text.toUtf8();
    QTest::newRow("big-endian UTF-16") << utf16(QStringConverter::Utf16BE);
    QTest::newRow("little-endian UTF-16") << utf16(QStringConverter::Utf16LE);
    QTest::newRow("ISO-8859-1") << text.toLatin1();
    QTest::newRow("ISO-8859-1, declared")
        << "<?xml version='1.0' encoding='ISO-8859-1'?>" + text.toLatin1();
    QTest::newRow("UTF-8, declared otherwise")
        << "<?xml version='1.0' encoding='UTF-16'?>" + text.toUtf8();
}

void TestSmilReader::encodings()
{
    QFETCH(QByteArray, smil);
    const Smil read = readSmil(smil);
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.sources, QStringList{"\u00E9.png"});
}

void TestSmilReader::broken()
{
    const Smil smil = readSmil("<smil><body><par dur='1s'>\n<img src='a'/>\n<text src='b'></par>");
    QVERIFY2(smil.problem.startsWith("the presentation is no proper XML, line 3: "),
             qPrintable(smil.problem));
    QCOMPARE(outline(smil), "1000: img:a text:b");
    QVERIFY(readSmil("").problem.startsWith("the presentation is no proper XML, line 1: "));
    QCOMPARE(readSmil("hello").slides.size(), 0);
}

void TestSmilReader::hostile_data()
{
    QTest::addColumn<QByteArray>("smil");
    QTest::addColumn<QString>("problem");
    const QString declares = "the presentation declares entities of its own and is not read";
    QByteArray bomb = "<!DOCTYPE smil [<!ENTITY a 'lol'>";
    for (char name = 'b'; name < 'k'; ++name) {
        const QByteArray inner = '&' + QByteArray(1, char(name - 1)) + ';';
        bomb += "<!ENTITY " + QByteArray(1, name) + " '" + inner.repeated(10) + "'>";
    }
    bomb += "]><smil><body><img src='&j;'/></body></smil>";
    QTest::newRow("entity bomb") << bomb << declares;
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    QTest::newRow("entity bomb in UTF-16") << QByteArray(encoder(QString(bomb))) << declares;
    QTest::newRow("entity of a file")
        << QByteArray("<!DOCTYPE smil [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><smil>&a;</smil>")
        << declares;
    QTest::newRow("declared attributes") << QByteArray(
        "<!DOCTYPE smil [<!ATTLIST smil " + repeated("a CDATA 'x' ", 50000) + ">]><smil/>")
                                         << declares;
    QByteArray attributes = "<smil";
    for (int number = 0; number < 50000; ++number) {
        attributes += " a" + QByteArray::number(number) + "=''";
    }
    QTest::newRow("attributes without end")
        << attributes + "/>"
        << "the presentation has an element with more than 256 attributes and is not read";
    QTest::newRow("nested") << repeated("<par>", 100000)
                            << "the presentation is nested more than 64 levels deep";
    QTest::newRow("large") << QByteArray((1 << 20) + 1, ' ')
                           << "the presentation has more than 1048576 bytes and is not read";
    QTest::newRow("undeclared entity")
        << QByteArray("<smil>&a;</smil>")
        << "the presentation is no proper XML, line 1: Entity 'a' not declared.";
}

void TestSmilReader::hostile()
{
    QFETCH(QByteArray, smil);
    const Smil read = readSmil(smil);
    QTEST(read.problem, "problem");
    QCOMPARE(read.sources, QStringList());
    QVERIFY(read.slides.size() <= 1);
}

// However a presentation is cut, what stands before the cut is there.
void TestSmilReader::everyPrefix()
{
    const QByteArray whole = "<smil><head><layout><root-layout width='10' height='10'/>"
                             "<region id='r' left='1'/></layout></head><body><par dur='1s'>"
                             "<img src='a' region='r'/></par><par><text src='b'/></par></body>"
                             "</smil>";
    QCOMPARE(readSmil(whole).problem, QString());
    for (qsizetype size = 0; size < whole.size(); ++size) {
        const Smil smil = readSmil(whole.left(size));
        QVERIFY2(!smil.problem.isEmpty(), qPrintable(QString::number(size)));
        const QByteArray read = whole.left(size);
        QCOMPARE(smil.slides.size(), read.count("<par dur='1s'>") + read.count("<par>"));
    }
}

void TestSmilReader::names()
{
    PartNames names;
    names.add("<Photo@x>", 0);
    names.add("", 1);
    names.add("photo@X", 1);
    names.add("a b.txt", 1);
    names.add("50%25.gif", 2);
    QCOMPARE(names.find("cid:photo@x").value_or(-1), 0);
    QCOMPARE(names.find(" CID:PHOTO@X ").value_or(-1), 0);
    QCOMPARE(names.find("a%20b.txt").value_or(-1), 1);
    QCOMPARE(names.find("50%25.gif").value_or(-1), 2);
    QVERIFY(!names.find("") && !names.find("cid:") && !names.find("other") && !names.find("%"));
}

QTEST_GUILESS_MAIN(TestSmilReader)
#include "tst_smil_reader.moc"
