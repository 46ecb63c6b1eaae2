// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/stop_signals.h"
#include "tools/wmsg/box_demo.h"
#include "tools/wmsg/child_program.h"

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
    bool isDemo = false;
    bool isJson = false;
};

/// The programs of the box, one after the other as each needs the one before, and their common end.
class BoxRun : public QObject {
    Q_OBJECT

public:
    explicit BoxRun(const BoxOptions &options);
    ~BoxRun() override;

    /// Runs until the user ends it, a program dies, or the demonstration is over. The exit code.
    [[nodiscard]] int run();

private:
    [[nodiscard]] QString prepareFolder();
    void startNetwork();
    void startDaemon();
    void start(ChildProgram &program, const QStringList &arguments);
    void welcome();
    void tellInWords() const;
    void tellInJson() const;
    void startDemo();
    void fail(const QString &problem);
    void finish(int exitCode);
    [[nodiscard]] QString path(const QString &name) const { return m_folder + u'/' + name; }

    int m_argumentCount = 1;
    char m_name[5] = "wmsg";
    char *m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application;
    service::StopSignals m_signals;
    const BoxOptions &m_options;
    std::unique_ptr<QTemporaryDir> m_temporary;
    QString m_folder;
    std::unique_ptr<ChildProgram> m_network;
    std::unique_ptr<ChildProgram> m_daemon;
    std::unique_ptr<BoxDemo> m_demo;
    bool m_hasEnded = false;
    int m_exitCode = 0;
};

} // namespace wmsg::cli
