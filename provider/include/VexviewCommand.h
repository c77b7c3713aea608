#ifndef ORVSMIS_VEXVIEWCOMMAND_H
#define ORVSMIS_VEXVIEWCOMMAND_H

#include <string>
#include <vector>

#include "Command.h"

namespace orvsmis {

// The view of the whole array. A document that reports failure means the
// array's management server is not ready yet; that is waited out for up to
// half an hour before the view counts as failed.
class VexviewCommand : public QueryCommand {
public:
    enum { VIEW_ALL = 0, VIEW_PHYSICS = 1, VIEW_LOGIC = 2 };
    static const long WAIT_BUDGET_MS = 1800000;

    VexviewCommand(int kind, XMLParser& parser);

    virtual bool Execute();
    virtual void GetQueryDataType(std::vector<int>& types);

    std::string GetName() const { return "Vexview"; }

    // The wait budget in milliseconds and the pause between two tries; only
    // tests shorten them.
    void SetWaitBudget(long budgetMs, long pauseMs);

private:
    long m_budget;
    long m_budgetStart;
    long m_pause;
};

}  // namespace orvsmis

#endif
