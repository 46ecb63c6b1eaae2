// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <utility>

namespace wmsg::cli {

/// Some bytes of a file that have one meaning.
struct ByteRange {
    qint32 offset;
    qint32 length;
    QString field; ///< Where they belong: "Subject", "part 2".
    QString meaning; ///< Text of the message is quoted and escaped in it.
    bool isData; ///< The content of a part, which may be long.
};

/// Something to tell about one place of a file. Text of the message is quoted and escaped in it.
struct Finding {
    qint64 offset;
    QString field;
    QString message;
};

/// What a walk over a file notes. The ranges follow each other without a gap and without an
/// overlap, for each begins where the last one ended; they are handed on as they come, so that a
/// file of any size takes no more memory for them.
class WalkNotes {
public:
    using Sink = std::function<void(const ByteRange &)>;

    explicit WalkNotes(Sink sink = {}) : m_sink(std::move(sink)) { }

    /// Gives the bytes from the end of the last range to `end` their meaning. `meaning` is called
    /// only when somebody listens. Nothing happens when `end` is not beyond that.
    template <typename Meaning>
    void mark(qint32 end, const QString &field, Meaning meaning, bool isData = false)
    {
        if (end <= m_covered) {
            return;
        }
        if (m_sink) {
            m_sink({m_covered, end - m_covered, field, meaning(), isData});
        }
        m_covered = end;
    }

    /// Notes something that is odd but no failure. After kMostWarnings they are only counted.
    void warn(qint64 offset, const QString &field, const QString &message)
    {
        if (m_warnings.size() < kMostWarnings) {
            m_warnings.append({offset, field, message});
        } else {
            ++m_untold;
        }
    }

    [[nodiscard]] const QList<Finding> &warnings() const { return m_warnings; }
    /// How many warnings there were beyond those kept.
    [[nodiscard]] qint64 untoldWarnings() const { return m_untold; }

    static constexpr qsizetype kMostWarnings = 100;

private:
    Sink m_sink;
    qint32 m_covered = 0;
    QList<Finding> m_warnings;
    qint64 m_untold = 0;
};

} // namespace wmsg::cli
