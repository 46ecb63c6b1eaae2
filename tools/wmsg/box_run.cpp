// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/box_run.h"

#include "services/common/local_address.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

QJsonObject objectOf(const ChildProgram &program, const QString &log)
{
    return {{u"name"_s, program.name()}, {u"pid"_s, program.pid()}, {u"log"_s, log}};
}

} // namespace

BoxRun::BoxRun(const BoxOptions &options)
    : m_application(m_argumentCount, m_arguments), m_options(options)
{
    connect(&m_signals, &service::StopSignals::stopped, this, [this] { finish(ExitFine); });
}

BoxRun::~BoxRun() = default;

int BoxRun::run()
{
    const QString problem = prepareFolder();
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitBadInput;
    }
    startNetwork();
    if (!m_hasEnded) {
        QCoreApplication::exec();
    }
    m_demo.reset();
    for (ChildProgram *program : {m_daemon.get(), m_network.get()}) {
        if (program) {
            program->stop();
        }
    }
    const bool isKept = m_options.keep || m_exitCode != ExitFine;
    if (m_temporary && isKept) {
        m_temporary->setAutoRemove(false);
        complain(u"logs and PDUs are kept in %1"_s.arg(m_folder));
    }
    return finishOutput() ? m_exitCode : ExitBadInput;
}

QString BoxRun::prepareFolder()
{
    if (m_options.folder.empty()) {
        m_temporary = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/wmsg-box-XXXXXX"_s);
        if (!m_temporary->isValid()) {
            return u"no folder for the box: "_s + m_temporary->errorString();
        }
        m_folder = m_temporary->path();
    } else {
        m_folder = QFileInfo(QString::fromStdString(m_options.folder)).absoluteFilePath();
    }
    if (!service::LocalAddress(path(u"push"_s)).isPossible()) {
        return m_folder + u": the name is too long for a socket in this folder"_s;
    }
    return QDir().mkpath(m_folder) ? QString() : m_folder + u": the folder cannot be made"_s;
}

void BoxRun::start(ChildProgram &program, const QStringList &arguments)
{
    connect(&program, &ChildProgram::died, this, &BoxRun::fail);
    const QString problem = program.start(arguments);
    if (!problem.isEmpty()) {
        fail(problem);
    }
}

void BoxRun::startNetwork()
{
    QStringList arguments = {u"--default-push"_s, path(u"push"_s),   u"--pdu-log"_s,
                             path(u"pdus"_s),     u"--push-retry"_s, u"0.5"_s};
    for (const std::string &fault : m_options.faults) {
        arguments << u"--fault"_s << QString::fromStdString(fault);
    }
    if (!m_options.faultFile.empty()) {
        arguments << u"--faults"_s << QString::fromStdString(m_options.faultFile);
    }
    m_network = std::make_unique<ChildProgram>(u"wmsg-sim-mmsc"_s, path(u"wmsg-sim-mmsc.log"_s));
    connect(m_network.get(), &ChildProgram::ready, this, &BoxRun::startDaemon);
    start(*m_network, arguments);
}

void BoxRun::startDaemon()
{
    m_daemon = std::make_unique<ChildProgram>(u"wmsg-mmsproxyd"_s, path(u"wmsg-mmsproxyd.log"_s));
    connect(m_daemon.get(), &ChildProgram::ready, this, &BoxRun::welcome);
    start(*m_daemon,
          {u"--mmsc"_s, m_network->place(), u"--spool"_s, path(u"spool"_s), u"--push-socket"_s,
           path(u"push"_s), u"--retry"_s, u"1,5,15,60"_s});
}

void BoxRun::welcome()
{
    if (m_options.isJson) {
        tellInJson();
    } else {
        tellInWords();
    }
    std::fflush(stdout);
    if (m_options.isDemo) {
        startDemo();
    }
}

void BoxRun::tellInWords() const
{
    say(u"The box is ready in %1\n"_s.arg(printable(m_folder)));
    say(u"  wmsg-mmsproxyd   %1 (process %2)\n"_s.arg(m_daemon->place()).arg(m_daemon->pid()));
    say(u"  wmsg-sim-mmsc    %1 (process %2)\n"_s.arg(m_network->place()).arg(m_network->pid()));
    if (m_options.isDemo) {
        return;
    }
    say(u"Every number leads to this box. Try, in other terminals:\n"
        "  wmsg receive\n"
        "  wmsg send --to +15550101 --text \"Hello\"\n"
        "  wmsg decode %1/pdus/*\n"
        "Ctrl-C ends it.\n"_s.arg(printable(m_folder)));
}

void BoxRun::tellInJson() const
{
    const QJsonObject object = {
        {u"folder"_s, m_folder},
        {u"mmsc"_s, m_network->place()},
        {u"proxySocket"_s, m_daemon->place()},
        {u"pushSocket"_s, path(u"push"_s)},
        {u"pdus"_s, path(u"pdus"_s)},
        {u"programs"_s,
         QJsonArray{objectOf(*m_network, path(u"wmsg-sim-mmsc.log"_s)),
                    objectOf(*m_daemon, path(u"wmsg-mmsproxyd.log"_s))}},
    };
    say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

void BoxRun::startDemo()
{
    m_demo = std::make_unique<BoxDemo>(m_folder);
    connect(m_demo.get(), &BoxDemo::succeeded, this, [this] { finish(ExitFine); });
    connect(m_demo.get(), &BoxDemo::failed, this, &BoxRun::fail);
    m_demo->start();
}

void BoxRun::fail(const QString &problem)
{
    if (!m_hasEnded) {
        complain(problem);
        finish(ExitBadInput);
    }
}

void BoxRun::finish(int exitCode)
{
    if (!m_hasEnded) {
        m_hasEnded = true;
        m_exitCode = exitCode;
        QCoreApplication::quit();
    }
}

} // namespace wmsg::cli
