// The journal: calls and log lines in their order, log lines taken apart, faults that run out, and the
// main context that everything comes on.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <platform/log.h>
#include <platform/watchdog.h>

#include "SimulatedTv.h"

namespace {

using simulated::Fault;
using simulated::LogLine;
using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

class JournalTest : public ::testing::Test {
protected:
    static void info(const char* message) {
        __dlog_print(2, 4, "PORTMELD", "%s: %s(%d) > \033[32m[INFO][%s:%d] %s\033[0m", "a.cpp", "f",
                     12, "f", 12, message);
    }
    static void warn(const char* message) {
        __dlog_print(2, 5, "PORTMELD", "%s: %s(%d) > \033[33m[WARN][%s:%d] %s\033[0m", "a.cpp", "f",
                     12, "f", 12, message);
    }
    static void debug(const char* message) {
        __dlog_print(2, 3, "PORTMELD", "%s: %s(%d) > %s", "a.cpp", "f", 12, message);
    }
    LogLine last() { return tv.journal().log().back(); }

    SimulatedTv tv;
};

TEST_F(JournalTest, KeepsCallsAndLinesInOneOrder) {
    smart_deadlock_register_watchdog_service(60);
    info("one");
    debug("two");
    warn("three");
    smart_deadlock_watchdog_notify();
    EXPECT_EQ(tv.journal().story(), (Texts{"smart_deadlock_register_watchdog_service(60)", "I one",
                                           "W three", "smart_deadlock_watchdog_notify()"}));
    EXPECT_EQ(tv.journal().story(0, 3)[2], "D two");
    EXPECT_EQ(tv.journal().calls(), (Texts{"smart_deadlock_register_watchdog_service(60)",
                                           "smart_deadlock_watchdog_notify()"}));
    EXPECT_EQ(tv.journal().messages(), (Texts{"one", "three"}));
    EXPECT_EQ(tv.journal().messages(0, 3), (Texts{"one", "two", "three"}));
    EXPECT_TRUE(tv.journal().logged(5, "three"));
    EXPECT_FALSE(tv.journal().logged(4, "three"));
    EXPECT_EQ(tv.journal().count("smart_deadlock_watchdog_notify"), 1U);
}

TEST_F(JournalTest, ReadsFromAMark) {
    info("before");
    const std::size_t mark = tv.journal().mark();
    info("after");
    EXPECT_EQ(tv.journal().messages(mark), Texts{"after"});
    EXPECT_FALSE(tv.journal().logged(4, "before", mark));
}

TEST_F(JournalTest, LeavesThePropertyGettersOutUnlessAsked) {
    tv.ports().insert({});
    usb_device_list_s* list = nullptr;
    usb_device_s* device = nullptr;
    usb_device_get_device_list(8, &list);
    usb_device_list_get_first(list, &device);
    usb_device_get_class(device);
    usb_mass_storage_get_disk_type(device);
    usb_device_free_device_list(list);
    EXPECT_EQ(tv.journal().calls(),
              (Texts{"usb_device_get_device_list(8)", "usb_device_list_get_first()",
                     "usb_device_free_device_list()"}));
    EXPECT_EQ(
        tv.journal().allCalls(),
        (Texts{"usb_device_get_device_list(8)", "usb_device_list_get_first()",
               "usb_device_get_class(</dev/sda1>)", "usb_mass_storage_get_disk_type(</dev/sda1>)",
               "usb_device_free_device_list()"}));
}

TEST_F(JournalTest, KeepsTheNewestWhenItIsLimited) {
    tv.journal().setLimit(2);
    const std::size_t start = tv.journal().mark();
    info("one");
    info("two");
    const std::size_t mark = tv.journal().mark();
    info("three");
    EXPECT_EQ(tv.journal().messages(start), (Texts{"two", "three"}));
    EXPECT_EQ(tv.journal().messages(mark), Texts{"three"});
    EXPECT_EQ(tv.journal().mark(), start + 3);
}

// ---- log lines

TEST_F(JournalTest, TakesALineApart) {
    info("text");
    EXPECT_EQ(last().priority, 4);
    EXPECT_EQ(last().tag, "PORTMELD");
    EXPECT_EQ(last().file, "a.cpp");
    EXPECT_EQ(last().function, "f");
    EXPECT_EQ(last().line, 12);
    EXPECT_EQ(last().message, "text");
    EXPECT_EQ(last().text, "a.cpp: f(12) > \033[32m[INFO][f:12] text\033[0m");
    EXPECT_TRUE(last().wellFormed);
}

TEST_F(JournalTest, KnowsAnEntryTrace) {
    debug("");
    EXPECT_EQ(last().message, "");
    EXPECT_TRUE(last().wellFormed);
}

TEST_F(JournalTest, KnowsFunctionsWithBracketsInTheirNames) {
    __dlog_print(2, 3, "PORTMELD", "%s: %s(%d) > %s", "a.cpp", "operator()", 7, "x: y(1) > z");
    EXPECT_EQ(last().function, "operator()");
    EXPECT_EQ(last().line, 7);
    EXPECT_EQ(last().message, "x: y(1) > z");
}

TEST_F(JournalTest, SeesALineThatIsNotAsItShouldBe) {
    const std::pair<int, const char*> lines[] = {
        {4, "no prefix at all"},
        {4, "a.cpp: f(12) > text"},
        {4, "a.cpp: f(12) > \033[33m[WARN][f:12] text\033[0m"},
        {4, "a.cpp: f(12) > \033[32m[INFO][f:13] text\033[0m"},
        {4, "a.cpp: f(12) > \033[32m[INFO][g:12] text\033[0m"},
        {5, "a.cpp: f(12) > \033[33m[WARN][f:12] text"},
        {6, "a.cpp: f(12) > text"},
        {3, "a.cpp: f() > text"},
        {3, "a.cpp: f(x) > text"},
        {3, ") > : "},
        {3, ""},
    };
    for (const auto& [priority, text] : lines) {
        __dlog_print(2, priority, "PORTMELD", "%s", text);
        EXPECT_FALSE(last().wellFormed) << text;
        EXPECT_EQ(last().text, text);
    }
}

TEST_F(JournalTest, KeepsLinesOfAnyLengthAndAnyBytes) {
    const std::string bytes = "\xff\xfe %s \x01\n" + std::string(100'000, 'x');
    info(bytes.c_str());
    EXPECT_EQ(last().message, bytes);
    EXPECT_TRUE(last().wellFormed);
}

TEST_F(JournalTest, HandsLinesToASinkAsTheyCome) {
    Texts sunk;
    tv.journal().setLogSink(
        [](const LogLine& line, void* data) { static_cast<Texts*>(data)->push_back(line.message); },
        &sunk);
    debug("one");
    info("two");
    tv.journal().setLogSink(nullptr, nullptr);
    info("three");
    EXPECT_EQ(sunk, (Texts{"one", "two"}));
}

// ---- faults

TEST_F(JournalTest, FailsAFunctionAsOftenAsOrdered) {
    tv.journal().order("smart_deadlock_watchdog_notify", Fault::Fails, 2);
    EXPECT_NE(smart_deadlock_watchdog_notify(), 0);
    EXPECT_NE(smart_deadlock_watchdog_notify(), 0);
    EXPECT_EQ(smart_deadlock_watchdog_notify(), 0);
    EXPECT_EQ(tv.small().watchdogFeeds, 1);
    EXPECT_EQ(tv.journal().count("smart_deadlock_watchdog_notify"), 3U);
}

TEST_F(JournalTest, FailsAFunctionUntilFaultsAreCleared) {
    tv.journal().order("smart_deadlock_watchdog_notify", Fault::Fails);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NE(smart_deadlock_watchdog_notify(), 0);
    }
    tv.journal().clearFaults();
    EXPECT_EQ(smart_deadlock_watchdog_notify(), 0);
}

// ---- the TV itself

TEST_F(JournalTest, TheTvRunsPostedFunctionsInTheirOrder) {
    std::string order;
    tv.post([&] {
        order += "a";
        tv.post([&] { order += "c"; });
    });
    tv.post([&] { order += "b"; });
    EXPECT_EQ(order, "");
    tv.settle();
    EXPECT_EQ(order, "abc");
}

TEST(SimulatedTvEndTest, ATvThatGoesDropsPostedFunctions) {
    bool ran = false;
    {
        SimulatedTv tv;
        tv.post([&] { ran = true; });
    }
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_FALSE(ran);
}

TEST(SimulatedTvDeathTest, AContractFunctionWithoutATvEndsTheProcess) {
    EXPECT_DEATH(smart_deadlock_watchdog_notify(), "simulated TV: .* while there is no TV");
}

TEST(SimulatedTvDeathTest, ASecondTvEndsTheProcess) {
    EXPECT_DEATH(
        {
            const SimulatedTv one;
            const SimulatedTv two;
        },
        "simulated TV: there is one already");
}

TEST(SimulatedTvDeathTest, ADeviceThatWasNeverPluggedInEndsTheProcess) {
    EXPECT_DEATH(
        {
            SimulatedTv tv;
            tv.ports().pull(1);
        },
        "simulated TV: no device 1 was ever plugged in");
}

}  // namespace
