// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/operations.h"

#include <QtCore/QHash>

namespace vectors {

static QHash<QString, Operation> allOperations()
{
    QHash<QString, Operation> all;
    for (const Operations &group :
         {wspOperations(), entryOperations(), contentTypeOperations(), fieldOperations(),
          partOperations(), messageOperations(), mailFileOperations(), textOperations(),
          toolOperations(), proxyOperations(), smsOperations(), drmOperations()}) {
        for (const Operation &operation : group) {
            all.insert(operation.name, operation);
        }
    }
    return all;
}

const Operation *findOperation(const QString &name)
{
    static const QHash<QString, Operation> all = allOperations();
    const auto found = all.constFind(name);
    return found == all.cend() ? nullptr : &*found;
}

} // namespace vectors
