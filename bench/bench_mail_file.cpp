// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/baseline.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Loading a mail file into a fresh message beside open, read and close of the same file; saving one
// beside one write of the same bytes into a fresh file, synced and renamed as saving does.

namespace {

QByteArray mailFile(const QTemporaryDir &dir, WMMSMsg msg)
{
    const QString path = dir.filePath(QStringLiteral("message.mms"));
    if (msg.saveAs(path, nullptr, nullptr) != 300) {
        std::abort();
    }
    return QFile::encodeName(path);
}

void load(benchmark::State &state)
{
    bench::discardLog();
    const QTemporaryDir dir;
    const QString path = QFile::decodeName(mailFile(dir, bench::retrievalOf(state)));
    for (auto _ : state) {
        WMMSMsg msg;
        if (msg.construct(path, true) != 100 || msg.getMultiParts().subParts()->size() != 4) {
            state.SkipWithError("not loaded");
            return;
        }
    }
}

void openReadClose(benchmark::State &state)
{
    const QTemporaryDir dir;
    const QByteArray path = mailFile(dir, bench::retrievalOf(state));
    for (auto _ : state) {
        const int fd = ::open(path.constData(), O_RDONLY);
        struct stat file;
        QArray<char> bytes;
        if (::fstat(fd, &file) != 0 || !bytes.resize(static_cast<int>(file.st_size))
            || ::read(fd, bytes.data(), static_cast<size_t>(bytes.size())) != bytes.size()) {
            state.SkipWithError("not read");
        }
        ::close(fd);
    }
}

void save(benchmark::State &state)
{
    bench::discardLog();
    const QTemporaryDir dir;
    WMMSMsg msg = bench::retrievalOf(state);
    const QString path = QFile::decodeName(mailFile(dir, msg));
    for (auto _ : state) {
        if (msg.saveAs(path, nullptr, nullptr) != 300) {
            state.SkipWithError("not saved");
            return;
        }
    }
}

void writeSyncRename(benchmark::State &state)
{
    const QTemporaryDir dir;
    const QByteArray path = mailFile(dir, bench::retrievalOf(state));
    const QByteArray temporary = path + ".tmp";
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly)) {
        state.SkipWithError("not read");
        return;
    }
    const QByteArray bytes = file.readAll();
    for (auto _ : state) {
        const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        if (::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size()
            || ::fsync(fd) != 0 || ::close(fd) != 0
            || ::rename(temporary.constData(), path.constData()) != 0) {
            state.SkipWithError("not written");
            return;
        }
    }
}

BENCHMARK(load)->Apply(bench::sizes);
BENCHMARK(openReadClose)->Apply(bench::sizes);
BENCHMARK(save)->Apply(bench::sizes);
BENCHMARK(writeSyncRename)->Apply(bench::sizes);

} // namespace
