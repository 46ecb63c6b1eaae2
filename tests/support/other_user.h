// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_address.h"

#include <QtCore/QString>

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

/// OtherUser is a process of another user, which connects to a local socket and tells by its exit
/// code what came of it. Only root can make one.
class OtherUser {
public:
    enum Result { Refused = 10, HungUpOn, GotBytes, Waited, Failed };

    static bool isPossible() { return ::geteuid() == 0; }

    /// Connects and waits for bytes or the end of the connection, after sending `bytes`.
    explicit OtherUser(const QString &path, const QByteArray &bytes = QByteArray())
    {
        const wmsg::service::LocalAddress address(path);
        m_process = ::fork();
        if (m_process == 0) {
            ::_exit(run(address, bytes));
        }
    }
    ~OtherUser() { (void)result(); }
    Q_DISABLE_COPY_MOVE(OtherUser)

    /// Whether it has come to its end.
    bool isOver()
    {
        int state = 0;
        if (m_process > 0 && ::waitpid(m_process, &state, WNOHANG) == m_process) {
            m_result = WIFEXITED(state) ? WEXITSTATUS(state) : int(Failed);
            m_process = -1;
        }
        return m_process <= 0;
    }
    int result()
    {
        while (!isOver()) {
            ::usleep(1000);
        }
        return m_result;
    }

private:
    static constexpr uid_t kNobody = 65534;

    // Only system calls from here on: the process is a copy of one that may have threads.
    static int run(const wmsg::service::LocalAddress &address, const QByteArray &bytes)
    {
        if (::setresgid(kNobody, kNobody, kNobody) != 0
            || ::setresuid(kNobody, kNobody, kNobody) != 0) {
            return Failed;
        }
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        if (::connect(socket, address.get(), address.size()) != 0) {
            return errno == EACCES ? Refused : Failed;
        }
        (void)::send(socket, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
        pollfd ready = {socket, POLLIN, 0};
        if (::poll(&ready, 1, 10000) != 1) {
            return Waited;
        }
        char byte;
        return ::recv(socket, &byte, 1, 0) > 0 ? GotBytes : HungUpOn;
    }

    pid_t m_process = -1;
    int m_result = Failed;
};
