// The screen: what is shown, what replaces it, and how a viewer's answer comes back.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

class ScreenTest : public ::testing::Test {
protected:
    ScreenTest() {
        init_notification_data_manager("portmeld", 0);
        register_notification_button_callback(
            [](int type, int button, void* user) {
                self(user).push_back("button " + std::to_string(type) + " " +
                                     std::to_string(button));
            },
            &told);
        register_notification_timeout_callback(
            [](int type, void* user) { self(user).push_back("time-out " + std::to_string(type)); },
            &told);
        register_notofication_hide_callback([](char*, void* user) { self(user).push_back("hide"); },
                                            &told);
    }
    static Texts& self(void* user) { return *static_cast<Texts*>(user); }

    static NotificationRecord record(int type, int timeout) {
        NotificationRecord record{};
        record.nWord0 = 1;
        record.nWord4 = 1;
        record.nWord8 = 2;
        record.pSender = "portmeld";
        record.nItemType = type;
        record.nTimeout = timeout;
        record.pTitle = "Title";
        record.nButtonCount = 2;
        record.pFirstButton = "Browse";
        record.pSecondButton = "Cancel";
        return record;
    }
    int show(int type = 1, int timeout = 30) {
        NotificationRecord shown = record(type, timeout);
        return add_notification_data(&shown);
    }
    Texts settled() {
        tv.settle();
        return std::exchange(told, {});
    }

    SimulatedTv tv;
    Texts told;
};

TEST_F(ScreenTest, ShowsACopyOfTheRecord) {
    NotificationRecord shown = record(1, 30);
    std::string title = "New device";
    shown.pTitle = title.c_str();
    tv.advance(5);
    ASSERT_EQ(add_notification_data(&shown), 0);
    title = "overwritten";
    const simulated::Popup* popup = tv.screen().popup();
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->word0, 1);
    EXPECT_EQ(popup->word4, 1);
    EXPECT_EQ(popup->word8, 2);
    EXPECT_EQ(popup->sender, "portmeld");
    EXPECT_EQ(popup->itemType, 1);
    EXPECT_EQ(popup->timeout, 30);
    EXPECT_EQ(popup->title, "New device");
    EXPECT_EQ(popup->body, std::nullopt);
    EXPECT_EQ(popup->buttonCount, 2);
    EXPECT_EQ(popup->firstButton, "Browse");
    EXPECT_EQ(popup->secondButton, "Cancel");
    EXPECT_EQ(popup->sourceIcon, std::nullopt);
    EXPECT_TRUE(popup->reservedAreZero);
    EXPECT_EQ(popup->shownAt, 5);
}

TEST_F(ScreenTest, SeesAReservedWordThatIsNotZero) {
    NotificationRecord shown = record(1, 30);
    shown.nReserved72 = 1;
    ASSERT_EQ(add_notification_data(&shown), 0);
    EXPECT_FALSE(tv.screen().popup()->reservedAreZero);
}

TEST_F(ScreenTest, RefusesANullRecordAndAnyBeforeTheServiceIsConnected) {
    EXPECT_NE(add_notification_data(nullptr), 0);
    close_notification_data_manager();
    EXPECT_NE(show(), 0);
    EXPECT_EQ(tv.screen().popup(), nullptr);
}

TEST_F(ScreenTest, TakesThePopUpDownAndTellsOfAButton) {
    show(0);
    tv.screen().press(1);
    EXPECT_EQ(tv.screen().popup(), nullptr);
    EXPECT_TRUE(told.empty()) << "callbacks come later, on the main context";
    EXPECT_EQ(settled(), Texts{"button 0 1"});
    tv.advanceSeconds(60);
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(ScreenTest, IgnoresAButtonThatThePopUpDoesNotHave) {
    tv.screen().press(0);
    show();
    tv.screen().press(2);
    tv.screen().press(-1);
    EXPECT_EQ(settled(), Texts{});
    EXPECT_NE(tv.screen().popup(), nullptr);
}

TEST_F(ScreenTest, TellsOfHiding) {
    show();
    tv.screen().hide();
    EXPECT_EQ(settled(), Texts{"hide"});
    tv.screen().hide();
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(ScreenTest, LetsAPopUpTimeOutAfterItsSeconds) {
    show(2, 3);
    tv.advance(2999);
    EXPECT_NE(tv.screen().popup(), nullptr);
    tv.advance(1);
    EXPECT_EQ(tv.screen().popup(), nullptr);
    EXPECT_EQ(settled(), Texts{"time-out 2"});
}

TEST_F(ScreenTest, CanLetThePopUpTimeOutAtOnce) {
    show(1);
    tv.screen().timeOut();
    EXPECT_EQ(settled(), Texts{"time-out 1"});
    tv.advanceSeconds(60);
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(ScreenTest, KeepsAPopUpWithoutTimeOut) {
    show(1, 0);
    tv.advanceSeconds(100'000);
    EXPECT_NE(tv.screen().popup(), nullptr);
}

TEST_F(ScreenTest, ReplacesAPopUpWithoutTellingOfTheOldOne) {
    show(1, 30);
    tv.advanceSeconds(20);
    show(0, 30);
    EXPECT_EQ(tv.screen().popup()->itemType, 0);
    tv.advanceSeconds(20);
    EXPECT_EQ(settled(), Texts{});
    tv.advanceSeconds(10);
    EXPECT_EQ(settled(), Texts{"time-out 0"});
    EXPECT_EQ(tv.screen().history().size(), 2U);
}

TEST_F(ScreenTest, StillTellsTheTimeOutOfARemovalNoticeThatWasReplaced) {
    show(2, 3);
    tv.advanceSeconds(1);
    show(1, 30);
    EXPECT_EQ(tv.screen().popup()->itemType, 1);
    tv.advanceSeconds(2);
    EXPECT_EQ(settled(), Texts{"time-out 2"});
    EXPECT_NE(tv.screen().popup(), nullptr);
    tv.advanceSeconds(28);
    EXPECT_EQ(settled(), Texts{"time-out 1"});
}

TEST_F(ScreenTest, TellsNothingOfAReplacedRemovalNoticeAfterTheServiceWasClosed) {
    show(2, 3);
    show(1, 30);
    close_notification_data_manager();
    tv.advanceSeconds(60);
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(ScreenTest, TellsNothingAfterTheServiceWasClosed) {
    show();
    tv.screen().press(0);
    tv.screen().sendHide();
    tv.screen().sendTimeOut(1);
    show();
    close_notification_data_manager();
    EXPECT_EQ(tv.screen().popup(), nullptr);
    tv.advanceSeconds(60);
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(ScreenTest, CanSendCallbacksOutOfTheBlueInTheirOrder) {
    tv.screen().sendTimeOut(7);
    tv.screen().sendButton(9, -3);
    tv.screen().sendHide();
    EXPECT_EQ(settled(), (Texts{"time-out 7", "button 9 -3", "hide"}));
}

}  // namespace
