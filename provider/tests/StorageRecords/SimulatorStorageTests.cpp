#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>

#include <map>
#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "Command.h"
#include "DataCenter.h"
#include "DataFlow.h"
#include "DataflowSource.h"
#include "LdRawData.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "RawDataCenter.h"
#include "StorageRecordsTestSupport.h"
#include "XMLParser.h"
#include "../Pipeline/SimulatorRun.h"

using namespace orvsmis;

namespace {

using namespace simrun;

class StorageView : public QueryCommand {
public:
    explicit StorageView(XMLParser& parser) : QueryCommand(&parser) { m_commandLine = "Vexview -all"; }
    bool Execute() override { return runView(*m_parser); }
    void GetQueryDataType(std::vector<int>& types) override { types = {RAWDATA_ARRAY, RAWDATA_PD, RAWDATA_POOL, RAWDATA_LD}; }
};

class NotingModels : public DataCenter {
public:
    void AddData(const std::vector<RawData*>* r, const std::string&) override { note("add", *r); }
    void DeleteData(const std::vector<RawData*>* r, const std::string&) override { note("delete", *r); }
    void ModifyData(const std::vector<RawData*>* r, const std::string&) override { note("modify", *r); }
    void Destroy() override {}
    void note(const std::string& verb, const std::vector<RawData*>& records) {
        std::string line = verb + " " + RawData::TypeToString(records.front()->type);
        if (verb != "add")
            for (RawData* r : records) line += " " + r->name;
        log.push_back(line);
    }
    std::vector<std::string> log;
};

class NoDelegate : public DataFlowDelegate {
public:
    bool BeforeReceiveAllData(EventArgs*) override { return true; }
    bool AfterReceiveAllData(EventArgs*) override { return true; }
    bool BeforeReceiveDataPerType(EventArgs*) override { return true; }
    bool AfterReceiveDataPerType(EventArgs*) override { return true; }
};

class SimulatorStorage : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(sim("init --template small"), 0) << "simulator at " << SIM_BIN;
        sim("fault clear");
    }
    void TearDown() override { sim("fault clear"); }
};

// "00-05" as the simulator's console names the disk.
std::string consoleDiskId(const std::string& pdn) { return pdn.substr(0, 2) + "h-" + pdn.substr(3) + "h"; }

}  // namespace

namespace {

// Reads one template's view and checks the records against each other.
void checkTemplate(const std::string& name) {
    SCOPED_TRACE(name);
    ASSERT_EQ(sim("init --template " + name), 0);
    XMLParser parser;
    ASSERT_TRUE(runView(parser));
    std::vector<RawData*> out;
    ASSERT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 1);
    const std::string wwn = out[0]->name;
    ReleaseRawDataList(out);

    int disks = parser.QueryData(out, RAWDATA_PD);
    ASSERT_GT(disks, 0);
    int pools = parser.QueryData(out, RAWDATA_POOL);
    ASSERT_GT(pools, 0);
    int lds = parser.QueryData(out, RAWDATA_LD);
    ASSERT_GT(lds, 0);
    ASSERT_EQ(out.size(), static_cast<size_t>(disks + pools + lds));

    std::map<std::string, PoolRawData*> byNumber;
    unsigned long long rawBytes = 0;
    for (RawData* r : out) {
        EXPECT_EQ(r->arrayId, wwn);
        EXPECT_FALSE(r->name.empty());
        if (PdRawData* d = dynamic_cast<PdRawData*>(r)) {
            EXPECT_EQ(d->name, d->PDN);
            EXPECT_EQ(d->PDN.size(), 5u) << d->PDN;
            EXPECT_EQ(d->PDN[2], '-') << d->PDN;
            EXPECT_GT(d->PDCapacity, 0u) << d->PDN;
            EXPECT_FALSE(d->type.empty()) << d->PDN;
            rawBytes += d->PDCapacity;
        } else if (PoolRawData* p = dynamic_cast<PoolRawData*>(r)) {
            EXPECT_EQ(p->name, p->poolNo);
            EXPECT_FALSE(p->RAIDType.empty()) << p->poolNo;
            EXPECT_GT(p->poolCapacity, 0u);
            EXPECT_EQ(p->usedPoolCapacity + p->freePoolCapacity, p->poolCapacity) << p->poolNo;
            EXPECT_GE(p->stripSize, 65536u) << p->poolNo;
            EXPECT_EQ(p->noBPD.size(), 1u) << p->poolNo;
            if (p->poolType == "virtual") EXPECT_GT(p->actualCapacity, 0u) << p->poolNo;
            byNumber[p->poolNo] = p;
        }
    }
    for (RawData* r : out) {
        LdRawData* l = dynamic_cast<LdRawData*>(r);
        if (l == nullptr) continue;
        EXPECT_EQ(l->name, l->LDN);
        EXPECT_GT(l->LDCapacity, 0u) << l->LDN;
        auto pool = byNumber.find(l->poolNo);
        ASSERT_NE(pool, byNumber.end()) << "LD " << l->LDN << " names pool " << l->poolNo;
        EXPECT_EQ(l->PDType, pool->second->PDType) << l->LDN;
        EXPECT_NE(l->GetLdType(), 22) << l->LDN << " purpose " << l->purpose;
    }
    unsigned long long poolBytes = 0;
    for (const auto& p : byNumber) poolBytes += p.second->poolCapacity;
    EXPECT_LT(poolBytes, rawBytes);
    ReleaseRawDataList(out);
}

}  // namespace

TEST_F(SimulatorStorage, DisksPoolsAndVolumesOfTheTemplates) {
    for (const char* name : {"small", "medium"}) checkTemplate(name);
}

TEST_F(SimulatorStorage, ConsoleChangesBecomeModifications) {
    NoDelegate delegate;
    RawDataCenter store;
    NotingModels models;
    DataFlow flow(&delegate, &store, &models);
    DataflowStorageSource source(&flow, false);
    source.AddCommand(new StorageView(source.GetParser()));

    ASSERT_TRUE(source.LoadData());
    EXPECT_EQ(models.log, (std::vector<std::string>{"add array", "add pd", "add pool", "add ld"}));

    std::vector<RawData*> arrays, disks, pools, lds;
    ASSERT_TRUE(store.GetData(RAWDATA_ARRAY, "", arrays));
    const std::string wwn = arrays.front()->name;
    ReleaseRawDataList(arrays);
    ASSERT_TRUE(store.GetData(RAWDATA_PD, wwn, disks));
    ASSERT_TRUE(store.GetData(RAWDATA_POOL, wwn, pools));
    ASSERT_TRUE(store.GetData(RAWDATA_LD, wwn, lds));
    const std::string pdn = disks.front()->name;
    const std::string poolNo = pools.front()->name;
    const std::string ldn = lds.front()->name;
    ReleaseRawDataList(disks);
    ReleaseRawDataList(pools);
    ReleaseRawDataList(lds);

    // Nothing changed: nothing reaches the models.
    models.log.clear();
    ASSERT_TRUE(source.LoadData());
    EXPECT_TRUE(models.log.empty()) << models.log.front();

    struct Row {
        std::string console;
        std::vector<std::string> log;
    } rows[] = {
        {"set disk " + consoleDiskId(pdn) + " --state failure", {"modify pd " + pdn}},
        {"set pool " + poolNo + " --used 50%", {"modify pool " + poolNo}},
        {"set ld " + ldn + " --state failure", {"modify ld " + ldn}},
    };
    for (const Row& row : rows) {
        models.log.clear();
        ASSERT_EQ(sim(row.console), 0) << row.console;
        ASSERT_TRUE(source.LoadData()) << row.console;
        EXPECT_EQ(models.log, row.log) << row.console;
    }
}
