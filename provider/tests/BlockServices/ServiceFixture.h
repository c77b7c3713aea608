#ifndef PROVIDER_TESTS_BLOCKSERVICES_SERVICEFIXTURE_H
#define PROVIDER_TESTS_BLOCKSERVICES_SERVICEFIXTURE_H

// The configuration service's controller over the stand-in repository: an
// array with free disks, a RAID1 pool with a volume, goals, and a call of a
// method with its outcome. Jobs the calls make are counted and dropped.

#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "../StoragePools/PoolTestSupport.h"

#include "Association.h"
#include "JobManager.h"
#include "LdRawData.h"
#include "PrimordialPool.h"
#include "Singleton.h"
#include "StorageConfigurationService.h"
#include "StorageConfigurationServiceController.h"
#include "StorageExtent.h"
#include "StoragePool.h"
#include "StorageVolume.h"

namespace blocktest {

using namespace Pegasus;

class NoResult : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue&) override {}
    void deliver(const CIMValue&) override {}
};

struct Outcome {
    Uint32 result = 9999;
    Array<CIMParamValue> out;

    bool has(const char* name) const {
        for (Uint32 i = 0; i < out.size(); ++i)
            if (out[i].getParameterName() == name) return true;
        return false;
    }
    Uint64 size() const {
        for (Uint32 i = 0; i < out.size(); ++i)
            if (out[i].getParameterName() == "Size") {
                Uint64 v = 0;
                out[i].getValue().get(v);
                return v;
            }
        ADD_FAILURE() << "no output Size";
        return 0;
    }
};

class ServiceFixture : public pooltest::PoolFixture {
protected:
    static constexpr Uint64 GiB = 0x40000000ULL;
    static constexpr Uint64 MiB = 0x100000ULL;

    void SetUp() override {
        PoolFixture::SetUp();
        orvsmis::Singleton<orvsmis::JobManager>::Instance()->Clean();
        // Pool 0001: RAID1 over 00-00 and 00-01, 120 GiB with 20 GiB free,
        // holding volume 0000 of 100 GiB. Free disks 00-02 .. 00-07 of
        // 64 GiB and 01-00 of 64 GiB in another group.
        AddPd("00-00", 64 * GiB, "pool", "01");
        AddPd("00-01", 64 * GiB, "pool", "01");
        for (const char* pdn : {"00-02", "00-03", "00-04", "00-05", "00-06", "00-07", "01-00"})
            AddPd(pdn, 64 * GiB);
        poolRecord = Pool("0001", "RAID1", 120 * GiB, 20 * GiB);
        pool = AddPool(poolRecord);
        volume = AddVolume("0000", "0001", 100 * GiB);
        primordial = orvsmis::PrimordialPool::GetPath(WWN);
        raid1Goal = Goal("raid1", 2, 1);
        raid5Goal = Goal("raid5", 1, 1);
    }

    void TearDown() override {
        orvsmis::Singleton<orvsmis::JobManager>::Instance()->Clean();
        orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(
            "smis", "replacementCharListOfLDName", std::list<std::string>());
        PoolFixture::TearDown();
    }

    CIMObjectPath AddPool(orvsmis::PoolRawData* record) {
        Store(record);
        orvsmis::StoragePool model;
        CIMInstance instance = model.WrapInstance(record, WWN);
        repository->createInstance(context, CIMNamespaceName("root/orv"), instance);
        return instance.getPath();
    }

    CIMObjectPath AddVolume(const std::string& ldn, const std::string& poolNo, Uint64 capacity,
                            const std::string& group = "") {
        orvsmis::LdRawData* ld = new orvsmis::LdRawData();
        ld->AddRef();
        ld->name = ld->LDN = ldn;
        ld->arrayId = WWN;
        ld->LDName = "vol" + ldn;
        ld->LDCapacity = capacity;
        ld->poolNo = poolNo;
        ld->raidType = "RAID1";
        ld->PDType = "SAS";
        ld->LDState = "ready";
        ld->group = group;
        owned.push_back(ld);
        Store(ld);
        orvsmis::StorageVolume model;
        CIMInstance instance = model.WrapInstance(ld, WWN);
        repository->createInstance(context, CIMNamespaceName("root/orv"), instance);
        orvsmis::AllocatedFromStoragePool::Create(context, orvsmis::StoragePool::WrapReference(poolNo, WWN),
                                                  instance.getPath(), capacity);
        return instance.getPath();
    }

    CIMObjectPath Goal(const std::string& id, Uint16 data, Uint16 package, Uint16 thin = 0) {
        CIMInstance goal(CIMName("ORV_Storage_StorageSetting"));
        goal.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String(id.c_str()))));
        goal.addProperty(CIMProperty(CIMName("DataRedundancyGoal"), CIMValue(data)));
        goal.addProperty(CIMProperty(CIMName("PackageRedundancyGoal"), CIMValue(package)));
        goal.addProperty(CIMProperty(CIMName("StorageEfficiencyHint"), CIMValue(Uint16(5))));
        if (thin != 0) goal.addProperty(CIMProperty(CIMName("ThinProvisionedPoolType"), CIMValue(thin)));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("InstanceID"), String(id.c_str()), CIMKeyBinding::STRING));
        goal.setPath(CIMObjectPath(String(), CIMNamespaceName(), goal.getClassName(), keys));
        return repository->createInstance(context, CIMNamespaceName("root/orv"), goal);
    }

    static String Extent(const std::string& pdn) {
        return orvsmis::StorageExtent::WrapReference(pdn, WWN).toString();
    }

    Outcome Call(const char* method, const Array<CIMParamValue>& in) {
        Outcome outcome;
        CIMName name(method);
        NoResult handler;
        CIMObjectPath service = orvsmis::StorageConfigurationService::WrapReference(std::string(WWN));
        orvsmis::InvokeMethodArgs args(context, service, name, in, outcome.out, handler);
        orvsmis::StorageConfigurationServiceController controller;
        CIMValue result = controller.Invoke(args, outcome.out);
        result.get(outcome.result);
        return outcome;
    }

    static int Queued() { return orvsmis::Singleton<orvsmis::JobManager>::Instance()->GetUnworkedJobsCount(); }

    orvsmis::PoolRawData* poolRecord = nullptr;
    CIMObjectPath pool;
    CIMObjectPath volume;
    CIMObjectPath primordial;
    CIMObjectPath raid1Goal;
    CIMObjectPath raid5Goal;
};

inline CIMParamValue P(const char* name, const CIMValue& value) { return CIMParamValue(String(name), value); }

}  // namespace blocktest

#endif
