// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

/// Records in the boxes of a spool, as a daemon before has left them.

/// Writes a record, and not durably: that takes long for many.
inline void writeRecord(const QString &box, int id, const QByteArray &json)
{
    QFile file(box + QString("/%1.json").arg(id, 20, 10, QChar('0')));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(json), json.size());
}
inline void writeRecord(const QString &box, int id, QJsonObject record)
{
    record["version"] = 1;
    writeRecord(box, id, QJsonDocument(record).toJson());
}

/// What is wrong with a record: one thing stands in the place of another.
struct Spoiled {
    const char *name;
    QByteArray from;
    QByteArray to;
};

/// Rows of a good record, and of what cannot be used.
inline void addRecordRows(const QByteArray &good, const QList<Spoiled> &bad)
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("isGood");
    QTest::newRow("this one is good") << good << true;
    for (const Spoiled &one : bad) {
        QByteArray json = good;
        QTest::newRow(one.name) << json.replace(one.from, one.to) << false;
    }
}
/// Writes the record of such a row, and expects that a bad one is kept aside.
inline void writeRowRecord(const QString &box, const QByteArray &json, bool isGood)
{
    writeRecord(box, 7, json);
    if (!isGood) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("record 7 is kept aside: "));
    }
}
