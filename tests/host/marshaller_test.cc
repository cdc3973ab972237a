// VXMarshaller: reads that fail and leave the rest (short buffers, lengths
// past the end, times out of range). The forms written, byte for byte, are
// the Value marshalling tests'.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "host/runtime/marshaller.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytes(const VXMarshaller& m) {
    return Bytes(m.getData(), m.getData() + m.getLength());
}

// The native forms of the 32-bit numbers `v`.
Bytes native(std::initializer_list<int32_t> v) {
    Bytes out(v.size() * 4);
    memcpy(out.data(), std::data(v), out.size());
    return out;
}

TEST(MarshallerTest, FailedReadsLeaveValueAndBuffer) {
    // Nanoseconds outside 0..999999999 are refused like a short buffer.
    for (const int32_t nanos : {-1, 0, 999999999, 1000000000, INT32_MIN}) {
        const bool normal = nanos >= 0 && nanos <= 999999999;
        const Bytes time = native({5, nanos});
        for (size_t length : {time.size(), time.size() - 1}) {
            VXMarshaller m(time.data(), length);
            VX::Time t(7, 7);
            const bool ok = normal && length == 8;
            EXPECT_EQ(m.unmarshal(t).getValue(), ok ? 0 : XCode::GENERIC_FAILURE) << nanos;
            EXPECT_EQ(t, ok ? VX::Time(5, nanos) : VX::Time(7, 7)) << nanos;
            EXPECT_EQ(m.getLength(), ok ? 0u : length) << nanos;
        }
    }
    const Bytes one = native({1});
    VXMarshaller m(one.data(), 3);
    int i = 9;
    EXPECT_TRUE(m.unmarshal(i).isErr());
    EXPECT_EQ(i, 9);
    // A length beyond the bytes left: the length is consumed, nothing more.
    m = VXMarshaller();
    m.marshal(3);
    m.addTail("ab", 2);
    String s = "keep";
    EXPECT_TRUE(m.unmarshal(s).isErr());
    EXPECT_EQ(s, "keep");
    EXPECT_EQ(bytes(m), (Bytes{'a', 'b'}));
    char out[3] = {};
    EXPECT_TRUE(m.removeHeader(out, 3).isErr());
    EXPECT_TRUE(m.removeHeader(nullptr, 1).isSuccess());  // skip
    EXPECT_TRUE(m.removeHeader(out, 1).isSuccess() && out[0] == 'b');
}

}  // namespace
