// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace wmsg::detail {

/// ArrayRegion heads one allocation that holds elements. `refs` counts the blocks whose elements
/// lie in it; the last one frees it.
struct ArrayRegion {
    int refs;
};

/// ArrayBlock is what the holders of one array share. A fresh block and its elements are one
/// allocation, which `own` heads; elements that outgrow it while the block may not move go to a
/// region of their own, and those of a slice lie inside the region of another array.
struct ArrayBlock {
    ArrayRegion own;
    int holders;
    int size;
    int capacity;
    void *data;
    ArrayRegion *region;
};

} // namespace wmsg::detail

/// QArray is an array of plain values that is **explicitly shared**: a copy or an assignment refers
/// to the same block, and whatever is done through one holder (writing, fill(), resize(),
/// truncate()) is seen through all of them. copy() and detach() make a separate array.
///
/// A null array has no block. Its copies are therefore independent: they begin to share when one is
/// assigned to another after it got elements. An array of no elements that is not null (resized to
/// 0, or made from an empty byte array) does share. Two arrays of no elements are equal, null or
/// not.
///
/// Elements are not initialised when an array is made or grows: they hold whatever the memory held.
/// Shrinking keeps the memory, so that growing again up to capacity() moves nothing; pointers and
/// iterators stay valid until the array grows beyond its capacity or its last holder goes. An array
/// holds fewer than 2^31 bytes.
///
/// slice() makes an array whose elements lie inside another one.
///
/// Operations that need memory return false when there is none, and leave the array as it was;
/// those that return an array return a null one. Nothing throws.
///
/// Threads: the count of holders is an ordinary integer. All holders of one block, and all slices
/// of one array, belong to one thread at a time. Arrays that share nothing may be on different
/// threads; a null array shares nothing.
template <typename T> class QArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                  "QArray moves its elements as bytes");
    static_assert(alignof(T) <= alignof(std::max_align_t), "QArray uses the alignment of malloc");

public:
    using value_type = T;
    using size_type = int;
    using iterator = T *;
    using const_iterator = const T *;

    /// QArray() makes a null array.
    QArray() noexcept = default;

    /// QArray(size) makes an array of `size` elements that are not initialised. It is null when
    /// size is not above 0, or when there is no memory.
    explicit QArray(int size) { resize(size); }

    /// QArray(other) shares the block of `other`.
    QArray(const QArray &other) noexcept : m_block(other.m_block)
    {
        if (m_block) {
            ++m_block->holders;
        }
    }

    /// QArray(other) takes over the block of `other`, which becomes null.
    QArray(QArray &&other) noexcept : m_block(std::exchange(other.m_block, nullptr)) { }

    /// QArray(bytes) makes an array of its own from a copy of `bytes`: null when `bytes` is null,
    /// empty when it is empty. For elements of one byte.
    explicit QArray(QByteArrayView bytes) : m_block(blockOf(bytes.data(), bytes.size()))
    {
        static_assert(sizeof(T) == 1, "only an array of bytes can be made from bytes");
    }

    ~QArray() { release(m_block); }

    /// operator= shares the block of `other`; the other holders of the block held until now keep
    /// that.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the temporary holds the block
    QArray &operator=(const QArray &other) noexcept
    {
        QArray(other).swap(*this);
        return *this;
    }
    QArray &operator=(QArray &&other) noexcept
    {
        QArray(std::move(other)).swap(*this);
        return *this;
    }

    void swap(QArray &other) noexcept { std::swap(m_block, other.m_block); }

    /// assign shares the block of `other`, as operator= does.
    QArray &assign(const QArray &other) noexcept { return *this = other; }

    /// assign makes this an array of its own with a copy of the `size` elements at `data`, which
    /// may lie inside this array. Nothing is taken over: `data` stays the caller's. Former
    /// co-holders keep what they have. Null data gives a null array. It returns false, with nothing
    /// changed, when size is negative or there is no memory.
    bool assign(const T *data, int size)
    {
        Block *fresh = data ? blockOf(data, size) : nullptr;
        if (data && !fresh) {
            return false;
        }
        release(std::exchange(m_block, fresh));
        return true;
    }

    /// duplicate makes this an array of its own with a copy of the elements of `other`, or of the
    /// `size` elements at `data`, under the rules of assign(data, size).
    bool duplicate(const QArray &other) { return assign(other.constData(), other.size()); }
    bool duplicate(const T *data, int size) { return assign(data, size); }

    /// copy returns an array of its own with the same elements; the copy of a null array is null.
    [[nodiscard]] QArray copy() const { return fromBlock(blockOf(constData(), size())); }

    /// fromBytes returns an array of its own with a copy of the `size` bytes at `bytes`; it is null
    /// when `bytes` is null, when `size` is negative or no whole number of elements, or when there
    /// is no memory.
    [[nodiscard]] static QArray fromBytes(const void *bytes, int size)
    {
        constexpr int width = static_cast<int>(sizeof(T));
        return fromBlock(size % width == 0 ? blockOf(bytes, size / width) : nullptr);
    }

    /// slice returns an array whose `length` elements are those of `whole` from `offset` on,
    /// without a copy. It is null when that range does not lie inside `whole`.
    ///
    /// The slice keeps the memory alive, also when `whole` is destroyed. `whole` stays where it is
    /// as long as it does not outgrow its capacity; when it does, it moves and leaves the memory to
    /// its slices, so that neither side ever sees memory of the other go. The slice in turn moves
    /// to memory of its own when it is resized beyond `length` or detached, and then goes on alone.
    ///
    /// Writing into a slice writes the bytes of `whole`, and the other way round. Slices are for
    /// private buffers that nobody writes any more. A small slice keeps the whole memory: detach()
    /// what is to live long.
    [[nodiscard]] static QArray slice(const QArray &whole, int offset, int length)
    {
        if (!whole.m_block || offset < 0 || length < 0 || length > whole.size()
            || offset > whole.size() - length) {
            return QArray();
        }
        Block *block = newBlock(0);
        if (block) {
            block->size = block->capacity = length;
            block->region = whole.m_block->region;
            ++block->region->refs;
            block->data = static_cast<T *>(whole.m_block->data) + offset;
        }
        return fromBlock(block);
    }

    /// detach gives this holder an array of its own, unless it is alone already: other holders, and
    /// slices or the whole that a slice belongs to, keep theirs. It returns false, with nothing
    /// changed, when there is no memory.
    bool detach()
    {
        return !m_block || (m_block->holders == 1 && m_block->region->refs == 1)
            || assign(constData(), size());
    }

    [[nodiscard]] int size() const noexcept { return m_block ? m_block->size : 0; }

    /// capacity returns the size up to which resize() moves nothing.
    [[nodiscard]] int capacity() const noexcept { return m_block ? m_block->capacity : 0; }

    [[nodiscard]] bool isEmpty() const noexcept { return size() == 0; }
    [[nodiscard]] bool isNull() const noexcept { return !m_block; }

    /// data returns the first element, null for a null array.
    [[nodiscard]] T *data() noexcept { return m_block ? static_cast<T *>(m_block->data) : nullptr; }
    [[nodiscard]] const T *data() const noexcept { return constData(); }
    [[nodiscard]] const T *constData() const noexcept
    {
        return m_block ? static_cast<const T *>(m_block->data) : nullptr;
    }

    /// at returns element `i`, which must be in 0..size() - 1.
    [[nodiscard]] T &at(int i) { return element(i); }
    [[nodiscard]] const T &at(int i) const { return element(i); }
    [[nodiscard]] T &operator[](int i) { return element(i); }
    [[nodiscard]] const T &operator[](int i) const { return element(i); }

    [[nodiscard]] iterator begin() noexcept { return data(); }
    [[nodiscard]] iterator end() noexcept { return data() + size(); }
    [[nodiscard]] const_iterator begin() const noexcept { return constData(); }
    [[nodiscard]] const_iterator end() const noexcept { return constData() + size(); }
    [[nodiscard]] const_iterator cbegin() const noexcept { return begin(); }
    [[nodiscard]] const_iterator cend() const noexcept { return end(); }

    /// resize sets the size for all holders. The elements up to the smaller of both sizes are kept,
    /// new ones are not initialised. A null array stays null when resized to 0. It returns false,
    /// with nothing changed, when `size` is negative, too large or there is no memory.
    bool resize(int size)
    {
        if (Q_LIKELY(m_block && static_cast<unsigned>(size) <= static_cast<unsigned>(capacity()))) {
            m_block->size = size;
            return true;
        }
        return grow(size);
    }

    /// truncate is resize for a size that is not above the present one; a larger `size` changes
    /// nothing. It returns false only for a negative size.
    bool truncate(int size) { return size >= this->size() || resize(size); }

    /// reserve makes room for `capacity` elements and keeps the size, so that resize() up to there
    /// moves nothing. A null array becomes an empty one. It returns false as resize() does.
    bool reserve(int capacity)
    {
        return capacity >= 0 && ((m_block && capacity <= m_block->capacity) || moveTo(capacity));
    }

    /// fill sets all elements to `value`, after resizing to `size` unless that is -1. It returns
    /// false as resize() does.
    bool fill(const T &value, int size = -1)
    {
        const T kept = value;
        if (size != -1 && !resize(size)) {
            return false;
        }
        std::fill(begin(), end(), kept);
        return true;
    }

    /// toByteArray returns a copy of the bytes: a null byte array for a null array, an empty one
    /// for an empty array. For elements of one byte.
    [[nodiscard]] QByteArray toByteArray() const
    {
        static_assert(sizeof(T) == 1, "only an array of bytes is a byte array");
        return m_block ? QByteArray(reinterpret_cast<const char *>(constData()), size())
                       : QByteArray();
    }
    explicit operator QByteArray() const { return toByteArray(); }

    /// view returns a view of the bytes, valid as long as data() is. An array of bytes also
    /// converts to a QByteArrayView by itself.
    [[nodiscard]] QByteArrayView view() const noexcept
    {
        static_assert(sizeof(T) == 1, "only an array of bytes is a view of bytes");
        return QByteArrayView(reinterpret_cast<const char *>(constData()), size());
    }

    /// operator== compares the elements, whether the arrays share them or not.
    friend bool operator==(const QArray &a, const QArray &b)
    {
        return a.size() == b.size()
            && (a.constData() == b.constData() || std::equal(a.begin(), a.end(), b.begin()));
    }
    friend bool operator!=(const QArray &a, const QArray &b) { return !(a == b); }

private:
    using Block = wmsg::detail::ArrayBlock;
    using Region = wmsg::detail::ArrayRegion;

    static constexpr std::size_t roundUp(std::size_t size)
    {
        return (size + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
    }
    static constexpr std::size_t kBlockHead = roundUp(sizeof(Block));
    static constexpr std::size_t kRegionHead = roundUp(sizeof(Region));
    static constexpr int kMaxSize =
        static_cast<int>((std::size_t{INT_MAX} - kBlockHead) / sizeof(T));

    static std::size_t bytes(int count) { return static_cast<std::size_t>(count) * sizeof(T); }
    static T *elementsAfter(void *head, std::size_t headSize)
    {
        return reinterpret_cast<T *>(static_cast<char *>(head) + headSize);
    }

    static QArray fromBlock(Block *block)
    {
        QArray array;
        array.m_block = block;
        return array;
    }

    /// Makes a block with one holder, no elements and room for `capacity`; null without memory.
    static Block *newBlock(int capacity)
    {
        void *memory = std::malloc(kBlockHead + bytes(capacity));
        return memory ? setUpBlock(memory, 0, capacity) : nullptr;
    }
    static Block *setUpBlock(void *memory, int size, int capacity)
    {
        Block *block = new (memory) Block{{1}, 1, size, capacity, nullptr, nullptr};
        block->data = elementsAfter(block, kBlockHead);
        block->region = &block->own;
        return block;
    }

    /// Makes a block with a copy of `size` elements; null for null data, a bad size or without
    /// memory.
    static Block *blockOf(const void *data, qsizetype size)
    {
        if (!data || size < 0 || size > kMaxSize) {
            return nullptr;
        }
        Block *block = newBlock(static_cast<int>(size));
        if (block) {
            block->size = static_cast<int>(size);
            if (size > 0) {
                std::memcpy(block->data, data, bytes(block->size));
            }
        }
        return block;
    }

    static void release(Block *block)
    {
        if (!block || --block->holders > 0) {
            return;
        }
        if (block->region != &block->own) {
            release(block->region);
        }
        release(&block->own);
    }

    /// A block begins with its own region, so that this frees either.
    static void release(Region *region)
    {
        if (--region->refs == 0) {
            std::free(region);
        }
    }

    T &element(int i) const
    {
        Q_ASSERT(i >= 0 && i < size());
        return static_cast<T *>(m_block->data)[i];
    }

    /// The slow half of resize: `size` is negative or above the capacity. Arrays that grow step by
    /// step get half as much again, so that n steps cost time in proportion to n.
    Q_NEVER_INLINE bool grow(int size)
    {
        if (size <= 0) {
            return size == 0; // a null array: others have the capacity for 0
        }
        const int current = this->size();
        const int roomy = current > 0 && current < kMaxSize / 2 ? current + current / 2 : size;
        if (!moveTo(std::max(size, roomy)) && (roomy <= size || !moveTo(size))) {
            return false;
        }
        m_block->size = size;
        return true;
    }

    /// Gives the array room for `capacity` elements, which is above what it has, and keeps its
    /// elements.
    Q_NEVER_INLINE bool moveTo(int capacity)
    {
        if (capacity > kMaxSize) {
            return false;
        }
        if (!m_block) {
            m_block = newBlock(capacity);
            return m_block;
        }
        // The allocator can often extend the memory where it lies, but it may also copy all of it;
        // where most of it is unused, copying the elements alone is cheaper.
        const bool mostlyUsed = m_block->size >= m_block->capacity / 2;
        const bool isAlone = m_block->region->refs == 1;
        if (isAlone && mostlyUsed && m_block->region == &m_block->own && m_block->holders == 1) {
            return extendBlock(capacity);
        }
        if (isAlone && mostlyUsed && m_block->data == elementsAfter(m_block->region, kRegionHead)) {
            return extendRegion(capacity);
        }
        return moveToNewRegion(capacity);
    }

    bool extendBlock(int capacity)
    {
        const int size = m_block->size;
        void *memory = std::realloc(m_block, kBlockHead + bytes(capacity));
        if (memory) {
            m_block = setUpBlock(memory, size, capacity);
        }
        return memory;
    }

    bool extendRegion(int capacity)
    {
        void *memory = std::realloc(m_block->region, kRegionHead + bytes(capacity));
        if (memory) {
            useRegion(memory, capacity);
        }
        return memory;
    }

    bool moveToNewRegion(int capacity)
    {
        void *memory = std::malloc(kRegionHead + bytes(capacity));
        if (!memory) {
            return false;
        }
        if (m_block->size > 0) {
            std::memcpy(elementsAfter(memory, kRegionHead), m_block->data, bytes(m_block->size));
        }
        if (m_block->region != &m_block->own) {
            release(m_block->region);
        }
        useRegion(memory, capacity);
        return true;
    }

    void useRegion(void *memory, int capacity)
    {
        m_block->region = new (memory) Region{1};
        m_block->data = elementsAfter(memory, kRegionHead);
        m_block->capacity = capacity;
    }

    Block *m_block = nullptr;
};
