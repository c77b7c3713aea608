#ifndef ORVSMIS_METHODRESULT_H
#define ORVSMIS_METHODRESULT_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

#include "InvokeArgs.h"
#include "MethodResultArgs.h"

namespace orvsmis {

class MethodCall;

// The <prefix>MethodResult instance of a job: the method call as it was made
// (PreCallIndication) and, once the job ended, as it came out
// (PostCallIndication).
class MethodResult {
public:
    MethodResult(const InvokeArgs& invoke, const std::string& jobId);
    virtual ~MethodResult();

    // Writes the instance and its AssociatedJobMethodResult, sends the
    // pre-call indication; returns the instance's path.
    virtual Pegasus::CIMObjectPath Create(MethodResultArgs& args);
    // Rewrites the instance with the outcome and sends the post-call
    // indication.
    virtual void Modify();
    // Removes the association and the instance.
    virtual void Delete();

    const std::string& GetJobId() const { return m_jobId; }
    const Pegasus::CIMObjectPath& GetPath() const { return m_path; }
    const Pegasus::CIMObjectPath& GetTarget() const { return m_target; }
    const Pegasus::String& GetMethodName() const { return m_methodName; }
    const Pegasus::Array<Pegasus::CIMParamValue>& GetInParameters() const { return m_inParameters; }
    const Pegasus::Array<Pegasus::CIMParamValue>& GetOutParameters() const { return m_outParameters; }
    void SetOutParameters(const Pegasus::Array<Pegasus::CIMParamValue>& out) { m_outParameters = out; }
    const std::string& GetReturnValue() const { return m_returnValue; }
    void SetReturnValue(const std::string& text) { m_returnValue = text; }
    const Pegasus::OperationContext& GetContext() const { return m_context; }

private:
    MethodResult(const MethodResult&) = delete;
    MethodResult& operator=(const MethodResult&) = delete;

    Pegasus::CIMInstance wrapInstance(bool creating);

    std::string m_jobId;
    Pegasus::CIMObjectPath m_path;
    Pegasus::CIMObjectPath m_target;
    Pegasus::String m_methodName;
    Pegasus::Array<Pegasus::CIMParamValue> m_inParameters;
    Pegasus::Array<Pegasus::CIMParamValue> m_outParameters;
    // "NULL" until the job ends, then "Complete with no error" or "Failed".
    std::string m_returnValue;
    Pegasus::OperationContext m_context;
    MethodCall* m_methodCall;
};

}  // namespace orvsmis

#endif
