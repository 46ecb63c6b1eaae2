// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Writes into the store for as long as it lives, or COUNT messages, and says what it has done:
//
//     store_writer FIRST [COUNT]
//
// "created ID NUMBER", "updated ID NUMBER" and "deleted ID", each when the engine has said so. The
// content of a message follows from its number, which is counted from FIRST.

#include "tests/platform/engine/numbered_message.h"

#include <cstdio>
#include <cstdlib>

namespace {

auto *const engine = MMS_ENG_Controller::Instance();

void require(int result, const char *what)
{
    if (result != MMS_ENG_OK) {
        std::printf("%s: result %d\n", what, result);
        std::exit(1);
    }
}

unsigned short create(int number)
{
    const NumberedMessage message(number);
    unsigned short id = 0;
    require(engine->CreateMMS(MMS_ENG_INBOX, &id, &message.header, &message.body), "create");
    std::printf("created %d %d\n", int(id), number);
    return id;
}

void update(unsigned short id, int number)
{
    const NumberedMessage message(number);
    require(engine->UpdateMMS(MMS_ENG_INBOX, id, &message.header, &message.body), "update");
    std::printf("updated %d %d\n", int(id), number);
}

void remove(unsigned short id)
{
    require(engine->DeleteMMS(id), "delete");
    std::printf("deleted %d\n", int(id));
}

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    int number = argc > 1 ? std::atoi(argv[1]) : 0;
    if (argc > 2) {
        for (int left = std::atoi(argv[2]); left > 0; --left) {
            create(number++);
        }
        return 0;
    }
    while (true) {
        const unsigned short gone = create(number++);
        const unsigned short kept = create(number++);
        update(kept, number++);
        remove(gone);
    }
}
