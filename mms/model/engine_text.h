// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/mms_util_conv.h"
#include "platform/engine/mms_char.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace wmsg::engine_bridge {

/// A copy of `text` for a record of the engine; null for a null one.
inline char *recordText(const QByteArray &text)
{
    signed char *copy = nullptr;
    MMS_UTIL_Conv::copy_charToCHAR(&copy, text.isNull() ? nullptr : text.constData());
    return reinterpret_cast<char *>(copy);
}

/// All of a wide string of the engine, null for a null one.
inline QString textOf(const unsigned short *wide)
{
    if (!wide) {
        return {};
    }
    const unsigned int length = MMS_UTIL_Conv::wcsnlen(wide, 0);
    QByteArray utf8(qsizetype(length) * 3, '\0');
    utf8.truncate(MMS_Char_convUCS2toUTF8String(wide, length, utf8.data(),
                                                static_cast<unsigned int>(utf8.size())));
    return QString::fromUtf8(utf8);
}

} // namespace wmsg::engine_bridge
