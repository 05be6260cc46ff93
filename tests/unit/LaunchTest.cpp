// Launching a player for the scanned file, with its play list, and what holds for every launch: the one
// launch handle. The content browser and the companion application have files of their own.
#include "PopupTest.h"
#include "Surroundings.h"

namespace {

using simulated::DeviceId;
using simulated::Fault;

class LaunchTest : public PopupTest {
protected:
    LaunchTest() {
        folder = stickFolder();
        stick = plug(folder);
    }
    void scanned(const std::string& json) {
        reportScan(json);
        forget();
    }
    const simulated::Launch& launch() {
        const auto& launches = tv.applications().launches();
        return launches.at(launches.size() - 1);
    }

    const TimeZone zone{"UTC0"};
    std::string folder;
    DeviceId stick = 0;
};

const char* const PHOTO = R"({"MEDIA_TYPE":2,"DISPLAY_NAME":"sea.jpg","FILE_PATH":"/mnt/sea.jpg",)"
                          R"("SIZE":3145728,"MODIFIED_TIME":86400})";
const char* const VIDEO = R"({"MEDIA_TYPE":3,"DISPLAY_NAME":"clip.mkv",)"
                          R"("FILE_PATH":"/mnt/clip.mkv","MODIFIED_TIME":172800})";
const char* const MUSIC = R"({"MEDIA_TYPE":5,"DISPLAY_NAME":"song.mp3",)"
                          R"("FILE_PATH":"/mnt/song.mp3","TITLE":"a title","ARTIST":"an artist",)"
                          R"("ALBUM":"an album"})";

// ---- the play list

class PlayListTest : public LaunchTest {
protected:
    PlayListTest() : parser(json_parser_new()) {}
    ~PlayListTest() override { g_object_unref(parser); }

    /// The members of the play list in their order, except the items.
    Texts head() {
        object = objectIn(parser, access.launchString());
        if (object == nullptr) {
            return {"no JSON object"};
        }
        Texts lines = members(object);
        EXPECT_EQ(lines.back().compare(0, 6, "items="), 0) << lines.back();
        lines.pop_back();
        return lines;
    }
    /// The members of the only item, after head().
    Texts item() {
        JsonArray* items = json_object_get_array_member(object, "items");
        EXPECT_EQ(json_array_get_length(items), 1U);
        return members(json_array_get_object_element(items, 0));
    }
    std::string rootPath() { return "root_path=" + quotedJson(folder); }

    JsonParser* parser;
    JsonObject* object = nullptr;
};

TEST_F(PlayListTest, OfAVideoHasItsMembersInTheirOrder) {
    scanned(VIDEO);
    EXPECT_EQ(head(),
              (Texts{rootPath(), R"(app_id="org.norvane.lumet")", "play_index=0",
                     "function_trickplay=true", "function_pause=true", "function_rotate=true",
                     "function_scenesearch=true", "function_repeat=true"}));
    EXPECT_EQ(item(),
              (Texts{R"(file_name="clip.mkv")", R"(file_format="MKV")", R"(file_date="1970-01-03")",
                     R"(file_location="USB")", R"(file_path="/mnt/clip.mkv")",
                     R"(subtitle_path="")", R"(thumbnail_path="")"}));
}

TEST_F(PlayListTest, OfAPhotoHasItsMembersInTheirOrder) {
    scanned(PHOTO);
    EXPECT_EQ(head(), (Texts{rootPath(), R"(app_id="org.norvane.lumet")", "play_index=0",
                             "need_slideshow=false"}));
    EXPECT_EQ(item(),
              (Texts{R"(file_name="sea.jpg")", R"(file_date="1970-01-02")", R"(file_size="3.00MB")",
                     R"(file_location="USB")", R"(file_path="/mnt/sea.jpg")"}));
}

TEST_F(PlayListTest, OfAVideoWithoutADotHasTheWholeNameAsItsFormat) {
    scanned(videoJson("readme"));
    head();
    EXPECT_EQ(item().at(1), R"(file_format="README")");
}

TEST_F(PlayListTest, OfMusicAndOfAnythingElseIsEmptyAndLogsNothing) {
    for (const char* json : {MUSIC, R"({"MEDIA_TYPE":9})"}) {
        scanned(json);
        EXPECT_EQ(access.launchString(), "");
        EXPECT_EQ(tv.journal().story(mark), Texts{});
    }
}

TEST_F(PlayListTest, TellsItsStory) {
    scanned(VIDEO);
    const std::string text = access.launchString();
    EXPECT_EQ(without(tv.journal().story(mark), jsonWrapperLines()),
              (Texts{"I begin to scan device - " + folder, "I strLaunchString = " + text}));
}

TEST_F(PlayListTest, OfAVideoWhoseStickWasPulledHasNoRootPath) {
    scanned(VIDEO);
    pull(stick);
    forget();
    EXPECT_EQ(head().front(), R"(app_id="org.norvane.lumet")");
    EXPECT_EQ(item().size(), 7U);
    EXPECT_TRUE(logged(5, "NULL == m_pDeviceInfo"));
    EXPECT_FALSE(logged(5, "NULL == pNode"));
}

TEST_F(PlayListTest, OfAPhotoWhoseStickWasPulledHasNoRootPath) {
    scanned(PHOTO);
    pull(stick);
    forget();
    EXPECT_EQ(head(),
              (Texts{R"(app_id="org.norvane.lumet")", "play_index=0", "need_slideshow=false"}));
    EXPECT_EQ(item().size(), 5U);
    EXPECT_TRUE(logged(5, "NULL == pNode"));
    EXPECT_FALSE(logged(5, "NULL == m_pDeviceInfo"));
}

TEST_F(PlayListTest, HoldsQuotesAndControlsAsJson) {
    const std::string name = "a\"b\\c\n\x01\x1f%s%n.mkv";
    scanned(R"({"MEDIA_TYPE":3,"DISPLAY_NAME":"a\"b\\c\n\u0001\u001f%s%n.mkv",)"
            R"("FILE_PATH":"/mnt/\u001f"})");
    ASSERT_EQ(access.scanFile().strFileName, name);
    head();
    EXPECT_EQ(item().at(0), "file_name=" + quotedJson("a\"b\\c\n\x01\xef\xbf\xbd%s%n.mkv"));
    EXPECT_EQ(item().at(4), "file_path=" + quotedJson("/mnt/\xef\xbf\xbd"));
}

TEST_F(PlayListTest, OfAMountPathThatIsNoUtf8IsValid) {
    pull(stick);
    plug(temp.folder("\xff"));
    scanned(VIDEO);
    const std::string text = access.launchString();
    EXPECT_TRUE(g_utf8_validate(text.c_str(), -1, nullptr));
    EXPECT_NE(text.find(temp.path() + "/\xef\xbf\xbd"), std::string::npos);
}

// ---- players

TEST_F(LaunchTest, OfAVideoHandsThePlayListToTheVideoPlayer) {
    scanned(VIDEO);
    access.launchPlayer();
    const std::string list = launch().extraData.at("play_list_data");
    EXPECT_EQ(without(tv.journal().story(mark), jsonWrapperLines()),
              joined({{"I enter m_LaunchPlayer, type=2", "I begin to scan device - " + folder,
                       "I strLaunchString = " + list, "I launch player: strLaunchString = " + list},
                      launchCalls({{"play_list_data", list}}, "org.norvane.vidreel"),
                      {"I launch player=org.norvane.vidreel"}}));
    EXPECT_EQ(list, access.launchString());
    EXPECT_EQ(launch().appId, "org.norvane.vidreel");
}

TEST_F(LaunchTest, OfAPhotoHandsThePlayListToThePhotoPlayer) {
    scanned(PHOTO);
    access.launchPlayer();
    const std::string list = launch().extraData.at("play_list_data");
    EXPECT_EQ(without(tv.journal().story(mark), jsonWrapperLines()),
              joined({{"I enter m_LaunchPlayer, type=1", "I begin to scan device - " + folder,
                       "I strLaunchString = " + list, "I launch player: strLaunchString = " + list},
                      launchCalls({{"play_list_data", list}}, "org.norvane.picreel"),
                      {"I launch player=org.norvane.picreel"}}));
    EXPECT_EQ(list, access.launchString());
}

TEST_F(LaunchTest, OfMusicHandsTheTagsToTheContentBrowser) {
    scanned(MUSIC);
    access.launchPlayer();
    EXPECT_EQ(calls(), launchCalls({{"file_name", "song.mp3"},
                                    {"music_url", "/mnt/song.mp3"},
                                    {"music_title", "a title"},
                                    {"music_artist", "an artist"},
                                    {"music_album", "an album"},
                                    {"called_app", "org.norvane.lumet"}},
                                   "org.quillon.folian"));
    EXPECT_EQ(messages(), (Texts{"enter m_LaunchPlayer, type=3",
                                 "launch player: file_name = song.mp3 file_path=/mnt/song.mp3",
                                 "launch player=org.quillon.folian"}));
}

TEST_F(LaunchTest, OfAnythingElseSendsTheRequestWithAnEmptyIdAndNothingMore) {
    scanned(R"({"MEDIA_TYPE":9,"DISPLAY_NAME":"a.txt"})");
    access.launchPlayer();
    EXPECT_EQ(
        tv.journal().story(mark),
        joined({{"I enter m_LaunchPlayer, type=0"}, launchCalls({}, ""), {"I launch player="}}));
    EXPECT_EQ(launch().appId, "");
}

TEST_F(LaunchTest, PlayAfterTheStickWasPulledLaunchesThePlayerWithoutRootPath) {
    scanned(VIDEO);
    pull(stick);
    tv.screen().sendButton(0, 0);
    tv.settle();
    EXPECT_EQ(launch().appId, "org.norvane.vidreel");
    EXPECT_EQ(launch().extraData.at("play_list_data").find("root_path"), std::string::npos);
}

// ---- the one launch handle

TEST_F(LaunchTest, ExtraDataAccumulateAndALaterValueReplacesTheEarlier) {
    access.launchFolian();
    EXPECT_EQ(launch().extraData.at("called_app"), "org.norvane.lumet");
    scanned(MUSIC);
    access.launchPlayer();
    EXPECT_EQ(launch().extraData.at("music_title"), "a title");
    EXPECT_EQ(launch().extraData.at("device_type"), "USB");
    access.launchLumet(record(stick), 1);
    EXPECT_EQ(launch().extraData.at("called_app"), "portmeld");
    EXPECT_EQ(launch().extraData.at("music_title"), "a title");
    EXPECT_EQ(launch().extraData.at("content_type"), "all");
    scanned(R"({"MEDIA_TYPE":9})");
    access.launchPlayer();
    EXPECT_EQ(launch().appId, "");
    EXPECT_EQ(launch().extraData.at("device_action"), "ADD");
    EXPECT_EQ(tv.journal().count("app_control_create"), 1U);
}

class RefusedLaunchTest : public LaunchTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(RefusedLaunchTest, IsNotNoticedAndNothingIsRetried) {
    scanned(MUSIC);
    tv.journal().order(GetParam(), Fault::Fails);
    access.launchPlayer();
    EXPECT_EQ(tv.journal().count("app_control_add_extra_data", mark), 6U);
    EXPECT_EQ(tv.journal().count("app_control_set_app_id", mark), 1U);
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", mark), 1U);
    EXPECT_EQ(messages().back(), "launch player=org.quillon.folian");
}

INSTANTIATE_TEST_SUITE_P(ByEachCall,
                         RefusedLaunchTest,
                         ::testing::Values("app_control_add_extra_data",
                                           "app_control_set_app_id",
                                           "app_control_send_launch_request"));

TEST_F(StartingManagerTest, ALaunchBeforeTheLaunchHandleExistsStillMakesItsCalls) {
    mgr->SetActivated(true);
    CMMDeviceInfo device;
    const std::size_t mark = tv.journal().mark();
    access.launchPlayer();
    access.launchLumet(&device, 1);
    EXPECT_EQ(tv.journal().count("app_control_create"), 0U);
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", mark), 2U);
    EXPECT_EQ(tv.journal().count("app_control_add_extra_data", mark), 10U);
    EXPECT_TRUE(tv.journal().logged(4, "launch player=", mark));
    EXPECT_TRUE(tv.journal().logged(4, "ADD launch org.norvane.lumet", mark));
    EXPECT_TRUE(tv.applications().launches().empty());
}

}  // namespace
