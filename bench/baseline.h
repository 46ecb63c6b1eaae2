// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bench/messages.h"

#include <benchmark/benchmark.h>

namespace bench {

/// Runs a benchmark once for each size of the picture.
inline void sizes(benchmark::internal::Benchmark *run)
{
    for (const int size : kPictureSizes) {
        run->Arg(size);
    }
}

/// The retrieval that a run is about.
inline WMMSMsg retrievalOf(const benchmark::State &state)
{
    return retrieval(static_cast<int>(state.range(0)));
}

/// What decoding and encoding are held against: the bytes of the retrieval, copied into fresh
/// memory.
inline void memcpySameBytes(benchmark::State &state)
{
    const QArray<char> pdu = encoded(retrievalOf(state));
    for (auto _ : state) {
        QArray<char> bytes = QArray<char>::fromBytes(pdu.constData(), pdu.size());
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * pdu.size());
}

} // namespace bench
