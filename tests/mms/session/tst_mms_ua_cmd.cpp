// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_cmd.h"
#include "tests/support/hex.h"
#include "tests/support/socket_pair.h"

#include <QtTest/QtTest>

#include <climits>
#include <memory>

/// One row serves both directions: the record with these values, and its bytes.
struct CommandRow {
    const char *name;
    int type;
    int requestId;
    QString text; // for commands with a text
    int targetId; // for the others
    const char *wire;
};

// clang-format off
static const CommandRow kCommands[] = {
    {"send",             1, 7,  "/tmp/t00000.txt", 0,
     "01000000 1E000000  07000000 1E000000 00000000"
     "2F0074006D0070002F007400300030003000300030002E00740078007400"},
    {"send, 13 characters", 1, 258, "/tmp/mms/0001", 0,
     "01000000 1A000000  02010000 1A000000 00000000  2F0074006D0070002F006D006D0073002F003000300030003100"},
    {"register",         2, 0,  "a",   0, "02000000 02000000  00000000 02000000  6100"},
    {"register, empty",  2, 1,  "",    0, "02000000 00000000  01000000 00000000"},
    {"deregister",       3, 1,  "ab",  0, "03000000 04000000  01000000 04000000  61006200"},
    {"retrieve",         4, -1, "u",   0, "04000000 02000000  FFFFFFFF 02000000 00000000  7500"},
    {"any character",    2, 2,  QString(QChar(0xD800)) + QChar(0) + QChar(0xFFFF) + QChar(0x20AC), 0,
     "02000000 08000000  02000000 08000000  00D8 0000 FFFF AC20"},
    {"abort",            6, 4,  "",    9, "06000000 00000000  04000000 09000000"},
    {"pause",            7, 5,  "",    INT_MIN, "07000000 00000000  05000000 00000080"},
    {"resume",           8, INT_MAX, "", -1, "08000000 00000000  FFFFFF7F FFFFFFFF"},
};
// clang-format on

class TestCommands : public QObject {
    Q_OBJECT

private slots:
    void factory_data();
    void factory();
    void bothWays_data();
    void bothWays();
    void everyCutIsIncomplete_data();
    void everyCutIsIncomplete();
    void aTextIsCutToWhatArrived_data();
    void aTextIsCutToWhatArrived();
    void aTextIsReplaced();
    void aNullTextIsEmptyOnTheWire();
};

void TestCommands::factory_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("dataLen"); // 0: no such command
    const QMap<int, int> known{{1, 12}, {2, 8}, {3, 8}, {4, 12}, {6, 8}, {7, 8}, {8, 8}};
    for (int type : {INT_MIN, -1, 0, 1, 2, 3, 4, 6, 7, 8, 9, 255, 256, 257, 65537, INT_MAX}) {
        QTest::addRow("%d", type) << type << known.value(type);
    }
    QTest::newRow("command 5 has no class") << 5 << 0;
}

void TestCommands::factory()
{
    QFETCH(int, type);
    QFETCH(int, dataLen);
    const std::unique_ptr<MMS_UA_Cmd> command(MMS_UA_Cmd::factory(type));
    QCOMPARE(command != nullptr, dataLen != 0);
    if (command) {
        QCOMPARE(command->type(), type);
        QCOMPARE(command->dataLen(), dataLen);
        QCOMPARE(command->extraLen(), -1);
        QVERIFY(!command->extra());
        QCOMPARE(command->readState(), 0);
    }
}

static void addRows()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kCommands); ++i) {
        QTest::newRow(kCommands[i].name) << int(i);
    }
}

void TestCommands::bothWays_data()
{
    addRows();
}

void TestCommands::bothWays()
{
    QFETCH(int, row);
    const CommandRow &expected = kCommands[row];
    const QByteArray wire = fromHex(expected.wire);
    SocketPair pair;
    const std::unique_ptr<MMS_UA_Cmd> written(MMS_UA_Cmd::factory(expected.type));
    written->setRequestId(expected.requestId);
    if (auto *uriCommand = dynamic_cast<MMS_UA_UriCmd *>(written.get())) {
        uriCommand->setUri(expected.text);
        QCOMPARE(uriCommand->getUri(), expected.text);
    } else if (auto *appIdCommand = dynamic_cast<MMS_UA_AppIdCmd *>(written.get())) {
        appIdCommand->setAppId(expected.text);
        QCOMPARE(appIdCommand->getAppId(), expected.text);
    } else {
        dynamic_cast<MMS_UA_TargetCmd &>(*written).setTargetId(expected.targetId);
    }
    written->write(pair.socket());
    QCOMPARE(toHex(pair.taken()), toHex(wire));

    const std::unique_ptr<MMS_UA_Cmd> read(MMS_UA_Cmd::factory(expected.type));
    pair.feed(wire.mid(4));
    QCOMPARE(read->read(pair.socket()), 1);
    QCOMPARE(pair.unread().size(), 0);
    QCOMPARE(read->getRequestId(), expected.requestId);
    if (auto *uriCommand = dynamic_cast<MMS_UA_UriCmd *>(read.get())) {
        QCOMPARE(uriCommand->getUri(), expected.text);
    } else if (auto *appIdCommand = dynamic_cast<MMS_UA_AppIdCmd *>(read.get())) {
        QCOMPARE(appIdCommand->getAppId(), expected.text);
    } else {
        QCOMPARE(dynamic_cast<MMS_UA_TargetCmd &>(*read).getTargetId(), expected.targetId);
    }
    QCOMPARE(dynamic_cast<MMS_UA_TextCmd *>(read.get()) != nullptr, expected.type < 5);
}

void TestCommands::everyCutIsIncomplete_data()
{
    addRows();
}

void TestCommands::everyCutIsIncomplete()
{
    QFETCH(int, row);
    const QByteArray rest = fromHex(kCommands[row].wire).mid(4);
    for (int cut = 0; cut < rest.size(); ++cut) {
        SocketPair pair;
        const std::unique_ptr<MMS_UA_Cmd> command(MMS_UA_Cmd::factory(kCommands[row].type));
        pair.feed(rest.left(cut));
        QCOMPARE(command->read(pair.socket()), 0);
        QCOMPARE(command->isCutOff(), cut < 4 + command->dataLen());
        QVERIFY(!command->isRefused());
        QVERIFY(!command->extra());
        pair.feed(rest.mid(cut));
        QCOMPARE(command->read(pair.socket()), 1);
        QVERIFY(!command->isCutOff());
        QCOMPARE(command->getRequestId(), kCommands[row].requestId);
    }
}

void TestCommands::aTextIsCutToWhatArrived_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<QString>("text");
    QTest::newRow("said less") << QByteArray("04000000 00000000 02000000 61006200") << "a";
    QTest::newRow("said more") << QByteArray("04000000 00000000 FFFFFF7F 61006200") << "ab";
    QTest::newRow("said negative") << QByteArray("04000000 00000000 FFFFFFFF 61006200") << "";
    QTest::newRow("said lowest") << QByteArray("04000000 00000000 00000080 61006200") << "";
    QTest::newRow("said odd") << QByteArray("04000000 00000000 03000000 61006200") << "a";
    QTest::newRow("arrived odd") << QByteArray("03000000 00000000 04000000 610062") << "a";
    QTest::newRow("one byte") << QByteArray("01000000 00000000 02000000 61") << "";
    QTest::newRow("nothing arrived") << QByteArray("00000000 00000000 02000000") << "";
}

void TestCommands::aTextIsCutToWhatArrived()
{
    QFETCH(QByteArray, wire);
    SocketPair pair;
    pair.feed(fromHex(wire));
    MMS_UA_RegisterCmd command;
    QCOMPARE(command.read(pair.socket()), 1);
    QTEST(command.getAppId(), "text");
}

void TestCommands::aTextIsReplaced()
{
    MMS_UA_SendCmd command;
    command.setUri("a long text");
    command.setUri("b");
    QCOMPARE(command.getUri(), QString("b"));
    SocketPair pair;
    command.write(pair.socket());
    QCOMPARE(toHex(pair.taken()),
             toHex(fromHex("01000000 02000000 00000000 02000000 00000000 6200")));
}

void TestCommands::aNullTextIsEmptyOnTheWire()
{
    MMS_UA_SendCmd command;
    command.setUri(QString());
    QVERIFY(command.getUri().isNull());
    QCOMPARE(command.extraLen(), 0);
    SocketPair pair;
    command.write(pair.socket());
    QCOMPARE(toHex(pair.taken()), toHex(fromHex("01000000 00000000 00000000 00000000 00000000")));
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_mms_ua_cmd.moc"
