#pragma once
// A small array built by hand as view records: one object of every kind the
// tools report, with the variants that change a document's shape (FC, SAS
// and iSCSI ports, a dynamic and a virtual pool, every LD set kind, pairs in
// several states, a snapshot base with generations).

#include "ViewRecords.h"

namespace arraysim_test {

inline arraysim::ViewRecords SampleRecords() {
    using namespace arraysim;
    ViewRecords r;
    ArrayRecord& a = r.array;
    a.diskArrayName = "Array01";
    a.resourceState = "ready";
    a.monitoring = "running";
    a.vendorId = "ORV";
    a.productId = "ORV-M3000";
    a.productFwRevision = "0971";
    a.serialNumber = "0000123";
    a.saa = "2000AB";
    a.worldWideName = "2000004CAB000001";
    a.numberOfDe = 2;
    a.userSystemCode = "000";
    a.storageControlSoftwareRevision = "097100";
    a.configurationChange = "enable";
    a.unitName = "unit & co";
    a.unitContact = "admin";
    a.unitLocation = "room <1>";
    a.floatingIpv4 = "10.0.0.1";
    a.floatingIpv6 = "---";
    a.adminPorts = {{"10.0.0.2", "---"}, {"10.0.0.3", "fe80::3"}};
    a.maxLdNumOfTarget = 4096;
    a.maxNumOfTarget = 1024;
    a.maxLdNumOfOwnerId = 8192;
    a.baseProducts = {{"BaseProduct", "9.71", "0001", "---"}, {"AccessControl", "9.72", "0002", "x"}};
    a.accessControlMode = "on";

    r.controllers = {{0, "HD", "ready", "FC"}, {1, "HD", "fault", "FC"}};

    PortRecord fc;
    fc.director = 0;
    fc.port = 0x1a;
    fc.portName = "P0";
    fc.portType = "FC";
    fc.protocol = "FC";
    fc.state = "ready";
    fc.hpeNo = 0x1f;
    fc.mode = "WWN";
    fc.wwnn = "2000004CAB000000";
    fc.wwpns = {"2100004CAB000001"};
    fc.dataRates = {"16Gbps"};
    fc.savedDataRate = "Auto";
    fc.topology = "Fabric";
    fc.nPortIdSwitch = "---";
    fc.loginErrorCode = "---";
    fc.physicalPortMaint = "---";
    r.ports.push_back(fc);

    PortRecord sas = fc;
    sas.port = 1;
    sas.portType = "SAS";
    sas.protocol = "SAS";
    sas.wwpns = {"5000000000000010", "5000000000000011", "5000000000000012", "5000000000000013"};
    sas.dataRates = {"12Gbps", "12Gbps", "6Gbps", "12Gbps"};
    r.ports.push_back(sas);

    PortRecord iscsi;
    iscsi.director = 1;
    iscsi.port = 2;
    iscsi.portName = "P2";
    iscsi.portType = "iSCSI";
    iscsi.protocol = "iSCSI";
    iscsi.state = "ready";
    iscsi.mode = "Port";
    iscsi.ipAddress = "192.168.1.10";
    iscsi.subnetMask = "255.255.255.0";
    iscsi.defaultGateway = "192.168.1.1";
    iscsi.ipv6Address = "---";
    iscsi.defaultRouter = "---";
    iscsi.mtu = 9000;
    iscsi.linkSpeedSetting = "Auto";
    iscsi.linkSpeedCurrent = "10Gbps";
    iscsi.linkStatus = "Link Up";
    iscsi.macAddress = "00:00:4C:01:02:03";
    for (int n = 0; n < 2; ++n) {
        IscsiSessionRecord s;
        s.session = std::to_string(n);
        s.initiatorName = "iqn.host" + std::to_string(n);
        s.targetName = "iqn.target";
        s.maxBurstLength = "262144";
        s.initiatorMaxRecvDataSegmentLengths = {"8192", "65536"};
        iscsi.sessions.push_back(s);
    }
    r.ports.push_back(iscsi);

    using Kind = EnclosureRecord::Kind;
    for (Kind kind : {Kind::Adapter, Kind::BackBoard, Kind::Fan, Kind::PowerSupply, Kind::Temperature}) {
        EnclosureRecord e;
        e.kind = kind;
        e.type = "T";
        e.abbreviatedName = "A";
        e.deNumber = 1;
        e.number = 0x0b;
        e.nodeNo = 0;
        e.state = "ready";
        e.code = 0x12;
        e.maximumPds = 24;
        e.verticalPds = 1;
        e.horizontalPds = 24;
        e.insertDirection = "vertical";
        e.deType = "DE";
        r.enclosure.push_back(e);
    }

    DiskRecord d;
    d.group = 1;
    d.number = 0x1a;
    d.classification = "pool";
    d.rankGroup = 2;
    d.state = "ready";
    d.capacity = 1200000000000ULL;
    d.rotationalSpeed = "10000";
    d.type = "SAS";
    d.vendorId = "V";
    d.productId = "P";
    d.productRevision = "R";
    d.serialNumber = "S";
    d.configurationChange = "enable";
    d.transferRate = "12Gbps";
    r.disks.push_back(d);

    PoolRecord dynamicPool;
    dynamicPool.number = 0x1b;
    dynamicPool.name = "Pool001B";
    dynamicPool.poolType = "dynamic";
    dynamicPool.raidType = "RAID6/60(4+PQ)";
    dynamicPool.pdType = "SAS";
    dynamicPool.state = "ready";
    dynamicPool.expansionState = dynamicPool.expansion = dynamicPool.rearrangement = "---";
    dynamicPool.progressRatio = dynamicPool.rearrangingMode = "---";
    dynamicPool.capacity = 4000000000000ULL;
    dynamicPool.usedCapacity = 1000000000000ULL;
    dynamicPool.configurationSetting = "enable";
    dynamicPool.noBpd = 6;
    dynamicPool.stripSizeCode = 2;
    r.pools.push_back(dynamicPool);

    PoolRecord virtualPool = dynamicPool;
    virtualPool.number = 2;
    virtualPool.name = "Virtual";
    virtualPool.poolType = "virtual";
    virtualPool.actualCapacity = 500;
    virtualPool.actualUsedCapacity = 1234567;
    virtualPool.threshold = "80";
    virtualPool.actualCapacityThreshold = 90;
    r.pools.push_back(virtualPool);

    auto ld = [&](unsigned number, const std::string& name, const PoolRecord& pool) {
        LdRecord l;
        l.number = number;
        l.name = name;
        l.capacity = 1073741824;
        l.poolNumber = pool.number;
        l.poolName = pool.name;
        l.raidType = pool.raidType;
        l.pdType = pool.pdType;
        l.state = "ready";
        l.group = l.purpose = l.rplAttribute = l.snapshotAttribute = "---";
        l.osType = "LX";
        l.defaultOwner = l.currentOwner = "0";
        l.accessMode = "ReadWrite";
        l.onVirtualPool = pool.poolType == "virtual";
        l.threshold = "80";
        l.actualUsedCapacity = 1234567;
        r.lds.push_back(l);
        return &r.lds.back();
    };
    ld(0x0a, "MV1", dynamicPool);
    ld(0x0b, "RV1", dynamicPool);
    ld(0x0c, "RV2", virtualPool);
    ld(0x0d, "BV1", dynamicPool);
    ld(0x0e, "SV1", dynamicPool);
    ld(0x0f, "SV2", dynamicPool);
    ld(0x10, "LONE", virtualPool);

    LdSetRecord fcSet;
    fcSet.kind = LdSetRecord::Kind::Fc;
    fcSet.platform = "LX";
    fcSet.name = "HOST1";
    fcSet.configurationChange = "enable";
    fcSet.actionMode = "---";
    fcSet.paths = {"2100-0000-0000-0001", "2100-0000-0000-0002"};
    fcSet.luns = {{0, 0x0a}, {1, 0x0b}};
    r.ldSets.push_back(fcSet);
    LdSetRecord iscsiSet = fcSet;
    iscsiSet.kind = LdSetRecord::Kind::Iscsi;
    iscsiSet.name = "HOST2";
    iscsiSet.paths.clear();
    iscsiSet.targetMode = "single";
    iscsiSet.targetName = "iqn.target";
    iscsiSet.authenticationMethod = "none";
    iscsiSet.portals = {"192.168.1.10:3260"};
    iscsiSet.initiators = {"iqn.host0", "iqn.host1"};
    iscsiSet.luns = {{0x10, 0x10}};
    r.ldSets.push_back(iscsiSet);
    LdSetRecord sasSet = fcSet;
    sasSet.kind = LdSetRecord::Kind::Sas;
    sasSet.name = "HOST3";
    sasSet.luns.clear();
    r.ldSets.push_back(sasSet);
    LdSetRecord oldSet = fcSet;
    oldSet.kind = LdSetRecord::Kind::Old;
    oldSet.name = "HOST4";
    oldSet.paths.clear();
    r.ldSets.push_back(oldSet);

    PairRecord synced;
    synced.mvName = "MV1";
    synced.mvNumber = 0x0a;
    synced.rvName = "RV1";
    synced.rvNumber = 0x0b;
    synced.syncState = "rpl/sync";
    synced.copyControlState = "background copy";
    synced.startTime = 1767225600;  // 2026/01/01 00:00:00 UTC
    synced.previousActive = "---";
    synced.copyDiff = synced.separateDiff = "0";
    synced.rvAccess = "nr";
    synced.connection = "normal";
    r.pairs.push_back(synced);
    PairRecord separated = synced;
    separated.rvName = "RV2";
    separated.rvNumber = 0x0c;
    separated.syncState = "separated";
    separated.copyControlState = "---";
    separated.endTime = 1767229200;  // one hour later
    separated.rvAccess = "rw";
    r.pairs.push_back(separated);

    SnapshotBaseRecord base;
    base.number = 0x0d;
    base.name = "BV1";
    base.type = "BV";
    base.specialFile = "---";
    base.state = "normal";
    base.reserveArea = "BV1";
    GenerationRecord g1;
    g1.number = 0x0e;
    g1.name = "SV1";
    g1.type = "SV";
    g1.generation = 1;
    g1.generationAttribute = "normal";
    g1.snapState = "snap/active";
    g1.creationTime = 1767312000;  // 2026/01/02 00:00:00 UTC
    g1.startTime = 1767312000;
    g1.processingDataSize = 0;
    g1.snapshotDataSize = 13421772800ULL;  // 12.5GB
    g1.linkStatus = "unlink";
    base.generations.push_back(g1);
    GenerationRecord g2 = g1;
    g2.number = 0x0f;
    g2.name = "SV2";
    g2.generation = 2;
    g2.snapState = "rst/exec";
    g2.processingDataSize = 4096;
    g2.snapshotDataSize = 2048;
    base.generations.push_back(g2);
    r.snapshots.push_back(base);
    return r;
}

}  // namespace arraysim_test
