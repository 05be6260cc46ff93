// The record of one attached USB storage device, partition or camera: a plain value that validates
// nothing. Finding out what a device is, and where records live and die, is the device manager's.
#pragma once

#include <string>
#include <utility>

/// One attached device or partition, as the platform described it. Owns its texts and nothing else; keeps
/// the device's bytes as they are.
class CMMDeviceInfo {
public:
    /// A blank record: numbers 0, texts "", flags false.
    CMMDeviceInfo() = default;

    /// A blank record with what m_CopyBaseInfo() takes from `pSrc` (nothing when that is null).
    explicit CMMDeviceInfo(CMMDeviceInfo* pSrc);

    virtual ~CMMDeviceInfo() = default;
    CMMDeviceInfo(const CMMDeviceInfo&) = delete;
    CMMDeviceInfo& operator=(const CMMDeviceInfo&) = delete;

    /// Nothing to do: here so that records are made and ended like the service's other objects.
    bool Create() { return true; }
    void Destroy() {}

    /// Take over what identifies and describes the device behind `pSrc`; see m_CopyBaseInfo().
    bool Create(CMMDeviceInfo* pSrc);

    /// The copy for those who ask for a device: as Create(pSrc), and the display name and the
    /// index.
    bool Copy(CMMDeviceInfo* pSrc);

    void SetDiskType(int nDiskType) { m_nDiskType = nDiskType; }
    void SetIndex(int nIndex) { m_nIndex = nIndex; }
    void SetClass(int nClass) { m_nClass = nClass; }
    void SetSubClass(int nSubClass) { m_nSubClass = nSubClass; }
    void SetProtocol(int nProtocol) { m_nProtocol = nProtocol; }
    void SetVendorId(int nVendorId) { m_nVendorId = nVendorId; }
    void SetProductId(int nProductId) { m_nProductId = nProductId; }
    void SetBus(int nBus) { m_nBus = nBus; }
    void SetAddress(int nAddress) { m_nAddress = nAddress; }
    void SetNumber(int nNumber) { m_nNumber = nNumber; }
    void SetFileSystemType(int nFileSystemType) { m_nFileSystemType = nFileSystemType; }
    void SetTotalSize(int nTotalSize) { m_nTotalSize = nTotalSize; }
    void SetUsedSize(int nUsedSize) { m_nUsedSize = nUsedSize; }
    void SetDamageFlag(bool bDamage) { m_bDamage = bDamage; }
    void SetUsbStorageAddAction(bool bAdded) { m_bUsbStorageAddAction = bAdded; }
    void SetManufacturer(std::string strText) { m_strManufacturer = std::move(strText); }
    void SetProduct(std::string strText) { m_strProduct = std::move(strText); }
    void SetDeviceName(std::string strText) { m_strDeviceName = std::move(strText); }
    void SetDevicePath(std::string strText) { m_strDevicePath = std::move(strText); }
    void SetMountpath(std::string strText) { m_strMountpath = std::move(strText); }
    void SetSerial(std::string strText) { m_strSerial = std::move(strText); }
    void SetDisplayName(std::string strText) { m_strDisplayName = std::move(strText); }
    void SetDisplayNameForNotification(std::string strText) {
        m_strDisplayNameForNotification = std::move(strText);
    }
    void SetPartitionLabel(std::string strText) { m_strPartitionLabel = std::move(strText); }
    void SetDeviceKey(std::string strText) { m_strDeviceKey = std::move(strText); }

    int GetDiskType() const { return m_nDiskType; }
    int GetIndex() const { return m_nIndex; }
    int GetClass() const { return m_nClass; }
    int GetSubClass() const { return m_nSubClass; }
    int GetProtocol() const { return m_nProtocol; }
    int GetVendorId() const { return m_nVendorId; }
    int GetProductId() const { return m_nProductId; }
    int GetBus() const { return m_nBus; }
    int GetAddress() const { return m_nAddress; }
    int GetNumber() const { return m_nNumber; }
    int GetFileSystemType() const { return m_nFileSystemType; }
    int GetTotalSize() const { return m_nTotalSize; }
    int GetUsedSize() const { return m_nUsedSize; }
    bool GetDamageFlag() const { return m_bDamage; }
    bool GetUsbStorageAddAction() const { return m_bUsbStorageAddAction; }
    std::string GetManufacturer() const { return m_strManufacturer; }
    std::string GetProduct() const { return m_strProduct; }
    std::string GetDeviceName() const { return m_strDeviceName; }
    std::string GetDevicePath() const { return m_strDevicePath; }
    std::string GetMountpath() const { return m_strMountpath; }
    std::string GetSerial() const { return m_strSerial; }
    std::string GetDisplayName() const { return m_strDisplayName; }
    std::string GetDisplayNameForNotification() const { return m_strDisplayNameForNotification; }
    std::string GetPartitionLabel() const { return m_strPartitionLabel; }
    std::string GetDeviceKey() const { return m_strDeviceKey; }

    // The same texts without a copy, for walks: `*ppText` becomes the record's own string, lent for
    // the record's life. A null `ppText` is left alone.
    void GetManufacturer(std::string** ppText) { m_Lend(m_strManufacturer, ppText); }
    void GetProduct(std::string** ppText) { m_Lend(m_strProduct, ppText); }
    void GetDeviceName(std::string** ppText) { m_Lend(m_strDeviceName, ppText); }
    void GetDevicePath(std::string** ppText) { m_Lend(m_strDevicePath, ppText); }
    void GetMountpath(std::string** ppText) { m_Lend(m_strMountpath, ppText); }
    void GetSerial(std::string** ppText) { m_Lend(m_strSerial, ppText); }
    void GetDisplayName(std::string** ppText) { m_Lend(m_strDisplayName, ppText); }
    void GetDisplayNameForNotification(std::string** ppText) {
        m_Lend(m_strDisplayNameForNotification, ppText);
    }
    void GetPartitionLabel(std::string** ppText) { m_Lend(m_strPartitionLabel, ppText); }
    void GetDeviceKey(std::string** ppText) { m_Lend(m_strDeviceKey, ppText); }

protected:
    /// Copy everything but the disk type, the flags other than the damage flag, both display names and
    /// the index. False, with nothing changed, for null.
    bool m_CopyBaseInfo(CMMDeviceInfo* pSrc);

private:
    static void m_Lend(std::string& strText, std::string** ppText);

    int m_nDiskType = 0;  // 0 ATA, 1 USB, 2 any other
    int m_nClass = 0;     // 8 mass storage, 6 still image (camera)
    int m_nSubClass = 0;
    int m_nProtocol = 0;
    int m_nVendorId = 0;
    int m_nProductId = 0;
    int m_nBus = 0;
    int m_nAddress = 0;
    int m_nNumber = 0;                           // the USB library's
    int m_nFileSystemType = 0;                   // 0 FAT, 1 exFAT, 2 EXT4, 3 NTFS, 99 unknown
    int m_nTotalSize = 0;                        // KiB
    int m_nUsedSize = 0;                         // KiB
    bool m_bDamage = false;                      // the device or its file system is damaged
    [[maybe_unused]] bool m_bReserved1 = false;  // nothing reads or writes them
    [[maybe_unused]] bool m_bReserved2 = false;
    bool m_bUsbStorageAddAction = false;  // "added" was seen, "mounted" is awaited
    std::string m_strManufacturer;
    std::string m_strProduct;
    std::string m_strDeviceName;  // device node
    std::string m_strDevicePath;
    std::string m_strMountpath;
    std::string m_strSerial;
    std::string m_strDisplayName;  // in lists
    std::string m_strDisplayNameForNotification;
    std::string m_strPartitionLabel;
    std::string m_strDeviceKey;  // identity across events
    int m_nIndex = 0;            // number behind equal display names
};
