// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/messages.h"
#include "core/wmfmlistener.h"
#include "mms/session/wmmssession.h"
#include "services/mmsproxyd/proxy_daemon.h"
#include "sim/mmsc/options.h"
#include "sim/mmsc/simulator.h"

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTemporaryDir>

#include <memory>

// Messages through everything: a session hands one to the daemon, which posts it to the MMSC
// simulator, is notified, fetches it and hands it back to the session. All three run in one
// process, with real sockets and a real spool; the next message is sent when the last has arrived.
//
// The daemon listens on the path of the proxy socket: do not run it while another one runs.

namespace {

/// The daemon and the network, in a folder of their own.
class Desk {
public:
    Desk() : m_application(m_count, m_names)
    {
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*.info=false"));
        bench::discardLog();
        wmsg::sim::Options network;
        network.defaultPush = path("push").toStdString();
        m_network = std::make_unique<wmsg::sim::Simulator>(network);
        check(m_network->start());
        wmsg::proxy::Config config;
        config.settingsSocket = path("settings");
        config.pushSocket = path("push");
        config.spool = path("spool");
        config.mmsc = m_network->url();
        config.maxSize = 1024 * 1024;
        config.takesShortMessages = false;
        m_daemon = std::make_unique<wmsg::proxy::ProxyDaemon>(config);
        check(m_daemon->start());
    }
    ~Desk()
    {
        m_daemon.reset();
        m_network.reset();
        // What these leave to the loop.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    Q_DISABLE_COPY_MOVE(Desk)

private:
    [[nodiscard]] QString path(const char *name) const
    {
        return m_folder.filePath(QString::fromLatin1(name));
    }
    static void check(const QString &problem)
    {
        if (!problem.isEmpty()) {
            qFatal("%s", qPrintable(problem));
        }
    }

    int m_count = 1;
    char m_name[6] = "bench";
    char *m_names[2] = {m_name, nullptr};
    QCoreApplication m_application;
    QTemporaryDir m_folder;
    std::unique_ptr<wmsg::sim::Simulator> m_network;
    std::unique_ptr<wmsg::proxy::ProxyDaemon> m_daemon;
};

class Listener final : public WMFMListener {
public:
    using WMFMListener::WMFMListener;
    QString listenerName() const override { return QStringLiteral("bench"); }
    void statusChanged(int, WMFM::STATUS_T status) override { isSent = status == WMFM::STATUS_OK; }
    void msgIncome(WMFMMsg *msg) override { arrived.reset(static_cast<WMMSMsg *>(msg)); }

    bool isSent = false;
    std::unique_ptr<WMMSMsg> arrived;
};

/// Waits until the message that was sent is here.
bool waitFor(const Listener &listener)
{
    QDeadlineTimer deadline(60000);
    while (!(listener.isSent && listener.arrived) && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return listener.isSent && listener.arrived;
}

void throughDaemonAndNetwork(benchmark::State &state)
{
    Desk desk;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    Listener listener(&session);
    session.setListener(&listener, status);
    const int size = static_cast<int>(state.range(0));
    for (auto _ : state) {
        WMMSMsg message = bench::retrieval(size);
        message.setTo(WMFMEntry(1, QStringLiteral("+15550101")));
        listener.isSent = false;
        listener.arrived.reset();
        if (session.send(&message, status) < 0 || !waitFor(listener)
            || listener.arrived->getMultiParts().subParts()->size() != 4) {
            state.SkipWithError("not arrived");
            return;
        }
    }
    state.counters["messages"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(throughDaemonAndNetwork)->Arg(10 * 1024)->Arg(300 * 1024)->UseRealTime();
