// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/status_words.h"

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include "core/wmfm.h"

using namespace wmsg::cli;

/// The statuses in words: the page for applications tells what the program tells.
class TestStatusWords : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void pageHasEveryStatus();
    void pageIsTrue_data();
    void pageIsTrue();
    void otherNumbers_data();
    void otherNumbers();

private:
    struct Row {
        QString key;
        QString words;
    };
    QMap<int, Row> m_rows;
    QString m_others;
};

void TestStatusWords::initTestCase()
{
    QFile file(WMSG_DOCS "/status-codes.md");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QRegularExpression row(
        "^\\| (\\d+)(?: to (\\d+))? \\| (?:`([^`]*)` )?\\| ([^|]*) \\| [^|]+ \\|$");
    const QRegularExpression others("^\\| others \\| \\| ([^|]*) \\|");
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const auto match = row.match(line);
        if (match.hasMatch()) {
            const int first = match.captured(1).toInt();
            const int last = match.captured(2).isEmpty() ? first : match.captured(2).toInt();
            for (int status = first; status <= last; ++status) {
                QVERIFY2(!m_rows.contains(status), qPrintable(line));
                m_rows.insert(status, {match.captured(3), match.captured(4)});
            }
        } else if (others.match(line).hasMatch()) {
            m_others = others.match(line).captured(1);
        }
    }
}

void TestStatusWords::pageHasEveryStatus()
{
    const int own[] = {WMFM::STATUS_OK,
                       WMFM::STATUS_INVALID_PARAM,
                       WMFM::STATUS_SEND_FAIL,
                       WMFM::STATUS_LISTENER_EXISTS,
                       WMFM::STATUS_CONTENT_OVERFLOW,
                       WMFM::STATUS_FAIL,
                       256};
    QList<int> expected(std::begin(own), std::end(own));
    for (int status = 129; status <= 255; ++status) {
        expected += status;
    }
    std::sort(expected.begin(), expected.end());
    QCOMPARE(m_rows.keys(), expected);
    QVERIFY(!m_others.isEmpty());
}

void TestStatusWords::pageIsTrue_data()
{
    QTest::addColumn<int>("status");
    for (int status = -300; status <= 600; ++status) {
        QTest::addRow("status %d", status) << status;
    }
}

void TestStatusWords::pageIsTrue()
{
    QFETCH(int, status);
    const Row row = m_rows.value(status, {QString(), m_others});
    QCOMPARE(statusInWords(status), row.words);
    QCOMPARE(statusKey(status), row.key);
}

void TestStatusWords::otherNumbers_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("highest") << INT_MAX;
    QTest::newRow("128 with a bit above") << (128 | 256);
}

void TestStatusWords::otherNumbers()
{
    QFETCH(int, status);
    QCOMPARE(statusInWords(status), m_others);
    QCOMPARE(statusKey(status), "");
}

QTEST_GUILESS_MAIN(TestStatusWords)
#include "tst_status_words.moc"
