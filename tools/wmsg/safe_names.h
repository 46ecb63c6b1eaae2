// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>

namespace wmsg::cli {

/// A file name that does no harm wherever it is used, made from one that a message brings: without
/// directories, control characters and what shells and file systems treat in a special way, neither
/// hidden nor reserved nor too long. A name of which nothing is left becomes `fallback` with the
/// extension, if there is one.
[[nodiscard]] QString safeFileName(const QString &name, const QString &fallback);

/// As safeFileName(), in ASCII letters, digits, ".", "-" and "_" alone and at most 40 characters
/// long: a name that every phone takes for a part.
[[nodiscard]] QString safePartName(const QString &name, const QString &fallback);

/// Gives names that differ from each other, also where case does not count.
class UniqueNames {
public:
    /// `name`, or with a number in front of its extension when that was given before: a-2.jpg.
    [[nodiscard]] QString take(const QString &name);

private:
    QSet<QString> m_taken;
};

} // namespace wmsg::cli
