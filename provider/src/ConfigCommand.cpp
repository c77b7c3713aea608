#include "ConfigCommand.h"

#include "CommandImpl.h"
#include "CommandTextCheck.h"
#include "ResultInfo.h"
#include "SmisTrace.h"

namespace orvsmis {

ConfigCommand::ConfigCommand() : Command(&m_resultParser) {}

ConfigCommand::ConfigCommand(CommandImpl* impl) : Command(&m_resultParser) {
    if (impl != nullptr) {
        delete m_impl;
        m_impl = impl;
    }
}

bool ConfigCommand::refuse(const std::string& reason) {
    m_refusal = reason;
    m_commandLine.clear();
    m_resultParser.Unload();
    SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00020", CommandTextCheck::Printable(reason).c_str());
    return false;
}

bool ConfigCommand::run(const std::string& line) {
    m_refusal.clear();
    m_commandLine = line;
    return Command::Execute();
}

void ConfigCommand::GetError(ResultInfo& out) {
    if (!m_refusal.empty()) {
        out.Set(false, "00020", m_refusal);
        return;
    }
    if (!m_resultParser.Parse()) {
        out.Set(false, "00021", "Parse results failed!");
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s", "00021", "Parse results failed!");
        return;
    }
    m_resultParser.GetInfo(out);
}

}  // namespace orvsmis
