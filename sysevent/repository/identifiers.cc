// The fixed identifiers of the published objects and their interfaces.
#include "sysevent/repository/identifiers.h"

#include "sysevent/repository/interfaces.h"

namespace VX::SysEvent {

namespace {

constexpr VX::UUID IID_EXPRESSION = VX::UUID::OF("c9386e21-1ce2-4f5b-aaee-6963a31f920e");
constexpr VX::UUID IID_NODE = VX::UUID::OF("be1030be-a71f-4fbb-86b7-dd788147fabc");
constexpr VX::UUID IID_READ = VX::UUID::OF("7cd0c00a-2a30-4629-9150-c5f660ee4b79");
constexpr VX::UUID IID_WRITE = VX::UUID::OF("982c0ea2-661e-4120-88a0-329d606bd361");
constexpr VX::UUID DID_VARIABLE = VX::UUID::OF("76198393-6550-439e-987e-2c4a72011f45");
constexpr VX::UUID CID_CONSTANT = VX::UUID::OF("bd97785e-65f8-4469-b71c-5b8daa98d7e2");
constexpr VX::UUID CID_VARIABLE = VX::UUID::OF("1caf5d34-3259-4230-807f-032622a2bcc2");
constexpr VX::UUID CID_EXPRESSION = VX::UUID::OF("4d1a0542-b881-49e0-8bdd-62cf996360a4");
constexpr VX::UUID CID_EXPRESSION_SET = VX::UUID::OF("5ae645a5-91c7-48c4-b0b7-68d66e19960e");

}  // namespace

const VX::UUID& IExpression::IID() {
    return IID_EXPRESSION;
}
const VX::UUID& INode::IID() {
    return IID_NODE;
}
const VX::UUID& IRead::IID() {
    return IID_READ;
}
const VX::UUID& IWrite::IID() {
    return IID_WRITE;
}
const VX::UUID& DID_Variable() {
    return DID_VARIABLE;
}
const VX::UUID& CID_Constant() {
    return CID_CONSTANT;
}
const VX::UUID& CID_Variable() {
    return CID_VARIABLE;
}
const VX::UUID& CID_Expression() {
    return CID_EXPRESSION;
}
const VX::UUID& CID_ExpressionSet() {
    return CID_EXPRESSION_SET;
}

}  // namespace VX::SysEvent
