// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/stop_signals.h"
#include "tools/wmsg/box_demo.h"
#include "tools/wmsg/box_sms_demo.h"
#include "tools/wmsg/child_program.h"
#include "tools/wmsg/kept_folder.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

namespace wmsg::cli {

/// What `wmsg box` was told.
struct BoxOptions {
    std::string folder;
    bool keep = false;
    std::vector<std::string> faults;
    std::string faultFile;
    bool hasNoModem = false;
    bool isDemo = false;
    bool isJson = false;
};

/// The programs of the box, one after the other as each needs those before, and their common end.
class BoxRun : public QObject {
    Q_OBJECT

public:
    explicit BoxRun(const BoxOptions &options);
    ~BoxRun() override;

    /// Runs until the user ends it, a program dies, or the demonstration is over. The exit code.
    [[nodiscard]] int run();

private:
    /// A program, and what it is told when its turn has come.
    struct Step {
        std::unique_ptr<ChildProgram> program;
        QStringList (BoxRun::*arguments)() const;
    };

    [[nodiscard]] QString prepareFolder();
    void plan();
    void startNext();
    [[nodiscard]] QStringList modemArguments() const;
    [[nodiscard]] QStringList telephonyArguments() const;
    [[nodiscard]] QStringList networkArguments() const;
    [[nodiscard]] QStringList daemonArguments() const;
    [[nodiscard]] bool hasModem() const { return !m_options.hasNoModem; }
    [[nodiscard]] QString placeOf(const QString &program) const;
    void welcome();
    void tellInWords() const;
    void tellInJson() const;
    void startDemo();
    void startSmsDemo();
    void fail(const QString &problem);
    void finish(int exitCode);
    [[nodiscard]] QString path(const QString &name) const { return m_folder + u'/' + name; }
    [[nodiscard]] QString logOf(const QString &program) const
    {
        return path(program) + QStringLiteral(".log");
    }

    int m_argumentCount = 1;
    char m_name[5] = "wmsg";
    char *m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application;
    service::StopSignals m_signals;
    const BoxOptions &m_options;
    std::unique_ptr<QTemporaryDir> m_temporary;
    QString m_folder;
    std::vector<Step> m_steps; // each needs those before it
    size_t m_started = 0;
    std::unique_ptr<BoxDemo> m_demo;
    std::unique_ptr<BoxSmsDemo> m_smsDemo;
    std::unique_ptr<KeptFolder> m_kept;
    bool m_hasEnded = false;
    int m_exitCode = 0;
};

} // namespace wmsg::cli
