// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/tpdu.h"

#include <QtCore/QStringList>

/// The fields of short messages in words, for people and for programs.
namespace wmsg::cli {

/// "received short message", "sent short message", "status report".
[[nodiscard]] QString kindInWords(smspdu::Kind kind);
[[nodiscard]] QString kindKey(smspdu::Kind kind);
[[nodiscard]] QString alphabetKey(smspdu::Alphabet alphabet);

[[nodiscard]] QString addressTypeInWords(quint8 type);
[[nodiscard]] QString protocolInWords(quint8 pid);
[[nodiscard]] QString schemeInWords(quint8 dcs);
[[nodiscard]] QString statusInWords(quint8 status);
[[nodiscard]] QString validityInWords(const smspdu::Validity &validity);
[[nodiscard]] QStringList flagsInWords(const smspdu::Tpdu &tpdu);

} // namespace wmsg::cli
