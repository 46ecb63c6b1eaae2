// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/pieces.h"

#include <utility>

namespace wmsg::intake {

void Pieces::keep(QByteArrayView bytes)
{
    if (bytes.isEmpty()) {
        return;
    }
    m_size += bytes.size();
    if (!m_pieces.empty() && !m_pieces.back().kept.isEmpty()
        && m_pieces.back().kept.end() == bytes.begin()) {
        QByteArrayView &last = m_pieces.back().kept;
        last = QByteArrayView(last.data(), last.size() + bytes.size());
    } else {
        m_pieces.push_back({bytes, {}});
    }
}

void Pieces::add(QByteArray bytes)
{
    if (!bytes.isEmpty()) {
        m_size += bytes.size();
        m_pieces.push_back({{}, std::move(bytes)});
    }
}

void Pieces::add(Pieces pieces)
{
    for (Piece &piece : pieces.m_pieces) {
        if (piece.own.isEmpty()) {
            keep(piece.kept);
        } else {
            add(std::move(piece.own));
        }
    }
}

QByteArray Pieces::joined() const
{
    QByteArray all;
    all.reserve(m_size);
    for (const QByteArrayView piece : views()) {
        all.append(piece);
    }
    return all;
}

std::vector<QByteArrayView> Pieces::views() const
{
    std::vector<QByteArrayView> all;
    all.reserve(m_pieces.size());
    for (const Piece &piece : m_pieces) {
        all.push_back(piece.own.isEmpty() ? piece.kept : QByteArrayView(piece.own));
    }
    return all;
}

} // namespace wmsg::intake
