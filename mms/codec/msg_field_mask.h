// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

#include <array>

/// Which header fields of a message are present, by field id 1 to 24.
class Msg_Field_Mask {
public:
    /// No field is present.
    Msg_Field_Mask() { clear(); }

    /// Marks every field as absent; always 1. A single field cannot be unmarked.
    quint32 clear()
    {
        m_flags.fill(0);
        return 1;
    }
    /// Marks field `id` as present and returns 1; 0 for an id that is no field's.
    quint32 setMask(unsigned char id)
    {
        if (!isField(id)) {
            return 0;
        }
        m_flags[id] = 1;
        return 1;
    }
    /// 1 when field `id` is present; 0 when it is absent or no field.
    quint32 getMask(unsigned char id) const { return isField(id) && m_flags[id] != 0 ? 1 : 0; }
    /// The highest field id.
    static quint32 getFieldsCount() { return kFieldCount; }

private:
    static constexpr quint32 kFieldCount = 24;
    static constexpr bool isField(unsigned char id) { return id >= 1 && id <= kFieldCount; }

    std::array<quint32, kFieldCount + 1> m_flags; ///< Entry 0 is never used.
};
