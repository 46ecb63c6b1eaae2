// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_status_words.h"

#include <platform/telephony/tapi_sms.h>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct Cause {
    int status;
    const char *words;
};

/// The causes of networks and modems that can be told in a few words.
constexpr Cause kCauses[] = {
    {1, "the number does not exist"},
    {8, "the network operator does not allow it"},
    {10, "this number may not send"},
    {21, "the short message was rejected"},
    {22, "the memory of the recipient is full"},
    {27, "the recipient cannot be reached"},
    {28, "the recipient is not known"},
    {29, "the network does not do that"},
    {30, "the recipient is not known"},
    {38, "the network is out of order"},
    {41, "a failure that passes"},
    {42, "the network is overloaded"},
    {47, "the network is short of resources"},
    {50, "short messages are not part of the contract"},
    {69, "the network does not do that"},
    {111, "the network and the modem do not understand each other"},
    {300, "the modem failed"},
    {302, "the modem does not allow it"},
    {303, "the modem does not do that"},
    {304, "the modem does not understand the message"},
    {310, "there is no SIM card"},
    {311, "the SIM card wants its PIN"},
    {313, "the SIM card failed"},
    {314, "the SIM card is busy"},
    {315, "this is the wrong SIM card"},
    {316, "the SIM card wants its PUK"},
    {322, "the memory of the modem is full"},
    {330, "the service centre is not known"},
    {331, "there is no network"},
    {332, "the network did not answer"},
    {500, "the modem does not say why"},
    {TAPI_SMS_MALFORMED, "the message makes no sense: a number that is none, or a body too long"},
    {TAPI_SMS_GIVEN_UP, "the modem did not take it for too long"},
    {TAPI_SMS_LOST, "the telephony service went; nobody knows whether the message was sent"},
};

} // namespace

QString smsStatusInWords(int status)
{
    if (status == TAPI_SMS_SENT) {
        return u"sent"_s;
    }
    const auto *found = std::find_if(std::begin(kCauses), std::end(kCauses),
                                     [status](const Cause &row) { return row.status == status; });
    return found == std::end(kCauses) ? u"a cause without a name"_s
                                      : QString::fromLatin1(found->words);
}

} // namespace wmsg::cli
