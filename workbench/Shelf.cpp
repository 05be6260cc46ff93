// What lies ready to be plugged into the TV: its properties, plugging and pulling.
#include "Shelf.h"

#include <memory>

#include <glib.h>

namespace workbench {

void Shelf::addStick(const std::string& folder, const std::string& product) {
    Thing stick;
    stick.name = product;
    stick.folder = folder;
    stick.properties.product = product;
    add(stick);
}

void Shelf::addCamera() {
    Thing camera;
    camera.properties.manufacturer = "Acme";
    camera.properties.product = camera.name = "Camera";
    camera.properties.vendorId = 0x04A9;
    camera.properties.productId = 0x3173;
    add(camera);
}

void Shelf::add(Thing thing) {
    const std::unique_ptr<char, decltype(&g_free)> serial(
        g_strdup_printf("%04zu", things_.size() + 1), g_free);
    thing.properties.serial = serial.get();
    things_.push_back(thing);
    hand_ = things_.size() - 1;
}

void Shelf::plug() {
    Thing& thing = things_[hand_];
    thing.id = thing.folder ? ports_.plug(*thing.folder, thing.properties)
                            : ports_.plugCamera(thing.properties);
    thing.isPlugged = true;
}

void Shelf::pull() {
    Thing& thing = things_[hand_];
    ports_.pull(thing.id);
    thing.isPlugged = false;
}

}  // namespace workbench
