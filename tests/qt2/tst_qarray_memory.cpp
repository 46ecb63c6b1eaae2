// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "qt2/qarray.h"

#include <QtTest/QtTest>

#include <sys/resource.h>

// What happens when there is no memory. The limit of the process refuses large blocks here, and
// under the address sanitizer, which cannot live with that limit, its allocator does.

static constexpr int kMegabyte = 1 << 20;
#ifdef __SANITIZE_ADDRESS__
// The sanitizer looks the function up by name.
extern "C" Q_DECL_EXPORT const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=64";
}
static constexpr int kLargest = 60 * kMegabyte;
#else
static constexpr int kLargest = 300 * kMegabyte;
#endif
static constexpr int kTooMuch = 1024 * kMegabyte;

class TestQArrayMemory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aNewArrayIsNull();
    void resizeChangesNothing_data();
    void resizeChangesNothing();
    void growsExactlyWhenThereIsNoRoomForMore();
};

void TestQArrayMemory::initTestCase()
{
#ifndef __SANITIZE_ADDRESS__
    const rlimit limit = {512U * kMegabyte, 512U * kMegabyte};
    QCOMPARE(setrlimit(RLIMIT_AS, &limit), 0);
#endif
}

void TestQArrayMemory::aNewArrayIsNull()
{
    QVERIFY(QArray<char>(kTooMuch).isNull());
    QArray<char> array;
    QVERIFY(!array.resize(kTooMuch));
    QVERIFY(!array.reserve(kTooMuch));
    QVERIFY(!array.fill('x', kTooMuch));
    QVERIFY(array.isNull());
}

void TestQArrayMemory::resizeChangesNothing_data()
{
    QTest::addColumn<bool>("shared");
    QTest::addColumn<bool>("apart");
    QTest::addColumn<bool>("sliced");
    QTest::newRow("alone") << false << false << false;
    QTest::newRow("shared") << true << false << false;
    QTest::newRow("elements apart") << true << true << false;
    QTest::newRow("with a slice") << false << false << true;
}

void TestQArrayMemory::resizeChangesNothing()
{
    QFETCH(bool, shared);
    QFETCH(bool, apart);
    QFETCH(bool, sliced);
    QArray<char> array(10);
    const QArray<char> holder = shared ? array : QArray<char>();
    if (apart) {
        QVERIFY(array.resize(100));
    }
    const QArray<char> part = sliced ? QArray<char>::slice(array, 0, 5) : QArray<char>();
    array.fill('x', 10);
    const char *data = array.constData();
    QVERIFY(!array.resize(kTooMuch));
    QVERIFY(!array.reserve(kTooMuch));
    QVERIFY(!array.fill('y', kTooMuch));
    QCOMPARE(array.size(), 10);
    QVERIFY(array.constData() == data);
    QCOMPARE(array.toByteArray(), QByteArray(10, 'x'));
}

void TestQArrayMemory::growsExactlyWhenThereIsNoRoomForMore()
{
    // There is not enough for half as much again; for a little more there is.
    QArray<char> array(kLargest);
    QVERIFY(!array.isNull());
    array[0] = 'x';
    QVERIFY(array.resize(kLargest + kMegabyte));
    QCOMPARE(array.capacity(), kLargest + kMegabyte);
    QCOMPARE(array[0], 'x');
}

QTEST_GUILESS_MAIN(TestQArrayMemory)
#include "tst_qarray_memory.moc"
