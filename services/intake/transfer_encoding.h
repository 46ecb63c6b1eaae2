// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <optional>

namespace wmsg::intake {

// The encodings of mail that some senders leave in a message, though its bytes travel as they are.

/// fromBase64 returns the bytes behind `text`: line breaks and blanks are passed over, the padding
/// may be missing, a dangling character is dropped. Null when `text` holds anything else.
[[nodiscard]] std::optional<QByteArray> fromBase64(QByteArrayView text);

/// fromQuotedPrintable returns the bytes behind `text`. A "=" that begins no code stays as it is.
[[nodiscard]] QByteArray fromQuotedPrintable(QByteArrayView text);

/// withEncodedWords returns `utf8` with its encoded words ("=?charset?B?...?=") decoded, and the
/// blanks between two of them dropped. A word that is none stays as it is.
[[nodiscard]] QByteArray withEncodedWords(const QByteArray &utf8);

} // namespace wmsg::intake
