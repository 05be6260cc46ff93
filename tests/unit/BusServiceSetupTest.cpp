// The bus service's beginning and end: interface description, name, object, device manager's news.
#include <unistd.h>

#include "BusServiceTest.h"
#include "EntrySeams.h"
#include "MMPhotoBGM.h"

namespace {

class BusServiceSetupTest : public BusServiceTest {
protected:
    void TearDown() override {
        EntrySeams::reset();
        BusServiceTest::TearDown();
    }

    void removeDescription() {
        describe("");
        ASSERT_EQ(unlink(path().c_str()), 0);
    }
    std::string path() const { return onTv("/usr/bin/portmeld.interface.xml"); }
};

const Texts DESCRIPTION_LINES = {"I m_pIntrospectionData:0x*",
                                 "I m_pIntrospectionData path:/com/norvane/portmeld",
                                 "I m_pIntrospectionData inter:0x*"};

TEST_F(BusServiceSetupTest, TheFirstUseReadsTheDescriptionRequestsTheNameAndHooksIntoTheManager) {
    forget();
    server = CMMDeviceDbusServer::GetInstance();
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(story(),
              joined({{"I Instance:(nil)",
                       "I ConfigFilePath:" + tvPath("/usr/bin/portmeld.interface.xml"),
                       "I load portmeld.interface.xml ok.", "I init_introspection_xml ok."},
                      DESCRIPTION_LINES,
                      {"g_bus_own_name(system, \"com.norvane.portmeld\", 0)",
                       "I Create-------------------------------nOwnerId=1\n", "I Instance :0x*",
                       "I Instance :0x*", "I SetDeviceEventCallback", "I Instance:0x*"}}));
    EXPECT_TRUE(clients().empty());
    forget();
    EXPECT_EQ(CMMDeviceDbusServer::GetInstance(), server);
    EXPECT_EQ(story(), (Texts{"I Instance:0x*", "I Instance:0x*"}));
}

TEST_F(BusServiceSetupTest, WithTheDescriptionAbsentThereIsNoServiceAndTheNextUseTriesAgain) {
    removeDescription();
    for (int attempt = 0; attempt < 2; ++attempt) {
        forget();
        EXPECT_EQ(CMMDeviceDbusServer::GetInstance(), nullptr);
        EXPECT_EQ(story(),
                  (Texts{"I Instance:(nil)",
                         "I ConfigFilePath:" + tvPath("/usr/bin/portmeld.interface.xml"),
                         "W load portmeld.interface.xml fail.", "W init_introspection_xml error.",
                         "W m_InitMMDeviceDbus fail", "W Create CMMDeviceDbusServer instance fail",
                         "I Instance:(nil)"}));
    }
    describe("<node name=\"/a\"><interface name=\"a.b\"/></node>");
    server = CMMDeviceDbusServer::GetInstance();
    EXPECT_NE(server, nullptr);
}

TEST_F(BusServiceSetupTest, WithADescriptionThatDoesNotParseThereIsNoService) {
    for (const char* xml : {"", "<node>", "no XML", "\xff\xfe", "<other/>"}) {
        describe(xml);
        forget();
        EXPECT_EQ(CMMDeviceDbusServer::GetInstance(), nullptr) << xml;
        EXPECT_EQ(story(5),
                  (Texts{"W g_dbus_node_info_new_for_xml fail", "W m_InitMMDeviceDbus fail",
                         "W Create CMMDeviceDbusServer instance fail"}));
    }
}

TEST_F(BusServiceSetupTest, ARefusedNameIsWarnedOfAndTheServiceIsThereAllTheSame) {
    bus.ownerId = 0;
    forget();
    server = CMMDeviceDbusServer::GetInstance();
    ASSERT_NE(server, nullptr);
    EXPECT_TRUE(inOrder(story(), {"I Create-------------------------------nOwnerId=0\n",
                                  "W  dbus own name fail", "I SetDeviceEventCallback"}));
    forget();
    server->Destroy();
    EXPECT_EQ(tv.journal().count("g_bus_unown_name", mark), 0U);
}

TEST_F(BusServiceSetupTest, WithoutADeviceManagerTheServiceIsThereButNotHookedIn) {
    EntrySeams::managerRefused = true;
    forget();
    server = CMMDeviceDbusServer::GetInstance();
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(messages(5), Texts{"get CMMDeviceMgr instance  fail"});
    EXPECT_FALSE(logged(4, "SetDeviceEventCallback"));
    EXPECT_NE(Access::registry(*server), nullptr);
    EntrySeams::reset();
    const auto stick = plug();
    forget();
    pull(stick);
    EXPECT_EQ(occurrences(story(), "I pvData :0x*,pDeviceInfo:0x*"), 0);
}

TEST_F(BusServiceSetupTest, WhenTheBusIsThereTheObjectIsRegistered) {
    server = CMMDeviceDbusServer::GetInstance();
    forget();
    bus.acquireBus();
    EXPECT_EQ(story(), joined({{"I szName:com.norvane.portmeld"},
                               DESCRIPTION_LINES,
                               {"g_dbus_connection_register_object(\"/com/norvane/portmeld\", "
                                "\"com.norvane.portmeld\")",
                                "I nRegistrationId : 1"}}));
    EXPECT_TRUE(bus.hasObject());
}

TEST_F(BusServiceSetupTest, TheFirstInterfaceOfTheRootNodeIsTheOneThatIsServed) {
    describe(
        "<node name=\"/any/path\"><interface name=\"first.one\"/><interface name=\"second.one\"/>"
        "</node>");
    startService();
    EXPECT_TRUE(inOrder(tv.journal().calls(),
                        {"g_dbus_connection_register_object(\"/any/path\", \"first.one\")"}));
}

TEST_F(BusServiceSetupTest, ARefusedRegistrationIsWarnedOfWithItsError) {
    bus.registrationId = 0;
    bus.registerError = "already there";
    server = CMMDeviceDbusServer::GetInstance();
    forget();
    bus.acquireBus();
    EXPECT_TRUE(logged(4, "nRegistrationId : 0"));
    EXPECT_EQ(messages(5), Texts{"Error: g_dbus_connection_register_object:  Error code: 2  "
                                 "Error msg: already there\n"});
    EXPECT_FALSE(bus.hasObject());
}

TEST_F(BusServiceSetupTest, ADescriptionThatABusCouldNotTakeIsNotRegisteredAndNoErrorIsTold) {
    const std::pair<const char*, const char*> descriptions[] = {
        {"without a root name", "<node><interface name=\"a.b\"/></node>"},
        {"with a root name that is no path",
         "<node name=\"no/path\"><interface name=\"a.b\"/></node>"},
        {"with an empty root name", "<node name=\"\"><interface name=\"a.b\"/></node>"},
        {"without an interface", "<node name=\"/a\"/>"},
        {"with an interface name that is none", "<node name=\"/a\"><interface name=\"a\"/></node>"},
    };
    for (const auto& [what, xml] : descriptions) {
        describe(xml);
        server = CMMDeviceDbusServer::GetInstance();
        ASSERT_NE(server, nullptr) << what;
        forget();
        bus.acquireBus();
        EXPECT_TRUE(logged(4, "nRegistrationId : 0")) << what;
        EXPECT_TRUE(messages(5).empty()) << what;
        EXPECT_EQ(tv.journal().count("g_dbus_connection_register_object", mark), 0U) << what;
        EXPECT_EQ(CMMDeviceDbusServer::GetInstance(), server) << what;
        EXPECT_EQ(tv.journal().count("g_bus_unown_name", mark), 0U) << what;
        server->Destroy();
        CMMDeviceDbusServer::DestroyInstance();
        server = nullptr;
    }
}

TEST_F(BusServiceSetupTest, ARootWithoutANameIsLoggedAsNull) {
    describe("<node/>");
    forget();
    server = CMMDeviceDbusServer::GetInstance();
    EXPECT_TRUE(logged(4, "m_pIntrospectionData path:(null)"));
    EXPECT_TRUE(logged(4, "m_pIntrospectionData inter:(nil)"));
}

TEST_F(BusServiceSetupTest, ABusWithoutConnectionServerOrDescriptionIsWarnedOf) {
    server = CMMDeviceDbusServer::GetInstance();
    int noServer = 0;
    forget();
    Access::busAcquired(nullptr, server);
    Access::busAcquired(bus.connection(), nullptr);
    Access::busAcquired(bus.connection(), &noServer);
    server->Destroy();
    const Texts warned = {"NULL == pConnection", "NULL == pMMDeviceEngine",
                          "NULL == pMMDeviceEngine"};
    EXPECT_EQ(messages(5), warned);
    forget();
    Access::busAcquired(bus.connection(), server);
    EXPECT_EQ(messages(5), Texts{"NULL == m_pIntrospectionData"});
    EXPECT_FALSE(bus.hasObject());
    CMMDeviceDbusServer::DestroyInstance();
    forget();
    Access::busAcquired(bus.connection(), server);
    EXPECT_EQ(messages(5), Texts{"NULL == pMMDeviceEngine"});
    server = nullptr;
}

TEST_F(BusServiceSetupTest, GainingAndLosingTheNameIsLoggedAndChangesNothing) {
    startService();
    bus.acquireName();
    bus.loseName();
    EXPECT_EQ(story(),
              (Texts{"I com.norvane.portmeld NameAcquired.", "I com.norvane.portmeld NameLost."}));
    EXPECT_EQ(bus.call(":1.7", "DisConnect", g_variant_new("(i)", 1)).reply, "()");
}

TEST_F(BusServiceSetupTest, DestroyForgetsTheClientsGivesBackTheNameAndEndsThePlayList) {
    bus.ownerId = 5;
    startService();
    bus.call(":1.7", "Connect", g_variant_new("(si)", "plug-in", 7));
    bus.call(":1.7", "SetPhotoBGMPlayList", g_variant_new("(sss)", "a", "b", "c"));
    forget();
    server->Destroy();
    EXPECT_EQ(story(), (Texts{"I m_pRequester.size:1", "g_bus_unown_name(5)",
                              "I before m_pInstance=[]", "I after m_pInstance=[]"}));
    EXPECT_EQ(CMMPhotoBGM::GetInstance()->GetPlayListSize(), 0);
    CMMPhotoBGM::DestroyInstance();
    CMMDeviceDbusServer::DestroyInstance();
    server = nullptr;
}

TEST_F(BusServiceSetupTest, DestroyInstanceWithNoInstanceDoesNothing) {
    forget();
    CMMDeviceDbusServer::DestroyInstance();
    EXPECT_TRUE(story(3).empty());
    EXPECT_EQ(tv.journal().mark(), mark);
}

}  // namespace
