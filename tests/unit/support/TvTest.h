// What every test of the daemon stands on: a simulated TV, a folder of its own that the daemon takes
// for the root of the file system, real folders as sticks, and the check that nothing was done against
// the platform's contract.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MMDeviceMgr.h"
#include "ManagerAccess.h"
#include "SimulatedTv.h"

using Texts = std::vector<std::string>;

/// A temporary folder, gone with the object.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    /// Make a folder below, with all its parents. Returns its path.
    std::string folder(const std::string& name) const;
    /// Write a file below (making its folder). Returns its path.
    std::string file(const std::string& name, const std::string& content = "x") const;

private:
    std::string path_;
};

/// A TV without the daemon. The process works in `root`, so that "./root/usr/..." is the test's own.
class TvTest : public ::testing::Test {
protected:
    TvTest();
    ~TvTest() override;
    void TearDown() override;

    /// Where the daemon finds what it knows as an absolute path, e.g. onTv("/opt/data/demo_movie").
    std::string onTv(const std::string& path) const;
    /// A fresh folder to plug in as a stick.
    std::string stickFolder();

    TempFolder temp;
    simulated::SimulatedTv tv;

private:
    std::string cwd_;
    int sticks_ = 0;
};

/// A TV with the device manager of a daemon that has just started: no USB event is taken yet.
class StartingManagerTest : public TvTest {
protected:
    StartingManagerTest();
    void TearDown() override;

    /// Let the start-up delay pass.
    void startUp() { tv.advanceSeconds(30); }
    /// Plug a stick in and let its events arrive.
    simulated::DeviceId plug(simulated::UsbDevice like = {});
    simulated::DeviceId plug(const std::string& folder, simulated::UsbDevice like = {});
    void pull(simulated::DeviceId device);
    /// Whether a stick that is plugged in now, and pulled at once, gets a pop-up.
    bool popsUp();
    /// The keys of the listed devices, in list order.
    Texts listedKeys();
    CMMDeviceInfo* record(simulated::DeviceId device);

    CMMDeviceMgr* mgr;
    CMMDeviceMgrTestAccess access;
};

/// The same 30 s later, with an empty journal: everything works.
class ManagerTest : public StartingManagerTest {
protected:
    ManagerTest() {
        startUp();
        mark = tv.journal().mark();
    }
    /// Calls, messages and story since the start or the last forget().
    Texts calls() { return tv.journal().calls(mark); }
    Texts messages(int leastPriority = 4) { return tv.journal().messages(mark, leastPriority); }
    bool logged(int priority, const std::string& message) {
        return tv.journal().logged(priority, message, mark);
    }
    void forget() { mark = tv.journal().mark(); }

    std::size_t mark = 0;
};
