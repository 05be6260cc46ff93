// The wrapper over one JSON object: what goes in and comes out, and every refusal with its log
// line. Texts from outside are JsonTextTest's.
#include <json-glib/json-glib.h>

#include "JsonValueTest.h"

namespace {

/// The function of json-glib that gives nothing, for the test of the branch behind it.
std::string givesNothing;

bool refused(const char* function) {
    return givesNothing == function;
}

}  // namespace

// The linker hands these functions over with --wrap.
extern "C" {
JsonObject* __real_json_object_new();
JsonArray* __real_json_array_new();
JsonParser* __real_json_parser_new();
JsonGenerator* __real_json_generator_new();
JsonNode* __real_json_node_new(JsonNodeType type);
JsonObject* __wrap_json_object_new();
JsonArray* __wrap_json_array_new();
JsonParser* __wrap_json_parser_new();
JsonGenerator* __wrap_json_generator_new();
JsonNode* __wrap_json_node_new(JsonNodeType type);

JsonObject* __wrap_json_object_new() {
    return refused("json_object_new") ? nullptr : __real_json_object_new();
}
JsonArray* __wrap_json_array_new() {
    return refused("json_array_new") ? nullptr : __real_json_array_new();
}
JsonParser* __wrap_json_parser_new() {
    return refused("json_parser_new") ? nullptr : __real_json_parser_new();
}
JsonGenerator* __wrap_json_generator_new() {
    return refused("json_generator_new") ? nullptr : __real_json_generator_new();
}
JsonNode* __wrap_json_node_new(JsonNodeType type) {
    return refused("json_node_new") ? nullptr : __real_json_node_new(type);
}
}

namespace {

TEST_F(JsonValueTest, AFreshEmptyWrapperIsTwoBraces) {
    EXPECT_EQ(Value().ToString(), "{}");
    EXPECT_EQ(Value("{}").ToString(), "{}");
}

TEST_F(JsonValueTest, MembersAreWrittenCompactInTheOrderInWhichTheyWereSet) {
    Value value;
    EXPECT_TRUE(value.Set("yes", true));
    EXPECT_TRUE(value.Set("no", false));
    EXPECT_TRUE(value.Set("least", -2147483647 - 1));
    EXPECT_TRUE(value.Set("text", std::string("a\"\\/\n")));
    EXPECT_TRUE(value.Set("literal", "b"));
    EXPECT_TRUE(value.Set("nothing", static_cast<const char*>(nullptr)));
    EXPECT_TRUE(value.Set("list", Texts{"x", "", "y"}));
    JsonArray* array = json_array_new();
    json_array_add_int_element(array, 1);
    EXPECT_TRUE(value.Set("array", array));
    EXPECT_EQ(value.ToString(),
              "{\"yes\":true,\"no\":false,\"least\":-2147483648,\"text\":\"a\\\"\\\\/\\n\","
              "\"literal\":\"b\",\"nothing\":null,\"list\":[\"x\",\"\",\"y\"],\"array\":[1]}");
    EXPECT_TRUE(story().empty());
}

TEST_F(JsonValueTest, SettingTheSameKeyTwiceKeepsTheSecondValueInTheFirstPlace) {
    Value value;
    value.Set("a", 1);
    value.Set("b", 2);
    value.Set("a", "second");
    EXPECT_EQ(value.ToString(), "{\"a\":\"second\",\"b\":2}");
}

TEST_F(JsonValueTest, WhatWasSetIsRead) {
    Value value;
    value.Set("flag", true);
    value.Set("number", -7);
    value.Set("text", "text");
    value.Set("list", Texts{"x", "y"});
    EXPECT_TRUE(asBool(value, "flag"));
    EXPECT_EQ(asInt(value, "number"), -7);
    EXPECT_EQ(asText(value, "text"), "text");
    Texts list;
    EXPECT_TRUE(value.Get("list", list));
    EXPECT_EQ(list, (Texts{"x", "y"}));
    EXPECT_TRUE(warnings().empty());
    EXPECT_EQ(story().size(), 4U);
    EXPECT_EQ(story()[0].rfind("I key :flag,m_pJsonObject:0x", 0), 0U) << story()[0];
}

TEST_F(JsonValueTest, ANumberOf64BitsIsCutTo32) {
    Value value("{\"high\":4294967301,\"low\":-4294967301}");
    EXPECT_EQ(asInt(value, "high"), 5);
    EXPECT_EQ(asInt(value, "low"), -5);
}

TEST_F(JsonValueTest, AStringMemberThatIsNullReadsAsEmptyText) {
    Value value("{\"text\":null}");
    EXPECT_EQ(asText(value, "text"), "");
    EXPECT_TRUE(warnings().empty());
}

TEST_F(JsonValueTest, AMemberOfAnotherKindReadsAsConvertedOrAsNothing) {
    Value value(
        "{\"text\":\"17\",\"number\":3,\"real\":2.9,\"flag\":true,\"null\":null,\"list\":[\"x\"],"
        "\"object\":{\"x\":1}}");
    EXPECT_EQ(asInt(value, "text"), 0);
    EXPECT_EQ(asInt(value, "real"), 2);
    EXPECT_EQ(asInt(value, "flag"), 1);
    EXPECT_EQ(asInt(value, "null"), 0);
    EXPECT_EQ(asInt(value, "list"), 0);
    EXPECT_EQ(asInt(value, "object"), 0);
    EXPECT_FALSE(asBool(value, "text"));
    EXPECT_TRUE(asBool(value, "number"));
    EXPECT_FALSE(asBool(value, "null"));
    EXPECT_FALSE(asBool(value, "list"));
    EXPECT_FALSE(asBool(value, "object"));
    for (const char* key : {"number", "real", "flag", "null", "list", "object"}) {
        EXPECT_EQ(asText(value, key), "") << key;
    }
    EXPECT_TRUE(warnings().empty());
}

TEST_F(JsonValueTest, AMemberThatIsNoArrayGivesNoList) {
    Value value("{\"text\":\"x\",\"null\":null,\"object\":{}}");
    for (const char* key : {"text", "null", "object"}) {
        forget();
        Texts list = {"kept"};
        EXPECT_FALSE(value.Get(key, list)) << key;
        EXPECT_EQ(list, Texts{"kept"});
        EXPECT_EQ(warnings(), Texts{"Error!!! json_array_new fail..\n"});
    }
}

TEST_F(JsonValueTest, AListIsAppendedToWhatTheVectorHolds) {
    Value value("{\"list\":[\"x\",null,\"\",3,[\"inner\"],{\"a\":1},true,\"y\"],\"empty\":[]}");
    Texts list = {"before"};
    EXPECT_TRUE(value.Get("list", list));
    EXPECT_EQ(list, (Texts{"before", "x", "", "y"}));
    EXPECT_TRUE(value.Get("empty", list));
    EXPECT_EQ(list.size(), 4U);
    EXPECT_TRUE(warnings().empty());
}

TEST_F(JsonValueTest, AMissingMemberIsReportedAndGivesNothing) {
    Value value;
    expectNothing(value, "gone");
    const std::string line = "there is no field: \"gone\" in the json object.";
    EXPECT_EQ(warnings(), (Texts{line, line, line, line}));
}

TEST_F(JsonValueTest, AnEmptyVectorIsRefusedAndStoresNothing) {
    Value value;
    EXPECT_FALSE(value.Set("list", Texts{}));
    EXPECT_EQ(value.ToString(), "{}");
    EXPECT_EQ(story(), Texts{"W Error!!! set fail. jsonvalue is invalid type[list].\n"});
    value.Set("list", Texts{"kept"});
    EXPECT_FALSE(value.Set("list", Texts{}));
    EXPECT_EQ(value.ToString(), "{\"list\":[\"kept\"]}");
}

TEST_F(JsonValueTest, ANullArrayIsRefused) {
    Value value;
    EXPECT_FALSE(value.Set("array", static_cast<JsonArray*>(nullptr)));
    EXPECT_EQ(value.ToString(), "{}");
    EXPECT_EQ(story(), Texts{"I !m_pJsonObject || !array"});
}

TEST_F(JsonValueTest, RemovedMembersAreGoneAndOthersStay) {
    Value value;
    value.Set("a", 1);
    value.Set("b", 2);
    value.Remove("a");
    value.Remove("never there");
    EXPECT_EQ(value.ToString(), "{\"b\":2}");
    EXPECT_TRUE(story().empty());
}

TEST_F(JsonValueTest, TextsThatAreSetBecomeValidUtf8WithoutTheUnitSeparator) {
    Value value;
    value.Set("text", std::string("\xff|\xc3|\x1f|\xc3\xa9"));
    value.Set("literal", "\x1f\xed\xa0\x80");
    value.Set("list", Texts{"\x1f", "\xc0"});
    const std::string bad = "\xef\xbf\xbd";
    EXPECT_EQ(asText(value, "text"), bad + "|" + bad + "|" + bad + "|\xc3\xa9");
    EXPECT_EQ(asText(value, "literal"), bad + bad + bad + bad);
    Texts list;
    value.Get("list", list);
    EXPECT_EQ(list, (Texts{bad, bad}));
    EXPECT_EQ(Value(value.ToString()).ToString(), value.ToString());
}

TEST_F(JsonValueTest, ClearStartsOverWithAnEmptyObject) {
    Value value;
    value.Set("a", 1);
    value.Clear();
    EXPECT_EQ(story(), Texts{"I ----------unref-----------\n"});
    EXPECT_EQ(value.ToString(), "{}");
    EXPECT_TRUE(value.Set("b", 2));
    EXPECT_EQ(value.ToString(), "{\"b\":2}");
}

TEST_F(JsonValueTest, DestroyReleasesAndLeavesAWrapperWithoutAnObject) {
    CMMDeviceJsonValue made;
    made.Destroy(true);
    made.Destroy(true);
    EXPECT_EQ(story(), Texts{"I unref JsonObject"});
    EXPECT_EQ(made.ToString(), "");
    made.Remove("a");

    forget();
    CMMDeviceJsonValue parsed("{\"a\":1}");
    ASSERT_EQ(story().size(), 3U);
    EXPECT_EQ(story()[0], "I str:{\"a\":1}");
    const std::string parser = story()[1];
    EXPECT_EQ(parser.rfind("I m_pJsonParser:0x", 0), 0U) << parser;
    EXPECT_EQ(story()[2], parser);
    forget();
    parsed.Destroy(false);
    parsed.Destroy(false);
    EXPECT_EQ(story(), Texts{parser});
    expectNothing(parsed, "a");
}

TEST_F(JsonValueTest, DestroyOfAParsedValueMayBeAskedToReleaseTheObjectToo) {
    CMMDeviceJsonValue parsed("{\"a\":1}");
    forget();
    parsed.Destroy(true);
    ASSERT_EQ(story().size(), 2U);
    EXPECT_EQ(story()[0], "I unref JsonObject");
    EXPECT_EQ(parsed.ToString(), "");
}

TEST_F(JsonValueTest, WithoutAnObjectEverySetterAndGetterRefuses) {
    Value value("[1,2]");
    forget();
    EXPECT_FALSE(value.Set("flag", true));
    EXPECT_FALSE(value.Set("number", 1));
    EXPECT_FALSE(value.Set("text", std::string("x")));
    EXPECT_FALSE(value.Set("literal", "x"));
    EXPECT_FALSE(value.Set("null", static_cast<const char*>(nullptr)));
    EXPECT_FALSE(value.Set("list", Texts{"x"}));
    g_autoptr(JsonArray) array = json_array_new();
    EXPECT_FALSE(value.Set("array", array));
    Texts expected;
    for (const char* key : {"flag", "number", "text", "literal", "null", "list"}) {
        expected.push_back(std::string("W Error!!! set fail. jsonvalue is invalid type[") + key +
                           "].\n");
    }
    expected.emplace_back("I !m_pJsonObject || !array");
    EXPECT_EQ(story(), expected);

    forget();
    expectNothing(value, "k");
    const std::string get = "Error!!! get fail. jsonvalue is invalid type[k].\n";
    EXPECT_EQ(warnings(),
              (Texts{get, get, get, "Error!!! set fail. jsonvalue is invalid type[k].\n"}));
    EXPECT_EQ(story()[0], "I key :k,m_pJsonObject:(nil)");

    forget();
    value.Remove("k");
    EXPECT_EQ(value.ToString(), "");
    EXPECT_TRUE(story().empty());
}

class JsonFaultTest : public JsonValueTest {
protected:
    ~JsonFaultTest() override { givesNothing.clear(); }
};

TEST_F(JsonFaultTest, WhenNoObjectCanBeMadeTheWrapperStaysWithoutOne) {
    givesNothing = "json_object_new";
    Value value;
    EXPECT_EQ(story(), Texts{std::string("I ") + OBJECT_FAILED});
    EXPECT_FALSE(value.Set("a", 1));
    EXPECT_EQ(value.ToString(), "");
    forget();
    value.Clear();
    EXPECT_EQ(story(), Texts{std::string("I ") + OBJECT_FAILED});
    givesNothing.clear();
    value.Clear();
    EXPECT_EQ(value.ToString(), "{}");
}

TEST_F(JsonFaultTest, WhenNoParserCanBeMadeThereIsNoObject) {
    givesNothing = "json_parser_new";
    Value value("{\"a\":1}");
    EXPECT_EQ(story(),
              (Texts{"I str:{\"a\":1}", "W ----------json parser create error-----------\n"}));
    expectNothing(value, "a");
}

TEST_F(JsonFaultTest, WhenNoArrayCanBeMadeAListIsRefused) {
    Value value;
    givesNothing = "json_array_new";
    EXPECT_FALSE(value.Set("list", Texts{"x"}));
    EXPECT_EQ(story(), Texts{"I Error!!! json_array_new fail..\n"});
    EXPECT_EQ(value.ToString(), "{}");
}

TEST_F(JsonFaultTest, WhenNoGeneratorOrNodeCanBeMadeTheTextIsEmpty) {
    Value value;
    value.Set("a", 1);
    givesNothing = "json_generator_new";
    EXPECT_EQ(value.ToString(), "");
    EXPECT_EQ(story(), Texts{"W Error!!! json_generator_new.\n"});
    forget();
    givesNothing = "json_node_new";
    EXPECT_EQ(value.ToString(), "");
    EXPECT_EQ(story(), Texts{"W Error!!! json_node_new.\n"});
    givesNothing.clear();
    EXPECT_EQ(value.ToString(), "{\"a\":1}");
}

}  // namespace
