// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mms/codec/mms_hdr_s.h>
#include <mms/codec/msg_field_mask.h>

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>

/// The PDUs that the MMSC reads and writes, with the codecs of the library. Bodies are not looked
/// into: they leave as they came, and so does the content type in front of them.
namespace wmsg::sim {

/// A PDU that came in.
class ReceivedPdu {
public:
    /// Reads the header of `pdu`, which is kept. Returns what is wrong with it and where, or an
    /// empty text.
    [[nodiscard]] QString read(const QByteArray &pdu);

    [[nodiscard]] const MMS_HDR_S &header() const { return m_header; }
    [[nodiscard]] bool has(quint8 field) const { return m_mask.getMask(field) != 0; }
    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }
    /// Where the content type begins, behind which the body lies; -1 without one.
    [[nodiscard]] qsizetype contentStart() const { return m_contentStart; }

private:
    QByteArray m_bytes;
    MMS_HDR_S m_header;
    Msg_Field_Mask m_mask;
    qsizetype m_contentStart = -1;
};

/// The type that the first two bytes of a PDU tell; 0 when they tell none.
[[nodiscard]] quint8 pduType(QByteArrayView pdu);
/// "send-req", "retrieve-conf", ...; "unknown" for what is no type of a PDU.
[[nodiscard]] QString pduName(quint8 type);

/// The answer to a send request.
struct SendConf {
    QString transactionId;
    quint8 responseStatus = 128;
    QString responseText;
    QString messageId;
};
[[nodiscard]] QByteArray encoded(const SendConf &conf);

/// Tells a recipient of a message that waits.
struct NotificationInd {
    QString transactionId;
    WMFMEntry from; ///< Not valid: the sender is not told.
    QString subject;
    quint8 messageClass = 128;
    qint64 size = 0;
    qint64 expiresIn = 0; ///< seconds
    QString location;
};
[[nodiscard]] QByteArray encoded(const NotificationInd &notification);

/// Tells a sender what became of a message at one recipient.
struct DeliveryInd {
    QString messageId;
    WMFMEntry to;
    QDateTime date;
    quint8 status = 129;
};
[[nodiscard]] QByteArray encoded(const DeliveryInd &report);

/// What the network knows of a message that it hands out, beside what its sender wrote.
struct RetrieveConf {
    QString transactionId;
    QString messageId;
    WMFMEntry from; ///< Not valid: the sender is not told.
    QDateTime received; ///< The date of a message that has none.
};
/// The header of a retrieve confirmation for a send request, without the content type: what follows
/// is the request from its content type on. Empty when the header does not fit into one.
[[nodiscard]] QByteArray encodedHead(const RetrieveConf &conf, const ReceivedPdu &request);

} // namespace wmsg::sim
