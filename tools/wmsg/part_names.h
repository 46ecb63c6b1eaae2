// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// The names that the parts of a message go by, to find those that a presentation shows. Names
/// equal each other as MMS_UTIL_Common::isCidEqual() has it; finding one takes the same time in a
/// message of any size.
class PartNames {
public:
    /// Adds a name of part `number`. An empty name, and one that another part has, changes nothing.
    void add(const QString &name, int number);

    /// The part that a reference names: as it stands, or with its %20 and the like resolved.
    [[nodiscard]] std::optional<int> find(const QString &reference) const;

private:
    static QString keyOf(const QString &name);

    QHash<QString, int> m_numbers;
};

} // namespace wmsg::cli
