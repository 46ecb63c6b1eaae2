// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/drm_file.h"

#include "tools/wmsg/text_view.h"

#include <drm/wmmsdrmutil.h>

#include <QtCore/QFile>

#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct KindRow {
    DRM_KIND_T kind;
    QLatin1String key;
    QLatin1String words;
    QLatin1String reason; ///< why it may be forwarded or not
};

// clang-format off
constexpr KindRow kKinds[] = {
    {DRM_KIND_FORWARD_LOCK,      "forward-lock"_L1,      "forward-lock"_L1,           "what is forward-locked stays on the device"_L1},
    {DRM_KIND_COMBINED_DELIVERY, "combined-delivery"_L1, "combined delivery"_L1,      "what came together with its rights stays on the device"_L1},
    {DRM_KIND_CONTENT_V1,        "content-v1"_L1,        "DRM content, version 1"_L1, "its rights are delivered separately"_L1},
    {DRM_KIND_CONTENT_V2,        "content-v2"_L1,        "DRM content, version 2"_L1, "its rights are delivered separately"_L1},
    {DRM_KIND_RIGHTS,            "rights"_L1,            "rights object"_L1,          "rights stay on the device that they were given to"_L1},
};
// clang-format on
constexpr KindRow kPlain = {DRM_KIND_NONE, "plain"_L1, "not protected"_L1,
                            "it is not protected"_L1};
// Where the DRM client of a phone tells no kind.
constexpr KindRow kUnknown = {DRM_KIND_NONE, "protected"_L1, "protected"_L1,
                              "the DRM client of the device says so"_L1};

const KindRow &rowOf(const DrmFile &file)
{
    for (const KindRow &row : kKinds) {
        if (row.kind == file.kind) {
            return row;
        }
    }
    return file.isProtected ? kUnknown : kPlain;
}

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};

void readRecord(const QByteArray &path, DrmFile &file)
{
    DRM_CONTENT_METADATA_T *found = nullptr;
    unsigned int unused = 0;
    const int status = DRM_GetContentMetaDataInFile(path.constData(), 0, &found, &unused);
    const std::unique_ptr<DRM_CONTENT_METADATA_T, Free> record(found);
    if (status != 0 || !record) {
        return;
    }
    file.kind = record->kind;
    file.contentType = QString::fromUtf8(record->contentType);
    file.contentUri = QString::fromUtf8(record->contentURI);
    file.contentName = QString::fromUtf8(record->contentName);
    file.encryption = QString::fromUtf8(record->encryption);
    file.rightsIssuer = QString::fromUtf8(record->rightsIssuerURL);
}

QString yesOrNo(bool yes)
{
    return yes ? u"yes"_s : u"no"_s;
}

QString line(QLatin1String label, const QString &value)
{
    constexpr int kLabelWidth = 18;
    return value.isEmpty() ? QString()
                           : u"  %1%2\n"_s.arg(label, -kLabelWidth).arg(printable(value));
}

QString sendReason(const DrmFile &file)
{
    return file.hasSendableFormat ? QString(rowOf(file).reason)
                                  : u"files with the extension dm are never attached"_s;
}

void insertKnown(QJsonObject &object, QLatin1String key, const QString &value)
{
    if (!value.isEmpty()) {
        object.insert(key, value);
    }
}

} // namespace

DrmFile drmFileAt(const QString &path)
{
    DrmFile file;
    file.name = path;
    file.isProtected = WMMSDrmUtil::MMS_IsDRMFile(path);
    file.isForwardable = WMMSDrmUtil::MMS_CanForward(path);
    file.hasSendableFormat = WMMSDrmUtil::canBeSentFormatCheck(path);
    if (file.isProtected) {
        readRecord(QFile::encodeName(path), file);
    }
    return file;
}

QString kindInWords(const DrmFile &file)
{
    return rowOf(file).words;
}

QString drmLine(const DrmFile &file)
{
    return u"%1: %2; may be sent: %3; may be forwarded: %4\n"_s.arg(
        printable(file.name), kindInWords(file), yesOrNo(file.isSendable()),
        yesOrNo(file.isForwardable));
}

QString drmView(const DrmFile &file)
{
    return printable(file.name) + u": "_s + kindInWords(file) + u'\n'
        + line("Content type"_L1, file.contentType) + line("Content name"_L1, file.contentName)
        + line("Identifier"_L1, file.contentUri) + line("Encryption"_L1, file.encryption)
        + line("Rights issuer"_L1, file.rightsIssuer)
        + line("May be sent"_L1, yesOrNo(file.isSendable()) + u": "_s + sendReason(file))
        + line("May be forwarded"_L1,
               yesOrNo(file.isForwardable) + u": "_s + QString(rowOf(file).reason));
}

QJsonObject drmJson(const DrmFile &file)
{
    QJsonObject object = {
        {u"file"_s, file.name},
        {u"kind"_s, rowOf(file).key},
        {u"maySend"_s, file.isSendable()},
        {u"maySendReason"_s, sendReason(file)},
        {u"mayForward"_s, file.isForwardable},
        {u"mayForwardReason"_s, rowOf(file).reason},
    };
    insertKnown(object, "contentType"_L1, file.contentType);
    insertKnown(object, "contentName"_L1, file.contentName);
    insertKnown(object, "contentUri"_L1, file.contentUri);
    insertKnown(object, "encryption"_L1, file.encryption);
    insertKnown(object, "rightsIssuer"_L1, file.rightsIssuer);
    return object;
}

} // namespace wmsg::cli
