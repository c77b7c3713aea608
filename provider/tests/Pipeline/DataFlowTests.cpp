#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <Pegasus/Common/Exception.h>

#include "ClassifiedDataSet.h"
#include "DataCenter.h"
#include "DataDispatcher.h"
#include "DataFlow.h"
#include "DataflowSource.h"
#include "Exception.h"
#include "PipelineTestSupport.h"
#include "RawDataCenter.h"
#include "SmisStatusRecorder.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

// A source that serves prepared records; each GetData hands out fresh
// references, as a parser would.
class PreparedSource : public DataflowSource {
public:
    ~PreparedSource() override { clear(); }

    bool LoadData() override { return true; }
    bool HasValidData() override { return valid; }
    void GetData(int type, std::string& arrayId, std::vector<RawData*>& records) override {
        for (RawData* r : byType[type]) {
            r->AddRef();
            records.push_back(r);
        }
        if (type == RAWDATA_ARRAY && !records.empty()) arrayId = records.front()->name;
    }

    void put(TestRecord* r) { byType[r->type].push_back(r); }
    void clear() {
        for (auto& entry : byType) ReleaseRawDataList(entry.second);
        byType.clear();
    }

    bool valid = true;
    std::map<int, std::vector<RawData*>> byType;
};

class RecordingDelegate : public DataFlowDelegate {
public:
    bool BeforeReceiveAllData(EventArgs*) override { return note("BeforeAll"); }
    bool AfterReceiveAllData(EventArgs*) override { return note("AfterAll"); }
    bool BeforeReceiveDataPerType(EventArgs* a) override { return note("Before", a); }
    bool AfterReceiveDataPerType(EventArgs* a) override { return note("After", a); }

    bool note(const std::string& what, EventArgs* a = nullptr) {
        HandleDataArgs* h = dynamic_cast<HandleDataArgs*>(a);
        log.push_back(h == nullptr ? what
                                   : what + " " + DataFlow::ClassifiedTypeToString(h->classifiedType) + " " +
                                         RawData::TypeToString(h->dataType) + " " +
                                         std::to_string(h->records ? h->records->size() : 0));
        return true;
    }
    std::vector<std::string> log;
};

// Stands for the models: notes each call with what the store holds for the
// first record at that moment, and throws when told to.
class RecordingModels : public DataCenter {
public:
    explicit RecordingModels(RawDataCenter& s) : store(s) {}

    void AddData(const std::vector<RawData*>* r, const std::string& id) override { note("add", *r, id); }
    void DeleteData(const std::vector<RawData*>* r, const std::string& id) override { note("delete", *r, id); }
    void ModifyData(const std::vector<RawData*>* r, const std::string& id) override { note("modify", *r, id); }
    void Destroy() override {}

    void note(const std::string& verb, const std::vector<RawData*>& records, const std::string& arrayId) {
        RawData* stored = nullptr;
        std::string seen = "absent";
        if (store.GetData(records.front()->name, records.front()->type, arrayId, &stored)) {
            seen = static_cast<TestRecord*>(stored)->value;
            stored->Release();
        }
        std::string names;
        for (RawData* r : records) names += r->name + ",";
        log.push_back(verb + " " + RawData::TypeToString(records.front()->type) + " " + names + " store=" + seen);
        if (thrower) thrower();
    }

    RawDataCenter& store;
    std::vector<std::string> log;
    std::function<void()> thrower;
};

class DataFlowTest : public ::testing::Test {
protected:
    DataFlowTest() : models(store), flow(&delegate, &store, &models) {}
    ~DataFlowTest() override { store.Destroy(); }

    // One load of the prepared records; the source is emptied afterwards.
    bool load(bool dispatchToSmis = true) {
        delegate.log.clear();
        models.log.clear();
        bool ok = flow.ProcessRawData(source, {0, 1, 5, 6}, dispatchToSmis);
        source.clear();
        return ok;
    }

    void baseline() {
        source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
        source.put(TestRecord::Make(RAWDATA_DAC, "A1", "00", "ready"));
        source.put(TestRecord::Make(RAWDATA_DAC, "A1", "01", "ready"));
        source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
        source.put(TestRecord::Make(RAWDATA_LD, "A1", "L1", "ok"));
        ASSERT_TRUE(load());
    }

    RawDataCenter store;
    RecordingDelegate delegate;
    RecordingModels models;
    DataFlow flow;
    PreparedSource source;
};

std::string statusFile() { return ReadFile(TestRoot() + "/opt/pegasus/etc/status"); }

}  // namespace

TEST_F(DataFlowTest, FirstLoadAddsEverythingArrayFirstWithTheStoreFilledBeforeTheModels) {
    baseline();
    EXPECT_EQ(delegate.log, (std::vector<std::string>{"BeforeAll", "Before Add array 1", "After Add array 1",
                                                      "Before Add dac 2", "After Add dac 2", "Before Add pool 1",
                                                      "After Add pool 1", "Before Add ld 1", "After Add ld 1",
                                                      "AfterAll"}));
    EXPECT_EQ(models.log, (std::vector<std::string>{"add array A1, store=ready", "add dac 00,01, store=ready",
                                                    "add pool P0, store=ok", "add ld L1, store=ok"}));
}

TEST_F(DataFlowTest, UnchangedLoadStillOpensAndClosesTheRun) {
    baseline();
    source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "00", "ready"));
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "01", "ready"));
    source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
    source.put(TestRecord::Make(RAWDATA_LD, "A1", "L1", "ok"));
    ASSERT_TRUE(load());
    EXPECT_EQ(delegate.log, (std::vector<std::string>{"BeforeAll", "AfterAll"}));
    EXPECT_TRUE(models.log.empty());
}

TEST_F(DataFlowTest, DeletesFallModifiesAndAddsRiseAndModelsSeeTheOldState) {
    baseline();
    source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "fault"));  // modified
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "01", "fault"));    // 00 gone, 01 modified
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "02", "ready"));    // added
    source.put(TestRecord::Make(RAWDATA_LD, "A1", "L2", "ok"));        // L1 gone, L2 added; pool P0 gone
    ASSERT_TRUE(load());
    EXPECT_EQ(models.log, (std::vector<std::string>{
                              "delete ld L1, store=ok", "delete pool P0, store=ok", "delete dac 00, store=ready",
                              "modify array A1, store=ready", "modify dac 01, store=ready",
                              "add dac 02, store=ready", "add ld L2, store=ok"}));
    RawData* r = nullptr;
    EXPECT_FALSE(store.GetData("P0", RAWDATA_POOL, "A1", &r));
    ASSERT_TRUE(store.GetData("A1", RAWDATA_ARRAY, "A1", &r));
    EXPECT_EQ(static_cast<TestRecord*>(r)->value, "fault");
    r->Release();
}

TEST_F(DataFlowTest, ChangedIdentityFieldIsADeleteFollowedByAnAdd) {
    baseline();
    source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "00", "ready", "other-number"));
    source.put(TestRecord::Make(RAWDATA_DAC, "A1", "01", "ready"));
    source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
    source.put(TestRecord::Make(RAWDATA_LD, "A1", "L1", "ok"));
    ASSERT_TRUE(load());
    EXPECT_EQ(models.log,
              (std::vector<std::string>{"delete dac 00, store=ready", "add dac 00, store=ready"}));
    RawData* r = nullptr;
    ASSERT_TRUE(store.GetData("00", RAWDATA_DAC, "A1", &r));
    EXPECT_EQ(static_cast<TestRecord*>(r)->identity, "other-number");
    r->Release();
}

TEST_F(DataFlowTest, WithoutDispatchToSmisOnlyTheStoreChanges) {
    source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
    source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
    ASSERT_TRUE(load(false));
    EXPECT_TRUE(delegate.log.empty());
    EXPECT_TRUE(models.log.empty());
    EXPECT_TRUE(store.validateArrayData("A1"));
}

TEST_F(DataFlowTest, DocumentWithoutArrayClassifiesNothing) {
    source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
    ClassifiedDataSet set;
    flow.ClassifyRawData(source, {0, 5}, set);
    for (const std::string& key : {DataClassificationType::Add, DataClassificationType::Delete,
                                   DataClassificationType::Modify})
        EXPECT_TRUE(set.GetClassifiedDataTable(key)->empty()) << key;
    // The set held no reference: the source's are the only ones.
    EXPECT_EQ(source.byType[RAWDATA_POOL][0]->GetRefCount(), 1u);
}

TEST_F(DataFlowTest, InvalidSourceIsRefused) {
    source.valid = false;
    source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
    EXPECT_FALSE(load());
    EXPECT_TRUE(delegate.log.empty());
    EXPECT_FALSE(store.validateArrayData("A1"));
}

TEST_F(DataFlowTest, AnyFailureDuringDispatchEndsTheLoadWithItsStatus) {
    struct Case {
        std::string name;
        std::function<void()> thrower;
        std::string status;
    };
    const std::vector<Case> cases = {
        {"cim", [] { throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "model failed"); },
         " abnormal (smis layer)"},
        {"pegasus", [] { throw Pegasus::Exception("value failed"); }, " abnormal (smis layer)"},
        {"module", [] { throw NotExistedException("The data not exist"); }, " abnormal (data center)"},
        {"other", [] { throw std::runtime_error("anything"); }, " abnormal (unknown)"},
        {"not even an exception", [] { throw 42; }, " abnormal (unknown)"},
    };
    RecordPollingStatus(1, "ready");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        store.Destroy();
        RecordSmisLayerStatus(1, "ready");
        models.thrower = c.thrower;
        source.put(TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "ready"));
        source.put(TestRecord::Make(RAWDATA_POOL, "A1", "P0", "ok"));
        EXPECT_FALSE(load());
        EXPECT_EQ(statusFile(), c.status);
        // The run stopped at the first failure: no commit was asked for.
        EXPECT_EQ(delegate.log.back(), "Before Add array 1");
    }
    models.thrower = nullptr;
    RecordSmisLayerStatus(1, "ready");
}

TEST_F(DataFlowTest, StoreFailureIsADataCenterFailure) {
    RecordPollingStatus(1, "ready");
    RecordSmisLayerStatus(1, "ready");
    // A pool whose array the store has never seen.
    ClassifiedDataSet set;
    TestRecord* orphan = TestRecord::Make(RAWDATA_POOL, "A9", "P0");
    set.AddItem(DataClassificationType::Add, orphan);
    orphan->Release();
    EXPECT_FALSE(flow.DispatchRawData(set, false));
    EXPECT_EQ(statusFile(), " abnormal (data center)");
    RecordSmisLayerStatus(1, "ready");
}

TEST(ClassifiedDataSetTest, TypesEnterAllTablesAndRecordsAreHeld) {
    TestRecord* a = TestRecord::Make(RAWDATA_LD, "A1", "L1");
    TestRecord* b = TestRecord::Make(RAWDATA_DAC, "A1", "00");
    {
        ClassifiedDataSet set;
        EXPECT_EQ(set.GetClassifiedDataTable("Other"), nullptr);
        set.AddItem(DataClassificationType::Modify, a);
        set.AddItem(DataClassificationType::Delete, b);
        set.AddItem(DataClassificationType::Modify, a);
        EXPECT_EQ(a->GetRefCount(), 3u);
        for (const std::string& key : {DataClassificationType::Add, DataClassificationType::Delete,
                                       DataClassificationType::Modify}) {
            ClassifiedDataSet::TypeTable* table = set.GetClassifiedDataTable(key);
            ASSERT_EQ(table->size(), 2u) << key;
            EXPECT_EQ(table->begin()->first, RAWDATA_DAC);  // ascending types
        }
        EXPECT_EQ(set.GetClassifiedDataTable(DataClassificationType::Modify)->at(RAWDATA_LD)->size(), 2u);
        EXPECT_TRUE(set.GetClassifiedDataTable(DataClassificationType::Add)->at(RAWDATA_LD)->empty());
    }
    EXPECT_EQ(a->GetRefCount(), 1u);
    EXPECT_EQ(b->GetRefCount(), 1u);
    a->Release();
    b->Release();
    EXPECT_EQ(DataFlow::ClassifiedTypeToString(1), "Delete");
    EXPECT_EQ(DataFlow::ClassifiedTypeToString(3), "No change");
}

TEST(DataDispatcherTest, ModifyOfARecordMissingFromTheStoreIsNotFound) {
    Pegasus::OperationContext context;
    TestRecord* r = TestRecord::Make(RAWDATA_ARRAY, "NOWHERE", "NOWHERE");
    std::vector<RawData*> records = {r};
    std::unique_ptr<DataDispatcher> dispatcher(DataDispatcherFactory::CreateInstance(RAWDATA_ARRAY));
    try {
        dispatcher->ToModify(context, records, "NOWHERE");
        ADD_FAILURE() << "no exception";
    } catch (const Pegasus::CIMException& e) {
        EXPECT_EQ(e.getCode(), Pegasus::CIM_ERR_NOT_FOUND);
        EXPECT_STREQ(static_cast<const char*>(e.getMessage().getCString()),
                     "in DefaultDataDispatcher::ToModify() : Get array From DataCenter Failed");
    }
    // A type without a model is passed over.
    std::unique_ptr<DataDispatcher> none(DataDispatcherFactory::CreateInstance(RAWDATA_DE));
    EXPECT_NO_THROW(none->ToModify(context, records, "NOWHERE"));
    EXPECT_EQ(r->GetRefCount(), 1u);
    r->Release();
}

TEST(DataDispatcherTest, DatabaseSizeIsCheckedEveryMaxObjectCountObjects) {
    // The test root sets MaxObjectCount to 5 and holds a small database.
    DefaultDataDispatcher dispatcher(RAWDATA_DE);
    DataDispatcher::m_nObject = 0;
    for (int i = 0; i < 4; ++i) dispatcher.PassDataBaseSizeChecking();
    EXPECT_EQ(DataDispatcher::m_nObject, 4);
    dispatcher.PassDataBaseSizeChecking();  // the fifth: checked and passed
    EXPECT_EQ(DataDispatcher::m_nObject, 0);
    // A count already past the limit is never checked again.
    DataDispatcher::m_nObject = 9;
    dispatcher.PassDataBaseSizeChecking();
    EXPECT_EQ(DataDispatcher::m_nObject, 10);
    DataDispatcher::m_nObject = 0;
}
