// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QString>

#include <memory>

class WMFMEntryPrivate;

/// WMFMEntry is one address: a sender, a recipient or the number of a service centre, with the name
/// to show for it. It is a value: each entry owns a record of its own, and copies share nothing. It
/// may be used in any thread, one thread at a time.
///
/// The type is 0 for an e-mail address, 1 for a telephone number, or 127 as long as none is set.
/// The address is not checked against its type.
///
/// An entry that was moved from has no record: it is not valid, reads like a fresh entry, and gets
/// a record again with the first assignment or setter.
class WMSG_EXPORT WMFMEntry {
public:
    /// WMFMEntry() makes an entry of type 127 with an empty address and name.
    WMFMEntry();

    /// WMFMEntry(type, value[, name]) makes an entry as init(type, value, name) does; without a
    /// name it is empty.
    WMFMEntry(unsigned char type, const QString &value);
    WMFMEntry(unsigned char type, const QString &value, const QString &name);

    WMFMEntry(const WMFMEntry &other);
    WMFMEntry(WMFMEntry &&other) noexcept;
    ~WMFMEntry();

    /// operator= copies the type, the address and the name of `other` into the record of this
    /// entry.
    WMFMEntry &operator=(const WMFMEntry &other);
    WMFMEntry &operator=(WMFMEntry &&other) noexcept;

    /// setEntryType sets the type and returns true, or returns false with nothing changed when
    /// `type` is above
    /// 1. A type that was set cannot be unset.
    bool setEntryType(unsigned char type);
    unsigned char getEntryType() const;

    /// setEntryVal and setContactName store any text, null and empty ones included.
    void setEntryVal(const QString &value);
    QString getEntryVal() const;
    void setContactName(const QString &name);
    QString getContactName() const;

    /// isValid returns true when a type is set and the address has at least one character, be it a
    /// blank.
    bool isValid() const;

    /// getDisplayValue returns the text to show: the name without white space around it, or, when
    /// that leaves nothing, the address without white space around it.
    QString getDisplayValue() const;

private:
    /// init makes a fresh record, of type 127 with empty texts, the record of this entry.
    void init();

    /// init(type, value, name) makes a fresh record and sets the three.
    void init(unsigned char type, const QString &value, const QString &name);

    WMFMEntryPrivate &record();

    std::unique_ptr<WMFMEntryPrivate> m_record;
};
