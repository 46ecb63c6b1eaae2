// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/local_listener.h"
#include "services/common/push_client.h"
#include "services/common/push_records.h"
#include "tests/support/local_peer.h"

#include <QtTest/QtTest>

#include <atomic>
#include <poll.h>
#include <thread>

using namespace std::chrono_literals;
using namespace wmsg::service;

namespace {

/// A daemon that takes one client, reads so many bytes, answers in pieces, and hangs up.
class Daemon {
public:
    Daemon(const QString &path, qsizetype size, const QByteArrayList &pieces)
    {
        m_listener.listen(path).isEmpty() ? void() : qFatal("Daemon: cannot listen");
        QObject::connect(&m_listener, &LocalListener::connected,
                         [this, size, pieces](qintptr descriptor) {
                             m_thread = std::thread([this, descriptor, size, pieces] {
                                 serve(int(descriptor), size, pieces);
                             });
                         });
    }
    ~Daemon()
    {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    Q_DISABLE_COPY_MOVE(Daemon)

    bool hasServed() const { return m_hasServed; }
    QByteArray heard()
    {
        m_thread.join();
        return m_heard;
    }

private:
    void serve(int socket, qsizetype size, const QByteArrayList &pieces)
    {
        char bytes[65536 + 4];
        pollfd ready = {socket, POLLIN, 0};
        while (m_heard.size() < size && ::poll(&ready, 1, 10000) == 1) {
            const ssize_t got = ::recv(socket, bytes, sizeof bytes, 0);
            if (got <= 0) {
                break;
            }
            m_heard.append(bytes, got);
        }
        for (const QByteArray &piece : pieces) {
            (void)::send(socket, piece.constData(), size_t(piece.size()), MSG_NOSIGNAL);
            std::this_thread::yield();
        }
        ::close(socket);
        m_hasServed = true;
    }

    LocalListener m_listener;
    std::thread m_thread;
    QByteArray m_heard;
    std::atomic<bool> m_hasServed = false;
};

struct Case {
    const char *name;
    QByteArrayList answer; // hex, in pieces
    PushOutcome::Kind kind;
    QString reason;
};

const Case kCases[] = {
    {"taken", {"00 00 00"}, PushOutcome::Taken, ""},
    {"refused", {"01 00 02 6E 6F"}, PushOutcome::Refused, "no"},
    {"refused without a reason", {"01 00 00"}, PushOutcome::Refused, "refused"},
    {"in pieces", {"01", "00 03 C3", "A4 21"}, PushOutcome::Refused, QString::fromUtf8("\u00e4!")},
    {"no answer", {}, PushOutcome::NotReached, "the daemon closed the connection"},
    {"half an answer",
     {"01 00 02 6E"},
     PushOutcome::NotReached,
     "the daemon closed the connection"},
};

} // namespace

Q_DECLARE_METATYPE(Case)

class TestPushClient : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("socket");
    }

    void records()
    {
        QCOMPARE(toHex(pushRecord("hi")), QByteArray("00 00 00 02 68 69"));
        QCOMPARE(toHex(pushAnswer(QString())), QByteArray("00 00 00"));
        QCOMPARE(toHex(pushAnswer("no")), QByteArray("01 00 02 6E 6F"));
        QVERIFY(readPushAnswer(pushAnswer(QString(70000, QChar(0x20ac)))).has_value());
    }

    void readsPushes_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("size");
        QTest::newRow("nothing") << fromHex("") << int(ReceivedPush::CutOff) << 0;
        QTest::newRow("half a length") << fromHex("00 00 00") << int(ReceivedPush::CutOff) << 0;
        QTest::newRow("half a PDU") << fromHex("00 00 00 02 68") << int(ReceivedPush::CutOff) << 0;
        QTest::newRow("a PDU") << fromHex("00 00 00 02 68 69") << int(ReceivedPush::Whole) << 6;
        QTest::newRow("and more") << fromHex("00 00 00 01 68 69") << int(ReceivedPush::Whole) << 5;
        QTest::newRow("an empty PDU") << fromHex("00000000") << int(ReceivedPush::Impossible) << 0;
        QTest::newRow("too long") << fromHex("00010001") << int(ReceivedPush::Impossible) << 0;
        QTest::newRow("far too long") << fromHex("FFFFFFFF") << int(ReceivedPush::Impossible) << 0;
        QTest::newRow("the longest")
            << fromHex("00010000") + QByteArray(65536, 'x') << int(ReceivedPush::Whole) << 65540;
    }
    void readsPushes()
    {
        QFETCH(QByteArray, stream);
        const ReceivedPush push = readPush(stream);
        QTEST(int(push.kind), "kind");
        QTEST(int(push.size), "size");
        QCOMPARE(push.pdu, stream.mid(4, qMax<qsizetype>(push.size - 4, 0)));
    }

    void pushes_data() { cases(); }
    void pushes()
    {
        QFETCH(Case, row);
        Daemon daemon(m_path, 6, bytesOf(row.answer));
        PushOutcome outcome;
        // The daemon is taken by this thread's loop, so the call that blocks has one of its own.
        std::atomic<bool> isOver = false;
        std::thread client([&] {
            outcome = push(m_path, "hi", 10s);
            isOver = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(isOver, 30000);
        client.join();
        QCOMPARE(outcome.kind, row.kind);
        QCOMPARE(outcome.reason, row.reason);
        QCOMPARE(toHex(daemon.heard()), QByteArray("00 00 00 02 68 69"));
    }

    void pushesFromTheLoop_data() { cases(); }
    void pushesFromTheLoop()
    {
        QFETCH(Case, row);
        Daemon daemon(m_path, 6, bytesOf(row.answer));
        PushRequest request(m_path, "hi", 10s);
        const PushOutcome outcome = outcomeOf(request);
        QCOMPARE(outcome.kind, row.kind);
        QCOMPARE(outcome.reason, row.reason);
        QCOMPARE(toHex(daemon.heard()), QByteArray("00 00 00 02 68 69"));
    }

    void theLongestPduArrives()
    {
        const QByteArray pdu(kLongestPush, 'x');
        Daemon daemon(m_path, pdu.size() + 4, {fromHex("00 00 00")});
        PushRequest request(m_path, pdu, 10s);
        QCOMPARE(outcomeOf(request).kind, PushOutcome::Taken);
        QVERIFY(daemon.heard() == pushRecord(pdu));
    }

    void impossiblePdusAreNotSent_data()
    {
        QTest::addColumn<QByteArray>("pdu");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray() << "it is empty";
        QTest::newRow("too long") << QByteArray(kLongestPush + 1, 'x')
                                  << "it has 65537 bytes, and 65536 is the limit";
    }
    void impossiblePdusAreNotSent()
    {
        QFETCH(QByteArray, pdu);
        PushRequest request(m_path, pdu, 10s);
        const PushOutcome outcome = outcomeOf(request);
        QCOMPARE(outcome.kind, PushOutcome::Refused);
        QTEST(outcome.reason, "reason");
        QTEST(push(m_path, pdu).reason, "reason");
    }

    void nobodyListens()
    {
        QCOMPARE(push(m_path, "hi").kind, PushOutcome::NotReached);
        QCOMPARE(push(m_path, "hi").reason, QString("No such file or directory"));
        QCOMPARE(push("relative", "hi").kind, PushOutcome::NotReached);
        PushRequest request(m_path, "hi", 10s);
        QCOMPARE(outcomeOf(request).kind, PushOutcome::NotReached);
    }

    void aDaemonThatDoesNotAnswer()
    {
        LocalListener silent; // its peers stay in the queue of the system
        QCOMPARE(silent.listen(m_path), QString());
        const PushOutcome outcome = push(m_path, "hi", 20ms);
        QCOMPARE(outcome.kind, PushOutcome::NotReached);
        QCOMPARE(outcome.reason, QString("the daemon gave no answer in time"));
        QList<Descriptor *> kept;
        connect(&silent, &LocalListener::connected,
                [&kept](qintptr descriptor) { kept.append(new Descriptor(int(descriptor))); });
        PushRequest request(m_path, "hi", 20ms);
        QCOMPARE(outcomeOf(request).reason, QString("the daemon gave no answer in time"));
        qDeleteAll(kept);
    }

    void aRequestThatIsDeletedTellsNothing()
    {
        Daemon daemon(m_path, 0, {fromHex("00 00 00")});
        {
            PushRequest request(m_path, "hi", 10s);
            connect(&request, &PushRequest::finished, [] { QFAIL("told after its end"); });
        }
        QTRY_VERIFY(daemon.hasServed());
        QCoreApplication::processEvents();
    }

private:
    static void cases()
    {
        QTest::addColumn<Case>("row");
        for (const Case &row : kCases) {
            QTest::newRow(row.name) << row;
        }
    }
    static QByteArrayList bytesOf(const QByteArrayList &pieces)
    {
        QByteArrayList bytes;
        for (const QByteArray &piece : pieces) {
            bytes.append(fromHex(piece));
        }
        return bytes;
    }
    static PushOutcome outcomeOf(PushRequest &request)
    {
        QSignalSpy spy(&request, &PushRequest::finished);
        (void)QTest::qWaitFor([&spy] { return spy.count() > 0; }, 30000);
        QTest::qWait(0);
        return spy.count() == 1 ? spy.at(0).at(0).value<PushOutcome>()
                                : PushOutcome{PushOutcome::NotReached, "told not once"};
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestPushClient)
#include "tst_push_client.moc"
