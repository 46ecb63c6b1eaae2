// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"

#include <platform/telephony/tapi_client.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace wmsg::telephonyd {

/// A message that is to leave as one short message. It has been measured: it fits.
struct OutgoingSms {
    quint64 id = 0; ///< Modem::sent() tells the outcome under it
    telephony::Coding coding = telephony::Coding::Ucs2; ///< Ucs2, Gsm7 or Binary
    QByteArray header; ///< the user data header with its length octet; empty: none
    QByteArray serviceCenter; ///< empty: the modem's own
    QByteArray destination; ///< digits, perhaps with a plus in front
    QByteArray body; ///< text of both codings in UTF-16, little-endian; octets
};

/// What became of one attempt to send.
struct SendOutcome {
    enum Kind {
        Sent, ///< the network has it
        Refused, ///< network or modem said no, and `cause` says why
        NotNow, ///< the modem is gone, or never had it: the message stays queued
    };

    Kind kind = NotNow;
    qint32 networkReference = 0; ///< 0 when the network gave none
    qint32 cause = 0; ///< of a refusal, 1 to 65535
    QString text; ///< for the log: why it was not sent
};

/// One short message that the modem has, a part of a longer one as often as not.
struct IncomingSms {
    telephony::Coding coding = telephony::Coding::Ucs2; ///< Ucs2 or Binary
    QByteArray header; ///< the user data header with its length octet; empty: none
    QByteArray serviceCenter;
    QByteArray sender;
    QByteArray body; ///< text in UTF-16, little-endian; octets
    qint64 time = 0; ///< seconds since 1970 UTC, by the service centre's clock; 0: not known
    QByteArray place; ///< the modem's own word for where it lies; empty: nowhere
};

/// Modem is what a back end of the daemon is: something that sends and receives single short
/// messages. It is used in the thread of the daemon and never blocks it, so that everything is
/// answered by a signal, at the earliest when the event loop runs.
///
/// What goes wrong with the device is the modem's own affair: it tells of it as a state, tries
/// again with growing pauses, and is ready again some time. It keeps no message.
class Modem : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// start looks for the device, once; from then on signals come.
    virtual void start() = 0;

    /// send tries to send one message; sent() tells the outcome. The next one is not asked for
    /// before. It may be called in any state.
    virtual void send(const OutgoingSms &message) = 0;

    /// forget deletes a message of arrived() from the modem, because it is safely kept elsewhere;
    /// forgotten() tells when that is done. One that was not forgotten is told again by the next
    /// modem, and may be by this one. A message without a place needs no forgetting.
    virtual void forget(const QByteArray &place) = 0;

    /// setServiceCenter makes `number` the one that messages use which name none;
    /// serviceCenterSet() tells whether it did. The next one is not asked for before.
    virtual void setServiceCenter(const QByteArray &number) = 0;

Q_SIGNALS:
    /// stateChanged tells the state of the modem and its service centre, when one of them changes;
    /// the centre is empty where it is not known. Before the first signal the modem is absent.
    void stateChanged(TAPI_MODEM_E state, const QByteArray &serviceCenter);

    void sent(quint64 id, const wmsg::telephonyd::SendOutcome &outcome);

    void arrived(const wmsg::telephonyd::IncomingSms &message);

    /// forgotten tells that the modem has deleted what lay at `place`. It ends the memory by which
    /// a message is known that is told again; without it that memory is long.
    void forgotten(const QByteArray &place);

    void serviceCenterSet(bool isDone);
};

} // namespace wmsg::telephonyd
