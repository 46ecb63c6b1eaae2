// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmentry.h"

#include "core/wmfmentry_p.h"

WMFMEntry::WMFMEntry()
{
    init();
}

WMFMEntry::WMFMEntry(unsigned char type, const QString &value)
{
    init(type, value, QLatin1String(""));
}

WMFMEntry::WMFMEntry(unsigned char type, const QString &value, const QString &name)
{
    init(type, value, name);
}

WMFMEntry::WMFMEntry(const WMFMEntry &other)
    : m_record(other.m_record ? std::make_unique<WMFMEntryPrivate>(*other.m_record)
                              : std::make_unique<WMFMEntryPrivate>())
{
}

WMFMEntry::WMFMEntry(WMFMEntry &&other) noexcept = default;

WMFMEntry::~WMFMEntry() = default;

WMFMEntry &WMFMEntry::operator=(const WMFMEntry &other)
{
    if (this != &other) {
        record() = other.m_record ? *other.m_record : WMFMEntryPrivate();
    }
    return *this;
}

WMFMEntry &WMFMEntry::operator=(WMFMEntry &&other) noexcept = default;

void WMFMEntry::init()
{
    m_record = std::make_unique<WMFMEntryPrivate>();
}

void WMFMEntry::init(unsigned char type, const QString &value, const QString &name)
{
    init();
    // Kept: a type above 1 leaves 127, and the value and the name are set all the same.
    setEntryType(type);
    setEntryVal(value);
    setContactName(name);
}

/// The record to write to; an entry that was moved from gets a fresh one.
WMFMEntryPrivate &WMFMEntry::record()
{
    if (!m_record) {
        init();
    }
    return *m_record;
}

bool WMFMEntry::setEntryType(unsigned char type)
{
    if (type > WMFMEntryPrivate::kHighestType) {
        return false;
    }
    record().entryType = type;
    return true;
}

unsigned char WMFMEntry::getEntryType() const
{
    return m_record ? m_record->entryType : WMFMEntryPrivate::kTypeNotSet;
}

void WMFMEntry::setEntryVal(const QString &value)
{
    record().entryVal = value;
}

QString WMFMEntry::getEntryVal() const
{
    return m_record ? m_record->entryVal : QString();
}

void WMFMEntry::setContactName(const QString &name)
{
    record().contactName = name;
}

QString WMFMEntry::getContactName() const
{
    return m_record ? m_record->contactName : QString();
}

bool WMFMEntry::isValid() const
{
    return m_record && m_record->entryType != WMFMEntryPrivate::kTypeNotSet
        && !m_record->entryVal.isEmpty();
}

QString WMFMEntry::getDisplayValue() const
{
    const QString name = getContactName().trimmed();
    return name.isEmpty() ? getEntryVal().trimmed() : name;
}
