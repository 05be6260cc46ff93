// Whole stories of the device manager: everything that it calls and logs while it does one thing,
// in order. The sentences that many stories share are told here; which story an event has stands in
// the tests.
#pragma once

#include <string>
#include <vector>

#include "Observations.h"
#include "SimulatedTv.h"

/// Calls and log lines since a mark, debug lines included unless told otherwise. Every address is
/// "PTR" and the sizes of the real disk are "N", so that a test can write them down.
Texts plainStory(simulated::SimulatedTv& tv, std::size_t since, int leastPriority = 3);

/// The lines of a story that are among `wanted`: EXPECT_EQ(linesOf(story, wanted), wanted) compares
/// order and number of these and passes over all others.
Texts linesOf(const Texts& story, const Texts& wanted);

/// The key of a device.
std::string keyOf(const simulated::UsbDevice& device);

/// Starting a content scan.
std::string scanCall(const std::string& folder);

/// Looking a key up among listed ones, newest first.
Texts searchStory(const std::string& key, const Texts& listedKeys);

/// Filling a record while `listed` devices of other products, or itself, are in the list.
Texts fillStory(const simulated::UsbDevice& device, std::size_t listed);

/// Settling a record's name on the same terms.
Texts nameStory(const simulated::UsbDevice& device, std::size_t listed);

/// Inserting a FAT stick that is the `count`th, with `listed` others in the list.
Texts insertStory(const simulated::UsbDevice& device, std::size_t listed, int count);

/// Taking the newest of `listed` records out of the list.
Texts deleteStory(const simulated::UsbDevice& device, std::size_t listed);
