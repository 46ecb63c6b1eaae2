// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_text.h"

#include <QtCore/QString>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Embeddings, overrides and isolates, and separators that end them.
bool turnsDirection(char32_t c)
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x2028
        || c == 0x2029;
}

// What a page shows for a character that it cannot hold.
char32_t shownFor(char32_t c, bool isLine)
{
    constexpr char32_t kPictures = 0x2400;
    if ((c == '\n' || c == '\t') && !isLine) {
        return c;
    }
    if (c < 0x20) {
        return kPictures + c;
    }
    if (c == 0x7F) {
        return kPictures + 0x21;
    }
    const bool isNone =
        (c >= 0x80 && c <= 0x9F) || QChar::isSurrogate(c) || QChar::isNonCharacter(c);
    return isNone ? kReplacement : c;
}

void append(QByteArray &html, char32_t c, HtmlPlace place)
{
    switch (c) {
    case '&':
        html += "&amp;";
        return;
    case '<':
        html += "&lt;";
        return;
    case '>':
        html += "&gt;";
        return;
    case '"':
        html += "&quot;";
        return;
    case '\'':
        html += "&#39;";
        return;
    default:
        break;
    }
    if (place != HtmlPlace::Block && turnsDirection(c)) {
        const QByteArray name = "U+" + QByteArray::number(c, 16).toUpper();
        html += place == HtmlPlace::Line ? "<span class=\"mark\">" + name + "</span>"
                                         : '[' + name + ']';
        return;
    }
    const char32_t shown = shownFor(c, place != HtmlPlace::Block);
    if (shown < 0x80) {
        html += static_cast<char>(shown);
        return;
    }
    html += QString::fromUcs4(&shown, 1).toUtf8();
}

} // namespace

QByteArray htmlText(QStringView text, HtmlPlace place)
{
    QByteArray html;
    html.reserve(text.size() + text.size() / 8);
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isMore = at + 1 < text.size();
        if (text[at] == u'\r') {
            append(html, '\n', place);
            at += isMore && text[at + 1] == u'\n' ? 1 : 0;
        } else if (isMore && text[at].isHighSurrogate() && text[at + 1].isLowSurrogate()) {
            append(html, QChar::surrogateToUcs4(text[at], text[at + 1]), place);
            ++at;
        } else {
            append(html, text[at].unicode(), place);
        }
    }
    return html;
}

} // namespace wmsg::cli
