#ifndef ORVSMIS_ASSOCIATIONREFS_H
#define ORVSMIS_ASSOCIATIONREFS_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// Reads and removals of the association instances that refer to one
// instance, by association class. The class is checked on each path found,
// so that a repository that answers more than was asked for never makes a
// model remove links of another class.
class AssociationRefs {
public:
    // The paths of the instances of prefix + shortName in nameSpace that
    // refer to path.
    static Pegasus::Array<Pegasus::CIMObjectPath> Find(const Pegasus::OperationContext& context,
                                                       const Pegasus::CIMNamespaceName& nameSpace,
                                                       const Pegasus::CIMObjectPath& path, const char* shortName);
    // Deletes them; returns how many.
    static Pegasus::Uint32 Delete(const Pegasus::OperationContext& context,
                                  const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
                                  const char* shortName);
    // The reference held under role in an association path; false when
    // the path has no such reference key.
    static bool End(const Pegasus::CIMObjectPath& association, const char* role, Pegasus::CIMObjectPath& out);
};

}  // namespace orvsmis

#endif
