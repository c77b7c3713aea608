#pragma once
// The whole simulated array as plain structs, kept in one JSON document.
// Numbers the array shows in hexadecimal (LD, pool, disk numbers, ...) are
// numbers here; capacities are bytes; times are seconds since the epoch
// (0: does not apply). Other values are the array's own texts.
//
// The state has two sides, each with its generation counter: the physical
// side (identity, controllers, ports, enclosure, disks) and the logical side
// (pools, LDs, LD sets, pairs, snapshots, reserve areas, names). StateStore
// moves a counter whenever the JSON of its side changes.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace arraysim {

struct AdminPort {
    std::string ipv4;
    std::string ipv6;
};

struct BaseProduct {
    std::string name;
    std::string version;
    std::string revision;
    std::string additionalData;
};

struct Identity {
    std::string diskArrayName;
    std::string resourceState = "ready";
    std::string monitoring = "running";
    std::string vendorId;
    std::string productId;
    std::string productFwRevision;
    std::string serialNumber;
    std::string saa;
    std::string worldWideName;  // 16 hexadecimal digits
    int numberOfDe = 1;
    std::string userSystemCode;
    std::string storageControlSoftwareRevision;
    std::string configurationChange = "enable";
    std::string unitName;
    std::string unitContact;
    std::string unitLocation;
    std::string floatingIpv4;
    std::string floatingIpv6;
    std::vector<AdminPort> adminPorts;
    int maxLdNumOfTarget = 0;
    int maxNumOfTarget = 0;
    int maxLdNumOfOwnerId = 0;
    std::vector<BaseProduct> baseProducts;
    bool accessControl = false;
};

struct Controller {
    unsigned number = 0;
    std::string type = "HD";
    std::string state = "ready";
    std::string protocol;  // "FC", "iSCSI", "SAS"
};

struct IscsiSession {
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
    std::vector<std::string> initiatorMaxRecvDataSegmentLengths;
    std::string defaultTime2Wait;
    std::string defaultTime2Retain;
    std::string maxOutstandingR2T;
    std::string errorRecoveryLevel;
    std::string sessionStatusFlag;
};

struct Port {
    unsigned director = 0;  // the controller the port sits on
    unsigned port = 0;
    std::string portName;
    std::string portType;
    std::string protocol;  // "FC", "iSCSI", "SAS"
    std::string state = "ready";
    unsigned hpeNo = 0;
    std::string mode = "WWN";  // "WWN" or "Port"
    std::string wwnn;
    std::vector<std::string> wwpns;
    std::vector<std::string> dataRates;
    std::string savedDataRate;
    std::string topology;
    std::string nPortIdSwitch;
    std::string loginErrorCode;
    std::string physicalPortMaint;
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
    std::vector<IscsiSession> sessions;
};

struct EnclosureComponent {
    std::string kind;  // "adapter", "backboard", "fan", "power", "temperature"
    std::string type;
    std::string abbreviatedName;
    unsigned deNumber = 0;
    unsigned number = 0;
    unsigned nodeNo = 0;
    std::string state = "ready";
    unsigned code = 0;
    int maximumPds = 0;
    int verticalPds = 0;
    int horizontalPds = 0;
    std::string insertDirection;
    std::string deType;
};

struct Disk {
    unsigned group = 0;
    unsigned number = 0;
    std::string classification = "not set";  // "not set", "pool", "spare"
    int poolNumber = -1;                      // -1: in no pool
    unsigned rankGroup = 0;
    std::string state = "ready";
    std::uint64_t capacity = 0;
    std::string rotationalSpeed;
    unsigned nodeNo = 0;
    std::string type;  // "SAS", "NLSAS", "SSD"
    std::string vendorId;
    std::string productId;
    std::string productRevision;
    std::string serialNumber;
    std::string configurationChange = "enable";
    std::string transferRate;
};

struct Pool {
    unsigned number = 0;
    std::string name;
    std::string poolType = "dynamic";  // "dynamic" or "virtual"
    std::string raidType;               // e.g. "RAID6/60(4+PQ)"
    int numberOfRaid5s = 0;
    unsigned nodeNo = 0;
    std::string pdType;
    std::string state = "ready";
    std::string expansionState = "---";
    std::string expansion = "---";
    std::string rearrangement = "---";
    std::string progressRatio = "---";
    int rebuildTime = 0;
    int expansionTime = 0;
    std::string rearrangingMode = "---";
    std::uint64_t capacity = 0;
    std::uint64_t usedCapacity = 0;
    std::string configurationSetting = "enable";
    unsigned noBpd = 0;  // base disk count as the bit set the array reports
    int baseDisks = 0;   // disks in the pool's base (the rest expand it)
    int stripSizeCode = 1;
    std::vector<std::string> disks;  // "gg-nnnn" hexadecimal, as members
    // Virtual pools only.
    std::uint64_t actualCapacity = 0;
    std::uint64_t actualUsedCapacity = 0;
    std::string threshold = "---";
    int actualCapacityThreshold = 0;
};

struct LogicalDisk {
    unsigned number = 0;
    std::string name;
    std::uint64_t capacity = 0;
    unsigned poolNumber = 0;
    std::string state = "ready";
    std::string group = "---";
    std::string purpose = "---";
    std::string rplAttribute = "---";
    std::string snapshotAttribute = "---";
    std::string osType = "LX";
    std::string defaultOwner;
    std::string currentOwner;
    std::string accessMode = "ReadWrite";
    std::string threshold = "---";
    std::uint64_t actualUsedCapacity = 0;
};

struct LunMapping {
    unsigned lun = 0;
    unsigned ldn = 0;
};

struct LdSet {
    std::string kind = "fc";  // "fc", "iscsi", "sas", "old"
    std::string platform = "LX";
    std::string name;
    std::string configurationChange = "enable";
    std::string actionMode = "---";
    std::string targetMode = "---";
    std::string targetName;
    std::string authenticationMethod;
    std::vector<std::string> portals;
    std::vector<std::string> paths;
    std::vector<std::string> initiators;
    std::vector<LunMapping> luns;
};

struct ReplicationPair {
    unsigned mvNumber = 0;
    unsigned rvNumber = 0;
    std::string syncState = "separated";
    std::string copyControlState = "---";
    std::string copyMode = "bg";  // "bg" or "sync"
    long long startTime = 0;
    long long endTime = 0;
    bool forcedSeparate = false;
    std::string previousActive = "---";
    std::string copyDiff = "0";
    std::string separateDiff = "0";
    std::string rvAccess = "rw";
    std::string connection = "normal";
    std::string rvMode;             // set by Vexrc_rvmode
    bool protect = false;           // restore in "protect" mode
    long long activityStartMillis = 0;  // when the current copy began (simulated clock)
    std::uint64_t copiedBytes = 0;       // progress of the current copy
};

struct SnapshotGeneration {
    unsigned number = 0;  // the SV's LD number
    int generation = 0;
    std::string generationAttribute = "normal";
    std::string snapState = "snap/active";
    long long creationTime = 0;
    long long startTime = 0;
    std::uint64_t processingDataSize = 0;
    std::uint64_t snapshotDataSize = 0;
    std::string linkStatus = "unlink";
    long long activityStartMillis = 0;
};

struct SnapshotBase {
    unsigned number = 0;  // the BV's LD number
    std::string specialFile = "---";
    std::string state = "normal";
    std::string reserveArea;  // name of the reserve area's LD or "---"
    std::vector<SnapshotGeneration> generations;
};

struct SnapshotReserveArea {
    unsigned ldNumber = 0;  // the LD holding the area
    unsigned poolNumber = 0;
    std::uint64_t capacity = 0;
    std::uint64_t usedCapacity = 0;
};

struct Timing {
    std::string mode = "instant";  // "instant" or "realistic"
    double rateMBps = 200.0;       // copy rate in realistic mode
};

struct ArrayState {
    // Physical side.
    Identity identity;
    std::vector<Controller> controllers;
    std::vector<Port> ports;
    std::vector<EnclosureComponent> enclosure;
    std::vector<Disk> disks;
    // Logical side.
    std::vector<Pool> pools;
    std::vector<LogicalDisk> lds;
    std::vector<LdSet> ldSets;
    std::vector<ReplicationPair> pairs;
    std::vector<SnapshotBase> snapshots;
    std::vector<SnapshotReserveArea> reserveAreas;
    // Neither side: how simulated time runs, and the counters themselves.
    Timing timing;
    std::uint64_t logicalGeneration = 1;
    std::uint64_t physicalGeneration = 1;

    // Look-ups; nullptr when there is no such object.
    Pool* FindPool(unsigned number);
    const Pool* FindPool(unsigned number) const;
    LogicalDisk* FindLd(unsigned number);
    const LogicalDisk* FindLd(unsigned number) const;
    LogicalDisk* FindLdByName(const std::string& name);
    Disk* FindDisk(unsigned group, unsigned number);
    const Disk* FindDisk(unsigned group, unsigned number) const;
    LdSet* FindLdSet(const std::string& platform, const std::string& name);
    ReplicationPair* FindPairByMv(unsigned mv);
    ReplicationPair* FindPairByRv(unsigned rv);
    SnapshotBase* FindSnapshotBase(unsigned bv);
    Controller* FindController(unsigned number);
    Port* FindPort(unsigned director, unsigned port);

    // The JSON of each side alone, as the generation counters compare it.
    nlohmann::json LogicalJson() const;
    nlohmann::json PhysicalJson() const;
};

void to_json(nlohmann::json& j, const ArrayState& s);
void from_json(const nlohmann::json& j, ArrayState& s);

// JSON of the parts, for tools that store or compare single objects.
#define ARRAYSIM_DECLARE_JSON(Type)                      \
    void to_json(nlohmann::json& j, const Type& value); \
    void from_json(const nlohmann::json& j, Type& value);
ARRAYSIM_DECLARE_JSON(AdminPort)
ARRAYSIM_DECLARE_JSON(BaseProduct)
ARRAYSIM_DECLARE_JSON(Identity)
ARRAYSIM_DECLARE_JSON(Controller)
ARRAYSIM_DECLARE_JSON(IscsiSession)
ARRAYSIM_DECLARE_JSON(Port)
ARRAYSIM_DECLARE_JSON(EnclosureComponent)
ARRAYSIM_DECLARE_JSON(Disk)
ARRAYSIM_DECLARE_JSON(Pool)
ARRAYSIM_DECLARE_JSON(LogicalDisk)
ARRAYSIM_DECLARE_JSON(LunMapping)
ARRAYSIM_DECLARE_JSON(LdSet)
ARRAYSIM_DECLARE_JSON(ReplicationPair)
ARRAYSIM_DECLARE_JSON(SnapshotGeneration)
ARRAYSIM_DECLARE_JSON(SnapshotBase)
ARRAYSIM_DECLARE_JSON(SnapshotReserveArea)
ARRAYSIM_DECLARE_JSON(Timing)
#undef ARRAYSIM_DECLARE_JSON

}  // namespace arraysim
