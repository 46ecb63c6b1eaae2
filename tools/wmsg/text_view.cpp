// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/text_view.h"

#include <QtCore/QStringList>

#include <array>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// Marks that change the direction of writing, split lines or cannot be seen at all.
bool isMisleading(char32_t c)
{
    return (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E)
        || (c >= 0x2060 && c <= 0x206F) || c == 0x061C || c == 0xFEFF || c == 0x00AD;
}

QString escaped(char32_t c)
{
    switch (c) {
    case '\n':
        return u"\\n"_s;
    case '\r':
        return u"\\r"_s;
    case '\t':
        return u"\\t"_s;
    case '\\':
        return u"\\\\"_s;
    default:
        const QString digits = QString::number(c, 16).toUpper();
        return c < 0x100 ? u"\\x"_s + digits.rightJustified(2, u'0') : u"\\u{"_s + digits + u'}';
    }
}

bool isHarmless(char32_t c)
{
    return c >= 0x20 && !(c >= 0x7F && c <= 0x9F) && !isMisleading(c) && !QChar::isSurrogate(c)
        && !QChar::isNonCharacter(c);
}

bool isPlain(char32_t c)
{
    return c != '\\' && isHarmless(c);
}

QString escapedUnless(bool (*stays)(char32_t), QStringView text)
{
    QString shown;
    shown.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t c = text[i].unicode();
        const bool isPair =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (isPair) {
            c = QChar::surrogateToUcs4(text[i], text[i + 1]);
        }
        if (stays(c)) {
            shown += text.mid(i, isPair ? 2 : 1);
        } else {
            shown += escaped(c);
        }
        i += isPair ? 1 : 0;
    }
    return shown;
}

} // namespace

QString printable(QStringView text)
{
    return escapedUnless(isPlain, text);
}

QString harmless(QStringView line)
{
    return escapedUnless(isHarmless, line);
}

QString shortened(QStringView text, qsizetype limit)
{
    if (limit <= 0 || text.size() <= limit) {
        return printable(text);
    }
    if (text[limit - 1].isHighSurrogate()) {
        --limit;
    }
    return printable(text.left(limit)) + u"… (+%1 characters)"_s.arg(text.size() - limit);
}

QString sizeInWords(qint64 bytes)
{
    if (bytes < 1024) {
        return counted(bytes, "byte"_L1);
    }
    static constexpr std::array kUnits = {"KiB", "MiB", "GiB", "TiB"};
    double size = double(bytes) / 1024;
    size_t unit = 0;
    for (; size >= 1024 && unit + 1 < kUnits.size(); ++unit) {
        size /= 1024;
    }
    return u"%1 %2 (%3 bytes)"_s.arg(size, 0, 'f', 1).arg(QLatin1String(kUnits[unit])).arg(bytes);
}

QString dateInWords(const QDateTime &date)
{
    if (!date.isValid()) {
        return u"not a date"_s;
    }
    const QDateTime local = date.toLocalTime();
    const int minutes = local.offsetFromUtc() / 60;
    return u"%1 %2%3%4 (%5)"_s.arg(local.toString(u"yyyy-MM-dd HH:mm:ss"_s))
        .arg(QChar(minutes < 0 ? u'-' : u'+'))
        .arg(qAbs(minutes) / 60, 2, 10, QLatin1Char('0'))
        .arg(qAbs(minutes) % 60, 2, 10, QLatin1Char('0'))
        .arg(local.timeZoneAbbreviation());
}

QString durationInWords(qint64 seconds)
{
    struct Unit {
        qint64 seconds;
        QLatin1String name;
    };
    static constexpr std::array kUnits = {Unit{86400, "day"_L1}, Unit{3600, "hour"_L1},
                                          Unit{60, "minute"_L1}, Unit{1, "second"_L1}};
    QStringList words;
    qint64 left = qAbs(seconds);
    for (const Unit &unit : kUnits) {
        if (left >= unit.seconds) {
            words += counted(left / unit.seconds, unit.name);
            left %= unit.seconds;
        }
    }
    const QString text = words.isEmpty() ? u"0 seconds"_s : words.join(u' ');
    return u"%1%2 (%3 s)"_s.arg(seconds < 0 ? u"past by "_s : QString(), text).arg(seconds);
}

QString counted(qint64 number, QLatin1String thing)
{
    return QString::number(number) + u' ' + thing + (number == 1 ? u""_s : u"s"_s);
}

} // namespace wmsg::cli
