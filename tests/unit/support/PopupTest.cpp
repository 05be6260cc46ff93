// The fixture of PopupTest.h.
#include "PopupTest.h"

Texts PopupTest::shown() {
    Texts popups;
    for (const simulated::Popup& popup : tv.screen().history()) {
        popups.push_back(std::to_string(popup.itemType) + " " + popup.title.value_or("(none)"));
    }
    return popups;
}

simulated::DeviceId PopupTest::plugProduct(const std::string& product, const std::string& serial) {
    simulated::UsbDevice stick;
    stick.product = product;
    stick.serial = serial;
    return plug(stick);
}

simulated::DeviceId PopupTest::plugCamera(const std::string& product, const std::string& serial) {
    simulated::UsbDevice camera;
    camera.product = product;
    camera.serial = serial;
    camera.fileSystem = USB_FILESYSTEM_UNKNOWN;
    const simulated::DeviceId id = tv.ports().plugCamera(camera);
    tv.settle();
    return id;
}

void PopupTest::replug(simulated::DeviceId stick) {
    tv.ports().announce(stick, "added");
    tv.ports().announce(stick, "mounted");
    tv.settle();
}

void PopupTest::reportScan(const std::string& json) {
    tv.scanner().report(CSF_EVENT_SINGLE_MEDIA, json.c_str());
    tv.settle();
}

void PopupTest::press(int button) {
    tv.screen().press(button);
    tv.settle();
}

void PopupTest::hide() {
    tv.screen().hide();
    tv.settle();
}

void PopupTest::timeOut() {
    tv.screen().timeOut();
    tv.settle();
}

void PopupTest::companionRuns(bool running) {
    tv.applications().setRunning("org.norvane.lumet", running);
}

std::string PopupTest::videoJson(const std::string& name) {
    return R"({"MEDIA_TYPE":3,"DISPLAY_NAME":)" + quotedJson(name) + R"(,"FILE_PATH":)" +
           quotedJson("/mnt/" + name) + R"(,"MODIFIED_TIME":86400})";
}

std::string PopupTest::quotedJson(const std::string& text) {
    g_autoptr(JsonNode) node = json_node_init_string(json_node_alloc(), text.c_str());
    g_autofree char* json = json_to_string(node, FALSE);
    return json;
}
