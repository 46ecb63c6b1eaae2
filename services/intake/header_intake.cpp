// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/header_intake.h"

#include "services/intake/address.h"
#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

// header := { field | text-field | 0 } [ content-type-field ]
//   field      := (0x81..0xFF) value
//   text-field := text (32..127) text

namespace wmsg::intake {

namespace {

enum Type : quint8 {
    SendRequest = 0x80,
    SendConfirmation = 0x81,
    Notification = 0x82,
    RetrieveConfirmation = 0x84,
    Delivery = 0x86,
    ReadReportToNetwork = 0x87, // and the stored form of this system, which names no type
    ReadReport = 0x88,
};

enum Id : quint8 {
    Bcc = 1,
    Cc,
    ContentLocation,
    ContentType,
    Date,
    DeliveryReport,
    DeliveryTime,
    Expiry,
    From,
    MessageClass,
    MessageId,
    MessageType,
    Version,
    MessageSize,
    Priority,
    ReadReply,
    ReportAllowed,
    ResponseStatus,
    ResponseText,
    SenderVisibility,
    Status,
    Subject,
    To,
    TransactionId,
    // Behind these the codec stops.
    RetrieveStatus = 0x19,
    RetrieveText = 0x1A,
    ReadStatus = 0x1B,
    PreviouslySentBy = 0x20,
    PreviouslySentDate = 0x21,
    ApplicationId = 0x37,
    ReplyApplicationId = 0x38,
    ApplicationInfo = 0x39,
};

constexpr quint8 kFirstToken = 128;
constexpr quint8 kSecondToken = 129;

bool comesFromNetwork(quint8 type)
{
    return type == SendConfirmation || type == Notification || type == RetrieveConfirmation
        || type == Delivery || type == ReadReportToNetwork || type == ReadReport;
}

QString fieldName(quint8 id)
{
    return u"field 0x%1"_s.arg(QString::number(id | kHighBit, 16).toUpper());
}

// What stands for the codes from 128 on.
constexpr std::array<const char *, 4> kClasses = {"personal", "advertisement", "informational",
                                                  "auto"};
constexpr std::array<const char *, 3> kPriorities = {"low", "normal", "high"};
constexpr std::array<const char *, 2> kAnswers = {"yes", "no"};

/// The code of a name; 0 when it is none of these.
template <size_t Count>
quint8 codeOf(const QByteArray &text, const std::array<const char *, Count> &names)
{
    const QByteArray lower = text.trimmed().toLower();
    const auto *found = std::find_if(names.begin(), names.end(),
                                     [&lower](const char *name) { return lower == name; });
    return found == names.end() ? 0 : static_cast<quint8>(kHighBit + (found - names.begin()));
}

class HeaderReader {
public:
    HeaderReader(QByteArrayView pdu, Header &header, Journal &journal)
        : m_stream(streamOver(pdu)), m_header(header), m_journal(journal)
    {
    }

    bool readAll()
    {
        while (m_stream.hasMore() && !m_header.hasContentType) {
            const qint32 start = m_stream.pos;
            const int first = peekByte(m_stream);
            const bool isRead = first == 0 ? skipZeros()
                : first >= kHighBit        ? readField(static_cast<quint8>(first & 0x7F))
                : first > kLengthQuote     ? skipTextField()
                                           : false;
            if (!isRead) {
                return endAtJunk(start);
            }
        }
        m_header.end = m_stream.pos;
        return true;
    }

private:
    // What becomes of a field.
    enum class Fate { Kept, Changed, Broken };

    [[nodiscard]] const char *at(qint32 position) const { return m_stream.data + position; }

    bool skipZeros()
    {
        m_journal.step(at(m_stream.pos), u"zeros between the fields were skipped"_s);
        while (peekByte(m_stream) == 0) {
            ++m_stream.pos;
        }
        m_header.isUnchanged = false;
        return true;
    }
    bool skipTextField()
    {
        const qint32 start = m_stream.pos;
        const auto name = readText(m_stream);
        // The value is a text; some have a length in front. A field may follow where the length of
        // the text before was too short. No text begins with the id of one.
        constexpr int kFirstOfUtf8 = 0xC0;
        const int first = peekByte(m_stream);
        const bool isCounted = first >= 0 && first <= kLengthQuote;
        const bool isField = first >= kHighBit && first < kFirstOfUtf8;
        if (!isField && !(isCounted ? skipValue(m_stream) : readText(m_stream).has_value())) {
            return false;
        }
        m_journal.step(at(start),
                       u"the text field \"%1\" was left out"_s.arg(name->string().left(40)));
        m_header.isUnchanged = false;
        return true;
    }
    /// Ends a header that needs no body at bytes that are no field; else the message is broken.
    bool endAtJunk(qint32 start)
    {
        if (!isComplete()) {
            return m_journal.problem(
                at(start), u"what begins here is no header field, and the header is not whole"_s);
        }
        m_journal.step(at(start), u"the bytes behind the header were left out"_s);
        m_header.isUnchanged = false;
        m_header.end = m_stream.size;
        return true;
    }
    [[nodiscard]] bool isComplete() const
    {
        const Facts &facts = m_header.facts;
        switch (facts.type) {
        case SendConfirmation:
            return facts.responseStatus != 0;
        case Notification:
            return !facts.transactionId.isEmpty() && !facts.location.isEmpty();
        case Delivery:
        case ReadReport:
        case ReadReportToNetwork:
            return !facts.messageId.isEmpty();
        case RetrieveConfirmation:
            return facts.retrieveStatus != 0;
        default:
            return false;
        }
    }

    bool readField(quint8 id)
    {
        const qint32 start = m_stream.pos++;
        if (id == ContentType) {
            return readContentType(start);
        }
        if (id == 0 || id > TransactionId) {
            return readUnknown(id, start);
        }
        m_value.clear();
        m_step.clear();
        const Fate fate = readKnown(id);
        if (fate == Fate::Kept) {
            keep(id, bytesBetween(m_stream, start, m_stream.pos));
        } else if (fate == Fate::Changed) {
            m_journal.step(at(start), fieldName(id) + u": "_s + m_step);
            m_header.isUnchanged = false;
            if (!m_value.isEmpty()) {
                m_header.fields.add(static_cast<char>(id | kHighBit) + m_value);
            }
        }
        return fate != Fate::Broken;
    }
    /// A message that is written anew begins with its type, as everybody expects.
    void keep(quint8 id, QByteArrayView field)
    {
        if (id == MessageType) {
            m_header.type = field;
        } else {
            m_header.fields.keep(field);
        }
    }
    Fate readKnown(quint8 id)
    {
        Facts &facts = m_header.facts;
        switch (id) {
        case Bcc:
        case Cc:
        case To:
            return readAddress();
        case From:
            return readFrom();
        case ContentLocation:
            return readTextTo(&facts.location, true);
        case MessageId:
            return readTextTo(&facts.messageId, false);
        case TransactionId:
            return readTextTo(&facts.transactionId, false);
        case Subject:
        case ResponseText:
            return readEncoded();
        case Date:
        case MessageSize:
        case Version:
            return readNumberField();
        case DeliveryTime:
        case Expiry:
            return readTime();
        case DeliveryReport:
        case ReadReply:
        case ReportAllowed:
        case SenderVisibility:
            return readFlag();
        case MessageClass:
            return readClass();
        case Priority:
            return readPriority();
        case MessageType:
            return readCode(&facts.type);
        case ResponseStatus:
            return readCode(&facts.responseStatus);
        case Status:
            return readCode(&facts.messageStatus);
        default:
            return readCode(nullptr);
        }
    }

    Fate changed(const QString &step, const QByteArray &value = {})
    {
        m_step = step;
        m_value = value;
        return Fate::Changed;
    }
    /// Leaves out a field of which the codec can make nothing.
    Fate leaveOut()
    {
        return skipValue(m_stream) ? changed(u"a field that has another form was left out"_s)
                                   : Fate::Broken;
    }

    Fate readCode(quint8 *code)
    {
        if (peekByte(m_stream) < kHighBit) {
            return leaveOut();
        }
        quint8 byte = 0;
        m_stream.readByte(byte);
        if (code) {
            *code = byte;
        }
        return Fate::Kept;
    }
    /// A fresh message of this system has the priority 1, without the high bit.
    Fate readPriority()
    {
        constexpr int kHighestOwn = 2;
        const int byte = peekByte(m_stream);
        if (byte < 0 || byte > kHighestOwn) {
            return beginsWord(byte) ? readWord(kPriorities) : readCode(nullptr);
        }
        ++m_stream.pos;
        return Fate::Kept;
    }
    static bool beginsWord(int byte) { return byte > kLengthQuote && byte < kHighBit; }
    /// A code that is written as a text.
    template <size_t Count> Fate readWord(const std::array<const char *, Count> &names)
    {
        const auto text = readText(m_stream);
        const quint8 code = codeOf(text->utf8, names);
        return code == 0 ? changed(u"a field that has another form was left out"_s)
                         : changed(u"a code was a text"_s, QByteArray(1, static_cast<char>(code)));
    }
    Fate readFlag()
    {
        const int byte = peekByte(m_stream);
        if (byte != kYes && byte != kNo) {
            return beginsWord(byte) ? readWord(kAnswers) : leaveOut();
        }
        ++m_stream.pos;
        return Fate::Kept;
    }
    Fate readClass()
    {
        if (!beginsWord(peekByte(m_stream))) {
            return readCode(nullptr);
        }
        const auto text = readText(m_stream);
        const quint8 code = codeOf(text->utf8, kClasses);
        return changed(
            code != 0 ? u"the message class is a text"_s
                      : u"the message class \"%1\" became personal"_s.arg(text->string().left(40)),
            QByteArray(1, static_cast<char>(code != 0 ? code : kHighBit)));
    }
    Fate readNumberField() { return readNumber(m_stream) ? Fate::Kept : leaveOut(); }
    // time := value-length token number
    Fate readTime()
    {
        const qint32 start = m_stream.pos;
        const int first = peekByte(m_stream);
        quint32 length = 0;
        if (first == kFirstToken || first == kSecondToken) {
            return readBareTime();
        }
        if (first > kLengthQuote || !m_stream.readValueLength(length)
            || length > quint32(m_stream.remaining())) {
            m_stream.pos = start;
            return leaveOut();
        }
        const qint32 end = m_stream.pos + static_cast<qint32>(length);
        quint8 token = 0;
        m_stream.readByte(token);
        const auto number = readNumber(m_stream);
        if (!number || (token != kFirstToken && token != kSecondToken)) {
            m_stream.pos = end;
            return changed(u"a time of another form was left out"_s);
        }
        if (m_stream.pos == end) {
            return Fate::Kept;
        }
        moveBehind(end);
        return changed(u"the length of a time was wrong"_s,
                       withValueLength(char(token) + writtenNumber(*number)));
    }
    /// A time whose length is missing. No field begins with the length of a number.
    Fate readBareTime()
    {
        constexpr int kLongestTime = 8;
        const qint32 start = m_stream.pos;
        quint8 token = 0;
        m_stream.readByte(token);
        const int length = peekByte(m_stream);
        const auto number =
            length > 0 && length <= kLongestTime ? readNumber(m_stream) : std::nullopt;
        if (!number) {
            m_stream.pos = start;
            return leaveOut();
        }
        return changed(u"a time had no length"_s,
                       withValueLength(char(token) + writtenNumber(*number)));
    }
    /// Moves behind a value that has ended here and whose length says that it ends elsewhere. One
    /// that is too short, or takes the next field in, is wrong.
    void moveBehind(qint32 end)
    {
        const bool isTooLong = m_stream.pos < end && peekByte(m_stream) >= kHighBit;
        m_stream.pos = isTooLong ? m_stream.pos : qMax(m_stream.pos, end);
    }
    Fate readTextTo(QString *fact, bool isTrimmed)
    {
        const auto text = readText(m_stream);
        if (!text) {
            return Fate::Broken;
        }
        const QByteArray value = isTrimmed ? text->utf8.trimmed() : text->utf8;
        *fact = QString::fromUtf8(value);
        if (text->isPlain && value.size() == text->utf8.size()) {
            return Fate::Kept;
        }
        return changed(u"a text was written anew"_s, value.isEmpty() ? value : writtenText(value));
    }
    Fate readEncoded()
    {
        const auto text = readEncodedText(m_stream);
        if (!text) {
            return Fate::Broken;
        }
        if (text->isPlain) {
            return Fate::Kept;
        }
        return text->utf8.isEmpty()
            ? changed(u"an empty text was left out"_s)
            : changed(u"a text became UTF-8"_s, writtenEncodedText(text->utf8));
    }
    static QByteArray writtenAddress(const QByteArray &address)
    {
        // A control character in front would be taken for a length.
        const bool beginsText = address.isEmpty() || address.front() > kLengthQuote;
        return isAscii(address) && beginsText ? writtenText(address) : writtenEncodedText(address);
    }
    Fate readAddress()
    {
        const auto text = readEncodedText(m_stream);
        if (!text) {
            return Fate::Broken;
        }
        const QByteArray address = plainAddress(text->utf8);
        if (text->isPlain && address == text->utf8 && !address.isEmpty()) {
            return Fate::Kept;
        }
        return address.isEmpty()
            ? changed(u"an empty address was left out"_s)
            : changed(u"an address was written anew"_s, writtenAddress(address));
    }

    // from := value-length (0x80 address | 0x81) | text
    Fate readFrom()
    {
        const int first = peekByte(m_stream);
        if (first == kSecondToken) {
            ++m_stream.pos;
            return changed(u"a sender that is none was left out"_s);
        }
        if (first > kLengthQuote) {
            m_stream.pos += first == kFirstToken ? 1 : 0;
            const auto text = readEncodedText(m_stream);
            return text ? writeFrom(plainAddress(text->utf8), u"a sender had no length"_s)
                        : Fate::Broken;
        }
        const qint32 start = m_stream.pos;
        quint32 length = 0;
        if (!m_stream.readValueLength(length) || length > quint32(m_stream.remaining())) {
            return readOverrunFrom(start);
        }
        return readFromValue(m_stream.pos + static_cast<qint32>(length));
    }
    Fate readFromValue(qint32 end)
    {
        const int token = m_stream.pos < end ? peekByte(m_stream) : -1;
        if (token == kSecondToken || token < 0) {
            m_stream.pos += token < 0 ? 0 : 1;
            const bool isNobody = token == kSecondToken && m_stream.pos == end; // insert-address
            moveBehind(end);
            return isNobody ? Fate::Kept : changed(u"a sender that is none was left out"_s);
        }
        m_stream.pos += token == kFirstToken ? 1 : 0;
        WSP_Stream value(m_stream.data, endOfSender(end));
        value.pos = m_stream.pos;
        const int first = peekByte(value);
        const auto text = readEncodedText(value);
        if (!text) {
            m_stream.pos = end;
            return changed(u"a sender that cannot be read was left out"_s);
        }
        m_stream.pos = value.pos;
        const QByteArray address = plainAddress(text->utf8);
        const bool hasEnd = (first > 0 && first <= kLengthQuote) || *at(value.pos - 1) == 0;
        const bool isWhole = token == kFirstToken && value.pos == end && hasEnd;
        const bool isSame = text->isPlain && address == text->utf8 && !address.isEmpty();
        moveBehind(end);
        return isWhole && isSame ? Fate::Kept
                                 : writeFrom(address, u"the sender was written anew"_s);
    }
    /// How far a sender may reach that should end at `end`. A text goes on to its NUL, unless a
    /// field begins first.
    [[nodiscard]] qint32 endOfSender(qint32 end) const
    {
        const int first = m_stream.pos < end ? peekByte(m_stream) : -1;
        if (first > 0 && first <= kLengthQuote) {
            return m_stream.size; // it has a length of its own
        }
        const QByteArrayView text = bytesBetween(m_stream, m_stream.pos, end);
        const int next = end < m_stream.size ? static_cast<quint8>(*at(end)) : -1;
        const bool goesOn = !text.contains('\0') && (next == 0 || beginsWord(next));
        const qsizetype nul =
            goesOn ? bytesBetween(m_stream, end, m_stream.size).indexOf('\0') : -1;
        return nul < 0 ? end : end + static_cast<qint32>(nul) + 1;
    }
    Fate writeFrom(const QByteArray &address, const QString &step)
    {
        return changed(step,
                       address.isEmpty()
                           ? QByteArray()
                           : withValueLength(char(kFirstToken) + writtenAddress(address)));
    }
    /// The length is a lie: the text behind it may still end.
    Fate readOverrunFrom(qint32 start)
    {
        m_stream.pos = start + 1;
        if (peekByte(m_stream) == kFirstToken || peekByte(m_stream) == kSecondToken) {
            ++m_stream.pos;
        }
        return skipValue(m_stream) ? changed(u"a sender that reaches past the end was left out"_s)
                                   : Fate::Broken;
    }

    /// A field that the codec does not know. Some of them matter to those who fetch messages.
    bool readUnknown(quint8 id, qint32 start)
    {
        const qint32 valueStart = m_stream.pos;
        if (!skipValue(m_stream)) {
            return false;
        }
        WSP_Stream value(m_stream.data, m_stream.pos);
        value.pos = valueStart;
        takeFact(id, value);
        m_journal.step(at(start), fieldName(id) + u" was left out"_s);
        m_header.isUnchanged = false;
        return true;
    }
    void takeFact(quint8 id, WSP_Stream &value)
    {
        const auto code = static_cast<quint8>(qMax(0, peekByte(value)));
        switch (id) {
        case RetrieveStatus:
            m_header.facts.retrieveStatus = code;
            break;
        case RetrieveText:
            if (const auto text = readEncodedText(value)) {
                m_header.facts.retrieveText = text->string();
            }
            break;
        case ReadStatus:
            m_header.facts.readStatus = code;
            break;
        case PreviouslySentBy:
        case PreviouslySentDate:
            takeForwarding(id, value);
            break;
        case ApplicationId:
            m_application = textOfValue(value);
            break;
        case ReplyApplicationId:
            m_replyApplication = textOfValue(value);
            break;
        case ApplicationInfo:
            m_applicationInfo = textOfValue(value);
            break;
        default:
            break;
        }
    }
    // previously-sent := value-length count (address | date)
    void takeForwarding(quint8 id, WSP_Stream &value)
    {
        quint32 length = 0;
        if (peekByte(value) > kLengthQuote || !value.readValueLength(length)
            || !readNumber(value)) {
            return;
        }
        if (id == PreviouslySentDate) {
            if (const auto date = readNumber(value)) {
                m_header.facts.previousDates.append(*date);
            }
        } else if (const auto address = readEncodedText(value)) {
            m_header.facts.previousSenders.append(address->string());
        }
    }
    static QByteArray textOfValue(WSP_Stream &value)
    {
        const auto text = readText(value);
        return text ? text->utf8 : QByteArray();
    }

    bool readContentType(qint32 start)
    {
        MediaType &type = m_header.contentType;
        type = readMediaType(m_stream);
        if (type.isEmpty() && m_stream.pos == start + 1 && m_stream.hasMore()) {
            return false;
        }
        takeApplication(type.application, m_application, type);
        takeApplication(type.replyApplication, m_replyApplication, type);
        takeApplication(type.applicationInfo, m_applicationInfo, type);
        m_header.contentTypeField = bytesBetween(m_stream, start, m_stream.pos);
        m_header.hasContentType = true;
        return true;
    }
    /// The application stands in a field of its own, or in the content type; the codec knows that.
    static void takeApplication(QByteArray &own, const QByteArray &field, MediaType &type)
    {
        if (own.isEmpty() && !field.isEmpty()) {
            own = field;
            type.isPlainInHeader = false;
        }
    }

    WSP_Stream m_stream;
    Header &m_header;
    Journal &m_journal;
    QByteArray m_value;
    QString m_step;
    QByteArray m_application;
    QByteArray m_replyApplication;
    QByteArray m_applicationInfo;
};

bool isOfOrigin(QByteArrayView pdu, Origin origin, const Header &header, Journal &journal)
{
    const quint8 type = header.facts.type;
    if (origin == Origin::File) {
        return type != 0 || !header.contentType.isEmpty()
            || journal.problem(pdu.data(), u"there is no message type"_s);
    }
    if (type == 0) {
        return journal.problem(pdu.data(), u"there is no message type"_s);
    }
    return comesFromNetwork(type)
        || journal.problem(pdu.data(),
                           u"no network sends a message of type 0x%1"_s.arg(type, 2, 16));
}

bool isUsable(QByteArrayView pdu, const Header &header, Journal &journal)
{
    const Facts &facts = header.facts;
    if (facts.type != Notification) {
        return true;
    }
    if (facts.transactionId.isEmpty()) {
        return journal.problem(pdu.data(), u"the notification has no transaction id"_s);
    }
    return !facts.location.isEmpty()
        || journal.problem(pdu.data(), u"the notification has no location"_s);
}

} // namespace

bool takeInHeader(QByteArrayView pdu, Origin origin, Header &header, Journal &journal)
{
    return HeaderReader(pdu, header, journal).readAll() && isOfOrigin(pdu, origin, header, journal)
        && isUsable(pdu, header, journal);
}

} // namespace wmsg::intake
