// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QMap>
#include <QtCore/QString>

/// A media type with its parameters: the value of a Content-Type header, of a whole message or of
/// one part. It is also the bridge between media type names and the numbers that stand for them on
/// the wire.
///
/// It is a value: copies are independent. Types, parameter names and values are compared with their
/// case.
class WMSG_EXPORT WMMSContentType {
public:
    /// Neither type nor parameters.
    WMMSContentType() = default;

    void setMainType(const QString &mainType) { m_mainType = mainType; }
    QString getMainType() const { return m_mainType; }
    void setSubType(const QString &subType) { m_subType = subType; }
    QString getSubType() const { return m_subType; }

    /// Splits `mimeType` at its first "/" into main and sub type. A text without one becomes both
    /// of them. The parameters stay.
    void setMimeType(const QString &mimeType);
    /// Sets the types to those of a well-known media number, as setMimeType(getMimeType(id)) would.
    void setWellKnownMedia(quint8 id);
    /// The main type, "/" and the sub type; the empty string when one of them is empty.
    QString getMimeType() const;
    /// Tells whether getMimeType() equals `mimeType`, without building it.
    [[nodiscard]] bool isMimeType(QLatin1String mimeType) const;

    /// The media type of a well-known number, 0 to 163; the empty string for a higher one.
    static QString getMimeType(unsigned char id);
    /// The lowest well-known number of `mimeType`, -1 when it has none. The case counts.
    static int getMimeID(const QString &mimeType);

    /// The well-known number of this media type, as getMimeID(getMimeType()) gives it.
    [[nodiscard]] int wellKnownId() const;

    /// True when the main type or the sub type is null or empty.
    bool isEmpty() const { return m_mainType.isEmpty() || m_subType.isEmpty(); }

    int getParamCount() const { return static_cast<int>(m_params.size()); }
    /// The value of a parameter; the null string when there is none of that name.
    QString getParam(const QString &name) const { return m_params.value(name); }
    /// Sets a parameter, or replaces its value. An empty or null value removes the name.
    void setParam(const QString &name, const QString &value);
    /// All parameters in the order of their names.
    [[nodiscard]] const QMap<QString, QString> &params() const { return m_params; }

    /// The "type" parameter: of a related multipart, the media type of its root.
    QString getParamType() const;
    void setParamType(const QString &value);
    /// The "start" parameter: of a related multipart, the content id of its root.
    QString getParamStart() const;
    void setParamStart(const QString &value);

    /// Tells whether a body of this type holds further parts to decode: a related or mixed
    /// multipart, and a DRM message without a "boundary".
    bool needDecode() const;

    /// The media type, a blank, and with parameters ";" and "name=value;" for each in the order of
    /// names.
    QString toString() const;
    /// The media type, a blank, and ";name="value"" for each parameter in the order of names.
    QString toStringWithQuotes() const;
    /// Sets the type, and adds the parameters, from a text like "text/plain;charset=utf-8". Nothing
    /// is trimmed: a blank behind a ";" belongs to the next name. One pair of double quotes around
    /// a value is dropped. Characters outside Latin-1 become "?". Texts of any length are kept
    /// whole. Always true.
    bool fromString(const QString &text);

private:
    QString m_mainType;
    QString m_subType;
    QMap<QString, QString> m_params;
};

Q_DECLARE_TYPEINFO(WMMSContentType, Q_RELOCATABLE_TYPE);
