// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/vectors/operations.h"

#include <QtCore/QJsonArray>

#include <algorithm>
#include <iterator>

/// Scripts: one operation after the other on the same object.

namespace vectors {

/// One step that a script can name; `arguments` tells how many values follow the name.
template <typename Object> struct ScriptStep {
    const char *name;
    int arguments;
    QJsonValue (*run)(Object &object, const QJsonArray &step);
};

/// Runs the steps of a vector, of those that are known; the results of all.
template <typename Object, size_t Size>
Result runScript(Object &object, const ScriptStep<Object> (&known)[Size], const QJsonObject &in)
{
    QJsonArray results;
    const QJsonArray steps = in.value("steps").toArray();
    for (const QJsonValue &value : steps) {
        const QJsonArray step = value.toArray();
        const QString name = step.at(0).toString();
        const auto row = std::find_if(std::begin(known), std::end(known), [&](const auto &one) {
            return name == QLatin1String(one.name) && step.size() == one.arguments + 1;
        });
        if (row == std::end(known)) {
            throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
        }
        results.append(row->run(object, step));
    }
    return Result().set("results", results);
}

} // namespace vectors
