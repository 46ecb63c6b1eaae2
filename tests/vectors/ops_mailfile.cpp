// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/message_results.h"
#include "tests/vectors/operations.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

namespace vectors {

static void writeFile(const QString &path, const QArray<char> &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)
        || file.write(content.data(), content.size()) != content.size()) {
        throw VectorError(QStringLiteral("cannot write %1").arg(path));
    }
}

/// The bytes of a file; null when there is none.
static QJsonValue fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? hex(file.readAll()) : QJsonValue(QJsonValue::Null);
}

static Result bytes(const QJsonObject &in)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("message.mms");
    if (in.contains("existing")) {
        writeFile(path, from<QArray<char>>(in.value("existing")));
    }
    WMMSMsg message;
    build(message, in.value("msg"));
    int h = kUntouched;
    int b = kUntouched;
    const quint32 ret = message.saveAs(path, &h, &b);
    Result result;
    result.set("ret", toJson(ret))
        .set("h", toJson(h))
        .set("b", toJson(b))
        .set("tmpLeft", toJson(QFile::exists(path + ".tmp")))
        .set("pduType", toJson(message.getPDUType()))
        .set("file", fileBytes(path));
    if (ret == 300 && hasOpenEnd(message)) {
        result.mayBeLeftOut = {"b", "file"};
    }
    return result;
}

static Result construct(const QJsonObject &in)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("message.mms");
    if (!in.value("hex").isNull()) {
        writeFile(path, from<QArray<char>>(in.value("hex")));
    }
    WMMSMsg message;
    LogCapture log;
    const quint32 ret = message.construct(path, valueOr(in, "decodeBody", true));
    Result result = decoded(ret, message, log.text());
    result.set("mmsType", toJson(message.getMMSType()));
    if (valueOr(in, "log", false)) {
        result.set("log", log.text());
    }
    return result;
}

Operations mailFileOperations()
{
    return {
        {"mailfile.bytes", "msg existing", "ret h b tmpLeft pduType file", bytes},
        {"mailfile.construct", "hex decodeBody log",
         "ret mask headerLength bodyLength fields root log mmsType", construct},
    };
}

} // namespace vectors
