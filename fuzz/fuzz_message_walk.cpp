// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a file that `wmsg decode` is given: a PDU, a push, or a mail file.

#include "fuzz/fuzz_support.h"
#include "mms/model/result_codes.h"
#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/message_json.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/message_walk.h"
#include "tools/wmsg/pdu_walk.h"

#include <QtCore/QByteArray>

#include <algorithm>

using namespace wmsg::fuzz;
using namespace wmsg::cli;

namespace {

bool isHarmless(const QString &text)
{
    return std::none_of(text.begin(), text.end(),
                        [](QChar c) { return (c < u' ' && c != u'\n') || c.unicode() == 0x7F; });
}

/// Sees that ranges are the file, each byte once.
class Ranges {
public:
    explicit Ranges(qsizetype size) : m_size(size) { }
    ~Ranges() { require(m_covered == m_size, "the ranges are the whole file"); }
    Q_DISABLE_COPY_MOVE(Ranges)

    WalkNotes::Sink sink()
    {
        return [this](const ByteRange &range) {
            require(range.offset == m_covered && range.length > 0, "the ranges follow each other");
            require(!range.field.isEmpty() && !range.meaning.isEmpty(), "a range has a meaning");
            require(isHarmless(range.field) && isHarmless(range.meaning), "meanings are harmless");
            m_covered += range.length;
        };
    }

private:
    qsizetype m_size;
    qsizetype m_covered = 0;
};

void checkMessageWalk(QByteArrayView input)
{
    Ranges ranges(input.size());
    MessageWalk walk(ranges.sink());
    walk.walk(input);
    MessageWalk quiet;
    quiet.walk(input);
    require(walk.knownFields() == quiet.knownFields() && walk.pduOffset() == quiet.pduOffset()
                && walk.headerLength() == quiet.headerLength()
                && walk.otherFields().size() == quiet.otherFields().size()
                && walk.push().has_value() == quiet.push().has_value(),
            "it does not matter whether somebody listens");
    require(walk.pduOffset() >= 0 && walk.headerLength() >= 0
                && walk.pduOffset() + walk.headerLength() <= input.size(),
            "the header lies in the file");
    require(walk.otherFields().size() <= MessageWalk::kMostFields, "not all fields are kept");
    for (const OtherField &field : walk.otherFields()) {
        require(field.offset >= walk.pduOffset() && field.offset < input.size()
                    && isHarmless(field.name) && isHarmless(field.value),
                "a field has its place and harmless words");
    }
    QArray<char> known(walk.knownFields());
    WMMSMsg message;
    require(known.isEmpty() || message.construct(known, true) == MMS_DECODE_OK,
            "the codec reads the fields that it knows");
}

/// The walk that goes the way of the codec comes to what it comes to.
void checkPduWalk(QByteArrayView input)
{
    Ranges ranges(input.size());
    DecodedFile file;
    file.bytes = QArray<char>(input.toByteArray());
    file.kind = kindOf(input);
    file.walk = PduWalk(ranges.sink());
    const quint32 walked = file.walk.walk(file.bytes, file.kind);
    require(walked == MMS_DECODE_OK || file.walk.failure(), "a failure has its reason");
    file.walk = PduWalk();
    decode(file);
    require(file.result == walked, "the walk has the result of the codec");
}

void checkExplanation(QByteArrayView input)
{
    DecodedFile file;
    file.name = QStringLiteral("m");
    file.bytes = QArray<char>(input.toByteArray());
    file.kind = kindOf(input);
    explain(file);
    require(isHarmless(messageView(file, Detail::Full)), "what is shown is harmless");
    require(!isMessage(file) ? !failureInWords(file).isEmpty() : file.result == MMS_DECODE_OK,
            "what is no message is told");
    (void)messageJson(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const LogChoice log(0);
    const QByteArrayView input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkMessageWalk(input);
    checkPduWalk(input);
    checkExplanation(input);
    return 0;
}
