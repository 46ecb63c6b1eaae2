// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/applog/applog.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <cstdio>

/// Catches what is logged during its life: it points the module stream at itself and gives the
/// pointer back in its destructor.
///
///     LogCapture log;
///     message.printInfo();
///     QCOMPARE(log.lines(), QStringList({"dataLen:  3"}));
class LogCapture {
public:
    LogCapture() : m_before(appLogModuleStream)
    {
        cookie_io_functions_t functions = {};
        functions.write = &LogCapture::write;
        m_stream = fopencookie(this, "w", functions);
        if (!m_stream) {
            qFatal("LogCapture: no stream");
        }
        // Unbuffered, so that one log call arrives as one write.
        setvbuf(m_stream, nullptr, _IONBF, 0);
        appLogModuleStream = m_stream;
    }

    ~LogCapture()
    {
        appLogModuleStream = m_before;
        fclose(m_stream);
    }

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// lines returns the log calls so far, an element each, with their line feeds if they have any.
    [[nodiscard]] QStringList lines() const { return m_calls; }

    /// text returns all that was logged, joined as the stream shows it.
    [[nodiscard]] QString text() const { return m_calls.join(QString()); }

    /// clear forgets what was logged so far.
    void clear() { m_calls.clear(); }

private:
    static ssize_t write(void *self, const char *bytes, size_t size)
    {
        static_cast<LogCapture *>(self)->m_calls.append(
            QString::fromLatin1(bytes, qsizetype(size)));
        return ssize_t(size);
    }

    FILE *m_before;
    FILE *m_stream;
    QStringList m_calls;
};
