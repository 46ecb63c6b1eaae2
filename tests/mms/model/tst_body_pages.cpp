// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_msgdb_type.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

/// The examples of docs/formats/multipart.md and mail-file.md are what the code writes and reads.
class TestBodyPages : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void multipart();
    void mailFile();
};

/// The bytes of the only example of a page.
static QByteArray exampleOf(const char *name)
{
    QFile page(QString(WMSG_TEST_DATA "/../../docs/formats/") + name);
    if (!page.open(QIODevice::ReadOnly)) {
        qFatal("no page %s", name);
    }
    const QByteArray text = page.readAll();
    const QByteArray fence = "\n```hex\n";
    const auto start = text.indexOf(fence) + fence.size();
    const auto end = text.indexOf("\n```\n", start);
    if (text.count(fence) != 1 || end < 0) {
        qFatal("the page %s has not one example", name);
    }
    return fromHex(text.mid(start, end - start));
}

void TestBodyPages::multipart()
{
    WMMSMultipart root = parentOf(
        kMixed,
        {partOf("text/plain", "Hi", "", "h.txt"), partOf("image/gif", "GIF89a", "<p>", "p.gif")});
    QArray<char> out;
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), toHex(exampleOf("multipart.md")));

    WMMSMultipart back;
    QVERIFY(back.construct(out, 0));
    QCOMPARE(back.subParts()->size(), 2);
    QCOMPARE(shown(back.subParts()->at(0)), QByteArray("text/plain id=- at=h.txt [48 69]"));
    QCOMPARE(shown(back.subParts()->at(1)), "image/gif id=<p> at=p.gif [" + toHex("GIF89a") + ']');
}

void TestBodyPages::mailFile()
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, "+12"));
    message.setSubject("Hi");
    message.setPriority(129);
    message.setContentType(typeOf(kMixed));
    message.setMMSType(MMS_MSGDB_MSG_TYPE_LETTER_MIXED);
    message.getMultiParts().setSubMmsMultipart({partOf("text/plain", "Hi")});
    QTemporaryDir dir;
    int headerLength = 0;
    int bodyLength = 0;
    QCOMPARE(message.saveAs(dir.filePath("m"), &headerLength, &bodyLength), 300U);
    QFile file(dir.filePath("m"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(toHex(file.readAll()), toHex(exampleOf("mail-file.md")));
    QCOMPARE(headerLength, 32);
    QCOMPARE(bodyLength, 9);

    WMMSMsg back;
    QCOMPARE(back.construct(dir.filePath("m"), true), 100U);
    QCOMPARE(back.getSubject(), QString("Hi"));
    QCOMPARE(int(back.getMMSType()), 3);
    QCOMPARE(shown(back.getMultiParts().subParts()->first()),
             QByteArray("text/plain id=- at=- [48 69]"));
}

QTEST_GUILESS_MAIN(TestBodyPages)

#include "tst_body_pages.moc"
