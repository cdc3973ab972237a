// Marshalled forms of Value and Event in native byte order (expected bytes
// are built from native integers, so the test holds on either endianness),
// and malformed buffers. The bytes of every value a formula can produce are
// in the engine_value transcript (probe).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "host/runtime/marshaller.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

using Bytes = std::vector<uint8_t>;

// Builds a buffer from native images: B().i32(9).i32(3).raw({'a'}).
struct B {
    Bytes b;
    template <typename T>
    B& put(T v) {
        uint8_t image[sizeof(T)];
        memcpy(image, &v, sizeof(T));
        b.insert(b.end(), image, image + sizeof(T));
        return *this;
    }
    B& i32(int32_t v) { return put(v); }
    B& raw(std::initializer_list<uint8_t> bytes) {
        b.insert(b.end(), bytes);
        return *this;
    }
    operator Bytes() const { return b; }
};

Bytes bytesOf(const VXMarshaller& m) {
    return Bytes(m.getData(), m.getData() + m.getLength());
}

TEST(Marshal, TaggedFormRoundTripsKindsNoFormulaMakes) {
    // The kinds no formula makes (the others are in the engine_value transcript).
    const Value values[] = {
        Value(DST_UNDEF),
        Value(DST_EMPTY),
        Value(VX::Time(-1, 999999999), DST_REL_TIME),
        Value(String("a\0b", 3)),
        Value(DST_ERR_GENERIC),
    };
    for (const Value& v : values) {
        VXMarshaller m;
        ASSERT_TRUE(v.marshal(m).isSuccess());
        Value back(DST_ERR_NA);
        ASSERT_TRUE(back.unmarshal(m).isSuccess());
        EXPECT_EQ(back.subtype, v.subtype);
        EXPECT_EQ(back, v) << v.toString().c_str();
        EXPECT_EQ(m.getLength(), 0u);
    }
}

TEST(Marshal, InProcessFormRestoresAnEqualValue) {
    VXMarshaller m;
    m << Value("x") << Value(2.5) << Value(DST_ERR_VAL);
    Value a, b, c;
    m >> a >> b >> c;
    EXPECT_EQ(a, Value("x"));
    EXPECT_EQ(b, Value(2.5));
    EXPECT_EQ(c, Value(DST_ERR_VAL));
    // A failure is dropped, and the value stays.
    Value d(7ULL);
    m >> d;
    EXPECT_EQ(d, Value(7ULL));
}

TEST(Marshal, ReadingBuffers) {
    const Value kept(7ULL);  // what the target holds before the read
    const struct {
        const char* what;
        Bytes bytes;
        Value expected;  // `kept` when the read must fail
    } cases[] = {
        {"empty", {}, kept},
        {"short subtype", {0, 0}, kept},
        {"bool without payload", B().i32(2), kept},
        {"uint with 7 bytes", B().i32(3).raw({0, 0, 0, 0, 0, 0, 0}), kept},
        {"float with 0 bytes", B().i32(4), kept},
        {"time with 4 bytes", B().i32(5).i32(1), kept},
        {"duration of -1 ns", B().i32(8).i32(5).i32(-1), kept},
        {"date-time of 10^9 ns", B().i32(5).i32(5).i32(1000000000), kept},
        {"string without length", B().i32(9), kept},
        {"string claiming 10 of 3", B().i32(9).i32(10).raw({'a', 'b', 'c'}), kept},
        {"string claiming 2^31-1", B().i32(9).i32(0x7FFFFFFF).raw({'a'}), kept},
        // Odd but well formed.
        {"unknown kind", B().i32(42), Value(static_cast<DataSubType>(42))},
        {"negative kind", B().i32(-5), Value(static_cast<DataSubType>(-5))},
        {"any non-zero byte is true", B().i32(2).raw({0x80}), Value(true)},
        {"negative length is empty", B().i32(9).i32(-4), Value("")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        VXMarshaller m(c.bytes.data(), c.bytes.size());
        Value v = kept;
        XCode rc = v.unmarshal(m);
        const bool fails = c.expected.subtype == kept.subtype;
        EXPECT_EQ(rc.getValue(), fails ? XCode::GENERIC_FAILURE : XCode().getValue());
        EXPECT_EQ(v.subtype, c.expected.subtype);
        EXPECT_EQ(v, c.expected);
    }
    EXPECT_EQ(Value(static_cast<DataSubType>(42)).toString(), "#NOTYPE!");

    // An error subtype carries no payload: what follows is left for the next
    // reader.
    const Bytes b = B().i32(10).i32(99);
    VXMarshaller m(b.data(), b.size());
    Value v;
    ASSERT_TRUE(v.unmarshal(m).isSuccess());
    EXPECT_EQ(v, Value(DST_ERR_DIV0));
    EXPECT_EQ(m.getLength(), 4u);
}

TEST(Marshal, EventForm) {
    const Event e(VX::Time(10, 1), VX::Time(20, 2), Value(5ULL));
    VXMarshaller m;
    ASSERT_TRUE(e.marshal(m).isSuccess());
    EXPECT_EQ(bytesOf(m), Bytes(B().i32(10).i32(1).i32(20).i32(2).i32(3).put<uint64_t>(5)));

    Event back;
    ASSERT_TRUE(back.unmarshal(m).isSuccess());
    EXPECT_EQ(back.start, e.start);
    EXPECT_EQ(back.end, e.end);
    EXPECT_EQ(back.value, e.value);
}

TEST(Marshal, EventKeepsWhatItReadBeforeAFailure) {
    // A string that claims too much.
    const Bytes b = B().i32(10).i32(1).i32(20).i32(2).i32(9).i32(50);
    VXMarshaller m(b.data(), b.size());
    Event e(VX::Time(1, 0), VX::Time(2, 0), Value("old"));
    EXPECT_EQ(e.unmarshal(m).getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(e.start, VX::Time(10, 1));
    EXPECT_EQ(e.end, VX::Time(20, 2));
    EXPECT_EQ(e.value, Value("old"));

    // An end time out of range: the start is already replaced.
    const Bytes badEnd = B().i32(30).i32(3).i32(40).i32(-1).i32(1);
    VXMarshaller m3(badEnd.data(), badEnd.size());
    EXPECT_EQ(e.unmarshal(m3).getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(e.start, VX::Time(30, 3));
    EXPECT_EQ(e.end, VX::Time(20, 2));

    // Too short for the end time: the start is already replaced.
    const Bytes shortBuffer = B().i32(30).i32(3).i32(40);
    VXMarshaller m2(shortBuffer.data(), shortBuffer.size());
    EXPECT_TRUE(e.unmarshal(m2).isErr());
    EXPECT_EQ(e.start, VX::Time(30, 3));
    EXPECT_EQ(e.end, VX::Time(20, 2));
}

}  // namespace
}  // namespace VX::SysEvent
