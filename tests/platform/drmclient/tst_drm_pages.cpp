// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/platform/drmclient/drm_rows.h"

/// The examples of docs/formats/drm-containers.md are what the code reads.
class TestDrmPages : public QObject {
    Q_OBJECT

private slots:
    void content();
    void binaryRights();
};

namespace {

QByteArray page()
{
    QFile file(WMSG_TEST_DATA "/../../docs/formats/drm-containers.md");
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("no page");
    }
    return file.readAll();
}

QByteArray between(const QByteArray &text, const QByteArray &start, const QByteArray &end)
{
    const auto from = text.indexOf(start) + start.size();
    const auto to = text.indexOf(end, from);
    if (text.count(start) != 1 || to < 0) {
        qFatal("the page has not one example after %s", start.constData());
    }
    return text.mid(from, to - from);
}

} // namespace

void TestDrmPages::content()
{
    const QByteArray bytes = fromHex(between(page(), "```hex\n", "```"));
    QCOMPARE(shown(wmsg::drm::readContentVersion1(bytes, bytes.size())),
             "content1 type=image/jpeg uri=cid:1@x issuer=http://r.i/");
    QCOMPARE(toHex(bytes),
             toHex(drm::content1("image/jpeg", "cid:1@x", "Rights-Issuer: http://r.i/\r\n",
                                 fromHex("9A 3C 51 E7"))));
}

void TestDrmPages::binaryRights()
{
    // The lines from the version on; words behind the bytes are no hex.
    const QByteArray lines =
        "03 0E 6A 00 " + between(page(), "    03 0E 6A 00 ", "\n    01\n") + "\n01";
    QByteArray bytes;
    for (const QByteArray &line : lines.split('\n')) {
        for (const QByteArray &word : line.simplified().split(' ')) {
            if (word.size() != 2 || hexDigit(word[0]) < 0 || hexDigit(word[1]) < 0) {
                break;
            }
            bytes += fromHex(word);
        }
    }
    QCOMPARE(shown(wmsg::drm::readRightsWbxml(bytes)), "rights uri=cid:1@x");
}

QTEST_GUILESS_MAIN(TestDrmPages)
#include "tst_drm_pages.moc"
