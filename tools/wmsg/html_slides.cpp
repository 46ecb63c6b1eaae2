// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_slides.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kShownSource = 120;

QString spanInWords(const MediumTime &time)
{
    return u"from "_s + timeInWords(time.begin)
        + (time.end ? u" to "_s + timeInWords(*time.end) : QString());
}

} // namespace

QString timeInWords(qint64 milliseconds)
{
    const qint64 minutes = milliseconds / 60000;
    const QString seconds =
        QString::number(static_cast<double>(milliseconds % 60000) / 1000, 'g', 5) + u" s"_s;
    return minutes == 0 ? seconds : u"%1 min %2"_s.arg(minutes).arg(seconds);
}

qsizetype HtmlSlides::countOf(const Smil &smil)
{
    return std::min(smil.slides.size(), kMostSlides);
}

void HtmlSlides::write(HtmlWriter &page)
{
    const qsizetype count = countOf(m_smil);
    page.markup("<div class=\"slides\">\n"_L1);
    for (int number = 0; number < count; ++number) {
        writeSlide(page, number);
    }
    page.markup("</div>\n"_L1);
    if (count < m_smil.slides.size()) {
        page.markup("<p class=\"note\">and "_L1).number(m_smil.slides.size() - count);
        page.markup(" slides more</p>\n"_L1);
    }
}

void HtmlSlides::writeSlide(HtmlWriter &page, int number)
{
    const SmilSlide &slide = m_smil.slides[number];
    page.markup("<section class=\"slide s"_L1).number(number).markup("\">\n<h2>Slide "_L1);
    page.number(number + 1);
    if (slide.duration) {
        page.markup(" <span class=\"quiet\">"_L1).line(timeInWords(*slide.duration));
        page.markup("</span>"_L1);
    }
    page.markup("</h2>\n<div class=\"phone\">\n"_L1);
    writeScreen(page, number);
    writeRest(page, number);
    page.markup("<div class=\"bar\"></div>\n</div>\n"_L1);
    writeList(page, slide);
    page.markup("</section>\n"_L1);
}

// The region that a medium is seen in; a sound is not seen.
std::optional<int> HtmlSlides::placeOf(const SmilMedium &medium) const
{
    const auto leaf = m_content.find(medium.source);
    const bool isHeard =
        leaf ? m_content.kindOf(*leaf) == MediumKind::Sound : medium.element == "audio"_L1;
    return isHeard ? std::nullopt : m_layout.regionOf(medium.region);
}

void HtmlSlides::writeScreen(HtmlWriter &page, int number)
{
    const QList<SmilMedium> &media = m_smil.slides[number].media;
    const auto end = media.begin() + std::min(media.size(), kMostMedia);
    if (std::none_of(media.begin(), end,
                     [this](const SmilMedium &medium) { return placeOf(medium).has_value(); })) {
        return;
    }
    page.markup("<div class=\"screen laid\">\n"_L1);
    for (qsizetype n = 0; n < end - media.begin(); ++n) {
        if (const auto region = placeOf(media[n])) {
            writeOne(page, number, n, region);
        }
    }
    page.markup("</div>\n"_L1);
}

void HtmlSlides::writeRest(HtmlWriter &page, int number)
{
    const QList<SmilMedium> &media = m_smil.slides[number].media;
    const auto isBelow = [this](const SmilMedium &medium) {
        return !placeOf(medium);
    };
    const auto end = media.begin() + std::min(media.size(), kMostMedia);
    if (std::none_of(media.begin(), end, isBelow)) {
        return;
    }
    page.markup("<div class=\"screen flow\">\n"_L1);
    for (qsizetype n = 0; n < end - media.begin(); ++n) {
        if (isBelow(media[n])) {
            writeOne(page, number, n, std::nullopt);
        }
    }
    page.markup("</div>\n"_L1);
}

void HtmlSlides::writeOne(HtmlWriter &page, int number, qsizetype medium, std::optional<int> region)
{
    const SmilMedium &shown = m_smil.slides[number].media[medium];
    page.markup("<div class=\""_L1);
    if (region) {
        page.markup("region r"_L1).number(*region);
    } else {
        page.markup("medium"_L1);
    }
    if (timeOf(shown)) {
        page.markup(" timed t"_L1).number(number).markup("_"_L1).number(medium);
    }
    page.markup("\">"_L1);
    if (const auto leaf = m_content.find(shown.source)) {
        m_content.writeMedium(page, *leaf, shown.alternative);
    } else {
        writeMissing(page, shown);
    }
    page.markup("</div>\n"_L1);
}

void HtmlSlides::writeMissing(HtmlWriter &page, const SmilMedium &medium)
{
    page.markup("<p class=\"missing\">"_L1);
    if (medium.source.isEmpty()) {
        page.markup("nothing to show"_L1);
    } else {
        page.name(medium.source.left(kShownSource)).markup(" is not in the message"_L1);
    }
    if (!medium.alternative.isEmpty()) {
        page.markup("<br>"_L1).name(medium.alternative.left(kShownSource));
    }
    page.markup("</p>"_L1);
}

void HtmlSlides::writeList(HtmlWriter &page, const SmilSlide &slide)
{
    page.markup("<ul class=\"list\">\n"_L1);
    for (qsizetype n = 0; n < std::min(slide.media.size(), kMostMedia); ++n) {
        const SmilMedium &medium = slide.media[n];
        page.markup("<li>"_L1);
        if (const auto leaf = m_content.find(medium.source)) {
            m_content.writeCaption(page, *leaf);
        } else {
            page.name(medium.source.left(kShownSource));
        }
        if (!medium.region.isEmpty()) {
            page.markup("<span class=\"quiet\">, in "_L1).name(medium.region.left(kShownSource));
            page.markup("</span>"_L1);
        }
        if (const auto time = timeOf(medium)) {
            page.markup("<span class=\"quiet\">, "_L1).line(spanInWords(*time));
            page.markup("</span>"_L1);
        }
        page.markup("</li>\n"_L1);
    }
    page.markup("</ul>\n"_L1);
    if (slide.media.size() > kMostMedia) {
        page.markup("<p class=\"note\">and "_L1).number(slide.media.size() - kMostMedia);
        page.markup(" media more</p>\n"_L1);
    }
}

} // namespace wmsg::cli
