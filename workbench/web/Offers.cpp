// What a page can choose from: collecting it.
#include "Offers.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "Languages.h"
#include "Order.h"
#include "Samples.h"
#include "Text.h"

namespace fs = std::filesystem;

namespace workbench {

namespace {

/// What a folder holds, by name; nothing when it cannot be read.
std::vector<fs::directory_entry> sortedEntries(const fs::path& folder, std::error_code& error) {
    std::vector<fs::directory_entry> entries;
    for (auto i = fs::directory_iterator(folder, error); !error && i != fs::directory_iterator();
         i.increment(error)) {
        entries.push_back(*i);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

Json offeredSamples() {
    Json all = Json::array();
    for (const Sample& sample : samples()) {
        all.add(Json::object({{"id", sample.id}, {"title", sample.title}, {"text", sample.text}}));
    }
    return all;
}

std::string contentsOf(const fs::path& file) {
    char* text = nullptr;
    static_cast<void>(g_file_get_contents(file.c_str(), &text, nullptr, nullptr));
    const std::unique_ptr<char, decltype(&g_free)> owned(text, g_free);
    return text == nullptr ? "" : text;
}

/// The comment after the first line of a scenario is its title.
std::string titleOf(const std::string& text, const std::string& otherwise) {
    const std::size_t begin = text.find("\n# ");
    if (begin == std::string::npos) {
        return otherwise;
    }
    return text.substr(begin + 3, text.find('\n', begin + 3) - begin - 3);
}

Json offeredScenarios() {
    Json all = Json::array();
    std::error_code ignored;
    for (const fs::directory_entry& entry : sortedEntries(WORKBENCH_SCENARIOS, ignored)) {
        if (entry.path().extension() == ".scenario") {
            const std::string id = entry.path().stem();
            const std::string text = contentsOf(entry.path());
            all.add(Json::object({{"id", id}, {"title", titleOf(text, id)}, {"text", text}}));
        }
    }
    return all;
}

}  // namespace

Offers::Offers(const Stage& stage, std::string busAddress, const BusInterface& interface)
    : busAddress_(std::move(busAddress)),
      methods_(interface.methods()),
      languages_(languagesIn(stage.catalogues())) {}

Json Offers::hello(std::int64_t now) const {
    return Json::object({{"type", "hello"},
                         {"version", WORKBENCH_VERSION},
                         {"bus", busAddress_},
                         {"now", now},
                         {"home", g_get_home_dir()},
                         {"languages", languages_},
                         {"samples", offeredSamples()},
                         {"scenarios", offeredScenarios()},
                         {"methods", methods_}});
}

Json Offers::folders(const Json& with) {
    const std::string wanted = with["path"].text(g_get_home_dir());
    std::error_code error;
    const fs::path folder = fs::canonical(wanted, error);
    Json names = Json::array();
    if (!error) {
        for (const fs::directory_entry& entry : sortedEntries(folder, error)) {
            std::error_code ignored;
            const std::string name = entry.path().filename();
            if (entry.is_directory(ignored) && name.front() != '.') {
                names.add(name);
            }
        }
    }
    if (error) {
        throw OrderError("\"" + printable(wanted) + "\" cannot be looked into: " + error.message());
    }
    const bool isRoot = folder == folder.root_path();
    return Json::object({{"path", folder.string()},
                         {"parent", isRoot ? Json() : Json(folder.parent_path().string())},
                         {"folders", names}});
}

}  // namespace workbench
