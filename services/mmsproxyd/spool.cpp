// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/spool.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

RecordBoxes::Layout layout()
{
    return {"message",
            {1, Spool::kLongestRecord}, // in files: readers refuse what is above
            {
                {"mail"_L1, "mail"_L1}, // in the order of Spool::Part
                {"pdu"_L1, "pdu"_L1},
                {"note"_L1, "note"_L1},
                {"part"_L1, "pdu"_L1},
            }};
}

} // namespace

Spool::Spool(QString folder) : RecordBoxes(std::move(folder), layout()) { }

QString Spool::open()
{
    QString problem = RecordBoxes::open();
    for (const QString &folder : {handedFolder(), returnedFolder()}) {
        problem = problem.isEmpty() ? usePrivateFolder(folder) : problem;
    }
    return problem;
}

std::vector<Spool::Stored> Spool::restore(Box box)
{
    auto restored = RecordBoxes::restore(box);
    removeStrays(box);
    return restored;
}

QString Spool::path(Box box, MessageId id, Part part) const
{
    return filePath(box, id, static_cast<size_t>(part));
}

bool Spool::has(Box box, MessageId id, Part part) const
{
    return hasFile(box, id, static_cast<size_t>(part));
}

QString Spool::handedFolder() const
{
    return folder() + u"/handed"_s;
}

QString Spool::returnedFolder() const
{
    return folder() + u"/returned"_s;
}

} // namespace wmsg::proxy
