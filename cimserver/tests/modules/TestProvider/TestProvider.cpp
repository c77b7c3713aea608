// A provider module for the hosting tests: one provider that is an instance,
// method, association and indication provider at once. Each call it gets is
// appended to the file named by TEST_PROVIDER_LOG, so tests can check order.

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMIndicationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <thread>

PEGASUS_USING_PEGASUS;

namespace {

std::mutex g_logMutex;

void note(const std::string& line) {
    const char* file = std::getenv("TEST_PROVIDER_LOG");
    if (file == nullptr) return;
    std::lock_guard<std::mutex> lock(g_logMutex);
    std::ofstream(file, std::ios::app) << line << "\n";
}

const CIMNamespaceName kTest("root/test");

CIMInstance element(const String& id) {
    CIMInstance instance("Test_Element");
    instance.addProperty(CIMProperty("Id", id));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", id, CIMKeyBinding::STRING));
    instance.setPath(CIMObjectPath(String(), kTest, "Test_Element", keys));
    return instance;
}

String keyOf(const CIMObjectPath& path) {
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    return keys.size() == 1 ? keys[0].getValue() : String();
}

class TestProvider : public CIMInstanceProvider,
                     public CIMMethodProvider,
                     public CIMAssociationProvider,
                     public CIMIndicationProvider {
public:
    void initialize(CIMOMHandle& cimom) override {
        _cimom = cimom;
        note("initialize");
        // A provider fills the repository through its handle.
        try {
            _cimom.createInstance(OperationContext(), kTest, element("from-initialize"));
        } catch (const CIMException& e) {
            if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;   // a restart finds it stored
        }
    }

    void terminate() override {
        note("terminate");
        delete this;
    }

    // Instances are served by the repository; writes are refused in three ways.
    void getInstance(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override {
        note("getInstance");
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override {
        note("enumerateInstances");
    }
    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler&) override {
        note("enumerateInstanceNames");
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath& path, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler& handler) override {
        note("modifyInstance " + keyOf(path).toUtf8());
        if (keyOf(path) == "accepted") {
            handler.processing();
            handler.complete();
        }
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override {
        note("createInstance");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override {
        note("deleteInstance");
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "Not Support");
    }

    void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override {
        note("invokeMethod " + methodName.getString().toUtf8() + " on " + objectReference.toString().toUtf8());
        if (methodName.equal("DoIt")) {
            Uint32 count = 0;
            String name, echo;
            Array<Uint16> flags;
            for (Uint32 i = 0; i < in.size(); ++i) {
                const CIMValue v = in[i].getValue();
                const String p = in[i].getParameterName();
                if (p == "Count") v.get(count);
                else if (p == "Name") v.get(name);
                else if (p == "Flags") v.get(flags);
                else if (p == "Echo" && !v.isNull()) v.get(echo);
            }
            handler.processing();
            handler.deliverParamValue(CIMParamValue("Echo", CIMValue(name + ":" + echo), true));
            Array<Uint64> sizes;
            for (Uint32 i = 0; i < flags.size(); ++i) sizes.append(Uint64(flags[i]) * 1000);
            handler.deliverParamValue(CIMParamValue("Sizes", CIMValue(sizes), true));
            handler.deliver(CIMValue(Uint32(count * 2)));
            handler.complete();
        } else if (methodName.equal("Fail")) {
            String how;
            if (in.size() == 1) in[0].getValue().get(how);
            if (how == "cim") throw CIMException(CIM_ERR_ACCESS_DENIED, "denied by the test provider");
            if (how == "std") throw std::runtime_error("the test provider broke");
            if (how == "null") handler.deliver(CIMValue());
            handler.complete();
        } else if (methodName.equal("Silent")) {
            // Returns without delivering or completing anything.
        } else if (methodName.equal("Begin")) {
            Uint32 count = 0;
            if (in.size() == 1) in[0].getValue().get(count);
            _cimom.beginTransaction(kTest);
            for (Uint32 i = 0; i < count; ++i)
                _cimom.createInstance(context, kTest, element(String::fromUtf8("tx-" + std::to_string(i))));
            // Another thread's call joins the same transaction.
            CIMOMHandle other = _cimom;
            std::thread helper([&other, &context] {
                other.createInstance(context, kTest, element("tx-thread"));
            });
            helper.join();
            handler.deliver(CIMValue(Uint32(0)));
            handler.complete();
        } else if (methodName.equal("Commit")) {
            _cimom.commitTransaction();
            handler.deliver(CIMValue(Uint32(0)));
            handler.complete();
        }
    }

    void associators(const OperationContext&, const CIMObjectPath& objectName, const CIMName& associationClass,
        const CIMName&, const String&, const String&, const Boolean, const Boolean, const CIMPropertyList&,
        ObjectResponseHandler& handler) override {
        note("associators " + associationClass.getString().toUtf8());
        // One object of its own and one the repository also answers.
        handler.deliver(CIMObject(element(keyOf(objectName) + "-peer")));
        handler.deliver(CIMObject(element("stored-peer")));
        handler.complete();
    }
    void associatorNames(const OperationContext&, const CIMObjectPath& objectName, const CIMName& associationClass,
        const CIMName&, const String&, const String&, ObjectPathResponseHandler& handler) override {
        note("associatorNames " + associationClass.getString().toUtf8());
        handler.deliver(element(keyOf(objectName) + "-peer").getPath());
        handler.deliver(element("stored-peer").getPath());
        // never completes: the server still answers with what came
    }
    void references(const OperationContext&, const CIMObjectPath&, const CIMName&, const String&, const Boolean,
        const Boolean, const CIMPropertyList&, ObjectResponseHandler&) override {
        note("references");
    }
    void referenceNames(const OperationContext&, const CIMObjectPath&, const CIMName&, const String&,
        ObjectPathResponseHandler&) override {
        note("referenceNames");
    }

    void enableIndications(IndicationResponseHandler&) override { note("enableIndications"); }
    void disableIndications() override { note("disableIndications"); }
    void createSubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&,
        const CIMPropertyList&, const Uint16) override {}
    void modifySubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&,
        const CIMPropertyList&, const Uint16) override {}
    void deleteSubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&) override {}

private:
    CIMOMHandle _cimom;
};

} // namespace

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName) {
    if (String::equalNoCase(providerName, "TestProvider")) return new TestProvider;
    return nullptr;
}
