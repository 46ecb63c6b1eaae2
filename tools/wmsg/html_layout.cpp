// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_layout.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr double kUsualWidth = 320;
constexpr double kUsualHeight = 480;
constexpr int kMostRegions = 100;

QByteArray percent(double number)
{
    return QByteArray::number(number, 'f', 2) + '%';
}

// What stands on a ground is dark or light.
QByteArray ground(quint32 colour)
{
    const quint32 brightness =
        (colour >> 16 & 0xFF) * 299 + (colour >> 8 & 0xFF) * 587 + (colour & 0xFF) * 114;
    constexpr quint32 kBright = 140 * 1000;
    return "background:#" + QByteArray::number(colour, 16).rightJustified(6, '0')
        + (brightness > kBright ? ";color:#111827" : ";color:#f9fafb");
}

QByteArray fitRule(SmilFit fit)
{
    switch (fit) {
    case SmilFit::Fill:
        return "object-fit:fill";
    case SmilFit::Slice:
        return "object-fit:cover";
    case SmilFit::Hidden:
    case SmilFit::Scroll:
        return "object-fit:contain;object-position:left top";
    case SmilFit::Meet:
        break;
    }
    return "object-fit:contain";
}

struct Extent {
    double start;
    double size;
};

double hundredths(SmilLength length, double whole)
{
    return length.isPercent ? length.number : length.number * 100 / whole;
}

// One direction of a region: two of its three lengths are enough.
Extent extentOf(const std::optional<SmilLength> &start, const std::optional<SmilLength> &end,
                const std::optional<SmilLength> &size, double whole)
{
    const double given = size ? hundredths(*size, whole) : 0;
    double from = start ? hundredths(*start, whole) : 0;
    if (!start && end && size) {
        from = 100 - hundredths(*end, whole) - given;
    }
    from = std::clamp(from, 0.0, 100.0);
    const double to = size ? from + given : 100 - (end ? hundredths(*end, whole) : 0);
    return {from, std::clamp(to, from, 100.0) - from};
}

// The size of the screen in one direction, else that of the regions in pixels, else the usual.
double screenSize(const std::optional<SmilLength> &told, const QList<SmilRegion> &regions,
                  std::optional<SmilLength> SmilRegion::*start,
                  std::optional<SmilLength> SmilRegion::*size, double usual)
{
    if (told && !told->isPercent && told->number >= 1) {
        return told->number;
    }
    double extent = 0;
    for (const SmilRegion &region : regions) {
        const std::optional<SmilLength> &length = region.*size;
        if (length && !length->isPercent) {
            const SmilLength from = (region.*start).value_or(SmilLength());
            extent = std::max(extent, length->number + (from.isPercent ? 0 : from.number));
        }
    }
    return extent >= 1 ? extent : usual;
}

QByteArray animated(const QByteArray &selector, const char *frames, qint64 begin, qint64 length,
                    const char *fill)
{
    return "#play:checked~.slides " + selector + "{animation:" + frames + ' '
        + QByteArray::number(length) + "ms linear " + QByteArray::number(begin) + "ms 1 " + fill
        + "}\n";
}

} // namespace

std::optional<MediumTime> timeOf(const SmilMedium &medium)
{
    if (!medium.begin && !medium.end && !medium.duration) {
        return std::nullopt;
    }
    MediumTime time{medium.begin.value_or(0), medium.end};
    if (!time.end && medium.duration) {
        time.end = time.begin + *medium.duration;
    }
    return time;
}

HtmlLayout::HtmlLayout(const Smil &smil)
{
    addScreen(smil);
    int number = 0;
    for (const SmilRegion &region : smil.regions) {
        if (number < kMostRegions && !region.id.isEmpty() && !m_regions.contains(region.id)) {
            addRegion(region, number++);
        }
    }
}

void HtmlLayout::addScreen(const Smil &smil)
{
    m_width =
        screenSize(smil.width, smil.regions, &SmilRegion::left, &SmilRegion::width, kUsualWidth);
    m_height =
        screenSize(smil.height, smil.regions, &SmilRegion::top, &SmilRegion::height, kUsualHeight);
    // A screen stays one that can be looked at.
    const double ratio = std::clamp(m_width / m_height, 0.4, 2.5);
    m_rules += ".laid{aspect-ratio:" + QByteArray::number(ratio, 'f', 4) + "}\n";
    if (smil.background) {
        m_rules += ".screen{" + ground(*smil.background) + "}\n";
    }
}

void HtmlLayout::addRegion(const SmilRegion &region, int number)
{
    const Extent across = extentOf(region.left, region.right, region.width, m_width);
    const Extent down = extentOf(region.top, region.bottom, region.height, m_height);
    constexpr double kLeast = 1;
    if (across.size < kLeast || down.size < kLeast) {
        return;
    }
    m_regions.insert(region.id, number);
    const QByteArray name = ".r" + QByteArray::number(number);
    m_rules += name + "{left:" + percent(across.start) + ";top:" + percent(down.start)
        + ";width:" + percent(across.size) + ";height:" + percent(down.size)
        + ";z-index:" + QByteArray::number(region.layer)
        + (region.background ? ';' + ground(*region.background) : QByteArray()) + "}\n";
    m_rules += name + ">img," + name + ">video{" + fitRule(region.fit) + "}\n";
}

std::optional<int> HtmlLayout::regionOf(const QString &name) const
{
    const auto found = m_regions.constFind(name);
    return found == m_regions.constEnd() ? std::nullopt : std::optional<int>(*found);
}

QByteArray playingRules(const Smil &smil, qsizetype count)
{
    constexpr qint64 kShortest = 500;
    QByteArray rules;
    qint64 start = 0;
    for (qsizetype slide = 0; slide < count; ++slide) {
        const qint64 length = std::max(smil.slides[slide].duration.value_or(kSlideTime), kShortest);
        const QByteArray number = QByteArray::number(slide);
        const char *fill = slide + 1 == count ? "forwards" : "none";
        rules += animated(".s" + number, "on", start, length, fill);
        rules += animated(".s" + number + " .bar", "grow", start, length, "both");
        const QList<SmilMedium> &media = smil.slides[slide].media;
        for (qsizetype n = 0; n < std::min(media.size(), kMostMedia); ++n) {
            if (const auto time = timeOf(media[n])) {
                const qint64 begin = std::min(time->begin, length);
                const qint64 end = std::clamp(time->end.value_or(length), begin, length);
                rules += animated(".t" + number + '_' + QByteArray::number(n), "on", start + begin,
                                  end - begin, end == length ? fill : "none");
            }
        }
        start += length;
    }
    return rules;
}

} // namespace wmsg::cli
