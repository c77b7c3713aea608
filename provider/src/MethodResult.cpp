#include "MethodResult.h"

#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>

#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "MethodCall.h"
#include "Model.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

MethodResult::MethodResult(const InvokeArgs& invoke, const std::string& jobId)
    : m_jobId(jobId), m_target(invoke.objectPath), m_methodName(invoke.methodName),
      m_inParameters(invoke.inParameters), m_returnValue("NULL"), m_context(invoke.context),
      m_methodCall(new MethodCall(this)) {}

MethodResult::~MethodResult() { delete m_methodCall; }

CIMInstance MethodResult::wrapInstance(bool creating) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    const String id = MC::ToString(config->GetVendor() + "." + config->GetBrand() + " : " + m_jobId);
    CIMInstance instance(MC::ClassName("MethodResult"));
    instance.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(id)));
    instance.addProperty(
        CIMProperty(CIMName("PreCallIndication"), CIMValue(m_methodCall->WrapPrecallInstance())));
    // Until the job ends the post-call side is an empty method call.
    const CIMInstance postCall =
        creating ? CIMInstance(CIMName("CIM_InstMethodCall")) : m_methodCall->WrapPostcallInstance();
    instance.addProperty(CIMProperty(CIMName("PostCallIndication"), CIMValue(postCall)));

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), id, CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("MethodResult"), keys, path);
    instance.setPath(path);
    return instance;
}

CIMObjectPath MethodResult::Create(MethodResultArgs& args) {
    CIMInstance instance = wrapInstance(true);
    m_path = instance.getPath();
    Singleton<CimHandle>::Instance()->CreateInstance(m_context, MC::Namespace(), instance);
    AssociatedJobMethodResult::Create(m_context, args.jobPath, m_path);
    const Uint32 index = instance.findProperty(CIMName("PreCallIndication"));
    CIMInstance preCall;
    instance.getProperty(index).getValue().get(preCall);
    m_methodCall->SendIndication(preCall);
    return m_path;
}

void MethodResult::Modify() {
    CIMInstance instance = wrapInstance(false);
    instance.setPath(m_path);
    Singleton<CimHandle>::Instance()->ModifyInstance(m_context, MC::Namespace(), instance, false,
                                                     CIMPropertyList());
    const Uint32 index = instance.findProperty(CIMName("PostCallIndication"));
    CIMInstance postCall;
    instance.getProperty(index).getValue().get(postCall);
    m_methodCall->SendIndication(postCall);
}

void MethodResult::Delete() {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMName assocClass = MC::ClassName("AssociatedJobMethodResult");
    Array<CIMObjectPath> references;
    handle->ReferenceNames(m_context, MC::Namespace(), m_path, assocClass, String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) {
        if (!references[i].getClassName().equal(assocClass)) continue;
        handle->DeleteInstance(m_context, MC::Namespace(), references[i]);
    }
    handle->DeleteInstance(m_context, MC::Namespace(), m_path);
}

}  // namespace orvsmis
