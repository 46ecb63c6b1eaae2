// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_content.h"

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/text_view.h"

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qint64 kMostRepeated = 1 << 20;
constexpr qsizetype kShownName = 80;

QString typeOf(const WMMSMultipart &part)
{
    const WMMSContentType &type = part.getContentType();
    return type.isEmpty() ? u"unknown type"_s : type.getMimeType().left(kShownName);
}

} // namespace

bool isPresentation(const WMMSMultipart &part)
{
    const WMMSContentType &type = part.getContentType();
    return type.isMimeType("application/smil"_L1) || type.isMimeType("application/smil+xml"_L1);
}

HtmlContent::HtmlContent(const WMMSMsg &message)
{
    addLeaves(partsOf(message), QString());
    for (int leaf = 0; leaf < size(); ++leaf) {
        m_names.add(part(leaf).getContentID(), leaf);
        m_names.add(part(leaf).getContentLocation(), leaf);
        m_repeatable += part(leaf).getData().size();
    }
    m_repeatable = std::min(m_repeatable, kMostRepeated);
    for (int leaf = 0; leaf < size(); ++leaf) {
        m_names.add(part(leaf).getContentType().getParam(u"name"_s), leaf);
    }
}

void HtmlContent::addLeaves(const QValueList<WMMSMultipart> &parts, const QString &prefix)
{
    int number = 0;
    for (const WMMSMultipart &part : parts) {
        const QString path = prefix + QString::number(++number);
        if (part.subParts() && !part.subParts()->isEmpty()) {
            addLeaves(*part.subParts(), path + u'.');
        } else {
            m_leaves.append({part, path, htmlMedium(part)});
        }
    }
}

std::optional<int> HtmlContent::find(const QString &reference) const
{
    return m_names.find(reference);
}

std::optional<int> HtmlContent::presentation(const WMMSContentType &type) const
{
    const auto start = find(type.getParamStart());
    if (start && isPresentation(part(*start))) {
        return start;
    }
    for (int leaf = 0; leaf < size(); ++leaf) {
        if (isPresentation(part(leaf))) {
            return leaf;
        }
    }
    return std::nullopt;
}

QString HtmlContent::nameOf(int leaf) const
{
    const WMMSMultipart &named = part(leaf);
    const QString names[] = {named.getContentLocation(), named.getContentType().getParam(u"name"_s),
                             named.getSrc()};
    for (const QString &name : names) {
        if (!name.isEmpty()) {
            return name.left(kShownName);
        }
    }
    return u"part "_s + numberOf(leaf);
}

bool HtmlContent::mayShow(Leaf &leaf)
{
    if (!leaf.isShown) {
        leaf.isShown = true;
        return true;
    }
    const qint64 size = leaf.part.getData().size();
    if (size > m_repeatable) {
        return false;
    }
    m_repeatable -= size;
    return true;
}

void HtmlContent::writeMedium(HtmlWriter &page, int leaf, const QString &alternative)
{
    if (!mayShow(m_leaves[leaf])) {
        page.markup("<p class=\"missing\">"_L1).name(nameOf(leaf));
        page.markup(" is shown above</p>"_L1);
    } else if (part(leaf).getData().isEmpty()) {
        page.markup("<p class=\"missing\">"_L1).name(nameOf(leaf)).markup(" is empty</p>"_L1);
    } else {
        embed(page, m_leaves[leaf], alternative.isEmpty() ? nameOf(leaf) : alternative);
    }
}

void HtmlContent::embed(HtmlWriter &page, const Leaf &leaf, const QString &alternative)
{
    QByteArrayView bytes = leaf.part.getData().view();
    switch (leaf.medium.kind) {
    case MediumKind::Picture:
        page.markup("<img alt=\""_L1).attribute(alternative).markup("\" src=\"data:"_L1);
        break;
    case MediumKind::Sound:
        page.markup("<audio controls preload=\"metadata\" src=\"data:"_L1);
        break;
    case MediumKind::Film:
        page.markup("<video controls playsinline preload=\"metadata\" src=\"data:"_L1);
        break;
    case MediumKind::Text:
        page.markup("<p class=\"text\" dir=\"auto\">"_L1).block(bytes).markup("</p>"_L1);
        return;
    case MediumKind::Other:
        page.markup("<p class=\"missing\">"_L1).line(typeOf(leaf.part));
        page.markup(" cannot be shown</p>"_L1);
        return;
    }
    const QByteArray bitmap = leaf.medium.type == kWbmp ? bmpOfWbmp(bytes) : QByteArray();
    page.markup(bitmap.isEmpty() ? leaf.medium.type : "image/bmp"_L1).markup(";base64,"_L1);
    page.base64(bitmap.isEmpty() ? bytes : QByteArrayView(bitmap)).markup("\">"_L1);
    page.markup(leaf.medium.kind == MediumKind::Sound      ? "</audio>"_L1
                    : leaf.medium.kind == MediumKind::Film ? "</video>"_L1
                                                           : QLatin1String());
}

void HtmlContent::writeCaption(HtmlWriter &page, int leaf) const
{
    page.name(nameOf(leaf)).markup(" <span class=\"quiet\">"_L1).line(typeOf(part(leaf)));
    page.markup(", "_L1).line(sizeInWords(part(leaf).getData().size())).markup("</span>"_L1);
}

} // namespace wmsg::cli
