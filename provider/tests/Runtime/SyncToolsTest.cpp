// Locks, exceptions, the thread wrappers and the indication handle.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include <Pegasus/Common/ResponseHandler.h>

#include "AutoLock.h"
#include "AutoReadLock.h"
#include "AutoWriteLock.h"
#include "Exception.h"
#include "IndicationHandle.h"
#include "Mutex.h"
#include "Singleton.h"
#include "ThreadSyncTool.h"

using namespace orvsmis;

namespace {

TEST(LocksTest, AutoLockHoldsForItsScope) {
    Mutex mutex;
    {
        AutoLock lock(mutex);
        EXPECT_EQ(EBUSY, pthread_mutex_trylock(mutex.Native()));
        // Taking it again on the same thread is refused instead of hanging.
        EXPECT_THROW(mutex.Lock(), ConstructionException);
    }
    EXPECT_EQ(0, pthread_mutex_trylock(mutex.Native()));
    mutex.Unlock();
}

TEST(LocksTest, ReadAndWriteLocks) {
    pthread_rwlock_t rw;
    pthread_rwlock_init(&rw, nullptr);
    {
        AutoReadLock first(rw);
        AutoReadLock second(rw);  // readers share
        EXPECT_EQ(EBUSY, pthread_rwlock_trywrlock(&rw));
    }
    {
        AutoWriteLock writer(rw);
        EXPECT_EQ(EBUSY, pthread_rwlock_tryrdlock(&rw));
        try {
            AutoReadLock nested(rw);
            FAIL() << "a read lock was granted inside the write lock";
        } catch (const ConstructionException& e) {
            EXPECT_EQ("Construction failed", e.GetMessage());
            EXPECT_STREQ("Construction failed", e.what());
        }
        EXPECT_THROW(AutoWriteLock again(rw), ConstructionException);
    }
    // Everything was let go, including after the failed constructions.
    EXPECT_EQ(0, pthread_rwlock_trywrlock(&rw));
    pthread_rwlock_unlock(&rw);
    pthread_rwlock_destroy(&rw);
}

void* waitForFlag(void* arg) {
    std::atomic<bool>* stop = static_cast<std::atomic<bool>*>(arg);
    while (!stop->load()) sleepForMilliSecond(10);
    return nullptr;
}

TEST(ThreadSyncToolTest, SleepWaitsAWholeSecond) {
    // A microsecond field of a whole second is refused by the kernel; the
    // wait must not come back at once.
    const auto start = std::chrono::steady_clock::now();
    sleepForMilliSecond(1000);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(std::chrono::duration_cast<std::chrono::milliseconds>(waited).count(), 990);
    sleepForMilliSecond(-5);  // nothing to wait for
}

TEST(ThreadSyncToolTest, KillProbesALiveThread) {
    std::atomic<bool> stop(false);
    pthread_t tid;
    ASSERT_EQ(0, smis_pthread_create(&tid, nullptr, waitForFlag, &stop));
    // Signal 0 delivers nothing: the thread lives on through every probe.
    EXPECT_EQ(0, smis_pthread_kill(tid, 0));
    // A signal number the system does not know cannot be sent.
    EXPECT_EQ(-1, smis_pthread_kill(tid, 12345));
    stop.store(true);
    EXPECT_EQ(0, pthread_join(tid, nullptr));
}

// Counts what the indication handle does with the server's handler.
class RecordingHandler : public Pegasus::IndicationResponseHandler {
public:
    void processing() override { calls.push_back("processing"); }
    void complete() override { calls.push_back("complete"); }
    void deliver(const Pegasus::CIMIndication&) override { calls.push_back("deliver"); }
    void deliver(const Pegasus::Array<Pegasus::CIMIndication>& list) override {
        calls.push_back("deliver " + std::to_string(list.size()));
    }
    void deliver(const Pegasus::OperationContext&, const Pegasus::CIMIndication&) override {
        calls.push_back("deliver context");
    }
    void deliver(const Pegasus::OperationContext&, const Pegasus::Array<Pegasus::CIMIndication>& list) override {
        calls.push_back("deliver context " + std::to_string(list.size()));
    }
    std::vector<std::string> calls;
};

TEST(IndicationHandleTest, DeliveriesCompleteTheHandlerEachTime) {
    IndicationHandle* handle = Singleton<IndicationHandle>::Instance();
    const Pegasus::CIMInstance indication(Pegasus::CIMName("CIM_InstCreation"));
    handle->ReleaseHandle();
    EXPECT_FALSE(handle->HasHandler());
    // Without a handler nothing is delivered and nothing crashes.
    EXPECT_THROW(handle->Deliver(indication), NotExistedException);

    RecordingHandler handler;
    handle->SetHandler(&handler);
    handle->SetEnabled(true);
    Pegasus::Array<Pegasus::CIMInstance> two;
    two.append(indication);
    two.append(indication);
    handle->Deliver(indication);
    handle->Deliver(two);
    handle->Deliver(Pegasus::OperationContext(), indication);
    handle->Deliver(Pegasus::OperationContext(), two);
    EXPECT_EQ((std::vector<std::string>{"processing", "deliver", "complete", "processing", "deliver 2",
                  "complete", "processing", "deliver context", "complete", "processing",
                  "deliver context 2", "complete"}),
        handler.calls);

    // Releasing completes the handler, drops it and turns indications off;
    // a new handler alone does not turn them on again.
    handler.calls.clear();
    handle->ReleaseHandle();
    EXPECT_EQ(std::vector<std::string>{"complete"}, handler.calls);
    EXPECT_FALSE(handle->IsEnabled());
    EXPECT_FALSE(handle->HasHandler());
    RecordingHandler next;
    handle->SetHandler(&next);
    EXPECT_FALSE(handle->IsEnabled());
    handle->ReleaseHandle();
}

}  // namespace
