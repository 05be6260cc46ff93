// The USB ports: what each order plugs in, and pulling.
#include "PortBoard.h"

#include <filesystem>
#include <map>
#include <system_error>

#include <glib.h>

#include "Samples.h"
#include "Text.h"

namespace fs = std::filesystem;

namespace workbench {

namespace {

constexpr int mostOnHub = 32;

const std::map<std::string, int>& fileSystems() {
    static const std::map<std::string, int> numbers = {{"fat", USB_FILESYSTEM_FAT},
                                                       {"exfat", USB_FILESYSTEM_EXFAT},
                                                       {"ext4", USB_FILESYSTEM_EXT4},
                                                       {"ntfs", USB_FILESYSTEM_NTFS},
                                                       {"unknown", USB_FILESYSTEM_UNKNOWN}};
    return numbers;
}

int fileSystemNumber(const std::string& name) {
    const auto found = fileSystems().find(name);
    if (found == fileSystems().end()) {
        throw OrderError("there is no file system \"" + name + "\"");
    }
    return found->second;
}

std::string fileSystemName(int number) {
    for (const auto& [name, known] : fileSystems()) {
        if (known == number) {
            return name;
        }
    }
    return "unknown";
}

std::string readableFolder(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::canonical(path, error);
    if (!error) {
        static_cast<void>(fs::directory_iterator(absolute, error));
    }
    if (error) {
        throw OrderError("\"" + printable(path) + "\" cannot be a stick: " + error.message());
    }
    return absolute;
}

}  // namespace

PortBoard::PortBoard(simulated::SimulatedTv& tv, std::string samples, std::string empty)
    : tv_(tv), samples_(std::move(samples)), empty_(std::move(empty)) {}

std::string PortBoard::serialOfNext() const {
    const std::unique_ptr<char, decltype(&g_free)> serial(
        g_strdup_printf("%04zu", ports_.size() + 1), g_free);
    return serial.get();
}

std::string PortBoard::folderOfSample(const std::string& name) const {
    return name.empty() ? empty_ : samples_ + "/" + name;
}

int PortBoard::add(Port port) {
    port.plug = plugs_;
    ports_.push_back(std::move(port));
    return static_cast<int>(ports_.size());
}

int PortBoard::addStick(const std::string& kind,
                        const std::string& folder,
                        const simulated::UsbDevice& properties,
                        bool mounted,
                        const Order& order) {
    Port port{kind, properties.product.value_or(""), folder, 0, true, mounted, order, 0};
    if (mounted) {
        port.id = tv_.ports().plug(folder, properties);
    } else {
        port.id = tv_.ports().insert(properties);
        tv_.ports().announce(port.id, USB_ACTION_ADDED);
    }
    return add(std::move(port));
}

Json PortBoard::plugFolder(const Json& with) {
    const std::string folder = readableFolder(with["path"].text());
    const std::string name = fs::path(folder).filename();
    simulated::UsbDevice properties;
    properties.product = with["title"].text(name.empty() ? "Whole disk" : name);
    properties.serial = serialOfNext();
    properties.fileSystem = fileSystemNumber(with["fileSystem"].text("fat"));
    Order order{"plugFolder", with};
    order.with.set("path", folder);
    const bool mounted = with["mounted"].truth(true);
    ++plugs_;
    return Json::object({{"port", addStick("stick", folder, properties, mounted, order)}});
}

Json PortBoard::plugSample(const Json& with) {
    const Sample* const sample = sampleWithId(with["id"].text());
    if (sample == nullptr) {
        throw OrderError("there is no sample \"" + printable(with["id"].text()) + "\"");
    }
    const Order order{"plugSample", with};
    ++plugs_;
    Json numbers = Json::array();
    std::vector<std::string> folders;
    simulated::UsbDevice properties;
    properties.fileSystem = fileSystemNumber(sample->fileSystem);
    for (const SampleDevice& device : sample->devices) {
        properties.product = device.product;
        properties.serial = device.serial != nullptr ? device.serial : serialOfNext();
        folders.push_back(folderOfSample(device.folder));
        if (!sample->oneDisk) {
            numbers.add(addStick("stick", folders.back(), properties, true, order));
        }
    }
    if (sample->oneDisk) {
        const std::vector<simulated::DeviceId> ids = tv_.ports().plugDisk(folders, properties);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            numbers.add(add({"disk", *properties.product + ", " + std::to_string(i + 1), folders[i],
                             ids[i], true, true, order, 0}));
        }
    }
    return Json::object({{"ports", numbers}});
}

Json PortBoard::plugCamera(const Json& with) {
    simulated::UsbDevice properties;
    properties.product = with["title"].text("Camera");
    properties.serial = with["serial"].text(serialOfNext());
    properties.vendorId = 0x04A9;
    properties.productId = 0x3173;
    Port port{"camera", *properties.product, std::nullopt, 0, true, false, {"plugCamera", with}, 0};
    port.id = tv_.ports().plugCamera(properties);
    ++plugs_;
    return Json::object({{"port", add(std::move(port))}});
}

Json PortBoard::hub(const Json& with) {
    const int count = wholeNumber(with, "count");
    if (count < 1 || count > mostOnHub) {
        throw OrderError("a hub takes 1 to " + std::to_string(mostOnHub) + " sticks");
    }
    const std::vector<std::string> contents = {"one-photo", "one-film", "one-song", "mixed"};
    Json numbers = Json::array();
    ++plugs_;
    for (int i = 0; i < count; ++i) {
        simulated::UsbDevice properties;
        properties.product = "Hub Stick " + std::to_string(i + 1);
        properties.serial = serialOfNext();
        const std::string& content = contents[static_cast<std::size_t>(i) % contents.size()];
        numbers.add(addStick("stick", folderOfSample(content), properties, true, {"hub", with}));
    }
    return Json::object({{"ports", numbers}});
}

PortBoard::Port& PortBoard::plugged(const Json& with) {
    const int number = wholeNumber(with, "port");
    if (number < 1 || number > static_cast<int>(ports_.size())) {
        throw OrderError("there is no port " + std::to_string(number));
    }
    Port& port = ports_[static_cast<std::size_t>(number) - 1];
    if (!port.plugged) {
        throw OrderError("nothing is in port " + std::to_string(number) + " any more");
    }
    return port;
}

Json PortBoard::mount(const Json& with) {
    Port& port = plugged(with);
    if (!port.folder || port.mounted) {
        throw OrderError(port.folder ? "it is mounted already" : "a camera has nothing to mount");
    }
    tv_.ports().mount(port.id, *port.folder);
    port.mounted = true;
    return {};
}

Json PortBoard::pull(const Json& with) {
    Port& port = plugged(with);
    const bool isBusy = with["busy"].truth();
    if (isBusy && scanned_ != &port) {
        throw OrderError("it is not busy: the last content scan was not of this one");
    }
    const bool comesLate = isBusy && !isScanned(port);
    port.plugged = port.mounted = false;
    tv_.ports().pull(port.id);
    if (comesLate) {
        tv_.scanner().reportAgain();
    }
    return {};
}

void PortBoard::look(const std::string& current) {
    const auto& scans = tv_.scanner().started();
    if (scans.size() == scans_) {
        return;
    }
    scans_ = scans.size();
    scanned_ = nullptr;
    for (const Port& port : ports_) {
        if (port.mounted && port.folder == scans.back() &&
            tv_.ports().device(port.id).devname == current) {
            scanned_ = &port;
        }
    }
}

/// Whether a content scan of it is under way. The daemon scans one device at a time.
bool PortBoard::isScanned(const Port& port) const {
    return tv_.scanner().running() > 0 && scanned_ == &port;
}

Json PortBoard::state(const std::optional<simulated::Launch>& front) const {
    const auto isUsed = [&](const Port& port) {
        if (!front || !port.folder) {
            return false;
        }
        for (const auto& [key, value] : front->extraData) {
            if (value.find(*port.folder) != std::string::npos) {
                return true;
            }
        }
        return false;
    };
    Json all = Json::array();
    for (std::size_t i = 0; i < ports_.size(); ++i) {
        const Port& port = ports_[i];
        if (!port.plugged) {
            continue;
        }
        const simulated::UsbDevice& device = tv_.ports().device(port.id);
        all.add(Json::object({{"port", i + 1},
                              {"kind", port.kind},
                              {"title", port.title},
                              {"folder", port.folder},
                              {"node", device.devname},
                              {"fileSystem", fileSystemName(device.fileSystem)},
                              {"mounted", port.mounted},
                              {"busy", isScanned(port) || isUsed(port)}}));
    }
    return all;
}

}  // namespace workbench
