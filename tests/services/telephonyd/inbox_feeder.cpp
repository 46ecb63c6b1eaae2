// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// A modem and an inbox in one process, to be killed: inbox_feeder SPOOL MODEM. Each file of the
// folder MODEM is a short message in the modem, its name the place, its bytes a user data header
// of one digit for its length, and the text. What is whole is printed as "ID TEXT" and then taken.

#include "services/telephonyd/inbox.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <chrono>
#include <cstdio>

using namespace wmsg::telephonyd;

namespace {

IncomingSms smsAt(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray bytes = file.readAll();
    const int header = bytes.at(0) - '0';
    IncomingSms sms;
    sms.coding = wmsg::telephony::Coding::Binary;
    sms.header = bytes.mid(1, header);
    sms.body = bytes.mid(1 + header);
    sms.sender = "+43664";
    sms.time = 1100000000;
    sms.place = QFile::encodeName(path);
    return sms;
}

} // namespace

int main(int, char **argv)
{
    Spool spool(QFile::decodeName(argv[1]));
    const QDir modem(QFile::decodeName(argv[2]));
    Inbox inbox(spool, std::chrono::hours(24));
    QObject::connect(&inbox, &Inbox::safe, &inbox, [&inbox](const QByteArray &place) {
        QFile::remove(QFile::decodeName(place));
        inbox.forgotten(place);
    });
    if (!spool.open().isEmpty()) {
        return 1;
    }
    inbox.restore();
    for (const QString &name : modem.entryList(QDir::Files, QDir::Name)) {
        inbox.arrived(smsAt(modem.filePath(name)));
    }
    for (const quint64 id : inbox.waiting()) {
        std::printf("%016llx %s\n", id, inbox.find(id)->body.constData());
        std::fflush(stdout);
        inbox.taken(id);
    }
    return 0;
}
