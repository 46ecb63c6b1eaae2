// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/charsets.h"

#include <WSP_Stream>

#include <QtCore/QByteArray>

namespace wmsg::intake {

/// A content type as it was read, in whatever form it was written.
struct MediaType {
    QByteArray media; ///< "image/jpeg"; in the sender's spelling, empty when there is none.
    int number = -1; ///< The well-known number that stood for it; -1 for a text.
    Charset charset;
    QByteArray type; ///< Of a related multipart: the media type of its root.
    QByteArray start; ///< Of a related multipart: the content id of its root.
    QByteArray name;
    QByteArray fileName;
    QByteArray boundary;
    QByteArray application; ///< The application that the message is for, ...
    QByteArray replyApplication; ///< ... the one that answers go to, ...
    QByteArray applicationInfo; ///< ... and what they need.

    /// Whether the codec reads the same from the same bytes, in the header of a message ...
    bool isPlainInHeader = false;
    /// ... and in that of a part. What a charset does to the text is another matter.
    bool isPlainInPart = false;

    [[nodiscard]] bool isEmpty() const { return media.isEmpty(); }
    /// isText tells of text, presentations and XML, which become UTF-8.
    [[nodiscard]] bool isText() const;
    /// isXml tells of XML alone.
    [[nodiscard]] bool isXml() const;
    /// isMultipart tells of any multipart; isRelated of the one that has a root.
    [[nodiscard]] bool isMultipart() const;
    [[nodiscard]] bool isRelated() const;
    /// isSameNumber tells whether the library knows the media type by the number that stood for it.
    [[nodiscard]] bool isSameNumber() const;
};

/// readMediaType reads a content type in any of its forms and moves behind it: a number, a text
/// (with parameters as mail has them), or a length with either and parameters. Parameters that mean
/// nothing here are passed over; a length that reaches past the end of the stream is cut there. An
/// empty stream, or one that begins with nothing of this, gives an empty type.
[[nodiscard]] MediaType readMediaType(WSP_Stream &stream);

/// readMediaTypeUpToBody reads one with a length that is wrong, and moves to the first byte that
/// begins no parameter, as the count of a body. It is empty when there is no length.
[[nodiscard]] MediaType readMediaTypeUpToBody(WSP_Stream &stream);

/// writtenHeaderType returns the content type of a message: of a multipart with its type and start,
/// always with the applications. A related one keeps being that, every other multipart is mixed.
[[nodiscard]] QByteArray writtenHeaderType(const MediaType &type);

/// writtenPartType returns the content type of a part with this name, labelled as UTF-8 if it is
/// text.
[[nodiscard]] QByteArray writtenPartType(const MediaType &type, const QByteArray &name);

} // namespace wmsg::intake
