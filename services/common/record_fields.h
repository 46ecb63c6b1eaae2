// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <limits>

namespace wmsg::service {

/// RecordFields reads the fields of a record in a spool. A field that is absent leaves the value
/// as it is; one of another type or outside its limits makes the record unusable, and the first of
/// these is the reason. A file may hold anything, so every value has a limit.
class RecordFields {
public:
    static constexpr qsizetype kLongestText = 8192;
    static constexpr qsizetype kLongestList = 256;

    explicit RecordFields(QJsonObject json) : m_json(std::move(json)) { }

    [[nodiscard]] bool has(QLatin1String name) const { return m_json.contains(name); }
    void text(QLatin1String name, QString &value);
    void texts(QLatin1String name, QStringList &value);
    template <typename Number>
    void number(QLatin1String name, Number &value, qint64 lowest = 0,
                qint64 highest = std::numeric_limits<Number>::max())
    {
        qint64 read = static_cast<qint64>(value);
        if (number64(name, read, lowest, highest)) {
            value = static_cast<Number>(read);
        }
    }
    /// Reads bytes, which stand as their hex digits.
    void bytes(QLatin1String name, QByteArray &value, qsizetype longest);
    /// Reads a word of those given, as its place among them.
    void word(QLatin1String name, std::initializer_list<QLatin1String> words, int &value);
    /// What the record must hold.
    void need(QLatin1String name);
    void refuse(const QString &reason);

    [[nodiscard]] bool isUsable() const { return m_reason.isEmpty(); }
    [[nodiscard]] QString reason() const { return m_reason; }

private:
    bool number64(QLatin1String name, qint64 &value, qint64 lowest, qint64 highest);

    QJsonObject m_json;
    QString m_reason;
};

} // namespace wmsg::service
