// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/hex.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <linux/capability.h>
#include <sys/prctl.h>

/// What one run of the program did.
struct Run {
    int exitCode = -1;
    QString out;
    QString err;

    /// What standard error says, when that is one line; else everything with a mark.
    [[nodiscard]] QString errorLine() const
    {
        return err.count('\n') == 1 && err.endsWith('\n') ? err.chopped(1) : "NOT ONE LINE: " + err;
    }
    /// The object that standard output holds.
    [[nodiscard]] const QJsonObject json() const
    {
        return QJsonDocument::fromJson(out.toUtf8()).object();
    }
};

/// A folder of its own in which the program is run, with the files that a test puts there.
class Desk {
public:
    Desk() { QVERIFY(m_folder.isValid()); }

    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QDir folder() const { return QDir(m_folder.path()); }

    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("NO FILE");
    }
    /// Puts the bytes of an annotated file of tests/data here, as a file of that name.
    void bring(const QString &name) const
    {
        QFile file(QString(WMSG_TEST_DATA "/") + name + ".hex");
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
        write(QFileInfo(name).fileName(), fromHex(file.readAll()));
    }

    Run run(const QStringList &arguments, const QByteArray &input = {}) const
    {
        return start(WMSG_PROGRAM, arguments, input);
    }
    /// Runs a shell with the program as "$0", for arguments that are no text.
    Run shell(const QString &script) const
    {
        return start("/bin/sh", {"-c", script, WMSG_PROGRAM});
    }

private:
    Run start(const QString &program, const QStringList &arguments,
              const QByteArray &input = {}) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TZ", "UTC");
        environment.insert("LC_ALL", "C.UTF-8");
        process.setProcessEnvironment(environment);
        // Root reads what nobody may read; the program is run without that right.
        process.setChildProcessModifier([] {
            prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
            prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
        });
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        Run run;
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
            run.err = "did not end by itself: " + process.errorString() + '\n'
                + process.readAllStandardError();
            return run;
        }
        run.exitCode = process.exitCode();
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    QTemporaryDir m_folder;
};
