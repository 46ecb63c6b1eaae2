// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wmmscontenttype.h"
#include "tests/mms/codec/wire.h"

#include <QtTest/QtTest>

struct MediaRow {
    int number;
    const char *text;
};

// clang-format off
static const MediaRow kMedia[] = {
    {0x00, "*/*"},
    {0x01, "text/*"},
    {0x02, "text/html"},
    {0x03, "text/plain"},
    {0x04, "text/x-hdml"},
    {0x05, "text/x-ttml"},
    {0x06, "text/x-vCalendar"},
    {0x07, "text/x-vCard"},
    {0x08, "text/vnd.wap.wml"},
    {0x09, "text/vnd.wap.wmlscript"},
    {0x0A, "text/vnd.wap.wta-event"},
    {0x0B, "multipart/*"},
    {0x0C, "multipart/mixed"},
    {0x0D, "multipart/form-data"},
    // 0x0E is spelled "byterantes".
    {0x0E, "multipart/byterantes"},
    {0x0F, "multipart/alternative"},
    {0x10, "application/*"},
    {0x11, "application/java-vm"},
    {0x12, "application/x-www-form-urlencoded"},
    {0x13, "application/x-hdmlc"},
    {0x14, "application/vnd.wap.wmlc"},
    {0x15, "application/vnd.wap.wmlscriptc"},
    {0x16, "application/vnd.wap.wta-eventc"},
    {0x17, "application/vnd.wap.uaprof"},
    {0x18, "application/vnd.wap.wtls-ca-certificate"},
    {0x19, "application/vnd.wap.wtls-user-certificate"},
    {0x1A, "application/x-x509-ca-cert"},
    {0x1B, "application/x-x509-user-cert"},
    {0x1C, "image/*"},
    {0x1D, "image/gif"},
    {0x1E, "image/jpeg"},
    {0x1F, "image/tiff"},
    {0x20, "image/png"},
    {0x21, "image/vnd.wap.wbmp"},
    {0x22, "application/vnd.wap.multipart.*"},
    {0x23, "application/vnd.wap.multipart.mixed"},
    {0x24, "application/vnd.wap.multipart.form-data"},
    {0x25, "application/vnd.wap.multipart.byteranges"},
    {0x26, "application/vnd.wap.multipart.alternative"},
    {0x27, "application/xml"},
    {0x28, "text/xml"},
    {0x29, "application/vnd.wap.wbxml"},
    {0x2A, "application/x-x968-cross-cert"},
    {0x2B, "application/x-x968-ca-cert"},
    {0x2C, "application/x-x968-user-cert"},
    {0x2D, "text/vnd.wap.si"},
    {0x2E, "application/vnd.wap.sic"},
    {0x2F, "text/vnd.wap.sl"},
    {0x30, "application/vnd.wap.slc"},
    {0x31, "text/vnd.wap.co"},
    {0x32, "application/vnd.wap.coc"},
    {0x33, "application/vnd.wap.multipart.related"},
    {0x34, "application/vnd.wap.sia"},
    {0x35, "text/vnd.wap.connectivity-xml"},
    {0x36, "application/vnd.wap.connectivity-wbxml"},
    {0x37, "application/pkcs7-mime"},
    {0x38, "application/vnd.wap.hashed-certificate"},
    {0x39, "application/vnd.wap.signed-certificate"},
    {0x3A, "application/vnd.wap.cert-response"},
    {0x3B, "application/xhtml+xml"},
    {0x3C, "application/wml+xml"},
    {0x3D, "text/css"},
    {0x3E, "application/vnd.wap.mms-message"},
    {0x3F, "application/vnd.wap.rollover-certificate"},
    {0x40, "application/vnd.wap.locc+wbxml"},
    {0x41, "application/vnd.wap.loc+xml"},
    {0x42, "application/vnd.syncml.drn+wbxml"},
    {0x43, "application/vnd.syncml.drn+xml"},
    {0x44, "application/vnd.syncml.notification"},
    {0x45, "application/vnd.wap.xhtml+xml"},
    {0x46, "application/vnd.wv.cps.cir"},
    {0x47, "application/vnd.oma.dd+xml"},
    {0x48, "application/vnd.oma.drm.message"},
    {0x49, "application/vnd.oma.drm.rights+xml"},
    {0x4A, "application/vnd.oma.drm.rights+wbxml"},
    {0x4B, "application/vnd.oma.drm.content"},
    {0x4C, "multipart/related"},
    {0x4D, "application/vnd.wap.wml+xml"},
    {0x4E, "text/x-wap-wta-wml"},
    {0x4F, "application/x-wap-wta-wmlc"},
    {0x50, "text/vnd.wap.channel"},
    {0x51, "application/smil"},
    {0x52, "application/x-shockwave-flash"},
    {0x53, "image/bmp"},
    {0x54, "image/jpg"},
    {0x55, "image/pjpeg"},
    {0x56, "image/svg+xml"},
    {0x57, "image/x-bmp"},
    {0x58, "image/x-png"},
    {0x59, "audio/amr"},
    {0x5A, "audio/qcelp"},
    {0x5B, "audio/GSM-EFR"},
    {0x5C, "audio/imelody"},
    {0x5D, "audio/x-imelody"},
    {0x5E, "audio/mpeg"},
    {0x5F, "audio/midi"},
    {0x60, "audio/mid"},
    {0x61, "audio/pcma"},
    {0x62, "audio/pcmu"},
    {0x63, "audio/x-ms-wma"},
    {0x64, "audio/wav"},
    {0x65, "audio/x-wav"},
    {0x66, "audio/basic"},
    {0x67, "audio/au"},
    {0x68, "audio/x-amr"},
    {0x69, "audio/sp-midi"},
    {0x6A, "audio/3gpp"},
    {0x6B, "audio/mobile-xmf"},
    {0x6C, "audio/asf"},
    {0x6D, "text/x-melody"},
    {0x6E, "text/x-emelody"},
    {0x6F, "text/x-imelody"},
    {0x70, "video/mp4"},
    {0x71, "video/h263"},
    {0x72, "video/x-ms-wmv"},
    {0x73, "image/x-gif"},
    {0x74, "audio/mp4"},
    {0x75, "audio/x-mid"},
    {0x76, "audio/x-midi"},
    {0x77, "audio/aac"},
    {0x78, "audio/mpeg3"},
    {0x79, "audio/mp3"},
    {0x7A, "audio/x-mpeg"},
    {0x7B, "audio/x-mp3"},
    {0x7C, "audio/x-mpeg3"},
    {0x7D, "audio/evrc"},
    {0x7E, "video/mpeg"},
    {0x7F, "video/x-mpeg"},
    {0x80, "video/x-mpeg4"},
    {0x81, "video/x-mpeg4aac"},
    {0x82, "video/x-mpeg4amr"},
    {0x83, "video/3gpp"},
    {0x84, "video/3gpp2"},
    {0x85, "video/asf"},
    {0x86, "video/x-ms-asf"},
    {0x87, "video/pmd"},
    {0x88, "application/x-h3g-drm-mmv"},
    {0x89, "application/x-h3g-drm-mmt"},
    {0x8A, "application/x-h3g-drm-mma"},
    {0x8B, "application/brelwick-mmstemplate"},
    {0x8C, "audio/amr-wb"},
    {0x8D, "audio/vnd.rn-realaudio"},
    {0x8E, "audio/x-pn-realaudio"},
    {0x8F, "video/vnd.rn-realvideo"},
    {0x90, "application/vnd.rn-realmedia"},
    {0x91, "application/java-archive"},
    {0x92, "application/java"},
    {0x93, "text/vnd.sun.j2me.app-descriptor"},
    {0x94, "text/wml"},
    {0x95, "application/x-pn-realmedia"},
    {0x96, "audio/m4a"},
    {0x97, "audio/mpg"},
    {0x98, "audio/x-au"},
    {0x99, "audio/x-m4a"},
    {0x9A, "audio/x-mpg"},
    {0x9B, "application/x-h3g-drm-mmi"},
    {0x9C, "application/x-h3g-drm-mmr"},
    {0x9D, "audio/vnd.qcelp"},
    {0x9E, "text/v-card"},
    {0x9F, "audio/3gpp2"},
    {0xA0, "audio/mp4a-latm"},
    {0xA1, "video/mp4v-es"},
    {0xA2, "video/h263-2000"},
    {0xA3, "video/3gp2"},
};
// clang-format on

using Params = QMap<QString, QString>;

/// A content type from a media type and parameters.
static WMMSContentType typeOf(const QString &mimeType, const Params &params = {})
{
    WMMSContentType type;
    type.setMimeType(mimeType);
    for (auto param = params.cbegin(); param != params.cend(); ++param) {
        type.setParam(param.key(), param.value());
    }
    return type;
}

class TestWmmsContentType : public QObject {
    Q_OBJECT

private slots:
    void startsEmpty();
    void media_data();
    void media();
    void mediaOutsideTheTable_data();
    void mediaOutsideTheTable();
    void mediaWithoutANumber_data();
    void mediaWithoutANumber();
    void mediaInHalves();
    void setMimeType_data();
    void setMimeType();
    void isEmpty_data();
    void isEmpty();
    void isMimeType();
    void params();
    void emptyValuesRemoveTheName();
    void typeAndStart();
    void copiesAreIndependent();
    void needDecode_data();
    void needDecode();
    void text_data();
    void text();
    void fromString_data();
    void fromString();
    void fromStringAddsToWhatIsThere();
    void readsBackWhatItWrites();
};

void TestWmmsContentType::startsEmpty()
{
    const WMMSContentType type;
    QVERIFY(type.isEmpty());
    QVERIFY(type.getMainType().isEmpty());
    QVERIFY(type.getSubType().isEmpty());
    QCOMPARE(shown(type.getMimeType()), "\"\"");
    QCOMPARE(type.getParamCount(), 0);
    QCOMPARE(type.wellKnownId(), -1);
    QVERIFY(!type.needDecode());
    QCOMPARE(type.toString(), " ");
    QCOMPARE(type.toStringWithQuotes(), " ");
}

void TestWmmsContentType::media_data()
{
    QTest::addColumn<int>("number");
    for (const MediaRow &row : kMedia) {
        QTest::addRow("0x%02X %s", row.number, row.text) << row.number;
    }
}

void TestWmmsContentType::media()
{
    QFETCH(int, number);
    QCOMPARE(kMedia[number].number, number);
    const QString text = kMedia[number].text;
    QCOMPARE(WMMSContentType::getMimeType(quint8(number)), text);
    QCOMPARE(WMMSContentType::getMimeID(text), number);
    QCOMPARE(typeOf(text).getMimeType(), text);
    QCOMPARE(typeOf(text).wellKnownId(), number);

    WMMSContentType type = typeOf("a/b", {{"kept", "1"}});
    type.setWellKnownMedia(quint8(number));
    QCOMPARE(type.getMainType(), text.section('/', 0, 0));
    QCOMPARE(type.getSubType(), text.section('/', 1));
    QCOMPARE(type.getMimeType(), text);
    QVERIFY(type.isMimeType(QLatin1String(kMedia[number].text)));
    QCOMPARE(type.getParam("kept"), "1");
    // What comes from the table is a text of its own as soon as somebody changes it.
    QString changed = type.getMainType();
    changed += "!";
    QCOMPARE(WMMSContentType::getMimeType(quint8(number)), text);
}

void TestWmmsContentType::mediaOutsideTheTable_data()
{
    QTest::addColumn<int>("number");
    for (int number = 164; number <= 255; ++number) {
        QTest::addRow("0x%02X", number) << number;
    }
}

void TestWmmsContentType::mediaOutsideTheTable()
{
    QFETCH(int, number);
    QCOMPARE(shown(WMMSContentType::getMimeType(quint8(number))), "\"\"");
    WMMSContentType type = typeOf("image/gif", {{"kept", "1"}});
    type.setWellKnownMedia(quint8(number));
    QVERIFY(type.isEmpty());
    QCOMPARE(type.getMainType(), QString());
    QCOMPARE(type.getSubType(), QString());
    QCOMPARE(type.getParam("kept"), "1");
}

void TestWmmsContentType::mediaWithoutANumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("the case counts") << "IMAGE/JPEG";
    QTest::newRow("the case of the sub type counts") << "audio/gsm-efr";
    QTest::newRow("main type alone") << "image";
    QTest::newRow("main type and slash") << "image/";
    QTest::newRow("sub type alone") << "/jpeg";
    QTest::newRow("slash") << "/";
    QTest::newRow("one character less") << "image/jpe";
    QTest::newRow("one character more") << "image/jpeg2";
    QTest::newRow("a blank behind") << "image/jpeg ";
    QTest::newRow("with a parameter") << "text/plain;charset=utf-8";
    QTest::newRow("the right spelling") << "multipart/byteranges";
    QTest::newRow("unknown") << "application/x-unknown";
    QTest::newRow("outside ASCII") << QStringLiteral("image/jp\u0115g");
    QTest::newRow("a 0 behind") << QString("image/gif") + QChar(0);
}

void TestWmmsContentType::mediaWithoutANumber()
{
    QFETCH(QString, text);
    QCOMPARE(WMMSContentType::getMimeID(text), -1);
    QCOMPARE(typeOf(text).wellKnownId(), -1);
}

/// The number of a type is that of its joined text, wherever it is cut.
void TestWmmsContentType::mediaInHalves()
{
    WMMSContentType type;
    type.setMainType("multipart");
    type.setSubType("related");
    QCOMPARE(type.wellKnownId(), 0x4C);
    type.setSubType("Related");
    QCOMPARE(type.wellKnownId(), -1);
    type.setSubType("");
    QCOMPARE(type.wellKnownId(), -1);
    type.setMainType("multipart/related");
    QCOMPARE(type.wellKnownId(), -1);
    type.setMainType("multipartrelated");
    type.setSubType("x");
    QCOMPARE(type.wellKnownId(), -1);
}

void TestWmmsContentType::setMimeType_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("mainType");
    QTest::addColumn<QString>("subType");
    QTest::addColumn<QString>("mimeType");
    QTest::newRow("known") << "image/jpeg"
                           << "image"
                           << "jpeg"
                           << "image/jpeg";
    QTest::newRow("unknown") << "x/y"
                             << "x"
                             << "y"
                             << "x/y";
    QTest::newRow("the first slash") << "a/b/c"
                                     << "a"
                                     << "b/c"
                                     << "a/b/c";
    QTest::newRow("two slashes") << "a//b"
                                 << "a"
                                 << "/b"
                                 << "a//b";
    QTest::newRow("blanks stay") << " a / b "
                                 << " a "
                                 << " b "
                                 << " a / b ";
    QTest::newRow("no sub type") << "text/"
                                 << "text"
                                 << ""
                                 << "";
    QTest::newRow("no main type") << "/plain"
                                  << ""
                                  << "plain"
                                  << "";
    QTest::newRow("slash alone") << "/"
                                 << ""
                                 << ""
                                 << "";
    QTest::newRow("no slash is both") << "text"
                                      << "text"
                                      << "text"
                                      << "text/text";
    QTest::newRow("empty") << ""
                           << ""
                           << ""
                           << "";
    QTest::newRow("null") << QString() << ""
                          << ""
                          << "";
}

void TestWmmsContentType::setMimeType()
{
    QFETCH(QString, text);
    QFETCH(QString, mainType);
    QFETCH(QString, subType);
    WMMSContentType type = typeOf("before/before", {{"kept", "1"}});
    type.setMimeType(text);
    QCOMPARE(type.getMainType(), mainType);
    QCOMPARE(type.getSubType(), subType);
    QTEST(type.getMimeType(), "mimeType");
    QCOMPARE(type.getParamCount(), 1);
}

void TestWmmsContentType::isEmpty_data()
{
    QTest::addColumn<QString>("mainType");
    QTest::addColumn<QString>("subType");
    QTest::addColumn<bool>("empty");
    QTest::newRow("both") << "text"
                          << "plain" << false;
    QTest::newRow("blanks") << " "
                            << " " << false;
    QTest::newRow("empty sub type") << "text"
                                    << "" << true;
    QTest::newRow("null sub type") << "text" << QString() << true;
    QTest::newRow("empty main type") << ""
                                     << "plain" << true;
    QTest::newRow("null main type") << QString() << "plain" << true;
    QTest::newRow("neither") << ""
                             << "" << true;
}

void TestWmmsContentType::isEmpty()
{
    QFETCH(QString, mainType);
    QFETCH(QString, subType);
    QFETCH(bool, empty);
    WMMSContentType type;
    type.setMainType(mainType);
    type.setSubType(subType);
    type.setParam("a", "1");
    QCOMPARE(type.getMainType(), mainType);
    QCOMPARE(type.getSubType(), subType);
    QCOMPARE(type.isEmpty(), empty);
    QCOMPARE(type.getMimeType(), empty ? QString("") : mainType + "/" + subType);
    QVERIFY(!type.getMimeType().isNull());
}

void TestWmmsContentType::isMimeType()
{
    const WMMSContentType type = typeOf("text/plain");
    QVERIFY(type.isMimeType(QLatin1String("text/plain")));
    QVERIFY(!type.isMimeType(QLatin1String("text/Plain")));
    QVERIFY(!type.isMimeType(QLatin1String("Text/plain")));
    QVERIFY(!type.isMimeType(QLatin1String("text-plain")));
    QVERIFY(!type.isMimeType(QLatin1String("text/plain ")));
    QVERIFY(!type.isMimeType(QLatin1String("text/plai")));
    QVERIFY(!type.isMimeType(QLatin1String("")));
    QVERIFY(!typeOf("text/").isMimeType(QLatin1String("text/")));
    QVERIFY(typeOf("text/").isMimeType(QLatin1String("")));
}

void TestWmmsContentType::params()
{
    WMMSContentType type;
    type.setParam("name", "a");
    type.setParam("charset", "b");
    type.setParam("Name", "c");
    QCOMPARE(type.getParamCount(), 3);
    QCOMPARE(type.getParam("name"), "a");
    QCOMPARE(type.getParam("Name"), "c");
    QCOMPARE(shown(type.getParam("NAME")), "null");
    QCOMPARE(shown(type.getParam("")), "null");
    type.setParam("name", "d");
    QCOMPARE(type.getParamCount(), 3);
    QCOMPARE(type.getParam("name"), "d");
    type.setParam("", "nameless");
    QCOMPARE(type.getParam(""), "nameless");
    QCOMPARE(type.params(),
             (Params{{"", "nameless"}, {"Name", "c"}, {"charset", "b"}, {"name", "d"}}));
}

void TestWmmsContentType::emptyValuesRemoveTheName()
{
    WMMSContentType type = typeOf("text/plain", {{"a", "1"}, {"b", "2"}});
    type.setParam("a", "");
    QCOMPARE(type.getParamCount(), 1);
    type.setParam("b", QString());
    QCOMPARE(type.getParamCount(), 0);
    type.setParam("c", "");
    QCOMPARE(type.getParamCount(), 0);
    QCOMPARE(shown(type.getParam("c")), "null");
}

void TestWmmsContentType::typeAndStart()
{
    WMMSContentType type;
    QCOMPARE(shown(type.getParamType()), "null");
    QCOMPARE(shown(type.getParamStart()), "null");
    type.setParamType("application/smil");
    type.setParamStart("<smil>");
    QCOMPARE(type.getParamType(), "application/smil");
    QCOMPARE(type.getParamStart(), "<smil>");
    QCOMPARE(type.params(), (Params{{"type", "application/smil"}, {"start", "<smil>"}}));
    type.setParam("type", "a");
    type.setParam("start", "b");
    QCOMPARE(type.getParamType(), "a");
    QCOMPARE(type.getParamStart(), "b");
    type.setParamType("");
    type.setParamStart(QString());
    QCOMPARE(type.getParamCount(), 0);
}

void TestWmmsContentType::copiesAreIndependent()
{
    WMMSContentType first = typeOf("text/plain", {{"a", "1"}});
    WMMSContentType second = typeOf("image/gif", {{"b", "2"}});
    second = first;
    QCOMPARE(second.getMimeType(), "text/plain");
    QCOMPARE(second.params(), (Params{{"a", "1"}}));
    first.setSubType("html");
    first.setParam("a", "3");
    QCOMPARE(second.getMimeType(), "text/plain");
    QCOMPARE(second.getParam("a"), "1");
}

void TestWmmsContentType::needDecode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Params>("params");
    QTest::addColumn<bool>("needed");
    const Params boundary{{"boundary", "b"}};
    QTest::newRow("related") << "application/vnd.wap.multipart.related" << Params() << true;
    QTest::newRow("related, boundary")
        << "application/vnd.wap.multipart.related" << boundary << true;
    QTest::newRow("mixed") << "application/vnd.wap.multipart.mixed" << Params() << true;
    QTest::newRow("mixed, boundary") << "application/vnd.wap.multipart.mixed" << boundary << true;
    QTest::newRow("DRM message") << "application/vnd.oma.drm.message" << Params() << true;
    QTest::newRow("DRM message, empty boundary")
        << "application/vnd.oma.drm.message" << Params{{"boundary", ""}} << true;
    QTest::newRow("DRM message, another parameter")
        << "application/vnd.oma.drm.message" << Params{{"Boundary", "b"}} << true;
    QTest::newRow("a DRM message with a boundary is not decoded further")
        << "application/vnd.oma.drm.message" << boundary << false;
    QTest::newRow("alternative") << "application/vnd.wap.multipart.alternative" << Params()
                                 << false;
    QTest::newRow("textual related") << "multipart/related" << Params() << false;
    QTest::newRow("textual mixed") << "multipart/mixed" << Params() << false;
    QTest::newRow("another case") << "application/vnd.wap.multipart.Related" << Params() << false;
    QTest::newRow("text") << "text/plain" << Params() << false;
    QTest::newRow("empty") << "" << Params() << false;
}

void TestWmmsContentType::needDecode()
{
    QFETCH(QString, text);
    QFETCH(Params, params);
    QFETCH(bool, needed);
    QCOMPARE(typeOf(text, params).needDecode(), needed);
}

void TestWmmsContentType::text_data()
{
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<Params>("params");
    QTest::addColumn<QString>("plain");
    QTest::addColumn<QString>("quoted");
    QTest::newRow("the blank stands also without parameters")
        << "image/jpeg" << Params() << "image/jpeg "
        << "image/jpeg ";
    QTest::newRow("one parameter")
        << "text/plain" << Params{{"charset", "UTF-16"}} << "text/plain ;charset=UTF-16;"
        << "text/plain ;charset=\"UTF-16\"";
    QTest::newRow("in the order of names, capitals first")
        << "a/b" << Params{{"b", "2"}, {"a", "1"}, {"C", "3"}} << "a/b ;C=3;a=1;b=2;"
        << "a/b ;C=\"3\";a=\"1\";b=\"2\"";
    QTest::newRow("values as they stand")
        << "a/b" << Params{{"n", "x;y=\"z\" "}} << "a/b ;n=x;y=\"z\" ;"
        << "a/b ;n=\"x;y=\"z\" \"";
    QTest::newRow("no type") << "" << Params{{"n", "v"}} << " ;n=v;"
                             << " ;n=\"v\"";
}

void TestWmmsContentType::text()
{
    QFETCH(QString, mimeType);
    QFETCH(Params, params);
    const WMMSContentType type = typeOf(mimeType, params);
    QTEST(type.toString(), "plain");
    QTEST(type.toStringWithQuotes(), "quoted");
}

void TestWmmsContentType::fromString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("mainType");
    QTest::addColumn<QString>("subType");
    QTest::addColumn<Params>("params");
    const auto add = [](const char *name, const QString &text, const char *mainType,
                        const char *subType, const Params &params = {}) {
        QTest::newRow(name) << text << mainType << subType << params;
    };
    add("type alone", "image/gif", "image", "gif");
    add("empty", "", "", "");
    add("null", QString(), "", "");
    add("no slash", "text", "text", "text");
    add("no semicolon: the blank stays", "text/plain charset=a", "text", "plain charset=a");
    add("one parameter", "text/plain;charset=utf-8", "text", "plain", {{"charset", "utf-8"}});
    add("semicolon at the end", "text/plain;charset=utf-8;", "text", "plain",
        {{"charset", "utf-8"}});
    add("two parameters", "a/b;c=1;d=2", "a", "b", {{"c", "1"}, {"d", "2"}});
    add("the last of two equal names", "a/b;c=1;c=2", "a", "b", {{"c", "2"}});
    add("quotes are dropped", "a/b;c=\"1\"", "a", "b", {{"c", "1"}});
    add("one pair of quotes is dropped", "a/b;c=\"\"1\"\"", "a", "b", {{"c", "\"1\""}});
    add("quote in front alone", "a/b;c=\"1;d=2", "a", "b", {{"c", "1"}, {"d", "2"}});
    add("quote at the end alone", "a/b;c=1\";d=2", "a", "b", {{"c", "1"}, {"d", "2"}});
    add("a quoted semicolon ends the value", "a/b;c=\"1;2\";d=3", "a", "b",
        {{"c", "1"}, {"2\";d", "3"}});
    add("one quote is an empty value", "a/b;c=\";d=2", "a", "b", {{"d", "2"}});
    add("two quotes are an empty value", "a/b;c=\"\";d=2", "a", "b", {{"d", "2"}});
    add("one quote at the end", "a/b;c=\"", "a", "b");
    add("empty value", "a/b;c=;d=2", "a", "b", {{"d", "2"}});
    add("empty value at the end", "a/b;c=", "a", "b");
    add("empty name", "a/b;=1", "a", "b", {{"", "1"}});
    add("equals signs in the value", "a/b;c=1=2", "a", "b", {{"c", "1=2"}});
    add("no equals sign", "a/b;c", "a", "b");
    add("a name without a value joins the next", "a/b;c;d=2", "a", "b", {{"c;d", "2"}});
    add("semicolon alone", "a/b;", "a", "b");
    add("two semicolons", "a/b;;c=1", "a", "b", {{";c", "1"}});
    add("nothing is trimmed", "a/b; c = 1 ; d = 2 ", "a", "b", {{" c ", " 1 "}, {" d ", " 2 "}});
    add("cut at a blank in front of the semicolon", "a/b ;c=1", "a", "b", {{";c", "1"}});
    add("cut at the first blank", "a/b x y;c=1", "a", "b", {{"x y;c", "1"}});
    add("a blank in front of everything", " a/b;c=1", "", "", {{"a/b;c", "1"}});
    add("a blank behind the semicolon does not cut", "a/b;c=1 2", "a", "b", {{"c", "1 2"}});
    add("semicolon first", ";c=1", "", "", {{"c", "1"}});
    add("outside Latin-1", QStringLiteral("a/\u00E9;c=\u20AC"), "a", "\u00E9", {{"c", "?"}});
    const QString longText(300, 'x');
    add("64 characters and more stay whole", "a/" + longText + ";" + longText + "=" + longText, "a",
        longText.toLatin1(), {{longText, longText}});
}

void TestWmmsContentType::fromString()
{
    QFETCH(QString, text);
    WMMSContentType type;
    QVERIFY(type.fromString(text));
    QTEST(type.getMainType(), "mainType");
    QTEST(type.getSubType(), "subType");
    QTEST(type.params(), "params");
}

void TestWmmsContentType::fromStringAddsToWhatIsThere()
{
    WMMSContentType type = typeOf("image/gif", {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    QVERIFY(type.fromString("text/plain;a=5;b="));
    QCOMPARE(type.getMimeType(), "text/plain");
    QCOMPARE(type.params(), (Params{{"a", "5"}, {"c", "3"}}));
}

/// Nothing is trimmed, so what stands between two pairs belongs to the next name: of its own texts
/// it reads back all but the first name.
void TestWmmsContentType::readsBackWhatItWrites()
{
    const WMMSContentType written = typeOf("text/plain", {{"a", "1"}, {"b", "2"}});
    for (const QString &text : {written.toString(), written.toStringWithQuotes()}) {
        WMMSContentType read;
        QVERIFY(read.fromString(text));
        QCOMPARE(read.getMimeType(), "text/plain");
        QCOMPARE(read.params(), (Params{{";a", "1"}, {"b", "2"}}));
    }
}

QTEST_GUILESS_MAIN(TestWmmsContentType)
#include "tst_wmmscontenttype.moc"
