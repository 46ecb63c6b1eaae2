// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/http_exchange.h"

#include "sim/mmsc/pdus.h"

#include <mms/codec/mms_hdr_s.h>

#include <algorithm>
#include <cstring>

namespace wmsg::sim {

namespace {

constexpr qint64 kStepsPerSecond = 20;
constexpr size_t kBlock = size_t(32) * 1024;
constexpr qsizetype kTypeBytes = 2; // what tells which PDU it is

// What a rate lets through at once, and how long that takes.
struct Step {
    explicit Step(qint64 rate)
        : bytes(std::max<qint64>(1, rate / kStepsPerSecond)),
          milliseconds(static_cast<int>(std::max<qint64>(1, bytes * 1000 / rate)))
    {
    }
    qint64 bytes;
    int milliseconds;
};

QByteArray headerOf(MHD_Connection *connection, const char *name)
{
    return QByteArray(MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name));
}

// "http://host:port/path" becomes "/path".
QByteArray pathOf(const QByteArray &url)
{
    if (!url.startsWith("http://")) {
        return url;
    }
    const qsizetype slash = url.indexOf('/', qsizetype(strlen("http://")));
    return slash < 0 ? QByteArray("/") : url.sliced(slash);
}

Occasion occasionOf(QByteArrayView body)
{
    switch (pduType(body)) {
    case MMS_PDU_SEND_REQ:
        return Occasion::Send;
    case MMS_PDU_NOTIFYRESP_IND:
        return Occasion::NotifyResponse;
    case MMS_PDU_ACKNOWLEDGE_IND:
        return Occasion::Acknowledge;
    default:
        return Occasion::Request;
    }
}

constexpr char kGarbage[] = "<html><body>It works!</body></html>\n";

} // namespace

HttpExchange::HttpExchange(HttpServer &server, MHD_Connection *connection, const char *method,
                           const char *url)
    : m_server(server), m_connection(connection)
{
    m_request.method = method;
    m_request.path = pathOf(url);
    m_request.contentType = headerOf(connection, MHD_HTTP_HEADER_CONTENT_TYPE);
    m_request.sender = headerOf(connection, "x-msisdn");
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_pause, &QTimer::timeout, &server, [this] {
        resume();
        m_server.run();
    });
    server.m_exchanges.append(this);
}

HttpExchange::~HttpExchange()
{
    m_server.m_exchanges.removeOne(this);
}

MHD_Result HttpExchange::begin()
{
    m_request.faults = m_server.m_plan.next(Occasion::Request);
    if (m_request.method == MHD_HTTP_METHOD_GET) {
        chooseFaults(Occasion::Retrieve);
    }
    const qint64 announced = headerOf(m_connection, MHD_HTTP_HEADER_CONTENT_LENGTH).toLongLong();
    if (announced > m_server.m_settings.largestBody) {
        m_isTooLarge = true;
        prepareAnswer();
        return queueAnswer();
    }
    return isCutAt(0) ? MHD_NO : MHD_YES;
}

// The occasion's own faults are chosen once it is known; a line for any request counts as well.
void HttpExchange::chooseFaults(Occasion occasion)
{
    m_faultsAreChosen = true;
    if (occasion != Occasion::Request) {
        m_request.faults.add(m_server.m_plan.next(occasion));
    }
}

bool HttpExchange::isCutAt(qint64 received) const
{
    const auto &cut = m_request.faults.cutUpAfter;
    return cut && received >= *cut;
}

MHD_Result HttpExchange::take(const char *bytes, size_t &size)
{
    if (m_isTooLarge || m_request.body.size() + qint64(size) > m_server.m_settings.largestBody) {
        m_isTooLarge = true;
        m_request.body.clear();
        size = 0;
        return MHD_YES;
    }
    if (!m_faultsAreChosen && m_request.body.size() + qsizetype(size) >= kTypeBytes) {
        const qsizetype missing = std::max<qsizetype>(0, kTypeBytes - m_request.body.size());
        chooseFaults(occasionOf(m_request.body + QByteArray(bytes, missing)));
    }
    return takeSlowly(bytes, size);
}

MHD_Result HttpExchange::takeSlowly(const char *bytes, size_t &size)
{
    qint64 count = static_cast<qint64>(size);
    const auto &rate = m_request.faults.upRate;
    if (rate) {
        count = std::min(count, Step(*rate).bytes);
    }
    if (m_request.faults.cutUpAfter) {
        count = std::min(count,
                         std::max<qint64>(0, *m_request.faults.cutUpAfter - m_request.body.size()));
    }
    m_request.body.append(bytes, count);
    size -= static_cast<size_t>(count);
    if (isCutAt(m_request.body.size())) {
        return MHD_NO;
    }
    if (rate) {
        suspendFor(Step(*rate).milliseconds);
    }
    return MHD_YES;
}

MHD_Result HttpExchange::finish()
{
    if (m_isAnswered) {
        return MHD_YES;
    }
    if (!m_faultsAreChosen) {
        chooseFaults(Occasion::Request);
    }
    if (isCutAt(m_request.body.size())) {
        return MHD_NO;
    }
    if (!m_isPrepared) {
        prepareAnswer();
        if (m_request.faults.delay) {
            suspendFor(*m_request.faults.delay);
            return MHD_YES;
        }
    }
    return queueAnswer();
}

void HttpExchange::suspendFor(int milliseconds)
{
    MHD_suspend_connection(m_connection);
    m_isSuspended = true;
    m_pause.start(milliseconds);
}

void HttpExchange::resume()
{
    m_pause.stop();
    if (m_isSuspended) {
        m_isSuspended = false;
        MHD_resume_connection(m_connection);
    }
}

HttpAnswer HttpExchange::answerAtTheDoor() const
{
    HttpAnswer answer = plainAnswer(m_request.faults.httpStatus.value_or(MHD_HTTP_FOUND),
                                    QByteArrayLiteral("The fault plan says so.\n"));
    answer.location = m_request.faults.redirect.value_or(QByteArray());
    return answer;
}

void HttpExchange::prepareAnswer()
{
    m_isPrepared = true;
    if (m_isTooLarge) {
        m_answer = plainAnswer(MHD_HTTP_CONTENT_TOO_LARGE,
                               QByteArrayLiteral("This is larger than what is taken here.\n"));
    } else if (m_request.faults.isAnsweredAtTheDoor()) {
        m_answer = answerAtTheDoor();
    } else {
        m_answer = m_server.m_handler(m_request);
    }
    if (m_request.faults.garbage) {
        m_answer.head = kGarbage;
        m_answer.pdu.clear();
        m_answer.pduStart = 0;
    }
}

MHD_Result HttpExchange::queueAnswer()
{
    if (m_request.faults.cutAfter == 0) {
        return MHD_NO;
    }
    const auto reader = [](void *self, uint64_t position, char *buffer, size_t room) -> ssize_t {
        return static_cast<HttpExchange *>(self)->read(position, buffer, room);
    };
    MHD_Response *response = MHD_create_response_from_callback(
        static_cast<quint64>(m_answer.size()), kBlock, reader, this, nullptr);
    if (!response) {
        return MHD_NO;
    }
    if (!m_answer.contentType.isEmpty()) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE,
                                m_answer.contentType.constData());
    }
    if (!m_answer.location.isEmpty()) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_LOCATION, m_answer.location.constData());
    }
    m_isAnswered = true;
    const MHD_Result result =
        MHD_queue_response(m_connection, static_cast<unsigned>(m_answer.status), response);
    MHD_destroy_response(response);
    return result;
}

ssize_t HttpExchange::read(quint64 position, char *buffer, size_t room)
{
    qint64 count = std::min<qint64>(static_cast<qint64>(room),
                                    m_answer.size() - static_cast<qint64>(position));
    if (const auto &cut = m_request.faults.cutAfter) {
        const qint64 left = *cut - static_cast<qint64>(position);
        if (left <= 0) {
            return MHD_CONTENT_READER_END_WITH_ERROR;
        }
        count = std::min(count, left);
    }
    if (const auto &rate = m_request.faults.downRate) {
        const Step step(*rate);
        if (!m_hasPaused) {
            m_hasPaused = true;
            suspendFor(step.milliseconds);
            return 0;
        }
        m_hasPaused = false;
        count = std::min(count, step.bytes);
    }
    return copyAnswer(position, buffer, count);
}

qsizetype HttpExchange::copyAnswer(quint64 position, char *buffer, qsizetype room) const
{
    const auto start = static_cast<qsizetype>(position);
    const QByteArrayView part = start < m_answer.head.size()
        ? QByteArrayView(m_answer.head).sliced(start)
        : QByteArrayView(m_answer.pdu).sliced(m_answer.pduStart + start - m_answer.head.size());
    const qsizetype count = std::min(room, part.size());
    memcpy(buffer, part.data(), static_cast<size_t>(count));
    return count;
}

} // namespace wmsg::sim
