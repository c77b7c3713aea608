#ifndef PROVIDER_TESTS_STORAGEVOLUMES_VOLUMETESTSUPPORT_H
#define PROVIDER_TESTS_STORAGEVOLUMES_VOLUMETESTSUPPORT_H

// The model tests' stand-in repository, taught to walk associations, plus
// recording response handlers and record makers for pools, logical disks
// and disks.

#include <string>
#include <vector>

#include <Pegasus/Common/CIMObject.h>

#include "../Model/ModelTestSupport.h"
#include "LdRawData.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "SmisProvider.h"

namespace volumetest {

using namespace Pegasus;
using modeltest::canonical;
using modeltest::lower;

// Associations are the stored instances of the association class whose
// one reference names the source (in role, when given) and whose other
// names an instance of the result class (in resultRole, when given).
class WalkingRepository : public modeltest::FakeRepository {
public:
    std::vector<CIMObjectPath> walk(const CIMObjectPath& source, const CIMName& assocClass, const CIMName& resultClass,
                                    const String& role, const String& resultRole) const {
        std::vector<CIMObjectPath> out;
        const std::string from = canonical(source);
        for (const auto& entry : instances) {
            const CIMInstance& link = entry.second;
            if (!assocClass.isNull() && !link.getClassName().equal(assocClass)) continue;
            std::vector<std::pair<std::string, CIMObjectPath>> refs;
            for (Uint32 p = 0; p < link.getPropertyCount(); ++p) {
                CIMConstProperty prop = link.getProperty(p);
                if (prop.getType() != CIMTYPE_REFERENCE || prop.getValue().isNull()) continue;
                CIMObjectPath ref;
                prop.getValue().get(ref);
                refs.push_back(std::make_pair(prop.getName().getString().toUtf8(), ref));
            }
            for (size_t a = 0; a < refs.size(); ++a) {
                if (canonical(refs[a].second) != from) continue;
                if (role.size() && !String::equalNoCase(String(refs[a].first.c_str()), role)) continue;
                for (size_t b = 0; b < refs.size(); ++b) {
                    if (b == a) continue;
                    if (resultRole.size() && !String::equalNoCase(String(refs[b].first.c_str()), resultRole))
                        continue;
                    if (!resultClass.isNull() && !refs[b].second.getClassName().equal(resultClass)) continue;
                    out.push_back(refs[b].second);
                }
            }
        }
        return out;
    }

    Array<CIMObject> associators(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath& objectName,
                                 const CIMName& assocClass, const CIMName& resultClass, const String& role,
                                 const String& resultRole, Boolean, Boolean, const CIMPropertyList&) override {
        Array<CIMObject> out;
        for (const CIMObjectPath& path : walk(objectName, assocClass, resultClass, role, resultRole)) {
            auto it = instances.find(canonical(path));
            if (it == instances.end()) continue;
            CIMInstance found = it->second.clone();
            found.setPath(path);
            out.append(CIMObject(found));
        }
        return out;
    }
    Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                                         const CIMObjectPath& objectName, const CIMName& assocClass,
                                         const CIMName& resultClass, const String& role,
                                         const String& resultRole) override {
        Array<CIMObjectPath> out;
        for (const CIMObjectPath& path : walk(objectName, assocClass, resultClass, role, resultRole))
            if (instances.count(canonical(path))) out.append(path);
        return out;
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& context, const CIMNamespaceName& ns,
                                        const CIMObjectPath& objectName, const CIMName& resultClass,
                                        const String& role) override {
        Array<CIMObjectPath> all = FakeRepository::referenceNames(context, ns, objectName, resultClass, role);
        Array<CIMObjectPath> out;
        for (Uint32 i = 0; i < all.size(); ++i) {
            if (!resultClass.isNull() && !all[i].getClassName().equal(resultClass)) continue;
            if (role.size()) {
                bool inRole = false;
                for (Uint32 k = 0; k < all[i].getKeyBindings().size(); ++k) {
                    const CIMKeyBinding& kb = all[i].getKeyBindings()[k];
                    if (kb.getType() == CIMKeyBinding::REFERENCE && String::equalNoCase(kb.getName().getString(), role) &&
                        canonical(CIMObjectPath(kb.getValue())) == canonical(objectName))
                        inRole = true;
                }
                if (!inRole) continue;
            }
            out.append(all[i]);
        }
        return out;
    }
};

class RecordingObjects : public ObjectResponseHandler {
public:
    int processed = 0;
    int completed = 0;
    std::vector<CIMObject> delivered;
    void processing() override { ++processed; }
    void complete() override { ++completed; }
    void deliver(const CIMObject& object) override { delivered.push_back(object); }
};

class RecordingPaths : public ObjectPathResponseHandler {
public:
    int completed = 0;
    std::vector<CIMObjectPath> delivered;
    void processing() override {}
    void complete() override { ++completed; }
    void deliver(const CIMObjectPath& path) override { delivered.push_back(path); }
};

class RecordingResults : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue&) override {}
    void deliver(const CIMValue&) override {}
};

const char* const ARRAY_ID = "2000000991000012";

// A fixture on the walking repository, with the disk index emptied around
// each test.
class VolumeFixture : public modeltest::ModelFixture {
protected:
    void SetUp() override {
        ModelFixture::SetUp();
        walking = std::make_shared<WalkingRepository>();
        repository = walking;
        CIMOMHandle handle(walking);
        orvsmis::Singleton<orvsmis::CimHandle>::Instance()->Initialize(handle);
        orvsmis::PDmanager::Instance()->Destroy();
        orvsmis::SMISProvider::m_bEnableCopyService = true;
        orvsmis::ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
        Store(array);
        array->Release();
    }
    void TearDown() override {
        orvsmis::PDmanager::Instance()->Destroy();
        orvsmis::SMISProvider::m_bEnableCopyService = true;
        ModelFixture::TearDown();
    }

    static orvsmis::PoolRawData* MakePool(const std::string& no, const std::string& raid,
                                          const std::string& type = "dynamic", const std::string& state = "ready") {
        orvsmis::PoolRawData* pool = new orvsmis::PoolRawData();
        pool->AddRef();
        pool->name = no;
        pool->arrayId = ARRAY_ID;
        pool->poolNo = no;
        pool->poolName = "Pool" + no;
        pool->poolType = type;
        pool->RAIDType = raid;
        pool->PDType = "SAS";
        pool->poolState = state;
        pool->poolCapacity = 4096ULL * 1024 * 1024;
        pool->usedPoolCapacity = 1024ULL * 1024 * 1024;
        pool->freePoolCapacity = 3072ULL * 1024 * 1024;
        pool->stripSize = 256 * 1024;
        pool->actualCapacity = 2048ULL * 1024 * 1024;
        pool->actualUsedCapacity = 512ULL * 1024 * 1024;
        return pool;
    }
    static orvsmis::LdRawData* MakeLd(const std::string& ldn, const std::string& poolNo, const std::string& raid,
                                      const std::string& state = "ready", const std::string& group = "") {
        orvsmis::LdRawData* ld = new orvsmis::LdRawData();
        ld->AddRef();
        ld->name = ldn;
        ld->arrayId = ARRAY_ID;
        ld->LDN = ldn;
        ld->LDName = "vol" + ldn;
        ld->LDCapacity = 10ULL * 1024 * 1024 * 1024;
        ld->poolNo = poolNo;
        ld->raidType = raid;
        ld->PDType = "SAS";
        ld->LDState = state;
        ld->group = group;
        ld->RPLAttribute = "IV";
        ld->actualUsedCapacity = 1024ULL * 1024 * 1024;
        return ld;
    }

    // n disk extents of the pool in the repository and the disk index, each
    // of the given blocks.
    void AddDisks(const std::string& poolNo, int n, Uint64 blocks) {
        for (int i = 0; i < n; ++i) {
            orvsmis::PdRawData* pd = new orvsmis::PdRawData();
            pd->AddRef();
            char pdn[8];
            snprintf(pdn, sizeof pdn, "00-%02x", unsigned(disks.size()));
            pd->name = pdn;
            pd->arrayId = ARRAY_ID;
            pd->PDN = pdn;
            pd->classification = "data";
            pd->rankGroupNumber = poolNo;
            pd->state = "ready";
            pd->PDCapacity = blocks * 512;
            pd->type = "SAS";
            CIMInstance extent(CIMName("ORV_Storage_StorageExtent"));
            std::string deviceId = std::string(pdn).substr(0, 2) + "h-" + std::string(pdn).substr(3) + "h";
            extent.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(deviceId.c_str()))));
            extent.addProperty(CIMProperty(CIMName("NumberOfBlocks"), CIMValue(blocks)));
            Array<CIMKeyBinding> keys;
            keys.append(CIMKeyBinding(CIMName("DeviceID"), String(deviceId.c_str()), CIMKeyBinding::STRING));
            keys.append(CIMKeyBinding(CIMName("SystemName"), String(ARRAY_ID), CIMKeyBinding::STRING));
            CIMObjectPath path(String(), CIMNamespaceName(), CIMName("ORV_Storage_StorageExtent"), keys);
            extent.setPath(path);
            walking->createInstance(context, CIMNamespaceName("root/orv"), extent);
            orvsmis::PDmanager::Instance()->AddData(pd, path);
            disks.push_back(path);
            pd->Release();
        }
    }

    std::shared_ptr<WalkingRepository> walking;
    std::vector<CIMObjectPath> disks;
};

}  // namespace volumetest

#endif
