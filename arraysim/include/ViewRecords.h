#pragma once
// What the view and query tools report, one plain struct per kind of object.
// Numbers that the array shows in hexadecimal are kept as numbers here and
// formatted by the document builders; capacities are in bytes; times are
// seconds since the epoch, 0 when the time does not apply. Every other value
// is the array's own text.
//
// The records are filled from the simulator's state (ViewTools) and the
// builders (ViewCommand, ReplicaQueryCommand, SnapshotQueryCommand) turn them
// into documents.

#include <cstdint>
#include <string>
#include <vector>

namespace arraysim {

struct AdminPortRecord {
    std::string ipv4;
    std::string ipv6;
};

struct BaseProductRecord {
    std::string name;
    std::string version;
    std::string revision;
    std::string additionalData;
};

struct ArrayRecord {
    std::string diskArrayName;
    std::string resourceState;
    std::string monitoring;
    std::string vendorId;
    std::string productId;
    std::string productFwRevision;
    std::string serialNumber;
    std::string saa;
    std::string worldWideName;
    int numberOfDe = 0;
    std::string userSystemCode;
    std::string storageControlSoftwareRevision;
    std::string configurationChange;
    std::string unitName;
    std::string unitContact;
    std::string unitLocation;
    std::string floatingIpv4;
    std::string floatingIpv6;
    std::vector<AdminPortRecord> adminPorts;
    int maxLdNumOfTarget = 0;
    int maxNumOfTarget = 0;
    int maxLdNumOfOwnerId = 0;
    std::vector<BaseProductRecord> baseProducts;
    std::string accessControlMode;  // "on" or "off"
};

struct ControllerRecord {
    unsigned number = 0;
    std::string type;
    std::string state;
    std::string protocol;  // "FC", "iSCSI", "SAS"
};

struct IscsiSessionRecord {
    std::string session;
    std::string initiatorName;
    std::string initiatorAlias;
    std::string targetName;
    std::string targetAlias;
    std::string targetPortalGroupTag;
    std::string authenticationMethod;
    std::string headerDigest;
    std::string dataDigest;
    std::string maxConnections;
    std::string maxBurstLength;
    std::string firstBurstLength;
    std::string targetMaxRecvDataSegmentLength;
    std::vector<std::string> initiatorMaxRecvDataSegmentLengths;  // at most 8
    std::string defaultTime2Wait;
    std::string defaultTime2Retain;
    std::string maxOutstandingR2T;
    std::string errorRecoveryLevel;
    std::string sessionStatusFlag;
};

struct PortRecord {
    unsigned director = 0;  // first group of "Port No.(h)"
    unsigned port = 0;      // second group
    std::string portName;
    std::string portType;
    std::string protocol;   // "FC", "iSCSI", "SAS"
    std::string state;
    unsigned hpeNo = 0;
    std::string mode;       // "WWN" or "Port"
    std::string wwnn;
    std::vector<std::string> wwpns;      // FC and SAS; SAS ports list up to 4
    std::vector<std::string> dataRates;  // current rates; one for FC, up to 4 for SAS
    std::string savedDataRate;
    std::string topology;
    std::string nPortIdSwitch;
    std::string loginErrorCode;
    std::string physicalPortMaint;
    // iSCSI
    std::string ipAddress;
    std::string subnetMask;
    std::string defaultGateway;
    std::string ipv6Address;
    std::string defaultRouter;
    int mtu = 0;
    std::string linkSpeedSetting;
    std::string linkSpeedCurrent;
    std::string linkStatus;
    std::string macAddress;
    std::vector<IscsiSessionRecord> sessions;
};

// One enclosure component; the back board carries the disk layout as well.
struct EnclosureRecord {
    enum class Kind { Adapter, BackBoard, Fan, PowerSupply, Temperature };
    Kind kind = Kind::Fan;
    std::string type;
    std::string abbreviatedName;
    unsigned deNumber = 0;
    unsigned number = 0;
    unsigned nodeNo = 0;
    std::string state;
    unsigned code = 0;
    int maximumPds = 0;
    int verticalPds = 0;
    int horizontalPds = 0;
    std::string insertDirection;
    std::string deType;
};

struct DiskRecord {
    unsigned group = 0;   // "PDN(h)" is group-number
    unsigned number = 0;
    std::string classification;  // "not set", "pool", "spare", ...
    unsigned rankGroup = 0;
    std::string state;
    std::uint64_t capacity = 0;
    std::string rotationalSpeed;
    unsigned nodeNo = 0;
    std::string type;  // "SAS", "NLSAS", "SSD"
    std::string vendorId;
    std::string productId;
    std::string productRevision;
    std::string serialNumber;
    std::string configurationChange;
    std::string transferRate;
};

struct PoolRecord {
    unsigned number = 0;
    std::string name;
    std::string poolType;  // "dynamic" or "virtual"
    std::string raidType;  // e.g. "RAID6/60(4+PQ)"
    int numberOfRaid5s = 0;
    unsigned nodeNo = 0;
    std::string pdType;
    std::string state;
    std::string expansionState;
    std::string expansion;
    std::string rearrangement;
    std::string progressRatio;
    int rebuildTime = 0;
    int expansionTime = 0;
    std::string rearrangingMode;
    std::uint64_t capacity = 0;
    std::uint64_t usedCapacity = 0;
    std::string configurationSetting;
    unsigned noBpd = 0;     // the bit set reported as "NoBPD"
    int stripSizeCode = 1;  // "Strip Size": 1 is 64 KiB, each step doubles
    // Virtual pools only.
    std::uint64_t actualCapacity = 0;
    std::uint64_t actualUsedCapacity = 0;
    std::string threshold;
    int actualCapacityThreshold = 0;
};

struct LdRecord {
    unsigned number = 0;
    std::string name;
    std::uint64_t capacity = 0;
    unsigned poolNumber = 0;
    std::string poolName;
    std::string raidType;
    std::string pdType;
    std::string state;
    std::string group;
    std::string purpose;            // "---", "RPL", "Snapshot", "RPL/Snapshot", ...
    std::string rplAttribute;       // "MV", "RV", "RV/MV" or "---"
    std::string snapshotAttribute;  // "BV", "SV", "SDV" or "---"
    std::string osType;
    std::string defaultOwner;
    std::string currentOwner;
    std::string accessMode;
    // On virtual pools only.
    bool onVirtualPool = false;
    std::string threshold;
    std::uint64_t actualUsedCapacity = 0;
};

struct LunRecord {
    unsigned lun = 0;
    unsigned ldn = 0;
};

struct LdSetRecord {
    enum class Kind { Fc, Iscsi, Sas, Old };
    Kind kind = Kind::Fc;
    std::string platform;
    std::string name;
    std::string configurationChange;
    std::string actionMode;
    std::string targetMode;
    std::string targetName;
    std::string authenticationMethod;
    std::vector<std::string> portals;
    std::vector<std::string> paths;       // FC and SAS: WWPN or port paths
    std::vector<std::string> initiators;  // iSCSI
    std::vector<LunRecord> luns;
};

struct PairRecord {
    std::string mvName;
    unsigned mvNumber = 0;
    std::string rvName;
    unsigned rvNumber = 0;
    std::string syncState;         // "rpl/exec", "rpl/sync", "separated", ...
    std::string copyControlState;  // "foreground copy", "background copy", "suspend", ...
    long long startTime = 0;
    long long endTime = 0;
    bool forcedSeparate = false;
    std::string previousActive;
    std::string copyDiff;
    std::string separateDiff;
    std::string rvAccess;
    std::string connection;
};

struct GenerationRecord {
    unsigned number = 0;
    std::string name;
    std::string type;  // "SV"
    int generation = 0;
    std::string generationAttribute;
    std::string snapState;
    long long creationTime = 0;
    long long startTime = 0;
    std::uint64_t processingDataSize = 0;
    std::uint64_t snapshotDataSize = 0;  // bytes; shown with a unit
    std::string linkStatus;
};

struct SnapshotBaseRecord {
    unsigned number = 0;
    std::string name;
    std::string type;  // "BV"
    std::string specialFile;
    std::string state;
    std::string reserveArea;
    std::vector<GenerationRecord> generations;
};

struct ViewRecords {
    ArrayRecord array;
    std::vector<ControllerRecord> controllers;
    std::vector<PortRecord> ports;
    std::vector<EnclosureRecord> enclosure;
    std::vector<DiskRecord> disks;
    std::vector<PoolRecord> pools;
    std::vector<LdRecord> lds;
    std::vector<LdSetRecord> ldSets;
    std::vector<PairRecord> pairs;
    std::vector<SnapshotBaseRecord> snapshots;
};

}  // namespace arraysim
