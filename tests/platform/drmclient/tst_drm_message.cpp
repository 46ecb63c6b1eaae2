// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/drmclient/drm_rows.h"

using namespace drm;
using wmsg::drm::kLongestHead;
using wmsg::drm::readDrmMessage;

class TestDrmMessage : public QObject {
    Q_OBJECT

private slots:
    void forwardLock_data();
    void forwardLock();
    void boundaries_data();
    void boundaries();
    void combinedDelivery_data();
    void combinedDelivery();
    void contentInside_data();
    void contentInside();
    void otherFiles_data();
    void otherFiles();
    void hostile_data();
    void hostile();
    void everyPrefix();

private:
    void check()
    {
        QFETCH(QByteArray, bytes);
        const Exact head(bytes);
        QTEST(shown(readDrmMessage(head)), "expected");
    }
};

void TestDrmMessage::forwardLock_data()
{
    addColumns();
    const QByteArray locked = "forward-lock type=image/jpeg";
    const auto withEncoding = [](const QByteArray &encoding, const QByteArray &data) {
        return message(
            {bodyPart("image/jpeg", data, "Content-Transfer-Encoding: " + encoding + "\r\n")});
    };
    row("binary", withEncoding("binary", kJpeg), locked);
    row("base64", withEncoding("base64", kJpeg.toBase64()), locked);
    row("quoted-printable", withEncoding("quoted-printable", "=FF=D8=\r\n=FF"), locked);
    row("7bit", withEncoding("7bit", "abc"), locked);
    row("8bit", withEncoding("8bit", "\xFF"), locked);
    row("an encoding nobody knows", withEncoding("x-other", kJpeg), locked);
    row("no encoding", message({bodyPart("image/jpeg", kJpeg)}), locked);
    row("no data", message({bodyPart("image/jpeg", "")}), locked);
    row("a parameter", message({bodyPart("image/jpeg; name=\"a;b.jpg\"", kJpeg)}), locked);
    row("a parameter, no blank", message({bodyPart("image/jpeg;name=a", kJpeg)}), locked);
    row("the case of a type stays", message({bodyPart("Image/JPEG", kJpeg)}),
        "forward-lock type=Image/JPEG");
    row("the case of a name does not count", "--b\r\ncontent-TYPE:image/jpeg\r\n\r\nx\r\n--b--",
        locked);
    row("white space around the value", "--b\r\nContent-Type : \t image/jpeg \t\r\n\r\nx", locked);
    row("a folded value", "--b\r\nContent-Type:\r\n\timage/jpeg\r\n ; name=a\r\n\r\nx", locked);
    row("the first of two types counts",
        "--b\r\nContent-Type: image/jpeg\r\nContent-Type: image/gif\r\n\r\nx", locked);
    row("other fields in front",
        "--b\r\nContent-ID: <1>\r\nX-y: z\r\nContent-Type: image/jpeg\r\n\r\nx", locked);
    row("line feeds alone", "--b\nContent-Type: image/jpeg\n\nx\n--b--\n", locked);
    row("empty lines in front", "\r\n\n" + message({bodyPart("image/jpeg", kJpeg)}), locked);
    row("cut off in the data", "--b\r\nContent-Type: image/jpeg\r\n\r\nx", locked);
    row("cut off behind the type", "--b\r\nContent-Type: image/jpeg", locked);
    row("a line that is no field ends the header",
        "--b\r\nContent-Type: image/jpeg\r\nwhat\r\n\r\nx", locked);
    row("a type that is none", message({bodyPart("picture", kJpeg)}), "forward-lock");
    row("an empty type", message({bodyPart("", kJpeg)}), "forward-lock");
    row("control characters in a type", message({bodyPart("image/\x01", kJpeg)}), "forward-lock");
    row("two slashes", message({bodyPart("image/a/b", kJpeg)}), "forward-lock");
}

void TestDrmMessage::forwardLock()
{
    check();
}

void TestDrmMessage::boundaries_data()
{
    addColumns();
    const QByteArray locked = "forward-lock type=a/b";
    const auto with = [](const QByteArray &boundary) {
        return message({bodyPart("a/b", "x")}, boundary);
    };
    row("one character", with("x"), locked);
    row("seventy", with(QByteArray(70, 'b')), locked);
    row("all kinds of marks", with("'()+_,-./:=? 0"), locked);
    row("blanks behind it", "--b  \t\r\nContent-Type: a/b\r\n\r\nx", locked);
    row("dashes", with("--"), locked);
    row("upper half", with("gr\xC3\xBC\xC3\x9F"), locked);
    row("longest", with(QByteArray(252, 'b')), locked);
    row("too long", with(QByteArray(254, 'b')), kOther);
    row("empty", with(""), kOther);
    row("blanks alone", with("  "), kOther);
    row("control character", with("b\x01"), kOther);
}

void TestDrmMessage::boundaries()
{
    check();
}

void TestDrmMessage::combinedDelivery_data()
{
    addColumns();
    const QByteArray picture = bodyPart("image/gif", "GIF89a");
    const QByteArray type = "application/vnd.oma.drm.rights+xml";
    const QByteArray wbxml = "application/vnd.oma.drm.rights+wbxml";
    const QByteArray encoded = "Content-Transfer-Encoding: base64\r\n";
    const QByteArray both = "combined type=image/gif uri=cid:1@x";
    row("rights as XML", message({bodyPart(type, rights1("cid:1@x")), picture}), both);
    row("rights as binary XML", message({bodyPart(wbxml, binaryRights("cid:1@x")), picture}), both);
    row("rights in base64",
        message({bodyPart(type, rights1("cid:1@x").toBase64(), encoded), picture}), both);
    row("binary rights in base64",
        message({bodyPart(wbxml, binaryRights("cid:1@x").toBase64(), encoded), picture}), both);
    row("rights in quoted-printable",
        message({bodyPart(type, rights1("cid=3A1=\r\n@x").replace("=\"", "=3D\""),
                          "Content-Transfer-Encoding: Quoted-Printable\r\n"),
                 picture}),
        both);
    row("rights of version 2",
        message({bodyPart("application/vnd.oma.drm.ro+xml", rights2("cid:1@x", "http://r.i/")),
                 picture}),
        both + " issuer=http://r.i/");
    row("the case of the type does not count",
        message({bodyPart("Application/VND.oma.drm.rights+XML", rights1("cid:1@x")), picture}),
        both);
    row("rights that cannot be read", message({bodyPart(type, "<nothing/>"), picture}),
        "combined type=image/gif");
    row("no rights", message({bodyPart(type, ""), picture}), "combined type=image/gif");
    row("rights alone", message({bodyPart(type, rights1("cid:1@x"))}), "combined uri=cid:1@x");
    row("content without a type",
        message({bodyPart(type, rights1("cid:1@x")), "Content-ID: <1>\r\n\r\nx"}),
        "combined uri=cid:1@x");
    row("cut off in the rights", "--b\r\nContent-Type: " + type + "\r\n\r\n" + rights1("cid:1@x"),
        "combined uri=cid:1@x");
    row("a longer line is no delimiter",
        message({bodyPart(type, "--boundary-12\r\nContent-Type: a/b\r\n\r\n" + rights1("cid:1@x")),
                 picture}),
        "combined type=image/gif");
    row("a delimiter begins its line",
        message({bodyPart(type, rights1("cid:1@x") + "\r\n --boundary-1\r\n"), picture}), both);
}

void TestDrmMessage::combinedDelivery()
{
    check();
}

void TestDrmMessage::contentInside_data()
{
    addColumns();
    const QByteArray content = content1("audio/amr", "cid:2@x", "Rights-Issuer: http://r.i/\r\n");
    const QByteArray content02 = content2("audio/amr", "cid:2@x", "http://r.i/");
    const QByteArray both = "forward-lock type=audio/amr uri=cid:2@x issuer=http://r.i/";
    row("version 1", message({bodyPart("application/vnd.oma.drm.content", content)}), both);
    row("version 1 in base64",
        message({bodyPart("application/vnd.oma.drm.content", content.toBase64(),
                          "Content-Transfer-Encoding: base64\r\n")}),
        both);
    row("version 2", message({bodyPart("application/vnd.oma.drm.dcf", content02)}),
        both + " encryption=AES128CBC");
    row("behind rights",
        message({bodyPart("application/vnd.oma.drm.rights+xml", rights1("cid:2@x")),
                 bodyPart("application/vnd.oma.drm.content", content)}),
        "combined type=audio/amr uri=cid:2@x issuer=http://r.i/");
    row("not what it is called", message({bodyPart("application/vnd.oma.drm.content", kJpeg)}),
        "forward-lock type=application/vnd.oma.drm.content");
    row("not looked for elsewhere", message({bodyPart("application/octet-stream", content)}),
        "forward-lock type=application/octet-stream");
}

void TestDrmMessage::contentInside()
{
    check();
}

void TestDrmMessage::otherFiles_data()
{
    addColumns();
    row("empty", "", kOther);
    row("picture", kJpeg, kOther);
    row("dashes alone", "--", kOther);
    row("one line", "--boundary", kOther);
    row("text behind dashes", "--\r\nAnn\r\n", kOther);
    row("a signature", "-- \r\nContent-Type: a/b\r\n\r\n", kOther);
    row("a text with dashes", "--hello\r\nthere\r\n", kOther);
    row("no type", "--b\r\nContent-ID: <1>\r\n\r\nContent-Type: a/b\r\n", kOther);
    row("a type behind a line that is no field", "--b\r\nwhat\r\nContent-Type: a/b\r\n\r\n",
        kOther);
    row("text in front", "Hello\r\n" + message({bodyPart("a/b", "x")}), kOther);
}

void TestDrmMessage::otherFiles()
{
    check();
}

void TestDrmMessage::hostile_data()
{
    addColumns();
    const auto filled = [](const QByteArray &start, const QByteArray &unit) {
        return start + unit.repeated((kLongestHead - start.size()) / unit.size());
    };
    const QByteArray rights = "--b\nContent-Type: application/vnd.oma.drm.rights+xml\n\n";
    row("endless boundary", filled("--", "b"), kOther);
    row("endless empty lines", filled("", "\r\n"), kOther);
    row("endless header", filled("--b\nContent-Type: a/b\n", "X: y\n"), "forward-lock type=a/b");
    row("endless folded value", filled("--b\nContent-Type: a/b;\n", " x\n"),
        "forward-lock type=a/b");
    row("endless value", filled("--b\nContent-Type: a/", "b"),
        "forward-lock type=a/" + QByteArray(kLongestHead - 20, 'b'));
    row("endless name", filled("--b\n", "X"), kOther);
    row("nearly delimiters", filled(rights, "\n--bb"), "combined");
    row("lines of dashes", filled(rights, "--\n"), "combined");
    row("endless base64",
        filled("--b\nContent-Transfer-Encoding: base64\nContent-Type: "
               "application/vnd.oma.drm.content\n\n",
               "A"),
        "forward-lock type=application/vnd.oma.drm.content");
    row("endless blanks",
        filled("--b\nContent-Transfer-Encoding: quoted-printable\nContent-Type: "
               "application/vnd.oma.drm.content\n\n=",
               " "),
        "forward-lock type=application/vnd.oma.drm.content");
    row("endless escapes",
        filled("--b\nContent-Transfer-Encoding: quoted-printable\nContent-Type: "
               "application/vnd.oma.drm.content\n\n",
               "="),
        "forward-lock type=application/vnd.oma.drm.content");
}

void TestDrmMessage::hostile()
{
    check();
}

void TestDrmMessage::everyPrefix()
{
    const QByteArray whole =
        message({bodyPart("application/vnd.oma.drm.rights+xml", rights1("cid:1@x")),
                 bodyPart("image/gif", "GIF89a")});
    const qsizetype typed = whole.indexOf("Content-Type:") + qsizetype(qstrlen("Content-Type:"));
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const Exact head(whole.first(size));
        const MaybeContainer read = readDrmMessage(head);
        QCOMPARE(read.has_value(), size >= typed);
        if (read && read->kind == DRM_KIND_COMBINED_DELIVERY) {
            QVERIFY(QByteArray("image/gif").startsWith(read->contentType));
        }
    }
    QCOMPARE(shown(readDrmMessage(whole)), "combined type=image/gif uri=cid:1@x");
}

QTEST_GUILESS_MAIN(TestDrmMessage)
#include "tst_drm_message.moc"
