#ifndef Pegasus_CIMName_h
#define Pegasus_CIMName_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The name of a class, property, method, parameter or qualifier: a legal CIM
// identifier, compared without regard to ASCII case. The default-constructed
// name is null; the empty string is not a legal name.
class PEGASUS_COMMON_LINKAGE CIMName {
public:
    CIMName() {}
    CIMName(const String& name);
    CIMName(const char* name);

    CIMName& operator=(const CIMName& name) = default;
    CIMName& operator=(const String& name);

    const String& getString() const { return cimName; }
    Boolean isNull() const { return cimName.size() == 0; }
    void clear() { cimName.clear(); }
    Boolean equal(const CIMName& name) const;

    static Boolean legal(const String& name);

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Boolean equal(const char* name) const;
    CIMName& operator=(const char* name);
#endif

private:
    String cimName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const CIMName& name2);

// A namespace name such as "root/orv": legal identifiers separated by '/'; a
// leading '/' is dropped; compared without regard to ASCII case.
class PEGASUS_COMMON_LINKAGE CIMNamespaceName {
public:
    CIMNamespaceName() {}
    CIMNamespaceName(const String& name);
    CIMNamespaceName(const char* name);

    CIMNamespaceName& operator=(const CIMNamespaceName& name) = default;
    CIMNamespaceName& operator=(const String& name);

    const String& getString() const { return cimNamespaceName; }
    Boolean isNull() const { return cimNamespaceName.size() == 0; }
    void clear() { cimNamespaceName.clear(); }
    Boolean equal(const CIMNamespaceName& name) const;

    static Boolean legal(const String& name);

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Boolean equal(const char* name) const;
    CIMNamespaceName& operator=(const char* name);
#endif

private:
    String cimNamespaceName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2);

PEGASUS_NAMESPACE_END

#endif
