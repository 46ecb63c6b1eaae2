// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"
#include "util/mms_util_common.h"

#include <memory>

namespace vectors {

using Common = MMS_UTIL_Common;

static QString textOf(const QJsonObject &in, const char *key = "text")
{
    return from<QString>(in.value(QLatin1String(key)));
}

/// A function from text to text.
template <auto Function> static Result textToText(const QJsonObject &in)
{
    return Result().set("text", toJson(Function(textOf(in))));
}

static Result entryToString(const QJsonObject &in)
{
    return Result().set("text", toJson(Common::entryToString(from<WMFMEntry>(in.value("entry")))));
}

static Result stringToEntry(const QJsonObject &in)
{
    std::unique_ptr<WMFMEntry> entry;
    if (in.contains("entry")) {
        entry = std::make_unique<WMFMEntry>(from<WMFMEntry>(in.value("entry")));
        Common::stringToEntry(textOf(in), entry.get());
    } else {
        entry.reset(Common::stringToEntry(textOf(in)));
    }
    Result result;
    result.values = toJson(*entry).toObject();
    return result;
}

static Result entryListToString(const QJsonObject &in)
{
    auto entries = from<QValueList<WMFMEntry>>(in.value("entries"));
    return Result().set("text", toJson(Common::entryListToString(entries)));
}

static Result stringToEntryList(const QJsonObject &in)
{
    if (!in.contains("list")) {
        return Result().set("entries", toJson(Common::stringToEntryList(textOf(in))));
    }
    auto entries = from<QValueList<WMFMEntry>>(in.value("list"));
    Common::stringToEntryList(textOf(in), &entries);
    return Result().set("entries", toJson(entries));
}

static Result isCidEqual(const QJsonObject &in)
{
    return Result().set("equal", toJson(Common::isCidEqual(textOf(in, "a"), textOf(in, "b"))));
}

static Result mkAbsoluteFileName(const QJsonObject &in)
{
    return Result().set("text",
                        toJson(Common::mkAbsoluteFileName(textOf(in, "name"), textOf(in, "dir"))));
}

static Result stringToTime(const QJsonObject &in)
{
    return Result().set("date", toJson(Common::stringToTime(textOf(in))));
}

static Result ipByteToStr(const QJsonObject &in)
{
    const char *text = Common::ipByteToStr(from<unsigned int>(in.value("value")));
    return Result().set("text", toJson(QString::fromLatin1(text)));
}

static Result mimeTypeGetValue(const QJsonObject &in)
{
    return Result().set("value16",
                        toJson(Common::mimeTypeGetValue(textOf(in, "main"), textOf(in, "sub"))));
}

/// Sets the storage root for the life of this object, or unsets it for a null one.
class StorageRoot {
public:
    explicit StorageRoot(const QJsonValue &root)
    {
        if (root.isNull()) {
            qunsetenv(kName);
        } else {
            qputenv(kName, from<QString>(root).toLocal8Bit());
        }
    }
    ~StorageRoot() { qunsetenv(kName); }
    Q_DISABLE_COPY_MOVE(StorageRoot)

private:
    static constexpr const char *kName = "UVO_EXTRA_SYS_DATA_PATH";
};

static Result msgDBIDToMailFileName(const QJsonObject &in)
{
    const StorageRoot root(in.value("root"));
    return Result().set("text",
                        toJson(Common::msgDBIDToMailFileName(from<unsigned int>(in.value("id")))));
}

static Result dirs(const QJsonObject &in)
{
    const StorageRoot root(in.value("root"));
    return Result().set(
        "dirs",
        QJsonObject{
            {"getWorkDir", toJson(Common::getWorkDir())},
            {"getMailFileDir", toJson(Common::getMailFileDir())},
            {"getTemplateDir", toJson(Common::getTemplateDir())},
            {"getTmpDir", toJson(Common::getTmpDir())},
            {"getMostRecentContactsDir", toJson(Common::getMostRecentContactsDir())},
            {"getMostRecentContactsFile", toJson(Common::getMostRecentContactsFile())},
            {"getQuickSendContactDir", toJson(Common::getQuickSendContactDir())},
            {"getQuickSendContactFile", toJson(Common::getQuickSendContactFile())},
            {"getPreloadTemplateDir", toJson(Common::getPreloadTemplateDir())},
            {"getMmsPreviewTmpDir", toJson(Common::getMmsPreviewTmpDir())},
        });
}

Operations textOperations()
{
    return {
        {"addr.entryToString", "entry", "text", entryToString},
        {"addr.stringToEntry", "text entry", "type value name", stringToEntry},
        {"addr.entryListToString", "entries", "text", entryListToString},
        {"addr.stringToEntryList", "text list", "entries", stringToEntryList},
        {"text.stripPath", "text", "text", textToText<Common::stripPath>},
        {"text.getPath", "text", "text", textToText<Common::getPath>},
        {"text.getExtName", "text", "text", textToText<Common::getExtName>},
        {"text.getNoExtName", "text", "text", textToText<Common::getNoExtName>},
        {"text.parseCid", "text", "text", textToText<Common::parseCid>},
        {"text.isCidEqual", "a b", "equal", isCidEqual},
        {"text.mkAbsoluteFileName", "name dir", "text", mkAbsoluteFileName},
        {"text.stringToTime", "text", "date", stringToTime},
        {"text.ipByteToStr", "value", "text", ipByteToStr},
        {"text.mimeTypeGetValue", "main sub", "value16", mimeTypeGetValue},
        {"text.msgDBIDToMailFileName", "root id", "text", msgDBIDToMailFileName},
        {"text.dirs", "root", "dirs", dirs},
    };
}

} // namespace vectors
