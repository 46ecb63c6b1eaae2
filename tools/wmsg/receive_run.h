// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/kept_folder.h"
#include "tools/wmsg/message_folder.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/session_run.h"
#include "tools/wmsg/store_folder.h"

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <optional>

namespace wmsg::cli {

/// What is to be received, and where to.
struct ReceiveRequest {
    QStringList appIds; ///< None: messages that are for no application.
    int count = 0; ///< 0: until interrupted.
    QByteArray saveDirectory;
    QByteArray partsDirectory;
    QString spool; ///< Of the daemon, which sets messages aside there.
    std::optional<StoreFolder> store;
    Detail detail = Detail::Short;
    bool isJson = false;
};

/// Waits for messages, shows and saves them.
///
/// A message that cannot be saved, in files or in the store, is not lost: the program ends before
/// it has told the daemon that it has the message, so that the daemon hands it out again.
class ReceiveRun : public SessionRun {
public:
    explicit ReceiveRun(ReceiveRequest request);

    /// False, with a complaint, when nothing could be saved.
    [[nodiscard]] bool openFolders() const;

private:
    void begin() override;
    void interrupted() override;
    void timedOut() override;
    void disconnected(const QString &problem) override;
    void statusChanged(int id, WMFM::STATUS_T status) override;
    void msgIncome(WMFMMsg *msg) override;

    bool save(const WMMSMsg &message);
    void show(const WMMSMsg &message);
    void tell(const QString &line) const;
    void endEarly();
    void end(bool isFine);

    ReceiveRequest m_request;
    std::optional<MessageFolder> m_messages;
    std::optional<MessageFolder> m_parts;
    KeptFolder m_kept;
    QHash<int, QString> m_registrations;
    QByteArray m_saved; // where the last message is
    int m_number = 0;
};

} // namespace wmsg::cli
