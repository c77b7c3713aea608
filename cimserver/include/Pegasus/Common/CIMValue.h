#ifndef Pegasus_CIMValue_h
#define Pegasus_CIMValue_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/String.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

class CIMObjectPath;
class CIMObject;
class CIMInstance;
struct CIMValueRep;

// A typed value: one of the seventeen CIM types, scalar or array, possibly
// null. Copies are independent (value semantics), sharing storage until one
// of them changes.
class PEGASUS_COMMON_LINKAGE CIMValue {
public:
    CIMValue();
    CIMValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);
    CIMValue(Boolean x);
    CIMValue(Uint8 x);
    CIMValue(Sint8 x);
    CIMValue(Uint16 x);
    CIMValue(Sint16 x);
    CIMValue(Uint32 x);
    CIMValue(Sint32 x);
    CIMValue(Uint64 x);
    CIMValue(Sint64 x);
    CIMValue(Real32 x);
    CIMValue(Real64 x);
    CIMValue(const Char16& x);
    CIMValue(const String& x);
    CIMValue(const CIMDateTime& x);
    CIMValue(const CIMObjectPath& x);
    CIMValue(const CIMObject& x);
    CIMValue(const CIMInstance& x);
    CIMValue(const Array<Boolean>& x);
    CIMValue(const Array<Uint8>& x);
    CIMValue(const Array<Sint8>& x);
    CIMValue(const Array<Uint16>& x);
    CIMValue(const Array<Sint16>& x);
    CIMValue(const Array<Uint32>& x);
    CIMValue(const Array<Sint32>& x);
    CIMValue(const Array<Uint64>& x);
    CIMValue(const Array<Sint64>& x);
    CIMValue(const Array<Real32>& x);
    CIMValue(const Array<Real64>& x);
    CIMValue(const Array<Char16>& x);
    CIMValue(const Array<String>& x);
    CIMValue(const Array<CIMDateTime>& x);
    CIMValue(const Array<CIMObjectPath>& x);
    CIMValue(const Array<CIMObject>& x);
    CIMValue(const Array<CIMInstance>& x);
    CIMValue(const CIMValue& x);
    ~CIMValue();

    CIMValue& operator=(const CIMValue& x);
    void assign(const CIMValue& x);
    void clear();

    Boolean typeCompatible(const CIMValue& x) const;
    Boolean isArray() const;
    Boolean isNull() const;
    Uint32 getArraySize() const;
    CIMType getType() const;
    void setNullValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);

    void set(Boolean x);
    void set(Uint8 x);
    void set(Sint8 x);
    void set(Uint16 x);
    void set(Sint16 x);
    void set(Uint32 x);
    void set(Sint32 x);
    void set(Uint64 x);
    void set(Sint64 x);
    void set(Real32 x);
    void set(Real64 x);
    void set(const Char16& x);
    void set(const String& x);
    void set(const CIMDateTime& x);
    void set(const CIMObjectPath& x);
    void set(const CIMObject& x);
    void set(const CIMInstance& x);
    void set(const Array<Boolean>& x);
    void set(const Array<Uint8>& x);
    void set(const Array<Sint8>& x);
    void set(const Array<Uint16>& x);
    void set(const Array<Sint16>& x);
    void set(const Array<Uint32>& x);
    void set(const Array<Sint32>& x);
    void set(const Array<Uint64>& x);
    void set(const Array<Sint64>& x);
    void set(const Array<Real32>& x);
    void set(const Array<Real64>& x);
    void set(const Array<Char16>& x);
    void set(const Array<String>& x);
    void set(const Array<CIMDateTime>& x);
    void set(const Array<CIMObjectPath>& x);
    void set(const Array<CIMObject>& x);
    void set(const Array<CIMInstance>& x);

    // Each get throws TypeMismatchException when the value's type or
    // array-ness differs; a null value leaves x as it was.
    void get(Boolean& x) const;
    void get(Uint8& x) const;
    void get(Sint8& x) const;
    void get(Uint16& x) const;
    void get(Sint16& x) const;
    void get(Uint32& x) const;
    void get(Sint32& x) const;
    void get(Uint64& x) const;
    void get(Sint64& x) const;
    void get(Real32& x) const;
    void get(Real64& x) const;
    void get(Char16& x) const;
    void get(String& x) const;
    void get(CIMDateTime& x) const;
    void get(CIMObjectPath& x) const;
    void get(CIMObject& x) const;
    void get(CIMInstance& x) const;
    void get(Array<Boolean>& x) const;
    void get(Array<Uint8>& x) const;
    void get(Array<Sint8>& x) const;
    void get(Array<Uint16>& x) const;
    void get(Array<Sint16>& x) const;
    void get(Array<Uint32>& x) const;
    void get(Array<Sint32>& x) const;
    void get(Array<Uint64>& x) const;
    void get(Array<Sint64>& x) const;
    void get(Array<Real32>& x) const;
    void get(Array<Real64>& x) const;
    void get(Array<Char16>& x) const;
    void get(Array<String>& x) const;
    void get(Array<CIMDateTime>& x) const;
    void get(Array<CIMObjectPath>& x) const;
    void get(Array<CIMObject>& x) const;
    void get(Array<CIMInstance>& x) const;

    Boolean equal(const CIMValue& x) const;
    String toString() const;

private:
    std::shared_ptr<const CIMValueRep> _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMValue& x, const CIMValue& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMValue& x, const CIMValue& y);

PEGASUS_NAMESPACE_END

#endif
