#ifndef Pegasus_Schema_PropertyDecl_h
#define Pegasus_Schema_PropertyDecl_h

#include <cstdint>
#include <optional>
#include <string>

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Schema/MofValue.h>
#include <Pegasus/Schema/QualifierList.h>

namespace Pegasus {

// One property of a class: as declared (ClassDecl::localProperties) or as
// seen in the flattened class (ClassDecl::properties()), where an inherited
// property keeps the classOrigin of the class that declared it and an
// overriding declaration replaces the inherited one in its place.
struct PropertyDecl
{
    std::string name;                  // as declared
    CIMType type = CIMTYPE_STRING;     // CIMTYPE_REFERENCE for "X REF Name"
    bool isArray = false;
    std::uint32_t arraySize = 0;       // N of "[N]"; 0 for "[]" or scalars
    std::string referenceClass;        // for references: the class after REF
    bool isKey = false;                // Key qualifier
    std::string embeddedInstanceClass; // EmbeddedInstance("Class") qualifier
    bool embeddedObject = false;       // EmbeddedObject qualifier
    QualifierList qualifiers;
    std::optional<MofValue> defaultValue; // "= literal" in the declaration
    std::string classOrigin;           // the class that declared it
    bool propagated = false;           // inherited unchanged from a superclass

    std::string file;                  // where it was declared
    unsigned line = 0;

    bool isReference() const { return type == CIMTYPE_REFERENCE; }
    bool isRequired() const { return qualifiers.isTrue("Required"); }
};

} // namespace Pegasus

#endif
