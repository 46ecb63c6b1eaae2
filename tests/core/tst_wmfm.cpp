// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfm.h"

#include <QtTest/QtTest>

// The numbers are part of the binary interface with applications.
static_assert(sizeof(WMFM::STATUS_T) == 4 && sizeof(WMFM::MSG_TYPE_T) == 4);
static_assert(std::is_same_v<std::underlying_type_t<WMFM::STATUS_T>, int>);
static_assert(std::is_same_v<std::underlying_type_t<WMFM::MSG_TYPE_T>, int>);

class TestWMFM : public QObject {
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void otherNumbersPassThrough_data();
    void otherNumbersPassThrough();
};

void TestWMFM::numbers_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("STATUS_OK") << int(WMFM::STATUS_OK) << 0;
    QTest::newRow("STATUS_INVALID_PARAM") << int(WMFM::STATUS_INVALID_PARAM) << 15;
    QTest::newRow("STATUS_SEND_FAIL") << int(WMFM::STATUS_SEND_FAIL) << 19;
    QTest::newRow("STATUS_LISTENER_EXISTS") << int(WMFM::STATUS_LISTENER_EXISTS) << 21;
    QTest::newRow("STATUS_CONTENT_OVERFLOW") << int(WMFM::STATUS_CONTENT_OVERFLOW) << 27;
    QTest::newRow("STATUS_FAIL") << int(WMFM::STATUS_FAIL) << 127;
    QTest::newRow("MSG_TYPE_MMS") << int(WMFM::MSG_TYPE_MMS) << 0;
    QTest::newRow("MSG_TYPE_SMS") << int(WMFM::MSG_TYPE_SMS) << 1;
}

void TestWMFM::numbers()
{
    QFETCH(int, value);
    QFETCH(int, expected);
    QCOMPARE(value, expected);
}

void TestWMFM::otherNumbersPassThrough_data()
{
    QTest::addColumn<int>("number");
    for (int number : {1, 5, 126, 128, 302, -1, INT_MAX, INT_MIN}) {
        QTest::addRow("%d", number) << number;
    }
}

void TestWMFM::otherNumbersPassThrough()
{
    QFETCH(int, number);
    QCOMPARE(int(WMFM::STATUS_T(number)), number);
    QCOMPARE(int(WMFM::MSG_TYPE_T(number)), number);
}

QTEST_GUILESS_MAIN(TestWMFM)
#include "tst_wmfm.moc"
