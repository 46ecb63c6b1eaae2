// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is DRM content of version 2: discrete content, or a film or a sound.

#include "fuzz/drm_properties.h"

using namespace wmsg::fuzz;
using wmsg::drm::Container;
using wmsg::drm::readContentVersion2;

namespace {

char methodOf(const QByteArray &encryption)
{
    return encryption == "NULL"     ? 0
        : encryption == "AES128CBC" ? 1
        : encryption == "AES128CTR" ? 2
                                    : 3;
}

QByteArray written(const Container &content)
{
    const QByteArray versionFlags(4, 0);
    const QByteArray paddingAndPlainLength(1 + 8, 0);
    const QByteArray noText(2, 0);
    const QByteArray headers =
        box("ohdr",
            versionFlags + methodOf(content.encryption) + paddingAndPlainLength
                + number(content.contentUri.size(), 2) + number(content.rightsIssuerUrl.size(), 2)
                + noText + content.contentUri + content.rightsIssuerUrl);
    return box("ftyp", "odcf" + number(2, 4))
        + box("odrm",
              versionFlags
                  + box("odhe",
                        versionFlags + number(content.contentType.size(), 1) + content.contentType
                            + headers));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = viewOf(data, size);
    const auto content = readContentVersion2(bytes);
    if (!content) {
        return 0;
    }
    checkContainer(bytes, *content);
    require(content->kind == DRM_KIND_CONTENT_V2 && content->contentName.isEmpty(),
            "content of version 2 has no name");
    const auto read = readContentVersion2(written(*content));
    require(read && isEqual(*read, *content), "what is written reads back");
    return 0;
}
