// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <functional>
#include <utility>

namespace wmsg::cli {

/// Writes a page piece by piece, so that one of any size takes no more memory than its largest
/// piece. Markup comes from literals alone; what comes from a message has operations of its own.
/// After a piece that could not be written nothing more is.
class HtmlWriter {
public:
    /// Takes a piece; false when it could not be written.
    using Sink = std::function<bool(QByteArrayView)>;

    explicit HtmlWriter(Sink sink) : m_sink(std::move(sink)) { }

    HtmlWriter &markup(QLatin1String literal);
    HtmlWriter &number(qint64 value);
    /// A text among others in a line.
    HtmlWriter &line(QStringView text);
    /// A text as the value of an attribute whose quotes are there.
    HtmlWriter &attribute(QStringView text);
    /// A text in a line whose direction of writing does not reach what is around it.
    HtmlWriter &name(QStringView text);
    /// The text of a block, from UTF-8; bytes that are none become U+FFFD.
    HtmlWriter &block(QByteArrayView utf8);
    HtmlWriter &base64(QByteArrayView bytes);
    /// Markup that was made of literals and numbers.
    HtmlWriter &made(QByteArrayView markup);

    [[nodiscard]] bool isFine() const { return m_isFine; }

private:
    Sink m_sink;
    bool m_isFine = true;
};

} // namespace wmsg::cli
