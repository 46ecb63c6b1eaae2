// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/record_fields.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonValue>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::service {

void RecordFields::text(QLatin1String name, QString &value)
{
    if (!has(name)) {
        return;
    }
    const QJsonValue read = m_json.value(name);
    if (!read.isString() || read.toString().size() > kLongestText) {
        refuse(u"%1 is no text, or too long"_s.arg(name));
        return;
    }
    value = read.toString();
}

void RecordFields::texts(QLatin1String name, QStringList &value)
{
    if (!has(name)) {
        return;
    }
    const QJsonArray read = m_json.value(name).toArray();
    const bool fits = m_json.value(name).isArray() && read.size() <= kLongestList
        && std::all_of(read.begin(), read.end(), [](const QJsonValue &one) {
                          return one.isString() && one.toString().size() <= kLongestText;
                      });
    if (!fits) {
        refuse(u"%1 is no list of texts, or too long"_s.arg(name));
        return;
    }
    value.clear();
    for (const auto &one : read) {
        value.append(one.toString());
    }
}

void RecordFields::bytes(QLatin1String name, QByteArray &value, qsizetype longest)
{
    if (!has(name)) {
        return;
    }
    const QString read = m_json.value(name).toString();
    const QByteArray bytes = QByteArray::fromHex(read.toLatin1());
    // What is no digit is skipped by that, and then missing.
    if (!m_json.value(name).isString() || bytes.size() > longest
        || QString::fromLatin1(bytes.toHex()) != read) {
        refuse(u"%1 is no row of bytes, or too long"_s.arg(name));
        return;
    }
    value = bytes;
}

void RecordFields::word(QLatin1String name, std::initializer_list<QLatin1String> words, int &value)
{
    QString read;
    text(name, read);
    const auto *found = std::find(words.begin(), words.end(), read);
    if (found == words.end()) {
        refuse(u"%1 is none of the words that it may be"_s.arg(name));
        return;
    }
    value = static_cast<int>(found - words.begin());
}

void RecordFields::need(QLatin1String name)
{
    if (!has(name)) {
        refuse(u"%1 is missing"_s.arg(name));
    }
}

void RecordFields::refuse(const QString &reason)
{
    if (m_reason.isEmpty()) {
        m_reason = reason;
    }
}

bool RecordFields::number64(QLatin1String name, qint64 &value, qint64 lowest, qint64 highest)
{
    if (!has(name)) {
        return false;
    }
    // Two defaults that differ: a number that is none, or has a fraction, gives each of them.
    const QJsonValue read = m_json.value(name);
    const bool isWhole = read.isDouble() && read.toInteger(0) == read.toInteger(1);
    if (!isWhole || read.toInteger() < lowest || read.toInteger() > highest) {
        refuse(u"%1 is no number, or outside its limits"_s.arg(name));
        return false;
    }
    value = read.toInteger();
    return true;
}

} // namespace wmsg::service
