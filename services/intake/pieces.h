// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <vector>

namespace wmsg::intake {

/// Bytes in pieces: stretches of bytes that belong to somebody else and stay where they are, and
/// bytes of our own between them. A picture is never copied.
class Pieces {
public:
    /// keep appends bytes that must live as long as this. Stretches that follow each other there
    /// become one.
    void keep(QByteArrayView bytes);
    /// add appends bytes of our own.
    void add(QByteArray bytes);
    void add(Pieces pieces);

    [[nodiscard]] qsizetype size() const { return m_size; }
    /// joined returns all bytes in an array of their own.
    [[nodiscard]] QByteArray joined() const;
    /// views returns the pieces in their order; they live as long as this.
    [[nodiscard]] std::vector<QByteArrayView> views() const;

private:
    struct Piece {
        QByteArrayView kept;
        QByteArray own;
    };
    std::vector<Piece> m_pieces;
    qsizetype m_size = 0;
};

} // namespace wmsg::intake
