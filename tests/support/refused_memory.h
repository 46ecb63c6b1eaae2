// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

#include <climits>
#include <cstddef>
#include <dlfcn.h>

/// Memory that the system does not give. A program that includes this header puts malloc and calloc
/// of its own in front of those of the system; they refuse what an object of this says, as long as
/// it lives, and pass on everything else. There is one object at a time.
///
///     {
///         const RefusedMemory none(40, sizeof(MMS_MSG_PART_T)); // calloc of 40 of them
///         WMMSMsg().engDataInitMsgbdy("a/b", &body);
///     }
class RefusedMemory {
public:
    /// Refuses a malloc of `size` bytes.
    explicit RefusedMemory(std::size_t size) : RefusedMemory(0, size) { }
    /// Refuses a calloc of `count` pieces of `size` bytes, at most `times` times.
    RefusedMemory(std::size_t count, std::size_t size, int times = INT_MAX)
        : m_count(count), m_size(size), m_mostTimes(times)
    {
        s_current = this;
    }
    ~RefusedMemory() { s_current = nullptr; }
    Q_DISABLE_COPY_MOVE(RefusedMemory)

    /// How often it was refused.
    [[nodiscard]] int times() const { return m_times; }

    /// Tells whether this is what is refused now; a `count` of 0 stands for malloc.
    static bool isRefused(std::size_t count, std::size_t size)
    {
        const bool isIt = s_current && s_current->m_count == count && s_current->m_size == size
            && s_current->m_times < s_current->m_mostTimes;
        if (isIt) {
            ++s_current->m_times;
        }
        return isIt;
    }

private:
    static inline RefusedMemory *s_current = nullptr;
    const std::size_t m_count;
    const std::size_t m_size;
    const int m_mostTimes;
    int m_times = 0;
};

extern "C" {

// Asked for before anything is initialised, so that there are no guarded statics here.

Q_DECL_EXPORT void *malloc(std::size_t size) noexcept
{
    static void *(*next)(std::size_t) = nullptr;
    if (!next) {
        next = reinterpret_cast<decltype(next)>(dlsym(RTLD_NEXT, "malloc"));
    }
    return RefusedMemory::isRefused(0, size) ? nullptr : next(size);
}
Q_DECL_EXPORT void *calloc(std::size_t count, std::size_t size) noexcept
{
    static void *(*next)(std::size_t, std::size_t) = nullptr;
    if (!next) {
        next = reinterpret_cast<decltype(next)>(dlsym(RTLD_NEXT, "calloc"));
    }
    return RefusedMemory::isRefused(count, size) ? nullptr : next(count, size);
}

} // extern "C"
