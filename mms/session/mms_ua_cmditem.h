// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <initializer_list>
#include <memory>

class QWSSocket;

// record := type extra-length fixed-part variable-part
//   type, extra-length: int32, native byte order
//   fixed-part:         int32 words, native byte order; how many follows from the type alone
//   variable-part:      extra-length bytes: texts one after the other, UTF-16 in native byte order

/// MMS_UA_CmdItem is one record of the talk between a session and the proxy daemon: the base of the
/// commands (MMS_UA_Cmd, session to daemon) and of the events (MMS_UA_SvCmd, daemon to session).
/// Both sides use the same classes; docs/formats/proxy-records.md shows the bytes.
///
/// A record to be written is made, gets all its values, and is written with write(). A record to be
/// read is made by the factory of its kind from the type that was read from the socket, and then
/// filled by read(), which may be called again as more bytes arrive.
///
/// A new record has words of 0, empty texts and no variable part. Records are not copied; the words
/// lie inside the record, the variable part in a buffer of its own. A record belongs to one thread.
class WMSG_EXPORT MMS_UA_CmdItem {
public:
    /// The longest variable part that is read. A record that announces more is refused.
    static constexpr qint32 kLongestExtra = 1024 * 1024;

    virtual ~MMS_UA_CmdItem();

    MMS_UA_CmdItem(const MMS_UA_CmdItem &) = delete;
    MMS_UA_CmdItem &operator=(const MMS_UA_CmdItem &) = delete;

    /// setData sets the variable part. With `copy` the record gets a buffer of its own with the
    /// `len` bytes at `buf`, or with zeros when `buf` is null; without, it points at `buf`, which
    /// stays the caller's and must live as long as the record uses it. Null and 0 leave the record
    /// without a variable part. A negative `len` changes nothing. Records with texts then read
    /// their texts out of it.
    virtual void setData(char *buf, int len, bool copy);

    /// write writes the record as WriteCmd() does. The texts of a record have gone into its
    /// variable part when they were set.
    void write(QWSSocket *sock);

    /// read reads what follows the type, as far as it has arrived, as ReadCmd() does. It returns 1
    /// when the record is whole and its texts are set, else 0: call it again when more has arrived,
    /// unless isRefused(). Do not call it again after it returned 1.
    int read(QWSSocket *sock);

    /// isRefused tells that read() met a length that no record has: negative, or above
    /// kLongestExtra. Nothing was allocated for it. The connection has lost its place and is of no
    /// more use.
    [[nodiscard]] bool isRefused() const;

    /// isCutOff tells that read() was called and the words of the record have not arrived: they are
    /// 0 and mean nothing.
    [[nodiscard]] bool isCutOff() const { return m_wasRead && m_readState == 0; }

    /// The command or event id.
    [[nodiscard]] qint32 type() const { return m_type; }
    /// The bytes of the fixed part.
    [[nodiscard]] qint32 dataLen() const { return m_dataLen; }
    [[nodiscard]] QByteArrayView fixedPart() const { return {m_data, m_dataLen}; }
    /// The bytes of the variable part; -1 for none, and as long as it is not known.
    [[nodiscard]] qint32 extraLen() const { return m_extraLen; }
    [[nodiscard]] const char *extra() const { return m_extra; }
    /// Whether the record frees the variable part.
    [[nodiscard]] bool ownsExtra() const { return m_ownsExtra; }
    /// How many bytes of both parts were read; 0 until the fixed part is there.
    [[nodiscard]] qint32 readState() const { return m_readState; }

protected:
    /// MMS_UA_CmdItem(type, words) makes an empty record with a fixed part of that many words.
    MMS_UA_CmdItem(qint32 type, int words);

    [[nodiscard]] qint32 word(int index) const { return m_words[index]; }
    void setWord(int index, qint32 value) { m_words[index] = value; }

    /// lengthOf returns the bytes that `text` takes in the variable part.
    static qint32 lengthOf(const QString &text);
    /// setBytes makes the variable part a copy of `bytes`, and setTexts one of these texts, one
    /// behind the other. Neither reads texts back, as the virtual setData() would.
    void setBytes(QByteArrayView bytes);
    void setTexts(std::initializer_list<QString> texts);
    /// takeText returns the text at `position` of the variable part and moves behind it. `length`
    /// is in bytes; an odd one is rounded down, and what reaches beyond the variable part is cut.
    QString takeText(qint32 &position, qint32 length) const;

private:
    static constexpr int kMostWords = 5;

    qint32 m_type;
    qint32 m_dataLen;
    qint32 m_extraLen = -1;
    bool m_ownsExtra = false;
    char *m_data;
    char *m_extra = nullptr;
    qint32 m_readState = 0;
    bool m_wasRead = false;
    qint32 m_words[kMostWords] = {};
    // What the record allocated, or took from ReadCmd.
    std::unique_ptr<char[]> m_buffer;
};

/// WriteCmd writes one record and flushes the socket: `type`, `extraLen` (0 for -1), the fixed part
/// unless it is null or empty, and the variable part unless it is null or empty. A null socket is
/// ignored. Whether the bytes arrive is not told.
WMSG_EXPORT void WriteCmd(QWSSocket *sock, int type, char *data, int dataLen, char *extra,
                          int extraLen);

/// ReadCmd reads what follows the type of a record, in steps that each wait for all of their bytes.
/// `data` has room for the `dataLen` bytes of the fixed part; `extra` is set to a new array of
/// `extraLen` bytes, which the caller frees with delete[]. It returns 1 when the record is whole,
/// and 0 when bytes are missing or reading failed; `extraLen` and `readState`, which begin as -1
/// and 0, then say where the next call goes on. A length of -1 on the wire means 0.
///
/// A negative length, or one above MMS_UA_CmdItem::kLongestExtra, stays in `extraLen` and gives 0
/// from then on; nothing is allocated.
WMSG_EXPORT int ReadCmd(QWSSocket *sock, char *&data, int &dataLen, char *&extra, int &extraLen,
                        int &readState);
