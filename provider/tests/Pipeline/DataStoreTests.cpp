#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <thread>
#include <vector>

#include "ArrayRawData.h"
#include "ConfigManager.h"
#include "DacRawData.h"
#include "DataConnector.h"
#include "DataStoreInMem.h"
#include "Exception.h"
#include "PipelineTestSupport.h"
#include "RawDataCenter.h"
#include "Singleton.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

class DataStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        array = TestRecord::Make(RAWDATA_ARRAY, "A1", "A1");
        store.AddData(array, "A1");
    }
    void TearDown() override {
        store.Destroy();
        array->Release();
    }

    // Adds a record and gives back the test's own reference.
    TestRecord* add(int type, const std::string& key, const std::string& value = "", const std::string& array = "A1") {
        TestRecord* r = TestRecord::Make(type, array, key, value);
        store.AddData(r, array);
        r->Release();
        return r;
    }

    DataStoreInMem store;
    TestRecord* array = nullptr;
};

}  // namespace

TEST_F(DataStoreTest, ArrayRecordMustComeFirstAndOnlyOnce) {
    TestRecord* orphan = TestRecord::Make(RAWDATA_DAC, "A2", "00");
    try {
        store.AddData(orphan, "A2");
        ADD_FAILURE() << "sub-record before its array was accepted";
    } catch (const InvalidParamException& e) {
        EXPECT_EQ(e.GetMessage(), "Get sub data before array data.");
    }
    EXPECT_EQ(orphan->GetRefCount(), 1u);
    orphan->Release();

    TestRecord* twice = TestRecord::Make(RAWDATA_ARRAY, "A1", "A1");
    try {
        store.AddData(twice, "A1");
        ADD_FAILURE() << "array added twice";
    } catch (const ExistedException& e) {
        EXPECT_EQ(e.GetMessage(), "Array data already exist [id:A1]");
    }
    EXPECT_EQ(twice->GetRefCount(), 1u);
    twice->Release();
}

TEST_F(DataStoreTest, FindGivesReferencedRecordsInInsertionOrder) {
    TestRecord* second = add(RAWDATA_LD, "0002");
    add(RAWDATA_LD, "0001");
    add(RAWDATA_REPLICA, "R1");  // the highest type code has a slot too

    RawData* found = reinterpret_cast<RawData*>(0x1);
    EXPECT_FALSE(store.FindData("0002", RAWDATA_LD, "NOPE", &found));
    EXPECT_EQ(found, reinterpret_cast<RawData*>(0x1));  // untouched on a miss
    EXPECT_FALSE(store.FindData("0003", RAWDATA_LD, "A1", &found));
    EXPECT_FALSE(store.FindData("0002", RAWDATA_POOL, "A1", &found));

    ASSERT_TRUE(store.FindData("0002", RAWDATA_LD, "A1", &found));
    EXPECT_EQ(found, second);
    EXPECT_EQ(found->GetRefCount(), 2u);  // the store's and ours
    found->Release();

    std::vector<RawData*> list;
    ASSERT_TRUE(store.FindData(RAWDATA_LD, "A1", &list));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]->name, "0002");
    EXPECT_EQ(list[1]->name, "0001");
    ReleaseRawDataList(list);
    EXPECT_TRUE(store.FindData(RAWDATA_REPLICA, "A1", &list));
    ReleaseRawDataList(list);
    EXPECT_FALSE(store.FindData(RAWDATA_POOL, "A1", &list));
    EXPECT_FALSE(store.FindData(RAWDATA_LD, "NOPE", &list));
    EXPECT_TRUE(list.empty());

    // Arrays are found by their own name, and listing them ignores the id.
    TestRecord* other = TestRecord::Make(RAWDATA_ARRAY, "A2", "A2");
    store.AddData(other, "A2");
    other->Release();
    ASSERT_TRUE(store.FindData("A2", RAWDATA_ARRAY, "whatever", &found));
    EXPECT_EQ(found, other);
    found->Release();
    ASSERT_TRUE(store.FindData(RAWDATA_ARRAY, "ignored", &list));
    EXPECT_EQ(list.size(), 2u);
    ReleaseRawDataList(list);
}

TEST_F(DataStoreTest, ModifyUpdatesTheStoredObjectInPlace) {
    TestRecord* stored = add(RAWDATA_POOL, "P0", "old");
    TestRecord* fresh = TestRecord::Make(RAWDATA_POOL, "A1", "P0", "new");
    store.ModifyData(fresh, "A1");
    EXPECT_EQ(stored->value, "new");
    EXPECT_EQ(fresh->GetRefCount(), 1u);  // the store keeps its own object
    fresh->Release();

    // A record that is not in the list changes nothing and throws nothing.
    TestRecord* stranger = TestRecord::Make(RAWDATA_POOL, "A1", "P9", "x");
    EXPECT_NO_THROW(store.ModifyData(stranger, "A1"));
    stranger->Release();
    EXPECT_EQ(stored->value, "new");

    TestRecord* arrayUpdate = TestRecord::Make(RAWDATA_ARRAY, "A1", "A1", "fault");
    store.ModifyData(arrayUpdate, "A1");
    EXPECT_EQ(array->value, "fault");
    arrayUpdate->Release();
}

TEST_F(DataStoreTest, ModifyAndDeleteFailures) {
    TestRecord* r = TestRecord::Make(RAWDATA_POOL, "A9", "P0");
    EXPECT_THROW(store.ModifyData(r, "A9"), InvalidParamException);
    EXPECT_THROW(store.ModifyData(r, "A1"), NotExistedException);  // no pool list yet
    EXPECT_THROW(store.DeleteData(r, "A9"), NotExistedException);
    r->name = "";
    EXPECT_THROW(store.DeleteData(r, "A1"), InvalidParamException);
    r->Release();
}

TEST_F(DataStoreTest, DeletingRecordsReleasesThem) {
    TestRecord* ld = TestRecord::Make(RAWDATA_LD, "A1", "0001");
    TestRecord* pool = TestRecord::Make(RAWDATA_POOL, "A1", "P0");
    store.AddData(ld, "A1");
    store.AddData(pool, "A1");
    EXPECT_EQ(ld->GetRefCount(), 2u);

    store.DeleteData(ld, "A1");
    EXPECT_EQ(ld->GetRefCount(), 1u);
    RawData* found = nullptr;
    EXPECT_FALSE(store.FindData("0001", RAWDATA_LD, "A1", &found));
    // Deleting a missing record of a known array is no error.
    EXPECT_NO_THROW(store.DeleteData(ld, "A1"));

    // The array's record takes all that hangs on it along.
    store.DeleteData(array, "A1");
    EXPECT_EQ(pool->GetRefCount(), 1u);
    EXPECT_EQ(array->GetRefCount(), 1u);
    EXPECT_FALSE(store.FindData("A1", RAWDATA_ARRAY, "", &found));
    std::vector<RawData*> list;
    EXPECT_FALSE(store.FindData(RAWDATA_ARRAY, "", &list));
    ld->Release();
    pool->Release();

    // The array can come back afterwards.
    EXPECT_NO_THROW(store.AddData(array, "A1"));
}

TEST_F(DataStoreTest, ReadersSeeWholeRecordsWhileTheWriterWorks) {
    std::atomic<bool> stop(false);
    std::atomic<int> bad(0);
    std::thread reader([&] {
        while (!stop) {
            std::vector<RawData*> list;
            try {
                store.FindData(RAWDATA_LD, "A1", &list);
            } catch (...) {
                ++bad;
            }
            for (RawData* r : list)
                if (r->type != RAWDATA_LD || r->GetRefCount() < 1) ++bad;
            ReleaseRawDataList(list);
        }
    });
    for (int round = 0; round < 300; ++round) {
        TestRecord* r = TestRecord::Make(RAWDATA_LD, "A1", std::to_string(round % 7));
        store.AddData(r, "A1");
        if (round % 2 == 1) store.DeleteData(r, "A1");
        r->Release();
    }
    stop = true;
    reader.join();
    EXPECT_EQ(bad.load(), 0);
}

TEST(RawDataCenterStore, ChoosesTheStoreFromTheConfiguration) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    config->SetConfigValue("general", "dataStoreType", std::list<std::string>{"1"});
    {
        // A store that keeps nothing: every load finds everything new.
        RawDataCenter center;
        TestRecord* a = TestRecord::Make(RAWDATA_ARRAY, "A1", "A1");
        std::vector<RawData*> records = {a};
        center.AddData(&records, "A1");
        EXPECT_EQ(a->GetRefCount(), 1u);
        EXPECT_FALSE(center.validateArrayData("A1"));
        a->Release();
    }
    config->SetConfigValue("general", "dataStoreType", std::list<std::string>{"Memory"});
    RawDataCenter center;
    TestRecord* a = TestRecord::Make(RAWDATA_ARRAY, "A1", "A1");
    TestRecord* p = TestRecord::Make(RAWDATA_POOL, "A1", "P0", "v1");
    std::vector<RawData*> arrays = {a};
    std::vector<RawData*> pools = {p};
    center.AddData(&arrays, "A1");
    center.AddData(&pools, "A1");
    EXPECT_TRUE(center.validateArrayData("A1"));
    EXPECT_FALSE(center.validateArrayData("A2"));

    TestRecord* p2 = TestRecord::Make(RAWDATA_POOL, "A1", "P0", "v2");
    std::vector<RawData*> changed = {p2};
    center.ModifyData(&changed, "A1");
    EXPECT_EQ(p->value, "v2");
    RawData* found = nullptr;
    ASSERT_TRUE(center.GetData("P0", RAWDATA_POOL, "A1", &found));
    EXPECT_EQ(found, p);
    found->Release();
    center.Destroy();
    EXPECT_EQ(a->GetRefCount(), 1u);
    EXPECT_EQ(p->GetRefCount(), 1u);
    EXPECT_FALSE(center.validateArrayData("A1"));
    a->Release();
    p->Release();
    p2->Release();
}

TEST(DataConnectorTest, TypedReadsOfTheProcessStore) {
    RawDataCenter* center = RawDataCenter::Instance();
    center->Destroy();
    ArrayRawData* first = new ArrayRawData();
    first->name = first->arrayId = "W1";
    first->AddRef();
    DacRawData* dac = new DacRawData();
    dac->name = dac->number = "01";
    dac->arrayId = "W1";
    dac->AddRef();
    center->AddData(first, "W1");
    center->AddData(dac, "W1");

    ArrayRawData* array = nullptr;
    // An empty key finds the first array whatever the id says.
    ASSERT_TRUE(DataConnector<ArrayRawData>::QueryData("", "", array));
    EXPECT_EQ(array, first);
    array->Release();
    DacRawData* found = nullptr;
    ASSERT_TRUE(DataConnector<DacRawData>::QueryData("W1", "01", found));
    EXPECT_EQ(found, dac);
    found->Release();
    EXPECT_FALSE(DataConnector<DacRawData>::QueryData("W1", "02", found));
    EXPECT_EQ(found, nullptr);
    std::vector<DacRawData*> all;
    ASSERT_TRUE(DataConnector<DacRawData>::QueryData("W1", all));
    EXPECT_EQ(all.size(), 1u);
    DataConnector<DacRawData>::ReleaseAll(all);
    EXPECT_TRUE(all.empty());

    center->Destroy();
    EXPECT_FALSE(DataConnector<ArrayRawData>::QueryData("", "", array));
    EXPECT_EQ(first->GetRefCount(), 1u);
    EXPECT_EQ(dac->GetRefCount(), 1u);
    first->Release();
    dac->Release();
}
