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

#include <functional>
#include <memory>

#include <csignal>
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

/// The program while it runs. It is killed when it has not ended.
class Running {
public:
    /// Waits for the end, while the event loop goes on.
    Run end()
    {
        Run run;
        const bool hasEnded =
            QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, 120000);
        if (!hasEnded || process.exitStatus() != QProcess::NormalExit) {
            run.err = "did not end by itself: " + process.errorString() + '\n'
                + process.readAllStandardError();
            return run;
        }
        run.exitCode = process.exitCode();
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }
    void signal(int number) const { QCOMPARE(::kill(pid_t(process.processId()), number), 0); }

    QProcess process;
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

    /// Starts the program and returns at once. Its standard input is empty. `inChild` is run in the
    /// new process before the program.
    std::unique_ptr<Running> begin(const QStringList &arguments,
                                   const std::function<void()> &inChild = {}) const
    {
        auto running = std::make_unique<Running>();
        begin(*running, WMSG_PROGRAM, arguments, inChild);
        running->process.closeWriteChannel();
        return running;
    }

private:
    void begin(Running &running, const QString &program, const QStringList &arguments,
               const std::function<void()> &inChild = {}) const
    {
        QProcess &process = running.process;
        process.setWorkingDirectory(m_folder.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TZ", "UTC");
        environment.insert("LC_ALL", "C.UTF-8");
        process.setProcessEnvironment(environment);
        // Root reads what nobody may read; the program is run without that right.
        process.setChildProcessModifier([inChild] {
            prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
            prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
            if (inChild) {
                inChild();
            }
        });
        process.start(program, arguments);
    }
    Run start(const QString &program, const QStringList &arguments,
              const QByteArray &input = {}) const
    {
        Running running;
        begin(running, program, arguments);
        running.process.write(input);
        running.process.closeWriteChannel();
        return running.end();
    }

    QTemporaryDir m_folder;
};
