// demo: a short tour of what the engine's foundation does today — typed
// values and their display texts, time-stamped events, the marshalled form,
// and a timer on the engine's real-time event loop.
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

using namespace VX::SysEvent;

namespace {

struct Ticks {
    std::mutex mutex;
    std::condition_variable done;
    int count = 0;
};

void onTick(void* arg) {
    auto* ticks = static_cast<Ticks*>(arg);
    std::lock_guard<std::mutex> guard(ticks->mutex);
    ++ticks->count;
    printf("tick %d at %s\n", ticks->count,
           Value(VX::Time::NOW(1), DST_ABS_DATE_TIME).toString().c_str());
    ticks->done.notify_all();
}

}  // namespace

int main() {
    printf("Values and their display texts:\n");
    const Value values[] = {Value(true),
                            Value(42ull),
                            Value(0.1),
                            Value("it's"),
                            Value(VX::Time(93784, 500000000), DST_REL_TIME),
                            Value(VX::Time(1615107900, 0), DST_ABS_DATE_TIME),
                            Value(DST_ERR_DIV0)};
    for (const Value& v : values) printf("  subtype %2d  %s\n", v.subtype, v.toString().c_str());

    Value sum(0.1 + 0.2);
    printf("0.1 + 0.2 %s 0.3 (float equality is relative)\n", sum == Value(0.3) ? "==" : "!=");

    Event first(VX::Time(100, 0), Value(1ull));
    first.embraceTime(Event(VX::Time(50, 0), VX::Time(200, 0), Value(2ull)));
    printf("an event spanning two others: %d s .. %d s\n", first.start.getSeconds(),
           first.end.getSeconds());

    VXMarshaller m;
    Value("abc").marshal(m);
    printf("marshalled 'abc': %zu bytes\n", m.getLength());

    Ticks ticks;
    _VXTimeoutEvent timer(EVENT_LOOP(), EventPrio::NORMAL, onTick, &ticks);
    {
        VXAutoLock engine(LOCK());
        timer.start(100, true);
    }
    std::unique_lock<std::mutex> guard(ticks.mutex);
    ticks.done.wait(guard, [&] { return ticks.count >= 3; });
    guard.unlock();
    {
        VXAutoLock engine(LOCK());
        timer.stop();
    }
    printf("three ticks of a 100 ms timer on the engine's event loop\n");
    return 0;
}
