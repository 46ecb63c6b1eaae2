// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// WMFMEntryPrivate is the record of one entry.
class WMFMEntryPrivate {
public:
    static constexpr quint8 kHighestType = 1;
    static constexpr quint8 kTypeNotSet = 127;

    quint8 entryType = kTypeNotSet;
    QString entryVal;
    QString contactName;
};
