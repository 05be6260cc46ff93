// The helpers of Observations.h.
#include "Observations.h"

#include <algorithm>
#include <cstdio>

std::string address(const void* pointer) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}

std::string tvPath(const std::string& path) {
    return PORTMELD_PATH_PREFIX + path;
}

namespace {

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

}  // namespace

std::string extraDataCall(const std::string& key, const std::string& value) {
    return "app_control_add_extra_data(" + quoted(key) + ", " + quoted(value) + ")";
}

Texts launchCalls(const ExtraData& extraData, const std::string& appId) {
    Texts calls;
    for (const auto& [key, value] : extraData) {
        calls.push_back(extraDataCall(key, value));
    }
    calls.push_back("app_control_set_app_id(" + quoted(appId) + ")");
    calls.emplace_back("app_control_send_launch_request()");
    return calls;
}

std::string isRunningCall(const std::string& appId) {
    return "app_manager_is_running(" + quoted(appId) + ")";
}

std::string usageCall(int type, const std::string& text) {
    return "CKPILogService::SendKPILog(" + std::to_string(type) + ", " + quoted(text) +
           ", \"\", \"\")";
}

Texts lookUpCalls(const Texts& ids) {
    Texts calls;
    for (const std::string& id : ids) {
        calls.push_back("dgettext(\"portmeld\", " + quoted(id) + ")");
    }
    return calls;
}

Texts contextCalls() {
    return {"tvcontext_init()", "tvcontext_query_state()", "tvcontext_fini()"};
}

Texts joined(const std::vector<Texts>& lists) {
    Texts all;
    for (const Texts& list : lists) {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

::testing::AssertionResult inOrder(const Texts& seen, const Texts& expected) {
    auto from = seen.begin();
    for (const std::string& line : expected) {
        from = std::find(from, seen.end(), line);
        if (from == seen.end()) {
            return ::testing::AssertionFailure() << "missing, or not in its place: " << line
                                                 << "\nin: " << ::testing::PrintToString(seen);
        }
        ++from;
    }
    return ::testing::AssertionSuccess();
}

long occurrences(const Texts& seen, const std::string& line) {
    return std::count(seen.begin(), seen.end(), line);
}

Texts without(const Texts& seen, const Texts& prefixes) {
    Texts left;
    std::copy_if(seen.begin(), seen.end(), std::back_inserter(left), [&](const std::string& line) {
        return std::none_of(prefixes.begin(), prefixes.end(), [&](const std::string& prefix) {
            return line.compare(0, prefix.size(), prefix) == 0;
        });
    });
    return left;
}

const Texts& jsonWrapperLines() {
    static const Texts prefixes = {"I str:",
                                   "I m_pJsonParser:",
                                   "I key :",
                                   "W there is no field:",
                                   "I unref JsonObject",
                                   "W ----------json"};
    return prefixes;
}

Texts members(JsonObject* object) {
    Texts lines;
    g_autoptr(GList) keys = json_object_get_members(object);
    for (GList* key = keys; key != nullptr; key = key->next) {
        const auto* name = static_cast<const char*>(key->data);
        g_autofree char* value = json_to_string(json_object_get_member(object, name), FALSE);
        lines.push_back(std::string(name) + "=" + value);
    }
    return lines;
}

JsonObject* objectIn(JsonParser* parser, const std::string& text) {
    if (!json_parser_load_from_data(parser, text.c_str(), static_cast<gssize>(text.size()),
                                    nullptr)) {
        return nullptr;
    }
    JsonNode* root = json_parser_get_root(parser);
    return root != nullptr && JSON_NODE_HOLDS_OBJECT(root) ? json_node_get_object(root) : nullptr;
}

EnumeratedHandle::EnumeratedHandle(int usbClass) {
    if (usb_device_get_device_list(usbClass, &list_) == 0) {
        (void)usb_device_list_get_first(list_, &handle_);
    }
}

EnumeratedHandle::~EnumeratedHandle() {
    if (list_ != nullptr) {
        (void)usb_device_free_device_list(list_);
    }
}
