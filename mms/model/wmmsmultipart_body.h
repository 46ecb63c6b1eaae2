// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wsp_stream.h"
#include "mms/model/wmmsmultipart.h"

/// Reads one multipart body into the sub-parts of a part.
class WMSG_NO_EXPORT WMMSMultipart::BodyReader {
public:
    /// Where the bytes of the parts lie: in memory of their own, or in the buffer that is read. The
    /// second is for a buffer that nobody else sees.
    enum class Bytes { Copied, Shared };

    BodyReader(QArray<char> &buffer, Bytes bytes, int depth = 0);

    /// Appends one sub-part to `parent` for each entry of the body that begins at `offset`. False
    /// at the first that cannot be read.
    bool read(WMMSMultipart &parent, int offset);

private:
    struct BodyPartRecord {
        WMMSContentType contentType;
        QString contentLocation;
        QString contentID;
        QArray<char> data;
    };

    bool readEntry(BodyPartRecord &record);
    bool readData(quint32 length, QArray<char> &data);
    void append(WMMSMultipart &parent, BodyPartRecord &record) const;
    void decodeNested(WMMSMultipart &part) const;

    static bool readContentType(WSP_Stream &headers, BodyPartRecord &record);
    static bool readMedia(WSP_Stream &value, quint8 first, WMMSContentType &type);
    static bool readParameters(WSP_Stream &value, BodyPartRecord &record);
    static bool readParameter(WSP_Stream &value, quint8 first, BodyPartRecord &record);
    static bool readNamedParameter(WSP_Stream &value, BodyPartRecord &record);
    static bool readHeaders(WSP_Stream &headers, BodyPartRecord &record);
    static void convertToUtf8(WMMSMultipart &part, const QArray<char> &received);

    QArray<char> &m_buffer;
    WSP_Stream m_stream;
    Bytes m_bytes;
    int m_depth;
};

/// Writes the sub-parts of a part as a multipart body.
class WMSG_NO_EXPORT WMMSMultipart::BodyWriter {
public:
    /// `allowance` is the room that is made for the headers of each part. With the one of
    /// getApproxSize() it is spent by all together; with the largest no entry is ever short of it.
    enum Allowance : int { Approximate = 512, Largest = 5120 + 10 };

    explicit BodyWriter(WMMSMultipart &part, Allowance allowance = Approximate)
        : m_part(part), m_allowance(allowance)
    {
    }

    /// The bytes that are made room for.
    [[nodiscard]] qint64 room() const { return m_part.sizeWith(m_allowance); }
    /// Does what exportTo() says, in an array of `room` bytes, the first `offset` included.
    bool write(QArray<char> &out, int offset, qint64 room);
    /// False when the headers of an entry were cut.
    [[nodiscard]] bool isWhole() const { return m_whole; }

private:
    bool writeParts(WSP_Stream &stream, QValueList<WMMSMultipart> &parts);
    bool writeNested(WSP_Stream &stream, WMMSMultipart &part);
    bool writeEntry(WSP_Stream &stream, const WMMSMultipart &part, const QArray<char> &data);

    static bool writeHeaders(WSP_Stream &headers, const WMMSMultipart &part);
    static bool writeContentType(WSP_Stream &headers, const WMMSMultipart &part);

    WMMSMultipart &m_part;
    Allowance m_allowance;
    bool m_whole = true;
};
