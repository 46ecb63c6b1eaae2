// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/http_client.h"
#include "tests/support/scripted_http.h"

#include <QtCore/QFile>
#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QPointer>

/// Starts a request and keeps all that its transfer tells.
class TransferSpy {
public:
    TransferSpy(wmsg::proxy::HttpClient &client, const wmsg::proxy::HttpRequest &request)
        : transfer(client.start(request))
    {
        using wmsg::proxy::HttpTransfer;
        QObject::connect(transfer, &HttpTransfer::finished, transfer,
                         [this](const wmsg::proxy::HttpOutcome &told) { outcomes.append(told); });
        QObject::connect(transfer, &HttpTransfer::progress, transfer,
                         [this](qint64 done, qint64 total) {
                             progress.append({done, total});
                         });
    }
    ~TransferSpy()
    {
        if (transfer) {
            transfer->disconnect();
        }
    }
    Q_DISABLE_COPY_MOVE(TransferSpy)

    [[nodiscard]] bool hasEnded() const { return !outcomes.isEmpty(); }
    /// Waits for the end and returns it.
    wmsg::proxy::HttpOutcome wait()
    {
        if (!QTest::qWaitFor([this] { return hasEnded(); }, kHttpPatience)) {
            QTest::qFail("the transfer does not end", __FILE__, __LINE__);
            return {};
        }
        return outcomes.first();
    }

    QPointer<wmsg::proxy::HttpTransfer> transfer;
    QList<wmsg::proxy::HttpOutcome> outcomes;
    QList<QPair<qint64, qint64>> progress;
};

/// The whole content of a file.
inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes a file.
inline QString fileWith(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
    return path;
}

/// Bytes that differ from place to place.
inline QByteArray manyBytes(int count)
{
    QByteArray bytes(count, Qt::Uninitialized);
    quint32 value = 1;
    for (char &byte : bytes) {
        value = value * 1664525 + 1013904223;
        byte = char(value >> 24);
    }
    return bytes;
}

/// A request that fetches a URL, or one that posts something to it.
inline wmsg::proxy::HttpRequest getFrom(const QString &url)
{
    wmsg::proxy::HttpRequest request;
    request.url = url;
    return request;
}
inline wmsg::proxy::HttpRequest postTo(const QString &url, const QByteArray &body)
{
    wmsg::proxy::HttpRequest request;
    request.method = wmsg::proxy::HttpRequest::Method::Post;
    request.url = url;
    request.body = body;
    return request;
}
