// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_util_conv.h"

#include "core/log.h"
#include "platform/engine/mms_char.h"
#include "platform/timeconversion/util_timeconversion.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

unsigned int MMS_UTIL_Conv::wcsnlen(const unsigned short *s, unsigned int max)
{
    unsigned int length = 0;
    while (s && s[length] != 0 && (max == 0 || length < max)) {
        ++length;
    }
    return length;
}

void MMS_UTIL_Conv::qwcsncpy(unsigned short *dst, const QString &src, unsigned int n)
{
    const auto count = std::min(static_cast<qsizetype>(n), src.size());
    std::transform(src.begin(), src.begin() + count, dst, [](QChar c) { return c.unicode(); });
    dst[count] = 0;
}

void MMS_UTIL_Conv::copy_charToCHAR(signed char **dst, const char *src)
{
    *dst = nullptr;
    if (!src) {
        return;
    }
    const size_t size = std::strlen(src) + 1;
    *dst = static_cast<signed char *>(std::malloc(size));
    if (*dst) {
        std::memcpy(*dst, src, size);
    }
}

// Kept: an address of three-byte characters is cut, its buffer has two bytes a unit.
void MMS_UTIL_Conv::setWMFMEntry(unsigned short *s, WMFMEntry *e)
{
    constexpr unsigned char kEmail = 0;
    constexpr unsigned char kPhoneNumber = 1;
    if (!s || !e) {
        return;
    }
    e->setEntryType(MMS_device_wchar_strchr(s, '@') ? kEmail : kPhoneNumber);
    const unsigned int length = wcsnlen(s, 0);
    QByteArray utf8((qsizetype(length) + 1) * 2, '\0');
    utf8.truncate(MMS_Char_convUCS2toUTF8String(s, length, utf8.data(),
                                                static_cast<unsigned int>(utf8.size())));
    logLine(3, "utf8_str=%s", utf8);
    e->setEntryVal(QString::fromUtf8(utf8));
}

// The signature is fixed. NOLINTNEXTLINE(performance-unnecessary-value-param)
void MMS_UTIL_Conv::copyAddress_AddrListToWchar(QValueList<WMFMEntry> list, unsigned short **out)
{
    if (list.isEmpty() || !out) {
        return;
    }
    QStringList values;
    for (const WMFMEntry &entry : std::as_const(list)) {
        values += entry.getEntryVal();
    }
    const QString joined = values.join(QLatin1Char(','));
    const auto length = static_cast<size_t>(joined.size());
    *out = static_cast<unsigned short *>(std::calloc(length + 1, sizeof(unsigned short)));
    if (*out) {
        qwcsncpy(*out, joined, static_cast<unsigned int>(length));
    }
}

void MMS_UTIL_Conv::copyAddress_WcharToAddrList(unsigned short *s, QValueList<WMFMEntry> *list)
{
    static constexpr unsigned short kSeparators[] = {',', 0};
    if (!s || !list) {
        return;
    }
    unsigned short *rest = nullptr;
    for (unsigned short *piece = MMS_device_wchar_strtok(s, kSeparators, &rest); piece;
         piece = MMS_device_wchar_strtok(nullptr, kSeparators, &rest)) {
        WMFMEntry entry;
        setWMFMEntry(piece, &entry);
        list->append(entry);
    }
}

long MMS_UTIL_Conv::toUTC(const QDateTime &time)
{
    return UTIL_TimeConversion::toUTC(time);
}

QDateTime MMS_UTIL_Conv::fromUTC(long seconds)
{
    return UTIL_TimeConversion::fromUTC(seconds);
}

long MMS_UTIL_Conv::getCurrentUTCTime()
{
    return static_cast<long>(std::time(nullptr));
}
