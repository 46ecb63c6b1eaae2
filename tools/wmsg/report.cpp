// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/report.h"

#include "tools/wmsg/text_view.h"

#include <platform/applog/applog.h>

#include <cerrno>
#include <cstring>
#include <sys/types.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

void writeTo(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
}

} // namespace

void complain(const QString &line)
{
    std::fflush(stdout);
    writeTo(stderr, u"wmsg: "_s + harmless(line) + u'\n');
}

void say(const QString &text)
{
    writeTo(stdout, text);
}

bool finishOutput()
{
    const bool flushed = std::fflush(stdout) == 0;
    if (flushed && !std::ferror(stdout)) {
        return true;
    }
    complain(u"standard output: cannot be written: "_s
             + QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

QString shownName(const QByteArray &path)
{
    return path == "-" ? u"standard input"_s : QString::fromUtf8(path);
}

LogRoute::LogRoute()
{
    appLogModuleStream = appLogDiscardStream();
}

LogRoute::~LogRoute()
{
    appLogModuleStream = appLogDiscardStream();
}

bool LogRoute::toFile(const QByteArray &path)
{
    m_file.reset(std::fopen(path.constData(), "ae"));
    if (!m_file) {
        return false;
    }
    useTarget(m_file.get());
    return true;
}

void LogRoute::toStandardError()
{
    useTarget(stderr);
}

void LogRoute::useTarget(FILE *target)
{
    cookie_io_functions_t functions = {};
    functions.write = &LogRoute::writeLine;
    m_lines.reset(fopencookie(target, "w", functions));
    if (m_lines) {
        // Without a buffer of its own one log call arrives as one write.
        std::setvbuf(m_lines.get(), nullptr, _IONBF, 0);
        appLogModuleStream = m_lines.get();
    }
}

ssize_t LogRoute::writeLine(void *target, const char *bytes, size_t size)
{
    QString line = QString::fromLatin1(bytes, static_cast<qsizetype>(size));
    while (line.endsWith(u'\n')) {
        line.chop(1);
    }
    writeTo(static_cast<FILE *>(target), printable(line) + u'\n');
    return static_cast<ssize_t>(size);
}

} // namespace wmsg::cli
