#pragma once
// Turns the simulator's state into the records the view and query tools
// report: names of pools and LDs looked up, RAID and disk types carried to
// each LD, the access control mode spelled as the array shows it.

#include "ArrayState.h"
#include "ViewRecords.h"

namespace arraysim {

class ViewRecordsBuilder {
public:
    static ViewRecords Build(const ArrayState& state);
};

}  // namespace arraysim
