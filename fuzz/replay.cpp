// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Runs a fuzzer on the inputs of folders, without libFuzzer: fuzz_x SEEDS [FOLDER...]
// A .bin file is an input as it stands, a .hex file spells one. The first folder must hold one at
// least. Inputs are also cut short, so that the ends of all values are met.

#include "fuzz/fuzz_support.h"
#include "tests/support/hex.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <memory>

namespace {

constexpr qsizetype kCuts = 128; // of one input, at most about

/// The input lies in memory of just its size, so that the sanitizer sees the byte behind it.
void run(const QByteArray &input, qsizetype size)
{
    const auto exact = std::make_unique<uint8_t[]>(static_cast<size_t>(size));
    std::copy_n(input.cbegin(), size, exact.get());
    LLVMFuzzerTestOneInput(exact.get(), static_cast<size_t>(size));
}

bool replay(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fprintf(stderr, "%s: cannot be read\n", qPrintable(path));
        return false;
    }
    QByteArray input = file.readAll();
    if (path.endsWith(QLatin1String(".hex"))) {
        input = fromHex(input);
    }
    const qsizetype step = 1 + input.size() / kCuts;
    for (qsizetype size = 0; size < input.size(); size += step) {
        run(input, size);
    }
    run(input, input.size());
    return true;
}

/// How many files of a folder were replayed; -1 after a failure.
int replayFolder(const QString &folder)
{
    const QDir dir(folder);
    int count = 0;
    const QStringList names =
        dir.entryList({QStringLiteral("*.bin"), QStringLiteral("*.hex")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        if (!replay(dir.filePath(name))) {
            return -1;
        }
        ++count;
    }
    return count;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: %s SEEDS [FOLDER...]\n", argv[0]);
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        const int count = replayFolder(QFile::decodeName(argv[i]));
        if (count < 0 || (i == 1 && count == 0)) {
            fprintf(stderr, "%s: no inputs\n", argv[i]);
            return 1;
        }
        printf("%s: %d inputs\n", argv[i], count);
    }
    return 0;
}
