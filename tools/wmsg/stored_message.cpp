// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/stored_message.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/files.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/result_codes.h>
#include <platform/engine/mms_eng_controller.h>

#include <QtCore/QTemporaryDir>

#include <climits>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct NamedFolder {
    unsigned short number;
    QLatin1String name;
};

constexpr NamedFolder kFolders[] = {
    {MMS_ENG_INBOX, "inbox"_L1},   {MMS_ENG_OUTBOX, "outbox"_L1},       {MMS_ENG_SENT, "sent"_L1},
    {MMS_ENG_DRAFTS, "drafts"_L1}, {MMS_ENG_TEMPLATES, "templates"_L1},
};

constexpr quint8 kLowestCode = 128;
constexpr unsigned int kNoExpiry = UINT_MAX;
constexpr QLatin1String kEngine("MMS engine: ");

void takeAddresses(WMMSMsg &from, WMMSMsg &to)
{
    to.setFrom(from.getFrom());
    if (!from.getTo().isEmpty()) {
        to.setTo(from.getTo());
    }
    if (!from.getCc().isEmpty()) {
        to.setCc(from.getCc());
    }
    if (!from.getBcc().isEmpty()) {
        to.setBcc(from.getBcc());
    }
}

// The store counts the expiry from the delivery time on.
void takeTimes(const WMMSMsg &from, WMMSMsg &to)
{
    to.setDate(from.getDate());
    unsigned int expiry = from.getExpiryTime();
    if (from.fieldIsPresent(MMS_FIELD_DELIVERY_TIME)) {
        to.setDeliveryTime(from.getDeliveryTime());
        if (expiry != kNoExpiry) {
            expiry -= static_cast<unsigned int>(from.getDeliveryTime().toSecsSinceEpoch());
        }
    }
    if (expiry != kNoExpiry) {
        to.setExpiryTime(expiry);
    }
}

void takeCodes(const WMMSMsg &from, WMMSMsg &to)
{
    if (from.getPriority() >= kLowestCode) {
        to.setPriority(from.getPriority());
    }
    if (from.getMsgClass() >= kLowestCode) {
        to.setMsgClass(from.getMsgClass());
    }
    if (from.getResponseStatus() != 0) {
        to.setResponseStatus(from.getResponseStatus());
    }
    if (!from.getResponseText().isEmpty()) {
        to.setResponseText(from.getResponseText());
    }
    if (from.getDeliveryReportNecessity()) {
        to.setDeliveryReportNecessity(true);
    }
    if (from.getReadReportNecessity()) {
        to.setReadReportNecessity(true);
    }
}

} // namespace

QString folderName(unsigned short folder)
{
    for (const NamedFolder &named : kFolders) {
        if (named.number == folder) {
            return named.name;
        }
    }
    return QString::number(folder);
}

std::optional<unsigned short> folderOf(const QString &name)
{
    for (const NamedFolder &named : kFolders) {
        if (named.name == name) {
            return named.number;
        }
    }
    bool isNumber = false;
    const unsigned short number = name.toUShort(&isNumber);
    const bool isFolder = isNumber && number != USHRT_MAX && QString::number(number) == name;
    return isFolder ? std::optional(number) : std::nullopt;
}

EngineWords::EngineWords() : m_before(appLogModuleStream)
{
    cookie_io_functions_t functions = {};
    functions.write = &EngineWords::write;
    m_stream.reset(fopencookie(this, "w", functions));
    if (m_stream) {
        // Without a buffer of its own one log call arrives as one write.
        std::setvbuf(m_stream.get(), nullptr, _IONBF, 0);
        appLogModuleStream = m_stream.get();
    }
}

EngineWords::~EngineWords()
{
    appLogModuleStream = m_before;
}

QString EngineWords::last() const
{
    return m_last.isEmpty() ? u"the store refused"_s : m_last;
}

ssize_t EngineWords::write(void *self, const char *bytes, size_t size)
{
    auto *words = static_cast<EngineWords *>(self);
    const QString line = QString::fromLatin1(bytes, static_cast<qsizetype>(size));
    if (line.startsWith(kEngine)) {
        words->m_last = line.mid(kEngine.size()).trimmed();
    }
    if (words->m_before && words->m_before != appLogDiscardStream()) {
        std::fwrite(bytes, 1, size, words->m_before);
    }
    return static_cast<ssize_t>(size);
}

bool readStored(unsigned short id, bool withBody, WMMSMsg &message)
{
    WMMSMsg stored;
    if (stored.constructWMMSMsg(id, nullptr, withBody, 0) != MMS_DECODE_OK) {
        return false;
    }
    message.clear();
    takeAddresses(stored, message);
    takeTimes(stored, message);
    takeCodes(stored, message);
    if (stored.fieldIsPresent(MMS_FIELD_SUBJECT)) {
        message.setSubject(stored.getSubject());
    }
    if (stored.getMsgSize() > 0) {
        message.setMsgSize(stored.getMsgSize());
    }
    // The body has the whole type, the header the application ids.
    const WMMSContentType bodyType = stored.getMultiParts().getContentType();
    for (const WMMSContentType &type : {stored.getContentType(), bodyType}) {
        if (!type.isEmpty()) {
            message.setContentType(type);
        }
    }
    message.setMultiParts(stored.getMultiParts());
    message.getMultiParts().clearLocalFileName();
    const int mmsType = message.getMMSTypeByContentType(message.getContentType(), withBody);
    message.setMMSType(static_cast<unsigned char>(mmsType));
    return true;
}

QString mailFileBytes(WMMSMsg &message, QByteArray &bytes)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"message.mms"_s);
    const quint32 result =
        folder.isValid() ? message.saveAs(path, nullptr, nullptr) : quint32(MMS_SAVE_FAIL);
    if (result != MMS_SAVE_OK) {
        return u"result %1 (%2)"_s.arg(result).arg(resultInWords(result));
    }
    QArray<char> file;
    QString problem = readInput(path.toLocal8Bit(), INT_MAX, file);
    bytes = file.toByteArray();
    return problem;
}

} // namespace wmsg::cli
