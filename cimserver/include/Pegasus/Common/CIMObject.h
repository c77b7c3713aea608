#ifndef Pegasus_CIMObject_h
#define Pegasus_CIMObject_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

// An object as returned by associators and references. This server's
// objects are instances: isInstance() is true for any initialised object and
// isClass() is always false. Copies share the object (handle semantics).
class PEGASUS_COMMON_LINKAGE CIMObject {
public:
    CIMObject();
    CIMObject(const CIMObject& x);
    CIMObject(const CIMInstance& x);
    ~CIMObject();

    CIMObject& operator=(const CIMObject& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);

    CIMObject& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMObject clone() const;
    Boolean identical(const CIMConstObject& x) const;
    Boolean isUninitialized() const { return !_rep; }
    Boolean isClass() const { return false; }
    Boolean isInstance() const { return bool(_rep); }

    void instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                        const CIMPropertyList& propertyList);

private:
    CIMInstance _instance() const;
    std::shared_ptr<CIMInstanceRep> _rep;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class CIMConstObject;
};

class PEGASUS_COMMON_LINKAGE CIMConstObject {
public:
    CIMConstObject();
    CIMConstObject(const CIMConstObject& x);
    CIMConstObject(const CIMObject& x);
    CIMConstObject(const CIMInstance& x);
    CIMConstObject(const CIMConstInstance& x);
    ~CIMConstObject();

    CIMConstObject& operator=(const CIMConstObject& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    CIMObject clone() const;
    Boolean identical(const CIMConstObject& x) const;
    Boolean isUninitialized() const { return !_rep; }
    Boolean isClass() const { return false; }
    Boolean isInstance() const { return bool(_rep); }

private:
    std::shared_ptr<CIMInstanceRep> _rep;
    friend class CIMObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
};

PEGASUS_NAMESPACE_END

#endif
