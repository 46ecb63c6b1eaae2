// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QMap>
#include <QtCore/QString>

/// WMMSContentType is a media type with its parameters: the value of a Content-Type header, of a
/// whole message or of one part. It is also the bridge between media type names and the numbers
/// that stand for them on the wire.
///
/// It is a value: copies are independent, and it may be used in any thread, one thread at a time.
/// Types, parameter names and values are compared with their case.
class WMSG_EXPORT WMMSContentType {
public:
    /// WMMSContentType() has neither type nor parameters.
    WMMSContentType() = default;

    /// setMainType and setSubType store any text, null and empty ones included.
    void setMainType(const QString &mainType) { m_mainType = mainType; }
    QString getMainType() const { return m_mainType; }
    void setSubType(const QString &subType) { m_subType = subType; }
    QString getSubType() const { return m_subType; }

    /// setMimeType splits `mimeType` at its first "/" into main and sub type. A text without one
    /// becomes both of them. The parameters stay.
    void setMimeType(const QString &mimeType);
    /// setWellKnownMedia sets the types to those of a well-known media number, as
    /// setMimeType(getMimeType(id)) would: both become empty for a number above 163.
    void setWellKnownMedia(quint8 id);
    /// getMimeType returns the main type, "/" and the sub type; the empty string when one of them
    /// is empty.
    QString getMimeType() const;
    /// isMimeType tells whether getMimeType() equals `mimeType`, without building it.
    [[nodiscard]] bool isMimeType(QLatin1String mimeType) const;

    /// getMimeType(id) returns the media type of a well-known number, 0 to 163; the empty string
    /// for a higher one.
    static QString getMimeType(unsigned char id);
    /// getMimeID returns the lowest well-known number of `mimeType`, -1 when it has none. The case
    /// counts.
    static int getMimeID(const QString &mimeType);

    /// wellKnownId returns the well-known number of this media type, as getMimeID(getMimeType())
    /// gives it.
    [[nodiscard]] int wellKnownId() const;

    /// isEmpty returns true when the main type or the sub type is null or empty.
    bool isEmpty() const { return m_mainType.isEmpty() || m_subType.isEmpty(); }

    /// getParamCount returns the number of parameters.
    int getParamCount() const { return static_cast<int>(m_params.size()); }
    /// getParam returns the value of a parameter; the null string when there is none of that name.
    QString getParam(const QString &name) const { return m_params.value(name); }
    /// setParam sets a parameter, or replaces its value. An empty or null value removes the name.
    void setParam(const QString &name, const QString &value);
    /// params returns all parameters in the order of their names.
    [[nodiscard]] const QMap<QString, QString> &params() const { return m_params; }

    /// getParamType returns the "type" parameter: of a related multipart, the media type of its
    /// root.
    QString getParamType() const;
    void setParamType(const QString &value);
    /// getParamStart returns the "start" parameter: of a related multipart, the content id of its
    /// root.
    QString getParamStart() const;
    void setParamStart(const QString &value);

    /// needDecode tells whether a body of this type holds further parts to decode: a related or
    /// mixed multipart, and a DRM message without a "boundary".
    bool needDecode() const;

    /// toString returns the media type, a blank, and with parameters ";" and "name=value;" for each
    /// in the order of names: "text/plain ;charset=UTF-16;". It does not read back with
    /// fromString().
    QString toString() const;
    /// toStringWithQuotes returns the media type, a blank, and `;name="value"` for each parameter
    /// in the order of names: `text/plain ;charset="UTF-16"`. It does not read back with
    /// fromString().
    QString toStringWithQuotes() const;
    /// fromString sets the type, and adds the parameters, from a text like
    /// "text/plain;charset=utf-8". Nothing is trimmed: a blank behind a ";" belongs to the next
    /// name. One pair of double quotes around a value is dropped. Characters outside Latin-1 become
    /// "?". Texts of any length are kept whole. It returns true.
    bool fromString(const QString &text);

private:
    QString m_mainType;
    QString m_subType;
    QMap<QString, QString> m_params;
};

Q_DECLARE_TYPEINFO(WMMSContentType, Q_RELOCATABLE_TYPE);
