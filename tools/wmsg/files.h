// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <qt2/qarray.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Files as the program reads and writes them: never waiting for a pipe, never more than a limit in
/// memory, never half a result under its final name.
namespace wmsg::cli {

using service::Descriptor;
using service::systemError;
using service::writeAll;

/// The largest input that is read unless another limit is given.
inline constexpr qint64 kDefaultSizeLimit = qint64(64) * 1024 * 1024;

/// The problem in words with a file that is to be read by others: it cannot be opened, or is no
/// regular file. An empty text when there is none.
[[nodiscard]] QString problemOfFile(const QByteArray &path);

/// Reads a whole regular file, or standard input for "-", into `bytes`. Returns the problem in
/// words, an empty text when there is none: directories, pipes, devices and sockets are refused,
/// and so is what is larger than `limit` bytes.
[[nodiscard]] QString readInput(const QByteArray &path, qint64 limit, QArray<char> &bytes);

/// Makes `bytes` the content of the file `path`, or writes them to standard output for "-". A
/// regular file is replaced in one step by a complete new one; a link keeps pointing at it. What is
/// no regular file (a pipe, a device) is written to. Returns the problem in words, or an empty
/// text.
[[nodiscard]] QString writeOutput(const QByteArray &path, QByteArrayView bytes);

} // namespace wmsg::cli
