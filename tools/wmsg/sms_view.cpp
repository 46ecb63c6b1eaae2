// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_view.h"

#include "tools/wmsg/text_view.h"

#include <sms/wsmsmsg.h>

#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

/// The ports of a message; it came without any when both are 0.
struct Ports {
    unsigned short destination = 0;
    unsigned short source = 0;

    explicit Ports(const WSMSMsg &message) { message.getPortNumber(&destination, &source); }
    [[nodiscard]] bool areThere() const { return destination != 0 || source != 0; }
};

bool isText(const WSMSMsg &message)
{
    return message.getBodyType() == SMS_ENCODE_TYPE_TEXT;
}

QByteArray dataOf(const WSMSMsg &message)
{
    QArray<char> data;
    return message.getBody(data) ? data.view().toByteArray() : QByteArray();
}

QString textOf(const WSMSMsg &message)
{
    QString text;
    message.getBody(text);
    return text;
}

/// Lines of a text stay lines; what would steer a terminal does not.
QString shownText(const QString &text)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines) {
        line = printable(line);
    }
    return lines.join(u'\n') + u'\n';
}

/// Rows of sixteen bytes.
QString shownData(const QByteArray &data)
{
    constexpr qsizetype kPerRow = 16;
    QString rows;
    for (qsizetype i = 0; i < data.size(); i += kPerRow) {
        rows += QLatin1String(data.mid(i, kPerRow).toHex(' ').toUpper()) + u'\n';
    }
    return rows;
}

} // namespace

QString smsHead(WSMSMsg &message)
{
    QStringList known;
    if (!message.getFrom().getEntryVal().isEmpty()) {
        known += u"from "_s + printable(message.getFrom().getEntryVal());
    }
    if (message.getTimeStamp().isValid()) {
        known += dateInWords(message.getTimeStamp());
    }
    const Ports ports(message);
    if (ports.areThere()) {
        known += u"to port %1 from port %2"_s.arg(ports.destination).arg(ports.source);
    }
    if (!isText(message)) {
        known += u"%1 of data"_s.arg(counted(dataOf(message).size(), "octet"_L1));
    }
    return known.join(u", "_s);
}

QString smsContent(const WSMSMsg &message)
{
    return isText(message) ? shownText(textOf(message)) : shownData(dataOf(message));
}

QJsonObject smsJson(WSMSMsg &message)
{
    QJsonObject object;
    if (!message.getFrom().getEntryVal().isEmpty()) {
        object.insert(u"from"_s, message.getFrom().getEntryVal());
    }
    if (message.getTimeStamp().isValid()) {
        object.insert(u"date"_s, message.getTimeStamp().toSecsSinceEpoch());
    }
    const Ports ports(message);
    if (ports.areThere()) {
        object.insert(u"destinationPort"_s, ports.destination);
        object.insert(u"sourcePort"_s, ports.source);
    }
    if (isText(message)) {
        object.insert(u"text"_s, textOf(message));
    } else {
        object.insert(u"data"_s, QLatin1String(dataOf(message).toHex()));
    }
    return object;
}

} // namespace wmsg::cli
