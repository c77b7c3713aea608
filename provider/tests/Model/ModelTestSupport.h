#ifndef PROVIDER_TESTS_MODEL_MODELTESTSUPPORT_H
#define PROVIDER_TESTS_MODEL_MODELTESTSUPPORT_H

// An in-memory stand-in for the server's repository behind the module's CIM
// handle, a recording indication handler, and a fixture that wires both in
// and empties the record store around each test.

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ArrayRawData.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "DacRawData.h"
#include "IndicationHandle.h"
#include "RawDataCenter.h"
#include "Singleton.h"

namespace modeltest {

using namespace Pegasus;

inline std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// A path as the repository tells instances apart: class and keys, without
// host or namespace, at any depth of reference.
inline std::string canonical(const CIMObjectPath& path) {
    std::vector<std::string> keys;
    for (Uint32 i = 0; i < path.getKeyBindings().size(); ++i) {
        const CIMKeyBinding& kb = path.getKeyBindings()[i];
        std::string value = kb.getValue().toUtf8();
        if (kb.getType() == CIMKeyBinding::REFERENCE) value = canonical(CIMObjectPath(kb.getValue()));
        keys.push_back(lower(kb.getName().getString().toUtf8()) + "=" + value);
    }
    std::sort(keys.begin(), keys.end());
    std::string out = lower(path.getClassName().getString().toUtf8());
    for (const std::string& key : keys) out += "|" + key;
    return out;
}

class FakeRepository : public CIMOMHandleRep {
public:
    std::map<std::string, CIMInstance> instances;
    std::vector<std::string> log;   // "create <class>", "modify <class>", "delete <class>"
    std::string failCreateOfClass;  // a create of this class fails with CIM_ERR_FAILED
    CIMInstance lastCreated;        // the last instance given to create, as given
    std::string lastNamespace;      // and the namespace it was given for

    // The key path of an instance: its own path when it has keys, else its
    // reference properties (associations).
    static CIMObjectPath keyPath(const CIMInstance& instance) {
        if (instance.getPath().getKeyBindings().size() > 0) {
            CIMObjectPath path = instance.getPath();
            path.setHost(String());
            path.setNameSpace(CIMNamespaceName());
            return path;
        }
        Array<CIMKeyBinding> keys;
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
            CIMConstProperty p = instance.getProperty(i);
            if (p.getType() == CIMTYPE_REFERENCE && !p.getValue().isNull()) {
                CIMObjectPath ref;
                p.getValue().get(ref);
                keys.append(CIMKeyBinding(p.getName(), CIMValue(ref)));
            }
        }
        return CIMObjectPath(String(), CIMNamespaceName(), instance.getClassName(), keys);
    }

    size_t count(const std::string& className) const {
        size_t n = 0;
        for (const auto& entry : instances)
            if (lower(entry.second.getClassName().getString().toUtf8()) == lower(className)) ++n;
        return n;
    }
    std::vector<CIMInstance> of(const std::string& className) const {
        std::vector<CIMInstance> out;
        for (const auto& entry : instances)
            if (lower(entry.second.getClassName().getString().toUtf8()) == lower(className))
                out.push_back(entry.second);
        return out;
    }
    bool has(const CIMObjectPath& path) const { return instances.count(canonical(path)) != 0; }
    CIMInstance get(const CIMObjectPath& path) const { return instances.at(canonical(path)); }

    CIMInstance getInstance(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath& name, Boolean,
                            Boolean, Boolean, const CIMPropertyList&) override {
        auto it = instances.find(canonical(name));
        if (it == instances.end()) throw CIMException(CIM_ERR_NOT_FOUND, name.toString());
        return it->second.clone();
    }
    Array<CIMInstance> enumerateInstances(const OperationContext&, const CIMNamespaceName&, const CIMName& className,
                                          Boolean, Boolean, Boolean, Boolean, const CIMPropertyList&) override {
        Array<CIMInstance> out;
        for (const CIMInstance& i : of(className.getString().toUtf8())) out.append(i.clone());
        return out;
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext&, const CIMNamespaceName&,
                                                const CIMName& className) override {
        Array<CIMObjectPath> out;
        for (const CIMInstance& i : of(className.getString().toUtf8())) out.append(keyPath(i));
        return out;
    }
    CIMObjectPath createInstance(const OperationContext&, const CIMNamespaceName& ns,
                                 const CIMInstance& instance) override {
        std::string className = instance.getClassName().getString().toUtf8();
        lastCreated = instance.clone();
        lastNamespace = ns.getString().toUtf8();
        if (lower(className) == lower(failCreateOfClass)) throw CIMException(CIM_ERR_FAILED, "refused by the test");
        CIMObjectPath path = keyPath(instance);
        std::string key = canonical(path);
        if (instances.count(key)) throw CIMException(CIM_ERR_ALREADY_EXISTS, path.toString());
        CIMInstance stored = instance.clone();
        stored.setPath(path);
        instances[key] = stored;
        log.push_back("create " + className);
        path.setNameSpace(ns);
        return path;
    }
    void modifyInstance(const OperationContext&, const CIMNamespaceName&, const CIMInstance& instance, Boolean,
                        const CIMPropertyList&) override {
        std::string key = canonical(keyPath(instance));
        auto it = instances.find(key);
        if (it == instances.end()) throw CIMException(CIM_ERR_NOT_FOUND, instance.getPath().toString());
        CIMInstance stored = instance.clone();
        stored.setPath(keyPath(instance));
        it->second = stored;
        log.push_back("modify " + instance.getClassName().getString().toUtf8());
    }
    void deleteInstance(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath& name) override {
        auto it = instances.find(canonical(name));
        if (it == instances.end()) throw CIMException(CIM_ERR_NOT_FOUND, name.toString());
        log.push_back("delete " + it->second.getClassName().getString().toUtf8());
        instances.erase(it);
    }
    Array<CIMObjectPath> referenceNames(const OperationContext&, const CIMNamespaceName&,
                                        const CIMObjectPath& objectName, const CIMName&, const String&) override {
        Array<CIMObjectPath> out;
        std::string target = canonical(objectName);
        for (const auto& entry : instances) {
            const CIMInstance& i = entry.second;
            for (Uint32 p = 0; p < i.getPropertyCount(); ++p) {
                CIMConstProperty prop = i.getProperty(p);
                if (prop.getType() != CIMTYPE_REFERENCE || prop.getValue().isNull()) continue;
                CIMObjectPath ref;
                prop.getValue().get(ref);
                if (canonical(ref) == target) {
                    out.append(keyPath(i));
                    break;
                }
            }
        }
        return out;
    }
    // The far ends of the stored association instances that refer to
    // objectName, found by their reference properties (association class
    // compared by name only).
    Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                                         const CIMObjectPath& objectName, const CIMName& assocClass,
                                         const CIMName&, const String&, const String&) override {
        Array<CIMObjectPath> out;
        const std::string self = canonical(objectName);
        for (const auto& entry : instances) {
            const CIMInstance& link = entry.second;
            if (!assocClass.isNull() && lower(link.getClassName().getString().toUtf8()) !=
                                            lower(assocClass.getString().toUtf8()))
                continue;
            std::vector<CIMObjectPath> refs;
            bool refersToSelf = false;
            for (Uint32 i = 0; i < link.getPropertyCount(); ++i) {
                const CIMValue value = link.getProperty(i).getValue();
                if (value.isNull() || value.isArray() || value.getType() != CIMTYPE_REFERENCE) continue;
                CIMObjectPath ref;
                value.get(ref);
                if (canonical(ref) == self) refersToSelf = true;
                else refs.push_back(ref);
            }
            if (refersToSelf)
                for (const CIMObjectPath& ref : refs) out.append(ref);
        }
        return out;
    }
    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& ns,
                                 const CIMObjectPath& objectName, const CIMName& assocClass,
                                 const CIMName& resultClass, const String& role, const String& resultRole, Boolean,
                                 Boolean, const CIMPropertyList&) override {
        Array<CIMObject> out;
        const Array<CIMObjectPath> names =
            associatorNames(context, ns, objectName, assocClass, resultClass, role, resultRole);
        for (Uint32 i = 0; i < names.size(); ++i) {
            auto found = instances.find(canonical(names[i]));
            if (found != instances.end()) out.append(CIMObject(found->second));
        }
        return out;
    }
    Array<CIMObject> references(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&,
                                const CIMName&, const String&, Boolean, Boolean, const CIMPropertyList&) override {
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "references");
    }
    CIMValue getProperty(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&,
                         const CIMName&) override {
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "getProperty");
    }
    void setProperty(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                     const CIMValue&) override {
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "setProperty");
    }
    CIMValue invokeMethod(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                          const Array<CIMParamValue>&, Array<CIMParamValue>&) override {
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "invokeMethod");
    }
    void disallowProviderUnload() override {}
    void allowProviderUnload() override {}
    void beginTransaction(const CIMNamespaceName&) override {}
    void commitTransaction() override {}
    void rollBackTransaction() override {}
};

class RecordingIndications : public IndicationResponseHandler {
public:
    std::vector<CIMInstance> delivered;
    void processing() override {}
    void complete() override {}
    void deliver(const CIMIndication& indication) override { delivered.push_back(indication); }
    void deliver(const OperationContext&, const CIMIndication& indication) override {
        delivered.push_back(indication);
    }
    std::vector<CIMInstance> named(const char* className) const {
        std::vector<CIMInstance> out;
        for (const CIMInstance& i : delivered)
            if (i.getClassName().getString() == className) out.push_back(i);
        return out;
    }
};

// Property reads that fail the test when the property is missing.
template <class T>
T prop(const CIMInstance& instance, const char* name) {
    Uint32 index = instance.findProperty(CIMName(name));
    if (index == PEG_NOT_FOUND) {
        ADD_FAILURE() << "no property " << name << " in " << instance.getClassName().getString().toUtf8();
        return T();
    }
    T value = T();
    instance.getProperty(index).getValue().get(value);
    return value;
}

inline std::vector<std::string> propertyNames(const CIMInstance& instance) {
    std::vector<std::string> out;
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        out.push_back(instance.getProperty(i).getName().getString().toUtf8());
    return out;
}

inline std::vector<Uint16> uint16s(const CIMInstance& instance, const char* name) {
    Array<Uint16> values = prop<Array<Uint16>>(instance, name);
    return std::vector<Uint16>(values.begin(), values.end());
}

// Wires a fresh repository and indication handler into the module's
// handles, seeds the configuration and empties the record store.
class ModelFixture : public ::testing::Test {
protected:
    void SetUp() override {
        orvsmis::ConfigManager* config = orvsmis::Singleton<orvsmis::ConfigManager>::Instance();
        config->SetConfigValue("smis", "namespace", std::list<std::string>(1, "root/orv"));
        config->SetConfigValue("smis", "providerModuleName", std::list<std::string>(1, "ORVSMISProviderModule"));
        config->SetConfigValue("general", "dataStoreType", std::list<std::string>(1, "Memory"));
        config->SetConfigValue("general", "prefix", std::list<std::string>(1, "ORV_Storage_"));
        config->SetConfigValue("general", "vendor", std::list<std::string>(1, "ORV"));
        config->SetConfigValue("general", "brand", std::list<std::string>(1, "ORV"));
        repository = std::make_shared<FakeRepository>();
        CIMOMHandle handle(repository);
        orvsmis::Singleton<orvsmis::CimHandle>::Instance()->Initialize(handle);
        orvsmis::RawDataCenter::Instance()->Destroy();
        EnableIndications(true);
    }
    void TearDown() override {
        orvsmis::RawDataCenter::Instance()->Destroy();
        orvsmis::Singleton<orvsmis::IndicationHandle>::Instance()->SetHandler(nullptr);
        orvsmis::Singleton<orvsmis::IndicationHandle>::Instance()->SetEnabled(false);
        orvsmis::ComputerSystem::AfterCreated.Clear();
        orvsmis::ComputerSystem::AfterModified.Clear();
        orvsmis::ComputerSystem::BeforeDeleted.Clear();
    }

    void EnableIndications(bool on) {
        orvsmis::IndicationHandle* handle = orvsmis::Singleton<orvsmis::IndicationHandle>::Instance();
        handle->SetHandler(on ? &indications : nullptr);
        handle->SetEnabled(on);
    }

    // Records as the array reports them; the caller owns one reference.
    static orvsmis::ArrayRawData* MakeArray(const std::string& wwn, const std::string& state,
                                            int redundancyStatus = 2) {
        orvsmis::ArrayRawData* array = new orvsmis::ArrayRawData();
        array->AddRef();
        array->name = wwn;
        array->arrayId = wwn;
        array->worldWideName = wwn;
        array->resourceState = state;
        array->vendorID = "ORV";
        array->productID = "Vx2000";
        array->serialNumber = "0000000930000001";
        array->unitName = "lab-array";
        array->unitContact = "storage team";
        array->redundancyStatus = redundancyStatus;
        return array;
    }
    static orvsmis::DacRawData* MakeDac(const std::string& wwn, const std::string& number, const std::string& state) {
        orvsmis::DacRawData* dac = new orvsmis::DacRawData();
        dac->AddRef();
        dac->name = number;
        dac->arrayId = wwn;
        dac->number = number;
        dac->state = state;
        return dac;
    }
    static void Store(orvsmis::RawData* record) { orvsmis::RawDataCenter::Instance()->AddData(record, record->arrayId); }

    OperationContext context;
    std::shared_ptr<FakeRepository> repository;
    RecordingIndications indications;
};

}  // namespace modeltest

#endif
