// Building, reading and printing one JSON object with json-glib; see json_value.h. Every call to
// the library is one that it takes without complaint: what a member is gets tested before it is
// read.
#include "json_value.h"

#include <cstring>

#include "MMLogger.h"
#include "MMUtf8.h"

namespace {

/// Parsing is recursive: a text with more levels than this could exhaust the stack.
constexpr int DEEPEST_LEVEL = 1000;

/// The code unit of the escape "\uXXXX" at `pEscape`; -1 when there is none, or an incomplete one.
int CodeUnit(const char* pEscape) {
    if (pEscape[0] != '\\' || pEscape[1] != 'u') {
        return -1;
    }
    int nUnit = 0;
    for (int i = 2; i < 6; ++i) {
        const int nDigit = g_ascii_xdigit_value(pEscape[i]);
        if (nDigit < 0) {
            return -1;
        }
        nUnit = nUnit * 16 + nDigit;
    }
    return nUnit;
}

bool IsHighSurrogate(int nUnit) {
    return nUnit >= 0xd800 && nUnit <= 0xdbff;
}

bool IsLowSurrogate(int nUnit) {
    return nUnit >= 0xdc00 && nUnit <= 0xdfff;
}

/// The last byte of the escape at `pEscape`. Null for an escape that stands for no character: json-glib
/// swallows what follows it, the closing quote included, so that no one could say where the string ends.
const char* EndOfEscape(const char* pEscape) {
    if (pEscape[1] == '\0') {
        return nullptr;
    }
    if (pEscape[1] != 'u') {
        return pEscape + 1;
    }
    const int nUnit = CodeUnit(pEscape);
    if (nUnit < 0 || IsLowSurrogate(nUnit)) {
        return nullptr;
    }
    if (!IsHighSurrogate(nUnit)) {
        return pEscape + 5;
    }
    return IsLowSurrogate(CodeUnit(pEscape + 6)) ? pEscape + 11 : nullptr;
}

/// The closing quote of the string that opens at `pQuote`; null when it has none, or a senseless escape.
/// Only double quotes know escapes.
const char* EndOfString(const char* pQuote) {
    for (const char* p = pQuote + 1; *p != '\0'; ++p) {
        if (*p == *pQuote) {
            return p;
        }
        if (*pQuote == '"' && *p == '\\') {
            p = EndOfEscape(p);
            if (p == nullptr) {
                return nullptr;
            }
        }
    }
    return nullptr;
}

/// Whether a text can be handed to the parser: none of its strings lacks its end, it opens no more
/// levels of arrays and objects than are parsed, and no value stands before its array or object (json-glib
/// takes the last of several values and never frees the others). Reads strings and comments as
/// json-glib's scanner does: it takes single quotes too, and for a comment whatever stands between two
/// slashes.
bool IsParsable(const char* pText) {
    int nLevel = 0;
    char cBefore = '\0';  // the last byte outside of blanks and comments
    for (const char* p = pText; *p != '\0'; ++p) {
        switch (*p) {
            case '"':
            case '\'':
                p = EndOfString(p);
                break;
            case '/':
                p = std::strchr(p + 1, '/');
                if (p == nullptr) {
                    return true;  // the rest is no comment and no JSON: the parser refuses it
                }
                continue;
            case '[':
            case '{':
                if (nLevel == 0 && cBefore != '\0' && cBefore != '=') {
                    return false;
                }
                if (++nLevel > DEEPEST_LEVEL) {
                    return false;
                }
                break;
            case ']':
            case '}':
                nLevel -= nLevel > 0 ? 1 : 0;
                break;
            default:
                break;
        }
        if (p == nullptr) {
            return false;
        }
        cBefore = g_ascii_isspace(*p) != FALSE ? cBefore : *p;
    }
    return true;
}

/// Whether a node can be asked for a boolean, a number or a text.
bool IsScalar(JsonNode* pNode) {
    return JSON_NODE_HOLDS_VALUE(pNode) || JSON_NODE_HOLDS_NULL(pNode);
}

/// The text of a node; null when it holds none.
const char* TextOf(JsonNode* pNode) {
    return IsScalar(pNode) ? json_node_get_string(pNode) : nullptr;
}

}  // namespace

CMMDeviceJsonValue::CMMDeviceJsonValue() {
    m_CreateObject();
}

CMMDeviceJsonValue::CMMDeviceJsonValue(const std::string& strText) {
    MM_INFO("str:%s", strText.c_str());
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    g_type_init();
    G_GNUC_END_IGNORE_DEPRECATIONS

    m_pJsonParser = json_parser_new();
    if (m_pJsonParser == nullptr) {
        MM_WARN("----------json parser create error-----------\n");
        return;
    }
    MM_INFO("m_pJsonParser:%p", static_cast<void*>(m_pJsonParser));
    const char* pText = strText.c_str();
    if (!IsParsable(pText) || !json_parser_load_from_data(m_pJsonParser, pText, -1, nullptr)) {
        MM_WARN("----------json parser load data error-----------\n");
        m_ReleaseParser();
        return;
    }
    JsonNode* pRoot = json_parser_get_root(m_pJsonParser);
    if (pRoot == nullptr || !JSON_NODE_HOLDS_OBJECT(pRoot)) {
        MM_WARN("----------json object create error-----------\n");
        m_ReleaseParser();
        return;
    }
    m_pJsonObject = json_node_get_object(pRoot);
    MM_INFO("m_pJsonParser:%p", static_cast<void*>(m_pJsonParser));
}

void CMMDeviceJsonValue::Destroy(bool bReleaseObject) {
    if (m_pJsonObject != nullptr && bReleaseObject) {
        MM_INFO("unref JsonObject");
        m_ReleaseObject();
    }
    if (m_pJsonParser != nullptr) {
        MM_INFO("m_pJsonParser:%p", static_cast<void*>(m_pJsonParser));
        m_ReleaseParser();
    }
}

void CMMDeviceJsonValue::Clear() {
    if (m_pJsonObject != nullptr) {
        MM_INFO("----------unref-----------\n");
        m_ReleaseObject();
    }
    m_pJsonParser = nullptr;
    m_CreateObject();
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, bool bValue) {
    if (m_pJsonObject == nullptr) {
        return m_Refuse(strKey);
    }
    json_object_set_boolean_member(m_pJsonObject, strKey.c_str(), bValue);
    return true;
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, int nValue) {
    if (m_pJsonObject == nullptr) {
        return m_Refuse(strKey);
    }
    json_object_set_int_member(m_pJsonObject, strKey.c_str(), nValue);
    return true;
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, const std::string& strValue) {
    if (m_pJsonObject == nullptr) {
        return m_Refuse(strKey);
    }
    json_object_set_string_member(m_pJsonObject, strKey.c_str(), MMJsonUtf8(strValue).c_str());
    return true;
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, const char* pValue) {
    if (m_pJsonObject != nullptr && pValue == nullptr) {
        json_object_set_null_member(m_pJsonObject, strKey.c_str());
        return true;
    }
    return Set(strKey, std::string(pValue != nullptr ? pValue : ""));
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, const std::vector<std::string>& vValues) {
    if (m_pJsonObject == nullptr || vValues.empty()) {
        return m_Refuse(strKey);
    }
    JsonArray* pArray = json_array_new();
    if (pArray == nullptr) {
        MM_INFO("Error!!! json_array_new fail..\n");
        return false;
    }
    for (const std::string& strValue : vValues) {
        json_array_add_string_element(pArray, MMJsonUtf8(strValue).c_str());
    }
    json_object_set_array_member(m_pJsonObject, strKey.c_str(), pArray);
    return true;
}

bool CMMDeviceJsonValue::Set(const std::string& strKey, JsonArray* pArray) {
    if (m_pJsonObject == nullptr || pArray == nullptr) {
        MM_INFO("!m_pJsonObject || !array");
        return false;
    }
    json_object_set_array_member(m_pJsonObject, strKey.c_str(), pArray);
    return true;
}

bool CMMDeviceJsonValue::Get(const std::string& strKey, bool& bValue) {
    JsonNode* pMember = m_Member(strKey, "get");
    if (pMember == nullptr) {
        return false;
    }
    bValue = IsScalar(pMember) && json_node_get_boolean(pMember);
    return true;
}

bool CMMDeviceJsonValue::Get(const std::string& strKey, int& nValue) {
    JsonNode* pMember = m_Member(strKey, "get");
    if (pMember == nullptr) {
        return false;
    }
    nValue = IsScalar(pMember) ? static_cast<int>(json_node_get_int(pMember)) : 0;
    return true;
}

bool CMMDeviceJsonValue::Get(const std::string& strKey, std::string& strValue) {
    JsonNode* pMember = m_Member(strKey, "get");
    if (pMember == nullptr) {
        return false;
    }
    const char* pText = TextOf(pMember);
    strValue = pText != nullptr ? pText : "";
    return true;
}

bool CMMDeviceJsonValue::Get(const std::string& strKey, std::vector<std::string>& vValues) {
    JsonNode* pMember = m_Member(strKey, "set");
    if (pMember == nullptr) {
        return false;
    }
    if (!JSON_NODE_HOLDS_ARRAY(pMember)) {
        MM_WARN("Error!!! json_array_new fail..\n");
        return false;
    }
    JsonArray* pArray = json_node_get_array(pMember);
    const unsigned nLength = json_array_get_length(pArray);
    for (unsigned i = 0; i < nLength; ++i) {
        if (const char* pText = TextOf(json_array_get_element(pArray, i))) {
            vValues.emplace_back(pText);
        }
    }
    return true;
}

void CMMDeviceJsonValue::Remove(const std::string& strKey) {
    if (m_pJsonObject != nullptr) {
        json_object_remove_member(m_pJsonObject, strKey.c_str());
    }
}

std::string CMMDeviceJsonValue::ToString() {
    if (m_pJsonObject == nullptr) {
        return "";
    }
    g_autoptr(JsonGenerator) pGenerator = json_generator_new();
    if (pGenerator == nullptr) {
        MM_WARN("Error!!! json_generator_new.\n");
        return "";
    }
    g_autoptr(JsonNode) pNode = json_node_new(JSON_NODE_OBJECT);
    if (pNode == nullptr) {
        MM_WARN("Error!!! json_node_new.\n");
        return "";
    }
    json_node_set_object(pNode, m_pJsonObject);
    json_generator_set_root(pGenerator, pNode);
    g_autofree char* pText = json_generator_to_data(pGenerator, nullptr);
    return pText != nullptr ? pText : "";
}

void CMMDeviceJsonValue::m_CreateObject() {
    m_bOwnObject = true;
    m_pJsonObject = json_object_new();
    if (m_pJsonObject == nullptr) {
        MM_INFO("----------json object create error-----------\n");
    }
}

/// Let the object go; a parser's stays the parser's.
void CMMDeviceJsonValue::m_ReleaseObject() {
    if (m_bOwnObject) {
        json_object_unref(m_pJsonObject);
    }
    m_pJsonObject = nullptr;
}

/// Let the parser go; an object that came from it goes with it.
void CMMDeviceJsonValue::m_ReleaseParser() {
    g_clear_object(&m_pJsonParser);
    m_pJsonObject = nullptr;
}

bool CMMDeviceJsonValue::m_Refuse(const std::string& strKey) {
    MM_WARN("Error!!! set fail. jsonvalue is invalid type[%s].\n", strKey.c_str());
    return false;
}

/// The member that a getter is after; null, and said so, when there is none.
JsonNode* CMMDeviceJsonValue::m_Member(const std::string& strKey, const char* pOperation) {
    MM_INFO("key :%s,m_pJsonObject:%p", strKey.c_str(), static_cast<void*>(m_pJsonObject));
    if (m_pJsonObject == nullptr) {
        MM_WARN("Error!!! %s fail. jsonvalue is invalid type[%s].\n", pOperation, strKey.c_str());
        return nullptr;
    }
    JsonNode* pMember = json_object_get_member(m_pJsonObject, strKey.c_str());
    if (pMember == nullptr) {
        MM_WARN("there is no field: \"%s\" in the json object.", strKey.c_str());
    }
    return pMember;
}
