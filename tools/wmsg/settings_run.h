// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/session_run.h"

namespace wmsg::cli {

/// Asks the settings server once and shows what it answers. The connection of the session to the
/// proxy daemon is not used: it may be down.
class SettingsRun : public SessionRun {
public:
    explicit SettingsRun(bool isJson) : m_isJson(isJson) { }

private:
    void begin() override;
    void interrupted() override { }
    void timedOut() override { }
    void disconnected(const QString &) override { }

    void show(const WMMSSession::MMS_Setting_Info &info) const;

    bool m_isJson;
};

} // namespace wmsg::cli
