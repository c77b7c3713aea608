#ifndef Pegasus_CIMObjectPath_h
#define Pegasus_CIMObjectPath_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class CIMValue;

// One key of an instance name: the key's name, its value as text and the
// kind of value. Value semantics.
class PEGASUS_COMMON_LINKAGE CIMKeyBinding {
public:
    enum Type { BOOLEAN, STRING, NUMERIC, REFERENCE };

    CIMKeyBinding();
    CIMKeyBinding(const CIMKeyBinding& x) = default;
    CIMKeyBinding(const CIMName& name, const String& value, Type type);
    // Arrays and embedded objects cannot be keys: TypeMismatchException.
    CIMKeyBinding(const CIMName& name, const CIMValue& value);
    ~CIMKeyBinding() = default;

    CIMKeyBinding& operator=(const CIMKeyBinding& x) = default;

    const CIMName& getName() const { return _name; }
    void setName(const CIMName& name) { _name = name; }
    const String& getValue() const { return _value; }
    void setValue(const String& value) { _value = value; }
    Type getType() const { return _type; }
    void setType(Type type) { _type = type; }

    // True when value, taken as the key's kind, is this key's value.
    Boolean equal(CIMValue value);

private:
    CIMName _name;
    String _value;
    Type _type = STRING;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y);

// The name of a class or an instance: host, namespace, class and keys, as in
// //host/root/orv:ORV_StorageVolume.CreationClassName="...",DeviceID="0001".
// Keys are kept sorted by name, ignoring case. Value semantics.
class PEGASUS_COMMON_LINKAGE CIMObjectPath {
public:
    CIMObjectPath();
    CIMObjectPath(const CIMObjectPath& x) = default;
    CIMObjectPath(const String& objectName);
    CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
                  const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    ~CIMObjectPath() = default;

    CIMObjectPath& operator=(const CIMObjectPath& x) = default;
    CIMObjectPath& operator=(const String& objectName);

    void clear();
    void set(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
             const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    void set(const String& objectName);

    const String& getHost() const { return _host; }
    void setHost(const String& host);
    const CIMNamespaceName& getNameSpace() const { return _nameSpace; }
    void setNameSpace(const CIMNamespaceName& nameSpace) { _nameSpace = nameSpace; }
    const CIMName& getClassName() const { return _className; }
    void setClassName(const CIMName& className) { _className = className; }
    const Array<CIMKeyBinding>& getKeyBindings() const { return _keyBindings; }
    void setKeyBindings(const Array<CIMKeyBinding>& keyBindings);

    String toString() const;
    Boolean identical(const CIMObjectPath& x) const;
    Uint32 makeHashCode() const;

private:
    String _host;
    CIMNamespaceName _nameSpace;
    CIMName _className;
    Array<CIMKeyBinding> _keyBindings;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y);

PEGASUS_NAMESPACE_END

#endif
