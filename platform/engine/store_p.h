// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/engine/mms_eng_controller.h"
#include "platform/engine/part_files_p.h"

#include <QtCore/QString>
#include <QtCore/QVariantList>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <sys/types.h>

namespace wmsg::engine {

/// An open store: the database `messages.db` with what the records say, and the files with the
/// bytes of the parts beside it. docs/formats/store.md describes both. Operations return an
/// MMS_ENG_RESULT_E and have told why when they refuse.
class Store {
public:
    /// A store that is not open yet, in the folder `path`, which ends with "/".
    explicit Store(const QString &path);
    ~Store();
    Q_DISABLE_COPY_MOVE(Store)

    /// Opens the store, making what is missing, bringing an older one up to date, and removing what
    /// a killed writer left.
    int open();
    /// Tells whether this is what lies at `path` now.
    [[nodiscard]] bool isAt(const QString &path) const;

    int create(unsigned short folder, unsigned short &id, const MMS_MSG_HDR_T &header,
               const MMS_MSG_BDY_T &body);
    int update(unsigned short folder, unsigned short id, const MMS_MSG_HDR_T &header,
               const MMS_MSG_BDY_T &body);
    int readHeader(unsigned short id, MMS_MSG_HDR_T &header);
    int readBody(unsigned short id, MMS_MSG_BDY_T &body);
    /// The body that owns `parts` is not read from any more.
    void releaseBody(const MMS_MSG_PART_T *parts) { m_files.release(parts); }
    int readStatus(unsigned short id, MMS_MOMT_STATUS_T &status);
    int setStatus(unsigned short id, const MMS_MOMT_STATUS_T &status);

    int folders(QList<unsigned short> &numbers);
    int list(unsigned short folder, QList<unsigned short> &ids);
    int count(unsigned short folder, unsigned int &number);
    int find(unsigned short id, unsigned short &folder);
    int remove(unsigned short id);
    int move(unsigned short id, unsigned short folder);
    int check(QStringList &problems);

private:
    class Transaction;
    struct NewBody;

    int makeFolders() const;
    bool isWritable() const;
    int connect();
    int setUp();
    int migrate();
    int migrateFrom(int version);
    int sweep();
    int knownFiles(QSet<qint64> &numbers);

    int put(unsigned short folder, unsigned short &id, const MMS_MSG_HDR_T &header,
            const MMS_MSG_BDY_T &body, bool isNew);
    int writeFile(NewBody &body);
    int insertMessage(unsigned short folder, unsigned short id, const MMS_MSG_HDR_T &header,
                      const NewBody &body, bool isNew);
    int insertParts(unsigned short id, const NewBody &body);
    int freeId(unsigned short &id);
    int freeIdFrom(int first, int &id);
    int fileOf(unsigned short id, qint64 &number);
    int fillBody(unsigned short id, MMS_MSG_BDY_T &body);
    static bool fillPart(const QSqlQuery &query, const QString &path, MMS_MSG_PART_T &part);
    int checkFiles(QStringList &problems);
    int checkParts(QStringList &problems);
    QString problemOfFile(qint64 number, qint64 size, const QByteArray &hash) const;

    [[nodiscard]] QSqlDatabase database() const;
    /// Runs one statement; on a failure it tells and returns why.
    int run(QSqlQuery &query, const QString &statement, const QVariantList &values = {});
    int run(const QString &statement, const QVariantList &values = {});
    /// Runs a statement that changes one message.
    int runOn(unsigned short id, const QString &statement, const QVariantList &values);
    int refuseSql(const QSqlError &error);
    int refuseUnknown(unsigned short id);

    QString m_path;
    QString m_connection;
    PartFiles m_files;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    bool m_mayBeBusy = false; ///< A refusal because others hold the store is not worth a line.
};

} // namespace wmsg::engine
