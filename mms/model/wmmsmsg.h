// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmentry.h"
#include "core/wmfmmsg.h"
#include "mms/model/wmmsmultipart.h"
#include "qt2/qarray.h"
#include "qt2/qvaluelist.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <memory>

class Msg_Field_Mask;
class MsgFieldBase;
class WMMSContentType;
class WSP_Stream;
struct MMS_HDR_S;
struct MMS_MSG_BDY_T;
struct MMS_MSG_HDR_T;

/// A multimedia message: its header fields, which of them are present, and its body, one root part
/// whose sub-parts are the pieces of content. It is built by an application or decoded from a PDU
/// or a mail file, and encoded into one.
///
/// Every setter of a header field stores the value, marks the field as present and returns true;
/// every getter returns the stored value whether the field is present or not. A field is written
/// when it is present and its PDU type carries it. Codes are those of MMS encapsulation, 128 and
/// up.
///
/// A copy is a deep copy of the header; the bytes of the body's parts are shared as WMMSMultipart
/// says. A message belongs to one thread. Whole-message operations return a code of
/// mms/model/result_codes.h.
class WMSG_EXPORT WMMSMsg : public WMFMMsg {
public:
    /// A message in the stored form (0x87) with sender visibility shown, priority 1 and class
    /// personal.
    WMMSMsg();
    WMMSMsg(const WMMSMsg &other);
    WMMSMsg &operator=(const WMMSMsg &other);
    ~WMMSMsg() override;

    /// Gives the message a fresh header, a clear mask and the defaults of a new message. The body
    /// stays.
    void init();
    /// Drops the sub-parts of the body, all header values and all marks of presence. Unlike init()
    /// it sets no defaults and leaves lengths, attributes and ids as they are.
    void clear();

    /// Always MSG_TYPE_MMS.
    WMFM::MSG_TYPE_T getMsgType() const override;

    // Recipients. The setters of a list replace it, those of one entry append to it.
    QValueList<WMFMEntry> &getTo();
    bool setTo(const QValueList<WMFMEntry> &entries);
    bool setTo(const WMFMEntry &entry) override;
    QValueList<WMFMEntry> &getCc();
    bool setCc(const QValueList<WMFMEntry> &entries);
    bool setCc(const WMFMEntry &entry);
    QValueList<WMFMEntry> &getBcc();
    bool setBcc(const QValueList<WMFMEntry> &entries);
    bool setBcc(const WMFMEntry &entry);

    /// The sender. An invalid one asks the network to insert the address.
    WMFMEntry getFrom() override;
    bool setFrom(const WMFMEntry &entry);

    QString getSubject() const;
    bool setSubject(const QString &subject);
    /// Local time. A null date is written as 1970-01-01 00:00 UTC.
    QDateTime getDate() const;
    bool setDate(const QDateTime &date);

    WMMSContentType getContentType() const;
    /// Replaces the content type. The three application parameters of the old one are kept where
    /// the new one has none of that name.
    bool setContentType(const WMMSContentType &type);

    /// 0x80 send request, 0x81 send confirmation, 0x82 notification, 0x83 notify-response, 0x84
    /// retrieve confirmation, 0x85 acknowledge, 0x86 delivery indication, 0x87 stored message.
    unsigned char getPDUType() const;
    bool setPDUType(unsigned char type);
    QString getTransactionID() const;
    bool setTransactionID(const QString &id);
    /// Major version in the high half, minor in the low: 0x12 is 1.2.
    unsigned char getVersion() const;
    bool setVersion(unsigned char version);
    QString getMsgID() const;
    bool setMsgID(const QString &id);
    /// 128 personal, 129 advertisement, 130 informational, 131 auto.
    unsigned char getMsgClass() const;
    bool setMsgClass(unsigned char messageClass);
    /// Bytes, as announced by a notification.
    int getMsgSize() const;
    bool setMsgSize(int size);
    /// 128 low, 129 normal, 130 high.
    unsigned char getPriority() const;
    bool setPriority(unsigned char priority);
    /// Seconds from now; 2^32 - 1 (-1 in the header record) means that no expiry is written.
    unsigned int getExpiryTime() const;
    bool setExpiryTime(unsigned int seconds);
    /// An absolute local time; a null one is not written.
    QDateTime getDeliveryTime() const;
    bool setDeliveryTime(const QDateTime &time);
    bool getDeliveryReportNecessity() const;
    bool setDeliveryReportNecessity(bool wanted);
    bool getReadReportNecessity() const;
    bool setReadReportNecessity(bool wanted);
    bool getReportAllowedity() const;
    bool setReportAllowedity(bool allowed);
    /// True: the recipients see the sender.
    bool getSenderVisibility() const;
    bool setSenderVisibility(bool shown);
    /// Where a notified message is fetched.
    QString getContentLocation() const;
    bool setContentLocation(const QString &location);
    /// 128 is success.
    unsigned char getResponseStatus() const;
    bool setResponseStatus(unsigned char status);
    QString getResponseText() const;
    bool setResponseText(const QString &text);
    /// 128 expired, 129 retrieved, 130 rejected, 131 deferred, 132 unrecognised, ...
    unsigned char getMsgStatus() const;
    bool setMsgStatus(unsigned char status);

    // The application that a message is for, the one that answers go to, and what they need. They
    // are parameters of the content type and have no mark of presence.
    QString getAppID() const;
    bool setAppID(const QString &id);
    QString getReplyAppID() const;
    bool setReplyAppID(const QString &id);
    QString getAuxAppInfo() const;
    bool setAuxAppInfo(const QString &info);

    /// The root part; its sub-parts are the content of a multipart message.
    WMMSMultipart &getMultiParts() { return m_body; }
    const WMMSMultipart &getMultiParts() const { return m_body; }
    bool setMultiParts(const WMMSMultipart &root);

    // Plain attributes of the device, in no PDU.
    bool getAudioExistence() const { return m_audioExistence; }
    void setAudioExistence(bool exists) { m_audioExistence = exists; }
    bool getVideoExistence() const { return m_videoExistence; }
    void setVideoExistence(bool exists) { m_videoExistence = exists; }
    bool getAttachmentExistence() const { return m_attachmentExistence; }
    void setAttachmentExistence(bool exists) { m_attachmentExistence = exists; }
    unsigned char getUPIType() const { return m_upiType; }
    void setUPIType(unsigned char type) { m_upiType = type; }
    /// An MMS_MSGDB_TYPE_E; 255 means that the message is not classified.
    unsigned char getMMSType() const { return m_mmsType; }
    void setMMSType(unsigned char type) { m_mmsType = type; }

    /// Tells whether header field `id`, 1 to 24, is present.
    bool fieldIsPresent(unsigned char id) const;
    /// A new codec of header field `id`; null for an id that is no field's. The caller deletes it.
    static MsgFieldBase *selectField(unsigned char id);
    /// All header values, and which of them are present.
    [[nodiscard]] const MMS_HDR_S &header() const { return *m_header; }
    [[nodiscard]] const Msg_Field_Mask &fieldMask() const { return *m_mask; }

    /// Decodes a PDU into this message; the body too when `decodeBody` is set. The values are added
    /// to those that the message has; nothing is cleared. The parts of the body have bytes of their
    /// own. Returns 100, 104, 110, 111 or 113; on a failure the fields read so far stay.
    quint32 construct(QArray<char> &pdu, bool decodeBody);
    /// Reads a mail file and decodes it. Returns as above, and 102 or 112. The parts of the body
    /// share the one buffer that the file was read into.
    quint32 construct(const QString &mailFile, bool decodeBody);
    /// Encodes this message as a PDU of its type into `out`, which is resized to fit and may be, or
    /// share, the data of a part. The lengths are stored where the pointers are not null, but not
    /// for a message without a body: getMessageLength() tells those. Marks From, To, Cc, Bcc and
    /// Content-Type as present, and gives the root part the content type of the header. Returns
    /// 200, and never with bytes missing, or 202, 203, 207 or 209; on a failure `out` is undefined.
    quint32 packTo(QArray<char> &out, int *headerLength, int *bodyLength);
    /// Writes this message in the stored form as a mail file: first to `path` + ".tmp", which is
    /// synced and then renamed, so that a failure leaves an existing file as it was. The lengths
    /// are stored where the pointers are not null. Returns 300, 301, 302 or a failure of packTo().
    /// A failure leaves the temporary file in its place, one of packTo() the message in the stored
    /// form too.
    quint32 saveAs(const QString &path, int *headerLength, int *bodyLength);
    /// The lengths that packTo() would give, also without a body. False, with nothing set, when it
    /// fails.
    bool getMessageLength(int &headerLength, int &bodyLength);
    /// The bytes of header and body when the message was last decoded or encoded.
    [[nodiscard]] int headerLength() const { return m_headerLength; }
    [[nodiscard]] int bodyLength() const { return m_bodyLength; }

    /// The MMS_MSGDB_TYPE_E of a message of that content type. The parts of this message are looked
    /// at when `inspectParts` is set.
    int getMMSTypeByContentType(WMMSContentType contentType, bool inspectParts) const;
    /// The response status for a result of the MMS engine, which counts 1 to 25; 127 for any other.
    static unsigned char mapMmscResp(short engineCode);

    /// Tells whether the rights of all DRM parts allow to forward this message: see
    /// WMMSDrmUtil::canBeForwardedDrmCheck().
    bool canBeForwardedDrmCheck();

    /// @name The message store of the device
    /// The records are those of platform/engine/mms_msg_records.h. A record holds less than a
    /// message: of the header fields the addresses, subject, date, class, priority, size, expiry
    /// and delivery time, the two reports and the application ids; of a part its media type, ids
    /// and bytes. Parts below parts are kept as the bytes of their parent alone.
    /// @{

    /// Stores this message in `folder`: as a new one when the id behind `msgId` is 65535, which
    /// then becomes its id, and in the place of the message of that id otherwise. Subject and
    /// application ids are kept as Latin-1. Returns 300; 301 when the engine refuses; 209 when
    /// there are more than 40 parts.
    quint32 constructEngMsg(unsigned short *msgId, unsigned short folder);
    /// Adds a stored message to this one, which should be a new one; its body too when `readBody`
    /// is set, and then its application ids. Priority, response status, the lists of recipients,
    /// and subject and delivery time where there are any, are marked as present, other values only
    /// set. `header` may be null; else it is filled, the caller releases it with FreeMMSHdr of the
    /// engine, and its lists of recipients are cut to the first. The last argument is not used.
    /// Returns 100; 113 when the header cannot be read, 111 when the body cannot.
    ///
    /// The content type becomes that of a SMIL presentation for a message that has one, and stays
    /// as it is for any other; the whole type that was stored is with the root part. So a message
    /// that is to be sent or stored again gets it from there:
    ///
    ///     message.setContentType(message.getMultiParts().getContentType());
    quint32 constructWMMSMsg(unsigned short msgId, MMS_MSG_HDR_T *header, bool readBody,
                             unsigned short unused);
    /// The id of the message in the store that constructWMMSMsg() was last asked for; 65535 for
    /// none.
    [[nodiscard]] unsigned short engineMsgId() const { return m_engineMsgId; }

    /// Fills `header`, whatever it holds, with the values of this message. A delivery time counts
    /// only when it is still to come.
    void engDataInitHdr(MMS_MSG_HDR_T *header);
    /// Makes a body record without parts, and sets `body` to it; null without memory. The caller
    /// releases what it holds with FreeMMSBdy of the engine, and itself with free().
    void engDataInitMsgbdy(QString contentType, MMS_MSG_BDY_T **body);
    /// Appends the record of a part to `body` and counts it. Returns 200; 207 when all 40 records
    /// are used; 209 for null arguments, and without memory.
    quint32 engDataAppendParts(WMMSMultipart *part, MMS_MSG_BDY_T *body);

    /// @}

    /// Logs header fields, body and attributes at level 4. It marks From, and what is not empty of
    /// To, Cc, Bcc and Content-Type, as present.
    void printMsg();

private:
    enum class Bytes { Copied, Shared };

    WMSG_NO_EXPORT void copyFrom(const WMMSMsg &other);
    WMSG_NO_EXPORT quint32 decode(QArray<char> &pdu, bool decodeBody, Bytes bytes);
    WMSG_NO_EXPORT quint32 decodeHeader(WSP_Stream &stream, bool &bodyFollows);
    WMSG_NO_EXPORT quint32 decodeField(WSP_Stream &stream, quint32 id);
    WMSG_NO_EXPORT quint32 decodeBodyBehindHeader(QArray<char> &pdu, Bytes bytes);
    WMSG_NO_EXPORT void setSingleBody(const QArray<char> &received);
    WMSG_NO_EXPORT quint32 packHeaderAlone(QArray<char> &out);
    WMSG_NO_EXPORT quint32 packWithBody(QArray<char> &out);
    WMSG_NO_EXPORT quint32 encodeHeader(WSP_Stream &stream);
    WMSG_NO_EXPORT quint32 encodeField(WSP_Stream &stream, int id);
    WMSG_NO_EXPORT quint32 encodeBodyBehindHeader(QArray<char> &out);
    WMSG_NO_EXPORT bool encodeParts(QArray<char> &out, int allowance);
    WMSG_NO_EXPORT bool hasContent() const;
    WMSG_NO_EXPORT void engDataInitTexts(MMS_MSG_HDR_T *header) const;
    WMSG_NO_EXPORT bool appendAllParts(MMS_MSG_BDY_T *body, bool &hasProtectedPart);
    WMSG_NO_EXPORT void takeAddresses(const MMS_MSG_HDR_T &record);
    WMSG_NO_EXPORT void takeStatus(unsigned short msgId);
    WMSG_NO_EXPORT void takeValues(const MMS_MSG_HDR_T &record);
    WMSG_NO_EXPORT bool takeBody(unsigned short msgId, const MMS_MSG_HDR_T &record);

    std::unique_ptr<MMS_HDR_S> m_header;
    WMMSMultipart m_body;
    qint32 m_headerLength = 0;
    qint32 m_bodyLength = 0;
    std::unique_ptr<Msg_Field_Mask> m_mask;
    bool m_audioExistence = false;
    bool m_videoExistence = false;
    bool m_attachmentExistence = false;
    quint8 m_upiType = 12;
    quint8 m_mmsType = 255;
    qint32 m_msgDBID = -1;
    quint16 m_engineMsgId = 0xFFFF;
    qint32 m_reservedId = -1; ///< Kept and copied; nothing reads it.
};
