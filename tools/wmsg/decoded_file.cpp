// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/decoded_file.h"

#include "tools/wmsg/field_words.h"

#include <mms/model/result_codes.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

void decode(DecodedFile &file)
{
    file.result = file.walk.walk(file.bytes, file.kind);
    const qint32 start = file.walk.pduOffset();
    // A new message counts some fields as present; here only those of the file do.
    file.message.clear();
    if (file.kind == FileKind::MailFile) {
        if (start == 0) {
            return; // the walk found no prefix
        }
        file.message.setMMSType(file.walk.mmsType());
    }
    QArray<char> pdu =
        start == 0 ? file.bytes : QArray<char>::slice(file.bytes, start, file.bytes.size() - start);
    file.result = file.message.construct(pdu, true);
}

QString failureInWords(const DecodedFile &file)
{
    const QString line =
        u"%1: result %2 (%3"_s.arg(file.name).arg(file.result).arg(resultInWords(file.result));
    const auto &failure = file.walk.failure();
    return line
        + (failure ? u": %1) at offset %2, field %3"_s.arg(failure->message)
                         .arg(failure->offset)
                         .arg(failure->field)
                   : u")"_s);
}

QValueList<WMMSMultipart> partsOf(const WMMSMsg &message)
{
    const WMMSMultipart &root = message.getMultiParts();
    if (const auto *parts = root.subParts()) {
        return *parts;
    }
    return root.getData().isEmpty() ? QValueList<WMMSMultipart>() : QValueList<WMMSMultipart>{root};
}

bool isText(const WMMSMultipart &part)
{
    const WMMSContentType &type = part.getContentType();
    return type.getMainType().toLower() == "text"_L1 || type.isMimeType("application/smil"_L1);
}

QString textOf(const WMMSMultipart &part)
{
    return QString::fromUtf8(part.getData().view());
}

} // namespace wmsg::cli
