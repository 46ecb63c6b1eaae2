// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor_view.h"

#include "tools/wmsg/text_view.h"

#include <QtCore/QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kVerdictWidth = 9;
constexpr qsizetype kCheckWidth = 28;

QString wordOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Ok:
        return u"ok"_s;
    case Verdict::Note:
        return u"note"_s;
    case Verdict::Problem:
        break;
    }
    return u"problem"_s;
}

QString sumOf(const QList<Diagnosis> &findings)
{
    const qsizetype problems = countOf(findings, Verdict::Problem);
    const qsizetype notes = countOf(findings, Verdict::Note);
    if (problems + notes == 0) {
        return u"all is fine"_s;
    }
    return u"%1, %2"_s.arg(problems == 0 ? u"no problem"_s : counted(problems, "problem"_L1),
                           counted(notes, "note"_L1));
}

} // namespace

qsizetype countOf(const QList<Diagnosis> &findings, Verdict verdict)
{
    return std::count_if(findings.begin(), findings.end(), [verdict](const Diagnosis &finding) {
        return finding.verdict == verdict;
    });
}

QString doctorView(const QList<Diagnosis> &findings)
{
    QString view;
    for (const Diagnosis &finding : findings) {
        view += wordOf(finding.verdict).leftJustified(kVerdictWidth)
            + finding.check.leftJustified(kCheckWidth) + printable(finding.what) + u'\n';
        if (!finding.remedy.isEmpty()) {
            view += QString(kVerdictWidth, u' ') + u"-> "_s + printable(finding.remedy) + u'\n';
        }
    }
    return view + sumOf(findings) + u'\n';
}

QJsonObject doctorJson(const QList<Diagnosis> &findings)
{
    QJsonArray checks;
    for (const Diagnosis &finding : findings) {
        QJsonObject check{{u"check"_s, finding.check},
                          {u"verdict"_s, wordOf(finding.verdict)},
                          {u"what"_s, finding.what}};
        if (!finding.remedy.isEmpty()) {
            check.insert(u"remedy"_s, finding.remedy);
        }
        checks.append(check);
    }
    return {{u"checks"_s, checks},
            {u"problems"_s, countOf(findings, Verdict::Problem)},
            {u"notes"_s, countOf(findings, Verdict::Note)}};
}

} // namespace wmsg::cli
