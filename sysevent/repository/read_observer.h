// The observer interfaces that clients implement to watch published objects:
// IReadObserver for value changes and destruction (IRead), and
// IExpressionObserver for formula changes (IExpression).
//
// Observers are plain client objects, not reference counted: a published
// object keeps raw pointers to them, so each must be removed before it dies.
// Notifications run synchronously in the thread that caused them, with the
// engine lock held.
#pragma once

#include "host/runtime/ref_counted.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/observer_event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class IReadObserver {
public:
    // A value change: the event's source is the object, its payload the old
    // value followed by the new one. The default reads both and calls the
    // three-argument form.
    virtual void onValueChanged(ObserverEvent<IRead>& event);
    // The object is being destroyed; it is still valid during the call. Does
    // nothing by default.
    virtual void onValueDestroyed(IRead* object);
    // A value change, unpacked. Does nothing by default.
    virtual void onValueChanged(VXPPtr<IRead>& source, const Value& oldValue,
                                const Value& newValue);
    virtual ~IReadObserver();
};

class IExpressionObserver {
public:
    // The formula of the event's source has been set (successfully).
    virtual void onExpressionChanged(ObserverEvent<IExpression>& event) = 0;
    virtual ~IExpressionObserver();
};

}  // namespace VX::SysEvent
