// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/wsp_stream.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

class WMFMEntry;

/// MsgFieldBase is the base of the header field codecs. A codec turns the wire value of one field
/// into its member of MMS_HDR_S and back, and prints it to the log. It holds no data and keeps
/// nothing of what it is given, so that one codec may serve any number of headers, one thread at a
/// time.
///
/// The helpers are what codecs are made of; their field ids are plain, 1 to 24.
class WMSG_EXPORT MsgFieldBase {
public:
    MsgFieldBase() = default;
    virtual ~MsgFieldBase();
    Q_DISABLE_COPY_MOVE(MsgFieldBase)

    /// read sets the member of `header` from `stream`, which stands behind the id byte, and returns
    /// 1. On failure it returns 0; the member may then have changed partly. The base fails always.
    virtual quint32 read(WSP_Stream &stream, MMS_HDR_S *header);
    /// write writes the id byte and the member of `header`, and returns 1; 0 when it cannot be
    /// written. Some codecs return 1 also when there was no room: `stream` knows, see
    /// WSP_Stream::hasOverflowed(). The base fails always.
    virtual quint32 write(WSP_Stream &stream, MMS_HDR_S *header);
    /// printField logs the value at level 4. Text is printed in Latin-1. The base prints nothing.
    virtual void printField(MMS_HDR_S *header);

    /// getBool reads 128 as true and 129 as false. It fails at any other byte, `value` then
    /// unchanged.
    static quint32 getBool(WSP_Stream &stream, bool &value);
    /// setBool writes id and 128 for true, 129 for false. It returns 1 also when there was no room.
    static quint32 setBool(int id, WSP_Stream &stream, bool value);
    /// setByteField writes id and the byte as it is. It returns 1 also when there was no room.
    static quint32 setByteField(int id, WSP_Stream &stream, unsigned char value);
    /// setIntField writes id and an integer; 128 and more as a long integer. A negative value fails
    /// and writes nothing; otherwise 1, also when there was no room.
    static quint32 setIntField(int id, WSP_Stream &stream, qint32 value);
    /// setStrField writes id and a text string; for a null or empty one nothing, and returns 1.
    static quint32 setStrField(int id, WSP_Stream &stream, const QString &text);
    /// setEncoStrField writes id and an encoded string with charset UTF-8; for a null or empty one
    /// nothing, and returns 1.
    static quint32 setEncoStrField(int id, WSP_Stream &stream, const QString &text);
    /// getDate reads seconds since 1970-01-01 00:00 UTC. The date-time is in UTC: local time costs
    /// a look at the time zone, so it is left to those who show it.
    static quint32 getDate(WSP_Stream &stream, QDateTime &date);
    /// setDate writes id and the seconds of `date`: 0 for a null one. A date that is invalid,
    /// before 1970 or beyond 2^31 - 1 seconds fails and writes nothing.
    static quint32 setDate(int id, WSP_Stream &stream, const QDateTime &date);
    /// secsToUTC returns the seconds since 1970-01-01 00:00 UTC of a date-time, a local one by the
    /// rules of the current time zone: 0 when its date and time are both null, -1 when one of them
    /// is invalid.
    static qint64 secsToUTC(const QDateTime &date);

    /// readAddress reads one address: ".../TYPE=PLMN" is a number, a text with "@" an e-mail
    /// address with an optional name in front of "<", anything else a number. The contact name
    /// becomes the name, or empty; a number with its suffix leaves it as it was. Nothing of `entry`
    /// changes on failure.
    static quint32 readAddress(WSP_Stream &stream, WMFMEntry &entry);
    /// writeAddress writes the value of one address; numbers get "/TYPE=PLMN". The contact name is
    /// never written.
    static quint32 writeAddress(WSP_Stream &stream, const WMFMEntry &entry);
    /// writeAddressList writes id and address for each entry; for an empty list nothing, and
    /// returns
    /// 1. The first address that does not fit ends it with 0.
    static quint32 writeAddressList(unsigned char id, WSP_Stream &stream,
                                    const QValueList<WMFMEntry> &entries);
    /// printEntry logs a tab, the value, a blank and the contact name of a valid entry; nothing for
    /// another one.
    static void printEntry(const WMFMEntry &entry);
    /// printEntryList logs each valid entry.
    static void printEntryList(const QValueList<WMFMEntry> &entries);

    /// kScratchSize is the largest value that a field with a value-length can have, in bytes.
    static constexpr qint32 kScratchSize = 1024;
    /// writeLengthPrefixed writes a value-length and the bytes that `value` holds; a value that was
    /// cut in its own buffer marks `stream` as overflowed.
    static quint32 writeLengthPrefixed(WSP_Stream &stream, const WSP_Stream &value);
};
