// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/model/mms_msgdb_type.h"
#include "mms/model/wmmsmsg.h"

namespace {

enum Media : quint16 {
    TextPlain = 3,
    ImageGif = 29,
    ImageJpeg = 30,
    ImagePng = 32,
    ImageWbmp = 33,
    MultipartMixed = 35,
    MultipartAlternative = 38,
    MultipartRelated = 51,
    XhtmlXml = 59,
    Smil = 81,
    ImageBmp = 83,
    AudioImelody = 92,
    AudioMidi = 95,
    AudioWav = 100,
    VideoMp4 = 112,
    AudioMp3 = 121,
};

quint16 mediaNumber(const QString &mimeType)
{
    return static_cast<quint16>(WMMSContentType::getMimeID(mimeType));
}

QString lowerCaseType(const WMMSMultipart &part)
{
    return part.getContentType().getMimeType().toLower();
}

bool hasPresentation(const QValueList<WMMSMultipart> &parts)
{
    for (const WMMSMultipart &part : parts) {
        const QString type = lowerCaseType(part);
        if (type == QLatin1String("application/smil")) {
            logLine(4, "content type is application/smil");
            return true;
        }
        logLine(4, "pSmil=NULL as the content type is not application/smil.Its %s", type);
    }
    return false;
}

int postcardOrLetter(const QValueList<WMMSMultipart> &parts)
{
    int result = MMS_MSGDB_MSG_TYPE_UNKNOWN;
    for (const WMMSMultipart &part : parts) {
        if (lowerCaseType(part) == QLatin1String("text/x-brel-postcard_contacts")) {
            logLine(4, "Setting the mms type to POSTCARD");
            return MMS_MSGDB_MSG_TYPE_POSTCARD;
        }
        logLine(4, "Setting the mms type to Letter Mixed");
        result = MMS_MSGDB_MSG_TYPE_LETTER_MIXED;
    }
    return result;
}

int relatedType(const QValueList<WMMSMultipart> &parts, quint16 rootMedia)
{
    if (hasPresentation(parts)) {
        logLine(4, "SMIL MMS");
        return MMS_MSGDB_MSG_TYPE_SMIL;
    }
    if (rootMedia == Smil) {
        logLine(3, "MMS_MSGDB_MSG_TYPE_LETTER_MIXED");
        return MMS_MSGDB_MSG_TYPE_LETTER_MIXED;
    }
    if (rootMedia == XhtmlXml) {
        return MMS_MSGDB_MSG_TYPE_XHTML;
    }
    return postcardOrLetter(parts);
}

} // namespace

// The signature is fixed. NOLINTNEXTLINE(performance-unnecessary-value-param)
int WMMSMsg::getMMSTypeByContentType(WMMSContentType contentType, bool inspectParts) const
{
    logLine(8, "Entering function %s\n", "getMMSTypeByContentType");
    const quint16 media = mediaNumber(contentType.getMimeType());
    const quint16 rootMedia = mediaNumber(contentType.getParamType());
    logLine(8, "mimeType =%d", media);
    logLine(8, "appType=%d", rootMedia);
    switch (media) {
    case TextPlain:
        logLine(4, "Type for the main content type is text/plain");
        return MMS_MSGDB_MSG_TYPE_LETTER_MIXED;
    // Kept: image/tiff is not a single medium.
    case ImageGif:
    case ImageJpeg:
    case ImagePng:
    case ImageWbmp:
    case ImageBmp:
    case AudioImelody:
    case AudioMidi:
    case AudioWav:
    case VideoMp4:
    case AudioMp3:
        return MMS_MSGDB_MSG_TYPE_MEDIA;
    case MultipartMixed:
        return MMS_MSGDB_MSG_TYPE_LETTER_MIXED;
    case MultipartAlternative:
        return MMS_MSGDB_MSG_TYPE_ALTERNATIVE;
    case MultipartRelated:
        if (!inspectParts) {
            return MMS_MSGDB_MSG_TYPE_SMIL;
        }
        return relatedType(m_body.subParts() ? *m_body.subParts() : QValueList<WMMSMultipart>(),
                           rootMedia);
    default:
        logLine(4, "Wrong content type");
        return MMS_MSGDB_MSG_TYPE_UNKNOWN;
    }
}

// The engine counts its results from 1; the response statuses are three blocks.
unsigned char WMMSMsg::mapMmscResp(short engineCode)
{
    constexpr unsigned char kNoStatus = 127;
    if (engineCode >= 1 && engineCode <= 9) {
        return static_cast<unsigned char>(engineCode + 127);
    }
    if (engineCode >= 10 && engineCode <= 14) {
        return static_cast<unsigned char>(engineCode - 10 + 192);
    }
    if (engineCode >= 15 && engineCode <= 25) {
        return static_cast<unsigned char>(engineCode - 15 + 224);
    }
    return kNoStatus;
}
