#ifndef Pegasus_Server_CIMServer_h
#define Pegasus_Server_CIMServer_h

#include <Pegasus/Server/CIMServerConfig.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Pegasus {

class SchemaManager;
class Repository;
class ProviderRegistrationManager;
class ProviderManager;
class OperationDispatcher;

// The server: schema, repository, registration, providers, and the network
// listeners started once the providers run.
//
// start(): tracing, the schema from schemaDir, the repository in
// repositoryDir, the instances the schema's MOF declares (an existing
// instance of the same path is replaced, so a re-install updates it), the
// interop namespace's own content, the registration, then every registered
// provider loaded and initialised, then the listeners. Throws
// std::runtime_error with a clear text when any step fails.
//
// stop(): the listeners stop accepting, indications are disabled, the pid
// file goes, the traces are flushed; providers are terminated last, because
// a provider's terminate may end the process.
class CIMServer {
public:
    // Something that serves the network (the HTTP front end): started after
    // the providers, stopped before them.
    struct Listener {
        std::function<void()> start;
        std::function<void()> stop;
        std::string name;
    };

    explicit CIMServer(const CIMServerConfig& config);
    ~CIMServer();
    CIMServer(const CIMServer&) = delete;
    CIMServer& operator=(const CIMServer&) = delete;

    void start();
    void stop();
    bool running() const { return _running; }

    // Listeners to start at the end of start(); added before start().
    void addListener(Listener listener);
    // Called when start() has opened the repository and loaded the providers,
    // just before the listeners start (the front end builds on the dispatcher).
    void onReady(std::function<void(CIMServer&)> callback);

    // Writes the pid file now (this process); stop() removes it.
    void writePidFile();

    const CIMServerConfig& config() const { return _config; }
    SchemaManager& schema();
    Repository& repository();
    OperationDispatcher& dispatcher();
    ProviderManager& providers();

    static const char* version();

private:
    void setUpTracing();
    void createDeclaredInstances();
    void writeInteropContent();

    CIMServerConfig _config;
    std::unique_ptr<SchemaManager> _schema;
    std::unique_ptr<Repository> _repository;
    std::unique_ptr<ProviderRegistrationManager> _registration;
    std::unique_ptr<ProviderManager> _providers;
    std::unique_ptr<OperationDispatcher> _dispatcher;
    std::vector<Listener> _listeners;
    std::vector<std::function<void(CIMServer&)>> _onReady;
    bool _running = false;
    bool _pidFileWritten = false;
};

} // namespace Pegasus

#endif
