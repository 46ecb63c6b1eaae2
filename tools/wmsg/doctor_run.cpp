// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor_run.h"

#include <QtCore/QFile>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr QLatin1String kProxyDaemon("wmsg-mmsproxyd");
constexpr QLatin1String kTelephonyDaemon("wmsg-telephonyd");

QString telephonySocket()
{
    const QByteArray path = qgetenv("WMSG_TELEPHONY_SOCKET");
    return path.isEmpty() ? u"/tmp/wmsg-telephony"_s : QFile::decodeName(path);
}

QList<Diagnosis> examineProxy(const DoctorRequest &request)
{
    const QString settings = u"/tmp/extra-mmserver"_s;
    QList<Diagnosis> findings{
        checkSocket({u"proxy socket"_s, u"/tmp/mmsproxy"_s, kProxyDaemon,
                     u"no application can send or receive multimedia messages"_s}),
        checkSocket({u"settings socket"_s, settings, kProxyDaemon,
                     u"no application can ask for the largest size of a message"_s}),
        checkSocket({u"push socket"_s, u"/tmp/wmsg-mmspush"_s, kProxyDaemon,
                     u"notifications come in short messages alone"_s, false}),
    };
    QString server;
    findings += checkSettings(settings, request.timeout, server);
    const QString mmsc = request.mmsc.isEmpty() ? server : request.mmsc;
    if (request.isOffline) {
        findings += Diagnosis::note(u"MMSC"_s, u"not asked, as --offline wants it"_s);
    } else if (mmsc.isEmpty()) {
        findings +=
            Diagnosis::note(u"MMSC"_s, u"not asked: none is known"_s, u"wmsg doctor --mmsc URL"_s);
    } else {
        findings += checkMmsc(mmsc, request.timeout);
    }
    return findings;
}

QList<Diagnosis> examineTelephony()
{
    const QString path = telephonySocket();
    const Diagnosis socket = checkSocket(
        {u"telephony socket"_s, path, kTelephonyDaemon,
         u"there are no short messages, and no notifications of a network that come in them"_s,
         false});
    const bool isAnswered = socket.verdict != Verdict::Problem && QFile::exists(path);
    return {socket,
            isAnswered ? checkModem()
                       : Diagnosis::note(u"modem"_s, u"not asked: no telephony daemon answers"_s)};
}

} // namespace

QList<Diagnosis> examine(const DoctorRequest &request)
{
    const SpoolPlace spools[] = {
        {u"spool"_s, request.spool, kProxyDaemon, u"--spool"_s},
        {u"telephony spool"_s, request.telephonySpool, kTelephonyDaemon, u"--telephony-spool"_s},
    };
    QList<Diagnosis> findings = examineProxy(request) + examineTelephony();
    findings += checkStore();
    for (const SpoolPlace &spool : spools) {
        findings += {checkSpool(spool), checkWaiting(spool), checkKept(spool)};
    }
    findings += checkClock(QDateTime::currentDateTime(), {request.spool, request.telephonySpool});
    findings += checkTimeZone(qgetenv("TZ"), {});
    return findings;
}

} // namespace wmsg::cli
