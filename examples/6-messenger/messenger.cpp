// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "messenger.h"

#include <MMS_UTIL_Common>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMimeDatabase>
#include <QtCore/QTextStream>

namespace {

constexpr int kTriedAgain = 256;

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

} // namespace

/// Hears the session for the model.
class Messenger::Ear : public WMFMListener {
public:
    explicit Ear(Messenger &messenger) : WMFMListener(&messenger.m_session), m_messenger(messenger)
    {
    }

    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message);
        if (auto *multimedia = dynamic_cast<WMMSMsg *>(message)) {
            m_messenger.take(*multimedia);
        }
    }
    void progress(int id, int done, int total) override
    {
        m_messenger.tellProgress(id, total > 0 ? double(done) / total : 0);
    }
    void statusChanged(int id, WMFM::STATUS_T status) override { m_messenger.tellEnd(id, status); }
    QString listenerName() const override { return "messenger"; }

private:
    Messenger &m_messenger;
};

Messenger::Messenger(const QString &folder, QObject *parent)
    : QAbstractListModel(parent), m_folder(folder), m_session(m_status)
{
    m_folder.mkpath(".");
    m_ear = std::make_unique<Ear>(*this);
    m_session.setListener(m_ear.get(), m_status);
}

Messenger::~Messenger() = default;

QVariantList Messenger::people() const
{
    QVariantList people;
    QStringList known;
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        if (!known.contains(entry->person)) {
            known << entry->person;
            people << QVariantMap{{"number", entry->person},
                                  {"last", entry->text.isEmpty() ? "A picture" : entry->text}};
        }
    }
    return people;
}

void Messenger::setPerson(const QString &number)
{
    if (m_person != number) {
        beginResetModel();
        m_person = number;
        endResetModel();
        emit personChanged();
    }
}

std::vector<int> Messenger::rows() const
{
    std::vector<int> rows;
    for (int i = 0; i < int(m_entries.size()); ++i) {
        if (m_entries[i].person == m_person) {
            rows.push_back(i);
        }
    }
    return rows;
}

int Messenger::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(rows().size());
}

QVariant Messenger::data(const QModelIndex &index, int role) const
{
    const Entry &entry = m_entries[rows()[index.row()]];
    switch (role) {
    case IsMine:
        return entry.isMine;
    case Text:
        return entry.text;
    case Picture:
        return entry.picture;
    case Progress:
        return entry.request < 0 ? 1.0 : entry.progress;
    case State:
        return entry.state;
    default:
        return {};
    }
}

QHash<int, QByteArray> Messenger::roleNames() const
{
    return {{IsMine, "isMine"},
            {Text, "text"},
            {Picture, "picture"},
            {Progress, "progress"},
            {State, "state"}};
}

void Messenger::add(const Entry &entry)
{
    beginResetModel();
    m_entries.push_back(entry);
    endResetModel();
    emit peopleChanged();
}

void Messenger::send(const QString &text, const QUrl &picture)
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
    if (parts.isEmpty() || m_person.isEmpty()) {
        return;
    }
    WMMSContentType mixed;
    mixed.setMimeType("application/vnd.wap.multipart.mixed");
    WMMSMsg message;
    message.setTo(WMFMEntry(1, m_person));
    message.setContentType(mixed);
    message.getMultiParts().setSubMmsMultipart(parts);
    Entry entry{m_person, true, text, picture, m_session.send(&message, m_status), 0, "sending"};
    if (entry.request < 0) {
        entry.state = QString("not sent (%1)").arg(m_status);
    }
    add(entry);
}

void Messenger::cancel(int row)
{
    const Entry &entry = m_entries[rows()[row]];
    if (entry.request >= 0) {
        m_session.mmsAbort(entry.request, m_status); // it ends as every request does
    }
}

void Messenger::take(WMMSMsg &message)
{
    Entry entry;
    entry.person = message.getFrom().getEntryVal();
    for (WMMSMultipart &part : message.getMultiParts().getSubMmsMultipartList()) {
        if (part.isMediaType("image")) {
            const QString folder = m_folder.absolutePath() + "/";
            part.setLocalFileName(
                MMS_UTIL_Common::getTmpFileName(part.getSuggestLocalFileName(folder), folder));
            if (part.saveFile()) {
                entry.picture = QUrl::fromLocalFile(part.getLocalFileName());
            }
        } else if (part.getContentType().getMimeType() == "text/plain") {
            entry.text += QString::fromUtf8(part.getData().data(), part.getData().size());
        }
    }
    add(entry);
    if (m_person.isEmpty()) {
        setPerson(entry.person);
    }
    emit arrived();
}

Messenger::Entry *Messenger::underWay(int request)
{
    for (Entry &entry : m_entries) {
        if (entry.request == request) {
            return &entry;
        }
    }
    return nullptr;
}

void Messenger::tellProgress(int request, double progress)
{
    if (Entry *entry = underWay(request)) {
        entry->progress = progress;
        emit dataChanged(index(0), index(rowCount() - 1), {Progress});
    }
}

void Messenger::tellEnd(int request, int status)
{
    Entry *entry = underWay(request);
    if (!entry) {
        return;
    }
    if (status == kTriedAgain) {
        entry->state = "waiting for the network";
    } else {
        entry->request = -1;
        entry->state = status == WMFM::STATUS_OK ? "sent" : QString("not sent (%1)").arg(status);
    }
    emit dataChanged(index(0), index(rowCount() - 1), {Progress, State});
}
