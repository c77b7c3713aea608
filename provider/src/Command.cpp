#include "Command.h"

#include "CommandImpl.h"
#include "SmisTrace.h"
#include "XMLParser.h"

namespace orvsmis {

Command::Command(XMLParser* parser) : m_impl(CommandImplFactory::CreateCommandImpl()), m_parser(parser) {}

Command::~Command() { delete m_impl; }

bool Command::Execute() {
    if (m_parser == NULL) {
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", "Execute command failed!");
        return false;
    }
    m_parser->Unload();
    return m_impl->Execute(m_commandLine, *m_parser);
}

}  // namespace orvsmis
