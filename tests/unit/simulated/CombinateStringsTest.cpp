// Filling the placeholders of messages.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <platform/i18n.h>

namespace {

struct Combined {
    std::string text;
    bool whole;
};

/// The result, from a buffer whose bytes behind the limit must stay as they are.
Combined combine(int limit,
                 const char* format,
                 const char* a1 = nullptr,
                 const char* a2 = nullptr,
                 const char* a3 = nullptr,
                 const char* a4 = nullptr) {
    std::string buffer(static_cast<std::size_t>(limit) + 9, '#');
    const bool whole = CStringUtil::CombinateStrings(buffer.data(), limit, format, a1, a2, a3, a4);
    EXPECT_EQ(buffer.substr(static_cast<std::size_t>(limit) + 1), "########");
    EXPECT_NE(buffer.find('\0'), std::string::npos);
    return {buffer.c_str(), whole};
}

TEST(CombinateStringsTest, PutsArgumentsIntoPlaceholdersInAnyOrder) {
    EXPECT_EQ(combine(255, "{1} {2} {3} {4}", "a", "b", "c", "d").text, "a b c d");
    EXPECT_EQ(combine(255, "{4}{2}-{3}{1}", "a", "b", "c", "d").text, "db-ca");
}

TEST(CombinateStringsTest, PutsAnArgumentIntoEachOfItsPlaceholders) {
    EXPECT_EQ(combine(255, "{1}, {1} and {1}", "ho").text, "ho, ho and ho");
}

TEST(CombinateStringsTest, PutsNothingForAMissingArgument) {
    const Combined combined = combine(255, "[{1}][{3}]");
    EXPECT_EQ(combined.text, "[][]");
    EXPECT_TRUE(combined.whole);
}

TEST(CombinateStringsTest, LeavesOtherBracesAlone) {
    for (const char* text :
         {"{0}", "{5}", "{}", "{", "}", "{1", "{12}", "{ 1}", "{a}", "1}", "{{"}) {
        EXPECT_EQ(combine(255, text, "x").text, text);
    }
    EXPECT_EQ(combine(255, "{{1}}", "x").text, "{x}");
}

TEST(CombinateStringsTest, TakesNothingForAConversion) {
    EXPECT_EQ(combine(255, "100%s %n %% {1}", "%d%s").text, "100%s %n %% %d%s");
}

TEST(CombinateStringsTest, DoesNotExpandPlaceholdersInArguments) {
    EXPECT_EQ(combine(255, "{1}{2}", "{2}", "{1}").text, "{2}{1}");
}

TEST(CombinateStringsTest, TakesANullFormatForAnEmptyOne) {
    const Combined combined = combine(10, nullptr, "x");
    EXPECT_EQ(combined.text, "");
    EXPECT_TRUE(combined.whole);
}

TEST(CombinateStringsTest, FitsExactlyAtTheLimitAndIsCutOneByteBeyond) {
    const Combined fitting = combine(5, "{1}", "12345");
    EXPECT_EQ(fitting.text, "12345");
    EXPECT_TRUE(fitting.whole);
    const Combined cut = combine(5, "{1}", "123456");
    EXPECT_EQ(cut.text, "12345");
    EXPECT_FALSE(cut.whole);
    EXPECT_FALSE(combine(5, "12345{1}", "6").whole);
    EXPECT_TRUE(combine(5, "12345{1}", "").whole);
}

TEST(CombinateStringsTest, IsCutAtACharacterOfAnyLength) {
    const std::string letters[] = {"\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x8e\xac"};
    for (const std::string& letter : letters) {
        for (int limit = 0; limit <= 12; ++limit) {
            const std::size_t fits = static_cast<std::size_t>(limit) / letter.size();
            std::string expected;
            std::string text = letter;
            for (std::size_t i = 0; i < fits; ++i) {
                expected += letter;
                text += letter;
            }
            EXPECT_EQ(combine(limit, "{1}", text.c_str()).text, expected) << limit;
        }
    }
}

TEST(CombinateStringsTest, IsCutAnywhereInBytesThatAreNoCharacters) {
    const std::string stray(10, '\x80');
    EXPECT_EQ(combine(6, "{1}", stray.c_str()).text, stray.substr(0, 6));
    EXPECT_EQ(combine(6, stray.c_str()).text, stray.substr(0, 6));
}

TEST(CombinateStringsTest, CutsTheLongestTextToTheDaemonsBuffer) {
    const std::string huge(1'000'000, 'x');
    const Combined combined = combine(255, huge.c_str(), huge.c_str());
    EXPECT_EQ(combined.text, std::string(255, 'x'));
    EXPECT_FALSE(combined.whole);
    EXPECT_EQ(combine(255, "{1}{1}{1}{1}", huge.c_str()).text, std::string(255, 'x'));
}

TEST(CombinateStringsTest, WritesOnlyTheEndIntoNoRoom) {
    const Combined combined = combine(0, "text");
    EXPECT_EQ(combined.text, "");
    EXPECT_FALSE(combined.whole);
    EXPECT_TRUE(combine(0, "{1}").whole);
}

TEST(CombinateStringsTest, RefusesToWriteWithoutABuffer) {
    char untouched = '#';
    EXPECT_FALSE(
        CStringUtil::CombinateStrings(nullptr, 10, "x", nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(
        CStringUtil::CombinateStrings(&untouched, -1, "x", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(untouched, '#');
}

}  // namespace
