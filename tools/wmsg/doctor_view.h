// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/doctor_checks.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>

namespace wmsg::cli {

/// The findings for people: a line each, what to do below it, and the sum in the last line.
[[nodiscard]] QString doctorView(const QList<Diagnosis> &findings);

/// The findings for programs.
[[nodiscard]] QJsonObject doctorJson(const QList<Diagnosis> &findings);

/// How many findings have a verdict.
[[nodiscard]] qsizetype countOf(const QList<Diagnosis> &findings, Verdict verdict);

} // namespace wmsg::cli
