// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/progress_bar.h"
#include "tools/wmsg/session_run.h"
#include "tools/wmsg/store_folder.h"

#include <mms/model/wmmsmsg.h>

#include <optional>

namespace wmsg::cli {

/// Sends one message and waits for its outcome, or until the daemon has taken it.
///
/// A session that registered no application is given messages that arrive. This one registers a
/// name of its own before anything else, so that it is never given one.
class SendRun : public SessionRun {
public:
    enum class Wait { ForOutcome, UntilTaken };
    enum class Output { Words, Json };

    SendRun(WMMSMsg &message, Wait wait, Output output);

    /// The message is to be stored when it is sent, or taken. False, with a complaint, when it
    /// could not be.
    [[nodiscard]] bool keepIn(const StoreFolder &folder);

private:
    void begin() override;
    void interrupted() override;
    void timedOut() override;
    void disconnected(const QString &problem) override;
    void statusChanged(int id, WMFM::STATUS_T status) override;
    void progress(int id, int sent, int total) override;

    void send();
    void registered(int status);
    void outcome(int status);
    void tell(const QString &line);
    void end(const char *outcome, int status, const QString &line);
    [[nodiscard]] bool store();
    void showJson(const char *outcome, int status) const;
    void showWords() const;
    [[nodiscard]] qint64 size() const;
    [[nodiscard]] QString doneInWords() const;

    WMMSMsg &m_message;
    Wait m_wait;
    Output m_output;
    std::optional<StoreFolder> m_store;
    ProgressBar m_bar;
    QString m_name; // what this session registers
    int m_registration = -1;
    int m_request = -1;
    int m_mark = -1; // the request behind the one that sends
    int m_retries = 0;
    bool m_isAborted = false;
};

} // namespace wmsg::cli
