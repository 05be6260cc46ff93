// The folders of Stage.h, and the sizes that statfs() tells of them.
#include "Stage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace soak {

namespace {

constexpr const char* NAMES[FOLDERS] = {"demo",  "demo-and-photo", "nothing",
                                        "photo", "several",        "video"};
constexpr int MODIFIED = 43'200'000;  // seconds since 1970: the 16th of May, 1971
constexpr const char* DEMO_FILE = "root/opt/data/demo_movie/show.mp4";

const World* sizes = nullptr;

void write(const fs::path& file, int bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << std::string(static_cast<std::size_t>(bytes), 'x');
    const struct timespec times[2] = {{MODIFIED, 0}, {MODIFIED, 0}};
    if (utimensat(AT_FDCWD, file.c_str(), times, 0) != 0) {
        throw std::runtime_error("no time for " + file.string());
    }
}

MediaFile media(int type, const fs::path& file) {
    MediaFile told;
    told.mediaType = type;
    told.name = file.filename();
    told.path = file;
    told.size = static_cast<int>(fs::file_size(file));
    told.modified = MODIFIED;
    return told;
}

}  // namespace

WorkFolder::WorkFolder(const std::string& resources) {
    const fs::path from = fs::absolute(resources);
    std::string pattern = (fs::temp_directory_path() / "portmeld-soak-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw fs::filesystem_error("no temporary folder", pattern,
                                   std::error_code(errno, std::generic_category()));
    }
    path_ = pattern;
    fs::current_path(path_);
    fs::create_directories("root/usr/bin");
    fs::create_directories("root/usr/apps/portmeld/res");
    for (const char* file : {"po", "portmeld.interface.xml"}) {
        if (!fs::exists(from / file)) {
            throw std::runtime_error((from / file).string() + " was not built");
        }
    }
    fs::create_symlink(from / "po", "root/usr/apps/portmeld/res/locale");
    fs::create_symlink(from / "portmeld.interface.xml", "root/usr/bin/portmeld.interface.xml");
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(path_, ignored);
}

void WorkFolder::makeFolders(World& world) const {
    const fs::path base = fs::path(path_) / "sticks";
    write(base / "demo/DEMO_LED.tp", 10);
    write(base / "demo-and-photo/DEMO_LED.tp", 10);
    write(base / "demo-and-photo/beach.jpeg", 10);
    write(base / "nothing/readme.txt", 10);
    write(base / "photo/DCIM/holiday.jpg", 1536);
    write(base / "several/one.jpg", 10);
    write(base / "several/two.mp3", 10);
    write(base / "video/clip of the sea.mkv", 500);
    std::int64_t blocks = 1'000;
    for (const char* name : NAMES) {
        Folder& folder = world.folders[(base / name).string()];
        folder.blockSize = 4096;
        folder.blocks = blocks;
        folder.freeBlocks = blocks / 3;
        blocks *= 60;  // the largest have more KiB than 32 bits hold
    }
    const auto at = [&](const char* name) -> Folder& {
        return world.folders.at((base / name).string());
    };
    at("demo").demo = at("demo-and-photo").demo = true;
    at("demo").single = media(3, base / "demo/DEMO_LED.tp");
    at("photo").single = media(2, base / "photo/DCIM/holiday.jpg");
    at("video").single = media(3, base / "video/clip of the sea.mkv");
}

void WorkFolder::setDemoFiles(bool present) const {
    if (present) {
        write(fs::path(path_) / DEMO_FILE, 1);
    } else {
        fs::remove(fs::path(path_) / DEMO_FILE);
    }
}

const char* folderName(int number) {
    return NAMES[number];
}

void setSizesOf(const World* world) {
    sizes = world;
}

}  // namespace soak

// With 64-bit file sizes statfs() has this name for the linker, which routes it here.
extern "C" {
int __real_statfs64(const char* path, void* out);
int __wrap_statfs64(const char* path, void* out);

int __wrap_statfs64(const char* path, void* out) {
    if (soak::sizes == nullptr) {
        return __real_statfs64(path, out);
    }
    const auto folder = soak::sizes->folders.find(path);
    if (folder == soak::sizes->folders.end()) {
        errno = ENOENT;
        return -1;
    }
    struct statfs result = {};
    result.f_bsize = static_cast<decltype(result.f_bsize)>(folder->second.blockSize);
    result.f_blocks = static_cast<fsblkcnt_t>(folder->second.blocks);
    result.f_bfree = static_cast<fsblkcnt_t>(folder->second.freeBlocks);
    result.f_bavail = 0;
    std::memcpy(out, &result, sizeof result);
    return 0;
}
}
