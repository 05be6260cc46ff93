// The applications of the TV: launch requests with what they carry, and what runs because of them.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

class ApplicationsTest : public ::testing::Test {
protected:
    ApplicationsTest() { EXPECT_EQ(app_control_create(&handle), 0); }

    int launch(const char* id) {
        EXPECT_EQ(app_control_set_app_id(handle, id), 0);
        return app_control_send_launch_request(handle, nullptr, nullptr);
    }

    SimulatedTv tv;
    app_control_h handle = nullptr;
};

TEST_F(ApplicationsTest, RunAndComeToTheFrontWhenLaunched) {
    EXPECT_EQ(launch("player"), 0);
    EXPECT_EQ(tv.applications().foreground(), "player");
    bool running = false;
    EXPECT_EQ(app_manager_is_running("player", &running), 0);
    EXPECT_TRUE(running);
    EXPECT_NE(aul_app_is_running("player"), 0);
}

TEST_F(ApplicationsTest, GetEveryExtraDataEverAddedWithItsLatestValue) {
    app_control_add_extra_data(handle, "a", "1");
    launch("one");
    app_control_add_extra_data(handle, "a", "2");
    app_control_add_extra_data(handle, "b", "3");
    launch("two");
    using Data = std::map<std::string, std::string>;
    ASSERT_EQ(tv.applications().launches().size(), 2U);
    EXPECT_EQ(tv.applications().launches()[0].extraData, (Data{{"a", "1"}}));
    EXPECT_EQ(tv.applications().launches()[1].extraData, (Data{{"a", "2"}, {"b", "3"}}));
    EXPECT_EQ(tv.applications().launches()[1].appId, "two");
}

TEST_F(ApplicationsTest, DoNotStartWithoutAnIdButTheRequestIsKept) {
    EXPECT_NE(launch(""), 0);
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].appId, "");
    EXPECT_EQ(tv.applications().foreground(), "");
}

TEST_F(ApplicationsTest, StopRunningWhenEnded) {
    launch("player");
    tv.applications().endForeground();
    EXPECT_EQ(tv.applications().foreground(), "");
    EXPECT_FALSE(tv.applications().isRunning("player"));
    EXPECT_EQ(aul_app_is_running("player"), 0);
    tv.applications().endForeground();
}

TEST_F(ApplicationsTest, CanRunBehindWhatIsInFront) {
    tv.applications().setRunning("companion", true);
    launch("player");
    tv.applications().setRunning("companion", false);
    EXPECT_EQ(tv.applications().foreground(), "player");
    tv.applications().setRunning("player", false);
    EXPECT_EQ(tv.applications().foreground(), "");
}

TEST_F(ApplicationsTest, AnswerANullRequestWithAnErrorAndNothingElse) {
    EXPECT_NE(app_control_set_app_id(nullptr, "x"), 0);
    EXPECT_NE(app_control_add_extra_data(nullptr, "k", "v"), 0);
    EXPECT_NE(app_control_send_launch_request(nullptr, nullptr, nullptr), 0);
    EXPECT_NE(app_control_destroy(nullptr), 0);
    EXPECT_EQ(tv.journal().breaches(), Texts{});
    EXPECT_EQ(tv.journal().calls(),
              (Texts{"app_control_create()", "app_control_set_app_id(null, \"x\")",
                     "app_control_add_extra_data(null, \"k\", \"v\")",
                     "app_control_send_launch_request(null)", "app_control_destroy(null)"}));
}

TEST_F(ApplicationsTest, NoteTheUseOfADestroyedRequest) {
    EXPECT_EQ(app_control_destroy(handle), 0);
    EXPECT_NE(app_control_add_extra_data(handle, "k", "v"), 0);
    EXPECT_NE(app_control_destroy(handle), 0);
    app_control_h another = nullptr;
    EXPECT_EQ(app_control_create(&another), 0);
    EXPECT_NE(another, handle);
    EXPECT_EQ(tv.journal().breaches(),
              (Texts{"app_control_add_extra_data: the launch request was destroyed before",
                     "app_control_destroy: the launch request was destroyed before"}));
}

TEST_F(ApplicationsTest, NoteARequestThatWasNeverMadeAndOneThatWantsAReply) {
    int something = 0;
    EXPECT_NE(app_control_set_app_id(reinterpret_cast<app_control_h>(&something), "x"), 0);
    app_control_send_launch_request(handle, &something, nullptr);
    EXPECT_EQ(tv.journal().breaches(),
              (Texts{"app_control_set_app_id: the launch request was never made",
                     "app_control_send_launch_request: nobody can be sent a reply"}));
}

TEST_F(ApplicationsTest, AnswerNullArgumentsWithAnError) {
    bool running = true;
    EXPECT_NE(app_manager_is_running(nullptr, &running), 0);
    EXPECT_TRUE(running);
    EXPECT_NE(app_manager_is_running("x", nullptr), 0);
    EXPECT_EQ(aul_app_is_running(nullptr), 0);
    EXPECT_NE(app_control_create(nullptr), 0);
    EXPECT_NE(app_control_set_app_id(handle, nullptr), 0);
    EXPECT_NE(app_control_add_extra_data(handle, nullptr, "v"), 0);
    EXPECT_NE(app_control_add_extra_data(handle, "k", nullptr), 0);
}

}  // namespace
