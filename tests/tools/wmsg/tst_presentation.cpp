// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/presentation.h"

#include <QtCore/QXmlStreamReader>
#include <QtTest/QtTest>

using namespace wmsg::cli;

namespace {

WMMSMultipart part(const char *type, const char *name)
{
    WMMSContentType contentType;
    contentType.setMimeType(type);
    WMMSMultipart part;
    part.setContentType(contentType);
    part.setContentID(QString("<%1>").arg(name));
    return part;
}

/// "img:a text:b | audio:c", a slide between two bars.
QString outline(const QByteArray &smil)
{
    QXmlStreamReader xml(smil);
    QStringList slides;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) {
            continue;
        }
        if (xml.name() == QLatin1String("par")) {
            slides += QString();
        } else if (xml.attributes().hasAttribute("src")) {
            slides.last() += QString(" %1:%2").arg(xml.name(), xml.attributes().value("src"));
        }
    }
    return xml.hasError() ? xml.errorString() : slides.join(" |").trimmed();
}

} // namespace

class TestPresentation : public QObject {
    Q_OBJECT

private slots:
    void slides_data();
    void slides();
    void names();
    void regions();
};

void TestPresentation::slides_data()
{
    QTest::addColumn<QValueList<WMMSMultipart>>("parts");
    QTest::addColumn<QString>("outlined");
    const auto picture = part("image/jpeg", "p");
    const auto other = part("image/png", "q");
    const auto film = part("video/3gpp", "f");
    const auto text = part("text/plain", "t");
    const auto second = part("text/plain", "u");
    const auto sound = part("audio/amr", "s");
    const auto melody = part("text/x-imelody", "m");
    const auto card = part("text/x-vCard", "c");
    using Parts = QValueList<WMMSMultipart>;
    QTest::newRow("nothing") << Parts{} << "";
    QTest::newRow("text") << Parts{text} << "text:t";
    QTest::newRow("picture with text and sound")
        << Parts{text, sound, picture} << "img:p text:t audio:s";
    QTest::newRow("two pictures, two texts")
        << Parts{text, picture, other, second} << "img:p text:t | img:q text:u";
    QTest::newRow("text without picture")
        << Parts{picture, text, second} << "img:p text:t | text:u";
    QTest::newRow("sound beside no film") << Parts{film, sound} << "video:f | audio:s";
    QTest::newRow("sound on the next slide")
        << Parts{film, picture, sound} << "video:f | img:p audio:s";
    QTest::newRow("a melody is a sound") << Parts{melody} << "audio:m";
    QTest::newRow("a card is on no slide") << Parts{card} << "";
    QTest::newRow("two sounds") << Parts{picture, sound, melody} << "img:p audio:s | audio:m";
}

void TestPresentation::slides()
{
    QFETCH(QValueList<WMMSMultipart>, parts);
    QTEST(outline(smilOf(slidesOf(parts))), "outlined");
}

void TestPresentation::names()
{
    const QValueList<WMMSMultipart> parts{part("image/png", "a&<b>\"'.png")};
    const QByteArray smil = smilOf(slidesOf(parts));
    QCOMPARE(outline(smil), "img:a&<b>\"'.png");
}

void TestPresentation::regions()
{
    const QByteArray smil = smilOf({{"p", {}, "t", {}}, {{}, "f", {}, {}}});
    QVERIFY(smil.contains("<img src=\"p\" region=\"Image\"/><text src=\"t\" region=\"Text\"/>"));
    QVERIFY(smil.contains("<par dur=\"8000ms\"><img"));
    QVERIFY(smil.contains("<par><video src=\"f\" region=\"Image\"/>"));
    QVERIFY(smil.contains("<region id=\"Image\"") && smil.contains("<region id=\"Text\""));
}

QTEST_GUILESS_MAIN(TestPresentation)
#include "tst_presentation.moc"
