// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/settings_server.h"
#include "tests/support/local_peer.h"
#include "tests/support/other_user.h"

#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace wmsg::proxy;

class TestSettingsServer : public QObject {
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<qint32>("size");
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("as documented")
            << qint32(307200) << "hi" << QByteArray("00 04 B0 00 00 00 00 04 00 68 00 69");
        QTest::newRow("no URI") << qint32(1) << QString("")
                                << QByteArray("00 00 00 01 00 00 00 00");
        QTest::newRow("null URI") << qint32(1) << QString()
                                  << QByteArray("00 00 00 01 FF FF FF FF");
    }
    void answers()
    {
        QFETCH(qint32, size);
        QFETCH(QString, uri);
        QTEST(toHex(settingsAnswer(size, uri)), "answer");
    }

    void theLongestAnswerFitsOneRead()
    {
        QCOMPARE(settingsAnswer(1, QString(60, 'x')).size(), 128);
        QCOMPARE(settingsAnswer(1, QString(61, 'x')), QByteArray());
    }

    void answersEachClientOnceAndCloses()
    {
        const QByteArray answer = settingsAnswer(307200, QString(60, QChar(0x20ac)));
        SettingsServer server(answer);
        QCOMPARE(server.listen(path(), 0600), QString());
        LocalPeer first(path());
        LocalPeer second(path());
        QCOMPARE(toHex(second.takeAll()), toHex(answer));
        QCOMPARE(toHex(first.takeAll()), toHex(answer));
    }

    void oneReadTakesTheWholeAnswer()
    {
        SettingsServer server(settingsAnswer(1, QString(60, 'x')));
        QCOMPARE(server.listen(path(), 0600), QString());
        const LocalPeer client(path());
        char bytes[128];
        const auto peek = [&] {
            return ::recv(client.descriptor(), bytes, 128, MSG_PEEK | MSG_DONTWAIT);
        };
        QTRY_VERIFY(peek() > 0);
        QCOMPARE(::read(client.descriptor(), bytes, 128), ssize_t(128));
        QCOMPARE(::read(client.descriptor(), bytes, 128), ssize_t(0));
    }

    void clientsThatTalkOrLeaveAreNoTrouble()
    {
        const QByteArray answer = settingsAnswer(5, "x");
        SettingsServer server(answer);
        QCOMPARE(server.listen(path(), 0600), QString());
        for (int i = 0; i < 20; ++i) {
            LocalPeer gone(path());
            gone.close();
        }
        LocalPeer talking(path());
        QVERIFY(talking.sendBytes(QByteArray(5000, 'x')));
        QCOMPARE(toHex(talking.takeAll()), toHex(answer));
    }

    void peersOfAnotherUserAreRefused()
    {
        if (!OtherUser::isPossible()) {
            QSKIP("only root can be somebody else");
        }
        QCOMPARE(::chmod(QFile::encodeName(m_folder.path()).constData(), 0755), 0);
        SettingsServer server(settingsAnswer(5, "x"));
        QCOMPARE(server.listen(path(), 0666), QString());
        QTest::ignoreMessage(QtWarningMsg, "a peer of another user (65534) is refused");
        OtherUser other(path());
        QTRY_VERIFY(other.isOver());
        QCOMPARE(other.result(), int(OtherUser::HungUpOn));
    }

private:
    QString path() const { return m_folder.filePath("socket"); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestSettingsServer)
#include "tst_settings_server.moc"
