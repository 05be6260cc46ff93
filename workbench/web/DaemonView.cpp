// The daemon's own state: every field of its records by name.
#include "DaemonView.h"

#include "MMDeviceState.h"

namespace workbench {

namespace {

Json deviceOf(const CMMDeviceInfo& device) {
    return Json::object({{"deviceKey", device.GetDeviceKey()},
                         {"class", device.GetClass()},
                         {"subClass", device.GetSubClass()},
                         {"protocol", device.GetProtocol()},
                         {"vendorId", device.GetVendorId()},
                         {"productId", device.GetProductId()},
                         {"bus", device.GetBus()},
                         {"address", device.GetAddress()},
                         {"number", device.GetNumber()},
                         {"diskType", device.GetDiskType()},
                         {"fileSystemType", device.GetFileSystemType()},
                         {"totalSize", device.GetTotalSize()},
                         {"usedSize", device.GetUsedSize()},
                         {"damageFlag", device.GetDamageFlag()},
                         {"usbStorageAddAction", device.GetUsbStorageAddAction()},
                         {"index", device.GetIndex()},
                         {"manufacturer", device.GetManufacturer()},
                         {"product", device.GetProduct()},
                         {"deviceName", device.GetDeviceName()},
                         {"devicePath", device.GetDevicePath()},
                         {"mountpath", device.GetMountpath()},
                         {"serial", device.GetSerial()},
                         {"displayName", device.GetDisplayName()},
                         {"displayNameForNotification", device.GetDisplayNameForNotification()},
                         {"partitionLabel", device.GetPartitionLabel()}});
}

Json keyOf(const CMMDeviceInfo* device) {
    return device == nullptr ? Json() : Json(device->GetDeviceKey());
}

Json scanOf(const _stMMDeviceState& state) {
    constexpr const char* types[] = {"photo", "video", "music"};
    if (state.nScanFileType < 1 || state.nScanFileType > 3) {
        return {};
    }
    return Json::object({{"type", types[state.nScanFileType - 1]},
                         {"fileName", state.strScanFileName},
                         {"filePath", state.strScanFilePath}});
}

}  // namespace

Json DaemonView::devices() {
    _stMMDeviceState state;
    static_cast<void>(MMReadDeviceState(state));
    Json devices = Json::array();
    for (const CMMDeviceInfo* const device : state.vDevices) {
        devices.add(deviceOf(*device));
    }
    return devices;
}

Json DaemonView::daemon() const {
    _stMMDeviceState state;
    const bool running = MMReadDeviceState(state);
    Json clients = Json::array();
    for (const _stMMClientState& client : state.vClients) {
        clients.add(Json::object({{"id", client.nClientId},
                                  {"name", nameOf_(client.strSender)},
                                  {"busName", client.strSender}}));
    }
    Json breaches = Json::array();
    for (const std::string& breach : tv_.journal().breaches()) {
        breaches.add(breach);
    }
    return Json::object(
        {{"running", running},
         {"listening", tv_.ports().listening()},
         {"activated", state.bActivated},
         {"standby", state.bStandby},
         {"notificationKind", state.nNotificationType},
         {"counters", Json::object({{"fat", state.nFatCount},
                                    {"exfat", state.nExFatCount},
                                    {"ext4", state.nExt4Count},
                                    {"ntfs", state.nNtfsCount},
                                    {"cameras", state.nCameraCount}})},
         {"clients", clients},
         {"displayedDevice", keyOf(state.pDisplayedDevice)},
         {"currentDevice", keyOf(state.pCurrentDevice)},
         {"removalNotice", state.bRemovalNotice ? Json(state.strRemovalNotice) : Json()},
         {"scanning", tv_.scanner().running() > 0},
         {"scan", scanOf(state)},
         {"breaches", breaches}});
}

std::string DaemonView::currentNode() {
    _stMMDeviceState state;
    static_cast<void>(MMReadDeviceState(state));
    return state.pCurrentDevice == nullptr ? "" : state.pCurrentDevice->GetDeviceName();
}

std::optional<int> clientIdOf(const std::string& busName) {
    _stMMDeviceState state;
    static_cast<void>(MMReadDeviceState(state));
    for (const _stMMClientState& client : state.vClients) {
        if (client.strSender == busName) {
            return client.nClientId;
        }
    }
    return std::nullopt;
}

}  // namespace workbench
