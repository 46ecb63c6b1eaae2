// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace wmsg::cli {

/// One line of at most `width` characters that shows how far something has come:
/// "[=====     ]  50%  150.0 KiB of 300.0 KiB".
[[nodiscard]] QString progressLine(qint64 done, qint64 total, int width);

/// A line at the bottom of standard error that shows how far something has come; nothing where
/// standard error is no terminal.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    /// Nothing is shown from now on.
    void turnOff();
    void show(qint64 done, qint64 total);
    /// Removes the line, so that others can be written.
    void clear();

private:
    bool m_isTerminal;
    bool m_isShown = false;
};

} // namespace wmsg::cli
