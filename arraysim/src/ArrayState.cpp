#include "ArrayState.h"

#include <algorithm>

namespace arraysim {

#define ARRAYSIM_JSON(Type, ...)                                                        \
    void to_json(nlohmann::json& nlohmann_json_j, const Type& nlohmann_json_t) {        \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))        \
    }                                                                                   \
    void from_json(const nlohmann::json& nlohmann_json_j, Type& nlohmann_json_t) {      \
        const Type nlohmann_json_default_obj{};                                         \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM_WITH_DEFAULT, __VA_ARGS__)) \
    }

ARRAYSIM_JSON(AdminPort, ipv4, ipv6)
ARRAYSIM_JSON(BaseProduct, name, version, revision, additionalData)
ARRAYSIM_JSON(Identity, diskArrayName, resourceState, monitoring, vendorId, productId, productFwRevision,
              serialNumber, saa, worldWideName, numberOfDe, userSystemCode, storageControlSoftwareRevision,
              configurationChange, unitName, unitContact, unitLocation, floatingIpv4, floatingIpv6, adminPorts,
              maxLdNumOfTarget, maxNumOfTarget, maxLdNumOfOwnerId, baseProducts, accessControl)
ARRAYSIM_JSON(Controller, number, type, state, protocol)
ARRAYSIM_JSON(IscsiSession, session, initiatorName, initiatorAlias, targetName, targetAlias, targetPortalGroupTag,
              authenticationMethod, headerDigest, dataDigest, maxConnections, maxBurstLength, firstBurstLength,
              targetMaxRecvDataSegmentLength, initiatorMaxRecvDataSegmentLengths, defaultTime2Wait,
              defaultTime2Retain, maxOutstandingR2T, errorRecoveryLevel, sessionStatusFlag)
ARRAYSIM_JSON(Port, director, port, portName, portType, protocol, state, hpeNo, mode, wwnn, wwpns, dataRates,
              savedDataRate, topology, nPortIdSwitch, loginErrorCode, physicalPortMaint, ipAddress, subnetMask,
              defaultGateway, ipv6Address, defaultRouter, mtu, linkSpeedSetting, linkSpeedCurrent, linkStatus,
              macAddress, sessions)
ARRAYSIM_JSON(EnclosureComponent, kind, type, abbreviatedName, deNumber, number, nodeNo, state, code, maximumPds,
              verticalPds, horizontalPds, insertDirection, deType)
ARRAYSIM_JSON(Disk, group, number, classification, poolNumber, rankGroup, state, capacity, rotationalSpeed, nodeNo,
              type, vendorId, productId, productRevision, serialNumber, configurationChange, transferRate)
ARRAYSIM_JSON(Pool, number, name, poolType, raidType, numberOfRaid5s, nodeNo, pdType, state, expansionState,
              expansion, rearrangement, progressRatio, rebuildTime, expansionTime, rearrangingMode, capacity,
              usedCapacity, configurationSetting, noBpd, baseDisks, stripSizeCode, disks, actualCapacity,
              actualUsedCapacity, threshold, actualCapacityThreshold)
ARRAYSIM_JSON(LogicalDisk, number, name, capacity, poolNumber, state, group, purpose, rplAttribute,
              snapshotAttribute, osType, defaultOwner, currentOwner, accessMode, threshold, actualUsedCapacity)
ARRAYSIM_JSON(LunMapping, lun, ldn)
ARRAYSIM_JSON(LdSet, kind, platform, name, configurationChange, actionMode, targetMode, targetName,
              authenticationMethod, portals, paths, initiators, luns)
ARRAYSIM_JSON(ReplicationPair, mvNumber, rvNumber, syncState, copyControlState, copyMode, startTime, endTime,
              forcedSeparate, previousActive, copyDiff, separateDiff, rvAccess, connection, rvMode, protect,
              activityStartMillis, copiedBytes)
ARRAYSIM_JSON(SnapshotGeneration, number, generation, generationAttribute, snapState, creationTime, startTime,
              processingDataSize, snapshotDataSize, linkStatus, activityStartMillis)
ARRAYSIM_JSON(SnapshotBase, number, specialFile, state, reserveArea, generations)
ARRAYSIM_JSON(SnapshotReserveArea, ldNumber, poolNumber, capacity, usedCapacity)
ARRAYSIM_JSON(Timing, mode, rateMBps)
ARRAYSIM_JSON(ArrayState, identity, controllers, ports, enclosure, disks, pools, lds, ldSets, pairs, snapshots,
              reserveAreas, timing, logicalGeneration, physicalGeneration)

#undef ARRAYSIM_JSON

namespace {

template <typename Vector, typename Pred>
auto findIn(Vector& items, Pred pred) -> decltype(&items.front()) {
    auto it = std::find_if(items.begin(), items.end(), pred);
    return it == items.end() ? nullptr : &*it;
}

}  // namespace

Pool* ArrayState::FindPool(unsigned number) {
    return findIn(pools, [&](const Pool& p) { return p.number == number; });
}
const Pool* ArrayState::FindPool(unsigned number) const {
    return findIn(pools, [&](const Pool& p) { return p.number == number; });
}
LogicalDisk* ArrayState::FindLd(unsigned number) {
    return findIn(lds, [&](const LogicalDisk& ld) { return ld.number == number; });
}
const LogicalDisk* ArrayState::FindLd(unsigned number) const {
    return findIn(lds, [&](const LogicalDisk& ld) { return ld.number == number; });
}
LogicalDisk* ArrayState::FindLdByName(const std::string& name) {
    return findIn(lds, [&](const LogicalDisk& ld) { return ld.name == name; });
}
Disk* ArrayState::FindDisk(unsigned group, unsigned number) {
    return findIn(disks, [&](const Disk& d) { return d.group == group && d.number == number; });
}
const Disk* ArrayState::FindDisk(unsigned group, unsigned number) const {
    return findIn(disks, [&](const Disk& d) { return d.group == group && d.number == number; });
}
LdSet* ArrayState::FindLdSet(const std::string& platform, const std::string& name) {
    return findIn(ldSets, [&](const LdSet& s) { return s.platform == platform && s.name == name; });
}
ReplicationPair* ArrayState::FindPairByMv(unsigned mv) {
    return findIn(pairs, [&](const ReplicationPair& p) { return p.mvNumber == mv; });
}
ReplicationPair* ArrayState::FindPairByRv(unsigned rv) {
    return findIn(pairs, [&](const ReplicationPair& p) { return p.rvNumber == rv; });
}
SnapshotBase* ArrayState::FindSnapshotBase(unsigned bv) {
    return findIn(snapshots, [&](const SnapshotBase& b) { return b.number == bv; });
}
Controller* ArrayState::FindController(unsigned number) {
    return findIn(controllers, [&](const Controller& c) { return c.number == number; });
}
Port* ArrayState::FindPort(unsigned director, unsigned port) {
    return findIn(ports, [&](const Port& p) { return p.director == director && p.port == port; });
}

nlohmann::json ArrayState::LogicalJson() const {
    return nlohmann::json{{"pools", pools}, {"lds", lds},           {"ldSets", ldSets},
                          {"pairs", pairs}, {"snapshots", snapshots}, {"reserveAreas", reserveAreas}};
}

nlohmann::json ArrayState::PhysicalJson() const {
    return nlohmann::json{{"identity", identity}, {"controllers", controllers}, {"ports", ports},
                          {"enclosure", enclosure}, {"disks", disks}};
}

}  // namespace arraysim
