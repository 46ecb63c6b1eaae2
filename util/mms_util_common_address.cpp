// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// entry-list := { entry "," }
// entry      := "<" name ">" "[" word "]" value
//   word: EMAIL, PLMN or UNKNOWN   value: all that follows the "]"

#include "util/mms_util_common.h"

#include <QtCore/QStringList>

namespace {

constexpr unsigned char kEmail = 0;
constexpr unsigned char kPlmn = 1;

QString typeWord(unsigned char type)
{
    switch (type) {
    case kEmail:
        return QStringLiteral("EMAIL");
    case kPlmn:
        return QStringLiteral("PLMN");
    default:
        return QStringLiteral("UNKNOWN");
    }
}

/// between returns what stands between the first `open` and the first `close` of the whole text.
QString between(const QString &text, char open, char close)
{
    const qsizetype begin = text.indexOf(QLatin1Char(open)) + 1;
    const qsizetype end = text.indexOf(QLatin1Char(close));
    return begin > 0 && end > begin ? text.mid(begin, end - begin) : QStringLiteral("");
}

/// after returns what follows the first `mark`.
QString after(const QString &text, char mark)
{
    const qsizetype begin = text.indexOf(QLatin1Char(mark)) + 1;
    return begin > 0 ? text.mid(begin) : QStringLiteral("");
}

WMFMEntry parseEntry(const QString &text)
{
    WMFMEntry entry;
    const QString word = between(text, '[', ']');
    if (word == QLatin1String("EMAIL")) {
        entry.setEntryType(kEmail);
    } else if (word == QLatin1String("PLMN")) {
        entry.setEntryType(kPlmn);
    }
    entry.setContactName(between(text, '<', '>'));
    entry.setEntryVal(after(text, ']'));
    return entry;
}

} // namespace

QString MMS_UTIL_Common::entryToString(const WMFMEntry &entry)
{
    if (!entry.isValid()) {
        return QStringLiteral("");
    }
    return QLatin1Char('<') + entry.getContactName() + QLatin1String(">[")
        + typeWord(entry.getEntryType()) + QLatin1Char(']') + entry.getEntryVal();
}

WMFMEntry *MMS_UTIL_Common::stringToEntry(const QString &text)
{
    return new WMFMEntry(parseEntry(text));
}

void MMS_UTIL_Common::stringToEntry(const QString &text, WMFMEntry *entry)
{
    if (entry) {
        *entry = parseEntry(text);
    }
}

QString MMS_UTIL_Common::entryListToString(const QValueList<WMFMEntry> &entries)
{
    QString text = QStringLiteral("");
    for (const WMFMEntry &entry : entries) {
        // Kept: the last entry is followed by a comma too.
        text += entryToString(entry) + QLatin1Char(',');
    }
    return text;
}

QValueList<WMFMEntry> MMS_UTIL_Common::stringToEntryList(const QString &text)
{
    QValueList<WMFMEntry> entries;
    stringToEntryList(text, &entries);
    return entries;
}

void MMS_UTIL_Common::stringToEntryList(const QString &text, QValueList<WMFMEntry> *entries)
{
    if (!entries) {
        return;
    }
    // Kept: a value that contains a comma is split in two.
    const QStringList pieces = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &piece : pieces) {
        entries->append(parseEntry(piece.trimmed()));
    }
}
