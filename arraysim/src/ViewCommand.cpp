#include "ViewCommand.h"

#include <map>

#include "ViewError.h"
#include "ViewFormat.h"

namespace arraysim {
namespace {

using F = ViewFormat;

std::string Num(long long value) { return std::to_string(value); }

struct EnclosureNames {
    const char* object;
    const char* section;
};

EnclosureNames NamesOf(EnclosureRecord::Kind kind) {
    switch (kind) {
        case EnclosureRecord::Kind::Adapter: return {"DE_ADP(S/S)", "Adapter Card Information"};
        case EnclosureRecord::Kind::BackBoard: return {"DE_BB", "Back Board Information"};
        case EnclosureRecord::Kind::Fan: return {"DE_FAN", "FAN Information"};
        case EnclosureRecord::Kind::PowerSupply: return {"DE_PS", "Power Supply Information"};
        case EnclosureRecord::Kind::Temperature: return {"DE_TEMP_ALM", "Temperature Information"};
    }
    return {"DE_FAN", "FAN Information"};
}

struct LdSetNames {
    const char* object;
    const char* section;
};

LdSetNames NamesOf(LdSetRecord::Kind kind) {
    switch (kind) {
        case LdSetRecord::Kind::Fc: return {"LD Set(FC)", "LD Set(FC) Information"};
        case LdSetRecord::Kind::Iscsi: return {"LD Set(iSCSI)", "LD Set(iSCSI) Information"};
        case LdSetRecord::Kind::Sas: return {"LD Set(SAS)", "LD Set(SAS) Information"};
        case LdSetRecord::Kind::Old: return {"LD Set", "LD Set Information"};
    }
    return {"LD Set", "LD Set Information"};
}

void AddSession(ViewObject& object, const IscsiSessionRecord& s) {
    ViewSection& section = object.AddSection("iSCSI Session List");
    section.Add("Session", s.session)
        .Add("Initiator Name", s.initiatorName)
        .Add("Initiator Alias", s.initiatorAlias)
        .Add("Target Name", s.targetName)
        .Add("Target Alias", s.targetAlias)
        .Add("Target Portal Group Tag", s.targetPortalGroupTag)
        .Add("Authentication Method", s.authenticationMethod)
        .Add("Header Digest", s.headerDigest)
        .Add("Data Digest", s.dataDigest)
        .Add("Max Connections", s.maxConnections)
        .Add("Max Burst Length(Bytes)", s.maxBurstLength)
        .Add("First Burst Length(Bytes)", s.firstBurstLength)
        .Add("Target Max Recv Data Segment Length(Bytes)", s.targetMaxRecvDataSegmentLength);
    for (size_t i = 0; i < s.initiatorMaxRecvDataSegmentLengths.size(); ++i)
        section.Add("Initiator Max Recv Data Segment Length(Bytes) #" + std::to_string(i),
                    s.initiatorMaxRecvDataSegmentLengths[i]);
    section.Add("Default Time2Wait(s)", s.defaultTime2Wait)
        .Add("Default Time2Retain(s)", s.defaultTime2Retain)
        .Add("Max Outstanding R2T", s.maxOutstandingR2T)
        .Add("Error Recovery Level", s.errorRecoveryLevel)
        .Add("Session Status Flag", s.sessionStatusFlag);
}

void AddPort(ViewChapter& chapter, const PortRecord& p) {
    ViewObject& object = chapter.AddObject("Host Port");
    ViewSection& s = object.AddSection("Host Director/Host Port Information");
    s.Add("Port No.(h)", F::PortNumber(p.director, p.port))
        .Add("Port Name", p.portName)
        .Add("Port Type", p.portType)
        .Add("Protocol", p.protocol)
        .Add("State", p.state)
        .Add("HPE No.(h)", F::Hex(p.hpeNo, 2))
        .Add("Mode", p.mode);
    if (p.protocol == "iSCSI") {
        s.Add("IP Address", p.ipAddress)
            .Add("Subnet Mask", p.subnetMask)
            .Add("Default Gateway", p.defaultGateway)
            .Add("IP Address(IPv6)", p.ipv6Address)
            .Add("Default Router IP Address", p.defaultRouter)
            .Add("MTU", Num(p.mtu))
            .Add("Link Speed and Duplex (Setting)", p.linkSpeedSetting)
            .Add("Link Speed and Duplex (Current)", p.linkSpeedCurrent)
            .Add("Link Status", p.linkStatus)
            .Add("MAC Address", p.macAddress)
            .Add("Number of iSCSI Session", Num(static_cast<long long>(p.sessions.size())));
    } else {
        s.Add("WWNN", p.wwnn);
        // A port with one WWPN and one rate (FC) names them plainly; a SAS
        // port numbers each of its links.
        if (p.wwpns.size() == 1) {
            s.Add("WWPN", p.wwpns.front());
        } else {
            for (size_t i = 0; i < p.wwpns.size(); ++i) s.Add("WWPN #" + std::to_string(i), p.wwpns[i]);
        }
        if (p.dataRates.size() == 1) {
            s.Add("Data Rate", p.dataRates.front());
        } else {
            for (size_t i = 0; i < p.dataRates.size(); ++i)
                s.Add("Data Rate #" + std::to_string(i) + "(Current)", p.dataRates[i]);
        }
        if (p.protocol == "SAS") {
            s.Add("Saved Data Rate", p.savedDataRate);
        } else {
            s.Add("Data Rate(Setting)", p.savedDataRate)
                .Add("Topology", p.topology)
                .Add("N_Port_ID/Switch", p.nPortIdSwitch);
        }
        s.Add("Login Error Code", p.loginErrorCode).Add("Physical Port Maint", p.physicalPortMaint);
    }
    for (const IscsiSessionRecord& session : p.sessions) AddSession(object, session);
}

}  // namespace

ViewCommand::Scope ViewCommand::ParseArguments(const std::vector<std::string>& args) {
    if (args.empty()) throw ViewError(ViewError::kBadArguments, "an option is required: -all, -dpi or -dli");
    if (args.size() > 1)
        throw ViewError(ViewError::kBadArguments, "too many options: only one of -all, -dpi, -dli is allowed");
    if (args[0] == "-all") return Scope::All;
    if (args[0] == "-dpi") return Scope::PhysicalDisks;
    if (args[0] == "-dli") return Scope::PoolLogicalDisks;
    throw ViewError(ViewError::kBadArguments, "unknown option " + args[0]);
}

ViewDocument ViewCommand::Build(const ViewRecords& records, Scope scope) {
    ViewDocument doc;
    switch (scope) {
        case Scope::All: {
            AddArray(doc, records);
            AddController(doc, records);
            AddEnclosure(doc, records);
            AddDisks(doc, records);
            ViewChapter& pools = doc.AddChapter("Pool");
            for (const PoolRecord& pool : records.pools) AddPool(pools, pool);
            ViewChapter& lds = doc.AddChapter("Logical Disk");
            lds.objects.reserve(records.lds.size());
            for (const LdRecord& ld : records.lds) AddLd(lds, ld);
            AddAccessControl(doc, records);
            break;
        }
        case Scope::PhysicalDisks:
            AddDisks(doc, records);
            break;
        case Scope::PoolLogicalDisks: {
            std::multimap<unsigned, const LdRecord*> byPool;
            for (const LdRecord& ld : records.lds) byPool.emplace(ld.poolNumber, &ld);
            ViewChapter& chapter = doc.AddChapter("Pool-Logical Disk");
            for (const PoolRecord& pool : records.pools) {
                AddPool(chapter, pool);
                auto range = byPool.equal_range(pool.number);
                for (auto it = range.first; it != range.second; ++it) AddLd(chapter, *it->second);
            }
            break;
        }
    }
    return doc;
}

void ViewCommand::AddArray(ViewDocument& doc, const ViewRecords& records) {
    const ArrayRecord& a = records.array;
    ViewObject& object = doc.AddChapter("Disk Array").AddObject("Disk Array");
    object.AddSection("Disk Array Detail Information")
        .Add("Disk Array Name", a.diskArrayName)
        .Add("Resource State", a.resourceState)
        .Add("Monitoring", a.monitoring)
        .Add("Vendor ID", a.vendorId)
        .Add("Product ID", a.productId)
        .Add("Product FW Revision", a.productFwRevision)
        .Add("Serial Number", a.serialNumber)
        .Add("SAA", a.saa)
        .Add("World Wide Name", a.worldWideName)
        .Add("Number of DE", Num(a.numberOfDe))
        .Add("User System Code", a.userSystemCode)
        .Add("Storage Control Software Revision", a.storageControlSoftwareRevision)
        .Add("Configuration Change", a.configurationChange);
    object.AddSection("SNMP Common Information")
        .Add("Unit Name", a.unitName)
        .Add("Unit Contact", a.unitContact)
        .Add("Unit Location", a.unitLocation);
    object.AddSection("Floating IP Address Information")
        .Add("IP Address(IPv4)", a.floatingIpv4)
        .Add("IP Address(IPv6)", a.floatingIpv6);
    for (const AdminPortRecord& port : a.adminPorts)
        object.AddSection("Admin Port Information").Add("IP Address(IPv4)", port.ipv4).Add("IP Address(IPv6)", port.ipv6);
    object.AddSection("Access Control Information").Add("Access Control Mode", a.accessControlMode);
    object.AddSection("Disk Array Maint Information")
        .Add("Max LDNum Of Target", Num(a.maxLdNumOfTarget))
        .Add("Max Num Of Target", Num(a.maxNumOfTarget))
        .Add("Max LDNum Of OwnerID", Num(a.maxLdNumOfOwnerId));
    for (const BaseProductRecord& product : a.baseProducts)
        object.AddSection("Base Product Maint List")
            .Add("Product Name", product.name)
            .Add("Version", product.version)
            .Add("Revision", product.revision)
            .Add("PP Additional Data", product.additionalData);
}

void ViewCommand::AddController(ViewDocument& doc, const ViewRecords& records) {
    ViewChapter& chapter = doc.AddChapter("Controller");
    for (const ControllerRecord& hd : records.controllers)
        chapter.AddObject("HD").AddSection("Host Director Information")
            .Add("Number(h)", F::Hex(hd.number, 2))
            .Add("Type", hd.type)
            .Add("State", hd.state)
            .Add("Protocol", hd.protocol);
    for (const PortRecord& port : records.ports) AddPort(chapter, port);
}

void ViewCommand::AddEnclosure(ViewDocument& doc, const ViewRecords& records) {
    ViewChapter& chapter = doc.AddChapter("Enclosure");
    for (const EnclosureRecord& e : records.enclosure) {
        EnclosureNames names = NamesOf(e.kind);
        ViewSection& s = chapter.AddObject(names.object).AddSection(names.section);
        s.Add("Type", e.type)
            .Add("Abbreviated Name", e.abbreviatedName)
            .Add("DE Number(h)", F::Hex(e.deNumber, 2))
            .Add("Number(h)", F::Hex(e.number, 2))
            .Add("Node No. (h)", F::Hex(e.nodeNo, 2))
            .Add("State", e.state)
            .Add("Code(h)", F::Hex(e.code, 4));
        if (e.kind == EnclosureRecord::Kind::BackBoard) {
            s.Add("Maximum number of PDs", Num(e.maximumPds))
                .Add("Vertical Number of PDs", Num(e.verticalPds))
                .Add("Horizontal Number of PDs", Num(e.horizontalPds))
                .Add("Insert Direction of PDs", e.insertDirection)
                .Add("DE Type", e.deType);
        }
    }
}

void ViewCommand::AddDisks(ViewDocument& doc, const ViewRecords& records) {
    ViewChapter& chapter = doc.AddChapter("Physical Disk");
    chapter.objects.reserve(records.disks.size());
    for (const DiskRecord& d : records.disks) {
        ViewSection& section = chapter.AddObject("Physical Disk").AddSection("PD Detail Information");
        section.units.reserve(14);
        section.Add("PDN(h)", F::DiskNumber(d.group, d.number))
            .Add("Classification", d.classification)
            .Add("Rank Group Number(h)", F::Hex(d.rankGroup, 2))
            .Add("State", d.state)
            .Add("PD Capacity", Num(static_cast<long long>(d.capacity)))
            .Add("Rotational Speed", d.rotationalSpeed)
            .Add("Node No.(h)", F::Hex(d.nodeNo, 2))
            .Add("Type", d.type)
            .Add("Vendor ID", d.vendorId)
            .Add("Product ID", d.productId)
            .Add("Product Revision", d.productRevision)
            .Add("Serial Number", d.serialNumber)
            .Add("Configuration Change", d.configurationChange)
            .Add("Transfer Rate", d.transferRate);
    }
}

void ViewCommand::AddPool(ViewChapter& chapter, const PoolRecord& p) {
    ViewObject& object = chapter.AddObject("Pool");
    const std::uint64_t free = p.capacity > p.usedCapacity ? p.capacity - p.usedCapacity : 0;
    ViewSection& detail = object.AddSection("Pool Detail Information");
    detail.units.reserve(19);
    detail.Add("Pool No.(h)", F::Hex(p.number, 4))
        .Add("Pool Name", p.name)
        .Add("Pool Type", p.poolType)
        .Add("RAID Type", p.raidType)
        .Add("Number of RAID5s", Num(p.numberOfRaid5s))
        .Add("Node No.(h)", F::Hex(p.nodeNo, 2))
        .Add("PD Type", p.pdType)
        .Add("Pool State", p.state)
        .Add("Expansion State", p.expansionState)
        .Add("Expansion/Rearrangement State", p.expansion)
        .Add("Rearrangement", p.rearrangement)
        .Add("Progress Ratio", p.progressRatio)
        .Add("Rebuild Time(hour)", Num(p.rebuildTime))
        .Add("Expansion Time(hour)", Num(p.expansionTime))
        .Add("Rearranging Mode", p.rearrangingMode)
        .Add("Pool Capacity", std::to_string(p.capacity))
        .Add("Used Pool Capacity", std::to_string(p.usedCapacity))
        .Add("Free Pool Capacity", std::to_string(free))
        .Add("Configuration Setting", p.configurationSetting);
    object.AddSection("Pool Maint Information").Add("NoBPD", F::Hex(p.noBpd, 2));
    object.AddSection("RANK List").Add("Strip Size", Num(p.stripSizeCode));
    if (p.poolType.find("virtual") != std::string::npos)
        object.AddSection("Virtual Capacity Pool Information")
            .Add("Actual Capacity", std::to_string(p.actualCapacity))
            .Add("Actual Used Capacity", std::to_string(p.actualUsedCapacity))
            .Add("Threshold", p.threshold)
            .Add("Actual Capacity Threshold(%)", Num(p.actualCapacityThreshold));
}

void ViewCommand::AddLd(ViewChapter& chapter, const LdRecord& ld) {
    ViewObject& object = chapter.AddObject("Logical Disk");
    ViewSection& detail = object.AddSection("LD Detail Information");
    detail.units.reserve(16);
    detail.Add("LDN(h)", F::Hex(ld.number, 4))
        .Add("LD Name", ld.name)
        .Add("LD Capacity", std::to_string(ld.capacity))
        .Add("Pool No.(h)", F::Hex(ld.poolNumber, 4))
        .Add("Pool Name", ld.poolName)
        .Add("RaidType", ld.raidType)
        .Add("PD Type", ld.pdType)
        .Add("LD State", ld.state)
        .Add("Group", ld.group)
        .Add("Purpose", ld.purpose)
        .Add("RPL Attribute", ld.rplAttribute)
        .Add("Snapshot Attribute", ld.snapshotAttribute)
        .Add("OS Type", ld.osType)
        .Add("Default Owner", ld.defaultOwner)
        .Add("Current Owner", ld.currentOwner)
        .Add("Access Mode", ld.accessMode);
    if (ld.onVirtualPool)
        object.AddSection("Virtual Capacity Logical Disk Information")
            .Add("Threshold", ld.threshold)
            .Add("Actual Used Capacity", F::WithCommas(ld.actualUsedCapacity));
}

void ViewCommand::AddAccessControl(ViewDocument& doc, const ViewRecords& records) {
    ViewChapter& chapter = doc.AddChapter("Access Control");
    for (const LdSetRecord& set : records.ldSets) {
        LdSetNames names = NamesOf(set.kind);
        ViewObject& object = chapter.AddObject(names.object);
        ViewSection& main = object.AddSection(names.section);
        main.Add("Platform", set.platform)
            .Add("LD Set Name", set.name)
            .Add("Configuration Change", set.configurationChange)
            .Add("Action mode", set.actionMode);
        const bool iscsi = set.kind == LdSetRecord::Kind::Iscsi;
        if (iscsi) {
            main.Add("Target Mode", set.targetMode)
                .Add("Target Name", set.targetName)
                .Add("Initiator Count", Num(static_cast<long long>(set.initiators.size())))
                .Add("Authentication Method", set.authenticationMethod);
            if (!set.portals.empty()) {
                ViewSection& portals = object.AddSection("Portal");
                for (const std::string& portal : set.portals) portals.Add("Portal", portal);
            }
            if (!set.initiators.empty()) {
                ViewSection& initiators = object.AddSection("Initiator List");
                for (const std::string& initiator : set.initiators) initiators.Add("Initiator List", initiator);
            }
        } else if (!set.paths.empty()) {
            ViewSection& paths = object.AddSection("Path List");
            for (const std::string& path : set.paths) paths.Add("Path", path);
        }
        for (const LunRecord& lun : set.luns)
            object.AddSection("LUN/LD List").Add("LUN(h)", F::Hex(lun.lun, 4)).Add("LDN(h)", F::Hex(lun.ldn, 4));
    }
}

}  // namespace arraysim
