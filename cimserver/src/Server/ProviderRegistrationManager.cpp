#include <Pegasus/Server/ProviderRegistrationManager.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Repository/Repository.h>

#include <stdexcept>
#include <strings.h>

namespace Pegasus {

namespace {

bool same(const std::string& a, const std::string& b) { return ::strcasecmp(a.c_str(), b.c_str()) == 0; }

std::string describe(const CIMInstance& instance) {
    const CIMObjectPath& path = instance.getPath();
    return path.getKeyBindings().size() != 0 ? path.toString().toUtf8()
                                             : instance.getClassName().getString().toUtf8();
}

CIMValue valueOf(const CIMInstance& instance, const char* name) {
    const Uint32 index = instance.findProperty(CIMName(name));
    if (index == PEG_NOT_FOUND) return CIMValue();
    return instance.getProperty(index).getValue();
}

std::string text(const CIMInstance& instance, const char* name, bool required) {
    const CIMValue value = valueOf(instance, name);
    if (value.isNull()) {
        if (required) throw std::runtime_error(describe(instance) + ": " + name + " is not set");
        return std::string();
    }
    if (value.getType() != CIMTYPE_STRING || value.isArray())
        throw std::runtime_error(describe(instance) + ": " + name + " is not a string");
    String s;
    value.get(s);
    if (required && s.size() == 0) throw std::runtime_error(describe(instance) + ": " + name + " is empty");
    return s.toUtf8();
}

std::optional<std::vector<std::string>> texts(const CIMInstance& instance, const char* name) {
    const CIMValue value = valueOf(instance, name);
    if (value.isNull()) return std::nullopt;
    if (value.getType() != CIMTYPE_STRING || !value.isArray())
        throw std::runtime_error(describe(instance) + ": " + name + " is not a string array");
    Array<String> items;
    value.get(items);
    std::vector<std::string> out;
    for (Uint32 i = 0; i < items.size(); ++i) out.push_back(items[i].toUtf8());
    return out;
}

std::vector<unsigned> types(const CIMInstance& instance) {
    const CIMValue value = valueOf(instance, "ProviderType");
    if (value.isNull() || value.getType() != CIMTYPE_UINT16 || !value.isArray())
        throw std::runtime_error(describe(instance) + ": ProviderType must be a uint16 array");
    Array<Uint16> items;
    value.get(items);
    std::vector<unsigned> out;
    for (Uint32 i = 0; i < items.size(); ++i) {
        if (items[i] < 2 || items[i] > 7)
            throw std::runtime_error(describe(instance) + ": unknown ProviderType " + std::to_string(items[i]));
        out.push_back(items[i]);
    }
    if (out.empty()) throw std::runtime_error(describe(instance) + ": ProviderType is empty");
    return out;
}

} // namespace

bool ProviderRegistrationManager::Capability::hasType(unsigned type) const {
    for (unsigned t : types)
        if (t == type) return true;
    return false;
}

bool ProviderRegistrationManager::Capability::servesNamespace(const std::string& ns) const {
    for (const std::string& n : namespaces)
        if (same(n, ns)) return true;
    return false;
}

bool ProviderRegistrationManager::Capability::supportsMethod(const std::string& method) const {
    if (!methods) return true;
    for (const std::string& m : *methods)
        if (same(m, method)) return true;
    return false;
}

void ProviderRegistrationManager::load(Repository& repository, const std::string& interopNamespace) {
    std::vector<CIMInstance> all;
    const CIMNamespaceName ns(String::fromUtf8(interopNamespace));
    for (const char* cls : {"PG_ProviderModule", "PG_Provider", "PG_ProviderCapabilities"}) {
        const Array<CIMInstance> found = repository.enumerateInstances(ns, CIMName(cls), true, false, false,
            CIMPropertyList(), RepositoryAccess::Committed);
        for (Uint32 i = 0; i < found.size(); ++i) all.push_back(found[i]);
    }
    load(all);
}

void ProviderRegistrationManager::load(const std::vector<CIMInstance>& instances) {
    std::vector<Module> modules;
    std::vector<Provider> providers;
    std::vector<Capability> capabilities;
    for (const CIMInstance& instance : instances) {
        const std::string cls = instance.getClassName().getString().toUtf8();
        if (same(cls, "PG_ProviderModule")) {
            Module m{text(instance, "Name", true), text(instance, "Location", true),
                text(instance, "InterfaceType", false), text(instance, "InterfaceVersion", false)};
            if (!m.interfaceType.empty() && m.interfaceType != "C++Default")
                throw std::runtime_error(describe(instance) + ": InterfaceType \"" + m.interfaceType +
                                         "\" is not supported (only C++Default)");
            for (char c : m.location)
                if (c == '/' || c == '\0')
                    throw std::runtime_error(describe(instance) + ": Location must be a library base name");
            modules.push_back(m);
        } else if (same(cls, "PG_Provider")) {
            providers.push_back({text(instance, "ProviderModuleName", true), text(instance, "Name", true)});
        } else if (same(cls, "PG_ProviderCapabilities")) {
            Capability c;
            c.moduleName = text(instance, "ProviderModuleName", true);
            c.providerName = text(instance, "ProviderName", true);
            c.capabilityId = text(instance, "CapabilityID", true);
            c.className = text(instance, "ClassName", true);
            const auto spaces = texts(instance, "Namespaces");
            if (!spaces || spaces->empty())
                throw std::runtime_error(describe(instance) + ": Namespaces is empty");
            c.namespaces = *spaces;
            c.types = types(instance);
            c.methods = texts(instance, "SupportedMethods");
            capabilities.push_back(c);
        }
    }
    for (const Provider& p : providers) {
        bool found = false;
        for (const Module& m : modules) found = found || same(m.name, p.moduleName);
        if (!found)
            throw std::runtime_error("PG_Provider " + p.name + " names the unregistered module " + p.moduleName);
    }
    for (const Capability& c : capabilities) {
        bool found = false;
        for (const Provider& p : providers)
            found = found || (same(p.moduleName, c.moduleName) && same(p.name, c.providerName));
        if (!found)
            throw std::runtime_error("PG_ProviderCapabilities " + c.capabilityId + " names the unregistered provider " +
                                     c.moduleName + "/" + c.providerName);
        for (const Capability& other : capabilities) {
            if (&other == &c) break;
            for (unsigned type : c.types)
                for (const std::string& ns : c.namespaces)
                    if (other.hasType(type) && same(other.className, c.className) && other.servesNamespace(ns))
                        throw std::runtime_error("two providers are registered with type " + std::to_string(type) +
                                                 " for " + c.className + " in " + ns);
        }
    }
    _modules = std::move(modules);
    _providers = std::move(providers);
    _capabilities = std::move(capabilities);
}

const ProviderRegistrationManager::Module* ProviderRegistrationManager::findModule(const std::string& name) const {
    for (const Module& m : _modules)
        if (same(m.name, name)) return &m;
    return nullptr;
}

const ProviderRegistrationManager::Capability* ProviderRegistrationManager::find(
    const std::string& ns, const std::string& className, unsigned type) const {
    for (const Capability& c : _capabilities)
        if (c.hasType(type) && same(c.className, className) && c.servesNamespace(ns)) return &c;
    return nullptr;
}

std::vector<const ProviderRegistrationManager::Capability*> ProviderRegistrationManager::withType(
    const std::string& ns, unsigned type) const {
    std::vector<const Capability*> out;
    for (const Capability& c : _capabilities)
        if (c.hasType(type) && c.servesNamespace(ns)) out.push_back(&c);
    return out;
}

} // namespace Pegasus
