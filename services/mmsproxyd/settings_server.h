// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_listener.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace wmsg::proxy {

/// The answer of the settings server: the largest message in bytes, and the URI of the MMSC, in at
/// most 128 bytes. A longer URI than the answer has room for gives an empty array.
[[nodiscard]] QByteArray settingsAnswer(qint32 maxSize, const QString &uri);

/// SettingsServer tells applications two settings: it answers whoever connects, and closes. What
/// they send is not read.
class SettingsServer : public QObject {
    Q_OBJECT

public:
    explicit SettingsServer(QByteArray answer, QObject *parent = nullptr);

    /// listen begins to answer; see LocalListener.
    [[nodiscard]] QString listen(const QString &path, mode_t mode);

private:
    void answer(qintptr descriptor) const;

    QByteArray m_answer;
    service::LocalListener m_listener;
};

} // namespace wmsg::proxy
