// CInherit<Class, Base, Interfaces...>: a component class built from a base
// component and further interfaces. queryInterface asks the base first (so
// the base's interfaces come first), then tries the listed interfaces in
// order. Constructors are the base's.
//
//   class CConstant : public CInherit<CConstant, CDriver, INode, IRead, IInfo> {
//       ...
//   };
//
// `Class` names the class being defined, for readability of the class tree.
#pragma once

#include "host/component/unknown.h"

template <class Class, class Base, class... Interfaces>
class CInherit : public Base, public Interfaces... {
public:
    using Base::Base;

    XCode queryInterface(const VX::UUID& iid, void** out) override {
        XCode rc = Base::queryInterface(iid, out);
        if (rc.isSuccess()) return rc;
        return (answer<Interfaces>(iid, out) || ...) ? XCode() : rc;
    }

protected:
    ~CInherit() override = default;

private:
    template <class I>
    bool answer(const VX::UUID& iid, void** out) {
        if (!(iid == I::IID())) return false;
        if (out) {
            I* itf = static_cast<I*>(this);
            itf->addRef();
            *out = itf;
        }
        return true;
    }
};
