// Text: the text payload of a Value. One word: null for the empty text (every
// value that is not a text), else a shared, counted block holding the String.
// Copies share the block, so a text travels through stores, propagation and
// deliveries without being copied; a change through edit() first makes the
// block this holder's own. The count is atomic because values are handed to
// other threads (queued observer calls).
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "host/runtime/string.h"

namespace VX::SysEvent {

class Text {
public:
    Text() = default;
    // Explicit, so that comparing a String with a Text is one comparison of
    // Strings, not a choice between two.
    explicit Text(const String& s) { assign(String(s)); }
    explicit Text(String&& s) { assign(std::move(s)); }
    explicit Text(const char* s) { assign(String(s)); }
    Text(const Text& other) : m_block(other.m_block) {
        if (m_block) m_block->refs.fetch_add(1, std::memory_order_relaxed);
    }
    Text(Text&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    Text& operator=(const Text& other) {
        if (m_block != other.m_block) {
            Text copy(other);
            std::swap(m_block, copy.m_block);
        }
        return *this;
    }
    Text& operator=(Text&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    Text& operator=(const String& s) { return *this = Text(s); }
    Text& operator=(String&& s) { return *this = Text(std::move(s)); }
    Text& operator=(const char* s) { return *this = Text(s); }
    ~Text() { drop(); }

    const String& get() const { return m_block ? m_block->text : String::s_empty; }
    operator const String&() const { return get(); }  // NOLINT: implicit by design
    // The String, this holder's own, to change in place.
    String& edit();

    const char* c_str() const { return get().c_str(); }
    const std::string& str() const { return get().str(); }
    size_t length() const { return get().length(); }
    bool isEmpty() const { return !m_block || m_block->text.isEmpty(); }
    int indexOf(char c, size_t from = 0) const { return get().indexOf(c, from); }
    void clear() { drop(); }

    Text& operator+=(const Text& other) {
        if (!other.isEmpty()) edit() += other.get();
        return *this;
    }
    friend bool operator==(const Text& a, const Text& b) {
        return a.m_block == b.m_block || a.get() == b.get();
    }
    friend String operator+(const char* a, const Text& b) { return a + b.get(); }
    friend String operator+(const Text& a, const char* b) { return a.get() + b; }

private:
    struct Block {
        explicit Block(String&& s) : text(std::move(s)) {}
        std::atomic<uint32_t> refs{1};
        String text;
    };

    void assign(String&& s) {
        if (!s.isEmpty()) m_block = new Block(std::move(s));
    }
    void drop() {
        Block* b = std::exchange(m_block, nullptr);
        if (b && b->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete b;
    }

    Block* m_block = nullptr;
};

inline String& Text::edit() {
    if (!m_block) {
        m_block = new Block(String());
    } else if (m_block->refs.load(std::memory_order_acquire) != 1) {
        Block* own = new Block(String(m_block->text));
        drop();
        m_block = own;
    }
    return m_block->text;
}

}  // namespace VX::SysEvent
