// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// What the bridge to the engine does without memory.

#include "mms/model/mms_util_conv.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"
#include "tests/support/refused_memory.h"

#include <QtTest/QtTest>

#include <cstddef>

namespace {

constexpr size_t kHeadOfArray = sizeof(wmsg::detail::ArrayBlock);
static_assert(kHeadOfArray % alignof(std::max_align_t) == 0, "elements stand right behind it");

/// A size that nothing else asks for.
constexpr int kSize = 4711;

/// A body record of the bridge, released at the end.
struct BridgeBody {
    BridgeBody() = default;
    ~BridgeBody()
    {
        MMS_ENG_Controller::Instance()->FreeMMSBdy(record);
        free(record);
    }
    Q_DISABLE_COPY_MOVE(BridgeBody)
    MMS_MSG_BDY_T *record = nullptr;
};

/// Adds a part in a file.
void addFile(BodyRecord &body, const QByteArray &mimeType, const QFile &file)
{
    MMS_MSG_PART_T &part = body.add(mimeType, QByteArray());
    part.storage = MMS_PART_IN_FILE;
    part.dataFile = wide(file.fileName());
    part.size = int(file.size());
}

WMMSMsg mixed(const QByteArray &bytes)
{
    WMMSMsg message;
    message.setContentType(typeOf(kMixed));
    message.getMultiParts() =
        parentOf(kMixed, {partOf("image/gif", "x"), partOf("image/png", bytes)});
    return message;
}

} // namespace

class TestEngineMemory : public QObject {
    Q_OBJECT

private slots:
    void bodyRecord();
    void partRecords();
    void dataOfAPart();
    void nothingIsStored_data();
    void nothingIsStored();
    void texts();
    void addresses();
    void wideFile();
    void textInMemory();
    void bytesInMemory();
};

void TestEngineMemory::bodyRecord()
{
    BridgeBody body;
    LogCapture log;
    const RefusedMemory none(1, sizeof(MMS_MSG_BDY_T));
    WMMSMsg().engDataInitMsgbdy("a/b", &body.record);
    QCOMPARE(none.times(), 1);
    QVERIFY(!body.record);
    QCOMPARE(log.lines(), QStringList{"Engine body allocation failed"});
}

void TestEngineMemory::partRecords()
{
    BridgeBody body;
    LogCapture log;
    const RefusedMemory none(MMS_ENG_MAX_PARTS, sizeof(MMS_MSG_PART_T));
    WMMSMsg().engDataInitMsgbdy("a/b", &body.record);
    QCOMPARE(none.times(), 1);
    QVERIFY(body.record);
    QCOMPARE(shownText(body.record->contentType), "\"a/b\"");
    QCOMPARE(body.record->partCount, 0U);
    QVERIFY(!body.record->parts);
    QCOMPARE(log.lines(), QStringList{"multiparts allocation failed"});
}

void TestEngineMemory::dataOfAPart()
{
    BodyRecord body("a/b");
    WMMSMultipart part = partOf("image/gif", QByteArray(kSize, 'x'));
    LogCapture log;
    const RefusedMemory none{size_t(kSize)};
    QCOMPARE(WMMSMsg().engDataAppendParts(&part, &body), 209U);
    QCOMPARE(none.times(), 1);
    QCOMPARE(body.partCount, 0U);
    QVERIFY(!body.parts[0].mimeType);
    QCOMPARE(log.lines(), QStringList());
}

void TestEngineMemory::nothingIsStored_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("size");
    QTest::addColumn<QStringList>("log"); // the line about it, and what follows
    QTest::newRow("body record") << 1 << int(sizeof(MMS_MSG_BDY_T))
                                 << QStringList{"Engine body allocation failed",
                                                "Body and multiparts are NULL"};
    QTest::newRow("part records") << int(MMS_ENG_MAX_PARTS) << int(sizeof(MMS_MSG_PART_T))
                                  << QStringList{"multiparts allocation failed",
                                                 "Body and multiparts are NULL"};
    QTest::newRow("data of the second part") << 0 << kSize << QStringList();
}

void TestEngineMemory::nothingIsStored()
{
    QFETCH(int, count);
    QFETCH(int, size);
    QFETCH(QStringList, log);
    const StorageRoot root;
    unsigned int messages = 9;
    QCOMPARE(root->CountMMS(1, &messages), int(MMS_ENG_OK)); // the store is open
    WMMSMsg message = mixed(QByteArray(kSize, 'x'));
    unsigned short id = MMS_ENG_INVALID_ID;
    LogCapture capture;
    {
        const RefusedMemory none{size_t(count), size_t(size)};
        QCOMPARE(message.constructEngMsg(&id, 1), 209U);
        QCOMPARE(none.times(), 1);
    }
    QCOMPARE(id, MMS_ENG_INVALID_ID);
    for (const QString &line : log) {
        QCOMPARE(capture.lines().count(line), 1);
    }
    QVERIFY(!capture.text().contains("msgID="));
    QCOMPARE(root->CountMMS(1, &messages), int(MMS_ENG_OK));
    QCOMPARE(messages, 0U);
    QCOMPARE(message.constructEngMsg(&id, 1), 300U); // the message is as it was
}

void TestEngineMemory::texts()
{
    const QByteArray text(kSize - 1, 'x');
    signed char byte = 0;
    signed char *copy = &byte;
    const RefusedMemory none{size_t(kSize)};
    MMS_UTIL_Conv::copy_charToCHAR(&copy, text.constData());
    QCOMPARE(none.times(), 1);
    QVERIFY(!copy);
}

void TestEngineMemory::addresses()
{
    const QList<WMFMEntry> list = {WMFMEntry(1, QString(kSize, 'x'))};
    unsigned short *out = nullptr;
    const RefusedMemory none(kSize + 1, sizeof(unsigned short));
    MMS_UTIL_Conv::copyAddress_AddrListToWchar(list, &out);
    QCOMPARE(none.times(), 1);
    QVERIFY(!out);
}

// The parts in front of it stay in the root.
void TestEngineMemory::wideFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    const QString text(kSize, 'x');
    file.write(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    QVERIFY(file.flush());
    BodyRecord body(kMixed.toLatin1());
    body.add("image/gif", "1");
    addFile(body, "text/plain;charset=UTF-16LE", file);
    body.add("image/gif", "2");
    LogCapture log;
    WMMSMultipart root;
    {
        const RefusedMemory none(kHeadOfArray + kSize);
        QVERIFY(!root.constructWMMSBdy(&body));
        QCOMPARE(none.times(), 1);
    }
    QCOMPARE(log.lines().mid(log.lines().size() - 2),
             (QStringList{"unicode to string: " + text, "No memory"}));
    QCOMPARE(shown(root), kMixed.toLatin1() + " id=- at=- [] {(image/gif id=- at=- [31])}");
    QCOMPARE(root.storedApproxSize(), 0);
    WMMSMultipart whole;
    QVERIFY(whole.constructWMMSBdy(&body));
    QCOMPARE(whole.subParts()->size(), 3);
}

void TestEngineMemory::textInMemory()
{
    const QString text(kSize, 'x');
    BodyRecord body("a/b");
    body.add("text/plain", QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * kSize));
    body.parts[0].size = kSize;
    WMMSMultipart root;
    const RefusedMemory none(kHeadOfArray + 2 * kSize);
    QVERIFY(!root.constructWMMSBdy(&body));
    QCOMPARE(none.times(), 1);
    QVERIFY(!root.subParts());
}

void TestEngineMemory::bytesInMemory()
{
    BodyRecord body("a/b");
    body.add("image/gif", QByteArray(kSize, 'x'));
    WMMSMultipart root;
    const RefusedMemory none(kHeadOfArray + kSize);
    QVERIFY(!root.constructWMMSBdy(&body));
    QCOMPARE(none.times(), 1);
    QVERIFY(!root.subParts());
}

QTEST_GUILESS_MAIN(TestEngineMemory)
#include "tst_engine_memory.moc"
