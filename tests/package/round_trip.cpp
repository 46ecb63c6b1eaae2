// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Composes a message, saves it as the mail file that it is told, and reads it back; then the same
// with a message store. It fails loudly.

#include <MMS_ENG_Controller>
#include <WMMSMsg>
#include <mms/model/result_codes.h>
#include <platform/applog/applog.h>

#include <QtCore/QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace {

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "round_trip: %s\n", what);
        std::exit(1);
    }
}

WMMSMsg composed()
{
    WMMSContentType type;
    type.setMimeType("text/plain");
    WMMSMultipart text;
    text.setContentType(type);
    text.setContentID("<greeting>");
    text.setData(QArray<char>(QByteArrayView("Hello")));

    type.setMimeType("application/vnd.wap.multipart.mixed");
    WMMSMsg message;
    message.setSubject("A greeting");
    message.setTo(WMFMEntry(1, "+4312345"));
    message.setContentType(type);
    message.getMultiParts().setSubMmsMultipart({text});
    return message;
}

void keepAndRead(WMMSMsg &message)
{
    const QTemporaryDir root;
    qputenv("UVO_EXTRA_SYS_DATA_PATH", root.path().toLocal8Bit());
    unsigned short id = MMS_ENG_INVALID_ID;
    require(message.constructEngMsg(&id, MMS_ENG_DRAFTS) == MMS_SAVE_OK, "storing failed");
    unsigned short folder = 0;
    require(MMS_ENG_Controller::Instance()->FindMMS(id, &folder) == MMS_ENG_OK
                && folder == MMS_ENG_DRAFTS,
            "another folder");
    WMMSMsg read;
    require(read.constructWMMSMsg(id, nullptr, true, 0) == MMS_DECODE_OK, "not in the store");
    require(read.getMultiParts().getSubMmsMultipartList().at(0).getData()
                == QArray<char>(QByteArrayView("Hello")),
            "another text in the store");
}

} // namespace

int main(int, char **arguments)
{
    appLogModuleStream = appLogDiscardStream();
    require(arguments[1], "tell it a file name");
    const QString path = QString::fromLocal8Bit(arguments[1]);

    WMMSMsg saved = composed();
    int headerLength = 0;
    int bodyLength = 0;
    require(saved.saveAs(path, &headerLength, &bodyLength) == MMS_SAVE_OK, "saving failed");

    WMMSMsg read;
    require(read.construct(path, true) == MMS_DECODE_OK, "reading failed");
    require(read.headerLength() == headerLength && read.bodyLength() == bodyLength,
            "other lengths");
    require(read.getSubject() == "A greeting", "another subject");
    require(read.getTo().size() == 1 && read.getTo().at(0).getEntryVal() == "+4312345",
            "other recipients");
    const QValueList<WMMSMultipart> &parts = read.getMultiParts().getSubMmsMultipartList();
    require(parts.size() == 1, "other parts");
    require(parts.at(0).getContentType().getMimeType() == "text/plain", "another part type");
    require(parts.at(0).getData() == QArray<char>(QByteArrayView("Hello")), "another text");
    keepAndRead(saved);
    std::printf("%d + %d bytes\n", headerLength, bodyLength);
    return 0;
}
