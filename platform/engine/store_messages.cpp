// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/engine_log_p.h"
#include "platform/engine/store_p.h"
#include "platform/engine/store_transaction_p.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QStringDecoder>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

// Messages on their way in and out: what a record says becomes a row, and back.

namespace wmsg::engine {

/// A body as it is going to be written.
struct Store::NewBody {
    struct Part {
        const MMS_MSG_PART_T *record;
        QByteArray read; ///< What was read for a part in a file.
        QByteArrayView bytes;
        qint64 start;
    };

    /// Takes the bytes of all parts together.
    int collect(const MMS_MSG_BDY_T &body);

    QByteArray contentType;
    QList<Part> parts;
    qint64 size = 0;
    qint64 fileNumber = 0;
    QByteArray hash;
};

namespace {

using Wide = unsigned short;

constexpr int kHighestId = MMS_ENG_INVALID_ID - 1;

struct WideColumn {
    const char *name;
    Wide *MMS_MSG_HDR_T::*word;
};
struct NumberColumn {
    const char *name;
    int MMS_MSG_HDR_T::*word;
};
struct PartColumn {
    const char *name;
    char *MMS_MSG_PART_T::*word;
};

// clang-format off
constexpr WideColumn kWideColumns[] = {
    {"sender",       &MMS_MSG_HDR_T::from},
    {"recipients",   &MMS_MSG_HDR_T::to},
    {"cc",           &MMS_MSG_HDR_T::cc},
    {"bcc",          &MMS_MSG_HDR_T::bcc},
    {"subject",      &MMS_MSG_HDR_T::subject},
    {"app_id",       &MMS_MSG_HDR_T::appId},
    {"reply_app_id", &MMS_MSG_HDR_T::replyAppId},
    {"aux_app_info", &MMS_MSG_HDR_T::auxAppInfo},
};
constexpr NumberColumn kNumberColumns[] = {
    {"reserved",        &MMS_MSG_HDR_T::reserved},
    {"priority",        &MMS_MSG_HDR_T::priority},
    {"class",           &MMS_MSG_HDR_T::msgClass},
    {"date",            &MMS_MSG_HDR_T::date},
    {"delivery_report", &MMS_MSG_HDR_T::deliveryReport},
    {"read_report",     &MMS_MSG_HDR_T::readReport},
    {"size",            &MMS_MSG_HDR_T::size},
    {"delivery_time",   &MMS_MSG_HDR_T::deliveryTime},
    {"forwardable",     &MMS_MSG_HDR_T::forwardable},
};
constexpr PartColumn kPartColumns[] = {
    {"mime_type",        &MMS_MSG_PART_T::mimeType},
    {"content_id",       &MMS_MSG_PART_T::contentId},
    {"content_location", &MMS_MSG_PART_T::contentLocation},
    {"file_name",        &MMS_MSG_PART_T::fileName},
    {"header_text",      &MMS_MSG_PART_T::headerText},
};
// clang-format on

/// The columns of a header, in the order of headerValues().
QStringList headerColumns()
{
    QStringList names;
    for (const WideColumn &column : kWideColumns) {
        names += QLatin1String(column.name);
    }
    for (const NumberColumn &column : kNumberColumns) {
        names += QLatin1String(column.name);
    }
    return names << QStringLiteral("expiry") << QStringLiteral("presentation");
}

// A null pointer becomes a null value, which is not an empty one.
QVariant valueOf(const char *text)
{
    return text ? QByteArray(text) : QByteArray();
}

QVariant valueOf(const Wide *text)
{
    qsizetype length = 0;
    while (text && text[length] != 0) {
        ++length;
    }
    return text ? QString(reinterpret_cast<const QChar *>(text), length) : QString();
}

QVariantList headerValues(const MMS_MSG_HDR_T &header)
{
    QVariantList values;
    for (const WideColumn &column : kWideColumns) {
        values += valueOf(header.*column.word);
    }
    for (const NumberColumn &column : kNumberColumns) {
        values += header.*column.word;
    }
    return values << header.expiry << valueOf(header.presentation);
}

/// Sets `text` to a copy of a value from malloc, null for a null value. False without memory.
bool copyTo(char *&text, const QVariant &value)
{
    if (value.isNull()) {
        return true;
    }
    const QByteArray bytes = value.toByteArray();
    text = static_cast<char *>(std::calloc(static_cast<size_t>(bytes.size()) + 1, 1));
    if (text && !bytes.isEmpty()) {
        std::memcpy(text, bytes.constData(), static_cast<size_t>(bytes.size()));
    }
    return text;
}

bool copyTo(Wide *&text, const QVariant &value)
{
    if (value.isNull()) {
        return true;
    }
    const QString units = value.toString();
    text = static_cast<Wide *>(std::calloc(static_cast<size_t>(units.size()) + 1, sizeof(Wide)));
    if (text && !units.isEmpty()) {
        std::memcpy(text, units.constData(), static_cast<size_t>(units.size()) * sizeof(Wide));
    }
    return text;
}

int refuseMemory()
{
    return refuse(MMS_ENG_FAIL, QStringLiteral("there is no memory"));
}

/// The content type without blanks before its parameters and at its end.
QByteArray withoutBlanks(const char *contentType)
{
    QByteArray text(contentType);
    const qsizetype end = text.indexOf(';');
    const QByteArray mediaType = (end < 0 ? text : text.left(end)).trimmed();
    return end < 0 ? mediaType : mediaType + text.mid(end);
}

bool isUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString text = decoder(bytes);
    return !decoder.hasError();
}

/// The charset of a part: that of its header text, when it is UTF-8 and true.
QByteArray charsetOf(const char *headerText, QByteArrayView bytes)
{
    const QByteArray line = QByteArray(headerText).toLower().split('\r').first();
    const QList<QByteArray> pieces = line.split(';');
    return pieces.contains("charset=utf-8") && isUtf8(bytes) ? QByteArray("utf-8") : QByteArray();
}

/// Reads the bytes of a part in a file; false when it has fewer.
bool readRegion(const MMS_MSG_PART_T &part, QByteArray &bytes)
{
    QFile file(valueOf(part.dataFile).toString());
    const qint64 offset = part.storage == MMS_PART_IN_FILE_REGION ? part.offset : 0;
    if (part.size < 0 || offset < 0 || !file.open(QIODevice::ReadOnly) || !file.seek(offset)
        || file.size() - offset < part.size) {
        return false;
    }
    bytes = file.read(part.size);
    return bytes.size() == part.size;
}

} // namespace

int Store::NewBody::collect(const MMS_MSG_BDY_T &body)
{
    if (body.partCount > MMS_ENG_MAX_PARTS || (body.partCount > 0 && !body.parts)) {
        return refuse(MMS_ENG_BAD_PARAM,
                      QStringLiteral("a message has at most %1 parts, and this one has %2")
                          .arg(MMS_ENG_MAX_PARTS)
                          .arg(body.partCount));
    }
    contentType = body.contentType ? withoutBlanks(body.contentType) : QByteArray();
    for (unsigned int i = 0; i < body.partCount; ++i) {
        const MMS_MSG_PART_T &record = body.parts[i];
        Part part = {&record, {}, {}, size};
        if (record.storage == MMS_PART_IN_MEMORY && record.data && record.size > 0) {
            part.bytes = QByteArrayView(static_cast<const char *>(record.data), record.size);
        } else if (record.storage != MMS_PART_IN_MEMORY) {
            if (!readRegion(record, part.read)) {
                return refuse(MMS_ENG_BAD_PARAM,
                              QStringLiteral("the file of part %1 cannot be read").arg(i + 1));
            }
            part.bytes = part.read;
        }
        size += part.bytes.size();
        parts += part;
    }
    return size <= INT_MAX ? int(MMS_ENG_OK)
                           : refuse(MMS_ENG_BAD_PARAM, QStringLiteral("the parts are too large"));
}

int Store::create(unsigned short folder, unsigned short &id, const MMS_MSG_HDR_T &header,
                  const MMS_MSG_BDY_T &body)
{
    unsigned short fresh = 0;
    const int result = put(folder, fresh, header, body, true);
    if (result == MMS_ENG_OK) {
        id = fresh;
    }
    return result;
}

int Store::update(unsigned short folder, unsigned short id, const MMS_MSG_HDR_T &header,
                  const MMS_MSG_BDY_T &body)
{
    return put(folder, id, header, body, false);
}

int Store::put(unsigned short folder, unsigned short &id, const MMS_MSG_HDR_T &header,
               const MMS_MSG_BDY_T &body, bool isNew)
{
    NewBody content;
    qint64 formerFile = 0;
    int result = content.collect(body);
    const auto step = [&result](auto &&work) {
        if (result == MMS_ENG_OK) {
            result = work();
        }
    };
    Transaction transaction(*this);
    step([&] { return transaction.begin(); });
    step([&] { return isNew ? freeId(id) : fileOf(id, formerFile); });
    step([&] { return content.size > 0 ? writeFile(content) : int(MMS_ENG_OK); });
    step([&] { return insertMessage(folder, id, header, content, isNew); });
    step([&] { return insertParts(id, content); });
    if (result != MMS_ENG_OK && content.fileNumber != 0) {
        m_files.remove(content.fileNumber); // before another writer takes the number
    }
    step([&] { return transaction.commit(); });
    if (result == MMS_ENG_OK && formerFile != 0) {
        m_files.discard({formerFile});
    }
    return result;
}

int Store::writeFile(NewBody &body)
{
    QSqlQuery query(database());
    const int result = run(
        query, QStringLiteral("UPDATE store SET last_file = last_file + 1 RETURNING last_file"));
    if (result != MMS_ENG_OK || !query.next()) {
        return result == MMS_ENG_OK ? int(MMS_ENG_CORRUPT) : result;
    }
    const qint64 number = query.value(0).toLongLong();
    QList<QByteArrayView> pieces;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const NewBody::Part &part : std::as_const(body.parts)) {
        pieces += part.bytes;
        hash.addData(part.bytes);
    }
    if (!m_files.write(number, pieces)) {
        return refuseErrno(errno, QStringLiteral("the store %1 cannot keep a body").arg(m_path));
    }
    body.fileNumber = number;
    body.hash = hash.result();
    return MMS_ENG_OK;
}

int Store::insertMessage(unsigned short folder, unsigned short id, const MMS_MSG_HDR_T &header,
                         const NewBody &body, bool isNew)
{
    const QStringList columns = headerColumns()
        << QStringLiteral("folder") << QStringLiteral("content_type") << QStringLiteral("file")
        << QStringLiteral("file_size") << QStringLiteral("file_hash") << QStringLiteral("id");
    const QVariant file = body.fileNumber != 0 ? QVariant(body.fileNumber) : QVariant();
    const QVariantList values = headerValues(header)
        << folder << body.contentType << file << body.size << body.hash << id;
    if (isNew) {
        const QStringList marks(columns.size(), QStringLiteral("?"));
        return run(QStringLiteral("INSERT INTO message (%1) VALUES (%2)")
                       .arg(columns.join(QLatin1String(", ")), marks.join(QLatin1String(", "))),
                   values);
    }
    const int result = run(QStringLiteral("DELETE FROM part WHERE message = ?"), {id});
    const QString settings = columns.mid(0, columns.size() - 1).join(QLatin1String(" = ?, "));
    return result == MMS_ENG_OK
        ? runOn(id, QStringLiteral("UPDATE message SET %1 = ? WHERE id = ?").arg(settings), values)
        : result;
}

int Store::insertParts(unsigned short id, const NewBody &body)
{
    int result = MMS_ENG_OK;
    int position = 0;
    for (const NewBody::Part &part : body.parts) {
        QVariantList values = {id, position++};
        for (const PartColumn &column : kPartColumns) {
            values += valueOf(part.record->*column.word);
        }
        values << charsetOf(part.record->headerText, part.bytes) << part.start << part.bytes.size();
        result =
            run(QStringLiteral("INSERT INTO part VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"), values);
        if (result != MMS_ENG_OK) {
            break;
        }
    }
    return result;
}

// The id behind the last one given, or the next that is free, beginning again behind the highest.
int Store::freeId(unsigned short &id)
{
    QSqlQuery query(database());
    int result = run(query, QStringLiteral("SELECT last_id + 1 FROM store"));
    const int next = result == MMS_ENG_OK && query.next() ? query.value(0).toInt() : 0;
    query.finish();
    int found = 0;
    for (const int first : {next, 1}) {
        if (result == MMS_ENG_OK && found == 0 && first <= kHighestId) {
            result = freeIdFrom(first, found);
        }
    }
    if (result == MMS_ENG_OK && found == 0) {
        return refuse(MMS_ENG_FULL,
                      QStringLiteral("the store %1 is full: no id is free").arg(m_path));
    }
    id = static_cast<unsigned short>(found);
    return result == MMS_ENG_OK ? run(QStringLiteral("UPDATE store SET last_id = ?"), {found})
                                : result;
}

// The lowest free id that is not below `first`; 0 when there is none.
int Store::freeIdFrom(int first, int &id)
{
    QSqlQuery query(database());
    const int result =
        run(query,
            QStringLiteral("SELECT ? WHERE NOT EXISTS (SELECT 1 FROM message WHERE id = ?) "
                           "UNION ALL SELECT * FROM (SELECT m.id + 1 FROM message m "
                           "WHERE m.id >= ? AND m.id < ? AND NOT EXISTS "
                           "(SELECT 1 FROM message n WHERE n.id = m.id + 1) "
                           "ORDER BY m.id LIMIT 1) LIMIT 1"),
            {first, first, first, kHighestId});
    id = result == MMS_ENG_OK && query.next() ? query.value(0).toInt() : 0;
    return result;
}

int Store::fileOf(unsigned short id, qint64 &number)
{
    QSqlQuery query(database());
    const int result = run(query, QStringLiteral("SELECT file FROM message WHERE id = ?"), {id});
    if (result != MMS_ENG_OK) {
        return result;
    }
    if (!query.next()) {
        return refuseUnknown(id);
    }
    number = query.value(0).toLongLong();
    return MMS_ENG_OK;
}

int Store::readHeader(unsigned short id, MMS_MSG_HDR_T &header)
{
    QSqlQuery query(database());
    const int result = run(query,
                           QStringLiteral("SELECT %1 FROM message WHERE id = ?")
                               .arg(headerColumns().join(QLatin1String(", "))),
                           {id});
    if (result != MMS_ENG_OK) {
        return result;
    }
    if (!query.next()) {
        return refuseUnknown(id);
    }
    int at = 0;
    bool hasMemory = true;
    for (const WideColumn &column : kWideColumns) {
        hasMemory = copyTo(header.*column.word, query.value(at++)) && hasMemory;
    }
    for (const NumberColumn &column : kNumberColumns) {
        header.*column.word = query.value(at++).toInt();
    }
    header.expiry = query.value(at++).toUInt();
    hasMemory = copyTo(header.presentation, query.value(at++)) && hasMemory;
    return hasMemory ? int(MMS_ENG_OK) : refuseMemory();
}

int Store::readBody(unsigned short id, MMS_MSG_BDY_T &body)
{
    body.parts =
        static_cast<MMS_MSG_PART_T *>(std::calloc(MMS_ENG_MAX_PARTS, sizeof(MMS_MSG_PART_T)));
    if (!body.parts) {
        return refuseMemory();
    }
    // Before the row is read: what it names stays in its place.
    if (!m_files.hold(body.parts)) {
        return refuseErrno(errno, QStringLiteral("the store %1 cannot be locked").arg(m_path));
    }
    return fillBody(id, body);
}

// One statement, so that the message and its parts are of the same moment.
int Store::fillBody(unsigned short id, MMS_MSG_BDY_T &body)
{
    QSqlQuery query(database());
    const int result =
        run(query,
            QStringLiteral("SELECT content_type, file, file_size, p.start, p.size, p.charset, "
                           "p.mime_type, p.content_id, p.content_location, p.file_name, "
                           "p.header_text FROM message LEFT JOIN part p ON p.message = id "
                           "WHERE id = ? ORDER BY p.position"),
            {id});
    if (result != MMS_ENG_OK) {
        return result;
    }
    if (!query.next()) {
        return refuseUnknown(id);
    }
    const qint64 file = query.value(1).toLongLong();
    if (file != 0 && m_files.size(file) != query.value(2).toLongLong()) {
        return refuse(MMS_ENG_CORRUPT,
                      QStringLiteral("the file %1 of message %2 is missing or not whole")
                          .arg(QFile::decodeName(m_files.path(file)))
                          .arg(id));
    }
    bool hasMemory = copyTo(body.contentType, query.value(0));
    const QString path = QFile::decodeName(m_files.path(file));
    do {
        if (!query.value(3).isNull() && body.partCount < MMS_ENG_MAX_PARTS) {
            hasMemory = fillPart(query, path, body.parts[body.partCount++]) && hasMemory;
        }
    } while (query.next());
    return hasMemory ? int(MMS_ENG_OK) : refuseMemory();
}

bool Store::fillPart(const QSqlQuery &query, const QString &path, MMS_MSG_PART_T &part)
{
    bool hasMemory = true;
    int at = 6;
    for (const PartColumn &column : kPartColumns) {
        hasMemory = copyTo(part.*column.word, query.value(at++)) && hasMemory;
    }
    if (const QByteArray charset = query.value(5).toByteArray(); !charset.isEmpty()) {
        const QByteArray labelled = query.value(6).toByteArray() + ";charset=" + charset;
        std::free(std::exchange(part.mimeType, nullptr));
        hasMemory = copyTo(part.mimeType, labelled) && hasMemory;
    }
    part.size = query.value(4).toInt();
    if (part.size > 0) {
        part.storage = MMS_PART_IN_FILE_REGION;
        part.offset = query.value(3).toInt();
        hasMemory = copyTo(part.dataFile, path) && hasMemory;
    }
    return hasMemory;
}

int Store::readStatus(unsigned short id, MMS_MOMT_STATUS_T &status)
{
    QSqlQuery query(database());
    const int result = run(query,
                           QStringLiteral("SELECT result, error_text, status, status_text, "
                                          "status_reserved FROM message WHERE id = ?"),
                           {id});
    if (result != MMS_ENG_OK) {
        return result;
    }
    if (!query.next()) {
        return refuseUnknown(id);
    }
    status.result = query.value(0).toInt();
    status.status = query.value(2).toInt();
    status.reserved = query.value(4).toInt();
    const bool hasErrorText = copyTo(status.errorText, query.value(1));
    return copyTo(status.statusText, query.value(3)) && hasErrorText ? int(MMS_ENG_OK)
                                                                     : refuseMemory();
}

int Store::setStatus(unsigned short id, const MMS_MOMT_STATUS_T &status)
{
    return runOn(id,
                 QStringLiteral("UPDATE message SET result = ?, error_text = ?, status = ?, "
                                "status_text = ?, status_reserved = ? WHERE id = ?"),
                 {status.result, valueOf(status.errorText), status.status,
                  valueOf(status.statusText), status.reserved, id});
}

} // namespace wmsg::engine
