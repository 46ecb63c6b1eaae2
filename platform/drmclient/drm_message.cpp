// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/drm_container_p.h"
#include "platform/drmclient/drm_text_p.h"

#include <limits>

// drm-message := *line-end "--" boundary line-end body-part [ delimiter line-end body-part ] [ end
// ] body-part   := 1*header-field line-end data delimiter   := line-end "--" boundary end :=
// delimiter "--"
//   one body part: the content, forward-locked      two: rights, then the content they are for

namespace wmsg::drm {

namespace {

constexpr qsizetype kLongestBoundary = 256;

struct BodyPart {
    bool isTyped = false;
    QByteArray type;
    QByteArray encoding;
};

/// takeBoundary moves `rest` past the first delimiter and sets `delimiter` to it, "--" included.
bool takeBoundary(QByteArrayView &rest, QByteArrayView &delimiter)
{
    while (rest.startsWith('\r') || rest.startsWith('\n')) {
        rest = rest.sliced(1);
    }
    if (!rest.startsWith("--") || !rest.first(qMin(rest.size(), kLongestBoundary)).contains('\n')) {
        return false;
    }
    delimiter = takeLine(rest);
    while (delimiter.endsWith(' ') || delimiter.endsWith('\t')) {
        delimiter.chop(1);
    }
    return delimiter.size() > 2 && !textIn(delimiter).isEmpty();
}

/// takeHeader reads header fields up to the empty line behind them, or to the first line that is no
/// field.
BodyPart takeHeader(QByteArrayView &rest)
{
    BodyPart part;
    HeaderField field;
    while (takeField(rest, field) == Line::Field) {
        if (field.is("Content-Type") && !part.isTyped) {
            part.isTyped = true;
            part.type = mediaTypeIn(field.value);
        } else if (field.is("Content-Transfer-Encoding") && part.encoding.isEmpty()) {
            part.encoding = field.value;
        }
    }
    return part;
}

/// endsDelimiter tells whether what follows the boundary shows that it is one and not the beginning
/// of a longer line.
bool endsDelimiter(QByteArrayView behind)
{
    return behind.startsWith("--") || takeLine(behind).trimmed().isEmpty();
}

/// takeData returns the bytes up to the next delimiter, without the line end that belongs to it,
/// and moves `rest` past its line. Without a delimiter it is all of `rest`, which is null then.
QByteArrayView takeData(QByteArrayView &rest, QByteArrayView delimiter)
{
    const QByteArrayView all = rest;
    while (!rest.isEmpty()) {
        const qsizetype start = rest.data() - all.data();
        const QByteArrayView line = takeLine(rest);
        if (line.startsWith(delimiter) && endsDelimiter(line.sliced(delimiter.size()))) {
            QByteArrayView data = all.first(start);
            data.chop(data.endsWith("\r\n") ? 2 : data.endsWith('\n') ? 1 : 0);
            return data;
        }
    }
    rest = QByteArrayView();
    return all;
}

bool isRights(const QByteArray &type)
{
    return isSame(type, "application/vnd.oma.drm.rights+xml")
        || isSame(type, "application/vnd.oma.drm.rights+wbxml")
        || isSame(type, "application/vnd.oma.drm.ro+xml");
}

bool isContent(const QByteArray &type)
{
    return isSame(type, "application/vnd.oma.drm.content")
        || isSame(type, "application/vnd.oma.drm.dcf");
}

void readRights(QByteArrayView data, const BodyPart &part, Container &message)
{
    const QByteArray rights =
        decoded(data.first(qMin(data.size(), 2 * kLongestRights)), part.encoding);
    auto object = readRightsXml(rights);
    if (!object) {
        object = readRightsWbxml(rights);
    }
    if (object) {
        message.contentUri = object->contentUri;
        message.rightsIssuerUrl = object->rightsIssuerUrl;
    }
}

/// readInnerContent looks into DRM content that a DRM message holds. The way of delivery stays that
/// of the message.
void readInnerContent(QByteArrayView data, const BodyPart &part, Container &message)
{
    const QByteArray bytes = decoded(data, part.encoding);
    auto content = readContentVersion2(bytes);
    if (!content) {
        content = readContentVersion1(bytes, std::numeric_limits<qint64>::max());
    }
    if (content) {
        content->kind = message.kind;
        message = *content;
    }
}

} // namespace

MaybeContainer readDrmMessage(QByteArrayView head)
{
    QByteArrayView rest = head;
    QByteArrayView delimiter;
    if (!takeBoundary(rest, delimiter)) {
        return {};
    }
    BodyPart part = takeHeader(rest);
    if (!part.isTyped) {
        return {};
    }
    Container message;
    message.kind = DRM_KIND_FORWARD_LOCK;
    if (isRights(part.type)) {
        message.kind = DRM_KIND_COMBINED_DELIVERY;
        readRights(takeData(rest, delimiter), part, message);
        part = takeHeader(rest);
    }
    message.contentType = part.type;
    if (isContent(part.type)) {
        readInnerContent(takeData(rest, delimiter), part, message);
    }
    return message;
}

} // namespace wmsg::drm
