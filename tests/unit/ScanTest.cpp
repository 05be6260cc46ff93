// The result of a content scan: what is kept of it, and the pop-up that follows. How sizes, dates and
// extensions are written has a file of its own.
#include <filesystem>
#include <fstream>

#include "PopupTest.h"
#include "Surroundings.h"

namespace {

using simulated::DeviceId;

class ScanTest : public PopupTest {
protected:
    ScanTest() {
        stick = plug();
        tv.screen().clearHistory();
        forget();
    }
    void report(int event, const char* json) {
        tv.scanner().report(event, json);
        tv.settle();
    }
    const _stScanFileData& file() { return access.scanFile(); }
    /// Everything that is kept, in the order of the record.
    Texts kept() {
        return {std::to_string(file().nType),
                file().strFileName,
                file().strFilePath,
                file().strTitle,
                file().strArtist,
                file().strAlbum,
                file().strDate,
                file().strSize,
                file().strSpare,
                file().strFormat};
    }
    const TimeZone zone{"UTC0"};
    DeviceId stick = 0;
};

const char* const PHOTO =
    R"({"MEDIA_TYPE":2,"DISPLAY_NAME":"sea.jpg","FILE_PATH":"/mnt/sea.jpg","SIZE":1536,)"
    R"("MODIFIED_TIME":86400,"TITLE":"no","ARTIST":"no","ALBUM":"no"})";
const char* const VIDEO =
    R"({"MEDIA_TYPE":3,"DISPLAY_NAME":"clip.mkv","FILE_PATH":"/mnt/clip.mkv","SIZE":1536,)"
    R"("MODIFIED_TIME":172800,"TITLE":"no","ARTIST":"no","ALBUM":"no"})";
const char* const MUSIC =
    R"({"MEDIA_TYPE":5,"DISPLAY_NAME":"song.mp3","FILE_PATH":"/mnt/song.mp3","SIZE":1536,)"
    R"("MODIFIED_TIME":259200,"TITLE":"a title","ARTIST":"an artist","ALBUM":"an album"})";

// ---- what is kept

TEST_F(ScanTest, OfAPhotoKeepsNamePathSizeAndDate) {
    report(25, PHOTO);
    EXPECT_EQ(kept(),
              (Texts{"1", "sea.jpg", "/mnt/sea.jpg", "", "", "", "1970-01-02", "1.50KB", "", ""}));
}

TEST_F(ScanTest, OfAVideoKeepsNamePathDateAndFormat) {
    report(25, VIDEO);
    EXPECT_EQ(kept(),
              (Texts{"2", "clip.mkv", "/mnt/clip.mkv", "", "", "", "1970-01-03", "", "", "MKV"}));
}

TEST_F(ScanTest, OfMusicKeepsNamePathTitleArtistAndAlbum) {
    report(25, MUSIC);
    EXPECT_EQ(kept(), (Texts{"3", "song.mp3", "/mnt/song.mp3", "a title", "an artist", "an album",
                             "", "", "", ""}));
}

TEST_F(ScanTest, KeepsEarlierValuesWhereItHasNone) {
    report(25, MUSIC);
    report(25, PHOTO);
    report(25, VIDEO);
    EXPECT_EQ(kept(), (Texts{"2", "clip.mkv", "/mnt/clip.mkv", "a title", "an artist", "an album",
                             "1970-01-03", "1.50KB", "", "MKV"}));
    report(25, R"({"MEDIA_TYPE":5,"ARTIST":"another"})");
    EXPECT_EQ(kept(), (Texts{"3", "clip.mkv", "/mnt/clip.mkv", "a title", "another", "an album",
                             "1970-01-03", "1.50KB", "", "MKV"}));
}

TEST_F(ScanTest, OfAVideoWithoutANameTakesTheFormatOfTheEarlierName) {
    report(25, R"({"MEDIA_TYPE":2,"DISPLAY_NAME":"sea.jpg"})");
    report(25, R"({"MEDIA_TYPE":3})");
    EXPECT_EQ(file().strFormat, "JPG");
}

TEST_F(ScanTest, WithoutSizeAndTimeCountsBothAs0) {
    report(25, PHOTO);
    report(25, R"({"MEDIA_TYPE":2})");
    EXPECT_EQ(file().strSize, "0.00KB");
    EXPECT_EQ(file().strDate, "1970-01-01");
    report(25, VIDEO);
    report(25, R"({"MEDIA_TYPE":3})");
    EXPECT_EQ(file().strDate, "1970-01-01");
}

TEST_F(ScanTest, CutsSizeAndTimeTo32Bits) {
    report(25, R"({"MEDIA_TYPE":2,"SIZE":4294968832,"MODIFIED_TIME":4295053696})");
    EXPECT_EQ(file().strSize, "1.50KB");
    EXPECT_EQ(file().strDate, "1970-01-02");
    report(25, R"({"MEDIA_TYPE":3,"MODIFIED_TIME":2147483648})");
    EXPECT_EQ(file().strDate, "1901-12-13");
}

TEST_F(ScanTest, TakesATextThatIsNoneForEmpty) {
    report(25, VIDEO);
    report(25, R"({"MEDIA_TYPE":3,"DISPLAY_NAME":null,"FILE_PATH":17})");
    EXPECT_EQ(file().strFileName, "");
    EXPECT_EQ(file().strFilePath, "");
}

class UnknownMediaTest : public ScanTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(UnknownMediaTest, StillShowsThePlayPopUpAndPlaySendsALaunchWithAnEmptyId) {
    report(25, GetParam());
    EXPECT_EQ(file().nType, 0);
    ASSERT_EQ(shown(), Texts{"0 TV_SID_MIX_NEW_DEVICE_CONNECTED"});
    forget();
    press(0);
    EXPECT_EQ(without(calls(), {"CKPILogService"}), launchCalls({}, ""));
    EXPECT_TRUE(logged(4, "enter m_LaunchPlayer, type=0"));
    EXPECT_TRUE(logged(4, "launch player="));
}

INSTANTIATE_TEST_SUITE_P(OfAnyKind,
                         UnknownMediaTest,
                         ::testing::Values(R"({"MEDIA_TYPE":0,"DISPLAY_NAME":"a"})",
                                           R"({"MEDIA_TYPE":1})",
                                           R"({"MEDIA_TYPE":4})",
                                           R"({"MEDIA_TYPE":6})",
                                           R"({"MEDIA_TYPE":-1})",
                                           R"({"DISPLAY_NAME":"no type"})",
                                           R"({"MEDIA_TYPE":"video"})",
                                           R"({"MEDIA_TYPE":null})",
                                           R"({"MEDIA_TYPE":[3]})",
                                           "{}"));

class BadJsonTest : public ScanTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(BadJsonTest, IsAnUnknownFileAndKeepsTheEarlierTexts) {
    report(25, VIDEO);
    report(25, GetParam());
    EXPECT_EQ(file().nType, 0);
    EXPECT_EQ(file().strFileName, "clip.mkv");
    EXPECT_EQ(file().strFilePath, "/mnt/clip.mkv");
    EXPECT_EQ(shownCount(), 2U);
    EXPECT_EQ(access.notificationType(), 0);
}

INSTANTIATE_TEST_SUITE_P(OfAnyKind,
                         BadJsonTest,
                         ::testing::Values("",
                                           "no json",
                                           "{",
                                           "[3]",
                                           "7",
                                           "\"text\"",
                                           "null",
                                           R"({"MEDIA_TYPE":3)",
                                           "{\"MEDIA_TYPE\":3}\xff"));

TEST_F(ScanTest, WithoutATextIsAnUnknownFile) {
    report(25, VIDEO);
    forget();
    report(25, nullptr);
    EXPECT_EQ(file().nType, 0);
    EXPECT_EQ(file().strFileName, "clip.mkv");
    EXPECT_EQ(shownCount(), 2U);
    EXPECT_TRUE(logged(4, "m_OnScanDeviceCB begin: event=25, json = (null)"));
    EXPECT_TRUE(logged(4, "event=25 m_eNotifactiontype=0, json = (null)"));
}

TEST_F(ScanTest, NestedTooDeepIsAnUnknownFile) {
    std::string deep = R"({"MEDIA_TYPE":3,"x":)";
    for (const char bracket : {'[', ']'}) {
        deep += std::string(100000, bracket);
    }
    report(25, (deep + "}").c_str());
    EXPECT_EQ(file().nType, 0);
    EXPECT_EQ(shownCount(), 1U);
}

// ---- the story

TEST_F(ScanTest, TellsItsStory) {
    report(25, VIDEO);
    const Texts story =
        without(without(tv.journal().story(mark), jsonWrapperLines()), {"dgettext"});
    EXPECT_EQ(story,
              joined({{std::string("I m_OnScanDeviceCB begin: event=25, json = ") + VIDEO,
                       "I single media"},
                      contextCalls(),
                      {"I distraction_free MODE : 0", "I distraction_free MODE : 0",
                       "W Distraction Free Mode disabled", isRunningCall("org.norvane.lumet"),
                       "I bRunning=[0]", usageCall(29), "I file name:clip.mkv",
                       "I m_LaunchAddNotification nItemType = 0", "add_notification_data(0)",
                       "I end", "I strFileName=clip.mkv strFilePath=/mnt/clip.mkv",
                       std::string("I event=25 m_eNotifactiontype=0, json = ") + VIDEO}}));
}

TEST_F(ScanTest, ReadsItsMembersInTheirOrder) {
    const auto keysRead = [this](const char* json) {
        forget();
        report(25, json);
        Texts keys;
        for (const std::string& line : messages()) {
            if (line.compare(0, 5, "key :") == 0) {
                keys.push_back(line.substr(5, line.find(',') - 5));
            }
        }
        return keys;
    };
    EXPECT_EQ(keysRead(PHOTO),
              (Texts{"MEDIA_TYPE", "DISPLAY_NAME", "FILE_PATH", "SIZE", "MODIFIED_TIME"}));
    EXPECT_EQ(keysRead(VIDEO), (Texts{"MEDIA_TYPE", "DISPLAY_NAME", "FILE_PATH", "MODIFIED_TIME"}));
    EXPECT_EQ(keysRead(MUSIC),
              (Texts{"MEDIA_TYPE", "DISPLAY_NAME", "FILE_PATH", "TITLE", "ARTIST", "ALBUM"}));
    EXPECT_EQ(keysRead("{}"), (Texts{"MEDIA_TYPE", "DISPLAY_NAME", "FILE_PATH"}));
}

// ---- other events, missing user data

class OtherEventTest : public ScanTest, public ::testing::WithParamInterface<int> {};

TEST_P(OtherEventTest, ChangesNothing) {
    report(GetParam(), VIDEO);
    EXPECT_EQ(tv.journal().story(mark), Texts{"I m_OnScanDeviceCB begin: event=" +
                                              std::to_string(GetParam()) + ", json = " + VIDEO});
    EXPECT_EQ(kept(), (Texts{"0", "", "", "", "", "", "", "", "", ""}));
    EXPECT_EQ(access.notificationType(), 1);
    EXPECT_EQ(shownCount(), 0U);
}

TEST_P(OtherEventTest, MayComeWithoutAText) {
    report(GetParam(), nullptr);
    EXPECT_EQ(messages(), Texts{"m_OnScanDeviceCB begin: event=" + std::to_string(GetParam()) +
                                ", json = (null)"});
}

INSTANTIATE_TEST_SUITE_P(Than25, OtherEventTest, ::testing::Values(0, 1, 24, 26, 99, -1));

TEST_F(ScanTest, WithoutUserDataIsAWarningAndFalse) {
    tv.scanner().reportWithoutUser(25, VIDEO);
    tv.settle();
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{std::string("I m_OnScanDeviceCB begin: event=25, json = ") + VIDEO,
                     "W NULL == pThis"}));
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_FALSE(CMMDeviceMgrTestAccess::scan(nullptr));
}

// ---- when

TEST_F(ScanTest, OfASingleMediaFileReturnsTrue) {
    EXPECT_TRUE(CMMDeviceMgrTestAccess::scan(mgr));
    EXPECT_EQ(shownCount(), 1U);
}

TEST_F(ScanTest, AfterThePullReturnsTrueWithoutAPopUp) {
    pull(stick);
    tv.screen().clearHistory();
    forget();
    EXPECT_TRUE(CMMDeviceMgrTestAccess::scan(mgr));
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(logged(5, "m_pDeviceInfo = NULL"));
    EXPECT_TRUE(logged(4, "event=25 m_eNotifactiontype=0, json = {}"));
}

TEST_F(ScanTest, ShowsItsPopUpToAServiceThatIsNotActivated) {
    mgr->SetActivated(false);
    report(25, VIDEO);
    EXPECT_EQ(shownCount(), 1U);
}

TEST_F(ScanTest, MakesTheNextConnectionABrowsePopUpAgain) {
    report(25, VIDEO);
    ASSERT_EQ(access.notificationType(), 0);
    plugProduct("Second", "2");
    EXPECT_EQ(access.notificationType(), 1);
    EXPECT_EQ(last().itemType, 1);
}

TEST_F(PopupTest, AStickWithOneVideoIsScannedAndOfferedToBePlayed) {
    const std::string folder = stickFolder();
    std::filesystem::create_directories(folder + "/films");
    std::ofstream(folder + "/films/one.mkv") << "film";
    plug(folder);
    EXPECT_EQ(tv.scanner().started(), Texts{folder});
    ASSERT_EQ(shown(),
              (Texts{"1 TV_SID_MIX_NEW_DEVICE_CONNECTED", "0 TV_SID_MIX_NEW_DEVICE_CONNECTED"}));
    EXPECT_EQ(access.scanFile().strFileName, "one.mkv");
    EXPECT_EQ(access.scanFile().strFilePath, folder + "/films/one.mkv");
    EXPECT_EQ(access.scanFile().strFormat, "MKV");
}

}  // namespace
