// A program that does nothing but what tests tell it: it calls functions of the platform contract and
// prints what they return and what comes back. One line in, percent-encoded words; one line of JSON out,
// {"result": ...} or {"error": "..."}; and {"event": NAME, ...} for each callback, whenever it comes.
#pragma once

#include <cstddef>
#include <vector>

#include "Json.h"
#include "Words.h"

struct ProbeCommand {
    const char* name;
    std::size_t fewest;  ///< arguments
    std::size_t most;
    Json (*run)(const Words& words);  ///< words[0] is the name
};

using ProbeCommands = std::vector<ProbeCommand>;

/// What can be asked of each service; one file each.
ProbeCommands applicationCommands();
ProbeCommands notificationCommands();
ProbeCommands scanCommands();
ProbeCommands settingsCommands();
ProbeCommands smallServiceCommands();  ///< log, catalogue, watchdog, power, context, statistics
ProbeCommands usbCommands();

/// Tell of a callback: the event's name and what came with it.
void printEvent(const char* name, JsonMembers& members);

/// A pointer as a number, so that a test can hand it back.
Json pointer(const void* value);
/// The pointer again.
void* pointer(const std::string& word);

/// Read standard input until it ends, running the main loop.
int runProbe();
