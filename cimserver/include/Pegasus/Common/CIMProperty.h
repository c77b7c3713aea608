#ifndef Pegasus_CIMProperty_h
#define Pegasus_CIMProperty_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

struct CIMPropertyRep;
class CIMConstProperty;
class CIMInstance;
struct CIMInstanceRep;

// A named, typed value of an instance. Copies share one property (handle
// semantics); clone() makes an independent copy.
class PEGASUS_COMMON_LINKAGE CIMProperty {
public:
    CIMProperty();
    CIMProperty(const CIMProperty& x);
    CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
                const CIMName& referenceClassName = CIMName(),
                const CIMName& classOrigin = CIMName(), Boolean propagated = false);
    ~CIMProperty();

    CIMProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    void setName(const CIMName& name);
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    // The new value must have the type and array-ness of the present one.
    void setValue(const CIMValue& value);
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    void setClassOrigin(const CIMName& classOrigin);
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const { return !_rep; }

private:
    explicit CIMProperty(std::shared_ptr<CIMPropertyRep> rep) : _rep(std::move(rep)) {}
    CIMPropertyRep& _checked() const;
    std::shared_ptr<CIMPropertyRep> _rep;
    friend class CIMConstProperty;
    friend class CIMInstance;
    friend struct CIMInstanceRep;
};

class PEGASUS_COMMON_LINKAGE CIMConstProperty {
public:
    CIMConstProperty();
    CIMConstProperty(const CIMConstProperty& x);
    CIMConstProperty(const CIMProperty& x);
    CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
                     const CIMName& referenceClassName = CIMName(),
                     const CIMName& classOrigin = CIMName(), Boolean propagated = false);
    ~CIMConstProperty();

    CIMConstProperty& operator=(const CIMConstProperty& x);
    CIMConstProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    Boolean getPropagated() const;

    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const { return !_rep; }

private:
    CIMPropertyRep& _checked() const;
    std::shared_ptr<CIMPropertyRep> _rep;
    friend class CIMProperty;
    friend class CIMInstance;
};

PEGASUS_NAMESPACE_END

#endif
