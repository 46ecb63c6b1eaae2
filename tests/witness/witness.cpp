// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/witness/witness.h"

#include "tests/support/hex.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QStandardPaths>

// In the JSON of tshark, with bytes and without duplicate keys, the value of "name" is a string, or
// an array of them when the field stands there several times; "name_raw" is [bytes in hex,
// position, length, mask, type] or an array of such; "name_tree" is what lies below "name".

namespace {

constexpr int kPatience = 60000; // milliseconds; tshark needs a second to start

QString tsharkPath()
{
    return QStandardPaths::findExecutable("tshark");
}

/// The standard output of tshark; a null one when it failed. What it says on standard error, the
/// warning against running as root among it, is dropped.
QByteArray runTshark(const QStringList &arguments)
{
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TZ", "UTC");
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(tsharkPath(), arguments);
    if (!process.waitForFinished(kPatience) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        return QByteArray();
    }
    const QByteArray output = process.readAllStandardOutput();
    return output.isNull() ? QByteArray("") : output;
}

QJsonArray asArray(const QJsonValue &value)
{
    return value.isArray()    ? value.toArray()
        : value.isUndefined() ? QJsonArray()
                              : QJsonArray{value};
}

/// The raw values of a field: one alone is an array itself.
QList<QJsonArray> rawValues(const QJsonObject &layer, const QString &field)
{
    const QJsonArray value = layer.value(field + "_raw").toArray();
    if (value.isEmpty()) {
        return {};
    }
    if (!value.first().isArray()) {
        return {value};
    }
    QList<QJsonArray> values;
    for (const auto &one : value) {
        values.append(one.toArray());
    }
    return values;
}

int endOf(const QJsonArray &raw)
{
    return raw.at(1).toInt() + raw.at(2).toInt();
}

QByteArray bytesOf(const QJsonArray &raw)
{
    return QByteArray::fromHex(raw.at(0).toString().toLatin1());
}

/// The data of an entry are what follows its headers, or its content type when it has none.
QByteArray dataOf(const QJsonArray &entry, const QJsonObject &tree)
{
    const auto headers = rawValues(tree, "wsp.headers");
    const auto type = rawValues(tree, "wsp.header.content_type");
    if (headers.isEmpty() && type.isEmpty()) {
        return QByteArray();
    }
    const int begin = endOf(headers.isEmpty() ? type.first() : headers.first());
    return bytesOf(entry).right(endOf(entry) - begin);
}

WitnessedPart partOf(const QJsonArray &entry, const QJsonObject &tree)
{
    const QJsonObject parameters = tree.value("wsp.header.content_type_tree").toObject();
    const QJsonObject headers = tree.value("wsp.headers").toObject();
    WitnessedPart part;
    part.type = tree.value("wsp.header.content_type").toString();
    part.charset = parameters.value("wsp.parameter.charset").toString();
    part.name = parameters.value("wsp.parameter.name").toString();
    part.location = headers.value("wsp.header.content_location").toString();
    part.id = headers.value("wsp.header.content_id").toString();
    part.data = dataOf(entry, tree);
    return part;
}

} // namespace

QMap<QString, QStringList> Testimony::fields() const
{
    const QString prefix = "mmse.";
    QMap<QString, QStringList> fields;
    for (auto field = m_mmse.begin(); field != m_mmse.end(); ++field) {
        if (!field.key().startsWith(prefix) || field.key().endsWith("_raw")) {
            continue;
        }
        const QJsonArray values = asArray(field.value());
        for (const auto &value : values) {
            fields[field.key().mid(prefix.size())].append(value.toString());
        }
    }
    return fields;
}

QStringList Testimony::bytesOf(const QString &field) const
{
    QStringList bytes;
    for (const QJsonArray &raw : rawValues(m_mmse, "mmse." + field)) {
        bytes.append(toHex(::bytesOf(raw)));
    }
    return bytes;
}

QString Testimony::contentType() const
{
    return m_mmse.value("wsp.header.content_type").toString();
}

QString Testimony::start() const
{
    return m_mmse.value("wsp.header.content_type_tree")
        .toObject()
        .value("wsp.parameter.start")
        .toString();
}

QString Testimony::startType() const
{
    return m_mmse.value("wsp.header.content_type_tree")
        .toObject()
        .value("wsp.parameter.upart.type")
        .toString();
}

QList<WitnessedPart> Testimony::parts() const
{
    const QJsonObject body =
        m_mmse.value("wsp.post.data").toObject().value("Multipart body").toObject();
    const auto entries = rawValues(body, "wsp.multipart");
    const QJsonArray trees = asArray(body.value("wsp.multipart_tree"));
    QList<WitnessedPart> parts;
    for (qsizetype n = 0; n < entries.size(); ++n) {
        parts.append(partOf(entries[n], trees.at(n).toObject()));
    }
    return parts;
}

bool Witness::isPresent()
{
    return !tsharkPath().isEmpty();
}

QString Witness::writeCapture(QByteArrayView pdu, Direction direction)
{
    QFile file(m_folder.filePath("pdu.pcap"));
    const QByteArray bytes = captureOf(pdu, direction);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("%s: cannot be written", qPrintable(file.fileName()));
    }
    return file.fileName();
}

Testimony Witness::read(QByteArrayView pdu, Direction direction)
{
    const QByteArray output = runTshark({"-r", writeCapture(pdu, direction), "-Y", "mmse", "-O",
                                         "mmse,wsp", "-T", "json", "-x", "--no-duplicate-keys"});
    // What tshark cannot show is not UTF-8, which the reader of JSON refuses.
    const auto packets = QJsonDocument::fromJson(QString::fromUtf8(output).toUtf8()).array();
    return Testimony(packets.isEmpty() ? QJsonObject()
                                       : packets.last()
                                             .toObject()
                                             .value("_source")
                                             .toObject()
                                             .value("layers")
                                             .toObject()
                                             .value("mmse")
                                             .toObject());
}

int Witness::complaintsAbout(QByteArrayView pdu, Direction direction)
{
    const QByteArray output = runTshark({"-r", writeCapture(pdu, direction), "-Y",
                                         "_ws.malformed || _ws.expert.severity == error", "-T",
                                         "fields", "-e", "frame.number"});
    return output.isNull() ? -1 : int(output.count('\n'));
}
