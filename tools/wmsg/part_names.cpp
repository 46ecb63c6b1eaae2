// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/part_names.h"

#include <util/mms_util_common.h>

#include <QtCore/QUrl>

namespace wmsg::cli {

// Character by character, as a comparison without regard to case does.
QString PartNames::keyOf(const QString &name)
{
    QString key = MMS_UTIL_Common::parseCid(name.trimmed());
    for (QChar &c : key) {
        c = c.toCaseFolded();
    }
    return key;
}

void PartNames::add(const QString &name, int number)
{
    const QString key = keyOf(name);
    if (!key.isEmpty() && !m_numbers.contains(key)) {
        m_numbers.insert(key, number);
    }
}

std::optional<int> PartNames::find(const QString &reference) const
{
    auto found = m_numbers.constFind(keyOf(reference));
    if (found == m_numbers.constEnd() && reference.contains(u'%')) {
        found = m_numbers.constFind(keyOf(QUrl::fromPercentEncoding(reference.toUtf8())));
    }
    return found == m_numbers.constEnd() ? std::nullopt : std::optional<int>(*found);
}

} // namespace wmsg::cli
