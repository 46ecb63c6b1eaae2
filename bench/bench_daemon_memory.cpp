// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// What the proxy daemon needs to move a message: time, and the most memory at a time beyond what it
// has anyway. No message may be held whole more than once.

#include "bench/messages.h"
#include "mms/model/result_codes.h"
#include "services/common/descriptor.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/mail_file_writer.h"
#include "services/mmsproxyd/outgoing_pdu.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <array>
#include <thread>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace wmsg::proxy;
using wmsg::service::Descriptor;
using wmsg::service::writeAll;

namespace {

constexpr int kMegabyte = 1024 * 1024;
constexpr double kSlack = kMegabyte; // for all that is no message
constexpr double kStreamed = 0.0;
constexpr double kHeldOnce = 1.0;

/// A number of /proc/self/status, in bytes.
double statusOf(const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(name + ':')) {
                return line.mid(name.size() + 1).simplified().split(' ').first().toDouble() * 1024;
            }
        }
    }
    return 0;
}

/// Watches how much memory is resident at a time while it lives.
class Peak {
public:
    Peak()
    {
        // What is freed goes back at once, and does not hide what is needed next.
        mallopt(M_MMAP_THRESHOLD, 65536);
        mallopt(M_TRIM_THRESHOLD, 65536);
        malloc_trim(0);
        QFile file(QStringLiteral("/proc/self/clear_refs"));
        m_canReset = file.open(QIODevice::WriteOnly) && file.write("5") == 1;
        file.close();
        m_before = statusOf("VmRSS");
    }
    /// Reports the peak, and fails when it is above so many times the size of the message.
    void report(benchmark::State &state, double times, double size) const
    {
        const double grown = statusOf("VmHWM") - m_before;
        state.counters["peak_MB"] = grown / kMegabyte;
        // The sanitizers keep what was freed.
        const bool isMeasured = m_canReset && !dlsym(RTLD_DEFAULT, "__asan_init");
        if (isMeasured && grown > times * size + kSlack) {
            state.SkipWithError("more memory than allowed");
        }
    }

private:
    bool m_canReset = false;
    double m_before = 0;
};

void needApplication()
{
    static int count = 1;
    static char name[] = "bench";
    static char *arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments);
}

/// Files of one run.
struct Folder {
    QTemporaryDir dir;
    QString mail = dir.filePath(QStringLiteral("mail"));
    QString pdu = dir.filePath(QStringLiteral("pdu"));
};

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::abort();
    }
}

/// A mail file becomes a send request.
void sendRequest(benchmark::State &state)
{
    bench::discardLog();
    Folder folder;
    const auto size = static_cast<int>(state.range(0));
    {
        WMMSMsg message = bench::retrieval(size);
        if (message.saveAs(folder.mail, nullptr, nullptr) != MMS_SAVE_OK) {
            std::abort();
        }
    }
    const QDateTime taken = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    const Peak peak;
    for (auto _ : state) {
        const OutgoingPdu made =
            writeSendRequest(folder.mail, folder.pdu, QStringLiteral("T1"), taken);
        if (made.result != OutgoingPdu::Result::Written || made.size < size) {
            state.SkipWithError("no send request");
        }
    }
    peak.report(state, kHeldOnce, size);
}

/// What was fetched becomes a mail file.
void intake(benchmark::State &state)
{
    bench::discardLog();
    Folder folder;
    const auto size = static_cast<int>(state.range(0));
    writeFile(folder.pdu, bench::encoded(bench::retrieval(size)).view().toByteArray());
    const Peak peak;
    for (auto _ : state) {
        const Taken taken = MailFileWriter(2 * size + kMegabyte).take(folder.pdu, folder.mail);
        if (taken.kind != Taken::Kind::Message) {
            state.SkipWithError("no message");
        }
    }
    peak.report(state, kHeldOnce, size);
}

/// An MMSC that swallows what is posted and gives the same bytes to all who fetch, from a file: it
/// lives in this process, and must hold nothing itself.
class Mmsc {
public:
    explicit Mmsc(QString answer) : m_answer(std::move(answer))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *where = reinterpret_cast<sockaddr *>(&address);
        socklen_t size = sizeof address;
        m_socket = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (::bind(m_socket.get(), where, size) != 0 || ::listen(m_socket.get(), 5) != 0
            || ::getsockname(m_socket.get(), where, &size) != 0) {
            std::abort();
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~Mmsc()
    {
        ::shutdown(m_socket.get(), SHUT_RDWR);
        m_thread.join();
    }
    Mmsc(const Mmsc &) = delete;
    Mmsc &operator=(const Mmsc &) = delete;

    [[nodiscard]] QString url() const { return QStringLiteral("http://127.0.0.1:%1/").arg(m_port); }

private:
    void serve()
    {
        for (;;) {
            const Descriptor client(::accept(m_socket.get(), nullptr, nullptr));
            if (!client.isOpen()) {
                return;
            }
            exchange(client.get());
        }
    }
    void exchange(int client)
    {
        QByteArray head;
        while (!head.contains("\r\n\r\n")) {
            if (!receive(client)) {
                return;
            }
            head.append(m_buffer.data(), m_received);
        }
        const qsizetype start = head.indexOf("\r\n\r\n") + 4;
        const qsizetype mark = head.indexOf("Content-Length: ");
        qint64 left = mark < 0 ? 0 : head.mid(mark + 16, 20).split('\r').first().toLongLong();
        left -= head.size() - start;
        while (left > 0 && receive(client)) {
            left -= m_received;
        }
        answer(client, head.startsWith("GET "));
    }
    void answer(int client, bool isGet)
    {
        QFile file(m_answer);
        const qint64 size = isGet && file.open(QIODevice::ReadOnly) ? file.size() : 0;
        bool goesOn = writeAll(client,
                               "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
                                   + QByteArray::number(size) + "\r\n\r\n");
        for (qint64 sent = 0; goesOn && sent < size;) {
            const ssize_t got = ::read(file.handle(), m_buffer.data(), m_buffer.size());
            goesOn = got > 0 && writeAll(client, QByteArrayView(m_buffer.data(), got));
            sent += got;
        }
    }
    bool receive(int client)
    {
        m_received = ::read(client, m_buffer.data(), m_buffer.size());
        return m_received > 0;
    }

    QString m_answer;
    Descriptor m_socket;
    int m_port = 0;
    std::array<char, 65536> m_buffer{};
    ssize_t m_received = 0;
    std::thread m_thread;
};

HttpOutcome outcomeOf(HttpClient &client, const HttpRequest &request)
{
    QEventLoop loop;
    HttpOutcome outcome;
    HttpTransfer *transfer = client.start(request);
    QObject::connect(transfer, &HttpTransfer::finished, &loop, [&](const HttpOutcome &told) {
        outcome = told;
        loop.quit();
    });
    loop.exec();
    return outcome;
}

void transfer(benchmark::State &state, HttpRequest::Method method)
{
    needApplication();
    Folder folder;
    const auto size = static_cast<int>(state.range(0));
    writeFile(folder.pdu, bench::filler(size));
    const Mmsc mmsc(folder.pdu);
    HttpClient client({});
    HttpRequest request;
    request.method = method;
    request.url = mmsc.url();
    if (method == HttpRequest::Method::Post) {
        request.bodyFile = folder.pdu;
    } else {
        request.answerFile = folder.mail;
        request.answerLimit = size;
    }
    const Peak peak;
    for (auto _ : state) {
        const HttpOutcome outcome = outcomeOf(client, request);
        if (!outcome.isSuccess()) {
            state.SkipWithError(qPrintable(outcome.text));
        }
    }
    peak.report(state, kStreamed, size);
    state.SetBytesProcessed(state.iterations() * size);
}

void upload(benchmark::State &state)
{
    transfer(state, HttpRequest::Method::Post);
}

void download(benchmark::State &state)
{
    transfer(state, HttpRequest::Method::Get);
}

constexpr int kSmall = 300 * 1024;
constexpr int kLarge = 10 * kMegabyte;

BENCHMARK(sendRequest)->Arg(kSmall)->Arg(kLarge)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(intake)->Arg(kSmall)->Arg(kLarge)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(upload)->Arg(kSmall)->Arg(kLarge)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(download)->Arg(kSmall)->Arg(kLarge)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
