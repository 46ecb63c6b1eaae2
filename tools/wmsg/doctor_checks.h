// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>

/// The checks of `wmsg doctor`. Each looks at one thing and returns what it found. None of them
/// sends a message, registers an application or a port, or takes a message from anybody.
namespace wmsg::cli {

enum class Verdict { Ok, Note, Problem };

/// What a check found. Texts may hold what a message or a file brought, and are not fit for a
/// terminal yet.
struct Diagnosis {
    QString check; ///< "proxy socket": what was looked at
    Verdict verdict = Verdict::Ok;
    QString what;
    QString remedy; ///< what to do about it, empty where nothing is

    [[nodiscard]] static Diagnosis ok(const QString &check, const QString &what)
    {
        return {check, Verdict::Ok, what, {}};
    }
    [[nodiscard]] static Diagnosis note(const QString &check, const QString &what,
                                        const QString &remedy = {})
    {
        return {check, Verdict::Note, what, remedy};
    }
    [[nodiscard]] static Diagnosis problem(const QString &check, const QString &what,
                                           const QString &remedy)
    {
        return {check, Verdict::Problem, what, remedy};
    }
};

/// A socket that a daemon listens on.
struct SocketPlace {
    QString check;
    QString path;
    QString daemon;
    QString withoutIt; ///< what a system does not do that lacks the socket
    bool isNeeded = true; ///< false: without it there is a note
};

/// Whether the socket is there and this user's, and this user's daemon listens on it. The
/// connection is closed at once.
[[nodiscard]] Diagnosis checkSocket(const SocketPlace &place);

/// Whether the settings server answers in time, and with what makes sense. Sets `server` to the
/// MMSC that it names, if it does.
[[nodiscard]] Diagnosis checkSettings(const QString &path, std::chrono::milliseconds timeout,
                                      QString &server);

/// Why a text cannot be the URL of an MMSC; an empty text when it can.
[[nodiscard]] QString problemOfUrl(const QString &url);

/// Whether the host of a URL has an address, and takes connections at its port. Each of the two
/// steps has this time. Nothing is sent.
[[nodiscard]] Diagnosis checkMmsc(const QString &url, std::chrono::milliseconds timeout);

/// What the telephony daemon says of the modem. Needs the application object of Qt.
[[nodiscard]] Diagnosis checkModem();

/// Whether the message store can be written and is whole. A store that is not there stays so; one
/// that is gets tidied up as whenever it is opened.
[[nodiscard]] Diagnosis checkStore();

/// The spool of a daemon.
struct SpoolPlace {
    QString check; ///< "spool"; the checks of what lies in it have their words behind it
    QString folder;
    QString daemon;
    QString option; ///< that names it
};

/// Whether the folder is this user's alone, can be written and has room.
[[nodiscard]] Diagnosis checkSpool(const SpoolPlace &place);
/// How many messages are to be sent, and how many wait for an application.
[[nodiscard]] Diagnosis checkWaiting(const SpoolPlace &place);
/// What was set aside because it cannot be used.
[[nodiscard]] Diagnosis checkKept(const SpoolPlace &place);

/// Whether `now` is a time that can be: after this program was made, and not before the files in
/// these folders and in those below them.
[[nodiscard]] Diagnosis checkClock(const QDateTime &now, const QStringList &folders);

/// Where the system has its time zones.
struct ZonePlaces {
    QString zones = QStringLiteral("/usr/share/zoneinfo");
    QString local = QStringLiteral("/etc/localtime");
};

/// Whether the time zone is known: that of the environment variable TZ with this value, or, where
/// it is empty, that of the system.
[[nodiscard]] Diagnosis checkTimeZone(const QByteArray &name, const ZonePlaces &places);

} // namespace wmsg::cli
