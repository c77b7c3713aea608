#include <Pegasus/Server/ProviderManager.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Tracer.h>

#include <dlfcn.h>
#include <iostream>
#include <map>
#include <strings.h>

namespace Pegasus {

namespace {

typedef CIMProvider* (*CreateProviderFunction)(const String&);

void report(const std::string& line) {
    std::cerr << "cimserver: " << line << std::endl;
    PEG_TRACE((TRC_PROVIDERMANAGER, Tracer::LEVEL1, "%s", line.c_str()));
}

} // namespace

ProviderManager::ProviderManager(std::string providerDir) : _providerDir(std::move(providerDir)) {}

ProviderManager::~ProviderManager() = default;

std::size_t ProviderManager::loadAll(const ProviderRegistrationManager& registration,
    const std::function<CIMOMHandle()>& makeHandle) {
    std::map<std::string, void*> opened;   // module name -> library
    for (const ProviderRegistrationManager::Provider& reg : registration.providers()) {
        const ProviderRegistrationManager::Module* module = registration.findModule(reg.moduleName);
        if (module == nullptr) continue;   // the registration checks this already
        void*& library = opened[module->name];
        const std::string file = _providerDir + "/lib" + module->location + ".so";
        if (library == nullptr) {
            library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
            if (library == nullptr) {
                const char* why = ::dlerror();
                report("cannot load the provider module " + module->name + " (" + file + "): " +
                       (why != nullptr ? why : "unknown error"));
                opened.erase(module->name);
                continue;
            }
            _libraries.push_back(library);
        }
        ::dlerror();
        void* symbol = ::dlsym(library, "PegasusCreateProvider");
        if (symbol == nullptr) {
            report("the provider module " + module->name + " (" + file + ") has no PegasusCreateProvider");
            continue;
        }
        CIMProvider* provider = nullptr;
        try {
            provider = reinterpret_cast<CreateProviderFunction>(symbol)(String::fromUtf8(reg.name));
        } catch (...) {
            report("PegasusCreateProvider of " + module->name + " failed for " + reg.name);
            continue;
        }
        if (provider == nullptr) {
            report("the provider module " + module->name + " does not know the provider " + reg.name +
                   " (PegasusCreateProvider returned null)");
            continue;
        }
        auto loaded = std::make_unique<Loaded>();
        loaded->moduleName = module->name;
        loaded->name = reg.name;
        loaded->provider = provider;
        loaded->instance = dynamic_cast<CIMInstanceProvider*>(provider);
        loaded->method = dynamic_cast<CIMMethodProvider*>(provider);
        loaded->association = dynamic_cast<CIMAssociationProvider*>(provider);
        loaded->indication = dynamic_cast<CIMIndicationProvider*>(provider);
        // Registered before initialize: the provider may call back into the
        // server (even itself) from its initialize.
        Loaded* entry = loaded.get();
        {
            std::lock_guard<std::mutex> lock(_mutex);
            _loaded.push_back(std::move(loaded));
        }
        try {
            CIMOMHandle handle = makeHandle();
            provider->initialize(handle);
        } catch (const CIMException& e) {
            report("the provider " + reg.name + " failed to initialise: " + e.getMessage().toUtf8());
            std::lock_guard<std::mutex> lock(_mutex);
            for (auto it = _loaded.begin(); it != _loaded.end(); ++it)
                if (it->get() == entry) { _loaded.erase(it); break; }
            continue;
        } catch (const std::exception& e) {
            report("the provider " + reg.name + " failed to initialise: " + e.what());
            std::lock_guard<std::mutex> lock(_mutex);
            for (auto it = _loaded.begin(); it != _loaded.end(); ++it)
                if (it->get() == entry) { _loaded.erase(it); break; }
            continue;
        }
        PEG_TRACE((TRC_PROVIDERMANAGER, Tracer::LEVEL2, "provider %s of module %s loaded from %s",
            reg.name.c_str(), module->name.c_str(), file.c_str()));
    }
    return _loaded.size();
}

ProviderManager::Loaded* ProviderManager::find(const std::string& moduleName, const std::string& name) {
    std::lock_guard<std::mutex> lock(_mutex);
    for (auto& loaded : _loaded)
        if (::strcasecmp(loaded->moduleName.c_str(), moduleName.c_str()) == 0 &&
            ::strcasecmp(loaded->name.c_str(), name.c_str()) == 0)
            return loaded.get();
    return nullptr;
}

void ProviderManager::enableIndications(Loaded& provider, IndicationResponseHandler& handler) {
    if (provider.indication == nullptr || provider.indicationsEnabled) return;
    provider.indication->enableIndications(handler);
    provider.indicationsEnabled = true;
}

void ProviderManager::disableIndications(Loaded& provider) {
    if (provider.indication == nullptr || !provider.indicationsEnabled) return;
    provider.indicationsEnabled = false;
    provider.indication->disableIndications();
}

void ProviderManager::terminateAll() {
    std::vector<std::unique_ptr<Loaded>> ending;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        ending.swap(_loaded);
    }
    for (auto& loaded : ending) {
        try {
            disableIndications(*loaded);
        } catch (...) {
            report("disableIndications of " + loaded->name + " failed");
        }
    }
    Tracer::flushTrace();
    for (auto it = ending.rbegin(); it != ending.rend(); ++it) {
        PEG_TRACE((TRC_PROVIDERMANAGER, Tracer::LEVEL2, "terminating provider %s", (*it)->name.c_str()));
        Tracer::flushTrace();
        try {
            // terminate() ends with "delete this" by convention.
            (*it)->provider->terminate();
        } catch (...) {
            report("terminate of " + (*it)->name + " failed");
        }
    }
}

} // namespace Pegasus
