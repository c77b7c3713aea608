#ifndef ORVSMIS_TESTS_PROFILESTESTSUPPORT_H
#define ORVSMIS_TESTS_PROFILESTESTSUPPORT_H

// A stand-in repository that keeps namespaces apart (the profiles live in
// root/interop, the array in root/orv, and the clean-up treats the two
// differently) and records the transaction calls.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../Model/ModelTestSupport.h"
#include "SmisProvider.h"

namespace profiletest {

using namespace Pegasus;
using modeltest::FakeRepository;

class NamespacedRepository : public CIMOMHandleRep {
public:
    std::vector<std::string> transactions;  // "begin <ns>", "commit", "rollback"
    std::string failCreateOfClass;          // a create of this class fails with CIM_ERR_FAILED

    FakeRepository& in(const std::string& ns) {
        std::shared_ptr<FakeRepository>& space = m_spaces[modeltest::lower(ns)];
        if (!space) space = std::make_shared<FakeRepository>();
        return *space;
    }
    FakeRepository& in(const CIMNamespaceName& ns) { return in(std::string(ns.getString().toUtf8())); }

    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& name,
                            Boolean a, Boolean b, Boolean d, const CIMPropertyList& l) override {
        return in(ns).getInstance(c, ns, name, a, b, d, l);
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
                                          const CIMName& cls, Boolean a, Boolean b, Boolean d, Boolean e,
                                          const CIMPropertyList& l) override {
        return in(ns).enumerateInstances(c, ns, cls, a, b, d, e, l);
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& c, const CIMNamespaceName& ns,
                                                const CIMName& cls) override {
        return in(ns).enumerateInstanceNames(c, ns, cls);
    }
    CIMObjectPath createInstance(const OperationContext& c, const CIMNamespaceName& ns,
                                 const CIMInstance& instance) override {
        if (modeltest::lower(instance.getClassName().getString().toUtf8()) == modeltest::lower(failCreateOfClass))
            throw CIMException(CIM_ERR_FAILED, "refused by the test");
        return in(ns).createInstance(c, ns, instance);
    }
    void modifyInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& instance,
                        Boolean q, const CIMPropertyList& l) override {
        in(ns).modifyInstance(c, ns, instance, q, l);
    }
    void deleteInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& name) override {
        in(ns).deleteInstance(c, ns, name);
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName& ns,
                                        const CIMObjectPath& name, const CIMName& cls, const String& role) override {
        return in(ns).referenceNames(c, ns, name, cls, role);
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName& ns,
                                         const CIMObjectPath& name, const CIMName& assoc, const CIMName& result,
                                         const String& role, const String& resultRole) override {
        return in(ns).associatorNames(c, ns, name, assoc, result, role, resultRole);
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& name,
                                 const CIMName& assoc, const CIMName& result, const String& role,
                                 const String& resultRole, Boolean q, Boolean o,
                                 const CIMPropertyList& l) override {
        return in(ns).associators(c, ns, name, assoc, result, role, resultRole, q, o, l);
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
    void beginTransaction(const CIMNamespaceName& ns) override {
        transactions.push_back("begin " + ns.getString().toUtf8());
    }
    void commitTransaction() override { transactions.push_back("commit"); }
    void rollBackTransaction() override { transactions.push_back("rollback"); }

private:
    std::map<std::string, std::shared_ptr<FakeRepository>> m_spaces;
};

// The model fixture with the namespaced repository behind the CIM handle.
class ProfilesFixture : public modeltest::ModelFixture {
protected:
    void SetUp() override {
        modeltest::ModelFixture::SetUp();
        spaces = std::make_shared<NamespacedRepository>();
        CIMOMHandle handle(spaces);
        orvsmis::Singleton<orvsmis::CimHandle>::Instance()->Initialize(handle);
        orvsmis::SMISProvider::m_bEnableCopyService = true;
    }
    void TearDown() override {
        orvsmis::SMISProvider::m_bEnableCopyService = true;
        modeltest::ModelFixture::TearDown();
    }
    FakeRepository& interop() { return spaces->in(std::string("root/interop")); }
    FakeRepository& storage() { return spaces->in(std::string("root/orv")); }

    std::shared_ptr<NamespacedRepository> spaces;
};

}  // namespace profiletest

#endif
