// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mms/model/wmmsmsg.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// A folder of the message store that messages are put into.
class StoreFolder {
public:
    explicit StoreFolder(unsigned short number) : m_number(number) { }

    /// Opens the store, and makes it when it is not there. Returns the problem, or an empty text.
    [[nodiscard]] QString open() const;
    /// Why the store keeps no message of this form; an empty text when it does.
    [[nodiscard]] static QString objection(const WMMSMsg &message);
    /// Stores a message, which is on the disk then. Returns the problem, or an empty text.
    [[nodiscard]] QString add(const WMMSMsg &message);

    /// The message stored last: "message 1 in inbox"; empty when the last one was refused.
    [[nodiscard]] QString placeInWords() const;
    /// Adds the "id" and "folder" of that message, if there is one.
    void addPlace(QJsonObject &object) const;

private:
    unsigned short m_number;
    std::optional<unsigned short> m_id;
};

} // namespace wmsg::cli
