#ifndef Pegasus_Server_ProviderRegistrationManager_h
#define Pegasus_Server_ProviderRegistrationManager_h

#include <Pegasus/Common/CIMInstance.h>

#include <optional>
#include <string>
#include <vector>

namespace Pegasus {

class Repository;

// The provider registration: PG_ProviderModule, PG_Provider and
// PG_ProviderCapabilities instances of the interop namespace.
class ProviderRegistrationManager {
public:
    enum ProviderType : unsigned { Instance = 2, Association = 3, Indication = 4, Method = 5 };

    struct Module {
        std::string name;
        std::string location;          // library base name: lib<location>.so
        std::string interfaceType;
        std::string interfaceVersion;
    };
    struct Provider {
        std::string moduleName;
        std::string name;
    };
    struct Capability {
        std::string moduleName;
        std::string providerName;
        std::string capabilityId;
        std::string className;
        std::vector<std::string> namespaces;
        std::vector<unsigned> types;
        std::optional<std::vector<std::string>> methods;   // none: every method

        bool hasType(unsigned type) const;
        bool servesNamespace(const std::string& ns) const;
        bool supportsMethod(const std::string& method) const;
    };

    ProviderRegistrationManager() = default;

    // Reads the registration from the repository's interop namespace; a
    // malformed registration instance throws std::runtime_error naming it.
    void load(Repository& repository, const std::string& interopNamespace);
    // The same from instances (any order).
    void load(const std::vector<CIMInstance>& instances);

    const std::vector<Module>& modules() const { return _modules; }
    const std::vector<Provider>& providers() const { return _providers; }
    const std::vector<Capability>& capabilities() const { return _capabilities; }
    const Module* findModule(const std::string& name) const;

    // The capability of `type` for exactly this class in `ns`, or null.
    const Capability* find(const std::string& ns, const std::string& className, unsigned type) const;
    // Every capability of `type` serving `ns`.
    std::vector<const Capability*> withType(const std::string& ns, unsigned type) const;

private:
    std::vector<Module> _modules;
    std::vector<Provider> _providers;
    std::vector<Capability> _capabilities;
};

} // namespace Pegasus

#endif
