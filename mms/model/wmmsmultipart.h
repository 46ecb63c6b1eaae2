// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/wmmscontenttype.h"
#include "qt2/qarray.h"
#include "qt2/qvaluelist.h"
#include "wmsg_export.h"

#include <QtCore/QMap>
#include <QtCore/QString>

#include <memory>

class WSP_Stream;
struct MMS_MSG_BDY_T;
struct MMS_MSG_PART_T;

/// One body part of a multimedia message: a typed piece of content with its identifiers, its bytes,
/// the name of the file that backs them, and, for a part that is itself a multipart, its sub-parts.
/// The body of a message is the sub-part list of one root part.
///
/// A null string is a value that was never set; it is not an empty one, and the location depends on
/// the difference. Parts are cheap to copy: a copy **shares the bytes** of the data array with its
/// source (writing through one is seen by both, see QArray) and the list of sub-parts until one of
/// them changes it. A part and its copies belong to one thread.
class WMSG_EXPORT WMMSMultipart {
public:
    /// No type, no identifiers, no bytes and no list of sub-parts.
    WMMSMultipart();
    WMMSMultipart(const WMMSMultipart &other);
    WMMSMultipart(WMMSMultipart &&other) noexcept;
    WMMSMultipart &operator=(const WMMSMultipart &other);
    WMMSMultipart &operator=(WMMSMultipart &&other) noexcept;
    ~WMMSMultipart();

    /// The content type, for changing it in place; that leaves the location as it is.
    WMMSContentType &getContentType() { return m_contentType; }
    const WMMSContentType &getContentType() const { return m_contentType; }
    /// Sets the content type, and the location when that is null: see setContentLocationIfNull().
    void setContentType(const WMMSContentType &type);

    /// The value of the Content-ID header as it was received, with or without angle brackets.
    QString getContentID() const { return m_contentID; }
    /// Sets the content id, and the location when that is null: see setContentLocationIfNull().
    void setContentID(const QString &id);

    QString getContentLocation() const { return m_contentLocation; }
    /// Sets the location. A null one calls setContentLocationIfNull() instead.
    void setContentLocation(const QString &location);
    /// Makes the location the "name" parameter of the content type, or the content id when there is
    /// none. It replaces a location that is not null too.
    void setContentLocationIfNull();

    QArray<char> &getData() { return m_data; }
    const QArray<char> &getData() const { return m_data; }
    /// Takes `bytes` as the data, sharing them. A trailing 0 byte of "text/plain" and
    /// "application/smil" is dropped: such a part gets bytes of its own.
    void setData(const QArray<char> &bytes);

    /// The absolute path of the file that holds the part's bytes; null when there is none.
    QString getLocalFileName() const { return m_localFileName; }
    /// Always true.
    bool setLocalFileName(const QString &name);
    /// Forgets the file names of this part and of all parts below it; bytes and files stay.
    void clearLocalFileName();
    /// Writes the data into the local file, replacing its content. False when it cannot be opened
    /// or written.
    bool saveFile();
    /// Replaces the data by the content of the local file, in memory of its own. False when no file
    /// name is set or it cannot be opened; the data then stays. The argument is not used.
    bool readFile(bool reload);

    /// The sub-parts, for changing them in place. A part without a list gets an empty one.
    QValueList<WMMSMultipart> &getSubMmsMultipartList();
    /// Replaces the sub-parts.
    void setSubMmsMultipart(const QValueList<WMMSMultipart> &parts);
    /// Gives a part without a list of sub-parts an empty one.
    void creatSubList();
    /// The list of sub-parts; null for a part without one. Owned by the part.
    [[nodiscard]] const QValueList<WMMSMultipart> *subParts() const { return m_subParts.get(); }
    /// Drops the list of sub-parts and nothing else.
    void clear();

    /// The reference by which a presentation addresses this part: the content id, or the location
    /// when the id is empty, without "cid:" and angle brackets.
    QString getSrc() const;
    /// From getSrc() to getLocalFileName() of each sub-part; of equal references the last counts.
    QMap<QString, QString> getSrcToLocalNameMap() const;
    /// True for the media types of DRM messages, content and rights objects.
    bool isDrmObj() const;
    /// True when the content type's "userPrompt" parameter is "yes".
    bool isUPI() const;
    /// True for a part without a content type, and for one without bytes and without sub-parts.
    bool isEmpty() const;
    /// Tells whether the part is of a kind of media: "image", "audio", "video" or any main type, in
    /// any case. Vector images are no images; "text/x-imelody" and "application/vnd.smaf" are
    /// audio. A DRM part is of the kind of what is inside it; see WMMSDrmUtil.
    bool isMediaType(const QString &kind) const;
    /// The bytes that the part takes encoded, at most, as long as its headers take up to 512: data
    /// and 512 for this part and for each part below it. It stops at 2^31 - 1.
    int getApproxSize() const;
    /// A proposed absolute file name for saving this part in `dir`, with an extension that fits its
    /// type; for a DRM part, that of WMMSDrmUtil::getSuggestLocalFileName().
    QString getSuggestLocalFileName(const QString &dir) const;

    /// Logs type, identifiers and size, or the parts below, at level 4.
    void printInfo() const;

    /// Decodes a multipart body that begins `offset` bytes into `bytes` and appends its parts to
    /// the sub-part list. UTF-16 texts become UTF-8; nested multiparts are decoded too, sixteen
    /// levels deep. The parts have bytes of their own. Returns false at the first part that cannot
    /// be read; the parts before it stay.
    bool construct(QArray<char> &bytes, int offset);
    /// Encodes the sub-parts as a multipart body behind the first `offset` bytes of `out`, which
    /// ends with the body then. A part without sub-parts becomes one entry without a count.
    /// Sub-parts that have parts of their own are encoded too, and their data is empty afterwards;
    /// copies keep theirs. `out` may be, or share, the data of a part. Returns false, `out` then
    /// undefined, when there is no content type, a part has none, or the room does not do: it is
    /// getApproxSize(), offset included. Headers beyond 5120 bytes, and a content type beyond 1024,
    /// are left out without notice.
    bool exportTo(QArray<char> &out, int offset);

    /// Takes the content type of a body record of the message store, and appends a part for each of
    /// its part records to the sub-part list. Texts become UTF-8: those in memory from wide
    /// strings, those in files from UTF-16. A record whose file cannot be read is left out. The
    /// local file name of this part becomes the path of the last file. Returns false, with nothing
    /// changed, when there is no record or it has no array of parts; also false when there is no
    /// memory, and the parts so far stay then.
    bool constructWMMSBdy(MMS_MSG_BDY_T *body);
    /// What getApproxSize() was when constructWMMSBdy() had filled this part; a copy has none.
    [[nodiscard]] int storedApproxSize() const { return m_approxSize; }

private:
    friend class WMMSMsg;
    class BodyReader;
    class BodyWriter;

    /// Data, and `allowance` for the headers of this part and of each part below it.
    WMSG_NO_EXPORT qint64 sizeWith(qint64 allowance) const;
    /// Tells whether `bytes` is, or shares memory with, the data of this part or of one below it.
    WMSG_NO_EXPORT bool holds(const QArray<char> &bytes) const;
    WMSG_NO_EXPORT QString suggestedExtension(const QString &name) const;
    /// The type of what is inside the container of a DRM part, as it is written there.
    WMSG_NO_EXPORT WMMSContentType protectedContentType() const;
    WMSG_NO_EXPORT QString suggestProtectedFileName(const QString &dir) const;

    enum class Record { Taken, LeftOut, NoMemory };
    WMSG_NO_EXPORT Record takeRecord(const MMS_MSG_PART_T &record, WMMSMultipart &part);
    WMSG_NO_EXPORT static bool takeMemory(const MMS_MSG_PART_T &record, WMMSMultipart &part);
    WMSG_NO_EXPORT Record takeFile(const MMS_MSG_PART_T &record, WMMSMultipart &part);

    WMMSContentType m_contentType;
    std::unique_ptr<QValueList<WMMSMultipart>> m_subParts;
    QString m_contentLocation;
    QString m_contentID;
    QArray<char> m_data;
    QString m_localFileName;
    qint32 m_approxSize = 0;
};

Q_DECLARE_TYPEINFO(WMMSMultipart, Q_RELOCATABLE_TYPE);
