// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/byte_reader_p.h"
#include "platform/drmclient/drm_container_p.h"
#include "platform/drmclient/drm_text_p.h"

#include <iterator>
#include <vector>

// file  := ftyp *box              ftyp := box of brand minor-version *brand
// box   := size type [ size64 ] content
//   size: uint32 with its own bytes and the type's; 1: size64, a uint64, counts instead; 0: up to
//   the end
// discrete content, a brand is "odcf":  odrm / odhe := version-flags type-length type *box
//                                       odrm / odhe / ohdr: the common headers
// film or sound, a brand is "opf2":     moov / trak / mdia / minf / stbl / stsd / encv or enca
//                                       and there sinf / schi / odkm / ohdr
// ohdr  := version-flags method padding plain-length uri-length issuer-length text-length uri
// issuer text *box
//   method, padding: one byte      plain-length: uint64      the other lengths: uint16
// All numbers have their most significant byte first; version-flags are four bytes.

namespace wmsg::drm {

namespace {

constexpr quint32 fourCharacters(const char (&text)[5])
{
    quint32 code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<quint8>(text[i]);
    }
    return code;
}

struct Box {
    quint32 type = 0;
    QByteArrayView content;
    bool isWhole = false;
};

/// takeBox takes the first box of `rest`. A box that claims more bytes than there are has those
/// that there are. It returns false at the end and at a size that is none.
bool takeBox(QByteArrayView &rest, Box &box)
{
    ByteReader reader(rest);
    quint64 size = 0;
    quint64 type = 0;
    if (!reader.readNumber(4, size) || !reader.readNumber(4, type)) {
        return false;
    }
    const auto available = static_cast<quint64>(rest.size());
    if (size == 0) {
        size = available;
    } else if (size == 1 && !reader.readNumber(8, size)) {
        return false;
    }
    const auto headerSize = static_cast<quint64>(rest.size() - reader.rest().size());
    const quint64 taken = qMin(size, available);
    if (taken < headerSize || !reader.readBytes(taken - headerSize, box.content)) {
        return false;
    }
    box.type = static_cast<quint32>(type);
    box.isWhole = size <= available;
    rest = reader.rest();
    return true;
}

/// One step from a box to what is inside it: the type, and how many bytes of fields stand in front
/// of the inner boxes.
struct Step {
    quint32 type;
    qsizetype fields;
};

constexpr qsizetype kVersionFlags = 4;

// clang-format off
constexpr Step kDiscreteHeaders[] = {
    {fourCharacters("odrm"), kVersionFlags}, {fourCharacters("odhe"), kVersionFlags}};
constexpr Step kTrackHeaders[] = {
    {fourCharacters("moov"), 0}, {fourCharacters("trak"), 0}, {fourCharacters("mdia"), 0},
    {fourCharacters("minf"), 0}, {fourCharacters("stbl"), 0}, {fourCharacters("stsd"), kVersionFlags + 4}};
constexpr Step kPicture[] = {{fourCharacters("encv"), 78}};
constexpr Step kSound[] = {{fourCharacters("enca"), 28}};
constexpr Step kKeyHeaders[] = {
    {fourCharacters("sinf"), 0}, {fourCharacters("schi"), 0}, {fourCharacters("odkm"), kVersionFlags}};
constexpr Step kCommonHeaders[] = {{fourCharacters("ohdr"), kVersionFlags}};
// clang-format on

using Path = std::vector<Step>;

template <typename... Steps> Path pathOf(const Steps &...steps)
{
    Path path;
    (path.insert(path.end(), std::begin(steps), std::end(steps)), ...);
    return path;
}

using Found = std::optional<QByteArrayView>;

/// find returns what is inside the first box at the end of the path that begins with `step`. Boxes
/// are entered along the path alone, so that its length bounds the depth, and each box is looked at
/// once for a step.
Found find(QByteArrayView boxes, const Path &path, size_t step = 0)
{
    Box box;
    while (takeBox(boxes, box)) {
        if (box.type != path[step].type || box.content.size() < path[step].fields) {
            continue;
        }
        const QByteArrayView inside = box.content.sliced(path[step].fields);
        if (step + 1 == path.size()) {
            return inside;
        }
        if (Found found = find(inside, path, step + 1)) {
            return found;
        }
    }
    return {};
}

QByteArray encryptionName(quint8 method)
{
    switch (method) {
    case 0:
        return "NULL";
    case 1:
        return "AES128CBC";
    case 2:
        return "AES128CTR";
    default:
        return {};
    }
}

void readCommonHeaders(QByteArrayView headers, Container &content)
{
    ByteReader reader(headers);
    quint8 method = 0;
    quint64 uriLength = 0;
    quint64 issuerLength = 0;
    QByteArrayView uri;
    QByteArrayView issuer;
    const quint64 paddingAndPlainLength = 1 + 8;
    const quint64 textLength = 2;
    if (reader.readByte(method) && reader.skip(paddingAndPlainLength)
        && reader.readNumber(2, uriLength) && reader.readNumber(2, issuerLength)
        && reader.skip(textLength) && reader.readBytes(uriLength, uri)
        && reader.readBytes(issuerLength, issuer)) {
        content.encryption = encryptionName(method);
        content.contentUri = textIn(uri);
        content.rightsIssuerUrl = textIn(issuer);
    }
}

void readDiscrete(QByteArrayView boxes, Container &content)
{
    const Found headers = find(boxes, pathOf(kDiscreteHeaders));
    if (!headers) {
        return;
    }
    ByteReader reader(*headers);
    quint8 length = 0;
    QByteArrayView type;
    if (!reader.readByte(length) || !reader.readBytes(length, type)) {
        return;
    }
    content.contentType = mediaTypeIn(type);
    if (const Found common = find(reader.rest(), pathOf(kCommonHeaders))) {
        readCommonHeaders(*common, content);
    }
}

/// The sub type of a film or a sound by its main brand.
QByteArray subTypeOf(QByteArrayView brand)
{
    return brand.startsWith("3g2") ? "3gpp2" : brand.startsWith("3g") ? "3gpp" : "mp4";
}

void readTracks(QByteArrayView boxes, QByteArrayView brand, Container &content)
{
    const Found picture = find(boxes, pathOf(kTrackHeaders, kPicture));
    const Found entry = picture ? picture : find(boxes, pathOf(kTrackHeaders, kSound));
    if (!entry) {
        return;
    }
    content.contentType = (picture ? "video/" : "audio/") + subTypeOf(brand);
    if (const Found common = find(*entry, pathOf(kKeyHeaders, kCommonHeaders))) {
        readCommonHeaders(*common, content);
    }
}

struct FileType {
    QByteArrayView brand;
    bool isDiscrete = false;
    bool isTracks = false;
};

bool readFileType(QByteArrayView content, FileType &type)
{
    ByteReader reader(content);
    const quint64 minorVersion = 4;
    if (!reader.readBytes(4, type.brand) || !reader.skip(minorVersion)) {
        return false;
    }
    QByteArrayView brand = type.brand;
    do {
        type.isDiscrete = type.isDiscrete || brand == "odcf";
        type.isTracks = type.isTracks || brand == "opf2";
    } while (reader.readBytes(4, brand));
    return type.isDiscrete || type.isTracks;
}

} // namespace

MaybeContainer readContentVersion2(QByteArrayView head)
{
    QByteArrayView boxes = head;
    Box box;
    FileType type;
    if (!takeBox(boxes, box) || box.type != fourCharacters("ftyp") || !box.isWhole
        || !readFileType(box.content, type)) {
        return {};
    }
    Container content;
    content.kind = DRM_KIND_CONTENT_V2;
    if (type.isDiscrete) {
        readDiscrete(boxes, content);
    } else {
        readTracks(boxes, type.brand, content);
    }
    return content;
}

} // namespace wmsg::drm
