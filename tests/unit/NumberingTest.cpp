// The numbers behind equal names over long random lives of a device list, beside those that a plain walk
// through a list gives: the same numbers, names and log lines, whether the walks are seen or not.
#include <algorithm>
#include <list>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <tuple>
#include <utility>

#include "Observations.h"
#include "SeenLines.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

/// A listed device as far as its number goes.
struct Listed {
    std::string key;
    std::string product;
    std::string node;
    std::string name;
    int index = 0;
};

std::ostream& operator<<(std::ostream& out, const Listed& one) {
    return out << one.key << " '" << one.product << "' " << one.index << " '" << one.name << "'";
}

bool operator==(const Listed& one, const Listed& other) {
    return std::tie(one.key, one.product, one.node, one.name, one.index) ==
           std::tie(other.key, other.product, other.node, other.name, other.index);
}

/// The rule for numbers, one record after the other. No index, no tables.
class PlainNumbering {
public:
    explicit PlainNumbering(bool walksAreSeen) : walksAreSeen_(walksAreSeen) {}

    /// A device is added, or one that is listed is filled anew.
    void add(const UsbDevice& device) {
        if (Listed* known = find(keyOf(device)); known != nullptr) {
            fill(*known, device);
        } else {
            Listed fresh;
            fill(fresh, device);
            list_.push_front(fresh);
        }
    }
    /// All that is attached is listed, each device named twice.
    void enumerate(const std::vector<UsbDevice>& present) {
        for (const int usbClass : {USB_CLASS_MASS_STORAGE, USB_CLASS_STILL_IMAGE}) {
            for (const UsbDevice& device : present) {
                if (device.usbClass == usbClass) {
                    add(device);
                    settle(*find(keyOf(device)));
                }
            }
        }
    }
    /// The walk in search of a demo: a record of its own for each stick, listed when there is none yet.
    void walk(const std::vector<UsbDevice>& present) {
        for (const UsbDevice& device : present) {
            if (device.usbClass == USB_CLASS_MASS_STORAGE) {
                Listed own;
                fill(own, device);
                settle(own);
                if (find(own.key) == nullptr) {
                    list_.push_front(own);
                }
            }
        }
    }
    void remove(const std::string& key) {
        list_.remove_if([&](const Listed& one) { return one.key == key; });
    }
    void clear() { list_.clear(); }

    const std::list<Listed>& list() const { return list_; }
    /// The lines of naming and numbering since the last call; a record is its key.
    Texts takeLines() { return std::exchange(lines_, {}); }

private:
    Listed* find(const std::string& key) {
        const auto found = std::find_if(list_.begin(), list_.end(),
                                        [&](const Listed& one) { return one.key == key; });
        return found != list_.end() ? &*found : nullptr;
    }
    void fill(Listed& record, const UsbDevice& device) {
        record.product = device.product.value_or("");
        record.node = device.devname.value_or("");
        record.key = keyOf(device);
        settle(record);
    }
    void settle(Listed& record) {
        const std::string who =
            "Product:" + record.product + " key=" + record.key + " name=" + record.node;
        lines_.push_back(who + " Device count=" + std::to_string(list_.size()));
        std::vector<int> used;
        int most = 0;
        for (const Listed& other : list_) {
            if (walksAreSeen_) {
                lines_.push_back("pNode:" + other.key);
            }
            if (other.product == record.product && other.key != record.key) {
                used.push_back(other.index);
                most = std::max(most, other.index);
            }
        }
        lines_.push_back("IndexVector size :" + std::to_string(used.size()) +
                         ", MaxIndex:" + std::to_string(most));
        int number = 0;
        while (std::find(used.begin(), used.end(), number) != used.end()) {
            number = number == 0 ? 2 : number + 1;
        }
        lines_.push_back(who + " nValidIndex=" + std::to_string(number));
        record.name = record.product;
        if (number > 0) {
            record.index = number;
            record.name += "(" + std::to_string(number) + "&#x202d;)";
        }
    }

    bool walksAreSeen_;
    std::list<Listed> list_;  // newest first
    Texts lines_;
};

constexpr std::size_t FEW = 8;
constexpr std::size_t MANY = 40;

/// Seed, whether the walks are seen, how many devices there are at most.
using Life = std::tuple<unsigned, bool, std::size_t>;

class NumberingTest : public ManagerTest, public ::testing::WithParamInterface<Life> {
protected:
    NumberingTest()
        : random(std::get<0>(GetParam())),
          plain(std::get<1>(GetParam())),
          most(std::get<2>(GetParam())) {
        if (!std::get<1>(GetParam())) {
            unseen.emplace();
        }
    }

    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    std::string anyProduct() { return Texts{"P", "Q", ""}[random() % 3]; }
    /// One of those that are plugged in, or were.
    DeviceId any() { return all[random() % all.size()]; }
    bool isPresent(DeviceId id) {
        const std::vector<DeviceId> present = tv.ports().present();
        return std::find(present.begin(), present.end(), id) != present.end();
    }
    std::vector<UsbDevice> presentDevices() {
        std::vector<UsbDevice> devices;
        for (const DeviceId id : tv.ports().present()) {
            devices.push_back(tv.ports().device(id));
        }
        return devices;
    }

    /// "added" of a device that is present.
    void announce(DeviceId id) {
        tv.ports().announce(id, USB_ACTION_ADDED);
        tv.settle();
        if (plain.list().empty()) {
            plain.enumerate(presentDevices());
        }
        plain.add(tv.ports().device(id));
    }
    void plugAnother() {
        UsbDevice device;
        device.product = anyProduct();
        if (below(5) == 0) {
            device.usbClass = USB_CLASS_STILL_IMAGE;
            device.serial = "camera " + std::to_string(below(3));  // cameras may share a key
        }
        all.push_back(tv.ports().insert(device));
        announce(all.back());
    }
    void pullOut(DeviceId id) {
        pull(id);
        plain.remove(keyOf(tv.ports().device(id)));
    }

    /// Something that happens to the list.
    void live() {
        const int kind = below(100);
        if (all.empty() || (kind < 30 && all.size() < most)) {
            plugAnother();
        } else if (kind < 45) {
            if (const DeviceId id = any(); isPresent(id)) {
                pullOut(id);
            } else {
                tv.ports().comeBack(id);
                announce(id);
            }
        } else if (kind < 65) {
            tv.ports().device(any()).product = anyProduct();  // seen when it is filled next
        } else if (kind < 95) {
            if (const DeviceId id = any(); isPresent(id)) {
                announce(id);
            }
        } else if (kind < 97) {
            access.scanUsbStorage();
            plain.walk(presentDevices());
        } else if (kind < 98) {
            tv.power().sendWakeup(1);
            tv.settle();
            plain.clear();
        } else if (kind < 99) {
            access.clean(MM_DEVICE_LIST_USB);
            plain.clear();
        } else {
            mgr->GetDeviceList();
            if (plain.list().empty()) {
                plain.enumerate(presentDevices());
            }
        }
    }

    std::list<Listed> listed() {
        std::list<Listed> list;
        for (GList* node = access.list(); node != nullptr; node = node->next) {
            const auto* one = static_cast<const CMMDeviceInfo*>(node->data);
            EXPECT_EQ(one->GetDisplayNameForNotification(), one->GetProduct());
            list.push_back({one->GetDeviceKey(), one->GetProduct(), one->GetDeviceName(),
                            one->GetDisplayName(), one->GetIndex()});
        }
        return list;
    }
    /// The lines of naming and numbering since the last forget(); a record is its key.
    Texts numberingLines() {
        std::map<std::string, std::string> keys;
        for (GList* node = access.list(); node != nullptr; node = node->next) {
            keys["pNode:" + address(node->data)] =
                "pNode:" + static_cast<const CMMDeviceInfo*>(node->data)->GetDeviceKey();
        }
        Texts lines;
        for (const simulated::LogLine& line : tv.journal().log(mark)) {
            if (line.function == "m_CheckDeviceProductName" || line.function == "m_GetValidIndex") {
                const auto known = keys.find(line.message);
                lines.push_back(known != keys.end() ? known->second : line.message);
            }
        }
        return lines;
    }

    std::mt19937 random;
    PlainNumbering plain;
    std::size_t most;
    std::optional<InfoUnseen> unseen;
    std::vector<DeviceId> all;
};

TEST_P(NumberingTest, IsThatOfAPlainWalkThroughTheListAfterEachOfManyEvents) {
    int highest = 0;
    int shared = 0;
    for (int step = 0; step < (most == FEW ? 2'000 : 400); ++step) {
        forget();
        live();
        ASSERT_EQ(listed(), plain.list()) << "after step " << step;
        ASSERT_EQ(numberingLines(), plain.takeLines()) << "in step " << step;
        std::set<std::pair<std::string, int>> numbers;
        for (const Listed& one : plain.list()) {
            highest = std::max(highest, one.index);
            shared += numbers.emplace(one.product, one.index).second ? 0 : 1;
        }
    }
    // What the life was to bring: many devices high numbers; few, of which each is often the last of its
    // product, numbers that two have.
    if (most == MANY) {
        EXPECT_GT(highest, 5);
    } else {
        EXPECT_GT(shared, 0);
    }
}

std::string nameOf(const ::testing::TestParamInfo<Life>& info) {
    const auto& [seed, walksAreSeen, most] = info.param;
    return (most == MANY ? "Many" : "Few") + std::to_string(seed) +
           (walksAreSeen ? "WithWalksSeen" : "WithWalksUnseen");
}

INSTANTIATE_TEST_SUITE_P(Lives,
                         NumberingTest,
                         ::testing::Combine(::testing::Range(1U, 5U),
                                            ::testing::Bool(),
                                            ::testing::Values(FEW, MANY)),
                         nameOf);

}  // namespace
