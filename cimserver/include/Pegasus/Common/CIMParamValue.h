#ifndef Pegasus_CIMParamValue_h
#define Pegasus_CIMParamValue_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

struct CIMParamValueRep;

// A method parameter's name and value. Copies share it (handle semantics).
class PEGASUS_COMMON_LINKAGE CIMParamValue {
public:
    CIMParamValue();
    CIMParamValue(const CIMParamValue& x);
    CIMParamValue(String parameterName, CIMValue value, Boolean isTyped = true);
    ~CIMParamValue();

    CIMParamValue& operator=(const CIMParamValue& x);

    String getParameterName() const;
    CIMValue getValue() const;
    Boolean isTyped() const;
    void setParameterName(String& parameterName);
    void setValue(CIMValue& value);
    void setIsTyped(Boolean isTyped = true);

    CIMParamValue clone() const;
    Boolean isUninitialized() const { return !_rep; }

private:
    CIMParamValueRep& _checked() const;
    std::shared_ptr<CIMParamValueRep> _rep;
};

PEGASUS_NAMESPACE_END

#endif
