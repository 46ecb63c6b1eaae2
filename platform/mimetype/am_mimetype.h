// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// The media type registry service: which file name extensions belong to a media type.
///
/// Here it answers from three tables: the phone types and the other names of known types, which
/// come with this library, and the shared MIME database of the system. There is one registry per
/// process. It is made when it is first asked, lives as long as the process, and may be asked from
/// any thread.
class WMSG_PLATFORM_EXPORT AM_MimeType {
public:
    /// instance returns the registry of this process. It is never null and must not be deleted.
    static AM_MimeType *instance();

    /// getExtListByMimeId returns the extensions of the media type `mimeId`, without a dot; the
    /// first is the one that a new file gets. Parameters after a ";" and white space around the
    /// name are ignored, and so is case. The list is empty for a type that nobody knows, and for
    /// one that names no kind of file: wildcards, multipart types, protocol types.
    [[nodiscard]] QStringList getExtListByMimeId(const QString &mimeId) const;

private:
    AM_MimeType();
    ~AM_MimeType() = default;
    Q_DISABLE_COPY_MOVE(AM_MimeType)

    QHash<QString, QStringList> m_phoneTypes;
};
