// A thin wrapper over one json-glib object: typed members by name, in and out, and its text. What
// the members mean is up to the callers; which device has which members is MMDeviceJsonUtil's.
#pragma once

#include <string>
#include <vector>

#include <json-glib/json-glib.h>

/// One JSON object, made empty or parsed. Failures are a false result and a log line, never an
/// exception. The object is not released by the destructor: the owner calls Destroy() first.
class CMMDeviceJsonValue {
public:
    /// An empty object; to be finished with Destroy(true).
    CMMDeviceJsonValue();

    /// The object that a text holds; to be finished with Destroy(false). Without an object (every
    /// getter and setter then refuses) when the text is no JSON, is nested deeper than 1,000 levels
    /// or holds anything but an object. Bytes behind a NUL are not read.
    explicit CMMDeviceJsonValue(const std::string& strText);

    ~CMMDeviceJsonValue() = default;
    CMMDeviceJsonValue(const CMMDeviceJsonValue&) = delete;
    CMMDeviceJsonValue& operator=(const CMMDeviceJsonValue&) = delete;

    /// Release the object when `bReleaseObject` says so, and the parser with the object that it
    /// owns.
    void Destroy(bool bReleaseObject);

    /// Start over with an empty object. For values that were made empty.
    void Clear();

    // Setters overwrite a member of the same name. Texts are made valid UTF-8. False without an
    // object.

    bool Set(const std::string& strKey, bool bValue);
    bool Set(const std::string& strKey, int nValue);
    bool Set(const std::string& strKey, const std::string& strValue);
    /// A null text is stored as JSON's null.
    bool Set(const std::string& strKey, const char* pValue);
    /// An empty list is refused: it is never stored.
    bool Set(const std::string& strKey, const std::vector<std::string>& vValues);
    /// Takes the array over, unless it is refused.
    bool Set(const std::string& strKey, JsonArray* pArray);

    // Getters leave the out-argument untouched and return false without an object or such a member.
    // A member of another kind reads as json-glib converts it, and as false, 0 or "" where it does
    // not.

    bool Get(const std::string& strKey, bool& bValue);
    bool Get(const std::string& strKey, int& nValue);
    bool Get(const std::string& strKey, std::string& strValue);
    /// Appends the array's texts to what is there, other elements left out. False for a member that
    /// is no array.
    bool Get(const std::string& strKey, std::vector<std::string>& vValues);

    /// Remove a member, if it is there.
    void Remove(const std::string& strKey);

    /// The object as compact JSON; "" on failure.
    std::string ToString();

private:
    void m_CreateObject();
    void m_ReleaseObject();
    void m_ReleaseParser();
    bool m_Refuse(const std::string& strKey);
    JsonNode* m_Member(const std::string& strKey, const char* pOperation);

    JsonObject* m_pJsonObject = nullptr;  // the parser's when there is one
    bool m_bOwnObject = false;            // made here, not by a parser
    JsonParser* m_pJsonParser = nullptr;
};
