// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/push_client.h"
#include "services/common/push_records.h"
#include "services/mmsproxyd/push_socket.h"
#include "tests/support/local_peer.h"
#include "tests/support/other_user.h"

#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace wmsg::proxy;
using namespace wmsg::service;

class TestPushSocket : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_taken.clear();
        m_reason.clear();
        m_socket = std::make_unique<PushSocket>([this](const QByteArray &pdu) {
            m_taken.append(pdu);
            return m_reason;
        });
        QCOMPARE(m_socket->listen(path(), 0600), QString());
    }

    void takes()
    {
        LocalPeer pusher(path());
        pusher.send("00000002 6869");
        pusher.expect("00 0000");
        QCOMPARE(m_taken, QByteArrayList{"hi"});
    }

    void refuses()
    {
        m_reason = "no";
        LocalPeer pusher(path());
        pusher.send("00000002 6869");
        pusher.expect("01 0002 6E6F");
    }

    void takesSeveralInAnyPieces()
    {
        const QByteArray stream = pushRecord("one") + pushRecord("two") + pushRecord("three");
        for (int step : {1, 2, 3, 5, 100}) {
            m_taken.clear();
            LocalPeer pusher(path());
            for (qsizetype at = 0; at < stream.size(); at += step) {
                QVERIFY(pusher.sendBytes(stream.mid(at, step)));
                QCoreApplication::processEvents();
            }
            pusher.expect("000000 000000 000000");
            QCOMPARE(m_taken, (QByteArrayList{"one", "two", "three"}));
        }
    }

    void theLongestPduIsTaken()
    {
        LocalPeer pusher(path());
        const QByteArray pdu(kLongestPush, 'x');
        QVERIFY(pusher.sendBytes(pushRecord(pdu) + pushRecord(pdu)));
        pusher.expect("000000 000000");
        QVERIFY(m_taken == QByteArrayList({pdu, pdu}));
    }

    void impossibleLengthsEndTheConnection_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::newRow("an empty PDU") << fromHex("00000000");
        QTest::newRow("a byte too long") << fromHex("00010001") + QByteArray(65537, 'x');
        QTest::newRow("the highest number") << fromHex("FFFFFFFF 00");
    }
    void impossibleLengthsEndTheConnection()
    {
        QFETCH(QByteArray, stream);
        QTest::ignoreMessage(QtWarningMsg,
                             "a pusher is ended: it announced a PDU of an impossible length");
        LocalPeer pusher(path());
        QVERIFY(pusher.sendBytes(pushRecord("first")));
        (void)pusher.sendBytes(stream);
        const QByteArray answers = pusher.takeAll();
        QCOMPARE(answers, pushAnswer(QString()) + pushAnswer("a PDU has 1 to 65536 bytes"));
        QCOMPARE(m_taken, QByteArrayList{"first"});
    }

    void aPusherThatLeavesInTheMiddle()
    {
        {
            LocalPeer pusher(path());
            pusher.send("00000001 61 00000009 62");
        }
        QTRY_COMPARE(m_taken, QByteArrayList{"a"});
        LocalPeer another(path());
        another.send("00000001 63");
        another.expect("000000");
        QCOMPARE(m_taken, (QByteArrayList{"a", "c"}));
    }

    void aPusherThatDoesNotReadIsNotListenedTo()
    {
        m_reason = QString(1000, 'x');
        LocalPeer pusher(path());
        const QByteArray record = pushRecord("hi");
        // More than the buffers of the system and the daemon hold, in answers.
        constexpr int kCount = 4000;
        QByteArray all;
        for (int i = 0; i < kCount; ++i) {
            all += record;
        }
        QVERIFY(pusher.sendBytes(all));
        QTRY_VERIFY(m_taken.size() > 10);
        for (int i = 0; i < 50; ++i) {
            QCoreApplication::processEvents();
        }
        const qsizetype before = m_taken.size();
        QVERIFY2(before < kCount, "all were taken although nobody reads the answers");
        QCOMPARE(pusher.take(kCount * 1003).size(), kCount * 1003);
        QCOMPARE(m_taken.size(), kCount);
    }

    void thereAreSixteenPushers()
    {
        std::vector<std::unique_ptr<LocalPeer>> pushers;
        for (size_t i = 0; i < PushSocket::kMostPushers; ++i) {
            pushers.push_back(std::make_unique<LocalPeer>(path()));
            pushers.back()->send("00000001 61");
            pushers.back()->expect("000000");
        }
        QTest::ignoreMessage(QtWarningMsg, "a pusher is refused: there are 16");
        LocalPeer(path()).expectEnd();
        pushers.front()->send("00000001 61");
        pushers.front()->expect("000000");
    }

    void whoLeavesMakesRoom()
    {
        for (size_t i = 0; i < 2 * PushSocket::kMostPushers; ++i) {
            LocalPeer pusher(path());
            pusher.send("00000001 61");
            pusher.expect("000000");
            pusher.close();
            QCoreApplication::processEvents(); // the end is noticed,
            QCoreApplication::processEvents(); // and told by the loop
        }
        QCOMPARE(m_taken.size(), qsizetype(2 * PushSocket::kMostPushers));
    }

    void theClientPushes()
    {
        PushRequest request(path(), "hi", std::chrono::seconds(30));
        QSignalSpy spy(&request, &PushRequest::finished);
        QTRY_COMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).value<PushOutcome>().kind, PushOutcome::Taken);
        QCOMPARE(m_taken, QByteArrayList{"hi"});
    }

    void peersOfAnotherUserAreRefused()
    {
        if (!OtherUser::isPossible()) {
            QSKIP("only root can be somebody else");
        }
        QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
        m_socket = nullptr;
        m_socket = std::make_unique<PushSocket>([this](const QByteArray &pdu) {
            m_taken.append(pdu);
            return QString();
        });
        QCOMPARE(m_socket->listen(path(), 0666), QString());
        QTest::ignoreMessage(QtWarningMsg, "a peer of another user (65534) is refused");
        OtherUser other(path(), pushRecord("hi"));
        QTRY_VERIFY(other.isOver());
        QCOMPARE(other.result(), int(OtherUser::HungUpOn));
        QCOMPARE(m_taken, QByteArrayList());
    }

private:
    QString path() const { return m_folder->filePath("socket"); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<PushSocket> m_socket;
    QByteArrayList m_taken;
    QString m_reason;
};

QTEST_GUILESS_MAIN(TestPushSocket)
#include "tst_push_socket.moc"
