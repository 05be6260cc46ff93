// The data of a launch, from the daemon's Linux machine to the program that stands in for an application.
// The input is texts ended by NULs: keys and values in turn, which are set, written and read. The first of
// them is also read as the data themselves, as anybody may write them.
#include "LaunchData.h"

#include <algorithm>

#include "Harness.h"
#include "StrictJson.h"
#include "Subject.h"
#include "application/LaunchRequest.h"

namespace {

using fuzz::require;
using machine::LaunchRequest;

/// Deepest nesting that a program takes from its environment.
constexpr int DEEPEST = 100;

int depthOf(JsonNode* node) {
    int deepest = 0;
    if (JSON_NODE_HOLDS_ARRAY(node)) {
        JsonArray* const array = json_node_get_array(node);
        for (unsigned i = 0; i < json_array_get_length(array); ++i) {
            deepest = std::max(deepest, 1 + depthOf(json_array_get_element(array, i)));
        }
        return std::max(deepest, 1);
    }
    if (JSON_NODE_HOLDS_OBJECT(node)) {
        g_autoptr(GList) members = json_object_get_values(json_node_get_object(node));
        for (GList* member = members; member != nullptr; member = member->next) {
            deepest = std::max(deepest, 1 + depthOf(static_cast<JsonNode*>(member->data)));
        }
        return std::max(deepest, 1);
    }
    return 0;
}

void requireWritten(const std::vector<std::string>& texts) {
    LaunchRequest request;
    for (std::size_t i = 0; i + 1 < texts.size(); i += 2) {
        request.set(texts[i].c_str(), texts[i + 1].c_str());
        require(request.extraData.back().first == fuzz::validText(texts[i]) &&
                    request.extraData.back().second == fuzz::validText(texts[i + 1]),
                "what was set last stands last", texts[i]);
    }
    const std::string json = request.json();
    const auto members = fuzz::requireObject(json, "launch data");
    require(request.extraData.empty() || members.size() == request.extraData.size(),
            "each key is there once", json);
    require(std::none_of(json.begin(), json.end(),
                         [](char byte) { return g_ascii_iscntrl(byte) != FALSE && byte != 0x7f; }),
            "an environment takes the launch data", json);

    const handlers::LaunchData read(json);
    const std::string* earlier = nullptr;
    for (const auto& [key, value] : request.extraData) {
        require(read.at(key) == value, "a value comes back", key);
        require(earlier == nullptr || read.isNewer(key, *earlier), "the order comes back", key);
        earlier = &key;
    }

    g_autoptr(GVariant) dictionary = g_variant_ref_sink(request.dictionary());
    require(g_variant_is_normal_form(dictionary) != FALSE, "a bus takes the launch data", json);
    require(g_variant_n_children(dictionary) == request.extraData.size(), "each item is on the bus",
            json);
    for (std::size_t i = 0; i < request.extraData.size(); ++i) {
        const char* key = nullptr;
        const char* value = nullptr;
        g_variant_get_child(dictionary, i, "{&s&s}", &key, &value);
        require(request.extraData[i] == std::pair<std::string, std::string>(key, value),
                "the bus has the order", key);
    }
}

/// Whatever was written in the data, the answer is a subject or a refusal.
void requireAnswer(const std::string& application, const std::string& json) {
    try {
        const auto subject = handlers::subjectOf(application, json);
        require(!subject || !subject->addresses.empty(), "a subject has an address", json);
    } catch (const handlers::Refusal& refusal) {
        require(*refusal.what() != '\0', "a refusal says why", json);
    }
}

void requireRead(const std::string& json) {
    try {
        const auto node = handlers::readObject(json, "the input");
        require(depthOf(node.get()) <= DEEPEST, "no deep nesting is taken", json);
    } catch (const handlers::Refusal&) {
        require(!fuzz::strictObject(json), "an object to a strict reader is taken", json);
        return;
    }
    for (const char* application :
         {"org.quillon.folian", "org.norvane.lumet", "org.norvane.vidreel", "org.norvane.picreel",
          "org.norvane.shopreel"}) {
        requireAnswer(application, json);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> texts = fuzz::texts(data, size);
    requireRead(texts.front());
    requireWritten(texts);
    return 0;
}
