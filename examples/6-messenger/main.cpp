// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// A messenger with a window: Main.qml has the window, this file the messages. `wmsg box` gives it
// somebody to talk to.
//
//     6-messenger [--to NUMBER] [--text TEXT] [--picture FILE] [--grab FILE]
//
// With a text or a picture it sends a first message; with --grab it saves what the window shows
// once that was sent and an answer has arrived, and ends.

#include <MMS_UTIL_Common>
#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>
#include <platform/applog/applog.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QMimeDatabase>
#include <QtCore/QStandardPaths>
#include <QtCore/QUrl>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

namespace {

WMMSMultipart part(const QString &type, const QString &name, const QByteArray &bytes)
{
    WMMSContentType contentType;
    contentType.setMimeType(type);
    WMMSMultipart part;
    part.setContentType(contentType);
    part.setContentID("<" + name + ">");
    part.setContentLocation(name);
    part.setData(QArray<char>(QByteArrayView(bytes)));
    return part;
}

// Keeps a picture that arrived where the window can read it.
QUrl keep(WMMSMultipart &picture)
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
    folder.mkpath(".");
    const QString path = folder.absolutePath() + "/";
    picture.setLocalFileName(
        MMS_UTIL_Common::getTmpFileName(picture.getSuggestLocalFileName(path), path));
    return picture.saveFile() ? QUrl::fromLocalFile(picture.getLocalFileName()) : QUrl();
}

} // namespace

/// Messenger sends messages for the window, and tells it of those that arrive.
class Messenger : public QObject, public WMFMListener {
    Q_OBJECT

public:
    Messenger() : WMFMListener(nullptr), m_session(m_status)
    {
        m_session.setListener(this, m_status);
    }

    /// send sends a text, a picture or both; a negative number of the request says that it did not.
    Q_INVOKABLE int send(const QString &person, const QString &text, const QUrl &picture)
    {
        QValueList<WMMSMultipart> parts;
        if (!text.isEmpty()) {
            parts << part("text/plain", "text.txt", text.toUtf8());
        }
        QFile file(picture.toLocalFile());
        if (!picture.isEmpty() && file.open(QIODevice::ReadOnly)) {
            parts << part(QMimeDatabase().mimeTypeForFile(file.fileName()).name(),
                          QFileInfo(file).fileName(), file.readAll());
        }
        WMMSContentType mixed;
        mixed.setMimeType("application/vnd.wap.multipart.mixed");
        WMMSMsg message;
        message.setTo(WMFMEntry(1, person));
        message.setContentType(mixed);
        message.getMultiParts().setSubMmsMultipart(parts);
        return m_session.send(&message, m_status);
    }

    /// cancel takes a message back that is under way; it ends as every request does.
    Q_INVOKABLE void cancel(int request) { m_session.mmsAbort(request, m_status); }

    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message);
        auto *multimedia = dynamic_cast<WMMSMsg *>(message);
        if (!multimedia) {
            return;
        }
        QString text;
        QUrl picture;
        for (WMMSMultipart &part : multimedia->getMultiParts().getSubMmsMultipartList()) {
            if (part.isMediaType("image")) {
                picture = keep(part);
            } else if (part.getContentType().getMimeType() == "text/plain") {
                text += QString::fromUtf8(part.getData().data(), part.getData().size());
            }
        }
        emit arrived(multimedia->getFrom().getEntryVal(), text, picture);
    }
    void progress(int request, int done, int total) override
    {
        emit moved(request, total > 0 ? double(done) / total : 0);
    }
    void statusChanged(int request, WMFM::STATUS_T status) override { emit told(request, status); }
    QString listenerName() const override { return "messenger"; }

Q_SIGNALS:
    void arrived(const QString &person, const QString &text, const QUrl &picture);
    void moved(int request, double progress);
    void told(int request, int status);

private:
    WMFM::STATUS_T m_status = WMFM::STATUS_FAIL;
    WMMSSession m_session;
};

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName("messenger");
    appLogModuleStream = appLogDiscardStream();
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({{"to", "Whom to talk to", "NUMBER"},
                        {"text", "A text to send", "TEXT"},
                        {"picture", "A picture to send", "FILE"},
                        {"grab", "Save the window when an answer came, and end", "FILE"}});
    options.process(application);

    Messenger messenger;
    QQmlApplicationEngine engine;
    const QString picture = options.value("picture");
    const QVariantMap asked{{"to", options.value("to")},
                            {"text", options.value("text")},
                            {"picture", picture.isEmpty() ? QUrl() : QUrl::fromLocalFile(picture)},
                            {"grab", options.value("grab")}};
    engine.setInitialProperties({{"messenger", QVariant::fromValue(&messenger)}, {"asked", asked}});
    engine.load(QUrl("qrc:/Main.qml"));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}

#include "main.moc"
