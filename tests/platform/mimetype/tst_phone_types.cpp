// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The file of phone types as the rest of the system sees it when it is installed beside the shared
// MIME database: it may add, and must change nothing.

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QMimeDatabase>
#include <QtCore/QProcess>
#include <QtCore/QSet>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamReader>
#include <QtTest/QtTest>

namespace {

struct Glob {
    QString type;
    QString pattern;
};

/// What a shared-MIME-info file defines.
struct TypesFile {
    explicit TypesFile(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            error = file.errorString();
            return;
        }
        QXmlStreamReader xml(&file);
        QString type;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement) {
                continue;
            }
            const QXmlStreamAttributes attributes = xml.attributes();
            if (xml.name() == QLatin1String("mime-type")) {
                type = attributes.value("type").toString();
                names.append(type);
            } else if (xml.name() == QLatin1String("alias")) {
                names.append(attributes.value("type").toString());
            } else if (xml.name() == QLatin1String("glob")) {
                globs.append({type, attributes.value("pattern").toString()});
            }
        }
        error = xml.hasError() ? xml.errorString() : QString();
    }

    QString error;
    QStringList names;
    QList<Glob> globs;
};

const QString kOurs = QStringLiteral(WMSG_PHONE_TYPES);

} // namespace

class TestPhoneTypes : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_shared = QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                          "mime/packages/freedesktop.org.xml");
        QVERIFY2(!m_shared.isEmpty(), "package shared-mime-info");
        QVERIFY(m_data.isValid() && QDir(m_data.path()).mkpath("mime/packages"));
        QVERIFY(QFile::copy(kOurs, m_data.filePath("mime/packages/wmsg-phone-types.xml")));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(m_data.path()) + ":/usr/share");
    }

    void fileIsSound()
    {
        const TypesFile ours(kOurs);
        QCOMPARE(ours.error, QString());
        QVERIFY(ours.names.size() > 20);
        QCOMPARE(QSet<QString>(ours.names.cbegin(), ours.names.cend()).size(), ours.names.size());
        QSet<QString> typesWithGlobs;
        for (const Glob &glob : ours.globs) {
            QVERIFY2(glob.pattern.startsWith("*.") && glob.pattern.size() > 2,
                     qPrintable(glob.pattern));
            typesWithGlobs.insert(glob.type);
        }
        QCOMPARE(typesWithGlobs.size(), ours.names.size() - 2); // two are aliases
    }

    void noTypeOfTheSharedDatabaseIsNamed()
    {
        const TypesFile ours(kOurs);
        const TypesFile shared(m_shared);
        QVERIFY(shared.names.contains("image/jpeg"));
        for (const QString &name : ours.names) {
            QVERIFY2(!shared.names.contains(name), qPrintable(name));
        }
    }

    void noPatternOfTheSharedDatabaseIsNamed()
    {
        const TypesFile ours(kOurs);
        QSet<QString> taken;
        for (const Glob &glob : TypesFile(m_shared).globs) {
            taken.insert(glob.pattern);
        }
        QVERIFY(taken.contains("*.jpg"));
        for (const Glob &glob : ours.globs) {
            QVERIFY2(!taken.contains(glob.pattern), qPrintable(glob.pattern));
            taken.insert(glob.pattern); // nor twice in ours
        }
    }

    void systemKnowsThePhoneTypes()
    {
        const QMimeDatabase database;
        const QStringList names = TypesFile(kOurs).names;
        for (const QString &name : names) {
            QVERIFY2(!database.mimeTypeForName(name).suffixes().isEmpty(), qPrintable(name));
        }
    }

    void fileNames_data()
    {
        QTest::addColumn<QString>("type");
        QTest::newRow("a.dm") << "application/vnd.oma.drm.message";
        QTest::newRow("a.dcf") << "application/vnd.oma.drm.content";
        QTest::newRow("a.dr") << "application/vnd.oma.drm.rights+xml";
        QTest::newRow("a.ro") << "application/vnd.oma.drm.ro+xml";
        QTest::newRow("a.dd") << "application/vnd.oma.dd+xml";
        QTest::newRow("a.qcp") << "audio/qcelp";
        QTest::newRow("a.mms") << "application/vnd.wap.mms-message";
        QTest::newRow("a.jpg") << "image/jpeg";
        QTest::newRow("a.png") << "image/png";
        QTest::newRow("a.gif") << "image/gif";
        QTest::newRow("a.mid") << "audio/midi";
        QTest::newRow("a.mp3") << "audio/mpeg";
        QTest::newRow("a.mp4") << "video/mp4";
        QTest::newRow("a.m4a") << "audio/mp4";
        QTest::newRow("a.3g2") << "video/3gpp2";
        QTest::newRow("a.amr") << "audio/AMR";
        QTest::newRow("a.imy") << "text/x-iMelody";
        QTest::newRow("a.vcf") << "text/vcard";
        QTest::newRow("a.wml") << "text/vnd.wap.wml";
        QTest::newRow("a.odf") << "application/vnd.oasis.opendocument.formula";
    }

    void fileNames()
    {
        QFETCH(QString, type);
        const QMimeDatabase database;
        QCOMPARE(
            database.mimeTypeForFile(QTest::currentDataTag(), QMimeDatabase::MatchExtension).name(),
            type);
    }

    void systemTypesKeepTheirExtensions()
    {
        const QMimeDatabase database;
        QCOMPARE(database.mimeTypeForName("image/jpeg").suffixes().value(0), QString("jpg"));
        QCOMPARE(database.mimeTypeForName("audio/midi").suffixes().value(0), QString("mid"));
        QVERIFY(database.mimeTypeForName("text/vcard").suffixes().contains("vcf"));
    }

    void updateMimeDatabaseTakesIt()
    {
        QProcess update;
        update.start("update-mime-database", {m_data.filePath("mime")});
        QVERIFY2(update.waitForFinished(), "package shared-mime-info");
        QCOMPARE(update.readAllStandardError(), QByteArray());
        QCOMPARE(update.exitCode(), 0);
        QFile globs(m_data.filePath("mime/globs2"));
        QVERIFY(globs.open(QIODevice::ReadOnly));
        const QByteArray lines = globs.readAll();
        QVERIFY(lines.contains("50:application/vnd.oma.drm.message:*.dm\n"));
    }

private:
    QTemporaryDir m_data;
    QString m_shared;
};

QTEST_GUILESS_MAIN(TestPhoneTypes)
#include "tst_phone_types.moc"
