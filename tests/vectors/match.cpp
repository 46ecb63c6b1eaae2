// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/match.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

namespace vectors {

static QString shown(const QJsonValue &value)
{
    if (value.isUndefined()) {
        return QStringLiteral("nothing");
    }
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

static std::optional<Mismatch> mismatch(const QString &path, const QJsonValue &expected,
                                        const QJsonValue &got)
{
    return Mismatch{path, shown(expected), shown(got)};
}

/// The value of the only key of `value`, when that key is `key`; else undefined.
static QJsonValue onlyKey(const QJsonValue &value, const char *key)
{
    const QJsonObject object = value.toObject();
    return object.size() == 1 ? object.value(QLatin1String(key))
                              : QJsonValue(QJsonValue::Undefined);
}

static bool isEmptyText(const QJsonValue &value)
{
    return value.isNull() || (value.isString() && value.toString().isEmpty());
}

/// A null date-time is an invalid one too.
static bool isInvalidDateTime(const QJsonValue &value)
{
    return value.isNull() || onlyKey(value, "invalid").toBool();
}

static std::optional<Mismatch> matchList(const QString &path, const QJsonArray &expected,
                                         const QJsonArray &got)
{
    if (expected.size() != got.size()) {
        return mismatch(path, expected, got);
    }
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const QString element = QStringLiteral("%1[%2]").arg(path).arg(i);
        if (auto difference = matchValue(element, expected.at(i), got.at(i))) {
            return difference;
        }
    }
    return std::nullopt;
}

static std::optional<Mismatch> matchObject(const QString &path, const QJsonObject &expected,
                                           const QJsonObject &got)
{
    QStringList keys = expected.keys();
    for (const QString &key : got.keys()) {
        if (!expected.contains(key)) {
            keys.append(key);
        }
    }
    for (const QString &key : keys) {
        const QString member = path + QLatin1Char('.') + key;
        if (!expected.contains(key) || !got.contains(key)) {
            return mismatch(member, expected.value(key), got.value(key));
        }
        if (key == QLatin1String("log") && expected.value(key).isArray()) {
            if (!matchLog(expected.value(key).toArray(), got.value(key).toString())) {
                return mismatch(member, expected.value(key), got.value(key));
            }
        } else if (auto difference = matchValue(member, expected.value(key), got.value(key))) {
            return difference;
        }
    }
    return std::nullopt;
}

std::optional<Mismatch> matchValue(const QString &path, const QJsonValue &expected,
                                   const QJsonValue &got)
{
    bool equal = expected == got;
    if (onlyKey(expected, "any").toBool()) {
        equal = true;
    } else if (const QJsonValue prefix = onlyKey(expected, "prefix"); prefix.isString()) {
        equal = got.isString() && got.toString().startsWith(prefix.toString());
    } else if (onlyKey(expected, "nn").isString()) {
        equal = got.isString() && got.toString().isEmpty();
    } else if (onlyKey(expected, "invalid").toBool()) {
        equal = isInvalidDateTime(got);
    } else if (expected.isString() && expected.toString().isEmpty()) {
        equal = isEmptyText(got);
    } else if (expected.isArray() && got.isArray()) {
        return matchList(path, expected.toArray(), got.toArray());
    } else if (expected.isObject() && got.isObject()) {
        return matchObject(path, expected.toObject(), got.toObject());
    }
    return equal ? std::nullopt : mismatch(path, expected, got);
}

/// The expected texts as the pieces between the places where anything may stand.
static QStringList logPieces(const QJsonArray &expected)
{
    QStringList pieces{QString()};
    for (const QJsonValue &element : expected) {
        const QJsonValue prefix = onlyKey(element, "prefix");
        pieces.last() +=
            (prefix.isString() ? prefix : element).toString().remove(QLatin1Char('\n'));
        if (prefix.isString()) {
            pieces.append(QString());
        }
    }
    return pieces;
}

bool matchLog(const QJsonArray &expected, const QString &logged)
{
    const QStringList pieces = logPieces(expected);
    QString rest = logged;
    rest.remove(QLatin1Char('\n'));
    if (pieces.size() == 1) {
        return rest == pieces.first();
    }
    if (!rest.startsWith(pieces.first())) {
        return false;
    }
    qsizetype from = pieces.first().size();
    for (qsizetype i = 1; i < pieces.size() - 1; ++i) {
        const qsizetype at = rest.indexOf(pieces.at(i), from);
        if (at < 0) {
            return false;
        }
        from = at + pieces.at(i).size();
    }
    return rest.size() - from >= pieces.last().size() && rest.endsWith(pieces.last());
}

/// The top level of a result: "prefix" is there the beginning of the bytes, keys out of reach are
/// not compared, and some keys may be left out of the vector.
std::optional<Mismatch> matchResult(const QJsonObject &expected, const Result &result)
{
    QJsonObject wanted = expected;
    QJsonObject got = result.values;
    if (wanted.contains(QLatin1String("prefix"))) {
        wanted.insert(QLatin1String("prefix"),
                      QJsonObject{{"prefix", wanted.value(QLatin1String("prefix"))}});
    }
    for (const QString &key : result.mayBeLeftOut) {
        if (!expected.contains(key)) {
            got.remove(key);
        }
    }
    return matchObject(QStringLiteral("out"), wanted, got);
}

} // namespace vectors
