#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

struct CIMParamValueRep {
    String name;
    CIMValue value;
    Boolean isTyped = true;
};

CIMParamValue::CIMParamValue() {}
CIMParamValue::CIMParamValue(const CIMParamValue& x) = default;
CIMParamValue::CIMParamValue(String parameterName, CIMValue value, Boolean isTyped)
    : _rep(std::make_shared<CIMParamValueRep>()) {
    if (!CIMName::legal(parameterName)) throw InvalidNameException(parameterName);
    _rep->name = parameterName;
    _rep->value = value;
    _rep->isTyped = isTyped;
}
CIMParamValue::~CIMParamValue() {}
CIMParamValue& CIMParamValue::operator=(const CIMParamValue& x) = default;

CIMParamValueRep& CIMParamValue::_checked() const {
    if (!_rep) throw UninitializedObjectException();
    return *_rep;
}

String CIMParamValue::getParameterName() const { return _checked().name; }
CIMValue CIMParamValue::getValue() const { return _checked().value; }
Boolean CIMParamValue::isTyped() const { return _checked().isTyped; }
void CIMParamValue::setParameterName(String& parameterName) {
    if (!CIMName::legal(parameterName)) throw InvalidNameException(parameterName);
    _checked().name = parameterName;
}
void CIMParamValue::setValue(CIMValue& value) { _checked().value = value; }
void CIMParamValue::setIsTyped(Boolean isTyped) { _checked().isTyped = isTyped; }

CIMParamValue CIMParamValue::clone() const {
    const CIMParamValueRep& rep = _checked();
    return CIMParamValue(rep.name, rep.value, rep.isTyped);
}

PEGASUS_NAMESPACE_END
