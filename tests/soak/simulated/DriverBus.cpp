// Steps of the clients on the bus: calls of all methods. A client that goes without a word is one whose
// name is not used again; most do.
#include "Driver.h"

namespace soak {

namespace {

constexpr std::size_t MOST_MUSIC = 50;  // items; a list without end is no matter of endurance

std::string number(int value) {
    return "(" + std::to_string(value) + ",)";
}

int anyFileSystem(Chance& chance) {
    return chance.oneOf({-1, 0, 1, 2, 3, 5, 6, 99});
}

}  // namespace

void Driver::called(const std::string& sender,
                    const char* method,
                    GVariant* arguments,
                    std::optional<std::string> reply) {
    const FakeBus::Outcome outcome = bus_.call(sender, method, arguments);
    reply_ = Reply{std::move(reply), outcome.reply, outcome.invocationEnded};
    doing_ += " " + sender + " " + method;
}

void Driver::call(Chance& chance) {
    const std::string sender =
        ":1." + std::to_string(chance.oneIn(3) ? chance.below(4) : ++callers_);
    const int id = chance.oneOf({-1, 0, 1, 2, 3, 4, 5, 7, 1'000'000, -2'147'483'647 - 1});
    const int fileSystem = anyFileSystem(chance);
    const bool enable = !chance.oneIn(4);
    switch (chance.below(8)) {
        case 0:
            called(sender, "Connect", g_variant_new("(si)", "plug-in", id),
                   number(model_.connect(sender, id)));
            break;
        case 1:
            called(sender, "GetDeviceCount", g_variant_new("(ii)", id, fileSystem),
                   number(model_.getDeviceCount(sender, id, fileSystem)));
            break;
        case 2:
            model_.disConnect(id);
            called(sender, "DisConnect", g_variant_new("(i)", id), "()");
            break;
        case 3:
            model_.requestAll(sender, id);
            called(sender, "RequesAll", g_variant_new("(i)", id), "()");
            break;
        case 4:
            model_.enablePopUp(enable);
            called(sender, "SetEnablePopUP", g_variant_new("(b)", enable ? TRUE : FALSE), "()");
            doing_ += enable ? " on" : " off";
            break;
        case 5:
            model_.getDeviceListByFsType(sender, id, fileSystem);
            called(sender, "GetDeviceListByFsType", g_variant_new("(ii)", id, fileSystem), "()");
            break;
        case 6:
            model_.getDeviceInfo(sender, id);
            called(sender, "GetDeviceInfo", g_variant_new("(is)", id, "/dev/sda1"), std::nullopt);
            break;
        default:
            called(sender, "SomethingNew", nullptr, "()");
    }
    doing_ += " id " + std::to_string(id) + " fs " + std::to_string(fileSystem);
}

void Driver::callMusic(Chance& chance) {
    const std::string sender = ":1." + std::to_string(++callers_);
    auto& music = model_.music;
    const int which = chance.below(6);
    if (which == 0 || music.size() >= MOST_MUSIC) {
        music.clear();
        called(sender, "ClearPhotoBGMPlayList", nullptr, "()");
    } else if (which < 4 || music.empty()) {
        music.push_back({"/music/" + std::to_string(chance.below(100)) + ".mp3", "Ü", ""});
        const auto& item = music.back();
        called(sender, "SetPhotoBGMPlayList",
               g_variant_new("(sss)", item[0].c_str(), item[1].c_str(), item[2].c_str()), "()");
    } else {
        const int index = chance.below(static_cast<int>(music.size()));
        const auto& item = music[static_cast<std::size_t>(index)];
        called(sender, "GetPhotoBGMPlayListItem", g_variant_new("(i)", index),
               "('" + item[0] + "', '" + item[1] + "', '" + item[2] + "')");
    }
}

void Driver::callUnanswered(Chance& chance) {
    const std::string sender = ":1." + std::to_string(++callers_);
    if (chance.oneIn(2)) {
        called(sender, "LaunchPopup", g_variant_new("(s)", "/dev/sda1"), std::nullopt);
    } else {
        called(sender, "SwitchToContent", nullptr, std::nullopt);
    }
}

}  // namespace soak
