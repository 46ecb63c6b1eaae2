// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <platform/telephony/sms_length.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// What a short message is to say: a text, or data.
struct SmsBody {
    std::optional<QString> text; ///< Nothing: `data` is sent.
    QByteArray data;
    bool hasPorts = false;

    [[nodiscard]] SmsLength length() const;

    /// "12 of 160 septets, 148 left", and which character takes a text to 16-bit units.
    [[nodiscard]] QString lengthInWords() const;
    /// Why it does not fit one message; an empty text when it does.
    [[nodiscard]] QString objection() const;
    void addLength(QJsonObject &object) const;

private:
    [[nodiscard]] QString reasonForUnits() const;
};

} // namespace wmsg::cli
