// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/http_client_p.h"

#include <QtCore/QUrl>

// What the end of a transfer means.

namespace wmsg::proxy {

namespace {

constexpr int kRequestTimeout = 408;
constexpr int kTooManyRequests = 429;

} // namespace

bool HttpOutcome::mayRetry() const
{
    switch (kind) {
    case Kind::Answered:
        return httpStatus == kRequestTimeout || httpStatus == kTooManyRequests
            || httpStatus / 100 == 5;
    case Kind::Unreachable:
    case Kind::TimedOut:
    case Kind::Cut:
    case Kind::LocalFailure:
        return true;
    case Kind::Impossible:
    case Kind::TooLarge:
    case Kind::Aborted:
        return false;
    }
    return false;
}

HttpOutcome HttpTransfer::Private::outcomeOf(CURLcode result) const
{
    HttpOutcome outcome;
    outcome.kind = kindOf(result);
    outcome.answerSize = m_answerSize;
    if (outcome.kind == HttpOutcome::Kind::Answered) {
        describeAnswer(outcome);
    } else {
        outcome.text = textOf(outcome.kind, result);
    }
    return outcome;
}

int HttpTransfer::Private::httpStatus() const
{
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

void HttpTransfer::Private::describeAnswer(HttpOutcome &outcome) const
{
    const char *contentType = nullptr;
    const char *location = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_CONTENT_TYPE, &contentType);
    curl_easy_getinfo(m_easy.get(), CURLINFO_REDIRECT_URL, &location);
    outcome.httpStatus = httpStatus();
    outcome.body = m_answer;
    outcome.contentType = contentType;
    outcome.location = location;
    outcome.text = QStringLiteral("HTTP status %1").arg(outcome.httpStatus);
    if (location) {
        outcome.text +=
            QStringLiteral(", a redirect to %1").arg(QUrl::fromEncoded(outcome.location).host());
    }
}

QString HttpTransfer::Private::textOf(HttpOutcome::Kind kind, CURLcode result) const
{
    if (kind == HttpOutcome::Kind::LocalFailure && !m_localProblem.isNull()) {
        return m_localProblem;
    }
    if (kind == HttpOutcome::Kind::TooLarge) {
        return QStringLiteral("the answer has more than %1 bytes").arg(m_request.answerLimit);
    }
    return QString::fromUtf8(m_error[0] != 0 ? &m_error[0] : curl_easy_strerror(result));
}

/// An error page that is too large is an answer all the same; only what was asked for must be
/// whole.
HttpOutcome::Kind HttpTransfer::Private::kindOf(CURLcode result) const
{
    using Kind = HttpOutcome::Kind;
    if (!m_localProblem.isNull()) {
        return Kind::LocalFailure;
    }
    if (m_isTooLarge || result == CURLE_FILESIZE_EXCEEDED) {
        return httpStatus() / 100 == 2 ? Kind::TooLarge : Kind::Answered;
    }
    switch (result) {
    case CURLE_OK:
        return Kind::Answered;
    case CURLE_URL_MALFORMAT:
        return Kind::Impossible;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::TimedOut;
    case CURLE_OUT_OF_MEMORY:
        return Kind::LocalFailure;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_PROXY:
        return Kind::Unreachable;
    default:
        return Kind::Cut;
    }
}

} // namespace wmsg::proxy
