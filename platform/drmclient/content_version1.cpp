// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/byte_reader_p.h"
#include "platform/drmclient/drm_container_p.h"
#include "platform/drmclient/drm_text_p.h"

// content := 0x01 type-length uri-length type uri headers-length data-length headers data
//   type-length, uri-length: one byte each      headers-length, data-length: uintvar, up to 32 bits
//   type: a media type      uri: the identifier of the content      headers := *( name ":" value
//   line-end )

namespace wmsg::drm {

namespace {

/// The name of a method stands in front of its parameters.
qsizetype lengthOfMethod(const QByteArray &value)
{
    const qsizetype semicolon = value.indexOf(';');
    return semicolon < 0 ? value.size() : semicolon;
}

void readHeaders(QByteArrayView headers, Container &content)
{
    while (!headers.isEmpty()) {
        HeaderField field;
        if (takeField(headers, field) == Line::Other) {
            takeLine(headers);
        } else if (field.is("Rights-Issuer") && content.rightsIssuerUrl.isEmpty()) {
            content.rightsIssuerUrl = textIn(field.value);
        } else if (field.is("Content-Name") && content.contentName.isEmpty()) {
            content.contentName = textIn(field.value);
        } else if (field.is("Encryption-Method") && content.encryption.isEmpty()) {
            content.encryption = textIn(field.value.first(lengthOfMethod(field.value)));
        }
    }
}

} // namespace

MaybeContainer readContentVersion1(QByteArrayView head, qint64 size)
{
    ByteReader reader(head);
    quint8 version = 0;
    quint8 typeLength = 0;
    quint8 uriLength = 0;
    QByteArrayView type;
    QByteArrayView uri;
    quint32 headersLength = 0;
    quint32 dataLength =
        0; // read and not used: content may be cut off, and is protected all the same
    if (!(reader.readByte(version) && version == 1 && reader.readByte(typeLength)
          && reader.readByte(uriLength) && reader.readBytes(typeLength, type)
          && reader.readBytes(uriLength, uri) && reader.readUintvar(headersLength)
          && reader.readUintvar(dataLength))) {
        return {};
    }
    const qsizetype position = head.size() - reader.rest().size();
    Container content;
    content.kind = DRM_KIND_CONTENT_V1;
    content.contentType = mediaTypeIn(type);
    content.contentUri = textIn(uri);
    if (content.contentType.isEmpty() || headersLength > size - position) {
        return {};
    }
    readHeaders(reader.rest().first(qMin<qsizetype>(headersLength, reader.rest().size())), content);
    return content;
}

} // namespace wmsg::drm
