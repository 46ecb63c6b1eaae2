// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_page.h"

#include "tools/wmsg/html_card.h"
#include "tools/wmsg/html_content.h"
#include "tools/wmsg/html_layout.h"
#include "tools/wmsg/html_notes.h"
#include "tools/wmsg/html_slides.h"
#include "tools/wmsg/html_style.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QCryptographicHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kMostThings = 1000;

Smil smilOf(const HtmlContent &content, std::optional<int> presentation)
{
    return presentation ? readSmil(content.part(*presentation).getData().view()) : Smil();
}

/// One page while it is written.
class Page {
public:
    Page(HtmlWriter &page, const DecodedFile &file)
        : m_page(page), m_file(file), m_card(page, file), m_content(file.message),
          m_presentation(m_content.presentation(file.message.header().contentType)),
          m_smil(smilOf(m_content, m_presentation)), m_layout(m_smil)
    {
    }

    void write();

private:
    void writeHead();
    void writeSlides();
    void writePlayButton();
    void writeThings(QLatin1String kind);
    void writeThing(int leaf);
    void writePartTable();
    void writeSource();

    HtmlWriter &m_page;
    const DecodedFile &m_file;
    HtmlCard m_card;
    HtmlContent m_content;
    std::optional<int> m_presentation;
    Smil m_smil;
    HtmlLayout m_layout;
};

void Page::write()
{
    writeHead();
    m_page.markup("<body>\n<main>\n"_L1);
    m_card.writeHeader(m_content.size(), m_smil.slides.size());
    HtmlNotes(m_page, m_file).write();
    if (m_smil.slides.isEmpty()) {
        writeThings("things talk"_L1);
    } else {
        writeSlides();
        writeThings("things"_L1);
    }
    m_card.writeFields();
    writePartTable();
    writeSource();
    m_page.markup("</main>\n</body>\n</html>\n"_L1);
}

// The browser takes no style but the one whose digest is told, whatever else gets into the page.
void Page::writeHead()
{
    const QByteArray style =
        htmlStyle() + m_layout.rules() + playingRules(m_smil, HtmlSlides::countOf(m_smil));
    const QByteArray digest =
        QCryptographicHash::hash(style, QCryptographicHash::Sha256).toBase64();
    m_page.markup("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                  "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                  "img-src data:; media-src data:; style-src 'sha256-"_L1);
    m_page.made(digest).markup(
        "'; base-uri 'none'; form-action 'none'\">\n"
        "<meta name=\"referrer\" content=\"no-referrer\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"generator\" content=\"wmsg\">\n<link rel=\"icon\" href=\"data:,\">\n<title>"_L1);
    m_page.attribute(m_card.title()).markup("</title>\n<style>"_L1).made(style);
    m_page.markup("</style>\n</head>\n"_L1);
}

void Page::writeSlides()
{
    if (HtmlSlides::countOf(m_smil) > 1) {
        writePlayButton();
    }
    HtmlSlides(m_smil, m_layout, m_content).write(m_page);
}

void Page::writePlayButton()
{
    const qsizetype count = HtmlSlides::countOf(m_smil);
    qint64 time = 0;
    for (qsizetype slide = 0; slide < count; ++slide) {
        time += m_smil.slides[slide].duration.value_or(kSlideTime);
    }
    m_page.markup("<input type=\"checkbox\" id=\"play\"><label class=\"button\" for=\"play\">"
                  "<span class=\"start\">&#9654; Play "_L1);
    m_page.line(counted(count, "slide"_L1)).markup(", "_L1).line(timeInWords(time));
    m_page.markup("</span><span class=\"stop\">&#9632; Show all slides</span></label>\n"_L1);
}

// The parts that nothing above has shown.
void Page::writeThings(QLatin1String kind)
{
    int number = 0;
    for (int leaf = 0; leaf < m_content.size(); ++leaf) {
        if (m_content.isShown(leaf) || leaf == m_presentation) {
            continue;
        }
        if (number == 0) {
            m_page.markup(m_smil.slides.isEmpty() ? ""_L1 : "<h2>On no slide</h2>\n"_L1);
            m_page.markup("<div class=\""_L1).markup(kind).markup("\">\n"_L1);
        }
        if (++number <= kMostThings) {
            writeThing(leaf);
        }
    }
    m_page.markup(number == 0 ? ""_L1 : "</div>\n"_L1);
    if (number > kMostThings) {
        m_page.markup("<p class=\"note\">and "_L1).number(number - kMostThings);
        m_page.markup(" parts more</p>\n"_L1);
    }
}

void Page::writeThing(int leaf)
{
    m_page.markup("<div class=\"thing\">"_L1);
    m_content.writeMedium(m_page, leaf);
    m_page.markup("<div class=\"caption\">"_L1);
    m_content.writeCaption(m_page, leaf);
    m_page.markup("</div></div>\n"_L1);
}

void Page::writePartTable()
{
    if (m_content.size() == 0) {
        return;
    }
    m_page.markup("<details class=\"card\"><summary>"_L1);
    m_page.line(counted(m_content.size(), "part"_L1)).markup("</summary>\n<table>\n"_L1);
    for (int leaf = 0; leaf < std::min(m_content.size(), kMostThings); ++leaf) {
        m_page.markup("<tr><td>"_L1).line(m_content.numberOf(leaf)).markup("</td><td>"_L1);
        m_content.writeCaption(m_page, leaf);
        m_page.markup("</td></tr>\n"_L1);
    }
    m_page.markup("</table>\n</details>\n"_L1);
}

void Page::writeSource()
{
    if (!m_presentation) {
        return;
    }
    m_page.markup("<details class=\"card\"><summary>Presentation</summary>\n"_L1);
    if (!m_smil.problem.isEmpty()) {
        m_page.markup("<p>"_L1).name(m_smil.problem).markup("</p>\n"_L1);
    }
    m_page.markup("<p class=\"source\" dir=\"ltr\">"_L1);
    m_page.block(m_content.part(*m_presentation).getData().view());
    m_page.markup("</p>\n</details>\n"_L1);
}

} // namespace

void writeHtmlPage(HtmlWriter &page, const DecodedFile &file)
{
    Page(page, file).write();
}

QString saveHtmlPage(HtmlFile &file, const DecodedFile &decoded)
{
    QString problem = file.open();
    if (!problem.isEmpty()) {
        return problem;
    }
    HtmlWriter page([&file](QByteArrayView piece) { return file.write(piece); });
    writeHtmlPage(page, decoded);
    return page.isFine() ? file.finish() : u"cannot be written: "_s + systemError();
}

} // namespace wmsg::cli
