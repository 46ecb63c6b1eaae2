// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/drm_container_p.h"
#include "platform/drmclient/drm_text_p.h"

#include <QtCore/QStringDecoder>
#include <QtCore/QXmlStreamReader>

#include <algorithm>

// version 1: <o-ex:rights> of the rights language, with the identifier of the content in
//            o-ex:agreement / o-ex:asset / o-ex:context / o-dd:uid
// version 2: <roap:protectedRO> with <roap:ro riURL="..."> in it, or <roap:ro> alone; the rights of
//            version 1 are inside

namespace wmsg::drm {

namespace {

struct RootRow {
    QLatin1String name;
    QLatin1String usualPrefix; ///< stands for the namespace where that is not declared
    QLatin1String nameSpace; ///< what it begins with
};

constexpr RootRow kRoots[] = {
    {QLatin1String("rights"), QLatin1String("o-ex"), QLatin1String("http://odrl.net/")},
    {QLatin1String("protectedRO"), QLatin1String("roap"), QLatin1String("urn:oma:bac:dldrm:roap-")},
    {QLatin1String("ro"), QLatin1String("roap"), QLatin1String("urn:oma:bac:dldrm:roap-")},
};

QStringView localName(QStringView name)
{
    return name.sliced(name.indexOf(QLatin1Char(':')) + 1);
}

QStringView prefix(QStringView name)
{
    return name.first(qMax(name.indexOf(QLatin1Char(':')), 0));
}

bool isRoot(const QXmlStreamReader &xml, const RootRow &row)
{
    if (localName(xml.qualifiedName()) != row.name) {
        return false;
    }
    const QStringView used = prefix(xml.qualifiedName());
    const QString declaration =
        used.isEmpty() ? QStringLiteral("xmlns") : QStringLiteral("xmlns:%1").arg(used);
    const QXmlStreamAttributes attributes = xml.attributes();
    const bool isDeclared = attributes.hasAttribute(declaration);
    return isDeclared ? attributes.value(declaration).startsWith(row.nameSpace)
                      : used == row.usualPrefix;
}

/// toRoot moves to the root element; false when it is not one of rights.
bool toRoot(QXmlStreamReader &xml)
{
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement) {
            return std::any_of(std::begin(kRoots), std::end(kRoots),
                               [&xml](const RootRow &row) { return isRoot(xml, row); });
        }
    }
    return false;
}

/// What is looked for on the way through a rights object.
class RightsScan {
public:
    explicit RightsScan(Container &rights) : m_rights(rights) { }

    void enter(const QXmlStreamReader &xml)
    {
        const QStringView name = localName(xml.qualifiedName());
        m_assets += name == QLatin1String("asset") ? 1 : 0;
        m_isUid = name == QLatin1String("uid");
        if (name == QLatin1String("ro") && m_rights.rightsIssuerUrl.isEmpty()) {
            const QXmlStreamAttributes attributes = xml.attributes();
            m_rights.rightsIssuerUrl = textIn(attributes.value(QLatin1String("riURL")).toUtf8());
        }
    }

    void leave(const QXmlStreamReader &xml)
    {
        m_isUid = false;
        m_assets -= localName(xml.qualifiedName()) == QLatin1String("asset") ? 1 : 0;
    }

    void readText(QStringView text)
    {
        if (m_isUid && m_assets > 0 && m_rights.contentUri.isEmpty()) {
            m_rights.contentUri = textIn(text.toUtf8());
        }
    }

private:
    Container &m_rights;
    int m_assets = 0; ///< how many of them are open
    bool m_isUid = false;
};

/// looksLikeXml tells apart what need not be parsed: it begins with "<".
bool looksLikeXml(const QString &text)
{
    return QStringView(text).trimmed().startsWith(QLatin1Char('<'));
}

/// textOf returns UTF-16 as its mark tells, and anything else as UTF-8 with U+FFFD for what is
/// none: a wrong byte must not hide that a text is rights, nor must a wrong name of an encoding.
QString textOf(QByteArrayView head)
{
    const bool isUtf16 = head.startsWith("\xFF\xFE") || head.startsWith("\xFE\xFF");
    return QStringDecoder(isUtf16 ? QStringDecoder::Utf16 : QStringDecoder::Utf8)(head);
}

} // namespace

MaybeContainer readRightsXml(QByteArrayView head)
{
    const QString text = textOf(head.first(qMin(head.size(), kLongestRights)));
    if (!looksLikeXml(text)) {
        return {};
    }
    QXmlStreamReader xml(text);
    xml.setNamespaceProcessing(false);
    if (!toRoot(xml)) {
        return {};
    }
    Container rights;
    rights.kind = DRM_KIND_RIGHTS;
    RightsScan scan(rights);
    scan.enter(xml);
    while (!xml.atEnd()) { // a mistake in the text ends it too
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            scan.enter(xml);
            break;
        case QXmlStreamReader::EndElement:
            scan.leave(xml);
            break;
        case QXmlStreamReader::Characters:
            scan.readText(xml.text());
            break;
        default: // comments and the like
            break;
        }
    }
    return rights;
}

} // namespace wmsg::drm
