// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/engine/store_p.h"

namespace wmsg::engine {

/// The one writer of the store, from begin() to commit(). What was not committed is undone.
class Store::Transaction {
public:
    explicit Transaction(Store &store) : m_store(store) { }
    ~Transaction() { end(); }
    Q_DISABLE_COPY_MOVE(Transaction)

    /// Waits for the other processes that write.
    int begin();
    int commit();
    /// Undoes what was not committed.
    void end();

private:
    Store &m_store;
    bool m_isOpen = false;
};

} // namespace wmsg::engine
