// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/common/pdu_files.h"

#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSaveFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {
Q_LOGGING_CATEGORY(logPdus, "wmsg.sim.pdus", QtWarningMsg)
} // namespace

QString PduFiles::open(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        return u"%1: the folder cannot be made"_s.arg(folder);
    }
    const QStringList names = QDir(folder).entryList({u"*.pdu"_s}, QDir::Files);
    for (const QString &name : names) {
        m_number = std::max(m_number, name.section(u'-', 0, 0).toInt());
    }
    m_folder = folder;
    return {};
}

void PduFiles::write(const QString &name, const QByteArray &pdu)
{
    if (!isOpen()) {
        return;
    }
    const QString fileName = u"%1-%2.pdu"_s.arg(++m_number, 4, 10, QLatin1Char('0')).arg(name);
    QSaveFile file(QDir(m_folder).filePath(fileName));
    if (!file.open(QIODevice::WriteOnly) || file.write(pdu) != pdu.size() || !file.commit()) {
        qCWarning(logPdus, "%s: %s", qUtf8Printable(fileName), qUtf8Printable(file.errorString()));
    }
}

} // namespace wmsg::sim
