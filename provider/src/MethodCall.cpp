#include "MethodCall.h"

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "MC.h"
#include "MethodResult.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// Adds a parameter as a property of the parameters object. A reference
// property names the class of the path it holds; reference arrays and null
// references have no place there and are left out.
void addParameter(CIMObject& parameters, const CIMParamValue& parameter) {
    const CIMValue value = parameter.getValue();
    const CIMName name(parameter.getParameterName());
    if (value.getType() == CIMTYPE_REFERENCE) {
        if (value.isArray() || value.isNull()) return;
        CIMObjectPath path;
        value.get(path);
        parameters.addProperty(CIMProperty(name, value, 0, path.getClassName()));
        return;
    }
    parameters.addProperty(CIMProperty(name, value));
}

}  // namespace

CIMObject MethodCall::WrapParameters(const Array<CIMParamValue>& in, const Array<CIMParamValue>& out) {
    CIMObject parameters(CIMInstance(CIMName("__MethodParameters")));
    for (Uint32 i = 0; i < in.size(); ++i) addParameter(parameters, in[i]);
    for (Uint32 i = 0; i < out.size(); ++i) {
        const Uint32 index = parameters.findProperty(CIMName(out[i].getParameterName()));
        if (index != PEG_NOT_FOUND) {
            // The output value stands in place of the input of the same name,
            // even when its type differs.
            parameters.removeProperty(index);
        }
        addParameter(parameters, out[i]);
    }
    return parameters;
}

CIMInstance MethodCall::wrapInstance(bool preCall) {
    CIMInstance source;
    try {
        source = Singleton<CimHandle>::Instance()->GetSmisInstance(
            m_result->GetContext(), MC::Namespace(), m_result->GetTarget(), false, false, false,
            CIMPropertyList());
    } catch (const Pegasus::Exception& e) {
        // The call is described all the same; its target is named by path.
        SMIS_TRACE(LEVEL2, "Error[ MethodCall ] : target %s not read ,%s",
                   MC::ToStd(m_result->GetTarget().toString()).c_str(), MC::ToStd(e.getMessage()).c_str());
        source = CIMInstance(m_result->GetTarget().getClassName());
        source.setPath(m_result->GetTarget());
    }
    const Array<CIMParamValue> noOutput;
    const CIMObject parameters =
        WrapParameters(m_result->GetInParameters(), preCall ? noOutput : m_result->GetOutParameters());

    CIMInstance instance(CIMName("CIM_InstMethodCall"));
    instance.addProperty(CIMProperty(CIMName("SourceInstance"), CIMValue(source)));
    instance.addProperty(CIMProperty(CIMName("MethodName"), CIMValue(m_result->GetMethodName())));
    instance.addProperty(CIMProperty(CIMName("MethodParameters"), CIMValue(CIMInstance(parameters))));
    instance.addProperty(CIMProperty(CIMName("PreCall"), CIMValue(Boolean(preCall))));
    instance.addProperty(
        CIMProperty(CIMName("ReturnValue"), CIMValue(MC::ToString(m_result->GetReturnValue()))));
    return instance;
}

bool MethodCall::SendIndication(const CIMInstance& instance) {
    CIMInstance source;
    CIMInstance parameters;
    String methodName;
    Boolean preCall = false;
    CIMValue returnValue;
    Uint32 index = instance.findProperty(CIMName("SourceInstance"));
    if (index == PEG_NOT_FOUND) {
        SMIS_TRACE(LEVEL2, "Error[ MethodCall ] : %s", "no method call to send");
        return false;
    }
    instance.getProperty(index).getValue().get(source);
    index = instance.findProperty(CIMName("MethodParameters"));
    if (index != PEG_NOT_FOUND) instance.getProperty(index).getValue().get(parameters);
    index = instance.findProperty(CIMName("MethodName"));
    if (index != PEG_NOT_FOUND) instance.getProperty(index).getValue().get(methodName);
    index = instance.findProperty(CIMName("PreCall"));
    if (index != PEG_NOT_FOUND) instance.getProperty(index).getValue().get(preCall);
    index = instance.findProperty(CIMName("ReturnValue"));
    if (index != PEG_NOT_FOUND) returnValue = instance.getProperty(index).getValue();
    return ActivateInstMethodCallIndication(source, methodName, m_result->GetTarget(), preCall, parameters,
                                            returnValue);
}

}  // namespace orvsmis
