// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <memory>

namespace wmsg::fuzz {

/// needApplication makes the application that sockets and timers want, and keeps what is fuzzed
/// from writing to the log.
inline void needApplication()
{
    static int count = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static const auto application = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*=false"));
        return std::make_unique<QCoreApplication>(count, arguments);
    }();
}

} // namespace wmsg::fuzz
