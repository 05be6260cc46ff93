// Asking GIO, and launching with it.
#include "DefaultApplication.h"

#include <vector>

namespace handlers {

namespace {

struct Question {
    std::string contentType;
    bool takesAddresses;  ///< it must take URIs that are no files
};

std::vector<Question> questions(const Subject& subject) {
    std::vector<Question> asked;
    if (!subject.contentType.empty()) {
        asked.push_back({subject.contentType, false});
    }
    const auto add = [&](std::initializer_list<const char*> types, bool takesAddresses) {
        for (const char* type : types) {
            asked.push_back({type, takesAddresses});
        }
    };
    switch (subject.kind) {
        case Kind::Folder:
            break;
        case Kind::Video:
            add({"video/*", "video/mp4", "video/x-matroska", "video/mpeg", "video/x-msvideo"},
                false);
            break;
        case Kind::Picture:
            add({"image/*", "image/jpeg", "image/png"}, false);
            break;
        case Kind::Music:
            add({"audio/*", "audio/mpeg", "audio/flac", "audio/x-vorbis+ogg"}, false);
            break;
        case Kind::Camera:
            add({"x-scheme-handler/gphoto2", "inode/directory"}, true);
            break;
    }
    return asked;
}

struct Launch {
    GMainLoop* loop;
    std::string error;
};

void launched(GObject* source, GAsyncResult* result, void* data) {
    auto& launch = *static_cast<Launch*>(data);
    g_autoptr(GError) error = nullptr;
    if (g_app_info_launch_uris_finish(G_APP_INFO(source), result, &error) == FALSE) {
        launch.error = error->message;
    }
    g_main_loop_quit(launch.loop);
}

}  // namespace

Application defaultApplication(const Subject& subject) {
    for (const Question& question : questions(subject)) {
        Application application(g_app_info_get_default_for_type(
            question.contentType.c_str(), question.takesAddresses ? TRUE : FALSE));
        if (application != nullptr) {
            return application;
        }
    }
    return nullptr;
}

std::string open(const Application& application, const Subject& subject) {
    GList* addresses = nullptr;
    for (const std::string& address : subject.addresses) {
        addresses = g_list_append(addresses, const_cast<char*>(address.c_str()));
    }
    // An application that the bus starts is told there, and not if the teller has left meanwhile.
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    Launch launch{loop, ""};
    g_app_info_launch_uris_async(application.get(), addresses, nullptr, nullptr, launched, &launch);
    g_main_loop_run(loop);
    g_list_free(addresses);
    return launch.error;
}

}  // namespace handlers
