// Event sources of the workbench's own on the default main context. They know real time only: timers
// of the TV run on its simulated clock and are none of these.
#pragma once

#include <functional>
#include <memory>

#include <glib.h>

namespace workbench {

struct SourceDeleter {
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};

/// An attached source; gone with its owner.
using Source = std::unique_ptr<GSource, SourceDeleter>;

/// Calls `function` once per `milliseconds` of real time, as long as it returns true.
Source everyMilliseconds(unsigned milliseconds, std::function<bool()> function);

/// Calls `function` when the open file has something to read, or has ended, as long as it returns true.
Source whenReadable(int file, std::function<bool()> function);

/// Calls `function` for each of these signals, as long as it returns true.
Source whenSignalled(int signal, std::function<bool()> function);

/// Calls `function` whenever `condition` holds; it is asked in every turn of the loop. With
/// G_PRIORITY_LOW that is only in turns in which nothing else is due.
Source whenever(int priority, std::function<bool()> condition, std::function<void()> function);

}  // namespace workbench
