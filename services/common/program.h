// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <optional>

/// What the programs have in common that run until they are stopped: daemons and simulators.
namespace wmsg::service {

inline constexpr int kExitFine = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

/// What reading the options of a program came to.
struct OptionsReading {
    enum Kind {
        Run,
        Print, ///< `text` to standard output, and end: help, or the version
        Refuse, ///< `text`, one line, to standard error, and end with exit code 2
    };

    Kind kind = Refuse;
    QString text;
};

/// complain writes what is in the way of a program to standard error, in one line, and returns
/// `code`.
int complain(const char *program, int code, const QString &problem);

/// endAfter does what reading the options came to, and returns the exit code; nothing when the
/// program is to run.
[[nodiscard]] std::optional<int> endAfter(const OptionsReading &reading, const char *program);

/// sayListening tells those who wait for the program where it listens.
void sayListening(const QString &where);

/// runProgram gives the lines of the log their form, calls `run` and returns what that returns.
/// What it throws is a complaint.
[[nodiscard]] int runProgram(const char *program, int (*run)(int, char **), int argc, char **argv);

} // namespace wmsg::service
