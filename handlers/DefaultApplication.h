// The application that the user has chosen for a kind of content (Association between MIME types and
// applications, freedesktop.org), and handing something to it.
#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "Subject.h"

namespace handlers {

struct ObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
using Application = std::unique_ptr<GAppInfo, ObjectUnref>;

/// The default application for the subject's content type, else one for the most common types of its
/// kind: a player for one kind of video plays the others. Null when there is none.
Application defaultApplication(const Subject& subject);

/// Start the application, or let it show the subject when it runs, and wait until it was told.
/// @return "" on success, else what went wrong
std::string open(const Application& application, const Subject& subject);

}  // namespace handlers
