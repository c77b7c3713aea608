#ifndef PROVIDER_TESTS_STORAGEPOOLS_POOLTESTSUPPORT_H
#define PROVIDER_TESTS_STORAGEPOOLS_POOLTESTSUPPORT_H

// The stand-in repository of the model tests, narrowed to the reference
// class and role a caller asks for, and a fixture with an array system,
// the disk index emptied and disk and pool records at hand.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../Model/ModelTestSupport.h"

#include "ComputerSystem.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "StoragePool.h"

namespace pooltest {

using namespace Pegasus;

class FilteringRepository : public modeltest::FakeRepository {
public:
    Array<CIMObjectPath> referenceNames(const OperationContext&, const CIMNamespaceName&,
                                        const CIMObjectPath& objectName, const CIMName& resultClass,
                                        const String& role) override {
        Array<CIMObjectPath> out;
        const std::string target = modeltest::canonical(objectName);
        for (const auto& entry : instances) {
            const CIMInstance& i = entry.second;
            if (!resultClass.isNull() && !i.getClassName().equal(resultClass)) continue;
            for (Uint32 p = 0; p < i.getPropertyCount(); ++p) {
                CIMConstProperty prop = i.getProperty(p);
                if (prop.getType() != CIMTYPE_REFERENCE || prop.getValue().isNull()) continue;
                if (role.size() > 0 && !String::equalNoCase(prop.getName().getString(), role)) continue;
                CIMObjectPath ref;
                prop.getValue().get(ref);
                if (modeltest::canonical(ref) == target) {
                    out.append(keyPath(i));
                    break;
                }
            }
        }
        return out;
    }

    // The other ends of the associations that refer to the object.
    Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                                         const CIMObjectPath& objectName, const CIMName& assocClass,
                                         const CIMName& resultClass, const String& role,
                                         const String& resultRole) override {
        Array<CIMObjectPath> out;
        const std::string target = modeltest::canonical(objectName);
        for (const auto& entry : instances) {
            const CIMInstance& i = entry.second;
            if (!assocClass.isNull() && !i.getClassName().equal(assocClass)) continue;
            bool refers = false;
            std::vector<std::pair<String, CIMObjectPath>> others;
            for (Uint32 p = 0; p < i.getPropertyCount(); ++p) {
                CIMConstProperty prop = i.getProperty(p);
                if (prop.getType() != CIMTYPE_REFERENCE || prop.getValue().isNull()) continue;
                CIMObjectPath ref;
                prop.getValue().get(ref);
                if (modeltest::canonical(ref) == target &&
                    (role.size() == 0 || String::equalNoCase(prop.getName().getString(), role)))
                    refers = true;
                else
                    others.push_back(std::make_pair(prop.getName().getString(), ref));
            }
            if (!refers) continue;
            for (const auto& other : others) {
                if (resultRole.size() > 0 && !String::equalNoCase(other.first, resultRole)) continue;
                if (!resultClass.isNull() && !other.second.getClassName().equal(resultClass)) continue;
                out.append(other.second);
            }
        }
        return out;
    }
    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& ns,
                                 const CIMObjectPath& objectName, const CIMName& assocClass,
                                 const CIMName& resultClass, const String& role, const String& resultRole, Boolean,
                                 Boolean, const CIMPropertyList&) override {
        Array<CIMObject> out;
        Array<CIMObjectPath> names = associatorNames(context, ns, objectName, assocClass, resultClass, role, resultRole);
        for (Uint32 i = 0; i < names.size(); ++i)
            if (has(names[i])) out.append(CIMObject(get(names[i]).clone()));
        return out;
    }

    // Instances of the class that refer to the path in the role.
    size_t referring(const std::string& className, const CIMObjectPath& path, const char* role) {
        OperationContext context;
        return referenceNames(context, CIMNamespaceName(), path, CIMName(String(className.c_str())), String(role))
            .size();
    }
};

class PoolFixture : public ::testing::Test {
protected:
    static constexpr const char* WWN = "2000000991000001";

    void SetUp() override {
        orvsmis::ConfigManager* config = orvsmis::Singleton<orvsmis::ConfigManager>::Instance();
        config->SetConfigValue("smis", "namespace", std::list<std::string>(1, "root/orv"));
        config->SetConfigValue("smis", "providerModuleName", std::list<std::string>(1, "ORVSMISProviderModule"));
        config->SetConfigValue("general", "dataStoreType", std::list<std::string>(1, "Memory"));
        config->SetConfigValue("general", "prefix", std::list<std::string>(1, "ORV_Storage_"));
        config->SetConfigValue("general", "vendor", std::list<std::string>(1, "ORV"));
        config->SetConfigValue("general", "brand", std::list<std::string>(1, "ORV"));
        repository = std::make_shared<FilteringRepository>();
        CIMOMHandle handle(repository);
        orvsmis::Singleton<orvsmis::CimHandle>::Instance()->Initialize(handle);
        orvsmis::RawDataCenter::Instance()->Destroy();
        orvsmis::PDmanager::Instance()->Destroy();
        EnableIndications(false);

        // The array system, whose path the pools hang on.
        array = new orvsmis::ArrayRawData();
        array->AddRef();
        array->name = array->arrayId = array->worldWideName = WWN;
        array->resourceState = "ready";
        array->vendorID = "ORV";
        array->productID = "Vx2000";
        array->serialNumber = "0000000930000001";
        orvsmis::RawDataCenter::Instance()->AddData(array, WWN);
        orvsmis::DataEventArgs args(context, array, nullptr, WWN);
        orvsmis::ComputerSystem system;
        system.Create(&args);
    }

    void TearDown() override {
        orvsmis::RawDataCenter::Instance()->Destroy();
        orvsmis::PDmanager::Instance()->Destroy();
        EnableIndications(false);
        orvsmis::StoragePool::AfterCreated.Clear();
        orvsmis::StoragePool::AfterModified.Clear();
        orvsmis::StoragePool::BeforeDeleted.Clear();
        orvsmis::ComputerSystem::AfterCreated.Clear();
        orvsmis::ComputerSystem::AfterModified.Clear();
        orvsmis::ComputerSystem::BeforeDeleted.Clear();
        for (orvsmis::RawData* record : owned) record->Release();
        array->Release();
    }

    void EnableIndications(bool on) {
        orvsmis::IndicationHandle* handle = orvsmis::Singleton<orvsmis::IndicationHandle>::Instance();
        handle->SetHandler(on ? &indications : nullptr);
        handle->SetEnabled(on);
    }

    // A disk record; the fixture keeps one reference until the test ends.
    orvsmis::PdRawData* Pd(const std::string& pdn, unsigned long long capacity,
                           const std::string& classification = "not set", const std::string& rank = "00",
                           const std::string& state = "ready", const std::string& type = "SAS") {
        orvsmis::PdRawData* pd = new orvsmis::PdRawData();
        pd->AddRef();
        pd->name = pd->PDN = pdn;
        pd->arrayId = WWN;
        pd->PDCapacity = capacity;
        pd->classification = classification;
        pd->rankGroupNumber = rank;
        pd->state = state;
        pd->type = type;
        pd->rotationalSpeed = "10000rpm";
        owned.push_back(pd);
        return pd;
    }

    // A disk put into the index under an extent path of its own.
    orvsmis::PdRawData* AddPd(const std::string& pdn, unsigned long long capacity,
                              const std::string& classification = "not set", const std::string& rank = "00",
                              const std::string& state = "ready", const std::string& type = "SAS") {
        orvsmis::PdRawData* pd = Pd(pdn, capacity, classification, rank, state, type);
        orvsmis::PDmanager::Instance()->AddData(pd, ExtentPath(pdn));
        return pd;
    }

    static CIMObjectPath ExtentPath(const std::string& pdn) {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("DeviceID"), String(pdn.c_str()), CIMKeyBinding::STRING));
        return CIMObjectPath(String(), CIMNamespaceName(), CIMName("ORV_Storage_StorageExtent"), keys);
    }

    // A plain pool record, stored in the record center as a load would.
    orvsmis::PoolRawData* Pool(const std::string& number, const std::string& raid, unsigned long long capacity,
                               unsigned long long freeCapacity, const std::string& poolType = "dynamic") {
        orvsmis::PoolRawData* pool = new orvsmis::PoolRawData();
        pool->AddRef();
        pool->name = pool->poolNo = number;
        pool->arrayId = WWN;
        pool->poolName = "Pool" + number;
        pool->poolType = poolType;
        pool->RAIDType = raid;
        pool->PDType = "SAS";
        pool->poolState = "ready";
        pool->poolCapacity = capacity;
        pool->freePoolCapacity = freeCapacity;
        pool->usedPoolCapacity = capacity - freeCapacity;
        pool->noBPD = "2";
        owned.push_back(pool);
        return pool;
    }
    void Store(orvsmis::RawData* record) { orvsmis::RawDataCenter::Instance()->AddData(record, WWN); }

    OperationContext context;
    std::shared_ptr<FilteringRepository> repository;
    modeltest::RecordingIndications indications;
    orvsmis::ArrayRawData* array = nullptr;
    std::vector<orvsmis::RawData*> owned;
};

}  // namespace pooltest

#endif
