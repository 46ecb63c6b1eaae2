// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wsp_stream.h"
#include "mms/model/wmmsmultipart.h"

/// Reads one multipart body into the sub-parts of a part.
class WMMSMultipart::BodyReader {
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

/// Writes entries of a multipart body to a stream.
class WMMSMultipart::BodyWriter {
public:
    explicit BodyWriter(WSP_Stream &stream) : m_stream(stream) { }

    /// Writes the count and one entry for each part. Parts with sub-parts are encoded first; their
    /// data is empty afterwards.
    bool writeParts(QValueList<WMMSMultipart> &parts);
    /// Writes the entry of a part with `data` as its bytes. Headers that do not fit their room are
    /// cut.
    bool writeEntry(const WMMSMultipart &part, const QArray<char> &data);
    /// False when the headers of an entry were cut.
    [[nodiscard]] bool isWhole() const { return m_whole; }

private:
    static bool writeHeaders(WSP_Stream &headers, const WMMSMultipart &part);
    static bool writeContentType(WSP_Stream &headers, const WMMSMultipart &part);

    WSP_Stream &m_stream;
    bool m_whole = true;
};
