// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Two programs talk over a port of their own, as a game of two phones would: nobody's inbox sees
// what they say.
//
//     4-port-messages answer PORT              answers every message, until it is told "bye"
//     4-port-messages ask NUMBER PORT TEXT     sends one, and shows the answer

#include <WMFMListener>
#include <WSMSMsg>
#include <WSMSSession>
#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>

#include <cstdio>
#include <memory>

namespace {

class Talker : public WMFMListener {
public:
    Talker(WSMSSession &session, unsigned short ownPort, bool answers)
        : WMFMListener(&session), m_session(session), m_ownPort(ownPort), m_answers(answers)
    {
    }

    bool say(const QString &number, unsigned short port, const QString &text)
    {
        WSMSMsg message;
        message.setTo(WMFMEntry(1, number));
        message.setBody(text);
        message.setPortNumber(port, m_ownPort); // where it goes, and where the answer goes
        WMFM::STATUS_T status = WMFM::STATUS_FAIL;
        if (m_session.send(&message, status) < 0) {
            std::fprintf(stderr, "not sent: status %d\n", int(status)); // 27: too long for one
            return false;
        }
        return true;
    }

    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message); // it is ours
        auto *heard = dynamic_cast<WSMSMsg *>(message);
        QString text;
        unsigned short ownPort = 0;
        unsigned short theirPort = 0;
        if (!heard || !heard->getBody(text) || !heard->getPortNumber(&ownPort, &theirPort)) {
            return;
        }
        const QString number = heard->getFrom().getEntryVal();
        std::printf("%s says: %s\n", qPrintable(number), qPrintable(text));
        std::fflush(stdout);
        if (m_answers) {
            say(number, theirPort, "You said: " + text);
        }
        m_isOver = !m_answers || text == "bye";
        endWhenOver();
    }

    void statusChanged(int, WMFM::STATUS_T status) override
    {
        if (status != WMFM::STATUS_OK) {
            std::fprintf(stderr, "not sent: status %d\n", int(status));
            QCoreApplication::exit(1);
        }
        ++m_sent;
        endWhenOver();
    }
    QString listenerName() const override { return "port-messages"; }

private:
    // What was said is out when its outcome was told.
    void endWhenOver() const
    {
        if (m_isOver && m_sent > 0) {
            QCoreApplication::quit();
        }
    }

    WSMSSession &m_session;
    unsigned short m_ownPort;
    bool m_answers;
    bool m_isOver = false;
    int m_sent = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    const QStringList words = QCoreApplication::arguments().mid(1);
    const bool answers = words.size() == 2 && words.first() == "answer";
    if (!answers && !(words.size() == 4 && words.first() == "ask")) {
        std::fprintf(stderr, "usage: 4-port-messages answer PORT | ask NUMBER PORT TEXT\n");
        return 2;
    }
    const unsigned short port = words.at(answers ? 1 : 2).toUShort();
    const auto ownPort = static_cast<unsigned short>(answers ? port : port + 1);

    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WSMSSession session(status);
    Talker talker(session, ownPort, answers);
    if (status != WMFM::STATUS_OK || !session.setListener(&talker, status)
        || session.registerPortNumber(ownPort, SMS_RECV_MODE_PORTS) != WMFM::STATUS_OK) {
        std::fprintf(stderr, "no telephony service, or port %u is somebody else's\n",
                     unsigned(ownPort));
        return 1;
    }
    if (answers) {
        std::printf("listening on port %u\n", unsigned(port));
        std::fflush(stdout);
    } else if (!talker.say(words.at(1), port, words.at(3))) {
        return 1;
    }
    return application.exec();
}
