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

} // namespace

void HexView::print(const ByteRange &range) const
{
    const qint64 end = qint64(range.offset) + range.length;
    const bool isFolded = range.isData && m_detail == Detail::Short && range.length > kFoldAbove;
    const qint64 shownEnd = isFolded ? range.offset + kShownOfFolded : end;
    QString meaning = range.field + u": "_s + range.meaning;
    if (range.isData) {
        meaning += u", "_s + counted(range.length, "byte"_L1);
    }
    for (qint64 from = range.offset; from < shownEnd; from += kLine) {
        printLine(from, std::min(from + kLine, shownEnd), meaning);
        meaning.clear();
    }
    if (isFolded) {
        say(u"%1  ... %2 more bytes, up to %3\n"_s.arg(offsetText(shownEnd))
                .arg(end - shownEnd)
                .arg(offsetText(end - 1)));
    }
}

void HexView::printLine(qint64 from, qint64 to, const QString &meaning) const
{
    constexpr int kHexWidth = 3 * kLine - 1;
    const QByteArray hex = m_bytes.sliced(from, to - from).toByteArray().toHex(' ').toUpper();
    QString line = offsetText(from) + u"  "_s + QString::fromLatin1(hex);
    if (!meaning.isEmpty()) {
        line = line.leftJustified(10 + kHexWidth) + u"  "_s + harmless(meaning);
    }
    say(line + u'\n');
}

} // namespace wmsg::cli
