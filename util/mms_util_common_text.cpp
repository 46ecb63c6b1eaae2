// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include "core/log.h"
#include "mms/codec/wmmscontenttype.h"
#include "util/utf16_units.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringView>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr qsizetype kMonthPosition = 4;
constexpr qsizetype kDayPosition = 8;

qsizetype lastSeparator(const QString &path)
{
    return qMax(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
}

/// monthNumber returns 1 to 12, or 0 for a name that is none.
int monthNumber(QStringView name)
{
    static constexpr const char *kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int i = 0; i < 12; ++i) {
        if (name == QLatin1String(kMonths[i])) {
            return i + 1;
        }
    }
    return 0;
}

bool isTimeText(QStringView text)
{
    static constexpr char kForm[] = "00:00:00";
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9');
        if (kForm[i] == ':' ? text[i] != QLatin1Char(':') : !isDigit) {
            return false;
        }
    }
    return true;
}

/// timeIn returns the first hh:mm:ss in `text`: midnight when there is none, invalid when it is no
/// time.
QTime timeIn(QStringView text)
{
    constexpr qsizetype kLength = 8;
    for (qsizetype i = 0; i + kLength <= text.size(); ++i) {
        const QStringView time = text.mid(i, kLength);
        if (isTimeText(time)) {
            return QTime(time.left(2).toInt(), time.mid(3, 2).toInt(), time.mid(6).toInt());
        }
    }
    return QTime(0, 0);
}

bool isWideCharset(const QString &upperCase)
{
    return upperCase == QLatin1String("UCS2") || upperCase == QLatin1String("UTF-16BE")
        || upperCase == QLatin1String("UTF-16LE") || upperCase == QLatin1String("UTF-16");
}

} // namespace

QString MMS_UTIL_Common::stripPath(const QString &path)
{
    const QString trimmed = path.trimmed();
    return trimmed.mid(lastSeparator(trimmed) + 1);
}

QString MMS_UTIL_Common::getPath(const QString &path)
{
    const QString trimmed = path.trimmed();
    return trimmed.left(lastSeparator(trimmed));
}

QString MMS_UTIL_Common::getExtName(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QStringLiteral("") : name.mid(dot + 1).trimmed();
}

QString MMS_UTIL_Common::getNoExtName(const QString &name)
{
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}

QString MMS_UTIL_Common::mkAbsoluteFileName(const QString &name, const QString &dir)
{
    const QLatin1Char slash('/');
    const QString tail = parseCid(name.trimmed());
    if (tail.startsWith(slash) && dir.endsWith(slash)) {
        return dir.chopped(1) + tail;
    }
    return tail.startsWith(slash) || dir.endsWith(slash) ? dir + tail : dir + slash + tail;
}

QString MMS_UTIL_Common::parseCid(const QString &cid)
{
    QString id = cid;
    if (id.startsWith(QLatin1Char('<'))) {
        id.remove(0, 1);
    }
    if (id.endsWith(QLatin1Char('>'))) {
        id.chop(1);
    }
    if (id.startsWith(QLatin1String("cid:"), Qt::CaseInsensitive)) {
        id.remove(0, 4);
    }
    return id;
}

bool MMS_UTIL_Common::isCidEqual(const QString &a, const QString &b)
{
    const QString first = parseCid(a.trimmed());
    return !first.isEmpty() && first.compare(parseCid(b.trimmed()), Qt::CaseInsensitive) == 0;
}

QDateTime MMS_UTIL_Common::stringToTime(const QString &text)
{
    const QTime midnight(0, 0);
    const int month = monthNumber(QStringView(text).mid(kMonthPosition, 3));
    const uint day = text.mid(kDayPosition, 2).simplified().toUInt();
    const uint year = text.right(4).toUInt();
    const QTime time = timeIn(text);
    // A date-time takes an impossible time for midnight; the date must go for it to be invalid.
    const QDate date = time.isValid() ? QDate(int(year), month, int(day)) : QDate();
    return QDateTime(date, time.isValid() ? time : midnight);
}

char *MMS_UTIL_Common::ipByteToStr(unsigned int address)
{
    static char text[sizeof("255.255.255.255")];
    snprintf(text, sizeof(text), "%u.%u.%u.%u", address & 0xFF, address >> 8 & 0xFF,
             address >> 16 & 0xFF, address >> 24 & 0xFF);
    logLine(4, "MMS_UTIL_Common::ipByteToStr, the ip address=%s\n", text);
    return text;
}

unsigned short MMS_UTIL_Common::mimeTypeGetValue(const QString &main, const QString &sub)
{
    return static_cast<unsigned short>(WMMSContentType::getMimeID(main + QLatin1Char('/') + sub));
}

QString MMS_UTIL_Common::fromUtf8(const QArray<char> &bytes)
{
    return bytes.isEmpty() ? QStringLiteral("")
                           : QString::fromUtf8(bytes.constData(), bytes.size());
}

bool MMS_UTIL_Common::toUTF8(const QArray<char> &source, const QString &charset, QArray<char> &out)
{
    const QString name = charset.toUpper();
    if (!isWideCharset(name)) {
        return false;
    }
    const bool isBigMark = source.size() >= 2 && memcmp(source.constData(), "\xFE\xFF", 2) == 0;
    const bool isLittleMark = source.size() >= 2 && memcmp(source.constData(), "\xFF\xFE", 2) == 0;
    const qsizetype mark = isBigMark || isLittleMark ? 2 : 0;
    const char *units = source.constData() + mark;
    const qsizetype count = (source.size() - mark) / 2;
    QString text;
    if (isLittleMark || name == QLatin1String("UTF-16LE")) {
        text = wmsg::util::unitsOf(units, count);
    } else {
        logLine(4, "Little endian UTF-16");
        text = wmsg::util::exchangedUnitsOf(units, count);
    }
    logLine(4, "unicode to string: %s", text);
    const QByteArray utf8 = text.toUtf8();
    const int length = int(qstrnlen(utf8.constData(), size_t(utf8.size())));
    if (!out.resize(length)) {
        logLine(4, "No memory");
        return false;
    }
    std::copy_n(utf8.constData(), length, out.begin());
    return true;
}
