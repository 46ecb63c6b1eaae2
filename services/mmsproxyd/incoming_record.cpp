// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/incoming_record.h"

#include "services/common/record_fields.h"

#include <QtCore/QJsonArray>

using namespace Qt::StringLiterals;
using wmsg::service::RecordFields;

namespace wmsg::proxy {

namespace {

// In files: never rename. In the order of the enumerations.
constexpr std::initializer_list<QLatin1String> kKinds{"message"_L1, "report"_L1};
constexpr std::initializer_list<QLatin1String> kStages{"announced"_L1, "deferred"_L1, "asked"_L1,
                                                       "ready"_L1, "over"_L1};
constexpr std::initializer_list<QLatin1String> kAnswers{"notify-response"_L1, "acknowledge"_L1};
constexpr qint64 kLatestTime = 1LL << 52; // milliseconds, some 140 000 years

template <typename Enum> QString wordOf(std::initializer_list<QLatin1String> words, Enum value)
{
    return words.begin()[static_cast<int>(value)];
}

template <typename Enum>
void readWord(RecordFields &fields, QLatin1String name, std::initializer_list<QLatin1String> words,
              Enum &value)
{
    int place = 0;
    fields.word(name, words, place);
    value = static_cast<Enum>(place);
}

/// Absent fields are those that have their default.
void insertNumber(QJsonObject &json, QLatin1String name, qint64 value)
{
    if (value != 0) {
        json.insert(name, value);
    }
}

void insertText(QJsonObject &json, QLatin1String name, const QString &value)
{
    if (!value.isNull()) {
        json.insert(name, value);
    }
}

QJsonArray toJson(const QList<Answer> &answers)
{
    QJsonArray array;
    for (const Answer &answer : answers) {
        QJsonObject json{{"kind"_L1, wordOf(kAnswers, answer.kind)}};
        insertText(json, "transactionId"_L1, answer.transactionId);
        insertNumber(json, "status"_L1, answer.status);
        array.append(json);
    }
    return array;
}

QList<Answer> readAnswers(const QJsonValue &value, RecordFields &record)
{
    QList<Answer> answers;
    const QJsonArray array = value.toArray();
    if (!value.isUndefined() && (!value.isArray() || array.size() > RecordFields::kLongestList)) {
        record.refuse(u"answers is no list, or too long"_s);
        return answers;
    }
    for (const auto &one : array) {
        RecordFields fields(one.toObject());
        Answer answer;
        readWord(fields, "kind"_L1, kAnswers, answer.kind);
        fields.text("transactionId"_L1, answer.transactionId);
        fields.number("status"_L1, answer.status);
        if (!fields.isUsable()) {
            record.refuse(u"answers: "_s + fields.reason());
        }
        answers.append(answer);
    }
    return answers;
}

} // namespace

QJsonObject IncomingRecord::toJson() const
{
    QJsonObject json{{"kind"_L1, wordOf(kKinds, kind)}, {"stage"_L1, wordOf(kStages, stage)}};
    insertText(json, "transactionId"_L1, transactionId);
    insertText(json, "location"_L1, location);
    insertNumber(json, "expires"_L1, expires);
    insertNumber(json, "since"_L1, since);
    insertNumber(json, "response"_L1, response);
    insertNumber(json, "attempts"_L1, attempts);
    insertNumber(json, "nextTry"_L1, nextTry);
    insertText(json, "loss"_L1, loss);
    if (!answers.isEmpty()) {
        json.insert("answers"_L1, wmsg::proxy::toJson(answers));
    }
    insertNumber(json, "answerAttempts"_L1, answerAttempts);
    insertNumber(json, "nextAnswer"_L1, nextAnswer);
    insertText(json, "appId"_L1, appId);
    if (!handed.isEmpty()) {
        json.insert("handed"_L1, QJsonArray::fromStringList(handed));
    }
    insertText(json, "messageId"_L1, messageId);
    insertText(json, "to"_L1, to);
    insertNumber(json, "date"_L1, date);
    return json;
}

std::optional<IncomingRecord> IncomingRecord::fromJson(const QJsonObject &json, QString &reason)
{
    RecordFields fields(json);
    IncomingRecord record;
    readWord(fields, "kind"_L1, kKinds, record.kind);
    readWord(fields, "stage"_L1, kStages, record.stage);
    fields.text("transactionId"_L1, record.transactionId);
    fields.text("location"_L1, record.location);
    fields.number("expires"_L1, record.expires, 0, kLatestTime);
    fields.number("since"_L1, record.since, 0, kLatestTime);
    fields.number("response"_L1, record.response);
    fields.number("attempts"_L1, record.attempts);
    fields.number("nextTry"_L1, record.nextTry, 0, kLatestTime);
    fields.text("loss"_L1, record.loss);
    record.answers = readAnswers(json.value("answers"_L1), fields);
    fields.number("answerAttempts"_L1, record.answerAttempts);
    fields.number("nextAnswer"_L1, record.nextAnswer, 0, kLatestTime);
    fields.text("appId"_L1, record.appId);
    fields.texts("handed"_L1, record.handed);
    fields.text("messageId"_L1, record.messageId);
    fields.text("to"_L1, record.to);
    fields.number("date"_L1, record.date, 0, kLatestTime);
    if (record.kind == Kind::Message && record.isFetched()) {
        fields.need("location"_L1);
    }
    for (const QString &name : record.handed) {
        if (name.isEmpty() || name.startsWith(u'.') || name.contains(u'/')) {
            fields.refuse(u"handed names what is no file of the folder"_s);
        }
    }
    reason = fields.reason();
    return fields.isUsable() ? std::optional(record) : std::nullopt;
}

} // namespace wmsg::proxy
