// The JSON form of a device: what clients of the bus receive. The format is fixed here, oddities
// included; the object underneath is json_value's, who receives it is the bus service's.
#pragma once

#include <string>

class CMMDeviceInfo;

/// Results of encoding.
enum {
    MM_DEVICE_JSON_DONE = 0,
    MM_DEVICE_JSON_EMPTY = 3  ///< the generated text is empty
};

/// Turns a device and an action into JSON text and back. Keeps no state.
///
/// The product id travels under the key "VendorId" and the vendor id not at all: clients rely on
/// it.
class CMMDeviceJsonUtil {
public:
    /// Encode. Without a device (null) the text holds the action alone.
    int DetailParamToJson(CMMDeviceInfo* pDeviceInfo, int nAction, std::string& strJson);

    /// Decode into `pDeviceInfo`, every field overwritten: 0 and "" where the text has nothing.
    /// `nAction` keeps its value when the text has none, and so does everything when `pDeviceInfo`
    /// is null. A null text is an empty one.
    void JsonToParam(char* pJson, int& nAction, CMMDeviceInfo* pDeviceInfo);
};
