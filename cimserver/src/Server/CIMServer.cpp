#include <Pegasus/Server/CIMServer.h>

#include <Pegasus/Common/AuditLogger.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/FrontEnd/InteropContent.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/MofInstanceBuilder.h>
#include <Pegasus/Schema/SchemaError.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ProviderManager.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>
#include <Pegasus/Server/ServerCIMOMHandleRep.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

#ifndef CIMSERVER_VERSION
#define CIMSERVER_VERSION "0.0.0"
#endif

namespace Pegasus {

namespace {

// mkdir -p of the folder that holds `file`.
void makeParent(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    if (slash == std::string::npos || slash == 0) return;
    const std::string dir = file.substr(0, slash);
    for (std::size_t at = 1; at <= dir.size(); ++at) {
        if (at == dir.size() || dir[at] == '/') {
            const std::string part = dir.substr(0, at);
            if (::mkdir(part.c_str(), 0755) != 0 && errno != EEXIST)
                throw std::runtime_error("cannot make the folder " + part + ": " + std::strerror(errno));
        }
    }
}

CIMObjectPath keyPathOf(const ClassDecl& cls, const CIMInstance& instance) {
    Array<CIMKeyBinding> keys;
    for (const std::string& name : cls.keyNames()) {
        const Uint32 index = instance.findProperty(CIMName(String::fromUtf8(name)));
        if (index == PEG_NOT_FOUND) continue;
        keys.append(CIMKeyBinding(CIMName(String::fromUtf8(name)), instance.getProperty(index).getValue()));
    }
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName(String::fromUtf8(cls.name)), keys);
}

const char* const kInterop = "root/interop";

} // namespace

CIMServer::CIMServer(const CIMServerConfig& config) : _config(config) {}

CIMServer::~CIMServer() {
    if (_running) {
        for (auto it = _listeners.rbegin(); it != _listeners.rend(); ++it)
            if (it->stop) it->stop();
    }
}

const char* CIMServer::version() { return CIMSERVER_VERSION; }

SchemaManager& CIMServer::schema() { return *_schema; }
Repository& CIMServer::repository() { return *_repository; }
OperationDispatcher& CIMServer::dispatcher() { return *_dispatcher; }
ProviderManager& CIMServer::providers() { return *_providers; }

void CIMServer::addListener(Listener listener) { _listeners.push_back(std::move(listener)); }

void CIMServer::onReady(std::function<void(CIMServer&)> callback) { _onReady.push_back(std::move(callback)); }

void CIMServer::setUpTracing() {
    if (_config.traceLevel == 0 || _config.traceComponents.empty()) return;
    makeParent(_config.traceFilePath);
    if (Tracer::setTraceFile(_config.traceFilePath.c_str()) != 0)
        throw std::runtime_error("cannot open the trace file " + _config.traceFilePath);
    Tracer::setTraceLevelNumber(_config.traceLevel);
    if (!Tracer::setTraceComponents(String::fromUtf8(_config.traceComponents)))
        throw std::runtime_error("unknown trace component in \"" + _config.traceComponents + "\"");
}

void CIMServer::createDeclaredInstances() {
    for (const std::string& ns : _schema->namespaces()) {
        const std::vector<InstanceDecl>& declared = _schema->instances(ns);
        if (declared.empty()) continue;
        const ClassRegistry* registry = _schema->registry(ns);
        MofInstanceBuilder builder(*registry);
        const CIMNamespaceName name(String::fromUtf8(ns));
        _repository->beginTransaction(name);
        try {
            for (const InstanceDecl& decl : declared) {
                const CIMInstance instance = builder.build(decl);
                const ClassDecl* cls = registry->findClass(decl.className);
                if (cls == nullptr) throw std::runtime_error("no class " + decl.className + " in " + ns);
                try {
                    _repository->createInstance(name, instance);
                } catch (const CIMException& e) {
                    if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;
                    // A re-install: the MOF's version replaces the stored one.
                    _repository->deleteInstance(name, keyPathOf(*cls, instance));
                    _repository->createInstance(name, instance);
                }
            }
            _repository->commitTransaction();
        } catch (...) {
            _repository->rollBackTransaction();
            throw;
        }
    }
}

void CIMServer::writeInteropContent() {
    if (!_schema->hasNamespace(kInterop)) return;
    InteropContent::Settings settings;
    settings.hostName = System::getFullyQualifiedHostName().toUtf8();
    settings.serverVersion = CIMSERVER_VERSION;
    settings.httpEnabled = _config.enableHttpConnection;
    settings.httpPort = _config.httpPort;
    settings.httpsEnabled = _config.enableHttpsConnection;
    settings.httpsPort = _config.httpsPort;
    settings.authentication = _config.enableAuthentication;
    settings.namespaces = _schema->namespaces();
    InteropContent::write(*_repository, settings);
}

void CIMServer::start() {
    if (_running) return;
    setUpTracing();
    System::setHostName(String::fromUtf8(_config.hostname));
    System::setFullyQualifiedHostName(String::fromUtf8(_config.fullyQualifiedHostName));
    makeParent(_config.auditLogFile);
    AuditLogger::setLogFile(_config.auditLogFile);
    PEG_TRACE((TRC_SERVER, Tracer::LEVEL2, "CIM server %s starting", CIMSERVER_VERSION));

    _schema = std::make_unique<SchemaManager>();
    try {
        _schema->loadDirectory(_config.schemaDir);
    } catch (const SchemaError& e) {
        throw std::runtime_error(std::string("the schema cannot be loaded: ") + e.what());
    }
    if (_schema->namespaces().empty())
        throw std::runtime_error("the schema folder " + _config.schemaDir + " declares no namespace");

    try {
        ::mkdir(_config.repositoryDir.c_str(), 0755);
        _repository = std::make_unique<Repository>(_config.repositoryDir, *_schema);
        createDeclaredInstances();
        writeInteropContent();
    } catch (const CIMException& e) {
        throw std::runtime_error("the repository cannot be set up: " + e.getMessage().toUtf8());
    } catch (const SchemaError& e) {
        throw std::runtime_error(std::string("an instance of the schema cannot be made: ") + e.what());
    }

    _registration = std::make_unique<ProviderRegistrationManager>();
    if (_schema->hasNamespace(kInterop)) {
        try {
            _registration->load(*_repository, kInterop);
        } catch (const CIMException& e) {
            throw std::runtime_error("the provider registration cannot be read: " + e.getMessage().toUtf8());
        } catch (const std::runtime_error& e) {
            throw std::runtime_error(std::string("the provider registration is broken: ") + e.what());
        }
    }
    _providers = std::make_unique<ProviderManager>(_config.providerDir);
    _dispatcher = std::make_unique<OperationDispatcher>(*_schema, *_repository, *_registration, *_providers,
        _config.enableAssociationTraversal);
    _running = true;
    _providers->loadAll(*_registration, [this]() {
        return CIMOMHandle(std::make_shared<ServerCIMOMHandleRep>(*_dispatcher, Caller::Provider));
    });
    for (auto& callback : _onReady) callback(*this);
    for (Listener& listener : _listeners) {
        try {
            if (listener.start) listener.start();
        } catch (const std::exception& e) {
            throw std::runtime_error(listener.name + " cannot start: " + e.what());
        }
    }
    PEG_TRACE((TRC_SERVER, Tracer::LEVEL2, "CIM server started"));
}

void CIMServer::writePidFile() {
    makeParent(_config.pidFile);
    const std::string temp = _config.pidFile + ".tmp";
    {
        std::ofstream out(temp, std::ios::trunc);
        out << ::getpid() << "\n";
        if (!out) throw std::runtime_error("cannot write the pid file " + _config.pidFile);
    }
    if (::rename(temp.c_str(), _config.pidFile.c_str()) != 0)
        throw std::runtime_error("cannot write the pid file " + _config.pidFile + ": " + std::strerror(errno));
    _pidFileWritten = true;
}

void CIMServer::stop() {
    if (!_running) return;
    _running = false;
    PEG_TRACE((TRC_SHUTDOWN, Tracer::LEVEL2, "CIM server stopping"));
    for (auto it = _listeners.rbegin(); it != _listeners.rend(); ++it) {
        try {
            if (it->stop) it->stop();
        } catch (const std::exception& e) {
            std::cerr << "cimserver: stopping " << it->name << " failed: " << e.what() << std::endl;
        }
    }
    if (_pidFileWritten) {
        ::unlink(_config.pidFile.c_str());
        _pidFileWritten = false;
    }
    std::cout << "CIM server stopped" << std::endl;
    Tracer::flushTrace();
    // Last: a provider's terminate may end the process.
    _providers->terminateAll();
    PEG_TRACE((TRC_SHUTDOWN, Tracer::LEVEL2, "CIM server stopped"));
    Tracer::flushTrace();
}

} // namespace Pegasus
