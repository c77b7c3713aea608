#include "ViewRecordsBuilder.h"

#include <unordered_map>

#include "ViewError.h"
#include "ViewFormat.h"

namespace arraysim {
namespace {

// A state that names a kind the tools cannot show is damaged: the run ends
// with a clear message instead of leaving the object out.
[[noreturn]] void Damaged(const std::string& what) {
    throw ViewError(ViewError::kInternal, "the array state is damaged: " + what);
}

EnclosureRecord::Kind EnclosureKindOf(const std::string& kind) {
    if (kind == "adapter") return EnclosureRecord::Kind::Adapter;
    if (kind == "backboard") return EnclosureRecord::Kind::BackBoard;
    if (kind == "fan") return EnclosureRecord::Kind::Fan;
    if (kind == "power") return EnclosureRecord::Kind::PowerSupply;
    if (kind == "temperature") return EnclosureRecord::Kind::Temperature;
    Damaged("unknown enclosure component kind \"" + kind + "\"");
}

LdSetRecord::Kind LdSetKindOf(const std::string& kind, const std::string& name) {
    if (kind == "fc") return LdSetRecord::Kind::Fc;
    if (kind == "iscsi") return LdSetRecord::Kind::Iscsi;
    if (kind == "sas") return LdSetRecord::Kind::Sas;
    if (kind == "old") return LdSetRecord::Kind::Old;
    Damaged("LD set " + name + " has the unknown kind \"" + kind + "\"");
}

ArrayRecord ArrayOf(const Identity& id) {
    ArrayRecord a;
    a.diskArrayName = id.diskArrayName;
    a.resourceState = id.resourceState;
    a.monitoring = id.monitoring;
    a.vendorId = id.vendorId;
    a.productId = id.productId;
    a.productFwRevision = id.productFwRevision;
    a.serialNumber = id.serialNumber;
    a.saa = id.saa;
    a.worldWideName = id.worldWideName;
    a.numberOfDe = id.numberOfDe;
    a.userSystemCode = id.userSystemCode;
    a.storageControlSoftwareRevision = id.storageControlSoftwareRevision;
    a.configurationChange = id.configurationChange;
    a.unitName = id.unitName;
    a.unitContact = id.unitContact;
    a.unitLocation = id.unitLocation;
    a.floatingIpv4 = id.floatingIpv4;
    a.floatingIpv6 = id.floatingIpv6;
    for (const AdminPort& port : id.adminPorts) a.adminPorts.push_back({port.ipv4, port.ipv6});
    a.maxLdNumOfTarget = id.maxLdNumOfTarget;
    a.maxNumOfTarget = id.maxNumOfTarget;
    a.maxLdNumOfOwnerId = id.maxLdNumOfOwnerId;
    for (const BaseProduct& p : id.baseProducts)
        a.baseProducts.push_back({p.name, p.version, p.revision, p.additionalData});
    a.accessControlMode = id.accessControl ? "on" : "off";
    return a;
}

IscsiSessionRecord SessionOf(const IscsiSession& s) {
    IscsiSessionRecord r;
    r.session = s.session;
    r.initiatorName = s.initiatorName;
    r.initiatorAlias = s.initiatorAlias;
    r.targetName = s.targetName;
    r.targetAlias = s.targetAlias;
    r.targetPortalGroupTag = s.targetPortalGroupTag;
    r.authenticationMethod = s.authenticationMethod;
    r.headerDigest = s.headerDigest;
    r.dataDigest = s.dataDigest;
    r.maxConnections = s.maxConnections;
    r.maxBurstLength = s.maxBurstLength;
    r.firstBurstLength = s.firstBurstLength;
    r.targetMaxRecvDataSegmentLength = s.targetMaxRecvDataSegmentLength;
    r.initiatorMaxRecvDataSegmentLengths = s.initiatorMaxRecvDataSegmentLengths;
    r.defaultTime2Wait = s.defaultTime2Wait;
    r.defaultTime2Retain = s.defaultTime2Retain;
    r.maxOutstandingR2T = s.maxOutstandingR2T;
    r.errorRecoveryLevel = s.errorRecoveryLevel;
    r.sessionStatusFlag = s.sessionStatusFlag;
    return r;
}

PortRecord PortOf(const Port& p) {
    PortRecord r;
    r.director = p.director;
    r.port = p.port;
    r.portName = p.portName;
    r.portType = p.portType;
    r.protocol = p.protocol;
    r.state = p.state;
    r.hpeNo = p.hpeNo;
    r.mode = p.mode;
    r.wwnn = p.wwnn;
    r.wwpns = p.wwpns;
    r.dataRates = p.dataRates;
    r.savedDataRate = p.savedDataRate;
    r.topology = p.topology;
    r.nPortIdSwitch = p.nPortIdSwitch;
    r.loginErrorCode = p.loginErrorCode;
    r.physicalPortMaint = p.physicalPortMaint;
    r.ipAddress = p.ipAddress;
    r.subnetMask = p.subnetMask;
    r.defaultGateway = p.defaultGateway;
    r.ipv6Address = p.ipv6Address;
    r.defaultRouter = p.defaultRouter;
    r.mtu = p.mtu;
    r.linkSpeedSetting = p.linkSpeedSetting;
    r.linkSpeedCurrent = p.linkSpeedCurrent;
    r.linkStatus = p.linkStatus;
    r.macAddress = p.macAddress;
    for (const IscsiSession& s : p.sessions) r.sessions.push_back(SessionOf(s));
    return r;
}

EnclosureRecord EnclosureOf(const EnclosureComponent& e) {
    EnclosureRecord r;
    r.kind = EnclosureKindOf(e.kind);
    r.type = e.type;
    r.abbreviatedName = e.abbreviatedName;
    r.deNumber = e.deNumber;
    r.number = e.number;
    r.nodeNo = e.nodeNo;
    r.state = e.state;
    r.code = e.code;
    r.maximumPds = e.maximumPds;
    r.verticalPds = e.verticalPds;
    r.horizontalPds = e.horizontalPds;
    r.insertDirection = e.insertDirection;
    r.deType = e.deType;
    return r;
}

DiskRecord DiskOf(const Disk& d) {
    DiskRecord r;
    r.group = d.group;
    r.number = d.number;
    r.classification = d.classification;
    r.rankGroup = d.rankGroup;
    r.state = d.state;
    r.capacity = d.capacity;
    r.rotationalSpeed = d.rotationalSpeed;
    r.nodeNo = d.nodeNo;
    r.type = d.type;
    r.vendorId = d.vendorId;
    r.productId = d.productId;
    r.productRevision = d.productRevision;
    r.serialNumber = d.serialNumber;
    r.configurationChange = d.configurationChange;
    r.transferRate = d.transferRate;
    return r;
}

// The array reports whether the real use of a virtual pool or LD has reached
// its threshold percentage, not the percentage itself.
std::string ThresholdWord(std::uint64_t used, std::uint64_t whole, int percent) {
    if (percent <= 0 || whole == 0) return "normal";
    return static_cast<long double>(used) * 100 >= static_cast<long double>(whole) * percent ? "exceeded" : "normal";
}

int PercentOf(const std::string& text) {
    if (text.empty() || text.size() > 3 || text.find_first_not_of("0123456789") != std::string::npos) return 0;
    return std::stoi(text);
}

PoolRecord PoolOf(const Pool& p) {
    PoolRecord r;
    r.number = p.number;
    r.name = p.name;
    r.poolType = p.poolType;
    r.raidType = p.raidType;
    r.numberOfRaid5s = p.numberOfRaid5s;
    r.nodeNo = p.nodeNo;
    r.pdType = p.pdType;
    r.state = p.state;
    r.expansionState = p.expansionState;
    r.expansion = p.expansion;
    r.rearrangement = p.rearrangement;
    r.progressRatio = p.progressRatio;
    r.rebuildTime = p.rebuildTime;
    r.expansionTime = p.expansionTime;
    r.rearrangingMode = p.rearrangingMode;
    r.capacity = p.capacity;
    r.usedCapacity = p.usedCapacity;
    r.configurationSetting = p.configurationSetting;
    r.noBpd = p.noBpd;
    r.stripSizeCode = p.stripSizeCode;
    r.actualCapacity = p.actualCapacity;
    r.actualUsedCapacity = p.actualUsedCapacity;
    r.threshold = ThresholdWord(p.actualUsedCapacity, p.actualCapacity, p.actualCapacityThreshold);
    r.actualCapacityThreshold = p.actualCapacityThreshold;
    return r;
}

LdRecord LdOf(const LogicalDisk& ld, const Pool& pool) {
    LdRecord r;
    r.number = ld.number;
    r.name = ld.name;
    r.capacity = ld.capacity;
    r.poolNumber = ld.poolNumber;
    // An LD shows the name, RAID and disk type of the pool it is bound in.
    r.poolName = pool.name;
    r.raidType = pool.raidType;
    r.pdType = pool.pdType;
    r.state = ld.state;
    r.group = ld.group;
    r.purpose = ld.purpose;
    r.rplAttribute = ld.rplAttribute;
    r.snapshotAttribute = ld.snapshotAttribute;
    r.osType = ld.osType;
    r.defaultOwner = ld.defaultOwner;
    r.currentOwner = ld.currentOwner;
    r.accessMode = ld.accessMode;
    r.onVirtualPool = pool.poolType == "virtual";
    r.threshold = ThresholdWord(ld.actualUsedCapacity, ld.capacity, PercentOf(ld.threshold));
    r.actualUsedCapacity = ld.actualUsedCapacity;
    return r;
}

LdSetRecord LdSetOf(const LdSet& s) {
    LdSetRecord r;
    r.kind = LdSetKindOf(s.kind, s.platform + ":" + s.name);
    r.platform = s.platform;
    r.name = s.name;
    r.configurationChange = s.configurationChange;
    r.actionMode = s.actionMode;
    r.targetMode = s.targetMode;
    r.targetName = s.targetName;
    r.authenticationMethod = s.authenticationMethod;
    r.portals = s.portals;
    r.paths = s.paths;
    r.initiators = s.initiators;
    for (const LunMapping& m : s.luns) r.luns.push_back({m.lun, m.ldn});
    return r;
}

class LdIndex {
public:
    explicit LdIndex(const std::vector<LogicalDisk>& lds) {
        m_byNumber.reserve(lds.size());
        for (const LogicalDisk& ld : lds) m_byNumber.emplace(ld.number, &ld);
    }

    // The name of LD `number`, which `user` refers to.
    const std::string& NameOf(unsigned number, const std::string& user) const {
        auto it = m_byNumber.find(number);
        if (it == m_byNumber.end()) Damaged(user + " refers to the missing logical disk " + ViewFormat::Hex(number, 4) + "h");
        return it->second->name;
    }

private:
    std::unordered_map<unsigned, const LogicalDisk*> m_byNumber;
};

PairRecord PairOf(const ReplicationPair& p, const LdIndex& lds) {
    PairRecord r;
    r.mvNumber = p.mvNumber;
    r.rvNumber = p.rvNumber;
    r.mvName = lds.NameOf(p.mvNumber, "a replication pair");
    r.rvName = lds.NameOf(p.rvNumber, "a replication pair");
    r.syncState = p.syncState;
    r.copyControlState = p.copyControlState;
    r.startTime = p.startTime;
    r.endTime = p.endTime;
    r.forcedSeparate = p.forcedSeparate;
    r.previousActive = p.previousActive;
    r.copyDiff = p.copyDiff;
    r.separateDiff = p.separateDiff;
    r.rvAccess = p.rvAccess;
    r.connection = p.connection;
    return r;
}

SnapshotBaseRecord SnapshotOf(const SnapshotBase& b, const LdIndex& lds) {
    SnapshotBaseRecord r;
    r.number = b.number;
    r.name = lds.NameOf(b.number, "a snapshot base");
    r.type = "BV";
    r.specialFile = b.specialFile;
    r.state = b.state;
    r.reserveArea = b.reserveArea.empty() ? "---" : b.reserveArea;
    for (const SnapshotGeneration& g : b.generations) {
        GenerationRecord gr;
        gr.number = g.number;
        gr.name = lds.NameOf(g.number, "snapshot base " + r.name);
        gr.type = "SV";
        gr.generation = g.generation;
        gr.generationAttribute = g.generationAttribute;
        gr.snapState = g.snapState;
        gr.creationTime = g.creationTime;
        gr.startTime = g.startTime;
        gr.processingDataSize = g.processingDataSize;
        gr.snapshotDataSize = g.snapshotDataSize;
        gr.linkStatus = g.linkStatus;
        r.generations.push_back(std::move(gr));
    }
    return r;
}

}  // namespace

ViewRecords ViewRecordsBuilder::Build(const ArrayState& state) {
    ViewRecords records;
    records.array = ArrayOf(state.identity);
    for (const Controller& c : state.controllers)
        records.controllers.push_back({c.number, c.type, c.state, c.protocol});
    records.ports.reserve(state.ports.size());
    for (const Port& p : state.ports) records.ports.push_back(PortOf(p));
    for (const EnclosureComponent& e : state.enclosure) records.enclosure.push_back(EnclosureOf(e));
    records.disks.reserve(state.disks.size());
    for (const Disk& d : state.disks) records.disks.push_back(DiskOf(d));

    std::unordered_map<unsigned, const Pool*> pools;
    records.pools.reserve(state.pools.size());
    for (const Pool& p : state.pools) {
        pools.emplace(p.number, &p);
        records.pools.push_back(PoolOf(p));
    }
    records.lds.reserve(state.lds.size());
    for (const LogicalDisk& ld : state.lds) {
        auto pool = pools.find(ld.poolNumber);
        if (pool == pools.end())
            Damaged("logical disk " + ld.name + " is bound in the missing pool " + ViewFormat::Hex(ld.poolNumber, 4) + "h");
        records.lds.push_back(LdOf(ld, *pool->second));
    }
    records.ldSets.reserve(state.ldSets.size());
    for (const LdSet& s : state.ldSets) records.ldSets.push_back(LdSetOf(s));

    const LdIndex lds(state.lds);
    records.pairs.reserve(state.pairs.size());
    for (const ReplicationPair& p : state.pairs) records.pairs.push_back(PairOf(p, lds));
    records.snapshots.reserve(state.snapshots.size());
    for (const SnapshotBase& b : state.snapshots) records.snapshots.push_back(SnapshotOf(b, lds));
    return records;
}

}  // namespace arraysim
