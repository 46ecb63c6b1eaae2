// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/progress_bar.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kWidestBar = 40;

QString inKib(qint64 bytes)
{
    return QString::number(double(bytes) / 1024, 'f', 1) + u" KiB"_s;
}

int terminalWidth()
{
    winsize size = {};
    const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

void put(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stderr);
    std::fflush(stderr);
}

} // namespace

QString progressLine(qint64 done, qint64 total, int width)
{
    total = std::max<qint64>(total, 0);
    done = std::clamp<qint64>(done, 0, total);
    const qint64 percent = total == 0 ? 0 : done * 100 / total;
    const QString all = inKib(total);
    const QString numbers =
        u"%1%  %2 of %3"_s.arg(percent, 3).arg(inKib(done).rightJustified(all.size()), all);
    const qsizetype room = std::min<qsizetype>(width - numbers.size() - 3, kWidestBar);
    if (room < 3) {
        return numbers.left(std::max(width, 0));
    }
    const qsizetype full = total == 0 ? 0 : room * done / total;
    return u'[' + QString(full, u'=').leftJustified(room) + u"] "_s + numbers;
}

ProgressBar::ProgressBar() : m_isTerminal(::isatty(STDERR_FILENO) == 1) { }

void ProgressBar::turnOff()
{
    clear();
    m_isTerminal = false;
}

void ProgressBar::show(qint64 done, qint64 total)
{
    if (m_isTerminal) {
        put(u"\r\x1B[K"_s + progressLine(done, total, terminalWidth() - 1));
        m_isShown = true;
    }
}

void ProgressBar::clear()
{
    if (m_isShown) {
        put(u"\r\x1B[K"_s);
        m_isShown = false;
    }
}

} // namespace wmsg::cli
