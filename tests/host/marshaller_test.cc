// VXMarshaller: the primitive forms byte for byte, short reads, and the
// sharing of buffers between copies until one of them changes.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "host/marshaller.h"

namespace {

std::vector<uint8_t> bytes(const VXMarshaller& m) {
    return std::vector<uint8_t>(m.getData(), m.getData() + m.getLength());
}

template <typename T>
std::vector<uint8_t> nativeBytes(T v) {
    std::vector<uint8_t> out(sizeof v);
    memcpy(out.data(), &v, sizeof v);
    return out;
}

std::vector<uint8_t> concat(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(MarshallerTest, PrimitiveFormsInNativeOrder) {
    {
        VXMarshaller m;
        ASSERT_TRUE(m.marshal(0x01020304).isSuccess());
        EXPECT_EQ(bytes(m), nativeBytes<int32_t>(0x01020304));
    }
    {
        VXMarshaller m;
        m.marshal(String("abc"));
        EXPECT_EQ(bytes(m), concat(nativeBytes<int32_t>(3), {'a', 'b', 'c'}));
    }
    {
        VXMarshaller m;
        m.marshal(String());
        EXPECT_EQ(bytes(m), nativeBytes<int32_t>(0));
    }
    {
        VXMarshaller m;
        m.marshal(VX::Time(-5, 6));
        EXPECT_EQ(bytes(m), concat(nativeBytes<int32_t>(-5), nativeBytes<int32_t>(6)));
    }
}

TEST(MarshallerTest, RoundTripInWriteOrder) {
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
    const uint8_t three[] = {1, 2, 3};
    {
        VXMarshaller m(three, sizeof three);
        int i = 9;
        EXPECT_EQ(m.unmarshal(i).getValue(), XCode::GENERIC_FAILURE);
        EXPECT_EQ(i, 9);
        EXPECT_EQ(m.getLength(), 3u);
    }
    {
        VXMarshaller w;
        w.marshal(VX::Time(1, 2));
        VXMarshaller m(w.getData(), 7);
        VX::Time t(5, 5);
        EXPECT_TRUE(m.unmarshal(t).isErr());
        EXPECT_EQ(t, VX::Time(5, 5));
        EXPECT_EQ(m.getLength(), 7u);
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
    }
    {
        // A length of zero or less leaves the string untouched.
        VXMarshaller m;
        m.marshal(-3);
        String s = "keep";
        EXPECT_TRUE(m.unmarshal(s).isSuccess());
        EXPECT_EQ(s, "keep");
    }
    {
        VXMarshaller m;
        m.addTail("xyz", 3);
        char out[4] = {};
        EXPECT_TRUE(m.removeHeader(out, 4).isErr());
        EXPECT_EQ(m.getLength(), 3u);
        EXPECT_TRUE(m.removeHeader(nullptr, 1).isSuccess());  // skip
        EXPECT_TRUE(m.removeHeader(out, 2).isSuccess());
        EXPECT_EQ(String(out, 2), "yz");
    }
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
    EXPECT_EQ(a.getLength(), 8u);
    EXPECT_EQ(b.getLength(), 4u);

    VXMarshaller c = a;
    c.marshal(3);  // writing changes c only
    EXPECT_EQ(a.getLength(), 8u);
    EXPECT_EQ(c.getLength(), 12u);
    ASSERT_TRUE(a.unmarshal(v).isSuccess());
    EXPECT_EQ(v, 1);
    ASSERT_TRUE(a.unmarshal(v).isSuccess());
    EXPECT_EQ(v, 2);

    // An unshared buffer is not copied.
    VXMarshaller d;
    d.marshal(4);
    const uint8_t* before = d.getData();
    d.copyOnWrite();
    EXPECT_EQ(d.getData(), before);
}

}  // namespace
