// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/other_fields.h"

#include "services/intake/media_type.h"
#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"
#include "tools/wmsg/wire_reader.h"

#include <QtCore/QDateTime>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

using intake::kHighBit;
using intake::kLengthQuote;

enum class Shape {
    Any, // by the first byte alone
    YesNo,
    Number,
    Size,
    Text,
    Time, // length token number
    CountedText, // length number text
    CountedDate, // length number date
    FlagText, // length token text
};

struct FieldShape {
    int id;
    Shape shape;
};
// A field that is not here has a code or is told by its first byte.
constexpr FieldShape kShapes[] = {
    {0x1A, Shape::Text}, // Retrieve-Text
    {0x1D, Shape::Time}, // Reply-Charging-Deadline
    {0x1E, Shape::Text}, // Reply-Charging-ID
    {0x1F, Shape::Size}, // Reply-Charging-Size
    {0x20, Shape::CountedText}, // Previously-Sent-By
    {0x21, Shape::CountedDate}, // Previously-Sent-Date
    {0x22, Shape::YesNo}, // Store
    {0x24, Shape::FlagText}, // MM-Flags
    {0x26, Shape::Text}, // Store-Status-Text
    {0x27, Shape::YesNo}, // Stored
    {0x29, Shape::YesNo}, // Totals
    {0x2B, Shape::YesNo}, // Quotas
    {0x2D, Shape::Number}, // Message-Count
    {0x2F, Shape::Number}, // Start
    {0x31, Shape::YesNo}, // Distribution-Indicator
    {0x33, Shape::Number}, // Limit
    {0x35, Shape::Text}, // Recommended-Retrieval-Mode-Text
    {0x36, Shape::Text}, // Status-Text
    {0x37, Shape::Text}, // Applic-ID
    {0x38, Shape::Text}, // Reply-Applic-ID
    {0x39, Shape::Text}, // Aux-Applic-Info
    {0x3B, Shape::YesNo}, // DRM-Content
    {0x3C, Shape::YesNo}, // Adaptation-Allowed
    {0x3D, Shape::Text}, // Replace-ID
    {0x3E, Shape::Text}, // Cancel-ID
};

// From 0 on.
constexpr std::array kPartHeaders = {
    "Accept",
    "Accept-Charset",
    "Accept-Encoding",
    "Accept-Language",
    "Accept-Ranges",
    "Age",
    "Allow",
    "Authorization",
    "Cache-Control",
    "Connection",
    "Content-Base",
    "Content-Encoding",
    "Content-Language",
    "Content-Length",
    "Content-Location",
    "Content-MD5",
    "Content-Range",
    "Content-Type",
    "Date",
    "ETag",
    "Expires",
    "From",
    "Host",
    "If-Modified-Since",
    "If-Match",
    "If-None-Match",
    "If-Range",
    "If-Unmodified-Since",
    "Location",
    "Last-Modified",
    "Max-Forwards",
    "Pragma",
    "Proxy-Authenticate",
    "Proxy-Authorization",
    "Public",
    "Range",
    "Referer",
    "Retry-After",
    "Server",
    "Transfer-Encoding",
    "Upgrade",
    "User-Agent",
    "Vary",
    "Via",
    "Warning",
    "WWW-Authenticate",
    "Content-Disposition",
    "X-Wap-Application-Id",
    "X-Wap-Content-URI",
    "X-Wap-Initiator-URI",
    "Accept-Application",
    "Bearer-Indication",
    "Push-Flag",
    "Profile",
    "Profile-Diff",
    "Profile-Warning",
    "Expect",
    "TE",
    "Trailer",
    "Accept-Charset",
    "Accept-Encoding",
    "Cache-Control",
    "Content-Range",
    "X-Wap-Tod",
    "Content-ID",
    "Set-Cookie",
    "Cookie",
    "Encoding-Version",
    "Profile-Warning",
    "Content-Disposition",
    "X-WAP-Security",
    "Cache-Control",
};

int firstOf(QByteArrayView value)
{
    return value.isEmpty() ? -1 : static_cast<quint8>(value.front());
}

bool beginsText(QByteArrayView value)
{
    const int first = firstOf(value);
    return first > kLengthQuote && first < kHighBit;
}

QString bytesInWords(QByteArrayView value)
{
    constexpr qsizetype kShown = 16;
    const QByteArray hex = value.first(std::min(value.size(), kShown)).toByteArray().toHex(' ');
    const QString shown = QString::fromLatin1(hex.toUpper());
    return value.size() > kShown ? shown + u" … (%1)"_s.arg(counted(value.size(), "byte"_L1))
                                 : shown;
}

QString textInWords(QByteArrayView value)
{
    WSP_Stream stream = intake::streamOver(value);
    const auto text = intake::readEncodedText(stream);
    return text ? quoted(text->string()) : bytesInWords(value);
}

QString dateOf(quint32 seconds)
{
    return dateInWords(QDateTime::fromSecsSinceEpoch(seconds));
}

/// What stands behind the length of a value; nothing when it has none.
QByteArrayView insideOf(QByteArrayView value)
{
    WSP_Stream stream = intake::streamOver(value);
    quint32 length = 0;
    const bool hasLength = !value.isEmpty() && firstOf(value) <= kLengthQuote
        && stream.readValueLength(length) && length <= quint32(stream.remaining());
    return hasLength ? value.sliced(stream.pos, length) : QByteArrayView();
}

QString timeInWords(QByteArrayView value)
{
    const QByteArrayView inside = insideOf(value);
    const int token = firstOf(inside);
    WSP_Stream stream = intake::streamOver(inside);
    stream.pos = inside.isEmpty() ? 0 : 1;
    const auto number = intake::readNumber(stream);
    if (!number || (token != kHighBit && token != kHighBit + 1)) {
        return bytesInWords(value);
    }
    return token == kHighBit ? dateOf(*number) : durationInWords(*number);
}

/// A number, and a text or a date behind it.
QString countedInWords(QByteArrayView value, Shape shape)
{
    const QByteArrayView inside = insideOf(value);
    WSP_Stream stream = intake::streamOver(inside);
    const auto count = intake::readNumber(stream);
    if (!count) {
        return bytesInWords(value);
    }
    if (shape == Shape::CountedText) {
        return u"%1: %2"_s.arg(*count).arg(textInWords(inside.sliced(stream.pos)));
    }
    const auto date = intake::readNumber(stream);
    return date ? u"%1: %2"_s.arg(*count).arg(dateOf(*date)) : bytesInWords(value);
}

QString flagInWords(QByteArrayView value)
{
    constexpr std::array kTokens = {"add", "remove", "filter"};
    const QByteArrayView inside = insideOf(value);
    const int token = firstOf(inside) - kHighBit;
    if (token < 0 || token >= static_cast<int>(kTokens.size())) {
        return bytesInWords(value);
    }
    return QLatin1String(kTokens[static_cast<size_t>(token)]) + u' '
        + textInWords(inside.sliced(1));
}

/// A disposition, with the name of a file.
QString dispositionInWords(QByteArrayView value)
{
    constexpr std::array kTokens = {"form data", "attachment", "inline"};
    const QByteArrayView inside = insideOf(value);
    const int token = firstOf(inside) - kHighBit;
    QString words = beginsText(inside) ? textInWords(inside.first(inside.indexOf('\0') + 1))
        : token >= 0 && token < static_cast<int>(kTokens.size())
        ? QString::fromLatin1(kTokens[static_cast<size_t>(token)])
        : anyValueInWords(value);
    WSP_Stream stream = intake::streamOver(value);
    const intake::MediaType disposition = intake::readMediaType(stream);
    const QByteArray &file =
        disposition.fileName.isEmpty() ? disposition.name : disposition.fileName;
    return file.isEmpty() ? words : words + u", file name "_s + quoted(QString::fromUtf8(file));
}

QString numberInWords(QByteArrayView value, Shape shape)
{
    WSP_Stream stream = intake::streamOver(value);
    const auto number = intake::readNumber(stream);
    if (!number) {
        return anyValueInWords(value);
    }
    return shape == Shape::Size ? sizeInWords(*number) : QString::number(*number);
}

QString codeOrAny(int id, QByteArrayView value)
{
    const auto first = static_cast<quint8>(firstOf(value));
    const bool isCode = value.size() == 1 && codeWords(id, first);
    return isCode ? codeInWords(id, first) : anyValueInWords(value);
}

} // namespace

QString anyValueInWords(QByteArrayView value)
{
    if (value.isEmpty()) {
        return u"nothing"_s;
    }
    if (beginsText(value)) {
        return textInWords(value);
    }
    if (value.size() == 1) {
        return QString::number(firstOf(value) & 0x7F);
    }
    constexpr int kLongestNumber = 4;
    const bool isNumber = firstOf(value) <= kLongestNumber && value.size() == firstOf(value) + 1;
    return isNumber ? numberInWords(value, Shape::Number) : bytesInWords(value);
}

QString valueInWords(int id, QByteArrayView value)
{
    const auto *found = std::find_if(std::begin(kShapes), std::end(kShapes),
                                     [id](const FieldShape &row) { return row.id == id; });
    const int first = firstOf(value);
    switch (found == std::end(kShapes) ? Shape::Any : found->shape) {
    case Shape::YesNo:
        return value.size() != 1 || first < kHighBit || first > kHighBit + 1
            ? anyValueInWords(value)
            : first == kHighBit ? u"yes"_s
                                : u"no"_s;
    case Shape::Number:
    case Shape::Size:
        return numberInWords(value, found->shape);
    case Shape::Text:
        return textInWords(value);
    case Shape::Time:
        return timeInWords(value);
    case Shape::CountedText:
    case Shape::CountedDate:
        return countedInWords(value, found->shape);
    case Shape::FlagText:
        return flagInWords(value);
    case Shape::Any:
        break;
    }
    return codeOrAny(id, value);
}

QString partHeaderName(int number)
{
    const bool isKnown = number >= 0 && number < static_cast<int>(kPartHeaders.size());
    return isKnown ? QString::fromLatin1(kPartHeaders[static_cast<size_t>(number)])
                   : u"header %1"_s.arg(number);
}

QString partHeaderInWords(int number, QByteArrayView value)
{
    switch (number) {
    case 0x2E:
    case 0x45:
        return dispositionInWords(value);
    case 0x2F:
        return applicationInWords(value);
    case 0x40: // Content-ID, with one quote in front
        return anyValueInWords(value.startsWith('"') ? value.sliced(1) : value);
    default:
        return anyValueInWords(value);
    }
}

QString applicationInWords(QByteArrayView value)
{
    constexpr int kMms = 4;
    constexpr int kBrowser = 2;
    WSP_Stream stream = intake::streamOver(value);
    const auto number = intake::readNumber(stream);
    if (!number) {
        return anyValueInWords(value);
    }
    return *number == kMms    ? u"MMS (4)"_s
        : *number == kBrowser ? u"browser (2)"_s
                              : QString::number(*number);
}

} // namespace wmsg::cli
