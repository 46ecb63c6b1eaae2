// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/short_message_words.h"

#include "tools/wmsg/text_view.h"

#include <array>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

using namespace smspdu;

namespace {

QString hexOf(quint8 octet)
{
    return u"0x"_s + QString::number(octet, 16).toUpper().rightJustified(2, u'0');
}

// By the status of a report.
struct StatusWords {
    int status;
    const char *words;
};
constexpr StatusWords kStatuses[] = {
    {0x00, "received by the phone"},
    {0x01, "forwarded, the centre cannot tell whether it arrived"},
    {0x02, "replaced by the centre"},
    {0x20, "congestion"},
    {0x21, "the phone is busy"},
    {0x22, "no answer from the phone"},
    {0x23, "service rejected"},
    {0x24, "quality of service not available"},
    {0x25, "error in the phone"},
    {0x40, "remote procedure error"},
    {0x41, "incompatible destination"},
    {0x42, "connection rejected"},
    {0x43, "not obtainable"},
    {0x44, "quality of service not available"},
    {0x45, "no interworking"},
    {0x46, "its validity period ended"},
    {0x47, "deleted by the sender"},
    {0x48, "deleted by the centre"},
    {0x49, "the message does not exist"},
};

QString groupOf(quint8 status)
{
    return status < 0x20 ? u"done"_s
        : status < 0x40  ? u"failed for now, the centre tries again"_s
        : status < 0x60  ? u"failed for good"_s
        : status < 0x80  ? u"failed for now, the centre gave up"_s
                         : u"reserved"_s;
}

} // namespace

QString kindInWords(Kind kind)
{
    switch (kind) {
    case Kind::Deliver:
        return u"received short message"_s;
    case Kind::Submit:
        return u"sent short message"_s;
    case Kind::StatusReport:
        break;
    }
    return u"status report"_s;
}

QString kindKey(Kind kind)
{
    switch (kind) {
    case Kind::Deliver:
        return u"deliver"_s;
    case Kind::Submit:
        return u"submit"_s;
    case Kind::StatusReport:
        break;
    }
    return u"status-report"_s;
}

QString alphabetKey(Alphabet alphabet)
{
    switch (alphabet) {
    case Alphabet::Gsm7:
        return u"gsm7"_s;
    case Alphabet::Octets:
        return u"octets"_s;
    case Alphabet::Ucs2:
        return u"ucs2"_s;
    case Alphabet::Compressed:
        break;
    }
    return u"compressed"_s;
}

QString addressTypeInWords(quint8 type)
{
    static constexpr std::array kTypes = {"unknown",    "international", "national",    "network",
                                          "subscriber", "letters",       "abbreviated", "reserved"};
    const int plan = type & 0x0F;
    const QString words = QLatin1String(kTypes[static_cast<size_t>(type >> 4 & 0x07)])
        + (plan == 1 ? u", telephone numbers"_s : u""_s);
    return u"%1 (%2)"_s.arg(words, hexOf(type));
}

QString protocolInWords(quint8 pid)
{
    const int low = pid & 0x3F;
    const QString words = pid == 0                     ? u"short message"_s
        : pid < 0x40 && (pid & 0x20) != 0              ? u"another service"_s
        : pid == 0x40                                  ? u"type 0, silent"_s
        : (pid & 0xC0) == 0x40 && low >= 1 && low <= 7 ? u"replaces a message of type %1"_s.arg(low)
        : pid == 0x5F                                  ? u"return call"_s
        : pid == 0x7F                                  ? u"for the SIM"_s
                                                       : u"other"_s;
    return u"%1 (%2)"_s.arg(words, hexOf(pid));
}

QString schemeInWords(quint8 dcs)
{
    QString words;
    switch (alphabetOf(dcs)) {
    case Alphabet::Gsm7:
        words = u"7-bit alphabet"_s;
        break;
    case Alphabet::Octets:
        words = u"octets"_s;
        break;
    case Alphabet::Ucs2:
        words = u"UCS-2"_s;
        break;
    case Alphabet::Compressed:
        words = u"compressed"_s;
        break;
    }
    const int messageClass = messageClassOf(dcs);
    if (messageClass >= 0) {
        words += u", class %1"_s.arg(messageClass);
    }
    if (dcs >= 0xC0 && dcs < 0xF0) {
        words += u", an indication that messages wait"_s;
    }
    return u"%1 (%2)"_s.arg(words, hexOf(dcs));
}

QString statusInWords(quint8 status)
{
    for (const StatusWords &row : kStatuses) {
        if (row.status == status || row.status == status - 0x40) {
            const bool isExact = row.status == status;
            if (isExact || (status >= 0x60 && row.status >= 0x20 && row.status < 0x40)) {
                return u"%1: %2 (%3)"_s.arg(groupOf(status), QLatin1String(row.words),
                                            hexOf(status));
            }
        }
    }
    return u"%1 (%2)"_s.arg(groupOf(status), hexOf(status));
}

QString validityInWords(const Validity &validity)
{
    const QDateTime until = validity.until();
    if (until.isValid()) {
        return u"until "_s + until.toString(u"yyyy-MM-dd HH:mm:ss t"_s);
    }
    const qint64 seconds = validity.seconds();
    return seconds >= 0 ? durationInWords(seconds) : u"(none)"_s;
}

QStringList flagsInWords(const Tpdu &tpdu)
{
    QStringList flags;
    const auto add = [&flags](bool isSet, const QString &words) {
        if (isSet) {
            flags += words;
        }
    };
    add(tpdu.hasMore, u"more messages wait"_s);
    add(tpdu.isLooped, u"forwarded"_s);
    add(tpdu.rejectsDuplicates, u"duplicates rejected"_s);
    add(tpdu.hasReport && tpdu.kind == Kind::Submit, u"report asked for"_s);
    add(tpdu.hasReport && tpdu.kind == Kind::Deliver, u"report follows"_s);
    add(tpdu.hasReport && tpdu.kind == Kind::StatusReport, u"of a command"_s);
    add(tpdu.hasReplyPath, u"reply path"_s);
    add(!tpdu.udh.isEmpty(), u"user data header"_s);
    return flags;
}

} // namespace wmsg::cli
