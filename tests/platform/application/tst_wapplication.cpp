// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/application/wapplication.h"

#include <QtCore/QCoreApplication>
#include <QtTest/QtTest>

class TestWApplication : public QObject {
    Q_OBJECT

private slots:
    void nameIsEmptyWithoutApplication()
    {
        QCoreApplication::setApplicationName("early");
        QVERIFY(!QCoreApplication::instance());
        QCOMPARE(WApplication::getAppName(), QString(""));
        QCoreApplication::setApplicationName(QString());
    }

    void nameIsThatOfTheApplication()
    {
        int argc = 1;
        char name[] = "/usr/bin/postcard";
        char *argv[] = {name, nullptr};
        const QCoreApplication application(argc, argv);
        QCOMPARE(WApplication::getAppName(), QString("postcard"));
        QCoreApplication::setApplicationName("album");
        QCOMPARE(WApplication::getAppName(), QString("album"));
    }

    void nameIsEmptyAgainAfterwards() { QCOMPARE(WApplication::getAppName(), QString("")); }
};

QTEST_APPLESS_MAIN(TestWApplication)
#include "tst_wapplication.moc"
