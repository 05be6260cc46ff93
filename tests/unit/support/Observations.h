// What a test says about what it saw: calls as the journal writes them, pointers as the log prints
// them, lines that must come in an order. Nothing here drives the TV.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <json-glib/json-glib.h>

#include <platform/usb.h>

using Texts = std::vector<std::string>;
using ExtraData = std::vector<std::pair<std::string, std::string>>;

/// A pointer as "%p" prints it.
std::string address(const void* pointer);

/// A path of the TV as the daemon under test writes it.
std::string tvPath(const std::string& path);

// ---- calls, as CallJournal::calls() gives them

std::string extraDataCall(const std::string& key, const std::string& value);
/// What a launch calls: every value in order, the application, the request.
Texts launchCalls(const ExtraData& extraData, const std::string& appId);
std::string isRunningCall(const std::string& appId);
std::string usageCall(int type, const std::string& text = "");
/// Texts looked up in the catalogue.
Texts lookUpCalls(const Texts& ids);
/// The three calls of a distraction-free query.
Texts contextCalls();

// ---- lists of lines

/// Several lists as one.
Texts joined(const std::vector<Texts>& lists);
/// Whether `expected` stand among `seen`, in this order, others between them or not.
::testing::AssertionResult inOrder(const Texts& seen, const Texts& expected);
/// How many lines are exactly this one.
long occurrences(const Texts& seen, const std::string& line);
/// Lines without those that begin with one of `prefixes`.
Texts without(const Texts& seen, const Texts& prefixes);
/// The log lines of the JSON wrapper, to be left out of a story that is not about it.
const Texts& jsonWrapperLines();

// ---- JSON

/// An object, member by member in its order, each "key=JSON text".
Texts members(JsonObject* object);
/// The object in a text; null when the text is no JSON object. Lives as long as `parser`.
JsonObject* objectIn(JsonParser* parser, const std::string& text);

/// A handle of the USB library, as an enumeration of one class gives it.
class EnumeratedHandle {
public:
    /// Of the first present device of the class; null when there is none.
    explicit EnumeratedHandle(int usbClass);
    ~EnumeratedHandle();
    EnumeratedHandle(const EnumeratedHandle&) = delete;
    EnumeratedHandle& operator=(const EnumeratedHandle&) = delete;

    usb_device_s* get() const { return handle_; }

private:
    usb_device_list_s* list_ = nullptr;
    usb_device_s* handle_ = nullptr;
};
