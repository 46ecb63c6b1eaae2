// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>
#include <linux/prctl.h>
#include <memory>
#include <random>
#include <sys/prctl.h>

/// The programs of the end-to-end tests, each in a process of its own.

/// A program and the lines it prints. It ends with its owner, or with the test when that crashes.
class Program {
public:
    Program() = default;
    ~Program()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.closeWriteChannel();
            m_process.terminate();
            if (!m_process.waitForFinished(20000)) {
                m_process.kill();
                m_process.waitForFinished();
            }
        }
    }
    Q_DISABLE_COPY_MOVE(Program)

    /// Starts it, and waits for a first line that begins with `ready`.
    void start(const QString &program, const QStringList &arguments, const QString &ready,
               const QString &errorFile = QString())
    {
        m_lines.clear();
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        if (errorFile.isEmpty()) {
            m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        } else {
            m_process.setStandardErrorFile(errorFile, QIODevice::Append);
        }
        m_process.start(program, arguments);
        QTRY_VERIFY2_WITH_TIMEOUT(!lines().isEmpty(), qPrintable(program + " says nothing"), 60000);
        QVERIFY2(m_lines[0].startsWith(ready), qPrintable(m_lines[0]));
    }
    /// Ends it at once, as a crash would.
    void kill()
    {
        m_process.kill();
        QVERIFY(m_process.waitForFinished());
    }
    void say(const QString &line) { m_process.write(line.toUtf8() + '\n'); }

    /// All lines so far.
    const QStringList &lines()
    {
        while (m_process.canReadLine()) {
            m_lines += QString::fromUtf8(m_process.readLine()).chopped(1);
        }
        return m_lines;
    }

private:
    QProcess m_process;
    QStringList m_lines;
};

/// An application, and what it has heard.
class Application {
public:
    Application() { m_program.start(WMSG_APPLICATION, {}, "ready"); }

    /// Says a line that makes a request, and returns the number of the request.
    int request(const QString &line)
    {
        const qsizetype known = with("request ").size();
        m_program.say(line);
        waitFor([&] { return with("request ").size() > known; }, "request " + line);
        return with("request ").value(known).section(' ', 1).toInt();
    }
    void say(const QString &line) { m_program.say(line); }

    QStringList with(const QString &beginning)
    {
        return m_program.lines().filter(
            QRegularExpression('^' + QRegularExpression::escape(beginning)));
    }
    QStringList messages() { return with("message "); }
    /// What was told of a request: "0", or "256 0".
    QString statuses(int request)
    {
        QStringList told;
        for (const QString &line : with(QString("status %1 ").arg(request))) {
            told += line.section(' ', 2);
        }
        return told.join(' ');
    }
    /// The number of bytes that were told last.
    int progress(int request)
    {
        return with(QString("progress %1 ").arg(request)).value(0).isEmpty()
            ? 0
            : with(QString("progress %1 ").arg(request)).last().section(' ', 2, 2).toInt();
    }
    int total(int request)
    {
        const QStringList told = with(QString("progress %1 ").arg(request));
        return told.isEmpty() ? 0 : told.last().section(' ', 3).toInt();
    }
    bool isClosed() { return !with("closed").isEmpty(); }

    template <typename Condition> void waitFor(Condition condition, const QString &what)
    {
        // What follows upon a failure tells nothing new.
        if (!QTest::currentTestFailed() && !QTest::qWaitFor(condition, 60000)) {
            QTest::qFail(
                qPrintable("waited for " + what + "; heard:\n" + m_program.lines().join('\n')),
                __FILE__, __LINE__);
        }
    }

private:
    Program m_program;
};

/// How the MMSC reaches the phone, where that is not the push socket.
struct Network {
    QString way; ///< Of short messages; empty: the push socket, and the daemon hears no others.
    QString sender = "+15550100";
    QString notifyAgain = "5"; ///< Seconds.
};

/// A network with an MMSC, a phone with a proxy daemon, and a folder for both.
class World {
public:
    /// `faults` are lines of the MMSC's plan.
    explicit World(const QStringList &faults = {}, const QStringList &daemonOptions = {},
                   const Network &network = {})
        : m_daemonOptions(daemonOptions)
    {
        QVERIFY(m_folder.isValid());
        m_daemonOptions += {"--telephony", network.way.isEmpty() ? "no" : "yes"};
        QStringList arguments{"--default-push", network.way.isEmpty() ? path("push") : network.way,
                              "--pdu-log",      path("pdus"),
                              "--push-retry",   "0.2",
                              "--notify-again", network.notifyAgain,
                              "--sender",       network.sender};
        for (const QString &fault : faults) {
            arguments += {"--fault", fault};
        }
        m_mmsc.start(WMSG_SIM_MMSC, arguments, "listening on http://", path("mmsc.log"));
        m_url = m_mmsc.lines()[0].section(' ', 2);
        startDaemon();
    }
    ~World()
    {
        if (QTest::currentTestFailed()) {
            qWarning("---- MMSC\n%s---- daemon\n%s", read("mmsc.log").constData(),
                     read("daemon.log").constData());
        }
    }

    void startDaemon()
    {
        m_daemon = std::make_unique<Program>();
        m_daemon->start(WMSG_MMSPROXYD,
                        QStringList{"--mmsc", m_url, "--spool", path("spool"), "--push-socket",
                                    path("push"), "--retry", "0.2,0.2,0.2"}
                            + m_daemonOptions,
                        "listening on /tmp/mmsproxy", path("daemon.log"));
    }
    /// SIGKILL.
    void killDaemon() { m_daemon->kill(); }

    /// Composes a message with a text and a file, and returns its path.
    QString compose(const QString &subject, const QString &file, const QStringList &more = {})
    {
        const QString result = path(subject + ".mms");
        const QStringList arguments =
            QStringList{"compose",  "--pdu", "stored", "--subject", subject, "--text", subject,
                        "--attach", file,    "--from", "+15550100", "-o",    result}
            + more;
        if (QProcess::execute(WMSG_PROGRAM, arguments) != 0) {
            QTest::qFail("the message cannot be composed", __FILE__, __LINE__);
        }
        return result;
    }
    /// Makes a file like a photo: bytes that nothing compresses, behind the mark of a JPEG file.
    QString photo(int size)
    {
        std::mt19937 random(static_cast<unsigned>(size));
        QByteArray bytes = QByteArray::fromHex("FFD8FFE0");
        while (bytes.size() < size) {
            bytes.append(char(random()));
        }
        const QString result = path(QString("photo-%1.jpg").arg(size));
        QFile file(result);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            QTest::qFail("the photo cannot be written", __FILE__, __LINE__);
        }
        return result;
    }
    static QString hashOf(const QString &file)
    {
        QFile opened(file);
        (void)opened.open(QIODevice::ReadOnly);
        return QCryptographicHash::hash(opened.readAll(), QCryptographicHash::Sha256).toHex();
    }

    /// How many PDUs of a kind the MMSC has heard or said: "in-send-req".
    [[nodiscard]] qsizetype pdus(const QString &kind) const
    {
        return QDir(path("pdus")).entryList({"*-" + kind + ".pdu"}).size();
    }
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
    QStringList m_daemonOptions;
    QString m_url;
    Program m_mmsc;
    std::unique_ptr<Program> m_daemon;
};
