#ifndef ORVSMIS_COMMAND_H
#define ORVSMIS_COMMAND_H

#include <string>
#include <vector>

namespace orvsmis {

class CommandImpl;
class XMLParser;

// One command line of the array's tools. The way it is run (on this machine,
// on a remote array, or replayed from saved documents) is chosen when the
// command is made; its output goes into the parser it was given.
class Command {
public:
    explicit Command(XMLParser* parser);
    virtual ~Command();

    // Empties the parser, then runs the line and parses its answer.
    virtual bool Execute();

    const std::string& GetCommandLine() const { return m_commandLine; }
    XMLParser* GetParser() const { return m_parser; }

protected:
    CommandImpl* m_impl;
    std::string m_commandLine;
    XMLParser* m_parser;

private:
    Command(const Command&);
    Command& operator=(const Command&);
};

// A command whose answer is a list of records of known types.
class QueryCommand : public Command {
public:
    explicit QueryCommand(XMLParser* parser) : Command(parser) {}

    // Appends the record type codes that the answer holds, in query order.
    virtual void GetQueryDataType(std::vector<int>& types) = 0;
};

}  // namespace orvsmis

#endif
