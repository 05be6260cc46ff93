// The methods of the bus service: what each logs, does and answers, as the bus library would call
// them.
#include "BusServiceTest.h"
#include "MMPhotoBGM.h"

namespace {

class BusMethodsTest : public BusServiceTest {
protected:
    BusMethodsTest() { startService(); }

    using Outcome = FakeBus::Outcome;

    static void expectReply(const Outcome& outcome, const std::string& values) {
        EXPECT_EQ(outcome.reply, values);
        EXPECT_TRUE(outcome.invocationEnded);
    }
    static void expectNoAnswer(const Outcome& outcome) {
        EXPECT_EQ(outcome.reply, std::nullopt);
        EXPECT_TRUE(outcome.invocationEnded);
    }

    static GVariant* ints(int first, int second) { return g_variant_new("(ii)", first, second); }
    static GVariant* one(int value) { return g_variant_new("(i)", value); }

    /// The lines of registering a new id as the first client.
    static Texts registration(const std::string& id) {
        return {"I nHandleId:" + id + " vec_size=0", "I nClientId:" + id + " m_pRequester.size:0",
                "I Not find requester , new it"};
    }
};

using BusMethodsDeathTest = BusMethodsTest;

TEST_F(BusMethodsTest, ConnectRegistersTheCallerAndRepliesWithTheIdAsReceived) {
    expectReply(bus.call(":1.7", "Connect", g_variant_new("(si)", "plug-in", 7)), "(7,)");
    EXPECT_EQ(story(), joined({{"I szMethodName :Connect", "I szPluginName:plug-in,Client Id :7"},
                               registration("7"),
                               {"g_dbus_method_invocation_return_value((7,))"}}));
    EXPECT_EQ(clients(), std::vector<int>{7});
    CMMDeviceClient* client = Access::registry(*server)->GetClient(7);
    EXPECT_EQ(client->GetDBusConnection(), bus.connection());
    EXPECT_EQ(client->GetSender(), ":1.7");
    EXPECT_EQ(client->GetObjectPath(), "/com/norvane/portmeld");
    EXPECT_EQ(client->GetInterfaceName(), "com.norvane.portmeld");
}

TEST_F(BusMethodsTest, GetDeviceInfoRegistersTheCallerAndIsNeverAnswered) {
    expectNoAnswer(bus.call(":1.7", "GetDeviceInfo", g_variant_new("(is)", 7, "sda1")));
    EXPECT_EQ(story(), joined({{"I szMethodName :GetDeviceInfo", "I szDeviceName:sda1,nHandleId:7"},
                               registration("7")}));
    EXPECT_EQ(clients(), std::vector<int>{7});
}

TEST_F(BusMethodsTest, GetDeviceCountFromANewIdRegistersItAndAnswersWithTheManagersCount) {
    plug();
    simulated::UsbDevice ntfs;
    ntfs.fileSystem = 3;
    plug(ntfs);
    plug(ntfs);
    forget();
    expectReply(bus.call(":1.7", "GetDeviceCount", ints(7, 3)), "(2,)");
    EXPECT_TRUE(
        inOrder(story(), joined({{"I szMethodName :GetDeviceCount", "I nHandleId:7"},
                                 registration("7"),
                                 {"I nCount:2", "g_dbus_method_invocation_return_value((2,))"}})));
    EXPECT_EQ(clients(), std::vector<int>{7});
    expectReply(bus.call(":1.7", "GetDeviceCount", ints(7, 0)), "(1,)");
    expectReply(bus.call(":1.7", "GetDeviceCount", ints(7, -1)), "(3,)");
    expectReply(bus.call(":1.7", "GetDeviceCount", ints(7, 6)), "(0,)");
}

TEST_F(BusMethodsTest, DisConnectForgetsTheIdAndRepliesEmpty) {
    bus.call(":1.7", "Connect", g_variant_new("(si)", "p", 7));
    forget();
    expectReply(bus.call(":1.8", "DisConnect", one(7)), "()");
    EXPECT_EQ(story(), (Texts{"I szMethodName :DisConnect", "I nHandleId:7", "I connetion : 7",
                              "I nClientId:7  m_pRequester.size:1",
                              "g_dbus_method_invocation_return_value(())"}));
    EXPECT_TRUE(clients().empty());
}

TEST_F(BusMethodsTest, DisConnectForAnIdNeverRegisteredChangesNothingAndStillGetsAnEmptyReply) {
    bus.call(":1.7", "Connect", g_variant_new("(si)", "p", 7));
    expectReply(bus.call(":1.7", "DisConnect", one(8)), "()");
    EXPECT_EQ(clients(), std::vector<int>{7});
}

TEST_F(BusMethodsTest, RequesAllRegistersTheCallerAndSendsAllSignalsBeforeTheEmptyReply) {
    plug();
    plug();
    forget();
    expectReply(bus.call(":1.7", "RequesAll", one(7)), "()");
    EXPECT_EQ(clients(), std::vector<int>{7});
    EXPECT_EQ(bus.takeSignals().size(), 2U);
    Texts calls = tv.journal().calls(mark);
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].rfind("g_dbus_connection_emit_signal(", 0), 0U);
    EXPECT_EQ(calls[1].rfind("g_dbus_connection_emit_signal(", 0), 0U);
    EXPECT_EQ(calls[2], "g_dbus_method_invocation_return_value(())");
    EXPECT_EQ(messages()[0], "szMethodName :RequesAll");
    EXPECT_EQ(messages()[1], "nHandleId:7");
}

TEST_F(BusMethodsTest, SetEnablePopUpTurnsTheActivationFlagAndDoesNotRegisterTheCaller) {
    ASSERT_TRUE(access.activated());
    expectReply(bus.call(":1.7", "SetEnablePopUP", g_variant_new("(b)", FALSE)), "()");
    EXPECT_FALSE(access.activated());
    EXPECT_TRUE(clients().empty());
    EXPECT_EQ(without(story(), {"I Instance :"}),
              (Texts{"I szMethodName :SetEnablePopUP", "I bEnable:0", "I bEnable:0",
                     "g_dbus_method_invocation_return_value(())"}));
    forget();
    expectReply(bus.call(":1.7", "SetEnablePopUP", g_variant_new("(b)", TRUE)), "()");
    EXPECT_TRUE(access.activated());
    EXPECT_EQ(occurrences(story(), "I bEnable:1"), 2);
}

TEST_F(BusMethodsTest,
       GetDeviceListByFsTypeRegistersTheCallerAndSendsAllSignalsBeforeTheEmptyReply) {
    expectReply(bus.call(":1.7", "GetDeviceListByFsType", ints(7, 3)), "()");
    EXPECT_EQ(clients(), std::vector<int>{7});
    EXPECT_EQ(messages()[0], "szMethodName :GetDeviceListByFsType");
    EXPECT_EQ(messages()[1], "nHandleId:7,nFsType:3");
    EXPECT_TRUE(inOrder(tv.journal().calls(mark),
                        {"g_dbus_connection_emit_signal(\":1.7\", \"/com/norvane/portmeld\", "
                         "\"com.norvane.portmeld\", \"mm_device_get_list\", {\"Action\":4})",
                         "g_dbus_method_invocation_return_value(())"}));
}

TEST_F(BusMethodsTest, LaunchPopupOnlyLogsAndIsNeverAnswered) {
    expectNoAnswer(bus.call(":1.7", "LaunchPopup", g_variant_new("(s)", "sda1")));
    EXPECT_EQ(story(), (Texts{"I szMethodName :LaunchPopup", "I szDeviceName:sda1"}));
    EXPECT_TRUE(clients().empty());
}

TEST_F(BusMethodsTest, SwitchToContentDoesNothingAndIsNeverAnsweredWhateverItsArguments) {
    expectNoAnswer(bus.call(":1.7", "SwitchToContent"));
    expectNoAnswer(bus.call(":1.7", "SwitchToContent", ints(1, 2)));
    EXPECT_EQ(story(),
              (Texts{"I szMethodName :SwitchToContent", "I szMethodName :SwitchToContent"}));
    EXPECT_TRUE(clients().empty());
}

TEST_F(BusMethodsTest, PlayListItemsAreKeptReadBackAndCleared) {
    expectReply(bus.call(":1.7", "SetPhotoBGMPlayList", g_variant_new("(sss)", "a", "", "c")),
                "()");
    EXPECT_EQ(story(), (Texts{"I szMethodName :SetPhotoBGMPlayList", "I 1=[a],2=[],3=[c]",
                              "I before m_pInstance=[(null)]", "I after m_pInstance=[]",
                              "g_dbus_method_invocation_return_value(())"}));
    bus.call(":1.8", "SetPhotoBGMPlayList", g_variant_new("(sss)", "d", "e", "f"));
    forget();
    expectReply(bus.call(":1.7", "GetPhotoBGMPlayListItem", one(1)), "('d', 'e', 'f')");
    EXPECT_EQ(story(),
              (Texts{"I szMethodName :GetPhotoBGMPlayListItem", "I nval:1",
                     "I before m_pInstance=[]", "I after m_pInstance=[]", "I 1=[d],2=[e],3=[f]",
                     "g_dbus_method_invocation_return_value(('d', 'e', 'f'))"}));
    expectReply(bus.call(":1.9", "GetPhotoBGMPlayListItem", one(0)), "('a', '', 'c')");
    forget();
    expectReply(bus.call(":1.7", "ClearPhotoBGMPlayList"), "()");
    EXPECT_EQ(story(), (Texts{"I szMethodName :ClearPhotoBGMPlayList", "I ClearPhotoBGMPlayList",
                              "I before m_pInstance=[]", "I after m_pInstance=[]",
                              "g_dbus_method_invocation_return_value(())"}));
    EXPECT_EQ(CMMPhotoBGM::GetInstance()->GetPlayListSize(), 0);
    EXPECT_TRUE(clients().empty());
}

TEST_F(BusMethodsDeathTest, APlayListIndexOutsideTheListEndsTheProcess) {
    bus.call(":1.7", "SetPhotoBGMPlayList", g_variant_new("(sss)", "a", "b", "c"));
    EXPECT_EXIT(bus.call(":1.7", "GetPhotoBGMPlayListItem", one(1)),
                ::testing::KilledBySignal(SIGABRT), "out_of_range");
    EXPECT_EXIT(bus.call(":1.7", "GetPhotoBGMPlayListItem", one(-1)),
                ::testing::KilledBySignal(SIGABRT), "out_of_range");
}

TEST_F(BusMethodsTest, AMethodWithoutARowGetsAnEmptyReply) {
    expectReply(bus.call(":1.7", "NobodyKnows", one(1)), "()");
    EXPECT_EQ(story(), (Texts{"I szMethodName :NobodyKnows", "I unkown method call.\n",
                              "g_dbus_method_invocation_return_value(())"}));
    expectReply(bus.call(":1.7", "connect", g_variant_new("(si)", "p", 7)), "()");
    expectReply(bus.call(":1.7", "RequestAll", one(7)), "()");
    EXPECT_TRUE(clients().empty());
}

/// The replies that there are, for calls that the service itself does not answer to any more.
class BusMethodsWithoutServiceTest : public BusMethodsTest {
protected:
    void expectReplies() {
        plug();
        forget();
        expectReply(bus.call(":1.7", "Connect", g_variant_new("(si)", "p", 7)), "(7,)");
        expectNoAnswer(bus.call(":1.7", "GetDeviceInfo", g_variant_new("(is)", 7, "n")));
        expectReply(bus.call(":1.7", "GetDeviceCount", ints(7, -1)), "(1,)");
        expectReply(bus.call(":1.7", "DisConnect", one(7)), "()");
        expectReply(bus.call(":1.7", "RequesAll", one(7)), "()");
        expectReply(bus.call(":1.7", "GetDeviceListByFsType", ints(7, -1)), "()");
        EXPECT_TRUE(bus.takeSignals().empty());
        EXPECT_TRUE(messages(5).empty());
        EXPECT_EQ(occurrences(story(), "I Not find requester , new it"), 0);
    }
};

TEST_F(BusMethodsWithoutServiceTest, WithTheServiceGoneCallsAreAnsweredWithoutIt) {
    server->Destroy();
    CMMDeviceDbusServer::DestroyInstance();
    server = nullptr;
    expectReplies();
    EXPECT_EQ(occurrences(story(), "I connetion : 7"), 0);
    expectReply(bus.call(":1.7", "SetEnablePopUP", g_variant_new("(b)", FALSE)), "()");
    EXPECT_TRUE(access.activated());
}

TEST_F(BusMethodsWithoutServiceTest, WithTheRegistryGoneCallsAreAnsweredWithoutClients) {
    Access::loseRegistry(*server);
    expectReplies();
    EXPECT_EQ(occurrences(story(), "I connetion : 7"), 1);
    expectReply(bus.call(":1.7", "SetEnablePopUP", g_variant_new("(b)", FALSE)), "()");
    EXPECT_FALSE(access.activated());
}

}  // namespace
