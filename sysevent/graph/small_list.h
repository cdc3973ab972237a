// SmallList<T>: the list type of the graph's per-node links (children,
// parents, observers, the parents awaiting an update). Most nodes have one
// entry in each, so one entry lives inside the list itself and only a second
// one moves the entries to the heap; the list is two words, not three.
//
// Only what the graph needs: append, index, iterate, erase by value or
// predicate, clear. Iterators are plain pointers and are invalidated by any
// change, as with a vector.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

namespace VX::SysEvent {

template <class T>
class SmallList {
    static_assert(sizeof(T) <= sizeof(void*), "an entry fits the list's own word");

public:
    SmallList() = default;
    SmallList(const SmallList&) = delete;
    SmallList& operator=(const SmallList&) = delete;
    ~SmallList() {
        clear();
        release();
    }

    uint32_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T* begin() { return data(); }
    T* end() { return data() + m_size; }
    const T* begin() const { return data(); }
    const T* end() const { return data() + m_size; }
    T& operator[](size_t i) { return data()[i]; }
    const T& operator[](size_t i) const { return data()[i]; }
    T& front() { return data()[0]; }

    template <class... A>
    T& emplace_back(A&&... args) {
        if (m_size == capacity()) grow();
        T* slot = data() + m_size;
        new (slot) T(std::forward<A>(args)...);
        ++m_size;
        return *slot;
    }
    void push_back(const T& v) { emplace_back(v); }

    void clear() {
        T* d = data();
        for (uint32_t i = 0; i < m_size; ++i) d[i].~T();
        m_size = 0;
    }

    // Removes every entry for which `pred` holds, keeping the order of the
    // rest; returns how many went.
    template <class P>
    uint32_t eraseIf(P pred) {
        T* d = data();
        uint32_t kept = 0;
        for (uint32_t i = 0; i < m_size; ++i) {
            if (pred(d[i])) continue;
            if (kept != i) d[kept] = std::move(d[i]);
            ++kept;
        }
        const uint32_t gone = m_size - kept;
        for (uint32_t i = kept; i < m_size; ++i) d[i].~T();
        m_size = kept;
        return gone;
    }
    uint32_t erase(const T& v) {
        return eraseIf([&v](const T& x) { return x == v; });
    }

    // A copy as a vector, for callers outside the graph.
    std::vector<T> toVector() const { return std::vector<T>(begin(), end()); }

private:
    bool isInline() const { return m_capacity <= 1; }
    uint32_t capacity() const { return m_capacity == 0 ? 1 : m_capacity; }
    T* data() { return isInline() ? reinterpret_cast<T*>(m_store) : m_heap; }
    const T* data() const { return isInline() ? reinterpret_cast<const T*>(m_store) : m_heap; }

    void grow() {
        const uint32_t newCapacity = capacity() * 2;
        T* fresh = static_cast<T*>(std::malloc(sizeof(T) * newCapacity));
        if (!fresh) throw std::bad_alloc();
        T* old = data();
        for (uint32_t i = 0; i < m_size; ++i) {
            new (fresh + i) T(std::move(old[i]));
            old[i].~T();
        }
        release();
        m_heap = fresh;
        m_capacity = newCapacity;
    }
    void release() {
        if (!isInline()) std::free(m_heap);
        m_capacity = 0;
    }

    // Either the one inline entry or the heap block's address.
    union {
        alignas(T) unsigned char m_store[sizeof(T)];
        T* m_heap;
    };
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;  // 0: inline (room for one)
};

}  // namespace VX::SysEvent
