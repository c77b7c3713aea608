#pragma once
// Ready-made arrays for "arraysim init": small, medium, large and max (the
// largest configuration of a mid-range array). The same options and seed
// always give the same array.

#include <cstdint>
#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

struct TemplateOptions {
    std::string size = "small";  // small | medium | large | max
    std::string protocol;        // fc | iscsi | sas | mixed; empty: fc, or mixed for max
    int controllers = 2;         // 1 or 2
    std::uint64_t seed = 1;
};

// How many objects of each kind a template makes.
struct TemplateCounts {
    int disks = 0;
    int pools = 0;
    int virtualPools = 0;  // every n-th pool is virtual (0: none)
    int lds = 0;
    int ldSets = 0;
    int lunMappings = 0;
    int portsPerController = 0;
    int pairs = 0;
    int snapshotBases = 0;
    int generationsPerBase = 0;
};

class Templates {
public:
    // The sizes known, in growing order.
    static std::vector<std::string> Sizes();

    // The counts of a size; throws std::invalid_argument for an unknown size.
    static TemplateCounts Counts(const std::string& size);

    // Builds the array; throws std::invalid_argument for bad options.
    static ArrayState Build(const TemplateOptions& options);
};

}  // namespace arraysim
