// The stage: making it, filling it, taking it away.
#include "Stage.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

#include <glib.h>

#include "LastWill.h"

#ifndef PORTMELD_PATH_PREFIX
#error "the workbench needs a daemon that is built with a folder before its paths"
#endif

namespace fs = std::filesystem;

namespace workbench {

namespace {

constexpr const char* binaries = PORTMELD_PATH_PREFIX "/usr/bin";
constexpr const char* applicationResources = PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res";
static_assert(PORTMELD_PATH_PREFIX[0] == '.',
              "the folder before the daemon's paths is a relative one");

struct Link {
    const char* resource;
    const char* folder;
    const char* name;
};

constexpr Link links[] = {
    {"portmeld.interface.xml", binaries, "portmeld.interface.xml"},
    {"images", applicationResources, "images"},
    {"po", applicationResources, "locale"},
};

}  // namespace

Stage::Stage(const std::string& resources) {
    GError* error = nullptr;
    const std::unique_ptr<char, decltype(&g_free)> made(
        g_dir_make_tmp("portmeld-workbench-XXXXXX", &error), g_free);
    if (!made) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        throw std::runtime_error(std::string("no temporary folder: ") + error->message);
    }
    folder_ = fs::absolute(made.get());
    lastWill::removeFolder(folder_);
    try {
        fill(resources);
    } catch (...) {
        remove();
        throw;
    }
}

Stage::~Stage() {
    remove();
}

std::string Stage::interfaceDescription() const {
    return fs::path(folder_) / binaries / "portmeld.interface.xml";
}

std::string Stage::catalogues() const {
    return fs::path(folder_) / applicationResources / "locale";
}

bool Stage::hasLanguage(const std::string& code) const {
    return code.find('/') == std::string::npos &&
           fs::exists(fs::path(applicationResources) / "locale" / code / "LC_MESSAGES" /
                      "portmeld.mo");
}

void Stage::fill(const std::string& resources) const {
    fs::current_path(folder_);
    for (const Link& link : links) {
        const fs::path target = fs::path(resources) / link.resource;
        if (!fs::exists(target)) {
            throw std::runtime_error("the build left out " + target.string());
        }
        fs::create_directories(link.folder);
        fs::create_symlink(target, fs::path(link.folder) / link.name);
    }
}

void Stage::remove() const {
    // Nobody can be told more than that it is still there.
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(folder_, ignored);
    lastWill::forgetFolder();
}

}  // namespace workbench
