// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <stdexcept>

/// The operations that a vector can name. tests/data/vectors/VECTORS.md tells what each of them
/// takes and gives.

namespace vectors {

/// A vector that cannot be run: a form or a value in it that nobody here knows.
class VectorError : public std::runtime_error {
public:
    explicit VectorError(const QString &what) : std::runtime_error(what.toStdString()) { }
};

/// What an operation gave. A key of the result has to be in the vector too, unless it may be left
/// out there.
struct Result {
    QJsonObject values;
    QSet<QString> mayBeLeftOut;

    Result &set(const QString &key, const QJsonValue &value)
    {
        values.insert(key, value);
        return *this;
    }
};

/// One row: the name, the keys that "in" and "out" may have, and what runs it.
struct Operation {
    const char *name;
    const char *inKeys;
    const char *outKeys;
    Result (*run)(const QJsonObject &in);
};
using Operations = QList<Operation>;

Operations wspOperations();
Operations entryOperations();
Operations contentTypeOperations();
Operations fieldOperations();
Operations partOperations();
Operations messageOperations();
Operations mailFileOperations();
Operations textOperations();
Operations toolOperations();
Operations proxyOperations();
Operations smsOperations();
Operations drmOperations();

/// The row of `name`, null when there is none.
const Operation *findOperation(const QString &name);

} // namespace vectors
