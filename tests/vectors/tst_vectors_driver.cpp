// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

/// Checks that tst_vectors finds what is wrong, and nothing else: it runs it on folders of its own.
class TestVectorsDriver : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void verdict_data();
    void verdict();
    void anEmptyFolderFails();
    void everyLineIsRead();
    void failuresNameTheValue();

private:
    struct Outcome {
        int exitCode;
        QString output;
    };
    static Outcome run(const QList<QByteArray> &lines);
};

/// A vector, and what tst_vectors says against it; null when it passes.
struct Verdict {
    const char *name;
    const char *vector;
    const char *complaint;
};

// clang-format off
static const Verdict kVerdicts[] = {
    {"right", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65}})", nullptr},
    {"wrong value", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":66}})", "out.value"},
    {"a number is no truth value", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":true,"pos":1,"value":65}})", "out.ret"},
    {"expected key is missing", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1}})", "out.value"},
    {"nothing expected", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{}})", "out.pos"},
    {"value of a failed read", R"({"id":"a","op":"wsp.readByte","in":{"hex":""},"out":{"ret":0,"pos":0,"value":0}})", "out.value"},
    {"unknown operation", R"({"id":"a","op":"wsp.readWord","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65}})", "unknown operation \"wsp.readWord\""},
    {"unknown key of a vector", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65},"or":[]})", "unknown key \"or\""},
    {"unknown key of in", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41","len":1},"out":{"ret":1,"pos":1,"value":65}})", "unknown key \"len\""},
    {"unknown key of out", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65,"log":[]}})", "unknown key \"log\""},
    {"unknown key of a form", R"({"id":"a","op":"addr.entryToString","in":{"entry":{"type":1,"value":"1","kind":2}},"out":{"text":"<>[PLMN]1"}})", "unknown key \"kind\""},
    {"unknown step", R"({"id":"a","op":"wsp.cursor","in":{"hex":"41","steps":[["peek"]]},"out":{"results":[[1,0]]}})", "unknown step \"peek\""},
    {"unknown setter", R"({"id":"a","op":"pdu.getMessageLength","in":{"msg":{"root":null,"set":[["setAll",1]]}},"out":{"ok":true,"h":9,"b":0}})", "no setter of a message"},
    {"a number that does not fit", R"({"id":"a","op":"contenttype.getMimeType","in":{"id":256},"out":{"text":"*/*"}})", "no number that fits"},
    {"bytes that are not hex", R"({"id":"a","op":"wsp.readByte","in":{"hex":"4x"},"out":{"ret":1,"pos":1,"value":4}})", "no bytes in lower-case hex"},
    {"no JSON", R"({"id":"a",)", "one.jsonl:1: "},
    {"no id", R"({"op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65}})", "an object without an id"},

    {"an alternative is right", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":0,"pos":0},"alt":[{"ret":1,"pos":1,"value":65}]})", nullptr},
    {"no alternative is right", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":0,"pos":0},"alt":[{"ret":1,"pos":1,"value":66}]})", "out.pos"},
    {"unknown key of an alternative", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":65},"alt":[{"x":1}]})", "unknown key \"x\""},

    {"any value", R"({"id":"a","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":{"any":true}}})", nullptr},
    {"prefix", R"({"id":"a","op":"wsp.readTextString","in":{"hex":"414200"},"out":{"ret":1,"pos":3,"value":{"prefix":"A"}}})", nullptr},
    {"wrong prefix", R"({"id":"a","op":"wsp.readTextString","in":{"hex":"414200"},"out":{"ret":1,"pos":3,"value":{"prefix":"B"}}})", "out.value"},
    {"an empty text may be null", R"({"id":"a","op":"contenttype.getParam","in":{"type":{"main":"a"},"name":"n"},"out":{"value":""}})", nullptr},
    {"null must be null", R"({"id":"a","op":"part.script","in":{"steps":[["setContentID",""],["getContentID"]]},"out":{"results":[{"void":true},null]}})", "out.results[1]"},
    {"null is null", R"({"id":"a","op":"part.script","in":{"steps":[["setContentID",null],["getContentID"]]},"out":{"results":[{"void":true},null]}})", nullptr},
    {"not null", R"({"id":"a","op":"part.script","in":{"steps":[["setContentID",""],["getContentID"]]},"out":{"results":[{"void":true},{"nn":""}]}})", nullptr},
    {"null is not not null", R"({"id":"a","op":"part.script","in":{"steps":[["setContentID",null],["getContentID"]]},"out":{"results":[{"void":true},{"nn":""}]}})", "out.results[1]"},
    {"a result too many", R"({"id":"a","op":"mask.script","in":{"steps":[["getMask",1],["getMask",2]]},"out":{"results":[0]}})", "out.results"},

    {"lone surrogates and NUL stay", R"({"id":"a","op":"entry.make","in":{"args":[0,"\ud800\u0000\udc00\ud83d\ude00"]},"out":{"type":0,"value":"\ud800\u0000\udc00\ud83d\ude00","name":"","valid":true,"display":"\ud800\u0000\udc00\ud83d\ude00"}})", nullptr},
    {"another lone surrogate", R"({"id":"a","op":"entry.make","in":{"args":[0,"\ud800x"]},"out":{"type":0,"value":"\ud801x","name":"","valid":true,"display":"\ud800x"}})", "out.value"},
    {"a text ends not at NUL", R"({"id":"a","op":"entry.make","in":{"args":[0,"a\u0000b"]},"out":{"type":0,"value":"a\u0000c","name":"","valid":true,"display":"a\u0000b"}})", "out.value"},

    {"log", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":["from: \n","\t+1 n"]}})", nullptr},
    {"log in other pieces", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":["from",": \t+1 n"]}})", nullptr},
    {"other log", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":["from: ","\t+2 n"]}})", "out.log"},
    {"log line too many", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":["from: "]}})", "out.log"},
    {"log prefix", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":[{"prefix":"fr"},"\t+1 n"]}})", nullptr},
    {"log prefix at the end", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":["from: ",{"prefix":"\t+"}]}})", nullptr},
    {"log after a prefix", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":[{"prefix":"fr"},"\t+1"]}})", "out.log"},
    {"log prefixes in their order", R"({"id":"a","op":"field.print","in":{"id":9,"value":{"type":1,"value":"+1","name":"n"}},"out":{"log":[{"prefix":"fr"},{"prefix":"+1"},{"prefix":"from"}]}})", "out.log"},
    {"nothing logged", R"({"id":"a","op":"field.print","in":{"id":15,"value":129},"out":{"log":[]}})", nullptr},
    {"nothing logged, something expected", R"({"id":"a","op":"field.print","in":{"id":15,"value":129},"out":{"log":["priority"]}})", "out.log"},

    {"UTC", R"({"id":"a","op":"field.read","in":{"id":5,"hex":"0400000e10"},"out":{"ret":1,"pos":5,"fields":{"msgDate":{"date":"1970-01-01","time":"01:00:00"}}}})", nullptr},
    {"another time zone", R"({"id":"a","op":"field.read","in":{"id":5,"hex":"0400000e10","tz":"XST-3"},"out":{"ret":1,"pos":5,"fields":{"msgDate":{"date":"1970-01-01","time":"04:00:00"}}}})", nullptr},
    {"the wrong time zone", R"({"id":"a","op":"field.read","in":{"id":5,"hex":"0400000e10","tz":"XST-3"},"out":{"ret":1,"pos":5,"fields":{"msgDate":{"date":"1970-01-01","time":"01:00:00"}}}})", "out.fields.msgDate.time"},
};
// clang-format on

TestVectorsDriver::Outcome TestVectorsDriver::run(const QList<QByteArray> &lines)
{
    QTemporaryDir folder;
    if (!lines.isEmpty()) {
        QFile file(folder.filePath("one.jsonl"));
        file.open(QIODevice::WriteOnly);
        file.write(lines.join('\n'));
    }
    QProcess driver;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("WMSG_VECTORS", folder.path());
    driver.setProcessEnvironment(environment);
    driver.start(WMSG_VECTORS_DRIVER, QStringList());
    driver.waitForFinished(60000);
    const int exitCode = driver.exitStatus() == QProcess::NormalExit ? driver.exitCode() : -1;
    return {exitCode, QString::fromUtf8(driver.readAllStandardOutput())};
}

void TestVectorsDriver::verdict_data()
{
    QTest::addColumn<QByteArray>("vector");
    QTest::addColumn<QString>("complaint");
    for (const Verdict &row : kVerdicts) {
        QTest::newRow(row.name) << QByteArray(row.vector) << QString(row.complaint);
    }
}

void TestVectorsDriver::verdict()
{
    QFETCH(QByteArray, vector);
    QFETCH(QString, complaint);
    const Outcome outcome = run({vector});
    QVERIFY2(outcome.exitCode == (complaint.isEmpty() ? 0 : 1), qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains("FAIL") == !complaint.isEmpty(), qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains(complaint), qPrintable(outcome.output));
}

void TestVectorsDriver::anEmptyFolderFails()
{
    QCOMPARE(run({}).exitCode, 1);
}

void TestVectorsDriver::everyLineIsRead()
{
    const char *right =
        R"({"id":"%1","op":"contenttype.getMimeID","in":{"text":"%2"},"out":{"id":0}})";
    const auto line = [right](const char *id, const char *media) {
        return QString(right).arg(id, media).toUtf8();
    };
    QCOMPARE(run({line("a", "*/*"), line("b", "*/*")}).exitCode, 0);
    QCOMPARE(run({line("a", "*/*"), line("b", "text/*")}).exitCode, 1);
    QCOMPARE(run({line("b", "text/*"), line("a", "*/*")}).exitCode, 1);
    QCOMPARE(run({line("a", "*/*"), line("a", "*/*")}).exitCode, 1); // the same id twice
    const QString output = run({line("a", "*/*"), line("b", "text/*")}).output;
    QVERIFY2(output.contains("passed: 1\nfailed: 1\n"), qPrintable(output));
}

void TestVectorsDriver::failuresNameTheValue()
{
    const QByteArray wrong =
        R"({"id":"w/7","op":"wsp.readByte","in":{"hex":"41"},"out":{"ret":1,"pos":1,"value":66}})";
    const QString output = run({wrong}).output;
    QVERIFY2(output.contains("FAIL w/7: out.value"), qPrintable(output));
    QVERIFY2(output.contains("expected 66"), qPrintable(output));
    QVERIFY2(output.contains("got      65"), qPrintable(output));
}

QTEST_GUILESS_MAIN(TestVectorsDriver)
#include "tst_vectors_driver.moc"
