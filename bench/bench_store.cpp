// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "bench/messages.h"
#include "platform/engine/mms_eng_controller.h"

#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <map>
#include <memory>
#include <unistd.h>

// Creating a message in a store that holds 100, 1 000 and 10 000 already, and reading one: its
// header, and all of it. The messages have a picture of 10 KB. What a create waits for is mostly
// the disk: four syncs.

namespace {

constexpr int kPictureSize = 10 << 10;

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "bench_store: %s\n", what);
        std::abort();
    }
}

/// A store of `count` messages. The first is created, the others are copies of its rows and file.
class FilledStore {
public:
    explicit FilledStore(int count) : m_count(count)
    {
        use();
        unsigned short id = MMS_ENG_INVALID_ID;
        require(bench::retrieval(kPictureSize).constructEngMsg(&id, MMS_ENG_INBOX) == 300,
                "no message created");
        copyRows();
        const QByteArray parts = m_root.path().toLocal8Bit() + "/mms/engine/parts/";
        for (int n = 2; n <= count; ++n) {
            require(::link((parts + "1.part").constData(),
                           (parts + QByteArray::number(n) + ".part").constData())
                        == 0,
                    "no file linked");
        }
        QStringList problems;
        require(MMS_ENG_Controller::Instance()->CheckStore(&problems) == MMS_ENG_OK
                    && problems.isEmpty(),
                "the store is not whole");
    }

    /// Makes it the store of this process, and opens it.
    void use() const
    {
        qputenv("UVO_EXTRA_SYS_DATA_PATH", m_root.path().toLocal8Bit());
        unsigned int count = 0;
        require(MMS_ENG_Controller::Instance()->CountMMS(MMS_ENG_INBOX, &count) == MMS_ENG_OK,
                "the store cannot be opened");
    }

    /// The id of some message, another each time.
    unsigned short someId()
    {
        m_state = m_state * 1664525U + 1013904223U;
        return static_cast<unsigned short>(m_state % static_cast<unsigned int>(m_count) + 1);
    }

private:
    void copyRows() const
    {
        {
            auto database = QSqlDatabase::addDatabase("QSQLITE", "fill");
            database.setDatabaseName(m_root.path() + "/mms/engine/messages.db");
            require(database.open(), "no database");
            run(database, "CREATE TEMP TABLE m AS SELECT * FROM message");
            run(database, "CREATE TEMP TABLE p AS SELECT * FROM part");
            run(database, "BEGIN");
            for (int n = 2; n <= m_count; ++n) {
                run(database, QString("UPDATE m SET id = %1, file = %1").arg(n));
                run(database, QString("UPDATE p SET message = %1").arg(n));
                run(database, "INSERT INTO message SELECT * FROM m");
                run(database, "INSERT INTO part SELECT * FROM p");
            }
            run(database, QString("UPDATE store SET last_id = %1, last_file = %1").arg(m_count));
            run(database, "COMMIT");
        }
        QSqlDatabase::removeDatabase("fill");
    }

    static void run(const QSqlDatabase &database, const QString &statement)
    {
        QSqlQuery query(database);
        require(query.exec(statement), qPrintable(query.lastError().text()));
    }

    QTemporaryDir m_root;
    int m_count;
    quint32 m_state = 1;
};

FilledStore &storeOf(const benchmark::State &state)
{
    static std::map<int, std::unique_ptr<FilledStore>> stores;
    bench::discardLog();
    const int count = static_cast<int>(state.range(0));
    auto &store = stores[count];
    if (!store) {
        store = std::make_unique<FilledStore>(count);
    }
    store->use();
    return *store;
}

void create(benchmark::State &state)
{
    storeOf(state);
    WMMSMsg msg = bench::retrieval(kPictureSize);
    for (auto _ : state) {
        unsigned short id = MMS_ENG_INVALID_ID;
        if (msg.constructEngMsg(&id, MMS_ENG_INBOX) != 300 || id <= state.range(0)) {
            state.SkipWithError("not created");
            return;
        }
        state.PauseTiming();
        if (MMS_ENG_Controller::Instance()->DeleteMMS(id) != MMS_ENG_OK) {
            state.SkipWithError("not removed");
            return;
        }
        state.ResumeTiming();
    }
}

void readHeader(benchmark::State &state)
{
    FilledStore &store = storeOf(state);
    for (auto _ : state) {
        WMMSMsg msg;
        if (msg.constructWMMSMsg(store.someId(), nullptr, false, 0) != 100 || msg.getMsgSize() != 0
            || msg.getTo().size() != 1) {
            state.SkipWithError("not read");
            return;
        }
    }
}

void readWhole(benchmark::State &state)
{
    FilledStore &store = storeOf(state);
    for (auto _ : state) {
        WMMSMsg msg;
        if (msg.constructWMMSMsg(store.someId(), nullptr, true, 0) != 100
            || msg.getMultiParts().subParts()->size() != 4
            || msg.getMultiParts().subParts()->last().getData().size() != kPictureSize) {
            state.SkipWithError("not read");
            return;
        }
    }
}

BENCHMARK(create)->Arg(100)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(readHeader)->Arg(100)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(readWhole)->Arg(100)->Arg(1000)->Arg(10000)->UseRealTime();

} // namespace
