// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>

#include <optional>

namespace wmsg::sim {

/// A message as a modem keeps it.
struct StoredMessage {
    enum State { Unread, Read, Unsent, Sent }; ///< in the order of the wire

    State state = Unread;
    QByteArray pdu; ///< a service centre with its length, and a TPDU
};

/// MessageStore is one of the memories of a modem: so many places, counted from 1.
class MessageStore {
public:
    explicit MessageStore(int size) : m_size(size) { }

    /// add takes the lowest free place and returns it; nothing when there is none.
    std::optional<int> add(const StoredMessage &message);
    /// at returns the message at a place; null when there is none.
    [[nodiscard]] StoredMessage *at(int place);
    bool remove(int place) { return m_messages.remove(place) > 0; }

    [[nodiscard]] QMap<int, StoredMessage> &messages() { return m_messages; }
    [[nodiscard]] int used() const { return static_cast<int>(m_messages.size()); }
    [[nodiscard]] int size() const { return m_size; }

private:
    int m_size;
    QMap<int, StoredMessage> m_messages;
};

} // namespace wmsg::sim
