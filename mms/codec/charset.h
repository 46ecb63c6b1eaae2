// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wmmscontenttype.h"

namespace wmsg::codec {

/// Sets the "charset" parameter for a received MIBenum: the UTF-16 family by its name. Every other
/// charset sets nothing, UTF-8 included.
inline void setCharset(WMMSContentType &type, quint32 mibEnum)
{
    const char *name = mibEnum == 1000 ? "UCS2"
        : mibEnum == 1013              ? "UTF-16BE"
        : mibEnum == 1014              ? "UTF-16LE"
        : mibEnum == 1015              ? "UTF-16"
                                       : nullptr;
    if (name) {
        type.setParam(QStringLiteral("charset"), QString::fromLatin1(name));
    }
}

} // namespace wmsg::codec
