// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_cmditem.h"

#include "qt2/qwssocket.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int kWordSize = static_cast<int>(sizeof(qint32));
constexpr int kUnitSize = static_cast<int>(sizeof(char16_t));
constexpr qint32 kNotKnown = -1;

bool isPossible(qint32 extraLen)
{
    return extraLen >= 0 && extraLen <= MMS_UA_CmdItem::kLongestExtra;
}

void writeWord(QWSSocket *sock, qint32 word)
{
    char bytes[kWordSize];
    memcpy(bytes, &word, sizeof bytes);
    sock->writeBlock(bytes, sizeof bytes);
}

void writePart(QWSSocket *sock, const char *bytes, int size)
{
    if (bytes && size > 0) {
        sock->writeBlock(bytes, static_cast<uint>(size));
    }
}

/// Reads `size` bytes when all of them are there; -1 when they are not.
int readWhole(QWSSocket *sock, char *out, int size)
{
    return sock->bytesAvailable() < size ? -1 : sock->readBlock(out, static_cast<uint>(size));
}

/// Reads the length of the variable part.
bool readLength(QWSSocket *sock, int &extraLen)
{
    qint32 length = 0;
    char bytes[kWordSize];
    if (readWhole(sock, bytes, kWordSize) != kWordSize) {
        return false;
    }
    memcpy(&length, bytes, sizeof length);
    extraLen = length == kNotKnown ? 0 : length;
    return true;
}

/// Reads the fixed part; `readState` is then no longer 0.
bool readFixedPart(QWSSocket *sock, char *data, int dataLen, int &readState)
{
    const int got = dataLen == 0 ? 1 : readWhole(sock, data, dataLen);
    readState = std::max(got, 0);
    return readState != 0;
}

/// Reads the variable part into a new array.
bool readVariablePart(QWSSocket *sock, char *&extra, int extraLen, int &readState)
{
    if (sock->bytesAvailable() < extraLen) {
        return false;
    }
    auto *bytes = new (std::nothrow) char[static_cast<size_t>(extraLen)]();
    if (!bytes) {
        return false;
    }
    readState += std::max(readWhole(sock, bytes, extraLen), 0);
    extra = bytes;
    return true;
}

} // namespace

void WriteCmd(QWSSocket *sock, int type, char *data, int dataLen, char *extra, int extraLen)
{
    if (!sock) {
        return;
    }
    writeWord(sock, type);
    writeWord(sock, extraLen == kNotKnown ? 0 : extraLen);
    writePart(sock, data, dataLen);
    writePart(sock, extra, extraLen);
    sock->flush();
}

int ReadCmd(QWSSocket *sock, char *&data, int &dataLen, char *&extra, int &extraLen, int &readState)
{
    if (!sock || (extraLen == kNotKnown && !readLength(sock, extraLen)) || !isPossible(extraLen)) {
        return 0;
    }
    if (readState == 0 && !readFixedPart(sock, data, dataLen, readState)) {
        return 0;
    }
    return extraLen == 0 || readVariablePart(sock, extra, extraLen, readState) ? 1 : 0;
}

MMS_UA_CmdItem::MMS_UA_CmdItem(qint32 type, int words)
    : m_type(type), m_dataLen(words * kWordSize), m_data(reinterpret_cast<char *>(m_words))
{
    Q_ASSERT(words <= kMostWords);
}

MMS_UA_CmdItem::~MMS_UA_CmdItem() = default;

void MMS_UA_CmdItem::setData(char *buf, int len, bool copy)
{
    if (len < 0) {
        return;
    }
    if (!buf && len == 0) {
        // Kept: a buffer is not freed when the variable part is set to nothing. It goes with the
        // next one, or with the record.
        m_extra = nullptr;
        m_extraLen = 0;
        return;
    }
    std::unique_ptr<char[]> old;
    if (buf != m_buffer.get() || copy) {
        old = std::move(m_buffer); // `buf` may lie inside it
    }
    if (copy) {
        m_buffer.reset(new (std::nothrow) char[static_cast<size_t>(len)]());
        if (m_buffer && buf && len > 0) {
            memcpy(m_buffer.get(), buf, static_cast<size_t>(len));
        }
        buf = m_buffer.get();
        len = buf ? len : 0;
    }
    m_ownsExtra = copy;
    m_extra = buf;
    m_extraLen = len;
}

void MMS_UA_CmdItem::write(QWSSocket *sock)
{
    WriteCmd(sock, m_type, m_data, m_dataLen, m_extra, m_extraLen);
}

int MMS_UA_CmdItem::read(QWSSocket *sock)
{
    m_wasRead = true;
    char *received = nullptr;
    if (ReadCmd(sock, m_data, m_dataLen, received, m_extraLen, m_readState) == 0) {
        return 0;
    }
    setData(received, m_extraLen, false);
    m_buffer.reset(received);
    m_ownsExtra = true;
    return 1;
}

bool MMS_UA_CmdItem::isRefused() const
{
    return m_wasRead && m_extraLen != kNotKnown && !isPossible(m_extraLen);
}

qint32 MMS_UA_CmdItem::lengthOf(const QString &text)
{
    return static_cast<qint32>(std::min<qsizetype>(text.size(), INT_MAX / kUnitSize) * kUnitSize);
}

void MMS_UA_CmdItem::setBytes(QByteArrayView bytes)
{
    MMS_UA_CmdItem::setData(const_cast<char *>(bytes.data()), static_cast<int>(bytes.size()), true);
}

void MMS_UA_CmdItem::setTexts(std::initializer_list<QString> texts)
{
    QString all;
    for (const QString &text : texts) {
        all += text;
    }
    setBytes({reinterpret_cast<const char *>(all.data()), lengthOf(all)});
}

QString MMS_UA_CmdItem::takeText(qint32 &position, qint32 length) const
{
    const qint32 left = m_extra ? m_extraLen - position : 0;
    const qint32 units = std::max(std::min(length, left), 0) / kUnitSize;
    QString text(units, Qt::Uninitialized);
    if (units > 0) {
        memcpy(text.data(), m_extra + position, static_cast<size_t>(units) * kUnitSize);
        position += units * kUnitSize;
    }
    return text;
}
