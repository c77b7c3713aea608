#include "ControllerManager.h"

#include <memory>

#include <Pegasus/Provider/ProviderException.h>

#include "ConfigManager.h"
#include "SmisTrace.h"
#include "BasedOnCESV.h"
#include "ElementSettingData.h"
#include "StorageCapabilityController.h"
#include "ConcreteJobController.h"
#include "StorageConfigurationServiceController.h"
#include "StoragePoolController.h"
#include "SystemDevice.h"
#include "XmlDataLoader.h"

namespace orvsmis {

using Pegasus::CIMException;
using Pegasus::CIMParamValue;
using Pegasus::CIMValue;
using Pegasus::String;

void ControllerManager::removePrefix(std::string& name) {
    const std::string prefix = Singleton<ConfigManager>::Instance()->GetPrefix();
    // The prefix is looked for anywhere, and cut from the beginning all the same.
    if (!prefix.empty() && name.find(prefix) != std::string::npos) {
        name.erase(0, std::min(prefix.size(), name.size()));
    } else if (name.find("CIM_") != std::string::npos) {
        name.erase(0, std::min<std::size_t>(4, name.size()));
    }
}

Controller* ControllerManager::createController(const std::string& className) {
    std::string name = className;
    removePrefix(name);
    // Controllers of the masking and replication classes join this table with their classes, in its order.
    if (name == StoragePoolController::m_className) return new StoragePoolController();
    if (name == StorageConfigurationServiceController::m_className) return new StorageConfigurationServiceController();
    if (name == "SystemDevice") return new SystemDevice();
    if (name == "ElementSettingData") return new ElementSettingData();
    if (name == "StorageCapabilities") return new StorageCapabilityController();
    if (name == "BasedOn") return new BasedOnCESV();
    if (name == "ConcreteJob") return new ConcreteJobController();
    if (name == XmlDataLoader::m_className) return new XmlDataLoader();
    return nullptr;
}

void ControllerManager::InvokeMethod(const InvokeMethodArgs& args) {
    const std::string className = args.objectPath.getClassName().getString().toUtf8();
    std::unique_ptr<Controller> controller(createController(className));
    if (!controller)
        throw Pegasus::CIMNotSupportedException(
                           String::fromUtf8("not support this function : " + args.methodName.getString().toUtf8()));
    Pegasus::Array<CIMParamValue> outParameters;
    InvokeMethodArgs copy(args.context, args.objectPath, args.methodName, args.inParameters, outParameters, args.handler);
    const CIMValue result = controller->Invoke(copy, outParameters);
    args.handler.processing();
    for (Pegasus::Uint32 i = 0; i < outParameters.size(); ++i) args.handler.deliverParamValue(outParameters[i]);
    if (!result.isNull()) args.handler.deliver(result);
    args.handler.complete();
}

namespace {

// Both associator requests: a controller named by the association class
// delivers to the request's handler itself.
template <class Args, class Call>
void traverse(const Args& args, Call call) {
    const std::string assocClass = args.assocClass.getString().toUtf8();
    std::unique_ptr<Controller> controller(ControllerManager::createController(assocClass));
    if (!controller)
        throw Pegasus::CIMNotSupportedException(
                           String::fromUtf8("not support associator for this class : " + assocClass));
    std::string objectClass = args.objectPath.getClassName().getString().toUtf8();
    std::string resultClass = args.resultClass.getString().toUtf8();
    ControllerManager::removePrefix(objectClass);
    ControllerManager::removePrefix(resultClass);
    Args copy(args);
    call(*controller, copy, objectClass, resultClass);
}

}  // namespace

void ControllerManager::Associator(const AssoArgs& args) {
    traverse(args, [](Controller& c, AssoArgs& a, const std::string& o, const std::string& r) {
        c.Associator(a, o, r);
    });
}

void ControllerManager::AssociatorNames(const AssoNameArgs& args) {
    traverse(args, [](Controller& c, AssoNameArgs& a, const std::string& o, const std::string& r) {
        c.AssociatorNames(a, o, r);
    });
}

}  // namespace orvsmis
