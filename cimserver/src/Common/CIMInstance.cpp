#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>

#include "CIMInstanceRep.h"
#include "CIMPropertyRep.h"

PEGASUS_NAMESPACE_BEGIN

namespace {

std::shared_ptr<CIMInstanceRep> cloneRep(const CIMInstanceRep& rep) {
    auto copy = std::make_shared<CIMInstanceRep>();
    copy->className = rep.className;
    copy->path = rep.path;
    copy->properties.reserve(rep.properties.size());
    for (const CIMProperty& p : rep.properties) {
        CIMProperty c = p.clone();
        copy->properties.push_back(c);
    }
    return copy;
}

bool identicalReps(const CIMInstanceRep& a, const CIMInstanceRep& b) {
    if (&a == &b) return true;
    if (!a.className.equal(b.className) || !(a.path == b.path) || a.properties.size() != b.properties.size())
        return false;
    for (const CIMProperty& p : a.properties) {
        const Uint32 i = b.find(p.getName());
        if (i == PEG_NOT_FOUND || !p.identical(CIMConstProperty(b.properties[i]))) return false;
    }
    return true;
}

}  // namespace

// Marks properties held by an instance, so that they cannot be renamed.
static void markContained(const CIMProperty& p, bool contained, CIMPropertyRep& rep) {
    (void)p;
    rep.contained = contained;
}

CIMInstance::CIMInstance() {}
CIMInstance::CIMInstance(const CIMInstance& x) = default;
CIMInstance::CIMInstance(const CIMObject& x) : _rep(x._rep) {
    if (!_rep) throw DynamicCastFailedException();
}
CIMInstance::CIMInstance(const CIMName& className) : _rep(std::make_shared<CIMInstanceRep>()) {
    if (className.isNull()) throw UninitializedObjectException();
    _rep->className = className;
    _rep->path.setClassName(className);
}
CIMInstance::~CIMInstance() {}
CIMInstance& CIMInstance::operator=(const CIMInstance& x) = default;

CIMInstanceRep& CIMInstance::_checked() const {
    if (!_rep) throw UninitializedObjectException();
    return *_rep;
}

const CIMName& CIMInstance::getClassName() const { return _checked().className; }
const CIMObjectPath& CIMInstance::getPath() const { return _checked().path; }

void CIMInstance::setPath(const CIMObjectPath& path) {
    CIMInstanceRep& rep = _checked();
    if (!path.getClassName().isNull() && !path.getClassName().equal(rep.className))
        throw TypeMismatchException(String("the path of a ") + rep.className.getString() +
                                    " instance names class " + path.getClassName().getString());
    rep.path = path;
    if (path.getClassName().isNull()) rep.path.setClassName(rep.className);
}

CIMInstance& CIMInstance::addProperty(const CIMProperty& x) {
    CIMInstanceRep& rep = _checked();
    if (x.isUninitialized()) throw UninitializedObjectException();
    if (rep.find(x.getName()) != PEG_NOT_FOUND)
        throw AlreadyExistsException(String("property ") + x.getName().getString());
    markContained(x, true, *x._rep);
    rep.properties.push_back(x);
    return *this;
}

Uint32 CIMInstance::findProperty(const CIMName& name) const { return _checked().find(name); }

CIMProperty CIMInstance::getProperty(Uint32 index) {
    CIMInstanceRep& rep = _checked();
    if (index >= rep.properties.size()) throw IndexOutOfBoundsException();
    return rep.properties[index];
}

CIMConstProperty CIMInstance::getProperty(Uint32 index) const {
    CIMInstanceRep& rep = _checked();
    if (index >= rep.properties.size()) throw IndexOutOfBoundsException();
    return rep.properties[index];
}

void CIMInstance::removeProperty(Uint32 index) {
    CIMInstanceRep& rep = _checked();
    if (index >= rep.properties.size()) throw IndexOutOfBoundsException();
    markContained(rep.properties[index], false, *rep.properties[index]._rep);
    rep.properties.erase(rep.properties.begin() + index);
}

Uint32 CIMInstance::getPropertyCount() const { return Uint32(_checked().properties.size()); }

CIMInstance CIMInstance::clone() const { return CIMInstance(cloneRep(_checked())); }

Boolean CIMInstance::identical(const CIMConstInstance& x) const {
    return identicalReps(_checked(), x._checked());
}

void CIMInstance::instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                                 const CIMPropertyList& propertyList) {
    (void)includeQualifiers;
    CIMInstanceRep& rep = _checked();
    std::vector<CIMProperty> kept;
    kept.reserve(rep.properties.size());
    for (CIMProperty& p : rep.properties) {
        if (!propertyList.useThisProperty(p.getName())) {
            markContained(p, false, *p._rep);
            continue;
        }
        if (!includeClassOrigin) p.setClassOrigin(CIMName());
        kept.push_back(p);
    }
    rep.properties.swap(kept);
}

// ---- CIMConstInstance ----

CIMConstInstance::CIMConstInstance() {}
CIMConstInstance::CIMConstInstance(const CIMConstInstance& x) = default;
CIMConstInstance::CIMConstInstance(const CIMInstance& x) : _rep(x._rep) {}
CIMConstInstance::CIMConstInstance(const CIMObject& x) : _rep(x._rep) {
    if (!_rep) throw DynamicCastFailedException();
}
CIMConstInstance::CIMConstInstance(const CIMConstObject& x) : _rep(x._rep) {
    if (!_rep) throw DynamicCastFailedException();
}
CIMConstInstance::CIMConstInstance(const CIMName& className) : _rep(CIMInstance(className)._rep) {}
CIMConstInstance::~CIMConstInstance() {}
CIMConstInstance& CIMConstInstance::operator=(const CIMConstInstance& x) = default;
CIMConstInstance& CIMConstInstance::operator=(const CIMInstance& x) {
    _rep = x._rep;
    return *this;
}

CIMInstanceRep& CIMConstInstance::_checked() const {
    if (!_rep) throw UninitializedObjectException();
    return *_rep;
}

const CIMName& CIMConstInstance::getClassName() const { return _checked().className; }
const CIMObjectPath& CIMConstInstance::getPath() const { return _checked().path; }
Uint32 CIMConstInstance::findProperty(const CIMName& name) const { return _checked().find(name); }
CIMConstProperty CIMConstInstance::getProperty(Uint32 index) const {
    CIMInstanceRep& rep = _checked();
    if (index >= rep.properties.size()) throw IndexOutOfBoundsException();
    return rep.properties[index];
}
Uint32 CIMConstInstance::getPropertyCount() const { return Uint32(_checked().properties.size()); }
CIMInstance CIMConstInstance::clone() const { return CIMInstance(cloneRep(_checked())); }
Boolean CIMConstInstance::identical(const CIMConstInstance& x) const {
    return identicalReps(_checked(), x._checked());
}

PEGASUS_NAMESPACE_END
