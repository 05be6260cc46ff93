// A content scan's answer: the input is the JSON text of one. It comes while a stick's pop-up is up; then
// Play is pressed.
#include <algorithm>

#include "Harness.h"
#include "StrictJson.h"
#include "Television.h"

namespace {

using fuzz::JsonMembers;
using fuzz::JsonValue;
using fuzz::require;

constexpr const char* STICK = "stick";

/// The answer is beyond doubt where a strict reader takes it: then its texts are known.
struct Answer {
    explicit Answer(const std::string& json) : members(fuzz::strictObject(json)) {}

    /// The text of a member; "" when it is missing; nothing when it is of another kind.
    std::optional<std::string> text(const char* name) const {
        const auto member = members->find(std::string("/") + name);
        if (member == members->end()) {
            return isNested(name) ? std::nullopt : std::optional<std::string>("");
        }
        const bool plain = member->second.kind == JsonValue::Kind::Text &&
                           member->second.text.find('\0') == std::string::npos;
        return plain ? std::optional<std::string>(member->second.text) : std::nullopt;
    }

    /// The kind of media, where it is a number of 32 bits.
    std::optional<std::int64_t> mediaType() const {
        const auto member = members->find("/MEDIA_TYPE");
        if (member == members->end() || member->second.kind != JsonValue::Kind::Integer ||
            member->second.number != static_cast<std::int32_t>(member->second.number)) {
            return std::nullopt;
        }
        return member->second.number;
    }

    std::optional<JsonMembers> members;

private:
    /// Whether a member is an array or an object.
    bool isNested(const char* name) const {
        const std::string start = std::string("/") + name + "/";
        const auto first = members->lower_bound(start);
        return first != members->end() && first->first.compare(0, start.size(), start) == 0;
    }
};

/// As a JSON text of the daemon holds it.
std::string written(const std::string& text) {
    std::string result = text;
    for (std::size_t at = 0; (at = result.find('\x1f', at)) != std::string::npos;) {
        result.replace(at, 1, "\xef\xbf\xbd");
    }
    return result;
}

void requirePlayList(const std::string& json, const Answer& answer, bool video) {
    const JsonMembers list = fuzz::requireObject(json, "the play list");
    require(requireJsonText(list, "/root_path") == STICK, "the play list names the stick", json);
    const std::string date = requireJsonText(list, "/items/0/file_date");
    require(fuzz::isLike(date, "^[0-9]{4}-[0-9]{2}-[0-9]{2}$"), "a date is one", date);
    if (video) {
        const std::string format = requireJsonText(list, "/items/0/file_format");
        require(std::none_of(format.begin(), format.end(),
                             [](char byte) { return byte >= 'a' && byte <= 'z'; }),
                "a format is in upper case", format);
    } else {
        const std::string size = requireJsonText(list, "/items/0/file_size");
        require(fuzz::isLike(size, "^-?[0-9]+\\.[0-9]{2}(KB|MB|GB|TB)$"), "a size is one", size);
    }
    for (const auto& [from, to] : {std::pair{"FILE_PATH", "/items/0/file_path"},
                                   std::pair{"DISPLAY_NAME", "/items/0/file_name"}}) {
        const std::string text = requireJsonText(list, to);
        if (answer.members && answer.text(from)) {
            require(text == written(*answer.text(from)), "the play list has the answer's texts",
                    json);
        }
    }
}

void requireMusic(const simulated::Launch& launch, const Answer& answer) {
    for (const auto& [from, to] :
         {std::pair{"FILE_PATH", "music_url"}, std::pair{"TITLE", "music_title"},
          std::pair{"ARTIST", "music_artist"}, std::pair{"ALBUM", "music_album"}}) {
        if (answer.members && answer.text(from)) {
            require(launch.extraData.at(to) == *answer.text(from),
                    "the launch has the answer's texts", launch.extraData.at(to));
        }
    }
}

void requireLaunch(const simulated::Launch& launch, const Answer& answer) {
    fuzz::requireValidLaunch(launch);
    if (launch.appId == "org.norvane.vidreel" || launch.appId == "org.norvane.picreel") {
        requirePlayList(launch.extraData.at("play_list_data"), answer,
                        launch.appId == "org.norvane.vidreel");
    } else if (launch.appId == "org.quillon.folian") {
        requireMusic(launch, answer);
    } else {
        require(launch.appId.empty(), "a scan's answer launches a known player", launch.appId);
    }
    if (answer.members && answer.mediaType()) {
        static const std::map<std::int64_t, std::string> PLAYERS = {
            {CSF_MEDIA_PHOTO, "org.norvane.picreel"},
            {CSF_MEDIA_VIDEO, "org.norvane.vidreel"},
            {CSF_MEDIA_MUSIC, "org.quillon.folian"}};
        const auto player = PLAYERS.find(*answer.mediaType());
        require(launch.appId == (player != PLAYERS.end() ? player->second : ""),
                "the kind of media chooses the player", launch.appId);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string json = fuzz::cText(data, size);
    fuzz::Television television;
    simulated::SimulatedTv& tv = television.tv;
    g_mkdir_with_parents(STICK, 0755);
    tv.ports().plug(STICK);
    tv.settle();
    require(tv.screen().history().size() == 1, "a stick brings a pop-up");
    tv.scanner().report(CSF_EVENT_SINGLE_MEDIA, json.c_str());
    tv.settle();
    require(tv.screen().history().size() == 2, "a scan's answer brings one more");
    const simulated::Popup& popup = tv.screen().history().back();
    require(popup.itemType == NOTIFICATION_ITEM_PLAY_FILE, "it offers to play the file");
    fuzz::requireShowable(popup);
    tv.screen().press(0);
    tv.settle();
    require(tv.applications().launches().size() == 1, "Play launches one application");
    requireLaunch(tv.applications().launches().front(), Answer(json));
    return 0;
}
