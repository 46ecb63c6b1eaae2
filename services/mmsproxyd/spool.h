// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/record_boxes.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <vector>

namespace wmsg::proxy {

/// The number of a message in the spool, in both boxes.
using MessageId = service::RecordId;

// spool := the folder of RecordBoxes, with handed/ returned/
//   out/, in/  files of a message beside its record: ID.mail ID.pdu ID.note ID.part
//   handed/    mail files that sessions were given, under names that nobody can guess
//   returned/  those that were taken back from a session, until that is written down

/// Spool is the folder that holds every message from before it is confirmed until after it is done
/// with, and knows nothing of what the messages are. A message is its record; files that lie beside
/// no record are what a step left that was cut off, and are removed at the next start.
/// docs/formats/spool.md shows the folder.
class Spool : public service::RecordBoxes {
public:
    /// The files that a message can have beside its record.
    enum class Part {
        Mail, ///< a mail file
        Pdu, ///< the PDU that is sent
        Notice, ///< the notification, as it was pushed
        Fetched, ///< what has been fetched so far
    };

    /// The longest record, in bytes.
    static constexpr qint64 kLongestRecord = 64LL * 1024;

    explicit Spool(QString folder);

    /// The same for all folders of this spool.
    [[nodiscard]] QString open();
    /// The same; it removes what no record belongs to.
    [[nodiscard]] std::vector<Stored> restore(Box box);

    /// The path of a file of a message, which need not exist.
    [[nodiscard]] QString path(Box box, MessageId id, Part part) const;
    [[nodiscard]] bool has(Box box, MessageId id, Part part) const;

    /// Where the mail files lie that sessions were given: the folder to watch.
    [[nodiscard]] QString handedFolder() const;
    [[nodiscard]] QString returnedFolder() const;
};

} // namespace wmsg::proxy
