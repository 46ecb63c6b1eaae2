// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QEvent>

/// QCustomEvent is an event with a number and a pointer, for QCoreApplication::postEvent. It does
/// not own what the pointer designates; its copies point to the same.
class QCustomEvent : public QEvent {
public:
    /// QCustomEvent(type, data) makes an event of a number from QEvent::User (1000) to
    /// QEvent::MaxUser (65535).
    explicit QCustomEvent(int type, void *data = nullptr)
        : QEvent(static_cast<QEvent::Type>(type)), m_data(data)
    {
    }

    [[nodiscard]] void *data() const { return m_data; }
    void setData(void *data) { m_data = data; }

    [[nodiscard]] QCustomEvent *clone() const override { return new QCustomEvent(*this); }

protected:
    QCustomEvent(const QCustomEvent &) = default;

private:
    void *m_data;
};
