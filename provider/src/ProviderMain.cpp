// The module's entry: the server asks it for its provider by name.

#include <iostream>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ConfigManager.h"
#include "DataflowSource.h"
#include "SmisProvider.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

SMISProvider* g_provider = nullptr;
DataFlow* g_dataFlow = nullptr;
DataflowSource* g_dataflowSource = nullptr;

}  // namespace

SMISProvider* CreateProvider() {
    g_provider = new SMISProvider();
    g_dataFlow = new DataFlow(g_provider);
    static const std::string dataFrom = ConfigManager::GetConfigStringValue("PollingSimulator", "DataFrom", "Storage");
    g_dataflowSource = DataflowSourceFactory::CreateSource(dataFrom == "File" ? 0 : 1, g_dataFlow);
    return g_provider;
}

SMISProvider* GetProvider() { return g_provider; }

DataFlow* GetDataFlowService() { return g_dataFlow; }

DataflowSource* GetDataFlowSource() { return g_dataflowSource; }

}  // namespace orvsmis

extern "C" PEGASUS_EXPORT Pegasus::CIMProvider* PegasusCreateProvider(const Pegasus::String& providerName) {
    using namespace orvsmis;
    try {
        ConfigManager* config = Singleton<ConfigManager>::Instance();
        if (!config->IsInitialized() && !config->Initialize()) return nullptr;
        if (!Pegasus::String::equalNoCase(Pegasus::String::fromUtf8(config->GetProviderModuleName()), providerName))
            return nullptr;
        std::cout << "Load SMI-S provider successfully. version(2.0.1)" << std::endl;
        SMISProvider* provider = CreateProvider();
        if (provider == nullptr) return nullptr;
        return static_cast<Pegasus::CIMMethodProvider*>(provider);
    } catch (...) {
        return nullptr;
    }
}
