// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmlistener.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "mms/session/wmmssession.h"
#include "platform/applog/applog.h"
#include "services/common/push_client.h"
#include "services/intake/intake.h"
#include "tests/services/mmsproxyd/mmsc_script.h"

#include <QtCore/QDirIterator>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <linux/prctl.h>
#include <memory>
#include <sys/prctl.h>

/// Messages of real handsets, gateways and conformance cases, on the way that they take: a network
/// announces each to the proxy daemon, which fetches it and hands it to a session. The folder is
/// named by WMSG_CORPUS, or lies beside the checkout; without it there is nothing to test.

namespace {

constexpr int kPatience = 60000;

QString folder()
{
    const QString chosen = qEnvironmentVariable("WMSG_CORPUS");
    return chosen.isEmpty() ? WMSG_TEST_DATA "/../../../shared/corpus" : chosen;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A reader of PDUs that knows how long values are, and nothing of what they mean.
class Walk {
public:
    explicit Walk(const QByteArray &bytes) : m_bytes(bytes) { }

    /// The data of the parts of the body, in their order; nothing when there is no content type.
    QList<QByteArray> parts()
    {
        while (m_at < m_bytes.size() && peek() != 0x84) {
            if (peek() >= 0x80) {
                ++m_at;
            } else {
                skipText();
            }
            skipValue();
        }
        ++m_at;
        skipValue();
        QList<QByteArray> found;
        for (quint32 left = m_at < m_bytes.size() ? uintvar() : 0; left > 0; --left) {
            const quint32 header = uintvar();
            const quint32 size = uintvar();
            found.append(m_bytes.mid(m_at + header, size));
            m_at += qsizetype(header) + size;
        }
        return found;
    }

private:
    [[nodiscard]] int peek() const
    {
        return m_at < m_bytes.size() ? static_cast<quint8>(m_bytes[m_at]) : 0;
    }
    int next()
    {
        const int byte = peek();
        ++m_at;
        return byte;
    }
    quint32 uintvar()
    {
        quint32 value = 0;
        int byte = 0x80;
        while ((byte & 0x80) != 0 && m_at < m_bytes.size()) {
            byte = next();
            value = value << 7 | (byte & 0x7F);
        }
        return value;
    }
    void skipText()
    {
        while (next() != 0 && m_at < m_bytes.size()) { }
    }
    void skipValue()
    {
        const int first = peek();
        if (first >= 32 && first < 128) {
            skipText();
        } else if (++m_at; first < 32) {
            m_at += first == 31 ? uintvar() : quint32(first);
        }
    }

    QByteArray m_bytes;
    qsizetype m_at = 0;
};

/// What a session brings.
class Listener : public WMFMListener {
public:
    Listener() : WMFMListener(nullptr) { }

    void msgIncome(WMFMMsg *msg) override
    {
        const std::unique_ptr<WMFMMsg> owner(msg);
        messages.append(dynamic_cast<WMMSMsg &>(*msg));
    }
    QString listenerName() const override { return "corpus"; }

    QList<WMMSMsg> messages;
};

struct Closer {
    void operator()(WMFMSession *session) const { WMFMSession::close(session); }
};

/// All that a reader of the message sees, in words.
QStringList wordsOf(const WMMSMultipart &part)
{
    QStringList words{part.getContentType().getMimeType() + ' ' + part.getContentID() + ' '
                      + part.getContentLocation() + ' '
                      + part.getData().view().toByteArray().toHex()};
    if (const auto *below = part.subParts()) {
        for (const WMMSMultipart &one : *below) {
            words += wordsOf(one);
        }
    }
    return words;
}

QStringList wordsOf(WMMSMsg &message)
{
    QStringList words{message.getSubject(), message.getFrom().getEntryVal(),
                      message.getFrom().getContactName(), message.getMsgID(),
                      message.getContentType().toString()};
    for (const WMFMEntry &entry : message.getTo() + message.getCc()) {
        words += entry.getEntryVal() + ' ' + entry.getContactName();
    }
    if (message.fieldIsPresent(MMS_FIELD_DATE)) {
        words += message.getDate().toString(Qt::ISODate);
    }
    return words + wordsOf(message.getMultiParts());
}

} // namespace

class TestCorpusDaemon : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void retrievals_data();
    void retrievals();
    void notifications_data();
    void notifications();

private:
    static void addFiles(const QStringList &patterns);
    void push(const QByteArray &notification);
    /// Serves the next GET, takes the answer to the MMSC, and gives the message that came.
    WMMSMsg exchange(const QByteArray &confirmation);
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    ScriptedHttp m_mmsc;
    QProcess m_daemon;
    Listener m_listener;
    std::unique_ptr<WMFMSession, Closer> m_session;
    int m_number = 0;
};

/// All hosts are the scripted MMSC: it is the proxy too.
void TestCorpusDaemon::initTestCase()
{
    appLogModuleStream = appLogDiscardStream();
    if (!QFileInfo(folder()).isDir()) {
        QSKIP("there is no folder of real messages: set WMSG_CORPUS");
    }
    m_daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.setStandardErrorFile(path("log"));
    m_daemon.start(WMSG_MMSPROXYD,
                   {"--mmsc", m_mmsc.url("/answers"), "--http-proxy", m_mmsc.url(), "--spool",
                    path("spool"), "--push-socket", path("push"), "--telephony", "no", "--retry",
                    "1,1"});
    QTRY_VERIFY_WITH_TIMEOUT(m_daemon.canReadLine(), kPatience);
    QCOMPARE(m_daemon.readLine(), "listening on /tmp/mmsproxy\n");
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    m_session.reset(WMFMSession::open(WMFM::MSG_TYPE_MMS, status));
    QVERIFY(m_session && status == WMFM::STATUS_OK);
    m_session->setListener(&m_listener, status);
    QCOMPARE(status, WMFM::STATUS_OK);
}

void TestCorpusDaemon::cleanupTestCase()
{
    m_session.reset();
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished(kPatience));
        QCOMPARE(m_daemon.exitCode(), 0);
    }
}

void TestCorpusDaemon::addFiles(const QStringList &patterns)
{
    QTest::addColumn<QString>("file");
    QDirIterator files(folder(), patterns, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        const bool isNotification = contentOf(file).startsWith("\x8C\x82");
        if (isNotification == patterns.first().startsWith("ni-")) {
            QTest::addRow("%s", qPrintable(QFileInfo(file).fileName())) << file;
        }
    }
}

void TestCorpusDaemon::push(const QByteArray &notification)
{
    const auto outcome = wmsg::service::push(path("push"), notification);
    QVERIFY2(outcome.kind == wmsg::service::PushOutcome::Taken, qPrintable(outcome.reason));
}

WMMSMsg TestCorpusDaemon::exchange(const QByteArray &confirmation)
{
    m_listener.messages.clear();
    ScriptedConnection fetch = m_mmsc.accept();
    if (!fetch.readRequest().line.startsWith("GET http://")) {
        QTest::qFail("nothing is fetched", __FILE__, __LINE__);
    }
    answerOnce(fetch, "200 OK", confirmation);
    ScriptedConnection answer = m_mmsc.accept();
    const ScriptedRequest request = answer.readRequest();
    if (!request.body.startsWith("\x8C\x83") || !request.body.contains("\x95\x81")) {
        QTest::qFail("the MMSC is not told that the message is here", __FILE__, __LINE__);
    }
    answerOnce(answer, "200 OK");
    const bool came = QTest::qWaitFor([this] { return !m_listener.messages.isEmpty(); }, kPatience);
    if (!came) {
        QTest::qFail(contentOf(path("log")), __FILE__, __LINE__);
        return WMMSMsg();
    }
    return m_listener.messages.first();
}

void TestCorpusDaemon::retrievals_data()
{
    addFiles({"*.mms", "*.MMS"});
}

// What a handset sent is given out as an MMSC does: as a retrieve confirmation.
void TestCorpusDaemon::retrievals()
{
    QFETCH(QString, file);
    QByteArray pdu = contentOf(file);
    QVERIFY(pdu.startsWith("\x8C\x80") || pdu.startsWith("\x8C\x84"));
    pdu[1] = '\x84';
    ++m_number;
    push(notificationOf(QString("t%1").arg(m_number),
                        QString("http://mmsc.example/%1").arg(m_number), quint32(pdu.size())));
    WMMSMsg message = exchange(pdu);

    const auto read = wmsg::intake::takeIn(pdu);
    QCOMPARE(read.lost.size(), 0);
    const QByteArray readable = read.pdu.joined();
    QArray<char> bytes{QByteArrayView(readable)};
    WMMSMsg expected;
    QCOMPARE(expected.construct(bytes, true), quint32(MMS_DECODE_OK));
    QCOMPARE(wordsOf(message), wordsOf(expected));

    const QList<QByteArray> parts = Walk(pdu).parts();
    const auto *received = message.getMultiParts().subParts();
    QVERIFY(!parts.isEmpty() && received);
    QCOMPARE(received->size(), parts.size());
    for (qsizetype n = 0; n < parts.size(); ++n) {
        const WMMSMultipart &part = received->at(n);
        const QByteArray data = part.getData().view().toByteArray();
        const QString type = part.getContentType().getMimeType();
        const bool isText = type.startsWith("text/") || type == "application/smil";
        QVERIFY2(isText ? data.isValidUtf8() : data == parts[n], qPrintable(type));
        QVERIFY(!isText || data.isEmpty() == parts[n].isEmpty());
    }
}

void TestCorpusDaemon::notifications_data()
{
    addFiles({"ni-*.mms"});
}

// As they stand, and in a push.
void TestCorpusDaemon::notifications()
{
    QFETCH(QString, file);
    const QByteArray confirmation = retrieveConfirmation("Hello");
    push(contentOf(file));
    WMMSMsg message = exchange(confirmation);
    QCOMPARE(message.getMultiParts().subParts()->first().getData().view().toByteArray(), "Hello");
    // The same once more is known, and answered.
    push(fromHex("01 06 03 BE AF 84") + contentOf(file));
    ScriptedConnection answer = m_mmsc.accept();
    QVERIFY(answer.readRequest().body.startsWith("\x8C\x83"));
    answerOnce(answer, "200 OK");
}

QTEST_GUILESS_MAIN(TestCorpusDaemon)
#include "tst_corpus_daemon.moc"
