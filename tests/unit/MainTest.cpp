// The process entry: the order of start-up and shut-down, the failures, the watchdog's feed and the
// menu language. The main loop is a function of the test.
#include <unistd.h>

#include "EntrySeams.h"
#include "FakeBus.h"
#include "Observations.h"
#include "TvTest.h"

int portmeld_main(int argc, char* argv[]);

namespace {

class MainTest : public TvTest {
protected:
    MainTest() {
        temp.file("root/usr/bin/portmeld.interface.xml",
                  "<node name=\"/com/norvane/portmeld\">"
                  "<interface name=\"com.norvane.portmeld\"/></node>");
    }
    void TearDown() override {
        EntrySeams::reset();
        TvTest::TearDown();
    }

    void removeDescription() {
        ASSERT_EQ(unlink(onTv("/usr/bin/portmeld.interface.xml").c_str()), 0);
    }

    /// Run the entry with one argument; `loop` happens while its main loop runs.
    int run(std::function<void()> loop = nullptr) {
        EntrySeams::mainLoop = std::move(loop);
        char name[] = "portmeld";
        char* argv[] = {name, nullptr};
        argv_ = argv;
        const int status = portmeld_main(1, argv);
        EXPECT_EQ(status == 0, !EntrySeams::managerRefused);
        return status;
    }

    std::string firstLine() const { return "I argc:1,argv:" + address(argv_); }

    /// Begin with the catalogue, end with the language watch: what stands around everything else.
    static Texts opening() {
        return {"appcore_set_i18n(\"portmeld\", \"" + locale() + "\")",
                "bindtextdomain(\"portmeld\", \"" + locale() + "\")",
                "vconf_notify_key_changed(\"db/menu_widget/language\")"};
    }
    static std::string closing() { return "vconf_ignore_key_changed(\"db/menu_widget/language\")"; }
    static std::string locale() { return tvPath("/usr/apps/portmeld/res/locale"); }

    FakeBus bus;

private:
    char** argv_ = nullptr;
};

TEST_F(MainTest, StartUpAndShutDownHappenInTheirOrder) {
    EXPECT_EQ(run(), 0);
    const Texts story = tv.journal().story();
    ASSERT_FALSE(story.empty());
    EXPECT_EQ(story.front(), firstLine());
    EXPECT_EQ(story.back(), closing());
    EXPECT_TRUE(inOrder(
        story, joined({{firstLine()},
                       opening(),
                       {"I Instance :(nil)", "usb_device_init()",
                        "smart_deadlock_register_watchdog_service(60)", "I Instance:(nil)",
                        "g_bus_own_name(system, \"com.norvane.portmeld\", 0)",
                        "I SetDeviceEventCallback", "g_main_loop_run()", "I m_pRequester.size:0",
                        "g_bus_unown_name(1)", "I CMMUsbStorage start....\n", "usb_device_fini()",
                        "I finish....\n", closing()}})));
    EXPECT_TRUE(tv.journal().messages(0, 5).empty());
    EXPECT_EQ(occurrences(tv.settings().watched(), "db/menu_widget/language"), 0);
}

TEST_F(MainTest, OnlyTheCatalogueAndTheLanguageWatchComeBeforeTheDeviceManager) {
    run();
    const Texts calls = tv.journal().calls();
    ASSERT_GT(calls.size(), 4U);
    EXPECT_EQ(Texts(calls.begin(), calls.begin() + 3), opening());
    EXPECT_EQ(calls[3], "usb_device_init()");
}

TEST_F(MainTest, TheArgumentsAreOnlyLogged) {
    char name[] = "portmeld";
    char option[] = "--help";
    char* argv[] = {name, option, nullptr};
    EXPECT_EQ(portmeld_main(2, argv), 0);
    EXPECT_EQ(tv.journal().story().front(), "I argc:2,argv:" + address(argv));
    EXPECT_EQ(tv.journal().count("g_main_loop_run"), 1U);
}

TEST_F(MainTest, WhenTheDeviceManagerCannotBeCreatedItReturnsMinus1WithoutAWatchdog) {
    EntrySeams::managerRefused = true;
    EXPECT_EQ(run(), -1);
    EXPECT_EQ(tv.journal().story(),
              joined({{firstLine()}, opening(), {"W new CMMDeviceMgr fail", closing()}}));
    EXPECT_EQ(tv.small().watchdogPeriod, 0);
    EXPECT_TRUE(tv.settings().watched().empty());
}

TEST_F(MainTest, WhenTheBusServiceCannotBeCreatedItRunsAndTheWatchdogIsStillFed) {
    removeDescription();
    EXPECT_EQ(run([this] {
                  tv.advanceSeconds(60);
                  EXPECT_EQ(tv.small().watchdogFeeds, 12);
                  EXPECT_TRUE(tv.ports().listening());
              }),
              0);
    EXPECT_TRUE(inOrder(tv.journal().story(),
                        {"smart_deadlock_register_watchdog_service(60)",
                         "W Create CMMDeviceDbusServer instance fail", "W Create dbus fail",
                         "g_main_loop_run()", "I CMMUsbStorage start....\n", closing()}));
    EXPECT_EQ(tv.journal().count("g_bus_unown_name"), 0U);
}

TEST_F(MainTest, TheWatchdogIsRegisteredWith60AndFedEvery5000Milliseconds) {
    run([this] {
        EXPECT_EQ(tv.small().watchdogPeriod, 60);
        tv.advance(4999);
        EXPECT_EQ(tv.small().watchdogFeeds, 0);
        const std::size_t mark = tv.journal().mark();
        tv.advance(1);
        EXPECT_EQ(tv.small().watchdogFeeds, 1);
        EXPECT_EQ(tv.journal().story(mark, 3), (Texts{"D ", "smart_deadlock_watchdog_notify()"}));
        EXPECT_EQ(tv.journal().log(mark).front().function, "_notify_callback");
        tv.advance(4999);
        EXPECT_EQ(tv.small().watchdogFeeds, 1);
        tv.advanceSeconds(3600);
        EXPECT_EQ(tv.small().watchdogFeeds, 721);
    });
}

TEST_F(MainTest, FailuresOfTheWatchdogTheCatalogueAndTheWatchAreNotDetected) {
    for (const char* function :
         {"smart_deadlock_register_watchdog_service", "smart_deadlock_watchdog_notify",
          "appcore_set_i18n", "vconf_notify_key_changed"}) {
        tv.journal().order(function, simulated::Fault::Fails);
    }
    EXPECT_EQ(run([this] { tv.advanceSeconds(10); }), 0);
    EXPECT_EQ(tv.journal().count("smart_deadlock_watchdog_notify"), 2U);
    EXPECT_TRUE(tv.journal().messages(0, 5).empty());
}

TEST_F(MainTest, EachLanguageChangeBindsTheCatalogueAgainWithTheSameDomainAndFolder) {
    run([this] {
        for (const char* language : {"de_DE", "fr_FR", "fr_FR", ""}) {
            const std::size_t mark = tv.journal().mark();
            tv.settings().set("db/menu_widget/language", language);
            tv.settle();
            EXPECT_EQ(
                without(tv.journal().story(mark, 3), {"vconf_"}),
                (Texts{"D ", std::string("D vconf key value : [") + language + "]", opening()[0]}));
        }
    });
}

TEST_F(MainTest, ANoticeOfAnyOtherKeyChangesNothing) {
    run([this] {
        for (const char* key : {"db/menu_widget/language2", "db/menu/support/use_mode", "",
                                static_cast<const char*>(nullptr)}) {
            const std::size_t mark = tv.journal().mark();
            tv.settings().sendNotice(key, "de_DE");
            tv.settle();
            EXPECT_EQ(tv.journal().count("appcore_set_i18n", mark), 0U);
            EXPECT_GE(occurrences(tv.journal().messages(mark, 3), ""), 1);
        }
    });
}

TEST_F(MainTest, ALanguageNoticeWithoutATextIsLoggedAsNullAndBindsAgain) {
    run([this] {
        const std::size_t mark = tv.journal().mark();
        tv.settings().sendNotice("db/menu_widget/language", nullptr);
        tv.settle();
        EXPECT_TRUE(tv.journal().logged(3, "vconf key value : [(null)]", mark));
        EXPECT_EQ(tv.journal().count("appcore_set_i18n", mark), 1U);
    });
}

TEST_F(MainTest, AfterTheEndALanguageChangeIsNotHeard) {
    run();
    const std::size_t mark = tv.journal().mark();
    tv.settings().set("db/menu_widget/language", "de_DE");
    tv.settle();
    EXPECT_EQ(tv.journal().count("appcore_set_i18n", mark), 0U);
}

}  // namespace
