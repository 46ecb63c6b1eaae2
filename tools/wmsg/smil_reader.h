// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

/// The presentation of a message as a phone reads it: a layout of regions, and slides one after
/// another that show media in them.
namespace wmsg::cli {

/// A place or an extent, in pixels or in hundredths of what surrounds it.
struct SmilLength {
    double number = 0;
    bool isPercent = false;
};

/// How a medium is brought to the size of its region.
enum class SmilFit { Hidden, Fill, Meet, Scroll, Slice };

struct SmilRegion {
    QString id;
    std::optional<SmilLength> left, top, right, bottom, width, height;
    std::optional<quint32> background; ///< 0xRRGGBB.
    SmilFit fit = SmilFit::Meet;
    int layer = 0; ///< A higher one covers a lower one.
};

/// Times are in milliseconds; absent ones are not told, or without end.
struct SmilMedium {
    QString element; ///< "img", "text", "audio", ... in lower case.
    QString source;
    QString region;
    QString alternative; ///< What to show where the medium cannot be.
    std::optional<qint64> begin, end, duration;
};

struct SmilSlide {
    std::optional<qint64> duration; ///< Its own, or when the last of its media ends.
    QList<SmilMedium> media;
};

struct Smil {
    std::optional<SmilLength> width, height; ///< Of the whole screen.
    std::optional<quint32> background;
    QList<SmilRegion> regions;
    QList<SmilSlide> slides;
    QStringList sources; ///< Every src, also of what is no medium.
    /// Why the presentation could not be read to its end, as a sentence without a stop; else empty.
    QString problem;
};

/// Reads a presentation leniently: names in any case, a missing layout, numbers that are none.
/// Whatever the bytes are, it takes time and memory in proportion to them: what is too large,
/// nested too deeply or declares entities of its own is told as a problem. What was read before a
/// problem is there.
[[nodiscard]] Smil readSmil(QByteArrayView bytes);

/// A time as "5s", "500ms", "2min", "1h", "00:01:05.5" or a number of seconds, in milliseconds and
/// at most a day; nothing for any other text.
[[nodiscard]] std::optional<qint64> smilTime(QStringView text);

/// A length as "120", "120px" or "33%"; nothing for any other text.
[[nodiscard]] std::optional<SmilLength> smilLength(QStringView text);

/// A colour as "#F00", "#FF0000", "rgb(255, 0, 0)" or one of the 16 names; nothing for any other
/// text.
[[nodiscard]] std::optional<quint32> smilColour(QStringView text);

} // namespace wmsg::cli
