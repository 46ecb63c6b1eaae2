// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/match.h"
#include "tests/vectors/operations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QSet>

#include <cstdio>
#include <ctime>

/// Runs every vector of a folder: tests/data/vectors, or the one that WMSG_VECTORS names. A vector
/// is a line of a .jsonl file; VECTORS.md in that folder tells the forms. Prints each failure and
/// the counts, and succeeds when all vectors passed that could be run.

namespace vectors {

struct Counts {
    int passed = 0;
    int failed = 0;
};

class Run {
public:
    void file(const QString &path);
    /// Prints the counts; true when there was something to run and nothing failed.
    bool finish() const;

private:
    void line(const QString &where, const QByteArray &text);
    void vector(const QJsonObject &vector);
    void failed(const QString &op, const QString &id, const QString &what);

    QMap<QString, Counts> m_counts;
    QSet<QString> m_ids;
};

static void setTimeZone(const QByteArray &name)
{
    if (qgetenv("TZ") != name) {
        qputenv("TZ", name);
        tzset(); // Qt asks the system for every local time, and keeps nothing of another zone
    }
}

static QString text(const Mismatch &difference)
{
    constexpr qsizetype longest = 2000;
    return QStringLiteral("%1\n    expected %2\n    got      %3")
        .arg(difference.path, difference.expected.left(longest), difference.got.left(longest));
}

/// The difference to "out", when neither "out" nor one of "alt" is what the operation gave.
static std::optional<Mismatch> compare(const QJsonObject &vector, const char *outKeys,
                                       const Result &result)
{
    const QJsonObject out = vector.value("out").toObject();
    allowKeys(out, outKeys);
    const std::optional<Mismatch> difference = matchResult(out, result);
    for (const QJsonValue &alternative : vector.value("alt").toArray()) {
        allowKeys(alternative.toObject(), outKeys);
        if (!matchResult(alternative.toObject(), result)) {
            return std::nullopt;
        }
    }
    return difference;
}

void Run::failed(const QString &op, const QString &id, const QString &what)
{
    ++m_counts[op].failed;
    printf("FAIL %s: %s\n", qPrintable(id), qPrintable(what));
}

void Run::vector(const QJsonObject &vector)
{
    const QString op = vector.value("op").toString();
    const QString id = vector.value("id").toString();
    const Operation *operation = findOperation(op);
    if (!operation) {
        failed(op, id, QStringLiteral("unknown operation \"%1\"").arg(op));
        return;
    }
    try {
        allowKeys(vector, "id op in out alt");
        const QJsonObject in = vector.value("in").toObject();
        allowKeys(in, QByteArray(operation->inKeys).append(" tz").constData());
        setTimeZone(in.value("tz").toString("UTC").toLatin1());
        if (auto difference = compare(vector, operation->outKeys, operation->run(in))) {
            failed(op, id, text(*difference));
        } else {
            ++m_counts[op].passed;
        }
    } catch (const VectorError &error) {
        failed(op, id, QString::fromUtf8(error.what()));
    }
}

void Run::line(const QString &where, const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    const QString id = document.object().value("id").toString();
    if (!document.isObject() || id.isEmpty()) {
        failed("(no vector)", where,
               document.isNull() ? error.errorString() : "an object without an id");
    } else if (m_ids.contains(id)) {
        failed("(no vector)", where, "the id occurs twice: " + id);
    } else {
        m_ids.insert(id);
        vector(document.object());
    }
}

void Run::file(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        failed("(no vector)", path, file.errorString());
        return;
    }
    for (int number = 1; !file.atEnd(); ++number) {
        const QByteArray text = file.readLine().trimmed();
        if (!text.isEmpty()) {
            line(QStringLiteral("%1:%2").arg(path).arg(number), text);
        }
    }
}

bool Run::finish() const
{
    Counts all;
    for (auto row = m_counts.cbegin(); row != m_counts.cend(); ++row) {
        printf("%-32s %5d passed %5d failed\n", qPrintable(row.key()), row->passed, row->failed);
        all.passed += row->passed;
        all.failed += row->failed;
    }
    printf("passed: %d\nfailed: %d\n", all.passed, all.failed);
    return all.failed == 0 && all.passed > 0;
}

} // namespace vectors

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    const QDir folder(
        qEnvironmentVariable("WMSG_VECTORS", QStringLiteral(WMSG_TEST_DATA "/vectors")));
    const QStringList names = folder.entryList({"*.jsonl"}, QDir::Files, QDir::Name);
    if (names.isEmpty()) {
        printf("no vectors in %s\n", qPrintable(folder.path()));
        return 1;
    }
    vectors::Run run;
    for (const QString &name : names) {
        run.file(folder.filePath(name));
    }
    return run.finish() ? 0 : 1;
}
