#ifndef ORVSMIS_LOCALCOMMANDIMPL_H
#define ORVSMIS_LOCALCOMMANDIMPL_H

#include <string>

#include "CommandImpl.h"

namespace orvsmis {

// Runs the array's tools on this machine through the shell, asking them for
// XML. View commands are retried ("smis"/"CmdRetryCount" more times, a second
// apart); every other command gets one attempt.
class LocalCommandImpl : public CommandImpl {
public:
    LocalCommandImpl();

    virtual bool Execute(const std::string& commandLine, XMLParser& parser);

    // The shell line for a command: under the maintenance login when the
    // authority is unified or the tool is the view tool, else with the output
    // form given through the environment.
    std::string FormShellLine(const std::string& command) const;

    bool IsUnifiedAuthority() const { return m_bUnifyAuthority; }

private:
    bool m_bUnifyAuthority;
};

}  // namespace orvsmis

#endif
