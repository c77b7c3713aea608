#include "Templates.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>

namespace arraysim {

namespace {

constexpr std::uint64_t kGiB = 1024ULL * 1024 * 1024;
constexpr int kDisksPerDe = 24;
constexpr long long kBaseTime = 1767225600;  // 2026-01-01 00:00:00 UTC: times in a template do not depend on today

std::string hex(unsigned long long value, int width) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*llX", width, value);
    return buffer;
}

// WWPN in the array's grouped form: xxxx-xxxx-xxxx-xxxx.
std::string groupedWwn(std::uint64_t value) {
    const std::string digits = hex(value, 16);
    return digits.substr(0, 4) + "-" + digits.substr(4, 4) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4);
}

struct DiskKind {
    const char* type;
    std::uint64_t capacity;
    const char* speed;
    const char* product;
    const char* rate;
};

const DiskKind kDiskKinds[] = {
    {"SAS", 1200ULL * 1000 * 1000 * 1000, "10000", "ST1200SAS10K", "12Gbps"},
    {"NLSAS", 4000ULL * 1000 * 1000 * 1000, "7200", "NL4000SAS7K", "12Gbps"},
    {"SSD", 960ULL * 1000 * 1000 * 1000, "---", "SS960SAS", "12Gbps"},
};

struct RaidChoice {
    const char* text;
    int disks;
    int dataDisks;
};

// The largest RAID that fits the disks a pool may take.
RaidChoice raidFor(int disks) {
    if (disks >= 6) return {"RAID6/60(4+PQ)", 6, 4};
    if (disks >= 5) return {"RAID5/50(4+P)", 5, 4};
    if (disks >= 4) return {"RAID1/10", 4, 2};
    return {"RAID1/10", 2, 1};
}

std::vector<std::string> protocolsFor(const std::string& protocol) {
    if (protocol == "fc") return {"FC"};
    if (protocol == "iscsi") return {"iSCSI"};
    if (protocol == "sas") return {"SAS"};
    return {"FC", "iSCSI", "SAS"};
}

class Builder {
public:
    Builder(const TemplateOptions& options, const TemplateCounts& counts)
        : m_options(options), m_counts(counts), m_random(options.seed) {}

    ArrayState Build() {
        identity();
        controllersAndPorts();
        disksAndEnclosure();
        pools();
        lds();
        pairs();
        snapshots();
        ldSets();
        // Snapshot volumes took the size of their base: count what each pool holds again.
        for (auto& pool : m_state.pools) pool.usedCapacity = 0;
        for (auto& ld : m_state.lds) {
            Pool* pool = m_state.FindPool(ld.poolNumber);
            pool->usedCapacity += ld.capacity;
            if (pool->poolType == "virtual") ld.actualUsedCapacity = ld.capacity / 8;
        }
        // A reserve area takes room in its pool as a bound LD does.
        for (const auto& area : m_state.reserveAreas) m_state.FindPool(area.poolNumber)->usedCapacity += area.capacity;
        for (auto& pool : m_state.pools) {
            if (pool.poolType != "virtual") continue;
            pool.actualUsedCapacity = 0;
            for (const auto& ld : m_state.lds)
                if (ld.poolNumber == pool.number) pool.actualUsedCapacity += ld.actualUsedCapacity;
        }
        return m_state;
    }

private:
    std::uint64_t next() { return m_random(); }

    void identity() {
        Identity& id = m_state.identity;
        const std::uint64_t serial = next() % 10000000000ULL;
        id.diskArrayName = "Array" + hex(serial % 0x10000, 4);
        id.vendorId = "ORV";
        id.productId = m_counts.disks > 600 ? "ORV-M5000" : "ORV-M3000";
        id.productFwRevision = "0971";
        id.serialNumber = "0000" + std::to_string(1000000000ULL + serial % 9000000000ULL);
        id.saa = "2000" + hex(next() & 0xFFFFFFFFFFFFULL, 12) + "0000" + hex(serial & 0xFFFF, 4);
        id.worldWideName = "2000" + hex(next() & 0xFFFFFFFFFFFFULL, 12);
        id.numberOfDe = (m_counts.disks + kDisksPerDe - 1) / kDisksPerDe;
        id.userSystemCode = "0000000000000";
        id.storageControlSoftwareRevision = "097100";
        id.unitName = id.diskArrayName;
        id.unitContact = "storage-admin";
        id.unitLocation = "Server room 1";
        id.floatingIpv4 = "192.168.10.10";
        id.floatingIpv6 = "---";
        for (int c = 0; c < m_options.controllers; ++c)
            id.adminPorts.push_back({"192.168.10." + std::to_string(11 + c), "---"});
        id.maxLdNumOfTarget = 4096;
        id.maxNumOfTarget = 1024;
        id.maxLdNumOfOwnerId = 8192;
        id.baseProducts = {{"BaseProduct", "9.71", "0001", "---"},
                           {"AccessControl", "9.71", "0001", "---"},
                           {"DynamicDataReplication", "9.71", "0001", "---"},
                           {"DynamicSnapVolume", "9.71", "0001", "---"}};
        id.accessControl = true;
    }

    void controllersAndPorts() {
        const std::vector<std::string> protocols = protocolsFor(m_protocol());
        const std::uint64_t wwnBase = (0x2100ULL << 48) | ((next() & 0xFFFFFFFFULL) << 8);
        int made = 0;
        for (int c = 0; c < m_options.controllers; ++c) {
            Controller controller;
            controller.number = static_cast<unsigned>(c);
            controller.protocol = protocols.front();
            m_state.controllers.push_back(controller);
            for (int p = 0; p < m_counts.portsPerController; ++p, ++made) {
                Port port;
                port.director = static_cast<unsigned>(c);
                port.port = static_cast<unsigned>(p);
                port.protocol = protocols[static_cast<std::size_t>(p) % protocols.size()];
                port.portName = "HostPort" + hex(static_cast<unsigned>(c), 2) + "-" + hex(static_cast<unsigned>(p), 2);
                port.hpeNo = static_cast<unsigned>(made);
                port.mode = "WWN";
                port.physicalPortMaint = "---";
                port.loginErrorCode = "---";
                if (port.protocol == "FC") {
                    port.portType = "FC";
                    port.wwnn = hex(wwnBase - (0x100ULL << 48), 16);
                    port.wwpns = {hex(wwnBase + static_cast<std::uint64_t>(made), 16)};
                    port.dataRates = {"16Gbps"};
                    port.savedDataRate = "Auto";
                    port.topology = "Fabric";
                    port.nPortIdSwitch = "---";
                } else if (port.protocol == "SAS") {
                    port.portType = "SAS";
                    port.wwnn = hex(0x5000000000000000ULL | (wwnBase & 0xFFFFFFFFFF00ULL), 16);
                    for (int lane = 0; lane < 4; ++lane)
                        port.wwpns.push_back(hex(0x5000000000000000ULL | (wwnBase & 0xFFFFFFFFFF00ULL) |
                                                     static_cast<std::uint64_t>(made * 4 + lane),
                                                 16));
                    port.dataRates = {"12Gbps", "12Gbps", "12Gbps", "12Gbps"};
                    port.savedDataRate = "Auto";
                    port.topology = "---";
                } else {
                    port.portType = "iSCSI";
                    port.ipAddress = "192.168." + std::to_string(20 + c) + "." + std::to_string(10 + p);
                    port.subnetMask = "255.255.255.0";
                    port.defaultGateway = "192.168." + std::to_string(20 + c) + ".1";
                    port.ipv6Address = "---";
                    port.defaultRouter = "---";
                    port.mtu = 9000;
                    port.linkSpeedSetting = "Auto";
                    port.linkSpeedCurrent = "10Gbps";
                    port.linkStatus = "Link Up";
                    port.macAddress = "00:00:4C:" + hex(static_cast<unsigned>(c), 2) + ":" +
                                      hex(static_cast<unsigned>(p), 2) + ":" + hex(next() & 0xFF, 2);
                }
                m_state.ports.push_back(port);
            }
        }
    }

    void disksAndEnclosure() {
        const int groups = m_state.identity.numberOfDe;
        for (int g = 0; g < groups; ++g) {
            // The first shelf holds the kind most pools use; the others vary.
            const DiskKind& kind = kDiskKinds[g % 3];
            const int inGroup = std::min(kDisksPerDe, m_counts.disks - g * kDisksPerDe);
            for (int n = 0; n < inGroup; ++n) {
                Disk disk;
                disk.group = static_cast<unsigned>(g);
                disk.number = static_cast<unsigned>(n);
                disk.type = kind.type;
                disk.capacity = kind.capacity;
                disk.rotationalSpeed = kind.speed;
                disk.vendorId = "ORVDISK";
                disk.productId = kind.product;
                disk.productRevision = "A3C0";
                disk.serialNumber = hex(next() & 0xFFFFFFFFFFULL, 10);
                disk.transferRate = kind.rate;
                disk.nodeNo = 0;
                m_state.disks.push_back(disk);
            }
            const unsigned de = static_cast<unsigned>(g);
            auto add = [&](const char* kindName, const char* type, const char* abbr, unsigned number) {
                EnclosureComponent part;
                part.kind = kindName;
                part.type = type;
                part.abbreviatedName = abbr;
                part.deNumber = de;
                part.number = number;
                m_state.enclosure.push_back(part);
                return &m_state.enclosure.back();
            };
            EnclosureComponent* board = add("backboard", "Back Board", "BB", 0);
            board->maximumPds = kDisksPerDe;
            board->verticalPds = 1;
            board->horizontalPds = kDisksPerDe;
            board->insertDirection = "vertical";
            board->deType = g == 0 ? "DAC" : "DE";
            for (unsigned n = 0; n < 2; ++n) add("power", "Power Supply", "PS", n);
            for (unsigned n = 0; n < 2; ++n) add("fan", "Fan", "FAN", n);
            add("temperature", "Temperature", "TEMP", 0);
            if (g == 0)
                for (int c = 0; c < m_options.controllers; ++c) add("adapter", "Adapter", "ADP", static_cast<unsigned>(c));
        }
    }

    void pools() {
        if (m_counts.pools == 0) return;
        // Pools take at most three quarters of the disks, so poolbind finds free ones.
        const int perPool = std::max(2, (m_counts.disks * 3 / 4) / m_counts.pools);
        std::size_t cursor = 0;
        for (int p = 0; p < m_counts.pools; ++p) {
            const RaidChoice raid = raidFor(perPool);
            // The pool's disks: free ones of one group (one type).
            while (cursor < m_state.disks.size()) {
                const unsigned group = m_state.disks[cursor].group;
                std::size_t end = cursor;
                while (end < m_state.disks.size() && m_state.disks[end].group == group) ++end;
                if (end - cursor >= static_cast<std::size_t>(raid.disks)) break;
                cursor = end;
            }
            if (cursor + static_cast<std::size_t>(raid.disks) > m_state.disks.size())
                throw std::logic_error("template has too few disks for its pools");
            Pool pool;
            pool.number = static_cast<unsigned>(p);
            pool.name = "Pool" + hex(static_cast<unsigned>(p), 4);
            pool.raidType = raid.text;
            pool.baseDisks = raid.disks;
            pool.noBpd = static_cast<unsigned>(raid.disks);
            pool.pdType = m_state.disks[cursor].type;
            std::uint64_t raw = 0;
            for (int d = 0; d < raid.disks; ++d, ++cursor) {
                Disk& disk = m_state.disks[cursor];
                disk.classification = "pool";
                disk.poolNumber = p;
                disk.rankGroup = static_cast<unsigned>(p);
                pool.disks.push_back(hex(disk.group, 2) + "-" + hex(disk.number, 4));
                raw = disk.capacity;
            }
            // Usable capacity in whole GiB, as the array allocates it.
            pool.capacity = (raw * static_cast<std::uint64_t>(raid.dataDisks) / kGiB) * kGiB;
            pool.numberOfRaid5s = std::string(raid.text).rfind("RAID5", 0) == 0 ? 1 : 0;
            if (m_counts.virtualPools > 0 && p % m_counts.virtualPools == m_counts.virtualPools - 1) {
                pool.poolType = "virtual";
                pool.actualCapacity = pool.capacity;
                pool.capacity *= 4;
                pool.threshold = "80";
                pool.actualCapacityThreshold = 90;
            }
            m_state.pools.push_back(pool);
        }
    }

    void lds() {
        if (m_counts.pools == 0) return;
        const int perPool = (m_counts.lds + m_counts.pools - 1) / m_counts.pools;
        for (int n = 0; n < m_counts.lds; ++n) {
            Pool& pool = m_state.pools[static_cast<std::size_t>(n % m_counts.pools)];
            LogicalDisk ld;
            ld.number = static_cast<unsigned>(n);
            ld.name = "LD" + hex(static_cast<unsigned>(n), 4);
            ld.poolNumber = pool.number;
            // Half of each pool is bound, in whole GiB.
            ld.capacity = std::max<std::uint64_t>(1, pool.capacity / 2 / static_cast<std::uint64_t>(perPool) / kGiB) * kGiB;
            ld.defaultOwner = std::to_string(n % m_options.controllers);
            ld.currentOwner = ld.defaultOwner;
            ld.rplAttribute = "IV";   // in no pair
            pool.usedCapacity += ld.capacity;
            if (pool.poolType == "virtual") {
                ld.threshold = "80";
                ld.actualUsedCapacity = ld.capacity / 8;
                pool.actualUsedCapacity += ld.actualUsedCapacity;
            }
            m_state.lds.push_back(ld);
        }
    }

    // Pairs take LDs from the end downwards so the first LDs stay plain volumes.
    void pairs() {
        std::size_t rv = m_state.lds.size();
        for (int p = 0; p < m_counts.pairs && rv >= 2; ++p) {
            LogicalDisk& rvLd = m_state.lds[--rv];
            LogicalDisk& mvLd = m_state.lds[--rv];
            // A pair's volumes are of one size: the smaller, so both pools keep their room.
            mvLd.capacity = rvLd.capacity = std::min(mvLd.capacity, rvLd.capacity);
            mvLd.purpose = "RPL";
            mvLd.rplAttribute = "MV";
            rvLd.purpose = "RPL";
            rvLd.rplAttribute = "RV";
            ReplicationPair pair;
            pair.mvNumber = mvLd.number;
            pair.rvNumber = rvLd.number;
            pair.startTime = kBaseTime + p * 60;
            if (p % 2 == 0) {
                pair.syncState = "rpl/sync";
                pair.copyControlState = "background copy";
                pair.rvAccess = "nr";
            } else {
                pair.syncState = "separated";
                pair.copyControlState = "-";
                pair.endTime = pair.startTime + 3600;
                pair.rvAccess = "rw";
            }
            m_state.pairs.push_back(pair);
        }
        m_firstUsedByPairs = rv;
    }

    void snapshots() {
        std::size_t cursor = m_firstUsedByPairs;
        const int perBase = 1 + m_counts.generationsPerBase;
        for (int b = 0; b < m_counts.snapshotBases && cursor >= static_cast<std::size_t>(perBase); ++b) {
            cursor -= static_cast<std::size_t>(perBase);
            LogicalDisk& bv = m_state.lds[cursor];
            // Snapshot volumes are the size of their base: the smallest of the group.
            for (int g = 0; g < m_counts.generationsPerBase; ++g)
                bv.capacity = std::min(bv.capacity, m_state.lds[cursor + 1 + static_cast<std::size_t>(g)].capacity);
            bv.purpose = "Snapshot";
            bv.snapshotAttribute = "BV";
            SnapshotBase base;
            base.number = bv.number;
            // The reserve area: a part of the BV's pool set aside for snapshot data.
            SnapshotReserveArea area;
            area.ldNumber = bv.number;
            area.poolNumber = bv.poolNumber;
            area.capacity = std::max<std::uint64_t>(kGiB, bv.capacity / 4 / kGiB * kGiB);
            base.reserveArea = bv.name;
            for (int g = 0; g < m_counts.generationsPerBase; ++g) {
                LogicalDisk& sv = m_state.lds[cursor + 1 + static_cast<std::size_t>(g)];
                sv.purpose = "Snapshot";
                sv.snapshotAttribute = "SV";
                sv.capacity = bv.capacity;
                sv.poolNumber = bv.poolNumber;   // snapshot volumes live beside their base
                SnapshotGeneration generation;
                generation.number = sv.number;
                generation.generation = g + 1;
                generation.creationTime = kBaseTime + 86400 + b * 600 + g * 60;
                generation.startTime = generation.creationTime;
                generation.snapshotDataSize = (next() % 64 + 1) * 1024 * 1024;
                area.usedCapacity += generation.snapshotDataSize;
                base.generations.push_back(generation);
            }
            m_state.reserveAreas.push_back(area);
            m_state.snapshots.push_back(base);
        }
    }

    void ldSets() {
        const std::vector<std::string> protocols = protocolsFor(m_protocol());
        const char* platforms[] = {"LX", "WN", "VX", "CX"};
        std::vector<unsigned> mappable;
        for (const auto& ld : m_state.lds) mappable.push_back(ld.number);
        const std::size_t mappings = std::min<std::size_t>(static_cast<std::size_t>(m_counts.lunMappings), mappable.size());
        const std::uint64_t hostWwn = (0x2100ULL << 48) | ((next() & 0xFFFFFFULL) << 16);
        for (int s = 0; s < m_counts.ldSets; ++s) {
            LdSet set;
            const std::string& protocol = protocols[static_cast<std::size_t>(s) % protocols.size()];
            set.kind = protocol == "FC" ? "fc" : protocol == "SAS" ? "sas" : "iscsi";
            set.platform = platforms[s % 4];
            set.name = "HOST" + hex(static_cast<unsigned>(s), 4);
            if (set.kind == "iscsi") {
                set.targetMode = "single";
                set.targetName = "iqn.2001-03.jp.example:storage01.array.target" + hex(static_cast<unsigned>(s), 4);
                set.authenticationMethod = "none";
                set.initiators = {"iqn.1994-05.com.example:host" + hex(static_cast<unsigned>(s), 4)};
            } else {
                for (int path = 0; path < 2; ++path)
                    set.paths.push_back(groupedWwn(hostWwn + static_cast<std::uint64_t>(s * 2 + path)));
            }
            m_state.ldSets.push_back(set);
        }
        for (std::size_t m = 0; m < mappings && !m_state.ldSets.empty(); ++m) {
            LdSet& set = m_state.ldSets[m % m_state.ldSets.size()];
            set.luns.push_back({static_cast<unsigned>(set.luns.size()), mappable[m]});
        }
    }

    std::string m_protocol() const {
        if (!m_options.protocol.empty()) return m_options.protocol;
        return m_options.size == "max" ? "mixed" : "fc";
    }

    TemplateOptions m_options;
    TemplateCounts m_counts;
    std::mt19937_64 m_random;
    ArrayState m_state;
    std::size_t m_firstUsedByPairs = 0;
};

}  // namespace

std::vector<std::string> Templates::Sizes() { return {"small", "medium", "large", "max"}; }

TemplateCounts Templates::Counts(const std::string& size) {
    //                       disks pools virt  lds  sets  luns ports pairs bases gens
    static const std::map<std::string, TemplateCounts> counts = {
        {"small", {24, 2, 0, 16, 4, 12, 2, 2, 1, 2}},
        {"medium", {96, 8, 4, 128, 16, 96, 4, 16, 8, 2}},
        {"large", {384, 32, 4, 1024, 128, 768, 8, 64, 32, 4}},
        {"max", {1152, 256, 2, 8192, 1024, 8192, 32, 512, 256, 4}},
    };
    auto it = counts.find(size);
    if (it == counts.end())
        throw std::invalid_argument("unknown template \"" + size + "\": choose small, medium, large or max");
    return it->second;
}

ArrayState Templates::Build(const TemplateOptions& options) {
    TemplateCounts counts = Counts(options.size);
    if (!options.protocol.empty() && options.protocol != "fc" && options.protocol != "iscsi" &&
        options.protocol != "sas" && options.protocol != "mixed")
        throw std::invalid_argument("unknown protocol \"" + options.protocol + "\": choose fc, iscsi, sas or mixed");
    if (options.controllers != 1 && options.controllers != 2)
        throw std::invalid_argument("--controllers must be 1 or 2");
    // One controller carries the same number of ports in all.
    if (options.controllers == 1) counts.portsPerController *= 2;
    return Builder(options, counts).Build();
}

}  // namespace arraysim
