#ifndef ORVSMIS_CONFIGCOMMAND_H
#define ORVSMIS_CONFIGCOMMAND_H

#include <string>

#include "CfgResultParser.h"
#include "Command.h"

namespace orvsmis {

class CommandImpl;
class ResultInfo;

// A command that changes the array. Its answer goes into the embedded
// CfgResultParser, from which GetError tells why a step failed.
class ConfigCommand : public Command {
public:
    ConfigCommand();
    // Runs its lines through impl instead of the configured way; takes
    // ownership. Used to watch the lines a job sends.
    explicit ConfigCommand(CommandImpl* impl);
    virtual ~ConfigCommand() {}

    // Why the last step failed: the tool's message, or "00021" "Parse
    // results failed!" when there is no readable answer, or "00020" with the
    // reason when the line was refused before it was run.
    virtual void GetError(ResultInfo& out);

    CfgResultParser& GetResultParser() { return m_resultParser; }

protected:
    // Marks the step as refused without running anything: an argument could
    // not be written safely into a command line. Always false.
    bool refuse(const std::string& reason);
    // Stores the line and runs it; clears an earlier refusal.
    bool run(const std::string& line);

    CfgResultParser m_resultParser;
    std::string m_refusal;
};

}  // namespace orvsmis

#endif
