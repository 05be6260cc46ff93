// The fixture of the JSON wrapper's tests: values that finish themselves, GLib's complaints fatal.
#pragma once

#include <string>

#include "TvTest.h"
#include "json_value.h"

/// A JSON value that is finished as its kind has to be.
class Value : public CMMDeviceJsonValue {
public:
    Value() = default;
    explicit Value(const std::string& text) : CMMDeviceJsonValue(text), parsed_(true) {}
    ~Value() { Destroy(!parsed_); }

private:
    bool parsed_ = false;
};

class JsonValueTest : public TvTest {
protected:
    /// A log line of a value that stays without an object.
    static constexpr const char* OBJECT_FAILED = "----------json object create error-----------\n";

    JsonValueTest()
        : fatal_(g_log_set_always_fatal(static_cast<GLogLevelFlags>(
              G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING))) {}
    ~JsonValueTest() override { g_log_set_always_fatal(fatal_); }

    /// What a member reads as, whichever getter is asked.
    static int asInt(CMMDeviceJsonValue& value, const char* key) {
        int number = 4711;
        EXPECT_TRUE(value.Get(key, number)) << key;
        return number;
    }
    static bool asBool(CMMDeviceJsonValue& value, const char* key) {
        bool flag = false;
        EXPECT_TRUE(value.Get(key, flag)) << key;
        return flag;
    }
    static std::string asText(CMMDeviceJsonValue& value, const char* key) {
        std::string text = "before";
        EXPECT_TRUE(value.Get(key, text)) << key;
        return text;
    }

    /// No getter gives anything for this key, and none touches what it was to fill.
    static void expectNothing(CMMDeviceJsonValue& value, const char* key) {
        bool flag = true;
        int number = 4711;
        std::string text = "kept";
        Texts list = {"kept"};
        EXPECT_FALSE(value.Get(key, flag));
        EXPECT_FALSE(value.Get(key, number));
        EXPECT_FALSE(value.Get(key, text));
        EXPECT_FALSE(value.Get(key, list));
        EXPECT_TRUE(flag);
        EXPECT_EQ(number, 4711);
        EXPECT_EQ(text, "kept");
        EXPECT_EQ(list, Texts{"kept"});
    }

    Texts warnings() { return tv.journal().messages(mark, 5); }
    Texts story() { return tv.journal().story(mark); }
    void forget() { mark = tv.journal().mark(); }

    std::size_t mark = 0;

private:
    GLogLevelFlags fatal_;
};
