#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "Command.h"
#include "DacRawData.h"
#include "DataCenter.h"
#include "DataFlow.h"
#include "DataflowSource.h"
#include "DeRawData.h"
#include "PipelineTestSupport.h"
#include "RawDataCenter.h"
#include "XMLParser.h"
#include "SimulatorRun.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

using namespace simrun;

class SimulatorView : public QueryCommand {
public:
    explicit SimulatorView(XMLParser& parser) : QueryCommand(&parser) { m_commandLine = "Vexview -all"; }
    bool Execute() override { return runView(*m_parser); }
    void GetQueryDataType(std::vector<int>& types) override { types = {0, 1, 4}; }
};

class NotingModels : public DataCenter {
public:
    void AddData(const std::vector<RawData*>* r, const std::string&) override { note("add", *r); }
    void DeleteData(const std::vector<RawData*>* r, const std::string&) override { note("delete", *r); }
    void ModifyData(const std::vector<RawData*>* r, const std::string&) override { note("modify", *r); }
    void Destroy() override {}
    void note(const std::string& verb, const std::vector<RawData*>& records) {
        log.push_back(verb + " " + RawData::TypeToString(records.front()->type) + " " +
                      std::to_string(records.size()));
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

class SimulatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(sim("init --template small"), 0) << "simulator at " << SIM_BIN;
        sim("fault clear");
    }
    void TearDown() override { sim("fault clear"); }
};

}  // namespace

TEST_F(SimulatorTest, SmallArrayViewBecomesRecords) {
    XMLParser parser;
    ASSERT_TRUE(runView(parser));
    std::vector<RawData*> out;
    ASSERT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 1);
    ArrayRawData* array = dynamic_cast<ArrayRawData*>(out[0]);
    ASSERT_NE(array, nullptr);
    EXPECT_FALSE(array->name.empty());
    EXPECT_EQ(array->name, array->worldWideName);
    EXPECT_EQ(array->vendorID, "ORV");
    EXPECT_EQ(array->hostDirectorCount, 2);
    EXPECT_EQ(array->redundancyStatus, 2);
    EXPECT_FALSE(array->adminPorts.empty());

    ASSERT_EQ(parser.QueryData(out, RAWDATA_DAC), 2);
    EXPECT_EQ(out[1]->name, "00");
    EXPECT_EQ(out[2]->name, "01");
    EXPECT_EQ(out[2]->arrayId, array->name);
    EXPECT_EQ(dynamic_cast<DacRawData*>(out[1])->state, "ready");

    ASSERT_EQ(parser.QueryData(out, RAWDATA_DE), 1);
    DeRawData* de = dynamic_cast<DeRawData*>(out[3]);
    ASSERT_NE(de, nullptr);
    EXPECT_FALSE(de->fans.empty());
    EXPECT_FALSE(de->powerSupplies.empty());
    EXPECT_FALSE(de->backBoards.empty());
    ReleaseRawDataList(out);
}

TEST_F(SimulatorTest, ConsoleChangesFlowThroughAndBrokenAnswersChangeNothing) {
    NoDelegate delegate;
    RawDataCenter store;
    NotingModels models;
    DataFlow flow(&delegate, &store, &models);
    DataflowStorageSource source(&flow, false);
    source.AddCommand(new SimulatorView(source.GetParser()));

    ASSERT_TRUE(source.LoadData());
    EXPECT_EQ(models.log, (std::vector<std::string>{"add array 1", "add dac 2", "add de 1"}));
    std::vector<RawData*> arrays;
    ASSERT_TRUE(store.GetData(RAWDATA_ARRAY, "", arrays));
    ArrayRawData* array = static_cast<ArrayRawData*>(arrays[0]);

    models.log.clear();
    ASSERT_EQ(sim("set controller 01 --state failure"), 0);
    ASSERT_TRUE(source.LoadData());
    EXPECT_EQ(models.log, (std::vector<std::string>{"modify array 1", "modify dac 1"}));
    EXPECT_EQ(array->redundancyStatus, 3);  // the stored object took the new values

    for (const char* mode : {"fail", "prefix --text 'Vexview: warning'", "truncate", "malformed", "empty"}) {
        SCOPED_TRACE(mode);
        models.log.clear();
        ASSERT_EQ(sim(std::string("fault Vexview --mode ") + mode), 0);
        EXPECT_FALSE(source.LoadData());
        EXPECT_TRUE(models.log.empty());
        EXPECT_TRUE(store.validateArrayData(array->name));
        EXPECT_EQ(array->redundancyStatus, 3);
    }
    // The next good answer finds nothing new.
    models.log.clear();
    ASSERT_TRUE(source.LoadData());
    EXPECT_TRUE(models.log.empty());
    ReleaseRawDataList(arrays);
    store.Destroy();
}
