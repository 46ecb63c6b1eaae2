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
constexpr qsizetype kShortestRun = 22; // digits; the number of a SIM is shorter

int hexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isHex(char c)
{
    return hexValue(c) >= 0;
}

bool isText(QByteArrayView file)
{
    return std::all_of(file.begin(), file.end(), [](char c) {
        return (c >= 0x20 && c < 0x7F) || c == '\n' || c == '\r' || c == '\t' || c == 0x1A;
    });
}

bool isWordCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// The longest run of hex digits in a line that is a word of its own.
QByteArrayView longestRun(QByteArrayView line)
{
    QByteArrayView longest;
    for (qsizetype begin = 0; begin < line.size();) {
        qsizetype end = begin;
        bool isRun = true;
        while (end < line.size() && isWordCharacter(line[end])) {
            isRun = isRun && isHex(line[end]);
            ++end;
        }
        if (isRun && end - begin > longest.size() && (end - begin) % 2 == 0) {
            longest = line.sliced(begin, end - begin);
        }
        begin = std::max(end, begin + 1);
    }
    return longest.size() >= kShortestRun ? longest : QByteArrayView();
}

/// Appends the bytes of a line that holds nothing but pairs of digits and a comment.
bool addPairs(QByteArrayView line, QByteArray &out)
{
    for (qsizetype i = 0; i < line.size() && line[i] != '#';) {
        if (line[i] == ' ' || line[i] == '\t' || line[i] == '\r') {
            ++i;
        } else if (i + 1 < line.size() && isHex(line[i]) && isHex(line[i + 1])) {
            out.append(static_cast<char>(hexValue(line[i]) * 16 + hexValue(line[i + 1])));
            i += 2;
        } else {
            return false;
        }
    }
    return true;
}

QList<QByteArrayView> linesOf(QByteArrayView text)
{
    QList<QByteArrayView> lines;
    qsizetype begin = 0;
    while (begin < text.size()) {
        const qsizetype found = text.indexOf('\n', begin);
        const qsizetype end = found < 0 ? text.size() : found;
        lines.append(text.sliced(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

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

QList<HexLine> hexLines(QByteArrayView file)
{
    if (!isText(file)) {
        return {};
    }
    const QList<QByteArrayView> lines = linesOf(file);
    QList<HexLine> found;
    QByteArray all;
    bool isPairs = true;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArrayView run = longestRun(lines[i]);
        if (!run.isEmpty()) {
            found.append({static_cast<int>(i) + 1, QByteArray::fromHex(run.toByteArray())});
        }
        isPairs = isPairs && addPairs(lines[i], all);
    }
    // Without a short message in its first line a text of pairs is one dump in lines.
    const bool isDump = isPairs && !all.isEmpty()
        && (found.isEmpty() || !readShortMessage(found.first().bytes).message);
    return isDump ? QList<HexLine>{{0, all}} : found;
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
    qsizetype next = 0;
    for (int part = 1; part <= total; ++part) {
        const bool isThere = next < messages.size()
            && messages[next].tpdu.concatenation().value_or(smspdu::Concatenation()).part == part;
        if (isThere) {
            ++next;
        } else {
            missing += QString::number(part);
        }
    }
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
