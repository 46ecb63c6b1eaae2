// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

class TestStoreDriver : public QObject {
    Q_OBJECT

private slots:
    void missing();
};

// Qt looks for its drivers where nothing is.
void TestStoreDriver::missing()
{
    QCoreApplication::setLibraryPaths({});
    const StorageRoot root;
    LogCapture log;
    const HeaderRecord header;
    const BodyRecord body("a/b");
    unsigned short id = 7;
    QCOMPARE(root->CreateMMS(1, &id, &header, &body), int(MMS_ENG_NO_DRIVER));
    QCOMPARE(id, static_cast<unsigned short>(7));
    QCOMPARE(log.lines(),
             QStringList{"MMS engine: Qt has no SQLite driver (QSQLITE) here; the "
                         "package libqt6sql6-sqlite has it\n"});
    QVERIFY(!QFile::exists(root.store()));
}

QTEST_GUILESS_MAIN(TestStoreDriver)
#include "tst_store_driver.moc"
