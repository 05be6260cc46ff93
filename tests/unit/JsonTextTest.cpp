// Texts from outside in the JSON wrapper: what is no JSON, no object, or nested too deep is a value
// without an object.
#include "JsonValueTest.h"

namespace {

const char* const LOAD_FAILED = "W ----------json parser load data error-----------\n";

class JsonTextTest : public JsonValueTest {
protected:
    /// Whether a text becomes an object.
    static bool isObject(const std::string& text) { return !Value(text).ToString().empty(); }
};

TEST_F(JsonTextTest, ATextThatIsAnArrayANumberNullOrNothingYieldsNoObject) {
    for (const char* text :
         {"[]", "[{\"a\":1}]", "5", "-1.5", "\"text\"", "true", "null", "", " "}) {
        forget();
        Value value{std::string(text)};
        EXPECT_TRUE(tv.journal().logged(5, OBJECT_FAILED, mark)) << text;
        EXPECT_EQ(story()[0], std::string("I str:") + text);
        EXPECT_EQ(story().size(), 3U) << text;
        expectNothing(value, "a");
    }
}

TEST_F(JsonTextTest, ATextThatIsNoJsonYieldsNoObject) {
    for (const char* text : {"{", "{\"a\":}", "no", "{\"a\":1", "{\"a\":1}}", "{\"\xff\":1}", "'",
                             "{\"a\":/}", "{\"a\":\"\\"}) {
        forget();
        Value value{std::string(text)};
        ASSERT_EQ(story().size(), 3U) << text;
        EXPECT_EQ(story()[2], LOAD_FAILED) << text;
        expectNothing(value, "a");
    }
}

TEST_F(JsonTextTest, EscapesThatStandForACharacterAreRead) {
    Value value("{\"a\":\"\\u00e9\\ud83d\\ude00\\\"\\\\\\/\\n\"}");
    EXPECT_EQ(asText(value, "a"), "\xc3\xa9\xf0\x9f\x98\x80\"\\/\n");
}

TEST_F(JsonTextTest, AnEscapeThatStandsForNoCharacterIsAFailedLoad) {
    for (const char* escape : {"\\u", "\\u12", "\\u12g4", "\\ud83d", "\\ud83dx", "\\ud83d\\n",
                               "\\ud83d\\u0041", "\\ude00", "\\"}) {
        forget();
        EXPECT_FALSE(isObject("{\"a\":\"" + std::string(escape) + "\"}"));
        EXPECT_EQ(story()[2], LOAD_FAILED) << escape;
    }
}

TEST_F(JsonTextTest, BytesBehindANulAreNotRead) {
    Value value(std::string("{\"a\":1}\0garbage", 15));
    EXPECT_EQ(asInt(value, "a"), 1);
}

/// An object with a list of lists in it, `levels` in all, and `innermost` in the middle.
std::string nested(std::size_t levels, const std::string& innermost = "") {
    return "{\"a\":" + std::string(levels - 1, '[') + innermost + std::string(levels - 1, ']') +
           "}";
}

TEST_F(JsonTextTest, AnObjectBehindAnotherValueIsAFailedLoad) {
    for (const char* text : {"{\"a\":1}{\"b\":1}", "{}[]", "[] {}", "1{\"a\":1}", "null {}",
                             "\"a\"{}", "$1{}", "{} /* , */ {}"}) {
        forget();
        EXPECT_FALSE(isObject(text)) << text;
        ASSERT_EQ(story().size(), 3U);
        EXPECT_EQ(story()[2], LOAD_FAILED) << text;
    }
    for (const char* text : {" \n{\"a\":{}}", "/* 1 */ {\"a\":[{},{}]}", "var a = {\"b\":1}"}) {
        EXPECT_TRUE(isObject(text)) << text;
    }
}

TEST_F(JsonTextTest, AThousandLevelsAreParsed) {
    EXPECT_TRUE(isObject(nested(1000)));
    EXPECT_TRUE(warnings().empty());
}

TEST_F(JsonTextTest, MoreThanAThousandLevelsAreAFailedLoad) {
    std::string objects;
    for (int i = 0; i < 1001; ++i) {
        objects += "{\"a\":";
    }
    for (const std::string& text : {nested(1001), nested(80000), std::string(10000000, '['),
                                    objects + "1" + std::string(1001, '}')}) {
        forget();
        EXPECT_FALSE(isObject(text));
        ASSERT_EQ(story().size(), 3U);
        EXPECT_EQ(story()[2], LOAD_FAILED);
    }
}

TEST_F(JsonTextTest, ClosedLevelsDoNotCount) {
    std::string wide = "{\"a\":[0";
    for (int i = 0; i < 5000; ++i) {
        wide += ",[{}]";
    }
    EXPECT_TRUE(isObject(wide + "]}"));
}

TEST_F(JsonTextTest, BracketsInTextsAndCommentsAreNoLevels) {
    const std::string brackets(5000, '[');
    EXPECT_TRUE(isObject("{\"a\":\"" + brackets + "\"}"));
    EXPECT_TRUE(isObject("{\"" + brackets + "\":1}"));
    EXPECT_TRUE(isObject("{\"a\":\"\\\"" + brackets + "\\\\\"}"));
    EXPECT_TRUE(isObject("{\"a\":'\"" + brackets + "\"'}"));
    EXPECT_TRUE(isObject("{\"a\":/*" + brackets + "*/1}"));
}

TEST_F(JsonTextTest, NothingHidesLevelsFromTheCount) {
    for (const char* disguise : {"\"\\\\\",", "\"'\",", "'\\',", "'\"',", "/* \" */", "/*/",
                                 "/ ' /", "\"\\u12\",\"\",", "\"/\",", "\"]]]]\",", "/*]]]]*/"}) {
        forget();
        EXPECT_FALSE(isObject("{\"a\":[" + std::string(disguise) + nested(80000) + "]}"));
        EXPECT_EQ(story()[2], LOAD_FAILED) << disguise;
    }
}

}  // namespace
