// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/drmclient/drm_rows.h"

using namespace drm;
using wmsg::drm::kLongestHead;
using wmsg::drm::readContentVersion1;
using wmsg::drm::readContentVersion2;

class TestDrmContent : public QObject {
    Q_OBJECT

private slots:
    void version1_data();
    void version1();
    void version1LongerThanTheHead();
    void everyPrefixOfVersion1();
    void version2_data();
    void version2();
    void tracks_data();
    void tracks();
    void everyPrefixOfVersion2();
    void hostileBoxes_data();
    void hostileBoxes();
};

void TestDrmContent::version1_data()
{
    addColumns();
    const QByteArray headers = "Encryption-Method: AES128CBC;padding=PKCS;plaintextlen=6\r\n"
                               "Content-Name: Sunset\r\nRights-Issuer: http://r.i/?a=1\r\n";
    const QByteArray start = fromHex("01 03 01 61 2F 62 63"); // "a/b", "c"
    const QByteArray plain = "content1 type=a/b uri=c";
    row("all headers", content1("image/jpeg", "cid:1@x", headers),
        "content1 type=image/jpeg uri=cid:1@x issuer=http://r.i/?a=1 name=Sunset "
        "encryption=AES128CBC");
    row("byte by byte", start + fromHex("00 01 FF"), plain);
    row("no URI", fromHex("01 03 00 61 2F 62 00 00"), "content1 type=a/b");
    row("longest type and URI", content1("a/" + QByteArray(253, 'b'), QByteArray(255, 'c'), ""),
        "content1 type=a/" + QByteArray(253, 'b') + " uri=" + QByteArray(255, 'c'));
    row("type with a parameter", content1("a/b; c=d", "c", ""), plain);
    row("headers of more than 127 bytes",
        content1("a/b", "c", "X: " + QByteArray(200, 'y') + "\r\nRights-Issuer: u\r\n"),
        plain + " issuer=u");
    row("case of a name", content1("a/b", "c", "RIGHTS-issuer:u\r\n"), plain + " issuer=u");
    row("line feeds alone", content1("a/b", "c", "Content-Name: n\nRights-Issuer: u\n"),
        plain + " issuer=u name=n");
    row("no line end at the end", content1("a/b", "c", "Rights-Issuer: u"), plain + " issuer=u");
    row("a line that is no header", content1("a/b", "c", "what\r\n\r\nRights-Issuer: u\r\n"),
        plain + " issuer=u");
    row("the first of two", content1("a/b", "c", "Rights-Issuer: u\r\nRights-Issuer: v\r\n"),
        plain + " issuer=u");
    row("method without parameters", content1("a/b", "c", "Encryption-Method: AES128CBC\r\n"),
        plain + " encryption=AES128CBC");
    row("a NUL in the URL", content1("a/b", "c", QByteArray("Rights-Issuer: u\0v\r\n", 20)), plain);
    row("a NUL in the URI", content1("a/b", QByteArray("c\0d", 3), ""), "content1 type=a/b");
    row("headers end with their length", start + fromHex("02 00") + "X:Rights-Issuer: u\r\n",
        plain);
    row("data cut off", start + fromHex("00 8F FF FF FF 7F") + "x", plain);
    row("lengths in five groups", start + fromHex("80 80 80 80 00 80 80 80 80 00"), plain);
    row("headers longer than the file by one", start + fromHex("03 00") + "ab", kOther);
    row("headers of 4 GB", start + fromHex("8F FF FF FF 7F 00") + "ab", kOther);
    row("a length of 33 bits", start + fromHex("9F FF FF FF 7F 00") + "ab", kOther);
    row("a length in six groups", start + fromHex("80 80 80 80 80 00 00"), kOther);
    row("type past the end", fromHex("01 FF 01 61 2F 62 63"), kOther);
    row("URI past the end", fromHex("01 03 FF 61 2F 62 63"), kOther);
    row("another version", fromHex("02 03 01 61 2F 62 63 00 00"), kOther);
    row("no slash in the type", fromHex("01 03 01 61 62 62 63 00 00"), kOther);
    row("control character in the type", fromHex("01 03 01 01 2F 62 63 00 00"), kOther);
    row("empty type", fromHex("01 00 00 00 00"), kOther);
}

void TestDrmContent::version1()
{
    QFETCH(QByteArray, bytes);
    const Exact head(bytes);
    QTEST(shown(readContentVersion1(head, bytes.size())), "expected");
}

void TestDrmContent::version1LongerThanTheHead()
{
    const QByteArray bytes = content1(
        "a/b", "c", "Rights-Issuer: u\r\n" + QByteArray("X: y\r\n").repeated(kLongestHead / 6));
    const Exact head(bytes.first(kLongestHead));
    QCOMPARE(shown(readContentVersion1(head, bytes.size())), "content1 type=a/b uri=c issuer=u");
}

void TestDrmContent::everyPrefixOfVersion1()
{
    const QByteArray whole = content1("image/jpeg", "cid:1@x", "Rights-Issuer: http://r.i/\r\n");
    const qsizetype headersEnd = whole.size() - qsizetype(qstrlen("secret"));
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const Exact head(whole.first(size));
        QCOMPARE(shown(readContentVersion1(head, size)),
                 size < headersEnd ? kOther
                                   : "content1 type=image/jpeg uri=cid:1@x issuer=http://r.i/");
    }
}

void TestDrmContent::version2_data()
{
    addColumns();
    const QByteArray type = fileType("odcf", "odcf");
    const auto container = [](const QByteArray &boxes) {
        return box("odrm", kVersionFlags + boxes);
    };
    const QByteArray headers = discreteHeaders("a/b", commonHeaders(1, "u", "http://r.i/"));
    const QByteArray whole = "content2 type=a/b uri=u issuer=http://r.i/ encryption=AES128CBC";
    const QByteArray issuerTooLong = fromHex("01 01 00 00 00 00 00 00 00 00 00 01 FF FF 00 00 75");
    row("wide boxes", content2("a/b", "u", "http://r.i/"), whole);
    row("narrow box", type + container(headers), whole);
    row("a box up to the end", type + number(0, 4) + "odrm" + kVersionFlags + headers, whole);
    row("counter mode", type + container(discreteHeaders("a/b", commonHeaders(2, "u", ""))),
        "content2 type=a/b uri=u encryption=AES128CTR");
    row("in the clear", type + container(discreteHeaders("a/b", commonHeaders(0, "", ""))),
        "content2 type=a/b encryption=NULL");
    row("a method nobody knows",
        type + container(discreteHeaders("a/b", commonHeaders(9, "u", ""))),
        "content2 type=a/b uri=u");
    row("other boxes in front", type + box("free", "x") + container(box("free", "") + headers),
        whole);
    row("boxes in front of the common headers",
        type
            + container(
                discreteHeaders("a/b", box("udta", "x") + commonHeaders(1, "u", "http://r.i/"))),
        whole);
    row("the brand is a compatible one", fileType("mp42", "isomodcf") + container(headers), whole);
    row("a second container", type + box("odrm", kVersionFlags) + container(headers), whole);
    row("type with a parameter",
        type + container(discreteHeaders("a/b;c=d", commonHeaders(1, "u", "http://r.i/"))), whole);
    row("longest type", type + container(discreteHeaders("a/" + QByteArray(253, 'b'), "")),
        "content2 type=a/" + QByteArray(253, 'b'));
    row("longest URL",
        type + container(discreteHeaders("a/b", commonHeaders(1, "", QByteArray(65535, 'u')))),
        "content2 type=a/b issuer=" + QByteArray(65535, 'u') + " encryption=AES128CBC");
    row("no common headers", type + container(discreteHeaders("a/b", "")), "content2 type=a/b");
    row("no headers", type + container(""), "content2");
    row("no container", type, "content2");
    row("type past the end", type + container(box("odhe", kVersionFlags + fromHex("FF") + "a/b")),
        "content2");
    row("no type", type + container(box("odhe", kVersionFlags)), "content2");
    row("headers without version", type + container(box("odhe", "x")), "content2");
    row("URL past the end",
        type + container(discreteHeaders("a/b", box("ohdr", kVersionFlags + issuerTooLong))),
        "content2 type=a/b");
    row("control characters in the URL",
        type + container(discreteHeaders("a/b", commonHeaders(1, "u", "http://\r\n"))),
        "content2 type=a/b uri=u issuer=http:// encryption=AES128CBC");
    row("a NUL in the URL",
        type + container(discreteHeaders("a/b", commonHeaders(1, "u", QByteArray("h\0t", 3)))),
        "content2 type=a/b uri=u encryption=AES128CBC");
    row("another brand", fileType("isom", "mp42") + container(headers), kOther);
    row("no brand", box("ftyp", "odcf") + container(headers), kOther);
    row("no file type", container(headers), kOther);
    row("the file type is not first", box("free", "") + content2("a/b", "u", ""), kOther);
}

void TestDrmContent::version2()
{
    QFETCH(QByteArray, bytes);
    const Exact head(bytes);
    QTEST(shown(readContentVersion2(head)), "expected");
}

void TestDrmContent::tracks_data()
{
    addColumns();
    const auto track = [](const QByteArray &entry, int fields) {
        const QByteArray keys = box("odkm", kVersionFlags + commonHeaders(2, "u", "http://r.i/"));
        const QByteArray sample = box(entry,
                                      QByteArray(fields, 0) + box("esds", "x")
                                          + box("sinf", box("frma", "mp4a") + box("schi", keys)));
        const QByteArray table = box("stbl", box("stsd", kVersionFlags + number(1, 4) + sample));
        return box("trak", box("tkhd", "") + box("mdia", box("minf", table)));
    };
    const QByteArray fields = " uri=u issuer=http://r.i/ encryption=AES128CTR";
    const QByteArray picture = track("encv", 78);
    const QByteArray sound = track("enca", 28);
    row("film", fileType("3gp6", "3gp6opf2") + box("moov", picture),
        "content2 type=video/3gpp" + fields);
    row("sound", fileType("opf2") + box("moov", sound), "content2 type=audio/mp4" + fields);
    row("film with sound", fileType("3g2a", "opf2") + box("moov", sound + picture),
        "content2 type=video/3gpp2" + fields);
    row("a track in the clear first",
        fileType("3gp4", "opf2") + box("moov", track("mp4v", 78) + sound),
        "content2 type=audio/3gpp" + fields);
    row("no protected track", fileType("3gp4", "opf2") + box("moov", track("mp4v", 78)),
        "content2");
    row("no tracks", fileType("3gp4", "opf2") + box("mdat", "x"), "content2");
    row("in the clear", fileType("3gp4", "isom") + box("moov", picture), kOther);
}

void TestDrmContent::tracks()
{
    version2();
}

void TestDrmContent::everyPrefixOfVersion2()
{
    const QByteArray whole = content2("image/jpeg", "cid:1@x", "http://r.i/");
    const QByteArray full =
        "content2 type=image/jpeg uri=cid:1@x issuer=http://r.i/ encryption=AES128CBC";
    const qsizetype typed = whole.indexOf("image/jpeg") + qsizetype(qstrlen("image/jpeg"));
    const qsizetype issued = whole.indexOf("http://r.i/") + qsizetype(qstrlen("http://r.i/"));
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const Exact head(whole.first(size));
        QCOMPARE(shown(readContentVersion2(head)),
                 size < 20           ? kOther
                     : size < typed  ? QByteArray("content2")
                     : size < issued ? QByteArray("content2 type=image/jpeg")
                                     : full);
    }
}

void TestDrmContent::hostileBoxes_data()
{
    addColumns();
    const QByteArray type = fileType("odcf");
    const QByteArray headers = kVersionFlags + discreteHeaders("a/b", "");
    const QByteArray tracks = fileType("opf2");
    QByteArray deep;
    for (int i = 0; i < 20000; ++i) {
        deep += number(0, 4) + "odrm" + kVersionFlags;
    }
    QByteArray deepTracks;
    for (int i = 0; i < 20000; ++i) {
        deepTracks += number(0, 4) + "moov";
    }
    const QByteArray tiny = box("free", "").repeated(30000);
    row("deep boxes", type + deep, "content2");
    row("deep boxes of tracks", tracks + deepTracks, "content2");
    row("many boxes", type + tiny + box("odrm", headers), "content2 type=a/b");
    row("many boxes of tracks", tracks + box("moov", box("trak", "").repeated(30000)), "content2");
    row("a box of 4 GB", type + fromHex("FF FF FF FF") + "odrm" + headers, "content2 type=a/b");
    row("a box of 2^64 - 1 bytes",
        type + number(1, 4) + "odrm" + fromHex("FF FF FF FF FF FF FF FF") + headers,
        "content2 type=a/b");
    row("a box of 2^63 bytes",
        type + number(1, 4) + "odrm" + fromHex("80 00 00 00 00 00 00 00") + headers,
        "content2 type=a/b");
    row("a size below the header", type + number(7, 4) + "odrm" + headers, "content2");
    row("a wide size below the header", type + number(1, 4) + "odrm" + number(15, 8) + headers,
        "content2");
    row("a wide size cut off", type + number(1, 4) + "odrm" + number(0, 4), "content2");
    row("a wide size of 0", type + number(1, 4) + "odrm" + number(0, 8) + headers, "content2");
    row("an inner box beyond the outer",
        type
            + box("odrm",
                  kVersionFlags + number(1000, 4) + "odhe" + kVersionFlags + fromHex("03") + "a/b")
            + "x/y",
        "content2 type=a/b");
    row("a file type of 4 GB", fromHex("FF FF FF FF") + "ftypodcf" + number(2, 4), kOther);
    row("a file type past the end", fromHex("00 00 00 11") + "ftypodcf" + number(2, 4), kOther);
    row("a file type that is all", fromHex("00 00 00 00") + "ftypodcf" + number(2, 4), "content2");
}

void TestDrmContent::hostileBoxes()
{
    version2();
}

QTEST_GUILESS_MAIN(TestDrmContent)
#include "tst_drm_content.moc"
