// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/engine/numbered_message.h"
#include "tests/support/log_capture.h"

#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>
#include <QtTest/QtTest>

#include <csignal>
#include <memory>
#include <unistd.h>

namespace {

using Ids = QList<unsigned short>;

/// What a message of the store says about itself, for comparison with a NumberedMessage.
QString shownMessage(const StorageRoot &root, unsigned short id)
{
    HeaderRecord header;
    BodyRecord body;
    if (root->ReadMMSHdr(id, &header) != MMS_ENG_OK || root->ReadMMSBody(id, &body) != MMS_ENG_OK) {
        return "refused";
    }
    return header.shown() + '\n' + body.shown();
}

QString shownMessage(const NumberedMessage &message)
{
    return message.header.shown() + '\n' + message.body.shown();
}

/// The messages that writers reported, by id, and what the next one may be in the middle of.
class Ledger {
public:
    /// Takes the lines of one writer, the last of which may be cut.
    void take(const QByteArray &output)
    {
        for (const QByteArray &line : output.left(output.lastIndexOf('\n') + 1).split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (words.first() == "deleted") {
                m_numbers.remove(words.at(1).toInt());
            } else if (words.size() == 3) {
                m_numbers[words.at(1).toInt()] = words.at(2).toInt();
                m_last = qMax(m_last, words.at(2).toInt());
            } else if (!line.isEmpty()) {
                m_complaints += line;
            }
        }
    }
    [[nodiscard]] const QMap<int, int> &numbers() const { return m_numbers; }
    [[nodiscard]] const QList<QByteArray> &complaints() const { return m_complaints; }
    /// Behind any number that a writer can have used.
    [[nodiscard]] int nextFree() const { return m_last + 10; }
    void forget(int id) { m_numbers.remove(id); }
    void note(int id, int number) { m_numbers[id] = number; }

private:
    QMap<int, int> m_numbers;
    QList<QByteArray> m_complaints;
    int m_last = 0;
};

/// Makes the engine of this process open the store anew.
void reopen(const StorageRoot &root)
{
    static const StorageRoot elsewhere;
    elsewhere.use();
    unsigned int count = 0;
    QCOMPARE(elsewhere->CountMMS(1, &count), int(MMS_ENG_OK));
    root.use();
}

} // namespace

class TestStoreProcesses : public QObject {
    Q_OBJECT

private slots:
    void writtenHereAndReadThere();
    void manyAtOnce();
    void openedWhileSomebodyWrites();
    void aReaderInAnotherProcess();
    void writersAreKilled();
};

void TestStoreProcesses::writtenHereAndReadThere()
{
    const StorageRoot root;
    QProcess writer;
    writer.start(STORE_WRITER, {"5", "3"});
    QVERIFY(writer.waitForFinished(60000));
    QCOMPARE(writer.readAllStandardOutput(), QByteArray("created 1 5\ncreated 2 6\ncreated 3 7\n"));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(shownMessage(root, static_cast<unsigned short>(i + 1)),
                 shownMessage(NumberedMessage(i + 5)));
    }
}

void TestStoreProcesses::manyAtOnce()
{
    const StorageRoot root;
    std::vector<std::unique_ptr<QProcess>> writers;
    for (int i = 0; i < 4; ++i) {
        writers.push_back(std::make_unique<QProcess>());
        writers.back()->start(STORE_WRITER, {QString::number(i * 1000), "40"});
    }
    Ledger ledger;
    for (const auto &writer : writers) {
        QVERIFY(writer->waitForFinished(120000));
        QCOMPARE(writer->exitCode(), 0);
        ledger.take(writer->readAllStandardOutput());
    }
    QCOMPARE(ledger.complaints(), QList<QByteArray>());
    QCOMPARE(ledger.numbers().size(), 160);
    for (auto it = ledger.numbers().begin(); it != ledger.numbers().end(); ++it) {
        QCOMPARE(shownMessage(root, static_cast<unsigned short>(it.key())),
                 shownMessage(NumberedMessage(it.value())));
    }
    QStringList problems;
    QCOMPARE(root->CheckStore(&problems), int(MMS_ENG_OK));
    QCOMPARE(problems, QStringList());
}

// A writer at work keeps nobody from opening the store, and its file is not swept.
void TestStoreProcesses::openedWhileSomebodyWrites()
{
    const StorageRoot root;
    reopen(root);
    unsigned int count = 9;
    QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK));
    {
        auto other = QSqlDatabase::addDatabase("QSQLITE", "writer");
        other.setDatabaseName(root.store() + "messages.db");
        QVERIFY(other.open());
        QSqlQuery query(other);
        QVERIFY(query.exec("BEGIN IMMEDIATE"));
        QFile file(root.store() + "parts/1.part");
        QVERIFY(file.open(QIODevice::WriteOnly));
        reopen(root);
        LogCapture log;
        QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK));
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(file.exists());
        QVERIFY(query.exec("ROLLBACK"));
        reopen(root);
        QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK));
        QVERIFY(!file.exists());
    }
    QSqlDatabase::removeDatabase("writer");
}

// While this process holds a body, others may do what they like with the message.
void TestStoreProcesses::aReaderInAnotherProcess()
{
    const StorageRoot root;
    const NumberedMessage message(1);
    unsigned short id = 0;
    QCOMPARE(root->CreateMMS(MMS_ENG_INBOX, &id, &message.header, &message.body), int(MMS_ENG_OK));
    BodyRecord held;
    QCOMPARE(root->ReadMMSBody(id, &held), int(MMS_ENG_OK));
    QProcess writer;
    writer.start(STORE_WRITER, {"100"});
    QByteArray output;
    while (output.count("deleted") < 3) {
        QVERIFY(writer.waitForReadyRead(60000));
        output += writer.readAllStandardOutput();
    }
    writer.kill();
    QVERIFY(writer.waitForFinished(60000));
    QVERIFY(root.partFiles().contains("2.part")); // what the other one deleted stays as well
    QCOMPARE(held.shown(), message.body.shown());
    root->FreeMMSBdy(&held);
    reopen(root);
    unsigned int count = 0;
    QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK));
    QVERIFY(!root.partFiles().contains("2.part"));
}

void TestStoreProcesses::writersAreKilled()
{
    constexpr int kKills = 200;
    const StorageRoot root;
    Ledger ledger;
    int kills = 0;
    for (int round = 0; round < kKills; ++round) {
        QProcess writer;
        writer.start(STORE_WRITER, {QString::number(ledger.nextFree())});
        QByteArray output;
        while (output.count('\n') < 1 + round % 9) {
            QVERIFY(writer.waitForReadyRead(60000));
            output += writer.readAllStandardOutput();
        }
        // Anywhere in the next operation.
        usleep(static_cast<useconds_t>(round * 7919 % 4000));
        QCOMPARE(::kill(pid_t(writer.processId()), SIGKILL), 0);
        QVERIFY(writer.waitForFinished(60000));
        kills += writer.exitStatus() == QProcess::CrashExit ? 1 : 0;
        output += writer.readAllStandardOutput();
        ledger.take(output);
        QCOMPARE(ledger.complaints(), QList<QByteArray>());

        LogCapture log;
        reopen(root);
        Ids ids;
        QCOMPARE(root->ListMMS(MMS_ENG_INBOX, &ids), int(MMS_ENG_OK));
        QStringList problems;
        QCOMPARE(root->CheckStore(&problems), int(MMS_ENG_OK));
        QCOMPARE(problems, QStringList());
        QCOMPARE(log.lines(), QStringList());
        // One operation may be done and not reported.
        int differences = 0;
        const QMap<int, int> reported = ledger.numbers();
        for (const unsigned short id : ids) {
            HeaderRecord header;
            QCOMPARE(root->ReadMMSHdr(id, &header), int(MMS_ENG_OK));
            QCOMPARE(shownMessage(root, id), shownMessage(NumberedMessage(header.size)));
            differences += reported.value(id, -1) != header.size ? 1 : 0;
            ledger.note(id, header.size);
        }
        for (auto it = reported.begin(); it != reported.end(); ++it) {
            if (!ids.contains(static_cast<unsigned short>(it.key()))) {
                ++differences;
                ledger.forget(it.key());
            }
        }
        QVERIFY2(differences <= 1, qPrintable(QString("round %1: %2").arg(round).arg(differences)));
        // The store stays small: what was proved whole goes.
        while (ids.size() > 20) {
            const unsigned short id = ids.takeFirst();
            QCOMPARE(root->DeleteMMS(id), int(MMS_ENG_OK));
            ledger.forget(id);
        }
        QCOMPARE(root.partFiles().size(), ids.size());
    }
    QCOMPARE(kills, kKills);
}

QTEST_GUILESS_MAIN(TestStoreProcesses)
#include "tst_store_processes.moc"
