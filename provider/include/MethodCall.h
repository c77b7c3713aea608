#ifndef ORVSMIS_METHODCALL_H
#define ORVSMIS_METHODCALL_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMParamValue.h>

#include "IndicationNeeder.h"

namespace orvsmis {

class MethodResult;

// Builds the CIM_InstMethodCall instances of a job's method call (before the
// call and after the job ended) and sends them.
class MethodCall : public IndicationNeeder {
public:
    explicit MethodCall(MethodResult* result) : m_result(result) {}

    Pegasus::CIMInstance WrapPrecallInstance() { return wrapInstance(true); }
    Pegasus::CIMInstance WrapPostcallInstance() { return wrapInstance(false); }

    // Sends the instance as a method call indication; false when none went
    // out (indications off, or an instance that is not a method call).
    bool SendIndication(const Pegasus::CIMInstance& instance);

    // The "__MethodParameters" object of a call: every input parameter, with
    // the output parameters over them. Reference arrays and null references
    // are left out.
    static Pegasus::CIMObject WrapParameters(const Pegasus::Array<Pegasus::CIMParamValue>& in,
                                             const Pegasus::Array<Pegasus::CIMParamValue>& out);

private:
    Pegasus::CIMInstance wrapInstance(bool preCall);

    MethodResult* m_result;
};

}  // namespace orvsmis

#endif
