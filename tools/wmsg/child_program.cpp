// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/child_program.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStandardPaths>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kPatience = 5000; // milliseconds
constexpr qsizetype kLongestLine = 4096;

QString find(const QString &name)
{
    const QString beside =
        QStandardPaths::findExecutable(name, {QCoreApplication::applicationDirPath()});
    return beside.isEmpty() ? QStandardPaths::findExecutable(name) : beside;
}

QString inWords(int exitCode, QProcess::ExitStatus status)
{
    return status == QProcess::CrashExit ? u"was killed by signal %1"_s.arg(exitCode)
                                         : u"ended with code %1"_s.arg(exitCode);
}

// Between fork and exec. Its own group keeps it from the Ctrl-C of the terminal: it is stopped in
// its turn.
void tieTo(pid_t parent)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(1); // it went before it was watched
    }
}

} // namespace

ChildProgram::ChildProgram(QString name, const QString &logFile, QObject *parent)
    : QObject(parent), m_name(std::move(name)), m_log(logFile)
{
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setChildProcessModifier([self = ::getpid()] { tieTo(self); });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ChildProgram::readOutput);
    connect(&m_process, &QProcess::readyReadStandardError, this, &ChildProgram::readErrors);
    connect(&m_process, &QProcess::finished, this, &ChildProgram::end);
}

ChildProgram::~ChildProgram()
{
    stop();
}

QString ChildProgram::start(const QStringList &arguments)
{
    const QString path = find(m_name);
    if (path.isEmpty()) {
        return u"%1: there is no such program, neither beside wmsg nor in PATH"_s.arg(m_name);
    }
    if (!m_log.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        return u"%1: %2"_s.arg(m_log.fileName(), m_log.errorString());
    }
    m_process.start(path, arguments);
    return m_process.waitForStarted() ? QString() : u"%1: %2"_s.arg(path, m_process.errorString());
}

void ChildProgram::stop()
{
    m_isStopping = true;
    if (m_process.state() == QProcess::NotRunning) {
        return;
    }
    m_process.terminate();
    if (!m_process.waitForFinished(kPatience)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void ChildProgram::readOutput()
{
    const QByteArray bytes = m_process.readAllStandardOutput();
    m_log.write(bytes);
    if (!m_place.isEmpty() || m_output.size() > kLongestLine) {
        return;
    }
    m_output += bytes;
    static const QByteArray kReady = QByteArrayLiteral("listening on ");
    const qsizetype end = m_output.indexOf('\n');
    if (end >= 0 && m_output.startsWith(kReady)) {
        m_place = QString::fromUtf8(m_output.sliced(kReady.size(), end - kReady.size()));
        Q_EMIT ready();
    }
}

void ChildProgram::readErrors()
{
    const QByteArray bytes = m_process.readAllStandardError();
    m_log.write(bytes);
    const QByteArray lines = (m_lastError + '\n' + bytes).trimmed();
    m_lastError = lines.mid(lines.lastIndexOf('\n') + 1).left(kLongestLine);
}

void ChildProgram::end(int exitCode, QProcess::ExitStatus status)
{
    readOutput();
    readErrors();
    if (m_isStopping) {
        return;
    }
    const QString last = QString::fromUtf8(m_lastError);
    Q_EMIT died(last.startsWith(m_name)
                    ? last
                    : u"%1 %2 (see %3)"_s.arg(m_name, inWords(exitCode, status), m_log.fileName()));
}

} // namespace wmsg::cli
