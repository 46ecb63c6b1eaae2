// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/hex_view.h"

#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qint64 kLine = 16;
constexpr qint64 kFoldAbove = 64;
constexpr qint64 kShownOfFolded = 32;

QString offsetText(qint64 offset)
{
    return QString::number(offset, 16).toUpper().rightJustified(8, u'0');
}

/// The fields of a header have names of many kinds; everything else has one that tells.
Tone toneOf(const ByteRange &range)
{
    const QString &field = range.field;
    if (field == "rest"_L1 || range.meaning == "cannot be read"_L1
        || range.meaning.contains("cut off"_L1)) {
        return Tone::Trouble;
    }
    if (range.isData) {
        return Tone::Data;
    }
    if (field == "push"_L1) {
        return Tone::Push;
    }
    if (field == "short message"_L1 || field == "service centre"_L1
        || field == "user data header"_L1) {
        return Tone::ShortMessage;
    }
    if (field == "body"_L1 || field.startsWith("part "_L1)) {
        return Tone::Part;
    }
    return range.meaning == "field id"_L1 ? Tone::FieldId : Tone::Header;
}

} // namespace

void HexView::print(const ByteRange &range) const
{
    const qint64 end = qint64(range.offset) + range.length;
    const bool isFolded = range.isData && m_detail == Detail::Short && range.length > kFoldAbove;
    const qint64 shownEnd = isFolded ? range.offset + kShownOfFolded : end;
    const Tone tone = m_hasColours ? toneOf(range) : Tone::Plain;
    QString meaning = range.field + u": "_s + range.meaning;
    if (range.isData) {
        meaning += u", "_s + counted(range.length, "byte"_L1);
    }
    for (qint64 from = range.offset; from < shownEnd; from += kLine) {
        printLine(from, std::min(from + kLine, shownEnd), meaning, tone);
        meaning.clear();
    }
    if (isFolded) {
        say(u"%1  ... %2 more bytes, up to %3\n"_s.arg(offsetText(shownEnd))
                .arg(end - shownEnd)
                .arg(offsetText(end - 1)));
    }
}

void HexView::printLine(qint64 from, qint64 to, const QString &meaning, Tone tone) const
{
    constexpr qsizetype kHexWidth = 3 * kLine - 1;
    const QByteArray hex = m_bytes.sliced(from, to - from).toByteArray().toHex(' ').toUpper();
    QString line = offsetText(from) + u"  "_s + coloured(QString::fromLatin1(hex), tone);
    if (!meaning.isEmpty()) {
        line += QString(kHexWidth - hex.size() + 2, u' ') + coloured(harmless(meaning), tone);
    }
    say(line + u'\n');
}

} // namespace wmsg::cli
