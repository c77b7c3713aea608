#include "LocalCommandImpl.h"

#include "ConfigManager.h"
#include "ExecCmd.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"
#include "XMLParser.h"

namespace orvsmis {

LocalCommandImpl::LocalCommandImpl()
    : m_bUnifyAuthority(ConfigManager::GetConfigBoolValue("Test", "UnifyAuthority", true)) {
    SMIS_TRACE(LEVEL4, "Authority is %s.", m_bUnifyAuthority ? "unified" : "different");
}

std::string LocalCommandImpl::FormShellLine(const std::string& command) const {
    if (m_bUnifyAuthority || findCommandName(command) == "Vexview")
        return "su - opsmaint -c \"outfmtset xml; " + command + " 2>&1 \"";
    return "_OUTFMTSET=xml; export _OUTFMTSET; " + command + " 2>&1 ";
}

bool LocalCommandImpl::Execute(const std::string& command, XMLParser& parser) {
    SMIS_TRACE(LEVEL3, "command : %s", command.c_str());
    if (!IsSafeCommandText(command)) {
        SMIS_TRACE(LEVEL1, "Error: command refused, it holds characters a shell would interpret: %s",
                   command.c_str());
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", "Execute command failed!");
        return false;
    }
    const std::string line = FormShellLine(command);

    if (command.find("Vexview") == std::string::npos) {
        // Commands that change the array are never repeated here.
        if (LocalCMDRequest(&parser, line.c_str()) == -1) {
            SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", "Execute command failed!");
            return false;
        }
        bool ok = parser.GetReturnCode();
        if (!ok) SMIS_TRACE(LEVEL1, "Error[GetReturnCode] : ReturnCode=false");
        return ok;
    }

    // A view only reads, so it is tried again a second later.
    int retries = ConfigManager::GetConfigIntValue("smis", "CmdRetryCount", 3);
    for (;;) {
        parser.Unload();
        if (LocalCMDRequest(&parser, line.c_str()) == -1) {
            SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", "Execute command failed!");
        } else if (parser.GetReturnCode()) {
            return true;
        } else {
            SMIS_TRACE(LEVEL1, "Error[GetReturnCode] : ReturnCode=false");
        }
        if (retries != 0) sleepForMilliSecond(1000);
        if (retries < 1) return false;
        --retries;
    }
}

}  // namespace orvsmis
