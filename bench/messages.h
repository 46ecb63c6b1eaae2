// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wmmscontenttype.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"

#include <cstdlib>

/// The messages that are measured. They are generated, the same in every run.

namespace bench {

inline QByteArray filler(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

inline WMMSMultipart part(const char *type, const char *id, const char *location,
                          const QByteArray &bytes)
{
    WMMSContentType contentType;
    contentType.setMimeType(QString::fromLatin1(type));
    WMMSMultipart made;
    made.setContentType(contentType);
    made.setContentID(QString::fromLatin1(id));
    made.setContentLocation(QString::fromLatin1(location));
    made.setData(QArray<char>::fromBytes(bytes.constData(), static_cast<int>(bytes.size())));
    return made;
}

inline void setHead(WMMSMsg &msg, unsigned char pduType)
{
    msg.setPDUType(pduType);
    msg.setTransactionID(QStringLiteral("T1699999999.0042"));
    msg.setVersion(0x12);
}

inline WMMSMsg sendConfirmation()
{
    WMMSMsg msg;
    setHead(msg, 0x81);
    msg.setResponseStatus(128);
    msg.setResponseText(QStringLiteral("Ok"));
    msg.setMsgID(QStringLiteral("1699999999@mmsc.example"));
    return msg;
}

inline WMMSMsg notification()
{
    WMMSMsg msg;
    setHead(msg, 0x82);
    msg.setFrom(WMFMEntry(1, QStringLiteral("+15551230001")));
    msg.setSubject(QStringLiteral("Holiday pictures"));
    msg.setMsgSize(98765);
    msg.setExpiryTime(259200);
    msg.setContentLocation(QStringLiteral("http://mmsc.example/fetch?id=1699999999"));
    return msg;
}

/// A retrieve confirmation whose related body has four parts: a presentation, two texts and a
/// picture of `pictureSize` bytes.
inline WMMSMsg retrieval(int pictureSize)
{
    WMMSMsg msg;
    setHead(msg, 0x84);
    msg.setFrom(WMFMEntry(1, QStringLiteral("+15551230001")));
    msg.setTo(WMFMEntry(1, QStringLiteral("+15551230002")));
    msg.setMsgID(QStringLiteral("1699999999@mmsc.example"));
    msg.setDate(QDateTime::fromSecsSinceEpoch(1700000000));
    msg.setSubject(QStringLiteral("Holiday pictures"));
    msg.setPriority(129);
    WMMSContentType related;
    related.setMimeType(QStringLiteral("application/vnd.wap.multipart.related"));
    related.setParamType(QStringLiteral("application/smil"));
    related.setParamStart(QStringLiteral("<smil>"));
    msg.setContentType(related);
    auto &parts = msg.getMultiParts().getSubMmsMultipartList();
    parts.append(part(
        "application/smil", "<smil>", "smil.xml",
        "<smil><body><par><img src=\"photo.jpg\"/><text src=\"text.txt\"/></par></body></smil>"));
    parts.append(part("text/plain", "<text>", "text.txt", "We have arrived."));
    parts.append(part("text/plain", "<more>", "more.txt", "More tomorrow."));
    parts.append(part("image/jpeg", "<photo>", "photo.jpg", filler(pictureSize)));
    return msg;
}

/// The PDU of a message. A message that does not encode ends the program: there is nothing to
/// measure.
inline QArray<char> encoded(WMMSMsg msg)
{
    QArray<char> pdu;
    if (msg.packTo(pdu, nullptr, nullptr) != 200) {
        std::abort();
    }
    return pdu.copy();
}

/// Sends the log nowhere, as programs of ours do unless asked.
inline void discardLog()
{
    appLogModuleStream = appLogDiscardStream();
}

inline constexpr int kPictureSizes[] = {10 << 10, 100 << 10, 300 << 10, 1 << 20, 10 << 20};

} // namespace bench
