// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

/// OutgoingFile is a name for a mail file that no other process uses: an empty file is created
/// under it that must not have existed. A message is then saved over it, by way of the same name
/// with ".tmp" behind it; no other user can read it there. Unless keep() is called, the reservation
/// goes with the object.
class OutgoingFile {
public:
    /// OutgoingFile() reserves the first name that is free, of all that there are.
    OutgoingFile();
    ~OutgoingFile();

    OutgoingFile(const OutgoingFile &) = delete;
    OutgoingFile &operator=(const OutgoingFile &) = delete;

    /// path returns the name; it is null when none was to be had.
    [[nodiscard]] const QString &path() const { return m_path; }

    /// keep leaves the file to whom it was handed.
    void keep() { m_isKept = true; }

private:
    QString m_path;
    bool m_isKept = false;
};
