#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>

#include "CIMInstanceRep.h"

PEGASUS_NAMESPACE_BEGIN

CIMObject::CIMObject() {}
CIMObject::CIMObject(const CIMObject& x) = default;
CIMObject::CIMObject(const CIMInstance& x) : _rep(x._rep) {}
CIMObject::~CIMObject() {}
CIMObject& CIMObject::operator=(const CIMObject& x) = default;

CIMInstance CIMObject::_instance() const {
    if (!_rep) throw UninitializedObjectException();
    return CIMInstance(_rep);
}

const CIMName& CIMObject::getClassName() const {
    if (!_rep) throw UninitializedObjectException();
    return _rep->className;
}
const CIMObjectPath& CIMObject::getPath() const {
    if (!_rep) throw UninitializedObjectException();
    return _rep->path;
}
void CIMObject::setPath(const CIMObjectPath& path) { _instance().setPath(path); }
CIMObject& CIMObject::addProperty(const CIMProperty& x) {
    _instance().addProperty(x);
    return *this;
}
Uint32 CIMObject::findProperty(const CIMName& name) const { return _instance().findProperty(name); }
CIMProperty CIMObject::getProperty(Uint32 index) { return _instance().getProperty(index); }
CIMConstProperty CIMObject::getProperty(Uint32 index) const {
    const CIMInstance instance = _instance();
    return instance.getProperty(index);
}
void CIMObject::removeProperty(Uint32 index) { _instance().removeProperty(index); }
Uint32 CIMObject::getPropertyCount() const { return _instance().getPropertyCount(); }
CIMObject CIMObject::clone() const { return CIMObject(_instance().clone()); }
Boolean CIMObject::identical(const CIMConstObject& x) const {
    return _instance().identical(CIMConstInstance(x));
}
void CIMObject::instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                               const CIMPropertyList& propertyList) {
    _instance().instanceFilter(includeQualifiers, includeClassOrigin, propertyList);
}

// ---- CIMConstObject ----

CIMConstObject::CIMConstObject() {}
CIMConstObject::CIMConstObject(const CIMConstObject& x) = default;
CIMConstObject::CIMConstObject(const CIMObject& x) : _rep(x._rep) {}
CIMConstObject::CIMConstObject(const CIMInstance& x) : _rep(x._rep) {}
CIMConstObject::CIMConstObject(const CIMConstInstance& x) : _rep(x._rep) {}
CIMConstObject::~CIMConstObject() {}
CIMConstObject& CIMConstObject::operator=(const CIMConstObject& x) = default;

const CIMName& CIMConstObject::getClassName() const { return CIMConstInstance(*this).getClassName(); }
const CIMObjectPath& CIMConstObject::getPath() const { return CIMConstInstance(*this).getPath(); }
Uint32 CIMConstObject::findProperty(const CIMName& name) const { return CIMConstInstance(*this).findProperty(name); }
CIMConstProperty CIMConstObject::getProperty(Uint32 index) const { return CIMConstInstance(*this).getProperty(index); }
Uint32 CIMConstObject::getPropertyCount() const { return CIMConstInstance(*this).getPropertyCount(); }
CIMObject CIMConstObject::clone() const { return CIMObject(CIMConstInstance(*this).clone()); }
Boolean CIMConstObject::identical(const CIMConstObject& x) const {
    return CIMConstInstance(*this).identical(CIMConstInstance(x));
}

PEGASUS_NAMESPACE_END
