// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wsp_stream.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

#include <QtCore/QByteArray>

namespace vectors {

/// Runs `read` on the buffer of the vector; `read` gives its value into the last argument.
template <typename Read> static Result readWith(const QJsonObject &in, Read read)
{
    QArray<char> buffer = from<QArray<char>>(in.value("hex"));
    WSP_Stream stream(buffer);
    stream.pos = valueOr(in, "pos", 0);
    QJsonValue value;
    const quint32 ret = read(stream, value);
    Result result;
    result.set("ret", toJson(ret)).set("pos", toJson(stream.pos));
    if (ret == 1) {
        result.set("value", value);
    }
    return result;
}

/// Runs a reader that has one out parameter of type T.
template <typename T, auto Reader> static Result readValue(const QJsonObject &in)
{
    return readWith(in, [](WSP_Stream &stream, QJsonValue &value) {
        T out{};
        const quint32 ret = (stream.*Reader)(out);
        value = toJson(out);
        return ret;
    });
}

static Result readBytes(const QJsonObject &in)
{
    return readWith(in, [&in](WSP_Stream &stream, QJsonValue &value) {
        QByteArray bytes(from<int>(in.value("n")), 'x');
        const quint32 ret = stream.readBytes(bytes.data(), static_cast<int>(bytes.size()));
        value = hex(bytes);
        return ret;
    });
}

static Result readArray(const QJsonObject &in)
{
    return readWith(in, [&in](WSP_Stream &stream, QJsonValue &value) {
        QArray<char> bytes(from<int>(in.value("n")));
        const quint32 ret = stream.readArray(bytes);
        value = hex(bytes);
        return ret;
    });
}

/// Runs `write` on a buffer of the vector's size. What a failed write of several steps leaves is
/// not compared.
template <typename Write> static Result writeWith(const QJsonObject &in, bool hasSteps, Write write)
{
    QArray<char> buffer;
    buffer.fill('x', from<int>(in.value("size")));
    WSP_Stream stream(buffer);
    const int start = valueOr(in, "pos", 0);
    stream.pos = start;
    const quint32 ret = write(stream, in.value("value"));
    Result result;
    result.set("ret", toJson(ret));
    if (ret == 1 || !hasSteps) {
        result.set("pos", toJson(stream.pos));
        result.set("hex", hex(buffer.view().sliced(start, stream.pos - start)));
    }
    return result;
}

static Result writeByte(const QJsonObject &in)
{
    return writeWith(in, false, [](WSP_Stream &stream, const QJsonValue &value) {
        return stream.writeByte(from<quint8>(value));
    });
}

static Result writeBytes(const QJsonObject &in)
{
    return writeWith(in, false, [](WSP_Stream &stream, const QJsonValue &value) {
        const QArray<char> bytes = from<QArray<char>>(value);
        return stream.writeBytes(bytes.data(), bytes.size());
    });
}

static Result writeArray(const QJsonObject &in)
{
    return writeWith(in, false, [](WSP_Stream &stream, const QJsonValue &value) {
        return stream.writeArray(from<QArray<char>>(value));
    });
}

/// Runs a writer of a number.
template <quint32 (WSP_Stream::*Writer)(qint32)> static Result writeNumber(const QJsonObject &in)
{
    return writeWith(in, true, [](WSP_Stream &stream, const QJsonValue &value) {
        return (stream.*Writer)(from<int>(value));
    });
}

static Result writeTextString(const QJsonObject &in)
{
    return writeWith(in, true, [](WSP_Stream &stream, const QJsonValue &value) {
        return stream.writeTextString(from<QString>(value));
    });
}

static Result writeEncodedString(const QJsonObject &in)
{
    return writeWith(in, true, [](WSP_Stream &stream, const QJsonValue &value) {
        return stream.writeEncodedString(from<QString>(value));
    });
}

template <typename T, auto Reader> static QJsonArray readStep(WSP_Stream &stream)
{
    T value{};
    const quint32 ret = (stream.*Reader)(value);
    QJsonArray result{toJson(ret), toJson(stream.pos)};
    if (ret == 1) {
        result.append(toJson(value));
    }
    return result;
}

static QJsonArray cursorStep(WSP_Stream &stream, const QJsonArray &step)
{
    const QString name = step.at(0).toString();
    if (name == "readByte") {
        return readStep<quint8, &WSP_Stream::readByte>(stream);
    }
    if (name == "readInteger") {
        return readStep<quint32, &WSP_Stream::readInteger>(stream);
    }
    quint32 ret = 0;
    if (name == "hasMore") {
        ret = stream.hasMore();
    } else if (name == "back") {
        ret = stream.back(from<int>(step.at(1)));
    } else if (name == "skip") {
        ret = stream.skip(from<int>(step.at(1)));
    } else if (name == "writeByte") {
        ret = stream.writeByte(from<quint8>(step.at(1)));
    } else {
        throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
    }
    return {toJson(ret), toJson(stream.pos)};
}

static Result cursor(const QJsonObject &in)
{
    QArray<char> buffer = from<QArray<char>>(in.value("hex"));
    WSP_Stream stream(buffer);
    QJsonArray results;
    for (const QJsonValue &step : in.value("steps").toArray()) {
        results.append(cursorStep(stream, step.toArray()));
    }
    return Result().set("results", results);
}

Operations wspOperations()
{
    const char *readIn = "hex pos";
    const char *readOut = "ret pos value";
    const char *writeIn = "size value";
    const char *writeOut = "ret pos hex";
    return {
        {"wsp.readByte", readIn, readOut, readValue<quint8, &WSP_Stream::readByte>},
        {"wsp.readInteger", readIn, readOut, readValue<quint32, &WSP_Stream::readInteger>},
        {"wsp.readUintvar", readIn, readOut, readValue<quint32, &WSP_Stream::readUintvar>},
        {"wsp.readValueLength", readIn, readOut, readValue<quint32, &WSP_Stream::readValueLength>},
        {"wsp.readTextString", readIn, readOut, readValue<QString, &WSP_Stream::readTextString>},
        {"wsp.readEncodedString", readIn, readOut,
         readValue<QString, &WSP_Stream::readEncodedString>},
        {"wsp.readBytes", "hex pos n", readOut, readBytes},
        {"wsp.readArray", "hex pos n", readOut, readArray},
        {"wsp.writeByte", "size pos value", writeOut, writeByte},
        {"wsp.writeBytes", "size pos value", writeOut, writeBytes},
        {"wsp.writeArray", "size pos value", writeOut, writeArray},
        {"wsp.writeInteger", writeIn, writeOut, writeNumber<&WSP_Stream::writeInteger>},
        {"wsp.writeUintvar", writeIn, writeOut, writeNumber<&WSP_Stream::writeUintvar>},
        {"wsp.writeValueLength", writeIn, writeOut, writeNumber<&WSP_Stream::writeValueLength>},
        {"wsp.writeTextString", writeIn, writeOut, writeTextString},
        {"wsp.writeEncodedString", writeIn, writeOut, writeEncodedString},
        {"wsp.cursor", "hex steps", "results", cursor},
    };
}

} // namespace vectors
