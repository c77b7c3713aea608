// The ready-made arrays: their sizes, their determinism, and that they hang
// together the way the configuration commands expect.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <stdexcept>

#include "Templates.h"

using namespace arraysim;

namespace {

struct Expected {
    std::string size;
    std::size_t disks, pools, lds, ldSets, luns, ports, pairs, bases;
};

void PrintTo(const Expected& expected, std::ostream* out) { *out << expected.size; }

class TemplateSizes : public ::testing::TestWithParam<Expected> {};

TEST_P(TemplateSizes, CountsAndCoherence) {
    const Expected& e = GetParam();
    TemplateOptions options;
    options.size = e.size;
    const ArrayState s = Templates::Build(options);
    EXPECT_EQ(s.controllers.size(), 2u);
    EXPECT_EQ(s.disks.size(), e.disks);
    EXPECT_EQ(s.pools.size(), e.pools);
    EXPECT_EQ(s.lds.size(), e.lds);
    EXPECT_EQ(s.ldSets.size(), e.ldSets);
    EXPECT_EQ(s.ports.size(), e.ports);
    EXPECT_EQ(s.pairs.size(), e.pairs);
    EXPECT_EQ(s.snapshots.size(), e.bases);
    std::size_t luns = 0;
    for (const auto& set : s.ldSets) {
        luns += set.luns.size();
        std::set<unsigned> lunNumbers;
        for (const auto& m : set.luns) {
            EXPECT_TRUE(lunNumbers.insert(m.lun).second) << set.name;
            EXPECT_NE(s.FindLd(m.ldn), nullptr);
        }
    }
    EXPECT_EQ(luns, e.luns);

    // Pools: disks of one group and type, members marked, bound LDs and reserve
    // areas counted, capacity not exceeded.
    std::map<unsigned, std::uint64_t> used;
    for (const auto& ld : s.lds) {
        ASSERT_NE(s.FindPool(ld.poolNumber), nullptr);
        used[ld.poolNumber] += ld.capacity;
    }
    for (const auto& area : s.reserveAreas) used[area.poolNumber] += area.capacity;
    bool freeDisk = false;
    for (const auto& d : s.disks) freeDisk |= d.poolNumber < 0 && d.classification == "not set";
    EXPECT_TRUE(freeDisk) << "poolbind needs free disks";
    for (const auto& p : s.pools) {
        EXPECT_EQ(p.usedCapacity, used[p.number]) << p.number;
        EXPECT_LE(p.usedCapacity, p.capacity);
        ASSERT_EQ(static_cast<int>(p.disks.size()), p.baseDisks);
        std::set<std::string> types;
        for (const auto& d : s.disks)
            if (d.poolNumber == static_cast<int>(p.number)) {
                types.insert(d.type);
                EXPECT_EQ(d.classification, "pool");
            }
        EXPECT_EQ(types.size(), 1u);
        EXPECT_EQ(*types.begin(), p.pdType);
    }
    // Pairs and snapshots: distinct LDs with the matching attributes.
    std::set<unsigned> taken;
    for (const auto& pair : s.pairs) {
        EXPECT_TRUE(taken.insert(pair.mvNumber).second);
        EXPECT_TRUE(taken.insert(pair.rvNumber).second);
        EXPECT_EQ(s.FindLd(pair.mvNumber)->rplAttribute, "MV");
        EXPECT_EQ(s.FindLd(pair.rvNumber)->rplAttribute, "RV");
        EXPECT_EQ(s.FindLd(pair.mvNumber)->capacity, s.FindLd(pair.rvNumber)->capacity);
        // The module's copy-control groups know "-" for a separated pair; "---" marks an error record.
        EXPECT_EQ(pair.copyControlState, pair.syncState == "separated" ? "-" : "background copy");
    }
    for (const auto& ld : s.lds)
        if (taken.count(ld.number) == 0) EXPECT_EQ(ld.rplAttribute, "IV") << ld.name;
    for (const auto& base : s.snapshots) {
        EXPECT_TRUE(taken.insert(base.number).second);
        EXPECT_EQ(s.FindLd(base.number)->snapshotAttribute, "BV");
        EXPECT_FALSE(base.generations.empty());
        for (const auto& g : base.generations) {
            EXPECT_TRUE(taken.insert(g.number).second);
            EXPECT_EQ(s.FindLd(g.number)->snapshotAttribute, "SV");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllSizes, TemplateSizes,
                         ::testing::Values(Expected{"small", 24, 2, 16, 4, 12, 4, 2, 1},
                                           Expected{"medium", 96, 8, 128, 16, 96, 8, 16, 8},
                                           Expected{"large", 384, 32, 1024, 128, 768, 16, 64, 32},
                                           Expected{"max", 1152, 256, 8192, 1024, 8192, 64, 512, 256}),
                         [](const auto& info) { return info.param.size; });

TEST(TemplatesTest, SameOptionsSameArrayOtherSeedOtherIdentity) {
    TemplateOptions options{"medium", "mixed", 2, 42};
    const nlohmann::json first = Templates::Build(options);
    EXPECT_EQ(nlohmann::json(Templates::Build(options)), first);
    options.seed = 43;
    const ArrayState other = Templates::Build(options);
    EXPECT_NE(other.identity.worldWideName, first["identity"]["worldWideName"].get<std::string>());
    EXPECT_EQ(other.lds.size(), first["lds"].size());
}

TEST(TemplatesTest, MaxHasDynamicAndVirtualPoolsAndAllProtocols) {
    TemplateOptions options;
    options.size = "max";
    const ArrayState s = Templates::Build(options);
    std::set<std::string> poolTypes, protocols, kinds;
    for (const auto& p : s.pools) {
        poolTypes.insert(p.poolType);
        if (p.poolType == "virtual") EXPECT_LE(p.actualUsedCapacity, p.actualCapacity);
    }
    for (const auto& p : s.ports) protocols.insert(p.protocol);
    for (const auto& set : s.ldSets) kinds.insert(set.kind);
    EXPECT_EQ(poolTypes, (std::set<std::string>{"dynamic", "virtual"}));
    EXPECT_EQ(protocols, (std::set<std::string>{"FC", "SAS", "iSCSI"}));
    EXPECT_EQ(kinds, (std::set<std::string>{"fc", "iscsi", "sas"}));
}

TEST(TemplatesTest, OptionsShapeControllersAndProtocol) {
    const ArrayState one = Templates::Build(TemplateOptions{"small", "iscsi", 1, 1});
    ASSERT_EQ(one.controllers.size(), 1u);
    EXPECT_EQ(one.ports.size(), 4u);
    for (const auto& p : one.ports) {
        EXPECT_EQ(p.protocol, "iSCSI");
        EXPECT_FALSE(p.ipAddress.empty());
    }
    for (const auto& set : one.ldSets) {
        EXPECT_EQ(set.kind, "iscsi");
        EXPECT_FALSE(set.initiators.empty());
    }
    const ArrayState fc = Templates::Build(TemplateOptions{});
    for (const auto& set : fc.ldSets)
        for (const auto& path : set.paths) EXPECT_EQ(path.size(), 19u) << path;  // xxxx-xxxx-xxxx-xxxx
}

TEST(TemplatesTest, BadOptionsRefused) {
    EXPECT_THROW(Templates::Build(TemplateOptions{"huge", "", 2, 1}), std::invalid_argument);
    EXPECT_THROW(Templates::Build(TemplateOptions{"small", "scsi", 2, 1}), std::invalid_argument);
    EXPECT_THROW(Templates::Build(TemplateOptions{"small", "fc", 3, 1}), std::invalid_argument);
}

}  // namespace
