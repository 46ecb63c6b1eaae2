// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

/// Which way a PDU travels: with a request of the phone or with an answer of the network.
enum class Direction { Request, Response };

/// captureOf returns a capture file (pcap) in which one HTTP message carries `pdu`, in TCP segments
/// of 1400 bytes.
QByteArray captureOf(QByteArrayView pdu, Direction direction);
