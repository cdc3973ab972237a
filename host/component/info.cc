// IInfo's identifier and InfoContainer's text form.
#include "host/component/info.h"

namespace {

constexpr VX::UUID IID_INFO = VX::UUID::OF("a98ec4eb-380e-4bf2-85f4-9f7f5d2de03a");

}  // namespace

const VX::UUID& IInfo::IID() {
    return IID_INFO;
}

String InfoContainer::toString() const {
    String out;
    for (const Row& row : rows_) {
        out += String(std::string(2 * static_cast<size_t>(row.level), ' '));
        out += row.key + ": " + row.value + "\n";
    }
    return out;
}
