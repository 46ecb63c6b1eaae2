// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/body_walk.h"
#include "tools/wmsg/walk_notes.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/codec/msg_field_mask.h>
#include <qt2/qarray.h>

#include <array>
#include <optional>

namespace wmsg::cli {

/// What a file holds: a PDU as it travels, or a mail file, a PDU in the stored form behind a prefix
/// of 16 bytes.
enum class FileKind { Pdu, MailFile };

/// Tells the two apart by their first bytes: a mail file begins with 12 10.
[[nodiscard]] FileKind kindOf(QByteArrayView file);

/// Walks the bytes of a file along the same way as the library decodes it, with the same codecs and
/// a header of its own, and notes the meaning of every byte, what is odd, and where and why the
/// file cannot be decoded. Its result is the one that WMMSMsg::construct() gives.
class PduWalk {
public:
    /// `sink` gets the ranges in order; together they are the file, each byte once.
    explicit PduWalk(WalkNotes::Sink sink = {}) : m_notes(std::move(sink)) { }

    /// Walks one file. The bytes are only read. Returns a result code of decoding. A PDU may begin
    /// at an offset; a mail file has its prefix.
    quint32 walk(QArray<char> &file, FileKind kind, qint32 pduOffset = 0);

    /// Why and where the file cannot be decoded; nothing when it can.
    [[nodiscard]] const std::optional<Finding> &failure() const { return m_failure; }
    /// The id of the header field whose value could not be read; 0 when there is none.
    [[nodiscard]] int failedField() const { return m_failedField; }
    [[nodiscard]] const QList<Finding> &warnings() const { return m_notes.warnings(); }
    [[nodiscard]] qint64 untoldWarnings() const { return m_notes.untoldWarnings(); }

    /// Where the PDU begins, how long its header is as far as it was read, and how many bytes
    /// follow it.
    [[nodiscard]] qint32 pduOffset() const { return m_pduOffset; }
    [[nodiscard]] qint32 headerLength() const { return m_headerEnd - m_pduOffset; }
    [[nodiscard]] qint32 bodyLength() const { return m_size - m_headerEnd; }
    /// The type byte of a mail file.
    [[nodiscard]] quint8 mmsType() const { return m_mmsType; }

    /// The parts of a multipart body as far as they were read.
    [[nodiscard]] const QList<WalkedPart> &parts() const { return m_parts; }

private:
    quint32 fail(quint32 result, const Finding &why);
    quint32 walkPrefix(QArray<char> &file);
    quint32 walkHeader(WSP_Stream &pdu, bool &bodyFollows);
    quint32 walkField(WSP_Stream &pdu, qint32 start, quint32 id);
    quint32 walkValue(WSP_Stream &pdu, int id);
    void forgetAddresses();
    void noteOrder(qint32 start, int id);
    quint32 walkBody(WSP_Stream &pdu);
    void walkSinglePart(const WSP_Stream &pdu);
    void checkPrefix(QArray<char> &file);
    void checkPresentation(const WSP_Stream &pdu);

    WalkNotes m_notes;
    FileKind m_kind = FileKind::Pdu;
    qint32 m_size = 0;
    qint32 m_pduOffset = 0;
    qint32 m_headerEnd = 0;
    quint8 m_mmsType = 0;
    MMS_HDR_S m_header;
    Msg_Field_Mask m_mask;
    std::array<int, 25> m_timesSeen{};
    QList<WalkedPart> m_parts;
    std::optional<Finding> m_failure;
    int m_failedField = 0;
};

} // namespace wmsg::cli
