// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// A messenger with a window. `wmsg box` gives it somebody to talk to.
//
//     6-messenger [--to NUMBER] [--text TEXT] [--picture FILE] [--grab FILE]
//
// With a text or a picture it sends a first message; with --grab it saves what the window shows
// once an answer has arrived, and ends.

#include "messenger.h"

#include <platform/applog/applog.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStandardPaths>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickWindow>

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

    Messenger messenger(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{"messenger", QVariant::fromValue(&messenger)}});
    engine.load(QUrl("qrc:/Main.qml"));
    auto *window = engine.rootObjects().isEmpty()
        ? nullptr
        : qobject_cast<QQuickWindow *>(engine.rootObjects().first());
    if (!window) {
        return 1;
    }
    messenger.setPerson(options.value("to"));
    if (options.isSet("text") || options.isSet("picture")) {
        const QString picture = options.value("picture");
        messenger.send(options.value("text"),
                       picture.isEmpty() ? QUrl() : QUrl::fromLocalFile(picture));
    }
    if (options.isSet("grab")) {
        QObject::connect(&messenger, &Messenger::arrived, window, [&] {
            // Pictures are read in the background: they are there a moment later.
            QTimer::singleShot(1000, window, [&] {
                QCoreApplication::exit(window->grabWindow().save(options.value("grab")) ? 0 : 1);
            });
        });
    }
    return QGuiApplication::exec();
}
