// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// An example of each public class, run as tests. The reference shows what stands between two marks
// of a name; the marks of a family stand for all classes of its header.

#include <AM_MimeType>
#include <Field_Subject>
#include <MMS_ENG_Controller>
#include <MMS_HDR_S>
#include <MMS_MSG_HDR_T>
#include <MMS_UA_RegisterCmd>
#include <MMS_UA_SvProgCmd>
#include <MMS_UTIL_Common>
#include <MMS_UTIL_Conv>
#include <MMS_UTIL_Tool>
#include <Msg_Field_Mask>
#include <QArray>
#include <QCString>
#include <QCustomEvent>
#include <QValueList>
#include <QWSSocket>
#include <UTIL_MimeType>
#include <UTIL_TAPI_Device>
#include <UTIL_TimeConversion>
#include <WApplication>
#include <WMFMListener>
#include <WMFMSession>
#include <WMMSDrmUtil>
#include <WMMSMsg>
#include <WMMSSession>
#include <WSMSMsg>
#include <WSMSSession>
#include <WSP_Stream>
#include <mms/model/result_codes.h>
#include <platform/applog/applog.h>
#include <platform/telephony/tapi_sms.h>

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <memory>

namespace {

//! [WMFMListener]
// Hears what a session has to tell. Everything comes from the event loop.
class Inbox : public WMFMListener {
public:
    explicit Inbox(WMFMSession *session) : WMFMListener(session) { }

    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message); // it is ours
        senders << message->getFrom().getEntryVal();
    }
    void statusChanged(int id, WMFM::STATUS_T status) override { outcomes.insert(id, status); }
    void progress(int, int done, int total) override { qInfo("%d of %d bytes", done, total); }
    QString listenerName() const override { return "inbox"; }

    QStringList senders;
    QMap<int, int> outcomes;
};
//! [WMFMListener]

} // namespace

class TestClassExamples : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        appLogModuleStream = appLogDiscardStream();
        QVERIFY(m_folder.isValid());
        qputenv("UVO_EXTRA_SYS_DATA_PATH", m_folder.path().toLocal8Bit());
        qputenv("WMSG_TELEPHONY_SOCKET", m_folder.filePath("no-telephony").toLocal8Bit());
    }

    void names();
    void entries();
    void sessions();
    void multimediaMessage();
    void multimediaSession();
    void shortMessage();
    void shortMessageSession();
    void contentType();
    void part();
    void wire();
    void field();
    void mask();
    void record();
    void daemonRecord();
    void store();
    void storeTexts();
    void rights();
    void paths();
    void dump();
    void platform();
    void telephony();
    void localSocket();

private:
    QTemporaryDir m_folder;
};

void TestClassExamples::names()
{
    //! [QArray]
    QArray<char> bytes(QByteArrayView("Hello"));
    QArray<char> same = bytes; // shares the bytes: what is written to one is seen by both
    QArray<char> own = bytes.copy();
    bytes[0] = 'J';
    //! [QArray]
    QCOMPARE(same.at(0), 'J');
    QCOMPARE(own.at(0), 'H');
    //! [QCString]
    const QCString text("plain bytes"); // a QByteArray under its Qt 2 name
    //! [QCString]
    QCOMPARE(text.size(), 11);
    //! [QValueList]
    QValueList<WMFMEntry> recipients; // a QList under its Qt 2 name
    recipients.append(WMFMEntry(1, "+431234567"));
    //! [QValueList]
    QCOMPARE(recipients.size(), 1);
    //! [QCustomEvent]
    int payload = 42;
    const QCustomEvent event(QEvent::User + 1, &payload); // the payload stays the sender's
    const int *received = static_cast<int *>(event.data());
    //! [QCustomEvent]
    QCOMPARE(*received, 42);
}

void TestClassExamples::entries()
{
    //! [WMFMEntry]
    const WMFMEntry phone(1, "+431234567", "Ann"); // 1: a telephone number
    const WMFMEntry mail(0, "ann@example.com"); // 0: an e-mail address
    const QString shown = phone.getDisplayValue();
    //! [WMFMEntry]
    QVERIFY(phone.isValid() && mail.isValid());
    QCOMPARE(shown, "Ann");
}

void TestClassExamples::sessions()
{
    //! [WMFMSession]
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMFMSession *session = WMFMSession::open(WMFM::MSG_TYPE_MMS, status);
    Inbox inbox(session);
    session->setListener(&inbox, status); // one listener at a time

    const std::unique_ptr<WMFMMsg> message(WMFMMsg::factory(session->getMsgType()));
    message->setTo(WMFMEntry(1, "+431234567"));
    const int id = session->send(message.get(), status);
    if (id < 0) {
        qInfo("not sent: %d", status); // this one has no content yet
    }
    WMFMSession::close(session);
    //! [WMFMSession]
    QCOMPARE(id, -1);
    //! [WMFM]
    const bool isWrong = status == WMFM::STATUS_SEND_FAIL; // no address or no content
    //! [WMFM]
    QVERIFY(isWrong);
    //! [WMFMMsg]
    const std::unique_ptr<WMFMMsg> anyKind(WMFMMsg::factory(WMFM::MSG_TYPE_SMS));
    const bool isAccepted = anyKind->setTo(WMFMEntry(1, "+431234567"));
    //! [WMFMMsg]
    QVERIFY(isAccepted);
}

void TestClassExamples::multimediaMessage()
{
    const QString path = m_folder.filePath("message.mms");
    //! [WMMSMsg]
    WMMSContentType type;
    type.setMimeType("text/plain");
    WMMSMultipart text;
    text.setContentType(type);
    text.setData(QArray<char>(QByteArrayView("Greetings from the mountains")));

    type.setMimeType("application/vnd.wap.multipart.mixed");
    WMMSMsg message;
    message.setTo(WMFMEntry(0, "ann@example.com"));
    message.setSubject("On top");
    message.setContentType(type);
    message.getMultiParts().setSubMmsMultipart({text});
    int headerLength = 0;
    int bodyLength = 0;
    const bool isSaved = message.saveAs(path, &headerLength, &bodyLength) == MMS_SAVE_OK;

    WMMSMsg read;
    const bool isRead = read.construct(path, true) == MMS_DECODE_OK;
    //! [WMMSMsg]
    QVERIFY(isSaved && isRead);
    QCOMPARE(read.getSubject(), "On top");
}

void TestClassExamples::multimediaSession()
{
    //! [WMMSSession]
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status); // a daemon that is not there shows later, in the listener
    Inbox inbox(&session);
    session.setListener(&inbox, status);
    // Messages to this application alone. The outcome comes under the number that is returned.
    const int registration = session.registerAppID("example.greetings", status);
    //! [WMMSSession]
    QVERIFY(registration >= 0);
    QCOMPARE(session.getMsgType(), WMFM::MSG_TYPE_MMS);
}

void TestClassExamples::shortMessage()
{
    //! [WSMSMsg]
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "+431234567"));
    message.setBody("Dinner is ready");
    message.setPortNumber(9000, 9001); // to an application: destination and source
    QString text;
    const bool isText = message.getBody(text);
    //! [WSMSMsg]
    QVERIFY(isText);
    QCOMPARE(text, "Dinner is ready");
}

void TestClassExamples::shortMessageSession()
{
    //! [WSMSSession]
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WSMSSession session(status); // STATUS_FAIL: there is no telephony daemon
    if (status == WMFM::STATUS_OK) {
        session.registerPortNumber(9000, SMS_RECV_MODE_PORTS); // messages to this port alone
    }
    //! [WSMSSession]
    QCOMPARE(status, WMFM::STATUS_FAIL);
    //! [WSMSClient]
    // A session has a client of its own; applications do not need the class.
    const int port = session.getRegisteredPort();
    //! [WSMSClient]
    QCOMPARE(port, 0);
}

void TestClassExamples::contentType()
{
    //! [WMMSContentType]
    WMMSContentType type;
    type.setMimeType("text/plain");
    type.setParam("Name", "greeting.txt");
    const QString text = type.toString();
    const int number = WMMSContentType::getMimeID("image/jpeg"); // on the wire
    //! [WMMSContentType]
    QVERIFY(text.startsWith("text/plain"));
    QCOMPARE(number, 0x1E);
}

void TestClassExamples::part()
{
    const QString path = m_folder.filePath("sunset.jpg");
    //! [WMMSMultipart]
    WMMSContentType type;
    type.setMimeType("image/jpeg");
    WMMSMultipart picture;
    picture.setContentType(type);
    picture.setContentID("<sunset>"); // a presentation names it cid:sunset
    picture.setContentLocation("sunset.jpg");
    picture.setData(QArray<char>(QByteArrayView("\xFF\xD8\xFF")));
    picture.setLocalFileName(path);
    const bool isSaved = picture.saveFile();
    //! [WMMSMultipart]
    QVERIFY(isSaved);
    QCOMPARE(QFileInfo(path).size(), 3);
}

void TestClassExamples::wire()
{
    //! [WSP_Stream]
    char room[8] = {};
    WSP_Stream writing(room, sizeof room);
    writing.writeUintvar(300);
    writing.writeTextString("hi");

    WSP_Stream reading(room, writing.pos);
    quint32 number = 0;
    QString text;
    const bool isRead = reading.readUintvar(number) == 1 && reading.readTextString(text) == 1;
    //! [WSP_Stream]
    QVERIFY(isRead);
    QCOMPARE(number, 300U);
    QCOMPARE(text, "hi");
}

void TestClassExamples::field()
{
    //! [MsgFieldBase]
    // Each header field has a codec, which reads and writes one member of the header record.
    MMS_HDR_S header;
    header.subject = "On top";
    char room[64] = {};
    WSP_Stream stream(room, sizeof room);
    Field_Subject subject;
    const bool isWritten = subject.write(stream, &header) == 1;
    // By its number: the caller deletes it.
    const std::unique_ptr<MsgFieldBase> same(WMMSMsg::selectField(MMS_FIELD_SUBJECT));
    //! [MsgFieldBase]
    QVERIFY(isWritten && same);
    //! [MMS_HDR_S]
    WMMSMsg message;
    message.setSubject("On top");
    const MMS_HDR_S &values = message.header(); // all values, whether present or not
    const QString text = values.subject;
    //! [MMS_HDR_S]
    QCOMPARE(text, "On top");
}

void TestClassExamples::mask()
{
    //! [Msg_Field_Mask]
    WMMSMsg message;
    message.setSubject("On top");
    const Msg_Field_Mask &present = message.fieldMask();
    const bool hasSubject = present.getMask(MMS_FIELD_SUBJECT) == 1;
    const bool hasExpiry = present.getMask(MMS_FIELD_EXPIRY) == 1;
    //! [Msg_Field_Mask]
    QVERIFY(hasSubject);
    QVERIFY(!hasExpiry);
}

void TestClassExamples::record()
{
    //! [MMS_UA_Cmd]
    // What a session writes to the proxy daemon: a request with a number, and what it is about.
    MMS_UA_RegisterCmd command;
    command.setRequestId(1);
    command.setAppId("example.greetings");
    QWSSocket notConnected;
    command.write(&notConnected); // whether it arrives is not told here
    //! [MMS_UA_Cmd]
    QCOMPARE(command.getAppId(), "example.greetings");
    //! [MMS_UA_CmdItem]
    // The reader makes an empty record of the type that it read, and fills it as bytes arrive.
    const std::unique_ptr<MMS_UA_CmdItem> item(MMS_UA_Cmd::factory(MMS_UA_CMD_REGISTER));
    const bool isWhole = item->read(&notConnected) == 1;
    //! [MMS_UA_CmdItem]
    QVERIFY(!isWhole);
}

void TestClassExamples::daemonRecord()
{
    //! [MMS_UA_SvCmd]
    // What the proxy daemon tells: how far a request is, for example.
    MMS_UA_SvProgCmd progress;
    progress.setRequestId(1);
    progress.setValue1(5000); // bytes done
    progress.setValue2(20000); // of so many
    //! [MMS_UA_SvCmd]
    QCOMPARE(progress.type(), MMS_UA_SVCMD_PROGRESS);
}

void TestClassExamples::store()
{
    //! [MMS_ENG_Controller]
    WMMSMsg message;
    message.setSubject("A draft");
    unsigned short id = MMS_ENG_INVALID_ID; // makes a new one
    const bool isKept = message.constructEngMsg(&id, MMS_ENG_DRAFTS) == MMS_SAVE_OK;
    QList<unsigned short> drafts;
    MMS_ENG_Controller::Instance()->ListMMS(MMS_ENG_DRAFTS, &drafts);
    //! [MMS_ENG_Controller]
    QVERIFY(isKept);
    QCOMPARE(drafts, QList<unsigned short>{id});
    //! [MMS_MSG_HDR_T]
    MMS_MSG_HDR_T header = {};
    WMMSMsg stored;
    const bool isRead = stored.constructWMMSMsg(id, &header, true, 0) == MMS_DECODE_OK;
    MMS_ENG_Controller::Instance()->FreeMMSHdr(&header); // what it points to is ours to free
    //! [MMS_MSG_HDR_T]
    QVERIFY(isRead);
    QCOMPARE(stored.getSubject(), "A draft");
    //! [MMS_MSG_BDY_T]
    MMS_MSG_BDY_T *body = nullptr;
    message.engDataInitMsgbdy("text/plain", &body);
    MMS_ENG_Controller::Instance()->FreeMMSBdy(body); // what it holds
    free(body); // and itself
    //! [MMS_MSG_BDY_T]
    QVERIFY(body);
}

void TestClassExamples::storeTexts()
{
    //! [MMS_UTIL_Conv]
    unsigned short units[6] = {};
    MMS_UTIL_Conv::qwcsncpy(units, "Hello", 6);
    const unsigned int length = MMS_UTIL_Conv::wcsnlen(units, 6);
    //! [MMS_UTIL_Conv]
    QCOMPARE(length, 5U);
}

void TestClassExamples::rights()
{
    const QString path = m_folder.filePath("note.txt");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("plain") == 5);
    file.close();
    //! [WMMSDrmUtil]
    const bool isProtected = WMMSDrmUtil::MMS_IsDRMFile(path);
    const bool mayBeSent = WMMSDrmUtil::canBeSentDrmCheck(path);
    //! [WMMSDrmUtil]
    QVERIFY(!isProtected);
    QVERIFY(mayBeSent);
}

void TestClassExamples::paths()
{
    //! [MMS_UTIL_Common]
    const WMFMEntry entry(1, "+431234567");
    const QString text = MMS_UTIL_Common::entryToString(entry);
    const std::unique_ptr<WMFMEntry> back(MMS_UTIL_Common::stringToEntry(text));
    const QString extension = MMS_UTIL_Common::getExtName("sunset.jpg");
    //! [MMS_UTIL_Common]
    QCOMPARE(back->getEntryVal(), "+431234567");
    QCOMPARE(extension, "jpg");
}

void TestClassExamples::dump()
{
    //! [MMS_UTIL_Tool]
    const unsigned char pdu[] = {0x8C, 0x80, 0x8D, 0x90};
    MMS_UTIL_Tool::logOut(pdu, sizeof pdu); // as hex, into the log
    //! [MMS_UTIL_Tool]
}

void TestClassExamples::platform()
{
    //! [AM_MimeType]
    const QStringList extensions = AM_MimeType::instance()->getExtListByMimeId("image/jpeg");
    //! [AM_MimeType]
    QVERIFY(extensions.contains("jpg"));
    //! [UTIL_MimeType]
    const QStringList sounds =
        UTIL_MimeType::queryMpSupportedExtensions(UTIL_MimeType::MIME_TYPE_AUDIO);
    //! [UTIL_MimeType]
    QVERIFY(!sounds.isEmpty());
    //! [UTIL_TimeConversion]
    const QDateTime local = UTIL_TimeConversion::fromUTC(0);
    const long seconds = UTIL_TimeConversion::toUTC(local);
    //! [UTIL_TimeConversion]
    QCOMPARE(seconds, 0L);
    //! [WApplication]
    const QString name = WApplication::getAppName();
    //! [WApplication]
    QVERIFY(!name.isEmpty());
}

void TestClassExamples::telephony()
{
    //! [UTIL_TAPI_Device]
    UTIL_TAPI_Device device;
    QObject::connect(&device, &UTIL_TAPI_Device::TAPI_SendEvent, &device,
                     [](UTIL_TAPI_Event *event) { qInfo("event %d", event->GetType()); });
    const int handle = TAPI_CLIENT_Init("example", TAPI_EVENTS_SMS);
    const bool isHeard = handle >= 0 && device.attach(handle); // false: no telephony daemon
    //! [UTIL_TAPI_Device]
    QVERIFY(!isHeard);
    //! [UTIL_TAPI_Event]
    const TAPI_MODEM_S modem = {TAPI_MODEM_READY};
    UTIL_TAPI_Event event(TAPI_EVENT_MODEM,
                          QByteArray(reinterpret_cast<const char *>(&modem), sizeof modem));
    event.SetTaken(false); // the telephone keeps what nobody took
    //! [UTIL_TAPI_Event]
    QCOMPARE(event.GetRawSize(), 4);
}

void TestClassExamples::localSocket()
{
    //! [QWSSocket]
    QWSSocket socket;
    bool isRefused = false;
    QObject::connect(&socket, qOverload<int>(&QWSSocket::error), &socket,
                     [&isRefused](int) { isRefused = true; });
    socket.connectToLocalFile("/nobody/listens/here"); // shows later, from the event loop
    //! [QWSSocket]
    QVERIFY(!isRefused);
    QTRY_VERIFY(isRefused);
}

QTEST_GUILESS_MAIN(TestClassExamples)
#include "tst_class_examples.moc"
