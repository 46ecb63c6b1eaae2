// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/html_file.h"
#include "tools/wmsg/html_writer.h"

namespace wmsg::cli {

/// Writes a decoded file as one page that shows the message as a phone does. The page needs no
/// script and refers to nothing outside itself, and its policy forbids both to the browser. It
/// fails only when `page` does.
void writeHtmlPage(HtmlWriter &page, const DecodedFile &file);

/// Writes that page as a file that is opened for it. Returns the problem in words, or an empty
/// text.
[[nodiscard]] QString saveHtmlPage(HtmlFile &file, const DecodedFile &decoded);

} // namespace wmsg::cli
