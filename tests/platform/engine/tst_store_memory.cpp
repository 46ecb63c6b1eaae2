// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/refused_memory.h"

#include <QtTest/QtTest>

namespace {

/// The length of every text, which nothing else has.
constexpr int kLength = 4710;

/// A store with one message, all texts of which are long.
class LongMessage {
public:
    LongMessage()
    {
        const QString text(kLength, 'x');
        HeaderRecord header;
        header.subject = wide(text);
        header.auxAppInfo = wide(text);
        header.presentation = narrow(text.toLatin1());
        BodyRecord body(text.toLatin1());
        MMS_MSG_PART_T &part = body.add("text/plain", "x");
        part.contentLocation = narrow(text.toLatin1());
        part.headerText = narrow("Content-Type:text/plain;charset=utf-8;");
        QCOMPARE(m_root->CreateMMS(1, &m_id, &header, &body), int(MMS_ENG_OK));
        QByteArray words = text.toLatin1();
        const MMS_MOMT_STATUS_T status = {1, words.data(), 2, words.data(), 3};
        QCOMPARE(m_root->SetMMSMoMtStatus(m_id, &status), int(MMS_ENG_OK));
    }
    [[nodiscard]] unsigned short id() const { return m_id; }
    [[nodiscard]] const StorageRoot &root() const { return m_root; }

private:
    StorageRoot m_root;
    unsigned short m_id = 0;
};

const QStringList kRefusal = {"MMS engine: there is no memory\n"};

} // namespace

class TestStoreMemory : public QObject {
    Q_OBJECT

private slots:
    void header_data();
    void header();
    void body_data();
    void body();
    void status();
};

void TestStoreMemory::header_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("wide texts") << 2;
    QTest::newRow("bytes") << 1;
}

void TestStoreMemory::header()
{
    QFETCH(int, size);
    const LongMessage message;
    HeaderRecord header;
    LogCapture log;
    {
        const RefusedMemory none{kLength + 1, size_t(size)};
        QCOMPARE(message.root()->ReadMMSHdr(message.id(), &header), int(MMS_ENG_FAIL));
        QVERIFY(none.times() > 0);
    }
    QCOMPARE(log.lines(), kRefusal);
    QCOMPARE(header.shown(), HeaderRecord().shown());
    QCOMPARE(message.root()->ReadMMSHdr(message.id(), &header), int(MMS_ENG_OK));
}

void TestStoreMemory::body_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("size");
    QTest::newRow("part records") << int(MMS_ENG_MAX_PARTS) << int(sizeof(MMS_MSG_PART_T));
    QTest::newRow("texts") << kLength + 1 << 1;
    QTest::newRow("media type with charset") << int(sizeof "text/plain;charset=utf-8") << 1;
    QTest::newRow("path") << -1 << 2;
}

void TestStoreMemory::body()
{
    QFETCH(int, count);
    QFETCH(int, size);
    const LongMessage message;
    if (count < 0) {
        count = int((message.root().store() + "parts/1.part").size()) + 1;
    }
    BodyRecord body;
    LogCapture log;
    {
        const RefusedMemory none{size_t(count), size_t(size)};
        QCOMPARE(message.root()->ReadMMSBody(message.id(), &body), int(MMS_ENG_FAIL));
        QVERIFY(none.times() > 0);
    }
    QCOMPARE(log.lines(), kRefusal);
    QVERIFY(!body.contentType && body.partCount == 0 && !body.parts);
    // Nothing is held any more.
    QCOMPARE(message.root()->DeleteMMS(message.id()), int(MMS_ENG_OK));
    QCOMPARE(message.root().partFiles(), QStringList());
}

void TestStoreMemory::status()
{
    const LongMessage message;
    MMS_MOMT_STATUS_T status = {};
    LogCapture log;
    {
        const RefusedMemory none(kLength + 1, 1, 1); // the second text can be had
        QCOMPARE(message.root()->ReadMMSMoMtStatus(message.id(), &status), int(MMS_ENG_FAIL));
    }
    QCOMPARE(log.lines(), kRefusal);
    QVERIFY(!status.errorText && !status.statusText);
    QCOMPARE(status.result + status.status + status.reserved, 0);
}

QTEST_GUILESS_MAIN(TestStoreMemory)
#include "tst_store_memory.moc"
