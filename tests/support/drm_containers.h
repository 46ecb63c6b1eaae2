// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/hex.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <initializer_list>

/// DRM containers as the tests write them, byte by byte.

namespace drm {

/// number returns `value` in `size` bytes, the most significant first.
inline QByteArray number(quint64 value, int size)
{
    QByteArray bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.append(char(value >> shift & 0xFF));
    }
    return bytes;
}

/// uintvar returns `value` in groups of seven bits.
inline QByteArray uintvar(quint64 value)
{
    QByteArray bytes(1, char(value & 0x7F));
    while ((value >>= 7) != 0) {
        bytes.prepend(char((value & 0x7F) | 0x80));
    }
    return bytes;
}

/// bodyPart returns one body part of a DRM message: its media type, its bytes, and more header
/// fields, each with its line end.
inline QByteArray bodyPart(const QByteArray &type, const QByteArray &data,
                           const QByteArray &fields = {})
{
    return "Content-Type: " + type + "\r\n" + fields + "\r\n" + data;
}

/// message returns a DRM message of body parts.
inline QByteArray message(std::initializer_list<QByteArray> parts,
                          const QByteArray &boundary = "boundary-1")
{
    QByteArray bytes;
    for (const QByteArray &part : parts) {
        bytes += "--" + boundary + "\r\n" + part + "\r\n";
    }
    return bytes + "--" + boundary + "--\r\n";
}

/// content1 returns DRM content of version 1.
inline QByteArray content1(const QByteArray &type, const QByteArray &uri, const QByteArray &headers,
                           const QByteArray &data = "secret")
{
    return QByteArray(1, 1) + number(type.size(), 1) + number(uri.size(), 1) + type + uri
        + uintvar(headers.size()) + uintvar(data.size()) + headers + data;
}

/// box returns a box of the ISO base media format.
inline QByteArray box(const QByteArray &type, const QByteArray &content)
{
    return number(8 + content.size(), 4) + type + content;
}

/// wideBox returns one with a size of 64 bits.
inline QByteArray wideBox(const QByteArray &type, const QByteArray &content)
{
    return number(1, 4) + type + number(16 + content.size(), 8) + content;
}

inline const QByteArray kVersionFlags = fromHex("00 00 00 00");

inline QByteArray fileType(const QByteArray &brand, const QByteArray &otherBrands = {})
{
    return box("ftyp", brand + number(2, 4) + otherBrands);
}

/// commonHeaders returns an "ohdr" box; method 1 is AES in CBC mode, 2 in CTR mode.
inline QByteArray commonHeaders(int method, const QByteArray &uri, const QByteArray &issuer)
{
    return box("ohdr",
               kVersionFlags + number(method, 1) + number(method ? 1 : 0, 1) + number(4096, 8)
                   + number(uri.size(), 2) + number(issuer.size(), 2) + number(0, 2) + uri
                   + issuer);
}

/// discreteHeaders returns an "odhe" box.
inline QByteArray discreteHeaders(const QByteArray &type, const QByteArray &boxes)
{
    return box("odhe", kVersionFlags + number(type.size(), 1) + type + boxes);
}

/// content2 returns DRM content of version 2.
inline QByteArray content2(const QByteArray &type, const QByteArray &uri, const QByteArray &issuer,
                           const QByteArray &data = "secret")
{
    return fileType("odcf", "odcf")
        + wideBox("odrm",
                  kVersionFlags + discreteHeaders(type, commonHeaders(1, uri, issuer))
                      + wideBox("odda", kVersionFlags + number(data.size(), 8) + data));
}

/// rights1 returns a rights object of version 1 as XML.
inline QByteArray rights1(const QByteArray &uri)
{
    return R"(<?xml version="1.0"?>
<!DOCTYPE o-ex:rights PUBLIC "-//OMA//DTD DRMREL 1.0//EN" "http://www.oma.org/dtd/dr">
<o-ex:rights xmlns:o-ex="http://odrl.net/1.1/ODRL-EX" xmlns:o-dd="http://odrl.net/1.1/ODRL-DD">
 <o-ex:context><o-dd:version>1.0</o-dd:version></o-ex:context>
 <o-ex:agreement>
  <o-ex:asset><o-ex:context><o-dd:uid>)"
        + uri + R"(</o-dd:uid></o-ex:context></o-ex:asset>
  <o-ex:permission><o-dd:display/></o-ex:permission>
 </o-ex:agreement>
</o-ex:rights>)";
}

/// rights2 returns a rights object of version 2.
inline QByteArray rights2(const QByteArray &uri, const QByteArray &issuer)
{
    return R"(<roap:protectedRO xmlns:roap="urn:oma:bac:dldrm:roap-1.0">
 <roap:ro id="ro-1" version="1.0" riURL=")"
        + issuer + R"("><riID/>
  <rights o-ex:id="r-1"><o-ex:context><o-dd:uid>ro-1</o-dd:uid></o-ex:context><o-ex:agreement>
   <o-ex:asset><o-ex:context><o-dd:uid>)"
        + uri + R"(</o-dd:uid></o-ex:context></o-ex:asset></o-ex:agreement></rights>
 </roap:ro>
</roap:protectedRO>)";
}

/// binaryRights returns a rights object of version 1 as binary XML.
inline QByteArray binaryRights(const QByteArray &uri)
{
    return fromHex(R"(
        03 0E 6A 00         # version 1.3, the public id of rights, UTF-8, no table
        C5 05 85 06 86 01   # rights, with two namespaces
        46 47 03 31 2E 30 00 01 01      # context: version: "1.0"
        49 4A 46 48 03)") // agreement: asset: context: uid:
        + uri + fromHex(R"(00
        01 01 01            # ends of uid, context, asset
        4D 0F 01            # permission: display
        01 01               # ends of agreement, rights
    )");
}

inline const QByteArray kJpeg = fromHex("FF D8 FF E0 00 10 4A 46 49 46 00 01 01 00 00 01 FF D9");

} // namespace drm

/// A folder of files that goes with the object.
class DrmFiles {
public:
    /// write returns the path of a file with these bytes.
    QByteArray write(const QByteArray &bytes, const QString &name = "file")
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("DrmFiles: cannot write %s", qPrintable(file.fileName()));
        }
        return QFile::encodeName(file.fileName());
    }
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};
