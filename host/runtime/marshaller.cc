// VXMarshaller: buffer handling and the primitive forms (int: 4 bytes;
// VX::Time: seconds then nanoseconds, 4 bytes each, the nanoseconds below
// 10^9; String: int length, then the bytes, no terminator).
#include "host/runtime/marshaller.h"

XCode VXMarshaller::copyOnWrite() {
    if (buffer_.use_count() > 1) {
        buffer_ = std::make_shared<std::vector<uint8_t>>(
            buffer_->begin() + static_cast<std::ptrdiff_t>(head_), buffer_->end());
        head_ = 0;
    }
    return XCode();
}

XCode VXMarshaller::addTail(const void* data, size_t length) {
    if (XCode rc = copyOnWrite(); rc.isErr()) return rc;
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    buffer_->insert(buffer_->end(), bytes, bytes + length);
    return XCode();
}

XCode VXMarshaller::removeHeader(void* out, size_t length) {
    if (XCode rc = copyOnWrite(); rc.isErr()) return rc;
    if (length > getLength()) return XCode(XCode::GENERIC_FAILURE);
    if (out && length) memcpy(out, buffer_->data() + head_, length);
    head_ += length;
    if (head_ == buffer_->size()) {
        buffer_->clear();
        head_ = 0;
    }
    return XCode();
}

template <>
XCode VXMarshaller::marshal<int>(const int& v) {
    int32_t raw = v;
    return addTail(&raw, sizeof raw);
}

template <>
XCode VXMarshaller::unmarshal<int>(int& v) {
    int32_t raw;
    if (XCode rc = removeHeader(&raw, sizeof raw); rc.isErr()) return rc;
    v = raw;
    return XCode();
}

template <>
XCode VXMarshaller::marshal<String>(const String& v) {
    if (XCode rc = marshal<int>(static_cast<int>(v.length())); rc.isErr()) return rc;
    return addTail(v.data(), v.length());
}

template <>
XCode VXMarshaller::unmarshal<String>(String& v) {
    int length;
    if (XCode rc = unmarshal<int>(length); rc.isErr()) return rc;
    if (length <= 0) return XCode();
    if (XCode rc = copyOnWrite(); rc.isErr()) return rc;
    if (static_cast<size_t>(length) > getLength()) return XCode(XCode::GENERIC_FAILURE);
    String text(reinterpret_cast<const char*>(getData()), static_cast<size_t>(length));
    removeHeader(nullptr, static_cast<size_t>(length));
    v = std::move(text);
    return XCode();
}

template <>
XCode VXMarshaller::marshal<VX::Time>(const VX::Time& v) {
    if (XCode rc = marshal<int>(v.getSeconds()); rc.isErr()) return rc;
    return marshal<int>(v.getNanoseconds());
}

template <>
XCode VXMarshaller::unmarshal<VX::Time>(VX::Time& v) {
    // Both halves are checked before anything is removed: a time whose
    // nanoseconds lie outside 0..999999999 is refused like a short buffer,
    // so that no VX::Time ever holds a value it could not have computed.
    if (getLength() < 8) return XCode(XCode::GENERIC_FAILURE);
    int32_t raw[2];
    memcpy(raw, getData(), sizeof raw);
    if (raw[1] < 0 || raw[1] > 999999999) return XCode(XCode::GENERIC_FAILURE);
    if (XCode rc = removeHeader(nullptr, sizeof raw); rc.isErr()) return rc;
    v = VX::Time(raw[0], raw[1]);
    return XCode();
}
