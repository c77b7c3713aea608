#pragma once
// Vexrc_query: the copy state of replication pairs.
//   Vexrc_query -file F            every pair of each master volume named in F
//   Vexrc_query -rv NAME -rvflg ld the one pair of the replica volume NAME

#include <string>
#include <vector>

#include "ViewDocument.h"
#include "ViewRecords.h"

namespace arraysim {

class ReplicaQueryCommand {
public:
    struct Request {
        std::string file;  // set for -file
        std::string rv;    // set for -rv
    };

    static Request ParseArguments(const std::vector<std::string>& args);

    // One "Pair Copy State" object per master volume, in the order asked,
    // with one "RV Detail Information" section per pair. A name the array
    // does not know is a ViewError; a volume without pairs has no RV section.
    static ViewDocument BuildForVolumes(const ViewRecords& records, const std::vector<std::string>& mvNames);

    // The pair whose replica volume is `rvName`; a ViewError when there is none.
    static ViewDocument BuildForReplica(const ViewRecords& records, const std::string& rvName);
};

}  // namespace arraysim
