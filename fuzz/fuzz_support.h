// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/applog/applog.h"
#include "qt2/qarray.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What all fuzzers share. A fuzzer is one LLVMFuzzerTestOneInput: it takes the input as it stands,
/// so that any file of the format is a seed, and ends the program where a property does not hold.

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace wmsg::fuzz {

/// require ends the program with `property` on standard error unless it holds.
inline void require(bool holds, const char *property)
{
    if (!holds) {
        fprintf(stderr, "property broken: %s\n", property);
        abort();
    }
}

/// bytesOf returns an array of its own with the input.
inline QArray<char> bytesOf(const uint8_t *data, size_t size)
{
    return QArray<char>::fromBytes(data, static_cast<int>(size));
}

/// bytesBefore returns an array with the input in front of memory that holds `filler`. Code that
/// the sanitizers do not see into, that of Qt, shows a read past the end by what it makes of it.
inline QArray<char> bytesBefore(char filler, const uint8_t *data, size_t size)
{
    constexpr int kBehind = 16;
    QArray<char> bytes = bytesOf(data, size);
    const int used = bytes.size();
    bytes.resize(used + kBehind);
    std::fill(bytes.begin() + used, bytes.end(), filler);
    bytes.truncate(used);
    return bytes;
}

/// Chooses where log lines go while it lives: to /dev/null, formatted, for inputs of odd length, so
/// that the print functions are fuzzed too, and else to the discard stream.
///
/// Each address of a list prints the whole list again, so that printing takes time with the square
/// of the number of addresses; only small inputs are printed.
class LogChoice {
public:
    explicit LogChoice(size_t inputSize) : m_before(appLogModuleStream)
    {
        static FILE *const nowhere = fopen("/dev/null", "w");
        m_prints = nowhere && inputSize % 2 == 1 && inputSize < kLongestPrinted;
        appLogModuleStream = m_prints ? nowhere : appLogDiscardStream();
    }
    ~LogChoice() { appLogModuleStream = m_before; }
    LogChoice(const LogChoice &) = delete;
    LogChoice &operator=(const LogChoice &) = delete;

    [[nodiscard]] bool prints() const { return m_prints; }

private:
    static constexpr size_t kLongestPrinted = 2048;

    FILE *m_before;
    bool m_prints = false;
};

} // namespace wmsg::fuzz
