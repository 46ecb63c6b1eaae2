// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/mms_eng_controller.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"

#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>
#include <QtTest/QtTest>

#include <climits>

namespace {

using Id = unsigned short;
using Ids = QList<unsigned short>;

/// What another program does to the database.
void changeStore(const StorageRoot &root, const QStringList &statements)
{
    {
        auto database = QSqlDatabase::addDatabase("QSQLITE", "other program");
        database.setDatabaseName(root.store() + "messages.db");
        QVERIFY(database.open());
        for (const QString &statement : statements) {
            QSqlQuery query(database);
            QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
        }
    }
    QSqlDatabase::removeDatabase("other program");
}

/// Sets all texts; those that are not empty differ.
void setAll(HeaderRecord &header, const QString &text)
{
    int number = 0;
    for (auto *word : {&header.from, &header.to, &header.cc, &header.bcc, &header.subject,
                       &header.appId, &header.replyAppId, &header.auxAppInfo}) {
        *word = wide(text.isEmpty() ? text : text + QString::number(number++));
    }
    header.presentation = narrow(text.isNull() ? QByteArray() : text.toUtf8());
}

Id created(const StorageRoot &root, Id folder, const QByteArray &text = "text")
{
    const HeaderRecord header;
    BodyRecord body("text/plain");
    body.add("text/plain", text);
    Id id = MMS_ENG_INVALID_ID;
    return root->CreateMMS(folder, &id, &header, &body) == MMS_ENG_OK ? id : MMS_ENG_INVALID_ID;
}

} // namespace

class TestMmsEngController : public QObject {
    Q_OBJECT

private slots:
    void header_data();
    void header();
    void numbersAtTheirLimits();
    void body();
    void partsInMemoryAndInFiles();
    void emptyParts();
    void manyParts();
    void contentType_data();
    void contentType();
    void charset_data();
    void charset();
    void status();
    void update();
    void updateOfNothing();
    void folders();
    void ids();
    void noIdIsFree();
    void remove();
    void aBodyStaysWhileItIsHeld();
    void freeTwice();
    void nullRecords();
    void anotherRoot();
    void storeRemovedUnderneath();
    void aRefusedBodyLeavesNothing();
    void leftOversAreSwept();
    void migration();
    void check();
};

void TestMmsEngController::header_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("ascii") << "Hello";
    QTest::newRow("chinese") << "你好，世界";
    QTest::newRow("arabic") << "مرحبا";
    QTest::newRow("emoji") << "🎉👩‍👩‍👧";
    QTest::newRow("half a pair") << QString("a") + QChar(0xD83C) + "b";
    QTest::newRow("long") << QString(100000, QChar(0x4F60));
}

void TestMmsEngController::header()
{
    QFETCH(QString, text);
    const StorageRoot root;
    HeaderRecord in;
    setAll(in, text);
    Id id = 0;
    const BodyRecord none("a/b");
    QCOMPARE(root->CreateMMS(MMS_ENG_DRAFTS, &id, &in, &none), int(MMS_ENG_OK));
    HeaderRecord out;
    QCOMPARE(root->ReadMMSHdr(id, &out), int(MMS_ENG_OK));
    QCOMPARE(out.shown(), in.shown());
    QCOMPARE(root.partFiles(), QStringList());
}

void TestMmsEngController::numbersAtTheirLimits()
{
    const StorageRoot root;
    const BodyRecord none("a/b");
    for (const int value : {0, 1, -1, INT_MAX, INT_MIN}) {
        HeaderRecord in;
        for (auto *word : {&in.reserved, &in.priority, &in.msgClass, &in.date, &in.deliveryReport,
                           &in.readReport, &in.size, &in.deliveryTime, &in.forwardable}) {
            *word = value;
        }
        in.expiry = unsigned(value);
        Id id = 0;
        QCOMPARE(root->CreateMMS(1, &id, &in, &none), int(MMS_ENG_OK));
        HeaderRecord out;
        QCOMPARE(root->ReadMMSHdr(id, &out), int(MMS_ENG_OK));
        QCOMPARE(out.shown(), in.shown());
    }
}

void TestMmsEngController::body()
{
    const StorageRoot root;
    BodyRecord in("application/vnd.wap.multipart.related;type=\"application/smil\"");
    MMS_MSG_PART_T &smil = in.add("application/smil", "<smil/>");
    smil.contentId = narrow("<\xE9>");
    smil.contentLocation = narrow("größe.smil");
    smil.fileName = narrow("/tmp/a.smil");
    smil.headerText = narrow("Content-Type:application/smil;name=a.smil");
    in.add("image/gif", QByteArray("GIF\0\xFF", 5));
    MMS_MSG_PART_T &text = in.add("text/plain", "你好🎉");
    text.contentId = narrow("");
    text.contentLocation = narrow("");
    const HeaderRecord header;
    Id id = 0;
    QCOMPARE(root->CreateMMS(MMS_ENG_INBOX, &id, &header, &in), int(MMS_ENG_OK));
    QCOMPARE(root.partFiles(), QStringList{"1.part"});
    BodyRecord out;
    QCOMPARE(root->ReadMMSBody(id, &out), int(MMS_ENG_OK));
    QCOMPARE(out.shown(), in.shown());
    QCOMPARE(out.parts[0].storage, int(MMS_PART_IN_FILE_REGION));
    QCOMPARE(shownText(out.parts[0].dataFile), '"' + root.store() + "parts/1.part\"");
    QCOMPARE(out.parts[2].offset, 12);
}

void TestMmsEngController::partsInMemoryAndInFiles()
{
    const StorageRoot root;
    QFile file(root.path() + "/größe 你好");
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("0123456789");
    file.flush();
    BodyRecord in("a/b");
    MMS_MSG_PART_T &whole = in.add("image/gif", QByteArray());
    whole.storage = MMS_PART_IN_FILE;
    whole.dataFile = wide(file.fileName());
    whole.offset = 3; // counts in a region alone
    whole.size = 10;
    MMS_MSG_PART_T &region = in.add("image/gif", QByteArray());
    region.storage = MMS_PART_IN_FILE_REGION;
    region.dataFile = wide(file.fileName());
    region.offset = 7;
    region.size = 3;
    const HeaderRecord header;
    Id id = 0;
    QCOMPARE(root->CreateMMS(1, &id, &header, &in), int(MMS_ENG_OK));
    file.remove();
    BodyRecord out;
    QCOMPARE(root->ReadMMSBody(id, &out), int(MMS_ENG_OK));
    QCOMPARE(out.bytes(0), QByteArray("0123456789"));
    QCOMPARE(out.bytes(1), QByteArray("789"));
    // What is read goes back in.
    QCOMPARE(root->UpdateMMS(1, id, &header, &out), int(MMS_ENG_OK));
    BodyRecord again;
    QCOMPARE(root->ReadMMSBody(id, &again), int(MMS_ENG_OK));
    QCOMPARE(again.bytes(1), QByteArray("789"));
    // Files that have too little are refused.
    LogCapture log;
    QCOMPARE(root->CreateMMS(1, &id, &header, &in), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(log.lines(), QStringList{"MMS engine: the file of part 1 cannot be read\n"});
    out.parts[1].size = 4;
    QCOMPARE(root->CreateMMS(1, &id, &header, &out), int(MMS_ENG_BAD_PARAM));
    out.parts[1].size = 3;
    out.parts[1].offset = -1;
    QCOMPARE(root->CreateMMS(1, &id, &header, &out), int(MMS_ENG_BAD_PARAM));
    out.parts[1].offset = 13;
    QCOMPARE(root->CreateMMS(1, &id, &header, &out), int(MMS_ENG_BAD_PARAM));
    unsigned int count = 0;
    QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK));
    QCOMPARE(count, 1U);
}

void TestMmsEngController::emptyParts()
{
    const StorageRoot root;
    BodyRecord in("a/b");
    in.add("text/plain", QByteArray());
    in.add("text/plain", "");
    in.add("text/plain", QByteArray()).size = 100; // without data there is nothing to count
    in.add("text/plain", "x");
    const HeaderRecord header;
    Id id = 0;
    QCOMPARE(root->CreateMMS(1, &id, &header, &in), int(MMS_ENG_OK));
    BodyRecord out;
    QCOMPARE(root->ReadMMSBody(id, &out), int(MMS_ENG_OK));
    QCOMPARE(out.partCount, 4U);
    for (unsigned int i = 0; i < 3; ++i) {
        QCOMPARE(out.parts[i].storage, int(MMS_PART_IN_MEMORY));
        QCOMPARE(out.parts[i].data, nullptr);
        QCOMPARE(out.parts[i].size, 0);
    }
    QCOMPARE(out.bytes(3), QByteArray("x"));
}

void TestMmsEngController::manyParts()
{
    const StorageRoot root;
    BodyRecord in("a/b");
    for (int i = 0; i < 40; ++i) {
        in.add("text/plain", QByteArray::number(i));
    }
    const HeaderRecord header;
    Id id = 0;
    QCOMPARE(root->CreateMMS(1, &id, &header, &in), int(MMS_ENG_OK));
    BodyRecord out;
    QCOMPARE(root->ReadMMSBody(id, &out), int(MMS_ENG_OK));
    QCOMPARE(out.partCount, 40U);
    QCOMPARE(out.shown(), in.shown());
    LogCapture log;
    in.partCount = 41;
    QCOMPARE(root->CreateMMS(1, &id, &header, &in), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(log.lines(),
             QStringList{"MMS engine: a message has at most 40 parts, and this one has 41\n"});
    in.partCount = 40;
}

void TestMmsEngController::contentType_data()
{
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<QByteArray>("out");
    QTest::newRow("null") << QByteArray() << QByteArray();
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("no parameter") << QByteArray("text/plain ") << QByteArray("text/plain");
    QTest::newRow("blank before the parameters")
        << QByteArray("a/b ;c=\"d e\";f=\"g\"") << QByteArray("a/b;c=\"d e\";f=\"g\"");
    QTest::newRow("no blank") << QByteArray("a/b;c=d") << QByteArray("a/b;c=d");
}

void TestMmsEngController::contentType()
{
    QFETCH(QByteArray, in);
    const StorageRoot root;
    const HeaderRecord header;
    const BodyRecord body(in);
    Id id = 0;
    QCOMPARE(root->CreateMMS(1, &id, &header, &body), int(MMS_ENG_OK));
    BodyRecord read;
    QCOMPARE(root->ReadMMSBody(id, &read), int(MMS_ENG_OK));
    QFETCH(QByteArray, out);
    QCOMPARE(shownText(read.contentType), shownText(out.isNull() ? nullptr : out.constData()));
}

void TestMmsEngController::charset_data()
{
    QTest::addColumn<QByteArray>("headerText");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("mimeType");
    const char *labelled = "Content-Type:text/plain;charset=utf-8;name=a\r\nContent-ID:b";
    QTest::newRow("named") << QByteArray(labelled) << QByteArray("é")
                           << "\"text/plain;charset=utf-8\"";
    QTest::newRow("named in the only line")
        << QByteArray("Content-Type:text/plain;charset=utf-8;name=a") << QByteArray("é")
        << "\"text/plain;charset=utf-8\"";
    QTest::newRow("not true") << QByteArray(labelled) << QByteArray("\xE9") << "\"text/plain\"";
    QTest::newRow("not named") << QByteArray("Content-Type:text/plain;") << QByteArray("a")
                               << "\"text/plain\"";
    QTest::newRow("in another line")
        << QByteArray("Content-Type:text/plain;\r\nContent-ID:a;charset=utf-8;") << QByteArray("a")
        << "\"text/plain\"";
    QTest::newRow("no header text") << QByteArray() << QByteArray("a") << "\"text/plain\"";
}

void TestMmsEngController::charset()
{
    QFETCH(QByteArray, headerText);
    QFETCH(QByteArray, bytes);
    const StorageRoot root;
    const HeaderRecord header;
    BodyRecord body("a/b");
    body.add("text/plain", bytes).headerText = narrow(headerText);
    Id id = 0;
    QCOMPARE(root->CreateMMS(1, &id, &header, &body), int(MMS_ENG_OK));
    BodyRecord read;
    QCOMPARE(root->ReadMMSBody(id, &read), int(MMS_ENG_OK));
    QTEST(shownText(read.parts[0].mimeType), "mimeType");
}

void TestMmsEngController::status()
{
    const StorageRoot root;
    const Id id = created(root, 1);
    const auto shown = [&root](Id message) {
        MMS_MOMT_STATUS_T status = {9, nullptr, 9, nullptr, 9};
        if (root->ReadMMSMoMtStatus(message, &status) != MMS_ENG_OK) {
            return QString("refused");
        }
        const QString words = QString("%1 %2 %3 %4 %5")
                                  .arg(status.result)
                                  .arg(shownText(status.errorText))
                                  .arg(status.status)
                                  .arg(shownText(status.statusText))
                                  .arg(status.reserved);
        free(status.errorText);
        free(status.statusText);
        return words;
    };
    QCOMPARE(shown(id), QString("0 - 0 - 0"));
    char error[] = "größe 你好";
    char text[] = "";
    const MMS_MOMT_STATUS_T status = {-5, error, 225, text, 7};
    QCOMPARE(root->SetMMSMoMtStatus(id, &status), int(MMS_ENG_OK));
    QCOMPARE(shown(id), QString("-5 \"größe 你好\" 225 \"\" 7"));
    LogCapture log;
    QCOMPARE(root->SetMMSMoMtStatus(77, &status), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(shown(77), QString("refused"));
    QCOMPARE(log.lines(), QStringList(2, "MMS engine: there is no message 77\n"));
}

void TestMmsEngController::update()
{
    const StorageRoot root;
    const Id id = created(root, MMS_ENG_DRAFTS, "first");
    const MMS_MOMT_STATUS_T status = {3, nullptr, 0, nullptr, 0};
    QCOMPARE(root->SetMMSMoMtStatus(id, &status), int(MMS_ENG_OK));
    HeaderRecord header;
    setAll(header, "second");
    BodyRecord body("c/d");
    body.add("image/gif", "1");
    body.add("image/gif", "2");
    QCOMPARE(root->UpdateMMS(MMS_ENG_OUTBOX, id, &header, &body), int(MMS_ENG_OK));
    HeaderRecord readHeader;
    QCOMPARE(root->ReadMMSHdr(id, &readHeader), int(MMS_ENG_OK));
    QCOMPARE(readHeader.shown(), header.shown());
    BodyRecord readBody;
    QCOMPARE(root->ReadMMSBody(id, &readBody), int(MMS_ENG_OK));
    QCOMPARE(readBody.shown(), body.shown());
    QCOMPARE(root.partFiles(), QStringList{"2.part"}); // the former one is gone
    Ids ids;
    QCOMPARE(root->ListMMS(MMS_ENG_DRAFTS, &ids), int(MMS_ENG_OK));
    QCOMPARE(ids, Ids());
    QCOMPARE(root->ListMMS(MMS_ENG_OUTBOX, &ids), int(MMS_ENG_OK));
    QCOMPARE(ids, Ids{id});
    MMS_MOMT_STATUS_T kept = {};
    QCOMPARE(root->ReadMMSMoMtStatus(id, &kept), int(MMS_ENG_OK));
    QCOMPARE(kept.result, 3);
}

void TestMmsEngController::updateOfNothing()
{
    const StorageRoot root;
    const HeaderRecord header;
    BodyRecord body("a/b");
    body.add("a/b", "x");
    LogCapture log;
    for (const Id id : {Id(0), Id(1), Id(65534), Id(65535)}) {
        QCOMPARE(root->UpdateMMS(1, id, &header, &body), int(MMS_ENG_NO_MESSAGE));
    }
    QCOMPARE(log.lines().size(), 4);
    QCOMPARE(log.lines().last(), QString("MMS engine: there is no message 65535\n"));
    QCOMPARE(root.partFiles(), QStringList());
}

void TestMmsEngController::folders()
{
    const StorageRoot root;
    const Id first = created(root, MMS_ENG_SENT);
    const Id second = created(root, 65534);
    const Id third = created(root, MMS_ENG_SENT);
    const Id fourth = created(root, 0);
    Ids found;
    QCOMPARE(root->ListFolders(&found), int(MMS_ENG_OK));
    QCOMPARE(found, (Ids{0, MMS_ENG_SENT, 65534}));
    QCOMPARE(root->ListMMS(MMS_ENG_SENT, &found), int(MMS_ENG_OK));
    QCOMPARE(found, (Ids{first, third}));
    QCOMPARE(root->ListMMS(MMS_ENG_INBOX, &found), int(MMS_ENG_OK));
    QCOMPARE(found, Ids());
    QCOMPARE(root->MoveMMS(second, MMS_ENG_SENT), int(MMS_ENG_OK));
    unsigned int count = 0;
    QCOMPARE(root->CountMMS(MMS_ENG_SENT, &count), int(MMS_ENG_OK));
    QCOMPARE(count, 3U);
    Id folder = 9;
    QCOMPARE(root->FindMMS(second, &folder), int(MMS_ENG_OK));
    QCOMPARE(folder, Id(MMS_ENG_SENT));
    QCOMPARE(root->FindMMS(fourth, &folder), int(MMS_ENG_OK));
    QCOMPARE(folder, Id(0));
    LogCapture log;
    QCOMPARE(root->MoveMMS(99, 1), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(root->FindMMS(99, &folder), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(log.lines(), QStringList(2, "MMS engine: there is no message 99\n"));
    QCOMPARE(root->MoveMMS(first, 65535), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(created(root, 65535), MMS_ENG_INVALID_ID);
}

void TestMmsEngController::ids()
{
    const StorageRoot root;
    QCOMPARE(created(root, 1), Id(1));
    QCOMPARE(created(root, 2), Id(2));
    QCOMPARE(root->DeleteMMS(2), int(MMS_ENG_OK));
    QCOMPARE(created(root, 1), Id(3)); // not yet used again
    changeStore(root, {"UPDATE store SET last_id = 65532"});
    QCOMPARE(created(root, 1), Id(65533));
    QCOMPARE(created(root, 1), Id(65534));
    QCOMPARE(created(root, 1), Id(2)); // all higher ones were used
    QCOMPARE(created(root, 1), Id(4));
    // The next one is taken.
    changeStore(root, {"UPDATE store SET last_id = 65532"});
    QCOMPARE(created(root, 1), Id(5));
}

void TestMmsEngController::noIdIsFree()
{
    const StorageRoot root;
    QCOMPARE(created(root, 1), Id(1));
    changeStore(root,
                {"WITH RECURSIVE n (id) AS (SELECT 2 UNION ALL SELECT id + 1 FROM n WHERE "
                 "id < 65534) INSERT INTO message (id, folder, reserved, priority, class, expiry, "
                 "date, delivery_report, read_report, size, delivery_time, forwardable, file_size) "
                 "SELECT id, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 FROM n"});
    LogCapture log;
    QCOMPARE(created(root, 1), MMS_ENG_INVALID_ID);
    QCOMPARE(log.lines(),
             QStringList{"MMS engine: the store " + root.store() + " is full: no id is free\n"});
    QCOMPARE(root.partFiles(), QStringList{"1.part"});
    QCOMPARE(root->DeleteMMS(65534), int(MMS_ENG_OK));
    QCOMPARE(created(root, 1), Id(65534));
    QCOMPARE(root->DeleteMMS(40000), int(MMS_ENG_OK));
    QCOMPARE(created(root, 1), Id(40000));
}

void TestMmsEngController::remove()
{
    const StorageRoot root;
    const Id id = created(root, 1);
    const Id other = created(root, 1, "other");
    QCOMPARE(root->DeleteMMS(id), int(MMS_ENG_OK));
    LogCapture log;
    HeaderRecord header;
    BodyRecord body;
    QCOMPARE(root->ReadMMSHdr(id, &header), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(root->ReadMMSBody(id, &body), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(body.parts, nullptr);
    QCOMPARE(root->DeleteMMS(id), int(MMS_ENG_NO_MESSAGE));
    QCOMPARE(log.lines(), QStringList(3, "MMS engine: there is no message 1\n"));
    QCOMPARE(root.partFiles(), QStringList{"2.part"});
    QCOMPARE(root->ReadMMSBody(other, &body), int(MMS_ENG_OK));
    QCOMPARE(body.bytes(0), QByteArray("other"));
}

void TestMmsEngController::aBodyStaysWhileItIsHeld()
{
    const StorageRoot root;
    const Id first = created(root, 1, "first");
    const Id second = created(root, 1, "second");
    {
        BodyRecord held;
        BodyRecord heldToo;
        QCOMPARE(root->ReadMMSBody(first, &held), int(MMS_ENG_OK));
        QCOMPARE(root->ReadMMSBody(second, &heldToo), int(MMS_ENG_OK));
        QCOMPARE(root->DeleteMMS(first), int(MMS_ENG_OK));
        QCOMPARE(root->DeleteMMS(second), int(MMS_ENG_OK));
        QCOMPARE(held.bytes(0), QByteArray("first"));
        root->FreeMMSBdy(&held);
        QCOMPARE(heldToo.bytes(0), QByteArray("second"));
        QCOMPARE(root.partFiles(), (QStringList{"1.part", "2.part"}));
    }
    QCOMPARE(root.partFiles(), QStringList());
}

void TestMmsEngController::freeTwice()
{
    const StorageRoot root;
    const Id id = created(root, 1);
    HeaderRecord header;
    BodyRecord body;
    QCOMPARE(root->ReadMMSHdr(id, &header), int(MMS_ENG_OK));
    QCOMPARE(root->ReadMMSBody(id, &body), int(MMS_ENG_OK));
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(root->FreeMMSHdr(&header), int(MMS_ENG_OK));
        QCOMPARE(root->FreeMMSBdy(&body), int(MMS_ENG_OK));
    }
    QCOMPARE(body.partCount, 0U);
    QCOMPARE(body.parts, nullptr);
    QCOMPARE(root->FreeMMSHdr(nullptr), int(MMS_ENG_OK));
    QCOMPARE(root->FreeMMSBdy(nullptr), int(MMS_ENG_OK));
}

void TestMmsEngController::nullRecords()
{
    const StorageRoot root;
    HeaderRecord header;
    BodyRecord body("a/b");
    Id id = 7;
    LogCapture log;
    QCOMPARE(root->CreateMMS(1, nullptr, &header, &body), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->CreateMMS(1, &id, nullptr, &body), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->CreateMMS(1, &id, &header, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->UpdateMMS(1, 1, nullptr, &body), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->UpdateMMS(1, 1, &header, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->ReadMMSHdr(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->ReadMMSBody(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->ReadMMSMoMtStatus(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->SetMMSMoMtStatus(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->ListFolders(nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->ListMMS(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->CountMMS(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->FindMMS(1, nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(root->CheckStore(nullptr), int(MMS_ENG_BAD_PARAM));
    QCOMPARE(log.lines().size(), 14);
    QCOMPARE(log.lines().first(),
             QString("MMS engine: CreateMMS was given no record or no folder\n"));
    QCOMPARE(id, Id(7));
    // A body that says to have parts and has none.
    MMS_MSG_BDY_T broken = {nullptr, 1, nullptr};
    QCOMPARE(root->CreateMMS(1, &id, &header, &broken), int(MMS_ENG_BAD_PARAM));
}

void TestMmsEngController::anotherRoot()
{
    const StorageRoot first;
    QCOMPARE(created(first, 1), Id(1));
    QCOMPARE(created(first, 1), Id(2));
    {
        const StorageRoot second;
        QCOMPARE(created(second, 1), Id(1));
        QVERIFY(QFile::exists(second.store() + "messages.db"));
    }
    unsigned int count = 0;
    QCOMPARE(first->CountMMS(1, &count), int(MMS_ENG_OK));
    QCOMPARE(count, 2U);
}

void TestMmsEngController::storeRemovedUnderneath()
{
    const StorageRoot root;
    QCOMPARE(created(root, 1), Id(1));
    QVERIFY(QDir(root.store()).removeRecursively());
    QCOMPARE(created(root, 1), Id(1));
    QCOMPARE(root.partFiles(), QStringList{"1.part"});
}

// The bytes are there before the rows; when these are refused the bytes go.
void TestMmsEngController::aRefusedBodyLeavesNothing()
{
    const StorageRoot root;
    const Id id = created(root, 1, "kept");
    changeStore(root,
                {"CREATE TRIGGER refusal BEFORE INSERT ON part BEGIN "
                 "SELECT RAISE(ABORT, 'not today'); END"});
    const HeaderRecord header;
    BodyRecord body("text/plain");
    body.add("text/plain", "new");
    LogCapture log;
    QCOMPARE(root->UpdateMMS(2, id, &header, &body), int(MMS_ENG_FAIL));
    QCOMPARE(created(root, 1, "new"), MMS_ENG_INVALID_ID);
    QCOMPARE(log.lines(),
             QStringList(2, "MMS engine: the store " + root.store() + ": not today\n"));
    QCOMPARE(root.partFiles(), QStringList{"1.part"});
    BodyRecord read;
    QCOMPARE(root->ReadMMSBody(id, &read), int(MMS_ENG_OK));
    QCOMPARE(read.bytes(0), QByteArray("kept"));
    Id folder = 0;
    QCOMPARE(root->FindMMS(id, &folder), int(MMS_ENG_OK));
    QCOMPARE(folder, Id(1));
}

// A killed writer leaves a file, and the number of it is given again.
void TestMmsEngController::leftOversAreSwept()
{
    const StorageRoot root;
    QCOMPARE(created(root, 1, "kept"), Id(1));
    const QString parts = root.store() + "parts/";
    for (const char *name : {"2.part", "77.part", "0.part", "02.part", "notes.txt"}) {
        QFile file(parts + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("left over");
    }
    const Id second = created(root, 1, "new");
    BodyRecord body;
    QCOMPARE(root->ReadMMSBody(second, &body), int(MMS_ENG_OK));
    QCOMPARE(body.bytes(0), QByteArray("new"));
    root->FreeMMSBdy(&body);
    {
        const StorageRoot elsewhere;
        QCOMPARE(created(elsewhere, 1), Id(1));
    }
    unsigned int count = 0;
    QCOMPARE(root->CountMMS(1, &count), int(MMS_ENG_OK)); // opens again
    QCOMPARE(count, 2U);
    // What is no file of the engine stays.
    QCOMPARE(root.partFiles(), (QStringList{"0.part", "02.part", "1.part", "2.part", "notes.txt"}));
}

void TestMmsEngController::migration()
{
    const StorageRoot root;
    QCOMPARE(created(root, 5, "old"), Id(1));
    changeStore(root, {"DROP INDEX message_by_folder", "PRAGMA user_version = 1"});
    {
        const StorageRoot elsewhere;
        QCOMPARE(created(elsewhere, 1), Id(1));
    }
    Ids ids;
    QCOMPARE(root->ListMMS(5, &ids), int(MMS_ENG_OK));
    QCOMPARE(ids, Ids{1});
    changeStore(root, {"DROP INDEX message_by_folder"}); // it is there again
    changeStore(root, {"PRAGMA user_version = 3"});
    {
        const StorageRoot elsewhere;
        QCOMPARE(created(elsewhere, 1), Id(1));
    }
    LogCapture log;
    QCOMPARE(root->ListMMS(5, &ids), int(MMS_ENG_NEWER));
    QCOMPARE(log.lines(),
             QStringList{"MMS engine: the store " + root.store()
                         + " has version 3, and this engine knows 2\n"});
}

void TestMmsEngController::check()
{
    const StorageRoot root;
    for (const char *text : {"one", "two", "three", "four"}) {
        QVERIFY(created(root, 1, text) != MMS_ENG_INVALID_ID);
    }
    QStringList problems = {"old"};
    QCOMPARE(root->CheckStore(&problems), int(MMS_ENG_OK));
    QCOMPARE(problems, QStringList());
    const QString parts = root.store() + "parts/";
    QVERIFY(QFile::remove(parts + "1.part"));
    QVERIFY(QFile::resize(parts + "2.part", 2));
    QFile third(parts + "3.part");
    QVERIFY(third.open(QIODevice::ReadWrite));
    third.write("T");
    third.close();
    changeStore(root, {"UPDATE part SET size = 5 WHERE message = 4"});
    QFile::copy(parts + "4.part", parts + "9.part");
    QCOMPARE(root->CheckStore(&problems), int(MMS_ENG_OK));
    QCOMPARE(problems,
             (QStringList{"message 4: part 1 lies outside of its message",
                          "message 1: " + parts + "1.part: No such file or directory",
                          "message 2: " + parts + "2.part has 2 bytes instead of 3",
                          "message 3: " + parts + "3.part has other bytes"}));
    QCOMPARE(root.partFiles(), (QStringList{"2.part", "3.part", "4.part"}));
    // What is not whole is not handed out.
    LogCapture log;
    BodyRecord body;
    QCOMPARE(root->ReadMMSBody(1, &body), int(MMS_ENG_CORRUPT));
    QCOMPARE(root->ReadMMSBody(2, &body), int(MMS_ENG_CORRUPT));
    QCOMPARE(log.lines().first(),
             "MMS engine: the file " + parts + "1.part of message 1 is missing or not whole\n");
}

QTEST_GUILESS_MAIN(TestMmsEngController)
#include "tst_mms_eng_controller.moc"
