// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a multipart body.

#include "fuzz/fuzz_support.h"
#include "fuzz/message_properties.h"
#include "mms/model/wmmsmultipart.h"

#include <cstring>

using namespace wmsg::fuzz;

namespace {

constexpr int kOffset = 3;

WMMSMultipart mixedRoot()
{
    WMMSContentType type;
    type.setMimeType(QStringLiteral("application/vnd.wap.multipart.mixed"));
    WMMSMultipart root;
    root.setContentType(type);
    return root;
}

/// What stands in front of a body must not matter to it, and what stands behind it neither.
void checkSurroundings(QArray<char> &body, const WMMSMultipart &root, bool decoded)
{
    QArray<char> longer(kOffset + body.size() + kOffset);
    longer.fill('A');
    memcpy(longer.data() + kOffset, body.constData(), static_cast<size_t>(body.size()));
    longer.truncate(kOffset + body.size());
    WMMSMultipart moved = mixedRoot();
    require(moved.construct(longer, kOffset) == decoded, "a body decodes alike wherever it lies");
    require(everythingOf(moved, true) == everythingOf(root, true),
            "a body gives the same parts wherever it lies");
}

void checkEncodingOf(const WMMSMultipart &root)
{
    const QByteArray before = everythingOf(root, true);
    const QByteArray beforeWithoutNested = everythingOf(root, false);
    const bool survives = survivesWire(root);
    WMMSMultipart encoded(root);
    QArray<char> body;
    const bool written = encoded.exportTo(body, 0);
    require(everythingOf(root, true) == before, "encoding changes no copy of the part");
    if (!written || !survives) {
        return;
    }
    WMMSMultipart again = mixedRoot();
    require(again.construct(body, 0), "what is encoded can be decoded");
    WMMSMultipart third(again);
    QArray<char> second;
    require(third.exportTo(second, 0) && second == body,
            "what was encoded is encoded to the same bytes again");
    require(dataBytesOf(again) >= dataBytesOf(encoded), "no byte of the parts is lost");
    require(everythingOf(encoded, false).size() == beforeWithoutNested.size(),
            "encoding drops no part");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const LogChoice log(size);
    QArray<char> body = bytesOf(data, size);
    WMMSMultipart root = mixedRoot();
    const bool decoded = root.construct(body, 0);
    require(body == bytesOf(data, size), "decoding does not write to the body");
    if (size > 0) {
        checkSurroundings(body, root, decoded);
    }
    if (log.prints()) {
        root.printInfo();
    }
    if (root.subParts() && !root.subParts()->isEmpty()) {
        checkEncodingOf(root);
    }
    return 0;
}
