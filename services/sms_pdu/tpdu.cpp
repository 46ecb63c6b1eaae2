// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/tpdu.h"

#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu_p.h"

#include <QtCore/QStringDecoder>

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::smspdu {

namespace {

constexpr int kUdhBit = 0x40;
constexpr qsizetype kMostSeptets = 160;

/// Reads a TPDU from its first octet to its last, and marks what it reads.
class Reader {
public:
    Reader(QByteArrayView bytes, Origin origin) : m_bytes(bytes), m_origin(origin) { }

    ReadResult read();

private:
    bool readFields();
    bool readDeliver(int first);
    bool readSubmit(int first);
    bool readReport(int first);
    bool readParameters();
    bool readAddress();
    bool readValidity(int first);
    bool readTime(Item item, QDateTime &time);
    bool readUserData();
    bool readHeader(qsizetype octets);
    bool readOctet(Item item, quint8 &octet);
    bool take(Item item, qsizetype size, QByteArrayView &taken, const QString &name);
    bool fail(qsizetype offset, const QString &problem);

    QByteArrayView m_bytes;
    Origin m_origin;
    qsizetype m_pos = 0;
    bool m_hasHeader = false;
    ReadResult m_result;
};

QString nameOf(Item item)
{
    switch (item) {
    case Item::FirstOctet:
        return u"first octet"_s;
    case Item::Reference:
        return u"message reference"_s;
    case Item::AddressLength:
    case Item::AddressType:
    case Item::AddressValue:
        return u"address"_s;
    case Item::ProtocolId:
        return u"protocol identifier"_s;
    case Item::CodingScheme:
        return u"data coding scheme"_s;
    case Item::TimeStamp:
        return u"time stamp"_s;
    case Item::DischargeTime:
        return u"discharge time"_s;
    case Item::Status:
        return u"status"_s;
    case Item::Parameters:
        return u"parameter indicator"_s;
    case Item::Validity:
        return u"validity period"_s;
    case Item::DataLength:
        return u"user data length"_s;
    case Item::Header:
        return u"user data header"_s;
    case Item::Data:
        break;
    }
    return u"user data"_s;
}

bool Reader::fail(qsizetype offset, const QString &problem)
{
    m_result.offset = offset;
    m_result.problem = problem;
    return false;
}

bool Reader::take(Item item, qsizetype size, QByteArrayView &taken, const QString &name)
{
    if (size > m_bytes.size() - m_pos) {
        return fail(m_pos, u"the short message ends inside its %1"_s.arg(name));
    }
    taken = m_bytes.sliced(m_pos, size);
    if (size > 0) {
        m_result.tpdu.marks.append({item, m_pos, size});
    }
    m_pos += size;
    return true;
}

bool Reader::readOctet(Item item, quint8 &octet)
{
    QByteArrayView taken;
    if (!take(item, 1, taken, nameOf(item))) {
        return false;
    }
    octet = static_cast<quint8>(taken[0]);
    return true;
}

bool Reader::readAddress()
{
    quint8 digits = 0;
    quint8 type = 0;
    QByteArrayView octets;
    if (!readOctet(Item::AddressLength, digits)) {
        return false;
    }
    if (digits > 2 * kMostAddressOctets) {
        return fail(m_pos - 1, u"the address has %1 digits, 20 are the most"_s.arg(digits));
    }
    if (!readOctet(Item::AddressType, type)) {
        return false;
    }
    if ((type & 0x80) == 0) {
        return fail(m_pos - 1,
                    u"0x%1 is no type of an address"_s.arg(type, 2, 16, QLatin1Char('0')));
    }
    if (!take(Item::AddressValue, (digits + 1) / 2, octets, nameOf(Item::AddressValue))) {
        return false;
    }
    m_result.tpdu.address = {type, addressValue(type, octets, digits)};
    return true;
}

bool Reader::readTime(Item item, QDateTime &time)
{
    QByteArrayView octets;
    if (!take(item, kTimeSize, octets, nameOf(item))) {
        return false;
    }
    time = timeOf(octets);
    return true;
}

bool Reader::readValidity(int first)
{
    const auto form = static_cast<Validity::Form>(first >> 3 & 0x03);
    if (form == Validity::Form::None) {
        return true;
    }
    QByteArrayView octets;
    const qsizetype size = form == Validity::Form::Relative ? 1 : kTimeSize;
    if (!take(Item::Validity, size, octets, nameOf(Item::Validity))) {
        return false;
    }
    m_result.tpdu.validity = {form, octets.toByteArray()};
    return true;
}

/// `octets` are those of header and text together.
bool Reader::readHeader(qsizetype octets)
{
    const qsizetype begin = m_pos;
    if (begin >= m_bytes.size() || octets == 0) {
        return fail(begin, u"the short message has no user data header"_s);
    }
    const qsizetype size = static_cast<quint8>(m_bytes[begin]) + 1;
    if (size > octets) {
        return fail(begin, u"the user data header is longer than the user data"_s);
    }
    QByteArrayView header;
    if (!take(Item::Header, size, header, nameOf(Item::Header))) {
        return false;
    }
    if (!headerElements(header)) {
        return fail(begin, u"the user data header has elements of wrong lengths"_s);
    }
    m_result.tpdu.udh = header.toByteArray();
    return true;
}

bool Reader::readUserData()
{
    Tpdu &tpdu = m_result.tpdu;
    quint8 length = 0;
    if (!readOctet(Item::DataLength, length)) {
        return false;
    }
    const bool isPacked = tpdu.alphabet() == Alphabet::Gsm7;
    if (length > (isPacked ? kMostSeptets : kMostUserData)) {
        return fail(m_pos - 1,
                    isPacked ? u"the user data have %1 septets, 160 are the most"_s.arg(length)
                             : u"the user data have %1 octets, 140 are the most"_s.arg(length));
    }
    const qsizetype octets = isPacked ? packedSize(length) : length;
    if (m_hasHeader && !readHeader(octets)) {
        return false;
    }
    QByteArrayView data;
    const qsizetype header = tpdu.udh.size();
    if (!take(Item::Data, octets - header, data, nameOf(Item::Data))) {
        return false;
    }
    const int fill = fillBits(header);
    tpdu.userData =
        isPacked ? unpackSeptets(data, length - (header * 8 + fill) / 7, fill) : data.toByteArray();
    return true;
}

bool Reader::readDeliver(int first)
{
    Tpdu &tpdu = m_result.tpdu;
    tpdu.kind = Kind::Deliver;
    tpdu.hasMore = (first & 0x04) == 0;
    tpdu.isLooped = (first & 0x08) != 0;
    tpdu.hasReport = (first & 0x20) != 0;
    tpdu.hasReplyPath = (first & 0x80) != 0;
    return readAddress() && readOctet(Item::ProtocolId, tpdu.pid)
        && readOctet(Item::CodingScheme, tpdu.dcs) && readTime(Item::TimeStamp, tpdu.timeStamp)
        && readUserData();
}

bool Reader::readSubmit(int first)
{
    Tpdu &tpdu = m_result.tpdu;
    tpdu.kind = Kind::Submit;
    tpdu.rejectsDuplicates = (first & 0x04) != 0;
    tpdu.hasReport = (first & 0x20) != 0;
    tpdu.hasReplyPath = (first & 0x80) != 0;
    return readOctet(Item::Reference, tpdu.reference) && readAddress()
        && readOctet(Item::ProtocolId, tpdu.pid) && readOctet(Item::CodingScheme, tpdu.dcs)
        && readValidity(first) && readUserData();
}

bool Reader::readReport(int first)
{
    Tpdu &tpdu = m_result.tpdu;
    tpdu.kind = Kind::StatusReport;
    tpdu.hasMore = (first & 0x04) == 0;
    tpdu.isLooped = (first & 0x08) != 0;
    tpdu.hasReport = (first & 0x20) != 0;
    return readOctet(Item::Reference, tpdu.reference) && readAddress()
        && readTime(Item::TimeStamp, tpdu.timeStamp)
        && readTime(Item::DischargeTime, tpdu.dischargeTime) && readOctet(Item::Status, tpdu.status)
        && readParameters();
}

/// What a report may have behind its status.
bool Reader::readParameters()
{
    constexpr int kMoreFollows = 0x80;
    if (m_pos == m_bytes.size()) {
        return true;
    }
    Tpdu &tpdu = m_result.tpdu;
    quint8 first = 0;
    quint8 octet = 0;
    if (!readOctet(Item::Parameters, first)) {
        return false;
    }
    for (octet = first; (octet & kMoreFollows) != 0;) {
        if (!readOctet(Item::Parameters, octet)) {
            return false;
        }
    }
    return ((first & 0x01) == 0 || readOctet(Item::ProtocolId, tpdu.pid))
        && ((first & 0x02) == 0 || readOctet(Item::CodingScheme, tpdu.dcs))
        && ((first & 0x04) == 0 || readUserData());
}

bool Reader::readFields()
{
    constexpr int kKindMask = 0x03;
    quint8 first = 0;
    if (!readOctet(Item::FirstOctet, first)) {
        return false;
    }
    m_hasHeader = (first & kUdhBit) != 0;
    const int kind = first & kKindMask;
    if (kind == 0 && m_origin == Origin::Network) {
        return readDeliver(first);
    }
    if (kind == 1 && m_origin == Origin::Phone) {
        return readSubmit(first);
    }
    if (kind == 2 && m_origin == Origin::Network) {
        return readReport(first);
    }
    return fail(0, u"0x%1 begins no short message"_s.arg(first, 2, 16, QLatin1Char('0')));
}

ReadResult Reader::read()
{
    if (readFields() && m_pos < m_bytes.size()) {
        const qsizetype more = m_bytes.size() - m_pos;
        fail(m_pos,
             more == 1 ? u"there is a byte behind the short message"_s
                       : u"there are %1 bytes behind the short message"_s.arg(more));
    }
    return std::move(m_result);
}

/// UCS-2 as networks use it: the high octet first, what is beyond 16 bits in two units.
QString textFromUcs2(QByteArrayView octets)
{
    QStringDecoder decoder(QStringDecoder::Utf16BE, QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(octets.first(octets.size() / 2 * 2));
    return text.isNull() ? u""_s : text;
}

} // namespace

Alphabet alphabetOf(quint8 dcs)
{
    constexpr int kCompressed = 0x20;
    const int group = dcs >> 4;
    const int bits = dcs >> 2 & 0x03;
    if (group < 8) { // general, and the same for messages to be deleted
        if ((dcs & kCompressed) != 0) {
            return Alphabet::Compressed;
        }
        return bits == 1 ? Alphabet::Octets : bits == 2 ? Alphabet::Ucs2 : Alphabet::Gsm7;
    }
    if (group == 0x0E) { // an indication that messages wait
        return Alphabet::Ucs2;
    }
    return group == 0x0F && (dcs & 0x04) != 0 ? Alphabet::Octets : Alphabet::Gsm7;
}

int messageClassOf(quint8 dcs)
{
    constexpr int kHasClass = 0x10;
    const int group = dcs >> 4;
    const bool hasClass = group == 0x0F || (group < 8 && (dcs & kHasClass) != 0);
    return hasClass ? dcs & 0x03 : -1;
}

QString Tpdu::text() const
{
    switch (alphabet()) {
    case Alphabet::Gsm7:
        return textFromGsm7(userData);
    case Alphabet::Ucs2:
        return textFromUcs2(userData);
    case Alphabet::Octets:
    case Alphabet::Compressed:
        break;
    }
    return {};
}

bool Tpdu::fits() const
{
    if (alphabet() != Alphabet::Gsm7) {
        return userData.size() + udh.size() <= kMostUserData;
    }
    return packedSize(userData.size(), fillBits(udh.size())) + udh.size() <= kMostUserData;
}

ReadResult readTpdu(QByteArrayView bytes, Origin origin)
{
    return Reader(bytes, origin).read();
}

} // namespace wmsg::smspdu
