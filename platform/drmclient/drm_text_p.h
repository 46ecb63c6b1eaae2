// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

/// The texts in containers: lines, header fields, media types, transfer encodings.
namespace wmsg::drm {

/// takeLine returns the first line of `rest` without its end, CR LF or LF, and moves `rest` past
/// it. Without an end it is all of `rest`.
QByteArrayView takeLine(QByteArrayView &rest);

/// What takeField met at the start of the rest.
enum class Line {
    Field, ///< a header field; `rest` is behind it
    Empty, ///< an empty line; `rest` is behind it
    Other, ///< something else, or the end; `rest` has not moved
};

struct HeaderField {
    QByteArrayView name;
    QByteArray value; ///< without white space around it; lines that were folded are one again

    [[nodiscard]] bool is(QByteArrayView wanted) const;
};

/// takeField takes one header field: a name, a ":" and a value that goes on in the lines which
/// begin with white space.
Line takeField(QByteArrayView &rest, HeaderField &field);

/// isSame compares without regard to case.
bool isSame(QByteArrayView a, QByteArrayView b);

/// mediaTypeIn returns the media type in front of the parameters of `value`, as it is written;
/// empty when there is none.
QByteArray mediaTypeIn(QByteArrayView value);

/// textIn returns `value` without white space around it; empty when it holds control characters.
QByteArray textIn(QByteArrayView value);

/// decoded returns `data` without its Content-Transfer-Encoding: base64 and quoted-printable are
/// undone, all others are the bytes as they stand.
QByteArray decoded(QByteArrayView data, QByteArrayView encoding);

} // namespace wmsg::drm
