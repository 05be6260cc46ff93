// Kinds of media by name.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "MediaTypes.h"

namespace {

using platform::MediaType;
using platform::mediaTypeOf;

TEST(MediaTypesTest, KnowTheFormatsOfTelevisions) {
    for (const char* name :
         {"a.jpg", "a.jpeg", "a.png", "a.gif", "a.bmp", "a.webp", "a.heic", "a.mpo"}) {
        EXPECT_EQ(mediaTypeOf(name), MediaType::Photo) << name;
    }
    for (const char* name :
         {"a.mp4", "a.mkv", "a.avi", "a.ts", "a.m2ts", "a.mts", "a.tp", "a.trp", "a.mov", "a.wmv",
          "a.asf", "a.flv", "a.divx", "a.mpg", "a.mpeg", "a.vob", "a.3gp", "a.webm"}) {
        EXPECT_EQ(mediaTypeOf(name), MediaType::Video) << name;
    }
    for (const char* name : {"a.mp3", "a.flac", "a.wav", "a.ogg", "a.oga", "a.opus", "a.m4a",
                             "a.aac", "a.wma", "a.aiff", "a.mid"}) {
        EXPECT_EQ(mediaTypeOf(name), MediaType::Music) << name;
    }
}

TEST(MediaTypesTest, DoNotCareForTheCaseOfLettersNorForFolders) {
    EXPECT_EQ(mediaTypeOf("A.JpG"), MediaType::Photo);
    EXPECT_EQ(mediaTypeOf("/some.where/else/CLIP.MKV"), MediaType::Video);
    EXPECT_EQ(mediaTypeOf("/pictures.jpg/text"), MediaType::None);
}

TEST(MediaTypesTest, AskTheDatabaseForFormatsThatTheTableLacks) {
    EXPECT_EQ(mediaTypeOf("a.tga"), MediaType::Photo);
    EXPECT_EQ(mediaTypeOf("a.nsv"), MediaType::Video);
    EXPECT_EQ(mediaTypeOf("a.amr"), MediaType::Music);
}

TEST(MediaTypesTest, TakeTextsArchivesDrawingsAndPlayListsForNoMedia) {
    for (const char* name : {"a.txt", "a.srt", "a.zip", "a.odt", "a.svg", "a.m3u", "a.html", "a.so",
                             "a.docx", "a.DLL", "a.dat", "Makefile"}) {
        EXPECT_EQ(mediaTypeOf(name), MediaType::None) << name;
    }
}

TEST(MediaTypesTest, TakeNamesWithoutAnExtensionForNoMedia) {
    for (const char* name : {"", "jpg", "mp3", "a.", ".", "/", "a.jpg.", "a.jpg "}) {
        EXPECT_EQ(mediaTypeOf(name), MediaType::None) << name;
    }
}

TEST(MediaTypesTest, CopeWithAnyBytes) {
    EXPECT_EQ(mediaTypeOf("\xff\xfe.jpg"), MediaType::Photo);
    EXPECT_EQ(mediaTypeOf("\xff\xfe.\xff"), MediaType::None);
    EXPECT_EQ(mediaTypeOf(std::string(100'000, 'a') + ".mp3"), MediaType::Music);
    EXPECT_EQ(mediaTypeOf("a." + std::string(100'000, 'x')), MediaType::None);
    EXPECT_EQ(mediaTypeOf(std::string("a\0.jpg", 6)), MediaType::Photo);
}

}  // namespace
