#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>

#include "CIMPropertyRep.h"

PEGASUS_NAMESPACE_BEGIN

namespace {

std::shared_ptr<CIMPropertyRep> makeRep(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                                        const CIMName& referenceClassName, const CIMName& classOrigin,
                                        Boolean propagated) {
    if (name.isNull()) throw UninitializedObjectException();
    if (value.getType() == CIMTYPE_REFERENCE && value.isArray())
        throw TypeMismatchException("a reference property cannot be an array");
    if (!referenceClassName.isNull() && value.getType() != CIMTYPE_REFERENCE)
        throw TypeMismatchException("a reference class needs a reference value");
    auto rep = std::make_shared<CIMPropertyRep>();
    rep->name = name;
    rep->value = value;
    rep->arraySize = arraySize;
    rep->referenceClassName = referenceClassName;
    rep->classOrigin = classOrigin;
    rep->propagated = propagated;
    return rep;
}

}  // namespace

CIMProperty::CIMProperty() {}
CIMProperty::CIMProperty(const CIMProperty& x) = default;
CIMProperty::CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                         const CIMName& referenceClassName, const CIMName& classOrigin,
                         Boolean propagated)
    : _rep(makeRep(name, value, arraySize, referenceClassName, classOrigin, propagated)) {}
CIMProperty::~CIMProperty() {}
CIMProperty& CIMProperty::operator=(const CIMProperty& x) = default;

CIMPropertyRep& CIMProperty::_checked() const {
    if (!_rep) throw UninitializedObjectException();
    return *_rep;
}

const CIMName& CIMProperty::getName() const { return _checked().name; }
void CIMProperty::setName(const CIMName& name) {
    CIMPropertyRep& rep = _checked();
    if (rep.contained) throw Exception("a property held by an instance cannot be renamed");
    if (name.isNull()) throw UninitializedObjectException();
    rep.name = name;
}
const CIMValue& CIMProperty::getValue() const { return _checked().value; }
CIMType CIMProperty::getType() const { return _checked().value.getType(); }
Boolean CIMProperty::isArray() const { return _checked().value.isArray(); }
void CIMProperty::setValue(const CIMValue& value) {
    CIMPropertyRep& rep = _checked();
    if (!rep.value.typeCompatible(value))
        throw TypeMismatchException(String("property ") + rep.name.getString() + " is " +
                                    cimTypeToString(rep.value.getType()) +
                                    (rep.value.isArray() ? "[]" : "") + ", not " +
                                    cimTypeToString(value.getType()) + (value.isArray() ? "[]" : ""));
    rep.value = value;
}
Uint32 CIMProperty::getArraySize() const { return _checked().arraySize; }
const CIMName& CIMProperty::getReferenceClassName() const { return _checked().referenceClassName; }
const CIMName& CIMProperty::getClassOrigin() const { return _checked().classOrigin; }
void CIMProperty::setClassOrigin(const CIMName& classOrigin) { _checked().classOrigin = classOrigin; }
Boolean CIMProperty::getPropagated() const { return _checked().propagated; }
void CIMProperty::setPropagated(Boolean propagated) { _checked().propagated = propagated; }

Boolean CIMProperty::identical(const CIMConstProperty& x) const { return CIMConstProperty(*this).identical(x); }

CIMProperty CIMProperty::clone() const {
    auto rep = std::make_shared<CIMPropertyRep>(_checked());
    rep->contained = false;
    return CIMProperty(rep);
}

// ---- CIMConstProperty ----

CIMConstProperty::CIMConstProperty() {}
CIMConstProperty::CIMConstProperty(const CIMConstProperty& x) = default;
CIMConstProperty::CIMConstProperty(const CIMProperty& x) : _rep(x._rep) {}
CIMConstProperty::CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                                   const CIMName& referenceClassName, const CIMName& classOrigin,
                                   Boolean propagated)
    : _rep(makeRep(name, value, arraySize, referenceClassName, classOrigin, propagated)) {}
CIMConstProperty::~CIMConstProperty() {}
CIMConstProperty& CIMConstProperty::operator=(const CIMConstProperty& x) = default;
CIMConstProperty& CIMConstProperty::operator=(const CIMProperty& x) {
    _rep = x._rep;
    return *this;
}

CIMPropertyRep& CIMConstProperty::_checked() const {
    if (!_rep) throw UninitializedObjectException();
    return *_rep;
}

const CIMName& CIMConstProperty::getName() const { return _checked().name; }
const CIMValue& CIMConstProperty::getValue() const { return _checked().value; }
CIMType CIMConstProperty::getType() const { return _checked().value.getType(); }
Boolean CIMConstProperty::isArray() const { return _checked().value.isArray(); }
Uint32 CIMConstProperty::getArraySize() const { return _checked().arraySize; }
const CIMName& CIMConstProperty::getReferenceClassName() const { return _checked().referenceClassName; }
const CIMName& CIMConstProperty::getClassOrigin() const { return _checked().classOrigin; }
Boolean CIMConstProperty::getPropagated() const { return _checked().propagated; }

Boolean CIMConstProperty::identical(const CIMConstProperty& x) const {
    const CIMPropertyRep& a = _checked();
    const CIMPropertyRep& b = x._checked();
    return a.name.equal(b.name) && a.value == b.value && a.arraySize == b.arraySize &&
           a.referenceClassName.equal(b.referenceClassName) && a.classOrigin.equal(b.classOrigin) &&
           a.propagated == b.propagated;
}

CIMProperty CIMConstProperty::clone() const {
    auto rep = std::make_shared<CIMPropertyRep>(_checked());
    rep->contained = false;
    return CIMProperty(rep);
}

PEGASUS_NAMESPACE_END
