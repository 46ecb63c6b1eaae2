// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/presentation.h"

#include <QtCore/QXmlStreamWriter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

void writeRegion(QXmlStreamWriter &xml, const QString &name, const QString &top,
                 const QString &height, const QString &fit)
{
    xml.writeEmptyElement(u"region"_s);
    xml.writeAttribute(u"id"_s, name);
    xml.writeAttribute(u"left"_s, u"0%"_s);
    xml.writeAttribute(u"top"_s, top);
    xml.writeAttribute(u"width"_s, u"100%"_s);
    xml.writeAttribute(u"height"_s, height);
    xml.writeAttribute(u"fit"_s, fit);
}

void writeLayout(QXmlStreamWriter &xml)
{
    xml.writeStartElement(u"head"_s);
    xml.writeStartElement(u"layout"_s);
    xml.writeEmptyElement(u"root-layout"_s);
    xml.writeAttribute(u"width"_s, u"320"_s);
    xml.writeAttribute(u"height"_s, u"480"_s);
    writeRegion(xml, u"Image"_s, u"0%"_s, u"67%"_s, u"meet"_s);
    writeRegion(xml, u"Text"_s, u"67%"_s, u"33%"_s, u"scroll"_s);
    xml.writeEndElement();
    xml.writeEndElement();
}

void writeMedium(QXmlStreamWriter &xml, const QString &element, const QString &name,
                 const QString &region)
{
    if (name.isEmpty()) {
        return;
    }
    xml.writeEmptyElement(element);
    xml.writeAttribute(u"src"_s, name);
    if (!region.isEmpty()) {
        xml.writeAttribute(u"region"_s, region);
    }
}

void writeSlide(QXmlStreamWriter &xml, const Slide &slide)
{
    xml.writeStartElement(u"par"_s);
    // What plays says itself how long it lasts.
    if (slide.film.isEmpty() && slide.sound.isEmpty()) {
        xml.writeAttribute(u"dur"_s, u"8000ms"_s);
    }
    writeMedium(xml, u"img"_s, slide.picture, u"Image"_s);
    writeMedium(xml, u"video"_s, slide.film, u"Image"_s);
    writeMedium(xml, u"text"_s, slide.text, u"Text"_s);
    writeMedium(xml, u"audio"_s, slide.sound, QString());
    xml.writeEndElement();
}

// Puts a medium on the first slide with a place for it, else on a new one.
template <typename HasPlace>
void place(QList<Slide> &slides, QString Slide::*member, const QString &name, HasPlace hasPlace)
{
    auto slide = std::find_if(slides.begin(), slides.end(), hasPlace);
    if (slide == slides.end()) {
        slide = slides.insert(slides.end(), Slide{});
    }
    (*slide).*member = name;
}

} // namespace

QList<Slide> slidesOf(const QValueList<WMMSMultipart> &parts)
{
    QList<Slide> slides;
    for (const WMMSMultipart &part : parts) {
        if (part.isMediaType(u"image"_s)) {
            slides.append({part.getSrc(), {}, {}, {}});
        } else if (part.isMediaType(u"video"_s)) {
            slides.append({{}, part.getSrc(), {}, {}});
        }
    }
    for (const WMMSMultipart &part : parts) {
        if (part.getContentType().isMimeType("text/plain"_L1)) {
            place(slides, &Slide::text, part.getSrc(),
                  [](const Slide &slide) { return slide.text.isEmpty(); });
        }
    }
    for (const WMMSMultipart &part : parts) {
        if (part.isMediaType(u"audio"_s)) {
            place(slides, &Slide::sound, part.getSrc(),
                  [](const Slide &slide) { return slide.sound.isEmpty() && slide.film.isEmpty(); });
        }
    }
    return slides;
}

QByteArray smilOf(const QList<Slide> &slides)
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.writeStartElement(u"smil"_s);
    writeLayout(xml);
    xml.writeStartElement(u"body"_s);
    for (const Slide &slide : slides) {
        writeSlide(xml, slide);
    }
    xml.writeEndElement();
    xml.writeEndElement();
    return document;
}

} // namespace wmsg::cli
