// VXMarshaller: the primitive forms byte for byte, short reads and times out
// of range, and the sharing of buffers between copies until one of them
// changes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "host/runtime/marshaller.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytes(const VXMarshaller& m) {
    return Bytes(m.getData(), m.getData() + m.getLength());
}

// The native forms of the 32-bit numbers `v`, then `tail`.
Bytes native(std::initializer_list<int32_t> v, Bytes tail = {}) {
    Bytes out(v.size() * 4);
    memcpy(out.data(), std::data(v), out.size());
    out.insert(out.end(), tail.begin(), tail.end());
    return out;
}

TEST(MarshallerTest, PrimitiveFormsInNativeOrderReadBackInWriteOrder) {
    struct Case {
        const char* name;
        std::function<XCode(VXMarshaller&)> write;
        Bytes expected;
    } cases[] = {
        {"int", [](VXMarshaller& m) { return m.marshal(0x01020304); }, native({0x01020304})},
        {"string", [](VXMarshaller& m) { return m.marshal(String("abc")); },
         native({3}, {'a', 'b', 'c'})},
        {"empty string", [](VXMarshaller& m) { return m.marshal(String()); }, native({0})},
        {"time", [](VXMarshaller& m) { return m.marshal(VX::Time(-5, 6)); }, native({-5, 6})},
    };
    for (const Case& c : cases) {
        VXMarshaller m;
        EXPECT_TRUE(c.write(m).isSuccess()) << c.name;
        EXPECT_EQ(bytes(m), c.expected) << c.name;
    }

    VXMarshaller m;
    m.marshal(-7);
    m.marshal(String("with\0nul", 8));
    m.marshal(VX::Time(123, 456));
    int i = 0;
    String s;
    VX::Time t;
    ASSERT_TRUE(m.unmarshal(i).isSuccess());
    ASSERT_TRUE(m.unmarshal(s).isSuccess());
    ASSERT_TRUE(m.unmarshal(t).isSuccess());
    EXPECT_EQ(i, -7);
    EXPECT_EQ(s, String("with\0nul", 8));
    EXPECT_EQ(t, VX::Time(123, 456));
    EXPECT_EQ(m.getLength(), 0u);
}

TEST(MarshallerTest, ShortReadsFailAndLeaveTheRest) {
    {
        const uint8_t three[] = {1, 2, 3};
        VXMarshaller m(three, sizeof three);
        int i = 9;
        EXPECT_EQ(m.unmarshal(i).getValue(), XCode::GENERIC_FAILURE);
        EXPECT_EQ(i, 9);
        EXPECT_EQ(m.getLength(), 3u);
    }
    {
        const Bytes time = native({1, 2});
        VXMarshaller m(time.data(), 7);
        VX::Time t(5, 5);
        EXPECT_TRUE(m.unmarshal(t).isErr());
        EXPECT_EQ(t, VX::Time(5, 5));
        EXPECT_EQ(m.getLength(), 7u);
    }
    // Nanoseconds outside 0..999999999 are refused like a short buffer.
    for (const int32_t nanos : {-1, 0, 999999999, 1000000000, INT32_MIN}) {
        SCOPED_TRACE(nanos);
        const bool normal = nanos >= 0 && nanos <= 999999999;
        const Bytes time = native({5, nanos});
        VXMarshaller m(time.data(), time.size());
        VX::Time t(7, 7);
        EXPECT_EQ(m.unmarshal(t).getValue(), normal ? 0 : XCode::GENERIC_FAILURE);
        EXPECT_EQ(t, normal ? VX::Time(5, nanos) : VX::Time(7, 7));
        EXPECT_EQ(m.getLength(), normal ? 0u : 8u);
    }
    {
        // A length beyond the bytes left: the length is consumed, nothing more.
        VXMarshaller m;
        m.marshal(10);
        m.addTail("ab", 2);
        String s = "keep";
        EXPECT_TRUE(m.unmarshal(s).isErr());
        EXPECT_EQ(s, "keep");
        EXPECT_EQ(m.getLength(), 2u);
        // A length of zero or less leaves the string untouched.
        m = VXMarshaller();
        m.marshal(-3);
        EXPECT_TRUE(m.unmarshal(s).isSuccess());
        EXPECT_EQ(s, "keep");
    }
    VXMarshaller m;
    m.addTail("xyz", 3);
    char out[4] = {};
    EXPECT_TRUE(m.removeHeader(out, 4).isErr());
    EXPECT_EQ(m.getLength(), 3u);
    EXPECT_TRUE(m.removeHeader(nullptr, 1).isSuccess());  // skip
    EXPECT_TRUE(m.removeHeader(out, 2).isSuccess());
    EXPECT_EQ(String(out, 2), "yz");
}

TEST(MarshallerTest, CopiesShareUntilOneChanges) {
    VXMarshaller a;
    a.marshal(1);
    a.marshal(2);
    VXMarshaller b = a;
    EXPECT_EQ(a.getData(), b.getData());  // one buffer

    int v = 0;
    ASSERT_TRUE(b.unmarshal(v).isSuccess());  // reading changes b only
    EXPECT_EQ(v, 1);
    EXPECT_NE(a.getData(), b.getData());
    EXPECT_EQ(bytes(a), native({1, 2}));
    EXPECT_EQ(bytes(b), native({2}));

    VXMarshaller c = a;
    c.marshal(3);  // writing changes c only
    EXPECT_EQ(bytes(a), native({1, 2}));
    EXPECT_EQ(bytes(c), native({1, 2, 3}));

    // An unshared buffer is not copied.
    const uint8_t* before = c.getData();
    c.copyOnWrite();
    EXPECT_EQ(c.getData(), before);
}

}  // namespace
