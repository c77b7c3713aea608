#ifndef ORVSMIS_SERVERNAMESPACE_H
#define ORVSMIS_SERVERNAMESPACE_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// A namespace the object manager serves, class prefix + "Namespace". Its
// keys are read from the stored system and object manager instances.
class ServerNamespace {
public:
    // Writes the instance for namespaceName and ServerNamespaceInManager
    // from the object manager to it; returns its path.
    Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                  const Pegasus::CIMObjectPath& systemPath,
                                  const Pegasus::CIMObjectPath& managerPath, const std::string& namespaceName);
    // The NamespaceInManager references where it is Dependent, then the
    // instance.
    void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& namespacePath);

    // Throws CIMException (CIM_ERR_FAILED) "ServerNamespace::WrapInstance
    // execution failed.can't find system Name" and its like when the
    // system or object manager lacks a key property.
    Pegasus::CIMInstance WrapInstance(const Pegasus::OperationContext& context,
                                      const Pegasus::CIMObjectPath& systemPath,
                                      const Pegasus::CIMObjectPath& managerPath, const std::string& namespaceName);
};

}  // namespace orvsmis

#endif
