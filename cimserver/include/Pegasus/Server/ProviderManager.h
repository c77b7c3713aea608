#ifndef Pegasus_Server_ProviderManager_h
#define Pegasus_Server_ProviderManager_h

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMIndicationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Pegasus {

// The registered providers, loaded from their modules at start and kept until
// the server ends (they are never unloaded while it runs).
class ProviderManager {
public:
    struct Loaded {
        std::string moduleName;
        std::string name;
        CIMProvider* provider = nullptr;
        CIMInstanceProvider* instance = nullptr;
        CIMMethodProvider* method = nullptr;
        CIMAssociationProvider* association = nullptr;
        CIMIndicationProvider* indication = nullptr;
        bool indicationsEnabled = false;
    };

    // `providerDir` holds the modules' libraries.
    explicit ProviderManager(std::string providerDir);
    ~ProviderManager();
    ProviderManager(const ProviderManager&) = delete;
    ProviderManager& operator=(const ProviderManager&) = delete;

    // Loads and initialises every registered provider, each with a handle
    // made by `makeHandle`. A provider that cannot be loaded or initialised
    // is left out with a line on standard error and in the trace; the others
    // go on. Returns the number loaded.
    std::size_t loadAll(const ProviderRegistrationManager& registration,
        const std::function<CIMOMHandle()>& makeHandle);

    // The loaded provider of that module and name, or null.
    Loaded* find(const std::string& moduleName, const std::string& name);
    const std::vector<std::unique_ptr<Loaded>>& loaded() const { return _loaded; }

    // Calls enableIndications / disableIndications once per provider.
    void enableIndications(Loaded& provider, IndicationResponseHandler& handler);
    void disableIndications(Loaded& provider);

    // Disables indications where enabled, then terminates every provider in
    // the reverse order of loading. A provider's terminate may end the
    // process; everything else of the server must be shut down before.
    void terminateAll();

private:
    std::string _providerDir;
    std::vector<std::unique_ptr<Loaded>> _loaded;
    std::vector<void*> _libraries;
    std::mutex _mutex;
};

} // namespace Pegasus

#endif
