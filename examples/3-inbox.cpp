// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// An inbox over the message store of the device.
//
//     3-inbox add MAIL-FILE...     keeps messages
//     3-inbox list                 a line for each
//     3-inbox show ID              one of them
//     3-inbox remove ID
//
// The store lies below $UVO_EXTRA_SYS_DATA_PATH.

#include <MMS_ENG_Controller>
#include <WMMSMsg>
#include <mms/model/result_codes.h>
#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>

namespace {

int fail(const QString &what)
{
    std::fprintf(stderr, "inbox: %s\n", qPrintable(what));
    return 1;
}

int add(const QStringList &files)
{
    for (const QString &file : files) {
        WMMSMsg message;
        if (message.construct(file, true) != MMS_DECODE_OK) {
            return fail(file + ": no mail file");
        }
        unsigned short id = MMS_ENG_INVALID_ID; // a new one, please
        if (message.constructEngMsg(&id, MMS_ENG_INBOX) != MMS_SAVE_OK) {
            return fail(file + ": not kept");
        }
        std::printf("%s is message %u\n", qPrintable(file), unsigned(id));
    }
    return 0;
}

// A message without its body: that is enough for a list, and quick.
bool readHeader(unsigned short id, WMMSMsg &message)
{
    return message.constructWMMSMsg(id, nullptr, false, 0) == MMS_DECODE_OK;
}

int list()
{
    QList<unsigned short> ids;
    if (MMS_ENG_Controller::Instance()->ListMMS(MMS_ENG_INBOX, &ids) != MMS_ENG_OK) {
        return fail("the store cannot be read");
    }
    for (const unsigned short id : ids) {
        WMMSMsg message;
        if (readHeader(id, message)) {
            std::printf("%5u  %-20s  %s\n", unsigned(id),
                        qPrintable(message.getFrom().getDisplayValue()),
                        qPrintable(message.getSubject()));
        }
    }
    std::printf("%d messages\n", int(ids.size()));
    return 0;
}

int show(unsigned short id)
{
    WMMSMsg message;
    if (message.constructWMMSMsg(id, nullptr, true, 0) != MMS_DECODE_OK) {
        return fail(QString("there is no message %1").arg(id));
    }
    std::printf("From:    %s\nSubject: %s\n", qPrintable(message.getFrom().getDisplayValue()),
                qPrintable(message.getSubject()));
    for (const WMMSMultipart &part : message.getMultiParts().getSubMmsMultipartList()) {
        const QArray<char> &bytes = part.getData();
        std::printf("- %s, %d bytes\n", qPrintable(part.getContentType().getMimeType()),
                    int(bytes.size()));
        if (part.isMediaType("text")) {
            std::printf("%s\n", qPrintable(QString::fromUtf8(bytes.data(), bytes.size())));
        }
    }
    return 0;
}

int remove(unsigned short id)
{
    const bool isGone = MMS_ENG_Controller::Instance()->DeleteMMS(id) == MMS_ENG_OK;
    return isGone ? 0 : fail(QString("there is no message %1").arg(id));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    const QStringList words = QCoreApplication::arguments().mid(1);
    const QString command = words.value(0);
    bool isNumber = false;
    const unsigned short id = words.value(1).toUShort(&isNumber);
    if (command == "add" && words.size() > 1) {
        return add(words.mid(1));
    }
    if (command == "list" && words.size() == 1) {
        return list();
    }
    if (command == "show" && isNumber) {
        return show(id);
    }
    if (command == "remove" && isNumber) {
        return remove(id);
    }
    std::fprintf(stderr, "usage: 3-inbox add MAIL-FILE... | list | show ID | remove ID\n");
    return 2;
}
