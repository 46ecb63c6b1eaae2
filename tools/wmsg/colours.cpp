// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/colours.h"

#include <QtCore/QtGlobal>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

const char *codeOf(Tone tone)
{
    switch (tone) {
    case Tone::FieldId:
        return "1;36";
    case Tone::Header:
        return "36";
    case Tone::Part:
        return "32";
    case Tone::Push:
        return "35";
    case Tone::ShortMessage:
        return "33";
    case Tone::Data:
        return "2";
    case Tone::Trouble:
        return "1;31";
    case Tone::Plain:
        break;
    }
    return "0";
}

} // namespace

bool wantsColours(const std::string &choice)
{
    if (choice != "auto") {
        return choice == "always";
    }
    return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR")
        && qgetenv("TERM") != "dumb";
}

QString coloured(const QString &text, Tone tone)
{
    return tone == Tone::Plain ? text
                               : u"\x1B[%1m%2\x1B[0m"_s.arg(QLatin1String(codeOf(tone)), text);
}

} // namespace wmsg::cli
