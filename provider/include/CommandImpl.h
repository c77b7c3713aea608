#ifndef ORVSMIS_COMMANDIMPL_H
#define ORVSMIS_COMMANDIMPL_H

#include <string>

namespace orvsmis {

class XMLParser;

// A way of running one command line and feeding its answer to a parser.
class CommandImpl {
public:
    virtual ~CommandImpl() {}

    // True when the command ran and its document reports success.
    virtual bool Execute(const std::string& commandLine, XMLParser& parser) = 0;
};

// Chooses the way by "Test"/"CommandType", read at each call: exactly
// "Remote" or "Fake"; anything else runs the tools on this machine.
class CommandImplFactory {
public:
    static CommandImpl* CreateCommandImpl();
};

}  // namespace orvsmis

#endif
