// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/mimetype/am_mimetype.h"

#include <QtTest/QtTest>

namespace {

struct Row {
    const char *type;
    const char *extensions;
};

// What comes with the library: the answer is the same on every system.
const Row kPhoneTypes[] = {
    {"text/x-hdml", "hdml"},
    {"text/x-vCalendar", "vcs"},
    {"text/x-vCard", "vcf"},
    {"application/vnd.wap.wmlc", "wmlc"},
    {"application/vnd.wap.wmlscriptc", "wmlsc"},
    {"application/x-x509-user-cert", "crt"},
    {"application/vnd.wap.wbxml", "wbxml"},
    {"text/vnd.wap.si", "si"},
    {"application/vnd.wap.sic", "sic"},
    {"text/vnd.wap.sl", "sl"},
    {"application/vnd.wap.slc", "slc"},
    {"application/wml+xml", "wml"},
    {"application/vnd.wap.mms-message", "mms"},
    {"application/vnd.wap.xhtml+xml", "xhtml"},
    {"application/vnd.oma.dd+xml", "dd"},
    {"application/vnd.oma.drm.message", "dm"},
    {"application/vnd.oma.drm.rights+xml", "dr"},
    {"application/vnd.oma.drm.rights+wbxml", "drc"},
    {"application/vnd.oma.drm.content", "dcf"},
    {"application/vnd.oma.drm.dcf", "odf o4a o4v"},
    {"application/vnd.oma.drm.ro+xml", "ro"},
    {"application/vnd.wap.wml+xml", "wml"},
    {"image/jpg", "jpg jpeg jpe"},
    {"image/x-png", "png"},
    {"audio/amr", "amr"},
    {"audio/qcelp", "qcp"},
    {"audio/imelody", "imy ime"},
    {"audio/x-imelody", "imy ime"},
    {"audio/mid", "mid midi"},
    {"audio/au", "au snd"},
    {"audio/x-amr", "amr"},
    {"audio/sp-midi", "mid midi"},
    {"audio/asf", "asf"},
    {"text/x-melody", "mel"},
    {"text/x-emelody", "emy"},
    {"text/x-imelody", "imy ime"},
    {"video/h263", "h263"},
    {"image/x-gif", "gif"},
    {"audio/x-mid", "mid midi"},
    {"audio/mpeg3", "mp3"},
    {"audio/x-mpeg3", "mp3"},
    {"audio/evrc", "evc"},
    {"video/x-mpeg4", "mp4"},
    {"video/x-mpeg4aac", "mp4"},
    {"video/x-mpeg4amr", "mp4"},
    {"video/asf", "asf"},
    {"video/pmd", "pmd"},
    {"audio/amr-wb", "awb"},
    {"text/wml", "wml"},
    {"application/x-pn-realmedia", "rm"},
    {"audio/mpg", "mp3"},
    {"audio/x-au", "au snd"},
    {"audio/vnd.qcelp", "qcp"},
    {"text/v-card", "vcf"},
    {"audio/mp4a-latm", "m4a"},
    {"video/h263-2000", "h263"},
    {"video/3gp2", "3g2 3gp2 3gpp2"},
};

// What the shared MIME database answers: its lists grow, but the first extension is stable.
const Row kSystemTypes[] = {
    {"text/html", "html"},
    {"text/plain", "txt"},
    {"text/vnd.wap.wml", "wml"},
    {"text/vnd.wap.wmlscript", "wmls"},
    {"image/gif", "gif"},
    {"image/jpeg", "jpg"},
    {"image/tiff", "tif"},
    {"image/png", "png"},
    {"image/vnd.wap.wbmp", "wbmp"},
    {"application/xml", "xml"},
    {"application/xhtml+xml", "xhtml"},
    {"text/css", "css"},
    {"application/smil", "smil"},
    {"image/bmp", "bmp"},
    {"image/svg+xml", "svg"},
    {"audio/mpeg", "mp3"},
    {"audio/midi", "mid"},
    {"audio/wav", "wav"},
    {"audio/3gpp", "3gp"},
    {"audio/mobile-xmf", "mxmf"},
    {"audio/aac", "aac"},
    {"audio/mp3", "mp3"},
    {"audio/mp4", "m4a"},
    {"video/mp4", "mp4"},
    {"video/3gpp", "3gp"},
    {"video/3gpp2", "3g2"},
    {"application/java-archive", "jar"},
    {"text/vnd.sun.j2me.app-descriptor", "jad"},
};

const char *const kTypesWithoutFiles[] = {
    "*/*",
    "text/*",
    "image/*",
    "application/*",
    "multipart/*",
    "multipart/mixed",
    "multipart/related",
    "multipart/alternative",
    "multipart/form-data",
    "application/vnd.wap.multipart.*",
    "application/vnd.wap.multipart.mixed",
    "application/vnd.wap.multipart.related",
    "application/vnd.wap.sia",
    "application/x-www-form-urlencoded",
    "audio/pcma",
    "x-nobody/knows-this",
    "image",
    "/",
    "jpg",
    ";",
    "; image/jpeg",
    "../../etc/passwd",
    "",
};

QStringList extensions(const QString &type)
{
    return AM_MimeType::instance()->getExtListByMimeId(type);
}

} // namespace

class TestAmMimeType : public QObject {
    Q_OBJECT

private slots:
    void instanceIsOne()
    {
        QVERIFY(AM_MimeType::instance());
        QCOMPARE(AM_MimeType::instance(), AM_MimeType::instance());
    }

    void phoneTypes_data()
    {
        QTest::addColumn<QString>("list");
        for (const Row &row : kPhoneTypes) {
            QTest::newRow(row.type) << QString(row.extensions);
        }
    }

    void phoneTypes()
    {
        QFETCH(QString, list);
        QCOMPARE(extensions(QTest::currentDataTag()).join(' '), list);
    }

    void systemTypes_data()
    {
        QTest::addColumn<QString>("first");
        for (const Row &row : kSystemTypes) {
            QTest::newRow(row.type) << QString(row.extensions);
        }
    }

    void systemTypes()
    {
        QFETCH(QString, first);
        QCOMPARE(extensions(QTest::currentDataTag()).value(0), first);
    }

    void typesWithoutFiles_data()
    {
        QTest::addColumn<QString>("type");
        for (const char *type : kTypesWithoutFiles) {
            QTest::newRow(*type ? type : "empty") << QString(type);
        }
        QTest::newRow("null") << QString();
        QTest::newRow("very long") << QString(1 << 20, 'x');
        QTest::newRow("NUL inside") << QString::fromLatin1("image/jpeg\0x", 12);
    }

    void typesWithoutFiles()
    {
        QFETCH(QString, type);
        QCOMPARE(extensions(type), QStringList());
    }

    void spellings_data()
    {
        QTest::addColumn<QString>("spelling");
        QTest::addColumn<QString>("first");
        QTest::newRow("phone type, upper case") << "AUDIO/SP-MIDI"
                                                << "mid";
        QTest::newRow("phone type, parameters") << "audio/amr;rate=8000"
                                                << "amr";
        QTest::newRow("phone type, blanks") << "\t audio/amr \r\n"
                                            << "amr";
        QTest::newRow("system type, upper case") << "IMAGE/JPEG"
                                                 << "jpg";
        QTest::newRow("system type, mixed case") << "Image/Jpeg"
                                                 << "jpg";
        QTest::newRow("system type, parameters") << "image/jpeg; name=\"a;b\""
                                                 << "jpg";
        QTest::newRow("system type, blanks") << "  image/jpeg  ;"
                                             << "jpg";
        QTest::newRow("system name with capitals") << "audio/AMR-WB"
                                                   << "awb";
        QTest::newRow("system name with capitals, in lower case")
            << "application/vnd.ms-word.document.macroenabled.12"
            << "docm";
        QTest::newRow("system alias, upper case") << "AUDIO/X-MIDI"
                                                  << "mid";
        QTest::newRow("system alias with capitals, in lower case") << "image/x-ms-bmp"
                                                                   << "bmp";
    }

    void spellings()
    {
        QFETCH(QString, spelling);
        QFETCH(QString, first);
        QCOMPARE(extensions(spelling).value(0), first);
    }
};

QTEST_GUILESS_MAIN(TestAmMimeType)
#include "tst_am_mimetype.moc"
