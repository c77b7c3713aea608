#ifndef Pegasus_Indication_IndicationService_h
#define Pegasus_Indication_IndicationService_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Indication/IndicationDestinationQueue.h>
#include <Pegasus/Indication/WqlFilter.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Server/ProviderManager.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

namespace Pegasus {

class CIMServer;
class OperationDispatcher;
class ProviderRegistrationManager;
class Repository;
class SchemaManager;

// Indication subscriptions and delivery.
//
// Clients subscribe by creating a CIM_IndicationFilter, a listener
// destination (CIM_ListenerDestinationCIMXML or CIM_IndicationHandlerCIMXML)
// and a CIM_IndicationSubscription joining them, in any namespace (normally
// the interop namespace). The service receives these writes from the
// dispatcher, checks and completes them, and keeps them in the repository,
// from where they are reloaded at the next start.
//
// Each active subscription counts for the indication providers registered
// (type 4) for its filter's class, its subclasses or superclasses in the
// filter's source namespaces: a provider gets createSubscription for each,
// enableIndications when its first subscription exists and
// disableIndications when its last one goes. What a provider delivers is
// matched against its subscriptions (class with inheritance, then the WHERE
// condition) and queued for each matching destination; the provider's
// thread never waits for a listener.
class IndicationService : public CIMInstanceProvider {
public:
    struct Options {
        IndicationDestinationQueue::Options queue;
    };

    explicit IndicationService(const Options& options = Options());
    ~IndicationService() override;
    IndicationService(const IndicationService&) = delete;
    IndicationService& operator=(const IndicationService&) = delete;

    // The one call a server program makes before server.start(): from then
    // on every start() of `server` binds the service to its schema,
    // repository and providers, routes the subscription classes' writes to
    // it, reloads the stored subscriptions and enables their providers;
    // stop() disables the providers and ends delivery. The server keeps the
    // returned service alive.
    static std::shared_ptr<IndicationService> attach(CIMServer& server, const Options& options = Options());

    // The parts attach() does, for a service used without a CIMServer.
    void bind(const SchemaManager& schema, Repository& repository,
        const ProviderRegistrationManager& registration, ProviderManager& providers);
    void registerWith(OperationDispatcher& dispatcher);
    // Reloads the stored subscriptions of every namespace and enables the
    // providers that have one. A stored subscription that no longer works
    // (its filter or destination is gone, or no provider accepts it) is
    // traced and left inactive.
    void start();
    // Disables the providers, stops the destination threads. Idempotent.
    void shutdown();

    // Matches an indication from `provider` (module name, provider name)
    // and queues it for each matching subscription; what the providers'
    // handlers do. A context holding a SubscriptionInstanceNamesContainer
    // limits it to those subscriptions. Returns the number of destinations
    // it was queued for.
    std::size_t deliver(const std::string& moduleName, const std::string& providerName,
        const OperationContext& context, const CIMInstance& indication);

    // State, for the tests and the trace.
    std::size_t activeSubscriptions() const;
    unsigned subscriptionCount(const std::string& moduleName, const std::string& providerName) const;
    // Null when no active subscription sends to that destination URL.
    std::shared_ptr<IndicationDestinationQueue> queueFor(const std::string& destination) const;

    // CIMProvider / CIMInstanceProvider (the dispatcher routes client writes
    // here; reads of these classes come from the repository).
    void initialize(CIMOMHandle& cimom) override;
    void terminate() override;
    void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        InstanceResponseHandler& handler) override;
    void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        InstanceResponseHandler& handler) override;
    void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler) override;
    void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers, const CIMPropertyList& propertyList,
        ResponseHandler& handler) override;
    void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler) override;
    void deleteInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        ResponseHandler& handler) override;

private:
    class ProviderHandler;
    struct ProviderState;
    struct Active;

    enum class Kind { Filter, Destination, Subscription };

    Kind kindOf(const std::string& ns, const CIMName& className) const;
    void requireBound() const;

    CIMInstance completeFilter(const std::string& ns, const CIMInstance& instance) const;
    CIMInstance completeDestination(const std::string& ns, const CIMInstance& instance) const;
    CIMInstance completeSubscription(const std::string& ns, const CIMInstance& instance) const;
    void completeSystemKeys(const std::string& className, CIMInstance& instance) const;

    // A subscription made ready to run: its filter and destination read
    // from the repository (missing: INVALID_PARAMETER), the query compiled,
    // its providers found.
    std::shared_ptr<Active> prepare(const std::string& ns, const CIMInstance& subscription) const;
    // createSubscription on each provider; those that refuse are left out.
    // No provider, or none accepting, is CIM_ERR_NOT_SUPPORTED.
    void subscribeProviders(Active& active);
    void unsubscribeProviders(Active& active);
    // Under _controlMutex: publishes and counts, enabling providers at 0 -> 1.
    void activate(const std::shared_ptr<Active>& active);
    void deactivate(const std::string& key);
    std::shared_ptr<IndicationDestinationQueue> queueForLocked(const std::string& destination);

    std::string subscriptionKey(const std::string& ns, const CIMObjectPath& path) const;
    std::vector<ProviderManager::Loaded*> providersFor(const std::vector<std::string>& sourceNamespaces,
        const std::string& indicationClass) const;
    ProviderState& stateOf(const ProviderManager::Loaded& provider);

    const Options _options;
    const SchemaManager* _schema = nullptr;
    Repository* _repository = nullptr;
    const ProviderRegistrationManager* _registration = nullptr;
    ProviderManager* _providers = nullptr;

    // Serialises subscription changes, including the provider calls they make.
    mutable std::recursive_mutex _controlMutex;
    // Guards the tables below; delivery reads them under a shared lock.
    mutable std::shared_mutex _tableMutex;
    std::map<std::string, std::shared_ptr<Active>> _active;   // key: namespace + subscription path
    std::map<std::string, std::unique_ptr<ProviderState>> _providerStates;   // key: module + provider
    std::map<std::string, std::weak_ptr<IndicationDestinationQueue>> _queues;   // key: destination
    bool _started = false;
};

} // namespace Pegasus

#endif
