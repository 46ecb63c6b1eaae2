// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <array>
#include <optional>

namespace wmsg::sim {

/// What the simulator does that can go wrong.
enum class Occasion {
    Request, ///< any HTTP request, in the order of arrival
    Send, ///< a send request
    NotifyResponse,
    Acknowledge,
    Retrieve, ///< a GET of a message
    Notify, ///< a notification on its way to a recipient, each time it is pushed
    Report ///< a delivery report on its way to a sender, each time it is pushed
};
inline constexpr int kOccasions = 7;

/// What goes wrong with one request or one push. Nothing, as it is made.
struct Faults {
    std::optional<int> httpStatus;
    std::optional<quint8> responseStatus;
    std::optional<int> delay; ///< milliseconds before the answer
    std::optional<qint64> upRate; ///< bytes of the request that are taken in a second
    std::optional<qint64> downRate; ///< bytes of the answer that are given in a second
    std::optional<qint64> cutUpAfter; ///< the connection ends behind so many bytes of the request
    std::optional<qint64> cutAfter; ///< the connection ends behind so many bytes of the answer
    std::optional<QByteArray> redirect;
    bool garbage = false;
    bool lost = false;
    bool doubled = false;

    /// Takes over what is set in `other`.
    void add(const Faults &other);
    /// The request is answered from here, and the MMSC never sees it.
    [[nodiscard]] bool isAnsweredAtTheDoor() const { return httpStatus || redirect; }
};

/// Which request fails how. A plan is lines of text:
///
///     # from the second on, two sends find the MMSC out of order
///     send 2-3 http-status=503
///     retrieve 1 cut-after=1000
///     notify * doubled
///
/// An occasion; which of its kind, counted from 1: N, N-M, N- or *; and what happens. Where lines
/// meet, the later one counts. docs/simulators.md tells all words.
class FaultPlan {
public:
    /// Adds the lines of `text`. Returns what is wrong with the first bad one, behind `name` and
    /// its number; the plan is then as it was.
    [[nodiscard]] QString read(const QString &name, const QString &text);

    /// Counts one more of an occasion, and gives what happens to it.
    Faults next(Occasion occasion);

    /// Tells whether some line has to do with the speed or the end of what arrives.
    [[nodiscard]] bool watchesUploads() const;

private:
    struct Rule {
        Occasion occasion = Occasion::Request;
        qint64 first = 1;
        qint64 last = 1;
        Faults faults;
    };

    static QString readRule(const QString &line, Rule &rule);

    QList<Rule> m_rules;
    std::array<qint64, kOccasions> m_counts = {};
};

} // namespace wmsg::sim
