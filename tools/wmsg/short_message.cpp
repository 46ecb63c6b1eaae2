// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/short_message.h"

#include "services/intake/intake.h"

#include <QtCore/QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr quint16 kPushPort = 2948;
/// A TPDU that begins at `start`, in the direction that its first octet tells.
ShortMessageResult readAt(QByteArrayView bytes, const std::optional<smspdu::ServiceCentre> &centre)
{
    constexpr int kKindMask = 0x03;
    const qsizetype start = centre ? centre->size : 0;
    const int kind = start < bytes.size() ? bytes[start] & kKindMask : 0;
    const auto origin = kind == 1 ? smspdu::Origin::Phone : smspdu::Origin::Network;
    const smspdu::ReadResult read = smspdu::readTpdu(bytes.sliced(start), origin);
    if (!read.isRead()) {
        return {std::nullopt, start + read.offset, read.problem};
    }
    return {ShortMessage{{}, bytes.toByteArray(), centre, read.tpdu}, 0, {}};
}

QString keyOf(const ShortMessage &message, const smspdu::Concatenation &part)
{
    return u"%1 %2 %3 %4 "_s.arg(int(message.tpdu.kind))
               .arg(part.reference)
               .arg(part.total)
               .arg(part.isWide)
        + message.tpdu.address.toString();
}

} // namespace

ShortMessageResult readShortMessage(QByteArrayView bytes)
{
    ShortMessageResult without = readAt(bytes, std::nullopt);
    const auto centre = smspdu::readServiceCentre(bytes);
    if (without.message || !centre) {
        return without;
    }
    ShortMessageResult with = readAt(bytes, centre);
    return with.message || with.offset > without.offset ? with : without;
}

QString JoinedMessage::text() const
{
    const smspdu::Alphabet alphabet = first().alphabet();
    const bool isOneAlphabet =
        std::all_of(messages.begin(), messages.end(), [alphabet](const ShortMessage &message) {
            return message.tpdu.alphabet() == alphabet;
        });
    // A character may begin in one part and end in the next.
    smspdu::Tpdu whole = first();
    if (isOneAlphabet) {
        whole.userData = data();
        return whole.text();
    }
    QString text;
    for (const ShortMessage &message : messages) {
        text += message.tpdu.text();
    }
    return text;
}

QByteArray JoinedMessage::data() const
{
    QByteArray data;
    for (const ShortMessage &message : messages) {
        data += message.tpdu.userData;
    }
    return data;
}

bool JoinedMessage::isPush() const
{
    if (!isWhole() || first().alphabet() != smspdu::Alphabet::Octets) {
        return false;
    }
    const auto ports = first().ports();
    if (ports) {
        return ports->destination == kPushPort;
    }
    const QByteArray bytes = data();
    const bool looksLikePush = bytes.size() > 3 && (bytes[1] == 0x06 || bytes[1] == 0x07);
    return looksLikePush
        && intake::takeIn(bytes, intake::Origin::File).verdict != intake::Verdict::Unreadable;
}

QString JoinedMessage::missingParts() const
{
    QStringList missing;
    const auto add = [&missing](int from, int to) {
        if (to - from >= 2) {
            missing += u"%1 to %2"_s.arg(from).arg(to);
            return;
        }
        for (int part = from; part <= to; ++part) {
            missing += QString::number(part);
        }
    };
    int next = 1;
    for (const ShortMessage &message : messages) {
        const int part = message.tpdu.concatenation().value_or(smspdu::Concatenation()).part;
        add(next, part - 1);
        next = part + 1;
    }
    add(next, total);
    return missing.join(u", "_s) + u" of %1"_s.arg(total);
}

std::optional<JoinedMessage> ShortMessageJoiner::add(const ShortMessage &message)
{
    const auto part = message.tpdu.concatenation();
    if (!part || part->total < 2) {
        return JoinedMessage{{message}, 1};
    }
    const QString key = keyOf(message, *part);
    Group &group = m_groups[key];
    if (group.parts.isEmpty()) {
        group.order = m_count++;
        group.total = part->total;
    }
    if (!group.parts.contains(part->part)) {
        group.parts.insert(part->part, message);
    }
    if (group.parts.size() < group.total) {
        return std::nullopt;
    }
    JoinedMessage whole{group.parts.values(), group.total};
    m_groups.remove(key);
    return whole;
}

QList<JoinedMessage> ShortMessageJoiner::takeIncomplete()
{
    QMap<int, JoinedMessage> inOrder;
    for (const Group &group : std::as_const(m_groups)) {
        inOrder.insert(group.order, {group.parts.values(), group.total});
    }
    m_groups.clear();
    return inOrder.values();
}

} // namespace wmsg::cli
