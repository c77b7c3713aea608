// The capacity watch: a logical load is asked for at the interval only on
// an array with a virtual pool, and never while a load runs or is already
// asked for. Driven by a clock of the test's own, one pass at a time.

#include <string>

#include <gtest/gtest.h>

#include "CapacityMonitor.h"
#include "ExecVexview.h"
#include "PoolRawData.h"
#include "ProfilesTestSupport.h"

using namespace orvsmis;

namespace {

long g_now = 0;  // seconds of the test's clock

void testClock(long* sec, long* msec) {
    *sec = g_now;
    *msec = 0;
}

class CapacityMonitorTest : public profiletest::ProfilesFixture {
protected:
    static const int kInterval = 300;

    void SetUp() override {
        ProfilesFixture::SetUp();
        g_now = 100000;
        CM_SetClock(&testClock);
        ResetWakeFlags();
        // A load started and ended at the test clock's start.
        CM_UpdateExecTime(true);
        CM_UpdateExecTime(false);
    }
    void TearDown() override {
        CM_SetClock(nullptr);
        ResetWakeFlags();
        ProfilesFixture::TearDown();
    }
    static void ResetWakeFlags() {
        pthread_mutex_lock(&status_mutex);
        ds_.wakeup = 0;
        ds_.logical = 0;
        ds_.physical = 0;
        pthread_mutex_unlock(&status_mutex);
    }
    static DiskStatus WakeFlags() {
        pthread_mutex_lock(&status_mutex);
        DiskStatus copy = ds_;
        pthread_mutex_unlock(&status_mutex);
        return copy;
    }
    void StoreArrayWithPools(std::initializer_list<const char*> poolTypes) {
        const std::string wwn = "2000000991000001";
        orvsmis::ArrayRawData* array = MakeArray(wwn, "ready");
        Store(array);
        array->Release();
        int number = 0;
        for (const char* type : poolTypes) {
            PoolRawData* pool = new PoolRawData();
            pool->AddRef();
            pool->name = "000" + std::to_string(number++);
            pool->arrayId = wwn;
            pool->poolType = type;
            Store(pool);
            pool->Release();
        }
    }
};

TEST_F(CapacityMonitorTest, AnArrayWithAVirtualPoolIsAskedForALogicalLoadOnceTheIntervalHasPassed) {
    StoreArrayWithPools({"dynamic", "virtual"});
    g_now += kInterval - 1;
    EXPECT_FALSE(CM_RunPass(kInterval)) << "a load started less than the interval ago";
    EXPECT_EQ(0, WakeFlags().wakeup);

    g_now += 1;
    EXPECT_TRUE(CM_RunPass(kInterval));
    const DiskStatus asked = WakeFlags();
    EXPECT_EQ(1, asked.wakeup);
    EXPECT_EQ(1, asked.logical);
    EXPECT_EQ(2, asked.physical);
}

TEST_F(CapacityMonitorTest, NothingIsAskedWhileALoadRunsOrIsAlreadyAskedFor) {
    StoreArrayWithPools({"virtual"});
    g_now += kInterval;
    CM_UpdateExecTime(true);  // notes the time as well
    g_now += 10 * kInterval;
    EXPECT_FALSE(CM_RunPass(kInterval)) << "a load runs";
    CM_UpdateExecTime(false);
    EXPECT_TRUE(CM_RunPass(kInterval)) << "the running load started long enough ago";

    ResetWakeFlags();
    pthread_mutex_lock(&status_mutex);
    ds_.wakeup = 1;
    ds_.logical = 2;
    ds_.physical = 1;
    pthread_mutex_unlock(&status_mutex);
    EXPECT_FALSE(CM_RunPass(kInterval));
    const DiskStatus kept = WakeFlags();
    EXPECT_EQ(1, kept.wakeup);
    EXPECT_EQ(2, kept.logical) << "a pending wake-up keeps what it asked for";
    EXPECT_EQ(1, kept.physical);
}

TEST_F(CapacityMonitorTest, AnArrayWithoutAVirtualPoolOrWithoutARecordIsNeverReRead) {
    g_now += 10 * kInterval;
    EXPECT_FALSE(CM_RunPass(kInterval)) << "no load has stored an array yet";
    StoreArrayWithPools({"dynamic", "dynamic"});
    EXPECT_FALSE(CM_RunPass(kInterval));
    EXPECT_EQ(0, WakeFlags().wakeup);
}

}  // namespace
