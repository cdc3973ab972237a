// FunctionFactory: registration of the static factory objects and lookup by
// function name.
#include "sysevent/graph/function_factory.h"

#include <algorithm>

namespace VX::SysEvent {

FunctionFactory::FactoryBase::FactoryBase(const String& name, const String& parameterText,
                                          const String& description)
    : m_name(name), m_parameterText(parameterText), m_description(description) {
    FunctionFactory::INSTANCE()->registerFactory(m_name, this);
}

FunctionFactory::FactoryBase::~FactoryBase() {
    FunctionFactory::INSTANCE()->unregisterFactory(m_name);
}

void FunctionFactory::registerFactory(const String& name, FactoryBase* factory) {
    m_factories[name].push_back(factory);
}

void FunctionFactory::unregisterFactory(const String& name) {
    auto it = m_factories.find(name);
    if (it == m_factories.end()) return;
    it->second.erase(it->second.begin());
    if (it->second.empty()) m_factories.erase(it);
}

FunctionFactory::FactoryBase* FunctionFactory::get(const String& name) const {
    auto it = m_factories.find(name);
    return it == m_factories.end() ? nullptr : it->second.front();
}

VXLWPtr<FunctionNode> FunctionFactory::create(const String& name) const {
    FactoryBase* factory = get(name);
    return factory ? factory->create() : VXLWPtr<FunctionNode>();
}

void FunctionFactory::getNames(VXVector<String>& names) const {
    names.clear();
    names.reserve(m_factories.size());
    for (const auto& entry : m_factories) names.push_back(entry.first);
}

VXLWPtr<FunctionNode> FunctionFactory::CREATE(const String& name) {
    return INSTANCE()->create(name);
}

}  // namespace VX::SysEvent
