// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/engine/mms_msg_records.h"
#include "platform/platform_export.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <memory>

namespace wmsg::engine {
class Store;
}

/// What the operations of the engine return. Success is 1; why an operation was refused is for the
/// one who tells people about it.
enum MMS_ENG_RESULT_E : int {
    MMS_ENG_FAIL = 0, ///< The system failed: input or output, memory.
    MMS_ENG_OK = 1,
    MMS_ENG_BAD_PARAM =
        2, ///< A null record, more parts than there is room for, an unreadable file.
    MMS_ENG_NO_MESSAGE = 3, ///< There is no message of that id.
    MMS_ENG_FULL = 4, ///< No space on the device, or no id is free.
    MMS_ENG_READ_ONLY = 5, ///< The store cannot be opened for writing.
    MMS_ENG_CORRUPT = 6, ///< The store is damaged, or is no store.
    MMS_ENG_NO_DRIVER = 7, ///< Qt has no SQLite driver here.
    MMS_ENG_BUSY = 8, ///< Other processes held the store for too long.
    MMS_ENG_NEWER = 9, ///< The store was written by a newer version.
};

/// The folders that have a name. An application may use any other number below 65535 for its own.
enum MMS_ENG_FOLDER_E : unsigned short {
    MMS_ENG_INBOX = 1,
    MMS_ENG_OUTBOX = 2,
    MMS_ENG_SENT = 3,
    MMS_ENG_DRAFTS = 4,
    MMS_ENG_TEMPLATES = 5,
};

/// The engine: the message store of the device. Messages go in and come out as the records of
/// mms_msg_records.h, lie in numbered folders, and have ids from 1 to 65534 that are the same
/// whatever folder they are in. An id is used again only when all higher ones were used.
///
/// The store is the folder `mms/engine/` below the root of the storage tree, which the environment
/// variable UVO_EXTRA_SYS_DATA_PATH names; docs/formats/store.md describes it. It is opened by the
/// first operation, and created when it is not there. Several processes may use it at once. What an
/// operation reported as done survives the loss of power; what it did not is not there.
///
/// Each operation returns MMS_ENG_OK, or another MMS_ENG_RESULT_E after one line in the log that
/// says what was refused and why. A refused operation changes nothing. There is one engine per
/// process, and it is used by one thread.
class WMSG_PLATFORM_EXPORT MMS_ENG_Controller {
public:
    /// Instance returns the engine of this process. It is never null and must not be deleted.
    static MMS_ENG_Controller *Instance();

    /// CreateMMS stores a new message in `folder` and sets `msgId` to its id. Parts in memory are
    /// taken as bytes, a part without data as an empty one; the bytes of parts in files are copied.
    int CreateMMS(unsigned short folder, unsigned short *msgId, const MMS_MSG_HDR_T *header,
                  const MMS_MSG_BDY_T *body);
    /// UpdateMMS replaces header and body of a message, which lies in `folder` then. Its status
    /// stays.
    int UpdateMMS(unsigned short folder, unsigned short msgId, const MMS_MSG_HDR_T *header,
                  const MMS_MSG_BDY_T *body);

    /// ReadMMSHdr fills `header`, which the caller releases with FreeMMSHdr.
    int ReadMMSHdr(unsigned short msgId, MMS_MSG_HDR_T *header);
    /// ReadMMSBody fills `body`, which the caller releases with FreeMMSBdy. Parts with bytes are
    /// regions of a file that nobody may write; it stays where it is, whatever becomes of the
    /// message, until FreeMMSBdy is called. Texts have the bytes as they were stored. The content
    /// type has no blanks before its parameters, and a text in UTF-8 whose header text says so has
    /// a "charset" behind its media type.
    int ReadMMSBody(unsigned short msgId, MMS_MSG_BDY_T *body);
    /// ReadMMSMoMtStatus fills `status`; the caller releases its texts with free(). A new message
    /// has result 0 and status 0 without texts.
    int ReadMMSMoMtStatus(unsigned short msgId, MMS_MOMT_STATUS_T *status);

    /// FreeMMSHdr and FreeMMSBdy release what a record points to and set it to zero, so that doing
    /// it twice does no harm. The record itself is the caller's. They work for records that an
    /// application filled with memory from malloc as well, and ignore a null record.
    int FreeMMSHdr(MMS_MSG_HDR_T *header);
    int FreeMMSBdy(MMS_MSG_BDY_T *body);

    /// @name Operations of this engine alone
    /// @{

    /// ListFolders sets `folders` to the numbers of the folders that hold messages, ascending.
    int ListFolders(QList<unsigned short> *folders);
    /// ListMMS sets `ids` to the messages of a folder, ascending.
    int ListMMS(unsigned short folder, QList<unsigned short> *ids);
    /// CountMMS sets `count` to the number of messages of a folder.
    int CountMMS(unsigned short folder, unsigned int *count);
    /// FindMMS sets `folder` to the one that a message lies in.
    int FindMMS(unsigned short msgId, unsigned short *folder);
    /// DeleteMMS removes a message with all that belongs to it.
    int DeleteMMS(unsigned short msgId);
    /// MoveMMS puts a message into another folder. Its id stays.
    int MoveMMS(unsigned short msgId, unsigned short folder);
    /// SetMMSMoMtStatus stores what became of a message.
    int SetMMSMoMtStatus(unsigned short msgId, const MMS_MOMT_STATUS_T *status);
    /// CheckStore reads all of the store and sets `problems` to what is wrong with it, a line each:
    /// none for a store that is whole. It returns MMS_ENG_OK when it could look everywhere. Files
    /// that belong to no message are removed; they are no problem.
    int CheckStore(QStringList *problems);
    /// StorePath returns the folder of the store, whether it is there or not.
    static QString StorePath();

    /// @}

private:
    MMS_ENG_Controller();
    ~MMS_ENG_Controller();
    Q_DISABLE_COPY_MOVE(MMS_ENG_Controller)

    /// The open store; null when it cannot be opened, `result` then says why.
    wmsg::engine::Store *openStore(int &result);

    std::unique_ptr<wmsg::engine::Store> m_store;
};
