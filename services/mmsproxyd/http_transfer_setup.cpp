// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/http_client_p.h"

#include <QtCore/QFile>
#include <QtNetwork/QHostAddress>

#include <fcntl.h>
#include <sys/stat.h>

// What libcurl is told about a transfer before it begins.

namespace wmsg::proxy {

namespace {

struct UrlCleanup {
    void operator()(CURLU *url) const { curl_url_cleanup(url); }
};

/// libcurl takes much for a URL: names without a scheme, and schemes of its own.
bool isUsable(const QByteArray &url)
{
    const std::unique_ptr<CURLU, UrlCleanup> parsed(curl_url());
    char *scheme = nullptr;
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.constData(), 0) != CURLUE_OK
        || curl_url_get(parsed.get(), CURLUPART_SCHEME, &scheme, 0) != CURLUE_OK) {
        return false;
    }
    const QByteArray name(scheme);
    curl_free(scheme);
    return name == "http" || name == "https";
}

/// A header line ends at its end.
QByteArray printable(QByteArray text)
{
    text.removeIf([](char c) { return static_cast<uchar>(c) < 0x20 || c == 0x7F; });
    return text;
}

/// A bare name might be looked up as that of a host, which takes its time.
QByteArray bindingOf(const QString &interfaceName)
{
    if (interfaceName.contains(QLatin1Char('!'))) {
        return interfaceName.toUtf8();
    }
    const bool isAddress = !QHostAddress(interfaceName).isNull();
    return (isAddress ? QByteArrayLiteral("host!") : QByteArrayLiteral("if!"))
        + interfaceName.toUtf8();
}

} // namespace

/// The URL as it is sent; empty when it is none for us. Blanks and what is not ASCII are escaped.
QByteArray HttpTransfer::Private::encodedUrl() const
{
    QByteArray url;
    for (const char c : m_request.url.toUtf8()) {
        if (c > 0x20 && c < 0x7F) {
            url += c;
        } else {
            url += '%' + QByteArray(1, c).toHex().toUpper();
        }
    }
    return isUsable(url) ? url : QByteArray();
}

bool HttpTransfer::Private::openFiles()
{
    m_bodySize = m_request.body.size();
    if (!m_request.bodyFile.isEmpty()) {
        struct stat state = {};
        m_bodyFile = service::Descriptor(::open(QFile::encodeName(m_request.bodyFile).constData(),
                                                O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!m_bodyFile.isOpen() || ::fstat(m_bodyFile.get(), &state) != 0) {
            noteProblem(m_request.bodyFile, service::systemError());
            return false;
        }
        if (!S_ISREG(state.st_mode)) {
            noteProblem(m_request.bodyFile, QStringLiteral("is no regular file"));
            return false;
        }
        m_bodySize = state.st_size;
    }
    if (!m_request.answerFile.isEmpty()) {
        m_answerFile = service::Descriptor(
            ::open(QFile::encodeName(m_request.answerFile).constData(),
                   O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
        if (!m_answerFile.isOpen()) {
            noteProblem(m_request.answerFile, service::systemError());
            return false;
        }
    }
    return true;
}

template <typename Value> void HttpTransfer::Private::set(CURLoption option, Value value)
{
    if (curl_easy_setopt(m_easy.get(), option, value) != CURLE_OK && m_localProblem.isNull()) {
        m_localProblem = QStringLiteral("libcurl does not take option %1").arg(int(option));
    }
}

bool HttpTransfer::Private::setUp(const QByteArray &url)
{
    m_easy.reset(curl_easy_init());
    if (!m_easy) {
        m_localProblem = QStringLiteral("no memory for a transfer");
        return false;
    }
    set(CURLOPT_URL, url.constData());
    set(CURLOPT_PRIVATE, static_cast<void *>(this));
    set(CURLOPT_ERRORBUFFER, &m_error[0]);
    setUpRequest();
    setUpConnection();
    setUpCallbacks();
    if (!m_localProblem.isNull()) {
        return false;
    }
    const CURLMcode added = curl_multi_add_handle(m_client.multi(), m_easy.get());
    if (added != CURLM_OK) {
        m_localProblem = QLatin1String(curl_multi_strerror(added));
    }
    return added == CURLM_OK;
}

void HttpTransfer::Private::setUpRequest()
{
    const HttpSettings &settings = m_client.settings();
    set(CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_MAXFILESIZE_LARGE, curl_off_t(m_request.answerLimit));
    addHeader("Accept", "*/*, application/vnd.wap.mms-message");
    addHeader("x-wap-profile", printable(settings.profileUrl.toUtf8()));
    if (!settings.userAgent.isEmpty()) {
        set(CURLOPT_USERAGENT, printable(settings.userAgent.toUtf8()).constData());
    }
    if (m_request.method == HttpRequest::Method::Post) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(m_bodySize));
        set(CURLOPT_UPLOAD_BUFFERSIZE, long(kSendBuffer));
        addHeader("Content-Type", printable(m_request.contentType));
        addHeaderLine("Expect:"); // or a large body would wait for "100 Continue"
    }
    set(CURLOPT_HTTPHEADER, m_headers.get());
}

// An empty proxy is none: the environment is not asked then.
void HttpTransfer::Private::setUpConnection()
{
    const HttpSettings &settings = m_client.settings();
    set(CURLOPT_PROXY, settings.proxy.toUtf8().constData());
    set(CURLOPT_NOPROXY, "");
    if (!settings.interfaceName.isEmpty()) {
        set(CURLOPT_INTERFACE, bindingOf(settings.interfaceName).constData());
    }
    if (!settings.authorities.isEmpty()) {
        set(CURLOPT_CAINFO, QFile::encodeName(settings.authorities).constData());
        set(CURLOPT_CAPATH,
            static_cast<const char *>(nullptr)); // nor anybody in the system's folder
    }
    set(CURLOPT_CONNECTTIMEOUT_MS, long(settings.connectTimeout.count()));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L); // who aborts does not wait for the look-up of a name
}

void HttpTransfer::Private::setUpCallbacks()
{
    set(CURLOPT_READFUNCTION,
        static_cast<size_t (*)(char *, size_t, size_t, void *)>(&Private::giveBody));
    set(CURLOPT_READDATA, static_cast<void *>(this));
    set(CURLOPT_SEEKFUNCTION, &Private::seekBody);
    set(CURLOPT_SEEKDATA, static_cast<void *>(this));
    set(CURLOPT_WRITEFUNCTION,
        static_cast<size_t (*)(char *, size_t, size_t, void *)>(&Private::takeAnswer));
    set(CURLOPT_WRITEDATA, static_cast<void *>(this));
    set(CURLOPT_HEADERFUNCTION, &Private::takeHeader);
    set(CURLOPT_HEADERDATA, static_cast<void *>(this));
    set(CURLOPT_XFERINFOFUNCTION, &Private::noteProgress);
    set(CURLOPT_XFERINFODATA, static_cast<void *>(this));
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_PREREQFUNCTION, &Private::noteConnected);
    set(CURLOPT_PREREQDATA, static_cast<void *>(this));
    set(CURLOPT_SOCKOPTFUNCTION, &Private::makeBufferSmall);
}

void HttpTransfer::Private::addHeader(const char *name, const QByteArray &value)
{
    if (!value.isEmpty()) {
        addHeaderLine(name + QByteArrayLiteral(": ") + value);
    }
}

void HttpTransfer::Private::addHeaderLine(const QByteArray &line)
{
    if (curl_slist *longer = curl_slist_append(m_headers.get(), line.constData())) {
        static_cast<void>(m_headers.release());
        m_headers.reset(longer);
    }
}

} // namespace wmsg::proxy
