// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/message_store.h"

namespace wmsg::sim {

std::optional<int> MessageStore::add(const StoredMessage &message)
{
    for (int place = 1; place <= m_size; ++place) {
        if (!m_messages.contains(place)) {
            m_messages.insert(place, message);
            return place;
        }
    }
    return std::nullopt;
}

StoredMessage *MessageStore::at(int place)
{
    const auto found = m_messages.find(place);
    return found == m_messages.end() ? nullptr : &*found;
}

} // namespace wmsg::sim
