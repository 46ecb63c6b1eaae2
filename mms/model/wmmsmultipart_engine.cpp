// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/model/engine_text.h"
#include "mms/model/wmmsmultipart.h"
#include "platform/engine/mms_char.h"
#include "platform/engine/mms_msg_records.h"
#include "util/utf16_units.h"

#include <QtCore/QFile>

#include <algorithm>
#include <climits>

namespace {

bool isStoredText(const WMMSContentType &type)
{
    return type.isMimeType(QLatin1String("text/plain"))
        || type.isMimeType(QLatin1String("text/x-brel-postcard_contacts"));
}

// Kept: the charset of a file is "UCS-2" with a hyphen.
bool isWideCharset(const QString &upperCase)
{
    return upperCase == QLatin1String("UCS-2") || upperCase == QLatin1String("UTF-16BE")
        || upperCase == QLatin1String("UTF-16LE") || upperCase == QLatin1String("UTF-16");
}

/// The text in the 16-bit units of a file; an odd last byte is no unit.
QString textOf(const QArray<char> &bytes, const QString &charset)
{
    logLine(3, "in if");
    const char *units = bytes.constData();
    qsizetype count = bytes.size() / 2;
    const QByteArrayView view = bytes.view();
    const bool isLittleMark = view.startsWith("\xFF\xFE");
    if (isLittleMark || view.startsWith("\xFE\xFF")) {
        logLine(3, "For UTF16");
        units += 2;
        --count;
    }
    if (isLittleMark || charset == QLatin1String("UTF-16LE")) {
        logLine(3, "For UTF16");
        return wmsg::util::unitsOf(units, count);
    }
    if (charset == QLatin1String("UCS-2")) {
        return wmsg::util::unitsOf(units, count);
    }
    logLine(4, "Little endian UTF-16");
    return wmsg::util::exchangedUnitsOf(units, count);
}

/// Reads up to `wanted` bytes from where the file stands. False when there are none.
bool readBytes(QFile &file, int wanted, QArray<char> &bytes)
{
    const qint64 present = std::clamp<qint64>(file.size() - file.pos(), 0, std::max(wanted, 0));
    if (present == 0 || !bytes.resize(static_cast<int>(present))) {
        return false;
    }
    const qint64 got = std::max<qint64>(file.read(bytes.data(), present), 0);
    bytes.truncate(static_cast<int>(got));
    return got > 0;
}

} // namespace

bool WMMSMultipart::constructWMMSBdy(MMS_MSG_BDY_T *body)
{
    if (!body || !body->parts) {
        return false;
    }
    m_contentType.fromString(QString::fromLatin1(body->contentType));
    setContentType(WMMSContentType(m_contentType));
    // Kept: the low 8 bits of the count are read alone.
    const auto count = static_cast<quint8>(body->partCount);
    for (unsigned int i = 0; i < count; ++i) {
        WMMSMultipart part;
        switch (takeRecord(body->parts[i], part)) {
        case Record::Taken:
            getSubMmsMultipartList().append(part);
            break;
        case Record::LeftOut:
            break;
        case Record::NoMemory:
            return false;
        }
    }
    m_approxSize = getApproxSize();
    return true;
}

WMMSMultipart::Record WMMSMultipart::takeRecord(const MMS_MSG_PART_T &record, WMMSMultipart &part)
{
    part.setContentLocation(QString::fromUtf8(record.contentLocation));
    logLine(4, "ContentLocation=%s", part.getContentLocation());
    part.setContentID(QString::fromLatin1(record.contentId));
    WMMSContentType type;
    type.fromString(QString::fromLatin1(record.mimeType));
    part.setContentType(type);
    part.setLocalFileName(QString());
    switch (record.storage) {
    case MMS_PART_IN_MEMORY:
        return takeMemory(record, part) ? Record::Taken : Record::NoMemory;
    case MMS_PART_IN_FILE:
    case MMS_PART_IN_FILE_REGION:
        return record.dataFile ? takeFile(record, part) : Record::LeftOut;
    default:
        return Record::LeftOut;
    }
}

// Kept: a text in memory is wide and its size counts units, whatever its charset says.
bool WMMSMultipart::takeMemory(const MMS_MSG_PART_T &record, WMMSMultipart &part)
{
    const int size = record.data ? std::max(record.size, 0) : 0;
    QArray<char> bytes;
    if (isStoredText(part.m_contentType)) {
        logLine(3, "will convert to utf8 in construct wmmsbdy\n");
        if (size > INT_MAX / 2 || !bytes.resize(2 * size)) {
            return false;
        }
        const auto length = MMS_Char_convUCS2toUTF8String(
            static_cast<const unsigned short *>(record.data), static_cast<unsigned int>(size),
            bytes.data(), static_cast<unsigned int>(bytes.size()));
        bytes.truncate(static_cast<int>(length));
    } else {
        logLine(3, "Media recieved is not text");
        bytes = QArray<char>::fromBytes(record.data, size);
        if (bytes.size() != size) {
            return false;
        }
    }
    part.setData(bytes);
    return true;
}

WMMSMultipart::Record WMMSMultipart::takeFile(const MMS_MSG_PART_T &record, WMMSMultipart &part)
{
    // Kept: the last file stays as the local file name of the root part.
    m_localFileName = wmsg::engine_bridge::textOf(record.dataFile);
    QFile file(m_localFileName);
    if (!file.open(QIODevice::ReadOnly)) {
        logLine(3, "Not able to open the file %s", m_localFileName);
        return Record::LeftOut;
    }
    if (record.storage == MMS_PART_IN_FILE_REGION && !file.seek(record.offset)) {
        logLine(3, "seek failed");
        return Record::LeftOut;
    }
    QArray<char> bytes;
    if (!readBytes(file, record.size, bytes)) {
        logLine(3, "No data in the file");
        return Record::LeftOut;
    }
    const QString charset = part.m_contentType.getParam(QStringLiteral("charset"));
    logLine(4, "charset = %s", charset);
    logLine(4, "tempMpart.iContentType.getMimeType = %s", part.m_contentType.getMimeType());
    if (isStoredText(part.m_contentType) && isWideCharset(charset.toUpper())) {
        const QString text = textOf(bytes, charset.toUpper());
        logLine(4, "unicode to string: %s", text);
        const QByteArray utf8 = text.toUtf8();
        bytes = QArray<char>::fromBytes(utf8.constData(), static_cast<int>(utf8.size()));
        if (bytes.size() != utf8.size()) {
            logLine(4, "No memory");
            return Record::NoMemory;
        }
    }
    part.m_data = bytes;
    return Record::Taken;
}
