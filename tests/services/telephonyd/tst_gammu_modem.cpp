// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu.h"
#include "services/telephonyd/gammu_backend.h"
#include "sim/modem/modem.h"
#include "tests/services/telephonyd/outgoing_sms.h"
#include "tests/support/hex.h"

#include <platform/telephony/gsm_alphabet.h>

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace wmsg;
using telephony::Coding;
using telephonyd::IncomingSms;
using telephonyd::OutgoingSms;
using telephonyd::SendOutcome;

namespace {

constexpr int kPatience = 120000; // libgammu takes seconds to begin, and the machine may be busy

QString alphabet()
{
    QString all;
    for (int septet = 0; septet < kGsmAlphabetSize; ++septet) {
        if (septet != kGsmEscape) {
            all += QChar(kGsmAlphabet[septet]);
        }
    }
    for (const GsmExtension &row : kGsmExtensions) {
        all += QChar(row.character);
    }
    return all;
}

/// A message to the phone, from 12345.
QByteArray delivery(const smspdu::Tpdu &message)
{
    smspdu::Tpdu tpdu = message;
    tpdu.timeStamp = QDateTime(QDate(2026, 11, 21), QTime(22, 0), Qt::UTC);
    return QByteArray::fromHex("03913466") + smspdu::writeTpdu(tpdu);
}
QByteArray textDelivery(const QString &text)
{
    return delivery(
        smspdu::textMessage(smspdu::Kind::Deliver, smspdu::Address::fromString("12345"), text));
}
QByteArray dataDelivery(const QByteArray &data, const QByteArray &header = {})
{
    auto tpdu =
        smspdu::dataMessage(smspdu::Kind::Deliver, smspdu::Address::fromString("12345"), data);
    tpdu.udh = header;
    return delivery(tpdu);
}

sim::Modem::Settings simSettings(const QString &link, const QByteArray &pin = {})
{
    sim::Modem::Settings settings;
    settings.link = link;
    settings.phone.pin = pin;
    settings.messages.serviceCentre = "+4366";
    return settings;
}

/// What the back end has told.
struct Ear {
    explicit Ear(telephonyd::Modem &modem)
    {
        using telephonyd::Modem;
        QObject::connect(&modem, &Modem::stateChanged, &modem,
                         [this](TAPI_MODEM_E state, const QByteArray &centre) {
                             states.append(state);
                             serviceCentre = centre;
                         });
        QObject::connect(&modem, &Modem::sent, &modem,
                         [this](quint64 id, const SendOutcome &outcome) {
                             ids.append(id);
                             outcomes.append(outcome);
                         });
        QObject::connect(&modem, &Modem::arrived, &modem,
                         [this](const IncomingSms &sms) { messages.append(sms); });
        QObject::connect(&modem, &Modem::forgotten, &modem,
                         [this](const QByteArray &place) { forgotten.append(place); });
        QObject::connect(&modem, &Modem::serviceCenterSet, &modem,
                         [this](bool isDone) { settings.append(isDone); });
    }
    bool isReady() const { return !states.isEmpty() && states.last() == TAPI_MODEM_READY; }

    QList<int> states;
    QByteArray serviceCentre;
    QList<quint64> ids;
    QList<SendOutcome> outcomes;
    QList<IncomingSms> messages;
    QByteArrayList forgotten;
    QList<bool> settings;
};

} // namespace

class TestGammuModem : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_log.open(m_folder.filePath("log")).isEmpty());
        m_sim = std::make_unique<sim::Modem>(simSettings(link()), m_log);
        QCOMPARE(m_sim->start(), QString());
        QCOMPARE(m_sim->network().deliver(textDelivery("before")), QString());
        begin();
        QCOMPARE(m_ear->states, (QList<int>{TAPI_MODEM_STARTING, TAPI_MODEM_READY}));
        QCOMPARE(m_ear->serviceCentre, QByteArray("+4366"));
    }
    void init()
    {
        m_ear->states.clear();
        m_ear->states.append(TAPI_MODEM_READY);
        m_ear->settings.clear();
    }
    void cleanup()
    {
        if (!m_ear->isReady() && !m_sim->status().startsWith("modem=there")) {
            QCOMPARE(m_sim->comeBack(), QString());
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), kPatience);
        m_sim->network().failNext(1, 0);
    }
    void cleanupTestCase()
    {
        m_modem.reset();
        m_sim.reset();
    }

    void whatLiesThereIsTold()
    {
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 1, kPatience);
        QCOMPARE(toHex(m_ear->messages[0].body), toHex(utf16("before")));
        QVERIFY(!m_ear->messages[0].place.isEmpty());
        forgetAll();
    }

    void sends_data()
    {
        QTest::addColumn<OutgoingSms>("sms");
        const QString cyrillic(66, u'я');
        const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
        QTest::newRow("nothing") << outgoing(Coding::Gsm7, "");
        QTest::newRow("160 septets") << outgoing(Coding::Gsm7, utf16(QString(160, 'a')));
        QTest::newRow("the alphabet") << outgoing(Coding::Gsm7, utf16(alphabet()));
        QTest::newRow("80 euros") << outgoing(Coding::Gsm7, utf16(QString(80, u'€')));
        QTest::newRow("152 septets and ports")
            << outgoing(Coding::Gsm7, utf16(QString(152, '@')), kPorts);
        QTest::newRow("68 units and an emoji")
            << outgoing(Coding::Ucs2, utf16(QString(68, u'я') + emoji));
        QTest::newRow("66 units and ports") << outgoing(Coding::Ucs2, utf16(cyrillic), kPorts);
        QTest::newRow("tildes") << outgoing(Coding::Ucs2, utf16(QString("~я~~я~~~") + u'\x01'));
        QTest::newRow("35 tildes") << outgoing(Coding::Ucs2, utf16(QString(35, '~')));
        QTest::newRow("66 units with 4 tildes and ports")
            << outgoing(Coding::Ucs2, utf16(QString(62, u'я') + "~~~~"), kPorts);
        QTest::newRow("140 octets") << outgoing(Coding::Binary, QByteArray(140, '\xA5'));
        QTest::newRow("133 octets and ports")
            << outgoing(Coding::Binary, QByteArray(133, '\0'), kPorts);
    }
    void sends()
    {
        QFETCH(OutgoingSms, sms);
        const int before = m_sim->network().accepted();
        const SendOutcome outcome = send(sms);
        QCOMPARE(int(outcome.kind), int(SendOutcome::Sent));
        QCOMPARE(outcome.networkReference, before & 0xFF);
        const auto submit = lastSubmit();
        QCOMPARE(submit.address.toString(), QString("+43664123"));
        QCOMPARE(toHex(submit.udh), toHex(sms.header));
        const bool isText = sms.coding != Coding::Binary;
        QCOMPARE(int(submit.alphabet()),
                 int(sms.coding == Coding::Gsm7       ? smspdu::Alphabet::Gsm7
                         : sms.coding == Coding::Ucs2 ? smspdu::Alphabet::Ucs2
                                                      : smspdu::Alphabet::Octets));
        QCOMPARE(toHex(isText ? utf16(submit.text()) : submit.userData), toHex(sms.body));
    }

    void throughAnotherServiceCentre()
    {
        OutgoingSms sms = outgoing(Coding::Binary, "a");
        sms.serviceCenter = "+49172";
        QCOMPARE(int(send(sms).kind), int(SendOutcome::Sent));
        QCOMPARE(toHex(lastLogged("*-submit.pdu").left(6)), QByteArray("04 91 94 71 F2 11"));
    }

    void refusals()
    {
        m_sim->network().failNext(38, 1);
        SendOutcome outcome = send(outgoing(Coding::Binary, "a"));
        QCOMPARE(int(outcome.kind), int(SendOutcome::Refused));
        QCOMPARE(outcome.cause, 38);
        OutgoingSms sms = outgoing(Coding::Binary, "a");
        sms.destination = "*100#";
        outcome = send(sms);
        QCOMPARE(int(outcome.kind), int(SendOutcome::Refused));
        QCOMPARE(outcome.cause, 303);
        QCOMPARE(int(send(outgoing(Coding::Binary, "a")).kind), int(SendOutcome::Sent));
    }

    void receives()
    {
        const QString text = "~ " + alphabet();
        const QString wide = QString::fromUtf8("я~ \xF0\x9F\x98\x80");
        for (const QByteArray &pdu : {textDelivery(text), textDelivery(wide),
                                      dataDelivery(QByteArray::fromHex("00FF7E"), kPorts)}) {
            QCOMPARE(m_sim->network().deliver(pdu), QString());
        }
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 3, kPatience);
        QCOMPARE(toHex(m_ear->messages[0].body), toHex(utf16(text)));
        QCOMPARE(toHex(m_ear->messages[1].body), toHex(utf16(wide)));
        QCOMPARE(int(m_ear->messages[2].coding), int(Coding::Binary));
        QCOMPARE(toHex(m_ear->messages[2].header), toHex(kPorts));
        QCOMPARE(toHex(m_ear->messages[2].body), QByteArray("00 FF 7E"));
        for (const IncomingSms &sms : std::as_const(m_ear->messages)) {
            QCOMPARE(sms.sender, QByteArray("12345"));
            QCOMPARE(sms.serviceCenter, QByteArray("+4366"));
            QCOMPARE(sms.time, qint64(1795298400)); // 2026-11-21 22:00:00 UTC
        }
        QVERIFY2(m_sim->status().contains("SM=3/"), qPrintable(m_sim->status()));
        forgetAll();
        QVERIFY2(m_sim->status().contains("SM=0/"), qPrintable(m_sim->status()));
    }

    void moreThanTheMemoryHolds()
    {
        for (int i = 0; i < 25; ++i) {
            QCOMPARE(m_sim->network().deliver(textDelivery(QString::number(i))), QString());
        }
        QStringList texts;
        while (texts.size() < 25) {
            QTRY_VERIFY_WITH_TIMEOUT(!m_ear->messages.isEmpty(), kPatience);
            for (const IncomingSms &sms : std::as_const(m_ear->messages)) {
                texts += QString::fromUtf16(reinterpret_cast<const char16_t *>(sms.body.data()),
                                            sms.body.size() / 2);
            }
            forgetAll();
        }
        texts.sort();
        QCOMPARE(texts.removeDuplicates(), 0);
        QCOMPARE(texts.size(), 25);
    }

    /// A header that is longer than its message.
    void unreadableOnesAreLeftAlone()
    {
        const QByteArray broken = QByteArray::fromHex("03913466"
                                                      "4005812143F50004"
                                                      "62111222000000"
                                                      "03"
                                                      "FFAABB");
        QCOMPARE(m_sim->network().deliver(broken, true), QString());
        QCOMPARE(m_sim->network().deliver(textDelivery("behind")), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 1, kPatience);
        QCOMPARE(toHex(m_ear->messages[0].body), toHex(utf16("behind")));
        forgetAll();
        QVERIFY2(m_sim->status().contains("SM=1/"), qPrintable(m_sim->status()));
        QVERIFY(m_sim->removeMessage(0, 1));
    }

    void serviceCentre()
    {
        m_modem->setServiceCenter("+4367");
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->settings, QList<bool>{true}, kPatience);
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->serviceCentre, QByteArray("+4367"), kPatience);
        m_modem->setServiceCenter("nobody");
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->settings, (QList<bool>{true, false}), kPatience);
        QCOMPARE(int(send(outgoing(Coding::Binary, "a")).kind), int(SendOutcome::Sent));
        QCOMPARE(toHex(lastLogged("*-submit.pdu").left(4)), QByteArray("03 91 34 76"));
    }

    void vanishesAndReturns()
    {
        QCOMPARE(m_sim->network().deliver(textDelivery("kept")), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 1, kPatience);
        m_sim->vanish();
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->states.last(), int(TAPI_MODEM_ABSENT), kPatience);
        QCOMPARE(int(send(outgoing(Coding::Binary, "a")).kind), int(SendOutcome::NotNow));
        m_modem->setServiceCenter("+4367");
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->settings, QList<bool>{false}, kPatience);
        m_modem->forget(m_ear->messages[0].place);
        QCOMPARE(m_sim->network().deliver(textDelivery("meanwhile")), QString());
        QCOMPARE(m_sim->comeBack(), QString());
        // What was not forgotten is told again, beside what is new.
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 3, kPatience);
        QCOMPARE(m_ear->messages[1].place, m_ear->messages[0].place);
        QCOMPARE(toHex(m_ear->messages[2].body), toHex(utf16("meanwhile")));
        m_ear->messages.removeFirst();
        forgetAll();
    }

    /// Between the answers about one memory and the other, where libgammu has patience for minutes.
    void vanishesWhileItIsRead()
    {
        const auto once = QObject::connect(m_modem.get(), &telephonyd::Modem::arrived, m_sim.get(),
                                           [this] { m_sim->vanish(); });
        QCOMPARE(m_sim->network().deliver(textDelivery("seen")), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->states.last(), int(TAPI_MODEM_ABSENT), kPatience);
        QObject::disconnect(once);
        QCOMPARE(m_sim->comeBack(), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 2, kPatience);
        QCOMPARE(m_ear->messages[1].place, m_ear->messages[0].place);
        m_ear->messages.removeFirst();
        forgetAll();
    }

    void vanishesBehindAMessage()
    {
        const int before = m_sim->network().accepted();
        m_sim->network().loseNextAnswer();
        QCOMPARE(int(send(outgoing(Coding::Binary, "a")).kind), int(SendOutcome::NotNow));
        QCOMPARE(m_sim->network().accepted(), before + 1);
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->states.last(), int(TAPI_MODEM_ABSENT), kPatience);
    }

    /// Another card lies in the modem, with another message at the same place.
    void aPlaceIsNotTheMessage()
    {
        QCOMPARE(m_sim->network().deliver(textDelivery("one")), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 1, kPatience);
        const QByteArray place = m_ear->messages[0].place;
        replaceMessage(place, textDelivery("another"));
        m_modem->forget(place);
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->forgotten, QByteArrayList{place}, kPatience);
        QCOMPARE(m_sim->network().deliver(textDelivery("third")), QString());
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->messages.size(), 3, kPatience);
        m_ear->messages.removeFirst();
        m_ear->forgotten.clear();
        forgetAll();
    }

    void endsInTheMiddleOfACall()
    {
        m_sim->setDelay(600000);
        m_modem->send(outgoing(Coding::Binary, "a"));
        const int before = m_sim->network().accepted();
        QTRY_COMPARE_WITH_TIMEOUT(m_sim->network().accepted(), before + 1, kPatience);
        m_modem.reset(); // a call that waits 120 s for its answer
        m_sim->setDelay(0);
        QCOMPARE(m_sim->comeBack(), QString());
        begin();
    }

    void aLockedCard()
    {
        const QString other = m_folder.filePath("locked");
        sim::Modem sim(simSettings(other, "0815"), m_log);
        QCOMPARE(sim.start(), QString());
        QString problem;
        const auto modem = telephonyd::makeGammuModem({other, "at115200"}, problem);
        const Ear ear(*modem);
        modem->start();
        QTRY_COMPARE_WITH_TIMEOUT(ear.states, (QList<int>{TAPI_MODEM_STARTING, TAPI_MODEM_BLOCKED}),
                                  kPatience);
    }

    void noDevice()
    {
        QString problem;
        const auto modem =
            telephonyd::makeGammuModem({m_folder.filePath("nowhere"), "at115200"}, problem);
        const Ear ear(*modem);
        modem->start();
        modem->send(outgoing(Coding::Binary, "a"));
        QTRY_COMPARE_WITH_TIMEOUT(ear.outcomes.size(), 1, kPatience);
        QCOMPARE(int(ear.outcomes[0].kind), int(SendOutcome::NotNow));
        QVERIFY(ear.states.isEmpty());
    }

    void settings()
    {
        QString problem;
        QVERIFY(!telephonyd::makeGammuModem({"", "at"}, problem));
        QCOMPARE(problem, QString("the back end gammu needs the device of a modem"));
        QVERIFY(!telephonyd::makeGammuModem({"/dev/null", "fbus"}, problem));
        QCOMPARE(problem, QString("fbus: this is no connection to an AT modem, such as at115200"));
    }

private:
    QString link() const { return m_folder.filePath("modem"); }

    void begin()
    {
        QString problem;
        m_modem = telephonyd::makeGammuModem({link(), "at115200"}, problem);
        QVERIFY2(m_modem, qPrintable(problem));
        m_ear = std::make_unique<Ear>(*m_modem);
        m_modem->start();
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), kPatience);
    }

    SendOutcome send(OutgoingSms sms)
    {
        sms.id = ++m_id;
        m_ear->ids.clear();
        m_ear->outcomes.clear();
        m_modem->send(sms);
        (void)QTest::qWaitFor([this] { return !m_ear->ids.isEmpty(); }, kPatience);
        return m_ear->ids == QList<quint64>{sms.id} ? m_ear->outcomes[0] : SendOutcome();
    }

    void forgetAll()
    {
        const auto messages = std::exchange(m_ear->messages, {});
        for (const IncomingSms &sms : messages) {
            m_modem->forget(sms.place);
        }
        QTRY_COMPARE_WITH_TIMEOUT(m_ear->forgotten.size(), messages.size(), kPatience);
        m_ear->forgotten.clear();
    }

    /// The PDU in the last file of that kind.
    QByteArray lastLogged(const QString &name) const
    {
        const QDir log(m_folder.filePath("log"));
        QFile file(log.filePath(log.entryList({name}).value(log.entryList({name}).size() - 1)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    smspdu::Tpdu lastSubmit() const
    {
        const QByteArray pdu = lastLogged("*-submit.pdu");
        const auto centre = smspdu::readServiceCentre(pdu);
        return smspdu::readTpdu(QByteArrayView(pdu).sliced(centre ? centre->size : 0),
                                smspdu::Origin::Phone)
            .tpdu;
    }
    void replaceMessage(const QByteArray &place, const QByteArray &pdu)
    {
        const int at = place.left(place.indexOf('-')).toInt();
        sim::StoredMessage *message = m_sim->messageAt(0, at);
        QVERIFY(message);
        message->pdu = pdu;
    }

    QTemporaryDir m_folder;
    sim::PduFiles m_log;
    std::unique_ptr<sim::Modem> m_sim;
    std::unique_ptr<telephonyd::Modem> m_modem;
    std::unique_ptr<Ear> m_ear;
    quint64 m_id = 0;
};

QTEST_GUILESS_MAIN(TestGammuModem)
#include "tst_gammu_modem.moc"
