// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/intake.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

namespace wmsg::intake {

/// Keeps the remarks about one message. Offsets count from the first byte of the bytes that were
/// given; a message cannot make it grow without bounds.
class Journal {
public:
    Journal(QByteArrayView bytes, Result &result) : m_first(bytes.data()), m_result(result) { }

    /// step tells what was done at a byte, lost what is missing there.
    void step(const char *where, const QString &what) { note(m_result.steps, where, what); }
    void lost(const char *where, const QString &what) { note(m_result.lost, where, what); }
    /// problem tells why the message is unreadable. It returns false.
    bool problem(const char *where, const QString &what)
    {
        m_result.problem = {where - m_first, what};
        return false;
    }
    [[nodiscard]] const Remark &problem() const { return m_result.problem; }
    void setProblem(const Remark &problem) { m_result.problem = problem; }

private:
    void note(QList<Remark> &remarks, const char *where, const QString &what)
    {
        constexpr qsizetype kMost = 500;
        if (remarks.size() < kMost) {
            remarks.append({where - m_first, what});
        } else if (remarks.size() == kMost) {
            remarks.append({where - m_first, QStringLiteral("there is more of this")});
        }
    }

    const char *m_first;
    Result &m_result;
};

} // namespace wmsg::intake
