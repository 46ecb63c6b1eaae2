// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/engine/mms_eng_controller.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <cstdlib>
#include <cstring>

/// Records of the engine as the tests write and show them.

/// A storage tree of its own, with a store in it when the engine is first used, and the engine.
class StorageRoot {
public:
    StorageRoot() : m_before(qgetenv("UVO_EXTRA_SYS_DATA_PATH")) { use(); }
    ~StorageRoot() { qputenv("UVO_EXTRA_SYS_DATA_PATH", m_before); }
    StorageRoot(const StorageRoot &) = delete;
    StorageRoot &operator=(const StorageRoot &) = delete;

    /// Makes it the tree of this process, which it is as long as no other one is made.
    void use() const { qputenv("UVO_EXTRA_SYS_DATA_PATH", m_folder.path().toLocal8Bit()); }
    [[nodiscard]] QString path() const { return m_folder.path(); }
    [[nodiscard]] QString store() const { return m_folder.path() + "/mms/engine/"; }
    /// The files with the bytes of parts.
    [[nodiscard]] QStringList partFiles() const
    {
        return QDir(store() + "parts").entryList(QDir::Files, QDir::Name);
    }
    MMS_ENG_Controller *operator->() const { return MMS_ENG_Controller::Instance(); }

private:
    QTemporaryDir m_folder;
    QByteArray m_before;
};

/// A wide string from malloc; null for a null string.
inline unsigned short *wide(const QString &text)
{
    if (text.isNull()) {
        return nullptr;
    }
    auto *units =
        static_cast<unsigned short *>(calloc(size_t(text.size()) + 1, sizeof(unsigned short)));
    memcpy(units, text.constData(), size_t(text.size()) * sizeof(unsigned short));
    return units;
}

/// A string from malloc; null for null bytes.
inline char *narrow(const QByteArray &text)
{
    return text.isNull() ? nullptr : strdup(text.constData());
}

inline QString shownText(const unsigned short *text)
{
    if (!text) {
        return "-";
    }
    const QString read = QString::fromUtf16(reinterpret_cast<const char16_t *>(text));
    return '"' + read + '"';
}

inline QString shownText(const char *text)
{
    return text ? '"' + QString::fromUtf8(text) + '"' : "-";
}

/// A header record that releases what it points to.
struct HeaderRecord : MMS_MSG_HDR_T {
    HeaderRecord() : MMS_MSG_HDR_T() { }
    ~HeaderRecord() { MMS_ENG_Controller::Instance()->FreeMMSHdr(this); }
    HeaderRecord(const HeaderRecord &) = delete;
    HeaderRecord &operator=(const HeaderRecord &) = delete;

    /// All words, a line each, null texts as "-".
    [[nodiscard]] QString shown() const
    {
        const QStringList words = {"from " + shownText(from),
                                   "to " + shownText(to),
                                   "cc " + shownText(cc),
                                   "bcc " + shownText(bcc),
                                   "subject " + shownText(subject),
                                   QString("reserved %1").arg(reserved),
                                   QString("priority %1").arg(priority),
                                   QString("class %1").arg(msgClass),
                                   QString("expiry %1").arg(expiry),
                                   QString("date %1").arg(date),
                                   QString("delivery-report %1").arg(deliveryReport),
                                   QString("read-report %1").arg(readReport),
                                   QString("size %1").arg(size),
                                   QString("delivery-time %1").arg(deliveryTime),
                                   "presentation " + shownText(presentation),
                                   QString("forwardable %1").arg(forwardable),
                                   "app " + shownText(appId),
                                   "reply-app " + shownText(replyAppId),
                                   "aux " + shownText(auxAppInfo)};
        return words.join('\n');
    }
};

/// A body record that releases what it points to.
struct BodyRecord : MMS_MSG_BDY_T {
    BodyRecord() : MMS_MSG_BDY_T() { }
    explicit BodyRecord(const QByteArray &type) : MMS_MSG_BDY_T()
    {
        contentType = narrow(type);
        parts = static_cast<MMS_MSG_PART_T *>(calloc(MMS_ENG_MAX_PARTS, sizeof(MMS_MSG_PART_T)));
    }
    ~BodyRecord() { MMS_ENG_Controller::Instance()->FreeMMSBdy(this); }
    BodyRecord(const BodyRecord &) = delete;
    BodyRecord &operator=(const BodyRecord &) = delete;

    /// Appends a part in memory; null data makes it a part without data.
    MMS_MSG_PART_T &add(const QByteArray &mimeType, const QByteArray &bytes)
    {
        MMS_MSG_PART_T &part = parts[partCount++];
        part.mimeType = narrow(mimeType);
        if (!bytes.isNull()) {
            part.data = malloc(size_t(bytes.size()) + 1);
            memcpy(part.data, bytes.constData(), size_t(bytes.size()));
        }
        part.size = int(bytes.size());
        return part;
    }

    /// The bytes of a part, wherever they are.
    [[nodiscard]] QByteArray bytes(unsigned int index) const
    {
        const MMS_MSG_PART_T &part = parts[index];
        if (part.storage == MMS_PART_IN_MEMORY) {
            return QByteArray(static_cast<const char *>(part.data), part.data ? part.size : 0);
        }
        QFile file(QString::fromUtf16(reinterpret_cast<const char16_t *>(part.dataFile)));
        return file.open(QIODevice::ReadOnly) && file.seek(part.offset) ? file.read(part.size)
                                                                        : QByteArray("NO FILE");
    }

    /// The content type and a line for each part with all its texts and bytes.
    [[nodiscard]] QString shown() const
    {
        QStringList lines = {shownText(contentType)};
        for (unsigned int i = 0; i < partCount; ++i) {
            const MMS_MSG_PART_T &part = parts[i];
            const QStringList words = {
                shownText(part.mimeType),        shownText(part.contentId),
                shownText(part.contentLocation), shownText(part.fileName),
                shownText(part.headerText),      QString::fromLatin1(bytes(i).toHex(' '))};
            lines += words.join(' ');
        }
        return lines.join('\n');
    }
};
