// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wmmscontenttype.h"

#include "mms/codec/well_known_media.h"

namespace {

using wmsg::codec::kMediaIndex;
using wmsg::codec::kWellKnownMedia;
using wmsg::codec::kWellKnownMediaCount;
using wmsg::codec::MediaType;

// A string over the table's own characters: nothing is allocated or copied.
QString tableText(const char16_t *text, int size)
{
    return QString::fromRawData(reinterpret_cast<const QChar *>(text), size);
}

QString typeName()
{
    return QStringLiteral("type");
}
QString startName()
{
    return QStringLiteral("start");
}

QString joined(const QString &mainType, const QString &subType)
{
    return mainType + QLatin1Char('/') + subType;
}

// The value without a double quote at its start and one at its end, each dropped on its own.
QString unquoted(QStringView value)
{
    if (value.startsWith(QLatin1Char('"'))) {
        value = value.mid(1);
    }
    if (value.endsWith(QLatin1Char('"'))) {
        value.chop(1);
    }
    return value.toString();
}

} // namespace

void WMMSContentType::setMimeType(const QString &mimeType)
{
    if (const int media = getMimeID(mimeType); media >= 0) {
        setWellKnownMedia(
            static_cast<quint8>(media)); // the same texts, without memory of their own
        return;
    }
    const auto slash = mimeType.indexOf(QLatin1Char('/'));
    m_mainType = mimeType.left(slash);
    m_subType = mimeType.mid(slash + 1);
}

void WMMSContentType::setWellKnownMedia(quint8 id)
{
    if (id >= kWellKnownMediaCount) {
        setMimeType(QString());
        return;
    }
    const MediaType &media = kWellKnownMedia[id];
    m_mainType = tableText(media.text, media.slash);
    m_subType = tableText(media.text + media.slash + 1, media.size - media.slash - 1);
}

QString WMMSContentType::getMimeType() const
{
    return isEmpty() ? QLatin1String("") : joined(m_mainType, m_subType);
}

bool WMMSContentType::isMimeType(QLatin1String mimeType) const
{
    if (isEmpty()) {
        return mimeType.isEmpty();
    }
    return mimeType.size() == m_mainType.size() + 1 + m_subType.size()
        && mimeType[m_mainType.size()] == QLatin1Char('/') && mimeType.startsWith(m_mainType)
        && mimeType.endsWith(m_subType);
}

QString WMMSContentType::getMimeType(unsigned char id)
{
    if (id >= kWellKnownMediaCount) {
        return QLatin1String("");
    }
    return tableText(kWellKnownMedia[id].text, kWellKnownMedia[id].size);
}

int WMMSContentType::getMimeID(const QString &mimeType)
{
    return kMediaIndex.find(mimeType);
}

int WMMSContentType::wellKnownId() const
{
    return isEmpty() ? -1 : kMediaIndex.find(m_mainType, m_subType);
}

void WMMSContentType::setParam(const QString &name, const QString &value)
{
    if (value.isEmpty()) {
        m_params.remove(name);
    } else {
        m_params.insert(name, value);
    }
}

QString WMMSContentType::getParamType() const
{
    return getParam(typeName());
}

void WMMSContentType::setParamType(const QString &value)
{
    setParam(typeName(), value);
}

QString WMMSContentType::getParamStart() const
{
    return getParam(startName());
}

void WMMSContentType::setParamStart(const QString &value)
{
    setParam(startName(), value);
}

// Kept: a DRM message with a boundary is not decoded further.
bool WMMSContentType::needDecode() const
{
    return isMimeType(QLatin1String("application/vnd.wap.multipart.related"))
        || isMimeType(QLatin1String("application/vnd.wap.multipart.mixed"))
        || (isMimeType(QLatin1String("application/vnd.oma.drm.message"))
            && getParam(QStringLiteral("boundary")).isEmpty());
}

// Kept: the blank stands also without parameters.
QString WMMSContentType::toString() const
{
    QString text = getMimeType() + QLatin1Char(' ');
    if (!m_params.isEmpty()) {
        text += QLatin1Char(';');
    }
    for (auto param = m_params.cbegin(); param != m_params.cend(); ++param) {
        text += param.key() + QLatin1Char('=') + param.value() + QLatin1Char(';');
    }
    return text;
}

QString WMMSContentType::toStringWithQuotes() const
{
    QString text = getMimeType() + QLatin1Char(' ');
    for (auto param = m_params.cbegin(); param != m_params.cend(); ++param) {
        text += QLatin1Char(';') + param.key() + QLatin1String("=\"") + param.value()
            + QLatin1Char('"');
    }
    return text;
}

// content-type := media-type (";" | " ") name "=" value *( ";" name "=" value )
// Kept: nothing is trimmed, so what stands between two pairs belongs to the next name.
bool WMMSContentType::fromString(const QString &given)
{
    const QString text = QString::fromLatin1(given.toLatin1());
    const auto semicolon = text.indexOf(QLatin1Char(';'));
    if (semicolon < 0) {
        setMimeType(text);
        return true;
    }
    const auto blank = text.indexOf(QLatin1Char(' '));
    const auto cut = blank >= 0 && blank < semicolon ? blank : semicolon;
    setMimeType(text.left(cut));

    auto position = cut + 1;
    while (true) {
        const auto equals = text.indexOf(QLatin1Char('='), position);
        if (equals < 0) {
            return true;
        }
        const QString name = text.mid(position, equals - position);
        const auto next = text.indexOf(QLatin1Char(';'), equals + 1);
        const auto end = next < 0 ? text.size() : next;
        setParam(name, unquoted(QStringView(text).mid(equals + 1, end - equals - 1)));
        if (next < 0) {
            return true;
        }
        position = next + 1;
    }
}
