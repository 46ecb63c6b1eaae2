// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "qt2/qarray.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// WSMSMsgPrivate is the record of one short message.
///
/// data := { unit } zero-unit     for kText: UTF-16 in the byte order of the device
///       | { byte } end-byte      for kText8: Latin-1
///       | { byte }               for kBinary
class WSMSMsgPrivate {
public:
    static constexpr qint32 kText = 0;
    static constexpr qint32 kText8 = 1;
    static constexpr qint32 kBinary = 2;

    qint32 bodyType = kText;
    bool portValid = false;
    quint16 port1 = 0;
    quint16 port2 = 0;
    QString from;
    QString to;
    QString serviceCenter;
    QDateTime timeStamp;
    QArray<char> data;
};
