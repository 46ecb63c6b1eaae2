// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfm.h"
#include "wmsg_export.h"

#include <QtCore/QObject>

#include <memory>

class UTIL_TAPI_Device;
class UTIL_TAPI_Event;
class WSMSSession;

/// WSMSClient is the ear of a short message session: it turns the events of the telephony service
/// into calls of the session's listener. Each session makes and owns one; applications do not.
///
/// The results of sends become WMFMListener::statusChanged, with the reference and the status as
/// the service told them. Messages become a WSMSMsg for WMFMListener::msgIncome, which owns it from
/// then on. All of it comes from the event loop, and a listener may close the session from inside
/// its calls. A record that is shorter than it claims is dropped.
class WMSG_EXPORT WSMSClient : public QObject {
    Q_OBJECT

public:
    /// WSMSClient() makes a client of no session, without a telephony client.
    WSMSClient();
    ~WSMSClient() override;

    /// loadSession makes the telephony client and its device, unless they are there, and `session`
    /// the one to report to. It sets `status` to STATUS_OK, or to STATUS_FAIL, with the session as
    /// it was, when there is no telephony service.
    void loadSession(WSMSSession *session, WMFM::STATUS_T &status);

    /// getSession returns the session to report to, null before there is one.
    WSMSSession *getSession() const { return m_session; }

    /// getTapiHandle returns the handle of the telephony client, below 0 when there is none.
    [[nodiscard]] int getTapiHandle() const { return m_tapiHandle; }

public Q_SLOTS:
    /// ProcessTAPIEvent tells the listener of one event; events of other kinds than those above are
    /// ignored.
    void ProcessTAPIEvent(UTIL_TAPI_Event *pTapiEvent);

private:
    void tellResult(const UTIL_TAPI_Event &event) const;
    void tellMessage(UTIL_TAPI_Event &event) const;

    WSMSSession *m_session = nullptr;
    qint32 m_tapiHandle = -1;
    std::unique_ptr<UTIL_TAPI_Device> m_device;
};
