// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/mimetype/util_mimetype.h"

namespace {

struct PlayerRow {
    const char *extension;
    bool isAudio;
    bool isVideo;
};

// clang-format off
constexpr PlayerRow kPlayer[] = {
    // extension  audio  video
    {"amr",       true,  false},
    {"awb",       true,  false},
    {"mp3",       true,  false},
    {"aac",       true,  false},
    {"m4a",       true,  false},
    {"wav",       true,  false},
    {"au",        true,  false},
    {"mid",       true,  false},
    {"midi",      true,  false},
    {"mxmf",      true,  false},
    {"imy",       true,  false},
    {"mmf",       true,  false},
    {"qcp",       true,  false},
    {"wma",       true,  false},
    {"3gp",       true,  true},
    {"3g2",       true,  true},
    {"mp4",       true,  true},
    {"mpg",       false, true},
    {"mpeg",      false, true},
    {"wmv",       false, true},
};
// clang-format on

} // namespace

QStringList UTIL_MimeType::queryMpSupportedExtensions(MIME_TYPE_T kind)
{
    const bool audio = kind == MIME_TYPE_AUDIO || kind == MIME_TYPE_MEDIA;
    const bool video = kind == MIME_TYPE_VIDEO || kind == MIME_TYPE_MEDIA;
    QStringList extensions;
    for (const PlayerRow &row : kPlayer) {
        if ((audio && row.isAudio) || (video && row.isVideo)) {
            extensions.append(QLatin1String(row.extension));
        }
    }
    return extensions;
}
