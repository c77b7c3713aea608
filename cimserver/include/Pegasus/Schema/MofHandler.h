#ifndef Pegasus_Schema_MofHandler_h
#define Pegasus_Schema_MofHandler_h

#include <string>

#include <Pegasus/Schema/ClassDecl.h>
#include <Pegasus/Schema/InstanceDecl.h>

namespace Pegasus {

// Receives the declarations of a MOF text in the order they are read
// (included files in place). A handler may throw SchemaError to stop the
// parse, e.g. when a class's superclass is unknown.
class MofHandler
{
public:
    virtual ~MofHandler() {}

    // Each declaration carries the namespace in effect (namespaceName, empty
    // when none was set), its file and its line.
    virtual void classDeclared(ClassDecl& cls) = 0;
    virtual void instanceDeclared(InstanceDecl& inst) = 0;

    // #pragma namespace("x") has been read; later declarations carry x.
    virtual void namespaceChanged(const std::string& /*name*/, const std::string& /*file*/,
                                  unsigned /*line*/) {}
};

} // namespace Pegasus

#endif
