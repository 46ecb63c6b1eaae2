// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/message_commands.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr const char *kStoreNames[] = {"SM", "ME"};
constexpr int kAll = 4; // states, when messages are listed
constexpr int kLongestTpdu = 164;
constexpr int kMostHeldBack = 100;

enum Role { kReading, kWriting, kReceiving };

/// What comes is stored, stored and told of, or handed over.
enum Indication { kMode, kMessages, kBroadcasts, kReports, kBuffer };
constexpr int kMostIndications[] = {2, 3, 2, 2, 1};
enum { kStoreOnly, kTellPlace, kHandOver, kHandOverClass3 };

QByteArray number(qint64 value)
{
    return QByteArray::number(value);
}

std::optional<int> storeNamed(const QByteArray &name)
{
    for (int store = 0; store < 2; ++store) {
        if (name == kStoreNames[store]) {
            return store;
        }
    }
    return std::nullopt;
}

/// How long the TPDU of a PDU is.
qsizetype tpduSize(const QByteArray &pdu)
{
    const auto centre = smspdu::readServiceCentre(pdu);
    return centre ? pdu.size() - centre->size : pdu.size();
}

QByteArray hex(const QByteArray &pdu)
{
    return pdu.toHex().toUpper();
}

bool isHex(const QByteArray &text)
{
    return text.size() % 2 == 0 && std::all_of(text.cbegin(), text.cend(), [](char byte) {
               return std::isxdigit(static_cast<unsigned char>(byte)) != 0;
           });
}

/// The class of a message that came, 0 to 3; -1 for none, and for what cannot be read.
int classOf(const QByteArray &pdu)
{
    const auto centre = smspdu::readServiceCentre(pdu);
    if (!centre) {
        return -1;
    }
    const auto read =
        smspdu::readTpdu(QByteArrayView(pdu).sliced(centre->size), smspdu::Origin::Network);
    return read.isRead() ? smspdu::messageClassOf(read.tpdu.dcs) : -1;
}

QByteArray numberOf(const smspdu::Address &address)
{
    return address.toString().toLatin1();
}

} // namespace

// clang-format off
const MessageCommands::Row MessageCommands::kRows[] = {
    {"+CSMS", &MessageCommands::service},
    {"+CMGF", &MessageCommands::format},
    {"+CSCA", &MessageCommands::centre},
    {"+CPMS", &MessageCommands::memories},
    {"+CNMI", &MessageCommands::indications},
    {"+CMMS", &MessageCommands::moreMessages},
    {"+CMGL", &MessageCommands::list},
    {"+CMGR", &MessageCommands::read},
    {"+CMGD", &MessageCommands::remove},
    {"+CMGS", &MessageCommands::send},
    {"+CMSS", &MessageCommands::sendStored},
    {"+CMGW", &MessageCommands::write},
};
// clang-format on

MessageCommands::MessageCommands(const Settings &settings, Network &network, QObject *parent)
    : QObject(parent), m_network(network),
      m_serviceCentre(settings.serviceCentre), m_stores{MessageStore(settings.places),
                                                        MessageStore(settings.places)}
{
    m_delay.setSingleShot(true);
    m_room.setSingleShot(true);
    connect(&m_room, &QTimer::timeout, this, &MessageCommands::fetch);
    connect(&m_delay, &QTimer::timeout, this, &MessageCommands::answer);
    connect(&network, &Network::messageWaiting, this, &MessageCommands::fetch);
}

bool MessageCommands::knows(const QByteArray &command)
{
    return std::any_of(std::begin(kRows), std::end(kRows),
                       [&command](const Row &row) { return command == row.name; });
}

AtAnswer MessageCommands::obey(const AtCommand &command)
{
    if (m_isLocked) {
        return AtAnswer::cms(kSimPinRequired);
    }
    for (const Row &row : kRows) {
        if (command.name == row.name) {
            return (this->*row.handler)(command);
        }
    }
    return AtAnswer::error();
}

void MessageCommands::restart()
{
    m_memory = {};
    m_indications = {};
    m_heldBack.clear();
    m_isAnswerLost = false;
    m_delay.stop();
}

MessageStore &MessageCommands::store(int role)
{
    return m_stores[static_cast<size_t>(m_memory[static_cast<size_t>(role)])];
}

AtAnswer MessageCommands::service(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer::line("+CSMS: (0)");
    case AtCommand::Read:
        return AtAnswer::line("+CSMS: 0,1,1,0");
    case AtCommand::Set:
        return command.number(0, -1) == 0 ? AtAnswer::line("+CSMS: 1,1,0")
                                          : AtAnswer::cms(kOperationNotSupported);
    case AtCommand::Do:
        break;
    }
    return AtAnswer::error();
}

AtAnswer MessageCommands::format(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer::line("+CMGF: (0)");
    case AtCommand::Read:
        return AtAnswer::line("+CMGF: 0");
    case AtCommand::Set:
        return command.number(0, 0) == 0 ? AtAnswer() : AtAnswer::cms(kOperationNotSupported);
    case AtCommand::Do:
        break;
    }
    return AtAnswer();
}

AtAnswer MessageCommands::centre(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer();
    case AtCommand::Read: {
        const auto address = smspdu::Address::fromString(QString::fromLatin1(m_serviceCentre));
        return AtAnswer::line("+CSCA: \"" + m_serviceCentre + "\"," + number(address.type));
    }
    case AtCommand::Set: {
        QByteArray given = command.arguments.value(0);
        if (command.number(1, 0) == smspdu::Address::kInternational && !given.startsWith('+')) {
            given.prepend('+');
        }
        const auto address = smspdu::Address::fromString(QString::fromLatin1(given));
        if (given.isEmpty() || address.isAlphanumeric()) {
            return AtAnswer::cms(kInvalidParameter);
        }
        m_serviceCentre = numberOf(address);
        return AtAnswer();
    }
    case AtCommand::Do:
        break;
    }
    return AtAnswer::error();
}

QByteArray MessageCommands::usage(int role) const
{
    const auto &messages = m_stores[static_cast<size_t>(m_memory[static_cast<size_t>(role)])];
    return number(messages.used()) + "," + number(messages.size());
}

AtAnswer MessageCommands::memories(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer::line(R"(+CPMS: ("SM","ME"),("SM","ME"),("SM","ME"))");
    case AtCommand::Read: {
        QByteArrayList parts;
        for (int role = kReading; role <= kReceiving; ++role) {
            parts.append(QByteArray("\"") + kStoreNames[m_memory[static_cast<size_t>(role)]] + "\","
                         + usage(role));
        }
        return AtAnswer::line("+CPMS: " + parts.join(','));
    }
    case AtCommand::Set:
        return setMemories(command);
    case AtCommand::Do:
        break;
    }
    return AtAnswer::error();
}

AtAnswer MessageCommands::setMemories(const AtCommand &command)
{
    std::array<int, 3> memory = m_memory;
    if (command.arguments.size() > 3) {
        return AtAnswer::cms(kOperationNotAllowed);
    }
    for (qsizetype role = 0; role < command.arguments.size(); ++role) {
        const auto named = storeNamed(command.arguments[role]);
        if (!named) {
            return AtAnswer::cms(kOperationNotAllowed);
        }
        memory[static_cast<size_t>(role)] = *named;
    }
    m_memory = memory;
    return AtAnswer::line("+CPMS: " + usage(kReading) + "," + usage(kWriting) + ","
                          + usage(kReceiving));
}

AtAnswer MessageCommands::indications(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer::line("+CNMI: (0-2),(0-3),(0,2),(0-2),(0,1)");
    }
    if (command.form == AtCommand::Read) {
        QByteArrayList values;
        for (const int value : m_indications) {
            values.append(number(value));
        }
        return AtAnswer::line("+CNMI: " + values.join(','));
    }
    std::array<int, 5> wanted = m_indications;
    for (size_t i = 0; i < wanted.size(); ++i) {
        const auto value = command.number(static_cast<qsizetype>(i), wanted[i]);
        if (!value || *value > kMostIndications[i] || (i == kBroadcasts && *value == 1)) {
            return AtAnswer::cms(kOperationNotSupported);
        }
        wanted[i] = *value;
    }
    m_indications = wanted;
    if (m_indications[kMode] != 0) {
        const QByteArrayList lines = std::exchange(m_heldBack, QByteArrayList());
        if (m_indications[kBuffer] == 0 && !lines.isEmpty()) {
            Q_EMIT arrived(lines);
        }
        // What was waiting to be handed over comes when the command has its answer.
        m_room.start();
    }
    return AtAnswer();
}

AtAnswer MessageCommands::moreMessages(const AtCommand &command)
{
    switch (command.form) {
    case AtCommand::Test:
        return AtAnswer::line("+CMMS: (0-2)");
    case AtCommand::Read:
        return AtAnswer::line("+CMMS: 0");
    case AtCommand::Set:
    case AtCommand::Do:
        break;
    }
    return command.number(0, 0).value_or(3) <= 2 ? AtAnswer() : AtAnswer::cms(kInvalidParameter);
}

AtAnswer MessageCommands::list(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer::line("+CMGL: (0-4)");
    }
    const auto state = command.number(0, StoredMessage::Unread);
    if (command.form == AtCommand::Read || !state || *state > kAll) {
        return AtAnswer::cms(kInvalidParameter);
    }
    AtAnswer answer;
    auto &messages = store(kReading).messages();
    for (auto message = messages.begin(); message != messages.end(); ++message) {
        if (*state == kAll || *state == message->state) {
            answer.lines.append("+CMGL: " + number(message.key()) + "," + number(message->state)
                                + ",," + number(tpduSize(message->pdu)) + "\r\n"
                                + hex(message->pdu));
            message->state =
                message->state == StoredMessage::Unread ? StoredMessage::Read : message->state;
        }
    }
    return answer;
}

AtAnswer MessageCommands::read(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer();
    }
    StoredMessage *message = store(kReading).at(command.number(0, 0).value_or(0));
    if (!message) {
        return AtAnswer::cms(kInvalidIndex);
    }
    const QByteArray line = "+CMGR: " + number(message->state) + ",,"
        + number(tpduSize(message->pdu)) + "\r\n" + hex(message->pdu);
    message->state = message->state == StoredMessage::Unread ? StoredMessage::Read : message->state;
    return AtAnswer::line(line);
}

AtAnswer MessageCommands::remove(const AtCommand &command)
{
    MessageStore &messages = store(kReading);
    if (command.form == AtCommand::Test) {
        QByteArrayList places;
        for (auto at = messages.messages().cbegin(); at != messages.messages().cend(); ++at) {
            places.append(number(at.key()));
        }
        return AtAnswer::line("+CMGD: (" + places.join(',') + "),(0-4)");
    }
    const int place = command.number(0, 0).value_or(0);
    const auto flag = command.number(1, 0);
    if (!flag || *flag > kAll) {
        return AtAnswer::cms(kInvalidParameter);
    }
    if (*flag == 0) {
        // An empty place that exists can be emptied.
        messages.remove(place);
        const bool exists = place >= 1 && place <= messages.size();
        m_room.start();
        return exists ? AtAnswer() : AtAnswer::cms(kInvalidIndex);
    }
    // 1: those that were read; 2: those that were sent, too; 3: those unsent, too; 4: all.
    for (auto at = messages.messages().begin(); at != messages.messages().end();) {
        const bool goes = *flag == kAll || at->state == StoredMessage::Read
            || (*flag >= 2 && at->state == StoredMessage::Sent)
            || (*flag >= 3 && at->state == StoredMessage::Unsent);
        at = goes ? messages.messages().erase(at) : std::next(at);
    }
    m_room.start();
    return AtAnswer();
}

AtAnswer MessageCommands::ask(const AtCommand &command)
{
    const auto length = command.number(0, -1);
    if (command.form != AtCommand::Set || !length || *length < 1 || *length > kLongestTpdu) {
        return AtAnswer::cms(kInvalidPdu);
    }
    m_length = *length;
    return {AtAnswer::Prompt};
}

AtAnswer MessageCommands::send(const AtCommand &command)
{
    m_state = -1;
    return command.form == AtCommand::Test ? AtAnswer() : ask(command);
}

AtAnswer MessageCommands::write(const AtCommand &command)
{
    const auto state = command.number(1, StoredMessage::Unsent);
    if (command.form == AtCommand::Test) {
        return AtAnswer();
    }
    if (!state || *state > StoredMessage::Sent) {
        return AtAnswer::cms(kInvalidParameter);
    }
    m_state = *state;
    return ask(command);
}

void MessageCommands::enter(const QByteArray &text, bool isWhole)
{
    m_answer = submitOrStore(text, isWhole);
    m_delay.start();
}

void MessageCommands::answer()
{
    if (std::exchange(m_isAnswerLost, false)) {
        Q_EMIT answerLost();
    } else {
        Q_EMIT answered(m_answer);
    }
}

AtAnswer MessageCommands::submitOrStore(const QByteArray &text, bool isWhole)
{
    const QByteArray digits = text.trimmed();
    const QByteArray pdu = QByteArray::fromHex(digits);
    if (!isWhole || digits.isEmpty() || !isHex(digits) || tpduSize(pdu) != m_length) {
        return AtAnswer::cms(kInvalidPdu);
    }
    if (m_state < 0) {
        return submission("+CMGS: ", pdu);
    }
    const auto place = store(kWriting).add({static_cast<StoredMessage::State>(m_state), pdu});
    return place ? AtAnswer::line("+CMGW: " + number(*place)) : AtAnswer::cms(kMemoryFull);
}

AtAnswer MessageCommands::sendStored(const AtCommand &command)
{
    if (command.form == AtCommand::Test) {
        return AtAnswer();
    }
    const StoredMessage *message = store(kReading).at(command.number(0, 0).value_or(0));
    if (!message) {
        return AtAnswer::cms(kInvalidIndex);
    }
    m_answer = submission("+CMSS: ", message->pdu);
    m_delay.start();
    return {AtAnswer::Later};
}

/// Hands a message to the network, if it is one.
AtAnswer MessageCommands::submission(const QByteArray &answer, const QByteArray &pdu)
{
    const auto centre = smspdu::readServiceCentre(pdu);
    if (!centre) {
        return AtAnswer::cms(kInvalidPdu);
    }
    const auto read =
        smspdu::readTpdu(QByteArrayView(pdu).sliced(centre->size), smspdu::Origin::Phone);
    if (!read.isRead() || read.tpdu.kind != smspdu::Kind::Submit
        || read.tpdu.address.value.isEmpty()) {
        return AtAnswer::cms(kInvalidPdu);
    }
    QByteArray through = pdu.first(centre->size);
    if (centre->address.value.isEmpty()) {
        if (m_serviceCentre.isEmpty()) {
            return AtAnswer::cms(kNoServiceCentre);
        }
        through = smspdu::writtenServiceCentre(
            smspdu::Address::fromString(QString::fromLatin1(m_serviceCentre)));
    }
    const Network::Submission sent = m_network.submit(through, pdu.sliced(centre->size), read.tpdu);
    m_isAnswerLost = sent.isAnswerLost;
    return sent.cause != 0 ? AtAnswer::cms(sent.cause)
                           : AtAnswer::line(answer + number(sent.reference));
}

void MessageCommands::fetch()
{
    while (m_network.hasMessage() && !m_isLocked && m_isReachable && takeMessage()) { }
}

/// Takes the next message of the network; false when there is no room for it.
bool MessageCommands::takeMessage()
{
    const int messageClass = classOf(m_network.message());
    const int way = m_indications[kMessages];
    constexpr int kOfTheCard = 2;
    const bool isHandedOver = m_indications[kMode] != 0 && messageClass != kOfTheCard
        && (way == kHandOver || (way == kHandOverClass3 && messageClass == 3));
    if (isHandedOver) {
        const QByteArray pdu = m_network.takeMessage();
        Q_EMIT arrived({"+CMT: ," + number(tpduSize(pdu)) + "\r\n" + hex(pdu)});
        return true;
    }
    const auto place = store(kReceiving).add({StoredMessage::Unread, m_network.message()});
    if (!place) {
        return false;
    }
    (void)m_network.takeMessage();
    if (way != kStoreOnly) {
        indicate(
            {QByteArray("+CMTI: \"") + kStoreNames[m_memory[kReceiving]] + "\"," + number(*place)});
    }
    return true;
}

void MessageCommands::indicate(const QByteArrayList &lines)
{
    if (m_indications[kMode] != 0) {
        Q_EMIT arrived(lines);
    } else if (m_heldBack.size() < kMostHeldBack) {
        m_heldBack += lines;
    }
}

} // namespace wmsg::sim
