// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/record_boxes.h"
#include "services/common/time_of_day.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

using namespace wmsg::service;
using Box = RecordBoxes::Box;

/// What the spools of the daemons are made of; tst_spool goes through what one with files does.
class TestRecordBoxes : public QObject {
    Q_OBJECT

private slots:
    void withoutFilesARecordIsAll();
    void layoutNamesFiles();
    void layoutHasVersionAndLength();
    void unfinishedGoesWhereItIsAsked();
    void straysGoWhereTheyAreAsked();
    void logNamesWhatHasARecord();
    void numbersComeFromTheTime();
};

namespace {

constexpr auto kTemporary = ".new-a1B2c3";

RecordBoxes::Layout bare()
{
    return {"letter", {3, 1000}, {}};
}

RecordBoxes::Layout withFiles()
{
    return {"letter", {3, 1000}, {{QLatin1String("wax"), QLatin1String("seal")}}};
}

/// Boxes that are open.
class OpenBoxes : public RecordBoxes {
public:
    explicit OpenBoxes(const SpoolFolder &folder, Layout layout = bare())
        : RecordBoxes(folder.path(), std::move(layout))
    {
        const QString problem = open();
        if (!problem.isEmpty()) {
            qFatal("cannot open the boxes: %s", qPrintable(problem));
        }
    }

    using RecordBoxes::filePath;
    using RecordBoxes::hasFile;
    using RecordBoxes::removeStrays;
    using RecordBoxes::removeUnfinished;
};

QString nameOf(RecordId id, const char *ending)
{
    return QString::number(id).rightJustified(20, '0') + ending;
}

} // namespace

void TestRecordBoxes::withoutFilesARecordIsAll()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder);
    QCOMPARE(folder.names(""), (QStringList{"in", "kept", "lock", "out"}));
    const RecordId id = boxes.nextId();
    QCOMPARE(boxes.write(Box::Out, id, {{"n", 1}}), QString());
    QCOMPARE(boxes.removeFiles(Box::Out, id), QString());
    QCOMPARE(folder.names("out"), QStringList{nameOf(id, ".json")});
    boxes.setAside(Box::Out, id, "lost");
    QCOMPARE(folder.names("out"), QStringList());
    QCOMPARE(folder.names("kept"),
             (QStringList{"out-" + nameOf(id, ".json"), "out-" + nameOf(id, ".txt")}));
    QCOMPARE(boxes.remove(Box::Out, id), QString()); // gone already
}

void TestRecordBoxes::layoutNamesFiles()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder, withFiles());
    const RecordId id = boxes.nextId();
    QVERIFY(!boxes.hasFile(Box::In, id, 0));
    QCOMPARE(boxes.filePath(Box::In, id, 0), folder.path("in/" + nameOf(id, ".wax")));
    SpoolFolder::write(boxes.filePath(Box::In, id, 0), "red");
    QVERIFY(boxes.hasFile(Box::In, id, 0));
    QCOMPARE(boxes.keep(Box::In, id, "broken"), QString());
    QCOMPARE(SpoolFolder::read(folder.path("kept/in-" + nameOf(id, ".seal"))), "red");
}

void TestRecordBoxes::layoutHasVersionAndLength()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder);
    const RecordId id = boxes.nextId();
    QVERIFY(boxes.write(Box::In, id, {{"text", QString(1000, 'x')}}).endsWith("is too long"));
    QCOMPARE(boxes.write(Box::In, id, {}), QString());
    const auto stored = boxes.restore(Box::In);
    QCOMPARE(stored.size(), size_t(1));
    QCOMPARE(stored[0].record, (QJsonObject{{"version", 3}}));
}

void TestRecordBoxes::unfinishedGoesWhereItIsAsked()
{
    const SpoolFolder folder;
    const QString record = nameOf(7, ".json");
    {
        const OpenBoxes first(folder);
        for (const char *box : {"in/", "out/", "kept/in-"}) {
            SpoolFolder::write(folder.path(box + record + kTemporary), "half");
        }
        SpoolFolder::write(folder.path(QString("kept/README") + kTemporary), "not ours");
    }
    const OpenBoxes boxes(folder);
    QCOMPARE(folder.names("kept"), QStringList{QString("README") + kTemporary});
    boxes.removeUnfinished(Box::Out);
    QCOMPARE(folder.names("out"), QStringList());
    QCOMPARE(folder.names("in"), QStringList{record + kTemporary});
}

void TestRecordBoxes::straysGoWhereTheyAreAsked()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder, withFiles());
    const RecordId id = boxes.nextId();
    SpoolFolder::write(boxes.filePath(Box::Out, id, 0), "without a record");
    QVERIFY(boxes.restore(Box::Out).empty());
    QVERIFY(boxes.hasFile(Box::Out, id, 0));
    boxes.removeStrays(Box::Out);
    QVERIFY(!boxes.hasFile(Box::Out, id, 0));
}

void TestRecordBoxes::logNamesWhatHasARecord()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder);
    const QString id = nameOf(7, ".json");
    SpoolFolder::write(folder.path("in/" + id), "{}");
    QTest::ignoreMessage(QtWarningMsg,
                         "letter 7 is kept aside: "
                         "the record has version 0, and only 3 is known");
    QVERIFY(boxes.restore(Box::In).empty());
    QCOMPARE(folder.names("in"), QStringList());
}

void TestRecordBoxes::numbersComeFromTheTime()
{
    const SpoolFolder folder;
    OpenBoxes boxes(folder);
    const auto before = RecordId(currentTime());
    const RecordId id = boxes.nextId();
    const auto after = RecordId(currentTime());
    QVERIFY(id >= before * 1000 && id <= after * 1000);
    QVERIFY(boxes.nextId() > id);
}

QTEST_GUILESS_MAIN(TestRecordBoxes)
#include "tst_record_boxes.moc"
