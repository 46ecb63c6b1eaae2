// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/http_server.h"

#include <QtCore/QTimer>

#include <microhttpd.h>

#include <sys/types.h>

namespace wmsg::sim {

/// One request and its answer, from the first header line to the last byte, at the speed and to the
/// end that the plan asks for. The HTTP library calls it whenever it can go on.
class HttpExchange {
public:
    HttpExchange(HttpServer &server, MHD_Connection *connection, const char *method,
                 const char *url);
    ~HttpExchange();
    Q_DISABLE_COPY_MOVE(HttpExchange)

    /// The headers are there.
    MHD_Result begin();
    /// Bytes of the body: takes some, or all, and lowers `size` by as many.
    MHD_Result take(const char *bytes, size_t &size);
    /// The body is there.
    MHD_Result finish();

    /// Lets the library go on with a connection that waits for time to pass.
    void resume();

private:
    MHD_Result takeSlowly(const char *bytes, size_t &size);
    bool isCutAt(qint64 received) const;
    void chooseFaults(Occasion occasion);
    void suspendFor(int milliseconds);
    HttpAnswer answerAtTheDoor() const;
    void prepareAnswer();
    MHD_Result queueAnswer();
    ssize_t read(quint64 position, char *buffer, size_t room);
    qsizetype copyAnswer(quint64 position, char *buffer, qsizetype room) const;

    HttpServer &m_server;
    MHD_Connection *m_connection;
    HttpRequest m_request;
    HttpAnswer m_answer;
    QTimer m_pause;
    bool m_isSuspended = false;
    bool m_faultsAreChosen = false;
    bool m_isTooLarge = false;
    bool m_isPrepared = false;
    bool m_isAnswered = false;
    bool m_hasPaused = false; // the next bytes of a slow answer are due
};

} // namespace wmsg::sim
