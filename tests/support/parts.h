// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmultipart.h"
#include "tests/support/hex.h"

#include <initializer_list>
#include <utility>

/// Message parts as the tests write them.

/// bytesOf returns an array of its own with `bytes`; it is never null.
inline QArray<char> bytesOf(const QByteArray &bytes)
{
    return QArray<char>(QByteArrayView(bytes.constData(), bytes.size()));
}

/// arrayOf returns an array of its own with the bytes that `hex` spells.
inline QArray<char> arrayOf(QByteArrayView hex)
{
    return bytesOf(fromHex(hex));
}

/// hexOf returns the bytes of an array in the form that arrayOf() reads.
inline QByteArray hexOf(const QArray<char> &bytes)
{
    return toHex(bytes.view());
}

using Params = std::initializer_list<std::pair<const char *, QString>>;

inline WMMSContentType typeOf(const QString &mimeType, Params params = {})
{
    WMMSContentType type;
    type.setMimeType(mimeType);
    for (const auto &[name, value] : params) {
        type.setParam(QString::fromLatin1(name), value);
    }
    return type;
}

/// partOf returns a part of a type with `data` as its bytes; id and location are set unless they
/// are null.
inline WMMSMultipart partOf(const QString &mimeType, const QByteArray &data,
                            const QString &id = QString(), const QString &location = QString())
{
    WMMSMultipart part;
    part.setContentType(typeOf(mimeType));
    if (!id.isNull()) {
        part.setContentID(id);
    }
    if (!location.isNull()) {
        part.setContentLocation(location);
    }
    part.setData(bytesOf(data));
    return part;
}

/// parentOf returns a part of a type with `parts` below it.
inline WMMSMultipart parentOf(const QString &mimeType, const QList<WMMSMultipart> &parts)
{
    WMMSMultipart parent;
    parent.setContentType(typeOf(mimeType));
    parent.setSubMmsMultipart(parts);
    return parent;
}

inline const QString kRelated = QStringLiteral("application/vnd.wap.multipart.related");
inline const QString kMixed = QStringLiteral("application/vnd.wap.multipart.mixed");

/// shown returns a part in one line: media type and parameters, id, location and data, with the
/// parts below it in braces. A null text shows as "-", an empty one as "''".
inline QByteArray shown(const WMMSMultipart &part)
{
    const auto text = [](const QString &value) {
        return value.isNull() ? QByteArray("-")
            : value.isEmpty() ? QByteArray("''")
                              : value.toUtf8();
    };
    QByteArray line = text(part.getContentType().getMimeType());
    const auto &params = part.getContentType().params();
    for (auto param = params.cbegin(); param != params.cend(); ++param) {
        line += ';' + param.key().toUtf8() + '=' + param.value().toUtf8();
    }
    line += " id=" + text(part.getContentID()) + " at=" + text(part.getContentLocation());
    line += " [" + hexOf(part.getData()) + ']';
    if (part.subParts()) {
        line += " {";
        for (const WMMSMultipart &below : *part.subParts()) {
            line += '(' + shown(below) + ')';
        }
        line += '}';
    }
    return line;
}
