// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmentry.h"
#include "mms/codec/wmmscontenttype.h"
#include "mms/model/wmmsmsg.h"
#include "mms/model/wmmsmultipart.h"
#include "qt2/qarray.h"
#include "qt2/qvaluelist.h"
#include "tests/vectors/operations.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>

/// The JSON forms of the vectors, in both directions. A form with an unknown key, or of another
/// kind than asked for, is a VectorError.

namespace vectors {

/// Fails when `object` has a key that is not one of `keys`, which are separated by blanks.
void allowKeys(const QJsonObject &object, const char *keys);

/// The value of `json` as a T. Defined for: bool, quint8, short, int, unsigned int, QString,
/// QArray<char> (hex), QDateTime, WMFMEntry, QValueList<WMFMEntry>, WMMSContentType and
/// WMMSMultipart.
template <typename T> T from(const QJsonValue &json);

template <> bool from<bool>(const QJsonValue &json);
template <> quint8 from<quint8>(const QJsonValue &json);
template <> quint16 from<quint16>(const QJsonValue &json);
template <> short from<short>(const QJsonValue &json);
template <> int from<int>(const QJsonValue &json);
template <> unsigned int from<unsigned int>(const QJsonValue &json);
template <> QString from<QString>(const QJsonValue &json);
template <> QArray<char> from<QArray<char>>(const QJsonValue &json);
template <> QDateTime from<QDateTime>(const QJsonValue &json);
template <> WMFMEntry from<WMFMEntry>(const QJsonValue &json);
template <> QValueList<WMFMEntry> from<QValueList<WMFMEntry>>(const QJsonValue &json);
template <> WMMSContentType from<WMMSContentType>(const QJsonValue &json);
template <> WMMSMultipart from<WMMSMultipart>(const QJsonValue &json);

/// The value of `key` as a T, or `fallback` when the key is absent.
template <typename T> T valueOr(const QJsonObject &object, const char *key, const T &fallback)
{
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isUndefined() ? fallback : from<T>(value);
}

QJsonValue toJson(bool value);
QJsonValue toJson(quint8 value);
QJsonValue toJson(quint16 value);
QJsonValue toJson(int value);
QJsonValue toJson(unsigned int value);
QJsonValue toJson(const QString &text);
QJsonValue toJson(const QDateTime &dateTime);
QJsonValue toJson(const WMFMEntry &entry);
QJsonValue toJson(const QValueList<WMFMEntry> &entries);
QJsonValue toJson(const WMMSContentType &type);
QJsonValue toJson(WMMSMultipart &part);
QJsonValue toJson(QValueList<WMMSMultipart> &parts);

/// Bytes as lower-case hex.
QJsonValue hex(QByteArrayView bytes);
inline QJsonValue hex(const QArray<char> &bytes)
{
    return hex(bytes.view());
}

/// Fills `message`, which is fresh, with the form "msg".
void build(WMMSMsg &message, const QJsonValue &json);

} // namespace vectors
