// VX::UUID: the text form.
#include "host/component/uuid.h"

namespace VX {

String UUID::toString() const {
    String out;
    for (size_t i = 0; i < bytes_.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        out.concatf("%02x", bytes_[i]);
    }
    return out;
}

}  // namespace VX
