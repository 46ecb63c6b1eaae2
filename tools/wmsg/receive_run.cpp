// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/receive_run.h"

#include "tools/wmsg/message_json.h"
#include "tools/wmsg/status_words.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cstdio>
#include <memory>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

template <typename Folder> bool opens(const std::optional<Folder> &folder, const QByteArray &name)
{
    const QString problem = folder ? folder->open() : QString();
    if (!problem.isEmpty()) {
        complain(shownName(name) + u": "_s + problem);
    }
    return problem.isEmpty();
}

} // namespace

ReceiveRun::ReceiveRun(ReceiveRequest request)
    : m_request(std::move(request)), m_kept(m_request.spool)
{
    if (!m_request.saveDirectory.isEmpty()) {
        m_messages.emplace(m_request.saveDirectory);
    }
    if (!m_request.partsDirectory.isEmpty()) {
        m_parts.emplace(m_request.partsDirectory);
    }
}

bool ReceiveRun::openFolders() const
{
    return opens(m_messages, m_request.saveDirectory) && opens(m_parts, m_request.partsDirectory)
        && opens(m_request.store, "--store");
}

void ReceiveRun::begin()
{
    const QString before = m_kept.watch();
    if (!before.isEmpty()) {
        complain(before);
    }
    QObject::connect(&m_kept, &KeptFolder::setAside, context(), &complain);
    for (const QString &id : std::as_const(m_request.appIds)) {
        WMFM::STATUS_T status = WMFM::STATUS_OK;
        m_registrations.insert(session()->registerAppID(id, status), id);
    }
}

void ReceiveRun::statusChanged(int id, WMFM::STATUS_T status)
{
    if (status != WMFM::STATUS_OK && m_registrations.contains(id)) {
        complain(u"--app-id %1: %2 (status %3)"_s
                     .arg(shortened(m_registrations[id], 80), statusInWords(status))
                     .arg(int(status)));
        end(false);
    }
}

void ReceiveRun::msgIncome(WMFMMsg *msg)
{
    const std::unique_ptr<WMFMMsg> owner(msg);
    const auto *message = dynamic_cast<WMMSMsg *>(msg);
    if (!message) {
        return; // a session of multimedia messages brings no other
    }
    ++m_number;
    if (!save(*message)) {
        // Returning would tell the daemon that the message is here.
        std::fflush(stdout);
        ::_exit(ExitBadInput);
    }
    show(*message);
    if (m_number == m_request.count) {
        end(true);
    }
}

bool ReceiveRun::save(const WMMSMsg &message)
{
    m_saved.clear();
    QString problem = m_messages ? m_messages->saveMessage(message, m_saved) : QString();
    QStringList written;
    QStringList problems =
        m_parts && problem.isEmpty() ? m_parts->saveParts(message, written) : QStringList();
    if (!problem.isEmpty()) {
        problems += problem;
    }
    if (m_request.store && problems.isEmpty()) {
        problem = m_request.store->add(message);
        problems += problem.isEmpty() ? QStringList() : QStringList(u"not stored: "_s + problem);
    }
    for (const QString &line : std::as_const(written)) {
        tell(line);
    }
    for (const QString &line : std::as_const(problems)) {
        complain(line);
    }
    return problems.isEmpty();
}

void ReceiveRun::show(const WMMSMsg &message)
{
    const qint64 size = message.headerLength() + message.bodyLength();
    if (m_request.isJson) {
        QJsonObject object = contentJson(message);
        object.insert(u"number"_s, m_number);
        object.insert(u"bytes"_s, size);
        if (!m_saved.isEmpty()) {
            object.insert(u"file"_s, shownName(m_saved));
        }
        if (m_request.store) {
            m_request.store->addPlace(object);
        }
        say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
    } else {
        say(u"message %1, %2\n"_s.arg(m_number).arg(sizeInWords(size))
            + contentView(message, m_request.detail) + u'\n');
        if (!m_saved.isEmpty()) {
            tell(u"wrote "_s + printable(shownName(m_saved)));
        }
        if (m_request.store) {
            tell(u"stored as "_s + m_request.store->placeInWords());
        }
    }
    std::fflush(stdout);
}

// What is said beside JSON must not get into it.
void ReceiveRun::tell(const QString &line) const
{
    if (m_request.isJson) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(line));
    } else {
        say(line + u'\n');
    }
}

void ReceiveRun::interrupted()
{
    endEarly();
}

void ReceiveRun::timedOut()
{
    endEarly();
}

// Who waits for a number of messages has failed without them.
void ReceiveRun::endEarly()
{
    if (m_request.count > 0) {
        complain(u"%1 of %2 came"_s.arg(m_number).arg(counted(m_request.count, "message"_L1)));
    }
    end(m_request.count == 0);
}

void ReceiveRun::disconnected(const QString &problem)
{
    complain(problem);
    end(false);
}

void ReceiveRun::end(bool isFine)
{
    finish(finishOutput() && isFine ? ExitFine : ExitBadInput);
}

} // namespace wmsg::cli
