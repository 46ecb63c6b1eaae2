// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/drm_text_p.h"

#include <algorithm>

namespace wmsg::drm {

namespace {

constexpr QByteArrayView kSeparators("()<>@,;:\\\"/[]?=");

bool isTokenCharacter(char c)
{
    return c > ' ' && c < 0x7F && !kSeparators.contains(c);
}

bool isToken(QByteArrayView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isTokenCharacter);
}

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char upper = c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

/// lineBreakIn returns the size of a line end that blanks may stand before; 0 when there is none.
qsizetype lineBreakIn(QByteArrayView text)
{
    qsizetype size = 0;
    while (size < text.size() && isBlank(text[size])) {
        ++size;
    }
    if (size < text.size() && text[size] == '\r') {
        ++size;
    }
    return size < text.size() && text[size] == '\n' ? size + 1 : 0;
}

QByteArray fromQuotedPrintable(QByteArrayView data)
{
    QByteArray bytes;
    bytes.reserve(data.size());
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (data[i] != '=') {
            bytes.append(data[i]);
            continue;
        }
        const QByteArrayView behind = data.sliced(i + 1);
        const qsizetype broken = lineBreakIn(behind);
        const int high = behind.size() >= 2 ? hexDigit(behind[0]) : -1;
        const int low = behind.size() >= 2 ? hexDigit(behind[1]) : -1;
        if (broken > 0) {
            i += broken;
        } else if (high >= 0 && low >= 0) {
            bytes.append(static_cast<char>(high * 16 + low));
            i += 2;
        } else {
            bytes.append('='); // no escape: it stands for itself
        }
    }
    return bytes;
}

} // namespace

QByteArrayView takeLine(QByteArrayView &rest)
{
    const qsizetype end = rest.indexOf('\n');
    QByteArrayView line = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

bool HeaderField::is(QByteArrayView wanted) const
{
    return isSame(name, wanted);
}

Line takeField(QByteArrayView &rest, HeaderField &field)
{
    if (rest.isEmpty()) {
        return Line::Other;
    }
    QByteArrayView behind = rest;
    const QByteArrayView line = takeLine(behind);
    const qsizetype colon = line.indexOf(':');
    if (line.isEmpty()) {
        rest = behind;
        return Line::Empty;
    }
    if (colon < 0 || !isToken(line.first(colon).trimmed())) {
        return Line::Other;
    }
    field.name = line.first(colon).trimmed();
    field.value = line.sliced(colon + 1).trimmed().toByteArray();
    while (!behind.isEmpty() && isBlank(behind[0])) {
        field.value += ' ';
        field.value += takeLine(behind).trimmed();
    }
    rest = behind;
    return Line::Field;
}

bool isSame(QByteArrayView a, QByteArrayView b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QByteArray mediaTypeIn(QByteArrayView value)
{
    const qsizetype semicolon = value.indexOf(';');
    const QByteArrayView type = (semicolon < 0 ? value : value.first(semicolon)).trimmed();
    const qsizetype slash = type.indexOf('/');
    const bool isType = slash >= 0 && isToken(type.first(slash)) && isToken(type.sliced(slash + 1));
    return isType ? type.toByteArray() : QByteArray();
}

QByteArray textIn(QByteArrayView value)
{
    const QByteArrayView text = value.trimmed();
    return std::any_of(text.begin(), text.end(), isControl) ? QByteArray() : text.toByteArray();
}

QByteArray decoded(QByteArrayView data, QByteArrayView encoding)
{
    if (isSame(encoding, "base64")) {
        return QByteArray::fromBase64(QByteArray::fromRawData(data.data(), data.size()));
    }
    if (isSame(encoding, "quoted-printable")) {
        return fromQuotedPrintable(data);
    }
    return data.toByteArray();
}

} // namespace wmsg::drm
