// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/presentation_check.h"

#include <util/mms_util_common.h>

#include <QtCore/QXmlStreamReader>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

bool isNamed(const WalkedPart &part, const QString &reference)
{
    return MMS_UTIL_Common::isCidEqual(reference, part.contentId)
        || MMS_UTIL_Common::isCidEqual(reference, part.contentLocation);
}

bool isThere(const QList<WalkedPart> &parts, const QString &reference)
{
    return std::any_of(parts.begin(), parts.end(),
                       [&](const WalkedPart &part) { return isNamed(part, reference); });
}

void checkReference(WalkNotes &notes, const WalkedPart &smil, const QList<WalkedPart> &parts,
                    const QString &source)
{
    if (source.contains("://"_L1)) {
        notes.warn(smil.dataOffset, smil.field,
                   u"the presentation shows %1, which is not in the message"_s.arg(quoted(source)));
    } else if (!isThere(parts, source)) {
        notes.warn(smil.dataOffset, smil.field,
                   u"the presentation shows %1, and no part has that name"_s.arg(quoted(source)));
    }
}

void checkSmil(WalkNotes &notes, const WalkedPart &smil, const QList<WalkedPart> &parts,
               QByteArrayView file)
{
    QByteArrayView text = file.sliced(smil.dataOffset, smil.dataLength);
    while (text.endsWith('\0')) {
        text.chop(1);
    }
    QXmlStreamReader xml(text.toByteArray());
    xml.setNamespaceProcessing(false);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement
            && xml.attributes().hasAttribute("src"_L1)) {
            checkReference(notes, smil, parts, xml.attributes().value("src"_L1).toString());
        }
    }
    if (xml.hasError()) {
        notes.warn(smil.dataOffset, smil.field,
                   u"the presentation is no proper XML, line %1: %2"_s.arg(xml.lineNumber())
                       .arg(xml.errorString()));
    }
}

} // namespace

void checkPresentation(WalkNotes &notes, const WMMSContentType &type,
                       const QList<WalkedPart> &parts, QByteArrayView file)
{
    const QString start = type.getParamStart();
    if (!start.isEmpty() && !parts.isEmpty() && !isThere(parts, start)) {
        notes.warn(parts.first().offset, u"Content-Type"_s,
                   u"no part has the start %1"_s.arg(quoted(start)));
    }
    for (const WalkedPart &part : parts) {
        if (part.contentType.getMimeType() == "application/smil"_L1) {
            checkSmil(notes, part, parts, file);
        }
    }
}

} // namespace wmsg::cli
