// "music add|get|clear": the photo player's list of background music, which the daemon keeps for its
// clients. An item is three texts; here they are taken for a URL, a title and an artist.
#include <charconv>

#include "Bus.h"
#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"

namespace ctl {

namespace {

JsonMembers itemJson(const std::string& url, const std::string& title, const std::string& artist) {
    JsonMembers members;
    members.with("url", jsonString(url))
        .with("title", jsonString(title))
        .with("artist", jsonString(artist));
    return members;
}

int indexOf(const std::string& word) {
    int index = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, index);
    if (stop != end || error != std::errc()) {
        throw Failure(Status::Usage,
                      "music get: \"" + word + "\" is no whole number of 32 bits; give 0 or more");
    }
    if (index < 0) {
        throw Failure(Status::Usage, "music get: " + word +
                                         " is before the first item, which is 0; to ask for an " +
                                         "item that is not there would end the daemon");
    }
    return index;
}

}  // namespace

void musicAdd(const Options& options) {
    const auto word = [&](std::size_t index) {
        return index < options.words.size() ? options.words[index] : std::string();
    };
    const std::string url = word(0);
    const std::string title = word(1);
    const std::string artist = word(2);
    Bus(options).call("SetPhotoBGMPlayList",
                      g_variant_new("(sss)", url.c_str(), title.c_str(), artist.c_str()));
    if (options.json) {
        writeJson(itemJson(url, title, artist).done());
    }
}

void musicGet(const Options& options) {
    const int index = indexOf(options.words[0]);
    const Values answer =
        Bus(options).call("GetPhotoBGMPlayListItem", g_variant_new("(i)", index), "(sss)");
    const char* url = nullptr;
    const char* title = nullptr;
    const char* artist = nullptr;
    g_variant_get(answer.get(), "(&s&s&s)", &url, &title, &artist);
    if (options.json) {
        writeJson(itemJson(url, title, artist).with("index", jsonNumber(index)).done());
        return;
    }
    writeLine("URL     " + printable(url));
    writeLine("TITLE   " + printable(title));
    writeLine("ARTIST  " + printable(artist));
}

void musicClear(const Options& options) {
    Bus(options).call("ClearPhotoBGMPlayList", nullptr);
    if (options.json) {
        writeJson(JsonMembers().with("music", jsonList({})).done());
    }
}

}  // namespace ctl
