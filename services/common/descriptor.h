// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

namespace wmsg::service {

/// A file descriptor, closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) { }
    Descriptor(Descriptor &&other) noexcept : m_fd(other.release()) { }
    Descriptor &operator=(Descriptor &&other) noexcept;
    ~Descriptor() { close(); }

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    /// Gives the descriptor away.
    int release();
    /// False when the system reports a late write error.
    bool close();

private:
    int m_fd;
};

/// The last system error in words.
[[nodiscard]] QString systemError();

/// Writes all of `bytes`; false with errno set when that fails.
[[nodiscard]] bool writeAll(int fd, QByteArrayView bytes);

} // namespace wmsg::service
