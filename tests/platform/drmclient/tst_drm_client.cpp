// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/drmclient/drm_rows.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

using namespace drm;

namespace {

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
using Record = std::unique_ptr<DRM_CONTENT_METADATA_T, Free>;

Record recordOf(const QByteArray &path)
{
    DRM_CONTENT_METADATA_T *record = nullptr;
    const int status = DRM_GetContentMetaDataInFile(path.constData(), 0, &record, nullptr);
    if ((status == 0) != (record != nullptr)) {
        qFatal("status and record contradict each other");
    }
    return Record(record);
}

QByteArray longUrl(int size)
{
    return "http://r.i/" + QByteArray(size - 11, 'u');
}

const QByteArray kLocked = message({bodyPart("image/jpeg", kJpeg)});
const QByteArray kCombined = message({bodyPart("application/vnd.oma.drm.rights+xml", rights1("u")),
                                      bodyPart("image/gif", "GIF89a")});
const QByteArray kContent1 = content1(
    "audio/amr", "cid:1@x",
    "Rights-Issuer: http://r.i/\r\nContent-Name: Song\r\nEncryption-Method: AES128CBC;x\r\n");

} // namespace

class TestDrmClient : public QObject {
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void record();
    void fieldsOfTheRecord();
    void fieldsThatAreTooLong();
    void secondValueStays();
    void notAFile();
    void hugeFile();
    void kindsExcludeEachOther();
    void contentBeforeRights();
};

void TestDrmClient::answers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("isDrm");
    QTest::addColumn<int>("canForward");
    QTest::addColumn<int>("hasIssuer");
    const auto answer = [](const char *name, const QByteArray &bytes, int isDrm, int canForward,
                           int hasIssuer) {
        QTest::newRow(name) << bytes << isDrm << canForward << hasIssuer;
    };
    answer("forward-lock", kLocked, 1, 0, 0);
    answer("combined delivery", kCombined, 1, 0, 0);
    answer("content of version 1", kContent1, 1, 1, 1);
    answer("content without an issuer", content1("a/b", "u", ""), 1, 1, 0);
    answer("content of version 2", content2("image/jpeg", "u", "http://r.i/"), 1, 1, 1);
    answer("rights as XML", rights1("u"), 1, 0, 0);
    answer("rights of version 2", rights2("u", "http://r.i/"), 1, 0, 1);
    answer("rights as binary XML", binaryRights("u"), 1, 0, 0);
    answer("locked content with an issuer",
           message({bodyPart("application/vnd.oma.drm.content", kContent1)}), 1, 0, 1);
    answer("picture", kJpeg, 0, 1, 0);
    answer("text", "--hello\n", 0, 1, 0);
    answer("empty", "", 0, 1, 0);
}

void TestDrmClient::answers()
{
    QFETCH(QByteArray, bytes);
    DrmFiles files;
    const QByteArray path = files.write(bytes, "no.extension");
    QTEST(DRM_IsDRMFile(path.constData()), "isDrm");
    QTEST(DRM_CanForward(path.constData()), "canForward");
    QTEST(DRM_HasRightsIssuerURL(path.constData()), "hasIssuer");
    QTEST(recordOf(path) ? 1 : 0, "isDrm");
}

void TestDrmClient::record()
{
    DrmFiles files;
    const Record record = recordOf(files.write(kContent1));
    QVERIFY(record);
    QCOMPARE(record->kind, DRM_KIND_CONTENT_V1);
    QCOMPARE(record->encryption, "AES128CBC");
    QCOMPARE(record->contentName, "Song");
    QCOMPARE(record->contentURI, "cid:1@x");
    // The two fields that every DRM client has, where it has them.
    const char *bytes = reinterpret_cast<const char *>(record.get());
    QCOMPARE(bytes + 541, "audio/amr");
    QCOMPARE(bytes + 798, "http://r.i/");
}

void TestDrmClient::fieldsOfTheRecord()
{
    DrmFiles files;
    const Record locked = recordOf(files.write(kLocked));
    QCOMPARE(locked->kind, DRM_KIND_FORWARD_LOCK);
    QCOMPARE(locked->contentType, "image/jpeg");
    QCOMPARE(locked->rightsIssuerURL, "");
    QCOMPARE(recordOf(files.write(kCombined))->kind, DRM_KIND_COMBINED_DELIVERY);
    QCOMPARE(recordOf(files.write(kCombined))->contentType, "image/gif");
    QCOMPARE(recordOf(files.write(content2("a/b", "u", "")))->kind, DRM_KIND_CONTENT_V2);
    QCOMPARE(recordOf(files.write(rights1("u")))->kind, DRM_KIND_RIGHTS);
    QCOMPARE(recordOf(files.write(rights1("u")))->contentType, "");
}

void TestDrmClient::fieldsThatAreTooLong()
{
    DrmFiles files;
    const auto type = [](int size) {
        return "a/" + QByteArray(size - 2, 'b');
    };
    QCOMPARE(recordOf(files.write(message({bodyPart(type(256), "")})))->contentType, type(256));
    QCOMPARE(recordOf(files.write(message({bodyPart(type(257), "")})))->contentType, "");

    const QByteArray fits = files.write(content2("a/b", "", longUrl(2048)));
    QCOMPARE(recordOf(fits)->rightsIssuerURL, longUrl(2048));
    QCOMPARE(DRM_HasRightsIssuerURL(fits.constData()), 1);
    const QByteArray tooLong = files.write(content2("a/b", "", longUrl(2049)));
    QCOMPARE(recordOf(tooLong)->rightsIssuerURL, "");
    QCOMPARE(DRM_HasRightsIssuerURL(tooLong.constData()), 0);
}

void TestDrmClient::secondValueStays()
{
    DrmFiles files;
    const QByteArray path = files.write(kLocked);
    DRM_CONTENT_METADATA_T *record = nullptr;
    unsigned int unused = 77;
    QCOMPARE(DRM_GetContentMetaDataInFile(path.constData(), 0, &record, &unused), 0);
    std::free(record);
    QCOMPARE(unused, 77u);
}

void TestDrmClient::notAFile()
{
    DrmFiles files;
    const QByteArray pipe = QFile::encodeName(files.path("pipe"));
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    const QByteArray folder = QFile::encodeName(files.path(""));
    for (const QByteArray &path :
         {pipe, folder, QByteArray(), QByteArray("/nowhere/at/all"), QByteArray("/dev/zero")}) {
        QCOMPARE(DRM_IsDRMFile(path.constData()), 0);
        QCOMPARE(DRM_CanForward(path.constData()), 1);
        QCOMPARE(DRM_HasRightsIssuerURL(path.constData()), 0);
        QVERIFY(!recordOf(path));
    }
    QCOMPARE(DRM_IsDRMFile(nullptr), 0);
    DRM_CONTENT_METADATA_T *record = nullptr;
    QCOMPARE(DRM_GetContentMetaDataInFile(nullptr, 0, &record, nullptr), -1);
}

/// A file of a terabyte is looked at like any other: its head counts, and the size that it has.
void TestDrmClient::hugeFile()
{
    DrmFiles files;
    const QByteArray path = files.write(content1("a/b", "u", "").first(7)
                                        + fromHex("8F FF FF FF 7F 00") + "Rights-Issuer: v\r\n");
    QCOMPARE(DRM_IsDRMFile(path.constData()), 0); // headers of 4 GB do not fit
    QCOMPARE(::truncate(path.constData(), qint64(1) << 40), 0);
    QCOMPARE(DRM_IsDRMFile(path.constData()), 1);
    QCOMPARE(recordOf(path)->rightsIssuerURL, "v");
    const QByteArray zeros = files.write("");
    QCOMPARE(::truncate(zeros.constData(), qint64(1) << 40), 0);
    QCOMPARE(DRM_IsDRMFile(zeros.constData()), 0);
}

/// What one reader knows no other takes for its own.
void TestDrmClient::kindsExcludeEachOther()
{
    using namespace wmsg::drm;
    for (const QByteArray &bytes :
         {kLocked, kCombined, kContent1, content2("a/b", "u", "v"), rights1("u"), rights2("u", "v"),
          binaryRights("u"), fromHex("01 0E 6A 00 45 01")}) {
        const int readers = readDrmMessage(bytes).has_value()
            + readContentVersion1(bytes, bytes.size()).has_value()
            + readContentVersion2(bytes).has_value() + readRightsXml(bytes).has_value()
            + readRightsWbxml(bytes).has_value();
        QCOMPARE(readers, 1);
        QVERIFY(readContainer(bytes, bytes.size()).kind != DRM_KIND_NONE);
    }
}

/// A ringtone is content, also where a letter of it stands at the place of the root of rights.
void TestDrmClient::contentBeforeRights()
{
    const QByteArray content = content1("text/x-imelody", QByteArray(200, 'E'), "");
    QVERIFY(wmsg::drm::readRightsWbxml(content).has_value());
    QCOMPARE(wmsg::drm::readContainer(content, content.size()).kind, DRM_KIND_CONTENT_V1);
}

QTEST_GUILESS_MAIN(TestDrmClient)
#include "tst_drm_client.moc"
