// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/other_fields.h"
#include "tools/wmsg/walk_notes.h"

#include <WSP_Stream>

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>

#include <optional>

namespace wmsg::intake {
struct MediaType;
}

namespace wmsg::cli {

class WireReader;

/// What the push around a message says.
struct PushFacts {
    int transaction = 0;
    int type = 0; ///< 6, or 7 for a confirmed one.
    QString media; ///< Of what it carries.
    QString application; ///< Of the X-Wap-Application-Id; null when there is none.
};

/// Walks a message as networks write them: a PDU of any version, a push with one, or a push behind
/// the user data header of a short message. Where PduWalk tells what the library's codec makes of
/// the bytes, this tells what their writer meant: it names what the codec does not know, and goes
/// on behind what it cannot read.
class MessageWalk {
public:
    /// `sink` gets the ranges in order; together they are the file, each byte once.
    explicit MessageWalk(WalkNotes::Sink sink = {}) : m_notes(std::move(sink)) { }

    /// The bytes must stay until this has returned.
    void walk(QByteArrayView file);

    /// Where the PDU begins; behind the end when a push holds none.
    [[nodiscard]] qint32 pduOffset() const { return m_pduOffset; }
    [[nodiscard]] qint32 headerLength() const { return m_headerEnd - m_pduOffset; }
    [[nodiscard]] const std::optional<PushFacts> &push() const { return m_push; }
    /// The fields that the codec does not know. After kMostFields they are not kept.
    [[nodiscard]] const QList<OtherField> &otherFields() const { return m_otherFields; }
    /// The other fields, without the content type: a header that the codec reads.
    [[nodiscard]] const QByteArray &knownFields() const { return m_knownFields; }

    static constexpr qsizetype kMostFields = 200;

private:
    [[nodiscard]] QByteArrayView bytes(qint32 from, qint32 to) const;
    [[nodiscard]] int byteAt(qint32 pos) const;
    template <typename Meaning>
    void mark(qint32 end, const QString &field, Meaning meaning, bool isData = false)
    {
        m_notes.mark(end, field, meaning, isData);
    }

    qint32 findPdu();
    qint32 walkUserDataHeader();
    void walkPush(qint32 begin, qint32 end);
    void walkPushHeaders(WSP_Stream &stream, PushFacts &facts);

    void walkHeader();
    bool walkField(WSP_Stream &stream);
    bool walkTextField(WSP_Stream &stream, const QString &place, bool isHeader);
    bool walkKnown(WSP_Stream &stream, int id);
    [[nodiscard]] bool skipKnown(WSP_Stream &stream, int id) const;
    bool isReadByCodec(const WSP_Stream &stream, int id, qint32 end);
    bool walkOther(WSP_Stream &stream, int id);
    void walkContentType(WSP_Stream &stream);
    void keep(const OtherField &field);

    void walkBody(qint32 begin, const intake::MediaType &type);
    void walkMultipart(qint32 begin, qint32 end, const QString &path, int depth);
    bool walkPart(WSP_Stream &body, const QString &path, int depth);
    intake::MediaType walkPartHeaders(qint32 begin, qint32 end, const QString &place);
    bool walkPartHeader(WSP_Stream &stream, const QString &place);

    WalkNotes m_notes;
    QByteArrayView m_file;
    qint32 m_pduOffset = 0;
    qint32 m_headerEnd = 0;
    std::optional<PushFacts> m_push;
    QList<OtherField> m_otherFields;
    QByteArray m_knownFields;
};

} // namespace wmsg::cli
