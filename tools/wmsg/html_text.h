// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringView>

/// Text of a message as it may stand in a page: it is never markup, and shows what would hide or
/// mislead.
namespace wmsg::cli {

/// Where in a page a text stands.
enum class HtmlPlace {
    Block, ///< The only text of a block; its marks of direction end with the block.
    Line, ///< Among others in a line: marks that turn the direction of writing are named instead.
    Attribute, ///< As the value of an attribute, between quotes.
};

/// The text in UTF-8 with all escaped that is markup. Control characters become their pictures,
/// what is no character becomes U+FFFD, and every way to end a line becomes a line feed.
[[nodiscard]] QByteArray htmlText(QStringView text, HtmlPlace place);

} // namespace wmsg::cli
