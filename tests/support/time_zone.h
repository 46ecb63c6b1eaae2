// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <ctime>

/// TimeZone makes `name`, a POSIX TZ text such as "XST-3", the time zone of the process during its
/// life.
class TimeZone {
public:
    explicit TimeZone(const QByteArray &name)
        : m_wasSet(qEnvironmentVariableIsSet("TZ")), m_before(qgetenv("TZ"))
    {
        qputenv("TZ", name);
        tzset();
    }

    ~TimeZone()
    {
        if (m_wasSet) {
            qputenv("TZ", m_before);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }

    TimeZone(const TimeZone &) = delete;
    TimeZone &operator=(const TimeZone &) = delete;

private:
    bool m_wasSet;
    QByteArray m_before;
};
