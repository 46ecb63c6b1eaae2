// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_card.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/text_view.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kShownEntries = 50;
constexpr qsizetype kShownTitle = 200;

// The words for a code, without its number when it has some.
QString wordsOf(int fieldId, quint8 code)
{
    const CodeWords *words = codeWords(fieldId, code);
    return words ? QString::fromLatin1(words->words) : codeInWords(fieldId, code);
}

} // namespace

QString HtmlCard::title() const
{
    const bool isNamed = has(MMS_FIELD_SUBJECT) && !m_header.subject.trimmed().isEmpty();
    const QString title = isNamed ? m_header.subject : m_file.name.section(u'/', -1);
    return title.left(kShownTitle);
}

void HtmlCard::writeHeader(qsizetype parts, qsizetype slides)
{
    m_page.markup("<header class=\"card\">\n<div class=\"head\">\n"_L1);
    writeFace();
    m_page.markup("<h1>"_L1).name(title()).markup("</h1>\n<div class=\"quiet\">"_L1);
    if (has(MMS_FIELD_DATE)) {
        m_page.line(dateInWords(m_header.msgDate));
    } else {
        m_page.line(kindInWords(m_file));
    }
    m_page.markup("</div>\n</div>\n"_L1);
    writeAddresses();
    writeChips(parts, slides);
    m_page.markup("</header>\n"_L1);
}

// The first letter or digit of who sent it.
void HtmlCard::writeFace()
{
    const WMFMEntry &from = m_header.from;
    const QString name = !has(MMS_FIELD_FROM) || !from.isValid() ? QString()
        : from.getContactName().trimmed().isEmpty()              ? from.getEntryVal()
                                                                 : from.getContactName();
    const auto *first =
        std::find_if(name.cbegin(), name.cend(), [](QChar c) { return c.isLetterOrNumber(); });
    m_page.markup("<div class=\"face\" aria-hidden=\"true\">"_L1);
    m_page.line(first == name.cend() ? u"✉"_s : QString(first->toUpper()));
    m_page.markup("</div>\n"_L1);
}

void HtmlCard::writeAddresses()
{
    constexpr int kAddresses[] = {MMS_FIELD_FROM, MMS_FIELD_TO, MMS_FIELD_CC, MMS_FIELD_BCC};
    if (std::none_of(std::begin(kAddresses), std::end(kAddresses),
                     [this](int id) { return has(id); })) {
        return;
    }
    m_page.markup("<dl>\n"_L1);
    if (has(MMS_FIELD_FROM)) {
        m_page.markup("<dt>From</dt><dd>"_L1);
        if (m_header.from.isValid()) {
            writeEntry(m_header.from);
        } else {
            m_page.markup("<span class=\"quiet\">the network inserts the address</span>"_L1);
        }
        m_page.markup("</dd>\n"_L1);
    }
    writeEntries("To"_L1, has(MMS_FIELD_TO) ? m_header.to : QValueList<WMFMEntry>());
    writeEntries("Cc"_L1, has(MMS_FIELD_CC) ? m_header.cc : QValueList<WMFMEntry>());
    writeEntries("Bcc"_L1, has(MMS_FIELD_BCC) ? m_header.bcc : QValueList<WMFMEntry>());
    m_page.markup("</dl>\n"_L1);
}

void HtmlCard::writeEntry(const WMFMEntry &entry)
{
    const QString name = entry.getContactName().trimmed();
    if (!name.isEmpty()) {
        m_page.name(name.left(kShownTitle)).markup(" "_L1);
    }
    m_page.markup(name.isEmpty() ? "<span>"_L1 : "<span class=\"quiet\">"_L1);
    m_page.name(entry.getEntryVal().left(kShownTitle)).markup("</span>"_L1);
}

void HtmlCard::writeEntries(QLatin1String label, const QValueList<WMFMEntry> &entries)
{
    if (entries.isEmpty()) {
        return;
    }
    m_page.markup("<dt>"_L1).markup(label).markup("</dt><dd>"_L1);
    const qsizetype shown = std::min(entries.size(), kShownEntries);
    for (qsizetype n = 0; n < shown; ++n) {
        m_page.markup(n == 0 ? ""_L1 : "<br>"_L1);
        writeEntry(entries[n]);
    }
    if (shown < entries.size()) {
        m_page.markup("<br>and "_L1).number(entries.size() - shown).markup(" more"_L1);
    }
    m_page.markup("</dd>\n"_L1);
}

void HtmlCard::writeChip(const QString &text, bool isAlarming)
{
    m_page.markup(isAlarming ? "<li class=\"high\">"_L1 : "<li>"_L1).line(text);
    m_page.markup("</li>\n"_L1);
}

void HtmlCard::writeChips(qsizetype parts, qsizetype slides)
{
    constexpr quint8 kHigh = 130;
    m_page.markup("<ul class=\"chips\">\n"_L1);
    writeChip(kindInWords(m_file));
    if (has(MMS_FIELD_MSG_CLASS)) {
        writeChip(wordsOf(MMS_FIELD_MSG_CLASS, m_header.msgClass));
    }
    if (has(MMS_FIELD_PRIORITY)) {
        writeChip(wordsOf(MMS_FIELD_PRIORITY, m_header.priority) + u" priority"_s,
                  m_header.priority == kHigh);
    }
    writeChip(sizeInWords(m_file.bytes.size()));
    if (parts > 0) {
        writeChip(counted(parts, "part"_L1));
    }
    if (slides > 0) {
        writeChip(counted(slides, "slide"_L1));
    }
    m_page.markup("</ul>\n"_L1);
}

void HtmlCard::writeFields()
{
    QList<FieldView> fields =
        headerFields(m_file.message, m_file.walk.failedField(), Detail::Short);
    if (m_file.intake) {
        for (const OtherField &other : m_file.intake->otherFields) {
            fields.append({other.name, {other.value}});
        }
    }
    if (fields.isEmpty()) {
        return;
    }
    m_page.markup("<details class=\"card\"><summary>"_L1);
    m_page.line(counted(fields.size(), "header field"_L1)).markup("</summary>\n<table>\n"_L1);
    for (const FieldView &field : fields) {
        m_page.markup("<tr><td>"_L1).line(field.name).markup("</td><td>"_L1);
        for (qsizetype n = 0; n < field.lines.size(); ++n) {
            m_page.markup(n == 0 ? ""_L1 : "<br>"_L1).name(field.lines[n]);
        }
        m_page.markup("</td></tr>\n"_L1);
    }
    m_page.markup("</table>\n</details>\n"_L1);
}

} // namespace wmsg::cli
