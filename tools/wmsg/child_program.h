// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QString>

namespace wmsg::cli {

/// One program that runs for as long as this one does, and not longer: the system kills it when
/// this process is gone, however it went. What it says goes to a file.
class ChildProgram : public QObject {
    Q_OBJECT

public:
    /// `name` is that of the program, which is looked for beside this one and then in PATH.
    ChildProgram(QString name, const QString &logFile, QObject *parent = nullptr);
    ~ChildProgram() override;

    /// Starts it. Returns what is in the way, or an empty text.
    [[nodiscard]] QString start(const QStringList &arguments);
    /// Asks it to end, and makes it end when it does not. Waits for that.
    void stop();

    [[nodiscard]] const QString &name() const { return m_name; }
    [[nodiscard]] qint64 pid() const { return m_process.processId(); }
    /// Where it listens, once it has said so.
    [[nodiscard]] const QString &place() const { return m_place; }

Q_SIGNALS:
    /// It listens.
    void ready();
    /// It has ended by itself; `how` says so in words.
    void died(const QString &how);

private:
    void readOutput();
    void readErrors();
    void end(int exitCode, QProcess::ExitStatus status);

    QString m_name;
    QFile m_log;
    QProcess m_process;
    QString m_place;
    QByteArray m_output; // until it is ready
    QByteArray m_lastError;
    bool m_isStopping = false;
};

} // namespace wmsg::cli
