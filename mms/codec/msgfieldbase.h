// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/wsp_stream.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

class WMFMEntry;

/// The base of the header field codecs. A codec turns the wire value of one field into its member
/// of MMS_HDR_S and back, and prints it to the log; it holds no data and may be used from anywhere.
///
/// read() is called behind the id byte, write() writes it. Both return 1 on success and 0 on
/// failure; a failed read may have changed its member partly. The helpers below are what codecs are
/// made of; their field ids are plain, 1 to 24.
class WMSG_EXPORT MsgFieldBase {
public:
    MsgFieldBase() = default;
    virtual ~MsgFieldBase();
    Q_DISABLE_COPY_MOVE(MsgFieldBase)

    virtual quint32 read(WSP_Stream &stream, MMS_HDR_S *header);
    virtual quint32 write(WSP_Stream &stream, MMS_HDR_S *header);
    /// Logs the value at level 4. Text is printed in Latin-1.
    virtual void printField(MMS_HDR_S *header);

    /// Reads 128 as true and 129 as false; fails at any other byte, `value` then unchanged.
    static quint32 getBool(WSP_Stream &stream, bool &value);
    /// Writes id and 128 or 129. Returns 1 also when there was no room.
    static quint32 setBool(int id, WSP_Stream &stream, bool value);
    /// Writes id and the byte as it is. Returns 1 also when there was no room.
    static quint32 setByteField(int id, WSP_Stream &stream, unsigned char value);
    /// Writes id and an integer; 128 and more as a long integer. A negative value fails and writes
    /// nothing; otherwise 1, also when there was no room.
    static quint32 setIntField(int id, WSP_Stream &stream, qint32 value);
    /// Writes id and a text string; nothing for a null or empty one.
    static quint32 setStrField(int id, WSP_Stream &stream, const QString &text);
    /// Writes id and an encoded string with charset UTF-8; nothing for a null or empty one.
    static quint32 setEncoStrField(int id, WSP_Stream &stream, const QString &text);
    /// Reads seconds since 1970-01-01 00:00 UTC. The date-time is in UTC: local time costs a look
    /// at the time zone, so it is left to those who show it.
    static quint32 getDate(WSP_Stream &stream, QDateTime &date);
    /// Writes id and the seconds of `date`: 0 for a null one. A date that is invalid, before 1970
    /// or beyond 2^31 - 1 seconds fails and writes nothing.
    static quint32 setDate(int id, WSP_Stream &stream, const QDateTime &date);
    /// The seconds since 1970-01-01 00:00 UTC of a date-time, a local one by the rules of the
    /// current time zone: 0 when its date and time are both null, -1 when one of them is invalid.
    static qint64 secsToUTC(const QDateTime &date);

    /// Reads one address: ".../TYPE=PLMN" is a number, a text with "@" an e-mail address with an
    /// optional name in front of "<", anything else a number. Nothing of `entry` changes on
    /// failure.
    static quint32 readAddress(WSP_Stream &stream, WMFMEntry &entry);
    /// Writes the value of one address; numbers get "/TYPE=PLMN". The contact name is never
    /// written.
    static quint32 writeAddress(WSP_Stream &stream, const WMFMEntry &entry);
    /// Writes id and address for each entry; nothing for an empty list. The first address that
    /// fails ends it.
    static quint32 writeAddressList(unsigned char id, WSP_Stream &stream,
                                    const QValueList<WMFMEntry> &entries);
    /// Logs value and contact name of a valid entry.
    static void printEntry(const WMFMEntry &entry);
    static void printEntryList(const QValueList<WMFMEntry> &entries);

    /// The largest value that a field with a value-length can have, in bytes.
    static constexpr qint32 kScratchSize = 1024;
    /// Writes a value-length and the bytes that `value` holds; a value that was cut in its own
    /// buffer marks `stream` as overflowed.
    static quint32 writeLengthPrefixed(WSP_Stream &stream, const WSP_Stream &value);
};
