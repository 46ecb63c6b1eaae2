// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/doctor_checks.h"

#include <QtCore/QList>

namespace wmsg::cli {

/// What `wmsg doctor` is to look at.
struct DoctorRequest {
    QString spool;
    QString telephonySpool;
    QString mmsc; ///< empty: the one of the settings
    std::chrono::seconds timeout{5};
    bool isOffline = false;
};

/// Makes all checks, in the order to read them: what a later one needs comes before it. Needs the
/// application object of Qt.
[[nodiscard]] QList<Diagnosis> examine(const DoctorRequest &request);

} // namespace wmsg::cli
