#ifndef Pegasus_Schema_ParameterDecl_h
#define Pegasus_Schema_ParameterDecl_h

#include <cstdint>
#include <string>

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Schema/QualifierList.h>

namespace Pegasus {

// One parameter of a method. A parameter with neither IN nor OUT qualifier is
// an input parameter (isIn true, isOut false).
struct ParameterDecl
{
    std::string name;
    CIMType type = CIMTYPE_STRING;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    std::string referenceClass;        // for "X REF Name"
    bool isIn = true;
    bool isOut = false;
    std::string embeddedInstanceClass; // EmbeddedInstance("Class")
    bool embeddedObject = false;       // EmbeddedObject
    QualifierList qualifiers;
    unsigned line = 0;

    bool isReference() const { return type == CIMTYPE_REFERENCE; }
};

} // namespace Pegasus

#endif
