// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/mms_msg_records.h"

#include <QtTest/QtTest>

#include <cstddef>

class TestMmsMsgRecords : public QObject {
    Q_OBJECT

private slots:
    void wordsOf32Bits();
    void wordOrder();
};

namespace {

/// Compiles a program for a machine of 32 bits; returns what the compiler says, empty when it is
/// content.
QString compile32(const QByteArray &program)
{
    QProcess compiler;
    compiler.start(COMPILER,
                   {"-m32", "-ffreestanding", "-std=c++17", "-fsyntax-only", "-I" SOURCE_FOLDER,
                    "-x", "c++", "-"});
    compiler.write(program);
    compiler.closeWriteChannel();
    if (!compiler.waitForFinished(60000)) {
        return "no answer: " + compiler.errorString();
    }
    const QString words = QString::fromLocal8Bit(compiler.readAllStandardError());
    return compiler.exitCode() == 0 ? QString() : "refused: " + words;
}

} // namespace

void TestMmsMsgRecords::wordsOf32Bits()
{
    const QString cannot = compile32("static_assert(sizeof(void *) == 4, \"\");");
    if (!cannot.isEmpty()) {
        QSKIP(qPrintable("this compiler cannot: " + cannot));
    }
    const QByteArray sizes =
        "#include \"platform/engine/mms_msg_records.h\"\n"
        "static_assert(sizeof(MMS_MSG_HDR_T) == 76, \"\");"
        "static_assert(sizeof(MMS_MSG_BDY_T) == 12, \"\");"
        "static_assert(sizeof(MMS_MSG_PART_T) == 52, \"\");"
        "static_assert(sizeof(MMS_MSG_PART_T[MMS_ENG_MAX_PARTS]) == 2080, \"\");"
        "static_assert(sizeof(MMS_MOMT_STATUS_T) == 20, \"\");";
    QCOMPARE(compile32(sizes), QString());
    QVERIFY(compile32(sizes + "static_assert(sizeof(MMS_MSG_BDY_T) == 16, \"\");")
                .startsWith("refused: "));
}

// In words of 32 bits the n-th word is at 4n; here the order is what can be seen.
void TestMmsMsgRecords::wordOrder()
{
    const QList<size_t> header = {offsetof(MMS_MSG_HDR_T, from),
                                  offsetof(MMS_MSG_HDR_T, to),
                                  offsetof(MMS_MSG_HDR_T, cc),
                                  offsetof(MMS_MSG_HDR_T, bcc),
                                  offsetof(MMS_MSG_HDR_T, subject),
                                  offsetof(MMS_MSG_HDR_T, reserved),
                                  offsetof(MMS_MSG_HDR_T, priority),
                                  offsetof(MMS_MSG_HDR_T, msgClass),
                                  offsetof(MMS_MSG_HDR_T, expiry),
                                  offsetof(MMS_MSG_HDR_T, date),
                                  offsetof(MMS_MSG_HDR_T, deliveryReport),
                                  offsetof(MMS_MSG_HDR_T, readReport),
                                  offsetof(MMS_MSG_HDR_T, size),
                                  offsetof(MMS_MSG_HDR_T, deliveryTime),
                                  offsetof(MMS_MSG_HDR_T, presentation),
                                  offsetof(MMS_MSG_HDR_T, forwardable),
                                  offsetof(MMS_MSG_HDR_T, appId),
                                  offsetof(MMS_MSG_HDR_T, replyAppId),
                                  offsetof(MMS_MSG_HDR_T, auxAppInfo)};
    const QList<size_t> part = {offsetof(MMS_MSG_PART_T, reserved0),
                                offsetof(MMS_MSG_PART_T, reserved1),
                                offsetof(MMS_MSG_PART_T, mimeType),
                                offsetof(MMS_MSG_PART_T, contentId),
                                offsetof(MMS_MSG_PART_T, contentLocation),
                                offsetof(MMS_MSG_PART_T, reserved5),
                                offsetof(MMS_MSG_PART_T, fileName),
                                offsetof(MMS_MSG_PART_T, headerText),
                                offsetof(MMS_MSG_PART_T, storage),
                                offsetof(MMS_MSG_PART_T, data),
                                offsetof(MMS_MSG_PART_T, dataFile),
                                offsetof(MMS_MSG_PART_T, offset),
                                offsetof(MMS_MSG_PART_T, size)};
    const QList<size_t> body = {offsetof(MMS_MSG_BDY_T, contentType),
                                offsetof(MMS_MSG_BDY_T, partCount), offsetof(MMS_MSG_BDY_T, parts)};
    QCOMPARE(header.size(), 19);
    QCOMPARE(part.size(), 13);
    QCOMPARE(body.size(), 3);
    for (const QList<size_t> &offsets : {header, part, body}) {
        QVERIFY(std::is_sorted(offsets.begin(), offsets.end()));
        QCOMPARE(offsets.first(), size_t(0));
    }
}

QTEST_GUILESS_MAIN(TestMmsMsgRecords)
#include "tst_mms_msg_records.moc"
