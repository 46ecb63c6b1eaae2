// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/presentation_check.h"

#include "tools/wmsg/part_names.h"
#include "tools/wmsg/smil_reader.h"

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

PartNames namesOf(const QList<WalkedPart> &parts)
{
    PartNames names;
    int number = 0;
    for (const WalkedPart &part : parts) {
        names.add(part.contentId, number);
        names.add(part.contentLocation, number);
        ++number;
    }
    return names;
}

void checkReference(WalkNotes &notes, const WalkedPart &smil, const PartNames &names,
                    const QString &source)
{
    if (source.contains("://"_L1)) {
        notes.warn(smil.dataOffset, smil.field,
                   u"the presentation shows %1, which is not in the message"_s.arg(quoted(source)));
    } else if (!names.find(source)) {
        notes.warn(smil.dataOffset, smil.field,
                   u"the presentation shows %1, and no part has that name"_s.arg(quoted(source)));
    }
}

void checkSmil(WalkNotes &notes, const WalkedPart &part, const PartNames &names,
               QByteArrayView file)
{
    const Smil smil = readSmil(file.sliced(part.dataOffset, part.dataLength));
    for (const QString &source : smil.sources) {
        checkReference(notes, part, names, source);
    }
    if (!smil.problem.isEmpty()) {
        notes.warn(part.dataOffset, part.field, smil.problem);
    }
}

} // namespace

void checkPresentation(WalkNotes &notes, const WMMSContentType &type,
                       const QList<WalkedPart> &parts, QByteArrayView file)
{
    const PartNames names = namesOf(parts);
    const QString start = type.getParamStart();
    if (!start.isEmpty() && !parts.isEmpty() && !names.find(start)) {
        notes.warn(parts.first().offset, u"Content-Type"_s,
                   u"no part has the start %1"_s.arg(quoted(start)));
    }
    for (const WalkedPart &part : parts) {
        if (part.contentType.getMimeType() == "application/smil"_L1) {
            checkSmil(notes, part, names, file);
        }
    }
}

} // namespace wmsg::cli
