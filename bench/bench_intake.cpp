// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/baseline.h"
#include "services/intake/intake.h"

// What it costs to see that the codec reads a PDU, beside decoding the header of the same PDU; and
// to repair one with a text of another charset, whose picture stays where it is.

namespace {

using wmsg::intake::takeIn;

QByteArray bytesOf(const QArray<char> &pdu)
{
    return QByteArray(pdu.constData(), pdu.size());
}

void takeInOf(benchmark::State &state, const QByteArray &pdu, bool isReadable)
{
    bench::discardLog();
    for (auto _ : state) {
        const auto result = takeIn(pdu);
        const auto pieces = result.pdu.views();
        // What is there already is handed on where it is.
        const bool isInPlace = pieces.back().end() == pdu.cend()
            && (!isReadable || pieces.front().begin() == pdu.cbegin());
        if (result.isUnchanged != isReadable || !isInPlace) {
            state.SkipWithError("not as expected");
            return;
        }
        benchmark::DoNotOptimize(pieces.data());
    }
    state.SetBytesProcessed(state.iterations() * pdu.size());
}

void notification(benchmark::State &state)
{
    takeInOf(state, bytesOf(bench::encoded(bench::notification())), true);
}

void readable(benchmark::State &state)
{
    takeInOf(state, bytesOf(bench::encoded(bench::retrievalOf(state))), true);
}

void repaired(benchmark::State &state)
{
    QByteArray pdu = bytesOf(bench::encoded(bench::retrievalOf(state)));
    pdu[pdu.indexOf("We have")] = '\xDC';
    takeInOf(state, pdu, false);
}

/// The header walk of the codec.
void decodeHeader(benchmark::State &state)
{
    bench::discardLog();
    QArray<char> pdu = bench::encoded(bench::retrievalOf(state));
    for (auto _ : state) {
        WMMSMsg msg;
        if (msg.construct(pdu, false) != 100) {
            state.SkipWithError("not decoded");
            return;
        }
        benchmark::DoNotOptimize(msg);
    }
    state.SetBytesProcessed(state.iterations() * pdu.size());
}

BENCHMARK(notification);
BENCHMARK(readable)->Apply(bench::sizes);
BENCHMARK(repaired)->Apply(bench::sizes);
BENCHMARK(decodeHeader)->Apply(bench::sizes);

} // namespace
