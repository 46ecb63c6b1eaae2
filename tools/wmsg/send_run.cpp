// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/send_run.h"

#include "tools/wmsg/status_words.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRandomGenerator>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kNoStatus = -1;

QString withStatus(int status)
{
    return u"%1 (status %2)"_s.arg(statusInWords(status)).arg(status);
}

// Why a message was not even handed over.
QString refusalInWords(int status)
{
    switch (status) {
    case WMFM::STATUS_INVALID_PARAM:
        return u"no file for the message can be made in /tmp"_s;
    case WMFM::STATUS_SEND_FAIL:
        return u"the message cannot be written as a mail file"_s;
    default:
        return withStatus(status);
    }
}

} // namespace

SendRun::SendRun(WMMSMsg &message, Wait wait, Output output)
    : m_message(message), m_wait(wait), m_output(output),
      m_name(u"wmsg.send.%1"_s.arg(QRandomGenerator::system()->generate64(), 16, 16, QChar(u'0')))
{
    if (output == Output::Json) {
        m_bar.turnOff();
    }
}

bool SendRun::keepIn(const StoreFolder &folder)
{
    QString problem = StoreFolder::objection(m_message);
    if (problem.isEmpty()) {
        problem = folder.open();
    }
    if (!problem.isEmpty()) {
        complain(u"not sent: "_s + problem);
        return false;
    }
    m_store = folder;
    return true;
}

void SendRun::begin()
{
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    m_registration = session()->registerAppID(m_name, status);
}

void SendRun::statusChanged(int id, WMFM::STATUS_T status)
{
    if (id == m_registration) {
        registered(status);
    } else if (id == m_request && status == kStatusWillRetry) {
        ++m_retries;
        tell(statusInWords(status));
    } else if (id == m_request) {
        outcome(status);
    } else if (id == m_mark) {
        end("handed-over", kNoStatus, QString());
    }
}

void SendRun::registered(int status)
{
    if (m_request >= 0) {
        return; // told again
    }
    if (status != WMFM::STATUS_OK) {
        end("not-sent", status,
            u"not sent: the proxy daemon gives no name to this session: "_s + withStatus(status));
        return;
    }
    send();
}

void SendRun::send()
{
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    m_request = session()->send(&m_message, status);
    if (m_request < 0) {
        end("not-sent", status, u"not sent: "_s + refusalInWords(status));
        return;
    }
    if (m_wait == Wait::UntilTaken) {
        // The daemon answers requests in their order: the answer to this one, which changes
        // nothing, says that it has dealt with the message.
        m_mark = session()->registerAppID(m_name, status);
    }
}

void SendRun::progress(int id, int sent, int total)
{
    if (id == m_request) {
        m_bar.show(sent, total);
    }
}

void SendRun::outcome(int status)
{
    if (status == WMFM::STATUS_OK) {
        end("sent", status, QString());
    } else if (m_isAborted && status == WMFM::STATUS_SEND_FAIL) {
        end("aborted", status, u"aborted, the message is not sent"_s);
    } else if (status == WMFM::STATUS_INVALID_PARAM) {
        end("not-sent", status,
            u"not sent: the proxy daemon does not take the message; it may be too large (see wmsg "
            "settings) (status %1)"_s.arg(status));
    } else {
        end("not-sent", status, u"not sent: "_s + withStatus(status));
    }
}

void SendRun::interrupted()
{
    if (m_request < 0) {
        end("not-sent", kNoStatus, u"not sent: interrupted before the message was handed over"_s);
    } else if (m_isAborted) {
        end("unknown", kNoStatus,
            u"the end of the request was not waited for; what becomes of the message is not known"_s);
    } else {
        m_isAborted = true;
        WMFM::STATUS_T status = WMFM::STATUS_OK;
        session()->mmsAbort(m_request, status);
        tell(u"aborting; interrupt again to wait no longer"_s);
    }
}

void SendRun::timedOut()
{
    end("unknown", kNoStatus,
        m_request < 0 ? u"not sent: the proxy daemon did not answer in time"_s
                      : u"no outcome in time; the message stays with the proxy daemon"_s);
}

void SendRun::disconnected(const QString &problem)
{
    end(m_request < 0 ? "not-sent" : "unknown", kNoStatus,
        m_request < 0 ? u"not sent: "_s + problem
                      : problem + u"; what becomes of the message is not known"_s);
}

void SendRun::tell(const QString &line)
{
    m_bar.clear();
    if (m_output == Output::Words) {
        say(line + u'\n');
        std::fflush(stdout);
    }
}

// A `line` is a complaint.
void SendRun::end(const char *outcome, int status, const QString &line)
{
    m_bar.clear();
    if (!line.isEmpty()) {
        complain(line);
    }
    const bool isDone = line.isEmpty();
    const bool isFine = isDone && store();
    if (m_output == Output::Json) {
        showJson(outcome, status);
    } else if (isDone) {
        showWords();
    }
    finish(finishOutput() && isFine ? ExitFine : ExitBadInput);
}

// The message has gone: that it is not stored changes nothing about that.
bool SendRun::store()
{
    const QString problem = m_store ? m_store->add(m_message) : QString();
    if (!problem.isEmpty()) {
        complain(doneInWords() + u", but not stored: "_s + problem);
    }
    return problem.isEmpty();
}

void SendRun::showJson(const char *outcome, int status) const
{
    QJsonObject object{{u"outcome"_s, QLatin1String(outcome)}, {u"retries"_s, m_retries}};
    if (status != kNoStatus) {
        object.insert(u"status"_s, status);
        object.insert(u"statusKey"_s, statusKey(status));
        object.insert(u"words"_s, statusInWords(status));
    }
    if (m_request >= 0) {
        object.insert(u"bytes"_s, size());
    }
    if (m_store) {
        m_store->addPlace(object);
    }
    say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

void SendRun::showWords() const
{
    say(u"%1: %2\n"_s.arg(doneInWords(), sizeInWords(size())));
    const QString place = m_store ? m_store->placeInWords() : QString();
    if (!place.isEmpty()) {
        say(u"stored as %1\n"_s.arg(place));
    }
}

qint64 SendRun::size() const
{
    return m_message.headerLength() + m_message.bodyLength();
}

QString SendRun::doneInWords() const
{
    return m_wait == Wait::UntilTaken ? u"handed over"_s : u"sent"_s;
}

} // namespace wmsg::cli
