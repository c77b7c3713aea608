#ifndef Pegasus_CIMPropertyList_h
#define Pegasus_CIMPropertyList_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>

PEGASUS_NAMESPACE_BEGIN

// Which properties a request wants: null means all of them, an empty
// (non-null) list none. Value semantics.
class PEGASUS_COMMON_LINKAGE CIMPropertyList {
public:
    CIMPropertyList();
    CIMPropertyList(const CIMPropertyList& x) = default;
    CIMPropertyList(const Array<CIMName>& propertyNames);
    ~CIMPropertyList() = default;

    CIMPropertyList& operator=(const CIMPropertyList& x) = default;

    void set(const Array<CIMName>& propertyNames);
    void clear();
    Boolean isNull() const { return _isNull; }
    Uint32 size() const { return _names.size(); }
    const CIMName& operator[](Uint32 index) const { return _names[index]; }
    Array<CIMName> getPropertyNameArray() const { return _names; }
    Boolean contains(const CIMName& name) const;
    // True when the list is null or names the property.
    Boolean useThisProperty(const CIMName& name) const { return _isNull || contains(name); }
    void append(Array<String>& propertyListArray);
    String toString() const;

private:
    Array<CIMName> _names;
    Boolean _isNull = true;
};

PEGASUS_NAMESPACE_END

#endif
