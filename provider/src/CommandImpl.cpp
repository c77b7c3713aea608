#include "CommandImpl.h"

#include "ConfigManager.h"
#include "FakeCommandImpl.h"
#include "LocalCommandImpl.h"
#include "RemoteCommandImpl.h"

namespace orvsmis {

CommandImpl* CommandImplFactory::CreateCommandImpl() {
    // Exact and case-sensitive: "fake" runs the real tools.
    const std::string type = ConfigManager::GetConfigStringValue("Test", "CommandType", "Local");
    if (type == "Remote") return new RemoteCommandImpl();
    if (type == "Fake") return new FakeCommandImpl();
    return new LocalCommandImpl();
}

}  // namespace orvsmis
