// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// What messages ask of the engine, and what they make of its answers. The engine here is the test's
// own: it answers what a row says.

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"
#include "tests/support/refused_memory.h"

#include <QtTest/QtTest>

#include <climits>
#include <cstdlib>
#include <functional>

namespace {

/// What the engine is asked, and what it answers.
struct Engine {
    QStringList calls;
    int createResult = 1;
    int updateResult = 1;
    int headerResult = 1;
    int bodyResult = 1;
    int statusResult = 1;
    unsigned short newId = 7;
    std::function<void(MMS_MSG_HDR_T *)> fillHeader;
    std::function<void(MMS_MSG_BDY_T *)> fillBody;
    std::function<void(MMS_MOMT_STATUS_T *)> fillStatus;
    QString storedHeader;
    QString storedBody;
};

Engine engine;

void keep(const MMS_MSG_HDR_T *header, const MMS_MSG_BDY_T *body)
{
    engine.storedHeader = static_cast<const HeaderRecord *>(header)->shown();
    engine.storedBody = static_cast<const BodyRecord *>(body)->shown();
}

bool isZero(const void *record, size_t size)
{
    const auto *bytes = static_cast<const char *>(record);
    return std::all_of(bytes, bytes + size, [](char byte) { return byte == 0; });
}

} // namespace

MMS_ENG_Controller *MMS_ENG_Controller::Instance()
{
    alignas(MMS_ENG_Controller) static char memory[sizeof(MMS_ENG_Controller)];
    return reinterpret_cast<MMS_ENG_Controller *>(memory);
}

int MMS_ENG_Controller::CreateMMS(unsigned short folder, unsigned short *msgId,
                                  const MMS_MSG_HDR_T *header, const MMS_MSG_BDY_T *body)
{
    engine.calls += QString("create in %1").arg(folder);
    keep(header, body);
    *msgId = engine.newId;
    return engine.createResult;
}

int MMS_ENG_Controller::UpdateMMS(unsigned short folder, unsigned short msgId,
                                  const MMS_MSG_HDR_T *header, const MMS_MSG_BDY_T *body)
{
    engine.calls += QString("update %1 in %2").arg(msgId).arg(folder);
    keep(header, body);
    return engine.updateResult;
}

int MMS_ENG_Controller::ReadMMSHdr(unsigned short msgId, MMS_MSG_HDR_T *header)
{
    engine.calls += QString("header %1%2")
                        .arg(msgId)
                        .arg(QLatin1String(isZero(header, sizeof *header) ? "" : ", not zero"));
    if (engine.fillHeader) {
        engine.fillHeader(header);
    }
    return engine.headerResult;
}

int MMS_ENG_Controller::ReadMMSBody(unsigned short msgId, MMS_MSG_BDY_T *body)
{
    engine.calls += QString("body %1").arg(msgId);
    if (engine.fillBody) {
        engine.fillBody(body);
    }
    return engine.bodyResult;
}

int MMS_ENG_Controller::ReadMMSMoMtStatus(unsigned short msgId, MMS_MOMT_STATUS_T *status)
{
    engine.calls += QString("status %1%2")
                        .arg(msgId)
                        .arg(QLatin1String(isZero(status, sizeof *status) ? "" : ", not zero"));
    if (engine.fillStatus) {
        engine.fillStatus(status);
    }
    return engine.statusResult;
}

int MMS_ENG_Controller::FreeMMSHdr(MMS_MSG_HDR_T *header)
{
    engine.calls += "free header";
    for (void *text :
         {static_cast<void *>(header->from), static_cast<void *>(header->to),
          static_cast<void *>(header->cc), static_cast<void *>(header->bcc),
          static_cast<void *>(header->subject), static_cast<void *>(header->presentation),
          static_cast<void *>(header->appId), static_cast<void *>(header->replyAppId),
          static_cast<void *>(header->auxAppInfo)}) {
        free(text);
    }
    *header = {};
    return 1;
}

int MMS_ENG_Controller::FreeMMSBdy(MMS_MSG_BDY_T *body)
{
    if (!isZero(body, sizeof *body)) {
        engine.calls += "free body";
    }
    for (unsigned int i = 0; body->parts && i < MMS_ENG_MAX_PARTS; ++i) {
        const MMS_MSG_PART_T &part = body->parts[i];
        for (char *text : {part.mimeType, part.contentId, part.contentLocation, part.fileName,
                           part.headerText}) {
            free(text);
        }
        free(part.data);
        free(part.dataFile);
    }
    free(body->parts);
    free(body->contentType);
    *body = {};
    return 1;
}

class TestWmmsmsgEngineCalls : public QObject {
    Q_OBJECT

private slots:
    void init() { engine = Engine(); }

    void create();
    void update_data();
    void update();
    void refusals();
    void tooManyParts();
    void noMemory();
    void logOfStoring();
    void forwardable_data();
    void forwardable();

    void invalidId();
    void headerRefused();
    void bodyRefused();
    void bodyWithoutParts();
    void calls();
    void ownRecord();
    void marks();
    void addresses();
    void presentation_data();
    void presentation();
    void status_data();
    void status();
    void codes_data();
    void codes();
    void values();
    void subject_data();
    void subject();
    void deliveryTime_data();
    void deliveryTime();
    void applications();
    void classification();
    void logOfReading();
};

namespace {

/// The header of what the engine was given, one line of it.
QString storedLine(const QString &name)
{
    for (const QString &line : engine.storedHeader.split('\n')) {
        if (line.startsWith(name + ' ')) {
            return line;
        }
    }
    return "none";
}

QString idsOf(const WMMSMsg &message)
{
    QStringList ids;
    for (int id = 1; id <= 24; ++id) {
        if (message.fieldIsPresent(static_cast<unsigned char>(id))) {
            ids += QString::number(id);
        }
    }
    return ids.join(' ');
}

WMMSMsg single(const QString &mimeType)
{
    WMMSMsg message;
    message.setContentType(typeOf(mimeType));
    message.setMultiParts(partOf(mimeType, "x"));
    return message;
}

/// A body for the engine to hand out.
void fillTwoParts(MMS_MSG_BDY_T *body)
{
    BodyRecord record("application/vnd.wap.multipart.mixed");
    record.add("image/gif", "1");
    record.add("image/png", "2");
    *body = record;
    static_cast<MMS_MSG_BDY_T &>(record) = {}; // given away
}

} // namespace

void TestWmmsmsgEngineCalls::create()
{
    unsigned short id = 65535;
    QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 300U);
    QCOMPARE(id, static_cast<unsigned short>(7));
    QCOMPARE(engine.calls, (QStringList{"create in 4", "free header", "free body"}));
    QCOMPARE(engine.storedBody,
             QString("\"image/gif \"\n\"image/gif\" - - - "
                     "\"Content-Type:image/gif;\" 78"));
    engine = Engine();
    QCOMPARE(single("image/gif").constructEngMsg(nullptr, 4), 300U); // nobody asks for the id
    QCOMPARE(engine.calls.first(), "create in 4");
}

void TestWmmsmsgEngineCalls::update_data()
{
    QTest::addColumn<unsigned short>("id");
    QTest::newRow("lowest") << static_cast<unsigned short>(0);
    QTest::newRow("some") << static_cast<unsigned short>(300);
    QTest::newRow("highest") << static_cast<unsigned short>(65534);
}

void TestWmmsmsgEngineCalls::update()
{
    QFETCH(unsigned short, id);
    unsigned short given = id;
    QCOMPARE(single("image/gif").constructEngMsg(&given, 2), 300U);
    QCOMPARE(given, id);
    QCOMPARE(engine.calls,
             (QStringList{QString("update %1 in 2").arg(id), "free header", "free body"}));
}

void TestWmmsmsgEngineCalls::refusals()
{
    for (const int result : {0, 2, -1}) {
        engine = Engine();
        engine.createResult = engine.updateResult = result;
        unsigned short id = 65535;
        QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 301U);
        id = 3;
        QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 301U);
        QCOMPARE(engine.calls,
                 (QStringList{"create in 4", "free header", "free body", "update 3 in 4",
                              "free header", "free body"}));
    }
}

void TestWmmsmsgEngineCalls::tooManyParts()
{
    for (const int count : {40, 41}) {
        engine = Engine();
        WMMSMsg message;
        message.setContentType(typeOf(kMixed));
        message.getMultiParts().setSubMmsMultipart(
            QList<WMMSMultipart>(count, partOf("image/gif", "x")));
        unsigned short id = 65535;
        QCOMPARE(message.constructEngMsg(&id, 4), count == 40 ? 300U : 209U);
        QCOMPARE(engine.calls,
                 count == 40 ? (QStringList{"create in 4", "free header", "free body"})
                             : (QStringList{"free header", "free body"}));
        QCOMPARE(id, static_cast<unsigned short>(count == 40 ? 7 : 65535));
    }
}

// An engine is not given a body that is not there.
void TestWmmsmsgEngineCalls::noMemory()
{
    unsigned short id = 65535;
    {
        const RefusedMemory none(1, sizeof(MMS_MSG_BDY_T));
        QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 209U);
    }
    QCOMPARE(engine.calls, QStringList{"free header"});
    engine.calls.clear();
    {
        const RefusedMemory none(MMS_ENG_MAX_PARTS, sizeof(MMS_MSG_PART_T));
        QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 209U);
    }
    QCOMPARE(engine.calls, (QStringList{"free header", "free body"}));
    QCOMPARE(id, static_cast<unsigned short>(65535));
}

void TestWmmsmsgEngineCalls::logOfStoring()
{
    WMMSMsg message;
    message.setContentType(typeOf(kMixed, {{"a", "b"}}));
    message.getMultiParts() = parentOf(kMixed, {partOf("Image/GIF", "x")});
    unsigned short id = 65535;
    LogCapture log;
    QCOMPARE(message.constructEngMsg(&id, 4), 300U);
    QCOMPARE(log.lines(),
             (QStringList{"Setting the delivery time to value = -1",
                          "mimetypeStr after toStringWithQuotes=" + kMixed + " ;a=\"b\"",
                          "------------------------------------", "contentType:  " + kMixed + " ",
                          "------------------------------------", "contentType:  Image/GIF ",
                          "dataLen:  1", " The content type is = image/gif",
                          "ContentId = ", "getContentLocation= \n", "Localfilename= \n",
                          "part Hdr= Content-Type:image/gif;", "part size is 1\n", "msgID=7"}));
    // The root part itself is not announced.
    log.clear();
    QCOMPARE(single("image/gif").constructEngMsg(&id, 4), 300U);
    QVERIFY(!log.text().contains(" The content type is = "));
}

void TestWmmsmsgEngineCalls::forwardable_data()
{
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QString>("word");
    const auto row = [](const char *name, const QStringList &types, int word) {
        QTest::newRow(name) << types << QString("forwardable %1").arg(word);
    };
    row("plain", {"image/gif", "text/plain"}, 1);
    row("message", {"image/gif", "Application/VND.oma.drm.message"}, 0);
    row("content", {"application/vnd.oma.drm.content", "image/gif"}, 0);
    row("longer name", {"application/vnd.oma.drm.contents"}, 0);
    row("rights", {"application/vnd.oma.drm.rights+xml"}, 1);
}

void TestWmmsmsgEngineCalls::forwardable()
{
    QFETCH(QStringList, types);
    WMMSMsg message;
    for (const QString &type : types) {
        message.getMultiParts().getSubMmsMultipartList().append(partOf(type, "x"));
    }
    unsigned short id = 65535;
    QCOMPARE(message.constructEngMsg(&id, 4), 300U);
    QTEST(storedLine("forwardable"), "word");
    // A protected part counts among several and not alone.
    QCOMPARE(single("application/vnd.oma.drm.message").constructEngMsg(&id, 4), 300U);
    QCOMPARE(storedLine("forwardable"), "forwardable 1");
}

void TestWmmsmsgEngineCalls::invalidId()
{
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.constructWMMSMsg(65535, nullptr, true, 0), 113U);
    QCOMPARE(log.lines(), QStringList{"Invalid Msg Id"});
    QCOMPARE(engine.calls, QStringList());
    QCOMPARE(message.engineMsgId(), static_cast<unsigned short>(65535));
    QCOMPARE(message.constructWMMSMsg(65534, nullptr, false, 0), 100U);
    QCOMPARE(message.engineMsgId(), static_cast<unsigned short>(65534));
    QCOMPARE(message.constructWMMSMsg(0, nullptr, false, 0), 100U);
}

void TestWmmsmsgEngineCalls::headerRefused()
{
    for (const int result : {0, 2, -1}) {
        engine = Engine();
        engine.headerResult = result;
        engine.fillHeader = [](MMS_MSG_HDR_T *header) {
            header->to = wide("a");
        };
        WMMSMsg message;
        QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 113U);
        QCOMPARE(engine.calls, (QStringList{"header 5", "free header"}));
        QCOMPARE(message.engineMsgId(), static_cast<unsigned short>(5));
        QCOMPARE(idsOf(message), idsOf(WMMSMsg()));
    }
}

void TestWmmsmsgEngineCalls::bodyRefused()
{
    engine.bodyResult = 0;
    engine.fillBody = fillTwoParts;
    WMMSMsg message;
    MMS_MSG_HDR_T header = {};
    QCOMPARE(message.constructWMMSMsg(5, &header, true, 0), 111U);
    QCOMPARE(engine.calls,
             (QStringList{"header 5", "status 5", "body 5", "free body", "free header"}));
    QVERIFY(!message.getMultiParts().subParts());
    QCOMPARE(int(message.getMMSType()), 255); // not classified
}

void TestWmmsmsgEngineCalls::bodyWithoutParts()
{
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->appId = wide("app");
    };
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 111U);
    QCOMPARE(log.lines(),
             (QStringList{"Filled the presentation content type", "Decoding Body",
                          "constructWMMSBdy returns false"}));
    QCOMPARE(engine.calls.last(), "free header");
    QVERIFY(message.getAppID().isEmpty());
}

void TestWmmsmsgEngineCalls::calls()
{
    engine.fillBody = fillTwoParts;
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 9), 100U);
    QCOMPARE(engine.calls,
             (QStringList{"header 5", "status 5", "body 5", "free body", "free header"}));
    engine.calls.clear();
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 9), 100U);
    QCOMPARE(engine.calls, (QStringList{"header 5", "status 5", "free header"}));
}

// The caller's record is filled and stays the caller's; its lists are cut to the first address.
void TestWmmsmsgEngineCalls::ownRecord()
{
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->to = wide("1,2");
        header->size = 9;
    };
    MMS_MSG_HDR_T header;
    memset(&header, 0x55, sizeof header);
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, &header, false, 0), 100U);
    QCOMPARE(engine.calls, (QStringList{"header 5", "status 5"}));
    QCOMPARE(header.size, 9);
    QCOMPARE(shownText(header.to), "\"1\"");
    MMS_ENG_Controller::Instance()->FreeMMSHdr(&header);
}

void TestWmmsmsgEngineCalls::marks()
{
    engine.statusResult = 0;
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->deliveryTime = -1;
    };
    WMMSMsg message;
    message.clear();
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 111U);
    QCOMPARE(idsOf(message), "1 2 15 23");
    engine.statusResult = 1;
    engine.fillBody = fillTwoParts;
    engine.fillStatus = [](MMS_MOMT_STATUS_T *status) {
        status->statusText = narrow("ok");
    };
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->from = wide("a@b");
        header->subject = wide("s");
        header->deliveryTime = 1;
        header->expiry = 1;
        header->date = 1;
        header->size = 1;
        header->msgClass = header->deliveryReport = header->readReport = 1;
        header->presentation = narrow("application/smil");
    };
    message.clear();
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(idsOf(message), "1 2 7 15 18 19 22 23");
}

void TestWmmsmsgEngineCalls::addresses()
{
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->from = wide("ann@你.org");
        header->to = wide("+431,b@c");
        header->cc = wide(",+432,");
        header->bcc = wide("🎉");
    };
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(message.getFrom().getEntryVal(), "ann@你.org");
    QCOMPARE(int(message.getFrom().getEntryType()), 0);
    QCOMPARE(message.getTo().size(), 2);
    QCOMPARE(message.getTo().at(1).getEntryVal(), "b@c");
    QCOMPARE(message.getCc().size(), 1);
    QCOMPARE(message.getBcc().first().getEntryVal(), "🎉");
    // A message that has recipients keeps them.
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(message.getTo().size(), 4);
    // Nobody stays nobody.
    engine.fillHeader = nullptr;
    WMMSMsg alone;
    QCOMPARE(alone.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QVERIFY(!alone.getFrom().isValid());
    QVERIFY(alone.getTo().isEmpty());
}

void TestWmmsmsgEngineCalls::presentation_data()
{
    QTest::addColumn<QByteArray>("presentation");
    QTest::addColumn<QString>("mimeType");
    QTest::newRow("none") << QByteArray() << "";
    QTest::newRow("smil") << QByteArray("application/smil") << kRelated;
    QTest::newRow("smil inside") << QByteArray("x;application/smil;y") << kRelated;
    QTest::newRow("upper case") << QByteArray("Application/SMIL") << "";
    QTest::newRow("xhtml") << QByteArray("application/xhtml+xml") << "";
}

void TestWmmsmsgEngineCalls::presentation()
{
    QFETCH(QByteArray, presentation);
    QFETCH(QString, mimeType);
    engine.fillHeader = [&](MMS_MSG_HDR_T *header) {
        header->presentation = narrow(presentation);
    };
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(message.getContentType().getMimeType(), mimeType);
    QCOMPARE(message.getContentType().getParamType(),
             mimeType.isEmpty() ? QString() : QString("application/smil"));
    QCOMPARE(log.lines().first(), "Filled the presentation content type"); // in any case
    QVERIFY(!message.fieldIsPresent(MMS_FIELD_CONTENT_TYPE));
}

void TestWmmsmsgEngineCalls::status_data()
{
    QTest::addColumn<int>("callResult");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("errorText");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("statusText");
    QTest::addColumn<int>("responseStatus");
    QTest::addColumn<QString>("responseText");
    QTest::addColumn<QString>("marks");
    const QByteArray error = "größe 你好";
    const QByteArray text = "fine";
    QTest::newRow("refused") << 0 << 3 << error << 4 << text << 0 << ""
                             << "";
    QTest::newRow("own status") << 1 << 0 << error << 225 << text << 225 << "fine"
                                << "18 19";
    QTest::newRow("own status, no text")
        << 1 << 0 << error << 128 << QByteArray() << 128 << "before"
        << "18";
    QTest::newRow("nothing yet") << 1 << 0 << QByteArray() << 0 << QByteArray() << 0 << "before"
                                 << "18";
    QTest::newRow("engine's result") << 1 << 10 << error << 4 << text << 192 << "größe 你好"
                                     << "18 19";
    QTest::newRow("engine's result, no text")
        << 1 << 25 << QByteArray() << 4 << text << 234 << "before"
        << "18";
    QTest::newRow("empty text") << 1 << 1 << QByteArray("") << 4 << text << 128 << ""
                                << "18 19";
    QTest::newRow("result without status") << 1 << 26 << error << 4 << text << 127 << "größe 你好"
                                           << "18 19";
    QTest::newRow("negative result") << 1 << -1 << error << 4 << text << 127 << "größe 你好"
                                     << "18 19";
    QTest::newRow("result above 16 bits") << 1 << 65537 << error << 4 << text << 127 << "größe 你好"
                                          << "18 19";
    QTest::newRow("result below 16 bits")
        << 1 << -65535 << error << 4 << text << 127 << "größe 你好"
        << "18 19";
}

void TestWmmsmsgEngineCalls::status()
{
    QFETCH(int, callResult);
    QFETCH(int, result);
    QFETCH(QByteArray, errorText);
    QFETCH(int, status);
    QFETCH(QByteArray, statusText);
    engine.statusResult = callResult;
    engine.fillStatus = [&](MMS_MOMT_STATUS_T *record) {
        if (callResult == 1) {
            *record = {result, narrow(errorText), status, narrow(statusText), 0};
        }
    };
    WMMSMsg message;
    message.setResponseText("before");
    WMMSMsg fresh = message;
    fresh.clear();
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QTEST(int(message.getResponseStatus()), "responseStatus");
    QTEST(message.getResponseText(), "responseText");
    QCOMPARE(fresh.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QStringList marks;
    for (const int id : {MMS_FIELD_RESPONSE_STATUS, MMS_FIELD_RESPONSE_TEXT}) {
        if (fresh.fieldIsPresent(static_cast<unsigned char>(id))) {
            marks += QString::number(id);
        }
    }
    QTEST(marks.join(' '), "marks");
}

// Eight bits, the inverse of what is written.
void TestWmmsmsgEngineCalls::codes_data()
{
    QTest::addColumn<int>("word");
    QTest::addColumn<int>("code");
    QTest::newRow("low") << 0 << 128;
    QTest::newRow("high") << 2 << 130;
    QTest::newRow("of a new message") << -127 << 1;
    QTest::newRow("lowest") << -128 << 0;
    QTest::newRow("highest") << 127 << 255;
    QTest::newRow("above") << 128 << 0;
    QTest::newRow("far above") << INT_MAX << 127;
    QTest::newRow("far below") << INT_MIN << 128;
}

void TestWmmsmsgEngineCalls::codes()
{
    QFETCH(int, word);
    QFETCH(int, code);
    engine.fillHeader = [word](MMS_MSG_HDR_T *header) {
        header->priority = word;
        header->msgClass = word;
    };
    WMMSMsg message;
    message.clear();
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(int(message.getPriority()), code);
    QCOMPARE(int(message.getMsgClass()), code);
    QCOMPARE(message.fieldIsPresent(MMS_FIELD_PRIORITY), true);
    QCOMPARE(message.fieldIsPresent(MMS_FIELD_MSG_CLASS), false);
}

void TestWmmsmsgEngineCalls::values()
{
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->expiry = 0xFFFFFFFF;
        header->date = 1714563072;
        header->deliveryReport = -1; // anything but 0
        header->readReport = 256;
        header->size = -9;
    };
    WMMSMsg message;
    message.setSubject("before");
    message.setContentLocation("http://a");
    message.setMsgStatus(129);
    message.setMsgID("id");
    message.setVersion(0x12);
    message.setTransactionID("t");
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(message.getExpiryTime(), 0xFFFFFFFFU);
    QCOMPARE(message.getDate(), QDateTime::fromSecsSinceEpoch(1714563072));
    QCOMPARE(message.getDeliveryReportNecessity(), true);
    QCOMPARE(message.getReadReportNecessity(), true);
    QCOMPARE(message.getMsgSize(), -9);
    QCOMPARE(message.getContentLocation(), "");
    QCOMPARE(int(message.getMsgStatus()), 0);
    QCOMPARE(message.getMsgID(), "");
    QCOMPARE(int(message.getVersion()), 0);
    QCOMPARE(message.getTransactionID(), "");
    QCOMPARE(message.getSubject(), "");
}

void TestWmmsmsgEngineCalls::subject_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("subject");
    QTest::addColumn<bool>("isPresent");
    QTest::newRow("null") << QString() << "" << false;
    QTest::newRow("empty") << ""
                           << "" << true;
    QTest::newRow("latin") << "Größe"
                           << "Größe" << true;
    QTest::newRow("arabic") << "مرحبا"
                            << "مرحبا" << true;
    QTest::newRow("emoji") << "🎉🎉🎉"
                           << "🎉🎉🎉" << true;
    QTest::newRow("two chinese") << "你好"
                                 << "你好" << true;
    QTest::newRow("cut to two bytes a unit and two") << "你好世界"
                                                     << "你好世" << true;
}

void TestWmmsmsgEngineCalls::subject()
{
    QFETCH(QString, word);
    engine.fillHeader = [&](MMS_MSG_HDR_T *header) {
        header->subject = wide(word);
    };
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QTEST(message.getSubject(), "subject");
    QTEST(message.fieldIsPresent(MMS_FIELD_SUBJECT), "isPresent");
}

void TestWmmsmsgEngineCalls::deliveryTime_data()
{
    QTest::addColumn<int>("word");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("at once") << -1 << QDateTime();
    QTest::newRow("epoch") << 0 << QDateTime::fromSecsSinceEpoch(0);
    QTest::newRow("some") << 1714563072 << QDateTime::fromSecsSinceEpoch(1714563072);
    QTest::newRow("without a sign") << -2 << QDateTime::fromSecsSinceEpoch(0xFFFFFFFE);
}

void TestWmmsmsgEngineCalls::deliveryTime()
{
    QFETCH(int, word);
    QFETCH(QDateTime, time);
    engine.fillHeader = [word](MMS_MSG_HDR_T *header) {
        header->deliveryTime = word;
    };
    WMMSMsg message;
    message.setDeliveryTime(QDateTime::currentDateTime());
    WMMSMsg fresh;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(message.getDeliveryTime(), time);
    QCOMPARE(fresh.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(fresh.fieldIsPresent(MMS_FIELD_DELIVERY_TIME), word != -1);
}

void TestWmmsmsgEngineCalls::applications()
{
    engine.fillBody = fillTwoParts;
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->appId = wide("你好世界🎉");
        header->replyAppId = wide("reply");
        header->auxAppInfo = wide("aux");
    };
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QVERIFY(message.getAppID().isEmpty()); // they come with the body
    message.setReplyAppID("own");
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(message.getAppID(), "你好世界🎉");
    QCOMPARE(message.getReplyAppID(), "own");
    QCOMPARE(message.getAuxAppInfo(), "aux");
    // What the message has is its own.
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->appId = wide("other");
        header->replyAppId = wide("other");
        header->auxAppInfo = wide("other");
    };
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(message.getAppID(), "你好世界🎉");
    QCOMPARE(message.getReplyAppID(), "own");
    QCOMPARE(message.getAuxAppInfo(), "aux");
    // What nobody has stays away.
    engine.fillHeader = nullptr;
    WMMSMsg none;
    QCOMPARE(none.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(none.getContentType().getParamCount(), 0);
}

void TestWmmsmsgEngineCalls::classification()
{
    engine.fillBody = fillTwoParts;
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->presentation = narrow("application/smil");
    };
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, false, 0), 100U);
    QCOMPARE(int(message.getMMSType()), 6); // the parts are not looked at
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(int(message.getMMSType()), 3); // no presentation among them
    // Without a presentation there is no content type, whatever the body says of itself.
    engine.fillHeader = nullptr;
    WMMSMsg mixed;
    mixed.setAppID("app");
    for (const bool readBody : {false, true}) {
        QCOMPARE(mixed.constructWMMSMsg(5, nullptr, readBody, 0), 100U);
        QCOMPARE(int(mixed.getMMSType()), 13);
        QVERIFY(mixed.getContentType().isEmpty());
        QCOMPARE(mixed.getAppID(), "app");
        QVERIFY(!mixed.fieldIsPresent(MMS_FIELD_CONTENT_TYPE));
    }
    QCOMPARE(mixed.getMultiParts().getContentType().getMimeType(), kMixed);
    // A message that has one keeps it, and is classified by it.
    mixed.setContentType(typeOf("image/gif"));
    QCOMPARE(mixed.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(mixed.getContentType().getMimeType(), "image/gif");
    QCOMPARE(int(mixed.getMMSType()), 2);
}

void TestWmmsmsgEngineCalls::logOfReading()
{
    engine.fillBody = [](MMS_MSG_BDY_T *body) {
        BodyRecord record("text/plain");
        *body = record;
        static_cast<MMS_MSG_BDY_T &>(record) = {};
    };
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->from = wide("f");
        header->to = wide("t");
        header->cc = wide("c");
        header->bcc = wide("b");
    };
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(message.constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(log.lines(),
             (QStringList{"utf8_str=c", "utf8_str=t", "utf8_str=b", "utf8_str=f",
                          "Filled the presentation content type", "Decoding Body",
                          "Wrong content type", "mmsType=13"}));
    // The type by which a presentation is filed is looked for among the parts.
    engine.fillHeader = [](MMS_MSG_HDR_T *header) {
        header->presentation = narrow("application/smil");
    };
    log.clear();
    QCOMPARE(WMMSMsg().constructWMMSMsg(5, nullptr, true, 0), 100U);
    QCOMPARE(log.lines(),
             (QStringList{"Filled the presentation content type", "Decoding Body",
                          "MMS_MSGDB_MSG_TYPE_LETTER_MIXED", "mmsType=3"}));
}

QTEST_GUILESS_MAIN(TestWmmsmsgEngineCalls)
#include "tst_wmmsmsg_engine_calls.moc"
