// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/applog/applog.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdarg>
#include <cstdio>
#include <utility>

/// The log function. It is static on purpose: every module that includes this header carries its
/// own copy.
///
/// A line is written as it stands, with vfprintf; the function ends no line by itself. Levels 0 to
/// 7 are printed, higher ones dropped. Level 4 is the ordinary trace, 8 the "Entering function"
/// trace.

namespace wmsg::log {

inline constexpr int kHighestPrintedLevel = 7;

/// Tells whether what is logged goes to the discard stream. Asked for every line, so the stream is
/// fetched once.
[[nodiscard]] inline bool isDiscarded()
{
    static FILE *const discardStream = appLogDiscardStream();
    return appLogModuleStream == discardStream;
}

/// Tells whether a line of `level` would reach a reader.
[[nodiscard]] inline bool isPrinted(int level)
{
    return level >= 0 && level <= kHighestPrintedLevel && !isDiscarded();
}

[[maybe_unused]] __attribute__((format(printf, 2, 3))) static void print(int level,
                                                                         const char *format, ...)
{
    if (!isPrinted(level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    vfprintf(appLogModuleStream ? appLogModuleStream : stdout, format, arguments);
    va_end(arguments);
}

/// Holds the 8-bit form of one argument for as long as the line needs it. Text is printed in
/// Latin-1; characters outside it show as "?", a null string as nothing.
class Latin1Argument {
public:
    explicit Latin1Argument(const QString &text) : m_bytes(text.toLatin1()) { }
    const char *value() const { return m_bytes.constData(); }

private:
    QByteArray m_bytes;
};

template <typename T> class PlainArgument {
public:
    explicit PlainArgument(T value) : m_value(value) { }
    T value() const { return m_value; }

private:
    T m_value;
};

inline Latin1Argument argument(const QString &text)
{
    return Latin1Argument(text);
}
template <typename T> PlainArgument<T> argument(const T &value)
{
    return PlainArgument<T>(value);
}
inline PlainArgument<const char *> argument(const char *text)
{
    return PlainArgument<const char *>(text ? text : "");
}
inline PlainArgument<const char *> argument(const QByteArray &text)
{
    return PlainArgument<const char *>(text.constData());
}

} // namespace wmsg::log

/// logLine prints one line when its level is printed. A QString, a QByteArray or a `const char *`
/// stands for "%s", a null one prints nothing; a QString is converted only when the line is
/// printed.
template <typename... Arguments>
static inline void logLine(int level, const char *format, const Arguments &...arguments)
{
    if (wmsg::log::isPrinted(level)) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        wmsg::log::print(level, format, wmsg::log::argument(arguments).value()...);
#pragma GCC diagnostic pop
    }
}
