// The usage-log reporter: its one instance, its logger, and which event is sent as which kind.
#include "MMLogger.h"
#include "TvTest.h"

namespace {

class UsageLogTest : public TvTest {
protected:
    void TearDown() override {
        CMMLogService::Get()->Destroy();
        TvTest::TearDown();
    }

    static void report(int type, const std::string& text) {
        CMMLogService::Get()->OnSelectUSBCommand(static_cast<USB_LOG_TYPE>(type), text);
    }
};

TEST_F(UsageLogTest, TheFirstUseMakesALoggerForApplicationType3AndLaterOnesShareIt) {
    CMMLogService* first = CMMLogService::Get();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(tv.small().usageAppType, 3);
    EXPECT_EQ(CMMLogService::Get(), first);
    EXPECT_EQ(tv.journal().story(), (Texts{"CKPILogService::CKPILogService()",
                                           "CKPILogService::SetKPILogServiceconfInfo(3)"}));
}

TEST_F(UsageLogTest, Types1To9AreSentAsTheKind28HigherWithTheTextAndTwoEmptyOnes) {
    for (int type = 1; type <= 9; ++type) {
        report(type, "detail " + std::to_string(type));
    }
    ASSERT_EQ(tv.small().usage.size(), 9U);
    for (int type = 1; type <= 9; ++type) {
        const simulated::UsageRecord& sent = tv.small().usage[static_cast<std::size_t>(type - 1)];
        EXPECT_EQ(sent.type, type + 28);
        EXPECT_EQ(sent.first, "detail " + std::to_string(type));
        EXPECT_EQ(sent.second, "");
        EXPECT_EQ(sent.third, "");
    }
}

TEST_F(UsageLogTest, Type4WithAnEmptyTextIsSentAsKind32WithThreeEmptyTexts) {
    report(4, "");
    ASSERT_EQ(tv.small().usage.size(), 1U);
    const simulated::UsageRecord& sent = tv.small().usage[0];
    EXPECT_EQ(sent.type, 32);
    EXPECT_EQ(sent.first + sent.second + sent.third, "");
}

TEST_F(UsageLogTest, Type0AndType10SendNothing) {
    for (const int type : {0, 10, -1, 29, 2147483647, -2147483647 - 1}) {
        report(type, "never sent");
    }
    EXPECT_TRUE(tv.small().usage.empty());
    EXPECT_EQ(tv.journal().log(0, 5).size(), 0U);
}

TEST_F(UsageLogTest, WithoutALoggerAReportOnlyWarns) {
    CMMLogService bare;
    bare.OnSelectUSBCommand(USB_LOG_TIMED_OUT, "");
    EXPECT_TRUE(tv.small().usage.empty());
    EXPECT_EQ(tv.journal().story(), (Texts{"W logger has not been create successfully"}));
}

TEST_F(UsageLogTest, DestroyEndsTheInstanceAndTheNextUseMakesANewLogger) {
    CMMLogService::Get()->Destroy();
    tv.small().usageAppType = 0;
    report(1, "after");
    EXPECT_EQ(tv.small().usageAppType, 3);
    ASSERT_EQ(tv.small().usage.size(), 1U);
    EXPECT_EQ(tv.small().usage[0].first, "after");
}

TEST_F(UsageLogTest, DestroyOfAnInstanceThatIsNotTheOneEndsTheOneToo) {
    CMMLogService::Get();
    CMMLogService other;
    other.Create();
    other.Destroy();
    tv.small().usageAppType = 0;
    CMMLogService::Get();
    EXPECT_EQ(tv.small().usageAppType, 3);
}

}  // namespace
