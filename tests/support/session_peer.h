// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/local_peer.h"
#include "tests/support/proxy_records.h"

#include <QtCore/QMap>
#include <QtCore/QtEndian>

/// A session as bytes: it sends commands to a daemon and tells its events in words.
///
///     SessionPeer session(path);
///     session.registerApp(0, "chess");
///     QCOMPARE(session.next(), "registered 0 0");
class SessionPeer : public LocalPeer {
public:
    using LocalPeer::LocalPeer;

    void sendMessage(int request, const QString &path) { named(1, request, path, true); }
    void registerApp(int request, const QString &appId) { named(2, request, appId, false); }
    void deregisterApp(int request, const QString &appId) { named(3, request, appId, false); }
    void retrieve(int request, const QString &uri) { named(4, request, uri, true); }
    void abort(int request, int target) { about(6, request, target); }
    void pause(int request, int target) { about(7, request, target); }
    void resume(int request, int target) { about(8, request, target); }

    /// The next event in words; waits for it. Progress is left out unless it is asked for.
    QString next(bool withProgress = false)
    {
        QString event;
        do {
            event = readEvent();
        } while (!withProgress && event.startsWith("progress"));
        return event;
    }
    /// So many events.
    QStringList next(int count)
    {
        QStringList events;
        while (events.size() < count) {
            events.append(next());
        }
        return events;
    }
    /// The path of the mail file that the next event brings.
    QString nextMail()
    {
        const QString event = next();
        if (!event.startsWith("retrieved ")) {
            QTest::qFail(qPrintable("no message but: " + event), __FILE__, __LINE__);
        }
        return event.mid(10);
    }

private:
    void named(int type, int request, const QString &text, bool hasReserved)
    {
        const int size = int(text.size() * 2);
        QByteArray bytes = record::words({type, size, request, size});
        if (hasReserved) {
            bytes += record::words({0});
        }
        sendBytes(bytes + record::units(text));
    }
    void about(int type, int request, int target)
    {
        sendBytes(record::words({type, 0, request, target}));
    }

    QString readEvent()
    {
        static const QMap<int, int> kWords = {{1, 4}, {2, 3}, {3, 1}, {4, 3},
                                              {5, 2}, {6, 2}, {7, 5}};
        const QByteArray head = take(8);
        if (head.size() < 8) {
            return "nothing";
        }
        const int type = number(head, 0);
        QByteArray fixed = take(kWords.value(type) * 4);
        const QByteArray extra = take(number(head, 1));
        const QString text(reinterpret_cast<const QChar *>(extra.constData()), extra.size() / 2);
        const auto word = [&fixed](int n) {
            return number(fixed, n);
        };
        switch (type) {
        case 1:
            return QString("completed %1 %2 %3").arg(word(0)).arg(word(3)).arg(text).trimmed();
        case 2:
            return QString("registered %1 %2").arg(word(0)).arg(word(2));
        case 3:
            return "retrieved " + text;
        case 4:
            return QString("progress %1 %2 %3").arg(word(0)).arg(word(1)).arg(word(2));
        case 5:
            return QString("status %1 %2").arg(word(0)).arg(word(1));
        case 6:
            return QString("announced %1 %2").arg(text.mid(word(1) / 2), text.left(word(1) / 2));
        case 7:
            return QString("report %1 %2").arg(text.left(word(1) / 2), text.right(word(2) / 2));
        default:
            return QString("unknown %1").arg(type);
        }
    }
    static int number(const QByteArray &bytes, int n)
    {
        return bytes.size() >= 4 * n + 4 ? qFromUnaligned<qint32>(bytes.constData() + 4 * n) : -1;
    }
};
