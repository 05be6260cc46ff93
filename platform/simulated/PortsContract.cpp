// The USB library's side of Ports: start and stop, enumeration, walks, and the rules for handles.
// Every handle is looked up before it is touched; what breaks a rule is noted and has no further
// effect.
#include <algorithm>
#include <utility>

#include "SimulatedTv.h"
#include "UsbHandles.h"

namespace simulated {

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

/// How many dead handles are remembered.
constexpr std::size_t RETIRED_HANDLES = 256;

template <class Owners, class Thing>
auto ownerOf(Owners& owners, const Thing* thing) {
    return std::find_if(owners.begin(), owners.end(),
                        [&](const auto& owner) { return owner.get() == thing; });
}

}  // namespace

int Ports::init() {
    running_ = true;
    return OK;
}

int Ports::fini() {
    running_ = false;
    return OK;
}

int Ports::setCallback(usb_connected_callback_fn callback, void* userData) {
    if (callback == nullptr) {
        return ERROR;
    }
    callback_ = callback;
    userData_ = userData;
    return OK;
}

int Ports::unsetCallback() {
    callback_ = nullptr;
    userData_ = nullptr;
    return OK;
}

// ---- enumeration

int Ports::list(int usbClass, usb_device_list_s** out) {
    if (out == nullptr) {
        return ERROR;
    }
    auto list = std::make_unique<usb_device_list_s>();
    for (const Slot& slot : slots_) {
        if (slot.present && slot.device.usbClass == usbClass) {
            list->handles.push_back(makeHandle(slot.device));
        }
    }
    *out = list.get();
    lists_.push_back(std::move(list));
    return OK;
}

usb_device_list_s* Ports::findList(const char* function, const usb_device_list_s* list) {
    const auto found = ownerOf(lists_, list);
    if (found == lists_.end()) {
        tv_.journal().breach(std::string(function) + ": the list is not alive");
        return nullptr;
    }
    return found->get();
}

int Ports::listFirst(usb_device_list_s* list, usb_device_s** out) {
    if (usb_device_list_s* known = findList("usb_device_list_get_first", list)) {
        known->next = 0;
        return listNext(known, out);
    }
    return ERROR;
}

int Ports::listNext(usb_device_list_s* list, usb_device_s** out) {
    usb_device_list_s* known = findList("usb_device_list_get_next", list);
    if (known == nullptr || out == nullptr || known->next >= known->handles.size()) {
        return ERROR;
    }
    *out = known->handles[known->next++].get();
    return OK;
}

int Ports::listFree(usb_device_list_s* list) {
    if (findList("usb_device_free_device_list", list) == nullptr) {
        return ERROR;
    }
    const auto found = ownerOf(lists_, list);
    const std::unique_ptr<usb_device_list_s> dead = std::move(*found);
    lists_.erase(found);
    for (auto& handle : dead->handles) {
        retired_.push_back(std::move(handle));
    }
    return OK;
}

int Ports::forEach(usb_foreach_callback_fn callback, void* userData) {
    if (callback == nullptr) {
        return ERROR;
    }
    for (const DeviceId id : present()) {
        const UsbDevice& device = slot(id).device;
        if (device.usbClass != USB_CLASS_MASS_STORAGE) {
            continue;
        }
        usb_device_s* handle = giveOut(device);
        const bool goOn = callback(handle, userData);
        if (isGivenOut(handle)) {
            tv_.journal().breach("usb_mass_storage_foreach: the handle of " + nameOf(handle) +
                                 " was not freed");
            retire(handle);
        }
        if (!goOn) {
            break;
        }
    }
    return OK;
}

// ---- handles

std::unique_ptr<usb_device_s> Ports::makeHandle(const UsbDevice& device) const {
    return std::make_unique<usb_device_s>(usb_device_s{device});
}

usb_device_s* Ports::giveOut(const UsbDevice& device) {
    handles_.push_back(makeHandle(device));
    return handles_.back().get();
}

bool Ports::isGivenOut(const usb_device_s* handle) const {
    return ownerOf(handles_, handle) != handles_.end();
}

void Ports::retire(usb_device_s* handle) {
    const auto found = ownerOf(handles_, handle);
    retired_.push_back(std::move(*found));
    handles_.erase(found);
    while (retired_.size() > RETIRED_HANDLES) {
        retired_.pop_front();
    }
}

const usb_device_s* Ports::find(const usb_device_s* handle) const {
    if (isGivenOut(handle)) {
        return handle;
    }
    for (const auto& list : lists_) {
        if (ownerOf(list->handles, handle) != list->handles.end()) {
            return handle;
        }
    }
    return nullptr;
}

void Ports::free(usb_device_s* handle) {
    const std::string name = nameOf(handle);
    if (isGivenOut(handle)) {
        retire(handle);
    } else if (find(handle) != nullptr) {
        tv_.journal().breach("free_usb_device_h: " + name + " belongs to a list");
    } else if (ownerOf(retired_, handle) != retired_.end()) {
        tv_.journal().breach("free_usb_device_h: " + name + " was freed before");
    } else {
        tv_.journal().breach("free_usb_device_h: " + name + " is no handle");
    }
}

const UsbDevice* Ports::read(const char* function, usb_device_s* handle) {
    if (const usb_device_s* alive = find(handle)) {
        return &alive->device;
    }
    tv_.journal().breach(std::string(function) + ": the handle of " + nameOf(handle) +
                         " is not alive");
    return nullptr;
}

std::string Ports::nameOf(const usb_device_s* handle) const {
    const usb_device_s* known = find(handle);
    if (known == nullptr && ownerOf(retired_, handle) != retired_.end()) {
        known = handle;
    }
    if (known == nullptr) {
        return handle == nullptr ? "null" : "<unknown>";
    }
    const UsbDevice& device = known->device;
    const auto& name = device.usbClass == USB_CLASS_STILL_IMAGE ? device.serial : device.devname;
    return "<" + name.value_or("") + ">";
}

void Ports::checkLeaks() {
    for (const auto& list : lists_) {
        tv_.journal().breach("usb_device_get_device_list: a list of " +
                             std::to_string(list->handles.size()) + " devices was not freed");
    }
}

}  // namespace simulated
