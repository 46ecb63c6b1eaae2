// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/address.h"

#include <QtTest/QtTest>

using namespace wmsg::sim;

class TestAddress : public QObject {
    Q_OBJECT

private slots:
    void keys_data();
    void keys();
    void entries_data();
    void entries();
};

void TestAddress::keys_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("key");

    QTest::newRow("number") << "+431234"
                            << "+431234";
    QTest::newRow("number with its type") << "+431234/TYPE=PLMN"
                                          << "+431234";
    QTest::newRow("type in lower case") << "+431234/type=plmn"
                                        << "+431234";
    QTest::newRow("as people write it") << " +43 (1) 2-3.4 "
                                        << "+431234";
    QTest::newRow("international zeros") << "00431234"
                                         << "+431234";
    QTest::newRow("short code") << "1234"
                                << "1234";
    QTest::newRow("mail") << "Ann@Example.ORG"
                          << "ann@example.org";
    QTest::newRow("mail with a name") << "Ann <Ann@example.org>"
                                      << "ann@example.org";
    QTest::newRow("mail with a bracket alone") << "a<b@c"
                                               << "a<b@c";
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("blanks") << "  "
                            << "";
    QTest::newRow("a type alone") << "/TYPE=PLMN"
                                  << "";
}

void TestAddress::keys()
{
    QFETCH(QString, address);
    QTEST(addressKey(address), "key");
}

void TestAddress::entries_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");

    QTest::newRow("number") << "+43 1" << 1 << "+43 1";
    QTest::newRow("number with its type") << "+431/TYPE=PLMN" << 1 << "+431";
    QTest::newRow("mail") << "a@b.c" << 0 << "a@b.c";
    QTest::newRow("mail with a name") << "A <a@b.c>" << 0 << "a@b.c";
}

void TestAddress::entries()
{
    QFETCH(QString, address);
    const WMFMEntry entry = entryOf(address);
    QTEST(int(entry.getEntryType()), "type");
    QTEST(entry.getEntryVal(), "value");
}

QTEST_GUILESS_MAIN(TestAddress)
#include "tst_address.moc"
