// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"

#include "core/log.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "mms/model/wmmsmultipart.h"
#include "platform/drmclient/drm_client.h"
#include "util/mms_util_common.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace {

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
using Record = std::unique_ptr<DRM_CONTENT_METADATA_T, Free>;

/// recordOf returns what the DRM client knows of a file; null when it knows nothing.
Record recordOf(const QString &path)
{
    DRM_CONTENT_METADATA_T *record = nullptr;
    unsigned int unused = 0;
    const int status =
        DRM_GetContentMetaDataInFile(QFile::encodeName(path).constData(), 0, &record, &unused);
    Record owned(record);
    return status == 0 ? std::move(owned) : nullptr;
}

/// withoutLineBreaks keeps the path of a part's file one entry of a list of files. Else a part
/// could choose a name whose pieces are asked about in place of its file.
QString withoutLineBreaks(QString name)
{
    name.replace(QLatin1Char('\r'), QLatin1Char('_'));
    name.replace(QLatin1Char('\n'), QLatin1Char('_'));
    return name;
}

/// newTmpFile creates an empty file that only this user may read, and returns its path; empty when
/// that fails. Another process may take a name between its choice and the creation.
QString newTmpFile(const QString &src)
{
    constexpr int kMostTries = 100;
    for (int tries = 0; tries < kMostTries; ++tries) {
        QString path = MMS_UTIL_Common::getTmpFileName(src, QString());
        if (path.contains(QChar::Null)) {
            return QLatin1String(""); // the system would take what stands in front of it
        }
        const int fd = ::open(QFile::encodeName(path).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd >= 0) {
            ::close(fd);
            return path;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return QLatin1String("");
}

/// saveTo saves a part under another local file name than its own.
bool saveTo(WMMSMultipart &part, const QString &path)
{
    const QString before = part.getLocalFileName();
    part.setLocalFileName(path);
    const bool isSaved = part.saveFile();
    part.setLocalFileName(before);
    return isSaved;
}

/// The file of a part for as long as it is needed.
class TmpCopy {
public:
    explicit TmpCopy(WMMSMultipart *part) : m_path(WMMSDrmUtil::saveToTmpFile(part)) { }
    ~TmpCopy()
    {
        if (isThere()) {
            QFile::remove(m_path);
        }
    }
    Q_DISABLE_COPY_MOVE(TmpCopy)

    [[nodiscard]] bool isThere() const { return !m_path.isEmpty(); }
    [[nodiscard]] const QString &path() const { return m_path; }

private:
    const QString m_path;
};

/// filesIn returns the paths of a list of files, one behind each line break.
QStringList filesIn(QString files)
{
    files.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    files.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return files.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool canBeForwarded(WMMSMultipart &part)
{
    if (!part.getLocalFileName().isEmpty()) {
        logLine(8, "already save to %s", part.getLocalFileName());
        return WMMSDrmUtil::canBeSentDrmCheck(part.getLocalFileName());
    }
    logLine(8, "not save to tmp file");
    const TmpCopy copy(&part);
    if (!copy.isThere()) {
        // Kept: a part that cannot be written out does not block forwarding.
        logLine(4, "save drm file to tmp path failed");
        return true;
    }
    return WMMSDrmUtil::canBeSentDrmCheck(copy.path());
}

} // namespace

QString WMMSDrmUtil::saveToTmpFile(WMMSMultipart *part)
{
    if (!part) {
        return QLatin1String("");
    }
    QString path = newTmpFile(withoutLineBreaks(part->getSrc()));
    if (!path.isEmpty() && !saveTo(*part, path)) {
        QFile::remove(path);
        path = QLatin1String("");
    }
    return path;
}

QString WMMSDrmUtil::getDataMimeType(WMMSMultipart *part)
{
    if (!part) {
        return QLatin1String("");
    }
    if (!part->isDrmObj()) {
        return part->getContentType().getMimeType();
    }
    const TmpCopy copy(part);
    const Record record = copy.isThere() ? recordOf(copy.path()) : nullptr;
    return record ? QString::fromLatin1(record->contentType) : QLatin1String("");
}

bool WMMSDrmUtil::MMS_IsDRMFile(const QString &path)
{
    logLine(4, "MMS_IsDRMFile(QString filename) FileName is %s\n", path);
    logLine(4, "Before if filename.isNull()||!filename.isEmpty\n");
    if (path.isEmpty()) {
        return false;
    }
    logLine(4, "Before calling DRM_IsDRMFile\n");
    const bool isDrmFile = DRM_IsDRMFile(QFile::encodeName(path).constData()) != 0;
    logLine(4, "Return value of  DRM_IsDRMFile %d\n", isDrmFile ? 1 : 0);
    logLine(4, "After calling DRM_IsDRMFile\n");
    return isDrmFile;
}

bool WMMSDrmUtil::MMS_CanForward(const QString &path)
{
    if (path.isEmpty()) {
        return false;
    }
    if (!MMS_IsDRMFile(path)) {
        return true;
    }
    logLine(4, "\nbefore calling DRM_canforward \n");
    const bool canForward = DRM_CanForward(QFile::encodeName(path).constData()) != 0;
    logLine(4, "\nAfter calling DRM_canforward =%d\n", canForward ? 1 : 0);
    return canForward;
}

bool WMMSDrmUtil::hasRightsIssuerURL(const QString &path)
{
    if (path.isEmpty()) {
        logLine(4, "filename is Null \n");
        return false;
    }
    logLine(4, "\nbefore calling has rights issuere url\n");
    const bool hasUrl = DRM_HasRightsIssuerURL(QFile::encodeName(path).constData()) != 0;
    logLine(4, "\nAfter calling has rights issuere url = %d \n", hasUrl ? 1 : 0);
    return hasUrl;
}

QString WMMSDrmUtil::getDrmTypeMediaName(const QString &path)
{
    if (!path.isEmpty()) {
        logLine(4, " The full path name : %s", path);
    }
    return path;
}

// Kept: without a folder the name is the path of a file that is gone.
QString WMMSDrmUtil::getSuggestLocalFileName(WMMSMultipart *part, const QString &dir)
{
    if (!part) {
        return QLatin1String("");
    }
    if (!part->isDrmObj()) {
        return MMS_UTIL_Common::mkAbsoluteFileName(part->getSrc(), dir);
    }
    const TmpCopy copy(part);
    if (!copy.isThere()) {
        return QLatin1String("");
    }
    QString name = getDrmTypeMediaName(copy.path());
    logLine(4, "suggestName : %s", name);
    if (!dir.isEmpty()) {
        name = MMS_UTIL_Common::mkAbsoluteFileName(MMS_UTIL_Common::stripPath(name), dir);
    }
    logLine(4, "suggestName=%s", name);
    return name;
}

bool WMMSDrmUtil::sendRequestRightsFromUI(const QString &path)
{
    if (path.isEmpty()) {
        return false;
    }
    const Record record = recordOf(path);
    if (!record) {
        logLine(4, "returning from sendRequestRightsFromUI");
        return false;
    }
    // Kept: the text about failure is logged on success.
    logLine(4, " DRM_STATUS_SUCCESS != status\n");
    logLine(4, " URL Location : %s\n", static_cast<const char *>(record->rightsIssuerURL));
    logLine(4, "After calling DRM_UI_LaunchAppIn : \n");
    return true;
}

bool WMMSDrmUtil::isRoMimeType(const QString &type)
{
    return type == QLatin1String("application/vnd.oma.drm.rights+xml")
        || type == QLatin1String("application/vnd.oma.drm.rights+wbxml")
        || type == QLatin1String("application/vnd.oma.drm.ro+xml");
}

// Kept: the extension in capitals passes.
bool WMMSDrmUtil::canBeSentFormatCheck(const QString &files)
{
    const QStringList paths = filesIn(files);
    return std::none_of(paths.cbegin(), paths.cend(), [](const QString &path) {
        return MMS_UTIL_Common::getExtName(path) == QLatin1String("dm");
    });
}

bool WMMSDrmUtil::canBeSentDrmCheck(const QString &files)
{
    const QStringList paths = filesIn(files);
    return std::all_of(paths.cbegin(), paths.cend(), MMS_CanForward);
}

bool WMMSDrmUtil::canBeForwardedDrmCheck(WMMSMsg *message)
{
    if (!message) {
        return false;
    }
    if (!message->getMultiParts().subParts()) {
        return true;
    }
    QValueList<WMMSMultipart> &parts = message->getMultiParts().getSubMmsMultipartList();
    return std::all_of(parts.begin(), parts.end(), [](WMMSMultipart &part) {
        return !part.isDrmObj() || canBeForwarded(part);
    });
}

bool WMMSDrmUtil::canBeForwardedDrmCheck(unsigned short msgId)
{
    WMMSMsg message;
    return message.constructWMMSMsg(msgId, nullptr, true, 0) == MMS_DECODE_OK
        && canBeForwardedDrmCheck(&message);
}
