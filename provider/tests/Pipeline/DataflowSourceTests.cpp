#include <gtest/gtest.h>

#include <stdio.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "Command.h"
#include "ConfigManager.h"
#include "DataCenter.h"
#include "DataFlow.h"
#include "DataflowSource.h"
#include "DeRawData.h"
#include "Exception.h"
#include "PipelineTestSupport.h"
#include "RawDataCenter.h"
#include "Singleton.h"
#include "XMLParser.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

void setConfig(const std::string& section, const std::string& key, const std::list<std::string>& values) {
    Singleton<ConfigManager>::Instance()->SetConfigValue(section, key, values);
}

// Stands for the models: notes each call, and fails when told to.
class NotingModels : public DataCenter {
public:
    void AddData(const std::vector<RawData*>* r, const std::string&) override { note("add", *r); }
    void DeleteData(const std::vector<RawData*>* r, const std::string&) override { note("delete", *r); }
    void ModifyData(const std::vector<RawData*>* r, const std::string&) override { note("modify", *r); }
    void Destroy() override {}

    void note(const std::string& verb, const std::vector<RawData*>& records) {
        log.push_back(verb + " " + RawData::TypeToString(records.front()->type) + " " +
                      std::to_string(records.size()));
        if (fail) throw Exception("model refused");
    }
    std::vector<std::string> log;
    bool fail = false;
};

class CountingDelegate : public DataFlowDelegate {
public:
    bool BeforeReceiveAllData(EventArgs*) override { ++opened; return true; }
    bool AfterReceiveAllData(EventArgs*) override { ++committed; return true; }
    bool BeforeReceiveDataPerType(EventArgs*) override { return true; }
    bool AfterReceiveDataPerType(EventArgs*) override { return true; }
    int opened = 0;
    int committed = 0;
};

int g_failovers = 0;
void countFailover() { ++g_failovers; }

// A query that answers with a prepared document, or fails.
class PreparedQuery : public QueryCommand {
public:
    PreparedQuery(XMLParser& parser, const std::string& doc, const std::vector<int>& types, bool ok = true)
        : QueryCommand(&parser), m_doc(doc), m_types(types), m_ok(ok) {
        m_commandLine = "Prepared -query";
    }
    bool Execute() override {
        ++runs;
        m_parser->Unload();
        if (!m_ok) return false;
        m_parser->LoadChunk(m_doc.data(), static_cast<int>(m_doc.size()), 1);
        return m_parser->GetReturnCode();
    }
    void GetQueryDataType(std::vector<int>& types) override { types.insert(types.end(), m_types.begin(), m_types.end()); }

    int runs = 0;

private:
    std::string m_doc;
    std::vector<int> m_types;
    bool m_ok;
};

std::string enclosureDocument() {
    return Document(Chapter("Enclosure", Object("DE_FAN", Section("FAN Information", {{"State", "ready"}}))));
}

class SourceTest : public ::testing::Test {
protected:
    SourceTest() : flow(&delegate, &store, &models) {}
    void SetUp() override {
        DataflowFileSource::ResetFileList();
        DataflowFileSource::SetFailover(countFailover);
        g_failovers = 0;
    }
    void TearDown() override {
        store.Destroy();
        DataflowFileSource::ResetFileList();
        DataflowFileSource::SetFailover(nullptr);
        setConfig("PollingSimulator", "DataFileNames", {});
        setConfig("Test", "CommandType", {"Local"});
    }

    RawDataCenter store;
    CountingDelegate delegate;
    NotingModels models;
    DataFlow flow;
};

}  // namespace

TEST_F(SourceTest, FileSourceReplaysTheListThenStops) {
    DataflowFileSource source(&flow);
    // Not configured: every load fails.
    EXPECT_FALSE(source.LoadData());
    EXPECT_FALSE(source.LoadData());

    WriteRootFile("replay/v1.xml", ViewDocument("2000F1", {"ready", "ready"}));
    WriteRootFile("replay/v2.xml", ViewDocument("2000F1", {"ready", "ready"}, "fault"));
    DataflowFileSource::ResetFileList();
    // The path is joined to the name as it stands.
    setConfig("PollingSimulator", "DataFilePath", {TestRoot() + "/replay/v"});
    setConfig("PollingSimulator", "DataFileNames", {"1.xml", "2.xml"});
    setConfig("PollingSimulator", "RepeatLoad", {"false"});
    setConfig("PollingSimulator", "DispatchToSMIS", {"true"});

    ASSERT_TRUE(source.LoadData());
    // Saved documents are not read for controllers.
    EXPECT_EQ(models.log, (std::vector<std::string>{"add array 1"}));
    std::vector<RawData*> dacs;
    EXPECT_FALSE(store.GetData(RAWDATA_DAC, "2000F1", dacs));
    EXPECT_EQ(DataflowFileSource::m_arrayId, "2000F1");

    ASSERT_TRUE(source.LoadData());
    EXPECT_EQ(models.log.back(), "modify array 1");
    models.log.clear();
    // At the end of the list without repeating: success, and nothing moves.
    EXPECT_TRUE(source.LoadData());
    EXPECT_TRUE(models.log.empty());
    EXPECT_EQ(delegate.opened, 2);
    EXPECT_EQ(g_failovers, 0);

    // With repeating, the list starts again: ready, fault, ready.
    DataflowFileSource::ResetFileList();
    setConfig("PollingSimulator", "RepeatLoad", {"true"});
    ASSERT_TRUE(source.LoadData());
    ASSERT_TRUE(source.LoadData());
    ASSERT_TRUE(source.LoadData());
    EXPECT_EQ(models.log, (std::vector<std::string>{"modify array 1", "modify array 1", "modify array 1"}));
    ArrayRawData* stored = nullptr;
    ASSERT_TRUE(store.GetData("2000F1", RAWDATA_ARRAY, "", reinterpret_cast<RawData**>(&stored)));
    EXPECT_EQ(stored->resourceState, "ready");
    stored->Release();
}

TEST_F(SourceTest, FileSourceFailures) {
    WriteRootFile("replay/bad.xml", "<REQUEST><CMD_REQUEST><RETURN_CODE>0</RET");
    WriteRootFile("replay/good.xml", ViewDocument("2000F2", {"ready"}));
    DataflowFileSource source(&flow);
    std::vector<int> types = {0, 2, 3, 5, 6, 7};
    // A document that cannot be read fails before anything is classified.
    EXPECT_FALSE(source.LoadDataFromFile(TestRoot() + "/replay/bad.xml", types, true));
    EXPECT_FALSE(source.LoadDataFromFile(TestRoot() + "/replay/none.xml", types, true));
    EXPECT_EQ(g_failovers, 0);
    EXPECT_EQ(delegate.opened, 0);
    // A load that fails in dispatch is failed over.
    models.fail = true;
    EXPECT_FALSE(source.LoadDataFromFile(TestRoot() + "/replay/good.xml", types, true));
    EXPECT_EQ(g_failovers, 1);
    EXPECT_EQ(delegate.committed, 0);
    models.fail = false;
}

TEST_F(SourceTest, StorageSourceDispatchesEachQueryAsItsOwnRunAfterAllAreClassified) {
    DataflowStorageSource source(&flow, false);
    PreparedQuery* view = new PreparedQuery(source.GetParser(), ViewDocument("2000S1", {"ready", "fault"}), {0, 1});
    PreparedQuery* enclosure = new PreparedQuery(source.GetParser(), enclosureDocument(), {4});
    source.AddCommand(view);
    source.AddCommand(enclosure);
    ASSERT_TRUE(source.LoadData());
    // Two runs, one per query; the second document has no array, and its
    // records take the id the view gave.
    EXPECT_EQ(delegate.opened, 2);
    EXPECT_EQ(delegate.committed, 2);
    EXPECT_EQ(models.log, (std::vector<std::string>{"add array 1", "add dac 2", "add de 1"}));
    RawData* de = nullptr;
    ASSERT_TRUE(store.GetData("DE0", RAWDATA_DE, "2000S1", &de));
    EXPECT_EQ(de->arrayId, "2000S1");
    de->Release();
    EXPECT_FALSE(source.GetParser().IsLoaded());  // unloaded after the queries
}

TEST_F(SourceTest, StorageSourceWithAFailingQueryChangesNothing) {
    DataflowStorageSource source(&flow, false);
    PreparedQuery* view = new PreparedQuery(source.GetParser(), ViewDocument("2000S2", {"ready", "ready"}), {0, 1});
    PreparedQuery* broken = new PreparedQuery(source.GetParser(), "", {4}, false);
    PreparedQuery* never = new PreparedQuery(source.GetParser(), enclosureDocument(), {4});
    source.AddCommand(view);
    source.AddCommand(broken);
    source.AddCommand(never);
    EXPECT_FALSE(source.LoadData());
    EXPECT_EQ(view->runs, 1);
    EXPECT_EQ(never->runs, 0);
    EXPECT_EQ(delegate.opened, 0);
    EXPECT_TRUE(models.log.empty());
    EXPECT_FALSE(store.validateArrayData("2000S2"));
}

TEST_F(SourceTest, SourceFactory) {
    std::unique_ptr<DataflowSource> file(DataflowSourceFactory::CreateSource(0, &flow));
    std::unique_ptr<DataflowSource> storage(DataflowSourceFactory::CreateSource(1, &flow));
    EXPECT_NE(dynamic_cast<DataflowFileSource*>(file.get()), nullptr);
    EXPECT_NE(dynamic_cast<DataflowStorageSource*>(storage.get()), nullptr);
    EXPECT_EQ(DataflowSourceFactory::CreateSource(2, &flow), nullptr);
}
