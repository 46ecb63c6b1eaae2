// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/byte_reader_p.h"
#include "platform/drmclient/drm_container_p.h"
#include "platform/drmclient/drm_text_p.h"

#include <QtCore/QVarLengthArray>

// rights    := version public-id charset table-length table body
//   version: 01 to 03      public-id: 0E, or 00 and the place of its text in the table
//   public-id, charset, table-length: uintvar
// body      := element       element := tag [ attributes 01 ] [ *( element | value ) 01 ]
//   tag: bit 7 for attributes, bit 6 for content, then the name: 05 rights, 08 uid, 0A asset, or 04
//   and the place of the name in the table
// value     := 03 text 00 | 83 place | C3 length bytes | ...
//   place, length: uintvar

namespace wmsg::drm {

namespace {

constexpr quint32 kPublicId = 0x0E;
constexpr qsizetype kLongestText =
    2048; // in the table, where each text may be asked for many times
constexpr QByteArrayView kPublicIdText("-//OMA//DTD DRMREL 1.0//EN");

enum Tag : quint8 { Rights = 0x05, Uid = 0x08, Asset = 0x0A, NameBits = 0x3F };
enum TagBit : quint8 { HasContent = 0x40, HasAttributes = 0x80 };

enum Token : quint8 {
    SwitchPage = 0x00,
    End = 0x01,
    Entity = 0x02,
    InlineText = 0x03,
    Literal = 0x04, ///< a tag with its name in the table; the two tag bits apply
    ExtensionText = 0x40, ///< to 0x42
    Instruction = 0x43,
    ExtensionPlace = 0x80, ///< to 0x82
    TableText = 0x83,
    ExtensionByte = 0xC0, ///< to 0xC2
    Opaque = 0xC3,
};

class RightsReader {
public:
    explicit RightsReader(QByteArrayView head) : m_reader(head) { }

    bool readStart();
    void readBody(Container &rights);

private:
    enum class Step { Done, Failed, NoValue };

    bool isRightsId();
    Step takeValue(quint8 token, QByteArrayView &text);
    bool skipAttributes();
    bool takeName(quint8 token, quint8 &name);
    bool enter(quint8 token, quint8 name);
    bool leave();
    [[nodiscard]] QByteArrayView tableText(quint32 place) const;

    ByteReader m_reader;
    QByteArrayView m_table;
    QVarLengthArray<quint8, 32> m_open; ///< the names of the open elements
    int m_assets = 0; ///< how many of them are assets
};

/// tableText returns the text at `place` of the table, up to its NUL; empty for one that is too
/// long.
QByteArrayView RightsReader::tableText(quint32 place) const
{
    if (place >= static_cast<quint64>(m_table.size())) {
        return {};
    }
    const QByteArrayView behind = m_table.sliced(place);
    ByteReader reader(behind.first(qMin(behind.size(), kLongestText)));
    QByteArrayView text;
    return reader.readText(text) ? text : QByteArrayView();
}

/// readStart reads up to the first tag and tells whether these are rights.
bool RightsReader::readStart()
{
    quint8 version = 0;
    quint32 publicId = 0;
    quint32 place = 0;
    quint32 charset = 0;
    quint32 tableLength = 0;
    if (!(m_reader.readByte(version) && version >= 1 && version <= 3
          && m_reader.readUintvar(publicId) && (publicId != 0 || m_reader.readUintvar(place))
          && m_reader.readUintvar(charset) && m_reader.readUintvar(tableLength)
          && m_reader.readBytes(tableLength, m_table))) {
        return false;
    }
    const bool isRights =
        publicId == kPublicId || (publicId == 0 && tableText(place) == kPublicIdText);
    quint8 root = 0;
    quint8 name = 0;
    return isRights && m_reader.readByte(root) && takeName(root, name) && name == Rights
        && enter(root, name);
}

/// takeValue takes what belongs to `token` where that is no tag; `text` is set to the text of a
/// text.
RightsReader::Step RightsReader::takeValue(quint8 token, QByteArrayView &text)
{
    quint32 number = 0;
    bool isTaken = true;
    switch (token) {
    case SwitchPage:
        isTaken = m_reader.skip(1);
        break;
    case Entity:
    case ExtensionPlace:
    case ExtensionPlace + 1:
    case ExtensionPlace + 2:
        isTaken = m_reader.readUintvar(number);
        break;
    case InlineText:
        isTaken = m_reader.readText(text);
        break;
    case ExtensionText:
    case ExtensionText + 1:
    case ExtensionText + 2: {
        QByteArrayView skipped;
        isTaken = m_reader.readText(skipped);
        break;
    }
    case TableText:
        isTaken = m_reader.readUintvar(number);
        text = tableText(number);
        break;
    case ExtensionByte:
    case ExtensionByte + 1:
    case ExtensionByte + 2:
        break;
    case Opaque:
        isTaken = m_reader.readUintvar(number) && m_reader.readBytes(number, text);
        break;
    default:
        return Step::NoValue;
    }
    return isTaken ? Step::Done : Step::Failed;
}

/// skipAttributes moves past the end of a list of attributes. Their names and values are single
/// bytes but for what takeValue() knows and names in the table.
bool RightsReader::skipAttributes()
{
    quint8 token = 0;
    while (m_reader.readByte(token)) {
        QByteArrayView text;
        quint32 place = 0;
        if (token == End) {
            return true;
        }
        if (token == Literal ? !m_reader.readUintvar(place)
                             : takeValue(token, text) == Step::Failed) {
            return false;
        }
    }
    return false;
}

/// takeName sets `name` to that of a tag; a name from the table counts without its prefix. Names of
/// no interest that stand in the table are Literal.
bool RightsReader::takeName(quint8 token, quint8 &name)
{
    name = token & NameBits;
    quint32 place = 0;
    if (name != Literal) {
        return true;
    }
    if (!m_reader.readUintvar(place)) {
        return false;
    }
    const QByteArrayView text = tableText(place);
    const QByteArrayView local = text.sliced(text.lastIndexOf(':') + 1);
    if (local == "rights") {
        name = Rights;
    } else if (local == "asset") {
        name = Asset;
    } else if (local == "uid") {
        name = Uid;
    }
    return true;
}

/// enter takes what stands between the name of a tag and its content.
bool RightsReader::enter(quint8 token, quint8 name)
{
    if ((token & HasAttributes) != 0 && !skipAttributes()) {
        return false;
    }
    if ((token & HasContent) != 0) {
        m_open.append(name);
        m_assets += name == Asset ? 1 : 0;
    }
    return true;
}

bool RightsReader::leave()
{
    if (m_open.isEmpty()) {
        return false;
    }
    m_assets -= m_open.last() == Asset ? 1 : 0;
    m_open.removeLast();
    return true;
}

/// readBody looks for the identifier of the content, up to the end of the root or a mistake.
void RightsReader::readBody(Container &rights)
{
    quint8 token = 0;
    while (!m_open.isEmpty() && m_reader.readByte(token)) {
        QByteArrayView text;
        const bool isUid = m_open.last() == Uid && m_assets > 0;
        bool isFine = true;
        if (token == End) {
            isFine = leave();
        } else if (token == Instruction) {
            isFine = skipAttributes();
        } else if (const Step step = takeValue(token, text); step == Step::NoValue) {
            quint8 name = 0;
            isFine = takeName(token, name) && enter(token, name);
        } else {
            isFine = step == Step::Done;
        }
        if (!isFine) {
            return;
        }
        if (isUid && rights.contentUri.isEmpty()) {
            rights.contentUri = textIn(text);
        }
    }
}

} // namespace

MaybeContainer readRightsWbxml(QByteArrayView head)
{
    RightsReader reader(head.first(qMin(head.size(), kLongestRights)));
    if (!reader.readStart()) {
        return {};
    }
    Container rights;
    rights.kind = DRM_KIND_RIGHTS;
    reader.readBody(rights);
    return rights;
}

} // namespace wmsg::drm
