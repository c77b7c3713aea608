#include <Pegasus/Indication/IndicationService.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/Provider/CIMIndicationProvider.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/ClassDecl.h>
#include <Pegasus/Schema/ClassRegistry.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <stdexcept>
#include <strings.h>

namespace Pegasus {

namespace {

const char* const kFilterClass = "CIM_IndicationFilter";
const char* const kDestinationClass = "CIM_ListenerDestination";
const char* const kSubscriptionClass = "CIM_IndicationSubscription";

const Uint16 kStateEnabled = 2;
const Uint16 kStateEnabledDegraded = 3;
const Uint16 kStateDisabled = 4;

std::string lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool equalNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && ::strncasecmp(a.c_str(), b.c_str(), a.size()) == 0;
}

std::string utf8(const String& s) { return s.toUtf8(); }
String str(const std::string& s) { return String::fromUtf8(s); }

CIMException invalid(const std::string& text) { return CIMException(CIM_ERR_INVALID_PARAMETER, str(text)); }

Uint32 find(const CIMInstance& instance, const char* name) { return instance.findProperty(CIMName(name)); }

void setValue(CIMInstance& instance, const char* name, const CIMValue& value) {
    const Uint32 index = find(instance, name);
    if (index != PEG_NOT_FOUND) instance.removeProperty(index);
    instance.addProperty(CIMProperty(CIMName(name), value));
}

// A string property: nullopt when absent or NULL; INVALID_PARAMETER when of
// another type.
std::optional<std::string> stringOf(const CIMInstance& instance, const char* name) {
    const Uint32 index = find(instance, name);
    if (index == PEG_NOT_FOUND) return std::nullopt;
    const CIMValue& value = instance.getProperty(index).getValue();
    if (value.isNull()) return std::nullopt;
    if (value.isArray() || value.getType() != CIMTYPE_STRING)
        throw invalid(std::string("The property ") + name + " must be a string");
    String s;
    value.get(s);
    return utf8(s);
}

std::string requiredString(const CIMInstance& instance, const char* name) {
    std::optional<std::string> value = stringOf(instance, name);
    if (!value || value->empty()) throw invalid(std::string("The property ") + name + " is required");
    return *value;
}

// A uint16 property (other integer types are accepted and range-checked).
std::optional<Uint16> uint16Of(const CIMInstance& instance, const char* name) {
    const Uint32 index = find(instance, name);
    if (index == PEG_NOT_FOUND) return std::nullopt;
    const CIMValue& value = instance.getProperty(index).getValue();
    if (value.isNull()) return std::nullopt;
    if (value.isArray()) throw invalid(std::string("The property ") + name + " must be a uint16");
    long long n = -1;
    switch (value.getType()) {
    case CIMTYPE_UINT8: { Uint8 x; value.get(x); n = x; break; }
    case CIMTYPE_SINT8: { Sint8 x; value.get(x); n = x; break; }
    case CIMTYPE_UINT16: { Uint16 x; value.get(x); n = x; break; }
    case CIMTYPE_SINT16: { Sint16 x; value.get(x); n = x; break; }
    case CIMTYPE_UINT32: { Uint32 x; value.get(x); n = x; break; }
    case CIMTYPE_SINT32: { Sint32 x; value.get(x); n = x; break; }
    case CIMTYPE_UINT64: { Uint64 x; value.get(x); n = x > 65535 ? -1 : static_cast<long long>(x); break; }
    case CIMTYPE_SINT64: { Sint64 x; value.get(x); n = x; break; }
    default: throw invalid(std::string("The property ") + name + " must be a uint16");
    }
    if (n < 0 || n > 65535) throw invalid(std::string("The property ") + name + " is out of range");
    return static_cast<Uint16>(n);
}

// A reference property, also accepted as the text of a path.
std::optional<CIMObjectPath> referenceOf(const CIMInstance& instance, const char* name) {
    const Uint32 index = find(instance, name);
    if (index == PEG_NOT_FOUND) return std::nullopt;
    const CIMValue& value = instance.getProperty(index).getValue();
    if (value.isNull()) return std::nullopt;
    if (!value.isArray() && value.getType() == CIMTYPE_REFERENCE) {
        CIMObjectPath path;
        value.get(path);
        return path;
    }
    if (!value.isArray() && value.getType() == CIMTYPE_STRING) {
        String text;
        value.get(text);
        try {
            return CIMObjectPath(text);
        } catch (const Exception&) {
            throw invalid(std::string("The property ") + name + " is not an object path: " + utf8(text));
        }
    }
    throw invalid(std::string("The property ") + name + " must be a reference");
}

// Host and namespace left out, class in lower case, keys sorted: two
// references to the same stored instance give the same text.
std::string canonicalReference(const std::string& contextNs, const CIMObjectPath& path) {
    std::string out = lower(path.getNameSpace().isNull() ? contextNs : utf8(path.getNameSpace().getString()));
    out += ":" + lower(utf8(path.getClassName().getString()));
    std::vector<std::pair<std::string, std::string>> keys;
    const Array<CIMKeyBinding>& bindings = path.getKeyBindings();
    for (Uint32 i = 0; i < bindings.size(); ++i) {
        std::string value = utf8(bindings[i].getValue());
        if (bindings[i].getType() == CIMKeyBinding::REFERENCE) {
            try {
                value = canonicalReference(contextNs, CIMObjectPath(bindings[i].getValue()));
            } catch (const Exception&) {
            }
        }
        keys.emplace_back(lower(utf8(bindings[i].getName().getString())), value);
    }
    std::sort(keys.begin(), keys.end());
    for (const auto& key : keys) out += "," + key.first + "=\"" + key.second + "\"";
    return out;
}

void checkLocalHost(const CIMObjectPath& path, const char* role) {
    const String host = path.getHost();
    if (host.size() == 0) return;
    std::string name = utf8(host);
    const std::size_t colon = name.rfind(':');
    if (colon != std::string::npos && name.find(':') == colon) name.erase(colon);   // host:port
    if (equalNoCase(name, utf8(System::getHostName())) || equalNoCase(name, utf8(System::getFullyQualifiedHostName())) ||
        equalNoCase(name, "localhost") || name == "127.0.0.1" || System::isLocalHost(str(name)))
        return;
    throw invalid(std::string("The ") + role + " reference names another host: " + utf8(host));
}

std::string pathText(const CIMObjectPath& path) { return utf8(path.toString()); }

} // namespace

// ---------------------------------------------------------------- internals

class IndicationService::ProviderHandler : public IndicationResponseHandler {
public:
    ProviderHandler(IndicationService& service, std::string module, std::string name)
        : _service(service), _module(std::move(module)), _name(std::move(name)) {}
    void processing() override {}
    void complete() override {}
    void deliver(const CIMIndication& indication) override {
        _service.deliver(_module, _name, OperationContext(), indication);
    }
    void deliver(const OperationContext& context, const CIMIndication& indication) override {
        _service.deliver(_module, _name, context, indication);
    }
    using IndicationResponseHandler::deliver;

private:
    IndicationService& _service;
    const std::string _module;
    const std::string _name;
};

struct IndicationService::ProviderState {
    ProviderManager::Loaded* loaded = nullptr;
    unsigned count = 0;
    std::unique_ptr<ProviderHandler> handler;
};

struct IndicationService::Active {
    std::string key;
    std::string ns;
    CIMObjectPath path;              // the subscription, with its namespace
    CIMInstance subscription;
    CIMInstance filterInstance;
    std::shared_ptr<WqlFilter> filter;
    std::string language;
    std::vector<std::string> sourceNamespaces;
    std::string destination;
    std::vector<ProviderManager::Loaded*> providers;
    std::shared_ptr<IndicationDestinationQueue> queue;
};

IndicationService::IndicationService(const Options& options) : _options(options) {}

IndicationService::~IndicationService() {
    try {
        shutdown();
    } catch (...) {
    }
}

std::shared_ptr<IndicationService> IndicationService::attach(CIMServer& server, const Options& options) {
    auto service = std::make_shared<IndicationService>(options);
    server.onReady([service](CIMServer& s) {
        service->shutdown();   // a restart of the same server
        service->bind(s.schema(), s.repository(), s.dispatcher().registration(), s.providers());
        service->registerWith(s.dispatcher());
        service->start();
    });
    CIMServer::Listener listener;
    listener.name = "indication service";
    listener.stop = [service]() { service->shutdown(); };
    server.addListener(std::move(listener));
    return service;
}

void IndicationService::bind(const SchemaManager& schema, Repository& repository,
    const ProviderRegistrationManager& registration, ProviderManager& providers) {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    _schema = &schema;
    _repository = &repository;
    _registration = &registration;
    _providers = &providers;
    std::unique_lock<std::shared_mutex> table(_tableMutex);
    for (auto& entry : _providerStates) {
        entry.second->loaded = nullptr;
        entry.second->count = 0;
    }
}

void IndicationService::registerWith(OperationDispatcher& dispatcher) {
    dispatcher.addControlProvider(kFilterClass, this);
    dispatcher.addControlProvider(kDestinationClass, this);
    dispatcher.addControlProvider(kSubscriptionClass, this);
}

void IndicationService::requireBound() const {
    if (_schema == nullptr || _repository == nullptr)
        throw CIMException(CIM_ERR_FAILED, "The indication service is not running");
}

void IndicationService::initialize(CIMOMHandle&) {}
void IndicationService::terminate() {}

IndicationService::Kind IndicationService::kindOf(const std::string& ns, const CIMName& className) const {
    const ClassRegistry* registry = _schema->registry(ns);
    const std::string cls = utf8(className.getString());
    if (registry != nullptr) {
        if (registry->isSubclassOf(cls, kSubscriptionClass)) return Kind::Subscription;
        if (registry->isSubclassOf(cls, kFilterClass)) return Kind::Filter;
        if (registry->isSubclassOf(cls, kDestinationClass)) return Kind::Destination;
    }
    throw CIMException(CIM_ERR_NOT_SUPPORTED, str("The indication service does not serve " + cls));
}

// ---------------------------------------------------------------- checks and defaults

void IndicationService::completeSystemKeys(const std::string& className, CIMInstance& instance) const {
    const std::optional<std::string> creation = stringOf(instance, "CreationClassName");
    if (!creation || creation->empty())
        setValue(instance, "CreationClassName", CIMValue(str(className)));
    else if (!equalNoCase(*creation, className))
        throw invalid("CreationClassName \"" + *creation + "\" is not the class " + className);
    const std::optional<std::string> systemClass = stringOf(instance, "SystemCreationClassName");
    if (!systemClass || systemClass->empty())
        setValue(instance, "SystemCreationClassName", CIMValue(System::getSystemCreationClassName()));
    const std::optional<std::string> system = stringOf(instance, "SystemName");
    if (!system || system->empty()) setValue(instance, "SystemName", CIMValue(System::getFullyQualifiedHostName()));
    requiredString(instance, "Name");
}

namespace {

std::vector<std::string> sourceNamespacesOf(const std::string& ns, const CIMInstance& filter) {
    std::vector<std::string> out;
    const Uint32 many = find(filter, "SourceNamespaces");
    if (many != PEG_NOT_FOUND) {
        const CIMValue& value = filter.getProperty(many).getValue();
        if (!value.isNull()) {
            if (!value.isArray() || value.getType() != CIMTYPE_STRING)
                throw invalid("The property SourceNamespaces must be an array of strings");
            Array<String> names;
            value.get(names);
            for (Uint32 i = 0; i < names.size(); ++i)
                if (names[i].size() > 0) out.push_back(utf8(names[i]));
        }
    }
    if (out.empty()) {
        std::optional<std::string> one = stringOf(filter, "SourceNamespace");
        out.push_back(one && !one->empty() ? *one : ns);
    }
    return out;
}

} // namespace

CIMInstance IndicationService::completeFilter(const std::string& ns, const CIMInstance& in) const {
    CIMInstance filter = in.clone();
    completeSystemKeys(utf8(in.getClassName().getString()), filter);
    const std::string query = requiredString(filter, "Query");
    const std::string language = requiredString(filter, "QueryLanguage");
    if (!WqlFilter::isSupportedLanguage(language))
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            str("The query language \"" + language + "\" is not supported (WQL and DMTF:CQL are)"));
    WqlFilter parsed = [&] {
        try {
            return WqlFilter::parse(query);
        } catch (const WqlParseError& e) {
            throw invalid("The Query \"" + query + "\" is not valid: " + e.what());
        }
    }();
    const std::optional<std::string> single = stringOf(filter, "SourceNamespace");
    const std::vector<std::string> sources = sourceNamespacesOf(ns, filter);
    if (!single || single->empty()) setValue(filter, "SourceNamespace", CIMValue(str(sources.front())));
    for (const std::string& source : sources) {
        const ClassRegistry* registry = _schema->registry(source);
        if (registry == nullptr) throw invalid("The source namespace \"" + source + "\" does not exist");
        const ClassDecl* cls = registry->findClass(parsed.fromClass());
        if (cls == nullptr)
            throw invalid("The class " + parsed.fromClass() + " of the Query does not exist in " + source);
        if (!cls->isIndication()) throw invalid("The class " + parsed.fromClass() + " is not an indication class");
        for (const std::string& property : parsed.referencedProperties())
            if (cls->findProperty(property) == nullptr)
                throw invalid("The class " + cls->name + " has no property " + property + " (used in the Query)");
    }
    return filter;
}

CIMInstance IndicationService::completeDestination(const std::string& ns, const CIMInstance& in) const {
    const std::string className = utf8(in.getClassName().getString());
    const ClassDecl* cls = _schema->findClass(ns, className);
    if (cls == nullptr || cls->findProperty("Destination") == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            str("Only CIM-XML destinations (with a Destination URL) are supported, not " + className));
    CIMInstance destination = in.clone();
    completeSystemKeys(className, destination);
    const std::optional<Uint16> persistence = uint16Of(destination, "PersistenceType");
    if (!persistence) setValue(destination, "PersistenceType", CIMValue(Uint16(2)));
    else if (*persistence < 1 || *persistence > 3)
        throw invalid("PersistenceType " + std::to_string(*persistence) + " is not 1 (Other), 2 (Permanent) or 3 (Transient)");
    if (cls->findProperty("Protocol") != nullptr && !uint16Of(destination, "Protocol"))
        setValue(destination, "Protocol", CIMValue(Uint16(2)));
    const std::string url = requiredString(destination, "Destination");
    try {
        ListenerUrl::parse(url);
    } catch (const std::invalid_argument& e) {
        throw invalid("The Destination \"" + url + "\" is not valid: " + e.what());
    }
    return destination;
}

CIMInstance IndicationService::completeSubscription(const std::string& ns, const CIMInstance& in) const {
    CIMInstance subscription = in.clone();
    for (const char* role : {"Filter", "Handler"}) {
        const std::optional<CIMObjectPath> ref = referenceOf(subscription, role);
        if (!ref) throw invalid(std::string("The property ") + role + " is required");
        checkLocalHost(*ref, role);
        setValue(subscription, role, CIMValue(*ref));
    }
    const std::optional<Uint16> state = uint16Of(subscription, "SubscriptionState");
    if (!state) setValue(subscription, "SubscriptionState", CIMValue(kStateEnabled));
    else if (*state != kStateEnabled && *state != kStateEnabledDegraded && *state != kStateDisabled)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, str("SubscriptionState " + std::to_string(*state) +
            " is not supported (2 Enabled, 3 Enabled Degraded, 4 Disabled)"));
    if (!uint16Of(subscription, "RepeatNotificationPolicy"))
        setValue(subscription, "RepeatNotificationPolicy", CIMValue(Uint16(2)));
    if (!uint16Of(subscription, "OnFatalErrorPolicy")) setValue(subscription, "OnFatalErrorPolicy", CIMValue(Uint16(2)));
    if (find(subscription, "SubscriptionStartTime") == PEG_NOT_FOUND)
        setValue(subscription, "SubscriptionStartTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    {
        const CIMObjectPath filterRef = *referenceOf(subscription, "Filter");
        const CIMObjectPath handlerRef = *referenceOf(subscription, "Handler");
        const std::string filterNs = filterRef.getNameSpace().isNull() ? ns : utf8(filterRef.getNameSpace().getString());
        const std::string handlerNs =
            handlerRef.getNameSpace().isNull() ? ns : utf8(handlerRef.getNameSpace().getString());
        const ClassRegistry* fr = _schema->registry(filterNs);
        if (fr == nullptr || !fr->isSubclassOf(utf8(filterRef.getClassName().getString()), kFilterClass))
            throw invalid("The Filter reference " + pathText(filterRef) + " does not name an indication filter");
        const ClassRegistry* hr = _schema->registry(handlerNs);
        if (hr == nullptr || !hr->isSubclassOf(utf8(handlerRef.getClassName().getString()), kDestinationClass))
            throw invalid("The Handler reference " + pathText(handlerRef) + " does not name a listener destination");
    }
    return subscription;
}

// ---------------------------------------------------------------- subscriptions

std::vector<ProviderManager::Loaded*> IndicationService::providersFor(
    const std::vector<std::string>& sourceNamespaces, const std::string& indicationClass) const {
    std::vector<ProviderManager::Loaded*> out;
    for (const std::string& ns : sourceNamespaces) {
        const ClassRegistry* registry = _schema->registry(ns);
        if (registry == nullptr) continue;
        for (const ProviderRegistrationManager::Capability* capability :
             _registration->withType(ns, ProviderRegistrationManager::Indication)) {
            if (!registry->isSubclassOf(capability->className, indicationClass) &&
                !registry->isSubclassOf(indicationClass, capability->className))
                continue;
            ProviderManager::Loaded* loaded = _providers->find(capability->moduleName, capability->providerName);
            if (loaded == nullptr || loaded->indication == nullptr) continue;
            if (std::find(out.begin(), out.end(), loaded) == out.end()) out.push_back(loaded);
        }
    }
    return out;
}

std::string IndicationService::subscriptionKey(const std::string& ns, const CIMObjectPath& path) const {
    return lower(ns) + "|" + canonicalReference(ns, path);
}

std::shared_ptr<IndicationService::Active> IndicationService::prepare(const std::string& ns,
    const CIMInstance& subscription) const {
    auto active = std::make_shared<Active>();
    active->ns = ns;
    active->subscription = subscription;
    const CIMObjectPath filterRef = *referenceOf(subscription, "Filter");
    const CIMObjectPath handlerRef = *referenceOf(subscription, "Handler");
    auto fetch = [&](const CIMObjectPath& ref, const char* role) {
        const std::string refNs = ref.getNameSpace().isNull() ? ns : utf8(ref.getNameSpace().getString());
        try {
            return _repository->getInstance(CIMNamespaceName(str(refNs)), ref, false, false, CIMPropertyList(),
                RepositoryAccess::Committed);
        } catch (const CIMException& e) {
            if (e.getCode() == CIM_ERR_NOT_FOUND || e.getCode() == CIM_ERR_INVALID_NAMESPACE ||
                e.getCode() == CIM_ERR_INVALID_CLASS)
                throw invalid(std::string("The ") + role + " " + pathText(ref) + " does not exist");
            throw;
        }
    };
    active->filterInstance = fetch(filterRef, "Filter");
    const CIMInstance handler = fetch(handlerRef, "Handler");

    const std::string filterNs = filterRef.getNameSpace().isNull() ? ns : utf8(filterRef.getNameSpace().getString());
    const std::string query = requiredString(active->filterInstance, "Query");
    active->language = requiredString(active->filterInstance, "QueryLanguage");
    try {
        active->filter = std::make_shared<WqlFilter>(WqlFilter::parse(query));
    } catch (const WqlParseError& e) {
        throw invalid("The Query \"" + query + "\" is not valid: " + e.what());
    }
    active->sourceNamespaces = sourceNamespacesOf(filterNs, active->filterInstance);
    active->destination = requiredString(handler, "Destination");

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Filter"), filterRef.toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding(CIMName("Handler"), handlerRef.toString(), CIMKeyBinding::REFERENCE));
    active->path = CIMObjectPath(System::getHostName(), CIMNamespaceName(str(ns)), subscription.getClassName(), keys);
    active->key = lower(ns) + "|" + canonicalReference(filterNs, filterRef) + "|" +
                  canonicalReference(ns, handlerRef);

    active->providers = providersFor(active->sourceNamespaces, active->filter->fromClass());
    return active;
}

void IndicationService::subscribeProviders(Active& active) {
    if (active.providers.empty())
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "No providers are capable of servicing the subscription.");
    OperationContext context;
    context.insert(SubscriptionInstanceContainer(active.subscription));
    context.insert(SubscriptionFilterConditionContainer(str(active.filter->conditionText()), str(active.language)));
    context.insert(SubscriptionFilterQueryContainer(str(active.filter->query()), str(active.language),
        CIMNamespaceName(str(active.sourceNamespaces.front()))));
    Array<CIMObjectPath> classNames;
    for (const std::string& ns : active.sourceNamespaces)
        classNames.append(CIMObjectPath(System::getHostName(), CIMNamespaceName(str(ns)),
            CIMName(str(active.filter->fromClass()))));
    CIMPropertyList properties;
    if (!active.filter->selectsAll()) {
        Array<CIMName> names;
        for (const std::string& name : active.filter->referencedProperties()) names.append(CIMName(str(name)));
        properties.set(names);
    }
    const Uint16 repeat = uint16Of(active.subscription, "RepeatNotificationPolicy").value_or(2);

    std::vector<ProviderManager::Loaded*> accepted;
    std::string refusals;
    for (ProviderManager::Loaded* loaded : active.providers) {
        try {
            loaded->indication->createSubscription(context, active.path, classNames, properties, repeat);
            accepted.push_back(loaded);
        } catch (const CIMException& e) {
            refusals += " " + loaded->name + ": " + utf8(e.getMessage());
        } catch (const Exception& e) {
            refusals += " " + loaded->name + ": " + utf8(e.getMessage());
        } catch (const std::exception& e) {
            refusals += " " + loaded->name + ": " + e.what();
        } catch (...) {
            refusals += " " + loaded->name + ": failed";
        }
    }
    if (!refusals.empty())
        PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL2, "createSubscription refused by:%s", refusals.c_str()));
    active.providers = accepted;
    if (accepted.empty()) throw CIMException(CIM_ERR_NOT_SUPPORTED, "No providers accepted the subscription.");
}

void IndicationService::unsubscribeProviders(Active& active) {
    Array<CIMObjectPath> classNames;
    for (const std::string& ns : active.sourceNamespaces)
        classNames.append(CIMObjectPath(System::getHostName(), CIMNamespaceName(str(ns)),
            CIMName(str(active.filter->fromClass()))));
    OperationContext context;
    context.insert(SubscriptionInstanceContainer(active.subscription));
    for (ProviderManager::Loaded* loaded : active.providers) {
        try {
            loaded->indication->deleteSubscription(context, active.path, classNames);
        } catch (...) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL2, "deleteSubscription of %s failed",
                loaded->name.c_str()));
        }
    }
}

IndicationService::ProviderState& IndicationService::stateOf(const ProviderManager::Loaded& provider) {
    const std::string key = provider.moduleName + "\n" + provider.name;
    std::unique_ptr<ProviderState>& state = _providerStates[key];
    if (!state) {
        state = std::make_unique<ProviderState>();
        state->handler = std::make_unique<ProviderHandler>(*this, provider.moduleName, provider.name);
    }
    state->loaded = const_cast<ProviderManager::Loaded*>(&provider);
    return *state;
}

std::shared_ptr<IndicationDestinationQueue> IndicationService::queueForLocked(const std::string& destination) {
    for (auto it = _queues.begin(); it != _queues.end();) {
        if (it->second.expired()) it = _queues.erase(it);
        else ++it;
    }
    std::shared_ptr<IndicationDestinationQueue> queue = _queues[destination].lock();
    if (!queue) {
        queue = std::make_shared<IndicationDestinationQueue>(destination, _options.queue);
        _queues[destination] = queue;
    }
    return queue;
}

void IndicationService::activate(const std::shared_ptr<Active>& active) {
    std::vector<ProviderState*> toEnable;
    {
        std::unique_lock<std::shared_mutex> table(_tableMutex);
        active->queue = queueForLocked(active->destination);
        _active[active->key] = active;
        for (ProviderManager::Loaded* loaded : active->providers) {
            ProviderState& state = stateOf(*loaded);
            if (++state.count == 1 && _started) toEnable.push_back(&state);
        }
    }
    PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL3, "subscription active: %s -> %s", active->key.c_str(),
        active->destination.c_str()));
    for (ProviderState* state : toEnable) {
        try {
            _providers->enableIndications(*state->loaded, *state->handler);
        } catch (...) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "enableIndications of %s failed",
                state->loaded->name.c_str()));
        }
    }
}

void IndicationService::deactivate(const std::string& key) {
    std::shared_ptr<Active> active;
    std::vector<ProviderState*> toDisable;
    {
        std::unique_lock<std::shared_mutex> table(_tableMutex);
        auto it = _active.find(key);
        if (it == _active.end()) return;
        active = it->second;
        _active.erase(it);
        for (ProviderManager::Loaded* loaded : active->providers) {
            ProviderState& state = stateOf(*loaded);
            if (state.count > 0 && --state.count == 0) toDisable.push_back(&state);
        }
    }
    unsubscribeProviders(*active);
    for (ProviderState* state : toDisable) {
        try {
            _providers->disableIndications(*state->loaded);
        } catch (...) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "disableIndications of %s failed",
                state->loaded->name.c_str()));
        }
    }
    PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL3, "subscription inactive: %s", key.c_str()));
    // The destination's queue ends here when no other subscription uses it.
}

void IndicationService::start() {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    requireBound();
    for (const std::string& ns : _schema->namespaces()) {
        const ClassRegistry* registry = _schema->registry(ns);
        if (registry == nullptr || !registry->hasClass(kSubscriptionClass)) continue;
        Array<CIMInstance> stored;
        try {
            stored = _repository->enumerateInstances(CIMNamespaceName(str(ns)), CIMName(kSubscriptionClass), true,
                false, false, CIMPropertyList(), RepositoryAccess::Committed);
        } catch (const CIMException& e) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "cannot read the subscriptions of %s: %s", ns.c_str(),
                utf8(e.getMessage()).c_str()));
            continue;
        }
        for (Uint32 i = 0; i < stored.size(); ++i) {
            try {
                const std::optional<Uint16> state = uint16Of(stored[i], "SubscriptionState");
                if (state && *state == kStateDisabled) continue;
                std::shared_ptr<Active> active = prepare(ns, stored[i]);
                subscribeProviders(*active);
                activate(active);
            } catch (const CIMException& e) {
                PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "stored subscription %s left inactive: %s",
                    pathText(stored[i].getPath()).c_str(), utf8(e.getMessage()).c_str()));
            } catch (const std::exception& e) {
                PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "stored subscription %s left inactive: %s",
                    pathText(stored[i].getPath()).c_str(), e.what()));
            }
        }
    }
    std::vector<ProviderState*> toEnable;
    {
        std::unique_lock<std::shared_mutex> table(_tableMutex);
        _started = true;
        for (auto& entry : _providerStates)
            if (entry.second->count > 0 && entry.second->loaded != nullptr) toEnable.push_back(entry.second.get());
    }
    for (ProviderState* state : toEnable) {
        try {
            _providers->enableIndications(*state->loaded, *state->handler);
        } catch (...) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "enableIndications of %s failed",
                state->loaded->name.c_str()));
        }
    }
    PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL2, "indication service started, %zu subscriptions active",
        activeSubscriptions()));
}

void IndicationService::shutdown() {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    std::map<std::string, std::shared_ptr<Active>> ending;
    std::vector<ProviderState*> toDisable;
    {
        std::unique_lock<std::shared_mutex> table(_tableMutex);
        if (!_started && _active.empty()) return;
        _started = false;
        ending.swap(_active);
        for (auto& entry : _providerStates) {
            if (entry.second->count > 0 && entry.second->loaded != nullptr) toDisable.push_back(entry.second.get());
            entry.second->count = 0;
        }
    }
    for (ProviderState* state : toDisable) {
        try {
            _providers->disableIndications(*state->loaded);
        } catch (...) {
            PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL1, "disableIndications of %s failed",
                state->loaded->name.c_str()));
        }
    }
    // What the destinations still hold is dropped (traced) as their queues end.
    ending.clear();
    PEG_TRACE((TRC_INDICATION_SERVICE, Tracer::LEVEL2, "indication service stopped"));
}

// ---------------------------------------------------------------- delivery

std::size_t IndicationService::deliver(const std::string& moduleName, const std::string& providerName,
    const OperationContext& context, const CIMInstance& indication) {
    if (indication.isUninitialized()) throw CIMException(CIM_ERR_FAILED, "An uninitialized indication was delivered");
    std::vector<std::string> wanted;
    if (context.contains(SubscriptionInstanceNamesContainer::NAME)) {
        const Array<CIMObjectPath> names =
            SubscriptionInstanceNamesContainer(context.get(SubscriptionInstanceNamesContainer::NAME)).getInstanceNames();
        for (Uint32 i = 0; i < names.size(); ++i) {
            const std::string ns = names[i].getNameSpace().isNull() ? std::string() : utf8(names[i].getNameSpace().getString());
            const Array<CIMKeyBinding>& keys = names[i].getKeyBindings();
            std::string f, h;
            for (Uint32 k = 0; k < keys.size(); ++k) {
                const std::string keyName = utf8(keys[k].getName().getString());
                try {
                    if (equalNoCase(keyName, "Filter")) f = canonicalReference(ns, CIMObjectPath(keys[k].getValue()));
                    if (equalNoCase(keyName, "Handler")) h = canonicalReference(ns, CIMObjectPath(keys[k].getValue()));
                } catch (const Exception&) {
                }
            }
            wanted.push_back(lower(ns) + "|" + f + "|" + h);
        }
    }
    const std::string className = utf8(indication.getClassName().getString());
    const std::string indicationNs =
        indication.getPath().getNameSpace().isNull() ? std::string() : utf8(indication.getPath().getNameSpace().getString());

    std::size_t queued = 0;
    std::shared_lock<std::shared_mutex> table(_tableMutex);
    if (_schema == nullptr) return 0;
    for (const auto& entry : _active) {
        const Active& active = *entry.second;
        bool fromThisProvider = false;
        for (const ProviderManager::Loaded* loaded : active.providers)
            fromThisProvider = fromThisProvider || (loaded->moduleName == moduleName && loaded->name == providerName);
        if (!fromThisProvider) continue;
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), active.key) == wanted.end()) continue;
        const ClassRegistry* registry = nullptr;
        for (const std::string& ns : active.sourceNamespaces) {
            if (!indicationNs.empty() && !equalNoCase(ns, indicationNs)) continue;
            registry = _schema->registry(ns);
            if (registry != nullptr) break;
        }
        if (registry == nullptr) continue;
        if (!registry->isSubclassOf(className, active.filter->fromClass())) continue;
        const bool passes = active.filter->evaluate(indication, [registry](const std::string& cls, const std::string& base) {
            return equalNoCase(cls, base) || registry->isSubclassOf(cls, base);
        });
        if (!passes) continue;
        active.queue->enqueue(active.filter->project(indication));
        ++queued;
    }
    return queued;
}

std::size_t IndicationService::activeSubscriptions() const {
    std::shared_lock<std::shared_mutex> table(_tableMutex);
    return _active.size();
}

unsigned IndicationService::subscriptionCount(const std::string& moduleName, const std::string& providerName) const {
    std::shared_lock<std::shared_mutex> table(_tableMutex);
    auto it = _providerStates.find(moduleName + "\n" + providerName);
    return it == _providerStates.end() ? 0 : it->second->count;
}

std::shared_ptr<IndicationDestinationQueue> IndicationService::queueFor(const std::string& destination) const {
    std::shared_lock<std::shared_mutex> table(_tableMutex);
    auto it = _queues.find(destination);
    return it == _queues.end() ? nullptr : it->second.lock();
}

// ---------------------------------------------------------------- instance operations

void IndicationService::createInstance(const OperationContext&, const CIMObjectPath& instanceReference,
    const CIMInstance& instanceObject, ObjectPathResponseHandler& handler) {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    requireBound();
    if (instanceObject.isUninitialized()) throw invalid("No instance given");
    const std::string ns = utf8(instanceReference.getNameSpace().getString());
    const CIMNamespaceName nsName(instanceReference.getNameSpace());
    handler.processing();
    CIMObjectPath created;
    switch (kindOf(ns, instanceObject.getClassName())) {
    case Kind::Filter:
        created = _repository->createInstance(nsName, completeFilter(ns, instanceObject), RepositoryAccess::Committed);
        break;
    case Kind::Destination:
        created = _repository->createInstance(nsName, completeDestination(ns, instanceObject),
            RepositoryAccess::Committed);
        break;
    case Kind::Subscription: {
        const CIMInstance subscription = completeSubscription(ns, instanceObject);
        const Uint16 state = uint16Of(subscription, "SubscriptionState").value_or(kStateEnabled);
        std::shared_ptr<Active> active;
        if (state != kStateDisabled) {
            active = prepare(ns, subscription);   // also checks that the filter and the destination exist
            {
                std::shared_lock<std::shared_mutex> table(_tableMutex);
                if (_active.count(active->key) != 0)
                    throw CIMException(CIM_ERR_ALREADY_EXISTS, str("The subscription " + pathText(active->path) +
                                                                   " exists already"));
            }
            subscribeProviders(*active);
        } else {
            prepare(ns, subscription);   // checks that the filter and the destination exist
        }
        try {
            created = _repository->createInstance(nsName, subscription, RepositoryAccess::Committed);
        } catch (...) {
            if (active) unsubscribeProviders(*active);
            throw;
        }
        if (active) activate(active);
        break;
    }
    }
    handler.deliver(created);
    handler.complete();
}

void IndicationService::modifyInstance(const OperationContext&, const CIMObjectPath& instanceReference,
    const CIMInstance& instanceObject, const Boolean includeQualifiers, const CIMPropertyList& propertyList,
    ResponseHandler& handler) {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    requireBound();
    const std::string ns = utf8(instanceReference.getNameSpace().getString());
    const CIMNamespaceName nsName(instanceReference.getNameSpace());
    if (kindOf(ns, instanceReference.getClassName()) != Kind::Subscription)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            "Filters and listener destinations cannot be modified; delete and create them again");
    handler.processing();
    const CIMInstance stored = _repository->getInstance(nsName, instanceReference, false, false, CIMPropertyList(),
        RepositoryAccess::Committed);
    // Only the state of a subscription may change.
    for (Uint32 i = 0; i < instanceObject.getPropertyCount(); ++i) {
        const CIMName name = instanceObject.getProperty(i).getName();
        if (!propertyList.useThisProperty(name)) continue;
        if (name == CIMName("Filter") || name == CIMName("Handler") || name == CIMName("SubscriptionState")) continue;
        const Uint32 old = stored.findProperty(name);
        if (old == PEG_NOT_FOUND || !stored.getProperty(old).getValue().equal(instanceObject.getProperty(i).getValue()))
            throw CIMException(CIM_ERR_NOT_SUPPORTED,
                str("Only SubscriptionState of a subscription can be modified, not " + utf8(name.getString())));
    }
    Uint16 newState = uint16Of(stored, "SubscriptionState").value_or(kStateEnabled);
    if (propertyList.useThisProperty(CIMName("SubscriptionState"))) {
        const std::optional<Uint16> given = uint16Of(instanceObject, "SubscriptionState");
        if (given) newState = *given;
    }
    if (newState != kStateEnabled && newState != kStateEnabledDegraded && newState != kStateDisabled)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, str("SubscriptionState " + std::to_string(newState) +
            " is not supported (2 Enabled, 3 Enabled Degraded, 4 Disabled)"));
    CIMInstance updated = stored.clone();
    setValue(updated, "SubscriptionState", CIMValue(newState));
    setValue(updated, "TimeOfLastStateChange", CIMValue(CIMDateTime::getCurrentDateTime()));
    updated.setPath(stored.getPath());

    std::shared_ptr<Active> active = prepare(ns, updated);
    bool wasActive;
    {
        std::shared_lock<std::shared_mutex> table(_tableMutex);
        wasActive = _active.count(active->key) != 0;
    }
    const bool willBeActive = newState != kStateDisabled;
    if (willBeActive && !wasActive) subscribeProviders(*active);
    try {
        _repository->modifyInstance(nsName, updated, includeQualifiers, CIMPropertyList(),
            RepositoryAccess::Committed);
    } catch (...) {
        if (willBeActive && !wasActive) unsubscribeProviders(*active);
        throw;
    }
    if (willBeActive && !wasActive) activate(active);
    if (!willBeActive && wasActive) deactivate(active->key);
    handler.complete();
}

void IndicationService::deleteInstance(const OperationContext&, const CIMObjectPath& instanceReference,
    ResponseHandler& handler) {
    std::lock_guard<std::recursive_mutex> control(_controlMutex);
    requireBound();
    const std::string ns = utf8(instanceReference.getNameSpace().getString());
    const CIMNamespaceName nsName(instanceReference.getNameSpace());
    const Kind kind = kindOf(ns, instanceReference.getClassName());
    handler.processing();
    if (kind == Kind::Subscription) {
        const CIMInstance stored = _repository->getInstance(nsName, instanceReference, false, false,
            CIMPropertyList(), RepositoryAccess::Committed);
        const CIMObjectPath filterRef = *referenceOf(stored, "Filter");
        const CIMObjectPath handlerRef = *referenceOf(stored, "Handler");
        const std::string filterNs = filterRef.getNameSpace().isNull() ? ns : utf8(filterRef.getNameSpace().getString());
        const std::string key = lower(ns) + "|" + canonicalReference(filterNs, filterRef) + "|" +
                                canonicalReference(ns, handlerRef);
        _repository->deleteInstance(nsName, instanceReference, RepositoryAccess::Committed);
        deactivate(key);
    } else {
        CIMObjectPath target = instanceReference;
        target.setHost(String());
        const Array<CIMObjectPath> users = _repository->referenceNames(nsName, target, CIMName(kSubscriptionClass),
            kind == Kind::Filter ? "Filter" : "Handler", RepositoryAccess::Committed);
        if (users.size() > 0)
            throw CIMException(CIM_ERR_FAILED, str(std::string(kind == Kind::Filter ? "The filter" : "The destination") +
                " is used by the subscription " + pathText(users[0]) + "; delete the subscription first"));
        _repository->deleteInstance(nsName, instanceReference, RepositoryAccess::Committed);
    }
    handler.complete();
}

void IndicationService::getInstance(const OperationContext&, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler) {
    requireBound();
    handler.processing();
    handler.deliver(_repository->getInstance(instanceReference.getNameSpace(), instanceReference, includeQualifiers,
        includeClassOrigin, propertyList, RepositoryAccess::Committed));
    handler.complete();
}

void IndicationService::enumerateInstances(const OperationContext&, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler) {
    requireBound();
    handler.processing();
    handler.deliver(_repository->enumerateInstances(classReference.getNameSpace(), classReference.getClassName(), true,
        includeQualifiers, includeClassOrigin, propertyList, RepositoryAccess::Committed));
    handler.complete();
}

void IndicationService::enumerateInstanceNames(const OperationContext&, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler) {
    requireBound();
    handler.processing();
    handler.deliver(_repository->enumerateInstanceNames(classReference.getNameSpace(), classReference.getClassName(),
        RepositoryAccess::Committed));
    handler.complete();
}

} // namespace Pegasus
