// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmultipart.h"

#include "core/log.h"
#include "mms/model/wmmsmultipart_body.h"
#include "platform/mimetype/am_mimetype.h"
#include "platform/mimetype/util_mimetype.h"
#include "util/mms_util_common.h"

#include <QtCore/QFile>

#include <algorithm>
#include <climits>

namespace {

constexpr QLatin1String kDrmTypes[] = {
    QLatin1String("application/vnd.oma.drm.message"),
    QLatin1String("application/vnd.oma.drm.rights+xml"),
    QLatin1String("application/vnd.oma.drm.rights+wbxml"),
    QLatin1String("application/vnd.oma.drm.content"),
    QLatin1String("application/vnd.oma.drm.dcf"),
    QLatin1String("application/vnd.oma.drm.ro+xml"),
};

bool isTerminatedText(const WMMSContentType &type, const QArray<char> &bytes)
{
    return !bytes.isEmpty() && bytes.at(bytes.size() - 1) == 0
        && (type.isMimeType(QLatin1String("text/plain"))
            || type.isMimeType(QLatin1String("application/smil")));
}

bool isVectorImage(const QString &subType)
{
    return subType == QLatin1String("svg") || subType == QLatin1String("svgz")
        || subType == QLatin1String("svg+xml");
}

QString withoutQuotesAndBrackets(QString name)
{
    name.remove(QLatin1Char('"'));
    name.remove(QLatin1Char('<'));
    name.remove(QLatin1Char('>'));
    return name;
}

} // namespace

WMMSMultipart::WMMSMultipart() = default;

WMMSMultipart::WMMSMultipart(const WMMSMultipart &other)
{
    *this = other;
}

WMMSMultipart::WMMSMultipart(WMMSMultipart &&other) noexcept = default;

WMMSMultipart &WMMSMultipart::operator=(const WMMSMultipart &other)
{
    if (this != &other) {
        // The former sub-parts live until the end: the source may be one of them.
        const auto former = std::exchange(
            m_subParts,
            other.m_subParts ? std::make_unique<QValueList<WMMSMultipart>>(*other.m_subParts)
                             : nullptr);
        m_contentType = other.m_contentType;
        m_contentLocation = other.m_contentLocation;
        m_contentID = other.m_contentID;
        m_data = other.m_data;
        m_localFileName = other.m_localFileName;
    }
    return *this;
}

WMMSMultipart &WMMSMultipart::operator=(WMMSMultipart &&other) noexcept
{
    WMMSMultipart moved(std::move(other)); // takes the former value along: see above
    std::swap(m_contentType, moved.m_contentType);
    m_subParts.swap(moved.m_subParts);
    m_contentLocation.swap(moved.m_contentLocation);
    m_contentID.swap(moved.m_contentID);
    m_data.swap(moved.m_data);
    m_localFileName.swap(moved.m_localFileName);
    return *this;
}

WMMSMultipart::~WMMSMultipart() = default;

void WMMSMultipart::setContentType(const WMMSContentType &type)
{
    m_contentType = type;
    if (m_contentLocation.isNull()) {
        setContentLocationIfNull();
    }
}

void WMMSMultipart::setContentID(const QString &id)
{
    m_contentID = id;
    if (m_contentLocation.isNull()) {
        setContentLocationIfNull();
    }
}

void WMMSMultipart::setContentLocation(const QString &location)
{
    if (location.isNull()) {
        setContentLocationIfNull();
    } else {
        m_contentLocation = location;
    }
}

void WMMSMultipart::setContentLocationIfNull()
{
    const QString name = m_contentType.getParamCount() > 0
        ? m_contentType.getParam(QStringLiteral("name"))
        : QString();
    m_contentLocation = name.isNull() ? m_contentID : name;
}

void WMMSMultipart::setData(const QArray<char> &bytes)
{
    if (isTerminatedText(m_contentType, bytes)) {
        m_data = QArray<char>::fromBytes(bytes.constData(), bytes.size() - 1);
    } else {
        m_data = bytes;
    }
}

bool WMMSMultipart::setLocalFileName(const QString &name)
{
    m_localFileName = name;
    return true;
}

void WMMSMultipart::clearLocalFileName()
{
    logLine(8, "88888888888 iFileName =%s", m_localFileName);
    m_localFileName = QString();
    if (m_subParts) {
        for (WMMSMultipart &part : *m_subParts) {
            part.clearLocalFileName();
        }
    }
}

bool WMMSMultipart::saveFile()
{
    QFile file(m_localFileName);
    if (m_localFileName.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    return file.write(m_data.constData(), m_data.size()) == m_data.size() && file.flush();
}

bool WMMSMultipart::readFile(bool /*reload*/)
{
    if (m_localFileName.isEmpty()) {
        return false;
    }
    QFile file(m_localFileName);
    if (!file.open(QIODevice::ReadOnly) || file.size() > INT_MAX) {
        return false;
    }
    QArray<char> bytes;
    if (!bytes.resize(static_cast<int>(file.size()))) {
        return false;
    }
    const qint64 got = file.read(bytes.data(), bytes.size());
    bytes.truncate(static_cast<int>(std::max<qint64>(got, 0)));
    m_data = bytes;
    return true;
}

QValueList<WMMSMultipart> &WMMSMultipart::getSubMmsMultipartList()
{
    creatSubList();
    return *m_subParts;
}

void WMMSMultipart::setSubMmsMultipart(const QValueList<WMMSMultipart> &parts)
{
    getSubMmsMultipartList() = parts;
}

void WMMSMultipart::creatSubList()
{
    if (!m_subParts) {
        m_subParts = std::make_unique<QValueList<WMMSMultipart>>();
    }
}

// Kept: clear drops the sub-parts alone.
void WMMSMultipart::clear()
{
    m_subParts.reset();
}

QString WMMSMultipart::getSrc() const
{
    const bool byLocation = m_contentID.isEmpty() && !m_contentLocation.isEmpty();
    return MMS_UTIL_Common::parseCid(byLocation ? m_contentLocation : m_contentID);
}

QMap<QString, QString> WMMSMultipart::getSrcToLocalNameMap() const
{
    QMap<QString, QString> names;
    if (m_subParts) {
        for (const WMMSMultipart &part : std::as_const(*m_subParts)) {
            names.insert(part.getSrc(), part.getLocalFileName());
        }
    }
    return names;
}

bool WMMSMultipart::isDrmObj() const
{
    return std::any_of(std::begin(kDrmTypes), std::end(kDrmTypes),
                       [this](QLatin1String type) { return m_contentType.isMimeType(type); });
}

bool WMMSMultipart::isUPI() const
{
    return m_contentType.getParam(QStringLiteral("userPrompt")) == QLatin1String("yes");
}

bool WMMSMultipart::isEmpty() const
{
    if (m_contentType.isEmpty()) {
        return true;
    }
    return !(m_subParts && !m_subParts->isEmpty()) && m_data.isEmpty();
}

bool WMMSMultipart::isMediaType(const QString &kind) const
{
    QString mainType = m_contentType.getMainType().toLower();
    QString subType = m_contentType.getSubType().toLower();
    if (isDrmObj()) {
        // Kept: what is inside a container is compared with its case.
        const WMMSContentType content = protectedContentType();
        mainType = content.getMainType();
        subType = content.getSubType();
    }
    const QString wanted = kind.toLower();
    if (wanted == QLatin1String("audio")) {
        return mainType == QLatin1String("audio")
            || (mainType == QLatin1String("application") && subType == QLatin1String("vnd.smaf"))
            || (mainType == QLatin1String("text") && subType == QLatin1String("x-imelody"));
    }
    // Kept: vector images are not counted as images.
    if (wanted == QLatin1String("image") && mainType == wanted && isVectorImage(subType)) {
        return false;
    }
    const bool comparesCase = wanted == QLatin1String("image") || wanted == QLatin1String("video");
    return wanted == (comparesCase ? mainType : mainType.toLower());
}

int WMMSMultipart::getApproxSize() const
{
    return static_cast<int>(std::min<qint64>(sizeWith(BodyWriter::Approximate), INT_MAX));
}

qint64 WMMSMultipart::sizeWith(qint64 allowance) const
{
    qint64 size = m_data.size() + allowance;
    if (m_subParts) {
        for (const WMMSMultipart &part : std::as_const(*m_subParts)) {
            size += part.sizeWith(allowance);
        }
    }
    return size;
}

bool WMMSMultipart::holds(const QArray<char> &bytes) const
{
    if (&m_data == &bytes || (!bytes.isNull() && m_data.constData() == bytes.constData())) {
        return true;
    }
    return m_subParts
        && std::any_of(m_subParts->cbegin(), m_subParts->cend(),
                       [&bytes](const WMMSMultipart &part) { return part.holds(bytes); });
}

QString WMMSMultipart::getSuggestLocalFileName(const QString &dir) const
{
    if (isDrmObj()) {
        return suggestProtectedFileName(dir);
    }
    QString name =
        m_contentLocation.isEmpty() ? MMS_UTIL_Common::parseCid(m_contentID) : m_contentLocation;
    const QString extension = suggestedExtension(name);
    if (extension.isEmpty()) {
        name = MMS_UTIL_Common::stripPath(name);
    } else {
        name = MMS_UTIL_Common::getNoExtName(
                   MMS_UTIL_Common::stripPath(withoutQuotesAndBrackets(name)))
            + QLatin1Char('.') + extension;
    }
    return MMS_UTIL_Common::mkAbsoluteFileName(name, dir);
}

QString WMMSMultipart::suggestedExtension(const QString &name) const
{
    const QStringList registered =
        AM_MimeType::instance()->getExtListByMimeId(m_contentType.getMimeType());
    QString extension = MMS_UTIL_Common::getExtName(name);
    if (!registered.isEmpty() && !registered.contains(extension)) {
        extension = registered.first();
    }
    if (isMediaType(QStringLiteral("audio")) || isMediaType(QStringLiteral("video"))) {
        const QStringList playable =
            UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_MEDIA);
        if (!playable.contains(extension) && !registered.isEmpty()) {
            extension = registered.first();
        }
    }
    return extension;
}

void WMMSMultipart::printInfo() const
{
    if (isEmpty()) {
        return;
    }
    logLine(4, "------------------------------------");
    logLine(4, "contentType:  %s", m_contentType.toString());
    if (!m_contentLocation.isEmpty()) {
        logLine(4, "contentLocation:  %s", m_contentLocation);
    }
    if (!m_contentID.isEmpty()) {
        logLine(4, "contentID:  %s", m_contentID);
    }
    if (!m_subParts || m_subParts->isEmpty()) {
        logLine(4, "dataLen:  %d", m_data.size());
        return;
    }
    for (const WMMSMultipart &part : std::as_const(*m_subParts)) {
        part.printInfo();
    }
}
