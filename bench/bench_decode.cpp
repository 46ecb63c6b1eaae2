// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/baseline.h"

// Decoding a PDU held in memory into a fresh message, which is destroyed again, beside memcpy of
// the same bytes into fresh memory.

namespace {

void decode(benchmark::State &state, QArray<char> pdu, unsigned char pduType, int parts)
{
    bench::discardLog();
    for (auto _ : state) {
        WMMSMsg msg;
        if (msg.construct(pdu, true) != 100 || msg.getPDUType() != pduType
            || (parts > 0 && msg.getMultiParts().subParts()->size() != parts)) {
            state.SkipWithError("not decoded");
            return;
        }
        benchmark::DoNotOptimize(msg);
    }
    state.SetBytesProcessed(state.iterations() * pdu.size());
}

void sendConfirmation(benchmark::State &state)
{
    decode(state, bench::encoded(bench::sendConfirmation()), 0x81, 0);
}

void notification(benchmark::State &state)
{
    decode(state, bench::encoded(bench::notification()), 0x82, 0);
}

void retrieval(benchmark::State &state)
{
    decode(state, bench::encoded(bench::retrievalOf(state)), 0x84, 4);
}

BENCHMARK(sendConfirmation);
BENCHMARK(notification);
BENCHMARK(retrieval)->Apply(bench::sizes);
BENCHMARK(bench::memcpySameBytes)->Apply(bench::sizes);

} // namespace
