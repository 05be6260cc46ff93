// Scans of the TV: real folders, results on the main context, and everything that can happen to a scan
// before it has one.
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TvTest.h"

namespace {

class ScannerTest : public TvTest {
protected:
    struct Report {
        void* user;
        CCSFDeviceCheckHandle* handle;
        int event;
        std::optional<std::string> json;
    };
    static bool take(void* user,
                     CCSFDeviceCheckHandle* handle,
                     csf_event_e event,
                     const char* json) {
        reports.push_back({user, handle, event,
                           json != nullptr ? std::optional<std::string>(json) : std::nullopt});
        return true;
    }
    CCSFDeviceCheckHandle* scan(const std::string& folder) {
        CCSFDeviceCheckHandle* handle = nullptr;
        EXPECT_EQ(csf_check_device_v2(folder.c_str(), take, this, &handle), 0);
        EXPECT_NE(handle, nullptr);
        return handle;
    }
    std::string photoStick() {
        const std::string folder = stickFolder();
        temp.file(folder.substr(temp.path().size() + 1) + "/only.jpg");
        return folder;
    }
    void SetUp() override { reports.clear(); }

    static inline std::vector<Report> reports;
};

TEST_F(ScannerTest, ReportsASingleMediaFileLater) {
    const std::string folder = photoStick();
    CCSFDeviceCheckHandle* handle = scan(folder);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(tv.scanner().running(), 1U);
    tv.settle();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].user, this);
    EXPECT_EQ(reports[0].handle, handle);
    EXPECT_EQ(reports[0].event, 25);
    EXPECT_NE(reports[0].json->find(folder + "/only.jpg"), std::string::npos);
    EXPECT_EQ(tv.scanner().running(), 0U);
    EXPECT_FALSE(tv.scanner().walking());
    EXPECT_EQ(tv.scanner().started(), Texts{folder});
    tv.scanner().clearStarted();
    EXPECT_EQ(tv.scanner().started(), Texts{});
}

TEST_F(ScannerTest, ReportsNothingForNoneOrSeveralMediaFiles) {
    const std::string folder = photoStick();
    temp.file(folder.substr(temp.path().size() + 1) + "/second.mp3");
    scan(folder);
    scan(stickFolder());
    scan("/nowhere/at/all");
    tv.settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(tv.scanner().running(), 0U);
}

TEST_F(ScannerTest, ReportsNothingAfterItWasStopped) {
    CCSFDeviceCheckHandle* handle = scan(photoStick());
    EXPECT_EQ(csf_stop_checking_device_v2(handle), 0);
    EXPECT_EQ(tv.scanner().running(), 0U);
    tv.settle();
    EXPECT_TRUE(reports.empty());
}

TEST_F(ScannerTest, CanBeStoppedWithAnyHandleAtAnyTime) {
    CCSFDeviceCheckHandle* handle = scan(photoStick());
    tv.settle();
    EXPECT_EQ(csf_stop_checking_device_v2(handle), 0);
    EXPECT_EQ(csf_stop_checking_device_v2(handle), 0);
    EXPECT_EQ(csf_stop_checking_device_v2(nullptr), 0);
    EXPECT_EQ(reports.size(), 1U);
}

TEST_F(ScannerTest, NeverGivesAHandleOutTwice) {
    CCSFDeviceCheckHandle* stale = scan(photoStick());
    tv.settle();
    CCSFDeviceCheckHandle* fresh = scan(photoStick());
    EXPECT_NE(fresh, stale);
    csf_stop_checking_device_v2(stale);
    tv.settle();
    EXPECT_EQ(reports.size(), 2U) << "a stale handle stops nothing";
}

TEST_F(ScannerTest, HoldsResultsBackUntilTheyAreReleased) {
    tv.scanner().hold();
    scan(photoStick());
    tv.settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(tv.scanner().running(), 1U);
    EXPECT_FALSE(tv.scanner().walking());
    tv.scanner().release();
    EXPECT_TRUE(reports.empty());
    tv.settle();
    EXPECT_EQ(reports.size(), 1U);
    EXPECT_EQ(tv.scanner().running(), 0U);
}

TEST_F(ScannerTest, DropsAHeldResultOfAScanThatIsStoppedEvenAfterItsRelease) {
    tv.scanner().hold();
    CCSFDeviceCheckHandle* first = scan(photoStick());
    CCSFDeviceCheckHandle* second = scan(photoStick());
    tv.settle();
    csf_stop_checking_device_v2(first);
    tv.scanner().release();
    csf_stop_checking_device_v2(second);
    tv.settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(tv.scanner().running(), 0U);
}

TEST_F(ScannerTest, CanReportByHandToTheLatestScanStoppedOrNot) {
    tv.scanner().report(25, "{}");
    tv.settle();
    EXPECT_TRUE(reports.empty()) << "there was none";
    CCSFDeviceCheckHandle* handle = scan(stickFolder());
    csf_stop_checking_device_v2(handle);
    tv.scanner().report(3, nullptr);
    tv.scanner().reportWithoutUser(25, "{}");
    tv.settle();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].event, 3);
    EXPECT_EQ(reports[0].json, std::nullopt);
    EXPECT_EQ(reports[0].user, this);
    EXPECT_EQ(reports[1].user, nullptr);
    EXPECT_EQ(reports[1].json, "{}");
}

TEST_F(ScannerTest, RefusesMissingArgumentsAndLeavesTheHandle) {
    CCSFDeviceCheckHandle* handle = nullptr;
    EXPECT_NE(csf_check_device_v2(nullptr, take, nullptr, &handle), 0);
    EXPECT_NE(csf_check_device_v2("/", nullptr, nullptr, &handle), 0);
    EXPECT_NE(csf_check_device_v2("/", take, nullptr, nullptr), 0);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(tv.scanner().started(), Texts{});
}

TEST_F(ScannerTest, CanStartAndStopScansFromItsOwnReport) {
    static CCSFDeviceCheckHandle* next = nullptr;
    static std::string folder;
    folder = photoStick();
    const auto again = [](void* user, CCSFDeviceCheckHandle* handle, csf_event_e event,
                          const char* json) {
        csf_stop_checking_device_v2(handle);
        csf_check_device_v2(folder.c_str(), take, user, &next);
        return take(user, handle, event, json);
    };
    CCSFDeviceCheckHandle* handle = nullptr;
    ASSERT_EQ(csf_check_device_v2(folder.c_str(), again, nullptr, &handle), 0);
    tv.settle();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1].handle, next);
}

TEST(ScannerEndTest, ATvThatGoesEndsItsScansWithoutAReport) {
    static int reported = 0;
    reported = 0;
    {
        const simulated::SimulatedTv tv;
        for (int i = 0; i < 5; ++i) {
            CCSFDeviceCheckHandle* handle = nullptr;
            csf_check_device_v2(
                "/usr",
                [](void*, CCSFDeviceCheckHandle*, csf_event_e, const char*) {
                    ++reported;
                    return true;
                },
                nullptr, &handle);
        }
    }
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(reported, 0);
}

}  // namespace
