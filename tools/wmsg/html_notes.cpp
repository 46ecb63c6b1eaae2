// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_notes.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"

#include <mms/model/result_codes.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kFew = 3;
constexpr qsizetype kMostNotes = 100;

} // namespace

void HtmlNotes::write()
{
    writeFailure();
    if (m_file.intake) {
        writeIntake(*m_file.intake);
    }
    writeWarnings();
}

void HtmlNotes::writeFailure()
{
    if (m_file.result != MMS_DECODE_OK || (m_file.intake && m_file.intake->problem)) {
        m_page.markup("<p class=\"card bad\">"_L1).name(failureInWords(m_file));
        m_page.markup("</p>\n"_L1);
    }
}

void HtmlNotes::writeIntake(const Explanation &intake)
{
    if (!intake.notice.isEmpty()) {
        m_page.markup("<p class=\"card warn\">"_L1).name(intake.notice).markup("</p>\n"_L1);
    }
    QList<Note> repairs = notesOf(intake.steps);
    if (intake.codecResult != m_file.result) {
        const auto &why = intake.codecFailure;
        repairs.prepend({u"the codec alone: result %1 (%2)"_s.arg(intake.codecResult)
                             .arg(resultInWords(intake.codecResult)),
                         why ? u"%1, offset %2"_s.arg(why->field).arg(why->offset) : QString()});
    }
    writeNotes(counted(intake.steps.size(), "repair"_L1), repairs, 0, false);
    writeNotes(counted(intake.lost.size(), "thing"_L1) + u" lost"_s, notesOf(intake.lost), 0, true);
}

void HtmlNotes::writeWarnings()
{
    QList<Note> notes;
    for (const Finding &warning : m_file.walk.warnings()) {
        notes.append({warning.message, u"%1, offset %2"_s.arg(warning.field).arg(warning.offset)});
    }
    const qint64 untold = m_file.walk.untoldWarnings();
    writeNotes(counted(notes.size() + untold, "warning"_L1), notes, untold, notes.size() <= kFew);
}

QList<HtmlNotes::Note> HtmlNotes::notesOf(const QList<intake::Remark> &remarks)
{
    QList<Note> notes;
    for (const intake::Remark &remark : remarks) {
        notes.append({remark.what, u"offset %1"_s.arg(remark.offset)});
    }
    return notes;
}

void HtmlNotes::writeNotes(const QString &title, const QList<Note> &notes, qint64 untold,
                           bool isOpen)
{
    if (notes.isEmpty()) {
        return;
    }
    m_page.markup(isOpen ? "<details class=\"card warn\" open>"_L1
                         : "<details class=\"card warn\">"_L1);
    m_page.markup("<summary>"_L1).line(title).markup("</summary>\n<ul>\n"_L1);
    const qsizetype shown = std::min(notes.size(), kMostNotes);
    for (qsizetype n = 0; n < shown; ++n) {
        m_page.markup("<li>"_L1).name(notes[n].text).markup(" <span class=\"quiet\">"_L1);
        m_page.line(notes[n].place).markup("</span></li>\n"_L1);
    }
    m_page.markup("</ul>\n"_L1);
    untold += notes.size() - shown;
    if (untold > 0) {
        m_page.markup("<p>and "_L1).number(untold).markup(" more</p>\n"_L1);
    }
    m_page.markup("</details>\n"_L1);
}

} // namespace wmsg::cli
