// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

#include <array>

/// Msg_Field_Mask tells which header fields of a message are present, by field id 1 to 24. It is a
/// value: copies are independent.
class Msg_Field_Mask {
public:
    /// Msg_Field_Mask() marks every field as absent.
    Msg_Field_Mask() { clear(); }

    /// clear marks every field as absent and returns 1. A single field cannot be unmarked.
    quint32 clear()
    {
        m_flags.fill(0);
        return 1;
    }
    /// setMask marks field `id` as present and returns 1; for an id that is no field's it returns 0
    /// and changes nothing.
    quint32 setMask(unsigned char id)
    {
        if (!isField(id)) {
            return 0;
        }
        m_flags[id] = 1;
        return 1;
    }
    /// getMask returns 1 when field `id` is present, 0 when it is absent or no field.
    quint32 getMask(unsigned char id) const { return isField(id) && m_flags[id] != 0 ? 1 : 0; }
    /// getFieldsCount returns the highest field id, 24.
    static quint32 getFieldsCount() { return kFieldCount; }

private:
    static constexpr quint32 kFieldCount = 24;
    static constexpr bool isField(unsigned char id) { return id >= 1 && id <= kFieldCount; }

    std::array<quint32, kFieldCount + 1> m_flags; ///< Entry 0 is never used.
};
