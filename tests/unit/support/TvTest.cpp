// The fixtures of TvTest.h.
#include "TvTest.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "MMLogger.h"

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "portmeld-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw fs::filesystem_error("no temporary folder", pattern,
                                   std::error_code(errno, std::generic_category()));
    }
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TempFolder::folder(const std::string& name) const {
    const fs::path path = fs::path(path_) / name;
    fs::create_directories(path);
    return path.string();
}

std::string TempFolder::file(const std::string& name, const std::string& content) const {
    const fs::path path = fs::path(path_) / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

TvTest::TvTest() : cwd_(fs::current_path().string()) {
    fs::current_path(temp.path());
}

TvTest::~TvTest() {
    fs::current_path(cwd_);
}

void TvTest::TearDown() {
    tv.settle();
    tv.checkLeaks();
    EXPECT_EQ(tv.journal().breaches(), Texts{});
}

std::string TvTest::onTv(const std::string& path) const {
    return temp.path() + "/root" + path;
}

std::string TvTest::stickFolder() {
    return temp.folder("stick" + std::to_string(++sticks_));
}

StartingManagerTest::StartingManagerTest() : mgr(CMMDeviceMgr::GetInstance()), access(*mgr) {}

void StartingManagerTest::TearDown() {
    if (mgr != nullptr) {
        mgr->Destroy();
        CMMDeviceMgr::DestroyInstance();
    }
    CMMLogService::Get()->Destroy();
    TvTest::TearDown();
}

simulated::DeviceId StartingManagerTest::plug(simulated::UsbDevice like) {
    return plug(stickFolder(), std::move(like));
}

simulated::DeviceId StartingManagerTest::plug(const std::string& folder,
                                              simulated::UsbDevice like) {
    const simulated::DeviceId device = tv.ports().plug(folder, std::move(like));
    tv.settle();
    return device;
}

void StartingManagerTest::pull(simulated::DeviceId device) {
    tv.ports().pull(device);
    tv.settle();
}

bool StartingManagerTest::popsUp() {
    const std::size_t before = tv.screen().history().size();
    simulated::UsbDevice stick;
    stick.serial = "pop-up " + std::to_string(before);
    const simulated::DeviceId device = plug(stick);
    const bool shown = tv.screen().history().size() > before;
    pull(device);
    return shown;
}

Texts StartingManagerTest::listedKeys() {
    Texts keys;
    for (GList* node = access.list(); node != nullptr; node = node->next) {
        keys.push_back(static_cast<CMMDeviceInfo*>(node->data)->GetDeviceKey());
    }
    return keys;
}

CMMDeviceInfo* StartingManagerTest::record(simulated::DeviceId device) {
    const simulated::UsbDevice& usb = tv.ports().device(device);
    return access.search(
        (usb.usbClass == USB_CLASS_STILL_IMAGE ? usb.serial : usb.devname).value_or(""));
}
