// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/drmclient/drm_rows.h"

#include <QtCore/QStringEncoder>

using namespace drm;
using wmsg::drm::kLongestRights;
using wmsg::drm::readRightsWbxml;
using wmsg::drm::readRightsXml;

class TestDrmRights : public QObject {
    Q_OBJECT

private slots:
    void xml_data();
    void xml();
    void otherXml_data();
    void otherXml();
    void hostileXml_data();
    void hostileXml();
    void everyPrefixOfXml();
    void wbxml_data();
    void wbxml();
    void otherWbxml_data();
    void otherWbxml();
    void everyPrefixOfWbxml();

private:
    void checkXml()
    {
        QFETCH(QByteArray, bytes);
        const Exact head(bytes);
        QTEST(shown(readRightsXml(head)), "expected");
    }
    void checkWbxml()
    {
        QFETCH(QByteArray, bytes);
        const Exact head(bytes);
        QTEST(shown(readRightsWbxml(head)), "expected");
    }
};

namespace {

QByteArray utf16(const QByteArray &text)
{
    return QStringEncoder(QStringEncoder::Utf16LE,
                          QStringEncoder::Flag::WriteBom)(QString::fromUtf8(text));
}

const QByteArray kOdrl = "http://odrl.net/1.1/ODRL-EX";
const QByteArray kAsset = "<asset><context><uid>u</uid></context></asset>";

} // namespace

void TestDrmRights::xml_data()
{
    addColumns();
    row("version 1", rights1("cid:1@x"), "rights uri=cid:1@x");
    row("version 2", rights2("cid:1@x", "http://r.i/?a=1"),
        "rights uri=cid:1@x issuer=http://r.i/?a=1");
    row("version 2 without its envelope",
        R"(<roap:ro xmlns:roap="urn:oma:bac:dldrm:roap-1.0" riURL="http://r.i/"/>)",
        "rights issuer=http://r.i/");
    row("no URL", rights2("u", ""), "rights uri=u");
    row("an escaped URL", rights2("u", "http://r.i/?a&amp;b"),
        "rights uri=u issuer=http://r.i/?a&b");
    row("white space around the identifier", rights1("\n  cid:1@x\n "), "rights uri=cid:1@x");
    row("empty identifier", rights1(""), "rights");
    row("mark of UTF-8", "\xEF\xBB\xBF" + rights1("u"), "rights uri=u");
    row("UTF-16", utf16(rights1("u").mid(22)), "rights uri=u");
    row("white space in front", "\r\n " + rights1("u").mid(22), "rights uri=u");
    row("another prefix", "<x:rights xmlns:x=\"" + kOdrl + "\">" + kAsset + "</x:rights>",
        "rights uri=u");
    row("no prefix", "<rights xmlns=\"" + kOdrl + "\">" + kAsset + "</rights>", "rights uri=u");
    row("the prefix is not declared", "<o-ex:rights>" + kAsset + "</o-ex:rights>", "rights uri=u");
    row("an identifier outside the asset",
        "<o-ex:rights><context><uid>v</uid></context>" + kAsset + "</o-ex:rights>", "rights uri=u");
    row("the first of two assets",
        "<o-ex:rights>" + kAsset + "<asset><uid>v</uid></asset></o-ex:rights>", "rights uri=u");
    row("a comment in front", "<!-- x --><o-ex:rights/>", "rights");
    row("a mistake behind the root", "<o-ex:rights><a", "rights");
    row("bytes that are no UTF-8", "<o-ex:rights>" + kAsset + "\xFF\xC3</o-ex:rights>",
        "rights uri=u");
    row("another encoding is named",
        "<?xml version='1.0' encoding='utf-16'?><o-ex:rights>" + kAsset + "</o-ex:rights>",
        "rights uri=u");
    row("an encoding nobody knows",
        "<?xml version='1.0' encoding='x-none'?><o-ex:rights>" + kAsset + "</o-ex:rights>",
        "rights uri=u");
    row("cut off behind the identifier", "<o-ex:rights>" + kAsset, "rights uri=u");
}

void TestDrmRights::xml()
{
    checkXml();
}

void TestDrmRights::otherXml_data()
{
    addColumns();
    row("empty", "", kOther);
    row("no XML", "rights", kOther);
    row("picture", kJpeg, kOther);
    row("another root", "<smil/>", kOther);
    row("rights of others", "<rights/>", kOther);
    row("rights of another namespace", R"(<o-ex:rights xmlns:o-ex="http://example.org/"/>)",
        kOther);
    row("rights below another root", "<a><o-ex:rights/></a>", kOther);
    row("a mistake in the root", "<o-ex:rights", kOther);
    row("a mistake in front", "<?xml?><o-ex:rights/>", kOther);
    row("an attribute given twice", "<o-ex:rights a='1' a='2'/>", kOther);
    row("white space alone", " \n ", kOther);
    row("marks alone", "\xFF\xFE", kOther);
}

void TestDrmRights::otherXml()
{
    checkXml();
}

void TestDrmRights::hostileXml_data()
{
    addColumns();
    const auto filled = [](const QByteArray &start, const QByteArray &unit) {
        return start + unit.repeated(2 * kLongestRights / unit.size());
    };
    QByteArray attributes = "<o-ex:rights";
    for (int i = 0; attributes.size() < 2 * kLongestRights; ++i) {
        attributes += " a" + QByteArray::number(i) + "=''";
    }
    QByteArray entities = "<!DOCTYPE r [<!ENTITY e0 \"eeeeeeeeee\">";
    for (char level = '1'; level <= '9'; ++level) {
        const QByteArray below = QByteArray("&e") + char(level - 1) + ';';
        entities += QByteArray("<!ENTITY e") + level + " \"" + below.repeated(10) + "\">";
    }
    entities += "]><o-ex:rights><asset><uid>&e9;</uid></asset></o-ex:rights>";
    row("endless white space", filled("", " "), kOther);
    row("endless comment", filled("<!--", "x"), kOther);
    row("endless attributes", attributes, kOther);
    row("endless name", filled("<o-ex:rights ", "x"), kOther);
    row("deep elements", filled("<o-ex:rights>", "<a>"), "rights");
    row("deep assets", filled("<o-ex:rights>", "<asset>"), "rights");
    row("endless identifier", filled("<o-ex:rights><asset><uid>", "x"), "rights");
    row("entities of entities", entities, "rights");
}

void TestDrmRights::hostileXml()
{
    checkXml();
}

void TestDrmRights::everyPrefixOfXml()
{
    const QByteArray whole = rights2("cid:1@x", "http://r.i/");
    const qsizetype root = whole.indexOf('>') + 1;
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const Exact head(whole.first(size));
        const MaybeContainer read = readRightsXml(head);
        QCOMPARE(read.has_value(), size >= root);
        QVERIFY(!read || read->rightsIssuerUrl.isEmpty() || read->rightsIssuerUrl == "http://r.i/");
    }
}

void TestDrmRights::wbxml_data()
{
    addColumns();
    const auto hex = [](const char *name, const char *bytes, const QByteArray &expected) {
        row(name, fromHex(bytes), expected);
    };
    row("whole", binaryRights("cid:1@x"), "rights uri=cid:1@x");
    row("no identifier", binaryRights(""), "rights");
    hex("root alone", "03 0E 6A 00 05", "rights");
    hex("version 1.1", "01 0E 6A 00 45 4A 48 03 75 00 01 01 01", "rights uri=u");
    hex("public id in the table",
        "03 00 00 6A 1B 2D2F2F4F4D412F2F44544420 44524D52454C20312E302F2F454E00 05", "rights");
    hex("public id inside the table",
        "03 00 02 6A 1D 7800 2D2F2F4F4D412F2F44544420 44524D52454C20312E302F2F454E00 05", "rights");
    hex("identifier in the table", "03 0E 6A 04 61 00 75 00 45 4A 48 83 02 01 01 01",
        "rights uri=u");
    hex("identifier as bytes", "03 0E 6A 00 45 4A 48 C3 01 75 01 01 01", "rights uri=u");
    hex("identifier outside the asset",
        "03 0E 6A 00 45 46 48 03 76 00 01 01 4A 48 03 75 00 01 01 01", "rights uri=u");
    hex("identifier behind the asset", "03 0E 6A 00 45 4A 01 48 03 76 00 01 01", "rights");
    hex("the first of two", "03 0E 6A 00 45 4A 48 03 75 00 01 48 03 76 00 01 01 01",
        "rights uri=u");
    hex("attributes with values",
        "03 0E 6A 02 61 00 C5 04 00 03 76 00 83 00 02 41 C3 01 78 C0 80 00 00 00 01 4A 48 03 75 00 "
        "01 01 01",
        "rights uri=u");
    hex("tags from the table",
        "03 0E 6A 02 61 00 45 04 00 44 00 01 84 00 05 01 C4 00 05 01 01 4A 48 03 75 00 01 01 01",
        "rights uri=u");
    hex("all names from the table",
        "01 0E 6A 16 7269 6768 7473 00 6F2D65783A617373657400 75696400 44 00 44 07 44 12 03 75 00 "
        "01 01 01",
        "rights uri=u");
    hex("an instruction", "03 0E 6A 00 45 43 05 03 76 00 01 4A 48 03 75 00 01 01 01",
        "rights uri=u");
    hex("extensions",
        "03 0E 6A 00 45 40 76 00 41 76 00 42 00 80 81 01 81 05 82 05 C0 C1 C2 00 01 02 8F 01 4A 48 "
        "03 75 00 01 01 01",
        "rights uri=u");
    hex("behind the root", "03 0E 6A 00 45 01 4A 48 03 75 00 01 01", "rights");
}

void TestDrmRights::wbxml()
{
    checkWbxml();
}

void TestDrmRights::otherWbxml_data()
{
    addColumns();
    const auto hex = [](const char *name, const char *bytes, const QByteArray &expected = kOther) {
        row(name, fromHex(bytes), expected);
    };
    hex("empty", "");
    hex("another version", "04 0E 6A 00 45 01");
    hex("version 1.0", "00 0E 6A 00 45 01");
    hex("another public id", "03 05 6A 00 45 01");
    hex("another root", "03 0E 6A 00 46 01");
    hex("no root", "03 0E 6A 00");
    hex("another root from the table", "03 0E 6A 02 61 00 44 00 01");
    hex("a root past the table", "03 0E 6A 02 61 00 44 05 01");
    hex("a name cut off", "03 0E 6A 02 61 00 44 80");
    hex("a name cut off inside", "03 0E 6A 02 61 00 45 44 80", "rights");
    hex("table past the end", "03 0E 6A 8F FF FF FF 7F 45 01");
    hex("table longer by one", "03 0E 6A 03 45 01");
    hex("table of 33 bits", "03 0E 6A 9F FF FF FF 7F 45 01");
    hex("public id of another table", "03 00 00 6A 02 61 00 45 01");
    hex("public id past the table", "03 00 8F FF FF FF 7F 6A 02 61 00 45 01");
    hex("public id without an end",
        "03 00 00 6A 1A 2D2F2F4F4D412F2F44544420 44524D52454C20312E302F2F454E 45 01");
    hex("attributes without an end", "03 0E 6A 00 C5 05");
    hex("text without an end", "03 0E 6A 00 45 4A 48 03 75", "rights");
    hex("bytes past the end", "03 0E 6A 00 45 4A 48 C3 8F FF FF FF 7F 75", "rights");
    hex("place past the table", "03 0E 6A 00 45 4A 48 83 8F FF FF FF 7F 01 01 01", "rights");
    hex("control characters", "03 0E 6A 00 45 4A 48 03 75 07 76 00 01 01 01", "rights");
    hex("cut in a place", "03 0E 6A 02 75 00 45 4A 48 83 80", "rights");
    hex("cut in a number", "03 0E 6A 00 45 02 80", "rights");
    row("deep elements", fromHex("03 0E 6A 00") + QByteArray(2 * kLongestRights, 0x45), "rights");
    row("deep assets", fromHex("03 0E 6A 00 45") + QByteArray(2 * kLongestRights, 0x4A), "rights");
    row("endless attributes", fromHex("03 0E 6A 00") + QByteArray(2 * kLongestRights, char(0xC5)),
        kOther);
    row("endless text", fromHex("03 0E 6A 00 45 4A 48 03") + QByteArray(2 * kLongestRights, 'x'),
        "rights");
    row("a long text many times",
        fromHex("03 0E 6A 80 FF 00") + QByteArray(16256, 'x') + fromHex("45")
            + fromHex("83 00").repeated(kLongestRights),
        "rights");
    row("many identifiers",
        fromHex("03 0E 6A 00 45") + fromHex("48 03 00 01").repeated(kLongestRights), "rights");
}

void TestDrmRights::otherWbxml()
{
    checkWbxml();
}

void TestDrmRights::everyPrefixOfWbxml()
{
    const QByteArray whole = binaryRights("cid:1@x");
    const qsizetype root = 10;
    const qsizetype named = whole.indexOf("cid:1@x") + qsizetype(sizeof "cid:1@x");
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const Exact head(whole.first(size));
        QCOMPARE(shown(readRightsWbxml(head)),
                 size < root        ? kOther
                     : size < named ? QByteArray("rights")
                                    : QByteArray("rights uri=cid:1@x"));
    }
}

QTEST_GUILESS_MAIN(TestDrmRights)
#include "tst_drm_rights.moc"
