// VX::UUID: the 16-byte identifiers of the component model (interfaces,
// driver types, classes), compared byte for byte. Written as text in the
// usual 8-4-4-4-12 hex form, bytes in the order written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "host/runtime/string.h"

namespace VX {

class UUID {
public:
    using Bytes = std::array<uint8_t, 16>;

    // The nil identifier (all zero).
    constexpr UUID() = default;
    constexpr explicit UUID(const Bytes& bytes) : bytes_(bytes) {}

    // Reads "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" (either case). False, with
    // `out` untouched, for any other text.
    static constexpr bool PARSE(std::string_view text, UUID& out);
    // For constants: constexpr VX::UUID id = VX::UUID::OF("c9386e21-...").
    // A malformed text does not compile.
    static consteval UUID OF(std::string_view text) {
        UUID id;
        if (!PARSE(text, id)) MALFORMED_UUID_TEXT();
        return id;
    }

    const Bytes& getBytes() const { return bytes_; }
    constexpr bool isNil() const { return *this == UUID(); }
    // The lower-case text form.
    String toString() const;

    friend constexpr bool operator==(const UUID& a, const UUID& b) = default;
    friend constexpr auto operator<=>(const UUID& a, const UUID& b) = default;

private:
    // Not constexpr on purpose: reaching it while evaluating OF fails the build.
    static void MALFORMED_UUID_TEXT() {}
    static constexpr int HEX(char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    }

    Bytes bytes_{};
};

constexpr bool UUID::PARSE(std::string_view text, UUID& out) {
    if (text.size() != 36) return false;
    Bytes bytes{};
    size_t pos = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (pos == 8 || pos == 13 || pos == 18 || pos == 23) {
            if (text[pos] != '-') return false;
            ++pos;
        }
        const int high = HEX(text[pos]);
        const int low = HEX(text[pos + 1]);
        if (high < 0 || low < 0) return false;
        bytes[i] = static_cast<uint8_t>(high * 16 + low);
        pos += 2;
    }
    out = UUID(bytes);
    return true;
}

}  // namespace VX

template <>
struct std::hash<VX::UUID> {
    size_t operator()(const VX::UUID& id) const noexcept {
        size_t h = 0;
        for (uint8_t b : id.getBytes()) h = h * 131 + b;
        return h;
    }
};
