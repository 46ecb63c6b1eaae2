// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmsg.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

/// Messages as the tests of the pages make them.

/// What a message shows, and what its header says.
struct Letter {
    QList<WMMSMultipart> parts;
    QString subject = "Sunset";
    QString from = "+431";
    QString to = "ann@example.org";
    unsigned char priority = 129;
};

/// A retrieved message as it travels.
inline QByteArray pduOf(const Letter &letter)
{
    WMMSMsg message;
    message.clear();
    message.setPDUType(0x84);
    message.setTransactionID("T1");
    message.setVersion(0x12);
    message.setMsgID("m1@mmsc");
    message.setMsgClass(128);
    message.setPriority(letter.priority);
    message.setFrom(WMFMEntry(letter.from.contains('@') ? 2 : 1, letter.from));
    message.setTo(WMFMEntry(letter.to.contains('@') ? 2 : 1, letter.to));
    message.setSubject(letter.subject);
    message.setDate(QDateTime::fromSecsSinceEpoch(1714563072));
    message.setContentType(typeOf(kRelated, {{"type", "application/smil"}, {"start", "<smil>"}}));
    message.setMultiParts(parentOf(kRelated, letter.parts));
    QArray<char> pdu;
    const quint32 result = message.packTo(pdu, nullptr, nullptr);
    if (result != 200) {
        qFatal("pduOf: result %u", result);
    }
    return pdu.view().toByteArray();
}

/// A presentation as the start of a message.
inline WMMSMultipart smilPart(const QByteArray &smil)
{
    return partOf("application/smil", smil, "<smil>");
}

/// Two regions, and the slides that are given.
inline QByteArray smilOf(const QByteArray &slides)
{
    return "<smil><head><layout><root-layout width=\"320\" height=\"480\"/>"
           "<region id=\"Image\" left=\"0\" top=\"0\" width=\"100%\" height=\"60%\"/>"
           "<region id=\"Text\" left=\"0\" top=\"60%\" width=\"100%\" height=\"40%\"/>"
           "</layout></head><body>"
        + slides + "</body></smil>";
}
