// A direct callable that replaces its Observer's callback, or destroys its
// Observer, while it runs: it keeps running on its own captured state, and
// only the replacement hears later changes.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "observer/observer_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using ReentrantCallback = ObserverTest;

TEST_F(ReentrantCallback, CallableOutlivesItsReplacementOrItsObserverUntilItReturns) {
    for (const bool destroysObserver : {false, true}) {
        SCOPED_TRACE(destroysObserver ? "destroys its Observer" : "replaces its callback");
        set("re.a", 1);
        Recorder next;
        std::unique_ptr<Observer> observer;
        std::vector<int> heard;
        auto callable = [&, own = std::vector<int>(64, 7)](String, Value) {
            if (destroysObserver)
                observer.reset();
            else
                observer->setValueChangeCallback(next.direct());
            heard.push_back(own[63]);  // the callable's own state, after it was let go
        };
        observer = std::make_unique<Observer>(
            Observer::ValueChangeCallback(VX::directCall(), std::move(callable)));
        observer->addTo("re.a", false);
        set("re.a", 2);
        set("re.a", 3);
        EXPECT_EQ(heard, std::vector<int>{7});
        EXPECT_EQ(next.seen(),
                  destroysObserver ? std::vector<Seen>{} : std::vector<Seen>{changed("re.a", "3")});
        observer.reset();
        destroy("re.a");
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
