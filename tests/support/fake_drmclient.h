// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/drmclient/drm_client.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <cstdlib>
#include <cstring>

/// A DRM client that answers as a test wants, in front of the real one: a test program that
/// includes this header defines its operations itself. There is one object at a time.
///
///     FakeDrmClient client;
///     client.canForward = 0;
///     QVERIFY(!WMMSDrmUtil::MMS_CanForward("a.dcf"));
///     QCOMPARE(client.calls, QStringList({"IsDRMFile a.dcf", "CanForward a.dcf"}));
class FakeDrmClient {
public:
    FakeDrmClient()
    {
        if (s_current) {
            qFatal("FakeDrmClient: there is one already");
        }
        s_current = this;
    }
    ~FakeDrmClient() { s_current = nullptr; }
    Q_DISABLE_COPY_MOVE(FakeDrmClient)

    // What is answered.
    int isDrmFile = 1;
    int canForward = 1;
    int hasIssuer = 1;
    int status = 0;
    QByteArray contentType = "image/jpeg";
    QByteArray issuer = "http://r.i/";
    /// Paths that may not be forwarded whatever canForward says.
    QStringList locked;

    // What was asked: operation and path, and the bytes and the access rights of the files then.
    QStringList calls;
    QList<QByteArray> contents;
    QList<QFile::Permissions> permissions;

    static FakeDrmClient &current()
    {
        if (!s_current) {
            qFatal("FakeDrmClient: there is none");
        }
        return *s_current;
    }

    QString note(const char *operation, const char *path)
    {
        const QString name = QFile::decodeName(path);
        calls.append(QLatin1String(operation) + ' ' + name);
        QFile file(name);
        contents.append(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("NO FILE"));
        permissions.append(file.permissions());
        return name;
    }

    DRM_CONTENT_METADATA_T *newRecord() const
    {
        void *memory = std::calloc(1, sizeof(DRM_CONTENT_METADATA_T));
        auto *record = static_cast<DRM_CONTENT_METADATA_T *>(memory);
        std::memcpy(record->contentType, contentType.constData(), size_t(contentType.size()));
        std::memcpy(record->rightsIssuerURL, issuer.constData(), size_t(issuer.size()));
        return record;
    }

private:
    static inline FakeDrmClient *s_current = nullptr;
};

// Nobody calls these in the test itself: "used" keeps them.
[[gnu::used]] inline int DRM_IsDRMFile(const char *path)
{
    FakeDrmClient &client = FakeDrmClient::current();
    client.note("IsDRMFile", path);
    return client.isDrmFile;
}

[[gnu::used]] inline int DRM_CanForward(const char *path)
{
    FakeDrmClient &client = FakeDrmClient::current();
    return client.locked.contains(client.note("CanForward", path)) ? 0 : client.canForward;
}

[[gnu::used]] inline int DRM_HasRightsIssuerURL(const char *path)
{
    FakeDrmClient &client = FakeDrmClient::current();
    client.note("HasRightsIssuerURL", path);
    return client.hasIssuer;
}

[[gnu::used]] inline int DRM_GetContentMetaDataInFile(const char *path, int option,
                                                      DRM_CONTENT_METADATA_T **record,
                                                      unsigned int *unused)
{
    FakeDrmClient &client = FakeDrmClient::current();
    client.note("GetContentMetaDataInFile", path);
    if (option != 0 || !unused) {
        qFatal("FakeDrmClient: asked in another way than told");
    }
    *record = client.newRecord(); // one that fails may have made it before
    return client.status;
}
