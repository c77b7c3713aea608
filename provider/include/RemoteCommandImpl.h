#ifndef ORVSMIS_REMOTECOMMANDIMPL_H
#define ORVSMIS_REMOTECOMMANDIMPL_H

#include <string>

#include "CommandImpl.h"

namespace orvsmis {

// Meant for an array reached over the network. No transport to such an array
// exists, so every command fails with the trace of a command that could not run.
class RemoteCommandImpl : public CommandImpl {
public:
    virtual bool Execute(const std::string& commandLine, XMLParser& parser);

    static std::string FormShellLine(const std::string& command);
};

}  // namespace orvsmis

#endif
