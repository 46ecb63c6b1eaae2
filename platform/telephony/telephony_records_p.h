// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

// frame   := length type number payload
//   length:  uint32, the bytes of the payload, kLongestPayload at most
//   type:    uint16, of RecordType; a reader skips frames of types that it does not know
//   number:  uint16, of a request and of the answer to it; 0 elsewhere
// payload := the fields of the record, in their order, no bytes between or behind them
//   text:    uint8 length, so many bytes of Latin-1, none of them 0
//   body:    uint16 length, so many bytes
//   bool:    uint8, 0 or 1
// All numbers are little-endian.

/// What the telephony library and the telephony daemon say to each other over a local stream
/// socket. Both sides use these records; docs/formats/telephony-records.md tells who says what
/// when, and shows the bytes.
namespace wmsg::telephony {

/// The version of all that stands here. A change that the other side would misread gets a new one.
inline constexpr quint32 kVersion = 1;
/// The longest payload that is read. A frame that announces more breaks the connection.
inline constexpr quint32 kLongestPayload = 66 * 1024;
inline constexpr int kHeadSize = 8;
inline constexpr int kClientIdSize = 16;
/// The longest body of a record. It leaves the two zeros that end a text room in 16 bits.
inline constexpr int kLongestBody = 65532;

/// On the wire: add at the end, never renumber.
enum class RecordType : quint16 {
    // from the client
    Hello = 1,
    Send = 2,
    RegisterPort = 3,
    DeregisterPort = 4,
    SetServiceCenter = 5,
    MessageAnswer = 6,
    ResultTaken = 7,
    // from the daemon
    Welcome = 129,
    Refused = 130,
    Done = 131,
    Result = 132,
    Message = 133,
    ModemState = 134,
};

/// What a body is. On the wire: add at the end, never renumber.
enum class Coding : quint8 {
    Ucs2 = 0, ///< text in UTF-16, to be sent as it is; every text that arrives but 8-bit ones
    Text8 = 1, ///< text in Latin-1; from the daemon alone
    Binary = 2,
    Gsm7 = 3, ///< text in UTF-16 that the default alphabet has; from the client alone
};

/// Why a request was refused. On the wire: add at the end, never renumber.
enum class Answer : quint32 {
    Ok = 0,
    PortTaken = 1, ///< another client has the port
    NotRegistered = 2, ///< this client does not have the port
    Invalid = 3, ///< a number that is no telephone number, a mode that is none
    NoModem = 4, ///< it cannot be done without a modem, and there is none
};

/// Opens a connection. The rest of another version than ours is not looked at.
struct Hello {
    static constexpr RecordType kType = RecordType::Hello;
    quint32 version = kVersion;
    QByteArray clientId; ///< kClientIdSize bytes; the same when a client connects again
    quint32 events = 0; ///< of TAPI_EVENTS_E
    QByteArray name;
};

/// A message to be sent. A daemon that has this client's message of this reference already does not
/// send it twice.
struct Send {
    static constexpr RecordType kType = RecordType::Send;
    qint32 reference = 0;
    Coding coding = Coding::Ucs2;
    bool hasPorts = false;
    quint16 destinationPort = 0;
    quint16 sourcePort = 0;
    QByteArray serviceCenter; ///< empty: the default one
    QByteArray destination;
    QByteArray body;
};

/// A request; Done answers it.
struct RegisterPort {
    static constexpr RecordType kType = RecordType::RegisterPort;
    quint16 port = 0;
    quint8 mode = 0; ///< of SMS_RECV_MODE_E
};

/// A request; Done answers it.
struct DeregisterPort {
    static constexpr RecordType kType = RecordType::DeregisterPort;
    quint16 port = 0;
};

/// A request; Done answers it.
struct SetServiceCenter {
    static constexpr RecordType kType = RecordType::SetServiceCenter;
    QByteArray number;
};

/// Tells whether a message has found somebody who keeps it.
struct MessageAnswer {
    static constexpr RecordType kType = RecordType::MessageAnswer;
    quint64 id = 0;
    bool isTaken = false;
};

/// Tells that a result was told, so that the daemon can forget it.
struct ResultTaken {
    static constexpr RecordType kType = RecordType::ResultTaken;
    qint32 reference = 0;
};

/// The first record of the daemon.
struct Welcome {
    static constexpr RecordType kType = RecordType::Welcome;
    quint32 version = kVersion;
    quint32 modem = 0; ///< of TAPI_MODEM_E
    QByteArray serviceCenter; ///< the default one, empty when none is known
};

/// In place of a welcome, before the daemon closes the connection.
struct Refused {
    static constexpr RecordType kType = RecordType::Refused;
    quint32 version = kVersion; ///< the daemon's
};

/// The answer to the request of the same number.
struct Done {
    static constexpr RecordType kType = RecordType::Done;
    Answer answer = Answer::Ok;
};

/// What became of a message.
struct Result {
    static constexpr RecordType kType = RecordType::Result;
    qint32 reference = 0;
    qint32 networkReference = 0;
    qint32 status = 0; ///< 0, a cause of the network or modem, or one of TAPI_SMS_STATUS_E
};

/// A message that arrived, whole. The client answers each with a MessageAnswer.
struct Message {
    static constexpr RecordType kType = RecordType::Message;
    quint64 id = 0; ///< never used for another message, also not by a later daemon
    Coding coding = Coding::Ucs2;
    bool hasPorts = false;
    quint16 destinationPort = 0;
    quint16 sourcePort = 0;
    QByteArray serviceCenter;
    QByteArray sender;
    qint64 time = 0; ///< seconds since 1970 UTC; 0 when the network told none
    QByteArray body;
};

/// A change of what Welcome told.
struct ModemState {
    static constexpr RecordType kType = RecordType::ModemState;
    quint32 modem = 0;
    QByteArray serviceCenter;
};

/// A frame that was read.
struct Frame {
    RecordType type = RecordType::Hello;
    quint16 number = 0;
    QByteArray payload;
};

/// toFrame returns the bytes of a record as one frame. Texts are cut to 255 bytes and end at their
/// first NUL, bodies are cut to kLongestBody.
template <typename Record>
[[nodiscard]] QByteArray toFrame(const Record &record, quint16 number = 0);

/// fromPayload reads the payload of a record of its type. It returns false when the bytes are no
/// such record: too few, too many, a number out of its range, half a unit of text. `record` is then
/// as good as new, or partly filled.
template <typename Record> [[nodiscard]] bool fromPayload(QByteArrayView payload, Record &record);

/// FrameReader cuts what arrives into frames, wherever it was split.
class FrameReader {
public:
    /// append takes bytes in, unless the reader is broken.
    void append(QByteArrayView bytes);

    /// next takes the next frame that is whole, and returns false when there is none yet.
    [[nodiscard]] bool next(Frame &frame);

    /// isBroken tells that a length was met that no frame has. Nothing was allocated for it, and
    /// nothing can be understood any more.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }

    /// isEmpty tells that no part of a frame waits for the rest.
    [[nodiscard]] bool isEmpty() const { return m_position == m_bytes.size(); }

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
    bool m_isBroken = false;
};

} // namespace wmsg::telephony
