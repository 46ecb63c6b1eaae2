// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/program.h"
#include "services/mmsproxyd/retrieval_queue.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <chrono>
#include <sys/types.h>
#include <vector>

namespace wmsg::proxy {

/// Config is what the daemon was told, by its options and by its configuration file. Each option
/// stands under the same name in the file; the command line wins.
struct Config {
    QString proxySocket = QStringLiteral("/tmp/mmsproxy");
    QString settingsSocket = QStringLiteral("/tmp/extra-mmserver");
    QString pushSocket = QStringLiteral("/tmp/wmsg-mmspush");
    mode_t socketMode = 0600;
    QString spool; ///< always absolute

    QString mmsc; ///< empty: nothing can be sent
    QString httpProxy;
    QString interfaceName;
    QString authorities; ///< a file of certificates, absolute; empty: those of the system
    QString userAgent; ///< as readConfig() gives it: "wmsg/1.0.0" or the like
    QString profileUrl;
    std::chrono::seconds connectTimeout{30};
    std::chrono::seconds stallTimeout{60};

    qint64 maxSize = qint64(300) * 1024; ///< of a message that is sent, in bytes
    qint64 maxIncoming = qint64(10) * 1024 * 1024; ///< of one that is retrieved
    std::vector<std::chrono::milliseconds> retryPauses;
    RetrievalMode retrieval = RetrievalMode::Immediate;
    bool takesShortMessages = true; ///< to the port for pushes, from the telephony service
    QString settingsUri; ///< what the settings server answers; null: the MMSC

    QString logFile; ///< of the library; empty: nowhere
    bool isVerbose = false; ///< the log of the library goes to standard error
};

/// What reading options came to; to run with `config`, if at all.
struct ConfigReading : service::OptionsReading {
    Config config;
};

/// readConfig reads the options of the program, and the configuration file that they name.
[[nodiscard]] ConfigReading readConfig(int argc, const char *const *argv);

} // namespace wmsg::proxy
