// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/mimetype/util_mimetype.h"

#include <QtCore/QSet>
#include <QtTest/QtTest>

class TestUtilMimeType : public QObject {
    Q_OBJECT

private slots:
    void mediaIsTwo() { QCOMPARE(int(UTIL_MimeType::MIME_TYPE_MEDIA), 2); }

    void mediaIsSoundAndFilm()
    {
        const QStringList audio =
            UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_AUDIO);
        const QStringList video =
            UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_VIDEO);
        const QStringList media =
            UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_MEDIA);
        QVERIFY(audio.contains("amr") && !video.contains("amr"));
        QVERIFY(video.contains("mpg") && !audio.contains("mpg"));
        QVERIFY(audio.contains("3gp") && video.contains("3gp"));
        const QSet<QString> both = QSet<QString>(audio.cbegin(), audio.cend())
            + QSet<QString>(video.cbegin(), video.cend());
        QCOMPARE(QSet<QString>(media.cbegin(), media.cend()), both);
        QCOMPARE(media.size(), both.size());
    }

    void extensionsAreWrittenAsInFileNames()
    {
        for (const QString &extension :
             UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_MEDIA)) {
            QCOMPARE(extension, extension.toLower());
            QVERIFY2(!extension.isEmpty() && !extension.contains('.'), qPrintable(extension));
        }
    }

    void otherKindsHaveNone()
    {
        for (const int kind : {-1, 3, 127}) {
            QCOMPARE(UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_T(kind)),
                     QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(TestUtilMimeType)
#include "tst_util_mimetype.moc"
