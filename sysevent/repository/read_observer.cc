// The default behaviour of the observer interfaces.
#include "sysevent/repository/read_observer.h"

namespace VX::SysEvent {

void IReadObserver::onValueChanged(ObserverEvent<IRead>& event) {
    VXPPtr<IRead> source = event.getSource();
    Value oldValue;
    Value newValue;
    event >> oldValue >> newValue;
    onValueChanged(source, oldValue, newValue);
}

void IReadObserver::onValueDestroyed(IRead*) {}

void IReadObserver::onValueChanged(VXPPtr<IRead>&, const Value&, const Value&) {}

IReadObserver::~IReadObserver() = default;

IExpressionObserver::~IExpressionObserver() = default;

}  // namespace VX::SysEvent
