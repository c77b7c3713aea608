#include "RemoteCommandImpl.h"

#include "ExecCmd.h"
#include "SmisTrace.h"
#include "XMLParser.h"

namespace orvsmis {

std::string RemoteCommandImpl::FormShellLine(const std::string& command) {
    return "outfmtset xml; " + command + "  2>&1";
}

bool RemoteCommandImpl::Execute(const std::string& command, XMLParser& parser) {
    const std::string line = FormShellLine(command);
    SMIS_TRACE(LEVEL3, "command : %s", command.c_str());
    if (RemoteCMDRequest(&parser, line.c_str()) == -1) {
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", "Execute command failed!");
        return false;
    }
    bool ok = parser.GetReturnCode();
    if (!ok) SMIS_TRACE(LEVEL1, "Error[GetReturnCode] : ReturnCode=false");
    return ok;
}

}  // namespace orvsmis
