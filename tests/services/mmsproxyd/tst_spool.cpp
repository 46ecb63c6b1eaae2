// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/spool.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

#include <fcntl.h>

using namespace wmsg::proxy;
using Box = Spool::Box;
using Part = Spool::Part;

class TestSpool : public QObject {
    Q_OBJECT

private slots:
    void makesItsFolders();
    void opensAgain();
    void isRefusedToASecondDaemon();
    void folderOfOthersIsRefused_data();
    void folderOfOthersIsRefused();
    void pathThatIsNoFolderIsRefused();

    void recordsComeBackOldestFirst();
    void recordIsReplacedAsAWhole();
    void tooLongRecordIsRefused();
    void removedMessageIsGone();
    void filesGoAndTheRecordStays();
    void boxesAreApart();

    void damagedRecordIsKeptAside_data();
    void damagedRecordIsKeptAside();
    void recordThatIsNoFileIsKeptAside_data();
    void recordThatIsNoFileIsKeptAside();
    void strayFilesGo();
    void filesOfOthersStay();
    void foldersNamedLikeMessagesStay();

    void numbersGrow();
    void numbersAreNotUsedAgain_data();
    void numbersAreNotUsedAgain();

    void keptFilesHaveTheirReason();
    void keepingMayBeRepeated();
    void fetchedFileIsKeptAsPdu();
    void oldestOfTheKeptMakeRoom();
    void unfinishedReasonsGo();
    void onAFullDiskTheFilesAreKept();

    void missingSpoolIsAProblem();
    void fullDiskIsAProblem();
    void readOnlySpoolIsAProblem();
};

namespace {

QString idText(MessageId id)
{
    return QString::number(id).rightJustified(20, '0');
}

/// A spool that is open.
struct OpenSpool : Spool {
    explicit OpenSpool(const SpoolFolder &folder) : Spool(folder.path())
    {
        const QString problem = open();
        if (!problem.isEmpty()) {
            qFatal("cannot open the spool: %s", qPrintable(problem));
        }
    }
};

QList<int> numbersIn(const std::vector<Spool::Stored> &stored)
{
    QList<int> numbers;
    for (const Spool::Stored &one : stored) {
        numbers.append(one.record.value("n").toInt());
    }
    return numbers;
}

int modeOf(const QString &path)
{
    struct stat state = {};
    return ::lstat(qPrintable(path), &state) == 0 ? int(state.st_mode & 0777) : -1;
}

} // namespace

void TestSpool::makesItsFolders()
{
    const SpoolFolder folder;
    Spool spool(folder.path("deep/inside"));
    QCOMPARE(spool.open(), QString());
    QCOMPARE(folder.names("deep/inside"),
             (QStringList{"handed", "in", "kept", "lock", "out", "returned"}));
    for (const char *name : {"", "/handed", "/in", "/kept", "/out", "/returned"}) {
        QCOMPARE(modeOf(folder.path("deep/inside") + name), 0700);
    }
    QCOMPARE(modeOf(folder.path("deep/inside/lock")), 0600);
}

void TestSpool::opensAgain()
{
    const SpoolFolder folder;
    {
        const OpenSpool spool(folder);
    }
    const OpenSpool spool(folder);
    QVERIFY(spool.folder() == folder.path());
}

void TestSpool::isRefusedToASecondDaemon()
{
    const SpoolFolder folder;
    auto first = std::make_unique<OpenSpool>(folder);
    Spool second(folder.path());
    QCOMPARE(second.open(), folder.path() + ": another daemon uses it");
    first.reset();
    QCOMPARE(second.open(), QString());
}

void TestSpool::folderOfOthersIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");

    QTest::newRow("the spool, for the group") << "" << 0770;
    QTest::newRow("the spool, for all") << "" << 0707;
    QTest::newRow("a box") << "/in" << 0702;
    QTest::newRow("what was handed out") << "/handed" << 0777;
}

void TestSpool::folderOfOthersIsRefused()
{
    QFETCH(QString, name);
    QFETCH(int, mode);

    const SpoolFolder folder;
    {
        const OpenSpool spool(folder);
    }
    QCOMPARE(::chmod(qPrintable(folder.path() + name), mode_t(mode)), 0);
    Spool spool(folder.path());
    QCOMPARE(spool.open(), folder.path() + name + ": others may write to it");
}

void TestSpool::pathThatIsNoFolderIsRefused()
{
    const SpoolFolder folder;
    SpoolFolder::write(folder.path(), "a file");
    Spool spool(folder.path());
    QVERIFY2(spool.open().startsWith(folder.path() + ": "), qPrintable(spool.open()));
}

void TestSpool::recordsComeBackOldestFirst()
{
    const SpoolFolder folder;
    {
        OpenSpool spool(folder);
        std::vector<MessageId> ids;
        for (int n = 0; n < 12; ++n) {
            ids.push_back(spool.nextId());
        }
        for (const int n : {5, 11, 0, 3}) {
            QCOMPARE(spool.write(Box::Out, ids[size_t(n)], {{"n", n}}), QString());
        }
    }
    OpenSpool spool(folder);
    QCOMPARE(numbersIn(spool.restore(Box::Out)), (QList<int>{0, 3, 5, 11}));
}

void TestSpool::recordIsReplacedAsAWhole()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::In, id, {{"n", 1}, {"text", QString(5000, 'x')}}), QString());
    QCOMPARE(spool.write(Box::In, id, {{"n", 2}}), QString());
    const auto stored = spool.restore(Box::In);
    QCOMPARE(numbersIn(stored), QList<int>{2});
    QCOMPARE(stored.front().id, id);
    QCOMPARE(stored.front().record.keys(), (QStringList{"n", "version"}));
    QCOMPARE(folder.names("in"), QStringList{idText(id) + ".json"});
    QCOMPARE(modeOf(folder.path("in/" + idText(id) + ".json")), 0600);
}

void TestSpool::tooLongRecordIsRefused()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::In, id, {{"n", 1}}), QString());
    const QString problem =
        spool.write(Box::In, id, {{"text", QString(int(Spool::kLongestRecord), 'x')}});
    QVERIFY2(problem.endsWith(": the record is too long"), qPrintable(problem));
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>{1});
}

void TestSpool::removedMessageIsGone()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::Out, id, {{"n", 1}}), QString());
    for (const Part part : {Part::Mail, Part::Pdu, Part::Notice, Part::Fetched}) {
        SpoolFolder::write(spool.path(Box::Out, id, part), "bytes");
    }
    QCOMPARE(folder.names("out").size(), 5);
    QCOMPARE(spool.remove(Box::Out, id), QString());
    QCOMPARE(folder.names("out"), QStringList());
    QCOMPARE(spool.remove(Box::Out, id), QString()); // gone already
}

void TestSpool::filesGoAndTheRecordStays()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::In, id, {{"n", 1}}), QString());
    SpoolFolder::write(spool.path(Box::In, id, Part::Mail), "bytes");
    QVERIFY(spool.has(Box::In, id, Part::Mail));
    QCOMPARE(spool.removeFiles(Box::In, id), QString());
    QVERIFY(!spool.has(Box::In, id, Part::Mail));
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>{1});
}

void TestSpool::boxesAreApart()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::Out, id, {{"n", 1}}), QString());
    QCOMPARE(spool.write(Box::In, id, {{"n", 2}}), QString());
    QCOMPARE(spool.remove(Box::Out, id), QString());
    QCOMPARE(numbersIn(spool.restore(Box::Out)), QList<int>());
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>{2});
}

void TestSpool::damagedRecordIsKeptAside_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");

    const QString noObject = "the record is no JSON object: ";
    QTest::newRow("empty") << QByteArray() << noObject;
    QTest::newRow("zeros") << QByteArray(300, '\0') << noObject;
    QTest::newRow("cut in the middle") << QByteArray("{ \"version\": 1, \"n\": ") << noObject;
    QTest::newRow("a list") << QByteArray("[1]") << noObject;
    QTest::newRow("deep") << QByteArray(30000, '[') << noObject;
    QTest::newRow("no text at all") << QByteArray("\xFF\xFE\x00\x01", 4) << noObject;
    QTest::newRow("of a later version")
        << QByteArray("{\"version\": 2}") << "the record has version 2, and only 1 is known";
    QTest::newRow("of no version")
        << QByteArray("{}") << "the record has version 0, and only 1 is known";
    QTest::newRow("a version that is a text")
        << QByteArray("{\"version\": \"1\"}") << "the record has version 0, and only 1 is known";
    QTest::newRow("too long") << "{\"version\": 1, \"text\": \""
            + QByteArray(Spool::kLongestRecord, 'x') + "\"}"
                              << "the record is no file, or too long";
}

void TestSpool::damagedRecordIsKeptAside()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);

    const SpoolFolder folder;
    MessageId good = 0;
    MessageId bad = 0;
    {
        OpenSpool spool(folder);
        bad = spool.nextId();
        good = spool.nextId();
        QCOMPARE(spool.write(Box::Out, good, {{"n", 7}}), QString());
        SpoolFolder::write(spool.path(Box::Out, bad, Part::Mail), "the message");
        SpoolFolder::write(folder.path("out/" + idText(bad) + ".json"), bytes);
    }
    OpenSpool spool(folder);
    QCOMPARE(numbersIn(spool.restore(Box::Out)), QList<int>{7});
    QCOMPARE(folder.names("out"), QStringList{idText(good) + ".json"});

    const QString kept = "kept/out-" + idText(bad);
    QCOMPARE(SpoolFolder::read(folder.path(kept + ".mail")), "the message");
    QCOMPARE(SpoolFolder::read(folder.path(kept + ".json")), bytes);
    const QByteArray told = SpoolFolder::read(folder.path(kept + ".txt"));
    QVERIFY2(told.startsWith(reason.toUtf8()) && told.endsWith('\n'), told.constData());
}

void TestSpool::recordThatIsNoFileIsKeptAside_data()
{
    QTest::addColumn<bool>("isLink");

    QTest::newRow("a link to a good record") << true;
    QTest::newRow("a pipe") << false;
}

void TestSpool::recordThatIsNoFileIsKeptAside()
{
    QFETCH(bool, isLink);

    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    const QString record = folder.path("in/" + idText(id) + ".json");
    SpoolFolder::write(folder.outside("good"), "{\"version\": 1}");
    const int made = isLink ? ::symlink(qPrintable(folder.outside("good")), qPrintable(record))
                            : ::mkfifo(qPrintable(record), 0600);
    QCOMPARE(made, 0);
    SpoolFolder::write(spool.path(Box::In, id, Part::Mail), "the message");
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>());
    QCOMPARE(SpoolFolder::read(folder.path("kept/in-" + idText(id) + ".mail")), "the message");
    QCOMPARE(folder.names("in"), QStringList());
}

void TestSpool::strayFilesGo()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId whole = spool.nextId();
    const MessageId unfinished = spool.nextId();
    QCOMPARE(spool.write(Box::Out, whole, {{"n", 1}}), QString());
    SpoolFolder::write(spool.path(Box::Out, whole, Part::Mail), "stays");
    SpoolFolder::write(spool.path(Box::Out, whole, Part::Pdu) + ".tmp", "unfinished");
    SpoolFolder::write(folder.path("out/" + idText(whole) + ".json.new-a1B2c3"), "unfinished");
    SpoolFolder::write(spool.path(Box::Out, unfinished, Part::Mail), "without a record");
    SpoolFolder::write(folder.path("out/" + idText(unfinished) + ".mail.new-a1B2c3"), "");
    QCOMPARE(numbersIn(spool.restore(Box::Out)), QList<int>{1});
    QCOMPARE(folder.names("out"), (QStringList{idText(whole) + ".json", idText(whole) + ".mail"}));
}

void TestSpool::filesOfOthersStay()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const QStringList names{"00000000000000000000.mail",
                            "123.mail",
                            "99999999999999999999.json",
                            "README",
                            "a.json",
                            "lost+found"};
    for (const QString &name : names) {
        SpoolFolder::write(folder.path("in/" + name), "not ours");
    }
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>());
    QCOMPARE(folder.names("in"), names);
    QCOMPARE(folder.names("kept"), QStringList());
}

void TestSpool::foldersNamedLikeMessagesStay()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const QString name = idText(spool.nextId()) + ".json";
    QVERIFY(QDir(folder.path("in")).mkdir(name));
    QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>());
    QCOMPARE(folder.names("in"), QStringList{name});
}

void TestSpool::numbersGrow()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    MessageId last = 0;
    for (int n = 0; n < 1000; ++n) {
        const MessageId id = spool.nextId();
        QVERIFY(id > last);
        last = id;
    }
}

void TestSpool::numbersAreNotUsedAgain_data()
{
    QTest::addColumn<QString>("name");

    // A number of the year 2255, as a clock that was wrong may have given it.
    QTest::newRow("to be sent") << "out/00009000000000000000.json";
    QTest::newRow("received") << "in/00009000000000000000.mail";
    QTest::newRow("kept aside") << "kept/in-00009000000000000000.txt";
}

void TestSpool::numbersAreNotUsedAgain()
{
    QFETCH(QString, name);

    const SpoolFolder folder;
    {
        const OpenSpool spool(folder);
        SpoolFolder::write(folder.path(name), "{\"version\": 1}");
    }
    OpenSpool spool(folder);
    QCOMPARE(spool.nextId(), MessageId(9000000000000001));
}

void TestSpool::keptFilesHaveTheirReason()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::In, id, {{"n", 1}}), QString());
    SpoolFolder::write(spool.path(Box::In, id, Part::Notice), "note");
    QCOMPARE(spool.keep(Box::In, id, "it is no message"), QString());
    QCOMPARE(folder.names("in"), QStringList{idText(id) + ".json"}); // the record is still needed
    const QString kept = "kept/in-" + idText(id);
    QCOMPARE(SpoolFolder::read(folder.path(kept + ".note")), "note");
    QCOMPARE(SpoolFolder::read(folder.path(kept + ".txt")), "it is no message\n");
}

void TestSpool::keepingMayBeRepeated()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    SpoolFolder::write(spool.path(Box::In, id, Part::Notice), "note");
    QCOMPARE(spool.keep(Box::In, id, "once"), QString());
    SpoolFolder::write(spool.path(Box::In, id, Part::Mail), "mail");
    QCOMPARE(spool.keep(Box::In, id, "twice"), QString());
    const QString kept = "in-" + idText(id);
    QCOMPARE(folder.names("kept"), (QStringList{kept + ".mail", kept + ".note", kept + ".txt"}));
    QCOMPARE(SpoolFolder::read(folder.path("kept/" + kept + ".txt")), "twice\n");
}

void TestSpool::fetchedFileIsKeptAsPdu()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    SpoolFolder::write(spool.path(Box::In, id, Part::Fetched), "fetched");
    QCOMPARE(spool.keep(Box::In, id, "unreadable"), QString());
    QCOMPARE(SpoolFolder::read(folder.path("kept/in-" + idText(id) + ".pdu")), "fetched");
}

void TestSpool::oldestOfTheKeptMakeRoom()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    for (int n = 1; n <= Spool::kMostKept; ++n) {
        const QString box = n % 2 == 0 ? "kept/in-" : "kept/out-";
        SpoolFolder::write(folder.path(box + idText(MessageId(n)) + ".txt"), "old");
        SpoolFolder::write(folder.path(box + idText(MessageId(n)) + ".mail"), "old");
    }
    QCOMPARE(spool.keep(Box::In, spool.nextId(), "one more"), QString());
    const QStringList names = folder.names("kept");
    QCOMPARE(names.filter(".txt").size(), Spool::kMostKept);
    QVERIFY(!names.contains("out-" + idText(1) + ".txt"));
    QVERIFY(!names.contains("out-" + idText(1) + ".mail"));
    QVERIFY(names.contains("in-" + idText(2) + ".txt"));
}

void TestSpool::unfinishedReasonsGo()
{
    const SpoolFolder folder;
    const QString kept = "kept/in-" + idText(5) + ".txt";
    {
        const OpenSpool spool(folder);
        SpoolFolder::write(folder.path(kept), "a reason");
        SpoolFolder::write(folder.path(kept + ".new-a1B2c3"), "half a");
    }
    const OpenSpool spool(folder);
    QCOMPARE(folder.files("kept", ""), QStringList{folder.path(kept)});
}

void TestSpool::onAFullDiskTheFilesAreKept()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    SpoolFolder::write(spool.path(Box::In, id, Part::Mail), "mail");
    {
        const FullDisk full;
        QCOMPARE(spool.keep(Box::In, id, "unreadable"), QString());
    }
    QCOMPARE(folder.names("kept"), QStringList{"in-" + idText(id) + ".mail"});
}

void TestSpool::missingSpoolIsAProblem()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QVERIFY(QDir(folder.path()).removeRecursively());
    QVERIFY(spool.write(Box::Out, id, {}).contains(folder.path("out/")));
    QVERIFY(!spool.has(Box::Out, id, Part::Mail));
    QCOMPARE(spool.removeFiles(Box::Out, id), QString());
    QVERIFY(spool.restore(Box::Out).empty());
}

void TestSpool::fullDiskIsAProblem()
{
    const SpoolFolder folder;
    OpenSpool spool(folder);
    const MessageId id = spool.nextId();
    QCOMPARE(spool.write(Box::Out, id, {{"n", 1}}), QString());
    {
        const FullDisk full;
        const QString problem = spool.write(Box::Out, id, {{"n", 2}});
        QVERIFY2(problem.endsWith("File too large"), qPrintable(problem));
    }
    QCOMPARE(numbersIn(spool.restore(Box::Out)), QList<int>{1});
    QCOMPARE(folder.names("out").size(), 1);
}

void TestSpool::readOnlySpoolIsAProblem()
{
    const SpoolFolder folder;
    MessageId id = 0;
    {
        OpenSpool spool(folder);
        id = spool.nextId();
        QCOMPARE(spool.write(Box::Out, id, {{"n", 1}}), QString());
        SpoolFolder::write(folder.path("in/" + idText(id) + ".json"), "damaged");
        const ReadOnlyTree tree(folder.path());
        QVERIFY(spool.write(Box::Out, id, {{"n", 2}}).endsWith("Permission denied"));
        QVERIFY(spool.remove(Box::Out, id).endsWith("Permission denied"));
        QCOMPARE(numbersIn(spool.restore(Box::Out)), QList<int>{1});
        QCOMPARE(numbersIn(spool.restore(Box::In)), QList<int>()); // and it stays where it is
    }
    {
        const ReadOnlyTree tree(folder.path());
        Spool spool(folder.path());
        QVERIFY2(spool.open().endsWith("Permission denied"), qPrintable(spool.open()));
    }
    QCOMPARE(folder.names("in"), QStringList{idText(id) + ".json"});
    QCOMPARE(folder.names("kept"), QStringList());
}

QTEST_GUILESS_MAIN(TestSpool)
#include "tst_spool.moc"
