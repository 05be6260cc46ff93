// The sentences of Stories.h.
#include "Stories.h"

#include <algorithm>

#include <glib.h>

namespace {

std::string deviceClassLine(const simulated::UsbDevice& device) {
    return "I Device Class = " + std::to_string(device.usbClass);
}

std::string listAddress(std::size_t listed) {
    return listed == 0 ? "(nil)" : "PTR";
}

GRegex* compiled(const char* pattern) {
    // lines hold bytes of devices, which need not be valid UTF-8
    return g_regex_new(pattern, G_REGEX_RAW, GRegexMatchFlags{}, nullptr);
}

std::string replaced(const std::string& line, const GRegex* pattern, const char* by) {
    g_autofree char* text =
        g_regex_replace_literal(pattern, line.c_str(), static_cast<gssize>(line.size()), 0, by,
                                GRegexMatchFlags{}, nullptr);
    return text;
}

Texts times(std::size_t number, const std::string& line) {
    return Texts(number, line);
}

}  // namespace

Texts plainStory(simulated::SimulatedTv& tv, std::size_t since, int leastPriority) {
    g_autoptr(GRegex) anAddress = compiled("0x[0-9a-f]+");
    g_autoptr(GRegex) sizes = compiled("freespace:[0-9]+ KB,totalspace:[0-9]+ KB");
    Texts story = tv.journal().story(since, leastPriority);
    for (std::string& line : story) {
        line = replaced(line, anAddress, "PTR");
        line = replaced(line, sizes, "freespace:N KB,totalspace:N KB");
    }
    return story;
}

Texts linesOf(const Texts& story, const Texts& wanted) {
    Texts lines;
    std::copy_if(story.begin(), story.end(), std::back_inserter(lines), [&](const auto& line) {
        return std::find(wanted.begin(), wanted.end(), line) != wanted.end();
    });
    return lines;
}

std::string keyOf(const simulated::UsbDevice& device) {
    return (device.usbClass == USB_CLASS_STILL_IMAGE ? device.serial : device.devname).value_or("");
}

std::string scanCall(const std::string& folder) {
    return "csf_check_device_v2(\"" + folder + "\")";
}

Texts searchStory(const std::string& key, const Texts& listedKeys) {
    Texts story = {"I m_pDevList:" + listAddress(listedKeys.size()) + ",strDeviceKey :" + key};
    if (listedKeys.empty()) {
        story.emplace_back("I m_pDevList is null");
        return story;
    }
    for (const std::string& listed : listedKeys) {
        story.emplace_back("I PTR");
        story.push_back("I Device Key:" + listed);
        if (listed == key) {
            story.emplace_back("I Finde device");
            break;
        }
    }
    story.emplace_back("I m_pDevList:PTR");
    return story;
}

Texts fillStory(const simulated::UsbDevice& device, std::size_t listed) {
    const std::string folder = device.mountpath.value_or("");
    Texts story = {"I pUsbDeviceHnd:PTR,pDeviceNode:PTR", deviceClassLine(device),
                   "I Mountpath :" + folder + ",pDeviceNode:PTR"};
    if (!folder.empty()) {
        story.push_back("I Mountpath:" + folder + ",freespace:N KB,totalspace:N KB");
    }
    story.push_back(deviceClassLine(device));
    return joined({story, nameStory(device, listed)});
}

Texts nameStory(const simulated::UsbDevice& device, std::size_t listed) {
    const std::string who = "I Product:" + device.product.value_or("") + " key=" + keyOf(device) +
                            " name=" + device.devname.value_or("");
    return joined({{who + " Device count=" + std::to_string(listed)},
                   times(listed, "I pNode:PTR"),
                   {"I IndexVector size :0, MaxIndex:0", who + " nValidIndex=0"}});
}

Texts insertStory(const simulated::UsbDevice& device, std::size_t listed, int count) {
    return joined({{"I pUsbDeviceHnd:PTR", "I Device Key " + keyOf(device) + " ",
                    "I pcDevName:" + keyOf(device)},
                   times(listed, "I pNode:PTR"),
                   {"I fat Count : " + std::to_string(count), "I m_pDevList:" + listAddress(listed),
                    "I m_pDevList:PTR"}});
}

Texts deleteStory(const simulated::UsbDevice& device, std::size_t listed) {
    const std::string left = "I m_pDevList:" + listAddress(listed - 1);
    return {"I before delete,dev list count is " + std::to_string(listed),
            "I m_pDevList:PTR",
            "I pNode:PTR",
            "I pcDevName:" + keyOf(device),
            "I pNode:PTR",
            "I m_pDevList:PTR",
            left,
            "I after delete,dev list count is " + std::to_string(listed - 1),
            left};
}
