// Event sources of the workbench's own: GLib sources around C++ functions.
#include "Loop.h"

#include <utility>

#include <glib-unix.h>

namespace workbench {

namespace {

using Function = std::function<bool()>;

gboolean call(gpointer data) {
    return (*static_cast<Function*>(data))() ? TRUE : FALSE;
}

gboolean callForFile(gint, GIOCondition, gpointer data) {
    return call(data);
}

void drop(gpointer data) {
    delete static_cast<Function*>(data);
}

Source attached(GSource* source, GSourceFunc callback, Function function) {
    g_source_set_callback(source, callback, new Function(std::move(function)), drop);
    g_source_attach(source, nullptr);
    return Source(source);
}

/// A source with a condition in place of an event.
struct ConditionSource {
    GSource base;
    std::function<bool()>* condition;
};

std::function<bool()>& conditionOf(GSource* source) {
    return *reinterpret_cast<ConditionSource*>(source)->condition;
}

gboolean prepareCondition(GSource* source, gint* timeout) {
    *timeout = -1;
    return conditionOf(source)() ? TRUE : FALSE;
}

gboolean checkCondition(GSource* source) {
    return conditionOf(source)() ? TRUE : FALSE;
}

gboolean dispatchCondition(GSource*, GSourceFunc callback, gpointer data) {
    return callback(data);
}

void finalizeCondition(GSource* source) {
    delete reinterpret_cast<ConditionSource*>(source)->condition;
}

GSourceFuncs conditionFunctions = {prepareCondition,  checkCondition, dispatchCondition,
                                   finalizeCondition, nullptr,        nullptr};

}  // namespace

Source everyMilliseconds(unsigned milliseconds, std::function<bool()> function) {
    return attached(g_timeout_source_new(milliseconds), call, std::move(function));
}

Source whenReadable(int file, std::function<bool()> function) {
    constexpr auto condition = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL);
    return attached(g_unix_fd_source_new(file, condition), G_SOURCE_FUNC(callForFile),
                    std::move(function));
}

Source whenSignalled(int signal, std::function<bool()> function) {
    return attached(g_unix_signal_source_new(signal), call, std::move(function));
}

Source whenever(int priority, std::function<bool()> condition, std::function<void()> function) {
    GSource* const source = g_source_new(&conditionFunctions, sizeof(ConditionSource));
    reinterpret_cast<ConditionSource*>(source)->condition = new Function(std::move(condition));
    g_source_set_priority(source, priority);
    return attached(source, call, [function = std::move(function)] {
        function();
        return true;
    });
}

}  // namespace workbench
