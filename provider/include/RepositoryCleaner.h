#ifndef ORVSMIS_REPOSITORYCLEANER_H
#define ORVSMIS_REPOSITORYCLEANER_H

#include <string>

#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// Removes the module's instances from the repository, class by class, each
// namespace inside one transaction. Classes outside the fixed lists keep
// their instances.
class RepositoryCleaner {
public:
    // The short class names (the configured prefix goes in front).
    static const char* const INTEROP_CLASSES[];
    static const int INTEROP_CLASS_COUNT;
    static const char* const PROVIDER_CLASSES[];
    static const int PROVIDER_CLASS_COUNT;

    // The registered "Array" profile's tie to the array always goes first.
    // With includeInterop the profile objects in the interop namespace go
    // too. A class that fails to enumerate or delete is reported and the
    // clean-up goes on; a failing transaction call is rolled back and thrown.
    static void Clean(bool includeInterop);

    // Deletes every instance of prefix + shortName in namespaceName; a
    // CIMException is printed and swallowed. Returns the number deleted.
    static int CleanInstancesByName(const Pegasus::OperationContext& context,
        const std::string& namespaceName, const std::string& shortName);
};

}  // namespace orvsmis

#endif
