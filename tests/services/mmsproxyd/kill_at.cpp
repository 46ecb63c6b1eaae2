// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Preloaded into a program, this kills it, with SIGKILL, right before the n-th call that others can
// see the effect of: one that changes a file or a folder, or sends something. WMSG_KILL_AT is n; 0
// or nothing kills nobody.

#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

void countStep()
{
    static const char *const wanted = getenv("WMSG_KILL_AT");
    static const long last = wanted ? strtol(wanted, nullptr, 10) : 0;
    static std::atomic<long> count{0};
    if (++count == last) {
        kill(getpid(), SIGKILL);
    }
}

/// Whether others can see what is written there. A counter that wakes another thread is a file of
/// no kind, and nobody else has it.
bool isSeen(int file)
{
    struct stat about = {};
    return fstat(file, &about) == 0 && (about.st_mode & S_IFMT) != 0;
}

template <typename Function> Function real(Function, const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The name, what it is called with, how it is passed on, and when it counts.
#define WMSG_STEP_IF(result, name, parameters, arguments, condition)         \
    extern "C" __attribute__((visibility("default"))) result name parameters \
    {                                                                        \
        static const auto next = real(&name, #name);                         \
        if (condition) {                                                     \
            countStep();                                                     \
        }                                                                    \
        return next arguments;                                               \
    }
#define WMSG_STEP(result, name, parameters, arguments) \
    WMSG_STEP_IF(result, name, parameters, arguments, true)

WMSG_STEP(int, fsync, (int file), (file))
WMSG_STEP(int, fdatasync, (int file), (file))
WMSG_STEP(int, ftruncate, (int file, off_t size), (file, size))
WMSG_STEP(int, rename, (const char *from, const char *to), (from, to))
WMSG_STEP(int, link, (const char *from, const char *to), (from, to))
WMSG_STEP(int, unlink, (const char *path), (path))
WMSG_STEP(int, unlinkat, (int folder, const char *path, int flags), (folder, path, flags))
WMSG_STEP(int, mkdir, (const char *path, mode_t mode), (path, mode))
WMSG_STEP(int, mkostemp, (char *path, int flags), (path, flags))
WMSG_STEP_IF(ssize_t, write, (int file, const void *bytes, size_t size), (file, bytes, size),
             isSeen(file))
WMSG_STEP(ssize_t, writev, (int file, const iovec *ranges, int count), (file, ranges, count))
WMSG_STEP(ssize_t, pwrite, (int file, const void *bytes, size_t size, off_t at),
          (file, bytes, size, at))
WMSG_STEP(ssize_t, copy_file_range,
          (int from, off64_t *fromAt, int to, off64_t *toAt, size_t size, unsigned flags),
          (from, fromAt, to, toAt, size, flags))
WMSG_STEP(ssize_t, send, (int socket, const void *bytes, size_t size, int flags),
          (socket, bytes, size, flags))
WMSG_STEP(ssize_t, sendmsg, (int socket, const msghdr *message, int flags),
          (socket, message, flags))
