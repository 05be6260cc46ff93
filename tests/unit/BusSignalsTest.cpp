// The signals of the bus service: which client gets which, with what in them.
#include "BusServiceTest.h"

namespace {

class BusSignalsTest : public BusServiceTest {
protected:
    BusSignalsTest() { startService(); }

    using Signals = std::vector<FakeBus::Signal>;

    void connect(const std::string& sender, int id) {
        bus.call(sender, "Connect", g_variant_new("(si)", "p", id));
    }
    Signals requesAll(int id) {
        bus.call(":1.7", "RequesAll", g_variant_new("(i)", id));
        return bus.takeSignals();
    }
    Signals listByFsType(int id, int fsType) {
        bus.call(":1.7", "GetDeviceListByFsType", g_variant_new("(ii)", id, fsType));
        return bus.takeSignals();
    }

    /// "name action key" of each signal.
    static Texts summary(const Signals& signals) {
        Texts lines;
        for (const FakeBus::Signal& signal : signals) {
            g_autoptr(JsonParser) parser = json_parser_new();
            JsonObject* object = objectIn(parser, signal.json);
            if (object == nullptr) {
                lines.push_back(signal.name + " no JSON object");
                continue;
            }
            const char* key = json_object_get_string_member_with_default(object, "DeviceKey", "-");
            lines.push_back(signal.name + " " +
                            std::to_string(json_object_get_int_member(object, "Action")) + " " +
                            key);
        }
        return lines;
    }

    simulated::DeviceId plugNode(const std::string& node, int fileSystem = 0) {
        simulated::UsbDevice stick;
        stick.devname = node;
        stick.product = node;
        stick.fileSystem = fileSystem;
        return plug(stick);
    }
};

TEST_F(BusSignalsTest, ARemovalIsToldToEveryClientInOrderWithTheSameValues) {
    const auto stick = plugNode("/dev/sda1");
    connect(":1.7", 7);
    connect(":1.8", -1);
    forget();
    pull(stick);
    const Signals signals = bus.takeSignals();
    EXPECT_EQ(summary(signals),
              (Texts{"mm_device_action 2 /dev/sda1", "mm_device_action 2 /dev/sda1"}));
    EXPECT_EQ(signals[0].destination, ":1.7");
    EXPECT_EQ(signals[1].destination, ":1.8");
    EXPECT_EQ(signals[0].path, "/com/norvane/portmeld");
    EXPECT_EQ(signals[0].interface, "com.norvane.portmeld");
    EXPECT_EQ(signals[0].parameters, signals[1].parameters);
    EXPECT_EQ(occurrences(story(), "I nAction = 2"), 1);
    const std::string emit =
        "(\":1.7\", \"/com/norvane/portmeld\", \"com.norvane.portmeld\", "
        "\"mm_device_action\", " +
        signals[0].json + ")";
    EXPECT_TRUE(inOrder(
        story(), {"I pvData :0x*,pDeviceInfo:0x*", "I nAction = 2",
                  "I strDeviceInfo:" + signals[0].json, "I pClient ID :7",
                  "I pSignal:mm_device_action,pClient:0x*", "g_dbus_connection_emit_signal" + emit,
                  "I pClient ID :-1", "I pSignal:mm_device_action,pClient:0x*"}));
}

TEST_F(BusSignalsTest, APluggedDeviceIsNotReported) {
    connect(":1.7", 7);
    plug();
    EXPECT_TRUE(bus.takeSignals().empty());
}

TEST_F(BusSignalsTest, TheReceiverHandlesAnAttachAllTheSame) {
    connect(":1.7", 7);
    CMMDeviceInfo device;
    device.SetDeviceKey("key");
    Access::deviceAction(server, &device, true);
    EXPECT_EQ(summary(bus.takeSignals()), Texts{"mm_device_action 1 key"});
}

TEST_F(BusSignalsTest, WithoutAClientADeviceEventBuildsNoJsonAndSendsNothing) {
    CMMDeviceInfo device;
    Access::deviceAction(server, &device, false);
    Access::deviceAction(server, nullptr, false);
    EXPECT_EQ(story(), (Texts{"I pvData :0x*,pDeviceInfo:0x*", "I pvData :0x*,pDeviceInfo:(nil)"}));
    Access::loseRegistry(*server);
    forget();
    Access::deviceAction(server, &device, false);
    EXPECT_EQ(story(), Texts{"I pvData :0x*,pDeviceInfo:0x*"});
}

TEST_F(BusSignalsTest, ADeviceEventWithoutServerOrDeviceIsWarnedOf) {
    connect(":1.7", 7);
    CMMDeviceInfo device;
    int noServer = 0;
    forget();
    Access::deviceAction(nullptr, &device, false);
    Access::deviceAction(&noServer, &device, false);
    Access::deviceAction(server, nullptr, false);
    EXPECT_EQ(story(), (Texts{"I pvData :(nil),pDeviceInfo:0x*", "W NULL == pThis",
                              "I pvData :0x*,pDeviceInfo:0x*", "W NULL == pThis",
                              "I pvData :0x*,pDeviceInfo:(nil)", "W NULL == pDeviceInfo"}));
}

TEST_F(BusSignalsTest, AfterTheServicesEndARemovalFindsNoServer) {
    const auto stick = plug();
    connect(":1.7", 7);
    server->Destroy();
    CMMDeviceDbusServer::DestroyInstance();
    server = nullptr;
    forget();
    pull(stick);
    EXPECT_EQ(occurrences(story(), "W NULL == pThis"), 1);
    EXPECT_TRUE(bus.takeSignals().empty());
}

TEST_F(BusSignalsTest, WhenTwoPeersConnectWithTheSameIdOnlyTheSecondReceivesSignals) {
    const auto stick = plug();
    connect(":1.7", 7);
    connect(":1.8", 7);
    EXPECT_EQ(clients(), std::vector<int>{7});
    pull(stick);
    const Signals signals = bus.takeSignals();
    ASSERT_EQ(signals.size(), 1U);
    EXPECT_EQ(signals[0].destination, ":1.8");
}

TEST_F(BusSignalsTest, ADisconnectedClientReceivesNothingMore) {
    const auto stick = plug();
    connect(":1.7", 7);
    connect(":1.8", 8);
    bus.call(":1.7", "DisConnect", g_variant_new("(i)", 7));
    pull(stick);
    const Signals signals = bus.takeSignals();
    ASSERT_EQ(signals.size(), 1U);
    EXPECT_EQ(signals[0].destination, ":1.8");
}

TEST_F(BusSignalsTest, AFailedSignalIsWarnedOfAndTheNextClientIsStillTold) {
    const auto stick = plug();
    connect(":1.7", 7);
    connect(":1.8", 8);
    bus.emitError = "connection closed";
    forget();
    pull(stick);
    EXPECT_EQ(tv.journal().count("g_dbus_connection_emit_signal", mark), 2U);
    const std::string warning =
        "W Error: Create pDBusProxy for remote interface faild:  Error code: 18  Error msg: "
        "connection closed\n";
    EXPECT_EQ(occurrences(story(), warning), 2);
}

TEST_F(BusSignalsTest, ASignalToNobodyIsWarnedOfAndNotSent) {
    Access::emit(*server, nullptr, "{}");
    EXPECT_EQ(story(), (Texts{"I pSignal:mm_device_action,pClient:(nil)", "W NULL == pClient"}));
}

TEST_F(BusSignalsTest, RequesAllSendsEveryDeviceInListOrderToTheCallerOnlyWithoutAnEndMark) {
    plugNode("/dev/sda1");
    plugNode("/dev/sdb1", 99);
    simulated::UsbDevice camera;
    camera.serial = "camera";
    tv.ports().plugCamera(camera);
    tv.settle();
    connect(":1.8", 8);
    forget();
    const Signals signals = requesAll(7);
    EXPECT_EQ(summary(signals), (Texts{"mm_device_action 1 camera", "mm_device_action 1 /dev/sdb1",
                                       "mm_device_action 1 /dev/sda1"}));
    for (const FakeBus::Signal& signal : signals) {
        EXPECT_EQ(signal.destination, ":1.7");
    }
    EXPECT_TRUE(
        inOrder(story(), {"I pNode:0x*", "I nAction = 1", "I pSignal:mm_device_action,pClient:0x*",
                          "I strDeviceInfo:" + signals[0].json, "I pNode:0x*"}));
}

TEST_F(BusSignalsTest, RequesAllWithNoDevicesSendsNoSignal) {
    EXPECT_TRUE(requesAll(7).empty());
    EXPECT_EQ(messages(5), Texts{"pList = NULL"});
}

TEST_F(BusSignalsTest, AListForAnUnknownClientIsWarnedOfAndNotSent) {
    plug();
    forget();
    Access::getAllDevice(*server, 7);
    EXPECT_EQ(messages(5), Texts{"Can not finde client"});
    forget();
    Access::getDeviceList(*server, 7, -1);
    EXPECT_EQ(messages(5), Texts{"Can not find client"});
    Access::loseRegistry(*server);
    forget();
    Access::getAllDevice(*server, 7);
    Access::getDeviceList(*server, 7, -1);
    EXPECT_EQ(messages(5), (Texts{"Can not finde client", "Can not find client"}));
    EXPECT_TRUE(bus.takeSignals().empty());
}

TEST_F(BusSignalsTest, ThreeDevicesOfEveryFileSystemAreSentWithActions1And1And3) {
    plugNode("/dev/sda1", 0);
    plugNode("/dev/sdb1", 3);
    plugNode("/dev/sdc1", 2);
    forget();
    const Signals signals = listByFsType(7, -1);
    EXPECT_EQ(summary(signals),
              (Texts{"mm_device_get_list 1 /dev/sdc1", "mm_device_get_list 1 /dev/sdb1",
                     "mm_device_get_list 3 /dev/sda1"}));
    EXPECT_TRUE(inOrder(
        story(), {"I Fs -1 device count:3", "I nClient:7,nFsType:-1", "I pNode:0x*",
                  "I Device Key:/dev/sdc1,Device Fs:2", "I nAction = 1",
                  "I strDeviceInfo:" + signals[0].json, "I pSignal:mm_device_get_list,pClient:0x*",
                  "I pNode:0x*", "I Device Key:/dev/sdb1,Device Fs:3"}));
}

TEST_F(BusSignalsTest, AFilteredListHoldsTheMatchesOnlyTheLastOneMarked) {
    plugNode("/dev/sda1", 3);
    plugNode("/dev/sdb1", 0);
    plugNode("/dev/sdc1", 3);
    EXPECT_EQ(summary(listByFsType(7, 3)),
              (Texts{"mm_device_get_list 1 /dev/sdc1", "mm_device_get_list 3 /dev/sda1"}));
    EXPECT_EQ(summary(listByFsType(7, 0)), Texts{"mm_device_get_list 3 /dev/sdb1"});
}

TEST_F(BusSignalsTest, WithNoDeviceListOneSignalWithAction4OnlyIsSent) {
    for (const int fsType : {-1, 0, 6}) {
        forget();
        const Signals signals = listByFsType(7, fsType);
        ASSERT_EQ(signals.size(), 1U);
        EXPECT_EQ(signals[0].json, "{\"Action\":4}");
        EXPECT_EQ(signals[0].name, "mm_device_get_list");
        EXPECT_TRUE(inOrder(story(), {"I pSignal:mm_device_get_list,pClient:0x*",
                                      "I strDeviceInfo:{\"Action\":4}"}));
    }
}

TEST_F(BusSignalsTest, WithDevicesButNoMatchNothingIsSent) {
    plugNode("/dev/sda1", 0);
    EXPECT_TRUE(listByFsType(7, 3).empty());
    EXPECT_TRUE(listByFsType(7, -2).empty());
}

TEST_F(BusSignalsTest, TheMarkComesEarlyWhenFewerAreCountedThanMatch) {
    // Unreadable file systems match but are counted nowhere.
    plugNode("/dev/sda1", 99);
    plugNode("/dev/sdb1", 99);
    EXPECT_EQ(summary(listByFsType(7, -1)),
              (Texts{"mm_device_get_list 3 /dev/sdb1", "mm_device_get_list 3 /dev/sda1"}));
}

TEST_F(BusSignalsTest, TheMarkNeverComesWhenMoreAreCountedThanMatch) {
    plugNode("/dev/sda1", 0);
    tv.power().standby();
    tv.settle();
    tv.power().wake();
    tv.settle();
    // Listed and counted once more after the wake-up.
    EXPECT_EQ(summary(listByFsType(7, 0)), Texts{"mm_device_get_list 1 /dev/sda1"});
}

}  // namespace
