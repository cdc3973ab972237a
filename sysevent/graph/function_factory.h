// FunctionFactory: the table from function name ("SUM", "DEBOUNCE", ...) to
// the factory that makes nodes of that function. Each function class has one
// static Factory<F> object at namespace scope (s_functionFactoryABS, ...);
// constructing it registers it, destroying it unregisters it. So the table
// fills while the library loads and empties while it unloads; in between it
// is only read (by the parser, under the engine lock), which is why the table
// has no lock of its own.
//
// Usage, in the function's .cc file:
//     FunctionFactory::Factory<ABS> s_functionFactoryABS(
//         "ABS", "number", "Returns the absolute value of a number");
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/singleton.h"
#include "host/runtime/string.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

class FunctionFactory : public VXSingleton<FunctionFactory> {
public:
    // One maker of function nodes, registered under its function's name.
    class FactoryBase {
    public:
        // Stores the three texts and registers this factory under `name`
        // (making the FunctionFactory singleton on the first registration).
        FactoryBase(const String& name, const String& parameterText, const String& description);
        // Unregisters `name`.
        virtual ~FactoryBase();
        FactoryBase(const FactoryBase&) = delete;
        FactoryBase& operator=(const FactoryBase&) = delete;

        // A fresh, dirty node of the function, without children, carrying this
        // factory's name and parameter text.
        virtual VXLWPtr<FunctionNode> create() = 0;

        // The name as written in formulas, matched case-sensitively.
        const String& getName() const { return m_name; }
        // What a listing shows and the parser's arity message quotes, e.g.
        // "[bool]*"; display text only, it enforces nothing.
        const String& getParameterText() const { return m_parameterText; }
        // One line of description.
        const String& getDescription() const { return m_description; }

    private:
        String m_name;
        String m_parameterText;
        String m_description;
    };

    // The factory of function class F, which has the constructor
    // F(const String& functionName, const String& parameterText).
    template <typename F>
    class Factory : public FactoryBase {
    public:
        Factory(const String& name, const String& parameterText, const String& description)
            : FactoryBase(name, parameterText, description) {}
        VXLWPtr<FunctionNode> create() override {
            return VXLWPtr<FunctionNode>(new F(getName(), getParameterText()));
        }
    };

    virtual ~FunctionFactory() = default;

    // Adds `factory` under `name`. A name registered twice has two entries;
    // lookups find the first until it is unregistered.
    void registerFactory(const String& name, FactoryBase* factory);
    // Removes the first entry under `name`; an unknown name is ignored.
    void unregisterFactory(const String& name);
    // The factory registered first under `name` (exact, case-sensitive), or
    // null.
    FactoryBase* get(const String& name) const;
    // A new node of the function `name`, or null if it is not registered.
    // Never a shared node: sharing is the ExpressionRepository's business.
    VXLWPtr<FunctionNode> create(const String& name) const;
    // Replaces the contents of `names` with every registered name (each once),
    // in the table's order.
    void getNames(VXVector<String>& names) const;

    // create() on the instance.
    static VXLWPtr<FunctionNode> CREATE(const String& name);

private:
    // Not owned: the factories are static objects. More than one entry per
    // name only while a name is registered twice.
    VXStringHashTable<VXVector<FactoryBase*>> m_factories;
};

}  // namespace VX::SysEvent
