// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/html_content.h"
#include "tools/wmsg/html_layout.h"

namespace wmsg::cli {

/// Writes the slides of a presentation, each as the screen of a phone with what lies in its
/// regions, and below it what has no place on a screen.
class HtmlSlides {
public:
    HtmlSlides(const Smil &smil, const HtmlLayout &layout, HtmlContent &content)
        : m_smil(smil), m_layout(layout), m_content(content)
    {
    }

    void write(HtmlWriter &page);
    /// How many slides are shown.
    [[nodiscard]] static qsizetype countOf(const Smil &smil);

private:
    void writeSlide(HtmlWriter &page, int number);
    void writeScreen(HtmlWriter &page, int number);
    void writeRest(HtmlWriter &page, int number);
    void writeOne(HtmlWriter &page, int number, qsizetype medium, std::optional<int> region);
    void writeMissing(HtmlWriter &page, const SmilMedium &medium);
    void writeList(HtmlWriter &page, const SmilSlide &slide);
    [[nodiscard]] std::optional<int> placeOf(const SmilMedium &medium) const;

    const Smil &m_smil;
    const HtmlLayout &m_layout;
    HtmlContent &m_content;
};

/// "5 s", "2.5 s", "1 min 5 s".
[[nodiscard]] QString timeInWords(qint64 milliseconds);

} // namespace wmsg::cli
