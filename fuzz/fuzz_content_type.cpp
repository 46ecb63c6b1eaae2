// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is the text of a content type, in UTF-8.

#include "fuzz/fuzz_support.h"
#include "mms/codec/wmmscontenttype.h"

#include <algorithm>

using namespace wmsg::fuzz;

namespace {

constexpr int kWellKnownMediaCount = 164;

/// Searches the table from its start, as a number is defined.
int firstNumberOf(const QString &mimeType)
{
    for (int id = 0; id < kWellKnownMediaCount; ++id) {
        if (WMMSContentType::getMimeType(static_cast<unsigned char>(id)) == mimeType) {
            return id;
        }
    }
    return -1;
}

void checkMediaType(const QString &text)
{
    WMMSContentType type;
    type.setMimeType(text);
    const QString mimeType = type.getMimeType();
    require(WMMSContentType::getMimeID(text) == firstNumberOf(text),
            "a number is that of the first equal name");
    require(type.wellKnownId() == (type.isEmpty() ? -1 : firstNumberOf(mimeType)),
            "a type has the number of its name");
    require(type.isEmpty() == mimeType.isEmpty(), "an empty type has no name");
    if (text.contains(QLatin1Char('/')) && !type.isEmpty()) {
        require(mimeType == text, "a type with a slash keeps its name");
    }
    WMMSContentType again;
    again.setMimeType(mimeType);
    require(again.getMimeType() == mimeType, "a name gives itself again");
}

bool isFreeOfMarks(const QString &text)
{
    static const QString marks = QStringLiteral(" ;=\"");
    return std::none_of(text.cbegin(), text.cend(), [](QChar c) { return marks.contains(c); });
}

/// The texts that the type prints hold a blank behind the media type, so that the first name comes
/// back with the ";" in front of it.
void checkPrinted(const WMMSContentType &type)
{
    if (type.isEmpty() || !isFreeOfMarks(type.getMimeType())) {
        return;
    }
    WMMSContentType expected;
    expected.setMimeType(type.getMimeType());
    for (auto param = type.params().cbegin(); param != type.params().cend(); ++param) {
        if (!isFreeOfMarks(param.key()) || !isFreeOfMarks(param.value())) {
            return;
        }
        const bool isFirst = expected.getParamCount() == 0;
        expected.setParam(isFirst ? QLatin1Char(';') + param.key() : param.key(), param.value());
    }
    if (type.getParamCount() == 0) {
        return; // the blank stays in the sub type
    }
    for (const QString &text : {type.toString(), type.toStringWithQuotes()}) {
        WMMSContentType again;
        again.fromString(text);
        require(again.getMimeType() == expected.getMimeType()
                    && again.params() == expected.params(),
                "a printed type reads back, but for the mark in front of its first name");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkMediaType(text);

    WMMSContentType type;
    require(type.fromString(text), "any text is read");
    for (auto param = type.params().cbegin(); param != type.params().cend(); ++param) {
        require(!param.value().isEmpty(), "no parameter is kept without a value");
        require(type.getParam(param.key()) == param.value(), "a parameter is found by its name");
    }
    checkPrinted(type);
    const WMMSContentType copy(type);
    require(copy.toString() == type.toString() && copy.needDecode() == type.needDecode(),
            "a copy equals its source");

    WMMSContentType latin1;
    latin1.fromString(QString::fromLatin1(text.toLatin1()));
    require(latin1.toString() == type.toString(), "a text is read as Latin-1");
    return 0;
}
