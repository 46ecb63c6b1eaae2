// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what arrives on a proxy socket from the start of a record on. It is read as a
// command and as an event.

#include "fuzz/fuzz_application.h"
#include "fuzz/fuzz_support.h"
#include "mms/session/mms_ua_cmd.h"
#include "mms/session/mms_ua_svcmd.h"
#include "tests/support/socket_pair.h"

#include <QtCore/QList>
#include <QtCore/QtEndian>

#include <memory>

using namespace wmsg::fuzz;

namespace {

constexpr qsizetype kHead = 8; // the type and the length of the variable part
constexpr qsizetype kLongestByteByByte = 128;

template <typename Base> std::unique_ptr<Base> newRecord(const QByteArray &input)
{
    return std::unique_ptr<Base>(Base::factory(qFromUnaligned<qint32>(input.constData())));
}

QByteArray extraOf(const MMS_UA_CmdItem &record)
{
    return QByteArray(record.extra(), record.extra() ? record.extraLen() : 0);
}

/// Feeds what follows the type in pieces that end at `cuts`, and returns the bytes that were not
/// read.
template <typename Base>
QByteArray readInPieces(Base &record, const QByteArray &input, QList<qsizetype> cuts, int &result)
{
    SocketPair pair;
    qsizetype fed = 4;
    result = 0;
    cuts.append(input.size());
    for (const qsizetype cut : std::as_const(cuts)) {
        pair.feed(input.mid(fed, cut - fed));
        fed = cut;
        if (result == 0) {
            result = record.read(pair.socket());
        }
    }
    return pair.unread();
}

bool isSame(const MMS_UA_CmdItem &a, const MMS_UA_CmdItem &b)
{
    return a.extraLen() == b.extraLen() && a.readState() == b.readState()
        && a.fixedPart() == b.fixedPart() && extraOf(a) == extraOf(b)
        && a.isRefused() == b.isRefused();
}

void checkWritten(MMS_UA_CmdItem &record, const QByteArray &input, const QByteArray &left)
{
    SocketPair pair;
    record.write(pair.socket());
    const QByteArray written = pair.taken();
    const QByteArray read = input.chopped(left.size());
    require(written.size() == read.size() && written.mid(kHead) == read.mid(kHead)
                && written.left(4) == read.left(4),
            "a record that was read is written as it came");
}

void checkTexts(const MMS_UA_Cmd &command)
{
    if (const auto *withUri = dynamic_cast<const MMS_UA_UriCmd *>(&command)) {
        MMS_UA_SendCmd again;
        again.setUri(withUri->getUri());
        require(again.extraLen() <= command.extraLen(), "a text lies in the variable part");
    }
}

void checkTexts(const MMS_UA_SvCmd &event)
{
    if (const auto *notification = dynamic_cast<const MMS_UA_SvNotiCmd *>(&event)) {
        MMS_UA_SvNotiCmd again;
        again.setUriAndTranID(notification->getUri(), notification->getTranID());
        require(again.extraLen() <= event.extraLen(), "texts lie in the variable part");
        require(extraOf(event).startsWith(extraOf(again)), "texts come in their order");
    }
    if (const auto *report = dynamic_cast<const MMS_UA_SvReportCmd *>(&event)) {
        MMS_UA_SvReadRecCmd again;
        again.setMsgIDAndToAndDate(report->getMsgID(), report->getTo(), report->getDate());
        require(again.extraLen() >= 0, "a read report can be made of any texts");
    }
}

template <typename Base> void check(const QByteArray &input)
{
    const std::unique_ptr<Base> whole = newRecord<Base>(input);
    if (!whole) {
        return;
    }
    int result = 0;
    const QByteArray left = readInPieces(*whole, input, {}, result);
    require(result == 0 || !whole->isRefused(), "a refused record is not whole");
    require(!whole->extra() || whole->extraLen() <= input.size(), "what is there has arrived");
    require(result == 0 || whole->readState() == whole->dataLen() + whole->extraLen(),
            "a whole record has both parts");

    QList<QList<qsizetype>> splits{{4 + (input.size() - 4) / 2}, {}};
    for (qsizetype cut = 4; cut < qMin(input.size(), kLongestByteByByte); ++cut) {
        splits.last().append(cut);
    }
    for (const QList<qsizetype> &cuts : std::as_const(splits)) {
        const std::unique_ptr<Base> pieces = newRecord<Base>(input);
        int piecesResult = 0;
        const QByteArray piecesLeft = readInPieces(*pieces, input, cuts, piecesResult);
        require(piecesResult == result && piecesLeft == left && isSame(*pieces, *whole),
                "a record reads the same in any split");
    }
    if (result == 1) {
        checkWritten(*whole, input, left);
        checkTexts(*whole);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4) {
        return 0;
    }
    needApplication();
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    check<MMS_UA_Cmd>(input);
    check<MMS_UA_SvCmd>(input);
    return 0;
}
