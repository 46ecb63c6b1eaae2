// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/at_line.h"

#include <QtTest/QtTest>

using namespace wmsg::sim;

namespace {

/// A line as commands with a mark for their form, and their arguments.
QString shown(const std::optional<QList<AtCommand>> &commands)
{
    if (!commands) {
        return "none";
    }
    static const char *const kForms[] = {"", "?", "=?", "="};
    QStringList all;
    for (const AtCommand &command : *commands) {
        all.append(command.name + kForms[command.form] + '[' + command.arguments.join('|') + ']');
    }
    return all.join(' ');
}

struct LineRow {
    const char *name;
    const char *line;
    const char *commands;
};

// clang-format off
const LineRow kLines[] = {
    {"nothing",               "",                      ""},
    {"blanks",                "  ",                    ""},
    {"basic",                 "E0",                    "E[0]"},
    {"basic, small letter",   "e0",                    "E[0]"},
    {"basic without number",  "Z",                     "Z[]"},
    {"several basic",         "E0V1 X4&C1",            "E[0] V[1] X[4] &C[1]"},
    {"register",              "S0=2",                  "S0=[2]"},
    {"register read",         "S3?",                   "S3?[]"},
    {"register alone",        "S0",                    "none"},
    {"extended",              "+CGMI",                 "+CGMI[]"},
    {"extended read",         "+cpin?",                "+CPIN?[]"},
    {"extended test",         "+CMGL=?",               "+CMGL=?[]"},
    {"extended set",          "+CNMI=2,,,1",           "+CNMI=[2|||1]"},
    {"set to nothing",        "+CMEE=",                "+CMEE=[]"},
    {"quoted",                "+CPMS=\"SM\", \"M E\"", "+CPMS=[SM|M E]"},
    {"quoted comma and mark", "+CPIN=\"1,2;3\"",       "+CPIN=[1,2;3]"},
    {"several extended",      "+CMEE=1;+CREG?;E0",     "+CMEE=[1] +CREG?[] E[0]"},
    {"basic, then extended",  "E0+CMEE=1",             "E[0] +CMEE=[1]"},
    {"quotes not closed",     "+CPMS=\"SM",            "none"},
    {"plus alone",            "+",                     "none"},
    {"mark alone",            "&",                     "none"},
    {"no letter",             "1",                     "none"},
    {"more behind a test",    "+CMGL=?1",              "none"},
};
// clang-format on

} // namespace

class TestAtLine : public QObject {
    Q_OBJECT

private slots:
    void lines_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("commands");
        for (const LineRow &row : kLines) {
            QTest::newRow(row.name) << QByteArray(row.line) << QString(row.commands);
        }
    }
    void lines()
    {
        QFETCH(QByteArray, line);
        QTEST(shown(readAtLine(line)), "commands");
    }

    void numbers()
    {
        const AtCommand command{"+X", AtCommand::Set, {"5", "", "x", "-1", "99999999999"}};
        QCOMPARE(command.number(0, 7), std::optional(5));
        QCOMPARE(command.number(1, 7), std::optional(7));
        QCOMPARE(command.number(2, 7), std::nullopt);
        QCOMPARE(command.number(3, 7), std::nullopt);
        QCOMPARE(command.number(4, 7), std::nullopt);
        QCOMPARE(command.number(5, 7), std::optional(7));
    }
};

QTEST_GUILESS_MAIN(TestAtLine)
#include "tst_at_line.moc"
