#include <Pegasus/Server/OperationDispatcher.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/CompletionCollector.h>
#include <Pegasus/Server/InstanceCollector.h>
#include <Pegasus/Server/MethodResultCollector.h>
#include <Pegasus/Server/ObjectPathCollector.h>
#include <Pegasus/Server/ParameterRetyper.h>

#include <algorithm>
#include <functional>
#include <cctype>
#include <strings.h>
#include <unordered_map>

namespace Pegasus {

namespace {

std::string lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

RepositoryAccess accessOf(Caller caller) {
    return caller == Caller::Provider ? RepositoryAccess::Joined : RepositoryAccess::Committed;
}

// Runs a provider call; what it throws reaches the caller as a CIMException.
template <typename F>
void callProvider(const std::string& provider, const char* operation, F&& call) {
    try {
        call();
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, String::fromUtf8(provider + ": " + operation + ": ") + e.getMessage());
    } catch (const std::exception& e) {
        throw CIMException(CIM_ERR_FAILED, String::fromUtf8(provider + ": " + operation + ": " + e.what()));
    } catch (...) {
        throw CIMException(CIM_ERR_FAILED, String::fromUtf8(provider + ": " + operation + " failed"));
    }
}

// Paths already answered for one request: the first of equal paths counts.
class PathSet {
public:
    // The path's own hash leaves out reference keys, so every instance of an
    // association class would share one: the paths they refer to are mixed
    // in here (equal paths still hash alike).
    static Uint32 hashOf(const CIMObjectPath& path, int depth = 0) {
        Uint32 hash = path.makeHashCode();
        if (depth > 4) return hash;
        for (const CIMKeyBinding& key : path.getKeyBindings()) {
            if (key.getType() != CIMKeyBinding::REFERENCE) continue;
            try {
                hash = (hash ^ hashOf(CIMObjectPath(key.getValue()), depth + 1)) * 16777619u;
            } catch (const Exception&) {
                // not a path: compared as text, so left out of the hash
            }
        }
        return hash;
    }

    bool insert(const CIMObjectPath& path) {
        const Uint32 hash = hashOf(path);
        auto range = _seen.equal_range(hash);
        for (auto it = range.first; it != range.second; ++it)
            if (it->second == path) return false;
        _seen.emplace(hash, path);
        return true;
    }

private:
    std::unordered_multimap<Uint32, CIMObjectPath> _seen;
};

inline CIMObjectPath pathOf(const CIMObject& object) { return object.getPath(); }
inline CIMObjectPath pathOf(const CIMObjectPath& path) { return path; }
inline void setPath(CIMObject& object, const CIMObjectPath& path) { object.setPath(path); }
inline void setPath(CIMObjectPath& item, const CIMObjectPath& path) { item = path; }
inline bool uninitialized(const CIMObject& object) { return object.isUninitialized(); }
inline bool uninitialized(const CIMObjectPath& path) { return path.getClassName().isNull(); }

// The response handler an association provider answers to: what it
// delivers is answered at once (path completed, an object already answered
// left out) instead of being gathered, so that a provider delivering one
// object at a time costs the server one object at a time. Refuses what the
// gathering handlers refuse; a provider may deliver from threads of its own.
template <class Item, class Base>
class AnsweringHandler : public Base {
public:
    AnsweringHandler(const std::function<void(CIMObjectPath&)>& complete, PathSet& seen,
        const std::function<void(Item&)>& each)
        : _complete(complete), _seen(seen), _each(each) {}

    void processing() override {}
    void complete() override {
        std::lock_guard<std::mutex> lock(_mutex);
        _completed = true;
    }
    void deliver(const Item& item) override {
        if (uninitialized(item))
            throw CIMException(CIM_ERR_FAILED, "The provider delivered an uninitialized object or a path without a class");
        std::lock_guard<std::mutex> lock(_mutex);
        if (_completed) throw CIMException(CIM_ERR_FAILED, "The provider delivered a result after complete()");
        Item answer = item;
        CIMObjectPath path = pathOf(answer);
        _complete(path);
        setPath(answer, path);
        if (_seen.insert(path)) _each(answer);
    }
    using Base::deliver;

private:
    const std::function<void(CIMObjectPath&)>& _complete;
    PathSet& _seen;
    const std::function<void(Item&)>& _each;
    std::mutex _mutex;
    bool _completed = false;
};

// Passes on the objects the repository answers to an association query,
// their paths completed; the paths are kept in `seen` when providers answer
// as well, so that an object a provider repeats is left out.
std::function<void(CIMObject&)> repositoryObjects(const std::function<void(CIMObjectPath&)>& complete,
    PathSet& seen, bool providersAnswer, const std::function<void(CIMObject&)>& each) {
    return [&complete, &seen, providersAnswer, &each](CIMObject& object) {
        CIMObjectPath path = object.getPath();
        complete(path);
        object.setPath(path);
        if (providersAnswer) seen.insert(path);
        each(object);
    };
}

template <class Item>
Array<Item> gathered(const std::function<void(const std::function<void(Item&)>&)>& run) {
    Array<Item> out;
    run([&out](Item& item) { out.append(item); });
    return out;
}

} // namespace

OperationDispatcher::OperationDispatcher(const SchemaManager& schema, Repository& repository,
    const ProviderRegistrationManager& registration, ProviderManager& providers, bool associationTraversal)
    : _schema(schema), _repository(repository), _registration(registration), _providers(providers),
      _associationTraversal(associationTraversal) {}

void OperationDispatcher::addControlProvider(const std::string& className, CIMInstanceProvider* provider) {
    std::lock_guard<std::mutex> lock(_controlMutex);
    _controlProviders[lower(className)] = provider;
}

CIMNamespaceName OperationDispatcher::canonicalNamespace(const CIMNamespaceName& ns) const {
    const std::string name = ns.getString().toUtf8();
    if (_schema.hasNamespace(name)) return ns;
    if ((::strcasecmp(name.c_str(), "interop") == 0 || ::strcasecmp(name.c_str(), "root/PG_InterOp") == 0) &&
        _schema.hasNamespace("root/interop"))
        return CIMNamespaceName("root/interop");
    for (const std::string& known : _schema.namespaces())
        if (::strcasecmp(known.c_str(), name.c_str()) == 0) return CIMNamespaceName(String::fromUtf8(known));
    throw CIMException(CIM_ERR_INVALID_NAMESPACE, String::fromUtf8("No namespace \"" + name + "\""));
}

const ClassDecl& OperationDispatcher::requireClass(const CIMNamespaceName& ns, const CIMName& className,
    CIMStatusCode missing) const {
    const ClassDecl* cls = _schema.findClass(ns.getString().toUtf8(), className.getString().toUtf8());
    if (cls == nullptr)
        throw CIMException(missing, String::fromUtf8("No class \"" + className.getString().toUtf8() + "\" in " +
                                                     ns.getString().toUtf8()));
    return *cls;
}

ProviderManager::Loaded* OperationDispatcher::providerFor(const ProviderRegistrationManager::Capability* capability) {
    if (capability == nullptr) return nullptr;
    return _providers.find(capability->moduleName, capability->providerName);
}

void OperationDispatcher::completePath(CIMObjectPath& path, const CIMNamespaceName& ns) const {
    if (path.getHost().size() == 0) path.setHost(System::getHostName());
    if (path.getNameSpace().isNull()) path.setNameSpace(ns);
}

CIMObjectPath OperationDispatcher::providerPath(const CIMObjectPath& path, const CIMNamespaceName& ns) const {
    return CIMObjectPath(System::getHostName(), ns, path.getClassName(), path.getKeyBindings());
}

OperationContext OperationDispatcher::providerContext(const OperationContext& context) const {
    OperationContext out(context);
    if (!out.contains(IdentityContainer::NAME)) out.insert(IdentityContainer(String()));
    if (!out.contains(AcceptLanguageListContainer::NAME)) out.insert(AcceptLanguageListContainer(String()));
    if (!out.contains(ContentLanguageListContainer::NAME)) out.insert(ContentLanguageListContainer(String()));
    return out;
}

CIMInstanceProvider* OperationDispatcher::instanceWriter(const CIMNamespaceName& ns, const CIMName& className) {
    const ClassDecl* cls = _schema.findClass(ns.getString().toUtf8(), className.getString().toUtf8());
    {
        std::lock_guard<std::mutex> lock(_controlMutex);
        for (const ClassDecl* c = cls; c != nullptr; c = c->superClass()) {
            auto found = _controlProviders.find(lower(c->name));
            if (found != _controlProviders.end()) return found->second;
        }
    }
    ProviderManager::Loaded* loaded = providerFor(_registration.find(ns.getString().toUtf8(),
        className.getString().toUtf8(), ProviderRegistrationManager::Instance));
    return loaded != nullptr ? loaded->instance : nullptr;
}

// ---------------------------------------------------------------- reads

CIMInstance OperationDispatcher::getInstance(const OperationContext&, const CIMNamespaceName& nsIn,
    const CIMObjectPath& instanceName, Boolean, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    CIMInstance instance = _repository.getInstance(ns, instanceName, includeQualifiers, includeClassOrigin,
        propertyList, accessOf(caller));
    CIMObjectPath path = instance.getPath();
    completePath(path, ns);
    instance.setPath(path);
    return instance;
}

Array<CIMInstance> OperationDispatcher::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller) {
    return gathered<CIMInstance>([&](const InstanceSink& each) {
        enumerateInstances(context, ns, className, deepInheritance, localOnly, includeQualifiers,
            includeClassOrigin, propertyList, caller, each);
    });
}

void OperationDispatcher::enumerateInstances(const OperationContext&, const CIMNamespaceName& nsIn,
    const CIMName& className, Boolean deepInheritance, Boolean, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller, const InstanceSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    _repository.enumerateInstances(ns, className, deepInheritance, includeQualifiers, includeClassOrigin,
        propertyList, accessOf(caller), [&](CIMInstance& instance) {
            CIMObjectPath path = instance.getPath();
            completePath(path, ns);
            instance.setPath(path);
            each(instance);
        });
}

Array<CIMObjectPath> OperationDispatcher::enumerateInstanceNames(const OperationContext& context,
    const CIMNamespaceName& ns, const CIMName& className, Caller caller) {
    return gathered<CIMObjectPath>([&](const PathSink& each) {
        enumerateInstanceNames(context, ns, className, caller, each);
    });
}

void OperationDispatcher::enumerateInstanceNames(const OperationContext&, const CIMNamespaceName& nsIn,
    const CIMName& className, Caller caller, const PathSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    _repository.enumerateInstanceNames(ns, className, accessOf(caller), [&](CIMObjectPath& path) {
        completePath(path, ns);
        each(path);
    });
}

CIMValue OperationDispatcher::getProperty(const OperationContext&, const CIMNamespaceName& nsIn,
    const CIMObjectPath& instanceName, const CIMName& propertyName, Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    return _repository.getProperty(ns, instanceName, propertyName, accessOf(caller));
}

// ---------------------------------------------------------------- writes

CIMObjectPath OperationDispatcher::createInstance(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMInstance& newInstance, Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    if (newInstance.isUninitialized()) throw CIMException(CIM_ERR_INVALID_PARAMETER, "No instance given");
    const CIMName className = newInstance.getClassName();
    requireClass(ns, className, CIM_ERR_INVALID_CLASS);
    CIMInstanceProvider* provider = caller == Caller::Client ? instanceWriter(ns, className) : nullptr;
    if (provider == nullptr) {
        CIMObjectPath path = _repository.createInstance(ns, newInstance, accessOf(caller));
        completePath(path, ns);
        return path;
    }
    ObjectPathCollector handler;
    const CIMObjectPath reference = providerPath(newInstance.getPath().getClassName().isNull()
        ? CIMObjectPath(String(), ns, className) : newInstance.getPath(), ns);
    callProvider(className.getString().toUtf8(), "createInstance", [&] {
        provider->createInstance(providerContext(context), reference, newInstance, handler);
    });
    std::vector<CIMObjectPath> paths = handler.take();
    if (paths.empty()) {
        if (!handler.completed())
            throw CIMException(CIM_ERR_NOT_SUPPORTED,
                String::fromUtf8("Instances of " + className.getString().toUtf8() + " cannot be created"));
        throw CIMException(CIM_ERR_FAILED, "The provider created no instance");
    }
    if (paths.size() > 1) throw CIMException(CIM_ERR_FAILED, "The provider delivered more than one new instance");
    completePath(paths[0], ns);
    return paths[0];
}

void OperationDispatcher::modifyInstance(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers, const CIMPropertyList& propertyList,
    Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    if (modifiedInstance.isUninitialized()) throw CIMException(CIM_ERR_INVALID_PARAMETER, "No instance given");
    const CIMName className = modifiedInstance.getClassName();
    requireClass(ns, className, CIM_ERR_INVALID_CLASS);
    CIMInstanceProvider* provider = caller == Caller::Client ? instanceWriter(ns, className) : nullptr;
    if (provider == nullptr) {
        _repository.modifyInstance(ns, modifiedInstance, includeQualifiers, propertyList, accessOf(caller));
        return;
    }
    CompletionCollector handler;
    callProvider(className.getString().toUtf8(), "modifyInstance", [&] {
        provider->modifyInstance(providerContext(context), providerPath(modifiedInstance.getPath(), ns),
            modifiedInstance, includeQualifiers, propertyList, handler);
    });
    if (!handler.completed())
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            String::fromUtf8("Instances of " + className.getString().toUtf8() + " cannot be modified"));
}

void OperationDispatcher::deleteInstance(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& instanceName, Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    const CIMName className = instanceName.getClassName();
    requireClass(ns, className, CIM_ERR_INVALID_CLASS);
    CIMInstanceProvider* provider = caller == Caller::Client ? instanceWriter(ns, className) : nullptr;
    if (provider == nullptr) {
        _repository.deleteInstance(ns, instanceName, accessOf(caller));
        return;
    }
    CompletionCollector handler;
    callProvider(className.getString().toUtf8(), "deleteInstance", [&] {
        provider->deleteInstance(providerContext(context), providerPath(instanceName, ns), handler);
    });
    if (!handler.completed())
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            String::fromUtf8("Instances of " + className.getString().toUtf8() + " cannot be deleted"));
}

void OperationDispatcher::setProperty(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue, Caller caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    const CIMName className = instanceName.getClassName();
    requireClass(ns, className, CIM_ERR_INVALID_CLASS);
    CIMInstanceProvider* provider = caller == Caller::Client ? instanceWriter(ns, className) : nullptr;
    if (provider == nullptr) {
        _repository.setProperty(ns, instanceName, propertyName, newValue, accessOf(caller));
        return;
    }
    CIMInstance change(className);
    change.addProperty(CIMProperty(propertyName, newValue));
    change.setPath(instanceName);
    Array<CIMName> names;
    names.append(propertyName);
    modifyInstance(context, ns, change, false, CIMPropertyList(names), caller);
}

// ---------------------------------------------------------------- associations

void OperationDispatcher::checkTraversal(const CIMNamespaceName& ns, const CIMObjectPath& objectName) const {
    if (!_associationTraversal)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "Association traversal is switched off");
    requireClass(ns, objectName.getClassName(), CIM_ERR_INVALID_PARAMETER);
}

std::vector<OperationDispatcher::Target> OperationDispatcher::associationTargets(const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& filterClass) {
    std::vector<Target> targets;
    const ClassRegistry* registry = _schema.registry(ns.getString().toUtf8());
    if (registry == nullptr || objectName.getKeyBindings().size() == 0) return targets;
    const ClassDecl* filter = nullptr;
    if (!filterClass.isNull()) {
        filter = registry->findClass(filterClass.getString().toUtf8());
        if (filter == nullptr) return targets;   // no such association class: nothing to ask
    }
    for (const ClassDecl* assoc : registry->associationClassesReferencing(objectName.getClassName().getString().toUtf8())) {
        if (filter != nullptr && !assoc->isSubclassOf(filter)) continue;
        ProviderManager::Loaded* loaded = providerFor(
            _registration.find(ns.getString().toUtf8(), assoc->name, ProviderRegistrationManager::Association));
        if (loaded == nullptr || loaded->association == nullptr) continue;
        targets.push_back({loaded, assoc->name});
    }
    return targets;
}

// Association queries: the repository's answer first, streamed, then what
// the association providers add, answered as they deliver it. Only the
// paths answered are kept (to leave out equal ones), and only when a
// provider is asked.

Array<CIMObject> OperationDispatcher::associators(const OperationContext& context, const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, Caller caller) {
    return gathered<CIMObject>([&](const ObjectSink& each) {
        associators(context, ns, objectName, assocClass, resultClass, role, resultRole, includeQualifiers,
            includeClassOrigin, propertyList, caller, each);
    });
}

void OperationDispatcher::associators(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, Caller caller, const ObjectSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    checkTraversal(ns, objectName);
    const std::vector<Target> targets = associationTargets(ns, objectName, assocClass);
    const std::function<void(CIMObjectPath&)> complete = [this, &ns](CIMObjectPath& path) { completePath(path, ns); };
    PathSet seen;
    _repository.associators(ns, objectName, assocClass, resultClass, role, resultRole, includeQualifiers,
        includeClassOrigin, propertyList, accessOf(caller), repositoryObjects(complete, seen, !targets.empty(), each));
    for (const Target& target : targets) {
        AnsweringHandler<CIMObject, ObjectResponseHandler> handler(complete, seen, each);
        callProvider(target.provider->name, "associators", [&] {
            target.provider->association->associators(providerContext(context), providerPath(objectName, ns),
                CIMName(String::fromUtf8(target.associationClass)), resultClass, role, resultRole,
                includeQualifiers, includeClassOrigin, propertyList, handler);
        });
    }
}

Array<CIMObjectPath> OperationDispatcher::associatorNames(const OperationContext& context,
    const CIMNamespaceName& ns, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole, Caller caller) {
    return gathered<CIMObjectPath>([&](const PathSink& each) {
        associatorNames(context, ns, objectName, assocClass, resultClass, role, resultRole, caller, each);
    });
}

void OperationDispatcher::associatorNames(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, Caller caller, const PathSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    checkTraversal(ns, objectName);
    const std::vector<Target> targets = associationTargets(ns, objectName, assocClass);
    const std::function<void(CIMObjectPath&)> complete = [this, &ns](CIMObjectPath& path) { completePath(path, ns); };
    PathSet seen;
    _repository.associatorNames(ns, objectName, assocClass, resultClass, role, resultRole, accessOf(caller),
        [&](CIMObjectPath& path) {
            completePath(path, ns);
            if (!targets.empty()) seen.insert(path);
            each(path);
        });
    for (const Target& target : targets) {
        AnsweringHandler<CIMObjectPath, ObjectPathResponseHandler> handler(complete, seen, each);
        callProvider(target.provider->name, "associatorNames", [&] {
            target.provider->association->associatorNames(providerContext(context), providerPath(objectName, ns),
                CIMName(String::fromUtf8(target.associationClass)), resultClass, role, resultRole, handler);
        });
    }
}

Array<CIMObject> OperationDispatcher::references(const OperationContext& context, const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller) {
    return gathered<CIMObject>([&](const ObjectSink& each) {
        references(context, ns, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
            propertyList, caller, each);
    });
}

void OperationDispatcher::references(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller, const ObjectSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    checkTraversal(ns, objectName);
    const std::vector<Target> targets = associationTargets(ns, objectName, resultClass);
    const std::function<void(CIMObjectPath&)> complete = [this, &ns](CIMObjectPath& path) { completePath(path, ns); };
    PathSet seen;
    _repository.references(ns, objectName, resultClass, role, includeQualifiers, includeClassOrigin, propertyList,
        accessOf(caller), repositoryObjects(complete, seen, !targets.empty(), each));
    for (const Target& target : targets) {
        AnsweringHandler<CIMObject, ObjectResponseHandler> handler(complete, seen, each);
        callProvider(target.provider->name, "references", [&] {
            target.provider->association->references(providerContext(context), providerPath(objectName, ns),
                CIMName(String::fromUtf8(target.associationClass)), role, includeQualifiers, includeClassOrigin,
                propertyList, handler);
        });
    }
}

Array<CIMObjectPath> OperationDispatcher::referenceNames(const OperationContext& context,
    const CIMNamespaceName& ns, const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    Caller caller) {
    return gathered<CIMObjectPath>([&](const PathSink& each) {
        referenceNames(context, ns, objectName, resultClass, role, caller, each);
    });
}

void OperationDispatcher::referenceNames(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role, Caller caller,
    const PathSink& each) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    checkTraversal(ns, objectName);
    const std::vector<Target> targets = associationTargets(ns, objectName, resultClass);
    const std::function<void(CIMObjectPath&)> complete = [this, &ns](CIMObjectPath& path) { completePath(path, ns); };
    PathSet seen;
    _repository.referenceNames(ns, objectName, resultClass, role, accessOf(caller), [&](CIMObjectPath& path) {
        completePath(path, ns);
        if (!targets.empty()) seen.insert(path);
        each(path);
    });
    for (const Target& target : targets) {
        AnsweringHandler<CIMObjectPath, ObjectPathResponseHandler> handler(complete, seen, each);
        callProvider(target.provider->name, "referenceNames", [&] {
            target.provider->association->referenceNames(providerContext(context), providerPath(objectName, ns),
                CIMName(String::fromUtf8(target.associationClass)), role, handler);
        });
    }
}

// ---------------------------------------------------------------- methods

CIMValue OperationDispatcher::invokeMethod(const OperationContext& context, const CIMNamespaceName& nsIn,
    const CIMObjectPath& instanceName, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters, Caller) {
    const CIMNamespaceName ns = canonicalNamespace(nsIn);
    const ClassDecl& cls = requireClass(ns, instanceName.getClassName(), CIM_ERR_NOT_FOUND);
    const std::string method = methodName.getString().toUtf8();
    ProviderManager::Loaded* loaded = nullptr;
    for (const ClassDecl* c = &cls; c != nullptr && loaded == nullptr; c = c->superClass()) {
        const ProviderRegistrationManager::Capability* capability =
            _registration.find(ns.getString().toUtf8(), c->name, ProviderRegistrationManager::Method);
        if (capability != nullptr && capability->supportsMethod(method)) loaded = providerFor(capability);
    }
    if (loaded == nullptr || loaded->method == nullptr)
        throw CIMException(CIM_ERR_METHOD_NOT_AVAILABLE,
            String::fromUtf8("No provider serves " + cls.name + "." + method));
    const MethodDecl* decl = cls.findMethod(method);
    if (decl == nullptr)
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, String::fromUtf8(cls.name + " has no method " + method));
    const Array<CIMParamValue> typed = ParameterRetyper::retype(*decl, inParameters);
    MethodResultCollector handler;
    callProvider(loaded->name, "invokeMethod", [&] {
        loaded->method->invokeMethod(providerContext(context), providerPath(instanceName, ns),
            CIMName(String::fromUtf8(decl->name)), typed, handler);
    });
    outParameters.clear();
    for (const CIMParamValue& p : handler.outParameters()) outParameters.append(p);
    return handler.returnValue();
}

} // namespace Pegasus
