// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <cstdio>
#include <memory>

/// What the program tells, and where: results on standard output, complaints on standard error, and
/// the log of the library nowhere unless asked for.
namespace wmsg::cli {

/// How the program ends.
enum ExitCode : int {
    ExitFine = 0,
    ExitBadInput = 1, ///< One line on standard error said what and where.
    ExitUsage = 2 ///< The command line is wrong.
};

/// Writes "wmsg: " and `line` to standard error, with what would steer a terminal escaped.
void complain(const QString &line);

/// Writes `text` to standard output in UTF-8, as it stands.
void say(const QString &text);

/// Ends the output. False, with a complaint, when not all of it could be written.
[[nodiscard]] bool finishOutput();

/// The name of a file as it is shown: bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] QString shownName(const QByteArray &path);

/// Where the log of the library goes for as long as this object lives: a file, standard error, or
/// nowhere. Each log call becomes one line, escaped as printable() does.
class LogRoute {
public:
    LogRoute();
    ~LogRoute();
    LogRoute(const LogRoute &) = delete;
    LogRoute &operator=(const LogRoute &) = delete;

    /// Appends to the file; false when it cannot be opened, errno then says why.
    [[nodiscard]] bool toFile(const QByteArray &path);
    void toStandardError();

private:
    struct Closer {
        void operator()(FILE *stream) const { std::fclose(stream); }
    };
    using Stream = std::unique_ptr<FILE, Closer>;

    void useTarget(FILE *target);
    static ssize_t writeLine(void *target, const char *bytes, size_t size);

    Stream m_file;
    Stream m_lines;
};

} // namespace wmsg::cli
