// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <WMFMListener>
#include <WMMSMsg>
#include <WMMSSession>

#include <QtCore/QAbstractListModel>
#include <QtCore/QDir>
#include <QtCore/QUrl>

#include <memory>
#include <vector>

/// Messenger is what the window shows: the people one has messages with, the messages of one of
/// them, and what can be done. The messages are a list model; people are few, and come as a list.
class Messenger : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QVariantList people READ people NOTIFY peopleChanged)
    Q_PROPERTY(QString person READ person WRITE setPerson NOTIFY personChanged)

public:
    enum Role { IsMine = Qt::UserRole, Text, Picture, Progress, State };

    /// Pictures that arrive are saved in `folder`.
    explicit Messenger(const QString &folder, QObject *parent = nullptr);
    ~Messenger() override;

    [[nodiscard]] QVariantList people() const;
    [[nodiscard]] const QString &person() const { return m_person; }
    void setPerson(const QString &number);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// send sends a text, a picture or both to the person that is shown.
    Q_INVOKABLE void send(const QString &text, const QUrl &picture);
    /// cancel takes the message in this row back, as long as it is under way.
    Q_INVOKABLE void cancel(int row);

Q_SIGNALS:
    void peopleChanged();
    void personChanged();
    void arrived();

private:
    class Ear;
    struct Entry {
        QString person;
        bool isMine = false;
        QString text;
        QUrl picture;
        int request = -1; // as long as it is under way
        double progress = 0;
        QString state;
    };

    void add(const Entry &entry);
    void take(WMMSMsg &message);
    void tellProgress(int request, double progress);
    void tellEnd(int request, int status);
    [[nodiscard]] Entry *underWay(int request);
    [[nodiscard]] std::vector<int> rows() const;

    QDir m_folder;
    QString m_person;
    std::vector<Entry> m_entries;
    WMFM::STATUS_T m_status = WMFM::STATUS_FAIL;
    WMMSSession m_session;
    std::unique_ptr<Ear> m_ear;
};
