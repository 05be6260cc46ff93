// The registry of clients: who is in it, under which id, in which order, and who wins an id.
#include <stdexcept>

#include "MMDeviceClientMgr.h"
#include "TvTest.h"

namespace {

class ClientRegistryTest : public TvTest {
protected:
    void add(int id, const char* sender) {
        registry.AddClient(static_cast<unsigned>(id), connection, sender, "/path", "a.b");
    }

    /// What out-of-range failure an index brings about; "" for none.
    std::string failureAt(int index) {
        try {
            registry.GetClientByIndex(index);
        } catch (const std::out_of_range& failure) {
            return failure.what();
        }
        return "";
    }

    std::vector<int> ids() {
        std::vector<int> all;
        for (int i = 0; i < registry.GetClientCount(); ++i) {
            all.push_back(registry.GetClientByIndex(i)->GetClientId());
        }
        return all;
    }

    Texts story() { return tv.journal().story(mark); }
    void forget() { mark = tv.journal().mark(); }

    /// Only handed through.
    GDBusConnection* connection = reinterpret_cast<GDBusConnection*>(this);
    CMMDeviceClientMgr registry;
    std::size_t mark = 0;
};

TEST_F(ClientRegistryTest, ABlankClientHasIdMinus1AndNothingElse) {
    const CMMDeviceClient client;
    EXPECT_EQ(client.GetClientId(), -1);
    EXPECT_EQ(client.GetDBusConnection(), nullptr);
    EXPECT_EQ(client.GetSender(), "");
    EXPECT_EQ(client.GetObjectPath(), "");
    EXPECT_EQ(client.GetInterfaceName(), "");
}

TEST_F(ClientRegistryTest, AClientKeepsWhatItIsCreatedWithAndSetTo) {
    CMMDeviceClient client;
    EXPECT_TRUE(client.Create(7, connection, ":1.7", "/path", "a.b"));
    EXPECT_EQ(client.GetClientId(), 7);
    EXPECT_EQ(client.GetDBusConnection(), connection);
    EXPECT_EQ(client.GetSender(), ":1.7");
    EXPECT_EQ(client.GetObjectPath(), "/path");
    EXPECT_EQ(client.GetInterfaceName(), "a.b");
    client.SetClientId(8);
    client.SetDBusConnection(nullptr);
    client.SetSender(":1.8");
    client.SetObjectPath("/other");
    client.SetInterfaceName("c.d");
    EXPECT_EQ(client.GetClientId(), 8);
    EXPECT_EQ(client.GetDBusConnection(), nullptr);
    EXPECT_EQ(client.GetSender(), ":1.8");
    EXPECT_EQ(client.GetObjectPath(), "/other");
    EXPECT_EQ(client.GetInterfaceName(), "c.d");
}

TEST_F(ClientRegistryTest, ClientsStandInTheOrderOfTheirFirstRegistration) {
    EXPECT_EQ(registry.GetClientCount(), 0);
    add(3, ":1.3");
    add(1, ":1.1");
    add(2, ":1.2");
    add(3, ":1.3");
    EXPECT_EQ(ids(), (std::vector<int>{3, 1, 2}));
    CMMDeviceClient* client = registry.GetClient(1);
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(client->GetDBusConnection(), connection);
    EXPECT_EQ(client->GetSender(), ":1.1");
    EXPECT_EQ(client->GetObjectPath(), "/path");
    EXPECT_EQ(client->GetInterfaceName(), "a.b");
}

TEST_F(ClientRegistryTest, RegisteringANewIdIsLogged) {
    add(7, ":1.7");
    EXPECT_EQ(story(), (Texts{"I nHandleId:7 vec_size=0", "I nClientId:7 m_pRequester.size:0",
                              "I Not find requester , new it"}));
    forget();
    add(7, ":1.7");
    EXPECT_EQ(story(), (Texts{"I nHandleId:7 vec_size=1", "I nClientId:7 m_pRequester.size:1"}));
}

TEST_F(ClientRegistryTest, TheLastCallerOfAnIdTakesItOverInPlace) {
    add(1, ":1.1");
    add(2, ":1.2");
    CMMDeviceClient* before = registry.GetClient(1);
    registry.AddClient(1, nullptr, ":1.99", "/new", "x.y");
    EXPECT_EQ(registry.GetClientCount(), 2);
    CMMDeviceClient* client = registry.GetClientByIndex(0);
    EXPECT_EQ(client, before);
    EXPECT_EQ(client->GetClientId(), 1);
    EXPECT_EQ(client->GetDBusConnection(), nullptr);
    EXPECT_EQ(client->GetSender(), ":1.99");
    EXPECT_EQ(client->GetObjectPath(), "/new");
    EXPECT_EQ(client->GetInterfaceName(), "x.y");
}

TEST_F(ClientRegistryTest, AnyIdOf32BitsIsTakenMinus1Included) {
    for (const int id : {-1, 0, 2147483647, -2147483647 - 1}) {
        add(id, ":1.1");
        ASSERT_NE(registry.GetClient(id), nullptr) << id;
        EXPECT_EQ(registry.GetClient(id)->GetClientId(), id);
    }
    EXPECT_EQ(registry.GetClientCount(), 4);
    EXPECT_TRUE(tv.journal().logged(4, "nHandleId:-1 vec_size=0"));
}

TEST_F(ClientRegistryTest, ThereIsNoLimit) {
    for (int id = 0; id < 1000; ++id) {
        add(id, ":1.1");
    }
    EXPECT_EQ(registry.GetClientCount(), 1000);
}

TEST_F(ClientRegistryTest, NullTextsCountAsEmpty) {
    registry.AddClient(1, connection, nullptr, nullptr, nullptr);
    CMMDeviceClient* client = registry.GetClient(1);
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(client->GetSender() + client->GetObjectPath() + client->GetInterfaceName(), "");
}

TEST_F(ClientRegistryTest, ADeletedClientIsGoneAndTheOthersKeepTheirOrder) {
    add(1, ":1.1");
    add(2, ":1.2");
    add(3, ":1.3");
    forget();
    registry.DeleteClient(2);
    EXPECT_EQ(story(), Texts{"I nClientId:2  m_pRequester.size:3"});
    EXPECT_EQ(ids(), (std::vector<int>{1, 3}));
    EXPECT_EQ(registry.GetClient(2), nullptr);
    add(2, ":1.2");
    EXPECT_EQ(ids(), (std::vector<int>{1, 3, 2}));
}

TEST_F(ClientRegistryTest, DeletingAnUnknownIdChangesNothing) {
    registry.DeleteClient(1);
    add(1, ":1.1");
    forget();
    registry.DeleteClient(2);
    registry.DeleteClient(-1);
    EXPECT_EQ(ids(), std::vector<int>{1});
    EXPECT_EQ(story(),
              (Texts{"I nClientId:2  m_pRequester.size:1", "I nClientId:-1  m_pRequester.size:1"}));
}

TEST_F(ClientRegistryTest, AnUnknownIdGivesNoClient) {
    add(1, ":1.1");
    forget();
    EXPECT_EQ(registry.GetClient(2), nullptr);
    EXPECT_EQ(story(), Texts{"I nClientId:2 m_pRequester.size:1"});
}

TEST_F(ClientRegistryTest, GetClientByIndexOfTheCountFailsOutOfRangeAndOfTheCountPlus1IsNull) {
    EXPECT_EQ(failureAt(0),
              "vector::_M_range_check: __n (which is 0) >= this->size() (which is 0)");
    EXPECT_EQ(registry.GetClientByIndex(1), nullptr);
    add(1, ":1.1");
    add(2, ":1.2");
    EXPECT_EQ(registry.GetClientByIndex(1)->GetClientId(), 2);
    EXPECT_EQ(failureAt(2),
              "vector::_M_range_check: __n (which is 2) >= this->size() (which is 2)");
    EXPECT_EQ(registry.GetClientByIndex(3), nullptr);
    EXPECT_EQ(registry.GetClientByIndex(2147483647), nullptr);
}

TEST_F(ClientRegistryTest, GetClientByIndexOfANegativeIndexFailsOutOfRange) {
    add(1, ":1.1");
    EXPECT_NE(failureAt(-1), "");
    EXPECT_NE(failureAt(-2147483647 - 1), "");
}

TEST_F(ClientRegistryTest, TheEndOfTheRegistryEndsEveryClient) {
    auto doomed = std::make_unique<CMMDeviceClientMgr>();
    doomed->AddClient(1, connection, ":1.1", "/path", "a.b");
    doomed->AddClient(2, connection, ":1.2", "/path", "a.b");
    forget();
    doomed.reset();
    EXPECT_EQ(story(), Texts{"I m_pRequester.size:2"});
}

}  // namespace
