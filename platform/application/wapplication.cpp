// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/application/wapplication.h"

#include <QtCore/QCoreApplication>

QString WApplication::getAppName()
{
    return QCoreApplication::instance() ? QCoreApplication::applicationName() : QStringLiteral("");
}
