// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Preloaded into a program, this shortens its long pauses. libgammu gives a modem 0.4 s behind each
// of its first commands, and some before a message goes out, for phones of long ago; the simulator
// has answered by then. Pauses between two looks at a line are short already, and stay as they are.

#include <ctime>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds)
{
    constexpr useconds_t kLong = 50000;
    constexpr useconds_t kShort = 1000;
    constexpr long kNanoseconds = 1000;
    timespec left{0, long(microseconds >= kLong ? kShort : microseconds) * kNanoseconds};
    return nanosleep(&left, nullptr);
}
