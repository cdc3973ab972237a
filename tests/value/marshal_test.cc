// Marshalled forms of Value and Event, byte for byte in native byte order
// (expected bytes are built with memcpy of native integers, so the test holds
// on either endianness), and malformed buffers.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "host/marshaller.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

using Bytes = std::vector<uint8_t>;

// Appends the native image of `v`.
template <typename T>
Bytes& put(Bytes& b, T v) {
    uint8_t raw[sizeof(T)];
    memcpy(raw, &v, sizeof(T));
    b.insert(b.end(), raw, raw + sizeof(T));
    return b;
}

Bytes bytesOf(const VXMarshaller& m) {
    return Bytes(m.getData(), m.getData() + m.getLength());
}

Bytes tagged(const Value& v) {
    VXMarshaller m;
    EXPECT_TRUE(v.marshal(m).isSuccess());
    return bytesOf(m);
}

TEST(Marshal, TaggedFormBytes) {
    Bytes b;
    put<int32_t>(b, 2);
    b.push_back(1);
    EXPECT_EQ(tagged(Value(true)), b);

    b.clear();
    put<int32_t>(b, 2);
    b.push_back(0);
    EXPECT_EQ(tagged(Value(false)), b);

    b.clear();
    put<uint64_t>(put<int32_t>(b, 3), 5);
    EXPECT_EQ(tagged(Value(5ULL)), b);

    b.clear();
    put<double>(put<int32_t>(b, 4), -2.5);
    EXPECT_EQ(tagged(Value(-2.5)), b);

    b.clear();
    put<int32_t>(put<int32_t>(put<int32_t>(b, 8), 90), 250);
    EXPECT_EQ(tagged(Value(VX::Time(90, 250), DST_REL_TIME)), b);

    b.clear();
    put<int32_t>(put<int32_t>(b, 9), 3);
    b.insert(b.end(), {'a', 'b', 'c'});
    EXPECT_EQ(tagged(Value("abc")), b);

    b.clear();
    put<int32_t>(put<int32_t>(b, 9), 0);
    EXPECT_EQ(tagged(Value("")), b);

    b.clear();
    put<int32_t>(b, 11);
    EXPECT_EQ(tagged(Value(DST_ERR_NA)), b);

    b.clear();
    put<int32_t>(b, 10);
    EXPECT_EQ(tagged(Value(DST_ERR_DIV0)), b);

    b.clear();
    put<int32_t>(b, 0);
    EXPECT_EQ(tagged(Value(DST_UNDEF)), b);
}

TEST(Marshal, TaggedFormRoundTripsEveryKind) {
    const Value values[] = {
        Value(DST_UNDEF),
        Value(DST_EMPTY),
        Value(true),
        Value(18446744073709551615ULL),
        Value(1e-300),
        Value(VX::Time(1700000000, 5), DST_ABS_DATE_TIME),
        Value(VX::Time(86400, 0), DST_ABS_DATE),
        Value(VX::Time(3600, 0), DST_ABS_TIME),
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

// Reads `bytes` as a tagged value into a value holding 7; returns the code.
XCode readInto(const Bytes& bytes, Value& v) {
    VXMarshaller m(bytes.data(), bytes.size());
    v = Value(7ULL);
    return v.unmarshal(m);
}

TEST(Marshal, MalformedBuffersFailCleanly) {
    const struct {
        const char* what;
        Bytes bytes;
    } failing[] = {
        {"empty", {}},
        {"short subtype", {0, 0}},
        {"bool without payload",
         [] {
             Bytes b;
             return put<int32_t>(b, 2);
         }()},
        {"uint with 7 bytes",
         [] {
             Bytes b;
             put<int32_t>(b, 3);
             b.resize(b.size() + 7);
             return b;
         }()},
        {"float with 0 bytes",
         [] {
             Bytes b;
             return put<int32_t>(b, 4);
         }()},
        {"time with 4 bytes",
         [] {
             Bytes b;
             return put<int32_t>(put<int32_t>(b, 5), 1);
         }()},
        {"string without length",
         [] {
             Bytes b;
             return put<int32_t>(b, 9);
         }()},
        {"string claiming 10 of 3",
         [] {
             Bytes b;
             put<int32_t>(put<int32_t>(b, 9), 10);
             b.insert(b.end(), {'a', 'b', 'c'});
             return b;
         }()},
        {"string claiming 2^31-1",
         [] {
             Bytes b;
             put<int32_t>(put<int32_t>(b, 9), 0x7FFFFFFF);
             b.push_back('a');
             return b;
         }()},
    };
    for (const auto& c : failing) {
        Value v;
        XCode rc = readInto(c.bytes, v);
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << c.what;
        EXPECT_EQ(v, Value(7ULL)) << c.what;
    }
}

TEST(Marshal, OddButWellFormedBuffers) {
    Value v;
    Bytes b;
    put<int32_t>(b, 42);
    ASSERT_TRUE(readInto(b, v).isSuccess());
    EXPECT_EQ(v.toString(), "#NOTYPE!");
    EXPECT_EQ(v.getDataType(), DT_UNDEF);

    b.clear();
    put<int32_t>(b, -5);
    ASSERT_TRUE(readInto(b, v).isSuccess());
    EXPECT_EQ(v.toString(), "#NOTYPE!");

    // Any non-zero byte is true.
    b.clear();
    put<int32_t>(b, 2);
    b.push_back(0x80);
    ASSERT_TRUE(readInto(b, v).isSuccess());
    EXPECT_EQ(v, Value(true));

    // A negative length reads as the empty string.
    b.clear();
    put<int32_t>(put<int32_t>(b, 9), -4);
    ASSERT_TRUE(readInto(b, v).isSuccess());
    EXPECT_EQ(v, Value(""));

    // An error subtype carries no payload: what follows is left for the next
    // reader.
    b.clear();
    put<int32_t>(put<int32_t>(b, 10), 99);
    VXMarshaller m(b.data(), b.size());
    ASSERT_TRUE(v.unmarshal(m).isSuccess());
    EXPECT_EQ(v, Value(DST_ERR_DIV0));
    EXPECT_EQ(m.getLength(), 4u);
}

TEST(Marshal, EventForm) {
    const Event e(VX::Time(10, 1), VX::Time(20, 2), Value(5ULL));
    VXMarshaller m;
    ASSERT_TRUE(e.marshal(m).isSuccess());
    Bytes expected;
    put<int32_t>(put<int32_t>(expected, 10), 1);
    put<int32_t>(put<int32_t>(expected, 20), 2);
    put<uint64_t>(put<int32_t>(expected, 3), 5);
    EXPECT_EQ(bytesOf(m), expected);

    Event back;
    ASSERT_TRUE(back.unmarshal(m).isSuccess());
    EXPECT_EQ(back.start, e.start);
    EXPECT_EQ(back.end, e.end);
    EXPECT_EQ(back.value, e.value);
}

TEST(Marshal, EventKeepsWhatItReadBeforeAFailure) {
    Bytes b;
    put<int32_t>(put<int32_t>(b, 10), 1);
    put<int32_t>(put<int32_t>(b, 20), 2);
    put<int32_t>(put<int32_t>(b, 9), 50);  // a string that claims too much
    VXMarshaller m(b.data(), b.size());
    Event e(VX::Time(1, 0), VX::Time(2, 0), Value("old"));
    EXPECT_EQ(e.unmarshal(m).getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(e.start, VX::Time(10, 1));
    EXPECT_EQ(e.end, VX::Time(20, 2));
    EXPECT_EQ(e.value, Value("old"));

    // Too short for the end time: the start is already replaced.
    Bytes shortBuffer;
    put<int32_t>(put<int32_t>(shortBuffer, 30), 3);
    put<int32_t>(shortBuffer, 40);
    VXMarshaller m2(shortBuffer.data(), shortBuffer.size());
    EXPECT_TRUE(e.unmarshal(m2).isErr());
    EXPECT_EQ(e.start, VX::Time(30, 3));
    EXPECT_EQ(e.end, VX::Time(20, 2));
}

}  // namespace
}  // namespace VX::SysEvent
