// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is the text of an address or of a list of them, in UTF-8.

#include "fuzz/fuzz_support.h"
#include "util/mms_util_common.h"

#include <algorithm>
#include <memory>

using namespace wmsg::fuzz;

namespace {

constexpr unsigned char kTypeNotSet = 127;

bool isSame(const WMFMEntry &a, const WMFMEntry &b)
{
    return a.getEntryType() == b.getEntryType() && a.getEntryVal() == b.getEntryVal()
        && a.getContactName() == b.getContactName();
}

/// A name with a mark in it does not come back.
bool survivesText(const WMFMEntry &entry)
{
    const QString name = entry.getContactName();
    return entry.isValid() && !name.contains(QLatin1Char('>')) && !name.contains(QLatin1Char('['))
        && !name.contains(QLatin1Char(']'));
}

/// In a list neither may hold a comma, and the value may not end with white space.
bool survivesList(const WMFMEntry &entry)
{
    const QString value = entry.getEntryVal();
    return survivesText(entry) && !value.contains(QLatin1Char(',')) && value.trimmed().size() > 0
        && !value.back().isSpace() && !entry.getContactName().contains(QLatin1Char(','));
}

void checkEntry(const QString &text)
{
    const std::unique_ptr<WMFMEntry> entry(MMS_UTIL_Common::stringToEntry(text));
    require(text.contains(entry->getEntryVal()) && text.contains(entry->getContactName()),
            "an entry holds pieces of its text");
    WMFMEntry used(1, QStringLiteral("12345"), QStringLiteral("Ann"));
    MMS_UTIL_Common::stringToEntry(text, &used);
    require(isSame(used, *entry), "an entry that was used keeps nothing");

    const QString printed = MMS_UTIL_Common::entryToString(*entry);
    require(printed.isEmpty() == !entry->isValid(), "an entry is printed when it is valid");
    require(entry->getEntryType() != kTypeNotSet || printed.isEmpty(),
            "an entry without a type is not printed");
    if (survivesText(*entry)) {
        const std::unique_ptr<WMFMEntry> again(MMS_UTIL_Common::stringToEntry(printed));
        require(isSame(*again, *entry), "a printed entry reads back");
    }
}

void checkList(const QString &text)
{
    QValueList<WMFMEntry> entries = MMS_UTIL_Common::stringToEntryList(text);
    require(entries.size() <= text.count(QLatin1Char(',')) + 1, "a comma parts two entries");
    QValueList<WMFMEntry> appended = entries;
    MMS_UTIL_Common::stringToEntryList(text, &appended);
    require(appended.size() == 2 * entries.size(), "a list is appended to");

    const QString printed = MMS_UTIL_Common::entryListToString(entries);
    require(printed.isEmpty() == entries.isEmpty(), "each entry leaves its comma");
    if (!std::all_of(entries.cbegin(), entries.cend(), survivesList)) {
        return;
    }
    const QValueList<WMFMEntry> again = MMS_UTIL_Common::stringToEntryList(printed);
    require(std::equal(again.cbegin(), again.cend(), entries.cbegin(), entries.cend(), isSame),
            "a printed list reads back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkEntry(text);
    checkList(text);
    return 0;
}
