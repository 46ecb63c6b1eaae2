// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_writer.h"

#include "tools/wmsg/html_text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// A multiple of 3, so that the pieces join to the base64 of the whole.
constexpr qsizetype kPiece = qsizetype(48) * 1024;

// The size of the next piece of a text: the bytes of a character and the two characters that end a
// line stay together.
qsizetype pieceOf(QByteArrayView text)
{
    if (text.size() <= kPiece) {
        return text.size();
    }
    constexpr qsizetype kLongest = 4;
    qsizetype size = kPiece;
    while (size > kPiece - kLongest && (static_cast<quint8>(text[size]) & 0xC0) == 0x80) {
        --size;
    }
    return text[size - 1] == '\r' ? size - 1 : size;
}

} // namespace

HtmlWriter &HtmlWriter::made(QByteArrayView markup)
{
    m_isFine = m_isFine && m_sink(markup);
    return *this;
}

HtmlWriter &HtmlWriter::markup(QLatin1String literal)
{
    return made(QByteArrayView(literal.data(), literal.size()));
}

HtmlWriter &HtmlWriter::number(qint64 value)
{
    return made(QByteArray::number(value));
}

HtmlWriter &HtmlWriter::line(QStringView text)
{
    return made(htmlText(text, HtmlPlace::Line));
}

HtmlWriter &HtmlWriter::attribute(QStringView text)
{
    return made(htmlText(text, HtmlPlace::Attribute));
}

HtmlWriter &HtmlWriter::name(QStringView text)
{
    return markup("<bdi>"_L1).line(text).markup("</bdi>"_L1);
}

HtmlWriter &HtmlWriter::block(QByteArrayView utf8)
{
    while (!utf8.isEmpty() && m_isFine) {
        const qsizetype size = pieceOf(utf8);
        made(htmlText(QString::fromUtf8(utf8.first(size)), HtmlPlace::Block));
        utf8 = utf8.sliced(size);
    }
    return *this;
}

HtmlWriter &HtmlWriter::base64(QByteArrayView bytes)
{
    while (!bytes.isEmpty() && m_isFine) {
        const QByteArrayView piece = bytes.first(std::min(bytes.size(), kPiece));
        made(QByteArray::fromRawData(piece.data(), piece.size()).toBase64());
        bytes = bytes.sliced(piece.size());
    }
    return *this;
}

} // namespace wmsg::cli
