// The TV's clock: which timers fire when it is advanced, in which order and at which time, and that they
// are ordinary sources of the main context.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Times = std::vector<std::int64_t>;

class VirtualClockTest : public ::testing::Test {
protected:
    /// A timer that repeats as often as told and writes down when it fired.
    struct Repeating {
        SimulatedTv* tv;
        int left;
        Times times;
    };
    static gboolean tick(gpointer data) {
        auto& timer = *static_cast<Repeating*>(data);
        timer.times.push_back(timer.tv->clock().now());
        return --timer.left > 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    }
    /// A timer that fires once and writes its name and the time down.
    unsigned once(unsigned interval, const std::string& name) {
        return tv.clock().add(interval, [this, name] { note(name); });
    }
    void note(const std::string& name) {
        fired.push_back(name + "@" + std::to_string(tv.clock().now()));
    }

    SimulatedTv tv;
    std::vector<std::string> fired;
};

TEST_F(VirtualClockTest, StandsStillAtZeroUntilItIsAdvanced) {
    once(10, "a");
    EXPECT_EQ(tv.clock().now(), 0);
    g_usleep(20'000);
    tv.settle();
    EXPECT_EQ(tv.clock().now(), 0);
    EXPECT_TRUE(fired.empty());
    tv.advance(1234);
    EXPECT_EQ(tv.clock().now(), 1234);
}

TEST_F(VirtualClockTest, FiresATimerAtItsVeryMillisecondAndNotBefore) {
    once(30'000, "a");
    tv.advance(29'999);
    EXPECT_TRUE(fired.empty());
    tv.advance(1);
    EXPECT_EQ(fired, std::vector<std::string>{"a@30000"});
}

TEST_F(VirtualClockTest, FiresTimersInTheOrderOfTheirTimesEachAtItsOwn) {
    once(300, "c");
    once(100, "a");
    once(200, "b");
    tv.advance(1000);
    EXPECT_EQ(fired, (std::vector<std::string>{"a@100", "b@200", "c@300"}));
    EXPECT_EQ(tv.clock().now(), 1000);
}

TEST_F(VirtualClockTest, FiresTimersOfOneTimeInTheOrderOfAdding) {
    tv.advance(0);
    once(100, "first");
    tv.advance(50);
    once(50, "second");
    once(50, "third");
    tv.advance(50);
    EXPECT_EQ(fired, (std::vector<std::string>{"first@100", "second@100", "third@100"}));
}

TEST_F(VirtualClockTest, DeliversWhatATimerCausedBeforeTheNextTimerFires) {
    tv.clock().add(100, [this] {
        note("timer");
        tv.post([this] { note("posted"); });
    });
    once(100, "next");
    tv.advance(100);
    EXPECT_EQ(fired, (std::vector<std::string>{"timer@100", "posted@100", "next@100"}));
}

TEST_F(VirtualClockTest, RepeatsATimerThatReturnsTrueAtWholeIntervals) {
    Repeating timer{&tv, 3, {}};
    tv.clock().add(5000, tick, &timer);
    tv.advance(12'000);
    EXPECT_EQ(timer.times, (Times{5000, 10'000}));
    EXPECT_EQ(tv.clock().timers().at(0).due, 15'000);
    tv.advance(60'000);
    EXPECT_EQ(timer.times, (Times{5000, 10'000, 15'000}));
    EXPECT_TRUE(tv.clock().timers().empty());
}

TEST_F(VirtualClockTest, FiresATimerThatACallbackAddedWithinTheSameAdvance) {
    tv.clock().add(100, [this] { once(50, "inner"); });
    tv.advance(200);
    EXPECT_EQ(fired, std::vector<std::string>{"inner@150"});
}

TEST_F(VirtualClockTest, NeverFiresATimerThatACallbackRemoved) {
    const unsigned victim = once(100, "victim");
    tv.clock().add(50, [victim] { g_source_remove(victim); });
    tv.advance(200);
    EXPECT_TRUE(fired.empty());
    EXPECT_EQ(tv.clock().now(), 200);
}

TEST_F(VirtualClockTest, NeverFiresATimerOfTheSameTimeThatACallbackRemoved) {
    unsigned victim = 0;
    tv.clock().add(100, [&victim] { g_source_remove(victim); });
    victim = once(100, "victim");
    tv.advance(200);
    EXPECT_TRUE(fired.empty());
}

gboolean removeMyself(gpointer data) {
    g_source_remove(*static_cast<unsigned*>(data));
    return G_SOURCE_REMOVE;
}

TEST_F(VirtualClockTest, LetsATimerRemoveItself) {
    unsigned id = tv.clock().add(10, removeMyself, &id);
    tv.advance(20);
    EXPECT_TRUE(tv.clock().timers().empty());
    EXPECT_EQ(g_main_context_find_source_by_id(nullptr, id), nullptr);
}

TEST_F(VirtualClockTest, FiresATimerWithoutIntervalWhenTheMainContextComesToIt) {
    Repeating timer{&tv, 3, {}};
    tv.clock().add(0, tick, &timer);
    tv.settle();
    EXPECT_EQ(timer.times, Times{0});
    tv.advance(10);
    EXPECT_EQ(timer.times, (Times{0, 1, 2}));
}

TEST_F(VirtualClockTest, KeepsTimeWhenACallbackAdvancesItself) {
    tv.clock().add(100, [this] {
        note("outer");
        tv.advance(500);
        note("after");
    });
    once(200, "inner");
    tv.advance(300);
    EXPECT_EQ(fired, (std::vector<std::string>{"outer@100", "inner@200", "after@600"}));
    EXPECT_EQ(tv.clock().now(), 600);
}

TEST_F(VirtualClockTest, MakesSourcesThatAreFoundByIdAndByUserData) {
    Repeating timer{&tv, 1, {}};
    const unsigned id = tv.clock().add(100, tick, &timer);
    GSource* byId = g_main_context_find_source_by_id(nullptr, id);
    ASSERT_NE(byId, nullptr);
    EXPECT_EQ(g_main_context_find_source_by_user_data(nullptr, &timer), byId);
    EXPECT_TRUE(g_source_remove_by_user_data(&timer));
    EXPECT_TRUE(tv.clock().timers().empty());
    tv.advance(1000);
    EXPECT_TRUE(timer.times.empty());
}

TEST_F(VirtualClockTest, ListsWaitingTimersTheEarliestFirst) {
    Repeating timer{&tv, 1, {}};
    tv.advance(7);
    once(500, "late");
    const unsigned id = tv.clock().add(100, tick, &timer);
    const auto timers = tv.clock().timers();
    ASSERT_EQ(timers.size(), 2U);
    EXPECT_EQ(timers[0].id, id);
    EXPECT_EQ(timers[0].due, 107);
    EXPECT_EQ(timers[0].interval, 100);
    EXPECT_EQ(timers[0].callback, reinterpret_cast<const void*>(&tick));
    EXPECT_EQ(timers[1].due, 507);
}

TEST_F(VirtualClockTest, RunsByItselfAtARateAndKeepsTheOrder) {
    once(3000, "b");
    once(2000, "a");
    once(60'000'000, "never");
    tv.clock().setRate(100'000);
    const gint64 deadline = g_get_monotonic_time() + 10 * G_USEC_PER_SEC;
    while (fired.size() < 2 && g_get_monotonic_time() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
    }
    ASSERT_EQ(fired.size(), 2U);
    EXPECT_EQ(fired[0].substr(0, 2), "a@");
    EXPECT_EQ(fired[1].substr(0, 2), "b@");
    EXPECT_GE(tv.clock().now(), 3000);
    tv.clock().setRate(0);
    const std::int64_t stopped = tv.clock().now();
    g_usleep(2000);
    EXPECT_EQ(tv.clock().now(), stopped);
}

TEST_F(VirtualClockTest, CanBeAdvancedWhileItRuns) {
    tv.clock().setRate(1);
    once(60'000, "a");
    tv.advance(60'000);
    ASSERT_EQ(fired.size(), 1U);
    EXPECT_GE(tv.clock().now(), 60'000);
    EXPECT_LT(tv.clock().now(), 120'000);
}

TEST(VirtualClockEndTest, DestroysTimersThatStillWait) {
    unsigned id = 0;
    bool freed = false;
    {
        const SimulatedTv made;
        auto& tv = SimulatedTv::current();
        const std::shared_ptr<void> held(nullptr, [&freed](void*) { freed = true; });
        id = tv.clock().add(100, [held] {});
    }
    EXPECT_TRUE(freed);
    EXPECT_EQ(g_main_context_find_source_by_id(nullptr, id), nullptr);
}

// ---- GLib's own function, as the daemon calls it

TEST_F(VirtualClockTest, TakesTheTimersOfGLibsOwnFunction) {
    Repeating timer{&tv, 2, {}};
    const unsigned id = g_timeout_add(30'000, tick, &timer);
    EXPECT_EQ(tv.journal().calls(), std::vector<std::string>{"g_timeout_add(30000)"});
    EXPECT_EQ(tv.clock().timers().at(0).id, id);
    tv.advanceSeconds(60);
    EXPECT_EQ(timer.times, (Times{30'000, 60'000}));
}

}  // namespace
