// Comparing the daemon with its model, after every step.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Driver.h"
#include "Resources.h"

class CMMDeviceInfo;

namespace soak {

class Checker {
public:
    Checker(simulated::SimulatedTv& tv, FakeBus& bus, Driver& driver)
        : tv_(tv), bus_(bus), driver_(driver) {}

    /// What differs after a step, in words; nothing when all is as it ought to be. Empties the TV's
    /// records of what the daemon did.
    std::vector<std::string> differences();

    /// What the process holds must be the same from now on.
    void keepCount();

private:
    template <class Value>
    void equal(const std::string& what, const Value& expected, const Value& found);
    template <class Values, class Compare>
    void each(const std::string& what, const Values& expected, std::size_t found, Compare compare);
    void compareState();
    void compareRecord(const std::string& what, const Record& expected, const CMMDeviceInfo& found);
    void comparePointer(const std::string& what, const RecordPtr& expected, const void* found);
    void comparePopups(const Effects& effects);
    void compareLaunches(const Effects& effects);
    void compareReports(const Effects& effects);
    void compareBus(const Effects& effects);
    void compareTimers();
    void compareHoldings();

    simulated::SimulatedTv& tv_;
    FakeBus& bus_;
    Driver& driver_;
    std::vector<std::string> differences_;
    // Where the daemon keeps each record. A record that nobody in the model knows any more is forgotten.
    std::map<std::weak_ptr<const Record>, const void*, std::owner_less<>> places_;
    Sources sources_;
    std::size_t otherSources_ = 0;
    int descriptors_ = -1;
};

}  // namespace soak
