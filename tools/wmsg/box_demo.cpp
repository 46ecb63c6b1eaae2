// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/box_demo.h"

#include "tools/wmsg/draft.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/status_words.h"

#include <mms/codec/mms_hdr_s.h>

#include <QtCore/QFile>

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// A GIF of one point.
constexpr unsigned char kPicture[] = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x01, 0x00, 0x01,
                                      0x00, 0x80, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x00, 0x00,
                                      0x00, 0x2C, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01,
                                      0x00, 0x00, 0x02, 0x02, 0x44, 0x01, 0x00, 0x3B};

QString writePicture(const QString &path)
{
    QFile file(path);
    const auto size = static_cast<qint64>(sizeof kPicture);
    const bool isWritten = file.open(QIODevice::WriteOnly)
        && file.write(reinterpret_cast<const char *>(kPicture), size) == size && file.flush();
    return isWritten ? QString() : path + u": "_s + file.errorString();
}

DraftRequest requestWith(const QString &picture, QLatin1String receiver)
{
    DraftRequest request;
    request.to = {QByteArrayLiteral("+15550101")};
    request.subject = QByteArrayLiteral("From one application to another");
    request.texts = {QByteArrayLiteral("Hello from the box!")};
    request.files = {QFile::encodeName(picture)};
    request.pduType = MMS_PDU_SEND_REQ;
    request.priority = 129;
    request.messageClass = 128;
    request.appId = QByteArray(receiver.data(), receiver.size());
    request.sizeLimit = 100000;
    return request;
}

} // namespace

BoxDemo::BoxDemo(QString folder)
    : Demo(u"the message did not arrive in a minute"_s), m_folder(std::move(folder))
{
}

void BoxDemo::start()
{
    m_sender = std::make_unique<Application<WMMSSession>>(WMFM::MSG_TYPE_MMS);
    m_receiver = std::make_unique<Application<WMMSSession>>(WMFM::MSG_TYPE_MMS);
    if (!m_sender->isOpen() || !m_receiver->isOpen()) {
        Q_EMIT failed(u"no session can be opened"_s);
        return;
    }
    wait();
    m_receiver->onStatus = [this](int, int status) {
        registered(status);
    };
    m_receiver->onMessage = [this](WMFMMsg *message) {
        arrived(message);
    };
    m_sender->onStatus = [this](int id, int status) {
        if (id == m_request) {
            sent(status);
        } else {
            registered(status);
        }
    };
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    m_receiver->session().registerAppID(kReceiver, status);
    m_sender->session().registerAppID(kSender, status);
}

void BoxDemo::registered(int status)
{
    if (status != WMFM::STATUS_OK) {
        Q_EMIT failed(u"an application could not be registered: "_s + statusInWords(status));
    } else if (++m_registrations == 2) {
        send();
    }
}

void BoxDemo::send()
{
    const QString picture = m_folder + u"/picture.gif"_s;
    QString problem = writePicture(picture);
    const DraftRequest request = requestWith(picture, kReceiver);
    Draft draft(request);
    if (problem.isEmpty()) {
        problem = draft.make();
    }
    if (!problem.isEmpty()) {
        Q_EMIT failed(problem);
        return;
    }
    WMMSMsg message = draft.message();
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    m_request = m_sender->session().send(&message, status);
    if (m_request < 0) {
        Q_EMIT failed(u"not sent: "_s + statusInWords(status));
        return;
    }
    say(u"%1 sends a picture with text to +15550101, for %2.\n"_s.arg(kSender, kReceiver));
}

void BoxDemo::sent(int status)
{
    if (status == kStatusWillRetry) {
        say(u"%1: %2.\n"_s.arg(kSender, statusInWords(status)));
    } else if (status != WMFM::STATUS_OK) {
        Q_EMIT failed(u"not sent: "_s + statusInWords(status));
    } else {
        say(u"%1: sent.\n"_s.arg(kSender));
        messageIsSent();
    }
}

void BoxDemo::arrived(WMFMMsg *message)
{
    const auto *picture = dynamic_cast<WMMSMsg *>(message);
    if (!picture) {
        Q_EMIT failed(u"what arrived is no multimedia message"_s);
        return;
    }
    say(u"%1 has received:\n"_s.arg(kReceiver) + contentView(*picture, Detail::Short));
    messageHasArrived();
}

} // namespace wmsg::cli
