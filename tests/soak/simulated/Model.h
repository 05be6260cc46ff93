// The daemon once more, small and slow: what it knows and what it does on each event, written down from
// the description of its behaviour and sharing nothing with its code. A run feeds every event to both and
// compares them. Nothing here calls the platform, GLib or the daemon.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "World.h"

/// What stands before the daemon's absolute paths.
#ifndef PORTMELD_PATH_PREFIX
#define PORTMELD_PATH_PREFIX ""
#endif

namespace soak {

/// Where the pictures of pop-ups are.
constexpr const char* IMAGES = PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/images/";

/// A listed device.
struct Record {
    int usbClass = 0, subClass = 0, protocol = 0, vendorId = 0, productId = 0;
    int bus = 0, address = 0, number = 0, fileSystem = 0, diskType = 0;
    int totalSize = 0, usedSize = 0;  ///< KiB
    int index = 0;                    ///< behind equal names; 0 none
    bool damaged = false;
    bool announced = false;  ///< "added" was seen, "mounted" is awaited
    std::string manufacturer, product, devname, devpath, mountpath, serial, partlabel;
    std::string displayName, noticeName, key;
};
using RecordPtr = std::shared_ptr<Record>;

/// What is known of the media file of the last scan result.
struct ScanFile {
    int type = 0;  ///< 1 photo, 2 video, 3 music
    std::string name, path, title, artist, album, date, size, format;
};

struct Client {
    int id;
    std::string sender;
};

struct Counters {
    int fat = 0, exFat = 0, ext4 = 0, ntfs = 0, cameras = 0;
};

/// A pop-up as it must be shown. An unset text is none at all.
struct Shown {
    int itemType;
    int timeout;
    std::string title, body;
    std::optional<std::string> icon, firstButton, secondButton;
};

struct Launched {
    std::string appId;
    std::map<std::string, std::string> extraData;
};

struct Signal {
    std::string destination, name, json;
};

/// What the daemon does in one step, as its surroundings see it, each kind in its order.
struct Effects {
    std::vector<Shown> popups;
    std::vector<Launched> launches;
    std::vector<std::pair<int, std::string>> usage;
    std::vector<Signal> signals;
    std::vector<std::string> scans;  ///< folders
};

/// What waits for its time.
struct Timer {
    enum class Kind { StartUp, Watchdog, Activation, Demo, PopUp };
    Kind kind;
    std::int64_t due;  ///< virtual milliseconds
    std::int64_t interval;
    int itemType;  ///< of a pop-up
    long number;   ///< in the order of starting
};

class Model {
public:
    explicit Model(World& world) : world_(world) {}

    // ---- events

    void start();  ///< the process begins
    void advance(std::int64_t milliseconds);
    void usbEvent(const simulated::UsbDevice& device, const std::string& action);
    void wakeUp();
    void powerOff(int option);
    void powerState(int state);
    void useModeChanged();
    void dlnaNameChanged();
    void press(int itemType, int button);
    void hide();
    void timeOut(int itemType);
    void scanReports(const MediaFile& file);
    /// All events of the step are told: a scan that is not held back reports now.
    void settle();

    // ---- the viewer, for whom a pop-up is on the screen or not

    const Shown* onScreen() const { return screen_ ? &*screen_ : nullptr; }
    /// It goes without having reached its end.
    void takeDown();

    // ---- the bus; each returns the values of the reply

    int connect(const std::string& sender, int id);
    void getDeviceInfo(const std::string& sender, int id) { addClient(sender, id); }
    int getDeviceCount(const std::string& sender, int id, int fileSystem);
    void disConnect(int id);
    void requestAll(const std::string& sender, int id);
    void enablePopUp(bool enable) { activated = enable; }
    void getDeviceListByFsType(const std::string& sender, int id, int fileSystem);

    /// What was done since the last look.
    Effects take() { return std::exchange(effects_, {}); }
    const std::vector<Timer>& timers() const { return timers_; }

    // ---- what the daemon knows

    std::int64_t now = 0;
    std::vector<RecordPtr> list;  ///< newest first
    Counters counters;
    RecordPtr current;    ///< what pop-up or launch is about
    RecordPtr displayed;  ///< of the last browse pop-up; perhaps pulled
    bool activated = false;
    bool standby = false;
    int popupKind = -1;  ///< 1 browse, 0 play
    bool noticeShown = false;
    std::string noticeName;
    ScanFile scanFile;
    std::vector<Client> clients;
    std::vector<std::vector<std::string>> music;
    int watchdogFeeds = 0;
    bool scannedEver = false;

private:
    // devices
    static std::string keyOf(const simulated::UsbDevice& device);
    RecordPtr find(const std::string& key) const;
    void fill(Record& record, const simulated::UsbDevice& device);
    void settleName(Record& record);
    void measure(Record& record) const;
    RecordPtr add(const simulated::UsbDevice& device);
    bool insert(const RecordPtr& record);
    void enumerate();
    void connected(const simulated::UsbDevice& device);
    void disconnected(const simulated::UsbDevice& device);
    void unlink(const RecordPtr& record);
    void destroy(const RecordPtr& record);

    // pop-ups
    bool distracting() const { return (world_.contextState & 0xC80) != 0; }
    bool runs(const char* appId) const { return world_.running.count(appId) != 0; }
    void offer();
    bool isSameAsDisplayed();
    void tellRemoval(const std::string& name, int usbClass);
    void show(Shown popup);
    void report(int usageKind, const std::string& detail) {
        effects_.usage.emplace_back(usageKind + 28, detail);
    }

    // launches
    void launch(const std::string& appId);
    void tellCompanion(const RecordPtr& record, int action);
    void browse();
    void play();
    std::string playList() const;

    // demonstration
    bool shop() const { return world_.useMode == 1; }
    bool internalDemoIsPossible() const;
    bool holdsDemo(const std::string& mountpath) const;
    void launchInternalDemo(bool mindDistraction);
    void launchDemo(const std::string& path, bool mindDistraction);
    void launchAnyDemo(bool mindDistraction);
    void walkForDemo();

    // time
    long startTimer(Timer::Kind kind, std::int64_t interval, int itemType = 0);
    void stopTimer(long number);
    void fire(long number);
    void startUp();

    // bus
    void addClient(const std::string& sender, int id);
    const Client* client(int id) const;
    const std::vector<RecordPtr>& askedList();
    int count(int fileSystem) const;

    World& world_;
    Effects effects_;
    std::map<std::string, std::string> extraData_;  // of the one launch request
    std::optional<std::string> scan_;               // folder of the scan that runs
    std::vector<Timer> timers_;
    long lastTimer_ = 0;
    long activationTimer_ = 0;
    long demoTimer_ = 0;
    std::optional<Shown> screen_;
    long screenTimer_ = 0;
};

/// A message in a menu language; `name` stands in it where it has a place for one.
std::string message(const std::string& language,
                    const std::string& id,
                    const std::string& name = "");

/// The JSON text that clients get of a device (or of none) with an action.
std::string deviceJson(const Record* record, int action);

/// A text as a JSON string.
std::string quotedJson(const std::string& text);

}  // namespace soak
