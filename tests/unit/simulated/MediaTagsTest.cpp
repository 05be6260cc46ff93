// Tags of music files, from files that are written here byte by byte, and the report that is made of
// them.
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <json-glib/json-glib.h>

#include "MediaTags.h"
#include "Observations.h"
#include "ScanReport.h"
#include "TvTest.h"

namespace {

using platform::MediaTags;
using platform::MediaType;
using platform::readMediaTags;

std::string bigEndian(std::size_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>((number >> shift) & 0xFF);
    }
    return bytes;
}

/// A text frame of ID3v2.3; the encoding is the first byte of the text: 0 Latin-1, 1 UTF-16.
std::string frame(const std::string& id, const std::string& text) {
    return id + bigEndian(text.size()) + std::string(2, '\0') + text;
}

std::string id3(const std::string& frames) {
    // The length of the tag has seven bits in each byte.
    std::string length;
    for (int shift = 21; shift >= 0; shift -= 7) {
        length += static_cast<char>((frames.size() >> shift) & 0x7F);
    }
    return std::string("ID3\x03\x00\x00", 6) + length + frames;
}

std::string latin(const std::string& text) {
    return std::string(1, '\0') + text;
}

/// A WAV file that names title, artist and album in its list of information.
std::string wav(const std::string& title, const std::string& artist, const std::string& album) {
    const auto chunk = [](const std::string& id, std::string content) {
        std::string length;
        for (int shift = 0; shift < 32; shift += 8) {
            length += static_cast<char>((content.size() >> shift) & 0xFF);
        }
        content += content.size() % 2 != 0 ? std::string(1, '\0') : std::string();
        return id + length + content;
    };
    const std::string format("\x01\0\x01\0\x40\x1f\0\0\x40\x1f\0\0\x01\0\x08\0", 16);
    const std::string info =
        "INFO" + chunk("INAM", title) + chunk("IART", artist) + chunk("IPRD", album);
    return chunk("RIFF", "WAVE" + chunk("fmt ", format) + chunk("LIST", info) +
                             chunk("data", std::string(16, '\x80')));
}

class MediaTagsTest : public ::testing::Test {
protected:
    MediaTags read(const std::string& name, const std::string& bytes) const {
        return readMediaTags(folder.file(name, bytes));
    }
    static void expectNone(const MediaTags& tags) {
        EXPECT_EQ(tags.title, "");
        EXPECT_EQ(tags.artist, "");
        EXPECT_EQ(tags.album, "");
    }

    TempFolder folder;
};

TEST_F(MediaTagsTest, AreReadFromAnMp3File) {
    const MediaTags tags =
        read("a.mp3", id3(frame("TIT2", latin("Song")) + frame("TPE1", latin("Bj\xf6rk")) +
                          frame("TALB", latin("Album"))));
    EXPECT_EQ(tags.title, "Song");
    EXPECT_EQ(tags.artist, "Bj\xc3\xb6rk");
    EXPECT_EQ(tags.album, "Album");
}

TEST_F(MediaTagsTest, AreReadFromUtf16) {
    const std::string text("\x01\xff\xfe\x2c\x67\x9e\x8a", 7);
    EXPECT_EQ(read("a.mp3", id3(frame("TIT2", text))).title, "\xe6\x9c\xac\xe8\xaa\x9e");
}

TEST_F(MediaTagsTest, AreReadFromAWavFile) {
    const MediaTags tags = read("a.wav", wav("Title", "Artist", "Disc"));
    EXPECT_EQ(tags.title, "Title");
    EXPECT_EQ(tags.artist, "Artist");
    EXPECT_EQ(tags.album, "Disc");
}

TEST_F(MediaTagsTest, MayBeMissingOneByOne) {
    const MediaTags tags = read("a.mp3", id3(frame("TPE1", latin("Only"))));
    EXPECT_EQ(tags.title, "");
    EXPECT_EQ(tags.artist, "Only");
}

TEST_F(MediaTagsTest, AreEmptyForAnEmptyAMissingAndAStrangeFile) {
    expectNone(read("empty.mp3", ""));
    expectNone(readMediaTags(folder.path() + "/missing.mp3"));
    expectNone(readMediaTags(folder.path()));
    expectNone(read("a.mid", "MThd"));
    expectNone(read("text.mp3", "this is no music at all"));
}

TEST_F(MediaTagsTest, AreNotWaitedForAtAPipe) {
    const std::string pipe = folder.path() + "/a.mp3";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectNone(readMediaTags(pipe));
}

TEST_F(MediaTagsTest, AreReadUpToTheLargestFileAndNotBeyond) {
    const std::string path = folder.file("a.mp3", id3(frame("TIT2", latin("Song"))));
    std::filesystem::resize_file(path, platform::MEDIA_TAGS_LARGEST_FILE);  // sparse
    EXPECT_EQ(readMediaTags(path).title, "Song");
    std::filesystem::resize_file(path, platform::MEDIA_TAGS_LARGEST_FILE + 1);
    expectNone(readMediaTags(path));
}

TEST_F(MediaTagsTest, AreCutWhenEndless) {
    const MediaTags tags = read("a.mp3", id3(frame("TIT2", latin(std::string(100'000, 'x')))));
    EXPECT_EQ(tags.title, std::string(platform::MEDIA_TAGS_LONGEST_TEXT, 'x'));
}

TEST_F(MediaTagsTest, SurviveEveryWayToCutAFileShort) {
    const std::string whole = id3(frame("TIT2", latin("Song")) + frame("TPE1", latin("Artist")));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const MediaTags tags = read("cut.mp3", whole.substr(0, length));
        EXPECT_EQ(tags.title, std::string("Song").substr(0, tags.title.size())) << length;
    }
    const std::string riff = wav("Title", "Artist", "Disc");
    for (std::size_t length = 0; length < riff.size(); ++length) {
        EXPECT_LE(read("cut.wav", riff.substr(0, length)).title.size(), 5U) << length;
    }
}

TEST_F(MediaTagsTest, AreReadWithoutWritingToTheFile) {
    const std::string path = folder.file("a.mp3", id3(frame("TIT2", latin("Song"))));
    const auto before = std::filesystem::last_write_time(path);
    EXPECT_EQ(readMediaTags(path).title, "Song");
    EXPECT_EQ(std::filesystem::last_write_time(path), before);
}

// ---- the report

Texts reported(const platform::MediaFile& file, const MediaTags& tags) {
    const std::string text = platform::scanReport(file, tags);
    EXPECT_TRUE(g_utf8_validate(text.c_str(), static_cast<gssize>(text.size()), nullptr));
    g_autoptr(JsonParser) parser = json_parser_new();
    JsonObject* object = objectIn(parser, text);
    EXPECT_NE(object, nullptr) << text;
    return object != nullptr ? members(object) : Texts{};
}

TEST(ScanReportTest, OfAPhotoHasSizeAndTime) {
    EXPECT_EQ(reported({"/mnt/a.jpg", MediaType::Photo, 1536, 86'400}, {"t", "a", "b"}),
              (Texts{"MEDIA_TYPE=2", "DISPLAY_NAME=\"a.jpg\"", "FILE_PATH=\"/mnt/a.jpg\"",
                     "SIZE=1536", "MODIFIED_TIME=86400"}));
}

TEST(ScanReportTest, OfAVideoIsOfType3) {
    EXPECT_EQ(reported({"/mnt/v/a.mkv", MediaType::Video, 1, 2}, {}),
              (Texts{"MEDIA_TYPE=3", "DISPLAY_NAME=\"a.mkv\"", "FILE_PATH=\"/mnt/v/a.mkv\"",
                     "SIZE=1", "MODIFIED_TIME=2"}));
}

TEST(ScanReportTest, OfMusicHasTheTags) {
    EXPECT_EQ(reported({"/mnt/a.mp3", MediaType::Music, 1, 2}, {"Song", "", "Album"}),
              (Texts{"MEDIA_TYPE=5", "DISPLAY_NAME=\"a.mp3\"", "FILE_PATH=\"/mnt/a.mp3\"", "SIZE=1",
                     "MODIFIED_TIME=2", "TITLE=\"Song\"", "ARTIST=\"\"", "ALBUM=\"Album\""}));
}

TEST(ScanReportTest, ClipsNumbersTo32Bits) {
    const Texts large =
        reported({"/a.jpg", MediaType::Photo, std::int64_t{1} << 40, std::int64_t{1} << 33}, {});
    EXPECT_EQ(large[3], "SIZE=2147483647");
    EXPECT_EQ(large[4], "MODIFIED_TIME=2147483647");
    const Texts early = reported({"/a.jpg", MediaType::Photo, 0, -(std::int64_t{1} << 33)}, {});
    EXPECT_EQ(early[4], "MODIFIED_TIME=-2147483648");
}

TEST(ScanReportTest, IsValidJsonWhateverTheNames) {
    const Texts hostile = reported({"/m\xff/\"\\\x1f\n\xc3.jpg", MediaType::Music, 1, 2},
                                   {"\xff", std::string("a\0b", 3), "\x1f"});
    EXPECT_EQ(hostile[1], "DISPLAY_NAME=\"\\\"\\\\\xef\xbf\xbd\\n\xef\xbf\xbd.jpg\"");
    EXPECT_EQ(hostile[7], "ALBUM=\"\xef\xbf\xbd\"");
}

}  // namespace
