// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/hex_text.h"

#include "tools/wmsg/short_message.h"

#include <algorithm>
#include <utility>

// dump      := { dump-line | "*" | other-line }    the first offset of each dump is 0
// dump-line := offset [":"] blanks { pair { pair } blanks } [ what these bytes are ]
//   offset: how many bytes are before it; 7 digits are octal ones, all others hexadecimal
//   "*": all up to the next offset is as in the line before

namespace wmsg::cli {

namespace {

constexpr qsizetype kShortestRun = 22; // digits; the number of a SIM is shorter
constexpr qsizetype kShortestOffset = 4; // digits
constexpr qsizetype kLongestOffset = 15;
constexpr qsizetype kOctalOffset = 7;
constexpr qsizetype kDumpWidth = 16; // bytes
constexpr qsizetype kMostRepeated = qsizetype(64) * 1024 * 1024; // bytes, of all dumps

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

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
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
        if (isBlank(line[i])) {
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
    constexpr QByteArrayView kMark("\xEF\xBB\xBF");
    QList<QByteArrayView> lines;
    qsizetype begin = text.startsWith(kMark) ? kMark.size() : 0;
    while (begin < text.size()) {
        const qsizetype found = text.indexOf('\n', begin);
        const qsizetype end = found < 0 ? text.size() : found;
        lines.append(text.sliced(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/// Reads one line of a dump.
class DumpLine {
public:
    /// False for a line of something else.
    bool read(QByteArrayView line);
    [[nodiscard]] qsizetype offset() const { return m_offset; }
    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }

private:
    bool readOffset(QByteArrayView digits);
    bool readGroups(QByteArrayView text, bool arePairs);

    qsizetype m_offset = 0;
    QByteArray m_bytes;
};

bool DumpLine::read(QByteArrayView line)
{
    qsizetype at = 0;
    while (at < line.size() && isBlank(line[at])) {
        ++at;
    }
    const qsizetype begin = at;
    while (at < line.size() && isHex(line[at])) {
        ++at;
    }
    const QByteArrayView digits = line.sliced(begin, at - begin);
    const bool hasColon = at < line.size() && line[at] == ':';
    at += hasColon ? 1 : 0;
    if (!readOffset(digits) || (at < line.size() && !isBlank(line[at]))) {
        return false;
    }
    // Groups of more than a byte behind a bare offset are words in the order of the machine.
    return readGroups(line.sliced(at), !hasColon);
}

bool DumpLine::readOffset(QByteArrayView digits)
{
    if (digits.size() < kShortestOffset || digits.size() > kLongestOffset) {
        return false;
    }
    bool isNumber = false;
    m_offset = digits.toByteArray().toLongLong(&isNumber, digits.size() == kOctalOffset ? 8 : 16);
    return isNumber;
}

/// Whatever stands behind a wide gap, a mark or a full line is a comment.
bool DumpLine::readGroups(QByteArrayView text, bool arePairs)
{
    constexpr qsizetype kWideGap = 3;
    for (qsizetype at = 0; at < text.size() && m_bytes.size() < kDumpWidth;) {
        const qsizetype gap = at;
        while (at < text.size() && isBlank(text[at])) {
            ++at;
        }
        const qsizetype begin = at;
        while (at < text.size() && isWordCharacter(text[at])) {
            ++at;
        }
        const QByteArrayView group = text.sliced(begin, at - begin);
        if (group.isEmpty() || (!m_bytes.isEmpty() && begin - gap >= kWideGap)) {
            return true;
        }
        const bool isGroup = group.size() % 2 == 0 && group.size() <= 2 * kDumpWidth
            && std::all_of(group.begin(), group.end(), isHex);
        if (!isGroup || (arePairs && group.size() != 2)) {
            return false;
        }
        m_bytes += QByteArray::fromHex(group.toByteArray());
    }
    return true;
}

/// Puts the lines of dumps together.
class DumpReader {
public:
    void add(QByteArrayView line, int number);
    [[nodiscard]] bool isBroken() const { return m_isBroken; }
    [[nodiscard]] const QList<HexLine> &dumps() const { return m_dumps; }

private:
    void addBytes(const DumpLine &line);
    [[nodiscard]] bool squeeze(qsizetype end);

    QList<HexLine> m_dumps;
    QByteArray m_last; // line of the dump
    qsizetype m_repeated = 0; // bytes
    bool m_isSqueezed = false;
    bool m_isBroken = false;
};

void DumpReader::add(QByteArrayView line, int number)
{
    DumpLine read;
    const bool isSqueezed = std::exchange(m_isSqueezed, false);
    if (!read.read(line)) {
        m_isSqueezed = line.startsWith('*') && m_last.size() == kDumpWidth;
    } else if (isSqueezed) {
        m_isBroken = m_isBroken || !squeeze(read.offset());
        addBytes(read);
    } else if (!read.bytes().isEmpty() && read.offset() == 0) {
        m_dumps.append(HexLine{number, {}});
        addBytes(read);
    } else if (!read.bytes().isEmpty() && !m_dumps.isEmpty()) {
        addBytes(read);
    }
}

void DumpReader::addBytes(const DumpLine &line)
{
    QByteArray &bytes = m_dumps.last().bytes;
    m_isBroken = m_isBroken || line.offset() != bytes.size();
    bytes += line.bytes();
    m_last = line.bytes();
}

/// Up to `end` all is as in the last line.
bool DumpReader::squeeze(qsizetype end)
{
    QByteArray &bytes = m_dumps.last().bytes;
    const qsizetype size = end - bytes.size();
    if (size < 0 || size > kMostRepeated - m_repeated || size % kDumpWidth != 0) {
        return false;
    }
    m_repeated += size;
    bytes += m_last.repeated(size / kDumpWidth);
    return true;
}

/// Whether a line begins with all that a message begins with.
bool beginsMessage(const HexLine &line)
{
    const QByteArray &bytes = line.bytes;
    const bool isPdu = bytes.startsWith('\x8C') && bytes.size() > 1
        && static_cast<quint8>(bytes[1]) >= 0x80 && static_cast<quint8>(bytes[1]) <= 0x97;
    return isPdu || readShortMessage(bytes).message.has_value();
}

/// Pairs in lines are one dump when the first line is no short message, and not each is a message.
bool isOneDump(const QList<HexLine> &lines)
{
    return lines.isEmpty()
        || (!readShortMessage(lines.first().bytes).message
            && (lines.size() == 1 || !std::all_of(lines.begin(), lines.end(), beginsMessage)));
}

/// What lines have in hex: all of them together, or each that has a long run.
QList<HexLine> linesInHex(const QList<QByteArrayView> &lines)
{
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
    const bool isDump = isPairs && !all.isEmpty() && isOneDump(found);
    return isDump ? QList<HexLine>{{0, all}} : found;
}

} // namespace

bool isPlainText(QByteArrayView file)
{
    const bool hasOddControl = std::any_of(file.begin(), file.end(), [](char c) {
        const auto byte = static_cast<quint8>(c);
        return (byte < 0x20 && c != '\n' && c != '\r' && c != '\t' && c != 0x1A && c != 0x1B)
            || byte == 0x7F;
    });
    return !hasOddControl && file.isValidUtf8();
}

QList<HexLine> hexLines(QByteArrayView file)
{
    if (!isPlainText(file)) {
        return {};
    }
    const QList<QByteArrayView> lines = linesOf(file);
    DumpReader reader;
    for (qsizetype i = 0; i < lines.size() && !reader.isBroken(); ++i) {
        reader.add(lines[i], static_cast<int>(i) + 1);
    }
    QList<HexLine> dumps = reader.dumps();
    if (!dumps.isEmpty()) {
        dumps.first().line = dumps.size() == 1 ? 0 : dumps.first().line;
        return reader.isBroken() ? QList<HexLine>() : dumps;
    }
    return linesInHex(lines);
}

} // namespace wmsg::cli
