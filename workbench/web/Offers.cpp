// What a page can choose from: collecting it.
#include "Offers.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "BusConnection.h"
#include "Languages.h"
#include "Samples.h"
#include "Text.h"

namespace fs = std::filesystem;

namespace workbench {

namespace {

/// Of GLib's threads each takes one.
constexpr int mostLooks = 4;

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

Offers::Offers(const Stage& stage, std::string busAddress)
    : busAddress_(std::move(busAddress)), languages_(languagesIn(stage.catalogues())) {}

Json Offers::hello(std::int64_t now) const {
    return Json::object({{"type", "hello"},
                         {"version", WORKBENCH_VERSION},
                         {"bus", busAddress_},
                         {"now", now},
                         {"home", g_get_home_dir()},
                         {"languages", languages_},
                         {"samples", offeredSamples()},
                         {"scenarios", offeredScenarios()}});
}

namespace {

/// What is in a folder, as the protocol has it.
Outcome lookInto(const std::string& wanted) {
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
        return {"\"" + printable(wanted) + "\" cannot be looked into: " + error.message(), {}};
    }
    const bool isRoot = folder == folder.root_path();
    return {"", Json::object({{"path", folder.string()},
                              {"parent", isRoot ? Json() : Json(folder.parent_path().string())},
                              {"folders", names}})};
}

struct Look {
    std::string wanted;
    Outcome outcome;
    std::function<void(const Outcome&)> done;
};

void look(GTask* task, gpointer, gpointer data, GCancellable*) {
    Look& one = *static_cast<Look*>(data);
    one.outcome = lookInto(one.wanted);
    g_task_return_boolean(task, TRUE);
}

void onLooked(GObject*, GAsyncResult* result, gpointer) {
    const Look& one = *static_cast<Look*>(g_task_get_task_data(G_TASK(result)));
    one.done(one.outcome);
}

}  // namespace

void Offers::folders(const Json& with, Answer reply) {
    if (looks_ >= mostLooks) {
        throw OrderError("folders that were asked for before do not answer yet");
    }
    ++looks_;
    auto one = std::make_unique<Look>();
    one->wanted = with["path"].text(g_get_home_dir());
    one->done = [this, reply = std::move(reply)](const Outcome& outcome) {
        --looks_;
        reply(outcome);
    };
    const std::unique_ptr<GTask, ObjectDeleter> task(
        g_task_new(nullptr, nullptr, onLooked, nullptr));
    g_task_set_task_data(task.get(), one.release(),
                         [](gpointer data) { delete static_cast<Look*>(data); });
    g_task_run_in_thread(task.get(), look);
}

}  // namespace workbench
