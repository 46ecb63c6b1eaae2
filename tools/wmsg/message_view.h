// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

namespace wmsg::cli {

/// How much of long texts and data is shown.
enum class Detail { Short, Full };

/// A decoded file for people: its header fields, its parts and the warnings.
[[nodiscard]] QString messageView(const DecodedFile &file, Detail detail);

/// The header fields and parts of a message, without a title.
[[nodiscard]] QString contentView(const WMMSMsg &message, Detail detail);

/// A header field in words, a line for each of its values. Nothing in it can steer a terminal.
struct FieldView {
    QString name;
    QStringList lines;
};

/// The header fields that a message has, in the order that people look for them. The value of
/// `failedField` could not be read and is not shown; 0 stands for none.
[[nodiscard]] QList<FieldView> headerFields(const WMMSMsg &message, int failedField, Detail detail);

/// "send request", "mail file (letter)".
[[nodiscard]] QString kindInWords(const DecodedFile &file);

/// The line that a file's view begins with.
[[nodiscard]] QString titleOf(const DecodedFile &file);

/// What intake made of a file, what the codec says when it does not read it, and the warnings; a
/// line each, empty when there are none.
[[nodiscard]] QString notesView(const DecodedFile &file);

/// The warnings, a line each; empty when there are none.
[[nodiscard]] QString warningsView(const PduWalk &walk);

} // namespace wmsg::cli
