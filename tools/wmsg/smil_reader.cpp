// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/smil_reader.h"

#include <QtCore/QStringDecoder>
#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kMostBytes = 1 << 20;
constexpr int kMostAttributes = 256;
constexpr int kDeepest = 64;
constexpr qint64 kLongestTime = 24LL * 60 * 60 * 1000;
constexpr double kLongest = 100000;

// Digits with at most one point, and nothing else that a number may be elsewhere.
std::optional<double> plainNumber(QStringView text)
{
    constexpr qsizetype kMostDigits = 12;
    const bool isPlain = !text.isEmpty() && text.size() <= kMostDigits && text.count(u'.') <= 1
        && std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c == u'.' || (c >= u'0' && c <= u'9'); });
    bool isNumber = false;
    const double number = isPlain ? text.toDouble(&isNumber) : 0;
    return isNumber ? std::optional<double>(number) : std::nullopt;
}

std::optional<qint64> milliseconds(std::optional<double> number, double unit)
{
    if (!number) {
        return std::nullopt;
    }
    return std::llround(std::min(*number * unit, static_cast<double>(kLongestTime)));
}

// "1:05" and "1:00:05.5".
std::optional<qint64> timeOfClock(QStringView text)
{
    constexpr qsizetype kMostPlaces = 3;
    const QList<QStringView> places = text.split(u':');
    if (places.size() > kMostPlaces) {
        return std::nullopt;
    }
    double seconds = 0;
    for (const QStringView place : places) {
        const auto number = plainNumber(place);
        if (!number) {
            return std::nullopt;
        }
        seconds = seconds * 60 + *number;
    }
    return milliseconds(seconds, 1000);
}

std::optional<quint32> colourOfHex(QStringView digits)
{
    bool isHex = false;
    const quint32 value = digits.toUInt(&isHex, 16);
    const bool isPlain = std::all_of(digits.begin(), digits.end(), [](QChar c) {
        const QChar lower = c.toLower();
        return (c >= u'0' && c <= u'9') || (lower >= u'a' && lower <= u'f');
    });
    if (!isHex || !isPlain || (digits.size() != 3 && digits.size() != 6)) {
        return std::nullopt;
    }
    return digits.size() == 6 ? value
                              : ((value & 0xF00) << 8 | (value & 0xF0) << 4 | (value & 0xF)) * 0x11;
}

// What stands between "rgb(" and ")".
std::optional<quint32> colourOfNumbers(QStringView text)
{
    quint32 colour = 0;
    const QList<QStringView> shares = text.split(u',');
    for (const QStringView share : shares) {
        const auto number = plainNumber(share.trimmed());
        if (!number || *number > 255) {
            return std::nullopt;
        }
        colour = colour << 8 | static_cast<quint32>(*number);
    }
    return shares.size() == 3 ? std::optional<quint32>(colour) : std::nullopt;
}

std::optional<quint32> colourOfName(QStringView name)
{
    struct Named {
        QLatin1String name;
        quint32 colour;
    };
    static constexpr std::array kNamed = {
        Named{"aqua"_L1, 0x00FFFF},    Named{"black"_L1, 0x000000},  Named{"blue"_L1, 0x0000FF},
        Named{"fuchsia"_L1, 0xFF00FF}, Named{"gray"_L1, 0x808080},   Named{"green"_L1, 0x008000},
        Named{"lime"_L1, 0x00FF00},    Named{"maroon"_L1, 0x800000}, Named{"navy"_L1, 0x000080},
        Named{"olive"_L1, 0x808000},   Named{"purple"_L1, 0x800080}, Named{"red"_L1, 0xFF0000},
        Named{"silver"_L1, 0xC0C0C0},  Named{"teal"_L1, 0x008080},   Named{"white"_L1, 0xFFFFFF},
        Named{"yellow"_L1, 0xFFFF00},
    };
    const auto *found = std::find_if(kNamed.begin(), kNamed.end(), [&](const Named &named) {
        return name.compare(named.name, Qt::CaseInsensitive) == 0;
    });
    return found == kNamed.end() ? std::nullopt : std::optional<quint32>(found->colour);
}

SmilFit fitOf(QStringView text)
{
    struct Named {
        QLatin1String name;
        SmilFit fit;
    };
    static constexpr std::array kNamed = {
        Named{"hidden"_L1, SmilFit::Hidden}, Named{"fill"_L1, SmilFit::Fill},
        Named{"meet"_L1, SmilFit::Meet},     Named{"scroll"_L1, SmilFit::Scroll},
        Named{"slice"_L1, SmilFit::Slice},
    };
    const auto *found = std::find_if(kNamed.begin(), kNamed.end(), [&](const Named &named) {
        return text.compare(named.name, Qt::CaseInsensitive) == 0;
    });
    return found == kNamed.end() ? SmilFit::Meet : found->fit;
}

// By mark, else UTF-8, else one byte for each character: then no declaration can turn the bytes
// into what the guards have not seen.
QString textOfSmil(QByteArrayView bytes)
{
    const auto marked = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(marked.value_or(QStringConverter::Utf8));
    QString text = decoder(bytes);
    if (!marked && decoder.hasError()) {
        text = QString::fromLatin1(bytes);
    }
    while (text.endsWith(QChar::Null)) {
        text.chop(1);
    }
    return text.startsWith(QChar::ByteOrderMark) ? text.mid(1) : text;
}

// The parser takes quadratic time for the attributes of one element and for what a document
// declares, so both are bounded before it sees them. A "<" never stands inside a tag.
QString guard(QStringView text)
{
    int attributes = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == u'<') {
            attributes = 0;
            const QStringView rest = text.mid(at + 1, 8);
            if (rest.startsWith(u'!') && !rest.startsWith("!--"_L1)
                && !rest.startsWith("![CDATA["_L1) && rest != "!DOCTYPE"_L1) {
                return u"the presentation declares entities of its own and is not read"_s;
            }
        } else if (text[at] == u'=' && ++attributes > kMostAttributes) {
            return u"the presentation has an element with more than %1 attributes and is not read"_s
                .arg(kMostAttributes);
        }
    }
    return {};
}

/// One run through a presentation.
class Reader {
public:
    explicit Reader(const QString &text) : m_xml(text)
    {
        m_xml.setNamespaceProcessing(false);
        m_xml.setEntityExpansionLimit(0);
    }
    Smil read();

private:
    void begin();
    void end();
    void readScreen();
    void readRegion();
    void readMedium(const QString &element);
    void closeSlide();
    [[nodiscard]] QString attribute(QLatin1String name) const;
    [[nodiscard]] std::optional<SmilLength> length(QLatin1String name) const
    {
        return smilLength(attribute(name));
    }
    [[nodiscard]] std::optional<quint32> background() const;

    QXmlStreamReader m_xml;
    Smil m_smil;
    int m_depth = 0;
    int m_slideDepth = 0; ///< Of the open slide; 0 when there is none.
};

Smil Reader::read()
{
    while (!m_xml.atEnd() && m_smil.problem.isEmpty()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            begin();
            break;
        case QXmlStreamReader::EndElement:
            end();
            break;
        default:
            break;
        }
    }
    if (m_slideDepth != 0) {
        closeSlide();
    }
    if (m_xml.hasError()) {
        m_smil.problem = u"the presentation is no proper XML, line %1: %2"_s.arg(m_xml.lineNumber())
                             .arg(m_xml.errorString());
    }
    return std::move(m_smil);
}

void Reader::begin()
{
    if (++m_depth > kDeepest) {
        m_smil.problem = u"the presentation is nested more than %1 levels deep"_s.arg(kDeepest);
        return;
    }
    const QString source = attribute("src"_L1);
    if (!source.isNull()) {
        m_smil.sources += source;
    }
    static constexpr std::array kMedia = {"img"_L1, "text"_L1,      "audio"_L1,     "video"_L1,
                                          "ref"_L1, "animation"_L1, "textstream"_L1};
    const QString element = m_xml.qualifiedName().toString().section(u':', -1).toLower();
    if (element == "root-layout"_L1) {
        readScreen();
    } else if (element == "region"_L1) {
        readRegion();
    } else if (element == "par"_L1 && m_slideDepth == 0) {
        m_slideDepth = m_depth;
        m_smil.slides.append({smilTime(attribute("dur"_L1)), {}});
    } else if (std::find(kMedia.begin(), kMedia.end(), element) != kMedia.end()) {
        readMedium(element);
    }
}

void Reader::end()
{
    if (m_depth-- == m_slideDepth) {
        closeSlide();
    }
}

// An attribute, also where its name is spelt in other cases.
QString Reader::attribute(QLatin1String name) const
{
    for (const QXmlStreamAttribute &attribute : m_xml.attributes()) {
        if (attribute.qualifiedName().compare(name, Qt::CaseInsensitive) == 0) {
            const QString value = attribute.value().toString();
            return value.isNull() ? u""_s : value;
        }
    }
    return {};
}

std::optional<quint32> Reader::background() const
{
    const auto colour = smilColour(attribute("background-color"_L1));
    return colour ? colour : smilColour(attribute("backgroundColor"_L1));
}

void Reader::readScreen()
{
    m_smil.width = length("width"_L1);
    m_smil.height = length("height"_L1);
    m_smil.background = background();
}

void Reader::readRegion()
{
    SmilRegion region;
    region.id = attribute("id"_L1);
    if (region.id.isEmpty()) {
        region.id = attribute("regionName"_L1);
    }
    region.left = length("left"_L1);
    region.top = length("top"_L1);
    region.right = length("right"_L1);
    region.bottom = length("bottom"_L1);
    region.width = length("width"_L1);
    region.height = length("height"_L1);
    region.background = background();
    region.fit = fitOf(attribute("fit"_L1));
    constexpr double kHighestLayer = 1000;
    region.layer =
        static_cast<int>(std::min(plainNumber(attribute("z-index"_L1)).value_or(0), kHighestLayer));
    m_smil.regions.append(region);
}

// A medium outside every slide is one by itself.
void Reader::readMedium(const QString &element)
{
    SmilMedium medium;
    medium.element = element;
    medium.source = attribute("src"_L1);
    medium.region = attribute("region"_L1);
    medium.alternative = attribute("alt"_L1);
    medium.begin = smilTime(attribute("begin"_L1));
    medium.end = smilTime(attribute("end"_L1));
    medium.duration = smilTime(attribute("dur"_L1));
    const bool isAlone = m_slideDepth == 0;
    if (isAlone) {
        m_smil.slides.append(SmilSlide());
    }
    m_smil.slides.last().media.append(medium);
    if (isAlone) {
        closeSlide();
    }
}

void Reader::closeSlide()
{
    m_slideDepth = 0;
    SmilSlide &slide = m_smil.slides.last();
    if (slide.duration) {
        return;
    }
    for (const SmilMedium &medium : slide.media) {
        std::optional<qint64> end = medium.end;
        if (!end && medium.duration) {
            end = medium.begin.value_or(0) + *medium.duration;
        }
        if (end && *end > slide.duration.value_or(-1)) {
            slide.duration = std::min(*end, kLongestTime);
        }
    }
}

} // namespace

std::optional<qint64> smilTime(QStringView text)
{
    text = text.trimmed();
    struct Unit {
        QLatin1String name;
        double milliseconds;
    };
    // What ends another name stands before it.
    static constexpr std::array kUnits = {Unit{"ms"_L1, 1}, Unit{"min"_L1, 60000},
                                          Unit{"s"_L1, 1000}, Unit{"h"_L1, 3600000}};
    for (const Unit &unit : kUnits) {
        if (text.endsWith(unit.name, Qt::CaseInsensitive)) {
            const QStringView number = text.chopped(unit.name.size()).trimmed();
            return milliseconds(plainNumber(number), unit.milliseconds);
        }
    }
    return timeOfClock(text);
}

std::optional<SmilLength> smilLength(QStringView text)
{
    text = text.trimmed();
    const bool isPercent = text.endsWith(u'%');
    if (isPercent) {
        text.chop(1);
    } else if (text.endsWith("px"_L1, Qt::CaseInsensitive)) {
        text.chop(2);
    }
    const bool isNegative = text.startsWith(u'-');
    const auto number = plainNumber(isNegative ? text.mid(1) : text);
    if (!number) {
        return std::nullopt;
    }
    const double clamped = std::min(*number, kLongest);
    return SmilLength{isNegative ? -clamped : clamped, isPercent};
}

std::optional<quint32> smilColour(QStringView text)
{
    text = text.trimmed();
    if (text.startsWith(u'#')) {
        return colourOfHex(text.mid(1));
    }
    if (text.startsWith("rgb("_L1, Qt::CaseInsensitive) && text.endsWith(u')')) {
        return colourOfNumbers(text.mid(4).chopped(1));
    }
    return colourOfName(text);
}

Smil readSmil(QByteArrayView bytes)
{
    Smil unread;
    if (bytes.size() > kMostBytes) {
        unread.problem =
            u"the presentation has more than %1 bytes and is not read"_s.arg(kMostBytes);
        return unread;
    }
    const QString text = textOfSmil(bytes);
    unread.problem = guard(text);
    return unread.problem.isEmpty() ? Reader(text).read() : unread;
}

} // namespace wmsg::cli
