// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/safe_names.h"

#include <mms/model/wmmsmsg.h>

#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// What a new message is made of, as it was asked for.
struct DraftRequest {
    QList<QByteArray> to;
    QList<QByteArray> cc;
    QList<QByteArray> bcc;
    QByteArray from;
    QByteArray subject;
    QList<QByteArray> texts;
    QList<QByteArray> textFiles;
    QList<QByteArray> files;
    quint8 pduType = 0;
    bool hasPresentation = true;
    QByteArray date;
    QByteArray expiry;
    std::optional<bool> deliveryReport;
    std::optional<bool> readReport;
    quint8 priority = 0;
    quint8 messageClass = 0;
    QByteArray appId;
    QByteArray transactionId;
    QByteArray messageId;
    qint64 sizeLimit = 0;
};

/// Makes a message from a request. Each step returns what is wrong with the request, in one line,
/// or an empty text.
class Draft {
public:
    explicit Draft(const DraftRequest &request) : m_request(request) { }

    [[nodiscard]] QString make();
    /// The message encoded in the form that was asked for: a PDU, or the bytes of a mail file.
    [[nodiscard]] QString encode(QByteArray &bytes);

    [[nodiscard]] const WMMSMsg &message() const { return m_message; }

private:
    using Lines = const QList<QByteArray> &;

    QString setRecipients();
    QString setAddresses(const QString &option, Lines addresses,
                         bool (WMMSMsg::*add)(const WMFMEntry &));
    QString setSender();
    QString setTimes();
    QString setIdentifiers();
    void setMarks();
    QString addTexts();
    QString addText(const QString &text);
    QString addFiles(Lines paths, bool areTexts);
    QString addFile(const QByteArray &path, bool isText);
    QString addPart(const QString &mediaType, const QString &name, const QArray<char> &bytes);
    void arrange();
    void addPresentation();
    QString checkFields() const;

    const DraftRequest &m_request;
    WMMSMsg m_message;
    QValueList<WMMSMultipart> m_parts;
    UniqueNames m_names;
    qint64 m_size = 0;
};

} // namespace wmsg::cli
