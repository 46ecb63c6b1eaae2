// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/vectors/operations.h"

#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <optional>

/// How an expected result and a result are compared.

namespace vectors {

struct Mismatch {
    QString path;
    QString expected;
    QString got;
};

/// Compares one value. In `expected`, {"any":true} matches everything, {"prefix":p} a text that
/// begins with p, "" an empty or null text, {"nn":""} an empty text that is not null, and
/// {"invalid":true} every date-time that is not valid. Under the key "log" a list of texts is
/// compared with matchLog().
std::optional<Mismatch> matchValue(const QString &path, const QJsonValue &expected,
                                   const QJsonValue &got);

/// Compares the one text that was logged with the list of expected log texts: all put together,
/// line feeds left out. After a {"prefix":p} the text runs on to where the next element begins.
bool matchLog(const QJsonArray &expected, const QString &logged);

/// Compares a whole result with the "out" of a vector.
std::optional<Mismatch> matchResult(const QJsonObject &expected, const Result &result);

} // namespace vectors
