#include "VexviewCommand.h"

#include "SmisTrace.h"
#include "ThreadSyncTool.h"
#include "XMLParser.h"

namespace orvsmis {

namespace {
const long PAUSE_MS = 1000;
}  // namespace

VexviewCommand::VexviewCommand(int kind, XMLParser& parser)
    : QueryCommand(&parser), m_budget(WAIT_BUDGET_MS), m_budgetStart(WAIT_BUDGET_MS), m_pause(PAUSE_MS) {
    switch (kind) {
    case VIEW_ALL: m_commandLine = "Vexview -all"; break;
    case VIEW_PHYSICS: m_commandLine = "Vexview -dpi"; break;
    case VIEW_LOGIC: m_commandLine = "Vexview -dli"; break;
    default: break;
    }
}

void VexviewCommand::SetWaitBudget(long budgetMs, long pauseMs) {
    m_budgetStart = budgetMs;
    m_pause = pauseMs > 0 ? pauseMs : 1;
}

void VexviewCommand::GetQueryDataType(std::vector<int>& types) {
    static const int viewTypes[] = {0, 1, 2, 3, 5, 6, 7};
    types.insert(types.end(), viewTypes, viewTypes + sizeof(viewTypes) / sizeof(viewTypes[0]));
}

bool VexviewCommand::Execute() {
    if (m_commandLine.empty()) return false;
    m_budget = m_budgetStart;
    while (m_budget > 0) {
        if (!Command::Execute()) return false;
        if (m_parser->GetReturnCode()) return true;
        // The array's management server may still be starting: its answer
        // says failure until it is up.
        SMIS_TRACE(LEVEL2, "Vex Server may not be ready, retry!");
        m_budget -= m_pause;
        sleepForMilliSecond(static_cast<int>(m_pause));
        m_parser->Unload();
    }
    SMIS_TRACE(LEVEL1, "Waiting timeout, cause Vexsvr not ready");
    return false;
}

}  // namespace orvsmis
