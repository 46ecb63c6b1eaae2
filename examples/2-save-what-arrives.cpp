// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Saves the parts of every message that arrives, each message in a folder of its own.
//
//     2-save-what-arrives FOLDER [COUNT]      ends after COUNT messages

#include <MMS_UTIL_Common>
#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>
#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <cstdio>
#include <memory>

namespace {

class Saver : public WMFMListener {
public:
    Saver(WMMSSession &session, const QString &folder, int count)
        : WMFMListener(&session), m_folder(folder), m_left(count)
    {
    }

    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message); // it is ours
        auto *multimedia = dynamic_cast<WMMSMsg *>(message);
        if (multimedia) {
            save(*multimedia);
        }
        if (--m_left == 0) {
            QCoreApplication::quit();
        }
    }
    QString listenerName() const override { return "save-what-arrives"; }

private:
    void save(WMMSMsg &message)
    {
        QString name;
        do {
            name = QString("message-%1").arg(++m_number);
        } while (!m_folder.mkpath(".") || !m_folder.mkdir(name));
        const QString folder = m_folder.filePath(name) + "/";
        std::printf("%s: \"%s\" from %s\n", qPrintable(folder), qPrintable(message.getSubject()),
                    qPrintable(message.getFrom().getDisplayValue()));
        WMMSMultipart &root = message.getMultiParts();
        if (root.getSubMmsMultipartList().isEmpty()) {
            savePart(root, folder);
        }
        for (WMMSMultipart &part : root.getSubMmsMultipartList()) {
            savePart(part, folder);
        }
        std::fflush(stdout);
    }

    static void savePart(WMMSMultipart &part, const QString &folder)
    {
        // A name that fits the type, and then one that is free in the folder and leads to no other.
        const QString wish = part.getSuggestLocalFileName(folder);
        part.setLocalFileName(MMS_UTIL_Common::getTmpFileName(wish, folder));
        std::printf("  %s, %d bytes%s\n", qPrintable(part.getContentType().getMimeType()),
                    int(part.getData().size()), part.saveFile() ? "" : ": not saved");
    }

    QDir m_folder;
    int m_left;
    int m_number = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    if (argc < 2) {
        std::fprintf(stderr, "usage: 2-save-what-arrives FOLDER [COUNT]\n");
        return 2;
    }
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    Saver saver(session, application.arguments().at(1), application.arguments().value(2).toInt());
    session.setListener(&saver, status); // messages wait in the daemon until there is a listener
    return application.exec();
}
