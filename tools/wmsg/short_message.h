// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/tpdu.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// A short message as a modem or a network writes it, and where it was found.
struct ShortMessage {
    QString source; ///< "log.txt line 3"
    QByteArray bytes;
    std::optional<smspdu::ServiceCentre> centre; ///< Nothing when the TPDU begins the bytes.
    smspdu::Tpdu tpdu;

    /// Where the TPDU begins.
    [[nodiscard]] qsizetype start() const { return centre ? centre->size : 0; }
};

/// What came of reading one.
struct ShortMessageResult {
    std::optional<ShortMessage> message;
    qsizetype offset = 0; ///< Of what is wrong.
    QString problem;
};

/// readShortMessage reads a TPDU of either direction, with or without the number of a service
/// centre in front, that fills `bytes`.
[[nodiscard]] ShortMessageResult readShortMessage(QByteArrayView bytes);

/// Short messages that belong together, in the order of their parts; usually just one.
struct JoinedMessage {
    QList<ShortMessage> messages;
    int total = 1; ///< As many as there should be.

    [[nodiscard]] bool isWhole() const { return messages.size() == total; }
    [[nodiscard]] const smspdu::Tpdu &first() const { return messages.first().tpdu; }
    /// text returns what all say; null when they are octets or compressed.
    [[nodiscard]] QString text() const;
    /// data returns the user data of all, headers left out.
    [[nodiscard]] QByteArray data() const;
    /// isPush tells of one or more that carry a push with an MMS PDU, or any push to the port of
    /// pushes.
    [[nodiscard]] bool isPush() const;
    /// "2 of 3", "1, 4 to 9 of 9" and the like: the parts that are not there.
    [[nodiscard]] QString missingParts() const;
};

/// Joins the parts of messages, in any order: those with the same correspondent, reference and
/// total belong together. A part that comes again is dropped.
class ShortMessageJoiner {
public:
    /// add returns the whole message that `message` is, or is the last part of.
    [[nodiscard]] std::optional<JoinedMessage> add(const ShortMessage &message);
    /// takeIncomplete returns what waits for parts, in the order of the first part of each.
    [[nodiscard]] QList<JoinedMessage> takeIncomplete();

private:
    struct Group {
        int order = 0;
        int total = 0;
        QMap<int, ShortMessage> parts;
    };
    QMap<QString, Group> m_groups;
    int m_count = 0;
};

} // namespace wmsg::cli
