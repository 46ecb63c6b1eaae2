// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

// The string functions of the engine. Wide strings are those of its records: UCS-2 with a zero unit
// at the end. All functions stop at a terminating zero and at the end of the target, whatever
// length they are told, and none of them cuts a character in two.

/// Converts up to `length` bytes of UTF-8 at `source` into at most `room` units at `target`, the
/// zero behind them included. A byte that is no UTF-8 is taken as the Latin-1 character of its
/// value. It returns the units written, without the zero.
WMSG_PLATFORM_EXPORT unsigned int MMS_Char_convUTF8toUCS2String(const char *source,
                                                                unsigned int length,
                                                                unsigned short *target,
                                                                unsigned int room);

/// Converts up to `length` units at `source` into at most `room` bytes of UTF-8 at `target`, with a
/// zero behind them when there is room for one. A surrogate without its partner becomes "?". It
/// returns the bytes written, without the zero.
WMSG_PLATFORM_EXPORT unsigned int MMS_Char_convUCS2toUTF8String(const unsigned short *source,
                                                                unsigned int length, char *target,
                                                                unsigned int room);

/// The first `unit` in `string`, null when there is none. The zero at the end counts.
WMSG_PLATFORM_EXPORT unsigned short *MMS_device_wchar_strchr(unsigned short *string,
                                                             unsigned short unit);

/// The next piece of a string that is cut at any of `separators`, null behind the last one. Empty
/// pieces are skipped. The first call is given the string, the following ones null; `rest` keeps
/// the place between them. The separator behind each piece is overwritten with a zero.
WMSG_PLATFORM_EXPORT unsigned short *MMS_device_wchar_strtok(unsigned short *string,
                                                             const unsigned short *separators,
                                                             unsigned short **rest);
