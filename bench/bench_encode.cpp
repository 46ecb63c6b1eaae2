// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/baseline.h"

// Encoding a message into a PDU in memory, into a fresh array, beside memcpy of the same bytes into
// fresh memory.

namespace {

void encode(benchmark::State &state, WMMSMsg msg)
{
    bench::discardLog();
    const QArray<char> expected = bench::encoded(msg);
    for (auto _ : state) {
        QArray<char> pdu;
        if (msg.packTo(pdu, nullptr, nullptr) != 200 || pdu.size() != expected.size()) {
            state.SkipWithError("not encoded");
            return;
        }
        benchmark::DoNotOptimize(pdu.data());
    }
    state.SetBytesProcessed(state.iterations() * expected.size());
}

void sendConfirmation(benchmark::State &state)
{
    encode(state, bench::sendConfirmation());
}

void notification(benchmark::State &state)
{
    encode(state, bench::notification());
}

void retrieval(benchmark::State &state)
{
    encode(state, bench::retrievalOf(state));
}

BENCHMARK(sendConfirmation);
BENCHMARK(notification);
BENCHMARK(retrieval)->Apply(bench::sizes);
BENCHMARK(bench::memcpySameBytes)->Apply(bench::sizes);

} // namespace
