// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/program.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <sys/stat.h>

/// What is asked of every daemon and simulator, from outside.

/// The permissions of a file or socket; 0 when it is not there.
inline mode_t modeOf(const QString &path)
{
    struct stat state = {};
    return ::lstat(qPrintable(path), &state) == 0 ? state.st_mode & 07777 : 0;
}

/// How often the threads of a process went to sleep, or were made to.
inline QByteArray switchesOf(qint64 process)
{
    QByteArray all;
    QDirIterator threads(QString("/proc/%1/task").arg(process), QDir::Dirs | QDir::NoDotAndDotDot);
    while (threads.hasNext()) {
        QFile file(threads.next() + "/status");
        const bool isOpen = file.open(QIODevice::ReadOnly);
        const QByteArray status = isOpen ? file.readAll() : QByteArray();
        all += status.mid(status.indexOf("voluntary_ctxt_switches"));
    }
    return all;
}

/// Whether there is a second, sooner or later, in which a process does not run at all.
inline bool comesToRest(qint64 process)
{
    for (int i = 0; i < 10; ++i) {
        const QByteArray before = switchesOf(process);
        QTest::qWait(1000);
        if (!before.isEmpty() && switchesOf(process) == before) {
            return true;
        }
    }
    return false;
}

/// Rows of the signals that end a program, in "number".
inline void addStopSignals()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

/// `--help` and `--version` are answered on standard output.
inline void checkHelpAndVersion(const QString &path)
{
    for (const char *wish : {"--help", "--version"}) {
        Program program(path, {wish});
        QCOMPARE(program.end(), 0);
        QVERIFY(program.out().size() > 10);
        QCOMPARE(program.err(), QString());
    }
}

/// A page of the manual has each option that the help of a program names, which are so many at
/// least.
inline void checkOptionsAreTold(const QString &path, const QString &page, int least)
{
    Program program(path, {"--help"});
    QCOMPARE(program.end(), 0);
    QFile manual(page);
    QVERIFY(manual.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(manual.readAll());
    static const QRegularExpression option("(?:^|,)\\s*(--[a-z-]+)",
                                           QRegularExpression::MultilineOption);
    auto found = option.globalMatch(program.out());
    int count = 0;
    while (found.hasNext()) {
        const QString name = found.next().captured(1);
        if (name != "--help" && name != "--version") {
            QVERIFY2(text.contains('`' + name + '`') || text.contains('`' + name + ' '),
                     qPrintable(name));
            ++count;
        }
    }
    QVERIFY2(count >= least, qPrintable(QString::number(count)));
}

/// A program that cannot be used in this way ends with a line that begins with its name, and holds
/// some words.
inline void checkWrongUse(const QString &path, const QStringList &arguments,
                          const QString &words = {})
{
    Program program(path, arguments);
    QCOMPARE(program.end(), 2);
    const QString line = program.err();
    QVERIFY2(line.startsWith(QFileInfo(path).fileName() + ": ") && line.count('\n') == 1
                 && line.contains(words),
             qPrintable(line));
    QCOMPARE(program.out(), QString());
}
