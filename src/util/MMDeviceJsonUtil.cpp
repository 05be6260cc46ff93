// Encoding and decoding of the device JSON, member by member; see MMDeviceJsonUtil.h.
#include "MMDeviceJsonUtil.h"

#include "MMDeviceInfo.h"
#include "MMLogger.h"
#include "MMUtf8.h"
#include "json_value.h"

namespace {

/// A number of a parsed text; 0 when it is missing.
int IntMember(CMMDeviceJsonValue& jsonValue, const char* pKey) {
    int nValue = 0;
    jsonValue.Get(pKey, nValue);
    return nValue;
}

/// A text of a parsed text; "" when it is missing.
std::string TextMember(CMMDeviceJsonValue& jsonValue, const char* pKey) {
    std::string strValue;
    jsonValue.Get(pKey, strValue);
    return strValue;
}

}  // namespace

int CMMDeviceJsonUtil::DetailParamToJson(CMMDeviceInfo* pDeviceInfo,
                                         int nAction,
                                         std::string& strJson) {
    CMMDeviceJsonValue jsonValue;
    MM_INFO("nAction = %d", nAction);
    jsonValue.Set("Action", nAction);
    if (pDeviceInfo != nullptr) {
        jsonValue.Set("Class", pDeviceInfo->GetClass());
        jsonValue.Set("SubClass", pDeviceInfo->GetSubClass());
        jsonValue.Set("Protocol", pDeviceInfo->GetProtocol());
        jsonValue.Set("VendorId", pDeviceInfo->GetVendorId());
        jsonValue.Set("VendorId", pDeviceInfo->GetProductId());  // the one that clients know
        jsonValue.Set("Bus", pDeviceInfo->GetBus());
        jsonValue.Set("Address", pDeviceInfo->GetAddress());
        jsonValue.Set("Number", pDeviceInfo->GetNumber());
        jsonValue.Set("TotalSize", pDeviceInfo->GetTotalSize());
        jsonValue.Set("UsedSize", pDeviceInfo->GetUsedSize());
        jsonValue.Set("Manufacturer", pDeviceInfo->GetManufacturer());
        jsonValue.Set("Product", pDeviceInfo->GetProduct());
        jsonValue.Set("DeviceName", pDeviceInfo->GetDeviceName());
        jsonValue.Set("DevicePath", pDeviceInfo->GetDevicePath());
        jsonValue.Set("Mountpath", pDeviceInfo->GetMountpath());
        jsonValue.Set("FileSystem", pDeviceInfo->GetFileSystemType());
        jsonValue.Set("Serial", pDeviceInfo->GetSerial());
        jsonValue.Set("DisplayName", pDeviceInfo->GetDisplayName());
        jsonValue.Set("DeviceKey", pDeviceInfo->GetDeviceKey());
    }
    strJson = jsonValue.ToString();
    if (strJson.empty()) {
        MM_INFO("Generate request param to string falied\n");
        return MM_DEVICE_JSON_EMPTY;
    }
    jsonValue.Destroy(true);
    return MM_DEVICE_JSON_DONE;
}

void CMMDeviceJsonUtil::JsonToParam(char* pJson, int& nAction, CMMDeviceInfo* pDeviceInfo) {
    MM_DEBUG("");
    if (pDeviceInfo == nullptr) {
        return;
    }
    CMMDeviceJsonValue jsonValue(MMString(pJson));
    pDeviceInfo->SetClass(IntMember(jsonValue, "Class"));
    pDeviceInfo->SetSubClass(IntMember(jsonValue, "SubClass"));
    pDeviceInfo->SetProtocol(IntMember(jsonValue, "Protocol"));
    pDeviceInfo->SetVendorId(IntMember(jsonValue, "VendorId"));
    pDeviceInfo->SetProductId(IntMember(jsonValue, "VendorId"));
    pDeviceInfo->SetBus(IntMember(jsonValue, "Bus"));
    pDeviceInfo->SetAddress(IntMember(jsonValue, "Address"));
    pDeviceInfo->SetNumber(IntMember(jsonValue, "Number"));
    pDeviceInfo->SetTotalSize(IntMember(jsonValue, "TotalSize"));
    pDeviceInfo->SetUsedSize(IntMember(jsonValue, "UsedSize"));
    pDeviceInfo->SetManufacturer(TextMember(jsonValue, "Manufacturer"));
    pDeviceInfo->SetProduct(TextMember(jsonValue, "Product"));
    pDeviceInfo->SetDeviceName(TextMember(jsonValue, "DeviceName"));
    pDeviceInfo->SetDevicePath(TextMember(jsonValue, "DevicePath"));
    pDeviceInfo->SetSerial(TextMember(jsonValue, "Serial"));
    pDeviceInfo->SetMountpath(TextMember(jsonValue, "Mountpath"));
    pDeviceInfo->SetFileSystemType(IntMember(jsonValue, "FileSystem"));
    pDeviceInfo->SetDisplayName(TextMember(jsonValue, "DisplayName"));
    pDeviceInfo->SetDeviceKey(TextMember(jsonValue, "DeviceKey"));
    jsonValue.Get("Action", nAction);
    jsonValue.Destroy(false);
}
