#pragma once
// Vexsc_query -file F [-detail]: the snapshot state of each base volume named
// in F, one "Vexsc_query_Info" chapter per base volume; -detail adds the
// generations.

#include <string>
#include <vector>

#include "ViewDocument.h"
#include "ViewRecords.h"

namespace arraysim {

class SnapshotQueryCommand {
public:
    struct Request {
        std::string file;
        bool detail = false;
    };

    static Request ParseArguments(const std::vector<std::string>& args);

    // A name that is no base volume of the array is a ViewError.
    static ViewDocument Build(const ViewRecords& records, const std::vector<std::string>& bvNames, bool detail);
};

}  // namespace arraysim
