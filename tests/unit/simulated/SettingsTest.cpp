// The settings store: reading by type, and change notices to whoever watches.
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

std::string orNull(const char* text) {
    return text != nullptr ? text : "null";
}

class SettingsTest : public ::testing::Test {
protected:
    static void take(keynode_s* node, void* user) {
        static_cast<Texts*>(user)->push_back(orNull(vconf_keynode_get_name(node)) + "=" +
                                             orNull(vconf_keynode_get_str(node)));
    }
    static void takeToo(keynode_s* node, void* user) { take(node, user); }

    SimulatedTv tv;
    Texts told;
};

TEST_F(SettingsTest, AreReadByTheirType) {
    tv.settings().set("text", "value");
    tv.settings().set("number", 7);
    tv.settings().set("yes", true);
    int number = 0;
    EXPECT_EQ(vconf_get_int("number", &number), 0);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(vconf_get_bool("yes", &number), 0);
    EXPECT_EQ(number, 1);
    char* text = vconf_get_str("text");
    EXPECT_STREQ(text, "value");
    std::free(text);
}

TEST_F(SettingsTest, OfAnotherTypeOrUnsetLeaveTheResultAlone) {
    tv.settings().set("text", "value");
    tv.settings().set("number", 7);
    int number = 42;
    EXPECT_NE(vconf_get_int("text", &number), 0);
    EXPECT_NE(vconf_get_bool("number", &number), 0);
    EXPECT_NE(vconf_get_int("unset", &number), 0);
    EXPECT_NE(vconf_get_int(nullptr, &number), 0);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(vconf_get_str("number"), nullptr);
    EXPECT_EQ(vconf_get_str("unset"), nullptr);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
}

TEST_F(SettingsTest, AreGoneAfterUnset) {
    tv.settings().set("number", 7);
    tv.settings().unset("number");
    EXPECT_EQ(tv.settings().get("number"), nullptr);
}

TEST_F(SettingsTest, TellEachWatcherOfTheKeyLaterWithTheValueOfThatMoment) {
    vconf_notify_key_changed("key", take, &told);
    vconf_notify_key_changed("key", takeToo, &told);
    vconf_notify_key_changed("other", take, &told);
    tv.settings().set("key", "one");
    tv.settings().set("key", "two");
    EXPECT_TRUE(told.empty());
    tv.settle();
    EXPECT_EQ(told, (Texts{"key=one", "key=one", "key=two", "key=two"}));
    EXPECT_EQ(tv.settings().watched(), (Texts{"key", "key", "other"}));
}

TEST_F(SettingsTest, TellOfAValueThatStaysEqual) {
    tv.settings().set("key", "same");
    vconf_notify_key_changed("key", take, &told);
    tv.settings().set("key", "same");
    tv.settle();
    EXPECT_EQ(told, Texts{"key=same"});
}

TEST_F(SettingsTest, GiveANodeWithoutTextForANumber) {
    vconf_notify_key_changed("key", take, &told);
    tv.settings().set("key", 1);
    tv.settle();
    EXPECT_EQ(told, Texts{"key=null"});
}

TEST_F(SettingsTest, TellNothingToAWatcherThatLeftAfterTheChange) {
    vconf_notify_key_changed("key", take, &told);
    tv.settings().set("key", "one");
    EXPECT_EQ(vconf_ignore_key_changed("key", take), 0);
    tv.settle();
    EXPECT_EQ(told, Texts{});
    EXPECT_EQ(vconf_ignore_key_changed("key", take), 0) << "leaving twice is harmless";
}

TEST_F(SettingsTest, TellNothingOfAChangeBeforeTheWatchBegan) {
    tv.settings().set("key", "before");
    vconf_notify_key_changed("key", take, &told);
    vconf_ignore_key_changed("key", take);
    vconf_notify_key_changed("key", take, &told);
    tv.settle();
    EXPECT_EQ(told, Texts{});
}

TEST_F(SettingsTest, CanSendWhatABrokenStoreWouldSend) {
    vconf_notify_key_changed("key", take, &told);
    tv.settings().sendNotice(nullptr, "value");
    tv.settings().sendNotice("name", nullptr);
    tv.settle();
    EXPECT_EQ(told, (Texts{"null=value", "name=null"}));
}

TEST_F(SettingsTest, NoteANodeThatIsReadAfterItsCallback) {
    static keynode_s* kept = nullptr;
    vconf_notify_key_changed(
        "key", [](keynode_s* node, void*) { kept = node; }, nullptr);
    tv.settings().set("key", "value");
    tv.settle();
    EXPECT_EQ(vconf_keynode_get_str(kept), nullptr);
    EXPECT_EQ(vconf_keynode_get_name(nullptr), nullptr);
    EXPECT_EQ(tv.journal().breaches(), (Texts{"vconf_keynode_get_str: the node is not alive",
                                              "vconf_keynode_get_name: the node is not alive"}));
}

TEST_F(SettingsTest, RefuseAWatchWithoutKeyOrCallback) {
    EXPECT_NE(vconf_notify_key_changed(nullptr, take, nullptr), 0);
    EXPECT_NE(vconf_notify_key_changed("key", nullptr, nullptr), 0);
    EXPECT_NE(vconf_ignore_key_changed(nullptr, take), 0);
    EXPECT_EQ(tv.settings().watched(), Texts{});
}

}  // namespace
