// The call of StartTransientUnit, org.freedesktop.systemd1(5).
#include "TransientUnit.h"

#include <memory>

#include "Journal.h"
#include "SessionBus.h"

namespace machine {

namespace {

/// A unit's name has at most 255 bytes; so much of an escaped id leaves room for the rest.
constexpr std::size_t LONGEST_ESCAPED_ID = 200;

/// The service manager puts variables in place of "$NAME" in arguments; "$$" is a dollar sign.
std::string withoutVariables(const std::string& argument) {
    std::string plain;
    for (const char byte : argument) {
        plain += byte;
        if (byte == '$') {
            plain += byte;
        }
    }
    return plain;
}

std::string unitName(const std::string& id) {
    g_autofree char* random = g_strdup_printf("%08x%08x", g_random_int(), g_random_int());
    return "app-" + unitNameEscaped(id).substr(0, LONGEST_ESCAPED_ID) + "-" + random + ".service";
}

/// a(sasb): one command, whose failure is the unit's.
GVariant* execStart(const std::vector<std::string>& command) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(sasb)"));
    g_variant_builder_open(&builder, G_VARIANT_TYPE("(sasb)"));
    g_variant_builder_add(&builder, "s", command.front().c_str());
    g_variant_builder_open(&builder, G_VARIANT_TYPE("as"));
    for (const std::string& argument : command) {
        g_autofree char* valid = g_utf8_make_valid(argument.c_str(), -1);
        g_variant_builder_add(&builder, "s", withoutVariables(valid).c_str());
    }
    g_variant_builder_close(&builder);
    g_variant_builder_add(&builder, "b", FALSE);
    g_variant_builder_close(&builder);
    return g_variant_builder_end(&builder);
}

GVariant* properties(const LaunchRequest& request, const DesktopEntry& entry) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(sv)"));
    const auto add = [&](const char* name, GVariant* value) {
        g_variant_builder_add(&builder, "(sv)", name, value);
    };
    const auto addText = [&](const char* name, const std::string& value) {
        add(name, g_variant_new_string(value.c_str()));
    };
    addText("Description", entry.name);
    addText("Slice", "app.slice");
    addText("Type", "exec");
    // What the program leaves behind when it ends is the application all the same.
    addText("ExitType", "cgroup");
    addText("CollectMode", "inactive-or-failed");
    add("ExecStart", execStart(entry.command));
    if (!entry.folder.empty()) {
        addText("WorkingDirectory", entry.folder);
    }
    const std::string variable = request.environmentEntry();
    const char* const environment[] = {variable.c_str()};
    add("Environment", g_variant_new_strv(environment, 1));
    return g_variant_builder_end(&builder);
}

void answered(GObject* source, GAsyncResult* result, void* data) {
    const std::unique_ptr<std::string> id(static_cast<std::string*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) reply =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (reply == nullptr) {
        report(Priority::Warning,
               "the user's service manager did not start '" + *id + "': " + error->message +
                   "; look into his journal (journalctl --user)",
               {{"PORTMELD_APPLICATION", *id}});
    }
}

}  // namespace

std::string unitNameEscaped(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
        const bool plain = g_ascii_isalnum(byte) != FALSE || byte == '_' || byte == ':' ||
                           (byte == '.' && !escaped.empty());
        if (plain) {
            escaped += byte;
        } else {
            g_autofree char* code = g_strdup_printf("\\x%02x", static_cast<unsigned char>(byte));
            escaped += code;
        }
    }
    return escaped;
}

void startUnit(const LaunchRequest& request, const DesktopEntry& entry) {
    GVariant* const parameters[] = {
        g_variant_new_string(unitName(request.applicationId).c_str()),
        g_variant_new_string("fail"),
        properties(request, entry),
        g_variant_new_array(G_VARIANT_TYPE("(sa(sv))"), nullptr, 0),
    };
    g_dbus_connection_call(SessionBus::get().connection(), SERVICE_MANAGER,
                           "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                           "StartTransientUnit",
                           g_variant_new_tuple(parameters, G_N_ELEMENTS(parameters)),
                           G_VARIANT_TYPE("(o)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
                           answered, new std::string(request.applicationId));
}

}  // namespace machine
