// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/fields.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/mms/codec/wire.h"

#include <QtTest/QtTest>

#include <memory>

/// docs/formats/pdu.md says what the code does.
class TestPduPage : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void primitives_data();
    void primitives();
    void fields_data();
    void fields();
    void example();

private:
    [[nodiscard]] QList<QStringList> table(const QString &firstHeading) const;

    QStringList m_lines;
};

static QStringList cellsOf(const QString &line)
{
    QStringList cells = line.split('|');
    for (QString &cell : cells) {
        cell = cell.trimmed().remove('`');
    }
    return cells.mid(1, cells.size() - 2);
}

void TestPduPage::initTestCase()
{
    appLogModuleStream = appLogDiscardStream();
    QFile page(WMSG_TEST_DATA "/../../docs/formats/pdu.md");
    QVERIFY(page.open(QIODevice::ReadOnly));
    m_lines = QString::fromUtf8(page.readAll()).split('\n');
}

/// The rows of the table whose first column has that heading.
QList<QStringList> TestPduPage::table(const QString &firstHeading) const
{
    QList<QStringList> rows;
    const auto first = m_lines.indexOf(
        QRegularExpression("\\| " + QRegularExpression::escape(firstHeading) + " \\|.*"));
    for (auto line = first < 0 ? m_lines.size() : first + 2;
         line < m_lines.size() && m_lines[line].startsWith('|'); ++line) {
        rows.append(cellsOf(m_lines[line]));
    }
    return rows;
}

void TestPduPage::primitives_data()
{
    QTest::addColumn<QString>("primitive");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("wire");
    for (const char *primitive :
         {"Integer", "Uintvar", "Value-length", "Text string", "Encoded string"}) {
        const QList<QStringList> rows = table(primitive);
        QVERIFY2(rows.size() >= 3, primitive);
        for (const QStringList &row : rows) {
            QTest::addRow("%s %s", primitive, qUtf8Printable(row[0]))
                << primitive << row[0] << row[1].toLatin1();
        }
    }
}

void TestPduPage::primitives()
{
    QFETCH(QString, primitive);
    QFETCH(QString, value);
    const QString text = value == "(null)" ? QString() : value;
    OutWire out(32);
    const quint32 written = primitive == "Integer" ? out.stream.writeInteger(value.toInt())
        : primitive == "Uintvar"                   ? out.stream.writeUintvar(value.toInt())
        : primitive == "Value-length"              ? out.stream.writeValueLength(value.toInt())
        : primitive == "Text string"               ? out.stream.writeTextString(text)
                                                   : out.stream.writeEncodedString(text);
    QCOMPARE(written, 1U);
    QTEST(out.written(), "wire");
}

void TestPduPage::fields_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QStringList>("cells");
    const QList<QStringList> rows = table("Id");
    QCOMPARE(rows.size(), 24);
    for (int id = 1; id <= 24; ++id) {
        QTest::addRow("%d", id) << id << rows[id - 1];
    }
}

/// Id, byte and class. The name of a class is found in the name that the compiler gives it.
void TestPduPage::fields()
{
    QFETCH(int, id);
    QFETCH(QStringList, cells);
    QCOMPARE(cells.size(), 5);
    QCOMPARE(cells[0].toInt(), id);
    QCOMPARE(cells[1], QString("0x%1").arg(id | 0x80, 2, 16).toUpper().replace('X', 'x'));
    const std::unique_ptr<MsgFieldBase> codec(WMMSMsg::selectField(quint8(id)));
    const MsgFieldBase &object = *codec;
    QCOMPARE(QString::number(cells[2].size()) + cells[2], QString(typeid(object).name()));
}

void TestPduPage::example()
{
    const auto begin = m_lines.indexOf("```hex") + 1;
    const auto end = m_lines.indexOf("```", begin);
    QVERIFY(begin > 0 && end > begin);
    const QByteArray bytes = fromHex(m_lines.mid(begin, end - begin).join('\n').toUtf8());
    InWire in(bytes);
    WMMSMsg message;
    QCOMPARE(message.construct(in.array, true), quint32(MMS_DECODE_OK));
    QCOMPARE(message.getTransactionID(), "T1");
    QCOMPARE(int(message.getVersion()), 0x10);
    QCOMPARE(message.getFrom().getEntryVal(), "+12");
    QCOMPARE(message.getSubject(), QStringLiteral("\u00C9t\u00E9"));
    QCOMPARE(int(message.getMsgClass()), 128);
    QCOMPARE(message.getExpiryTime(), 3600U);

    QArray<char> out;
    int headerLength = 0;
    int bodyLength = 0;
    QCOMPARE(message.packTo(out, &headerLength, &bodyLength), quint32(MMS_ENCODE_OK));
    QCOMPARE(toHex(out), toHex(bytes));
}

QTEST_GUILESS_MAIN(TestPduPage)
#include "tst_pdu_page.moc"
