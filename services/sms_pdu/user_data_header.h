// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>

#include <initializer_list>
#include <optional>

// user-data-header := length { element }   length: octets of the elements
// element          := id length octets

namespace wmsg::smspdu {

enum ElementId : quint8 {
    kConcatenation8 = 0x00,
    kPorts8 = 0x04,
    kPorts16 = 0x05,
    kConcatenation16 = 0x08,
};

/// An element of a user data header, as a stretch of the bytes that were read.
struct HeaderElement {
    quint8 id = 0;
    QByteArrayView data;
    qsizetype offset = 0; ///< Of its id, in the header.
};

/// headerElements returns the elements of `header`, which begins with its length and ends with it.
/// It returns nothing when the elements do not fill it exactly.
[[nodiscard]] std::optional<QList<HeaderElement>> headerElements(QByteArrayView header);

struct Ports {
    quint16 destination = 0;
    quint16 source = 0;
    bool isWide = true; ///< 16 bits each, else 8.
};

/// What a part of a message in several short messages says about itself.
struct Concatenation {
    quint16 reference = 0; ///< The same in all parts.
    quint8 total = 1;
    quint8 part = 1; ///< From 1.
    bool isWide = false; ///< A reference of 16 bits, else of 8.
};

/// portsIn and concatenationIn return what the last element of their kind says; an element of a
/// wrong length, or with an impossible part, is none.
[[nodiscard]] std::optional<Ports> portsIn(QByteArrayView header);
[[nodiscard]] std::optional<Concatenation> concatenationIn(QByteArrayView header);

/// portsElement and concatenationElement return an element, userDataHeader a header of them. It is
/// null when they are longer than its length can tell.
[[nodiscard]] QByteArray portsElement(const Ports &ports);
[[nodiscard]] QByteArray concatenationElement(const Concatenation &concatenation);
[[nodiscard]] QByteArray userDataHeader(std::initializer_list<QByteArray> elements);

} // namespace wmsg::smspdu
