// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/fault_plan.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QUrl>

#include <limits>

using namespace Qt::StringLiterals;

// plan := { line }
// line := [ occasion which fault { fault } ] [ "#" comment ]
// which := N | N "-" M | N "-" | "*"                      fault := word [ "=" value ]

namespace wmsg::sim {

namespace {

constexpr qint64 kNoEnd = std::numeric_limits<qint64>::max();
constexpr qint64 kHighestNumber = qint64(1) << 40;
constexpr double kLongestDelay = 3600;

struct OccasionWord {
    QLatin1String word;
    Occasion occasion;
};
constexpr OccasionWord kOccasionWords[] = {
    {"request"_L1, Occasion::Request},         {"send"_L1, Occasion::Send},
    {"retrieve"_L1, Occasion::Retrieve},       {"notify-response"_L1, Occasion::NotifyResponse},
    {"acknowledge"_L1, Occasion::Acknowledge}, {"notify"_L1, Occasion::Notify},
    {"report"_L1, Occasion::Report},
};

bool isPush(Occasion occasion)
{
    return occasion == Occasion::Notify || occasion == Occasion::Report;
}

template <typename Number>
bool readNumber(const QString &value, qint64 lowest, qint64 highest, std::optional<Number> &out)
{
    bool isNumber = false;
    const qint64 number = value.toLongLong(&isNumber);
    if (!isNumber || number < lowest || number > highest) {
        return false;
    }
    out = static_cast<Number>(number);
    return true;
}

bool readSeconds(const QString &value, std::optional<int> &milliseconds)
{
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= kLongestDelay)) {
        return false;
    }
    milliseconds = qRound(seconds * 1000);
    return true;
}

bool readUrl(const QString &value, std::optional<QByteArray> &url)
{
    const QUrl parsed(value, QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative()) {
        return false;
    }
    url = parsed.toEncoded();
    return true;
}

bool setFlag(const QString &value, bool &flag)
{
    flag = true;
    return value.isNull();
}

struct FaultWord {
    QLatin1String word;
    bool onPushes;
    bool (*read)(const QString &value, Faults &faults);
};
// clang-format off
constexpr FaultWord kFaultWords[] = {
    {"http-status"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 200, 599, f.httpStatus); }},
    {"response-status"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 129, 255, f.responseStatus); }},
    {"delay"_L1, false, [](const QString &v, Faults &f) { return readSeconds(v, f.delay); }},
    {"up-rate"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 1, kHighestNumber, f.upRate); }},
    {"down-rate"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 1, kHighestNumber, f.downRate); }},
    {"cut-up-after"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 0, kHighestNumber, f.cutUpAfter); }},
    {"cut-after"_L1, false, [](const QString &v, Faults &f) { return readNumber(v, 0, kHighestNumber, f.cutAfter); }},
    {"redirect"_L1, false, [](const QString &v, Faults &f) { return readUrl(v, f.redirect); }},
    {"garbage"_L1, false, [](const QString &v, Faults &f) { return setFlag(v, f.garbage); }},
    {"lost"_L1, true, [](const QString &v, Faults &f) { return setFlag(v, f.lost); }},
    {"doubled"_L1, true, [](const QString &v, Faults &f) { return setFlag(v, f.doubled); }},
};
// clang-format on

QString readOccasion(const QString &word, Occasion &occasion)
{
    for (const OccasionWord &row : kOccasionWords) {
        if (word == row.word) {
            occasion = row.occasion;
            return {};
        }
    }
    return u"\"%1\" is nothing that happens here"_s.arg(word);
}

QString readWhich(const QString &word, qint64 &first, qint64 &last)
{
    static const QRegularExpression form(u"^(?:\\*|(\\d{1,9})(?:(-)(\\d{1,9})?)?)$"_s);
    const auto match = form.match(word);
    first = match.captured(1).isEmpty() ? 1 : match.captured(1).toLongLong();
    last = first;
    if (word == "*"_L1 || (match.hasCaptured(2) && match.captured(3).isEmpty())) {
        last = kNoEnd;
    } else if (!match.captured(3).isEmpty()) {
        last = match.captured(3).toLongLong();
    }
    return match.hasMatch() && first >= 1 && last >= first
        ? QString()
        : u"\"%1\" is not which one: N, N-M, N- or *, counted from 1"_s.arg(word);
}

QString readFault(const QString &text, Occasion occasion, Faults &faults)
{
    const qsizetype equals = text.indexOf(u'=');
    const QString word = equals < 0 ? text : text.first(equals);
    const QString value = equals < 0 ? QString() : text.sliced(equals + 1);
    for (const FaultWord &row : kFaultWords) {
        if (word != row.word) {
            continue;
        }
        if (row.onPushes != isPush(occasion)) {
            return u"\"%1\" cannot happen to this"_s.arg(word);
        }
        return row.read(value, faults) ? QString() : u"\"%1\" has no good value"_s.arg(text);
    }
    return u"\"%1\" is no fault"_s.arg(word);
}

template <typename T> void take(std::optional<T> &mine, const std::optional<T> &other)
{
    if (other) {
        mine = other;
    }
}

} // namespace

void Faults::add(const Faults &other)
{
    take(httpStatus, other.httpStatus);
    take(responseStatus, other.responseStatus);
    take(delay, other.delay);
    take(upRate, other.upRate);
    take(downRate, other.downRate);
    take(cutUpAfter, other.cutUpAfter);
    take(cutAfter, other.cutAfter);
    take(redirect, other.redirect);
    garbage = garbage || other.garbage;
    lost = lost || other.lost;
    doubled = doubled || other.doubled;
}

QString FaultPlan::read(const QString &name, const QString &text)
{
    QList<Rule> rules;
    const QStringList lines = text.split(u'\n');
    for (qsizetype n = 0; n < lines.size(); ++n) {
        const QString line = lines[n].section(u'#', 0, 0).simplified();
        if (line.isEmpty()) {
            continue;
        }
        Rule rule;
        const QString problem = readRule(line, rule);
        if (!problem.isEmpty()) {
            return u"%1:%2: %3"_s.arg(name).arg(n + 1).arg(problem);
        }
        rules.append(rule);
    }
    m_rules.append(rules);
    return {};
}

QString FaultPlan::readRule(const QString &line, Rule &rule)
{
    const QStringList words = line.split(u' ');
    QString problem = readOccasion(words.first(), rule.occasion);
    if (problem.isEmpty() && words.size() < 3) {
        return u"a line has an occasion, which one, and what happens"_s;
    }
    if (problem.isEmpty()) {
        problem = readWhich(words[1], rule.first, rule.last);
    }
    for (qsizetype n = 2; n < words.size() && problem.isEmpty(); ++n) {
        problem = readFault(words[n], rule.occasion, rule.faults);
    }
    if (problem.isEmpty() && rule.faults.responseStatus && rule.occasion != Occasion::Send) {
        return u"\"response-status\" cannot happen to this"_s;
    }
    return problem;
}

Faults FaultPlan::next(Occasion occasion)
{
    const qint64 count = ++m_counts[static_cast<size_t>(occasion)];
    Faults faults;
    for (const Rule &rule : m_rules) {
        if (rule.occasion == occasion && rule.first <= count && count <= rule.last) {
            faults.add(rule.faults);
        }
    }
    return faults;
}

bool FaultPlan::watchesUploads() const
{
    for (const Rule &rule : m_rules) {
        if (rule.faults.upRate || rule.faults.cutUpAfter) {
            return true;
        }
    }
    return false;
}

} // namespace wmsg::sim
