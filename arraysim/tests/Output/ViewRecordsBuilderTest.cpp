// From the simulator's state to the records the view tools report.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Templates.h"
#include "ViewError.h"
#include "ViewRecordsBuilder.h"

using namespace arraysim;

namespace {

ArrayState Medium() {
    TemplateOptions options;
    options.size = "medium";
    options.protocol = "mixed";
    return Templates::Build(options);
}

int CodeOf(const ArrayState& state) {
    try {
        ViewRecordsBuilder::Build(state);
    } catch (const ViewError& e) {
        return e.ReturnCode();
    }
    return 0;
}

}  // namespace

TEST(ViewRecordsBuilder, EveryObjectOfTheStateIsReportedWithItsRelations) {
    const ArrayState state = Medium();
    const ViewRecords records = ViewRecordsBuilder::Build(state);

    EXPECT_EQ(records.array.worldWideName, state.identity.worldWideName);
    EXPECT_EQ(records.array.adminPorts.size(), state.identity.adminPorts.size());
    EXPECT_EQ(records.controllers.size(), state.controllers.size());
    EXPECT_EQ(records.ports.size(), state.ports.size());
    EXPECT_EQ(records.enclosure.size(), state.enclosure.size());
    EXPECT_EQ(records.disks.size(), state.disks.size());
    ASSERT_EQ(records.pools.size(), state.pools.size());
    ASSERT_EQ(records.lds.size(), state.lds.size());
    ASSERT_EQ(records.ldSets.size(), state.ldSets.size());
    ASSERT_EQ(records.pairs.size(), state.pairs.size());
    ASSERT_EQ(records.snapshots.size(), state.snapshots.size());

    // Each LD carries the name, RAID and disk type of its own pool.
    std::map<unsigned, const PoolRecord*> pools;
    for (const PoolRecord& pool : records.pools) pools[pool.number] = &pool;
    bool sawVirtual = false;
    for (const LdRecord& ld : records.lds) {
        const PoolRecord* pool = pools.at(ld.poolNumber);
        EXPECT_EQ(ld.poolName, pool->name);
        EXPECT_EQ(ld.raidType, pool->raidType);
        EXPECT_EQ(ld.pdType, pool->pdType);
        EXPECT_EQ(ld.onVirtualPool, pool->poolType == "virtual") << ld.name;
        sawVirtual |= ld.onVirtualPool;
    }
    EXPECT_TRUE(sawVirtual) << "the medium template should have LDs on virtual pools";

    // Pairs and snapshots name their volumes.
    for (size_t i = 0; i < state.pairs.size(); ++i) {
        EXPECT_EQ(records.pairs[i].mvName, state.FindLd(state.pairs[i].mvNumber)->name);
        EXPECT_EQ(records.pairs[i].rvName, state.FindLd(state.pairs[i].rvNumber)->name);
        EXPECT_EQ(records.pairs[i].syncState, state.pairs[i].syncState);
    }
    for (size_t i = 0; i < state.snapshots.size(); ++i) {
        const SnapshotBaseRecord& base = records.snapshots[i];
        EXPECT_EQ(base.name, state.FindLd(state.snapshots[i].number)->name);
        EXPECT_EQ(base.type, "BV");
        ASSERT_EQ(base.generations.size(), state.snapshots[i].generations.size());
        for (size_t g = 0; g < base.generations.size(); ++g) {
            EXPECT_EQ(base.generations[g].name, state.FindLd(state.snapshots[i].generations[g].number)->name);
            EXPECT_EQ(base.generations[g].type, "SV");
        }
    }

    // Kinds named in the state become the kinds of the records.
    std::map<EnclosureRecord::Kind, int> kinds;
    for (const EnclosureRecord& e : records.enclosure) ++kinds[e.kind];
    std::map<std::string, int> stateKinds;
    for (const EnclosureComponent& e : state.enclosure) ++stateKinds[e.kind];
    EXPECT_EQ(kinds[EnclosureRecord::Kind::BackBoard], stateKinds["backboard"]);
    EXPECT_EQ(kinds[EnclosureRecord::Kind::PowerSupply], stateKinds["power"]);
    EXPECT_EQ(kinds[EnclosureRecord::Kind::Temperature], stateKinds["temperature"]);
    for (size_t i = 0; i < state.ldSets.size(); ++i) {
        const LdSetRecord::Kind expected = state.ldSets[i].kind == "fc"      ? LdSetRecord::Kind::Fc
                                           : state.ldSets[i].kind == "iscsi" ? LdSetRecord::Kind::Iscsi
                                           : state.ldSets[i].kind == "sas"   ? LdSetRecord::Kind::Sas
                                                                             : LdSetRecord::Kind::Old;
        EXPECT_EQ(records.ldSets[i].kind, expected);
        EXPECT_EQ(records.ldSets[i].luns.size(), state.ldSets[i].luns.size());
    }
}

TEST(ViewRecordsBuilder, AccessControlModeAndReserveArea) {
    ArrayState state = Medium();
    state.identity.accessControl = false;
    ASSERT_FALSE(state.snapshots.empty());
    state.snapshots[0].reserveArea.clear();
    ViewRecords records = ViewRecordsBuilder::Build(state);
    EXPECT_EQ(records.array.accessControlMode, "off");
    EXPECT_EQ(records.snapshots[0].reserveArea, "---");
    state.identity.accessControl = true;
    EXPECT_EQ(ViewRecordsBuilder::Build(state).array.accessControlMode, "on");
}

TEST(ViewRecordsBuilder, ADamagedStateIsRefusedNotHalfReported) {
    const ArrayState good = Medium();
    ASSERT_EQ(CodeOf(good), 0);

    ArrayState state = good;
    state.lds[0].poolNumber = 0xFFFF;
    EXPECT_EQ(CodeOf(state), ViewError::kInternal);

    state = good;
    state.pairs[0].rvNumber = 0xFFFF;
    EXPECT_EQ(CodeOf(state), ViewError::kInternal);

    state = good;
    state.snapshots[0].generations[0].number = 0xFFFF;
    EXPECT_EQ(CodeOf(state), ViewError::kInternal);

    state = good;
    state.enclosure[0].kind = "blower";
    EXPECT_EQ(CodeOf(state), ViewError::kInternal);

    state = good;
    state.ldSets[0].kind = "nvme";
    try {
        ViewRecordsBuilder::Build(state);
        ADD_FAILURE() << "an unknown LD set kind was accepted";
    } catch (const ViewError& e) {
        EXPECT_NE(std::string(e.what()).find("nvme"), std::string::npos) << e.what();
    }
}

TEST(ViewRecordsBuilder, VirtualPoolsAndLdsReportWhetherTheirThresholdIsReached) {
    ArrayState state = Medium();
    Pool* virtualPool = nullptr;
    for (Pool& pool : state.pools)
        if (pool.poolType == "virtual") virtualPool = &pool;
    ASSERT_NE(virtualPool, nullptr);
    LogicalDisk* ld = nullptr;
    for (LogicalDisk& candidate : state.lds)
        if (candidate.poolNumber == virtualPool->number) ld = &candidate;
    ASSERT_NE(ld, nullptr);

    auto words = [&] {
        const ViewRecords records = ViewRecordsBuilder::Build(state);
        std::string poolWord, ldWord;
        for (const PoolRecord& p : records.pools)
            if (p.number == virtualPool->number) poolWord = p.threshold;
        for (const LdRecord& l : records.lds)
            if (l.number == ld->number) ldWord = l.threshold;
        return std::make_pair(poolWord, ldWord);
    };

    virtualPool->actualCapacityThreshold = 90;
    virtualPool->actualCapacity = 1000ULL << 30;
    virtualPool->actualUsedCapacity = 500ULL << 30;
    ld->capacity = 1000ULL << 20;
    ld->threshold = "80";
    ld->actualUsedCapacity = 0;
    EXPECT_EQ(words(), std::make_pair(std::string("normal"), std::string("normal")));

    // At the percentage itself the threshold counts as reached.
    virtualPool->actualUsedCapacity = 900ULL << 30;
    ld->actualUsedCapacity = 800ULL << 20;
    EXPECT_EQ(words(), std::make_pair(std::string("exceeded"), std::string("exceeded")));

    // An LD bound without a threshold never reaches one.
    ld->threshold = "---";
    ld->actualUsedCapacity = ld->capacity;
    EXPECT_EQ(words().second, "normal");
}
