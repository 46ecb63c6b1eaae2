// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/program.h"

#include <cstdio>
#include <exception>

namespace wmsg::service {

int complain(const char *program, int code, const QString &problem)
{
    std::fprintf(stderr, "%s: %s\n", program, qUtf8Printable(problem));
    return code;
}

std::optional<int> endAfter(const OptionsReading &reading, const char *program)
{
    switch (reading.kind) {
    case OptionsReading::Print:
        std::fputs(qUtf8Printable(reading.text), stdout);
        return kExitFine;
    case OptionsReading::Refuse:
        return complain(program, kExitUsage, reading.text);
    case OptionsReading::Run:
        break;
    }
    return std::nullopt;
}

void sayListening(const QString &where)
{
    std::printf("listening on %s\n", qUtf8Printable(where));
    std::fflush(stdout);
}

int runProgram(const char *program, int (*run)(int, char **), int argc, char **argv)
{
    qSetMessagePattern(QStringLiteral("%{time yyyy-MM-ddThh:mm:ss.zzz} %{category}: %{message}"));
    try {
        return run(argc, argv);
    } catch (const std::exception &problem) {
        return complain(program, kExitFailed, QString::fromUtf8(problem.what()));
    }
}

} // namespace wmsg::service
