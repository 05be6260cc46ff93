// Steps at the ports: plugging, mounting and pulling, with what a person, a disk or a broken library makes
// of it.
#include "Driver.h"

namespace soak {

using simulated::UsbDevice;

namespace {

constexpr int CAMERA_SOCKETS = 3;   // the first ones
constexpr int KEYBOARD_SOCKET = 3;  // after them
constexpr int UNKNOWN_DISK_SOCKET = 4;

const char* PRODUCTS[] = {"Stick", "Stick", "stick", "Flash Disk 3.0", "100 % \"Größe\" \\ %s", ""};

std::string longName() {
    return std::string(300, 'L');
}

}  // namespace

/// A socket that is occupied or not; null when there is none.
Socket* Driver::socket(Chance& chance, bool occupied) {
    const int count = static_cast<int>(sockets_.size());
    const int from = chance.below(count);
    for (int i = 0; i < count; ++i) {
        Socket& socket = sockets_[static_cast<std::size_t>((from + i) % count)];
        if (socket.occupied == occupied) {
            return &socket;
        }
    }
    return nullptr;
}

/// Something is there from now on, without a word.
void Driver::putIn(Chance& chance, Socket& socket) {
    const int number = static_cast<int>(&socket - sockets_.data());
    UsbDevice device;
    device.product = chance.oneIn(20) ? longName() : PRODUCTS[chance.below(6)];
    device.vendorId = chance.oneOf({0x0781, 0x46f4});
    device.productId = chance.oneOf({1, 2});
    device.serial = chance.oneOf({"0001", "0002", "0003", "00010"});
    device.subClass = chance.oneOf({6, 5});
    device.address = number + 1;
    device.number = chance.below(5) + 1;
    device.fileSystem = chance.oneOf({0, 0, 1, 2, 3, 99, 7});
    device.disk = chance.oneOf({0, 1, 2, 1});
    device.devname = "/dev/sd" + std::string(1, static_cast<char>('a' + number)) + "1";
    device.devpath = "/devices/usb1/1-" + std::to_string(number);
    device.manufacturer = chance.oneOf({"Acme", "Ünïversal"});
    if (chance.oneIn(3)) {
        device.partlabel = "HOLIDAY";
        device.manufacturer.reset();
    }
    if (number < CAMERA_SOCKETS) {
        device.usbClass = 6;
        device.subClass = device.protocol = 1;
        device.disk = 99;
        device.fileSystem = chance.oneOf({99, 99, 0});
        device.devname.reset();
        if (chance.oneIn(4)) {
            device.serial.reset();
        } else if (chance.oneIn(4)) {
            device.serial = "/dev/sdf1";  // the key of a stick: one record then becomes the other
        }
    } else if (number == KEYBOARD_SOCKET) {
        device.usbClass = 3;
    } else if (number == UNKNOWN_DISK_SOCKET) {
        device.disk = 99;
    }
    if (socket.id == 0) {
        socket.id = tv_.ports().insert(device);
        tv_.ports().vanish(socket.id);
    }
    tv_.ports().device(socket.id) = device;
    tv_.ports().comeBack(socket.id);
    socket.occupied = true;
    socket.device = device;
    world_.ports[socket.id] = device;
    doing_ += " [" + std::to_string(number) + "] " + device.product.value_or("") + "/" +
              device.serial.value_or("") + " fs " + std::to_string(device.fileSystem);
}

void Driver::takeOut(Socket& socket) {
    tv_.ports().vanish(socket.id);
    socket.occupied = false;
    world_.ports.erase(socket.id);
    doing_ += " [" + std::to_string(&socket - sockets_.data()) + "]";
}

/// An event carries the device as it is when it is announced.
void Driver::announce(Socket& socket, const char* action) {
    tv_.ports().announce(socket.id, action);
    later([this, device = socket.device, action] { model_.usbEvent(device, action); });
    doing_ += std::string(" ") + action;
}

void Driver::setMounted(Chance& chance, Socket& socket) {
    if (socket.device.usbClass != 8) {
        return;
    }
    const int number = chance.below(FOLDERS);
    socket.device.mountpath = folder(number);
    world_.ports[socket.id].mountpath = folder(number);
    tv_.ports().setMounted(socket.id, folder(number));
    doing_ += std::string(" at ") + folderName(number);
}

void Driver::plug(Chance& chance) {
    if (Socket* const free = socket(chance, false)) {
        putIn(chance, *free);
        announce(*free, "added");
    }
}

void Driver::mount(Chance& chance) {
    if (Socket* const taken = socket(chance, true)) {
        setMounted(chance, *taken);
        announce(*taken, "mounted");
    }
}

void Driver::pull(Chance& chance) {
    if (Socket* const taken = socket(chance, true)) {
        takeOut(*taken);
        announce(*taken, "removed");
        ++cycles_;
    }
}

void Driver::plugAndMount(Chance& chance) {
    if (Socket* const free = socket(chance, false)) {
        putIn(chance, *free);
        announce(*free, "added");
        setMounted(chance, *free);
        announce(*free, "mounted");
    }
}

/// Pulled before anything of it was heard.
void Driver::plugMountAndPull(Chance& chance) {
    if (Socket* const free = socket(chance, false)) {
        putIn(chance, *free);
        announce(*free, "added");
        setMounted(chance, *free);
        announce(*free, "mounted");
        takeOut(*free);
        announce(*free, "removed");
        ++cycles_;
    }
}

/// Two partitions, each with a node of its own: every "added", then every "mounted".
void Driver::plugDisk(Chance& chance) {
    Socket& first = sockets_[11];
    Socket& second = sockets_[12];
    if (first.occupied || second.occupied) {
        return;
    }
    putIn(chance, first);
    putIn(chance, second);
    second.device.product = first.device.product;
    second.device.serial = first.device.serial;
    tv_.ports().device(second.id) = second.device;
    world_.ports[second.id] = second.device;
    announce(first, "added");
    announce(second, "added");
    setMounted(chance, first);
    announce(first, "mounted");
    setMounted(chance, second);
    announce(second, "mounted");
}

/// An event that comes again, of a device that may have changed meanwhile.
void Driver::repeatEvent(Chance& chance) {
    if (Socket* const taken = socket(chance, true)) {
        if (chance.oneIn(2)) {
            taken->device.fileSystem = chance.oneOf({0, 1, 2, 3, 99});
            taken->device.product = PRODUCTS[chance.below(6)];
            tv_.ports().device(taken->id) = taken->device;
            world_.ports[taken->id] = taken->device;
            doing_ += " changed";
        }
        announce(*taken, chance.oneOf({"added", "mounted", "changed"}));
    }
}

/// Gone without an event, as when the daemon was not listening.
void Driver::vanish(Chance& chance) {
    if (Socket* const taken = socket(chance, true)) {
        takeOut(*taken);
        ++cycles_;
    }
}

void Driver::pullStranger(Chance& chance) {
    Socket* const free = socket(chance, false);
    if (free != nullptr && free->id != 0) {
        announce(*free, "removed");
    }
}

void Driver::brokenEvent(Chance& chance) {
    Socket* const taken = socket(chance, true);
    if (taken != nullptr && chance.oneIn(2)) {
        tv_.ports().announceNullAction(taken->id);
    } else {
        tv_.ports().announceNullDevice(chance.oneOf({"added", "mounted", "removed"}));
    }
}

}  // namespace soak
