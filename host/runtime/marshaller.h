// VXMarshaller: a FIFO byte buffer. Writers append at the tail, readers remove
// from the head. Copies share the buffer until one of them writes or reads:
// every writer and reader calls copyOnWrite() first, which gives this copy a
// buffer of its own when it is shared. Numbers are copied in native byte order.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

class VXMarshaller;

// Something that writes itself into, and reads itself from, a marshaller.
class VXMarshallable {
public:
    virtual ~VXMarshallable() = default;
    virtual XCode marshal(VXMarshaller& m) const = 0;
    virtual XCode unmarshal(VXMarshaller& m) = 0;
};

class VXMarshaller {
public:
    VXMarshaller() : buffer_(std::make_shared<std::vector<uint8_t>>()) {}
    // A reader over a copy of the given bytes.
    VXMarshaller(const void* data, size_t length)
        : buffer_(std::make_shared<std::vector<uint8_t>>(
              static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + length)) {}

    // Gives this marshaller its own buffer when the buffer is shared.
    XCode copyOnWrite();
    // Appends `length` bytes.
    XCode addTail(const void* data, size_t length);
    // Removes `length` bytes from the head into `out` (out may be null to
    // skip). Fails with the generic code, removing nothing, when fewer remain.
    XCode removeHeader(void* out, size_t length);

    // The unread bytes.
    const uint8_t* getData() const { return buffer_->data() + head_; }
    size_t getLength() const { return buffer_->size() - head_; }

    template <typename T>
    XCode marshal(const T& v);
    template <typename T>
    XCode unmarshal(T& v);

private:
    std::shared_ptr<std::vector<uint8_t>> buffer_;
    size_t head_ = 0;
};

template <>
XCode VXMarshaller::marshal<int>(const int& v);
template <>
XCode VXMarshaller::unmarshal<int>(int& v);
template <>
XCode VXMarshaller::marshal<String>(const String& v);
// A length of 0 or less leaves `v` untouched; a length beyond the bytes left
// fails with the generic code and removes nothing more.
template <>
XCode VXMarshaller::unmarshal<String>(String& v);
template <>
XCode VXMarshaller::marshal<VX::Time>(const VX::Time& v);
// A short buffer, or nanoseconds outside 0..999999999, fail with the generic
// code, remove nothing and leave `v` untouched.
template <>
XCode VXMarshaller::unmarshal<VX::Time>(VX::Time& v);
