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

#include <cstdio>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// The programs, in the order in which they start.
constexpr auto kModem = "wmsg-sim-modem"_L1;
constexpr auto kTelephony = "wmsg-telephonyd"_L1;
constexpr auto kNetwork = "wmsg-sim-mmsc"_L1;
constexpr auto kDaemon = "wmsg-mmsproxyd"_L1;

// Sockets in the folder.
constexpr auto kPush = "push"_L1;
constexpr auto kControl = "modem-control"_L1;

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
    plan();
    startNext();
    if (!m_hasEnded) {
        QCoreApplication::exec();
    }
    m_demo.reset();
    m_smsDemo.reset();
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        step->program->stop();
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
    if (!service::LocalAddress(hasModem() ? path(kControl) : path(kPush)).isPossible()) {
        return m_folder + u": the name is too long for a socket in this folder"_s;
    }
    return QDir().mkpath(m_folder) ? QString() : m_folder + u": the folder cannot be made"_s;
}

void BoxRun::plan()
{
    const auto add = [this](const QString &name, QStringList (BoxRun::*arguments)() const) {
        auto program = std::make_unique<ChildProgram>(name, logOf(name));
        connect(program.get(), &ChildProgram::ready, this, &BoxRun::startNext);
        connect(program.get(), &ChildProgram::died, this, &BoxRun::fail);
        m_steps.push_back({std::move(program), arguments});
    };
    if (hasModem()) {
        add(kModem, &BoxRun::modemArguments);
        add(kTelephony, &BoxRun::telephonyArguments);
    }
    add(kNetwork, &BoxRun::networkArguments);
    add(kDaemon, &BoxRun::daemonArguments);
}

void BoxRun::startNext()
{
    if (m_started == m_steps.size()) {
        welcome();
        return;
    }
    const Step &step = m_steps[m_started++];
    const QString problem = step.program->start((this->*step.arguments)());
    if (!problem.isEmpty()) {
        fail(problem);
    }
}

QStringList BoxRun::modemArguments() const
{
    return {u"--pty"_s,      path(u"modem"_s), u"--control"_s, path(kControl),
            u"--loopback"_s, u"--pdu-log"_s,   path(u"sms"_s)};
}

QStringList BoxRun::telephonyArguments() const
{
    return {u"--backend"_s,  u"gammu"_s,   u"--device"_s,
            placeOf(kModem), u"--spool"_s, path(u"telephony"_s)};
}

QStringList BoxRun::networkArguments() const
{
    QStringList arguments = {
        u"--default-push"_s, hasModem() ? u"sms:"_s + path(kControl) : path(kPush),
        u"--pdu-log"_s,      path(u"pdus"_s),
        u"--push-retry"_s,   u"0.5"_s};
    for (const std::string &fault : m_options.faults) {
        arguments << u"--fault"_s << QString::fromStdString(fault);
    }
    if (!m_options.faultFile.empty()) {
        arguments << u"--faults"_s << QString::fromStdString(m_options.faultFile);
    }
    return arguments;
}

QStringList BoxRun::daemonArguments() const
{
    return {u"--mmsc"_s,        placeOf(kNetwork),
            u"--spool"_s,       path(u"spool"_s),
            u"--push-socket"_s, path(kPush),
            u"--retry"_s,       u"1,5,15,60"_s,
            u"--telephony"_s,   hasModem() ? u"yes"_s : u"no"_s};
}

QString BoxRun::placeOf(const QString &program) const
{
    for (const Step &step : m_steps) {
        if (step.program->name() == program) {
            return step.program->place();
        }
    }
    return {};
}

void BoxRun::welcome()
{
    m_kept = std::make_unique<KeptFolder>(path(u"spool"_s));
    connect(m_kept.get(), &KeptFolder::setAside, this, &complain);
    const QString before = m_kept->watch();
    if (!before.isEmpty()) {
        complain(before);
    }
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
    constexpr int kWidth = 16;
    say(u"The box is ready in %1\n"_s.arg(printable(m_folder)));
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        say(u"  %1 %2 (process %3)\n"_s.arg(step->program->name(), -kWidth)
                .arg(printable(step->program->place()))
                .arg(step->program->pid()));
    }
    if (m_options.isDemo) {
        return;
    }
    say(u"Every number leads to this box. Try, in other terminals:\n"
        "  wmsg receive\n"
        "  wmsg send --to +15550101 --text \"Hello\"\n"
        "  wmsg decode %1/pdus/*\n"_s.arg(printable(m_folder)));
    if (hasModem()) {
        say(u"  wmsg sms receive\n"
            "  wmsg sms send --to +15550101 --text \"Hello\"\n"
            "  wmsg decode %1/sms/*\n"_s.arg(printable(m_folder)));
    }
    say(u"Ctrl-C ends it.\n"_s);
}

void BoxRun::tellInJson() const
{
    QJsonArray programs;
    for (const Step &step : m_steps) {
        programs.append(QJsonObject{{u"name"_s, step.program->name()},
                                    {u"pid"_s, step.program->pid()},
                                    {u"log"_s, logOf(step.program->name())}});
    }
    QJsonObject object = {
        {u"folder"_s, m_folder},
        {u"mmsc"_s, placeOf(kNetwork)},
        {u"proxySocket"_s, placeOf(kDaemon)},
        {u"pushSocket"_s, path(kPush)},
        {u"pdus"_s, path(u"pdus"_s)},
        {u"programs"_s, programs},
    };
    if (hasModem()) {
        object.insert(u"telephonySocket"_s, placeOf(kTelephony));
        object.insert(u"modem"_s, placeOf(kModem));
        object.insert(u"modemControl"_s, path(kControl));
        object.insert(u"shortMessages"_s, path(u"sms"_s));
    }
    say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

void BoxRun::startDemo()
{
    m_demo = std::make_unique<BoxDemo>(m_folder);
    connect(m_demo.get(), &BoxDemo::succeeded, this, [this] {
        if (hasModem()) {
            startSmsDemo();
        } else {
            finish(ExitFine);
        }
    });
    connect(m_demo.get(), &BoxDemo::failed, this, &BoxRun::fail);
    m_demo->start();
}

void BoxRun::startSmsDemo()
{
    m_smsDemo = std::make_unique<BoxSmsDemo>();
    connect(m_smsDemo.get(), &BoxSmsDemo::succeeded, this, [this] { finish(ExitFine); });
    connect(m_smsDemo.get(), &BoxSmsDemo::failed, this, &BoxRun::fail);
    m_smsDemo->start();
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
