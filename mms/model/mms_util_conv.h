// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmentry.h"
#include "qt2/qvaluelist.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// The conversions between messages and the records of the MMS engine: wide strings (16-bit units
/// with a zero at the end), addresses and times. There are no objects of it. Strings that it makes
/// are from malloc and the caller's.
class WMSG_EXPORT MMS_UTIL_Conv {
public:
    MMS_UTIL_Conv() = delete;

    /// The units before the zero that ends `s`, at most `max` unless that is 0. Null has none.
    static unsigned int wcsnlen(const unsigned short *s, unsigned int max);
    /// Copies the first `n` characters of `src`, or all when it has fewer, to `dst`, with a zero
    /// behind them.
    static void qwcsncpy(unsigned short *dst, const QString &src, unsigned int n);
    /// Sets what `dst` points to to a copy of `src`; null for a null one, and without memory.
    static void copy_charToCHAR(signed char **dst, const char *src);

    /// Makes `s` the value of `e`, of type e-mail when it has an "@" and telephone number when not;
    /// does nothing unless both are given. The text is cut where its UTF-8 form exceeds two bytes
    /// for each unit and two more.
    static void setWMFMEntry(unsigned short *s, WMFMEntry *e);
    /// Sets what `out` points to to the values of `list` with "," between them. An empty list
    /// leaves it as it is.
    static void copyAddress_AddrListToWchar(QValueList<WMFMEntry> list, unsigned short **out);
    /// Appends the addresses of `s` to `list`; does nothing unless both are given. Empty pieces
    /// between two "," are skipped. `s` is cut to its first address.
    static void copyAddress_WcharToAddrList(unsigned short *s, QValueList<WMFMEntry> *list);

    /// Seconds since 1970-01-01 00:00 UTC, as UTIL_TimeConversion has them.
    static long toUTC(const QDateTime &time);
    static QDateTime fromUTC(long seconds);
    static long getCurrentUTCTime();
};
