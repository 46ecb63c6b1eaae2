// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/smil_reader.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>

#include <optional>

namespace wmsg::cli {

/// The layout of a presentation as rules of a style sheet. Nothing of the message gets into them
/// but numbers within bounds: places and extents become hundredths of the screen, colours six
/// digits.
class HtmlLayout {
public:
    explicit HtmlLayout(const Smil &smil);

    /// The number of a region that can be seen.
    [[nodiscard]] std::optional<int> regionOf(const QString &name) const;
    /// Whether any region can be seen.
    [[nodiscard]] bool isThere() const { return !m_regions.isEmpty(); }
    /// The rules: .screen, .r0 and so on, with the fit of what lies in them.
    [[nodiscard]] const QByteArray &rules() const { return m_rules; }

private:
    void addScreen(const Smil &smil);
    void addRegion(const SmilRegion &region, int number);

    double m_width = 0;
    double m_height = 0;
    QHash<QString, int> m_regions;
    QByteArray m_rules;
};

/// How long a slide is shown when nothing says so.
inline constexpr qint64 kSlideTime = 5000;

/// More slides than that, and more media of a slide, are only counted.
inline constexpr qsizetype kMostSlides = 200;
inline constexpr qsizetype kMostMedia = 50;

/// When a medium is on its slide, in milliseconds; without an end it stays.
struct MediumTime {
    qint64 begin;
    std::optional<qint64> end;
};

/// The time of a medium; nothing when it is there as long as its slide.
[[nodiscard]] std::optional<MediumTime> timeOf(const SmilMedium &medium);

/// The rules that show `count` slides of a presentation (.s0 and so on) one after another while
/// the box #play is checked, and in them the media with times of their own (.t0_0, slide and
/// medium).
[[nodiscard]] QByteArray playingRules(const Smil &smil, qsizetype count);

} // namespace wmsg::cli
