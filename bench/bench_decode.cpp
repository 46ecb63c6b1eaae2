// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/messages.h"

#include <benchmark/benchmark.h>

#include <cstring>

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
    decode(state, bench::encoded(bench::retrieval(static_cast<int>(state.range(0)))), 0x84, 4);
}

void memcpySameBytes(benchmark::State &state)
{
    const QArray<char> pdu = bench::encoded(bench::retrieval(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        QArray<char> bytes = QArray<char>::fromBytes(pdu.constData(), pdu.size());
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * pdu.size());
}

void sizes(benchmark::internal::Benchmark *run)
{
    for (const int size : bench::kPictureSizes) {
        run->Arg(size);
    }
}

BENCHMARK(sendConfirmation);
BENCHMARK(notification);
BENCHMARK(retrieval)->Apply(sizes);
BENCHMARK(memcpySameBytes)->Apply(sizes);

} // namespace
