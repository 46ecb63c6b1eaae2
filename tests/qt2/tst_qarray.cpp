// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "qt2/qarray.h"
#include "qt2/qcstring.h"
#include "qt2/qvaluelist.h"

#include <QtTest/QtTest>

#include <memory>
#include <numeric>
#include <string_view>

using Bytes = QArray<char>;

static Bytes bytes(std::string_view text)
{
    return Bytes::fromBytes(text.data(), int(text.size()));
}

static QByteArray text(const Bytes &array)
{
    return array.toByteArray();
}

/// A record of the kind that is read from a socket as it stands.
struct Record {
    qint32 id;
    quint8 kind;
    bool operator==(const Record &other) const { return id == other.id && kind == other.kind; }
};

class TestQArray : public QObject {
    Q_OBJECT

private slots:
    void aNewArrayIsNull();
    void makesAnArrayOfASize_data();
    void makesAnArrayOfASize();
    void copiesOfANullArrayAreIndependent();
    void writingIsSeenByAllHolders();
    void sizeIsSeenByAllHolders_data();
    void sizeIsSeenByAllHolders();
    void growingKeepsEveryHolderTogether();
    void assignmentLeavesTheFormerHoldersAlone();
    void assignmentToItself();
    void movingLeavesNull();
    void theLastHolderKeepsTheBlock();

    void resizeKeepsTheCommonPart();
    void resizeRefuses_data();
    void resizeRefuses();
    void shrinkingKeepsTheMemory();
    void truncate_data();
    void truncate();
    void reserve();
    void reserveRefuses();
    void growthByStepsMovesSeldom();
    void fill_data();
    void fill();
    void fillWithAnElementOfItself();

    void copyIsSeparate();
    void detachLeavesTheOthers();
    void detachOfAnArrayThatIsAlone();
    void duplicateAndAssignCopy();
    void duplicateRefuses();
    void duplicatesAPartOfItself();

    void sliceSharesTheBytes();
    void sliceOutsideIsNull_data();
    void sliceOutsideIsNull();
    void sliceOutlivesTheWhole_data();
    void sliceOutlivesTheWhole();
    void sliceStaysWhenTheWholeGrows_data();
    void sliceStaysWhenTheWholeGrows();
    void wholeThatShrinksKeepsTheSlice();
    void sliceMovesWhenItGrows();
    void sliceMovesForAllItsHolders();
    void sliceKeepsToItsRange();
    void sliceDetaches();
    void wholeDetachesFromItsSlices();
    void sliceOfASlice();
    void sliceThatIsLeftAloneNeedsNoDetach();
    void sliceOfNoElements();
    void slicesOfManyArraysInAnyOrder();

    void convertsFromByteArray_data();
    void convertsFromByteArray();
    void convertsToByteArray_data();
    void convertsToByteArray();
    void convertsToView();
    void fromBytesRefuses_data();
    void fromBytesRefuses();

    void comparesElements_data();
    void comparesElements();
    void walksElements();
    void holdsRecords();
    void otherNames();
};

void TestQArray::aNewArrayIsNull()
{
    Bytes array;
    QVERIFY(array.isNull());
    QVERIFY(array.isEmpty());
    QCOMPARE(array.size(), 0);
    QCOMPARE(array.capacity(), 0);
    QVERIFY(!array.data());
    QVERIFY(!array.constData());
    QVERIFY(array.begin() == array.end());
    QVERIFY(array.copy().isNull());
    QVERIFY(array.detach());
    QVERIFY(array.isNull());
    QVERIFY(array.fill('x'));
    QVERIFY(array.isNull());
    QVERIFY(array.resize(0));
    QVERIFY(array.isNull());
    QVERIFY(array.truncate(0));
    QVERIFY(array.isNull());
}

void TestQArray::makesAnArrayOfASize_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("null");
    QTest::newRow("negative") << -1 << 0 << true;
    QTest::newRow("lowest") << INT_MIN << 0 << true;
    QTest::newRow("none") << 0 << 0 << true;
    QTest::newRow("one") << 1 << 1 << false;
    QTest::newRow("many") << (1 << 20) << (1 << 20) << false;
}

void TestQArray::makesAnArrayOfASize()
{
    QFETCH(int, size);
    QFETCH(int, expected);
    QFETCH(bool, null);
    const Bytes array(size);
    QCOMPARE(array.size(), expected);
    QCOMPARE(array.isNull(), null);
}

void TestQArray::copiesOfANullArrayAreIndependent()
{
    Bytes first;
    Bytes second = first;
    QVERIFY(first.resize(3));
    QVERIFY(second.isNull());
    second = first;
    QVERIFY(second.resize(5));
    QCOMPARE(first.size(), 5);
}

void TestQArray::writingIsSeenByAllHolders()
{
    Bytes first = bytes("abc");
    Bytes second(first);
    Bytes third;
    third = second;
    Bytes fourth;
    fourth.assign(first);

    first[0] = 'X';
    QCOMPARE(text(third), QByteArray("Xbc"));
    third.at(1) = 'Y';
    QCOMPARE(text(first), QByteArray("XYc"));
    fourth.data()[2] = 'Z';
    QCOMPARE(text(second), QByteArray("XYZ"));
    second.fill('-');
    QCOMPARE(text(first), QByteArray("---"));
}

void TestQArray::sizeIsSeenByAllHolders_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("none") << 0;
    QTest::newRow("shorter") << 2;
    QTest::newRow("the same") << 6;
    QTest::newRow("longer") << 7;
    QTest::newRow("much longer") << 3000000;
}

void TestQArray::sizeIsSeenByAllHolders()
{
    QFETCH(int, size);
    Bytes first = bytes("abcdef");
    Bytes second = first;
    QVERIFY(second.resize(size));
    QCOMPARE(first.size(), size);
    QVERIFY(first.constData() == second.constData());
    QVERIFY(!first.isNull());
    const int kept = std::min(size, 6);
    QCOMPARE(text(first).left(kept), QByteArray("abcdef").left(kept));
    QVERIFY(first.truncate(0));
    QVERIFY(second.isEmpty());
}

void TestQArray::growingKeepsEveryHolderTogether()
{
    Bytes first = bytes("a");
    Bytes second = first;
    for (int size = 2; size <= 100000; size = size * 3 / 2 + 1) {
        Bytes &holder = size % 2 ? first : second;
        QVERIFY(holder.resize(size));
        holder[size - 1] = char(size);
        QVERIFY(first.constData() == second.constData());
        QCOMPARE(first.size(), size);
        QCOMPARE(second[size - 1], char(size));
    }
    QCOMPARE(first[0], 'a');
    QCOMPARE(first[1], char(2));
    first = Bytes();
    QVERIFY(second.resize(200000));
    QCOMPARE(second[0], 'a');
}

void TestQArray::assignmentLeavesTheFormerHoldersAlone()
{
    Bytes first = bytes("first");
    Bytes second = first;
    first = bytes("other");
    first[0] = 'X';
    QCOMPARE(text(second), QByteArray("first"));
    first = Bytes();
    QVERIFY(first.isNull());
    QCOMPARE(text(second), QByteArray("first"));
}

void TestQArray::assignmentToItself()
{
    Bytes array = bytes("abc");
    const Bytes &same = array;
    array = same;
    QCOMPARE(text(array), QByteArray("abc"));
    array.assign(same);
    QCOMPARE(text(array), QByteArray("abc"));
    QVERIFY(array.duplicate(same));
    QCOMPARE(text(array), QByteArray("abc"));
    array = std::move(const_cast<Bytes &>(same));
    QCOMPARE(text(array), QByteArray("abc"));
    Bytes null;
    null = *&null;
    QVERIFY(null.isNull());
}

void TestQArray::movingLeavesNull()
{
    Bytes first = bytes("abc");
    const char *data = first.constData();
    Bytes second = std::move(first);
    QVERIFY(first.isNull());
    QVERIFY(second.constData() == data);
    first = std::move(second);
    QVERIFY(second.isNull());
    QCOMPARE(text(first), QByteArray("abc"));
    first.swap(second);
    QVERIFY(first.isNull());
    QCOMPARE(text(second), QByteArray("abc"));
}

void TestQArray::theLastHolderKeepsTheBlock()
{
    auto first = std::make_unique<Bytes>(bytes("abc"));
    auto second = std::make_unique<Bytes>(*first);
    const Bytes third = *second;
    first.reset();
    (*second)[0] = 'X';
    second.reset();
    QCOMPARE(text(third), QByteArray("Xbc"));
}

void TestQArray::resizeKeepsTheCommonPart()
{
    QArray<int> array(1000);
    std::iota(array.begin(), array.end(), 0);
    for (int size : {1001, 5000, 70000, 500000, 800}) {
        QVERIFY(array.resize(size));
        QCOMPARE(array.size(), size);
        for (int i = 0; i < 800; ++i) {
            QCOMPARE(array[i], i);
        }
    }
}

void TestQArray::resizeRefuses_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("minus one") << -1;
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("more bytes than an int counts") << INT_MAX / int(sizeof(int)) + 1;
    QTest::newRow("no room for the head") << INT_MAX / int(sizeof(int));
    QTest::newRow("a product that wraps to four bytes") << ((1 << 30) + 1);
    QTest::newRow("highest") << INT_MAX;
}

void TestQArray::resizeRefuses()
{
    QFETCH(int, size);
    QArray<int> array(3);
    array.fill(7);
    QArray<int> holder = array;
    const int *data = array.constData();
    QVERIFY(!array.resize(size));
    QVERIFY(!array.reserve(size));
    QVERIFY(!array.fill(1, size == -1 ? -2 : size));
    QCOMPARE(array.size(), 3);
    QVERIFY(array.constData() == data);
    QCOMPARE(array[2], 7);
    QCOMPARE(holder.size(), 3);

    QArray<int> null;
    QVERIFY(!null.resize(size));
    QVERIFY(null.isNull());
    QVERIFY(QArray<int>(size).isNull());
}

void TestQArray::shrinkingKeepsTheMemory()
{
    for (int size : {100, 1 << 20, 16 << 20}) {
        Bytes array(size);
        const char *data = array.constData();
        array[50] = 'x';
        QVERIFY(array.truncate(10));
        QCOMPARE(array.capacity(), size);
        QVERIFY(array.constData() == data);
        QVERIFY(array.resize(size));
        QVERIFY(array.constData() == data);
        QCOMPARE(array[50], 'x');
        QVERIFY(array.resize(0));
        QVERIFY(!array.isNull());
        QVERIFY(array.resize(size));
        QVERIFY(array.constData() == data);
    }
}

void TestQArray::truncate_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("negative") << -1 << false << QByteArray("abc");
    QTest::newRow("none") << 0 << true << QByteArray("");
    QTest::newRow("shorter") << 2 << true << QByteArray("ab");
    QTest::newRow("the same") << 3 << true << QByteArray("abc");
    QTest::newRow("longer changes nothing") << 4 << true << QByteArray("abc");
}

void TestQArray::truncate()
{
    QFETCH(int, size);
    QFETCH(bool, result);
    QFETCH(QByteArray, expected);
    Bytes array = bytes("abc");
    QCOMPARE(array.truncate(size), result);
    QCOMPARE(text(array), expected);
}

void TestQArray::reserve()
{
    Bytes array;
    QVERIFY(array.reserve(0));
    QVERIFY(!array.isNull());
    QVERIFY(array.isEmpty());
    QVERIFY(array.reserve(1000));
    QCOMPARE(array.size(), 0);
    QCOMPARE(array.capacity(), 1000);
    const char *data = array.constData();
    QVERIFY(array.resize(1000));
    QVERIFY(array.constData() == data);

    Bytes holder = array;
    array.fill('x');
    QVERIFY(holder.reserve(5000));
    QCOMPARE(array.capacity(), 5000);
    QCOMPARE(array.size(), 1000);
    QCOMPARE(array[999], 'x');
    QVERIFY(array.reserve(1));
    QCOMPARE(array.capacity(), 5000);
}

void TestQArray::reserveRefuses()
{
    Bytes null;
    QVERIFY(!null.reserve(-1));
    QVERIFY(null.isNull());
    Bytes array = bytes("abc");
    QVERIFY(!array.reserve(-1));
    QVERIFY(!array.reserve(INT_MAX));
    QCOMPARE(text(array), QByteArray("abc"));
}

void TestQArray::growthByStepsMovesSeldom()
{
    Bytes array;
    int capacities = 0;
    for (int size = 1, capacity = 0; size <= 100000; ++size) {
        QVERIFY(array.resize(size));
        array[size - 1] = char(size);
        capacities += array.capacity() != capacity;
        capacity = array.capacity();
    }
    QVERIFY2(capacities < 40, QByteArray::number(capacities));
    for (int size = 1; size <= 100000; ++size) {
        QCOMPARE(array[size - 1], char(size));
    }
}

void TestQArray::fill_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("as it is") << -1 << true << QByteArray("xxx");
    QTest::newRow("none") << 0 << true << QByteArray("");
    QTest::newRow("shorter") << 2 << true << QByteArray("xx");
    QTest::newRow("longer") << 5 << true << QByteArray("xxxxx");
    QTest::newRow("negative") << -2 << false << QByteArray("abc");
}

void TestQArray::fill()
{
    QFETCH(int, size);
    QFETCH(bool, result);
    QFETCH(QByteArray, expected);
    Bytes array = bytes("abc");
    Bytes holder = array;
    QCOMPARE(array.fill('x', size), result);
    QCOMPARE(text(array), expected);
    QCOMPARE(text(holder), expected);
}

void TestQArray::fillWithAnElementOfItself()
{
    Bytes array = bytes("xyz");
    QVERIFY(array.fill(array[2], 1 << 20));
    QCOMPARE(array[0], 'z');
    QCOMPARE(array[(1 << 20) - 1], 'z');
}

void TestQArray::copyIsSeparate()
{
    Bytes array = bytes("abc");
    Bytes copy = array.copy();
    QCOMPARE(text(copy), QByteArray("abc"));
    copy[0] = 'X';
    QVERIFY(array.resize(1));
    QCOMPARE(text(array), QByteArray("a"));
    QCOMPARE(text(copy), QByteArray("Xbc"));
    QVERIFY(array.resize(0));
    QVERIFY(!array.copy().isNull());
}

void TestQArray::detachLeavesTheOthers()
{
    Bytes first = bytes("abc");
    Bytes second = first;
    Bytes third = first;
    QVERIFY(second.detach());
    second[0] = 'X';
    QVERIFY(second.resize(2));
    QCOMPARE(text(first), QByteArray("abc"));
    QCOMPARE(text(second), QByteArray("Xb"));
    QVERIFY(third.constData() == first.constData());
}

void TestQArray::detachOfAnArrayThatIsAlone()
{
    Bytes array = bytes("abc");
    const char *data = array.constData();
    {
        const Bytes guest = array;
    }
    QVERIFY(array.detach());
    QVERIFY(array.constData() == data);
}

void TestQArray::duplicateAndAssignCopy()
{
    const char *source = "source";
    Bytes array = bytes("abc");
    Bytes holder = array;
    QVERIFY(array.duplicate(source, 6));
    QCOMPARE(text(array), QByteArray("source"));
    QVERIFY(array.constData() != source);
    QCOMPARE(text(holder), QByteArray("abc"));

    QVERIFY(array.assign(source, 3));
    QCOMPARE(text(array), QByteArray("sou"));
    QVERIFY(array.assign(source, 0));
    QVERIFY(array.isEmpty());
    QVERIFY(!array.isNull());
    QVERIFY(array.duplicate(holder));
    QCOMPARE(text(array), QByteArray("abc"));
    QVERIFY(array.constData() != holder.constData());
    QVERIFY(array.duplicate(Bytes()));
    QVERIFY(array.isNull());
    array = holder;
    QVERIFY(array.assign(nullptr, 0));
    QVERIFY(array.isNull());
}

void TestQArray::duplicateRefuses()
{
    Bytes array = bytes("abc");
    QVERIFY(!array.duplicate("source", -1));
    QVERIFY(!array.assign("source", INT_MIN));
    QCOMPARE(text(array), QByteArray("abc"));
}

void TestQArray::duplicatesAPartOfItself()
{
    Bytes array = bytes("abcdef");
    QVERIFY(array.duplicate(array.constData() + 2, 3));
    QCOMPARE(text(array), QByteArray("cde"));
}

void TestQArray::sliceSharesTheBytes()
{
    Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 2, 3);
    QCOMPARE(text(part), QByteArray("cde"));
    QVERIFY(part.constData() == whole.constData() + 2);
    part[0] = 'X';
    QCOMPARE(text(whole), QByteArray("abXdef"));
    whole[4] = 'Y';
    QCOMPARE(text(part), QByteArray("XdY"));
    QCOMPARE(part.capacity(), 3);
}

void TestQArray::sliceOutsideIsNull_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("length");
    QTest::newRow("negative offset") << -1 << 2;
    QTest::newRow("negative length") << 1 << -1;
    QTest::newRow("both negative") << -2 << -2;
    QTest::newRow("a byte past the end") << 4 << 3;
    QTest::newRow("offset past the end") << 7 << 0;
    QTest::newRow("all but too long") << 0 << 7;
    QTest::newRow("a sum that wraps") << 2 << INT_MAX;
    QTest::newRow("highest offset, a sum that wraps") << INT_MAX << 6;
    QTest::newRow("highest offset") << INT_MAX << INT_MAX;
    QTest::newRow("lowest offset") << INT_MIN << 6;
}

void TestQArray::sliceOutsideIsNull()
{
    QFETCH(int, offset);
    QFETCH(int, length);
    const Bytes whole = bytes("abcdef");
    QVERIFY(Bytes::slice(whole, offset, length).isNull());
    QVERIFY(Bytes::slice(Bytes(), offset, length).isNull());
    QVERIFY(Bytes::slice(Bytes(), 0, 0).isNull());
}

/// Where the elements of an array lie: after its head, or in memory of their own once it outgrew
/// that while it was shared.
static Bytes wholeOf(bool apart, int size)
{
    Bytes whole = bytes("ab");
    if (apart) {
        const Bytes holder = whole;
        whole.resize(size);
    }
    whole.resize(size);
    for (int i = 0; i < size; ++i) {
        whole[i] = char('a' + i % 26);
    }
    return whole;
}

void TestQArray::sliceOutlivesTheWhole_data()
{
    QTest::addColumn<bool>("apart");
    QTest::newRow("elements after the head") << false;
    QTest::newRow("elements apart") << true;
}

void TestQArray::sliceOutlivesTheWhole()
{
    QFETCH(bool, apart);
    auto whole = std::make_unique<Bytes>(wholeOf(apart, 26));
    Bytes first = Bytes::slice(*whole, 0, 3);
    Bytes last = Bytes::slice(*whole, 23, 3);
    whole.reset();
    QCOMPARE(text(first), QByteArray("abc"));
    QCOMPARE(text(last), QByteArray("xyz"));
    first = Bytes();
    last[2] = '!';
    QCOMPARE(text(last), QByteArray("xy!"));
    QVERIFY(last.resize(100));
    QCOMPARE(text(last).left(3), QByteArray("xy!"));
}

void TestQArray::sliceStaysWhenTheWholeGrows_data()
{
    sliceOutlivesTheWhole_data();
}

void TestQArray::sliceStaysWhenTheWholeGrows()
{
    QFETCH(bool, apart);
    Bytes whole = wholeOf(apart, 26);
    const Bytes part = Bytes::slice(whole, 3, 3);
    const char *data = part.constData();
    QVERIFY(whole.resize(whole.capacity() + 1));
    QVERIFY(part.constData() == data);
    QCOMPARE(text(part), QByteArray("def"));
    QCOMPARE(text(whole).left(26), text(wholeOf(false, 26)));
    whole[3] = 'X';
    QCOMPARE(text(part), QByteArray("def"));
    QVERIFY(whole.resize(3000000));
    QVERIFY(whole.resize(9000000));
    QCOMPARE(text(whole).left(5), QByteArray("abcXe"));
    QCOMPARE(text(part), QByteArray("def"));
}

void TestQArray::wholeThatShrinksKeepsTheSlice()
{
    Bytes whole = bytes("abcdef");
    const Bytes part = Bytes::slice(whole, 2, 4);
    QVERIFY(whole.truncate(0));
    QCOMPARE(text(part), QByteArray("cdef"));
    QVERIFY(whole.resize(6));
    QCOMPARE(text(whole), QByteArray("abcdef"));
    QVERIFY(part.constData() == whole.constData() + 2);
}

void TestQArray::sliceMovesWhenItGrows()
{
    Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 2, 3);
    QVERIFY(part.resize(4));
    QCOMPARE(text(part).left(3), QByteArray("cde"));
    part.fill('X');
    QCOMPARE(text(whole), QByteArray("abcdef"));
    QVERIFY(part.resize(4000000));
    part.fill('Y');
    QCOMPARE(text(whole), QByteArray("abcdef"));
}

void TestQArray::sliceMovesForAllItsHolders()
{
    const Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 2, 3);
    Bytes holder = part;
    QVERIFY(holder.resize(10));
    holder[0] = 'X';
    QCOMPARE(part.size(), 10);
    QCOMPARE(text(part).left(3), QByteArray("Xde"));
    QCOMPARE(text(whole), QByteArray("abcdef"));
}

void TestQArray::sliceKeepsToItsRange()
{
    const Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 1, 3);
    QVERIFY(part.truncate(1));
    QVERIFY(part.resize(3));
    QCOMPARE(text(part), QByteArray("bcd"));
    QVERIFY(part.constData() == whole.constData() + 1);
    QVERIFY(part.fill('X', 4));
    QCOMPARE(text(whole), QByteArray("abcdef"));
}

void TestQArray::sliceDetaches()
{
    Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 2, 3);
    QVERIFY(part.detach());
    part[0] = 'X';
    whole[3] = 'Y';
    QCOMPARE(text(part), QByteArray("Xde"));
    QCOMPARE(text(whole), QByteArray("abcYef"));
}

void TestQArray::wholeDetachesFromItsSlices()
{
    Bytes whole = bytes("abcdef");
    const Bytes part = Bytes::slice(whole, 2, 3);
    QVERIFY(whole.detach());
    whole[2] = 'X';
    QCOMPARE(text(part), QByteArray("cde"));
    QCOMPARE(text(whole), QByteArray("abXdef"));
}

void TestQArray::sliceOfASlice()
{
    auto whole = std::make_unique<Bytes>(bytes("abcdef"));
    auto part = std::make_unique<Bytes>(Bytes::slice(*whole, 1, 4));
    Bytes inner = Bytes::slice(*part, 1, 2);
    QVERIFY(inner.constData() == whole->constData() + 2);
    QVERIFY(Bytes::slice(*part, 1, 4).isNull());
    whole.reset();
    part.reset();
    QCOMPARE(text(inner), QByteArray("cd"));
    inner[0] = 'X';
    QCOMPARE(text(inner), QByteArray("Xd"));
}

void TestQArray::sliceThatIsLeftAloneNeedsNoDetach()
{
    Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 2, 3);
    const char *data = part.constData();
    whole = Bytes();
    QVERIFY(part.detach());
    QVERIFY(part.constData() == data);
}

void TestQArray::sliceOfNoElements()
{
    Bytes whole = bytes("abcdef");
    Bytes part = Bytes::slice(whole, 6, 0);
    QVERIFY(part.isEmpty());
    QVERIFY(!part.isNull());
    QVERIFY(part.resize(2));
    part.fill('x');
    QCOMPARE(text(whole), QByteArray("abcdef"));
}

void TestQArray::slicesOfManyArraysInAnyOrder()
{
    // The address sanitizer and its leak check judge what this leaves behind.
    std::vector<Bytes> arrays(64);
    quint32 random = 1;
    const auto next = [&random](int limit) {
        random = random * 1664525U + 1013904223U;
        return int((random >> 8) % quint32(limit));
    };
    for (int step = 0; step < 20000; ++step) {
        Bytes &target = arrays[next(64)];
        const Bytes &source = arrays[next(64)];
        switch (next(6)) {
        case 0:
            target = Bytes(next(50));
            target.fill(char(step));
            break;
        case 1:
            target = source;
            break;
        case 2: {
            const int offset = source.isEmpty() ? 0 : next(source.size());
            target = Bytes::slice(source, offset, next(source.size() - offset + 1));
            break;
        }
        case 3: {
            const QByteArray before = text(target);
            const int size = next(80);
            QVERIFY(target.resize(size));
            const int kept = std::min(size, int(before.size()));
            QCOMPARE(text(target).left(kept), before.left(kept));
            target.fill(char(step));
            break;
        }
        case 4: {
            const QByteArray before = text(target);
            QVERIFY(target.detach());
            QCOMPARE(text(target), before);
            break;
        }
        default:
            target = Bytes();
        }
    }
}

void TestQArray::convertsFromByteArray_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("null") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("with a zero byte") << QByteArray("a\0b\xff", 4);
    QTest::newRow("large") << QByteArray(1 << 20, 'x');
}

void TestQArray::convertsFromByteArray()
{
    QFETCH(QByteArray, source);
    Bytes array(source);
    QCOMPARE(array.isNull(), source.isNull());
    QCOMPARE(array.size(), int(source.size()));
    QCOMPARE(text(array).toHex(), source.toHex());
    const Bytes fromView{QByteArrayView(source)};
    QCOMPARE(fromView.isNull(), source.isNull());
    QCOMPARE(fromView, array);
    if (!source.isEmpty()) {
        array[0] = '!';
        QVERIFY(source[0] != '!');
    }
    const QArray<quint8> octets(source);
    QCOMPARE(octets.size(), int(source.size()));
}

void TestQArray::convertsToByteArray_data()
{
    convertsFromByteArray_data();
}

void TestQArray::convertsToByteArray()
{
    QFETCH(QByteArray, source);
    Bytes array(source);
    const QByteArray result = array.toByteArray();
    QCOMPARE(result.isNull(), source.isNull());
    QCOMPARE(result, source);
    QCOMPARE(QByteArray(array), source);
    QCOMPARE(QByteArray(array).isNull(), source.isNull());
    array.fill('!');
    QCOMPARE(result, source);
}

void TestQArray::convertsToView()
{
    const auto sizeOf = [](QByteArrayView view) {
        return view.size();
    };
    const Bytes array = bytes("abc");
    QCOMPARE(sizeOf(array), 3);
    QVERIFY(array.view().data() == array.constData());
    QVERIFY(array.view() == "abc");
    QVERIFY(Bytes().view().isNull());
    const Bytes empty{QByteArrayView("")};
    QVERIFY(empty.view().isEmpty());
    QVERIFY(!empty.view().isNull());
    const QArray<quint8> octets(QByteArrayView("xy"));
    QVERIFY(octets.view() == "xy");
    QCOMPARE(octets.toByteArray(), QByteArray("xy"));
}

void TestQArray::fromBytesRefuses_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("negative") << -4;
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("half an element") << 6;
}

void TestQArray::fromBytesRefuses()
{
    QFETCH(int, size);
    const qint32 source[] = {1, 2, 3};
    QVERIFY(QArray<qint32>::fromBytes(source, size).isNull());
    QVERIFY(QArray<qint32>::fromBytes(nullptr, 4).isNull());
    QCOMPARE(QArray<qint32>::fromBytes(source, 8).size(), 2);
    QCOMPARE(QArray<qint32>::fromBytes(source, 8)[1], 2);
    QVERIFY(!QArray<qint32>::fromBytes(source, 0).isNull());
}

void TestQArray::comparesElements_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<bool>("equal");
    QTest::newRow("null and null") << QByteArray() << QByteArray() << true;
    QTest::newRow("null and empty") << QByteArray() << QByteArray("") << true;
    QTest::newRow("null and not empty") << QByteArray() << QByteArray("a") << false;
    QTest::newRow("the same") << QByteArray("abc") << QByteArray("abc") << true;
    QTest::newRow("another last byte") << QByteArray("abc") << QByteArray("abd") << false;
    QTest::newRow("a longer one") << QByteArray("abc") << QByteArray("abcd") << false;
}

void TestQArray::comparesElements()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(bool, equal);
    const Bytes a(first);
    const Bytes b(second);
    QCOMPARE(a == b, equal);
    QCOMPARE(b == a, equal);
    QCOMPARE(a != b, !equal);
    const Bytes shared = a;
    QVERIFY(shared == a);
    const Bytes shorter = Bytes::slice(a, 0, std::max(0, a.size() - 1));
    QCOMPARE(shorter == a, a.isEmpty());
}

void TestQArray::walksElements()
{
    QArray<int> array(4);
    std::iota(array.begin(), array.end(), 1);
    int sum = 0;
    for (int value : std::as_const(array)) {
        sum += value;
    }
    QCOMPARE(sum, 10);
    for (int &value : array) {
        value *= 2;
    }
    QCOMPARE(std::accumulate(array.cbegin(), array.cend(), 0), 20);
    const QArray<int> &constant = array;
    QCOMPARE(constant.at(3), 8);
    QCOMPARE(constant[0], 2);
    QVERIFY(constant.data() == array.data());
}

void TestQArray::holdsRecords()
{
    QArray<Record> records(2);
    records.fill(Record{5, 1});
    QArray<Record> others = records.copy();
    QVERIFY(records == others);
    others[1].kind = 2;
    QVERIFY(records != others);
    QVERIFY(others.resize(1000));
    QCOMPARE(int(others[1].kind), 2);
    const QArray<Record> last = QArray<Record>::slice(others, 1, 1);
    QCOMPARE(last[0].id, 5);
}

void TestQArray::otherNames()
{
    const QValueList<int> list = {1, 2};
    static_assert(std::is_same_v<decltype(list), const QList<int>>);
    static_assert(std::is_same_v<QCString, QByteArray>);
    QCOMPARE(list.size(), 2);
}

QTEST_GUILESS_MAIN(TestQArray)
#include "tst_qarray.moc"
