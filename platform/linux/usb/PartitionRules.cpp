// Partition types and attributes, by the UEFI standard (GPT) and the customs of the PC (MBR).
#include "PartitionRules.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace machine {

namespace {

/// GPT partition type GUIDs, in the spelling of blkid.
constexpr std::array<std::string_view, 7> SERVICE_GUIDS = {
    "c12a7328-f81f-11d2-ba4b-00a0c93ec93b",  // EFI system
    "e3c9e316-0b5c-4db8-817d-f92df00215ae",  // Microsoft reserved
    "de94bba4-06d1-4d40-a16a-bfd50179d6ac",  // Windows recovery environment
    "21686148-6449-6e6f-744e-656564454649",  // BIOS boot
    "426f6f74-0000-11aa-aa11-00306543ecac",  // Apple boot (recovery)
    "5265636f-7665-11aa-aa11-00306543ecac",  // Apple recovery
    "bfbfafe7-a34f-448a-9a5b-6213eb736c22",  // a maker's recovery
};

/// MBR partition types, in the spelling of blkid.
constexpr std::array<std::string_view, 14> SERVICE_TYPES = {
    "0x5",  "0xf",  "0x85",                                  // extended: frames of other partitions
    "0x11", "0x14", "0x16", "0x17", "0x1b", "0x1c", "0x1e",  // hidden FAT and NTFS
    "0x12", "0x27",                                          // diagnostics, recovery
    "0xee", "0xef",                                          // GPT protection, EFI system
};

/// GPT attributes: UEFI's "required partition", Microsoft's "hidden" and "no drive letter".
constexpr unsigned long long HIDDEN_ATTRIBUTES = 1ULL << 0 | 1ULL << 62 | 1ULL << 63;

/// Images of optical discs mark their only partition as hidden NTFS, for firmware that is easily misled.
bool isDiscImage(const UdevProperty& property) {
    const std::string fileSystem = property("ID_FS_TYPE");
    return fileSystem == "iso9660" || fileSystem == "udf";
}

bool isServicePartition(const UdevProperty& property) {
    const std::string type = property("ID_PART_ENTRY_TYPE");
    const std::string scheme = property("ID_PART_ENTRY_SCHEME");
    if (scheme == "mac") {
        // Apple's old tables list themselves and the drivers beside the file systems.
        return type == "Apple_partition_map" || type.compare(0, 12, "Apple_Driver") == 0;
    }
    if (scheme != "gpt") {
        if (isDiscImage(property)) {
            return false;
        }
        return std::find(SERVICE_TYPES.begin(), SERVICE_TYPES.end(), type) != SERVICE_TYPES.end();
    }
    const unsigned long long attributes =
        std::strtoull(property("ID_PART_ENTRY_FLAGS").c_str(), nullptr, 16);
    return (attributes & HIDDEN_ATTRIBUTES) != 0 ||
           std::find(SERVICE_GUIDS.begin(), SERVICE_GUIDS.end(), type) != SERVICE_GUIDS.end();
}

}  // namespace

bool isForViewers(const UdevProperty& property) {
    const std::string ignored = property("UDISKS_IGNORE");
    if (ignored == "1" || strcasecmp(ignored.c_str(), "true") == 0) {
        return false;
    }
    if (property("DEVTYPE") == "partition") {
        return !isServicePartition(property);
    }
    return property("ID_PART_TABLE_TYPE").empty() && property("ID_FS_USAGE") == "filesystem";
}

}  // namespace machine
