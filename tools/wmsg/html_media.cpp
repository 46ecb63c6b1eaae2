// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_media.h"

#include "tools/wmsg/decoded_file.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct Known {
    QLatin1String name;
    MediumKind kind;
    QLatin1String type;
};

constexpr Known kKnown[] = {
    {"image/png"_L1, MediumKind::Picture, "image/png"_L1},
    {"image/x-png"_L1, MediumKind::Picture, "image/png"_L1},
    {"image/jpeg"_L1, MediumKind::Picture, "image/jpeg"_L1},
    {"image/jpg"_L1, MediumKind::Picture, "image/jpeg"_L1},
    {"image/pjpeg"_L1, MediumKind::Picture, "image/jpeg"_L1},
    {"image/gif"_L1, MediumKind::Picture, "image/gif"_L1},
    {"image/webp"_L1, MediumKind::Picture, "image/webp"_L1},
    {"image/bmp"_L1, MediumKind::Picture, "image/bmp"_L1},
    {"image/x-bmp"_L1, MediumKind::Picture, "image/bmp"_L1},
    {"image/x-ms-bmp"_L1, MediumKind::Picture, "image/bmp"_L1},
    {kWbmp, MediumKind::Picture, kWbmp},
    {"audio/mpeg"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/mp3"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/mpg"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/mpeg3"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/x-mp3"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/x-mpeg"_L1, MediumKind::Sound, "audio/mpeg"_L1},
    {"audio/mp4"_L1, MediumKind::Sound, "audio/mp4"_L1},
    {"audio/m4a"_L1, MediumKind::Sound, "audio/mp4"_L1},
    {"audio/x-m4a"_L1, MediumKind::Sound, "audio/mp4"_L1},
    {"audio/3gpp"_L1, MediumKind::Sound, "audio/3gpp"_L1},
    {"audio/3gpp2"_L1, MediumKind::Sound, "audio/3gpp2"_L1},
    {"audio/aac"_L1, MediumKind::Sound, "audio/aac"_L1},
    {"audio/x-aac"_L1, MediumKind::Sound, "audio/aac"_L1},
    {"audio/amr"_L1, MediumKind::Sound, "audio/amr"_L1},
    {"audio/x-amr"_L1, MediumKind::Sound, "audio/amr"_L1},
    {"audio/amr-wb"_L1, MediumKind::Sound, "audio/amr-wb"_L1},
    {"audio/ogg"_L1, MediumKind::Sound, "audio/ogg"_L1},
    {"application/ogg"_L1, MediumKind::Sound, "audio/ogg"_L1},
    {"audio/wav"_L1, MediumKind::Sound, "audio/wav"_L1},
    {"audio/wave"_L1, MediumKind::Sound, "audio/wav"_L1},
    {"audio/x-wav"_L1, MediumKind::Sound, "audio/wav"_L1},
    {"audio/vnd.wave"_L1, MediumKind::Sound, "audio/wav"_L1},
    {"audio/flac"_L1, MediumKind::Sound, "audio/flac"_L1},
    {"audio/x-flac"_L1, MediumKind::Sound, "audio/flac"_L1},
    {"audio/webm"_L1, MediumKind::Sound, "audio/webm"_L1},
    {"video/mp4"_L1, MediumKind::Film, "video/mp4"_L1},
    {"video/x-m4v"_L1, MediumKind::Film, "video/mp4"_L1},
    {"video/3gpp"_L1, MediumKind::Film, "video/3gpp"_L1},
    {"video/3gp"_L1, MediumKind::Film, "video/3gpp"_L1},
    {"video/3gpp2"_L1, MediumKind::Film, "video/3gpp2"_L1},
    {"video/webm"_L1, MediumKind::Film, "video/webm"_L1},
    {"video/ogg"_L1, MediumKind::Film, "video/ogg"_L1},
    {"video/mpeg"_L1, MediumKind::Film, "video/mpeg"_L1},
    {"video/quicktime"_L1, MediumKind::Film, "video/quicktime"_L1},
    {"image/svg+xml"_L1, MediumKind::Text, QLatin1String()},
    {"application/xhtml+xml"_L1, MediumKind::Text, QLatin1String()},
    {"application/vnd.wap.xhtml+xml"_L1, MediumKind::Text, QLatin1String()},
    {"application/xml"_L1, MediumKind::Text, QLatin1String()},
    {"application/json"_L1, MediumKind::Text, QLatin1String()},
    {"application/smil+xml"_L1, MediumKind::Text, QLatin1String()},
};

std::optional<HtmlMedium> byType(const QString &type)
{
    const auto *found = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known &known) {
        return type.compare(known.name, Qt::CaseInsensitive) == 0;
    });
    return found == std::end(kKnown) ? std::nullopt
                                     : std::optional<HtmlMedium>({found->kind, found->type});
}

bool saysNothing(const QString &type)
{
    return type.isEmpty() || type.contains(u'*')
        || type.compare("application/octet-stream"_L1, Qt::CaseInsensitive) == 0;
}

HtmlMedium byContent(QByteArrayView bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1A\n")) {
        return {MediumKind::Picture, "image/png"_L1};
    }
    if (bytes.startsWith("\xFF\xD8\xFF")) {
        return {MediumKind::Picture, "image/jpeg"_L1};
    }
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a")) {
        return {MediumKind::Picture, "image/gif"_L1};
    }
    if (bytes.size() > 12 && bytes.startsWith("RIFF") && bytes.sliced(8, 4) == "WEBP") {
        return {MediumKind::Picture, "image/webp"_L1};
    }
    return {};
}

// A number in groups of seven bits; the view loses it.
std::optional<quint32> takeNumber(QByteArrayView &bytes)
{
    constexpr int kMostGroups = 3; // more than any bitmap needs
    quint32 value = 0;
    for (int group = 0; group < kMostGroups && !bytes.isEmpty(); ++group) {
        const auto byte = static_cast<quint8>(bytes.front());
        bytes = bytes.sliced(1);
        value = value << 7 | (byte & 0x7FU);
        if ((byte & 0x80) == 0) {
            return value;
        }
    }
    return std::nullopt;
}

template <typename Number> void append(QByteArray &bytes, Number value)
{
    value = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

// One bit for each pixel; rows from the top, which a negative height says.
QByteArray bmpHeader(quint32 width, quint32 height, quint32 imageSize)
{
    constexpr quint32 kHeaderSize = 62;
    QByteArray bmp = "BM";
    append(bmp, kHeaderSize + imageSize);
    append(bmp, quint32(0));
    append(bmp, kHeaderSize);
    append(bmp, quint32(40));
    append(bmp, static_cast<qint32>(width));
    append(bmp, -static_cast<qint32>(height));
    append(bmp, quint16(1)); // planes
    append(bmp, quint16(1)); // bits
    append(bmp, quint32(0)); // not packed
    append(bmp, imageSize);
    bmp.append(16, '\0');
    append(bmp, quint32(0x000000));
    append(bmp, quint32(0xFFFFFF));
    return bmp;
}

} // namespace

HtmlMedium htmlMedium(const WMMSMultipart &part)
{
    const QString type = part.getContentType().getMimeType();
    if (const auto known = byType(type)) {
        return *known;
    }
    if (isText(part)) {
        return {MediumKind::Text, {}};
    }
    return saysNothing(type) ? byContent(part.getData().view()) : HtmlMedium();
}

QByteArray bmpOfWbmp(QByteArrayView wbmp)
{
    constexpr quint32 kLargest = 8192;
    if (wbmp.size() < 4 || wbmp[0] != 0 || wbmp[1] != 0) {
        return {};
    }
    wbmp = wbmp.sliced(2);
    const auto width = takeNumber(wbmp);
    const auto height = takeNumber(wbmp);
    if (!width || !height || *width == 0 || *height == 0 || *width > kLargest
        || *height > kLargest) {
        return {};
    }
    const qsizetype row = (*width + 7) / 8;
    const qsizetype paddedRow = (row + 3) / 4 * 4;
    if (wbmp.size() < row * *height) {
        return {};
    }
    QByteArray bmp = bmpHeader(*width, *height, static_cast<quint32>(paddedRow * *height));
    for (quint32 y = 0; y < *height; ++y) {
        bmp.append(wbmp.sliced(row * y, row).data(), row).append(paddedRow - row, '\0');
    }
    return bmp;
}

} // namespace wmsg::cli
