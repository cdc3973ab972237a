// The default behaviour of the observer interfaces.
#include "sysevent/repository/read_observer.h"

namespace VX::SysEvent {

void IReadObserver::onValueChanged(ObserverEvent<IRead>& event) {
    // The event is this observer's own copy, so its source and held values
    // can be lent to the three-argument form instead of copied.
    VXPPtr<IRead>& source = event.getSource();
    Value oldValue;
    Value newValue;
    const Value* oldHeld = event.takeHeld();
    if (!oldHeld) event >> oldValue;
    const Value* newHeld = event.takeHeld();
    if (!newHeld) event >> newValue;
    onValueChanged(source, oldHeld ? *oldHeld : oldValue, newHeld ? *newHeld : newValue);
}

void IReadObserver::onValueDestroyed(IRead*) {}

void IReadObserver::onValueChanged(VXPPtr<IRead>&, const Value&, const Value&) {}

IReadObserver::~IReadObserver() = default;

IExpressionObserver::~IExpressionObserver() = default;

}  // namespace VX::SysEvent
