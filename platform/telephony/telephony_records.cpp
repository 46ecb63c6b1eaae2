// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/telephony_records_p.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <type_traits>

namespace wmsg::telephony {

namespace {

constexpr int kLongestText = 255;

/// Appends fields to a payload. Its operations have the names of the reader's, so that one list of
/// fields serves both.
class Writer {
public:
    template <typename Number> bool number(const Number &value)
    {
        const Number little = qToLittleEndian(value);
        m_bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
        return true;
    }
    bool flag(bool value) { return number<quint8>(value ? 1 : 0); }
    template <typename Enum> bool upTo(Enum, const Enum &value)
    {
        return number(static_cast<std::underlying_type_t<Enum>>(value));
    }
    bool fixed(int size, const QByteArray &bytes)
    {
        m_bytes.append(bytes.leftJustified(size, '\0', true));
        return true;
    }
    bool text(const QByteArray &value)
    {
        const auto length = static_cast<quint8>(
            qstrnlen(value.constData(),
                     static_cast<size_t>(std::min<qsizetype>(value.size(), kLongestText))));
        number(length);
        m_bytes.append(value.constData(), length);
        return true;
    }
    bool body(const QByteArray &value)
    {
        const auto length = static_cast<quint16>(std::min<qsizetype>(value.size(), kLongestBody));
        number(length);
        m_bytes.append(value.constData(), length);
        return true;
    }
    static bool skipRest() { return true; }

    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

/// Takes fields from a payload. Each operation returns false, with its argument unchanged, when the
/// bytes are not there or mean nothing.
class Reader {
public:
    explicit Reader(QByteArrayView bytes) : m_left(bytes) { }

    template <typename Number> bool number(Number &value)
    {
        QByteArrayView bytes;
        if (!take(sizeof value, bytes)) {
            return false;
        }
        value = qFromLittleEndian<Number>(bytes.data());
        return true;
    }
    bool flag(bool &value)
    {
        quint8 byte = 0;
        if (!number(byte) || byte > 1) {
            return false;
        }
        value = byte == 1;
        return true;
    }
    template <typename Enum> bool upTo(Enum highest, Enum &value)
    {
        std::underlying_type_t<Enum> plain = 0;
        if (!number(plain) || plain > static_cast<std::underlying_type_t<Enum>>(highest)) {
            return false;
        }
        value = static_cast<Enum>(plain);
        return true;
    }
    bool fixed(int size, QByteArray &bytes) { return takeCopy(size, bytes); }
    bool text(QByteArray &value)
    {
        quint8 length = 0;
        QByteArray bytes;
        if (!number(length) || !takeCopy(length, bytes) || bytes.contains('\0')) {
            return false;
        }
        value = bytes;
        return true;
    }
    bool body(QByteArray &value)
    {
        quint16 length = 0;
        return number(length) && length <= kLongestBody && takeCopy(length, value);
    }
    bool skipRest()
    {
        m_left = {};
        return true;
    }

    [[nodiscard]] bool isAtEnd() const { return m_left.isEmpty(); }

private:
    bool take(qsizetype size, QByteArrayView &bytes)
    {
        if (size > m_left.size()) {
            return false;
        }
        bytes = m_left.first(size);
        m_left = m_left.sliced(size);
        return true;
    }
    bool takeCopy(qsizetype size, QByteArray &bytes)
    {
        QByteArrayView view;
        if (!take(size, view)) {
            return false;
        }
        bytes = view.toByteArray();
        return true;
    }

    QByteArrayView m_left;
};

bool isText(Coding coding)
{
    return coding == Coding::Ucs2 || coding == Coding::Gsm7;
}

// The grammar: one line a record, for both directions. `Any` is a record, or a constant one.

template <typename Coder, typename Any> bool ports(Coder &c, Any &r)
{
    return c.flag(r.hasPorts) && c.number(r.destinationPort) && c.number(r.sourcePort);
}

template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Hello *)
{
    return c.number(r.version)
        && (r.version == kVersion
                ? c.fixed(kClientIdSize, r.clientId) && c.number(r.events) && c.text(r.name)
                : c.skipRest());
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Send *)
{
    return c.number(r.reference) && c.upTo(Coding::Gsm7, r.coding) && ports(c, r)
        && c.text(r.serviceCenter) && c.text(r.destination) && c.body(r.body);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const RegisterPort *)
{
    return c.number(r.port) && c.number(r.mode);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const DeregisterPort *)
{
    return c.number(r.port);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const SetServiceCenter *)
{
    return c.text(r.number);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const MessageAnswer *)
{
    return c.number(r.id) && c.flag(r.isTaken);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const ResultTaken *)
{
    return c.number(r.reference);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Welcome *)
{
    return c.number(r.version)
        && (r.version == kVersion ? c.number(r.modem) && c.text(r.serviceCenter) : c.skipRest());
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Refused *)
{
    return c.number(r.version) && c.skipRest();
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Done *)
{
    return c.upTo(Answer::NoModem, r.answer);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Result *)
{
    return c.number(r.reference) && c.number(r.networkReference) && c.number(r.status);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const Message *)
{
    return c.number(r.id) && c.upTo(Coding::Binary, r.coding) && ports(c, r)
        && c.text(r.serviceCenter) && c.text(r.sender) && c.number(r.time) && c.body(r.body);
}
template <typename Coder, typename Any> bool code(Coder &c, Any &r, const ModemState *)
{
    return c.number(r.modem) && c.text(r.serviceCenter);
}

// What the fields say together.

template <typename Record> bool makesSense(const Record &)
{
    return true;
}
bool makesSense(const Send &record)
{
    return record.coding != Coding::Text8
        && !(isText(record.coding) && record.body.size() % 2 != 0);
}
bool makesSense(const Message &record)
{
    return !(isText(record.coding) && record.body.size() % 2 != 0);
}

} // namespace

template <typename Record> QByteArray toFrame(const Record &record, quint16 number)
{
    Writer payload;
    code(payload, record, static_cast<const Record *>(nullptr));
    Writer head;
    head.number(static_cast<quint32>(payload.bytes().size()));
    head.number(static_cast<quint16>(Record::kType));
    head.number(number);
    return head.bytes() + payload.bytes();
}

template <typename Record> bool fromPayload(QByteArrayView payload, Record &record)
{
    Reader reader(payload);
    return code(reader, record, static_cast<const Record *>(nullptr)) && reader.isAtEnd()
        && makesSense(record);
}

template QByteArray toFrame(const Hello &, quint16);
template QByteArray toFrame(const Send &, quint16);
template QByteArray toFrame(const RegisterPort &, quint16);
template QByteArray toFrame(const DeregisterPort &, quint16);
template QByteArray toFrame(const SetServiceCenter &, quint16);
template QByteArray toFrame(const MessageAnswer &, quint16);
template QByteArray toFrame(const ResultTaken &, quint16);
template QByteArray toFrame(const Welcome &, quint16);
template QByteArray toFrame(const Refused &, quint16);
template QByteArray toFrame(const Done &, quint16);
template QByteArray toFrame(const Result &, quint16);
template QByteArray toFrame(const Message &, quint16);
template QByteArray toFrame(const ModemState &, quint16);
template bool fromPayload(QByteArrayView, Hello &);
template bool fromPayload(QByteArrayView, Send &);
template bool fromPayload(QByteArrayView, RegisterPort &);
template bool fromPayload(QByteArrayView, DeregisterPort &);
template bool fromPayload(QByteArrayView, SetServiceCenter &);
template bool fromPayload(QByteArrayView, MessageAnswer &);
template bool fromPayload(QByteArrayView, ResultTaken &);
template bool fromPayload(QByteArrayView, Welcome &);
template bool fromPayload(QByteArrayView, Refused &);
template bool fromPayload(QByteArrayView, Done &);
template bool fromPayload(QByteArrayView, Result &);
template bool fromPayload(QByteArrayView, Message &);
template bool fromPayload(QByteArrayView, ModemState &);

void FrameReader::append(QByteArrayView bytes)
{
    if (m_isBroken) {
        return;
    }
    m_bytes.remove(0, m_position);
    m_position = 0;
    m_bytes.append(bytes);
}

bool FrameReader::next(Frame &frame)
{
    const QByteArrayView left = QByteArrayView(m_bytes).sliced(m_position);
    if (m_isBroken || left.size() < static_cast<qsizetype>(sizeof(quint32))) {
        return false;
    }
    const auto length = qFromLittleEndian<quint32>(left.data());
    if (length > kLongestPayload) {
        m_isBroken = true;
        m_bytes.clear();
        m_position = 0;
        return false;
    }
    if (left.size() - kHeadSize < static_cast<qsizetype>(length)) {
        return false;
    }
    frame.type = static_cast<RecordType>(qFromLittleEndian<quint16>(left.data() + 4));
    frame.number = qFromLittleEndian<quint16>(left.data() + 6);
    frame.payload = left.sliced(kHeadSize, length).toByteArray();
    m_position += kHeadSize + length;
    return true;
}

} // namespace wmsg::telephony
