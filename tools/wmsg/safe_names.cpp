// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/safe_names.h"

#include "tools/wmsg/text_view.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kLongestExtension = 16;
constexpr qsizetype kLongestStem = 100; // bytes in UTF-8, with room for a number within 255
constexpr qsizetype kLongestPartStem = 32;

struct SplitName {
    QString stem;
    QString extension; ///< With its dot; empty without one.
};

SplitName split(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    const qsizetype length = name.size() - dot;
    const bool hasExtension = dot >= 0 && length >= 2 && length <= kLongestExtension;
    return hasExtension ? SplitName{name.left(dot), name.mid(dot)} : SplitName{name, QString()};
}

QString withoutDirectories(const QString &name)
{
    const qsizetype cut = std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\'));
    return name.mid(cut + 1);
}

// What printable() would escape, and what shells and file systems give a meaning.
QString withoutSpecialCharacters(const QString &name)
{
    static const QString kSpecial = u":*?\"<>|$`'&;!"_s;
    QString clean;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const bool isPair =
            name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate();
        const QString character = name.mid(i, isPair ? 2 : 1);
        const bool isSpecial = printable(character) != character || kSpecial.contains(name[i]);
        clean += isSpecial ? u"_"_s : character;
        i += isPair ? 1 : 0;
    }
    return clean;
}

QString withoutHiddenEnds(QString stem)
{
    static const QString kBadStart = u".-~ #"_s;
    static const QString kBadEnd = u". "_s;
    while (!stem.isEmpty() && kBadStart.contains(stem.front())) {
        stem.remove(0, 1);
    }
    while (!stem.isEmpty() && kBadEnd.contains(stem.back())) {
        stem.chop(1);
    }
    return stem;
}

bool isReserved(const QString &stem)
{
    static constexpr std::array kReserved = {"con"_L1, "prn"_L1, "aux"_L1, "nul"_L1};
    const QString name = stem.section(u'.', 0, 0).toLower();
    const bool isPort = name.size() == 4 && name.back().isDigit()
        && (name.startsWith("com"_L1) || name.startsWith("lpt"_L1));
    return isPort || std::any_of(kReserved.begin(), kReserved.end(), [&](QLatin1String reserved) {
               return name == reserved;
           });
}

QString cutToBytes(QString stem, qsizetype limit)
{
    while (stem.toUtf8().size() > limit) {
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    }
    return stem;
}

QString toAscii(const QString &name)
{
    QString ascii;
    const QString decomposed = name.normalized(QString::NormalizationForm_KD);
    for (const QChar c : decomposed) {
        const bool isPlain = c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'.' || c == u'-');
        if (isPlain) {
            ascii += c;
        } else if (!c.isMark()) {
            ascii += u'_';
        }
    }
    return ascii;
}

QString assembled(const QString &clean, const QString &fallback, qsizetype limit)
{
    SplitName name = split(clean);
    name.stem = withoutHiddenEnds(cutToBytes(withoutHiddenEnds(name.stem), limit));
    if (name.stem.isEmpty()) {
        name.stem = fallback;
    }
    if (isReserved(name.stem)) {
        name.stem.prepend(u'_');
    }
    return withoutHiddenEnds(name.stem + name.extension);
}

} // namespace

QString safeFileName(const QString &name, const QString &fallback)
{
    // Cut early: nothing below needs more than the ends of a name.
    const QString bounded = name.size() > 4096 ? name.left(2048) + name.right(2048) : name;
    return assembled(withoutSpecialCharacters(withoutDirectories(bounded)), fallback, kLongestStem);
}

QString safePartName(const QString &name, const QString &fallback)
{
    return assembled(toAscii(safeFileName(name, fallback)), fallback, kLongestPartStem);
}

QString UniqueNames::take(const QString &name)
{
    const SplitName parts = split(name);
    QString unique = name;
    for (int number = 2; m_taken.contains(unique.toCaseFolded()); ++number) {
        unique = u"%1-%2%3"_s.arg(parts.stem).arg(number).arg(parts.extension);
    }
    m_taken.insert(unique.toCaseFolded());
    return unique;
}

} // namespace wmsg::cli
