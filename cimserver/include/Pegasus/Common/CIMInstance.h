#ifndef Pegasus_CIMInstance_h
#define Pegasus_CIMInstance_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

struct CIMInstanceRep;
class CIMObject;
class CIMConstInstance;
class CIMConstObject;

// An instance of a class: class name, properties and (once known) its path.
// Copies share one instance (handle semantics); clone() makes an independent
// copy. A default-constructed instance is uninitialised and refuses most calls
// with UninitializedObjectException.
class PEGASUS_COMMON_LINKAGE CIMInstance {
public:
    CIMInstance();
    CIMInstance(const CIMInstance& x);
    explicit CIMInstance(const CIMObject& x);
    CIMInstance(const CIMName& className);
    ~CIMInstance();

    CIMInstance& operator=(const CIMInstance& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    // The path's class must be this instance's class (TypeMismatchException).
    void setPath(const CIMObjectPath& path);

    // AlreadyExistsException when a property of that name is there.
    CIMInstance& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const { return !_rep; }

    // Keeps only the properties the list names (all when it is null) and
    // drops class origins unless asked for. Qualifiers are not kept by this
    // server, so includeQualifiers has nothing to remove.
    void instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                        const CIMPropertyList& propertyList);

private:
    explicit CIMInstance(std::shared_ptr<CIMInstanceRep> rep) : _rep(std::move(rep)) {}
    CIMInstanceRep& _checked() const;
    std::shared_ptr<CIMInstanceRep> _rep;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMConstInstance;
};

class PEGASUS_COMMON_LINKAGE CIMConstInstance {
public:
    CIMConstInstance();
    CIMConstInstance(const CIMConstInstance& x);
    CIMConstInstance(const CIMInstance& x);
    explicit CIMConstInstance(const CIMObject& x);
    explicit CIMConstInstance(const CIMConstObject& x);
    CIMConstInstance(const CIMName& className);
    ~CIMConstInstance();

    CIMConstInstance& operator=(const CIMConstInstance& x);
    CIMConstInstance& operator=(const CIMInstance& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const { return !_rep; }

private:
    CIMInstanceRep& _checked() const;
    std::shared_ptr<CIMInstanceRep> _rep;
    friend class CIMInstance;
    friend class CIMObject;
    friend class CIMConstObject;
};

PEGASUS_NAMESPACE_END

#endif
